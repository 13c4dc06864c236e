// How screens share their room, and what they offer where there is nothing yet.

#include <gmock/gmock.h>

#include <QAbstractItemView>
#include <QHeaderView>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTabWidget>
#include <QTest>

#include "desktop/charts/pie_chart_widget.h"
#include "desktop/controls/table_view.h"
#include "desktop/desktop_world.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/window_driver.h"
#include "desktop/workspace/source_list_view.h"

namespace corvane::testing {
namespace {

using desktop::MainWindow;
using desktop::TableView;

class Layout : public ::testing::Test {
 protected:
  void showPortfolio() {
    const auto portfolio = world.addPortfolio(*window, "Retirement");
    window->show();
    ASSERT_TRUE(DesktopWorld::show(*window, portfolio));
  }
  void resize(int width, int height) {
    window->setFixedSize(width, height);
    QApplication::processEvents();
  }
  [[nodiscard]] TableView& holdings() const { return *named<TableView>(*window, "Holdings"); }
  [[nodiscard]] QWidget& pie() const {
    return *named<desktop::PieChartWidget>(*window, "Holdings by market value");
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
};

TEST_F(Layout, APieGivesWayBeforeColumnsOfMoneyDo) {
  showPortfolio();
  resize(1000, 640);
  EXPECT_FALSE(pie().isVisible());
  EXPECT_EQ(holdings().horizontalScrollBar()->maximum(), 0) << "a column is out of sight";
  resize(1600, 900);
  EXPECT_TRUE(pie().isVisible());
  EXPECT_EQ(holdings().horizontalScrollBar()->maximum(), 0);
}

TEST_F(Layout, AWideWindowPutsNoNameFarFromItsNumbers) {
  showPortfolio();
  resize(2560, 1440);
  const TableView& table = holdings();
  int shown = 0;
  int whole = 0;
  for (int column = 0; column < table.horizontalHeader()->count(); ++column) {
    shown += table.isColumnHidden(column) ? 0 : 1;
    whole += table.isColumnHidden(column) ? 0 : table.columnWidth(column);
  }
  const int room = whole - table.neededWidth();
  ASSERT_GT(room, 400) << "the window is not wide enough to tell";
  const int names = table.columnWidth(table.columnWithIdentifier("name"));
  EXPECT_LT(names, whole / 2);
  EXPECT_EQ(whole, table.viewport()->width()) << "all room is shared";
  EXPECT_GT(table.columnWidth(table.columnWithIdentifier("name") + 1), room / (2 * shown));
}

TEST_F(Layout, AColumnThatTheUserSizedKeepsItsWidth) {
  showPortfolio();
  resize(1600, 900);
  TableView& table = holdings();
  const int column = table.columnWithIdentifier("name") + 1;
  table.horizontalHeader()->resizeSection(column, 222);
  resize(2400, 900);
  EXPECT_EQ(table.columnWidth(column), 222);
  resize(1000, 900);
  EXPECT_EQ(table.columnWidth(column), 222);
}

TEST_F(Layout, AnEmptyWorkspaceAndPortfolioSayWhatToDo) {
  window->show();
  QPushButton* create = buttonWith(*window, "New Portfolio…");
  ASSERT_TRUE(create->isVisible() && create->isEnabled());
  create->click();
  auto* form = openDialog<QDialog>(*window);
  ASSERT_NE(form, nullptr);
  buttonWith(*form, "Create")->click();
  QApplication::processEvents();
  EXPECT_FALSE(create->isVisible());
  EXPECT_TRUE(buttonWith(*window, "Import a Statement…")->isVisible());
  QPushButton* record = buttonWith(*window, "Add a Transaction…");
  ASSERT_TRUE(record->isVisible() && record->isEnabled());
  EXPECT_FALSE(window->workspaceView().portfolioView().tabs().isVisible());
  record->click();
  auto* entry = openDialog<QDialog>(*window);
  ASSERT_NE(entry, nullptr);
  entry->reject();

  showPortfolio();
  EXPECT_FALSE(record->isVisible());
  EXPECT_TRUE(window->workspaceView().portfolioView().tabs().isVisible());

  QPushButton* find = buttonWith(*window->findChild<desktop::SourceView*>(), "Find an Equity");
  ASSERT_TRUE(find->isVisible());
  DesktopWorld::frameOf(*window).masterSourceViewController->addToWatchlist(
      world.market->equityWithId("NOR"));
  EXPECT_FALSE(find->isVisible());
  EXPECT_TRUE(named<QAbstractItemView>(*window, "Watchlist")->isVisible());
}

TEST(ScrollBars, AreThumbsWithoutArrows) {
  QScrollBar bar(Qt::Vertical);
  bar.resize(bar.sizeHint().width(), 200);
  bar.setRange(0, 1000);
  bar.setPageStep(100);
  QStyleOptionSlider option;
  option.initFrom(&bar);
  option.minimum = 0;
  option.maximum = 1000;
  option.pageStep = 100;
  option.orientation = Qt::Vertical;
  const auto part = [&](int position, QStyle::SubControl which) {
    option.sliderPosition = position;
    return bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, which, &bar);
  };
  EXPECT_TRUE(part(0, QStyle::SC_ScrollBarAddLine).isEmpty());
  EXPECT_EQ(part(0, QStyle::SC_ScrollBarSlider).top(), 0);
  EXPECT_EQ(part(1000, QStyle::SC_ScrollBarSlider).bottom(), 199);
  EXPECT_GE(part(0, QStyle::SC_ScrollBarSlider).height(), 28) << "too small to take hold of";
  const QRect thumb = part(400, QStyle::SC_ScrollBarSlider);
  EXPECT_EQ(part(400, QStyle::SC_ScrollBarSubPage).bottom() + 1, thumb.top());
  EXPECT_EQ(part(400, QStyle::SC_ScrollBarAddPage).top(), thumb.bottom() + 1);

  // The thumb follows the pointer, which is pressed on it and drawn down.
  bar.show();
  const QPoint hold = part(0, QStyle::SC_ScrollBarSlider).center();
  QTest::mousePress(&bar, Qt::LeftButton, {}, hold);
  QTest::mouseMove(&bar, hold + QPoint(0, 100));
  QTest::mouseRelease(&bar, Qt::LeftButton, {}, hold + QPoint(0, 100));
  EXPECT_GT(bar.value(), 400);
}

TEST(HighContrast, StrengthensTextsAndLeavesBackgrounds) {
  for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
    const auto distance = [&](desktop::Contrast contrast, Colour::Name name) {
      desktop::theme::apply(*qApp, appearance, contrast);
      return std::abs(desktop::theme::colour(name).lightness() -
                      desktop::theme::colour(Colour::Name::controlBackground).lightness());
    };
    for (const auto name : {Colour::Name::secondaryLabel, Colour::Name::tertiaryLabel,
                            Colour::Name::separator, Colour::Name::systemRed}) {
      EXPECT_GT(distance(desktop::Contrast::high, name),
                distance(desktop::Contrast::normal, name) + 15);
    }
    EXPECT_EQ(distance(desktop::Contrast::high, Colour::Name::alternatingRowBackground),
              distance(desktop::Contrast::normal, Colour::Name::alternatingRowBackground));
  }
  desktop::theme::apply(*qApp, Appearance::light);
}

}  // namespace
}  // namespace corvane::testing
