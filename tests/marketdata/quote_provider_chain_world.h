// A market that a test makes up, and a source that tells its prices in the way of a real one.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/market/price_adjuster.h"
#include "core/market/price_conversion.h"
#include "core/market/quote_provider.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::testing {

/// Days are numbers: a bar of day 3 goes from 3 to 4.
inline Date onDay(double number) {
  return Date::since1970(number * 86400);
}

inline DateRange days(double lower, double upper) {
  return {onDay(lower), onDay(upper)};
}

inline EquityEvent split(double number, std::int64_t numerator, std::int64_t denominator) {
  return {onDay(number), EquityEvent::Split{{numerator, denominator}},
          PriceAdjustment::adjustedForSplits};
}

/// An amount per share of today.
inline EquityEvent dividend(double number, const Decimal& amount) {
  return {onDay(number), EquityEvent::Dividend{amount}, PriceAdjustment::adjustedForSplits};
}

/// Adjusts for splits at the source and has its answers converted by the caller's adjuster. Knows
/// the bars and events before `today`, and calls all that is before it final, also where the bar of
/// the day is unfinished. Answers in no order, on background queues.
class MarketSource : public QuoteProvider {
 public:
  double today = 100;
  std::map<std::string, std::vector<EquityEvent>, std::less<>> events;
  bool isDurable = true;
  double daysPerQuery = 0;  ///< longer queries are taken apart; 0 for never
  /// What a query fails with; null where it is answered.
  std::function<ErrorPointer(const QuoteQuery&)> refusal = [](const QuoteQuery&) {
    return nullptr;
  };
  std::vector<QuoteQuery> queries;  ///< all that were asked, in order

  [[nodiscard]] std::string providerName() const override { return "Market"; }

  void searchEquities(std::string text, EquitiesCompletion completion) override {
    DispatchQueue::global()->async(
        [found = std::vector{authoritative(equityWithId(text))},
         completion = std::move(completion)]() mutable { completion(std::move(found)); });
  }

  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override {
    for (const EquityPointer& equity : equities) {
      authoritative(equity);
    }
    DispatchQueue::global()->async(
        [completion = std::move(completion)]() mutable { completion(nullptr); });
  }

  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override {
    EXPECT_TRUE(DispatchQueue::main()->isCurrent());
    queries.push_back(query);
    Result<QuoteFetchResult> result = told(query);
    if (ErrorPointer error = refusal(query)) {
      result = std::unexpected(std::move(error));
    }
    DispatchQueue::global()->async([result = std::move(result), query = std::move(query), adjuster,
                                    completion = std::move(completion)]() mutable {
      if (result) {
        adjuster->adjust(*std::move(result), std::move(query), std::move(completion));
      } else {
        completion(std::move(result));
      }
    });
  }

  [[nodiscard]] std::vector<QuoteQuery> sourceQueries(const QuoteQuery& query) const override {
    std::vector<QuoteQuery> chunks;
    const double step = daysPerQuery * 86400;
    Date from = query.dateRange.lower();
    while (step > 0 && from + step < query.dateRange.upper()) {
      chunks.push_back({query.equity, {from, from + step}, query.seeking});
      from = from + step;
    }
    chunks.push_back({query.equity, {from, query.dateRange.upper()}, query.seeking});
    return chunks;
  }

  /// The bars of `range` as they are told today: the close of day 3 was 103 on that day.
  [[nodiscard]] std::vector<Quote> bars(std::string_view id, const DateRange& range,
                                        PriceAdjustment prices) const {
    std::vector<Quote> list;
    for (int day = 0; day < today; ++day) {
      if (range.contains(onDay(day))) {
        Quote bar;
        bar.fromDate = onDay(day);
        bar.toDate = onDay(day + 1);
        // Before a day has ended nobody knows how it will close.
        bar.isPartial = day + 1 > today;
        bar.close = Decimal(100 + day) - Decimal(bar.isPartial ? 7 : 0);
        bar.volume = std::int64_t{day + 1} << 40;  // reverse splits leave whole shares
        list.push_back(bar);
      }
    }
    return *converted({std::move(list), PriceAdjustment::marketNominal, std::nullopt, range},
                      prices, eventsIn(id, days(0, today)))
                .quotes;
  }

  [[nodiscard]] std::vector<EquityEvent> eventsIn(std::string_view id,
                                                  const DateRange& range) const {
    std::vector<EquityEvent> list;
    if (const auto found = events.find(id); found != events.end()) {
      std::ranges::copy_if(found->second, std::back_inserter(list), [&](const EquityEvent& event) {
        return range.contains(event.date) && event.date < onDay(today);
      });
    }
    return list;
  }

  /// Fills the fields of `equity` as of today.
  EquityPointer authoritative(EquityPointer equity) const {
    equity->isAuthoritative = true;
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/New_York"));
    equity->currency = Currency::usd();
    equity->firstTradeDate = onDay(0);
    equity->recentDate = onDay(today);
    equity->recentTradingPeriod = days(today - 0.5, today + 0.25);
    equity->recentPrice = 42;
    return equity;
  }

 private:
  [[nodiscard]] QuoteFetchResult told(const QuoteQuery& query) const {
    const DateRange& range = query.dateRange;
    const DateRange known = range.clamped({Date::distantPast(), onDay(today)});
    QuoteFetchResult result{
        .quotes = std::nullopt,
        .prices = std::nullopt,
        .events = eventsIn(query.equity->id(), range),
        .durableDateRange = isDurable ? known : DateRange(known.lower(), known.lower())};
    if (std::holds_alternative<QuoteQuery::Quotes>(query.seeking) ||
        std::holds_alternative<QuoteQuery::CurrentPeriodQuotes>(query.seeking)) {
      result.quotes = bars(query.equity->id(), range, PriceAdjustment::adjustedForSplits);
      result.prices = PriceAdjustment::adjustedForSplits;
    }
    return result;
  }
};

inline QuoteQuery dailyQuotes(const EquityPointer& equity, const DateRange& range,
                              PriceAdjustment prices) {
  return {equity, range, QuoteQuery::Quotes{QuoteInterval::oneDay, prices}};
}

/// Fetches that have been begun, and whether each of them was answered once.
class Fetches {
 public:
  using Answer = Result<QuoteFetchResult>;

  /// Begins a fetch on the main queue, with an adjuster of its own; answers go to `take` there.
  void begin(const std::shared_ptr<QuoteProvider>& provider, QuoteQuery query,
             std::function<void(Answer)> take) {
    ++begun_;
    DispatchQueue::main()->async([this, provider, query = std::move(query),
                                  take = std::move(take)]() mutable {
      const auto isBack = std::make_shared<std::atomic<bool>>(false);
      provider->fetchQuotes(std::move(query), std::make_shared<PriceAdjuster>(provider),
                            [this, isBack, take = std::move(take)](Answer answer) mutable {
                              EXPECT_FALSE(DispatchQueue::main()->isCurrent());
                              EXPECT_FALSE(isBack->exchange(true)) << "a second completion";
                              DispatchQueue::main()->async([this, take = std::move(take),
                                                            answer = std::move(answer)]() mutable {
                                take(std::move(answer));
                                ++ended_;
                              });
                            });
    });
  }

  /// Waits for all that have been begun.
  void wait() {
    ASSERT_TRUE(MainLoop::runUntil([this] { return ended_ == begun_; }, std::chrono::seconds(60)));
  }

  Answer fetch(const std::shared_ptr<QuoteProvider>& provider, QuoteQuery query) {
    std::optional<Answer> answer;
    begin(provider, std::move(query), [&](Answer got) { answer = std::move(got); });
    wait();
    return answer.value();
  }

 private:
  int begun_ = 0;
  int ended_ = 0;
};

}  // namespace corvane::testing
