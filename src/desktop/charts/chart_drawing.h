// Puts a chart that has been laid out on a plot.
#pragma once

#include <QColor>
#include <QFont>

#include "presentation/charts/chart_layout.h"

class QCustomPlot;

namespace corvane::desktop {

/// The font of all labels of a chart.
[[nodiscard]] QFont chartLabelFont();
/// What a chart in a widget of this size is laid out on.
[[nodiscard]] ChartLayout::Surface chartSurface(double width, double height);
/// A colour of a chart as it is drawn: black is the colour of labels.
[[nodiscard]] QColor chartColour(const Colour& colour);

/// Replaces what is on `plot` by `chart` in the present appearance. Nothing is painted yet. Both
/// must stay until the plot is filled again or gone.
void fillPlot(QCustomPlot& plot, const BaseChartView& chart, const ChartLayout& layout);

}  // namespace corvane::desktop
