// The way to the screen of an equity, and what the menus do to it.

#include <gmock/gmock.h>

#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTextBrowser>
#include <QTextDocument>
#include <fstream>

#include "desktop/app/help_window.h"
#include "desktop/desktop_world.h"
#include "desktop/equity/equity_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/window_driver.h"
#include "desktop/workspace/source_row_delegate.h"
#include "platform/system/resources.h"

namespace corvane::testing {
namespace {

using desktop::MainWindow;
using ::testing::HasSubstr;

class EquityScreenTest : public ::testing::Test {
 protected:
  MainSplitViewController& frame() { return DesktopWorld::frameOf(*window); }
  void watch(const char* symbol) {
    frame().masterSourceViewController->addToWatchlist(world.market->equityWithId(symbol));
  }
  bool settles() {
    return DesktopWorld::waitUntil([&] {
      return !frame().equityViewController->overview->isFetching() &&
             !frame().equityViewController->history->isFetching();
    });
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
};

TEST_F(EquityScreenTest, LeadsFromTheSearchBoxToTheHistory) {
  watch("LUM");
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  menuItem(*window, "Find an Equity")->trigger();
  auto* search = named<QLineEdit>(*window, "Search");
  EXPECT_TRUE(search->hasFocus());
  QTest::keyClicks(search, "NOR");
  QTest::keyClick(search, Qt::Key_Return);  // before the search has begun
  ASSERT_TRUE(DesktopWorld::waitUntil(
      [&] { return frame().currentDetailTab() == MainSplitViewController::DetailTab::equity; }));
  EXPECT_EQ(frame().equityViewController->currentEquity()->symbol, "NOR");
  buttonWith(*window, "Add to Watchlist")->click();
  EXPECT_EQ(named<QListView>(*window, "Watchlist")->model()->rowCount(), 2);
  EXPECT_FALSE(buttonWith(*window, "Add to Watchlist")->isVisible());
  EXPECT_EQ(menuItem(*window, "Undo")->text().toStdString(), "&Undo Watch “NOR”");

  window->setFixedSize(1000, 640);
  menuItem(*window, "History")->trigger();
  ASSERT_TRUE(settles());
  auto* table = named<QTableView>(*window, "Price history");
  EXPECT_GT(table->model()->rowCount(), 10);
  const QScrollBar* bar = table->verticalScrollBar();
  EXPECT_TRUE(DesktopWorld::waitUntil([&] {
    return bar->maximum() > 0 && bar->value() == bar->maximum();
  })) << "the newest rows are not in sight";
  table->selectRow(3);
  EXPECT_EQ(frame().equityViewController->history->chart.highlightedDataIndex(), 3U);
  EXPECT_FALSE(table->model()->index(3, 0).data(Qt::BackgroundRole).isValid());
  menuItem(*window, "Mark Rows from the Network")->trigger();
  EXPECT_TRUE(DesktopWorld::waitUntil([&] {
    return table->model()->index(3, 0).data(Qt::BackgroundRole).isValid();
  })) << "the screen hears of the setting on the main queue";
}

TEST_F(EquityScreenTest, ShowsTheNewestRowsThatCameWhileTheHistoryWasHidden) {
  watch("LUM");
  window->setFixedSize(1000, 640);
  auto* watchlist = named<QListView>(*window, "Watchlist");
  watchlist->setCurrentIndex(watchlist->model()->index(0, 0));
  menuItem(*window, "History")->trigger();
  ASSERT_TRUE(frame().equityViewController->history->isFetching());
  menuItem(*window, "Overview")->trigger();
  ASSERT_TRUE(settles());
  QApplication::processEvents();
  menuItem(*window, "History")->trigger();
  ASSERT_FALSE(frame().equityViewController->history->isFetching());
  const QScrollBar* bar = named<QTableView>(*window, "Price history")->verticalScrollBar();
  EXPECT_TRUE(DesktopWorld::waitUntil([&] {
    return bar->maximum() > 0 && bar->value() == bar->maximum();
  })) << bar->value()
      << " of " << bar->maximum();
}

TEST_F(EquityScreenTest, OpensWhatIsHeldFromTheHoldings) {
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Home")));
  auto* holdings = named<QTableView>(*window, "Holdings");
  emit holdings->activated(holdings->model()->index(0, 0));
  EXPECT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::portfolio)
      << "cash has no screen";
  holdings->setFocus();
  holdings->setCurrentIndex(holdings->model()->index(1, 0));
  QTest::keyClick(holdings, Qt::Key_Return);
  ASSERT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::equity);
  EXPECT_EQ(frame().equityViewController->currentEquity()->symbol, "LUM");
}

TEST_F(EquityScreenTest, OpensTheEquityOfATransaction) {
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Home")));
  window->workspaceView().portfolioView().tabs().setCurrentIndex(1);
  auto* transactions = named<QTableView>(*window, "Transactions");
  transactions->setFocus();
  transactions->selectRow(0);
  EXPECT_FALSE(menuItem(*window, "Show Equity")->isEnabled()) << "a deposit has none";
  transactions->selectRow(1);
  EXPECT_TRUE(menuItem(*window, "Show Equity")->isEnabled());
  QTest::keyClick(transactions, Qt::Key_Return, Qt::ControlModifier);
  ASSERT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::equity);
  EXPECT_EQ(frame().equityViewController->currentEquity()->symbol, "NOR");
}

TEST_F(EquityScreenTest, OpensWhatWasTradedFromTheGains) {
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Home")));
  window->workspaceView().portfolioView().tabs().setCurrentIndex(2);
  auto* gains = named<QTableView>(*window, "Realized gains and losses");
  emit gains->activated(gains->model()->index(2, 0));
  ASSERT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::equity);
  EXPECT_EQ(frame().equityViewController->currentEquity()->symbol, "WHT");
}

TEST_F(EquityScreenTest, LeavesTheCommandsOfTheWindowToIt) {
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Home")));
  int exports = 0;
  QAction* action = menuItem(*window, "Export");
  action->disconnect();
  QObject::connect(action, &QAction::triggered, action, [&] { ++exports; });
  for (auto* field : {named<QWidget>(*window, "Search"), named<QWidget>(*window, "First day")}) {
    field->setFocus();
    ASSERT_TRUE(field->hasFocus());
    QTest::keyClick(field, Qt::Key_E, Qt::ControlModifier);
  }
  EXPECT_EQ(exports, 2);

  // What edits the text stays with the field.
  auto* search = named<QLineEdit>(*window, "Search");
  search->setFocus();
  QTest::keyClicks(search, "abc");
  QTest::keyClick(search, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(search->selectedText(), "abc");
  QTest::keyClicks(search, "d");
  QTest::keyClick(search, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(search->text(), "abc");
}

TEST_F(EquityScreenTest, MovesRowsOfTheWatchlistByKey) {
  for (const char* symbol : {"AA", "BB", "CC"}) {
    watch(symbol);
  }
  auto* list = named<QListView>(*window, "Watchlist");
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  list->setFocus();
  list->setCurrentIndex(list->model()->index(2, 0));
  QTest::keyClick(list, Qt::Key_Up, Qt::AltModifier);
  EXPECT_EQ(list->model()->index(1, 0).data().toString(), QStringLiteral("CC"));
  EXPECT_EQ(menuItem(*window, "Undo")->text().toStdString(), "&Undo Move “CC”");
  QTest::keyClick(list, Qt::Key_Delete);
  EXPECT_EQ(list->model()->rowCount(), 2);
  EXPECT_EQ(menuItem(*window, "Undo")->text().toStdString(), "&Undo Unwatch “CC”");
}

TEST_F(EquityScreenTest, ChecksTheDataSourceInAllWindows) {
  const auto other = world.newWindow();
  menuItem(*window, "Cache Only")->trigger();
  for (const auto& shown : {window, other}) {
    EXPECT_TRUE(menuItem(*shown, "Cache Only")->isChecked());
    EXPECT_FALSE(menuItem(*shown, "Network Only")->isChecked());
    EXPECT_FALSE(menuItem(*shown, "Network and Cache")->isChecked());
  }
  menuItem(*other, "Network and Cache")->trigger();
  EXPECT_TRUE(menuItem(*window, "Network and Cache")->isChecked());
}

TEST_F(EquityScreenTest, CutsNamesBetweenWords) {
  const QFontMetricsF metrics(QApplication::font());
  const QString name = QStringLiteral("Northern Lights Mining Corporation");
  EXPECT_EQ(desktop::cutByWords(name, metrics, 10'000), name);
  const double room = metrics.horizontalAdvance(QStringLiteral("Northern Lights Mini…"));
  EXPECT_EQ(desktop::cutByWords(name, metrics, room), QStringLiteral("Northern Lights…"));
  EXPECT_THAT(desktop::cutByWords(name, metrics, metrics.horizontalAdvance(QStringLiteral("Nort…")))
                  .toStdString(),
              HasSubstr("…"));
}

TEST(HelpWindowTest, ShowsPagesWithTheWayBack) {
  desktop::HelpWindow help;
  help.showPage(resourcePath("release-notes.html"));
  EXPECT_EQ(help.windowTitle().toStdString(), "Release Notes — Corvane Help");
  help.showPage(resourcePath("user-guide.html"));
  auto* page = named<QTextBrowser>(help, "Page");
  EXPECT_TRUE(page->isBackwardAvailable());
  page->backward();
  EXPECT_EQ(help.windowTitle().toStdString(), "Release Notes — Corvane Help");
  EXPECT_FALSE(desktop::HelpWindow::canShow("report.pdf"));
}

TEST(HelpWindowTest, LeavesNoRoomForPicturesThatAreNotThere) {
  const TemporaryFolder folder;
  std::ofstream(folder / "page.html") << R"(<p>One</p><p><img src="a/b.png" width="640"></p>)";
  desktop::HelpWindow help;
  const auto height = [&] {
    help.showPage(folder / "page.html");
    return named<QTextBrowser>(help, "Page")->document()->size().height();
  };
  help.show();
  EXPECT_LT(height(), 150);
  std::filesystem::create_directory(folder / "a");
  QImage picture(640, 400, QImage::Format_RGB32);
  picture.fill(Qt::blue);
  ASSERT_TRUE(picture.save(desktop::qtPath(folder / "a/b.png")));
  help.showPage(resourcePath("release-notes.html"));
  EXPECT_GT(height(), 400);
}

}  // namespace
}  // namespace corvane::testing
