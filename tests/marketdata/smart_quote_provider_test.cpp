// A source and a cache as one provider: what is asked of the source, what is kept, what is
// answered.

#include "marketdata/chain/smart_quote_provider.h"

#include <gmock/gmock.h>

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/quote_provider_chain_world.h"
#include "support/failing_vfs.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using enum QuoteQuery::PriceAdjustment;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;

ErrorPointer anError(const std::string& text) {
  return QuoteProviderError(QuoteProviderError::DataInconsistency{text}).copy();
}

class SmartQuoteProviderTest : public ::testing::Test {
 protected:
  SmartQuoteProviderTest() { abc = source->authoritative(smart->equityWithId("ABC")); }

  Result<QuoteFetchResult> fetch(QuoteQuery query) {
    return fetches.fetch(smart, std::move(query));
  }

  std::vector<Quote> quotes(double lower, double upper, PriceAdjustment prices) {
    const auto result = fetch(dailyQuotes(abc, days(lower, upper), prices));
    EXPECT_EQ(result->prices, prices);
    EXPECT_FALSE(result->events);
    return *result->quotes;
  }

  std::vector<EquityEvent> events(QuoteQuery::Subject seeking) {
    return *fetch({abc, abc->fullDateRange(), std::move(seeking)})->events;
  }

  [[nodiscard]] std::vector<Quote> truth(double lower, double upper, PriceAdjustment prices) const {
    return source->bars("ABC", days(lower, upper), prices);
  }

  /// The ranges of bars, or of events, that the source was asked for since the last call.
  std::vector<DateRange> asked(bool forEvents = false) {
    std::vector<DateRange> ranges;
    std::erase_if(source->queries, [&](const QuoteQuery& query) {
      if (std::holds_alternative<QuoteQuery::EventsWithoutAdjustment>(query.seeking) != forEvents) {
        return false;
      }
      ranges.push_back(query.dateRange);
      return true;
    });
    return ranges;
  }

  void tomorrow(double number) {
    source->today = number;
    source->authoritative(abc);
  }

  TemporaryFolder folder;
  std::shared_ptr<MarketSource> source = std::make_shared<MarketSource>();
  std::shared_ptr<CacheQuoteProvider> cache =
      std::make_shared<CacheQuoteProvider>(folder / "Cache.sqlite3");
  std::shared_ptr<SmartQuoteProvider> smart = std::make_shared<SmartQuoteProvider>(source, cache);
  EquityPointer abc;
  Fetches fetches;
};

TEST_F(SmartQuoteProviderTest, AsksOnlyForWhatItHasNotKept) {
  EXPECT_EQ(quotes(10, 20, marketNominal), truth(10, 20, marketNominal));
  EXPECT_THAT(asked(), ElementsAre(days(10, 21))) << "with the bar that the end may fall in";

  const auto wider = fetch(dailyQuotes(abc, days(5, 25), marketNominal));
  EXPECT_EQ(*wider->quotes, truth(5, 25, marketNominal));
  EXPECT_EQ(wider->durableDateRange, days(5, 25));
  EXPECT_THAT(asked(), ElementsAre(days(5, 10), days(21, 26)));
  for (const Quote& quote : *wider->quotes) {
    EXPECT_EQ(quote.isCached, days(10, 21).contains(quote.fromDate)) << quote;
  }

  const auto again = quotes(5, 25, marketNominal);
  EXPECT_EQ(again, truth(5, 25, marketNominal));
  EXPECT_THAT(again, Each(Field(&Quote::isCached, true)));
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(SmartQuoteProviderTest, ConvertsWhatItHasOnAnotherBasisAndKeepsTheResult) {
  source->events["ABC"] = {dividend(8, Decimal(1)), split(12, 2, 1), dividend(15, Decimal(2))};
  quotes(0, 20, marketNominal);
  source->queries.clear();
  for (const PriceAdjustment prices : {adjustedForSplits, adjustedForSplitsAndDividends}) {
    for (int time = 0; time < 2; ++time) {
      const auto converted = quotes(0, 20, prices);
      EXPECT_EQ(converted, truth(0, 20, prices));
      EXPECT_THAT(converted, Each(Field(&Quote::isCached, true)));
      const auto plan = cache->coveragePlan(dailyQuotes(abc, days(0, 20), prices));
      EXPECT_EQ(plan.exactQueries.size(), 1);
    }
  }
  EXPECT_THAT(source->queries, IsEmpty());
}

/// A caller may ask for anything up to this very moment; only whole seconds are kept.
TEST_F(SmartQuoteProviderTest, ConvertsARangeThatEndsWithinASecond) {
  source->events["ABC"] = {split(12, 2, 1)};
  quotes(0, 20, marketNominal);
  const DateRange range(onDay(3) + 0.25, onDay(15) + 0.75);
  const auto result = fetch(dailyQuotes(abc, range, adjustedForSplits));
  ASSERT_TRUE(result) << *result.error();
  EXPECT_EQ(*result->quotes, source->bars("ABC", range, adjustedForSplits));
  EXPECT_EQ(result->durableDateRange, range);
}

TEST_F(SmartQuoteProviderTest, KeepsEventsAndTheRangesWithout) {
  source->events["ABC"] = {split(12, 2, 1), dividend(15, Decimal(2))};
  EXPECT_EQ(events(QuoteQuery::EventsWithoutAdjustment{}), source->events["ABC"]);
  EXPECT_EQ(events(QuoteQuery::EventsWithoutAdjustment{}), source->events["ABC"]);
  EXPECT_EQ(events(QuoteQuery::EventsOnly{marketNominal}).size(), 2);
  EXPECT_EQ(events(QuoteQuery::EventsOnly{adjustedForSplits}), source->events["ABC"]);
  EXPECT_THAT(asked(true), ElementsAre(days(0, 100)));
  source->events["ABC"].clear();
  cache->clearCachedData(abc);
  EXPECT_THAT(events(QuoteQuery::EventsOnly{marketNominal}), IsEmpty());
  source->queries.clear();
  EXPECT_THAT(events(QuoteQuery::EventsOnly{marketNominal}), IsEmpty());
  EXPECT_THAT(source->queries, IsEmpty());
}

TEST_F(SmartQuoteProviderTest, HandsOutButDoesNotKeepWhatIsNotFinal) {
  source->isDurable = false;
  for (int time = 0; time < 2; ++time) {
    const auto result = fetch(dailyQuotes(abc, days(10, 20), adjustedForSplits));
    EXPECT_EQ(*result->quotes, truth(10, 20, adjustedForSplits));
    EXPECT_TRUE(result->durableDateRange.isEmpty());
    EXPECT_THAT(asked(), ElementsAre(days(10, 21)));
  }
  // A piece without anything final adds nothing to what is final of the others.
  source->isDurable = true;
  quotes(20, 30, adjustedForSplits);
  source->isDurable = false;
  EXPECT_EQ(fetch(dailyQuotes(abc, days(10, 30), adjustedForSplits))->durableDateRange,
            days(20, 30));
}

TEST_F(SmartQuoteProviderTest, KeepsNothingOfAFetchThatFailsInPart) {
  quotes(20, 40, marketNominal);
  source->daysPerQuery = 10;
  source->refusal = [](const QuoteQuery& query) {
    return query.dateRange == days(41, 51) ? anError("No line.") : nullptr;
  };
  const auto query = dailyQuotes(abc, days(10, 60), marketNominal);
  EXPECT_EQ(*fetch(query).error(), *anError("No line."));
  asked();
  source->refusal = [](const QuoteQuery&) { return nullptr; };
  EXPECT_EQ(*fetch(query)->quotes, truth(10, 60, marketNominal));
  EXPECT_THAT(asked(), ElementsAre(days(10, 20), days(41, 51), days(51, 61)));
}

TEST_F(SmartQuoteProviderTest, FailsWhenTheHistoryForAConversionCannotBeHad) {
  source->refusal = [](const QuoteQuery& query) {
    return std::holds_alternative<QuoteQuery::EventsWithoutAdjustment>(query.seeking)
               ? anError("No events.")
               : nullptr;
  };
  EXPECT_EQ(*fetch(dailyQuotes(abc, days(10, 20), marketNominal)).error(), *anError("No events."));
  EXPECT_EQ(
      cache->coveragePlan(dailyQuotes(abc, days(10, 20), marketNominal)).missingQueries.size(), 1);
}

TEST_F(SmartQuoteProviderTest, FetchesAllAfreshAfterANewSplit) {
  tomorrow(20);
  quotes(0, 20, adjustedForSplits);
  asked();
  tomorrow(30);
  source->events["ABC"] = {split(25, 2, 1)};
  EXPECT_EQ(quotes(10, 30, adjustedForSplits), truth(10, 30, adjustedForSplits));
  EXPECT_THAT(asked(), ElementsAre(days(20, 30), days(10, 30)));
  // The part that was not asked for now is gone from the cache too.
  EXPECT_EQ(quotes(0, 30, adjustedForSplits), truth(0, 30, adjustedForSplits));
  EXPECT_THAT(asked(), ElementsAre(days(0, 10)));
  EXPECT_EQ(quotes(0, 30, adjustedForSplits), truth(0, 30, adjustedForSplits));
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(SmartQuoteProviderTest, TakesAnEventAtTheEndOfWhatItKnowsForAnOldOne) {
  tomorrow(20);
  quotes(0, 20, adjustedForSplits);
  asked();
  tomorrow(30);
  source->events["ABC"] = {dividend(20, Decimal(1))};
  quotes(0, 30, adjustedForSplits);
  EXPECT_THAT(asked(), ElementsAre(days(20, 30)));
}

/// All bars are there, on another basis, and only the history for their conversion tells of the
/// split. Prices from before it must neither be answered nor kept.
TEST_F(SmartQuoteProviderTest, ConvertsNothingThatANewSplitHasOvertaken) {
  tomorrow(20);
  quotes(0, 20, adjustedForSplits);
  tomorrow(30);
  source->events["ABC"] = {split(25, 2, 1)};
  EXPECT_EQ(quotes(0, 20, marketNominal), truth(0, 20, marketNominal));
  EXPECT_EQ(quotes(0, 30, marketNominal), truth(0, 30, marketNominal));
  EXPECT_EQ(quotes(0, 30, adjustedForSplits), truth(0, 30, adjustedForSplits));
}

/// The equity's own dates are those of its last refresh, and the history is asked for up to there.
TEST_F(SmartQuoteProviderTest, ConvertsByASplitThatIsLaterThanTheEquitysLatestDate) {
  tomorrow(20);
  quotes(0, 20, marketNominal);
  source->today = 30;
  source->events["ABC"] = {split(25, 2, 1)};
  for (const PriceAdjustment prices :
       {marketNominal, adjustedForSplits, adjustedForSplitsAndDividends}) {
    EXPECT_EQ(quotes(0, 30, prices), truth(0, 30, prices)) << caseName(prices);
  }
}

/// Only the last of three pieces tells of the split, perhaps when the others are converted already.
TEST_F(SmartQuoteProviderTest, ConvertsAllPiecesByASplitThatOneOfThemTells) {
  source->daysPerQuery = 10;
  for (int i = 0; i < 20; ++i) {
    const std::string id = "E" + std::to_string(i);
    source->today = 20;
    const EquityPointer equity = source->authoritative(smart->equityWithId(id));
    source->today = 30;
    source->events[id] = {split(25, 2, 1)};
    for (int time = 0; time < 2; ++time) {
      const auto told = fetch(dailyQuotes(equity, days(0, 30), marketNominal));
      ASSERT_EQ(*told->quotes, source->bars(id, days(0, 30), marketNominal));
    }
  }
}

/// A source that keeps telling of an event after all that it calls final.
TEST_F(SmartQuoteProviderTest, AnswersInTheFaceOfAnEventThatNeverBecomesFinal) {
  tomorrow(20);
  source->events["ABC"] = {split(5, 2, 1)};
  quotes(0, 20, marketNominal);
  tomorrow(30);
  source->isDurable = false;
  source->events["ABC"].push_back(split(25, 2, 1));
  for (int i = 0; i < 10; ++i) {
    fetches.begin(smart, dailyQuotes(abc, days(0, 20 + i), marketNominal), [&, i](auto answer) {
      EXPECT_EQ(*answer->quotes, truth(0, 20 + i, marketNominal));
    });
  }
  fetches.wait();
}

TEST_F(SmartQuoteProviderTest, RefusesAnAnswerWithoutTheListSought) {
  class EventsSource : public MarketSource {
    void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                     QuoteCompletion completion) override {
      // In the manner of the base class: on the main queue.
      DispatchQueue::main()->async(
          [range = query.dateRange, completion = std::move(completion)]() mutable {
            completion(QuoteFetchResult{std::nullopt, marketNominal, std::nullopt, range});
          });
    }
  };
  smart = std::make_shared<SmartQuoteProvider>(std::make_shared<EventsSource>(), cache);
  const QuoteProviderError expected(QuoteProviderError::QueryNotSatisfied{});
  EXPECT_EQ(*fetch(dailyQuotes(abc, days(1, 2), marketNominal)).error(), expected);
  EXPECT_EQ(*fetch({abc, days(1, 2), QuoteQuery::EventsOnly{marketNominal}}).error(), expected);
}

TEST_F(SmartQuoteProviderTest, FailsWithWhatTheCacheRefusesToKeep) {
  source->events["ABC"] = {split(3, 2, 1), dividend(5, Decimal(1))};
  source->events["ABC"].back().priceAdjustment = marketNominal;
  const auto result = fetch(dailyQuotes(abc, days(1, 8), adjustedForSplits));
  ASSERT_FALSE(result);
  EXPECT_EQ(*result.error(), *anError("Events have heterogeneous price adjustments and/or do not "
                                      "match the query."));
}

TEST_F(SmartQuoteProviderTest, AnswersWithNothingWhereTheSourceHasNothingToAsk) {
  class SilentSource : public MarketSource {
    [[nodiscard]] std::vector<QuoteQuery> sourceQueries(const QuoteQuery&) const override {
      return {};
    }
  };
  smart = std::make_shared<SmartQuoteProvider>(std::make_shared<SilentSource>(), cache);
  const auto result = fetch(dailyQuotes(abc, days(3, 5), marketNominal));
  EXPECT_THAT(*result->quotes, IsEmpty());
  EXPECT_EQ(result->durableDateRange, days(3, 3));
}

TEST_F(SmartQuoteProviderTest, KeepsRecentPricesOfARefreshAsSnapshots) {
  std::optional<ErrorPointer> outcome;
  const auto refresh = [&] {
    outcome.reset();
    smart->refreshEquities({abc}, [&](ErrorPointer error) {
      DispatchQueue::main()->async([&, error] { outcome = error; });
    });
    EXPECT_TRUE(MainLoop::runUntil([&] { return outcome.has_value(); }, std::chrono::seconds(20)));
    EXPECT_EQ(*outcome, nullptr);
  };
  const QuoteQuery snapshots{abc, days(99, 101),
                             QuoteQuery::Quotes{QuoteInterval::oneMinute, marketNominalSnapshot}};
  refresh();
  const std::vector<Quote> kept = *cache->readQuery(snapshots).quotes;
  ASSERT_EQ(kept.size(), 1);
  EXPECT_EQ(kept[0].close, Decimal(42));
  EXPECT_TRUE(kept[0].isPartial);

  // After the session there is no snapshot, but the equity is kept.
  cache->clearCachedData(abc);
  class AfterHours : public MarketSource {
    void refreshEquities(std::vector<EquityPointer> equities,
                         RefreshCompletion completion) override {
      equities[0]->recentTradingPeriod = days(98, 99);
      equities[0]->name = "After Hours";
      DispatchQueue::main()->async(
          [completion = std::move(completion)]() mutable { completion(nullptr); });
    }
  };
  smart = std::make_shared<SmartQuoteProvider>(std::make_shared<AfterHours>(), cache);
  refresh();
  EXPECT_FALSE(abc->recentTradingPeriod);
  EXPECT_THAT(*cache->readQuery(snapshots).quotes, IsEmpty());
  const auto row =
      std::make_shared<CacheQuoteProvider>(folder / "Cache.sqlite3")->equityWithId("ABC");
  EXPECT_EQ(row->name, "After Hours");
}

/// Waiting for the disk would hold up everything on the main queue.
TEST(SmartQuoteProviderOnADisk, KeepsARefreshOfManyEquitiesWithoutWaitingForIt) {
  const TemporaryFolder folder;
  const FailingFileSystem disk;
  const auto source = std::make_shared<MarketSource>();
  const auto smart = std::make_shared<SmartQuoteProvider>(
      source, std::make_shared<CacheQuoteProvider>(folder / "Cache.sqlite3"));
  std::vector<EquityPointer> equities;
  for (int i = 0; i < 50; ++i) {
    equities.push_back(smart->equityWithId("E" + std::to_string(i)));
  }
  const int before = disk.confirmationCount();
  for (source->today = 100; source->today < 160; ++source->today) {
    std::optional<ErrorPointer> outcome;
    smart->refreshEquities(equities, [&](ErrorPointer error) { outcome = std::move(error); });
    ASSERT_TRUE(MainLoop::runUntil([&] { return outcome.has_value(); }, std::chrono::seconds(20)));
    EXPECT_EQ(*outcome, nullptr);
  }
  // Once for each time that the log, which is written back beside this thread, is begun anew.
  EXPECT_LE(disk.confirmationCount() - before, 3);
  EXPECT_LT(std::filesystem::file_size(folder / "Cache.sqlite3-wal"), std::uintmax_t{16} << 20);
}

TEST_F(SmartQuoteProviderTest, KeepsWhatASearchFinds) {
  std::optional<Result<std::vector<EquityPointer>>> found;
  smart->searchEquities("XYZ", [&](auto equities) { found = std::move(equities); });
  EXPECT_TRUE(MainLoop::runUntil([&] { return found.has_value(); }, std::chrono::seconds(20)));
  ASSERT_EQ((**found).size(), 1);
  EXPECT_EQ((**found)[0], smart->equityWithId("XYZ"));
  EXPECT_EQ((**found)[0]->quoteProvider.lock(), smart);

  // Another run of the program, whose source knows nothing yet.
  const auto later = std::make_shared<SmartQuoteProvider>(
      std::make_shared<QuoteProvider>(),
      std::make_shared<CacheQuoteProvider>(folder / "Cache.sqlite3"));
  const EquityPointer xyz = later->equityWithId("XYZ");
  EXPECT_TRUE(xyz->isAuthoritative);
  EXPECT_EQ(xyz->currency, Currency::usd());
  EXPECT_EQ(xyz, later->sourceProvider->equityWithId("XYZ"));
  EXPECT_FALSE(later->equityWithId("UNKNOWN")->isAuthoritative);
  const EquityPointer rate = later->exchangeRateEquity(Currency::usd(), Currency::cad());
  EXPECT_EQ(rate->currency, Currency::cad());
  EXPECT_EQ(rate->quoteProvider.lock(), later);
}

}  // namespace
}  // namespace corvane::testing
