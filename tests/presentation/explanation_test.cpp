// The panel that explains figures: what is fetched for it, and the rows that it leads to.

#include "presentation/daily_closes.h"
#include "presentation/portfolio/portfolio_view_controller.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/reports/explanation_view_controller.h"
#include "presentation/taxes/tax_year_view_controller.h"
#include "reports/trail/heading_trails.h"
#include "reports/trail/ledger_trails.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Pair;

/// A US dollar costs 3 Canadian ones until the 4th of March 2021, and 2 from then on.
class ExplanationTest : public PortfolioScreenWorld {
 protected:
  ExplanationTest() {
    quoteDollars(2);
    abc->recentPrice = 12;
    prices->script = dailyCloses([](const YearMonthDay& each) {
      return each < YearMonthDay{2021, 3, 5} ? 3 : 2;
    });
    panel.openRowHandler = [this](const PortfolioPointer& whose, std::size_t row) {
      opened.emplace_back(whose, row);
    };
  }

  /// All nodes of `node` that name a row.
  static void gatherRows(const TrailNode& node, std::vector<const TrailNode*>& rows) {
    if (node.row) {
      rows.push_back(&node);
    }
    for (const TrailNode& child : node.children) {
      gatherRows(child, rows);
    }
  }
  /// Opens every row that the trail of `maker` names.
  void openRowsOf(const TrailMaker& maker) {
    opened.clear();
    panel.explain(maker);
    ASSERT_TRUE(panel.trail());
    std::vector<const TrailNode*> rows;
    gatherRows(*panel.trail(), rows);
    for (const TrailNode* node : rows) {
      panel.openRow(*node);
    }
  }
  template <typename Model>
  static TrailMaker trailIn(const Model& table, std::size_t row, std::string_view column) {
    const auto& columns = table.columns();
    return table.trailOf(
        row, static_cast<std::size_t>(std::ranges::find(columns, column, &TableColumn::identifier) -
                                      columns.begin()));
  }

  ExplanationViewController panel;
  std::vector<std::pair<PortfolioPointer, std::size_t>> opened;
};

TEST_F(ExplanationTest, TellDepositsAtTheRatesOfTheirDaysOnceTheMarketHasToldThese) {
  const auto dollars = [&](int dayOfMonth, const char* amount) {
    return on(day(2021, 3, dayOfMonth))
        .make(BasicTransaction::Transfer{{Currency::usd(), dec(amount)}});
  };
  record({on(day(2021, 3, 1)).deposit("1000"), dollars(3, "500"), dollars(8, "-100")});
  const auto screen = PortfolioViewController::make(surroundings);
  screen->setPortfolio(portfolio);
  const auto gain = screen->gainTrail();
  panel.explain(gain.maker, gain.fetch);
  ASSERT_TRUE(panel.trail()) << "which waits for nothing";
  EXPECT_EQ(panel.trail()->children.back().value, 1000 + 400 * 2);
  EXPECT_EQ(panel.trail()->children.back().atRatesOfDays, std::nullopt);
  EXPECT_FALSE(panel.isCompleted());

  int changes = 0;
  panel.changeHandler = [&] { ++changes; };
  waitUntil([&] { return !panel.isAwaiting(); });
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(panel.isCompleted());
  const TrailNode& deposits = panel.trail()->children.back();
  EXPECT_EQ(deposits.value, 1000 + 400 * 2);
  EXPECT_EQ(deposits.atRatesOfDays, 1000 + 500 * 3 - 100 * 2);
  EXPECT_EQ(panel.ratesOfDaysText(deposits, *panel.trail()), "2,300 CAD");
  EXPECT_EQ(panel.ratesOfDaysText(*panel.trail(), *panel.trail()), "") << "of deposits alone";
  EXPECT_THAT(panel.text(), HasSubstr("at the rates of their days 1,500 CAD"));
  EXPECT_THAT(panel.csv(), HasSubstr("\"note\",\"atRatesOfDays\"\r\n"));
  EXPECT_THAT(panel.csv(), HasSubstr("\"at 3 on its day\",\"1500\"\r\n"));
}

TEST_F(ExplanationTest, LeaveAnotherTrailAloneWhenAnAnswerComesLate) {
  record({on(day(2021, 3, 3)).make(BasicTransaction::Transfer{{Currency::usd(), 500}})});
  const auto screen = PortfolioViewController::make(surroundings);
  screen->setPortfolio(portfolio);
  std::function<void()> late;
  const TrailFetch fetch = [&](std::function<void()> whenThere) { late = std::move(whenThere); };
  panel.explain(screen->gainTrail().maker, fetch);
  panel.explain(screen->valueTrailMaker());
  late();
  EXPECT_EQ(panel.trail()->label, "Value");
  EXPECT_FALSE(panel.isCompleted());

  panel.explain(screen->gainTrail().maker, fetch);
  panel.close();
  late();
  EXPECT_FALSE(panel.isOpen());
  EXPECT_FALSE(panel.trail());
}

/// Without other currencies nobody is asked.
TEST_F(ExplanationTest, FetchNothingForDepositsInThePrimaryCurrency) {
  record({on(day(2021, 3, 1)).deposit("1000")});
  const auto screen = PortfolioViewController::make(surroundings);
  screen->setPortfolio(portfolio);
  const auto gain = screen->gainTrail();
  EXPECT_EQ(gain.fetch, nullptr);
  panel.explain(gain.maker, gain.fetch);
  ASSERT_TRUE(panel.trail());
  EXPECT_FALSE(panel.tellsRatesOfDays(*panel.trail())) << "which would be the same once more";
}

/// Two portfolios have one name: each line leads to a row of its own.
class TwinsTest : public ExplanationTest {
 protected:
  TwinsTest() {
    portfolio->name = twin->name = "Savings";
    using enum BasicTransaction::YieldType;
    record({on(day(2021, 3, 1)).deposit("1000"), buy("50", "500"),
            on(day(2021, 3, 4)).yield(dividend, "5", dec("50"))});
    manager->recordTransactions(
        {on(day(2021, 3, 1)).deposit("100"), on(day(2021, 3, 2)).deposit("100"), buy("10", "80"),
         on(day(2021, 3, 5)).yield(dividend, "2", dec("10"))},
        twin, undo);
  }

  std::shared_ptr<TaxYearViewController> shownTaxYear() {
    model_->portfolioManagers = {manager};
    auto tax = TaxYearViewController::make(surroundings);
    tax->setDocumentModel(model_);
    tax->setShown(true);
    waitUntil([&] { return !tax->isBusy(); });
    return tax;
  }

  const PortfolioPointer twin = manager->createPortfolio(Currency::cad());

 private:
  std::shared_ptr<WorkspaceModel> model_ = std::make_shared<WorkspaceModel>();
};

TEST_F(TwinsTest, LeadIncomeToItsRows) {
  const auto income = IncomeViewController::make(surroundings);
  income->setShown(true);
  income->setScope(
      {.name = "All", .portfolios = {portfolio, twin}, .days = {{2021, 1, 1}, {2021, 3, 10}}});
  waitUntil([&] { return !income->isBusy(); });
  openRowsOf(trailIn(income->monthTable, 0, "month3"));
  EXPECT_EQ(panel.trail()->value, 7);
  EXPECT_THAT(opened, ElementsAre(Pair(portfolio, 2U), Pair(twin, 3U)));
  openRowsOf(income->figures().front().explain);
  EXPECT_THAT(opened, ElementsAre(Pair(portfolio, 2U), Pair(twin, 3U)));
  EXPECT_THAT(panel.text(), HasSubstr("row 4 of “Savings”"));
}

TEST_F(TwinsTest, LeadTheIncomeOfATaxYearToItsRows) {
  manager->recordTransactions(
      {on(day(2021, 3, 6)).adjustment("-3"), on(day(2021, 3, 7)).sell("4", "40")}, twin, undo);
  const auto tax = shownTaxYear();
  openRowsOf(trailIn(tax->income, 0, "equivalent"));
  EXPECT_EQ(panel.trail()->value, 7);
  EXPECT_THAT(opened, ElementsAre(Pair(portfolio, 2U), Pair(twin, 3U)));
  const std::size_t last = tax->income.numberOfRows() - 1;
  EXPECT_EQ(trailIn(tax->income, last, "equivalent"), nullptr) << "fees have no rate";
  openRowsOf(trailIn(tax->income, last, "amount"));
  EXPECT_EQ(panel.trail()->value, -3);
  EXPECT_THAT(opened, ElementsAre(Pair(twin, 4U)));

  openRowsOf(trailIn(tax->costs, 0, "costBase"));
  EXPECT_THAT(opened, ::testing::IsSupersetOf(
                          {Pair(portfolio, std::size_t{1}), Pair(twin, std::size_t{2})}));
  openRowsOf(trailIn(tax->disposals, 0, "costBase"));
  EXPECT_THAT(opened, ::testing::Contains(Pair(twin, 5U)));
}

/// A line that the table still shows while the ledger goes on.
TEST_F(TwinsTest, TellThatTheLedgerOfATaxYearHasChanged) {
  manager->recordTransactions({on(day(2021, 3, 7)).sell("4", "47")}, twin, undo);
  const auto tax = shownTaxYear();
  std::vector<std::pair<TrailMaker, Decimal>> makers;
  for (const char* column : {"taxGain", "costBase", "ledgerGain"}) {
    const TrailMaker maker = trailIn(tax->disposals, 0, column);
    ASSERT_NE(maker, nullptr) << column;
    makers.emplace_back(maker, maker()->value);
  }
  manager->recordTransactions({on(day(2021, 2, 1)).deposit("1")}, twin, undo);
  for (const auto& [maker, shown] : makers) {
    EXPECT_EQ(maker()->value, shown);
    EXPECT_FALSE(maker()->children.empty()) << "the row has moved: " << maker()->label;
  }
  manager->recordTransactions({on(day(2021, 3, 6)).buy("4", "1")}, twin, undo);
  for (const auto& [maker, shown] : makers) {
    EXPECT_EQ(maker()->value, shown);
    EXPECT_THAT(maker()->note, HasSubstr("has changed")) << maker()->label;
  }
}

/// The outline stands as it was made while the ledger goes on.
TEST_F(TwinsTest, FindARowThatHasMoved) {
  panel.explain([&] { return costBaseTrail(*twin, 2, manager->calendar); });
  ASSERT_TRUE(panel.trail());
  const TrailNode added = panel.trail()->children.back();
  manager->recordTransactions({on(day(2021, 2, 1)).deposit("1")}, twin, undo);
  panel.openRow(added);
  EXPECT_THAT(opened, ElementsAre(Pair(twin, 3U)));
  const auto& rows = twin->transactions();
  manager->deleteTransactions({rows[4], rows[3]}, twin, undo);
  panel.openRow(added);
  EXPECT_EQ(opened.size(), 1U) << "it is gone";
}

TEST_F(TwinsTest, LeadTheLinesOfEquitiesToTheirRows) {
  const auto returns = ReturnsViewController::make(surroundings);
  returns->setShown(true);
  returns->setScope(
      {.name = "Savings", .portfolios = {twin}, .days = {{2021, 3, 1}, {2021, 3, 10}}});
  waitUntil([&] { return !returns->isBusy(); });
  openRowsOf(trailIn(returns->equityTable, 0, "bought"));
  EXPECT_THAT(opened, ElementsAre(Pair(twin, 2U)));
  openRowsOf(trailIn(returns->equityTable, 0, "dividends"));
  EXPECT_THAT(opened, ElementsAre(Pair(twin, 3U)));
}

}  // namespace
}  // namespace corvane::testing
