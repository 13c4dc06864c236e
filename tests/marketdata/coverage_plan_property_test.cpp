// The cache against a model of it that knows, for each second and basis, whether it is covered and
// what happened in it.

#include <array>
#include <map>
#include <random>

#include "marketdata/cache_world.h"
#include "random_cases.h"

namespace corvane::testing {
namespace {

constexpr int seconds = 16;

/// What is known of one second: nothing, that nothing happened, or what did.
struct Second {
  bool isCovered = false;
  std::optional<std::int64_t> number;
};
using Line = std::array<Second, seconds>;

bool isEvents(const QuoteQuery::Subject& subject) {
  return std::holds_alternative<QuoteQuery::EventsOnly>(subject) ||
         std::holds_alternative<QuoteQuery::EventsWithoutAdjustment>(subject);
}

/// The basis that a plan looks for first.
PriceAdjustment soughtPrices(const QuoteQuery::Subject& subject) {
  if (const auto* quotes = std::get_if<QuoteQuery::Quotes>(&subject)) {
    return quotes->prices;
  }
  const auto* only = std::get_if<QuoteQuery::EventsOnly>(&subject);
  return only == nullptr ? marketNominal : only->prices;
}

bool usesSnapshots(const QuoteQuery::Subject& subject) {
  const auto* current = std::get_if<QuoteQuery::CurrentPeriodQuotes>(&subject);
  return soughtPrices(subject) == marketNominalSnapshot ||
         (current != nullptr && current->usingSnapshots);
}

class ModelledCache {
 public:
  explicit ModelledCache(std::mt19937_64& random) : random_(random) {
    static const CacheWorld shared(":memory:");
    shared.cache->empty();
    world_ = &shared;
    equity_ = shared.equity;
  }

  int below(int bound) { return std::uniform_int_distribution(0, bound - 1)(random_); }

  DateRange randomRange() {
    const int from = below(seconds);
    return range(from, from + 1 + below(seconds - from));
  }

  PriceAdjustment randomPrices() {
    return QuoteQuery::allPriceAdjustments.at(static_cast<std::size_t>(below(4)));
  }

  QuoteQuery::Subject randomSubject() {
    switch (below(6)) {
      case 0:
        return QuoteQuery::CurrentPeriodQuotes{below(2) == 0};
      case 1:
        return QuoteQuery::EventsWithoutAdjustment{};
      case 2:
        return events(randomPrices());
      default:
        return minutely(randomPrices());
    }
  }

  /// Stores bars or events of random seconds, also such as lie out of the durable range.
  void storeSomething() {
    const bool areEvents = below(3) == 0;
    const PriceAdjustment prices = randomPrices();
    const DateRange durable = randomRange();
    QuoteFetchResult result = {std::nullopt, prices, std::nullopt, durable};
    areEvents ? (void)result.events.emplace() : (void)result.quotes.emplace();
    Line& line = (areEvents ? events_ : bars_)[prices];
    // An empty list of events does not say its basis.
    const int surely = areEvents ? static_cast<int>(durable.lower().timeIntervalSince1970()) : -1;
    for (int second = 0; second < seconds; ++second) {
      const bool happens = below(2) == 0 || second == surely;
      if (happens && areEvents) {
        result.events->push_back(dividend(second, std::to_string(++number_), prices));
      } else if (happens) {
        result.quotes->push_back(bar(second, second + 1));
        result.quotes->back().volume = ++number_;
      }
      if (durable.contains(at(second))) {
        line.at(static_cast<std::size_t>(second)) = {
            true, happens ? std::optional(number_) : std::nullopt};
      }
    }
    world_->cache->storeFetchResult(
        result, {equity_, durable, areEvents ? events(prices) : minutely(prices)});
  }

  void clear() {
    world_->cache->clearCachedData(equity_);
    bars_.clear();
    for (auto& [prices, line] : events_) {
      line = {};
    }
  }

  void checkPlan(const QuoteQuery::Subject& seeking) {
    const QuoteQuery query = {equity_, randomRange(), seeking};
    const CoveragePlan plan = world_->cache->coveragePlan(query);
    pieces_.clear();
    for (const QuoteQuery& piece : plan.exactQueries) {
      checkCachedPiece(piece, query);
      addPiece(piece, "exact");
    }
    for (const QuoteQuery& piece : plan.convertibleQueries) {
      checkCachedPiece(piece, query);
      EXPECT_NE(soughtPrices(piece.seeking), soughtPrices(query.seeking));
      addPiece(piece, "convertible");
    }
    for (const QuoteQuery& piece : plan.missingQueries) {
      EXPECT_EQ(piece.seeking, query.seeking);
      addPiece(piece, "missing");
    }
    checkTiling(query.dateRange);
    for (double second = query.dateRange.lower().timeIntervalSince1970();
         at(second) < query.dateRange.upper(); ++second) {
      checkSecond(static_cast<std::size_t>(second), query.seeking);
    }
    checkMerging(plan);
  }

  void checkLatestEventDate() {
    if (covers(events_, marketNominalSnapshot)) {
      return;
    }
    std::optional<Date> latest;
    for (std::size_t second = 0; second < seconds; ++second) {
      const bool isCovered = std::ranges::any_of(
          events_, [&](const auto& entry) { return entry.second.at(second).isCovered; });
      if (isCovered) {
        latest = at(static_cast<double>(second) + 1);
      } else if (latest) {
        break;
      }
    }
    EXPECT_EQ(world_->cache->latestEventDate(equity_), latest);
  }

 private:
  using Lines = std::map<PriceAdjustment, Line>;

  static bool covers(const Lines& lines, PriceAdjustment prices) {
    const auto found = lines.find(prices);
    return found != lines.end() && std::ranges::any_of(found->second, &Second::isCovered);
  }

  /// What the plan promises as cached is covered on that basis, and reads as the model has it.
  void checkCachedPiece(const QuoteQuery& piece, const QuoteQuery& query) {
    const PriceAdjustment prices = soughtPrices(piece.seeking);
    ASSERT_EQ(piece.seeking, isEvents(query.seeking) ? events(prices) : minutely(prices));
    const Line& line = (isEvents(piece.seeking) ? events_ : bars_)[prices];
    const QuoteFetchResult read = world_->cache->readQuery(piece);
    std::vector<std::pair<Date, Decimal>> found;
    for (const Quote& quote : read.quotes.value_or(std::vector<Quote>())) {
      found.emplace_back(quote.fromDate, Decimal(*quote.volume));
    }
    for (const EquityEvent& event : read.events.value_or(std::vector<EquityEvent>())) {
      found.emplace_back(event.date, std::get<EquityEvent::Dividend>(event.kind).amount);
    }
    std::vector<std::pair<Date, Decimal>> expected;
    for (std::size_t second = 0; second < seconds; ++second) {
      const Date date = at(static_cast<double>(second));
      if (!piece.dateRange.contains(date)) {
        continue;
      }
      EXPECT_TRUE(line.at(second).isCovered) << "second " << second;
      if (line.at(second).number) {
        expected.emplace_back(date, Decimal(*line.at(second).number));
      }
    }
    EXPECT_EQ(found, expected);
  }

  void addPiece(const QuoteQuery& piece, const std::string& kind) {
    EXPECT_TRUE(pieces_.try_emplace(piece.dateRange.lower(), piece, kind).second);
  }

  void checkTiling(const DateRange& whole) const {
    Date end = whole.lower();
    for (const auto& [start, piece] : pieces_) {
      EXPECT_EQ(start, end);
      EXPECT_FALSE(piece.first.dateRange.isEmpty());
      end = piece.first.dateRange.upper();
    }
    EXPECT_EQ(end, whole.upper());
  }

  void checkSecond(std::size_t second, const QuoteQuery::Subject& seeking) {
    Lines& lines = isEvents(seeking) ? events_ : bars_;
    const auto& [piece, kind] =
        std::prev(pieces_.upper_bound(at(static_cast<double>(second))))->second;
    if (lines[soughtPrices(seeking)].at(second).isCovered) {
      EXPECT_EQ(kind, "exact") << "second " << second;
      EXPECT_EQ(soughtPrices(piece.seeking), soughtPrices(seeking)) << "second " << second;
      return;
    }
    const bool isElsewhere = std::ranges::any_of(lines, [&](const auto& entry) {
      return entry.second.at(second).isCovered &&
             (entry.first != marketNominalSnapshot || usesSnapshots(seeking));
    });
    // A snapshot that is not wanted may cut another basis short.
    const bool mayBeCut = !usesSnapshots(seeking) && covers(lines, marketNominalSnapshot);
    if (!isElsewhere || !mayBeCut) {
      EXPECT_EQ(kind == "missing", !isElsewhere) << "second " << second;
    }
  }

  /// Ranges of one basis that touch have become one.
  static void checkMerging(const CoveragePlan& plan) {
    for (std::size_t i = 1; i < plan.exactQueries.size(); ++i) {
      const QuoteQuery& before = plan.exactQueries[i - 1];
      const QuoteQuery& after = plan.exactQueries[i];
      EXPECT_FALSE(before.dateRange.upper() == after.dateRange.lower() &&
                   before.seeking == after.seeking);
    }
  }

  std::mt19937_64& random_;
  const CacheWorld* world_ = nullptr;
  EquityPointer equity_;
  Lines bars_;
  Lines events_;
  std::int64_t number_ = 0;
  std::map<Date, std::pair<QuoteQuery, std::string>> pieces_;
};

TEST(CoveragePlanProperty, TilesTheQueryPrefersTheBasisSoughtAndPromisesOnlyWhatIsThere) {
  forRandomCases(1000, [](std::mt19937_64& random) {
    ModelledCache cache(random);
    for (int stores = cache.below(9); stores > 0; --stores) {
      cache.storeSomething();
    }
    if (cache.below(16) == 0) {
      cache.clear();
      cache.storeSomething();
    }
    for (int plans = 0; plans < 3; ++plans) {
      cache.checkPlan(cache.randomSubject());
    }
    cache.checkLatestEventDate();
  });
}

}  // namespace
}  // namespace corvane::testing
