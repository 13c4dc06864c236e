// The daily prices and exchange rates that reports of one range of days stand on.
#pragma once

#include <compare>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "core/money/year_month_day.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// The closes of one equity or of one exchange rate, ascending by day.
struct PriceLine {
  struct Close {
    YearMonthDay day;
    Decimal price;
    friend bool operator==(const Close&, const Close&) = default;
  };
  std::vector<Close> closes;
  /// Where the first bar opened, for the days before it where nothing else is known.
  std::optional<Decimal> firstOpen;

  /// The last close on or before `day`, or null.
  [[nodiscard]] const Close* lastUpTo(const YearMonthDay& day) const;
};

/// Units of `to` for one of `from`; by their codes.
struct CurrencyPair {
  Currency from;
  Currency to;
  friend std::strong_ordering operator<=>(const CurrencyPair& left, const CurrencyPair& right);
  friend bool operator==(const CurrencyPair& left, const CurrencyPair& right) = default;
};

/// What a report needs of the market.
struct MarketNeeds {
  EquitySet equities;
  std::set<CurrencyPair> pairs;
  EquitySet splitEquities;  ///< those of `equities` of which rows tell a split in the range
};

/// What the market has told: prices as traded on their day, in the equity's own currency.
///
/// A day is that of the exchange, for rates that of London, as the bars are stamped. A plain value;
/// safe on any thread once it is filled, as its equities are frozen ones.
struct MarketHistory {
  EquityMap<PriceLine> prices;
  std::map<CurrencyPair, PriceLine> rates;
  /// What the market knows of the splits that rows tell, as far as it could be had.
  struct Split {
    YearMonthDay day;
    Fraction ratio;  ///< new shares for old ones
  };
  EquityMap<std::vector<Split>> splits;
  /// What could not be had.
  EquityMap<ErrorPointer> errorsByEquity;
  std::map<CurrencyPair, ErrorPointer> errorsByPair;
};

/// The days before a range whose prices are fetched as well: its first day is measured against the
/// last close before it, and markets close for no longer than this.
inline constexpr int leadInDays = 14;

/// A split of a ledger and one of the market with the same ratio are one where they are no further
/// apart.
inline constexpr int mostDaysBetweenSplits = 10;

/// Adds what `portfolio` needs to be valued from the day before `from` to `to`: what was held or
/// traded in these days, and the rates of its currencies. With `reportingCurrency` also the rate of
/// the primary currency to it. Main queue only.
void addMarketNeeds(MarketNeeds& needs, Portfolio& portfolio, const YearMonthDay& from,
                    const YearMonthDay& to, const Calendar& calendar,
                    const std::optional<Currency>& reportingCurrency = std::nullopt);

/// Fetches each series once, for the days of the lead-in and of the range.
///
/// Main queue only. The completion runs once, later, on the main queue; what could not be had is
/// told in the history. Several reports of the same days can share the answer.
void fetchMarketHistory(const std::shared_ptr<QuoteProvider>& provider, const MarketNeeds& needs,
                        const YearMonthDay& from, const YearMonthDay& to,
                        std::move_only_function<void(std::shared_ptr<MarketHistory>)> completion);

/// The closes of `quotes` by the days of `exchange`, which both lie in the days given.
[[nodiscard]] PriceLine priceLine(const std::vector<Quote>& quotes, const Calendar& exchange,
                                  const YearMonthDay& first, const YearMonthDay& last);

}  // namespace corvane
