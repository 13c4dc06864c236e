#include "desktop/frame/settings_dialog.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>

#include "desktop/app/help_window.h"
#include "desktop/desktop_world.h"
#include "desktop/look/qt_text.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using desktop::MainWindow;
using desktop::SettingsDialog;

QCheckBox* boxWith(const QWidget& window, const QString& text) {
  for (QCheckBox* box : window.findChildren<QCheckBox*>()) {
    if (box->text().remove(QLatin1Char('&')) == text) {
      return box;
    }
  }
  ADD_FAILURE() << "no box " << text.toStdString();
  return nullptr;
}

class SettingsWindow : public ::testing::Test {
 protected:
  SettingsDialog* open() {
    menuItem(*window, "Settings")->trigger();
    return openDialog<SettingsDialog>(*window);
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
};

TEST_F(SettingsWindow, KeepsWhatIsChangedAndFollowsTheMenus) {
  EXPECT_EQ(menuItem(*window, "Settings")->shortcut(), Qt::CTRL | Qt::Key_Comma);
  auto* settings = open();
  ASSERT_NE(settings, nullptr);
  EXPECT_EQ(open(), settings) << "there is one window of settings";
  boxWith(*settings, "Dates in the local time zone")->click();
  EXPECT_TRUE(world.application.delegate().preferLocalTimeZone.get());
  auto* prices = named<QComboBox>(*settings, "Prices");
  prices->setFocus();
  QTest::keyClick(prices, Qt::Key_Home);
  emit prices->activated(prices->currentIndex());
  EXPECT_TRUE(menuItem(*window, "As Traded")->isChecked());

  menuItem(*window, "Mark Rows from the Network")->trigger();
  QApplication::processEvents();
  EXPECT_TRUE(boxWith(*settings, "Mark rows from the network")->isChecked());

  auto* service = named<QLineEdit>(*settings, "Price service");
  QTest::keyClicks(service, "localhost:81");
  QTest::keyClick(service, Qt::Key_Escape);
  EXPECT_FALSE(settings->isVisible());
  EXPECT_EQ(world.defaults.string("quoteService.apiHost"), "localhost");
}

TEST_F(SettingsWindow, GivesEveryControlAName) {
  auto* settings = open();
  int controls = 0;
  for (QWidget* control : settings->findChildren<QWidget*>()) {
    if (control->focusPolicy() == Qt::NoFocus || !control->isVisible()) {
      continue;
    }
    auto* accessible = QAccessible::queryAccessibleInterface(control);
    ASSERT_NE(accessible, nullptr);
    EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty())
        << control->metaObject()->className();
    ++controls;
  }
  EXPECT_GE(controls, 8);
}

TEST_F(SettingsWindow, TurnsDiagnosticToolsOnInAllWindowsAtOnce) {
  const auto other = world.newWindow();
  const auto isOffered = [&](const QString& item) { return menuItem(*other, item)->isVisible(); };
  EXPECT_FALSE(isOffered("Data Source") || isOffered("Network Activity"));
  boxWith(*open(), "Diagnostic tools")->click();
  QApplication::processEvents();
  EXPECT_TRUE(isOffered("Data Source") && isOffered("Network Activity"));
  menuItem(*other, "New Portfolio")->trigger();
  auto* form = openDialog<QDialog>(*other);
  ASSERT_NE(form, nullptr);
  EXPECT_TRUE(boxWith(*form, "Populate randomly")->isVisible());
  form->reject();

  menuItem(*other, "Network Activity")->trigger();
  menuItem(*window, "Diagnostic Tools")->trigger();
  QApplication::processEvents();
  EXPECT_FALSE(isOffered("Data Source") || isOffered("Network Activity"));
  for (QWidget* top : QApplication::topLevelWidgets()) {
    EXPECT_FALSE(top->isVisible() && top->windowTitle().startsWith("Network Activity"));
  }
}

TEST_F(SettingsWindow, AsksBeforeQuittingWhereThatIsWished) {
  toggleByAccessibility(*boxWith(*open(), "Ask before quitting"));
  answerNextAlert("Cancel");
  menuItem(*window, "Quit")->trigger();
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(world.application.documentController().documents().size(), 1U);
  EXPECT_TRUE(world.application.endSession(true)) << "a session that ends asks nothing";
  EXPECT_TRUE(world.application.documentController().documents().empty());
  EXPECT_FALSE(world.application.delegate().lastAppBundleVersion.get().empty());
}

TEST_F(SettingsWindow, NamesTheFolderThatPanelsOfWorkspacesBeginIn) {
  fs::create_directory(world.folder / "books");
  auto* settings = open();
  auto* folder = named<QLineEdit>(*settings, "Folder of workspaces");
  QTest::keyClicks(folder, "/no/such/place");
  QTest::keyClick(folder, Qt::Key_Return);
  EXPECT_TRUE(folder->accessibleDescription().startsWith("⚠ There is no folder"));
  folder->selectAll();
  QTest::keyClicks(folder, desktop::qtPath(world.folder / "books"));
  QTest::keyClick(folder, Qt::Key_Escape);
  const auto start = [&] { return world.application.windows().folderForPanels(nullptr); };
  EXPECT_EQ(start(), world.folder / "books");
  fs::remove(world.folder / "books");
  EXPECT_NE(start(), world.folder / "books") << "a panel cannot enter a folder that is gone";
}

TEST(HelpOfOtherKinds, IsShownByTheProgramWhereTheSystemCannot) {
  const TemporaryFolder folder;
  writeText(folder / "Guide.txt", "How to");
  desktop::DesktopShell shell;
  shell.openExternally(folder / "Guide.txt");
  bool isShown = false;
  for (QWidget* top : QApplication::topLevelWidgets()) {
    isShown |= top->isVisible() && qobject_cast<desktop::HelpWindow*>(top) != nullptr;
  }
  EXPECT_TRUE(isShown);
}

}  // namespace
}  // namespace corvane::testing
