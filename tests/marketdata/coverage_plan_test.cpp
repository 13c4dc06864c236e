// How a query is divided, by examples.

#include "marketdata/cache_world.h"

namespace corvane::testing {
namespace {

/// The pieces of a plan in the order of their dates, such as "missing 0-10, exact 10-20"; a
/// convertible one with the code of its basis behind it.
std::string pieces(const CoveragePlan& plan) {
  std::map<double, std::string> byStart;
  const auto add = [&](const std::string& kind, const std::vector<QuoteQuery>& queries) {
    for (const QuoteQuery& query : queries) {
      const double from = query.dateRange.lower().timeIntervalSince1970();
      const double to = query.dateRange.upper().timeIntervalSince1970();
      std::string text = kind + " " + Decimal::fromDouble(from).description() + "-" +
                         Decimal::fromDouble(to).description();
      if (const auto* quotes = std::get_if<QuoteQuery::Quotes>(&query.seeking);
          quotes != nullptr && kind == "convertible") {
        text += " " + std::string(caseName(quotes->prices));
      }
      byStart[from] += text;
    }
  };
  add("exact", plan.exactQueries);
  add("convertible", plan.convertibleQueries);
  add("missing", plan.missingQueries);
  std::string all;
  for (const auto& [from, text] : byStart) {
    all += (all.empty() ? "" : ", ") + text;
  }
  return all;
}

struct Example {
  const char* what;
  std::vector<std::pair<PriceAdjustment, DateRange>> covered;
  DateRange query;
  const char* expected;
};

std::ostream& operator<<(std::ostream& out, const Example& example) {
  return out << example.what;
}

class PlanExamples : public ::testing::TestWithParam<Example> {};

// Daily bars on the basis of splits are sought.
TEST_P(PlanExamples, AreDividedSo) {
  const CacheWorld world(":memory:");
  for (const auto& [prices, dates] : GetParam().covered) {
    world.cover(daily(prices), dates);
  }
  EXPECT_EQ(pieces(world.plan(GetParam().query, daily(adjustedForSplits))), GetParam().expected);
}

constexpr auto sought = adjustedForSplits;

INSTANTIATE_TEST_SUITE_P(
    CoveragePlan, PlanExamples,
    ::testing::Values(
        Example{"ranges with holes",
                {{sought, range(10, 20)}, {sought, range(30, 40)}},
                range(0, 50),
                "missing 0-10, exact 10-20, missing 20-30, exact 30-40, missing 40-50"},
        Example{"the basis sought within another",
                {{sought, range(10, 20)}, {marketNominal, range(0, 50)}},
                range(0, 50),
                "convertible 0-10 marketNominal, exact 10-20, convertible 20-50 marketNominal"},
        Example{"a hole between two bases",
                {{marketNominal, range(0, 10)}, {sought, range(20, 30)}},
                range(0, 30),
                "convertible 0-10 marketNominal, missing 10-20, exact 20-30"},
        Example{"two others with one start",
                {{marketNominal, range(0, 10)}, {adjustedForSplitsAndDividends, range(0, 20)}},
                range(0, 20),
                "convertible 0-20 adjustedForSplitsAndDividends"},
        Example{"another that reaches further",
                {{marketNominal, range(0, 20)}, {adjustedForSplitsAndDividends, range(10, 30)}},
                range(0, 30),
                "convertible 0-10 marketNominal, "
                "convertible 10-30 adjustedForSplitsAndDividends"},
        Example{"three at once, where the third starts before what was planned last",
                {{marketNominal, range(0, 30)},
                 {sought, range(0, 20)},
                 {adjustedForSplitsAndDividends, range(10, 40)}},
                range(0, 50),
                "exact 0-20, convertible 20-40 adjustedForSplitsAndDividends, missing 40-50"},
        Example{"a snapshot that nobody asked for",
                {{marketNominalSnapshot, range(10, 20)}},
                range(0, 30),
                "missing 0-10, missing 10-30"},
        Example{"a neighbour that only touches",
                {{sought, range(0, 10)}},
                range(10, 20),
                "missing 10-20"},
        Example{"ranges that touched when they were recorded",
                {{sought, range(20, 30)}, {sought, range(10, 20)}},
                range(0, 30),
                "missing 0-10, exact 10-30"}));

TEST(CoveragePlan, IsTheQueryItselfWhereNothingCanBeKnown) {
  const CacheWorld world(":memory:");
  const QuoteQuery unknown = world.query(range(0, 10), daily(marketNominal));
  EXPECT_EQ(world.cache->coveragePlan(unknown), (CoveragePlan{{}, {}, {unknown}}));
  world.cover(daily(marketNominal), range(0, 10));
  const QuoteQuery instant = world.query(range(5, 5), daily(marketNominal));
  EXPECT_EQ(world.cache->coveragePlan(instant), (CoveragePlan{{}, {}, {instant}}));
}

// Seconds since 1970 hold fewer digits than a date does.
TEST(CoveragePlan, HasNoSliversAtBoundsBetweenSeconds) {
  const CacheWorld world(":memory:");
  world.cover(daily(marketNominal), range(0, 2'000'000'000));
  const Date from = Date::sinceReferenceDate(0.1);
  const QuoteQuery whole = world.query({from, from + 700'000'000.3}, daily(marketNominal));
  EXPECT_EQ(world.cache->coveragePlan(whole), (CoveragePlan{{whole}, {}, {}}));
}

TEST(CoveragePlan, ReadsTheCurrentPeriodFromBarsAndSnapshots) {
  const CacheWorld world(":memory:");
  world.cover(minutely(marketNominal), range(0, 10));
  world.cover(minutely(marketNominalSnapshot), range(10, 20));
  const DateRange session = range(0, 30);
  EXPECT_EQ(world.plan(session, QuoteQuery::CurrentPeriodQuotes{true}),
            (CoveragePlan{{world.query(range(0, 10), minutely(marketNominal)),
                           world.query(range(10, 20), minutely(marketNominalSnapshot))},
                          {},
                          {world.query(range(20, 30), QuoteQuery::CurrentPeriodQuotes{true})}}));
  EXPECT_TRUE(
      world.plan(session, QuoteQuery::CurrentPeriodQuotes{false}).convertibleQueries.empty());
}

TEST(CoveragePlan, TakesEventsAsTheyAreWhereNoBasisIsAskedFor) {
  const CacheWorld world(":memory:");
  world.store(events(adjustedForSplits),
              answer(range(0, 10), std::nullopt, {{dividend(5, "1", adjustedForSplits)}}));
  EXPECT_EQ(world.plan(range(0, 10), QuoteQuery::EventsWithoutAdjustment{}).exactQueries,
            std::vector{world.query(range(0, 10), events(adjustedForSplits))});
  EXPECT_EQ(world.plan(range(0, 10), events(marketNominal)).convertibleQueries,
            std::vector{world.query(range(0, 10), events(adjustedForSplits))});
}

}  // namespace
}  // namespace corvane::testing
