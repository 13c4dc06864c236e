// A source of prices that a test makes up.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "core/market/price_adjuster.h"
#include "core/market/quote_provider.h"
#include "core/money/year_month_day.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::testing {

/// Answers each fetch with what a function of the query says, on a background queue; answers of
/// several fetches arrive in any order. It converts nothing: a script gives the prices asked for.
class ScriptedQuoteProvider : public QuoteProvider {
 public:
  using Answer = Result<QuoteFetchResult>;
  using Script = std::function<Answer(const QuoteQuery&)>;

  explicit ScriptedQuoteProvider(Script answers = {}) : script(std::move(answers)) {}

  Script script;
  std::vector<QuoteQuery> queries;  ///< all that were asked, in order

  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                   QuoteCompletion completion) override {
    queries.push_back(query);
    DispatchQueue::global()->async(
        [answer = script(query), completion = std::move(completion)]() mutable {
          completion(std::move(answer));
        });
  }

  static Answer quotes(std::vector<Quote> bars) {
    QuoteFetchResult result{.quotes = std::move(bars),
                            .prices = PriceAdjustment::marketNominal,
                            .events = std::nullopt,
                            .durableDateRange = {Date(), Date()}};
    return result;
  }

  static Answer refusal() {
    return failure(QuoteProviderError(QuoteProviderError::NotAvailable{}));
  }

  /// A bar for each day of the query, in the equity's calendar, that `barOf(day)` has one for. The
  /// dates of the bars are set here: a session from half past nine to four.
  template <typename BarOf>
  static std::vector<Quote> dailyBars(const QuoteQuery& query, BarOf barOf) {
    const Calendar& calendar = query.equity->calendar;
    std::vector<Quote> bars;
    YearMonthDay day = YearMonthDay::of(query.dateRange.lower(), calendar);
    for (;; day = YearMonthDay::normalised(day.year, day.month, day.day + 1, calendar)) {
      const Date opens = day.startIn(calendar) + 9.5 * 3600;
      if (opens >= query.dateRange.upper()) {
        return bars;
      }
      std::optional<Quote> bar = barOf(day);
      if (bar && query.dateRange.contains(opens)) {
        bar->fromDate = opens;
        bar->toDate = opens + 6.5 * 3600;
        bars.push_back(*bar);
      }
    }
  }
};

}  // namespace corvane::testing
