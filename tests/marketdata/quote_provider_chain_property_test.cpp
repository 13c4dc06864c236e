// The whole chain under random questions, one after the other and all at once.
//
// CORVANE_TEST_CASES sets how many markets are tried, CORVANE_TEST_SEED repeats a run.
#include <gmock/gmock.h>

#include <random>

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "marketdata/quote_provider_chain_world.h"
#include "random_cases.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

struct Chain {
  TemporaryFolder folder;
  std::shared_ptr<MarketSource> source = std::make_shared<MarketSource>();
  std::shared_ptr<SwitchableQuoteProvider> provider =
      std::make_shared<SwitchableQuoteProvider>(source, folder / "Cache.sqlite3");
  Fetches fetches;

  EquityPointer equity(const std::string& id) const {
    return source->authoritative(provider->equityWithId(id));
  }

  /// Another run of the program on the same file.
  void reopen() {
    provider.reset();
    provider = std::make_shared<SwitchableQuoteProvider>(source, folder / "Cache.sqlite3");
  }
};

/// Events whose conversions end after a few digits, which the cache keeps.
std::vector<EquityEvent> drawEvents(std::mt19937_64& random, double from, double to) {
  std::vector<EquityEvent> events;
  for (double day = from; day < to; day += static_cast<double>(random() % 20 + 1)) {
    events.push_back(random() % 4 == 0
                         ? split(day, random() % 2 == 0 ? 2 : 1, 2)
                         : dividend(day, Decimal(static_cast<int>(random() % 3 + 1))));
  }
  return events;
}

DateRange drawRange(std::mt19937_64& random, double today) {
  const auto end = static_cast<std::uint64_t>(today);
  const auto lower = random() % end;
  return days(static_cast<double>(lower),
              static_cast<double>(lower + 1 + random() % (end - lower)));
}

PriceAdjustment drawPrices(std::mt19937_64& random) {
  using enum QuoteQuery::PriceAdjustment;
  constexpr std::array bases = {marketNominal, adjustedForSplits, adjustedForSplitsAndDividends};
  return bases.at(random() % 3);
}

/// Nothing that is covered on any basis is asked for again, whatever was asked before and in
/// whatever basis, as long as no event turns up.
TEST(QuoteProviderChainProperty, AsksForEveryDayOnce) {
  testing::forRandomCases(5, [](std::mt19937_64& random) {
    Chain chain;
    chain.source->events["ABC"] = drawEvents(random, 1, 100);
    EquityPointer abc = chain.equity("ABC");
    const QuoteQuery history{abc, abc->fullDateRange(), QuoteQuery::EventsWithoutAdjustment{}};
    EXPECT_EQ(*chain.fetches.fetch(chain.provider, history)->events, chain.source->events["ABC"]);
    chain.source->queries.clear();
    for (int i = 0; i < 30 && !::testing::Test::HasFailure(); ++i) {
      const DateRange range = drawRange(random, 100);
      const PriceAdjustment prices = drawPrices(random);
      const auto answer = chain.fetches.fetch(chain.provider, dailyQuotes(abc, range, prices));
      ASSERT_TRUE(answer) << *answer.error();
      ASSERT_EQ(*answer->quotes, chain.source->bars("ABC", range, prices));
      ASSERT_EQ(answer->durableDateRange, range);
      if (i % 10 == 9) {
        abc.reset();
        chain.reopen();
        abc = chain.equity("ABC");
        // The source knows it at once; the cache comes to know its row as soon as it is kept.
        chain.provider->smartQuoteProvider->cacheProvider->storeEquity(abc);
      }
    }
    std::vector<bool> asked(100);
    for (const QuoteQuery& query : chain.source->queries) {
      ASSERT_TRUE(std::holds_alternative<QuoteQuery::Quotes>(query.seeking));
      for (std::size_t day = 0; day < asked.size(); ++day) {
        if (query.dateRange.contains(onDay(static_cast<double>(day)))) {
          ASSERT_FALSE(asked[day]) << "day " << day << " twice";
          asked[day] = true;
        }
      }
    }
  });
}

/// Days go by, with splits and dividends, and questions on several equities are in flight together,
/// always in the middle of a day: each gets one answer, and it is that of the day. What has
/// happened since is found out by the first questions that reach up to the day; so those come
/// first.
TEST(QuoteProviderChainProperty, AnswersAllQuestionsAtOnceWithThePricesOfTheDay) {
  testing::forRandomCases(1, [](std::mt19937_64& random) {
    Chain chain;
    std::vector<EquityPointer> equities;
    for (double today = 20.5; today <= 80.5; today += 20) {
      chain.source->today = today;
      chain.source->daysPerQuery = static_cast<double>(random() % 3 * 10);
      equities.clear();
      for (int number = 0; number < 8; ++number) {
        const std::string id = "E" + std::to_string(number);
        std::ranges::copy(drawEvents(random, today - 19, today),
                          std::back_inserter(chain.source->events[id]));
        equities.push_back(chain.equity(id));
      }
      const auto begin = [&](const EquityPointer& equity, const DateRange& range) {
        const PriceAdjustment prices = drawPrices(random);
        chain.fetches.begin(
            chain.provider, dailyQuotes(equity, range, prices),
            [truth = chain.source->bars(equity->id(), range, prices)](const auto& answer) {
              ASSERT_TRUE(answer) << *answer.error();
              EXPECT_EQ(*answer->quotes, truth);
            });
      };
      for (int i = 0; i < 24; ++i) {
        begin(equities[random() % equities.size()],
              {drawRange(random, today).lower(), onDay(today)});
      }
      for (const EquityPointer& equity : equities) {
        begin(equity, days(0, today));
      }
      chain.fetches.wait();
      for (int i = 0; i < 40; ++i) {
        begin(equities[random() % equities.size()], drawRange(random, today));
      }
      chain.fetches.wait();
    }
  });
}

}  // namespace
}  // namespace corvane::testing
