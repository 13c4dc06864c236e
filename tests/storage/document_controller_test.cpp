// Documents as the user opens, changes, saves and closes them.

#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DocumentControllerTest : public ::testing::Test {
 protected:
  std::vector<std::string> heard() { return world.shell->takeHeard(); }
  [[nodiscard]] std::size_t rowsIn(const fs::path& path) const {
    return world.open(path)->model()->portfolios().front()->transactions().size();
  }

  WorkspaceWorld world;
  UserDefaults defaults{world.folder / "settings.json"};
  DocumentController controller{world.surroundings, defaults};
};

TEST_F(DocumentControllerTest, SavesANewDocumentWhereTheUserSays) {
  const auto document = controller.newDocument();
  EXPECT_EQ(controller.newDocument()->displayName(), "Untitled Workspace 2");
  EXPECT_THAT(heard(), ElementsAre("show Untitled Workspace", "show Untitled Workspace 2"));
  EXPECT_EQ(world.shell->windows.at(document.get())->model.lock(), document->model());
  EXPECT_FALSE(document->isDocumentEdited());
  world.deposit(*document, "5");

  EXPECT_FALSE(controller.saveDocument(document)) << "no place was named";
  world.shell->location = world.files / "Mine";
  EXPECT_TRUE(controller.saveDocument(document));
  EXPECT_EQ(document->fileURL(), world.files / "Mine.corvane");
  EXPECT_FALSE(document->isDocumentEdited());
  world.deposit(*document, "6");
  EXPECT_TRUE(controller.saveDocument(document));
  EXPECT_EQ(rowsIn(world.files / "Mine.corvane"), 2U);
  EXPECT_THAT(heard(),
              ElementsAre("location of Untitled Workspace", "location of Untitled Workspace"));
}

TEST_F(DocumentControllerTest, OpensAFileOnce) {
  world.savedWorkspace();
  fs::create_directory_symlink(world.file, world.files / "Link.corvane");
  const auto document = controller.openDocument(world.file);
  EXPECT_EQ(controller.openDocument(world.files / "." / "Family.corvane" / ""), document);
  EXPECT_EQ(controller.openDocument(world.files / "Link.corvane"), document);
  EXPECT_EQ(controller.documents().size(), 1U);

  // Nor is another document saved over it.
  const auto other = controller.newDocument();
  world.shell->location = world.file;
  world.shell->replaces = true;
  heard();
  EXPECT_FALSE(controller.saveDocumentAs(other));
  EXPECT_THAT(heard(), ElementsAre("location of Untitled Workspace",
                                   "error for Untitled Workspace: “Family.corvane” is open "
                                   "itself."));
  EXPECT_EQ(rowsIn(world.file), 1U);

  EXPECT_THROW(controller.openDocument(world.files / "none.corvane"), WorkspaceDocumentError);
  EXPECT_THROW(controller.openDocument(world.files), DocumentError);
  EXPECT_EQ(controller.documents().size(), 2U);
}

TEST_F(DocumentControllerTest, AsksBeforeItReplacesTheWorkOfOthers) {
  const auto document = controller.openDocument(world.savedWorkspace());
  world.deposit(*document, "5");
  writeText(world.file / "General.json", "{}");
  heard();
  EXPECT_FALSE(controller.saveDocument(document));
  EXPECT_THAT(heard(),
              ElementsAre("replace for Family: “Family.corvane” has been changed by another "
                          "program since it was opened or saved here."));
  EXPECT_EQ(rowsIn(world.file), 1U);
  world.shell->replaces = true;
  EXPECT_TRUE(controller.saveDocument(document));
  EXPECT_EQ(rowsIn(world.file), 2U);
}

TEST_F(DocumentControllerTest, ClosesOnlyWhatIsSavedOrGivenUp) {
  world.savedWorkspace();
  const auto openEdited = [&] {
    const auto document = controller.openDocument(world.file);
    world.deposit(*document, "5");
    return document;
  };
  using Answer = DocumentShell::ChangesAnswer;
  world.shell->changes = Answer::cancel;
  EXPECT_FALSE(controller.closeDocument(openEdited()));
  EXPECT_EQ(controller.documents().size(), 1U);
  world.shell->changes = Answer::discard;
  EXPECT_TRUE(controller.closeAllDocuments());
  EXPECT_EQ(rowsIn(world.file), 1U);

  world.shell->changes = Answer::save;
  EXPECT_TRUE(controller.closeDocument(openEdited()));
  EXPECT_EQ(rowsIn(world.file), 2U);
  EXPECT_THAT(controller.documents(), IsEmpty());
  EXPECT_THAT(namesIn(world.surroundings.temporaryDirectory), IsEmpty());

  // What cannot be saved stays open.
  const auto document = openEdited();
  writeText(world.file / "General.json", "{}");
  EXPECT_FALSE(controller.closeAllDocuments());
  EXPECT_THAT(controller.documents(), ElementsAre(document));

  heard();
  document->undoManager()->undo();
  EXPECT_TRUE(controller.closeDocument(document));
  EXPECT_THAT(heard(), IsEmpty()) << "there was nothing to save";
}

TEST_F(DocumentControllerTest, KnowsWhetherTheContentIsTheSavedOne) {
  const auto document = controller.openDocument(world.savedWorkspace());
  UndoManager& undo = *document->undoManager();
  const auto deposit = [&] { world.deposit(*document, "5"); };
  const auto isEdited = [&] { return document->isDocumentEdited(); };
  deposit();
  EXPECT_TRUE(isEdited());
  undo.undo();
  EXPECT_FALSE(isEdited());
  undo.redo();
  EXPECT_TRUE(controller.saveDocument(document));
  EXPECT_FALSE(isEdited());
  undo.undo();
  EXPECT_TRUE(isEdited());
  undo.redo();
  EXPECT_FALSE(isEdited());

  // As many edits as were undone do not make the saved content.
  undo.undo();
  deposit();
  EXPECT_TRUE(isEdited());
  undo.undo();
  EXPECT_TRUE(isEdited());
  EXPECT_TRUE(controller.saveDocument(document));

  document->updateChangeCount(Document::ChangeType::done);
  deposit();
  undo.undo();
  EXPECT_TRUE(isEdited()) << "a change without an undo step is still there";
  EXPECT_TRUE(controller.saveDocument(document));
  EXPECT_FALSE(isEdited());

  // An undo that the ledger refuses undoes nothing.
  deposit();
  const auto& manager = document->model()->portfolioManagers.front();
  manager->recordTransactions({world.make.withdrawal("1005")}, manager->portfolios().front(),
                              nullptr);
  heard();
  undo.undo();
  EXPECT_EQ(heard().size(), 1U);
  EXPECT_TRUE(isEdited());
}

TEST_F(DocumentControllerTest, RemembersTheLatestDocuments) {
  EXPECT_THAT(controller.recentDocuments(), IsEmpty());
  const fs::path first = world.files / "1.corvane";
  for (int i = 1; i <= 11; ++i) {
    const auto document = controller.newDocument();
    world.shell->location = world.files / std::to_string(i);
    ASSERT_TRUE(controller.saveDocument(document));
  }
  EXPECT_EQ(controller.recentDocuments().size(), 10U);
  EXPECT_EQ(controller.recentDocuments().front(), world.files / "11.corvane");
  ASSERT_TRUE(controller.closeAllDocuments());
  controller.openDocument(first);
  UserDefaults later(world.folder / "settings.json");
  EXPECT_EQ(DocumentController(world.surroundings, later).recentDocuments().front(), first);
  fs::remove_all(first);
  EXPECT_EQ(controller.recentDocuments().front(), world.files / "11.corvane");
  controller.clearRecentDocuments();
  EXPECT_THAT(controller.recentDocuments(), IsEmpty());
}

}  // namespace
}  // namespace corvane::testing
