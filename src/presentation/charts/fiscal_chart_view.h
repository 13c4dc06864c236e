// The money chart: values in money and in percent of an opening value, over dates.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "core/money/currency.h"
#include "platform/range.h"
#include "platform/time/calendar.h"
#include "presentation/axes/axis_renderers.h"
#include "presentation/charts/base_chart_view.h"

namespace corvane {

/// A chart with a money axis on the left, a percentage axis on the right, a dashed line at the
/// opening value, and dates below. Main queue only.
class FiscalChartView : public BaseChartView {
 public:
  FiscalChartView();

  /// In place of the first and the last value of the interactive series.
  std::optional<double> prescribedOpeningValue;
  std::optional<double> prescribedClosingValue;
  /// What the money axis is in; takes effect with reset().
  std::optional<Currency> currency;

  /// The left axis; the right one is a PercentageAxisRenderer of the opening value.
  [[nodiscard]] MoneyAxisRenderer& moneyAxis() { return *moneyAxis_; }

  /// Whether the user is to see dates in his own time zone and not in that of the calendar.
  bool prefersLocalTimeZone = false;

  void clear() override;
  /// To be called after a new `currency`.
  void reset();

  [[nodiscard]] std::optional<double> openingValue() const;
  [[nodiscard]] std::optional<double> closingValue() const;
  /// Green where the chart closes at least as high as it opens, red where it closes lower, the
  /// colour of labels where it has no values.
  [[nodiscard]] Colour movementColour() const;
  /// The line at the opening value in a view of this width; none without an opening value.
  [[nodiscard]] std::optional<LimitLine> openingLine(double viewWidth) const;
  [[nodiscard]] std::vector<LimitLine> leftAxisLimitLines(double viewWidth) const override;

  /// Puts labels below the chart where the year, the month, the day or the hour changes, whichever
  /// suits the length of `displayed`. `points` are x values with their dates, ascending.
  void addDateLabels(const std::vector<std::pair<double, Date>>& points, const DateRange& displayed,
                     const Calendar& calendar);

 protected:
  /// In percent and in money, coloured.
  [[nodiscard]] AttributedText changeText(double from, double to) const override;

 private:
  std::shared_ptr<MoneyAxisRenderer> moneyAxis_;
};

}  // namespace corvane
