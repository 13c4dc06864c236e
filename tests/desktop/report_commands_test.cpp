// What a user does in the reports of the windows, by keys where keys do it.

#include <gmock/gmock.h>

#include <QComboBox>
#include <QFrame>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QProgressBar>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTreeWidget>
#include <array>
#include <set>
#include <stdexcept>

#include "desktop/controls/equity_combo_box_view.h"
#include "desktop/desktop_world.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/reports/explanation_panel.h"
#include "desktop/reports/overview_view.h"
#include "desktop/reports/report_parts.h"
#include "desktop/reports/tax_roles_dialog.h"
#include "desktop/reports/tax_year_view.h"
#include "desktop/window_driver.h"
#include "desktop/workspace/reports_view.h"
#include "exchange/exports/portfolio_exporter.h"
#include "storage/application/watchlist_manager.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;

class ReportCommandsTest : public ::testing::Test {
 protected:
  ReportCommandsTest() {
    portfolio = world.addPortfolio(*window, "Long Run");
    EXPECT_TRUE(DesktopWorld::show(*window, portfolio));
    window->resize(1300, 800);
    window->show();
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
  }
  MainSplitViewController& frame() { return DesktopWorld::frameOf(*window); }
  WorkspaceReports& reports() { return *frame().reports; }
  /// Chooses a report in the source list as the keyboard does.
  void openReport(WorkspaceReport report) {
    auto* list = named<QListWidget>(*window, "Reports");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Home);
    for (const WorkspaceReports::Entry& entry : WorkspaceReports::entries) {
      if (entry.report == report) {
        break;
      }
      QTest::keyClick(list, Qt::Key_Down);
    }
    // The first row has the keyboard before it is chosen.
    if (reports().shown() != report) {
      QTest::keyClick(list, Qt::Key_Space);
    }
    EXPECT_EQ(reports().shown(), report);
    settle();
  }
  void settle() {
    EXPECT_TRUE(DesktopWorld::waitUntil([&] { return !reports().isBusy(); }));
  }
  /// The table with this name on the page that is shown.
  QTableView* table(const char* name) {
    for (auto* each : window->findChildren<QTableView*>()) {
      if (each->accessibleName() == QLatin1String(name) && each->isVisible()) {
        return each;
      }
    }
    throw std::runtime_error(std::string("no table ") + name);
  }
  static int columnOf(QTableView* table, const char* column) {
    for (int i = 0; i < table->model()->columnCount(); ++i) {
      if (table->model()->headerData(i, Qt::Horizontal).toString() == QLatin1String(column)) {
        return i;
      }
    }
    ADD_FAILURE() << "no column " << column;
    return -1;
  }
  static QString textAt(QTableView* table, int row, const char* column) {
    return table->model()->index(row, columnOf(table, column)).data().toString();
  }
  /// Opens a tab of the portfolio.
  void openTab(const char* title) {
    menuItem(*window, QString::fromLatin1(title))->trigger();
    settleTabs();
  }
  void settleTabs() {
    const auto& screen = *frame().portfolioViewController;
    EXPECT_TRUE(DesktopWorld::waitUntil(
        [&] { return !screen.returns->isBusy() && !screen.income->isBusy(); }));
  }
  /// The accessible names of the figures that are seen.
  std::string figures() {
    std::string names;
    for (auto* button : window->findChildren<QAbstractButton*>()) {
      if (dynamic_cast<desktop::FigureButton*>(button) != nullptr && button->isVisible()) {
        names += button->accessibleName().toStdString() + "\n";
      }
    }
    return names;
  }
  QPushButton* seenButton(const QString& text) {
    for (auto* button : window->findChildren<QPushButton*>()) {
      if (button->text().remove(QLatin1Char('&')) == text && button->isVisible()) {
        return button;
      }
    }
    return nullptr;
  }
  /// All that the market tells is final, and `refused` is refused; XYZ declares a dividend.
  void answerForGood() {
    world.market->script = [this, script = world.market->script](const QuoteQuery& query) {
      if (query.equity->id() == refused) {
        return ScriptedQuoteProvider::refusal();
      }
      auto answer = script(query);
      answer->events = std::vector<EquityEvent>();
      answer->durableDateRange = query.dateRange;
      if (query.equity->id() == "NOR") {
        const Date soon = Date::now() + 40 * 86400.0;
        if (query.dateRange.contains(soon)) {
          answer->events->push_back(
              {soon, EquityEvent::Dividend{1}, PriceAdjustment::adjustedForSplits});
        }
      }
      return answer;
    };
  }

  DesktopWorld world;
  std::string refused;
  std::shared_ptr<desktop::MainWindow> window = world.newWindow();
  PortfolioPointer portfolio;
};

TEST_F(ReportCommandsTest, CompareWithABenchmarkByKeys) {
  answerForGood();
  openReport(WorkspaceReport::returns);
  auto& box = reports().returns->benchmarkBox;
  box.equityComboBoxDataSource->searchDelayInterval = std::chrono::milliseconds(5);
  desktop::EquityComboBoxView* view = nullptr;
  for (auto* each : window->findChildren<desktop::EquityComboBoxView*>()) {
    const bool isBenchmark = each->field().accessibleName() == QLatin1String("Benchmark");
    view = isBenchmark && each->isVisible() ? each : view;
  }
  ASSERT_NE(view, nullptr);
  view->startEditing();
  QTest::keyClicks(&view->field(), "IDX");
  ASSERT_TRUE(DesktopWorld::waitUntil(
      [&] { return view->field().accessibleDescription().contains(QLatin1String("IDX")); }));
  QTest::keyClick(&view->field(), Qt::Key_Return);
  ASSERT_TRUE(
      DesktopWorld::waitUntil([&] { return reports().returns->figures().back().title == "IDX"; }));
  EXPECT_THAT(figures(), AllOf(HasSubstr("IDX: "), HasSubstr("difference: "),
                               HasSubstr("Volatility a year: "), HasSubstr("Max drawdown: -")));
}

TEST_F(ReportCommandsTest, LeaveOutWhatHasNoPriceAndTryAgain) {
  refused = "LUM";
  answerForGood();
  openReport(WorkspaceReport::returns);
  EXPECT_EQ(figures(), "") << "nothing that looks complete";
  QPushButton* leaveOut = seenButton(QStringLiteral("Leave Out"));
  ASSERT_NE(leaveOut, nullptr);
  leaveOut->setFocus();
  QTest::keyClick(leaveOut, Qt::Key_Space);
  settle();
  EXPECT_THAT(figures(), HasSubstr("Time-weighted: "));
  EXPECT_EQ(seenButton(QStringLiteral("Leave Out")), nullptr);
  refused.clear();
  QPushButton* retry = seenButton(QStringLiteral("Retry"));
  ASSERT_NE(retry, nullptr);
  retry->setFocus();
  QTest::keyClick(retry, Qt::Key_Space);
  settle();
  EXPECT_EQ(seenButton(QStringLiteral("Retry")), nullptr) << "nothing is missing any more";
}

TEST_F(ReportCommandsTest, ExplainFiguresOfTablesByClickAndByKeys) {
  openReport(WorkspaceReport::returns);
  auto* panel = window->findChild<desktop::ExplanationPanel*>();
  auto* months = table("Returns by month");
  ASSERT_GE(months->model()->rowCount(), 3);
  months->setFocus();
  months->setCurrentIndex(months->model()->index(1, 0));
  menuItem(*window, "Explain This Number")->trigger();
  ASSERT_TRUE(panel->isVisible()) << "the first figure of the row";
  auto* outline = panel->findChild<QTreeWidget*>();
  QTest::keyClick(outline, Qt::Key_Escape);
  ASSERT_FALSE(panel->isVisible());

  const QModelIndex january = months->model()->index(1, 1);
  months->scrollTo(january);
  const QRect cell = months->visualRect(january);
  QTest::mouseClick(months->viewport(), Qt::LeftButton, {},
                    QPoint(cell.left() + 2, cell.center().y()));
  QApplication::processEvents();
  EXPECT_FALSE(panel->isVisible()) << "beside the text a click selects the row";
  QTest::mouseClick(months->viewport(), Qt::LeftButton, {},
                    QPoint(cell.right() - 12, cell.center().y()));
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return panel->isVisible(); }));
  EXPECT_EQ(outline->topLevelItem(0)->text(1).remove(QRegularExpression(QStringLiteral("[^0-9.]"))),
            january.data().toString().remove(QRegularExpression(QStringLiteral("[^0-9.]"))));
}

/// Every figure of a table that is underlined leads to the trail of its own row.
TEST_F(ReportCommandsTest, ExplainEachLineOfATableByItself) {
  answerForGood();
  openTab("Returns");
  auto* panel = window->findChild<desktop::ExplanationPanel*>();
  auto* outline = panel->findChild<QTreeWidget*>();
  const auto numberIn = [](QString text) {
    return text.remove(QRegularExpression(QStringLiteral("[^0-9.]"))).toDouble();
  };
  auto* equities = table("Returns by equity");
  ASSERT_EQ(equities->model()->rowCount(), 3);
  std::set<QString> told;
  for (int row = 0; row < 3; ++row) {
    for (const char* column : {"Bought", "Gain", "Time-w.", "Money-w."}) {
      equities->setFocus();  // which the outline has taken
      equities->setCurrentIndex(equities->model()->index(row, columnOf(equities, column)));
      menuItem(*window, "Explain This Number")->trigger();
      ASSERT_TRUE(panel->isVisible());
      const QTreeWidgetItem* root = outline->topLevelItem(0);
      EXPECT_EQ(numberIn(root->text(1)), numberIn(textAt(equities, row, column)))
          << column << " of row " << row;
      EXPECT_THAT(root->text(0).toStdString(),
                  HasSubstr(textAt(equities, row, "Symbol").left(3).toStdString()));
      told.insert(root->text(1));
    }
  }
  EXPECT_GE(told.size(), 9U) << "the rows differ";
}

TEST_F(ReportCommandsTest, RecomputeForTheEquityThatIsPicked) {
  answerForGood();
  openTab("Returns");
  QComboBox* picker = nullptr;
  for (auto* each : window->findChildren<QComboBox*>()) {
    picker = each->isVisible() && each->accessibleName() == QLatin1String("Equity") ? each : picker;
  }
  ASSERT_NE(picker, nullptr);
  ASSERT_EQ(picker->count(), 4) << "all, and three equities";
  const std::string ofAll = figures();
  picker->setFocus();
  QTest::keyClick(picker, Qt::Key_Down);
  settleTabs();
  const EquityPointer& chosen = frame().portfolioViewController->returns->chosenEquity();
  ASSERT_NE(chosen, nullptr);
  EXPECT_EQ(chosen->symbol, "LUM");
  EXPECT_NE(figures(), ofAll);
  EXPECT_EQ(table("Returns by equity")->model()->rowCount(), 1);
  EXPECT_EQ(picker->currentText(), QStringLiteral("LUM"));
  QTest::keyClick(picker, Qt::Key_Up);
  settleTabs();
  EXPECT_EQ(figures(), ofAll);
}

TEST_F(ReportCommandsTest, ShowTheYearOfIncomeThatIsPicked) {
  openReport(WorkspaceReport::income);
  auto* months = table("Income by equity and month");
  EXPECT_EQ(months->model()->rowCount(), 0) << "nothing was paid this year";
  auto* year = named<QComboBox>(*window, "Year of the table");
  for (auto* each : window->findChildren<QComboBox*>()) {
    year = each->isVisible() && each->accessibleName() == year->accessibleName() ? each : year;
  }
  year->setFocus();
  QTest::keyClick(year, Qt::Key_Down);
  EXPECT_EQ(months->model()->rowCount(), 2) << "of NOR, and the sum";
  EXPECT_EQ(textAt(months, 0, "Total"), QStringLiteral("CA$240.00"));
}

/// Each command of the menu writes the list that it names.
TEST_F(ReportCommandsTest, ExportTheListOfATaxYearThatIsChosen) {
  openReport(WorkspaceReport::taxYear);
  auto* year = named<QComboBox>(*window, "Tax year");
  year->setFocus();
  QTest::keyClick(year, Qt::Key_Down);
  settle();
  ASSERT_EQ(table("Disposals")->model()->rowCount(), 1);
  std::vector<std::shared_ptr<PortfolioExporter>> exported;
  window->workspaceView().reportsView().taxYear().exportHandler = [&](auto exporter) {
    exported.push_back(std::move(exporter));
  };
  QPushButton* button = seenButton(QStringLiteral("Export"));
  ASSERT_TRUE(button != nullptr && button->menu() != nullptr);
  struct Expected {
    const char* title;
    const char* name;
    const char* field;
  };
  const std::array<Expected, 5> lists = {
      {{"Disposals…", "", "ledgerGain"},
       {"Totals…", " Totals", "losses"},
       {"Income…", " Income", "kind"},
       {"To Check…", " To Check", "deemedGain"},
       {"Cost Base at the End of the Year…", " Cost Base", "costBase"}}};
  const auto actions = button->menu()->actions();
  ASSERT_EQ(actions.size(), 5);
  const std::string of = "Tax Year " + std::to_string(reports().taxYear->chosenYear());
  for (std::size_t i = 0; i < lists.size(); ++i) {
    QAction* action = actions.at(static_cast<qsizetype>(i));
    EXPECT_EQ(action->text().remove(QLatin1Char('&')), QString::fromUtf8(lists.at(i).title));
    action->trigger();
    ASSERT_EQ(exported.size(), i + 1);
    EXPECT_THAT(exported.back()->defaultFilename().value_or(""), HasSubstr(of + lists.at(i).name));
    EXPECT_THAT(exported.back()->allFields(), Contains(lists.at(i).field));
  }
}

TEST_F(ReportCommandsTest, TellDeclaredPaymentsApart) {
  answerForGood();
  openReport(WorkspaceReport::income);
  EXPECT_THAT(figures(), HasSubstr("of it declared: CA$400.00")) << "1 on 400 shares";
  auto* expected = table("Yields and expected income");
  EXPECT_EQ(textAt(expected, 1, "Symbol"), QStringLiteral("NOR — NOR Incorporated"));
  EXPECT_EQ(textAt(expected, 1, "Next 12 Months"), QStringLiteral("CA$400.00"));
}

TEST_F(ReportCommandsTest, ChooseYearAndPersonByKeys) {
  openReport(WorkspaceReport::taxYear);
  auto& tax = *reports().taxYear;
  QPushButton* answer = seenButton(QStringLiteral("Say Whose…"));
  ASSERT_NE(answer, nullptr) << "the banner asks whose the portfolio is";
  answer->setFocus();
  QTest::keyClick(answer, Qt::Key_Space);
  auto* sheet = openDialog<desktop::TaxRolesDialog>(*window);
  ASSERT_NE(sheet, nullptr);
  named<QComboBox>(*sheet, "Role of Long Run")->setCurrentIndex(2);
  QTest::keyClicks(named<QLineEdit>(*sheet, "Person of Long Run"), "Kim");
  buttonWith(*sheet, "Apply")->click();
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return tax.persons().size() == 2; }));
  EXPECT_EQ(seenButton(QStringLiteral("Say Whose…")), nullptr);

  auto* year = named<QComboBox>(*window, "Tax year");
  year->setFocus();
  QTest::keyClick(year, Qt::Key_Down);
  settle();
  EXPECT_EQ(table("Disposals")->model()->rowCount(), 0) << "not the user's own";
  auto* person = named<QComboBox>(*window, "Person");
  person->setFocus();
  QTest::keyClick(person, Qt::Key_Down);
  settle();
  EXPECT_EQ(tax.chosenPerson(), 1U);
  EXPECT_EQ(table("Disposals")->model()->rowCount(), 1);
}

TEST_F(ReportCommandsTest, RecordAnAdjustmentFromItsRow) {
  const auto& manager = window->document()->model()->portfolioManagers.front();
  const YearMonthDay today = YearMonthDay::of(Date::now(), manager->calendar);
  const auto sale = [&](int shares, int cash, Date date) {
    return BasicTransaction{BasicTransaction::Trade{world.market->equityWithId("WHT"),
                                                    {Currency::cad(), Decimal(cash)},
                                                    Decimal(cash),
                                                    Decimal(shares)},
                            date, date, std::nullopt};
  };
  const Date date = today.startIn(manager->calendar);
  manager->recordTransactions({sale(100, 2500, date), sale(-50, -250, date)}, portfolio, nullptr);
  openReport(WorkspaceReport::taxYear);
  auto* disposals = table("Disposals");
  ASSERT_EQ(disposals->model()->rowCount(), 1);
  QAction* record = nullptr;
  for (QAction* each : disposals->actions()) {
    record = each->text() == QStringLiteral("Record Adjustment…") ? each : record;
  }
  ASSERT_NE(record, nullptr);
  EXPECT_FALSE(record->isEnabled()) << "no row is chosen";
  disposals->setFocus();
  QTest::keyClick(disposals, Qt::Key_Down);
  if (!disposals->currentIndex().isValid()) {
    disposals->setCurrentIndex(disposals->model()->index(0, 0));
  }
  ASSERT_TRUE(record->isEnabled());
  const std::size_t before = portfolio->transactions().size();
  answerNextAlert(QStringLiteral("Record Adjustment"));
  record->trigger();
  EXPECT_TRUE(
      DesktopWorld::waitUntil([&] { return portfolio->transactions().size() == before + 1; }));
}

TEST_F(ReportCommandsTest, FetchWhatTheCoverageLacksByKeys) {
  openReport(WorkspaceReport::coverage);
  auto* lines = table("Coverage by equity");
  ASSERT_EQ(lines->model()->rowCount(), 3);
  EXPECT_THAT(textAt(lines, 0, "Days Held").toStdString(), HasSubstr("days missing"))
      << "what a bar shows is read out";
  lines->setFocus();
  QTest::keyClick(lines, Qt::Key_Down);
  EXPECT_EQ(reports().coverage->chosenRow(), 1U);
  EXPECT_GT(table("Stretches of days")->model()->rowCount(), 0);
  const auto missing = [&] {
    return reports().coverage->table.records().front().daysIn(PriceCoverage::State::missing);
  };
  EXPECT_GT(missing(), 300);

  answerForGood();
  QPushButton* fetch = seenButton(QStringLiteral("Fetch What Is Missing"));
  ASSERT_NE(fetch, nullptr);
  fetch->setFocus();
  QTest::keyClick(fetch, Qt::Key_Space);
  EXPECT_EQ(fetch->text().remove(QLatin1Char('&')), QStringLiteral("Cancel"));
  EXPECT_TRUE(fetch->hasFocus());
  EXPECT_TRUE(named<QProgressBar>(*window, "Fetching what is missing")->isVisible());
  settle();
  // Whether the session of yesterday is final depends on the hour.
  EXPECT_LT(missing(), 7);
  EXPECT_EQ(reports().coverage->chosenRow(), 1U) << "the choice stays";
  EXPECT_EQ(lines->currentIndex().row(), 1);
  QTest::keyClick(lines, Qt::Key_Return);
  EXPECT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::equity);
}

TEST_F(ReportCommandsTest, KeepsSelectionAndScrollWhileAllPortfoliosFollowPrices) {
  const auto other = world.addPortfolio(*window, "Short Run");
  window->resize(1000, 640);
  openReport(WorkspaceReport::overview);
  auto* holdings = table("All holdings");
  ASSERT_EQ(holdings->model()->rowCount(), 5) << "three equities, cash and the sum";
  EXPECT_EQ(textAt(holdings, 0, "Held By").toStdString(), "Long Run, Short Run");
  holdings->setFocus();
  holdings->selectRow(1);
  const QString chosen = textAt(holdings, 1, "Symbol");
  auto* page = window->findChild<desktop::OverviewView*>()->findChild<desktop::ReportPage*>();
  page->verticalScrollBar()->setValue(page->verticalScrollBar()->maximum());
  const int scrolled = page->verticalScrollBar()->value();
  EXPECT_GT(scrolled, 0);

  int resets = 0;
  QObject::connect(holdings->model(), &QAbstractItemModel::modelReset, window.get(),
                   [&] { ++resets; });
  const auto refresh = [&] {
    NotificationCenter::defaultCenter().post(WatchlistManager::didRefreshPortfolioEquities, nullptr,
                                             {portfolio, other});
    QTest::qWait(20);
    settle();
  };
  const QString before = textAt(holdings, 0, "Value");
  const EquityPointer first = reports().overview->holdingTable.records()[0].line.equity;
  first->recentPrice = *first->recentPrice * Decimal(2);
  refresh();
  EXPECT_NE(textAt(holdings, 0, "Value"), before);
  EXPECT_EQ(holdings->currentIndex().row(), 1);
  EXPECT_TRUE(holdings->hasFocus());
  EXPECT_EQ(page->verticalScrollBar()->value(), scrolled);
  // The chosen one becomes the most valuable: the choice goes along.
  const EquityPointer second = reports().overview->holdingTable.records()[1].line.equity;
  second->recentPrice = *second->recentPrice * Decimal(1000);
  refresh();
  EXPECT_EQ(textAt(holdings, 0, "Symbol"), chosen);
  EXPECT_EQ(holdings->currentIndex().row(), 0);
  EXPECT_EQ(resets, 0);

  QTest::keyClick(holdings, Qt::Key_Return);
  EXPECT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::equity);
  openReport(WorkspaceReport::overview);
  auto* portfolios = table("All portfolios");
  portfolios->setFocus();
  portfolios->selectRow(1);
  QTest::keyClick(portfolios, Qt::Key_Return);
  EXPECT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::portfolio);
  EXPECT_EQ(frame().portfolioViewController->currentData().portfolio, other);
}

TEST_F(ReportCommandsTest, ExplainTheTotalOfAllPortfolios) {
  openReport(WorkspaceReport::overview);
  EXPECT_THAT(figures(), AllOf(HasSubstr("Total value: "), HasSubstr("Net deposits: ")));
  desktop::FigureButton* total = nullptr;
  for (auto* button : window->findChildren<QAbstractButton*>()) {
    if (button->isVisible() && button->accessibleName().startsWith(QLatin1String("Total value"))) {
      total = dynamic_cast<desktop::FigureButton*>(button);
    }
  }
  ASSERT_NE(total, nullptr);
  total->setFocus();
  QTest::keyClick(total, Qt::Key_Return);
  EXPECT_TRUE(DesktopWorld::waitUntil(
      [&] { return window->findChild<desktop::ExplanationPanel*>()->isVisible(); }));
}

}  // namespace
}  // namespace corvane::testing
