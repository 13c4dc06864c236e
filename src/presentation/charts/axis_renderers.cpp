#include "presentation/charts/axis_renderers.h"

#include <array>
#include <cmath>
#include <utility>

namespace corvane {
namespace {

/// A unit of an axis: how large values must be for it, and how they are written in it.
struct Scale {
  double divisor;
  int powerOfTen;
  int fractionDigits;
  const char* suffix;
};

constexpr std::array<Scale, 4> scales = {
    {{1e12, 12, 1, "T"}, {1e9, 9, 1, "B"}, {1e6, 6, 1, "M"}, {1e3, 3, 1, "K"}}};
constexpr Scale plainScale{1, 0, 2, ""};

const Scale& scaleFor(double maximum) {
  for (const Scale& scale : scales) {
    if (std::abs(maximum) >= scale.divisor) {
      return scale;
    }
  }
  return plainScale;
}

/// A change of less than this moves the labels so little that they need a digit after the point.
constexpr double smallChange = 0.1;

}  // namespace

void MoneyAxisRenderer::setCurrencyFormatter(DecimalNumberFormatter formatter) {
  currencyFormatter_ = std::move(formatter);
}

void MoneyAxisRenderer::computeAxis(double /*minimum*/, double maximum) {
  const Scale& scale = scaleFor(maximum);
  granularity_ = scale.divisor / std::pow(10.0, scale.fractionDigits);
  currencyFormatter_.powerOfTen = -scale.powerOfTen;
  currencyFormatter_.minimumFractionDigits = scale.fractionDigits;
  currencyFormatter_.maximumFractionDigits = scale.fractionDigits;
  currencyFormatter_.digitsSuffix = scale.suffix;
}

std::string MoneyAxisRenderer::label(double value) const {
  const Decimal number = Decimal::fromDouble(value);
  return currencyFormatter_.string(number).value_or(number.description());
}

PercentageAxisRenderer::PercentageAxisRenderer(std::function<std::optional<double>()> openingValue)
    : openingValue_(std::move(openingValue)) {
  formatter_.style = NumberFormatter::Style::percent;
  formatter_.positivePrefix = "+";
  formatter_.minimumIntegerDigits = 1;
  formatter_.maximumFractionDigits = 0;
}

void PercentageAxisRenderer::computeAxis(double minimum, double maximum) {
  const auto opening = openingValue_();
  const bool isFine = opening && std::abs(minimum / *opening - 1) < smallChange &&
                      std::abs(maximum / *opening - 1) < smallChange;
  formatter_.minimumFractionDigits = isFine ? 1 : 0;
  formatter_.maximumFractionDigits = formatter_.minimumFractionDigits;
}

std::string PercentageAxisRenderer::label(double value) const {
  const double change = value / openingValue_().value_or(value) - 1;
  // Of nothing at all there is no percentage; 0 / 0 reads as no change.
  const Decimal number = std::isfinite(change) ? Decimal::fromDouble(change) : Decimal(0);
  return formatter_.string(number).value_or(number.description());
}

}  // namespace corvane
