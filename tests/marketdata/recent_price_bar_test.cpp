// What a user without a network has on a Saturday: the close of Friday, which is not final yet.

#include "marketdata/cache/recent_price_bar.h"

#include <gtest/gtest.h>

#include "marketdata/market_chain.h"

namespace corvane::testing {
namespace {

using DataSource = SwitchableQuoteProvider::DataSource;

Date march(int dayOfMonth, int hour = 0) {
  return at("America/Toronto", 2026, 3, dayOfMonth, hour);
}

/// A look at the prices on Friday noon and another in the evening.
class RecentPriceBarTest : public ::testing::Test {
 protected:
  QuoteQuery days(const EquityPointer& equity, int upTo,
                  QuoteInterval interval = QuoteInterval::oneDay) {
    return {equity,
            {march(1), march(upTo)},
            QuoteQuery::Quotes{interval, PriceAdjustment::marketNominal}};
  }
  /// What the cache alone has, of the next run of the program.
  QuoteFetchResult stored(const std::string& id, int upTo,
                          QuoteInterval interval = QuoteInterval::oneDay) {
    chain.open();
    chain.provider->dataSource = DataSource::cacheOnly;
    asked = days(chain.provider->equityWithId(id), upTo, interval);
    return chain.fetch(asked).value();
  }

  TestClock clock{march(6, 12)};
  MarketChain chain{clock};
  QuoteQuery asked{nullptr, {march(1), march(1)}, QuoteQuery::EventsWithoutAdjustment{}};
};

TEST_F(RecentPriceBarTest, TellsTheCloseOfFridayOnAWeekendWithoutANetwork) {
  for (const char* id : {"CASTR", "THRAL.L", "0417.T", "EURCAD=X"}) {
    std::vector<Quote> told;
    for (const int hour : {12, 18}) {
      clock.set(march(6, hour));
      chain.open();
      told = chain.fetch(days(chain.refreshed(id), 7)).value().quotes.value();
    }
    ASSERT_TRUE(told.back().isPartial) << id << " is final with the next session";
    clock.set(march(7, 12));

    const QuoteFetchResult kept = stored(id, 8);
    ASSERT_EQ(kept.quotes->size(), told.size() - 1) << id;
    const QuoteFetchResult shown = withRecentPrice(kept, asked);
    ASSERT_EQ(shown.quotes->size(), told.size()) << id;
    EXPECT_EQ(shown.quotes->back().close, told.back().close) << id;
    EXPECT_EQ(shown.quotes->back().fromDate, told.back().fromDate) << id;
    EXPECT_TRUE(shown.quotes->back().isPartial);
    EXPECT_EQ(shown.quotes->back().toDate, asked.equity->recentDate) << id;
    EXPECT_EQ(withRecentPrice(shown, asked), shown) << "once";
  }
}

TEST_F(RecentPriceBarTest, AddsNothingElsewhere) {
  clock.set(march(6, 18));
  (void)chain.fetch(days(chain.refreshed("CASTR"), 7));
  (void)chain.fetch(days(chain.refreshed("CASTR"), 7, QuoteInterval::oneHour));
  (void)chain.refreshed("PELLR");
  for (const auto& [id, upTo, interval] : {std::tuple{"CASTR", 6, QuoteInterval::oneDay},
                                           {"CASTR", 8, QuoteInterval::oneHour},
                                           {"PELLR", 8, QuoteInterval::oneDay}}) {
    const QuoteFetchResult kept = stored(id, upTo, interval);
    EXPECT_EQ(kept.quotes->empty(), std::string(id) == "PELLR");
    EXPECT_EQ(withRecentPrice(kept, asked), kept) << id << " up to " << upTo;
  }
}

}  // namespace
}  // namespace corvane::testing
