// The money chart: values in money and in percent of an opening value, over dates.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "core/money/currency.h"
#include "platform/range.h"
#include "platform/time/calendar.h"
#include "presentation/charts/axis_renderers.h"
#include "presentation/charts/base_chart_view.h"

namespace corvane {

/// A chart with a money axis on the left, a percentage axis on the right, a dashed line at the
/// opening value, and dates below. Main queue only.
class FiscalChartView : public BaseChartView {
 public:
  FiscalChartView();
  FiscalChartView(const FiscalChartView&) = delete;
  FiscalChartView& operator=(const FiscalChartView&) = delete;

  /// In place of the first and the last value of the interactive series.
  std::optional<double> prescribedOpeningValue;
  std::optional<double> prescribedClosingValue;
  /// What the money axis is in; takes effect with reset().
  std::optional<Currency> currency;

  /// Where the value axes begin; none leaves it to the values.
  std::optional<double> axisMinimum;
  /// The ends of the x axis; none leaves them to the values.
  std::optional<double> xAxisMinimum;
  std::optional<double> xAxisMaximum;
  /// The dates below the chart. The first line is clear: only its label shows.
  std::vector<LimitLine> xAxisLimitLines;

  MoneyAxisRenderer leftAxis;
  PercentageAxisRenderer rightAxis;

  /// Whether the user is to see dates in his own time zone and not in that of the calendar.
  bool prefersLocalTimeZone = false;

  void clear() override;
  /// To be called after a new `currency`.
  void reset();

  [[nodiscard]] std::optional<double> openingValue() const;
  [[nodiscard]] std::optional<double> closingValue() const;
  /// Green where the chart closes at least as high as it opens, red where it closes lower, black
  /// where it has no values.
  [[nodiscard]] Colour movementColour() const;
  /// The line at the opening value in a view of this width; none without an opening value.
  [[nodiscard]] std::optional<LimitLine> openingLine(double viewWidth) const;

  /// Puts labels below the chart where the year, the month, the day or the hour changes, whichever
  /// suits the length of `displayed`. `points` are x values with their dates, ascending.
  void addDateLabels(const std::vector<std::pair<double, Date>>& points, const DateRange& displayed,
                     const Calendar& calendar);
};

}  // namespace corvane
