// Money, gains, changes and dates as the screens show them.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/decimal/decimal.h"
#include "core/market/equity_event.h"
#include "core/market/equity_info.h"
#include "core/market/quote.h"
#include "core/market/quote_query.h"
#include "core/money/currency.h"
#include "ledger/reports/portfolio_valuation.h"
#include "platform/system/user_defaults.h"
#include "platform/text/formats/date_formatter.h"
#include "platform/text/styled/attributed_text.h"
#include "platform/text/styled/colour.h"
#include "platform/time/date.h"

namespace corvane {

/// The digits behind the point of a price: that of a share may be finer than the money that is
/// paid.
inline constexpr int maximumPriceDigits = 5;

/// The words and numbers of all screens, in the user's locale. Nothing is kept between calls.
struct Formatting {
  /// Which way a value moved.
  struct Indicator {
    std::string symbol;  ///< "▲", "▼" or "◼︎"
    Colour colour;
  };
  [[nodiscard]] static Indicator movementIndicator(const Decimal& change);

  /// An amount for a column of figures, in accounting style; "—" for 0. An emphasised one has the
  /// colour of its sign and the font weight `weight`.
  [[nodiscard]] static AttributedText moneyCell(const Decimal& amount, const Currency& currency,
                                                bool emphasised,
                                                FontWeight weight = FontWeight::regular);

  /// The present value with the sign of the locale; empty where it is no number.
  [[nodiscard]] static std::string currentValueText(const PortfolioValuation& valuation);

  /// What the value exceeds the deposits by: "▲ $5.00". Empty where that is no number.
  [[nodiscard]] static AttributedText gainText(const PortfolioValuation& valuation);

  /// The change from the `reference` price to the `current` one: "+2.50% ▲ +$0.25". A missing
  /// current price counts as 0. A missing reference is next to 0, so that the percentage is large
  /// and not infinite. Empty where a part of it is no number.
  [[nodiscard]] static AttributedText changeText(const Currency& currency,
                                                 const std::optional<Decimal>& reference,
                                                 const std::optional<Decimal>& current);

  /// `count` pure colours evenly from one hue to another, each from 0 to 1, upwards and past red
  /// where the last hue is the smaller one.
  [[nodiscard]] static std::vector<Colour> hueRangeColours(std::size_t count, double firstHue,
                                                           double lastHue, double brightness);

  /// Date and time, both long. In the time zone of the equity's exchange, or in the user's where
  /// the setting "preferLocalTimeZone" says so.
  [[nodiscard]] static DateFormatter equityDateFormatter(
      const EquityInfo& equity, const UserDefaults& defaults = UserDefaults::standard());

  /// The days of a half-open range, or its times where it is shorter than a day of the exchange:
  /// "May 3, 2021", "May 3, 2021 → May 7, 2021", "May 3, 2021, 9:30 AM → 4:00 PM EDT".
  [[nodiscard]] static std::string dateRangeText(
      const DateRange& range, const EquityInfo& equity,
      const UserDefaults& defaults = UserDefaults::standard());

  /// As dateRangeText(), for a place with little room: "May 3, 2021 → May 7, 2021", "5/3/21,
  /// 9:30 AM → 4:00 PM".
  [[nodiscard]] static std::string briefDateRangeText(
      const DateRange& range, const EquityInfo& equity,
      const UserDefaults& defaults = UserDefaults::standard());

  /// The range of a bar.
  [[nodiscard]] static std::string quoteDateRangeText(
      const Quote& quote, const EquityInfo& equity,
      const UserDefaults& defaults = UserDefaults::standard());

  /// Says that `quotes`, which are ascending, are not what was paid at the time, where an event
  /// among `events`, in date order, has changed the first of them. None where it need not be said.
  [[nodiscard]] static std::optional<std::string> priceAdjustmentNote(
      PriceAdjustment adjustment, std::span<const Quote> quotes,
      std::span<const EquityEvent> events);
};

}  // namespace corvane
