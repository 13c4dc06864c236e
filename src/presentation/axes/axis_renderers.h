// The labels of the value axes of a chart.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/money/decimal_number_formatter.h"

namespace corvane {

/// Where labels stand on a value axis, and what they say. Main queue only.
class AxisRenderer {
 public:
  AxisRenderer() = default;
  AxisRenderer(const AxisRenderer&) = delete;
  AxisRenderer& operator=(const AxisRenderer&) = delete;
  virtual ~AxisRenderer() = default;

  /// Fits unit and digits to an axis from `minimum` to `maximum`. To be called each time before the
  /// values of the labels are computed.
  virtual void computeAxis(double minimum, double maximum) = 0;

  /// The values between `minimum` and `maximum` that have a label, ascending: round ones, about
  /// `aim` of them. Empty where the axis has nothing to say.
  [[nodiscard]] virtual std::vector<double> labelledValues(double minimum, double maximum,
                                                           std::size_t aim) const;

  [[nodiscard]] virtual std::string label(double value) const = 0;

 protected:
  /// The least distance of two labels, so that no two of them read the same; 0 for any.
  [[nodiscard]] virtual double leastStep() const { return 0; }
};

/// Labels in money, in thousands to trillions where the values are large.
class MoneyAxisRenderer : public AxisRenderer {
 public:
  /// How labels are written from now on: the formatter's currency, style and zero symbol; digits
  /// and unit follow the values of the axis.
  void setCurrencyFormatter(DecimalNumberFormatter formatter);
  [[nodiscard]] const DecimalNumberFormatter& currencyFormatter() const {
    return currencyFormatter_;
  }

  /// Unit and digits are those of `maximum`, with more digits where the axis is too short for two
  /// labels that differ in them.
  void computeAxis(double minimum, double maximum) override;

  [[nodiscard]] double granularity() const { return granularity_; }

  [[nodiscard]] std::string label(double value) const override;

 protected:
  [[nodiscard]] double leastStep() const override { return granularity_; }

 private:
  DecimalNumberFormatter currencyFormatter_;
  double granularity_ = 0.01;
};

/// Labels of the change since an opening value, in percent.
class PercentageAxisRenderer : public AxisRenderer {
 public:
  explicit PercentageAxisRenderer(std::function<std::optional<double>()> openingValue);

  void computeAxis(double minimum, double maximum) override;

  /// Those at round percentages; none without an opening value, since all would read the same.
  [[nodiscard]] std::vector<double> labelledValues(double minimum, double maximum,
                                                   std::size_t aim) const override;

  /// Without an opening value every label is that of no change.
  [[nodiscard]] std::string label(double value) const override;

 private:
  std::function<std::optional<double>()> openingValue_;
  DecimalNumberFormatter formatter_;
};

/// Labels that a screen writes itself, such as rates of return.
class TextAxisRenderer : public AxisRenderer {
 public:
  /// `text` writes a value; two values that are `leastStep` apart read differently.
  explicit TextAxisRenderer(std::function<std::string(double)> text, double leastStep = 0);

  void computeAxis(double /*minimum*/, double /*maximum*/) override {}
  [[nodiscard]] std::string label(double value) const override { return text_(value); }

 protected:
  [[nodiscard]] double leastStep() const override { return leastStep_; }

 private:
  std::function<std::string(double)> text_;
  double leastStep_;
};

}  // namespace corvane
