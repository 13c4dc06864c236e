// Alerts and the panels of files: what Return and Escape do in them, and what they give back.

#include "desktop/look/alert_box.h"

#include <gmock/gmock.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QTest>

#include "desktop/app/workspace_panels.h"
#include "desktop/desktop_world.h"
#include "desktop/look/qt_text.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using desktop::AlertKind;

/// Presses `key` in the next panel or alert that runs an event loop of its own.
void pressInNext(int key) {
  QTimer::singleShot(0, qApp, [key] {
    QWidget* front = QApplication::activeModalWidget();
    ASSERT_NE(front, nullptr);
    QTest::keyClick(front, static_cast<Qt::Key>(key));
  });
}

class Alerts : public ::testing::Test {
 protected:
  std::size_t answer(AlertKind kind, int key) {
    pressInNext(key);
    return desktop::ask(&window, kind, "Shall it be?", "It cannot be undone.",
                        {"Do It", "Something Else", "Cancel"});
  }
  QMainWindow window;
};

TEST_F(Alerts, ReturnDoesNoHarmAndEscapeDoesNothing) {
  EXPECT_EQ(answer(AlertKind::warning, Qt::Key_Return), 0U);
  EXPECT_EQ(answer(AlertKind::critical, Qt::Key_Return), 2U) << "the harmful button is no default";
  EXPECT_EQ(answer(AlertKind::warning, Qt::Key_Escape), 2U);
  EXPECT_EQ(answer(AlertKind::critical, Qt::Key_Escape), 2U);
}

TEST_F(Alerts, SayTheSameThingOnce) {
  window.show();
  std::vector<std::size_t> answers;
  const auto note = [&](std::size_t button) { answers.push_back(button); };
  for (int i = 0; i < 3; ++i) {
    desktop::showAlert(&window, AlertKind::warning, "No network.", "", {"Again", "OK"}, note);
  }
  EXPECT_EQ(window.findChildren<QMessageBox*>().size(), 1);
  EXPECT_THAT(answers, ::testing::ElementsAre(1U, 1U)) << "as if the others had been closed";
  desktop::showAlert(&window, AlertKind::warning, "Something else.", "", {"OK"}, note);
  EXPECT_EQ(window.findChildren<QMessageBox*>().size(), 2);
  buttonWith(*window.findChildren<QMessageBox*>().front(), "Again")->click();
  EXPECT_EQ(answers.back(), 0U);
}

TEST_F(Alerts, ShowTextAsItIs) {
  const std::unique_ptr<QMessageBox> alert(
      desktop::makeAlert(nullptr, AlertKind::warning, "<b>Bold & Sons</b>", "<img src=x>", {"OK"}));
  EXPECT_EQ(alert->textFormat(), Qt::PlainText);
  EXPECT_EQ(alert->text(), "<b>Bold & Sons</b>");
}

class WorkspacePanels : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(folder / "Family.corvane" / "inside");
    fs::create_directories(folder / "books" / "Other.corvane");
  }
  /// What `panel` answers when `names` are typed one after the other, each with Return.
  template <typename Panel>
  std::optional<fs::path> typed(Panel& panel, const QStringList& names) {
    QTimer::singleShot(0, qApp, [&panel, names] {
      for (const QString& name : names) {
        auto* field = panel.template findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(field, nullptr);
        field->setText(name);
        QTest::keyClick(field, Qt::Key_Return);
      }
      if (panel.isVisible()) {
        panel.reject();
      }
    });
    return panel.ask();
  }
  TemporaryFolder folder;
};

TEST_F(WorkspacePanels, OpenAWorkspaceAndEnterOtherFolders) {
  const QString books = desktop::qtPath(folder / "books");
  desktop::OpenWorkspacePanel panel(nullptr, folder.path());
  EXPECT_EQ(typed(panel, {books, books + "/Other.corvane"}), folder / "books" / "Other.corvane");
  desktop::OpenWorkspacePanel other(nullptr, folder.path());
  EXPECT_EQ(typed(other, {books}), std::nullopt) << "a folder is no workspace";
}

TEST_F(WorkspacePanels, SaveOverAWorkspaceAndGiveNamesTheirEnding) {
  desktop::SaveWorkspacePanel panel(nullptr, folder.path(), "Untitled");
  EXPECT_EQ(typed(panel, {desktop::qtPath(folder / "Family.corvane")}), folder / "Family.corvane")
      << "a workspace is replaced and not entered";
  desktop::SaveWorkspacePanel other(nullptr, folder.path(), "Untitled");
  EXPECT_EQ(typed(other, {desktop::qtPath(folder / "New")}), folder / "New.corvane");
}

}  // namespace
}  // namespace corvane::testing
