// The question put to a quote provider.
#pragma once

#include <array>
#include <string_view>
#include <variant>

#include "core/market/equity_info.h"
#include "core/market/quote_interval.h"
#include "platform/time/date.h"

namespace corvane {

/// What prices are sought for which equity and when.
struct QuoteQuery {
  /// The basis on which prices are told.
  enum class PriceAdjustment {
    marketNominal,                 ///< as quoted on their day
    marketNominalSnapshot,         ///< a single running price, not a finished bar
    adjustedForSplits,             ///< past prices restated for later splits
    adjustedForSplitsAndDividends  ///< restated for later splits and dividends
  };
  static constexpr std::array allPriceAdjustments = {
      PriceAdjustment::marketNominal, PriceAdjustment::marketNominalSnapshot,
      PriceAdjustment::adjustedForSplits, PriceAdjustment::adjustedForSplitsAndDividends};

  struct Quotes {
    QuoteInterval interval;
    PriceAdjustment prices;
    friend bool operator==(const Quotes&, const Quotes&) = default;
  };
  struct CurrentPeriodQuotes {
    bool usingSnapshots;
    friend bool operator==(const CurrentPeriodQuotes&, const CurrentPeriodQuotes&) = default;
  };
  struct EventsOnly {
    PriceAdjustment prices;
    friend bool operator==(const EventsOnly&, const EventsOnly&) = default;
  };
  struct EventsWithoutAdjustment {
    friend bool operator==(EventsWithoutAdjustment, EventsWithoutAdjustment) = default;
  };
  using Subject = std::variant<Quotes, CurrentPeriodQuotes, EventsOnly, EventsWithoutAdjustment>;

  EquityPointer equity;  ///< never null
  DateRange dateRange;
  Subject seeking;

  /// A query for the running or latest session of `equity`, from its start to the latest price. The
  /// range is empty at the distant past where no session is known that the latest price falls in or
  /// after.
  [[nodiscard]] static QuoteQuery currentPeriod(EquityPointer equity, bool usingSnapshots);

  /// Whether this asks for all events that the equity ever had, and nothing else.
  [[nodiscard]] bool seeksWholeEventHistory() const;

  friend bool operator==(const QuoteQuery& left, const QuoteQuery& right) {
    return *left.equity == *right.equity && left.dateRange == right.dateRange &&
           left.seeking == right.seeking;
  }
};

using PriceAdjustment = QuoteQuery::PriceAdjustment;

/// The case's name, such as "adjustedForSplits".
[[nodiscard]] std::string_view caseName(PriceAdjustment adjustment);

}  // namespace corvane
