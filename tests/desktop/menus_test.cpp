// What the menus offer on which screen.

#include <gmock/gmock.h>

#include <QTabWidget>

#include "desktop/desktop_world.h"
#include "desktop/equity/equity_view.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

using desktop::MainWindow;

class Menus : public ::testing::Test {
 protected:
  void SetUp() override {
    portfolio = world.addPortfolio(*window, "Retirement");
    DesktopWorld::frameOf(*window).masterSourceViewController->addToWatchlist(
        world.market->equityWithId("NOR"));
    window->show();
  }
  void showEquity() {
    DesktopWorld::frameOf(*window).masterSourceViewController->setCurrentDetailObject(
        world.market->equityWithId("NOR"));
    QApplication::processEvents();
  }
  [[nodiscard]] bool isOffered(const QString& item) const {
    const QAction* action = menuItem(*window, item);
    return action != nullptr && action->isVisible() && action->isEnabled();
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
  PortfolioPointer portfolio;
};

TEST_F(Menus, OfferToAPortfolioWhatAnEquityHasNoUseFor) {
  const QStringList ofPortfolios = {"Portfolio Details",   "Delete Portfolio", "New Transaction",
                                    "Import Transactions", "Import Statement", "Export"};
  ASSERT_TRUE(DesktopWorld::show(*window, portfolio));
  for (const QString& item : ofPortfolios) {
    EXPECT_TRUE(isOffered(item)) << item.toStdString();
  }
  showEquity();
  for (const QString& item : ofPortfolios) {
    EXPECT_FALSE(isOffered(item)) << item.toStdString();
  }
  EXPECT_TRUE(isOffered("New Portfolio"));
  EXPECT_TRUE(isOffered("Remove from Watchlist")) << "it is selected in the list";
}

TEST_F(Menus, NameTheTabsOfTheScreenThatIsSeen) {
  ASSERT_TRUE(DesktopWorld::show(*window, portfolio));
  QAction* second = menuItem(*window, "Transactions");
  EXPECT_EQ(second->shortcut(), Qt::CTRL | Qt::Key_2);
  second->trigger();
  EXPECT_EQ(window->workspaceView().portfolioView().tabs().currentIndex(), 1);
  showEquity();
  EXPECT_EQ(second->text(), "History");
  second->trigger();
  EXPECT_EQ(window->workspaceView().equityView().tabs().currentIndex(), 1);
  EXPECT_EQ(window->workspaceView().portfolioView().tabs().currentIndex(), 1)
      << "the other screen stays as it was";
}

TEST_F(Menus, OfferTheColumnsOfTheTableThatIsSeen) {
  ASSERT_TRUE(DesktopWorld::show(*window, portfolio));
  menuItem(*window, "Holdings")->trigger();
  QApplication::processEvents();
  EXPECT_TRUE(isOffered("Unrealized Gain"));
  menuItem(*window, "Gains")->trigger();
  QApplication::processEvents();
  EXPECT_TRUE(isOffered("Proceeds of Sale"));
  QAction* proceeds = menuItem(*window, "Proceeds of Sale");
  EXPECT_TRUE(proceeds->isChecked());
  proceeds->trigger();
  EXPECT_FALSE(menuItem(*window, "Proceeds of Sale")->isChecked());
}

TEST_F(Menus, RevertOnlyWhatWasSavedAndChanged) {
  EXPECT_FALSE(isOffered("Revert to Saved")) << "there is nothing to go back to";
  window->document()->save(world.folder / "Family.corvane");
  EXPECT_FALSE(isOffered("Revert to Saved")) << "nothing has changed";
  DesktopWorld::frameOf(*window).masterSourceViewController->addToWatchlist(
      world.market->equityWithId("LUM"));
  QApplication::processEvents();
  ASSERT_TRUE(isOffered("Revert to Saved"));
  EXPECT_TRUE(window->isWindowModified());
  answerNextAlert("Cancel");
  menuItem(*window, "Revert to Saved")->trigger();
  EXPECT_EQ(window->document()->model()->watchlistEquities.size(), 2U);
  answerNextAlert("Revert");
  menuItem(*window, "Revert to Saved")->trigger();
  EXPECT_EQ(window->document()->model()->watchlistEquities.size(), 1U);
  EXPECT_FALSE(window->isWindowModified());
}

TEST_F(Menus, HideAndShowTheSourceListAndTheSearchBringsItBack) {
  QWidget* list = window->findChild<QWidget*>(QStringLiteral("sourceList"));
  ASSERT_NE(list, nullptr);
  menuItem(*window, "Show Source List")->trigger();
  EXPECT_FALSE(list->isVisible());
  menuItem(*window, "Find an Equity")->trigger();
  EXPECT_TRUE(list->isVisible());
  EXPECT_TRUE(menuItem(*window, "Show Source List")->isChecked());
}

}  // namespace
}  // namespace corvane::testing
