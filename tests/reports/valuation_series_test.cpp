// What a portfolio was worth on each day, and what counts as the owner's doing.

#include "reports/series/valuation_series.h"

#include <cmath>

#include "ledger/transaction/transaction_effect.h"
#include "platform/async/dispatch_queue.h"
#include "random_cases.h"
#include "reports/report_world.h"
#include "reports/returns/returns_report.h"
#include "reports/series/report_days.h"
#include "support/scripted_quote_provider.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using YieldType = BasicTransaction::YieldType;

class ValuationTest : public ::testing::Test, protected ReportWorld {
 protected:
  [[nodiscard]] ValuationSeries seriesOf(int from, int to, const EquityPointer& equity = nullptr) {
    return valuationSeries(*portfolio, {march(from), march(to), equity}, market, calendar);
  }

  /// "5: 110 +100 -0" of each day, with a star where something is at a trade price.
  static std::vector<std::string> lines(const ValuationSeries& series) {
    std::vector<std::string> lines;
    for (const ValuationDay& day : series.days) {
      lines.push_back(std::to_string(day.day.day) + ": " + day.value.description() + " +" +
                      day.inflow.description() + " -" + day.outflow.description() +
                      (day.isAtTradePrice ? " *" : ""));
    }
    return lines;
  }
};

TEST_F(ValuationTest, CountsTransfersAsFlowsWhereThereAreCashAccounts) {
  quote(abc, {{1, "10"}, {3, "11"}, {5, "12"}});
  record({on(day(2021, 3, 1)).deposit("1000"), buy("20", "200"), yield(YieldType::dividend, "5"),
          adjustment("-3"), withdrawal("100")});
  EXPECT_THAT(lines(seriesOf(1, 5)),
              ElementsAre("28: 0 +0 -0", "1: 1000 +1000 -0", "2: 1000 +0 -0", "3: 1025 +0 -0",
                          "4: 1022 +0 -0", "5: 942 +0 -100"));
}

TEST_F(ValuationTest, CountsTradesAndIncomeAsFlowsWhereThereAreNone) {
  portfolio->usesCashAccounts = false;
  quote(abc, {{1, "10"}, {3, "11"}, {5, "12"}});
  record({on(day(2021, 3, 1)).buy("20", "200"), yield(YieldType::dividend, "5"), adjustment("-3"),
          sell("10", "115"), yield(YieldType::returnOfCapital, "7")});
  const ValuationSeries series = seriesOf(1, 5);
  EXPECT_THAT(lines(series), ElementsAre("28: 0 +0 -0", "1: 200 +200 -0", "2: 200 +0 -5",
                                         "3: 220 +3 -0", "4: 110 +0 -115", "5: 120 +0 -0"));
  EXPECT_EQ(series.bridge.dividendsKeptAsCash, 5);
  EXPECT_EQ(series.bridge.currency(), 0);
  EXPECT_EQ(series.bridge.adjustments, -3);
}

TEST_F(ValuationTest, TakesForeignAmountsAtTheRatesOfTheirDays) {
  rate({{1, "1.2"}, {2, "1.3"}, {4, "1.5"}});
  quote(xyz, {{1, "10"}, {3, "20"}});
  const CurrencyAmount dollars{Currency::usd(), 100};
  record({on(day(2021, 3, 1)).make(BasicTransaction::Transfer{dollars}),
          make(BasicTransaction::Transfer{dollars}), buyOf(xyz, "10", "100", "131")});
  const ValuationSeries series = seriesOf(2, 4);
  EXPECT_THAT(lines(series),
              ElementsAre("1: 120 +0 -0", "2: 260 +130 -0", "3: 390 +0 -0", "4: 450 +0 -0"));
  // 100 dollars of cash rise from 1.2 to 1.3, 100 from 1.3 to 1.5, and those for the purchase were
  // taken at 1.31.
  EXPECT_EQ(series.bridge.equityGain, 300 - 131);
  EXPECT_EQ(series.bridge.currency(), 450 - 120 - 130 - 169);
}

TEST_F(ValuationTest, OfOneEquityCountsTradesAtTheirEquivalents) {
  rate({{1, "1.2"}});
  quote(xyz, {{1, "10"}, {3, "20"}});
  record({on(day(2021, 3, 1)).make(BasicTransaction::Transfer{{Currency::usd(), 500}}),
          buyOf(xyz, "10", "100", "131"), buyOf(xyz, "-5", "-60", "-70")});
  EXPECT_THAT(lines(seriesOf(1, 3, xyz)),
              ElementsAre("28: 0 +0 -0", "1: 0 +0 -0", "2: 120 +131 -0", "3: 120 +0 -70"));
}

/// Neither a price of later days nor one of 0 stands for a price that is not there.
TEST_F(ValuationTest, PricesWhatTheMarketDoesNotKnowAtTheLastTradeOrAtCost) {
  quote(abc, {{5, "30"}});
  record({on(day(2021, 3, 1)).deposit("1000"), buy("10", "150"), split("10", "20"),
          journal("20", dec("500"))});
  EXPECT_THAT(lines(seriesOf(2, 5)),
              ElementsAre("1: 1000 +0 -0", "2: 1000 +0 -0 *", "3: 1000 +0 -0 *",
                          "4: 1150 +150 -0 *", "5: 2050 +0 -0"));
  market.prices.clear();
  portfolio->usesCashAccounts = false;
  manager->deleteTransactions({rows()[0], rows()[1], rows()[2]}, portfolio, nullptr);
  EXPECT_THAT(lines(seriesOf(4, 4)), ElementsAre("3: 0 +0 -0", "4: 500 +500 -0 *"));
}

TEST_F(ValuationTest, UsesTheOpenOfTheFirstBarOnlyForWhatWasHeldBeforeIt) {
  market.prices[abc] = {{{march(20), 30}, {march(22), 40}}, Decimal(25)};
  record({on(day(2021, 3, 1)).deposit("1000"), buy("10", "150")});
  EXPECT_EQ(seriesOf(20, 22).days.front().value, 850 + 250);
  EXPECT_EQ(seriesOf(2, 22).days[1].value, 850 + 150) << "bought in the range";
  EXPECT_EQ(seriesOf(3, 22).days[0].value, 850 + 150) << "the bar is more than two weeks off";
}

TEST_F(ValuationTest, HasNoFiguresWithoutASeriesUnlessItIsLeftOut) {
  const auto error = QuoteProviderError(QuoteProviderError::NotAvailable{}).copy();
  market.errorsByEquity[xyz] = error;
  rate({{1, "1.2"}});
  quote(abc, {{1, "10"}});
  record({on(day(2021, 3, 1)).deposit("1000"), buy("10", "100"),
          make(BasicTransaction::Transfer{{Currency::usd(), 100}}), buyOf(xyz, "5", "50", "62"),
          buyOf(xyz, "-5", "-70", "-84")});
  const ValuationSeries incomplete = seriesOf(1, 5);
  EXPECT_THAT(incomplete.missing, ElementsAre("XYZ"));
  EXPECT_THAT(incomplete.days, IsEmpty());
  EXPECT_THAT(seriesOf(1, 3).missing, IsEmpty()) << "it comes later";

  // What goes into it and comes out of it crosses the border of what is measured.
  const ValuationSeries without =
      valuationSeries(*portfolio, {march(1), march(5), nullptr, {xyz}}, market, calendar);
  EXPECT_THAT(lines(without), ElementsAre("28: 0 +0 -0", "1: 1000 +1000 -0", "2: 1000 +0 -0",
                                          "3: 1120 +120 -0", "4: 1060 +0 -60", "5: 1144 +84 -0"));

  market.errorsByPair[{Currency::usd(), Currency::cad()}] = error;
  market.rates.clear();
  EXPECT_THAT(seriesOf(1, 3).missing, ElementsAre("USD"));
  const ValuationSeries canadian = valuationSeries(
      *portfolio, {march(1), march(5), nullptr, {}, {Currency::usd()}}, market, calendar);
  EXPECT_THAT(canadian.missing, IsEmpty());
  EXPECT_EQ(canadian.days.back().value, 1000);
  EXPECT_NEAR(timeWeightedReturn(canadian.days).total.value(), 0, 1e-12);
}

TEST_F(ValuationTest, NetsWhatMovesBetweenPortfoliosThatAreAddedUp) {
  quote(abc, {{1, "10"}, {2, "11"}, {3, "12"}});
  record({on(day(2021, 3, 1)).deposit("1000"), buy("10", "100"), journal("-10")});
  const PortfolioPointer other = manager->createPortfolio(Currency::usd());
  on(day(2021, 3, 3));
  manager->recordTransactions({journal("10", dec("80"))}, other, nullptr);
  market.rates[{Currency::usd(), Currency::cad()}] = {{{march(1), 2}}, std::nullopt};
  market.rates[{Currency::cad(), Currency::usd()}] = {{{march(1), dec("0.5")}}, std::nullopt};

  std::vector<ValuationSeries> parts;
  for (const PortfolioPointer& part : {portfolio, other}) {
    parts.push_back(valuationSeries(*part, {march(1), march(3)}, market, calendar));
  }
  const ValuationSeries sum = combinedSeries(parts, Currency::cad(), market);
  EXPECT_THAT(lines(sum),
              ElementsAre("28: 0 +0 -0", "1: 1000 +1000 -0", "2: 1010 +0 -0", "3: 1020 +120 -120"));
  EXPECT_EQ(sum.bridge.journaled, 0);
  EXPECT_EQ(sum.bridge.deposits, 1000);
  EXPECT_NEAR(timeWeightedReturn(sum.days).total.value(), 0.02, 1e-12);
  market.rates.erase({Currency::usd(), Currency::cad()});
  EXPECT_THAT(combinedSeries(parts, Currency::cad(), market).missing, ElementsAre("USD"));
}

TEST_F(ValuationTest, FetchesEachSeriesOnceWithItsLeadIn) {
  record({on(day(2021, 3, 10)).deposit("1000"), buyOf(abc, "10", "100", "100"),
          make(BasicTransaction::Transfer{{Currency::usd(), 100}}), sell("10", "110")});
  MarketNeeds needs;
  addMarketNeeds(needs, *portfolio, march(12), march(20), calendar);
  EXPECT_THAT(needs.equities, ElementsAre(abc));
  EXPECT_EQ(needs.pairs.size(), 1U);
  MarketNeeds later;
  addMarketNeeds(later, *portfolio, march(14), march(20), calendar, Currency::usd());
  EXPECT_THAT(later.equities, IsEmpty()) << "all is sold";
  EXPECT_TRUE(later.pairs.contains({Currency::cad(), Currency::usd()}));

  const auto prices = std::make_shared<ScriptedQuoteProvider>();
  std::vector<DateRange> asked;
  prices->script = [&](const QuoteQuery& query) -> Result<QuoteFetchResult> {
    asked.push_back(query.dateRange);
    if (query.equity->id() != "ABC") {
      return failure(QuoteProviderError(QuoteProviderError::NotAvailable{}));
    }
    QuoteFetchResult answer{std::vector<Quote>(), std::nullopt, std::nullopt, query.dateRange};
    Quote bar;
    bar.fromDate = day(2021, 3, 11);
    bar.open = 9;
    bar.close = 10;
    answer.quotes->push_back(bar);
    return answer;
  };
  std::shared_ptr<MarketHistory> told;
  fetchMarketHistory(prices, needs, march(12), march(20), [&](auto history) { told = history; });
  MainLoop::runUntil([&] { return told != nullptr; }, std::chrono::seconds(20));
  ASSERT_EQ(asked.size(), 2U);
  EXPECT_EQ(asked[0].lower(), YearMonthDay({2021, 2, 26}).startIn(calendar));
  EXPECT_EQ(asked[0].upper(), march(21).startIn(calendar));
  EXPECT_EQ(told->prices.at(abc).closes.front(), (PriceLine::Close{march(11), 10}));
  EXPECT_EQ(told->prices.at(abc).firstOpen, 9);
  EXPECT_TRUE(told->errorsByPair.contains({Currency::usd(), Currency::cad()}));
}

/// 10 shares become 20: the market says so on the 4th, the row on the 8th.
TEST_F(ValuationTest, SaysThatASplitStandsOnAnotherDayThanTheMarkets) {
  quote(abc, {{1, "10"}, {4, "5"}});
  record({on(day(2021, 3, 1)).deposit("100"), buy("10", "100"),
          on(day(2021, 3, 8)).split("10", "20")});
  MarketNeeds needs;
  addMarketNeeds(needs, *portfolio, march(1), march(20), calendar);
  EXPECT_THAT(needs.splitEquities, ElementsAre(abc));
  const auto notesFor = [&](int dayOfMonth, Fraction ratio) {
    market.splits[abc] = {{march(dayOfMonth), ratio}};
    return returnsReport(*portfolio, {march(1), march(20)}, market, calendar).splitNotes;
  };
  EXPECT_THAT(notesFor(4, {2, 1}),
              ElementsAre("The split of ABC is recorded on 2021-03-08, but the market made it on "
                          "2021-03-04: the days between them show a jump that was none."));
  EXPECT_THAT(notesFor(8, {2, 1}), IsEmpty());
  EXPECT_THAT(notesFor(19, {2, 1}), IsEmpty()) << "more than 10 days apart they are two splits";
  EXPECT_THAT(notesFor(4, {3, 1}), IsEmpty());
}

TEST_F(ValuationTest, KeepsAReturnWhateverFlowsInOnAFlatDay) {
  for (const char* amount : {"1", "500", "1000000"}) {
    ReportWorld world;
    world.quote(world.abc, {{1, "10"}, {3, "11"}, {5, "12"}});
    world.portfolio->usesCashAccounts = false;
    const std::string shares = amount;
    world.record({world.on(day(2021, 3, 1)).buy("10", "100"),
                  world.on(day(2021, 3, 4)).buy(shares, (dec(shares) * 11).description())});
    const auto series =
        valuationSeries(*world.portfolio, {march(1), march(9)}, world.market, world.calendar);
    EXPECT_NEAR(timeWeightedReturn(series.days).total.value(), 0.2, 1e-12) << amount;
  }
}

/// A ledger in one currency, drawn at random, and its worth by the plainest reckoning.
class RandomWorld : public ReportWorld {
 public:
  explicit RandomWorld(std::mt19937_64& random) {
    const auto below = [&](long most) {
      return static_cast<long>(random() % static_cast<unsigned>(most));
    };
    portfolio->usesCashAccounts = random() % 2 == 0;
    portfolio->allowsNegativeBalances = true;
    xyz->currency = Currency::cad();
    std::map<EquityPointer, long> held;
    std::vector<BasicTransaction> basics;
    for (int dayOfMonth = 1; dayOfMonth <= 31; ++dayOfMonth) {
      for (const EquityPointer& equity : {abc, xyz}) {
        if (below(3) > 0) {
          market.prices[equity].closes.push_back({march(dayOfMonth), 5 + below(10)});
        }
      }
      for (long i = below(3); i > 0; --i) {
        const EquityPointer equity = below(2) == 0 ? abc : xyz;
        on(day(2021, 3, dayOfMonth));
        if (const long what = below(6); what == 0 && portfolio->usesCashAccounts) {
          basics.push_back(deposit(std::to_string(below(500) + 1)));
        } else if (what == 1) {
          basics.push_back(adjustment(std::to_string(below(20) - 10)));
        } else if (what == 2 && held[equity] > 0) {
          basics.push_back(make(
              BasicTransaction::Yield{YieldType::dividend, equity, std::nullopt, cad("7"), 7}));
        } else if (what == 3 && held[equity] > 0) {
          const long shares = below(held[equity]) + 1;
          held[equity] -= shares;
          basics.push_back(buyOf(equity, std::to_string(-shares), "-" + std::to_string(9 * shares),
                                 "-" + std::to_string(9 * shares)));
        } else {
          const long shares = below(20) + 1;
          held[equity] += shares;
          basics.push_back(buyOf(equity, std::to_string(shares), std::to_string(8 * shares),
                                 std::to_string(8 * shares)));
        }
      }
    }
    record(std::move(basics));
  }

  [[nodiscard]] Decimal worthOn(int dayOfMonth) {
    std::map<EquityPointer, Decimal> shares;
    Decimal worth;
    for (const TransactionPointer& row : rows()) {
      if (YearMonthDay::of(row->settlementDate(), calendar) > march(dayOfMonth)) {
        break;
      }
      const TransactionEffect effect = transactionEffect(row->basic.kind);
      if (effect.equity != nullptr) {
        shares[*effect.equity] += effect.sharesAdded;
      }
      if (portfolio->usesCashAccounts) {
        worth += effect.cashAdded(true);
      }
    }
    for (const auto& [equity, held] : shares) {
      Decimal price = lastTradePrice(equity, dayOfMonth);
      for (const auto& [quoted, close] : market.prices[equity].closes) {
        price = quoted <= march(dayOfMonth) ? close : price;
      }
      worth += held * price;
    }
    return worth;
  }

 private:
  [[nodiscard]] Decimal lastTradePrice(const EquityPointer& equity, int dayOfMonth) {
    Decimal price;
    for (const TransactionPointer& row : rows()) {
      const auto* trade = std::get_if<BasicTransaction::Trade>(&row->basic.kind);
      if (trade != nullptr && trade->equity == equity &&
          YearMonthDay::of(row->settlementDate(), calendar) <= march(dayOfMonth)) {
        price = trade->cashDisposed.amount / trade->sharesAdded;
      }
    }
    return price;
  }
};

TEST(ValuationProperty, AgreesWithAPlainReckoningAndAddsUp) {
  forRandomCases(150, [](std::mt19937_64& random) {
    RandomWorld world(random);
    const int from = 2 + static_cast<int>(random() % 15);
    const ValuationScope scope{world.march(from), world.march(31)};
    const ReturnsReport report =
        returnsReport(*world.portfolio, scope, world.market, world.calendar);
    const auto& days = report.series.days;
    for (const ValuationDay& day : days) {
      EXPECT_EQ(day.value, world.worthOn(day.day.day)) << isoText(day.day);
    }
    EXPECT_EQ(report.series.bridge.currency(), 0);

    // The two halves meet at the last day of the first, which is the base of the second.
    const int middle = from + static_cast<int>(random() % static_cast<unsigned>(31 - from));
    const auto partOf = [&](int first, int last) {
      return valuationSeries(*world.portfolio, {world.march(first), world.march(last)},
                             world.market, world.calendar)
          .days;
    };
    const auto first = partOf(from, middle);
    const auto second = partOf(middle + 1, 31);
    EXPECT_EQ(first.back().value, second.front().value);
    const TimeWeightedReturn whole = timeWeightedReturn(days);
    const TimeWeightedReturn early = timeWeightedReturn(first);
    const TimeWeightedReturn late = timeWeightedReturn(second);
    // What is paid after the last share was sold counts on the last day held, which the second half
    // may lack.
    if (!whole.restart && !late.hasGainWithoutCapital) {
      EXPECT_NEAR((1 + early.total.value_or(0)) * (1 + late.total.value_or(0)),
                  1 + whole.total.value_or(0), 1e-9);
    }

    // What the equities have made is what the portfolio has made, the fees aside.
    Decimal earned = report.series.bridge.adjustments;
    for (const EquityReturns& line : report.equities) {
      earned += line.figures.gain() + line.figures.dividends;
      const auto own =
          valuationSeries(*world.portfolio, {scope.from, scope.to, line.figures.equity},
                          world.market, world.calendar)
              .days;
      EXPECT_EQ(line.figures.closing, own.back().value);
      // From the days that a return needs comes what all days give.
      const auto ofAllDays = timeWeightedReturn(own).total;
      EXPECT_EQ(line.timeWeighted.has_value(), ofAllDays.has_value());
      EXPECT_NEAR(line.timeWeighted.value_or(0), ofAllDays.value_or(0),
                  1e-9 * (1 + std::abs(ofAllDays.value_or(0))));
      const auto rate = moneyWeightedReturn(ownersPayments(own), ofAllDays.value_or(0)).period;
      EXPECT_NEAR(line.moneyWeighted.value_or(9), rate.value_or(9), 1e-9 * (1 + rate.value_or(9)));
    }
    EXPECT_EQ(earned, report.series.bridge.gain());
  });
}

}  // namespace
}  // namespace corvane::testing
