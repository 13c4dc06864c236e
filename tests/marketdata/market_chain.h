// A whole provider chain between the sample market and a file, and what its answers are compared
// with.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/market/price_adjuster.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "samplemarket/market_client.h"
#include "samplemarket/sample_market.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

using Answer = Result<QuoteFetchResult>;

/// Whether `told` are the bars of `truth`, up to what rounding leaves. Bars that a failing service
/// told as empty may stand for any.
inline ::testing::AssertionResult areSame(const std::vector<Quote>& told,
                                          const std::vector<Quote>& truth,
                                          bool mayBeEmpty = false) {
  if (told.size() != truth.size()) {
    return ::testing::AssertionFailure() << told.size() << " bars instead of " << truth.size();
  }
  const auto isNear = [](const std::optional<Decimal>& left, const std::optional<Decimal>& right) {
    return left.has_value() == right.has_value() &&
           (!left || abs(*left - *right) <= abs(*right) / Decimal(1'000'000'000));
  };
  for (std::size_t i = 0; i < told.size(); ++i) {
    const Quote& bar = told[i];
    const Quote& other = truth[i];
    const bool areNear = (mayBeEmpty && !bar.close && !bar.open && !bar.volume) ||
                         (isNear(bar.open, other.open) && isNear(bar.close, other.close) &&
                          isNear(bar.low, other.low) && isNear(bar.high, other.high) &&
                          bar.volume.has_value() == other.volume.has_value());
    if (bar.fromDate != other.fromDate || bar.toDate != other.toDate || !areNear) {
      return ::testing::AssertionFailure() << bar << " instead of " << other;
    }
  }
  return ::testing::AssertionSuccess();
}

/// A chain with a market and a file of its own. When it goes, everything that was begun must have
/// been answered once.
class MarketChain {
 public:
  explicit MarketChain(const TestClock& clock, int faultsPerThousand = 0, std::uint64_t seed = 1)
      : market(
            {.clock = clock.reader(), .faultsPerThousand = faultsPerThousand, .faultSeed = seed}) {
    open();
  }
  MarketChain(const MarketChain&) = delete;
  MarketChain& operator=(const MarketChain&) = delete;
  ~MarketChain() {
    waitUntilFewAreUnderWay(0);
    provider.reset();
    MainLoop::drain();
    for (const auto& count : completions_) {
      EXPECT_EQ(*count, 1) << "each completion runs once";
    }
  }

  /// Another run of the program on the same file.
  void open() {
    provider.reset();
    provider = std::make_shared<SwitchableQuoteProvider>(service(), file);
  }
  /// A source without a cache.
  [[nodiscard]] std::shared_ptr<YahooQuoteProvider> service() const {
    return std::make_shared<YahooQuoteProvider>(
        YahooService{.scheme = "http",
                     .apiHost = market.host(),
                     .webHost = market.host(),
                     .port = market.port(),
                     .userAgent = "Test/1",
                     .pauses = {.first = 0.02,
                                .longest = 0.1,
                                .untilRequestsEndThem = 0.05,
                                .requestLimit = secondsForAccess}});
  }
  CacheQuoteProvider& cache() const { return *provider->smartQuoteProvider->cacheProvider; }

  /// A completion whose runs are counted.
  template <typename Outcome, typename Take>
  auto counted(Take take) {
    completions_.push_back(std::make_shared<std::atomic<int>>(0));
    return [count = completions_.back(), take = std::move(take)](Outcome outcome) mutable {
      take(std::move(outcome));
      ++*count;
    };
  }
  template <typename Take>
  void begin(const std::shared_ptr<QuoteProvider>& asked, const QuoteQuery& query, Take take) {
    asked->fetchQuotes(query, std::make_shared<PriceAdjuster>(asked),
                       counted<Answer>(std::move(take)));
  }
  Answer fetch(const std::shared_ptr<QuoteProvider>& asked, const QuoteQuery& query) {
    const auto outcome = std::make_shared<std::optional<Answer>>();
    begin(asked, query, [outcome](Answer answer) { *outcome = std::move(answer); });
    waitUntilFewAreUnderWay(0);
    return outcome->value();
  }
  Answer fetch(const QuoteQuery& query) { return fetch(provider, query); }

  ErrorPointer refresh(const std::shared_ptr<QuoteProvider>& asked,
                       const std::vector<EquityPointer>& equities) {
    const auto outcome = std::make_shared<ErrorPointer>();
    asked->refreshEquities(equities,
                           counted<ErrorPointer>([outcome](auto error) { *outcome = error; }));
    waitUntilFewAreUnderWay(0);
    return *outcome;
  }
  EquityPointer refreshed(const std::string& id, std::shared_ptr<QuoteProvider> asked = nullptr) {
    asked = asked == nullptr ? provider : asked;
    EquityPointer equity = asked->equityWithId(id);
    EXPECT_EQ(refresh(asked, {equity}), nullptr) << id;
    return equity;
  }
  std::vector<EquityPointer> search(const std::string& text) {
    const auto found = std::make_shared<std::vector<EquityPointer>>();
    provider->searchEquities(text, counted<Result<std::vector<EquityPointer>>>(
                                       [found](auto equities) { *found = equities.value(); }));
    waitUntilFewAreUnderWay(0);
    return *found;
  }

  void waitUntilFewAreUnderWay(std::ptrdiff_t most) {
    const bool areFew = MainLoop::runUntil(
        [&] {
          market.releaseSlowAnswers();
          while (settled_ < completions_.size() && *completions_[settled_] > 0) {
            ++settled_;
          }
          return std::count_if(completions_.begin() + static_cast<std::ptrdiff_t>(settled_),
                               completions_.end(),
                               [](const auto& count) { return *count == 0; }) <= most;
        },
        std::chrono::minutes(2));
    if (!areFew) {
      ADD_FAILURE() << "no answer came";
      std::abort();
    }
  }
  [[nodiscard]] int charts(std::string_view id) const { return market.requestCount("/v8/", id); }

  /// The ranges of the chart requests for one symbol.
  [[nodiscard]] std::vector<DateRange> asked(const std::string& id) const {
    std::vector<DateRange> ranges;
    for (const auto& request : market.requests()) {
      if (request.path == "/v8/finance/chart/" + id) {
        const auto secondsAfter = [&](const std::string& key) {
          return Date::since1970(
              std::stod(request.query.substr(request.query.find(key) + key.size())));
        };
        ranges.emplace_back(secondsAfter("period1="), secondsAfter("period2="));
      }
    }
    return ranges;
  }

  /// How long providers that are opened from here on wait for access.
  double secondsForAccess = 60;
  TemporaryFolder folder;
  std::filesystem::path file = folder / "Cache.sqlite3";
  SampleMarket market;
  std::shared_ptr<SwitchableQuoteProvider> provider;

 private:
  std::vector<std::shared_ptr<std::atomic<int>>> completions_;
  std::size_t settled_ = 0;  ///< all before this have run
};

}  // namespace corvane::testing
