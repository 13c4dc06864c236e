// What a simulated trader does and what its run comes to.

#include "scenario/scenario_analyzer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "ledger/portfolio/portfolio_manager_error.h"
#include "platform/async/notification_center.h"
#include "scenario/scenario_builder.h"
#include "scenario/scenario_single_portfolio_manager.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;

InvestmentStrategy strategy() {
  return InvestmentStrategy::defaultStrategy();
}

TEST(ScenarioAnalyzer, BuysLowAndSellsHigh) {
  Market market;
  market.quote("9.80", "10.20", "10").nextDay().quote("9.50", "9.60", "9.55").nextDay();
  market.quote("10.80", "11.00", "10.90");
  const auto analysis = market.analyze(strategy());
  EXPECT_THAT(rowsOf(analysis), ElementsAre("open 0 10 0 1000", "buy 98 10.2 98 0.4",
                                            "sell -98 10.8 0 1058.8", "close 0 10.9 0 1058.8"));
  EXPECT_THAT(analysis.portfolioValues, ElementsAre(dec("980.40"), dec("936.30"), dec("1058.80")));
  EXPECT_EQ(analysis.lastClosePrice, dec("10.90"));
  EXPECT_EQ(analysis.totalTradesMade, 2);
  EXPECT_EQ(analysis.totalDaysTradedOn, 2);
  EXPECT_EQ(analysis.totalTradingDays, 3);
  EXPECT_EQ(analysis.netGain(), dec("58.80"));
  EXPECT_EQ(analysis.rateOfReturn(), dec("0.0588"));
  EXPECT_EQ(analysis.annualizedReturn(), dec("4.9392"));
  EXPECT_EQ(analysis.portfolio->name, "ABC Scenario");
  EXPECT_EQ(analysis.portfolio->transactions().front()->settlementDate(),
            market.quotes.front().fromDate);
}

TEST(ScenarioAnalyzer, CountsAnEveningForItsOwnDayInTheYearlyReturn) {
  Market market;
  market.quote("10", "10", "10");
  for (const double hour : {15, 20}) {
    market.quote("11", "11", "11");
    Quote& late = market.quotes.back();
    late.fromDate = market.quotes.front().fromDate + (hour - 10) * 3600;
    late.toDate = late.fromDate + 3600;
  }
  const auto analysis = market.analyze(InvestmentStrategy::buyAndHold());
  EXPECT_EQ(market.analyzer().tradingDayNumbers[2], market.analyzer().tradingDayNumbers[1] + 1)
      << "20:00 in New York is of another trading day than 15:00";
  EXPECT_EQ(analysis.totalTradingDays, 2);
  EXPECT_EQ(analysis.totalSessions, 1);
  EXPECT_EQ(analysis.annualizedReturn(), dec("25.2"));
}

TEST(ScenarioAnalyzer, TradesAtATargetThatIsTouchedExactly) {
  struct Case {
    const char *low, *high, *event;
  };
  // After a purchase at 10 the trader buys more at 9.50 and sells at 10.50; with the stop loss it
  // sells as soon as the range touches 9 and buys as soon as it touches 11.
  const Case cases[] = {{"9.40", "9.50", "buy 52"},           {"9.40", "9.51", nullptr},
                        {"10.50", "10.60", "sell -50"},       {"10.49", "10.60", nullptr},
                        {"9.00", "9.60", "stopLossSell -20"}, {"9.01", "9.60", nullptr},
                        {"10.40", "11.00", "stopLossBuy 27"}, {"10.40", "10.99", nullptr}};
  InvestmentStrategy active = strategy();
  active.targetBuyMax = 500;
  active.isStopLossActive = true;
  active.stopLossSellSpread = active.stopLossBuySpread = dec("0.1");
  active.stopLossSellSlice = dec("0.4");
  active.stopLossBuyMax = 300;
  for (const auto& [low, high, event] : cases) {
    Market market;
    market.quote("10", "10", "10").quote(low, high, low);
    const auto rows = rowsOf(market.analyze(active));
    ASSERT_EQ(rows.size(), event == nullptr ? 3U : 4U) << low << " " << high;
    if (event != nullptr) {
      EXPECT_THAT(rows[2], ::testing::StartsWith(event));
    }
    active.isStopLossActive = false;
    if (event == nullptr || std::string(event).starts_with("stop")) {
      EXPECT_EQ(rowsOf(market.analyze(active)).size(), 3U) << "without stop loss";
    }
    active.isStopLossActive = true;
  }
}

TEST(ScenarioAnalyzer, MakesNoTradeOfASliceThatRoundsToNothing) {
  InvestmentStrategy half = strategy();
  half.targetBuyMax = 70;
  half.targetSellSlice = dec("0.5");
  Market market;
  market.quote("10", "10", "10");
  for (const char* price : {"11", "12", "13", "14"}) {
    market.quote(price, price, price);
  }
  const auto analysis = market.analyze(half, 70);
  EXPECT_THAT(rowsOf(analysis),
              ElementsAre("open 0 10 0 70", "buy 7 10 7 0", "sell -3 11 4 33", "sell -2 12 2 57",
                          "sell -1 13 1 70", "close 0 14 1 70"));
  EXPECT_EQ(analysis.totalTradesMade, 4);

  // The rule that has nothing to sell has had its turn: the stop-loss purchase does not step in.
  half.isStopLossActive = true;
  EXPECT_EQ(rowsOf(market.analyze(half, 70)), rowsOf(analysis));
}

TEST(ScenarioAnalyzer, LeavesTargetsBeyondAllNumbersOutOfReach) {
  InvestmentStrategy patient = InvestmentStrategy::buyAndHold();
  patient.targetSellSlice = 1;
  patient.isStopLossActive = true;
  patient.stopLossBuySpread = patient.stopLossSellSpread = Decimal::greatestFiniteMagnitude();
  patient.stopLossBuyMax = 1000;
  patient.stopLossSellSlice = 1;
  Market market;
  market.quote("30", "30", "30").quote("1", "90000000", "1");
  EXPECT_THAT(rowsOf(market.analyze(patient)),
              ElementsAre("open 0 30 0 1000", "buy 33 30 33 10", "close 0 1 33 10"));
  // Money is left, but the price never falls to a target below all numbers.
  patient.targetBuySpread = Decimal::greatestFiniteMagnitude();
  EXPECT_EQ(rowsOf(market.analyze(patient)).size(), 3U);
}

TEST(ScenarioAnalyzer, RepeatsTheValueWhereAPriceIsMissing) {
  Market market;
  market.quote("", "10", "10").quote("10", "10", "10").quote("11", "", "11").nextDay();
  market.quote("12", "12", "");
  const auto analysis = market.analyze(strategy());
  EXPECT_THAT(analysis.portfolioValues, ElementsAre(0, 1000, 1000, 1000));
  EXPECT_EQ(analysis.totalTradingDays, 1);
  EXPECT_EQ(analysis.lastClosePrice, 10);
  EXPECT_EQ(analysis.portfolio->transactions().back()->settlementDate(), market.quotes[1].fromDate);
}

TEST(ScenarioAnalyzer, ClosesAnEmptyRunAtOnce) {
  Market market;
  market.quote("", "10", "10").quote("10", "10", "");
  const auto analysis = market.analyze(strategy());
  EXPECT_THAT(analysis.portfolioValues, ElementsAre(0, 0));
  EXPECT_THAT(rowsOf(analysis), ElementsAre("close 0 0 0 0"));
  EXPECT_EQ(analysis.portfolio->transactions()[0]->settlementDate(), Date::distantPast());
  EXPECT_EQ(analysis.totalTradingDays, 0);
  EXPECT_TRUE(analysis.rateOfReturn().isNaN());
  EXPECT_TRUE(analysis.annualizedReturn().isNaN());
}

TEST(ScenarioAnalyzer, WaitsWhereTheMoneyDoesNotReachForOneShare) {
  InvestmentStrategy poor = strategy();
  poor.targetBuyMax = 9;
  Market market;
  market.quote("10", "10", "10").quote("9.5", "9.5", "9.5").quote("8.8", "9", "9");
  EXPECT_THAT(rowsOf(market.analyze(poor)),
              ElementsAre("open 0 10 0 1000", "buy 1 9 1 991", "close 0 9 1 991"))
      << "the first price counts as a target only on the first quote";
}

TEST(ScenarioAnalyzer, ReadsPricesToTheMinorUnitInEitherOrder) {
  Market market;
  market.quote("10.125", "9.995", "10.0001");
  const auto analysis = market.analyze(strategy());
  EXPECT_EQ(rowsOf(analysis)[1], "buy 98 10.12 98 8.24");
  EXPECT_EQ(analysis.portfolioValues[0], dec("988.2498"));
}

TEST(ScenarioAnalyzer, CountsDaysAndTradesOnThemApart) {
  InvestmentStrategy eager = strategy();
  eager.targetBuyMax = 100;
  eager.targetBuySpread = 0;
  Market market;
  market.quote("10", "10", "10").quote("9", "9", "9").quote("8", "8", "8").nextDay();
  market.quote("8.2", "8.2", "8.2").nextDay().quote("7", "7", "7");
  const auto analysis = market.analyze(eager);
  EXPECT_EQ(analysis.totalTradesMade, 4);
  EXPECT_EQ(analysis.totalDaysTradedOn, 2);
  EXPECT_EQ(analysis.totalTradingDays, 3);
}

TEST(ScenarioAnalyzer, RunsOverAPartOfTheQuotes) {
  Market market;
  market.quote("10", "10", "10").quote("20", "20", "20").quote("30", "30", "30");
  const auto analysis =
      market.analyzer().analyze(ScenarioAnalyzer::IndexRange(1, 2), strategy(), 50);
  EXPECT_THAT(rowsOf(analysis), ElementsAre("open 0 20 0 50", "buy 2 20 2 10", "close 0 20 2 10"));
  EXPECT_THAT(analysis.portfolioValues, ElementsAre(50));
}

TEST(ScenarioAnalyzer, EndsWithTheErrorThatTheLedgerRaises) {
  InvestmentStrategy greedy = strategy();
  greedy.targetSellSlice = 2;
  Market market;
  market.quote("10", "10", "10").quote("11", "11", "11");
  EXPECT_THROW((void)market.analyze(greedy), PortfolioManagerError);
  EXPECT_THROW((void)market.analyze(strategy(), dec("10.001")), PortfolioManagerError);
  market.provider.reset();
  EXPECT_THROW((void)market.analyze(strategy()),
               ScenarioSinglePortfolioManager::EquityMissingQuoteProviderError);
}

TEST(ScenarioAnalyzer, ServesSeveralThreadsAndDisturbsNobody) {
  Market market;
  for (int i = 0; i < 200; ++i) {
    const std::string price = std::to_string(10 + i % 7);
    market.quote(price, price, price);
  }
  const auto token = NotificationCenter::defaultCenter().addObserver(
      PortfolioManager::didChangePortfolio, nullptr,
      [](const auto&) { ADD_FAILURE() << "a simulated ledger was announced"; });
  const ScenarioAnalyzer analyzer = market.analyzer();
  const auto alone = rowsOf(analyzer.analyze(std::nullopt, strategy(), 1000));
  EXPECT_GT(alone.size(), 50U);
  std::vector<std::jthread> threads;
  std::vector<std::vector<std::string>> rows(4);
  for (auto& mine : rows) {
    threads.emplace_back([&] { mine = rowsOf(analyzer.analyze(std::nullopt, strategy(), 1000)); });
  }
  threads.clear();
  EXPECT_THAT(rows, ::testing::Each(alone));
}

TEST(ScenarioAnalyzer, KeepsALedgerThatCanBeVerified) {
  Market market;
  market.quote("10", "10", "10").quote("11", "11", "11").quote("10", "10", "10");
  const auto analysis = market.analyze(strategy());
  const auto manager = analysis.portfolio->manager.lock();
  ASSERT_NE(manager, nullptr) << "the manager lives as long as the portfolio";
  const auto& rows = analysis.portfolio->transactions();
  EXPECT_EQ(PortfolioManager::replay(rows, {}),
            manager->snapshotBefore(rows.size(), rows[0]->portfolio.lock()));
  EXPECT_EQ(manager->recalculateLedger(0, rows[0]->portfolio.lock()), TransactionSet());
}

TEST(TradingDayNumbers, AreThoseOfWholeDaysInTheEquitysCalendar) {
  const EquityPointer equity = std::make_shared<QuoteProvider>()->equityWithId("ABC");
  std::vector<Quote> quotes;
  for (const char* zone : {"America/New_York", "Asia/Tokyo", "Australia/Sydney"}) {
    equity->calendar = Calendar(*TimeZone::withIdentifier(zone));
    quotes.clear();
    // Across the change of clocks and back before 1970, at any hour.
    for (int hour = -60; hour < 24 * 300; hour += 5) {
      Quote quote;
      quote.fromDate = Date::since1970(hour < 0 ? hour * 3600.0 : 1672531200 + hour * 3600.0);
      quotes.push_back(quote);
    }
    const auto numbers = tradingDayNumbers(quotes, *equity);
    for (std::size_t i = 0; i < quotes.size(); ++i) {
      EXPECT_EQ(numbers[i],
                equity->calendar
                    .dateComponents({CalendarUnit::day}, Date::since1970(0), quotes[i].fromDate)
                    .day());
    }
  }
}

}  // namespace
}  // namespace corvane::testing
