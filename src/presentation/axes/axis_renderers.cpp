#include "presentation/axes/axis_renderers.h"

#include <algorithm>
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

constexpr int finestDigits = 8;

/// The round number (1, 2 or 5 times a power of ten) that is nearest to `wanted`.
double roundStep(double wanted) {
  const double power = std::pow(10.0, std::floor(std::log10(wanted)));
  const double lead = wanted / power;
  return power * (lead < 1.5 ? 1 : lead < 3.5 ? 2 : lead < 7.5 ? 5 : 10);
}

/// The multiples of a round step between `minimum` and `maximum`, about `aim` of them.
std::vector<double> roundValues(double minimum, double maximum, std::size_t aim, double leastStep) {
  if (!(minimum < maximum) || !std::isfinite(minimum) || !std::isfinite(maximum)) {
    return {};
  }
  const double wanted = (maximum - minimum) / static_cast<double>(std::max<std::size_t>(aim, 1));
  const double step = std::max(roundStep(wanted), leastStep);
  constexpr double tolerance = 1e-9;  // of a step: binary fractions are not quite round
  std::vector<double> values;
  const double first = std::ceil(minimum / step - tolerance);
  const double last = std::floor(maximum / step + tolerance);
  for (int steps = 0; first + steps <= last; ++steps) {
    const double i = first + steps;
    values.push_back(i == 0 ? 0 : i * step);  // never a negative zero
  }
  return values;
}

/// A change of less than this moves the labels so little that they need a digit after the point.
constexpr double smallChange = 0.1;

}  // namespace

std::vector<double> AxisRenderer::labelledValues(double minimum, double maximum,
                                                 std::size_t aim) const {
  return roundValues(minimum, maximum, aim, leastStep());
}

void MoneyAxisRenderer::setCurrencyFormatter(DecimalNumberFormatter formatter) {
  currencyFormatter_ = std::move(formatter);
}

void MoneyAxisRenderer::computeAxis(double minimum, double maximum) {
  const Scale& scale = scaleFor(maximum);
  int digits = scale.fractionDigits;
  granularity_ = scale.divisor / std::pow(10.0, digits);
  // Rates of some currencies and shares of a thousand dollars move in less than these digits show.
  while (maximum - minimum > 0 && maximum - minimum < 2 * granularity_ && digits < finestDigits) {
    ++digits;
    granularity_ = scale.divisor / std::pow(10.0, digits);
  }
  currencyFormatter_.powerOfTen = -scale.powerOfTen;
  currencyFormatter_.minimumFractionDigits = digits;
  currencyFormatter_.maximumFractionDigits = digits;
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

std::vector<double> PercentageAxisRenderer::labelledValues(double minimum, double maximum,
                                                           std::size_t aim) const {
  const auto opening = openingValue_();
  if (!opening || *opening == 0) {
    return {};
  }
  const double leastStep = formatter_.maximumFractionDigits > 0 ? 0.001 : 0.01;
  const auto [low, high] = std::minmax({minimum / *opening - 1, maximum / *opening - 1});
  std::vector<double> values = roundValues(low, high, aim, leastStep);
  for (double& value : values) {
    value = *opening * (1 + value);
  }
  std::ranges::sort(values);
  return values;
}

std::string PercentageAxisRenderer::label(double value) const {
  const double change = value / openingValue_().value_or(value) - 1;
  // Of nothing at all there is no percentage; 0 / 0 reads as no change.
  const Decimal number = std::isfinite(change) ? Decimal::fromDouble(change) : Decimal(0);
  return formatter_.string(number).value_or(number.description());
}

TextAxisRenderer::TextAxisRenderer(std::function<std::string(double)> text, double leastStep)
    : text_(std::move(text)), leastStep_(leastStep) {}

}  // namespace corvane
