// A user who looks at prices several times a day for weeks, often without a network: what the cache
// holds at the end.
//
// CORVANE_TEST_CASES sets how many users are tried, CORVANE_TEST_SEED repeats a run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "marketdata/market_chain.h"
#include "random_cases.h"

namespace corvane::testing {
namespace {

using enum PriceAdjustment;
using enum QuoteInterval;

constexpr std::array ids = {"CASTR", "THRAL.L", "0417.T", "EURCAD=X"};
constexpr std::array intervals = {oneDay, oneWeek, oneMonth, oneHour, ninetyMinutes, fiveMinutes};

/// Weeks with a change of the clocks on one side of the ocean, and a month's end.
const Date firstDay = at("America/Toronto", 2026, 2, 23);
constexpr int dayCount = 28;

Date dayOfUser(int number, int hour = 0, int minute = 0, int second = 0) {
  return at("America/Toronto", 2026, 2, 23 + number, hour, minute, second);
}

struct User {
  explicit User(std::mt19937_64& source) : random(source) {
    chain.secondsForAccess = 0.2;
    chain.open();
  }

  void live() {
    for (int day = 0; day < dayCount; ++day) {
      const bool isOffline = day % 3 == 2;
      if (isOffline) {
        chain.market.addFault({.fault = SampleMarketFault::droppedConnection, .count = 1'000'000});
      }
      for (const int hour : {8, 13, 22}) {
        clock.set(
            dayOfUser(day, hour, static_cast<int>(random() % 60), static_cast<int>(random() % 60)));
        look(day);
      }
      chain.market.clearFaults();
      if (random() % 5 == 0) {
        equities.clear();
        chain.open();
      }
    }
  }

  /// Opens the program's screens: ranges of days by the user's own clock, a shorter one beside a
  /// longer one, and stretches that begin and end at any moment.
  void look(int day) {
    equities.clear();
    for (const char* id : ids) {
      equities.push_back(chain.provider->equityWithId(id));
    }
    (void)chain.refresh(chain.provider, equities);
    for (const EquityPointer& equity : equities) {
      for (const QuoteInterval interval : intervals) {
        begin(equity, {dayOfUser(day), dayOfUser(day + 1)}, interval);
        const int from = static_cast<int>(random() % static_cast<unsigned>(day + 1));
        begin(equity, {dayOfUser(from), dayOfUser(day + 1)}, interval);
        const double start = static_cast<double>(random() % 86'400);
        begin(equity, {dayOfUser(from) + start, dayOfUser(from) + start + 20'000}, interval);
      }
    }
    chain.waitUntilFewAreUnderWay(0);
  }

  void begin(const EquityPointer& equity, const DateRange& range, QuoteInterval interval) {
    const auto basis = std::array{adjustedForSplits, marketNominal}.at(random() % 2);
    chain.begin(chain.provider, {equity, range, QuoteQuery::Quotes{interval, basis}},
                [this](const Answer& answer) { ++(answer ? answered : failed); });
  }

  std::mt19937_64& random;
  TestClock clock{firstDay};
  MarketChain chain{clock};
  std::vector<EquityPointer> equities;
  std::atomic<int> answered = 0;
  std::atomic<int> failed = 0;
};

std::vector<Quote> finished(std::vector<Quote> bars) {
  std::erase_if(bars, [](const Quote& bar) { return bar.isPartial; });
  return bars;
}

std::vector<DateRange> spans(const std::vector<Quote>& bars) {
  std::vector<DateRange> spans;
  for (const Quote& bar : bars) {
    spans.emplace_back(bar.fromDate, bar.toDate);
  }
  return spans;
}

/// From when to when the bars are that the cache has for `query`, whatever their prices are
/// adjusted for: one that was kept on another basis is restated when it is shown.
std::vector<DateRange> keptBars(CacheQuoteProvider& cache, const QuoteQuery& query) {
  const auto plan = cache.coveragePlan(query);
  std::vector<Quote> kept;
  for (const auto* pieces : {&plan.exactQueries, &plan.convertibleQueries}) {
    for (const QuoteQuery& covered : *pieces) {
      std::ranges::copy(cache.readQuery(covered).quotes.value(), std::back_inserter(kept));
    }
  }
  std::ranges::sort(kept, {}, &Quote::fromDate);
  return spans(kept);
}

TEST(WeeksOfLooksTest, LeaveEveryBarThatIsFinishedInTheCache) {
  forRandomCases(1, [](std::mt19937_64& random) {
    User user(random);
    user.live();
    EXPECT_GT(user.answered, 1000);
    EXPECT_GT(user.failed, 100);

    // No more faults: however busy the machine is, access is waited for.
    user.chain.secondsForAccess = 30;
    user.chain.open();

    // What the last look at everything leaves: it is no business of a further one.
    const DateRange all(firstDay, dayOfUser(dayCount));
    const auto direct = user.chain.service();
    for (const char* id : ids) {
      const auto equity = user.chain.refreshed(id);
      const auto same = user.chain.refreshed(id, direct);
      for (const QuoteInterval interval : intervals) {
        const QuoteQuery::Quotes seeking{interval, adjustedForSplits};
        const auto shown = user.chain.fetch({equity, all, seeking});
        ASSERT_TRUE(shown) << *shown.error();
        const auto told = user.chain.fetch(direct, {same, all, seeking});
        ASSERT_TRUE(told) << *told.error();
        EXPECT_TRUE(areSame(*shown->quotes, *told->quotes)) << id << " shown";

        const auto kept = keptBars(user.chain.cache(), {equity, all, seeking});
        EXPECT_EQ(kept, spans(finished(*told->quotes)))
            << id << " kept, bars of " << json(interval).text();
      }
    }
  });
}

}  // namespace
}  // namespace corvane::testing
