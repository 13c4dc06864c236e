// Which part of an answer may be recorded as covered.

#include "marketdata/chain/storable_range.h"

#include <gtest/gtest.h>

#include "marketdata/cache_world.h"

namespace corvane::testing {
namespace {

/// An answer that is final in `durable`. Bars that reach out of it are unfinished.
QuoteFetchResult piece(const DateRange& durable, std::vector<DateRange> bars) {
  std::vector<Quote> quotes;
  for (const DateRange& dates : bars) {
    quotes.push_back(bar(0, 0));
    quotes.back().fromDate = dates.lower();
    quotes.back().toDate = dates.upper();
    quotes.back().isPartial = dates.lower() < durable.lower() || dates.upper() > durable.upper();
  }
  return answer(durable, std::move(quotes));
}

/// What of an answer to [0, 50) may be kept.
DateRange kept(const QuoteFetchResult& told, std::optional<Date> firstTrade = std::nullopt) {
  const auto equity = std::make_shared<EquityInfo>("ABC", std::weak_ptr<QuoteProvider>());
  equity->firstTradeDate = firstTrade;
  return storableRange(told, {equity, range(0, 50), daily(adjustedForSplits)});
}

TEST(StorableRangeTest, LeavesOutUnfinishedBarsAtBothEnds) {
  struct Case {
    const char* what;
    DateRange durable;
    std::vector<DateRange> bars;
    DateRange expected;
  };
  const Case cases[] = {
      {"whole bars", range(10, 30), {range(10, 20), range(20, 30)}, range(10, 30)},
      {"no bars", range(10, 30), {}, range(10, 30)},
      {"a running bar", range(10, 25), {range(10, 20), range(20, 30)}, range(10, 20)},
      {"nothing but a running bar", range(10, 25), {range(15, 35)}, range(10, 15)},
      {"a running bar from the start", range(10, 25), {range(10, 35)}, range(10, 10)},
      {"the end of a bar", range(15, 40), {range(10, 20), range(20, 30)}, range(20, 40)},
      {"the middle of a bar", range(15, 25), {range(10, 30)}, range(30, 30)},
      {"one of two overlapping bars", range(10, 35), {range(10, 30), range(25, 40)}, range(10, 10)},
      {"parts of seconds", range(10.25, 29.75), {range(11, 20)}, range(11, 29)},
  };
  for (const auto& [what, durable, bars, expected] : cases) {
    const DateRange found = kept(piece(durable, bars));
    EXPECT_EQ(found.isEmpty(), expected.isEmpty()) << what;
    EXPECT_TRUE(expected.isEmpty() || found == expected) << what;
  }
}

TEST(StorableRangeTest, CountsWhatIsBeforeTheFirstTrade) {
  EXPECT_EQ(kept(piece(range(10, 30), {range(10, 20), range(20, 30)}), at(10)), range(0, 30));
  EXPECT_EQ(kept(piece(range(15, 40), {range(10, 20), range(20, 30)}), at(15)), range(0, 40))
      << "the month of the first trade begins before it, and is whole";
  EXPECT_EQ(kept(piece(range(20, 40), {range(10, 20), range(20, 30)}), at(15)), range(0, 40))
      << "so where the source counts only the months after it";
  EXPECT_EQ(kept(piece(range(15, 18), {range(10, 20)}), at(15)), range(0, 10))
      << "unless it is still running";
  EXPECT_EQ(kept(piece(range(25, 40), {range(25, 30)}), at(15)), range(25, 40))
      << "there is a hole";
  EXPECT_EQ(kept(answer(range(10, 30), std::nullopt, std::vector<EquityEvent>()), at(10)),
            range(0, 30));
  EXPECT_TRUE(kept(piece(range(10, 10), {}), at(10)).isEmpty());
}

/// Of a kind that is told twice for a moment the later counts, since the cache has one place.
TEST(StorableRangeTest, KeepsOneEventOfAKindForAMoment) {
  const auto equity = std::make_shared<EquityInfo>("ABC", std::weak_ptr<QuoteProvider>());
  const QuoteQuery asked = {equity, range(0, 50), daily(adjustedForSplits)};
  const std::vector<EquityEvent> told = {
      dividend(10, "0.5", adjustedForSplits), split(10, 2, 1, adjustedForSplits),
      dividend(10, "0.7", adjustedForSplits), dividend(20, "0.5", adjustedForSplits)};
  EXPECT_THAT(storableEvents(answer(range(0, 50), {}, told), asked),
              ::testing::Optional(::testing::ElementsAre(told[1], told[2], told[3])));
  EXPECT_EQ(storableEvents(answer(range(0, 50), {}), asked), std::nullopt);
}

}  // namespace
}  // namespace corvane::testing
