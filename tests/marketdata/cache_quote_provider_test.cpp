// What the cache keeps, and what it gives back.

#include <chrono>

#include "marketdata/cache_world.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

/// What `start(completion)` completes with, which must be later and on no main queue.
template <typename Outcome, typename Start>
Outcome outcomeOf(Start start) {
  std::optional<Outcome> outcome;
  bool wasLater = false;
  start([&](Outcome arrived) {
    EXPECT_FALSE(DispatchQueue::main()->isCurrent());
    DispatchQueue::main()->async([&, arrived = std::move(arrived)]() mutable {
      EXPECT_TRUE(wasLater);
      outcome = std::move(arrived);
    });
  });
  wasLater = true;
  EXPECT_TRUE(MainLoop::runUntil([&] { return outcome.has_value(); }, 10s));
  return outcome.value();
}

/// Gives `equity` a value in every field that is kept.
void fill(EquityInfo& equity) {
  equity.symbol = "ABC.TO";
  equity.exchange = "TSX";
  equity.name = "Alphabet “Soup” Ltd.";
  equity.calendar = Calendar(TimeZone::withIdentifier("America/Toronto").value());
  equity.currency = Currency::cad();
  equity.recentPrice = dec("12.34");
  equity.previousClosePrice = dec("12");
  equity.recentDate = at(1'700'000'012.5);
  equity.recentTradingPeriod = range(1'699'990'000, 1'700'010'000);
}

TEST(CachedEquity, ComesBackWithAllItsFields) {
  CacheWorld world;
  fill(*world.equity);
  world.cache->storeEquity(world.equity);
  EXPECT_TRUE(world.equity->isAuthoritative);
  const EquityPointer stored = world.equity;
  world.open();
  const EquityPointer read = world.cache->equityWithId("ABC");
  EXPECT_TRUE(read->isAuthoritative);
  EXPECT_EQ(read->description(), stored->description());
  EXPECT_EQ(read->name, stored->name);
  EXPECT_EQ(read->calendar, stored->calendar);
  EXPECT_EQ(read->currency, stored->currency);
  EXPECT_EQ(read->recentPrice, stored->recentPrice);
  EXPECT_EQ(read->previousClosePrice, stored->previousClosePrice);
  EXPECT_EQ(read->recentDate, stored->recentDate);
  EXPECT_EQ(read->recentTradingPeriod, stored->recentTradingPeriod);
  EXPECT_FALSE(world.cache->equityWithId("Other")->isAuthoritative);
}

TEST(CachedEquity, IsWrittenOverAndMayLoseFields) {
  const CacheWorld world;
  fill(*world.equity);
  world.cache->storeEquity(world.equity);
  world.equity->exchange.reset();
  world.equity->recentTradingPeriod.reset();
  world.cache->storeEquity(world.equity);
  EXPECT_EQ(world.rows("SELECT identifier, symbol, exchange, recentPeriodOpenDate FROM equities"),
            "ABC|ABC.TO|-|-");
}

TEST(CachedEquity, OfARowThatAnotherProgramRemovedIsWrittenAnew) {
  const CacheWorld world;
  world.cover(daily(marketNominal), range(0, 10));
  world.tamper("PRAGMA foreign_keys = ON; DELETE FROM equities;");
  world.cover(daily(marketNominal), range(20, 30));
  EXPECT_EQ(world.rows("SELECT fromDate, toDate FROM coverage"), "20|30");
}

/// Another program empties the file, and its equity gets the id that this one's had.
TEST(CachedEquity, DoesNotTakeTheBarsOfAnother) {
  const CacheWorld world;
  world.cover(daily(marketNominal), range(0, 10));
  world.tamper("PRAGMA foreign_keys = ON; DELETE FROM equities;");
  {
    CacheQuoteProvider other(world.file);
    other.storeFetchResult(answer(range(0, 20), {{bar(0, 10)}}),
                           {other.equityWithId("XYZ"), range(0, 20), daily(marketNominal)});
  }
  EXPECT_EQ(world.plan(range(0, 10), daily(marketNominal)).missingQueries.size(), 1U);
  EXPECT_THAT(*world.read(range(0, 10), daily(marketNominal)).quotes, IsEmpty());
}

TEST(CachedEquity, HasNoPeriodThatEndsBeforeItStarts) {
  const CacheWorld world;
  fill(*world.equity);
  world.cache->storeEquity(world.equity);
  world.tamper("UPDATE equities SET recentPeriodCloseDate = recentPeriodOpenDate - 1;");
  EXPECT_EQ(outcomeOf<ErrorPointer>(
                [&](auto completion) { world.cache->refreshEquities({world.equity}, completion); }),
            nullptr);
  EXPECT_EQ(world.equity->recentTradingPeriod, std::nullopt);
}

struct BadRow {
  const char* change;
  QuoteProviderError error;
};

std::ostream& operator<<(std::ostream& out, const BadRow& bad) {
  return out << bad.change;
}

class BadEquityRows : public ::testing::TestWithParam<BadRow> {};

TEST_P(BadEquityRows, FailARefreshAndLeaveAnEquityUnknown) {
  CacheWorld world;
  fill(*world.equity);
  world.cache->storeEquity(world.equity);
  world.tamper(GetParam().change);
  world.equity->name = "kept";
  const auto error = outcomeOf<ErrorPointer>([&](auto completion) {
    // One without a row is passed over.
    world.cache->refreshEquities({world.cache->equityWithId("Other"), world.equity}, completion);
  });
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(*error, GetParam().error);
  EXPECT_EQ(world.equity->name, "kept");
  EXPECT_EQ(world.equity->symbol, "ABC.TO");
  world.open();
  EXPECT_FALSE(world.cache->equityWithId("ABC")->isAuthoritative);
}

QuoteProviderError inconsistency(const char* text) {
  return QuoteProviderError(QuoteProviderError::DataInconsistency{text});
}

INSTANTIATE_TEST_SUITE_P(
    CachedEquity, BadEquityRows,
    ::testing::Values(
        BadRow{"UPDATE equities SET timeZoneName = NULL;",
               inconsistency("We should always have complete rows in the equities table.")},
        BadRow{"UPDATE equities SET identifier = 'XYZ';",
               QuoteProviderError(QuoteProviderError::NotAvailable{})},
        BadRow{"UPDATE equities SET timeZoneName = 'Mars/Olympus', symbol = 'changed';",
               QuoteProviderError(QuoteProviderError::UnrecognizedTimeZone{"Mars/Olympus"})},
        BadRow{"UPDATE equities SET currencyCode = 'ZZZZZZZZZ', symbol = 'changed';",
               QuoteProviderError(QuoteProviderError::UnsupportedCurrency{"ZZZZZZZZZ"})},
        BadRow{"DELETE FROM equities;", QuoteProviderError(QuoteProviderError::NotAvailable{})}));

TEST(CachedEquity, IsFoundByItsIdOnly) {
  const CacheWorld world;
  world.cache->storeEquity(world.equity);
  const auto found = [&](const std::string& text) {
    return outcomeOf<Result<std::vector<EquityPointer>>>(
               [&](auto completion) { world.cache->searchEquities(text, std::move(completion)); })
        .value();
  };
  EXPECT_THAT(found("ABC"), ElementsAre(world.equity));
  EXPECT_THAT(found("AB"), IsEmpty());
}

TEST(CachedBars, ComeBackInOrderAndMarkedAsCached) {
  const CacheWorld world;
  Quote full = bar(10, 20, "0.0325");
  full.open = dec("1234567.89");
  full.low = dec("0.1");
  full.high = dec("-3");
  full.volume = 9'000'000'000'000'000'000;
  world.store(daily(adjustedForSplits), answer(range(0, 30), {{full, bar(0, 10)}}));
  const QuoteFetchResult read = world.read(range(0, 30), daily(adjustedForSplits));
  EXPECT_EQ(read.quotes, (std::vector{bar(0, 10), full}));
  EXPECT_TRUE(read.quotes->front().isCached);
  EXPECT_FALSE(read.quotes->front().isPartial);
  EXPECT_EQ(read.prices, adjustedForSplits);
  EXPECT_EQ(read.events, std::nullopt);
  EXPECT_EQ(read.durableDateRange, range(0, 30));
  // The end of a range, another basis and another interval are left out.
  EXPECT_EQ(world.read(range(0, 10), daily(adjustedForSplits)).quotes, std::vector{bar(0, 10)});
  EXPECT_THAT(*world.read(range(0, 30), daily(marketNominal)).quotes, IsEmpty());
  EXPECT_THAT(*world.read(range(0, 30), minutely(adjustedForSplits)).quotes, IsEmpty());
}

TEST(CachedBars, ThatReachOutOfTheDurableRangeAreNotKept) {
  const CacheWorld world;
  world.store(daily(marketNominal),
              answer(range(10, 30), {{bar(5, 15), bar(10, 20), bar(20, 31), bar(40, 12)}}));
  EXPECT_EQ(world.rows("SELECT fromDate, toDate FROM quotes"), "10|20");
}

TEST(CachedBars, AreNotStoredWhereNothingIsDurable) {
  const CacheWorld world;
  world.store(daily(marketNominal), answer(range(10, 10), {{bar(10, 20)}}));
  EXPECT_EQ(world.rows("SELECT * FROM equities"), "");
}

TEST(CachedBars, MustBeginAndEndOnWholeSeconds) {
  const CacheWorld world;
  const auto store = [&](DateRange durable, Quote quote) {
    return errorOf([&] { world.store(daily(marketNominal), answer(durable, {{quote}})); });
  };
  EXPECT_THAT(store(range(0.5, 10), bar(1, 2)),
              IsInconsistency("Date range does not represent an integral number of seconds."));
  EXPECT_THAT(store(range(0, 10), bar(20, 20.5)),
              IsInconsistency("Quote dates do not represent an integral number of seconds."));
  EXPECT_EQ(world.rows("SELECT * FROM equities"), "");
}

TEST(CachedBars, AreFetchedWithoutConversion) {
  const CacheWorld world;
  world.store(daily(marketNominal), answer(range(0, 10), {{bar(0, 10)}}));
  const auto fetch = [&](const QuoteQuery::Subject& subject) {
    return outcomeOf<Result<QuoteFetchResult>>([&](auto completion) {
      world.cache->fetchQuotes(world.query(range(0, 10), subject), nullptr, std::move(completion));
    });
  };
  EXPECT_EQ(fetch(daily(marketNominal))->quotes, std::vector{bar(0, 10)});
  EXPECT_THAT(*fetch(daily(adjustedForSplits))->quotes, IsEmpty());
  EXPECT_EQ(*fetch(QuoteQuery::CurrentPeriodQuotes{true}).error(),
            QuoteProviderError(QuoteProviderError::NotAvailable{}));
  EXPECT_THAT(
      fetch(QuoteQuery::EventsWithoutAdjustment{}).error(),
      IsInconsistency("To retrieve unadjusted events, first seek coverage and then retrieve "
                      "events with specific price adjustments."));
}

TEST(CachedBars, AreOfferedInTheIntervalsThatCoverTheWholeRange) {
  const CacheWorld world;
  world.cover(daily(adjustedForSplits), range(0, 10));
  world.cover(minutely(marketNominal), range(0, 9));
  EXPECT_THAT(world.cache->availableIntervals(world.equity, range(0, 10)),
              ElementsAre(QuoteInterval::oneDay));
  EXPECT_THAT(world.cache->availableIntervals(world.equity, range(2, 8)),
              ElementsAre(QuoteInterval::oneMinute, QuoteInterval::oneDay));
}

TEST(CachedEvents, ComeBackExactly) {
  const CacheWorld world;
  // Nineteen digits fit a row as long as they stay below 2^63; longer ones are rounded to eighteen.
  const std::vector list = {dividend(1, "0.0325"), split(2, 4, 2),
                            dividend(3, "9.223372036854775807"), dividend(4, "1200"),
                            dividend(5, "0.12345678901234567850123")};
  world.store(events(marketNominal), answer(range(0, 10), std::nullopt, list));
  auto expected = list;
  expected.back() = dividend(5, "0.123456789012345679");
  const auto read = world.read(range(0, 10), events(marketNominal)).events.value();
  EXPECT_EQ(read, expected);
  const auto& ratio = std::get<EquityEvent::Split>(read[1].kind).ratio;
  EXPECT_EQ(ratio.description(), "4/2");
  EXPECT_EQ(world.rows("SELECT value1, value2 FROM events WHERE date = 1"), "325|-4");
}

TEST(CachedEvents, AreForgottenWhenTheSourceHasNoneAnyMore) {
  const CacheWorld world;
  world.store(events(marketNominal),
              answer(range(0, 30), std::nullopt, {{dividend(5, "1"), dividend(15, "1")}}));
  world.store(events(marketNominal),
              answer(range(10, 20), std::nullopt, std::vector<EquityEvent>()));
  EXPECT_THAT(*world.read(range(10, 20), events(marketNominal)).events, IsEmpty());
  EXPECT_TRUE(world.plan(range(10, 20), events(marketNominal)).missingQueries.empty());
  EXPECT_EQ(world.rows("SELECT date FROM events"), "5");
}

TEST(CachedEvents, AreCoveredOnlyByAnAnswerAboutEvents) {
  const CacheWorld world;
  world.store(daily(marketNominal), answer(range(0, 10), std::vector<Quote>()));
  world.store(events(marketNominal), answer(range(0, 10), std::vector<Quote>()));
  EXPECT_EQ(world.rows("SELECT intervalType FROM coverage"), "31");
  world.store(daily(adjustedForSplits),
              answer(range(0, 10), std::nullopt, {{dividend(5, "1", adjustedForSplits)}}));
  EXPECT_EQ(world.rows("SELECT intervalType, priceType FROM coverage"), "31|1 0|2");
}

TEST(CachedEvents, MustAllBeOnTheBasisOfTheQuery) {
  const CacheWorld world;
  const auto mixed =
      IsInconsistency("Events have heterogeneous price adjustments and/or do not match the query.");
  EXPECT_THAT(errorOf([&] {
                world.store(events(marketNominal),
                            answer(range(0, 10), std::nullopt,
                                   {{dividend(1, "1"), dividend(2, "1", adjustedForSplits)}}));
              }),
              mixed);
  EXPECT_THAT(errorOf([&] {
                world.store(daily(marketNominal), answer(range(0, 10), std::vector<Quote>(),
                                                         {{dividend(1, "1", adjustedForSplits)}}));
              }),
              mixed);
  EXPECT_EQ(world.contents(), " /  / ");
}

TEST(CachedEvents, AreKnownUpToTheFirstHole) {
  const CacheWorld world;
  EXPECT_EQ(world.cache->latestEventDate(world.equity), std::nullopt);
  const auto cover = [&](DateRange dates, PriceAdjustment prices) {
    world.store(events(prices),
                answer(dates, std::nullopt,
                       {{dividend(dates.lower().timeIntervalSince1970(), "1", prices)}}));
  };
  cover(range(10, 20), marketNominal);
  cover(range(20, 30), adjustedForSplits);
  cover(range(31, 40), marketNominal);
  EXPECT_EQ(world.cache->latestEventDate(world.equity), at(30));
  world.cache->clearCachedData(world.equity);
  EXPECT_EQ(world.cache->latestEventDate(world.equity), std::nullopt);
  EXPECT_EQ(world.rows("SELECT count(*) FROM equities"), "1");
  EXPECT_EQ(world.rows("SELECT count(*) FROM events"), "3");
}

TEST(CachedSnapshots, AreBarsOfTheMinuteBeforeTheRecentPrice) {
  const CacheWorld world;
  EXPECT_THAT(errorOf([&] { world.cache->storeSnapshotQuote(world.equity); }),
              IsInconsistency("Equity is missing date and/or price for recent snapshot quote."));
  world.equity->recentPrice = dec("1.5");
  // A price of a full minute counts for the minute that it ends.
  for (const double seconds : {600.0, 659.5, 660.0, 671.0}) {
    world.equity->recentDate = at(seconds);
    world.cache->storeSnapshotQuote(world.equity);
  }
  EXPECT_EQ(world.rows("SELECT fromDate, toDate, open, close, volume FROM quotes"),
            "540|600|-|1.5|- 600|660|-|1.5|- 660|720|-|1.5|-");
  EXPECT_EQ(world.rows("SELECT fromDate, toDate, intervalType, priceType FROM coverage"),
            "540|720|11|0");
  EXPECT_TRUE(world.read(range(0, 700), minutely(marketNominalSnapshot)).quotes->front().isPartial);
  world.equity->recentDate = Date::sinceReferenceDate(1e300);
  EXPECT_THAT(errorOf([&] { world.cache->storeSnapshotQuote(world.equity); }),
              IsInconsistency("Failed to construct date for a snapshot quote."));
}

TEST(QuoteCache, CanBeEmptiedAndUsedOn) {
  const CacheWorld world;
  world.store(daily(marketNominal), answer(range(0, 10), {{bar(0, 10)}}, {{dividend(1, "1")}}));
  world.cache->empty();
  EXPECT_EQ(world.rows("SELECT * FROM equities"), "");
  EXPECT_EQ(world.contents(), " /  / ");
  EXPECT_THAT(*world.read(range(0, 10), daily(marketNominal)).quotes, IsEmpty());
  world.cover(daily(marketNominal), range(0, 10));
  EXPECT_EQ(world.plan(range(0, 10), daily(marketNominal)).exactQueries.size(), 1U);
}

}  // namespace
}  // namespace corvane::testing
