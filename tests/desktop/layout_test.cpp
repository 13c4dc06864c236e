// How screens share their room, and what they offer where there is nothing yet.

#include <gmock/gmock.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

#include "desktop/charts/pie_chart_widget.h"
#include "desktop/controls/dates_picker_view.h"
#include "desktop/controls/flow_row.h"
#include "desktop/controls/table_view.h"
#include "desktop/desktop_world.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/reports/coverage_bar.h"
#include "desktop/reports/report_heading.h"
#include "desktop/reports/report_parts.h"
#include "desktop/reports/returns_view.h"
#include "desktop/transactions/edit_transaction_dialog.h"
#include "desktop/window_driver.h"
#include "desktop/workspace/reports_view.h"
#include "desktop/workspace/source_list_view.h"

namespace corvane::testing {
namespace {

using desktop::MainWindow;
using desktop::PortfolioView;
using desktop::ReportHeading;
using desktop::ReturnsView;
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
  TableView& table = holdings();
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

TEST_F(Layout, TheSourceListMakesRoomForAnExplanationInANarrowWindow) {
  showPortfolio();
  resize(1000, 640);
  auto& frame = DesktopWorld::frameOf(*window);
  const auto* source = window->findChild<desktop::SourceView*>();
  const auto days = window->workspaceView().portfolioView().findChildren<QDateEdit*>();
  ASSERT_FALSE(days.isEmpty());
  const int width = source->width();
  frame.explanation.explain(frame.portfolioViewController->valueTrailMaker());
  QApplication::processEvents();
  EXPECT_FALSE(source->isVisible());
  for (const QDateEdit* day : days) {
    EXPECT_GE(day->width(), day->sizeHint().width()) << "a day is cut";
  }
  frame.explanation.close();
  QApplication::processEvents();
  EXPECT_TRUE(source->isVisible());
  EXPECT_EQ(source->width(), width) << "it has the width again that it had";

  resize(1600, 900);
  frame.explanation.explain(frame.portfolioViewController->valueTrailMaker());
  EXPECT_TRUE(source->isVisible()) << "there is room for both";
  frame.explanation.close();

  resize(1000, 640);
  menuItem(*window, "Show Source List")->trigger();
  frame.explanation.explain(frame.portfolioViewController->valueTrailMaker());
  frame.explanation.close();
  EXPECT_FALSE(source->isVisible()) << "who has put it away has it back only by asking";
}

TEST_F(Layout, SelectorsTakeASecondLineOnlyWhereTheyMust) {
  showPortfolio();
  const auto* presets =
      window->workspaceView().portfolioView().findChild<desktop::DatesPickerView*>();
  ASSERT_NE(presets, nullptr);
  resize(1000, 640);
  EXPECT_EQ(presets->height(), presets->layout()->totalSizeHint().height())
      << "there is room for one";
  QWidget narrow;
  auto* row = new desktop::FlowRow(&narrow);
  for (int i = 0; i < 3; ++i) {
    auto* box = new QWidget;
    box->setFixedSize(100, 20);
    row->addWidget(box);
  }
  const int gap = row->spacing();
  EXPECT_EQ(row->sizeHint(), QSize(300 + 2 * gap, 20));
  EXPECT_EQ(row->heightForWidth(300 + 2 * gap), 20);
  EXPECT_EQ(row->heightForWidth(300), 40 + gap);
  EXPECT_EQ(row->heightForWidth(150), 60 + 2 * gap);
  narrow.resize(300, 100);
  narrow.show();
  EXPECT_EQ(row->itemAt(2)->geometry().topLeft(), QPoint(0, 20 + gap));
}

TEST(FlowRows, PutWhatFollowsAStretchAtTheEndOfTheLine) {
  QWidget place;
  auto* row = new desktop::FlowRow(&place);
  const auto add = [row] {
    auto* box = new QWidget;
    box->setFixedSize(100, 20);
    row->addWidget(box);
    return box;
  };
  const QWidget* first = add();
  row->addStretch();
  const QWidget* last = add();
  place.resize(400, 100);
  place.show();
  EXPECT_EQ(first->pos(), QPoint(0, 0));
  EXPECT_EQ(last->pos(), QPoint(300, 0));
  place.resize(150, 100);
  EXPECT_EQ(last->pos(), QPoint(0, 20 + row->spacing()));
}

/// A table of one column whose text has a shorter form.
class DatesOfARun : public TableModel {
 public:
  [[nodiscard]] const std::vector<TableColumn>& columns() const override {
    static const std::vector<TableColumn> columns = {{.identifier = "date", .title = "Date"}};
    return columns;
  }
  [[nodiscard]] std::size_t numberOfRows() const override { return 1; }
  [[nodiscard]] AttributedText cell(std::size_t, std::size_t) const override {
    return AttributedText("MMMMMMMMMMMMMMMMMMMM", {.colour = Colour::Name::systemRed});
  }
  [[nodiscard]] AttributedText briefCell(std::size_t, std::size_t) const override {
    return AttributedText("MMM", {.colour = Colour::Name::systemBlue});
  }
};

TEST(Tables, WriteWhatHasNoRoomInItsShorterForm) {
  DatesOfARun dates;
  desktop::TableModelAdapter adapter(dates);
  TableView table(QStringLiteral("Dates"));
  table.setTable(&adapter, dates);
  const auto isDrawnIn = [&](Colour::Name name, int width) {
    table.resize(width + 2 * table.frameWidth(), 200);
    table.setColumnWidth(0, width);
    const QColor wanted = desktop::theme::colour(name);
    const QImage picture = table.viewport()->grab().toImage();
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) {
        if (picture.pixelColor(x, y) == wanted) {
          return true;
        }
      }
    }
    return false;
  };
  const int whole = table.neededWidth();
  EXPECT_TRUE(isDrawnIn(Colour::Name::systemRed, whole));
  EXPECT_FALSE(isDrawnIn(Colour::Name::systemBlue, whole));
  EXPECT_TRUE(isDrawnIn(Colour::Name::systemBlue, whole / 2));
  EXPECT_EQ(adapter.index(0, 0).data(Qt::AccessibleTextRole).toString(), "MMMMMMMMMMMMMMMMMMMM");
}

/// Text of the size that somebody chooses who sees little, as long as this lives.
class LargeText {
 public:
  LargeText() {
    QFont large = before_;
    large.setPointSizeF(16);
    QApplication::setFont(large);
  }
  ~LargeText() { QApplication::setFont(before_); }

 private:
  const QFont before_ = QApplication::font();
};

/// A portfolio in a small window with such text.
struct SmallWindow {
  SmallWindow() {
    window->setFixedSize(1000, 640);
    window->show();
    EXPECT_TRUE(DesktopWorld::show(*window, portfolio));
  }

  const LargeText large;
  DesktopWorld world;
  const std::shared_ptr<MainWindow> window = world.newWindow();
  const PortfolioPointer portfolio = world.addPortfolio(*window, "Retirement");
};

/// The texts of `form` that have less room than they need.
std::vector<std::string> cutTexts(const QWidget& form) {
  std::vector<std::string> cut;
  for (const QLabel* label : form.findChildren<QLabel*>()) {
    const QSize needed =
        label->wordWrap() ? QSize(0, label->heightForWidth(label->width())) : label->sizeHint();
    if (label->isVisible() && !label->text().isEmpty() &&
        (label->width() < needed.width() || label->height() < needed.height())) {
      cut.push_back(label->text().toStdString());
    }
  }
  for (const QAbstractButton* button : form.findChildren<QAbstractButton*>()) {
    if (button->isVisible() && button->width() < button->minimumSizeHint().width()) {
      cut.push_back(button->text().toStdString());
    }
  }
  return cut;
}

TEST(LargeTexts, AreCutInNoFormAndFormsFitASmallWindow) {
  const SmallWindow small;
  const auto& window = small.window;
  const auto look = [&](const std::string& name) {
    QApplication::processEvents();
    auto* form = openDialog<QDialog>(*window);
    ASSERT_NE(form, nullptr) << name;
    EXPECT_THAT(cutTexts(*form), ::testing::IsEmpty()) << name;
    EXPECT_LE(form->width(), 1000) << name;
    EXPECT_LE(form->height(), 640) << name;
  };
  menuItem(*window, "New Transaction")->trigger();
  auto* entry = openDialog<desktop::EditTransactionDialog>(*window);
  ASSERT_NE(entry, nullptr);
  for (const TransactionModeEntry& mode : EditTransactionViewController::transactionModeEntries()) {
    if (!mode.title.empty()) {
      entry->form().chooseMode(mode.mode);
      look(std::string(mode.title));
    }
  }
  entry->reject();
  QApplication::processEvents();
  for (const char* command : {"New Portfolio", "Portfolio Details", "Settings",
                              "Imports of Statements", "Keyboard Shortcuts"}) {
    menuItem(*window, command)->trigger();
    look(command);
    openDialog<QDialog>(*window)->reject();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

TEST(LargeTexts, LeaveAPortfolioAndItsExplanationWholeInASmallWindow) {
  const SmallWindow small;
  const auto& window = small.window;
  auto& frame = DesktopWorld::frameOf(*window);
  frame.explanation.explain(frame.portfolioViewController->valueTrailMaker());
  QApplication::processEvents();

  PortfolioView& view = window->workspaceView().portfolioView();
  const QRect place(QPoint(0, 0), view.size());
  const auto isWhole = [&](const QWidget& part) {
    return part.width() >= part.sizeHint().width() &&
           place.contains(QRect(part.mapTo(&view, QPoint(0, 0)), part.size()));
  };
  EXPECT_TRUE(isWhole(*named<QLabel>(view, "Value")));
  EXPECT_TRUE(isWhole(*buttonWith(view, "New Transaction…")));
  EXPECT_TRUE(isWhole(*buttonWith(view, "Details…")));
  EXPECT_TRUE(isWhole(*named<QComboBox>(view, "Asset")));
  EXPECT_TRUE(isWhole(*named<QDateEdit>(view, "First day")));
  EXPECT_TRUE(isWhole(*named<QDateEdit>(view, "Last day")));

  const auto* outline = named<QTreeWidget>(*window, "How this number came about");
  constexpr int valueColumn = 1;
  EXPECT_LE(outline->columnViewportPosition(valueColumn) + outline->columnWidth(valueColumn),
            outline->viewport()->width())
      << "a value is out of sight";
}

TEST(LargeTexts, LeaveTheOutcomeOfScenariosBesideTheirStrategy) {
  const SmallWindow small;
  auto& frame = DesktopWorld::frameOf(*small.window);
  frame.masterSourceViewController->setCurrentDetailObject(small.world.market->equityWithId("NOR"));
  for (const char* command : {"Scenario Batch", "Scenario"}) {
    menuItem(*small.window, command)->trigger();
    QApplication::processEvents();
    const QWidget* strategy = nullptr;
    for (const QScrollArea* area : small.window->findChildren<QScrollArea*>()) {
      strategy = area->isVisible() && area->accessibleName() == "Strategy" ? area : strategy;
    }
    ASSERT_NE(strategy, nullptr) << command;
    const auto* beside = qobject_cast<QSplitter*>(strategy->parentWidget())->widget(1);
    EXPECT_LE(strategy->geometry().right(), beside->geometry().left()) << command;
    EXPECT_LE(beside->geometry().right(), beside->parentWidget()->width()) << command;
    for (const QWidget* control : beside->findChildren<QWidget*>()) {
      if (control->isVisible() && (qobject_cast<const QComboBox*>(control) != nullptr ||
                                   qobject_cast<const QPushButton*>(control) != nullptr)) {
        EXPECT_GE(control->width(), control->sizeHint().width()) << command;
      }
    }
  }
}

TEST(LargeTexts, LetNothingInTheSourceListLieOverAnother) {
  SmallWindow small;
  small.world.addPortfolio(*small.window, "Trading");
  QApplication::processEvents();
  auto& source = *small.window->findChild<desktop::SourceView*>();
  auto* prices = source.findChild<QLabel*>(QStringLiteral("priceStatus"));
  prices->setText(
      QStringLiteral("Prices refreshed at 8:19 PM. There is no data for KEEWA.TO. "
                     "2 more without a price. Next at 8:21:27 PM."));
  prices->show();
  // No other events: a refresh would set the text of its own.
  const auto makeHigh = [&](int height) {
    small.window->setFixedSize(1000, height);
    QApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
  };
  makeHigh(641);
  const auto* reports = named<QAbstractItemView>(source, "Reports");
  const auto* portfolios = named<QAbstractItemView>(source, "Portfolios");
  EXPECT_LE(reports->geometry().bottom(), prices->geometry().top());
  EXPECT_LE(prices->geometry().bottom(), source.height());
  EXPECT_GT(portfolios->verticalScrollBar()->maximum(), 0) << "gives way first";
  EXPECT_EQ(prices->toolTip(), prices->text()) << "then the text is cut";
  makeHigh(900);
  EXPECT_EQ(portfolios->verticalScrollBar()->maximum(), 0);
  EXPECT_EQ(prices->height(), prices->heightForWidth(prices->width()));
  EXPECT_EQ(prices->toolTip(), QString());
}

TEST(LargeTexts, PutTheChoicesOfAReportBelowATitleThatHasNoRoomBesideThem) {
  const auto isBelow = [](int width) {
    DesktopWorld world;
    const auto window = world.newWindow();
    const auto portfolio = world.addPortfolio(*window, "Retirement");
    window->setFixedSize(width, 640);
    window->show();
    EXPECT_TRUE(DesktopWorld::show(*window, portfolio));
    const auto* returns = window->workspaceView().portfolioView().findChild<ReturnsView*>();
    window->workspaceView().portfolioView().tabs().setCurrentIndex(3);
    QApplication::processEvents();
    EXPECT_TRUE(returns->isVisible());
    const auto* title = returns->findChild<ReportHeading*>()->findChild<QLabel*>();
    EXPECT_LT(title->height(), 2 * title->fontMetrics().height());
    const auto* benchmark = named<QLineEdit>(*returns, "Benchmark");
    return benchmark->mapTo(returns, QPoint(0, 0)).y() >
           title->mapTo(returns, QPoint(0, 0)).y() + title->height();
  };
  EXPECT_FALSE(isBelow(1000));
  const LargeText large;
  EXPECT_TRUE(isBelow(1000));
  EXPECT_FALSE(isBelow(1440));
}

TEST(LargeTexts, LeaveTheKindsOfIncomeAndTheLegendOfCoverageWhole) {
  const LargeText large;
  DesktopWorld world;
  const auto window = world.newWindow();
  window->setFixedSize(1000, 640);
  window->show();
  DesktopWorld::frameOf(*window).showReport(WorkspaceReport::income);
  QApplication::processEvents();
  int boxes = 0;
  for (const QCheckBox* box : window->findChildren<QCheckBox*>()) {
    if (box->isVisible()) {
      ++boxes;
      EXPECT_LE(box->geometry().right(), box->parentWidget()->width()) << qPrintable(box->text());
    }
  }
  EXPECT_GE(boxes, 5);
  const desktop::CoverageLegend legend;
  EXPECT_EQ(legend.heightForWidth(2000), legend.sizeHint().height());
  EXPECT_EQ(legend.heightForWidth(400), 2 * legend.sizeHint().height());
}

/// A figure whose last digits are cut off is another figure.
TEST(LargeTexts, LeaveTheFiguresOfReportsWhole) {
  // How many stand beside each other.
  const auto inOneLine = [] {
    desktop::FiguresRow row;
    row.resize(640, 600);
    row.setFigures(std::vector<ReportFigure>(
        6, {.title = "Gain", .value = AttributedText("CA$1,174,866.31"), .detail = "realized"}));
    row.show();
    QApplication::processEvents();
    int beside = 0;
    for (QAbstractButton* button : row.findChildren<QAbstractButton*>()) {
      EXPECT_GE(button->width(), dynamic_cast<desktop::FigureButton&>(*button).leastWidth());
      beside += button->y() == 0 ? 1 : 0;
    }
    return beside;
  };
  EXPECT_EQ(inOneLine(), 3);
  const LargeText large;
  EXPECT_EQ(inOneLine(), 2);
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

/// A style sheet keeps kilobytes for each widget, and a hidden page as much as one that is seen.
TEST_F(Layout, NothingIsStyledOrMadeThatNobodySees) {
  showPortfolio();
  EXPECT_THAT(qApp->styleSheet(), ::testing::Eq(QString()));
  for (const QWidget* widget : window->findChildren<QWidget*>()) {
    EXPECT_TRUE(widget->styleSheet().isEmpty()) << qPrintable(widget->accessibleName());
  }
  const auto pages = [&] { return window->workspaceView().reportsView().count(); };
  EXPECT_EQ(pages(), 0);
  auto& frame = DesktopWorld::frameOf(*window);
  frame.showReport(WorkspaceReport::coverage);
  frame.showReport(WorkspaceReport::income);
  frame.showReport(WorkspaceReport::coverage);
  EXPECT_EQ(pages(), 2);
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
      desktop::theme::apply(appearance, contrast);
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
    // A tinted cell of a table, which is not near to white or black.
    const Colour tint =
        Colour(Colour::Name::controlBackground).blended(0.5, Colour::Name::systemRed);
    desktop::theme::apply(appearance, desktop::Contrast::high);
    const QColor strong = desktop::theme::background(tint);
    desktop::theme::apply(appearance, desktop::Contrast::normal);
    EXPECT_EQ(strong, desktop::theme::colour(tint));
  }
  desktop::theme::apply(Appearance::light);
}

}  // namespace
}  // namespace corvane::testing
