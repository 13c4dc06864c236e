// For which days of what was held there are prices, and what the others lack.

#include "reports/coverage/price_coverage.h"

#include "core/market/price_adjuster.h"
#include "platform/async/dispatch_queue.h"
#include "platform/net/url_request.h"
#include "reports/report_world.h"
#include "reports/series/report_days.h"
#include "support/scripted_quote_provider.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Today is Friday, the 12th of March.
class PriceCoverageTest : public ::testing::Test, protected ReportWorld {
 protected:
  /// The market has told closes on these days of what it was asked from `from` to `to`.
  void keep(const EquityPointer& equity, int from, int to, const std::vector<int>& closes,
            const std::vector<int>& emptyBars = {}) {
    std::vector<Quote> bars;
    for (int each = from; each <= to; ++each) {
      const bool isEmpty = std::ranges::count(emptyBars, each) > 0;
      if (isEmpty || std::ranges::count(closes, each) > 0) {
        Quote bar;
        bar.fromDate = march(each).startIn(calendar) + 9.5 * 3600;
        bar.toDate = bar.fromDate + 86400;
        bar.close = isEmpty ? std::nullopt : std::optional(dec("10"));
        bars.push_back(bar);
      }
    }
    // What is final ends with a bar, at an opening.
    const DateRange final(march(from).startIn(calendar),
                          march(to + 1).startIn(calendar) + 9.5 * 3600);
    cache.storeFetchResult(
        {.quotes = bars,
         .prices = PriceAdjustment::marketNominal,
         .events = std::nullopt,
         .durableDateRange = final},
        {equity, final, QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}});
  }

  [[nodiscard]] std::vector<PriceCoverage> coverages(bool isRefreshed = false) {
    return priceCoverage({portfolio}, {.cache = cache,
                                       .quotes = *provider,
                                       .calendar = calendar,
                                       .today = march(12),
                                       .isRefreshed = isRefreshed});
  }
  /// "1-5 covered" of each stretch.
  static std::vector<std::string> lines(const PriceCoverage& coverage) {
    static constexpr std::array names = {"covered", "carried", "none", "running", "missing"};
    std::vector<std::string> lines;
    for (const auto& [days, state] : coverage.stretches) {
      lines.push_back(std::to_string(days.first.day) + "-" + std::to_string(days.last.day) + " " +
                      names.at(static_cast<std::size_t>(state)));
    }
    return lines;
  }
  /// Those of ABC.
  std::vector<std::string> linesOfABC(bool isRefreshed = false) {
    return lines(coverages(isRefreshed).front());
  }
  void buyOn(int dayOfMonth) {
    record({on(day(2021, 3, dayOfMonth)).deposit("1000"),
            on(day(2021, 3, dayOfMonth)).buy("10", "100")});
  }
  void paidOn(int dayOfMonth, int hour) {
    abc->recentPrice = dec("10");
    abc->recentDate = march(dayOfMonth).startIn(calendar) + hour * 3600.0;
  }

  TemporaryFolder folder;
  CacheQuoteProvider cache{folder / "Cache.sqlite3"};
};

TEST_F(PriceCoverageTest, TellsStretchesOfDaysApart) {
  EXPECT_THAT(coverages(), IsEmpty());
  buyOn(1);
  EXPECT_THAT(linesOfABC(), ElementsAre("1-12 missing"));
  keep(abc, 1, 3, {1, 2, 3});
  keep(abc, 8, 9, {8, 9});
  EXPECT_THAT(linesOfABC(),
              ElementsAre("1-3 covered", "4-7 missing", "8-9 covered", "10-12 missing"));
  EXPECT_TRUE(coverages().front().hasMissingDays());
  keep(abc, 4, 5, {4, 5});
  EXPECT_THAT(linesOfABC(), ElementsAre("1-9 covered", "10-12 missing"))
      << "a weekend that nobody asked about lacks nothing";
}

TEST_F(PriceCoverageTest, TellsWhatIsCarriedForward) {
  buyOn(1);
  keep(abc, 1, 12, {3, 8, 9, 11, 12}, {10});
  EXPECT_THAT(linesOfABC(), ElementsAre("1-9 covered", "10-10 carried", "11-12 covered"))
      << "a weekend with a holiday on each side is no gap";
  keep(abc, 1, 12, {8, 9, 10, 11, 12});
  EXPECT_THAT(linesOfABC(), ElementsAre("1-7 none", "8-12 covered"));
  keep(abc, 1, 12, {1, 2, 10, 11, 12});
  EXPECT_THAT(linesOfABC(), ElementsAre("1-2 covered", "3-9 carried", "10-12 covered"));
}

TEST_F(PriceCoverageTest, KnowsWhatCannotBeFinalYet) {
  buyOn(1);
  keep(abc, 1, 11, {1, 2, 3, 4, 5, 8, 9, 10, 11});
  paidOn(12, 15);
  EXPECT_THAT(linesOfABC(), ElementsAre("1-11 covered", "12-12 running"));
  keep(xyz, 1, 9, {1});
  paidOn(11, 16);
  cache.clearCachedData(abc);
  keep(abc, 1, 9, {1, 2, 3, 4, 5, 8, 9});
  EXPECT_THAT(linesOfABC(), ElementsAre("1-9 covered", "10-10 missing", "11-12 running"));
  // Whether a price of long ago is the latest only a refresh tells.
  cache.clearCachedData(abc);
  keep(abc, 1, 4, {1, 2, 3, 4});
  paidOn(5, 16);
  EXPECT_THAT(linesOfABC(), ElementsAre("1-4 covered", "5-12 missing"));
  EXPECT_THAT(linesOfABC(true), ElementsAre("1-4 covered", "5-12 running"));
}

TEST_F(PriceCoverageTest, AsksOnlyForDaysOnWhichSomethingWasHeld) {
  portfolio->allowsNegativeBalances = true;
  record({on(day(2021, 3, 1)).deposit("1000"), buyOf(xyz, "5", "50", "60"),
          on(day(2021, 3, 3)).buy("10", "100"), on(day(2021, 3, 4)).sell("10", "100"),
          on(day(2021, 3, 9)).buy("1", "10"), on(day(2021, 3, 9)).sell("1", "10"),
          on(day(2021, 3, 10))
              .make(BasicTransaction::Trade{
                  xyz, {Currency::usd(), dec("-50")}, dec("-60"), dec("-5")}),
          on(day(2021, 3, 20)).buy("1", "10")});
  xyz->refreshProblem = "XYZ is no longer traded.";
  const auto all = coverages();
  ASSERT_EQ(all.size(), 3U);
  EXPECT_THAT(lines(all[0]), ElementsAre("3-4 missing", "9-9 missing"));
  EXPECT_EQ(all[1].equity, xyz);
  EXPECT_THAT(lines(all[1]), ElementsAre("2-10 missing"));
  EXPECT_EQ(all[1].problem, "XYZ is no longer traded.");
  EXPECT_TRUE(all[2].isExchangeRate);
  EXPECT_EQ(all[2].equity->id(), "FX USD/CAD");
  EXPECT_FALSE(all[0].problem);
}

TEST_F(PriceCoverageTest, FetchesWhatIsMissingAndSaysWhatWasRefused) {
  portfolio->allowsNegativeBalances = true;
  record({on(day(2021, 3, 1)).deposit("1000"), on(day(2021, 3, 1)).buy("10", "100"),
          (on(day(2021, 3, 1)), buyOf(xyz, "5", "50", "60"))});
  keep(abc, 3, 4, {3, 4});
  const auto source = std::make_shared<ScriptedQuoteProvider>([&](const QuoteQuery& query) {
    return query.equity == xyz
               ? failure(URLError(URLError::Code::cannotConnect, "http://nowhere", ""))
               : ScriptedQuoteProvider::quotes({});
  });
  std::vector<double> progress;
  std::optional<EquityMap<std::string>> refused;
  fetchMissingPrices(
      source, coverages(), [&](double fraction) { progress.push_back(fraction); },
      [&](EquityMap<std::string> why) { refused = std::move(why); });
  ASSERT_TRUE(MainLoop::runUntil([&] { return refused.has_value(); }, std::chrono::seconds(20)));
  std::vector<DateRange> asked;
  for (const QuoteQuery& query : source->queries) {
    if (query.equity == abc) {
      asked.push_back(query.dateRange);
    }
  }
  EXPECT_THAT(asked,
              ElementsAre(DateRange(march(1).startIn(calendar), march(3).startIn(calendar)),
                          DateRange(march(5).startIn(calendar), march(13).startIn(calendar))));
  EXPECT_EQ(refused->size(), 1U);
  EXPECT_EQ(refused->at(xyz), "The quote service cannot be reached.");
  EXPECT_THAT(progress, ElementsAre(0.25, 0.5, 0.75, 1));
}

}  // namespace
}  // namespace corvane::testing
