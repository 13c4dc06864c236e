// A market that has a close on each day and knows of no events.
#pragma once

#include <functional>
#include <utility>

#include "support/scripted_quote_provider.h"

namespace corvane::testing {

/// What a provider answers where everything costs `closeOn` at the end of a day.
inline auto dailyCloses(std::function<Decimal(const YearMonthDay&)> closeOn) {
  return [closeOn = std::move(closeOn)](const QuoteQuery& query) {
    if (std::holds_alternative<QuoteQuery::EventsOnly>(query.seeking)) {
      return ScriptedQuoteProvider::refusal();
    }
    return ScriptedQuoteProvider::quotes(
        ScriptedQuoteProvider::dailyBars(query, [&](YearMonthDay day) {
          Quote bar;
          bar.open = bar.close = closeOn(day);
          return std::optional(bar);
        }));
  };
}

}  // namespace corvane::testing
