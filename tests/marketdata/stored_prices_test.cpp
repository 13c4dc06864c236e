// What the cache alone can tell while the market cannot be reached.

#include "marketdata/chain/stored_prices.h"

#include <gtest/gtest.h>

#include "marketdata/market_chain.h"

namespace corvane::testing {
namespace {

using enum PriceAdjustment;
using enum QuoteInterval;

Date newYork(int year, int month, int dayOfMonth, int hour = 0) {
  return at("America/New_York", year, month, dayOfMonth, hour);
}

/// A share with splits and dividends in its past.
class StoredPricesTest : public ::testing::Test {
 protected:
  StoredPricesTest() { chain.market.addSplit("NIMBR", newYork(2025, 6, 2), 4, 1); }

  QuoteQuery days(PriceAdjustment prices) {
    return {equity, {from, to}, QuoteQuery::Quotes{oneDay, prices}};
  }
  QuoteFetchResult stored(const QuoteQuery& query) {
    std::optional<Answer> told;
    fetchStoredPrices(chain.provider->smartQuoteProvider->cacheProvider, query,
                      chain.counted<Answer>([&](Answer answer) { told = std::move(answer); }));
    chain.waitUntilFewAreUnderWay(0);
    return told->value();
  }

  TestClock clock{newYork(2026, 3, 6, 18)};
  MarketChain chain{clock};
  EquityPointer equity = chain.refreshed("NIMBR");
  const Date from = newYork(2025, 1, 2);
  const Date to = newYork(2026, 3, 5, 9) + 1800;  // with an opening
};

TEST_F(StoredPricesTest, AreConvertedFromTheBasisOnWhichTheyAreKept) {
  (void)chain.fetch(days(marketNominal));
  const auto direct = chain.service();
  const auto same = chain.refreshed("NIMBR", direct);
  for (const PriceAdjustment prices :
       {marketNominal, adjustedForSplits, adjustedForSplitsAndDividends}) {
    auto truth = days(prices);
    truth.equity = same;
    EXPECT_TRUE(areSame(stored(days(prices)).quotes.value(),
                        chain.fetch(direct, truth).value().quotes.value()))
        << caseName(prices);
  }
  EXPECT_EQ(chain.cache().coveragePlan(days(adjustedForSplits)).exactQueries.size(), 0U)
      << "nothing has been written";

  const QuoteQuery events{equity, {from, to}, QuoteQuery::EventsOnly{marketNominal}};
  const auto told = stored(events).events.value();
  EXPECT_EQ(std::ranges::count_if(told,
                                  [](const EquityEvent& event) {
                                    return std::holds_alternative<EquityEvent::Split>(event.kind);
                                  }),
            1);
  EXPECT_GT(told.size(), 2U);
}

TEST_F(StoredPricesTest, AreNotRestatedByHalfOfTheEvents) {
  // As traded they are kept with all events; in another run only some of these are known.
  (void)chain.fetch(days(marketNominal));
  const auto kept = chain.cache().readQuery(days(marketNominal));
  chain.cache().clearCachedData(equity);
  chain.cache().storeFetchResult(kept, days(marketNominal));
  const QuoteQuery late{
      equity, {newYork(2025, 9, 1), newYork(2026, 3, 6)}, QuoteQuery::EventsWithoutAdjustment{}};
  (void)chain.fetch(late);
  EXPECT_TRUE(stored(days(adjustedForSplits)).quotes->empty());
  EXPECT_EQ(stored(days(marketNominal)).quotes, kept.quotes);
}

}  // namespace
}  // namespace corvane::testing
