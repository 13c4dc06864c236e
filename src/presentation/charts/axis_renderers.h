// The labels of the two value axes of a money chart.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "core/money/decimal_number_formatter.h"

namespace corvane {

/// Labels in money, in thousands to trillions where the values are large. Main queue only.
class MoneyAxisRenderer {
 public:
  /// How labels are written from now on: the formatter's currency, style and zero symbol; digits
  /// and unit follow the values of the axis.
  void setCurrencyFormatter(DecimalNumberFormatter formatter);
  [[nodiscard]] const DecimalNumberFormatter& currencyFormatter() const {
    return currencyFormatter_;
  }

  /// Fits unit and digits to an axis whose greatest value is `maximum`. To be called each time
  /// before the positions of the labels are computed.
  void computeAxis(double minimum, double maximum);

  /// The least distance of two labels, so that no two of them read the same.
  [[nodiscard]] double granularity() const { return granularity_; }

  [[nodiscard]] std::string label(double value) const;

 private:
  DecimalNumberFormatter currencyFormatter_;
  double granularity_ = 0.01;
};

/// Labels of the change since an opening value, in percent. Main queue only.
class PercentageAxisRenderer {
 public:
  explicit PercentageAxisRenderer(std::function<std::optional<double>()> openingValue);

  /// Fits the digits to an axis from `minimum` to `maximum`; see MoneyAxisRenderer.
  void computeAxis(double minimum, double maximum);

  /// Without an opening value every label is that of no change.
  [[nodiscard]] std::string label(double value) const;

 private:
  std::function<std::optional<double>()> openingValue_;
  DecimalNumberFormatter formatter_;
};

}  // namespace corvane
