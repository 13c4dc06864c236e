// The day-by-day series of a portfolio: what is asked, how prices and balances meet, what is told
// of what could not be had.

#include "platform/async/dispatch_queue.h"
#include "support/ledger_builder.h"
#include "support/scripted_quote_provider.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using Fetched = PortfolioManager::FetchDailySnapshotsResult;

/// 2021-03-01 is a Monday.
YearMonthDay march(int dayOfMonth) {
  return {2021, 3, dayOfMonth};
}

class DailySnapshotsTest : public ::testing::Test, protected Ledger {
 protected:
  DailySnapshotsTest() {
    manager->quoteProvider = prices;
    for (const auto& equity : {abc, xyz}) {
      equity->calendar = manager->calendar;
    }
    prices->script = [this](const QuoteQuery& query) { return answer(query); };
  }

  /// Gives `equity` a bar for each close, from the first of March on; a close of 0 is a day without
  /// a bar.
  void quote(const EquityPointer& equity, int open, std::vector<int> closes) {
    closes_[equity->id()] = {open, std::move(closes)};
  }

  Fetched fetch(int firstDay, int lastDay) {
    std::optional<Result<Fetched>> outcome;
    manager->fetchDailySnapshots(portfolio, march(firstDay), march(lastDay), [&](auto result) {
      EXPECT_TRUE(DispatchQueue::main()->isCurrent());
      outcome = std::move(result);
    });
    EXPECT_FALSE(outcome) << "the completion ran within the call";
    MainLoop::runUntil([&] { return outcome.has_value(); }, std::chrono::seconds(20));
    return outcome.value().value();
  }

  /// "day: CAD cash/deposited/rate ... ABC shares/price/cost/gains ..." of each day.
  static std::vector<std::string> lines(const PortfolioSnapshotGroup& group) {
    std::vector<std::string> lines;
    for (const auto& [ymd, snapshot] : group.sortedSnapshots) {
      std::map<std::string, std::vector<std::optional<Decimal>>> figures;
      for (const auto& [currency, cash] : snapshot.currencySnapshots) {
        figures[std::string(currency.code)] = {cash.cashOnHand, cash.netCashDeposited,
                                               cash.exchangeRate};
      }
      for (const auto& [equity, holding] : snapshot.equitySnapshots) {
        figures[equity->id()] = {holding.sharesHeld, holding.sharePrice, holding.costBase,
                                 holding.cumulativeCapitalGain};
      }
      std::string line = std::to_string(ymd.day) + ":";
      for (const auto& [name, values] : figures) {
        line += " " + name;
        for (const auto& value : values) {
          line += "/" + (value ? value->description() : "-");
        }
      }
      lines.push_back(line);
    }
    return lines;
  }

  std::shared_ptr<ScriptedQuoteProvider> prices = std::make_shared<ScriptedQuoteProvider>();

 private:
  ScriptedQuoteProvider::Answer answer(const QuoteQuery& query) {
    const auto found = closes_.find(query.equity->id());
    if (found == closes_.end()) {
      return ScriptedQuoteProvider::refusal();
    }
    const auto& [open, closes] = found->second;
    return ScriptedQuoteProvider::quotes(
        ScriptedQuoteProvider::dailyBars(query, [&](YearMonthDay ymd) -> std::optional<Quote> {
          const auto index = static_cast<std::size_t>(ymd.day - 1);
          if (ymd.month != 3 || index >= closes.size() || closes[index] == 0) {
            return std::nullopt;
          }
          const int close = closes[index];
          Quote bar;
          bar.open = open;
          bar.close = close;
          return bar;
        }));
  }

  std::map<std::string, std::pair<int, std::vector<int>>> closes_;
};

TEST_F(DailySnapshotsTest, FollowAHoldingThroughASale) {
  on(day(2020, 5, 4));
  record({deposit("1480"), buy("4", "480"), sell("2", "260"), buy("8", "260")});
  on(day(2021, 3, 2));
  record({sell("4", "300")});
  quote(abc, 29, {30, 31, 32});
  const auto [group, equityErrors, currencyErrors] = fetch(1, 3);
  EXPECT_THAT(
      lines(group),
      ElementsAre("28: ABC/10/29/500/20 CAD/1000/1480/1", "1: ABC/10/30/500/20 CAD/1000/1480/1",
                  "2: ABC/6/31/300/120 CAD/1300/1480/1", "3: ABC/6/32/300/120 CAD/1300/1480/1"));
  const auto& summary = group.tradingSummaryByEquity.at(abc);
  EXPECT_EQ(summary, (PortfolioSnapshotGroup::TradingSummary{0, 4, 0, 200, 300}));
  EXPECT_THAT(group.currenciesHeldOrTraded, UnorderedElementsAre(Currency::cad()));
  EXPECT_THAT(group.equitiesHeldOrTraded, UnorderedElementsAre(abc));
  EXPECT_EQ(group.sortedSnapshots.back().snapshot.marketValue(abc), dec("192"));
}

TEST_F(DailySnapshotsTest, AskForOneSeriesOfEachAsset) {
  on(day(2021, 2, 1));
  record({deposit("1000"), buy("1", "10"), make(BasicTransaction::Transfer{{Currency::usd(), 500}}),
          make(BasicTransaction::Trade{xyz, {Currency::usd(), 10}, 13, 1})});
  for (const auto& equity :
       {abc, xyz, prices->exchangeRateEquity(Currency::usd(), Currency::cad())}) {
    quote(equity, 2, {2, 2, 2});
  }
  EXPECT_EQ(fetch(1, 3).snapshotGroup.sortedSnapshots.back().snapshot.marketValue(xyz), dec("4"));
  std::vector<std::string> asked;
  for (const auto& query : prices->queries) {
    asked.push_back(query.equity->id());
    // The days are those of the place whose clocks stamp the bars.
    const Calendar clocks = query.equity->id() == "FX USD/CAD"
                                ? Calendar(TimeZone::withIdentifier("Europe/London").value())
                                : query.equity->calendar;
    EXPECT_EQ(query.dateRange, DateRange(march(1).startIn(clocks), march(4).startIn(clocks)));
    EXPECT_EQ(query.seeking, (QuoteQuery::Subject(QuoteQuery::Quotes{
                                 QuoteInterval::oneDay, PriceAdjustment::marketNominal})));
  }
  EXPECT_THAT(asked, UnorderedElementsAre("ABC", "XYZ", "FX USD/CAD"));
  EXPECT_EQ(asked.back(), "FX USD/CAD") << "rates are asked for last";
}

TEST_F(DailySnapshotsTest, HaveOnlyTheSeedWhereNothingIsHeld) {
  const auto [group, equityErrors, currencyErrors] = fetch(1, 3);
  EXPECT_THAT(lines(group), ElementsAre("28:"));
  EXPECT_THAT(prices->queries, IsEmpty());
}

TEST_F(DailySnapshotsTest, CarryPricesOverDaysWithoutTrading) {
  on(day(2021, 2, 1));
  record({deposit("100"), buy("1", "10")});
  on(day(2021, 3, 6));  // a Saturday
  record({buy("1", "10")});
  quote(abc, 9, {10, 0, 12, 13, 14, 0, 0});
  EXPECT_THAT(lines(fetch(1, 7).snapshotGroup),
              ElementsAre("28: ABC/1/9/10/0 CAD/90/100/1", "1: ABC/1/10/10/0 CAD/90/100/1",
                          "3: ABC/1/12/10/0 CAD/90/100/1", "4: ABC/1/13/10/0 CAD/90/100/1",
                          "5: ABC/1/14/10/0 CAD/90/100/1", "6: ABC/2/14/20/0 CAD/80/100/1"));
}

TEST_F(DailySnapshotsTest, ReadTheRowsOfTheRangeToItsLastSecond) {
  const Date start = march(2).startIn(manager->calendar);
  const auto depositAt = [&](Date date) { return on(date).deposit("1"); };
  record({depositAt(start - 1), depositAt(start), depositAt(start + 2 * 86400.0 - 1),
          depositAt(start + 2 * 86400.0)});
  EXPECT_THAT(lines(fetch(2, 3).snapshotGroup),
              ElementsAre("1: CAD/1/1/1", "2: CAD/2/2/1", "3: CAD/3/3/1"));
}

TEST_F(DailySnapshotsTest, ShowWhatIsGoneOnlyInTheSeed) {
  on(day(2021, 2, 1));
  const auto usd = [](int amount) { return BasicTransaction::Transfer{{Currency::usd(), amount}}; };
  record({deposit("100"), buy("1", "10"), sell("1", "15"), make(usd(5)), make(usd(-5)),
          make(usd(7)), make(BasicTransaction::CashAdjustment{{Currency::usd(), -7}})});
  EXPECT_THAT(lines(fetch(1, 1).snapshotGroup),
              ElementsAre("28: ABC/0/-/0/5 CAD/105/100/1 USD/0/7/-"));
  on(day(2021, 3, 1));
  record({deposit("1")});
  EXPECT_THAT(lines(fetch(1, 1).snapshotGroup).back(), "1: CAD/106/101/1");
}

TEST_F(DailySnapshotsTest, KeepAHoldingThatIsSoldInTheRange) {
  on(day(2021, 2, 1));
  record({deposit("100"), buy("1", "10")});
  on(day(2021, 3, 1));
  record({sell("1", "15")});
  quote(abc, 9, {10, 11});
  EXPECT_EQ(lines(fetch(1, 2).snapshotGroup).back(), "2: ABC/0/11/0/5 CAD/105/100/1");
}

TEST_F(DailySnapshotsTest, NeedTheRateOfACurrencyThatOnlyAnEquityIsIn) {
  portfolio->usesCashAccounts = false;
  on(day(2021, 2, 1));
  record({make(BasicTransaction::Trade{xyz, {Currency::cad(), 13}, 13, 1})});
  quote(xyz, 9, {10, 11});
  quote(prices->exchangeRateEquity(Currency::usd(), Currency::cad()), 0, {0, 2});
  const auto [group, equityErrors, currencyErrors] = fetch(1, 2);
  EXPECT_THAT(lines(group), ElementsAre("28: CAD/0/13/- USD/0/0/0 XYZ/1/9/13/0",
                                        "1: USD/0/0/0 XYZ/1/10/13/0", "2: USD/0/0/2 XYZ/1/11/13/0"))
      << "no cash in the primary currency is held or traded, so it has no rate either";
  EXPECT_THAT(group.currenciesHeldOrTraded, IsEmpty());
}

TEST_F(DailySnapshotsTest, CountTradesWithoutCashAccountsAsDeposits) {
  portfolio->usesCashAccounts = false;
  on(day(2021, 3, 1));
  record({buy("2", "20"), sell("1", "15")});
  quote(abc, 9, {10, 11});
  EXPECT_THAT(lines(fetch(1, 2).snapshotGroup),
              ElementsAre("28: ABC/0/9/0/0 CAD/0/0/1", "1: ABC/2/10/20/0 CAD/0/20/1",
                          "2: ABC/1/11/10/5 CAD/0/5/1"));
}

TEST_F(DailySnapshotsTest, TellWhichSeriesCouldNotBeHad) {
  on(day(2021, 2, 1));
  record({deposit("100"), buy("1", "10"), make(BasicTransaction::Transfer{{Currency::usd(), 5}}),
          make(BasicTransaction::JournaledShares{xyz, 1, std::nullopt})});
  quote(abc, 9, {10});
  const auto script = prices->script;
  prices->script = [&](const QuoteQuery& query) {
    auto answer = script(query);
    if (query.equity == xyz) {
      answer = ScriptedQuoteProvider::quotes({});
      answer->quotes.reset();
    }
    return answer;
  };
  const auto [group, equityErrors, currencyErrors] = fetch(1, 1);
  ASSERT_EQ(equityErrors.size(), 1U);
  EXPECT_EQ(*equityErrors.at(xyz), QuoteProviderError(QuoteProviderError::QueryNotSatisfied{}));
  ASSERT_EQ(currencyErrors.size(), 1U);
  EXPECT_EQ(*currencyErrors.at(Currency::usd()),
            QuoteProviderError(QuoteProviderError::NotAvailable{}));
  EXPECT_EQ(lines(group).back(), "1: ABC/1/10/10/0 CAD/90/100/1 USD/5/5/- XYZ/1/-/0/0");
}

TEST_F(DailySnapshotsTest, AreRefusedAtOnceWhereTheLedgerIsInconsistent) {
  on(day(2021, 2, 1));
  record({deposit("100"), buy("1", "10")});
  on(day(2021, 3, 1));
  record({deposit("1")});
  rows()[1]->cashNet = 7;
  ErrorPointer error;
  manager->fetchDailySnapshots(portfolio, march(1), march(1),
                               [&](auto result) { error = result.error(); });
  ASSERT_NE(error, nullptr);
  EXPECT_THAT(error->description().value(), ::testing::HasSubstr("Expected cash amount of 90"));
  EXPECT_THAT(prices->queries, IsEmpty());
}

TEST_F(DailySnapshotsTest, ValueThePortfolioAtRecentPrices) {
  on(day(2021, 2, 1));
  record({deposit("100"), buy("2", "20"), make(BasicTransaction::Transfer{{Currency::usd(), 5}}),
          make(BasicTransaction::Trade{xyz, {Currency::usd(), 4}, 5, 4})});
  const EquityPointer rate = prices->exchangeRateEquity(Currency::usd(), Currency::cad());
  EXPECT_THAT(manager->valuationEquities(portfolio), UnorderedElementsAre(abc, xyz, rate));

  const auto refusal = [&] {
    return errorOf([&] { (void)manager->valuation(portfolio); }).value();
  };
  EXPECT_EQ(refusal(), PortfolioManagerError(
                           PortfolioManagerError::ForeignExchangeRateMissing{Currency::usd()}));
  rate->recentPrice = dec("1.5");
  abc->recentPrice = 11;
  EXPECT_EQ(refusal(), PortfolioManagerError(PortfolioManagerError::LedgerInconsistency{
                           "No recent share price for XYZ."}));
  xyz->recentPrice = 3;
  EXPECT_EQ(manager->valuation(portfolio),
            (PortfolioValuation{Currency::cad(), dec("107.5"), dec("121.5")}));

  Ledger other;
  const PortfolioManagerError stranger(
      PortfolioManagerError::InvalidPortfolio{"Portfolio is unmanaged or has the wrong manager!"});
  EXPECT_EQ(errorOf([&] { (void)manager->valuation(other.portfolio); }), stranger);
  EXPECT_EQ(errorOf([&] { (void)manager->valuationEquities(other.portfolio); }), stranger);
  EXPECT_EQ(other.manager->valuation(other.portfolio), (PortfolioValuation{Currency::cad(), 0, 0}));
}

TEST_F(DailySnapshotsTest, ValueWhatIsHeldAndAskForNoOtherPrices) {
  on(day(2021, 2, 1));
  const auto usd = [&](int amount) { return CurrencyAmount{Currency::usd(), Decimal(amount)}; };
  record({deposit("100"), buy("2", "20"), sell("2", "30"),
          make(BasicTransaction::Transfer{usd(500)}),
          make(BasicTransaction::CashAdjustment{usd(-500)})});
  const EquityPointer rate = prices->exchangeRateEquity(Currency::usd(), Currency::cad());
  EXPECT_THAT(manager->valuationEquities(portfolio), UnorderedElementsAre(rate));
  rate->recentPrice = dec("1.5");
  EXPECT_EQ(manager->valuation(portfolio),
            (PortfolioValuation{Currency::cad(), dec("850"), dec("110")}));

  portfolio->allowsNegativeBalances = true;
  record({make(BasicTransaction::CashAdjustment{usd(-10)}), sell("3", "40")});
  EXPECT_THAT(manager->valuationEquities(portfolio), UnorderedElementsAre(abc, rate));
  abc->recentPrice = 20;
  EXPECT_EQ(manager->valuation(portfolio),
            (PortfolioValuation{Currency::cad(), dec("850"), dec("75")}));
}

}  // namespace
}  // namespace corvane::testing
