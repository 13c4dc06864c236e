#include "platform/async/undo_manager.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace corvane {
namespace {

/// A text whose every change registers the way back, as the edits of a document do.
class Text : public std::enable_shared_from_this<Text> {
 public:
  explicit Text(std::shared_ptr<UndoManager> undo) : undo_(std::move(undo)) {}

  void set(std::string value) {
    undo_->registerUndo(shared_from_this(), [former = value_](Text& text) { text.set(former); });
    value_ = std::move(value);
  }
  [[nodiscard]] const std::string& value() const { return value_; }

 private:
  std::shared_ptr<UndoManager> undo_;
  std::string value_;
};

class UndoManagerTest : public ::testing::Test {
 protected:
  std::shared_ptr<UndoManager> undo = std::make_shared<UndoManager>();
  std::shared_ptr<Text> text = std::make_shared<Text>(undo);
};

TEST_F(UndoManagerTest, GoesBackAndForthThroughEditsWithTheirNames) {
  text->set("a");
  undo->setActionName("Type a");
  text->set("b");
  undo->setActionName("Type b");
  EXPECT_TRUE(undo->undo());
  EXPECT_EQ(text->value(), "a");
  EXPECT_EQ(undo->undoActionName(), "Type a");
  EXPECT_EQ(undo->redoActionName(), "Type b");
  EXPECT_TRUE(undo->undo());
  EXPECT_FALSE(undo->undo());
  EXPECT_TRUE(undo->redo());
  EXPECT_TRUE(undo->redo());
  EXPECT_FALSE(undo->redo());
  EXPECT_EQ(text->value(), "b");
  EXPECT_EQ(undo->undoActionName(), "Type b");
}

TEST_F(UndoManagerTest, ForgetsWhatCouldBeRedoneWhenSomethingNewHappens) {
  text->set("a");
  undo->undo();
  text->set("c");
  EXPECT_FALSE(undo->canRedo());
  undo->undo();
  EXPECT_EQ(text->value(), "");
}

TEST_F(UndoManagerTest, DoesNothingWhenAskedToUndoInsideAnUndo) {
  text->set("a");
  bool nested = true;
  undo->registerUndo(text, [&](Text& target) {
    nested = undo->undo() || undo->redo();
    target.set("from the undo");
  });
  EXPECT_TRUE(undo->undo());
  EXPECT_FALSE(nested);
  EXPECT_EQ(text->value(), "from the undo");
  EXPECT_TRUE(undo->redo());
  EXPECT_EQ(text->value(), "a");
}

TEST_F(UndoManagerTest, UndoesAGroupAsOneStepInReverseOrder) {
  undo->beginUndoGrouping();
  text->set("a");
  undo->beginUndoGrouping();
  text->set("b");
  undo->endUndoGrouping();
  undo->setActionName("Both");
  EXPECT_FALSE(undo->undo()) << "a group is open";
  undo->endUndoGrouping();
  undo->beginUndoGrouping();
  undo->endUndoGrouping();
  EXPECT_EQ(undo->undoActionName(), "Both");
  undo->undo();
  EXPECT_EQ(text->value(), "");
  undo->redo();
  EXPECT_EQ(text->value(), "b");
  EXPECT_FALSE(undo->canRedo());
}

TEST_F(UndoManagerTest, StaysUsableWhenAHandlerThrows) {
  text->set("a");
  undo->registerUndo(text, [](Text&) { throw std::runtime_error("no"); });
  EXPECT_THROW(undo->undo(), std::runtime_error);
  EXPECT_FALSE(undo->isUndoing());
  EXPECT_FALSE(undo->canRedo());
  EXPECT_TRUE(undo->undo());
  EXPECT_EQ(text->value(), "");
}

TEST_F(UndoManagerTest, HoldsItsTargetsWeakly) {
  auto other = std::make_shared<Text>(undo);
  other->set("x");
  text->set("a");
  undo->removeAllActions(text);
  other.reset();
  EXPECT_TRUE(undo->undo());
  EXPECT_FALSE(undo->canUndo());
  EXPECT_EQ(text->value(), "a");
}

TEST_F(UndoManagerTest, TellsItsObserversUntilTheyEnd) {
  std::string seen;
  {
    const auto token = undo->addObserver(
        [&](UndoManager::Change change) { seen += "+-="[static_cast<int>(change)]; });
    text->set("a");
    undo->undo();
    undo->redo();
  }
  text->set("b");
  EXPECT_EQ(seen, "+-=");
}

}  // namespace
}  // namespace corvane
