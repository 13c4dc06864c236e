#include "presentation/interim_formatting.h"

#include <algorithm>

#include "core/decimal_number_formatter.h"

namespace corvane {

Formatting::Indicator Formatting::movementIndicator(const Decimal& change) {
  if (change > 0) {
    return {"▲", Colour(Colour::Name::systemGreen).blended(0.3, Colour::Name::black)};
  }
  if (change < 0) {
    return {"▼", Colour::Name::systemRed};
  }
  return {"◼︎", Colour::Name::secondaryLabel};
}

AttributedText Formatting::moneyCell(const Decimal& amount, const Currency& currency,
                                     bool emphasised, FontWeight weight) {
  TextStyle style{.weight = emphasised ? weight : FontWeight::regular, .isMonospaced = true};
  if (emphasised || amount.isZero()) {
    style.colour = movementIndicator(amount).colour;
  }
  AttributedText text(
      amount.isZero() ? "—" : DecimalNumberFormatter::money(currency).string(amount).value_or(""),
      style);
  text.alignment = TextAlignment::right;
  return text;
}

std::string Formatting::currentValueText(const PortfolioValuation& valuation) {
  auto formatter = DecimalNumberFormatter::money(valuation.currency);
  formatter.style = NumberFormatter::Style::currency;
  return formatter.string(valuation.currentValue).value_or("");
}

AttributedText Formatting::gainText(const PortfolioValuation& valuation) {
  const Decimal gain = valuation.currentValue - valuation.netDeposited;
  auto formatter = DecimalNumberFormatter::money(valuation.currency);
  formatter.style = NumberFormatter::Style::currency;
  const auto text = formatter.string(gain);
  const Indicator indicator = movementIndicator(gain);
  return text ? AttributedText(indicator.symbol + " " + *text, {.colour = indicator.colour})
              : AttributedText();
}

AttributedText Formatting::changeText(const Currency& currency,
                                      const std::optional<Decimal>& reference,
                                      const std::optional<Decimal>& current) {
  const Decimal from = reference.value_or(Decimal::leastNonzeroMagnitude());
  const Decimal to = current.value_or(0);
  auto money = DecimalNumberFormatter::money(currency);
  money.style = NumberFormatter::Style::currency;
  money.maximumFractionDigits = 5;
  money.positivePrefix = "+";
  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.positivePrefix = "+";
  percent.minimumFractionDigits = 2;
  percent.maximumFractionDigits = 2;
  const Indicator indicator = movementIndicator(to - from);
  return AttributedText(percent.string(to / from - 1).value_or("") + " " + indicator.symbol + " " +
                            money.string(to - from).value_or(""),
                        {.colour = indicator.colour});
}

std::vector<Colour> Formatting::hueRangeColours(std::size_t count, double firstHue, double lastHue,
                                                double brightness) {
  const double span = lastHue < firstHue ? lastHue - firstHue + 1 : lastHue - firstHue;
  const double step = span / static_cast<double>(std::max<std::size_t>(count, 2) - 1);
  std::vector<Colour> colours;
  for (std::size_t i = 0; i < count; ++i) {
    const double hue = firstHue + static_cast<double>(i) * step;
    colours.push_back(Colour::fromHue(hue > 1 ? hue - 1 : hue, 1, brightness));
  }
  return colours;
}

DateFormatter Formatting::equityDateFormatter(const EquityInfo& equity) {
  return {.dateStyle = DateFormatter::Style::longStyle,
          .timeStyle = DateFormatter::Style::longStyle,
          .timeZone = equity.calendar.timeZone()};
}

}  // namespace corvane
