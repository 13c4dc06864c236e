#include "presentation/text/formatting.h"

#include <algorithm>
#include <variant>

#include "core/money/decimal_number_formatter.h"

namespace corvane {
namespace {

/// For amounts of `currency` that carry a sign rather than brackets.
DecimalNumberFormatter signedMoney(const Currency& currency) {
  DecimalNumberFormatter formatter = DecimalNumberFormatter::money(currency);
  formatter.style = NumberFormatter::Style::currency;
  return formatter;
}

AttributedText coloured(const std::string& text, const Colour& colour) {
  return AttributedText(text, {.colour = colour});
}

/// How a range of days or times is written.
struct RangeForm {
  DateFormatter::Style days;
  DateFormatter::Style dayOfTimes;
  std::string_view lastTime;
};

std::string rangeText(const DateRange& range, const EquityInfo& equity,
                      const UserDefaults& defaults, const RangeForm& form) {
  using enum CalendarUnit;
  DateFormatter formatter = Formatting::equityDateFormatter(equity, defaults);
  formatter.timeStyle = DateFormatter::Style::none;
  formatter.dateStyle = form.days;
  const DateComponents length =
      equity.calendar.dateComponents({day, second}, range.lower(), range.upper());
  const int days = length.day().value_or(0);
  if (days == 0) {
    DateFormatter startTime = formatter;
    startTime.localizedTemplate = "jjmm";
    DateFormatter endTime = formatter;
    endTime.localizedTemplate = form.lastTime;
    formatter.dateStyle = form.dayOfTimes;
    return formatter.string(range.lower()) + ", " + startTime.string(range.lower()) + " → " +
           endTime.string(range.upper());
  }
  std::string text = formatter.string(range.lower());
  if (length.second().value_or(0) < 1 && days < 2) {
    return text;
  }
  // The range is half-open: where it ends at an hour at which it could have begun, its last day is
  // the one before. That is told of the end of a last session too, which several days of short bars
  // end with: their text stops a day early.
  const Date lastDay = equity.calendar.dateByAdding(day, -1, range.upper()).value_or(range.upper());
  text += " → " + formatter.string(lastDay);
  return text;
}

}  // namespace

Formatting::Indicator Formatting::movementIndicator(const Decimal& change) {
  if (change > 0) {
    return {"▲", Colour(Colour::Name::systemGreen).blended(0.3, Colour::Name::black)};
  }
  if (change < 0) {
    return {"▼", Colour::Name::systemRed};
  }
  return {"\u25FC\uFE0E", Colour::Name::secondaryLabel};
}

AttributedText Formatting::moneyCell(const Decimal& amount, const Currency& currency,
                                     bool emphasised, FontWeight weight) {
  TextStyle style{.weight = emphasised ? weight : FontWeight::regular, .isMonospaced = true};
  if (emphasised || amount.isZero()) {
    style.colour = movementIndicator(amount).colour;
  }
  AttributedText cell(
      amount.isZero() ? "—" : DecimalNumberFormatter::money(currency).string(amount).value_or(""),
      style);
  cell.alignment = TextAlignment::right;
  return cell;
}

std::string Formatting::currentValueText(const PortfolioValuation& valuation) {
  return signedMoney(valuation.currency).string(valuation.currentValue).value_or("");
}

AttributedText Formatting::gainText(const PortfolioValuation& valuation) {
  const Decimal gain = valuation.currentValue - valuation.netDeposited;
  const auto amountText = signedMoney(valuation.currency).string(gain);
  const auto [symbol, colour] = movementIndicator(gain);
  return amountText ? coloured(symbol + " " + *amountText, colour) : AttributedText();
}

AttributedText Formatting::changeText(const Currency& currency,
                                      const std::optional<Decimal>& reference,
                                      const std::optional<Decimal>& current) {
  const Decimal from = reference.value_or(Decimal::leastNonzeroMagnitude());
  const Decimal to = current.value_or(0);

  DecimalNumberFormatter money = signedMoney(currency);
  money.maximumFractionDigits = 5;
  money.positivePrefix = "+";
  const auto amountText = money.string(to - from);

  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.minimumFractionDigits = 2;
  percent.maximumFractionDigits = 2;
  percent.positivePrefix = "+";
  const auto percentText = percent.string(to / from - 1);

  const auto [symbol, colour] = movementIndicator(to - from);
  return amountText && percentText
             ? coloured(*percentText + " " + symbol + " " + *amountText, colour)
             : AttributedText();
}

std::vector<Colour> Formatting::hueRangeColours(std::size_t count, double firstHue, double lastHue,
                                                double brightness) {
  const double span = lastHue < firstHue ? lastHue - firstHue + 1 : lastHue - firstHue;
  const double step = span / static_cast<double>(count > 1 ? count - 1 : 1);
  std::vector<Colour> colours;
  for (std::size_t index = 0; index < count; ++index) {
    const double hue = firstHue + static_cast<double>(index) * step;
    colours.push_back(Colour::fromHue(hue > 1 ? hue - 1 : hue, 1, brightness));
  }
  return colours;
}

DateFormatter Formatting::equityDateFormatter(const EquityInfo& equity,
                                              const UserDefaults& defaults) {
  const bool isInLocalTime = defaults.boolean("preferLocalTimeZone").value_or(false);
  return {.dateStyle = DateFormatter::Style::longStyle,
          .timeStyle = DateFormatter::Style::longStyle,
          .timeZone = isInLocalTime ? TimeZone::current() : equity.calendar.timeZone()};
}

std::string Formatting::dateRangeText(const DateRange& range, const EquityInfo& equity,
                                      const UserDefaults& defaults) {
  return rangeText(range, equity, defaults,
                   {.days = DateFormatter::Style::longStyle,
                    .dayOfTimes = DateFormatter::Style::longStyle,
                    .lastTime = "jjmmzzz"});
}

std::string Formatting::briefDateRangeText(const DateRange& range, const EquityInfo& equity,
                                           const UserDefaults& defaults) {
  return rangeText(range, equity, defaults,
                   {.days = DateFormatter::Style::mediumStyle,
                    .dayOfTimes = DateFormatter::Style::shortStyle,
                    .lastTime = "jjmm"});
}

std::string Formatting::quoteDateRangeText(const Quote& quote, const EquityInfo& equity,
                                           const UserDefaults& defaults) {
  return dateRangeText({quote.fromDate, quote.toDate}, equity, defaults);
}

std::optional<std::string> Formatting::priceAdjustmentNote(PriceAdjustment adjustment,
                                                           std::span<const Quote> quotes,
                                                           std::span<const EquityEvent> events) {
  if (adjustment != PriceAdjustment::adjustedForSplits &&
      adjustment != PriceAdjustment::adjustedForSplitsAndDividends) {
    return std::nullopt;
  }
  const bool splitsOnly = adjustment == PriceAdjustment::adjustedForSplits;
  const auto reference =
      std::find_if(events.rbegin(), events.rend(), [&](const EquityEvent& event) {
        return !splitsOnly || std::holds_alternative<EquityEvent::Split>(event.kind);
      });
  if (reference == events.rend() || quotes.empty() ||
      !(quotes.front().fromDate < reference->date)) {
    return std::nullopt;
  }
  return splitsOnly ? "Prices adjusted for splits." : "Prices adjusted for splits & dividends.";
}

}  // namespace corvane
