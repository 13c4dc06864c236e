// The whole chain, from the switch down to a socket and a file: what it asks the sample market for,
// what it keeps, and that it answers all that it is asked, whatever fails.
//
// CORVANE_STORM_SECONDS sets how long the service fails at random, CORVANE_TEST_SEED repeats a run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "marketdata/market_chain.h"
#include "platform/data/sqlite.h"
#include "random_cases.h"

namespace corvane::testing {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using enum PriceAdjustment;
using enum QuoteInterval;
using DataSource = SwitchableQuoteProvider::DataSource;
using Fault = SampleMarketFault;

const Date now = at("America/New_York", 2026, 3, 10, 14, 30, 20);
constexpr std::array bases = {adjustedForSplits, marketNominal, adjustedForSplitsAndDividends};

/// A day's bar in New York goes from one of these to the next.
Date opening(int month, int day, int year = 2026) {
  return at("America/New_York", year, month, day, 9, 30);
}

QuoteQuery bars(const EquityPointer& equity, Date from, Date to, QuoteInterval interval = oneDay,
                PriceAdjustment prices = adjustedForSplits) {
  return {equity, {from, to}, QuoteQuery::Quotes{interval, prices}};
}

TEST(MarketChainTest, AsksForEveryDayOnce) {
  const TestClock clock(now);
  MarketChain chain(clock);
  auto equity = chain.refreshed("CASTR");
  const auto charts = [&] { return chain.charts("CASTR"); };
  const auto inner = [&] { return bars(equity, opening(1, 5), opening(2, 7)); };
  const auto outer = [&] { return bars(equity, opening(12, 15, 2025), opening(2, 28)); };

  const auto first = chain.fetch(inner()).value();
  EXPECT_EQ(charts(), 1);
  EXPECT_FALSE(first.quotes->front().isCached);
  const auto again = chain.fetch(inner()).value();
  EXPECT_EQ(charts(), 1);
  EXPECT_EQ(again, first);
  EXPECT_TRUE(again.quotes->front().isCached);

  // The days on both sides, then the weekends in between, which nothing is known of yet.
  const auto whole = chain.fetch(outer()).value();
  EXPECT_EQ(charts(), 3);
  EXPECT_THAT(chain.asked("CASTR"), ElementsAre(DateRange(opening(1, 5), opening(2, 8)), _, _));
  EXPECT_THAT(chain.asked("CASTR"),
              ::testing::IsSupersetOf({DateRange(opening(12, 15, 2025), opening(1, 5)),
                                       DateRange(opening(2, 7), opening(3, 1))}));
  EXPECT_EQ(chain.fetch(outer()).value(), whole);
  EXPECT_EQ(charts(), 5);
  const auto direct = chain.service();
  const auto truth = chain.fetch(
      direct, bars(chain.refreshed("CASTR", direct), opening(12, 15, 2025), opening(2, 28)));
  EXPECT_TRUE(areSame(*whole.quotes, truth.value().quotes.value()));

  const int before = charts();
  equity.reset();
  chain.open();
  equity = chain.provider->equityWithId("CASTR");
  EXPECT_EQ(chain.fetch(outer()).value(), whole);
  EXPECT_EQ(charts(), before) << "nor in another run";
}

/// The last bar of a range of days ends after the range: at the next opening, or with its month.
TEST(MarketChainTest, KeepsTheLastBarOfARangeOfThePast) {
  const TestClock clock(now);
  MarketChain chain(clock);
  const auto equity = chain.refreshed("BOREA.TO");
  const auto midnight = [](int month, int day) { return at("America/Toronto", 2025, month, day); };
  for (const QuoteInterval interval : {oneDay, oneWeek, oneMonth}) {
    for (const PriceAdjustment prices : bases) {
      const auto query = bars(equity, midnight(9, 1), midnight(12, 18), interval, prices);
      const auto told = chain.fetch(query).value();
      EXPECT_EQ(told.durableDateRange.upper(), query.dateRange.upper());
      EXPECT_FALSE(told.quotes->back().isPartial) << "it has ended long ago";
      chain.provider->dataSource = DataSource::cacheOnly;
      EXPECT_TRUE(areSame(chain.fetch(query).value().quotes.value(), *told.quotes))
          << json(interval).text() << " in " << caseName(prices);
      chain.provider->dataSource = DataSource::sourceAndCache;
    }
  }
}

/// The service dates what happens within a month's bar to the first of the month.
TEST(MarketChainTest, KeepsTheDaysOfEventsWhateverBarsAreAskedFor) {
  const TestClock clock(now);
  MarketChain chain(clock);
  const auto equity = chain.refreshed("BNDUS");
  const QuoteQuery events = {
      equity, {opening(1, 3, 2024), opening(1, 3)}, QuoteQuery::EventsOnly{adjustedForSplits}};
  const auto days = chain.fetch(events).value().events;
  ASSERT_GT(days->size(), 20U);
  for (const QuoteInterval interval : {oneMonth, oneWeek, threeMonths, oneDay}) {
    for (const PriceAdjustment prices : bases) {
      (void)chain.fetch(bars(equity, opening(1, 3, 2024), opening(1, 3), interval, prices)).value();
      EXPECT_EQ(chain.fetch(events).value().events, days) << json(interval).text();
    }
  }
}

TEST(MarketChainTest, FetchesAllAfreshOnceASplitTurnsUp) {
  TestClock clock(now);
  MarketChain chain(clock);
  const auto equity = chain.refreshed("CASTR");
  const auto days = [&](Date end, PriceAdjustment prices = adjustedForSplits) {
    return bars(equity, opening(1, 5), end, oneDay, prices);
  };
  const auto before = chain.fetch(days(opening(3, 10))).value();
  const auto traded = chain.fetch(days(opening(3, 10), marketNominal)).value();
  chain.market.addSplit("CASTR", opening(3, 11), 4, 1);
  const int asked = chain.charts("CASTR");
  EXPECT_EQ(chain.fetch(days(opening(3, 10))).value(), before);
  EXPECT_EQ(chain.charts("CASTR"), asked) << "the split is still to come";

  clock.set(at("America/New_York", 2026, 3, 12, 12));
  const auto after = chain.fetch(days(opening(3, 12))).value();
  EXPECT_EQ(chain.charts("CASTR"), asked + 2) << "the new days, then everything";
  ASSERT_EQ(after.quotes->size(), before.quotes->size() + 2);
  for (std::size_t i = 0; i < before.quotes->size(); ++i) {
    EXPECT_EQ(after.quotes->at(i).close.value() * 4, before.quotes->at(i).close.value());
  }
  EXPECT_EQ(chain.fetch(days(opening(3, 12))).value(), after);
  EXPECT_EQ(chain.charts("CASTR"), asked + 2);
  EXPECT_TRUE(
      areSame(*chain.fetch(days(opening(3, 10), marketNominal)).value().quotes, *traded.quotes))
      << "what was paid does not change";
}

/// Minutes are asked for by the week. Only the last week tells of a split in its last minute, and
/// the prices of all of them are undone by it.
TEST(MarketChainTest, ConvertsEveryWeekByTheEventsOfAnyOfThem) {
  TestClock clock(at("America/New_York", 2026, 3, 10, 20));
  MarketChain chain(clock);
  const Date start = at("America/New_York", 2026, 3, 3, 12);
  const auto minutes = [&](const EquityPointer& equity, Date end) {
    return bars(equity, start, end, oneMinute, marketNominal);
  };
  const auto direct = chain.service();
  const auto truth =
      chain.fetch(direct, minutes(chain.refreshed("CASTR", direct), clock.now())).value().quotes;
  ASSERT_GT(truth->size(), 2000U);

  chain.market.addSplit("CASTR", opening(3, 11), 4, 1);
  clock.set(opening(3, 11));
  const auto query = minutes(chain.refreshed("CASTR"), opening(3, 11) + 60);
  const auto count = static_cast<std::ptrdiff_t>(truth->size());
  const auto beforeSplit = [&](const std::vector<Quote>& all) {
    return std::vector(all.begin(), all.begin() + count);
  };
  EXPECT_TRUE(areSame(beforeSplit(chain.fetch(query).value().quotes.value()), *truth));
  EXPECT_TRUE(areSame(beforeSplit(chain.cache().readQuery(query).quotes.value()), *truth));
}

TEST(MarketChainTest, WritesNothingWhenOnePieceFails) {
  const TestClock clock(now);
  MarketChain chain(clock);
  const std::vector<std::pair<std::string, Fault>> failures = {{"PELLR", Fault::serverError},
                                                               {"VESTM", Fault::droppedConnection},
                                                               {"OAKWN", Fault::truncatedJSON}};
  for (const auto& [id, fault] : failures) {
    const auto query = bars(chain.refreshed(id), opening(2, 18), opening(3, 5), oneMinute);
    chain.market.addFault({.fault = fault, .pathPrefix = "/v8/", .symbol = id});
    const auto failed = chain.fetch(query);
    ASSERT_FALSE(failed) << id;
    EXPECT_TRUE(failed.error()->description()) << id;
    EXPECT_EQ(chain.charts(id), 3) << "a week at a time";
    EXPECT_THAT(chain.cache().coveragePlan(query).missingQueries, ElementsAre(query));
    EXPECT_TRUE(chain.cache().readQuery(query).quotes->empty());

    const auto answer = chain.fetch(query);
    ASSERT_TRUE(answer) << *answer.error();
    EXPECT_EQ(chain.charts(id), 6);
    EXPECT_GT(chain.cache().readQuery(query).quotes->size(), 3000U);
  }
}

TEST(MarketChainTest, SwitchesItsSourceUnderTheSameEquities) {
  const TestClock clock(now);
  MarketChain chain(clock);
  const auto equity = chain.refreshed("PELLR");
  const auto pair = chain.provider->exchangeRateEquity(Currency::cad(), Currency::usd());
  EXPECT_EQ(chain.refresh(chain.provider, {pair}), nullptr);
  const auto query = bars(equity, opening(1, 5), opening(1, 10));
  const auto charts = [&] { return chain.charts("PELLR"); };
  const auto fetchFrom = [&](DataSource source) {
    chain.provider->dataSource = source;
    EXPECT_EQ(chain.provider->equityWithId("PELLR"), equity);
    EXPECT_EQ(chain.provider->equityWithId("CADUSD=X"), pair);
    EXPECT_EQ(chain.provider->exchangeRateEquity(Currency::cad(), Currency::usd()), pair);
    EXPECT_THAT(chain.search("PELLR"), ElementsAre(equity));
    EXPECT_EQ(equity->quoteProvider.lock(), chain.provider);
    return chain.fetch(query).value().quotes.value();
  };
  EXPECT_TRUE(fetchFrom(DataSource::cacheOnly).empty());
  EXPECT_EQ(charts(), 0);
  const auto told = fetchFrom(DataSource::sourceOnly);
  EXPECT_EQ(told.size(), 5U);
  EXPECT_TRUE(fetchFrom(DataSource::cacheOnly).empty()) << "the source alone writes nothing";
  EXPECT_EQ(charts(), 1);
  EXPECT_EQ(fetchFrom(DataSource::sourceAndCache), told);
  EXPECT_EQ(fetchFrom(DataSource::cacheOnly), told);
  EXPECT_EQ(charts(), 2);
  EXPECT_EQ(fetchFrom(DataSource::sourceOnly), told);
  EXPECT_EQ(charts(), 3);
}

/// Equities of all exchanges, and one pair.
constexpr std::array ids = {"CASTR",   "HOLVK",   "NIMBR",  "BNDUS",   "BOREA.TO",
                            "THRAL.L", "RHNWK.F", "0417.T", "EURCAD=X"};

/// Bars of a length, as many days back as are asked for.
struct Window {
  QuoteInterval interval;
  int days;
};
constexpr std::array windows = {Window{oneDay, 300}, Window{oneHour, 20}, Window{fiveMinutes, 5},
                                Window{oneMinute, 3}};

/// From `count` days ago on, where days of shares begin: the bars of a day with the session,
/// shorter ones also before it. No bar reaches over such a moment.
Date daysAgo(const EquityPointer& equity, QuoteInterval interval, int count) {
  const Calendar& calendar = equity->calendar;
  const auto opens = calendar.dateComponents({CalendarUnit::hour}, equity->firstTradeDate.value());
  const auto minutes =
      calendar.dateComponents({CalendarUnit::minute}, equity->firstTradeDate.value());
  const bool isWhole = interval >= oneDay;
  const Date start = at(std::string(calendar.timeZone().identifier()), 2026, 3, 10,
                        isWhole ? opens.valueOr(CalendarUnit::hour, 0) : 0,
                        isWhole ? minutes.valueOr(CalendarUnit::minute, 0) : 0);
  return calendar.dateByAdding(CalendarUnit::day, -count, start).value();
}

TEST(MarketChainTest, AnswersManyFetchesAtOnce) {
  const TestClock clock(now);
  MarketChain chain(clock);
  const auto direct = chain.service();
  struct Case {
    QuoteQuery truth;
    std::optional<Answer> answer = std::nullopt;
  };
  std::vector<std::shared_ptr<Case>> cases;
  std::vector<EquityPointer> equities;
  for (const char* id : ids) {
    equities.push_back(chain.refreshed(id));
    const auto same = chain.refreshed(id, direct);
    for (const auto& [interval, days] : windows) {
      for (const PriceAdjustment prices : bases) {
        cases.push_back(std::make_shared<Case>(bars(same, daysAgo(same, interval, days),
                                                    daysAgo(same, interval, 1), interval, prices)));
      }
    }
  }
  for (std::size_t i = 0; i < cases.size(); ++i) {
    QuoteQuery query = cases[i]->truth;
    query.equity = equities[i / (cases.size() / ids.size())];
    chain.begin(chain.provider, query,
                [one = cases[i]](Answer answer) { one->answer = std::move(answer); });
  }
  ASSERT_GE(cases.size(), 60U);
  chain.waitUntilFewAreUnderWay(0);
  for (const auto& one : cases) {
    ASSERT_TRUE(*one->answer) << *one->answer->error();
    EXPECT_TRUE(areSame(*(*one->answer)->quotes, *chain.fetch(direct, one->truth).value().quotes))
        << one->truth.equity->id();
  }
}

/// The equities that a failing service is asked for, beside what a sound one says of them.
struct Storm {
  explicit Storm(std::mt19937_64& source) : random(source), chain(clock, 200, source()) {
    for (const char* id : ids) {
      listed.push_back(sound.refreshed(id, truth));
    }
  }

  void run(std::chrono::seconds length) {
    const auto end = std::chrono::steady_clock::now() + length;
    while (begun < 100 || std::chrono::steady_clock::now() < end) {
      if (begun % 300 == 0) {
        startProgram();
      }
      beginOne();
      chain.waitUntilFewAreUnderWay(80);
      clock.set(now + std::min(++begun / 10, 3600));
    }
    chain.waitUntilFewAreUnderWay(0);
  }

  /// What the file says to be final is what the sound service tells. Gives the number of bars.
  std::size_t checkCoverage() {
    std::size_t count = 0;
    for (std::size_t i = 0; i < ids.size(); ++i) {
      for (const auto& [interval, days] : windows) {
        for (const PriceAdjustment prices : bases) {
          const auto all = bars(equities[i], daysAgo(listed[i], interval, days),
                                daysAgo(listed[i], interval, 0), interval, prices);
          for (const QuoteQuery& covered : chain.cache().coveragePlan(all).exactQueries) {
            const auto kept = chain.cache().readQuery(covered).quotes.value();
            const auto told = sound.fetch(truth, {listed[i], covered.dateRange, covered.seeking});
            auto bars = told.value().quotes.value();
            std::erase_if(bars, [](const Quote& bar) { return bar.isPartial; });
            EXPECT_TRUE(areSame(kept, bars, true)) << covered.equity->id();
            count += kept.size();
          }
        }
      }
    }
    return count;
  }

  std::mt19937_64& random;
  TestClock clock{now};
  MarketChain sound{clock};
  MarketChain chain;
  const std::shared_ptr<QuoteProvider> truth = sound.service();
  std::vector<EquityPointer> listed;
  std::vector<EquityPointer> equities;
  std::shared_ptr<std::atomic<int>> failures = std::make_shared<std::atomic<int>>(0);
  int begun = 0;

 private:
  /// A crumb that has gone stale stays so until the next run of the program. Some runs begin with
  /// an empty file, so that there is always something to ask for.
  void startProgram() {
    chain.waitUntilFewAreUnderWay(0);
    ErrorPointer error;
    int attempts = 0;
    do {
      equities.clear();
      chain.open();
      if (random() % 2 == 0) {
        chain.cache().empty();
      }
      for (const char* id : ids) {
        equities.push_back(chain.provider->equityWithId(id));
      }
      error = chain.refresh(chain.provider, equities);
    } while (error != nullptr && ++attempts < 100);
    ASSERT_EQ(error, nullptr);
  }

  void beginOne() {
    const auto note = [count = failures](const ErrorPointer& error) {
      *count += error == nullptr ? 0 : 1;
    };
    const auto noteResult = [note](const auto& result) {
      note(result ? ErrorPointer() : result.error());
    };
    const std::size_t which = random() % ids.size();
    const auto kind = random() % 20;
    if (kind == 0) {
      chain.provider->searchEquities(random() % 2 == 0 ? "corrin" : ids.at(which),
                                     chain.counted<Result<std::vector<EquityPointer>>>(noteResult));
    } else if (kind <= 2) {
      chain.provider->refreshEquities({equities[which]}, chain.counted<ErrorPointer>(note));
    } else {
      const auto& [interval, days] = windows.at(random() % windows.size());
      const int from = 2 + static_cast<int>(random() % static_cast<unsigned>(days - 1));
      const int to = static_cast<int>(random() % static_cast<unsigned>(from - 1));
      const Date end = to == 0 ? clock.now() : daysAgo(listed[which], interval, to);
      chain.begin(chain.provider,
                  bars(equities[which], daysAgo(listed[which], interval, from), end, interval,
                       bases.at(random() % bases.size())),
                  noteResult);
    }
  }
};

TEST(MarketChainTest, LosesNothingInAStormOfFailures) {
  const char* setting = std::getenv("CORVANE_STORM_SECONDS");
  const std::chrono::seconds length(setting == nullptr ? 2 : std::atoi(setting));
  testing::forRandomCases(1, [&](std::mt19937_64& random) {
    Storm storm(random);
    storm.run(length);
    EXPECT_GT(*storm.failures, 0);
    EXPECT_LT(*storm.failures, storm.begun);
    std::size_t kept = storm.checkCoverage();
    // A short storm may well let no fetch through whole.
    for (int more = 0; kept == 0 && more < 30; ++more) {
      storm.run(std::chrono::seconds(1));
      kept = storm.checkCoverage();
    }
    EXPECT_GT(kept, 0U);
    RecordProperty("operations", storm.begun);
    RecordProperty("failedOperations", *storm.failures);
    RecordProperty("bars", static_cast<int>(kept));
    SQLiteDatabase file(storm.chain.file, SQLiteDatabase::Mode::readOnly);
    SQLiteStatement check = file.query("PRAGMA integrity_check");
    ASSERT_TRUE(check.step());
    EXPECT_EQ(check.text(0), "ok");
  });
}

}  // namespace
}  // namespace corvane::testing
