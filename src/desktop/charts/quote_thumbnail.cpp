#include "desktop/charts/quote_thumbnail.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>

#include "desktop/charts/chart_drawing.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr float candleAlpha = 0.4F;
constexpr double borderWidth = 2;
constexpr double dotRadius = 1.75;
constexpr double leastLineWidth = 3;  // of what is seen as a line

void paintSeries(QPainter& painter, const ChartDataSet& dataSet, const ChartLayout& layout,
                 const std::optional<QColor>& ink) {
  const std::vector<ChartEntry> entries = layout.shownEntries(dataSet);
  QColor colour = ink.value_or(chartColour(dataSet.colour));
  if (dataSet.shape == ChartDataSet::Shape::candles) {
    if (ink) {
      colour.setAlphaF(candleAlpha);
    }
    painter.setPen(QPen(colour, 1));
    for (const ChartEntry& entry : entries) {
      const double x = layout.xPixel(entry.x);
      painter.drawLine(QLineF(x, layout.yPixel(entry.base), x, layout.yPixel(entry.y)));
    }
    return;
  }
  QPolygonF line;
  for (const ChartEntry& entry : entries) {
    line.append(QPointF(layout.xPixel(entry.x), layout.yPixel(entry.y)));
  }
  painter.setPen(QPen(colour, std::max(1.0, dataSet.lineWidth)));
  painter.drawPolyline(line);
  // The first minutes of a session would leave the box as good as empty.
  if (!line.isEmpty() && line.back().x() - line.front().x() < leastLineWidth) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(line.back(), dotRadius, dotRadius);
    painter.setBrush(Qt::NoBrush);
  }
}

}  // namespace

void paintThumbnail(QPainter& painter, const QRectF& area, const QuoteChartView& chart,
                    std::optional<QColor> ink) {
  if (chart.isEmpty()) {
    return;
  }
  const ChartLayout layout(chart, chartSurface(area.width(), area.height()));
  painter.save();
  painter.translate(area.topLeft());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(theme::colour(Colour::Name::separator), borderWidth));
  painter.drawRect(
      QRectF(0, 0, area.width(), area.height())
          .adjusted(borderWidth / 2, borderWidth / 2, -borderWidth / 2, -borderWidth / 2));
  const ChartLayout::Box& plot = layout.plotArea();
  painter.setClipRect(QRectF(plot.left, plot.top, plot.width(), plot.height()), Qt::IntersectClip);
  for (const LimitLine& line : chart.leftAxisLimitLines(area.width())) {
    QPen pen(ink.value_or(chartColour(line.colour)), line.lineWidth);
    pen.setDashPattern({line.dash / line.lineWidth, line.gap / line.lineWidth});
    painter.setPen(pen);
    const double y = layout.yPixel(line.value);
    painter.drawLine(QLineF(plot.left, y, plot.right, y));
  }
  for (const ChartDataSet& dataSet : chart.noninteractiveDataSets()) {
    paintSeries(painter, dataSet, layout, ink);
  }
  painter.restore();
}

}  // namespace corvane::desktop
