#include "desktop/frame/command_palette_dialog.h"

#include <gmock/gmock.h>

#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include "desktop/desktop_world.h"
#include "desktop/look/qt_text.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

using desktop::CommandPaletteDialog;
using desktop::MainWindow;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CommandPaletteBox : public ::testing::Test {
 protected:
  CommandPaletteDialog* open(const QString& command = "Command Palette") {
    menuItem(*window, command)->trigger();
    return openDialog<CommandPaletteDialog>(*window);
  }
  static QLineEdit& fieldOf(const QDialog& box) { return *box.findChild<QLineEdit*>(); }
  static QStringList rowsOf(const QDialog& box) {
    QStringList rows;
    const auto* model = box.findChild<QListView*>()->model();
    for (int i = 0; i < model->rowCount(); ++i) {
      rows.append(model->index(i, 0).data(Qt::AccessibleTextRole).toString());
    }
    return rows;
  }
  void run(const QString& letters) {
    auto* box = open();
    QTest::keyClicks(&fieldOf(*box), letters);
    QTest::keyClick(&fieldOf(*box), Qt::Key_Return);
    EXPECT_FALSE(box->isVisible());
    QApplication::processEvents();
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
};

TEST_F(CommandPaletteBox, RunsACommandByAFewLetters) {
  EXPECT_EQ(menuItem(*window, "Command Palette")->shortcut(), Qt::CTRL | Qt::Key_K);
  run("newpo");
  auto* form = openDialog<QDialog>(*window);
  ASSERT_NE(form, nullptr);
  EXPECT_EQ(form->windowTitle().toStdString(), "New Portfolio");
  form->reject();
}

TEST_F(CommandPaletteBox, OffersTheMenusAsTheyAreWithTheirShortcuts) {
  const QStringList rows = rowsOf(*open());
  EXPECT_TRUE(rows.contains("New Portfolio…, Ctrl+Shift+N, Portfolio"));
  EXPECT_TRUE(rows.contains("New Transaction…, Ctrl+T, Portfolio, not available now"));
  EXPECT_TRUE(rows.contains("Copy, Ctrl+C, Edit"));
  EXPECT_TRUE(rows.contains("Adjusted for Splits, Prices › Price Adjustment, on"));
  EXPECT_TRUE(rows.filter("Cache Only").isEmpty()) << "a menu that is hidden";
  EXPECT_TRUE(rows.filter("Palette").isEmpty());
}

TEST_F(CommandPaletteBox, HasEveryCommandOfTheWindow) {
  window->show();
  ASSERT_TRUE(DesktopWorld::show(*window, world.addPortfolio(*window, "Home")));
  window->openCommandPalette(CommandPaletteDialog::Contents::everything);
  const QStringList rows = rowsOf(*openDialog<CommandPaletteDialog>(*window));
  const auto isInHiddenMenu = [](const QAction& action) {
    const QObjectList places = action.associatedObjects();
    return std::any_of(places.begin(), places.end(), [](QObject* place) {
      const auto* menu = qobject_cast<QMenu*>(place);
      return menu != nullptr && !menu->menuAction()->isVisible();
    });
  };
  const auto isOfHiddenButton = [](const QAction& action) {
    const auto* menu = qobject_cast<const QMenu*>(action.parent());
    const auto* button =
        menu == nullptr ? nullptr : qobject_cast<const QPushButton*>(menu->parentWidget());
    return button != nullptr && !button->isVisible();
  };
  int commands = 0;
  for (const QAction* action : window->findChildren<QAction*>()) {
    const QString text = action->text().section('\t', 0, 0).remove(QLatin1Char('&')).trimmed();
    const QWidget* place = qobject_cast<const QWidget*>(action->parent());
    // Screens that are not seen have commands as well, and the palette itself is left out of it.
    if (text.isEmpty() || !action->isVisible() || action->menu() != nullptr ||
        isInHiddenMenu(*action) || isOfHiddenButton(*action) || text == "Command Palette…" ||
        (place != nullptr && qobject_cast<const QMenu*>(place) == nullptr && !place->isVisible())) {
      continue;
    }
    ++commands;
    EXPECT_TRUE(std::any_of(rows.begin(), rows.end(),
                            [&](const QString& row) { return row.startsWith(text); }))
        << text.toStdString() << " of a " << action->parent()->metaObject()->className();
  }
  EXPECT_GT(commands, 40);

  openDialog<CommandPaletteDialog>(*window)->close();
  QApplication::processEvents();
  window->workspaceView().controller().showReport(WorkspaceReport::taxYear);
  EXPECT_FALSE(rowsOf(*open()).filter("Disposals…").isEmpty()) << "the menu of a button";
}

TEST_F(CommandPaletteBox, BringsMenusInLineThatNobodyHasOpened) {
  world.application.delegate().preferLocalTimeZone.set(true);
  window->openCommandPalette(CommandPaletteDialog::Contents::everything);
  EXPECT_TRUE(rowsOf(*openDialog<CommandPaletteDialog>(*window))
                  .contains("Dates in Local Time Zone, View, on"));
}

TEST_F(CommandPaletteBox, ShowsPortfoliosAndHeldEquities) {
  const auto home = world.addPortfolio(*window, "Home");
  const auto& source = *DesktopWorld::frameOf(*window).masterSourceViewController;
  run("home");
  EXPECT_EQ(std::get<PortfolioPointer>(source.currentDetailObject()), home);
  run("lum");
  EXPECT_EQ(std::get<EquityPointer>(source.currentDetailObject())->symbol, "LUM");
}

TEST_F(CommandPaletteBox, IsUsedByKeysAndTellsWhatIsSelected) {
  auto* box = open();
  QLineEdit& field = fieldOf(*box);
  QTest::keyClick(&field, Qt::Key_Down);
  EXPECT_THAT(field.accessibleDescription().toStdString(), HasSubstr(" 2 of "));
  EXPECT_EQ(box->findChild<QListView*>()->currentIndex().row(), 1);
  QTest::keyClicks(&field, "new trans");
  EXPECT_THAT(field.accessibleDescription().toStdString(),
              StartsWith("New Transaction…, Ctrl+T, Portfolio, not available now. 1 of "));
  QTest::keyClick(&field, Qt::Key_Return);
  EXPECT_TRUE(box->isVisible()) << "it cannot be done, so nothing happens";
  QTest::keyClick(&field, Qt::Key_Escape);
  EXPECT_FALSE(box->isVisible());
}

TEST_F(CommandPaletteBox, ListsAllShortcuts) {
  const QStringList rows = rowsOf(*open("Keyboard Shortcuts"));
  EXPECT_TRUE(rows.contains("Command Palette…, Ctrl+K, Edit"));
  EXPECT_TRUE(rows.contains("Refresh Prices, F5, Prices"));
  EXPECT_TRUE(rows.filter("About").isEmpty());
}

}  // namespace
}  // namespace corvane::testing
