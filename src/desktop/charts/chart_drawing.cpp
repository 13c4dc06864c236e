#include "desktop/charts/chart_drawing.h"

#include <qcustomplot.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <ranges>
#include <set>
#include <utility>
#include <vector>

#include "desktop/charts/painted_item.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr double loneValueSize = 6;
constexpr double markHeight = 9;
constexpr double leastLineDistance = 20;
constexpr double leastCircleDistance = 2;  // of which nearer ones hide each other
constexpr double widestCandle = 24;
constexpr double candleShare = 0.6;  // of the distance between two

QPen seriesPen(const ChartDataSet& dataSet) {
  QPen pen(chartColour(dataSet.colour), dataSet.lineWidth);
  pen.setJoinStyle(Qt::RoundJoin);
  if (dataSet.isDashed) {
    pen.setDashPattern({4, 3});
  }
  return pen;
}

QPen limitPen(const LimitLine& line) {
  // A hairline in full colour would vanish between the pixels.
  QPen pen(chartColour(line.colour), std::max(1.0, line.lineWidth));
  pen.setDashPattern({line.dash, line.gap});
  pen.setCapStyle(Qt::FlatCap);
  return pen;
}

QCPGraph* addGraph(QCustomPlot& plot, const std::vector<ChartEntry>& entries,
                   double ChartEntry::*value) {
  QVector<double> x;
  QVector<double> y;
  x.reserve(static_cast<qsizetype>(entries.size()));
  y.reserve(static_cast<qsizetype>(entries.size()));
  for (const ChartEntry& entry : entries) {
    x.append(entry.x);
    y.append(entry.*value);
  }
  QCPGraph* graph = plot.addGraph();
  graph->setData(x, y, true);
  graph->setPen(Qt::NoPen);
  return graph;
}

void addBand(QCustomPlot& plot, const ChartDataSet& dataSet,
             const std::vector<ChartEntry>& entries) {
  QCPGraph* graph = addGraph(plot, entries, &ChartEntry::y);
  graph->setBrush(chartColour(*dataSet.fill));
  graph->setAntialiasedFill(false);
  const auto standsOnNothing = [](const ChartEntry& entry) { return entry.base == 0; };
  if (!std::ranges::all_of(entries, standsOnNothing)) {
    graph->setChannelFillGraph(addGraph(plot, entries, &ChartEntry::base));
  }
}

void addLine(QCustomPlot& plot, const ChartDataSet& dataSet, const std::vector<ChartEntry>& entries,
             double width) {
  QCPGraph* graph = addGraph(plot, entries, &ChartEntry::y);
  graph->setPen(seriesPen(dataSet));
  // A stroke that crosses itself thousands of times takes long to fill as one shape, and where
  // there are more values than pixels nobody sees that it is drawn in pieces.
  if (static_cast<double>(entries.size()) > width) {
    plot.setPlottingHint(QCP::phFastPolylines, true);
  }
  // A single value has no line.
  if (entries.size() == 1) {
    graph->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, loneValueSize));
  }
}

void addCandles(QCustomPlot& plot, const ChartDataSet& dataSet,
                const std::vector<ChartEntry>& entries, const ChartLayout& layout) {
  auto* candles = new QCPFinancial(plot.xAxis, plot.yAxis);
  QVector<QCPFinancialData> data;
  data.reserve(static_cast<qsizetype>(entries.size()));
  for (const ChartEntry& entry : entries) {
    data.append(QCPFinancialData(entry.x, entry.base, entry.y, entry.base, entry.y));
  }
  candles->data()->set(data, true);
  candles->setChartStyle(QCPFinancial::csCandlestick);
  const double distance = entries.size() > 1 ? (entries.back().x - entries.front().x) /
                                                   static_cast<double>(entries.size() - 1)
                                             : 1;
  const double width = distance * candleShare;
  // A few bars would fill the chart as blocks.
  const bool isWide = layout.xPixel(width) - layout.xPixel(0) > widestCandle;
  candles->setWidthType(isWide ? QCPFinancial::wtAbsolute : QCPFinancial::wtPlotCoords);
  candles->setWidth(isWide ? widestCandle : width);
  const QColor colour = chartColour(dataSet.colour);
  candles->setTwoColored(false);
  candles->setPen(QPen(colour, 0));
  candles->setBrush(colour);
  candles->setAntialiased(false);
}

void addBars(QCustomPlot& plot, const ChartDataSet& dataSet, const std::vector<ChartEntry>& entries,
             std::size_t firstEntry) {
  // Those of one colour are one series of the plot.
  std::map<QRgb, QVector<QCPBarsData>> byColour;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::size_t entry = firstEntry + i;
    const QColor colour = chartColour(
        entry < dataSet.entryColours.size() ? dataSet.entryColours[entry] : dataSet.colour);
    byColour[colour.rgba()].append(QCPBarsData(entries[i].x, entries[i].y - entries[i].base));
  }
  for (const auto& [rgba, data] : byColour) {
    auto* bars = new QCPBars(plot.xAxis, plot.yAxis);
    bars->data()->set(data, true);
    bars->setWidth(dataSet.barWidth);
    bars->setBrush(QColor::fromRgba(rgba));
    bars->setPen(Qt::NoPen);
    bars->setAntialiased(false);
  }
}

void paintCircles(QCPPainter& painter, const ChartDataSet& dataSet, const ChartLayout& layout) {
  painter.setAntialiasing(true);
  painter.setFont(theme::font(0.75, QFont::DemiBold));
  const QColor ring = theme::colour(Colour::Name::label);
  std::set<std::pair<int, int>> taken;
  std::vector<std::size_t> visible;
  // From the last one, which lies above the others: one that stands where another does is hidden.
  for (std::size_t i = dataSet.entries.size(); i-- > 0;) {
    const ChartEntry& entry = dataSet.entries[i];
    const bool isShown = layout.xRange().lower <= entry.x && entry.x <= layout.xRange().upper;
    if (isShown && taken
                       .emplace(qRound(layout.xPixel(entry.x) / leastCircleDistance),
                                qRound(layout.yPixel(entry.y) / leastCircleDistance))
                       .second) {
      visible.push_back(i);
    }
  }
  for (const std::size_t i : visible | std::views::reverse) {
    const ChartEntry& entry = dataSet.entries[i];
    const QColor colour =
        chartColour(i < dataSet.entryColours.size() ? dataSet.entryColours[i] : dataSet.colour);
    const QPointF centre(layout.xPixel(entry.x), layout.yPixel(entry.y));
    painter.setPen(QPen(ring, 1));
    painter.setBrush(colour);
    painter.drawEllipse(centre, dataSet.circleRadius, dataSet.circleRadius);
    if (i < dataSet.entrySigns.size()) {
      painter.setPen(colour.lightnessF() > 0.5F ? Qt::black : Qt::white);
      const double side = 2 * dataSet.circleRadius;
      painter.drawText(QRectF(centre.x() - side / 2, centre.y() - side / 2, side, side),
                       Qt::AlignCenter, qtText(dataSet.entrySigns[i]));
    }
  }
}

void addSeries(QCustomPlot& plot, const ChartDataSet& dataSet, const ChartLayout& layout) {
  if (dataSet.entries.empty()) {
    return;
  }
  const std::vector<ChartEntry> entries = layout.shownEntries(dataSet);
  switch (dataSet.shape) {
    case ChartDataSet::Shape::line:
      addLine(plot, dataSet, entries, layout.plotArea().width());
      break;
    case ChartDataSet::Shape::candles:
      addCandles(plot, dataSet, entries, layout);
      break;
    case ChartDataSet::Shape::bars:
      addBars(plot, dataSet, entries, layout.firstShownEntry(dataSet));
      break;
    case ChartDataSet::Shape::circles:
      // Those at the edges are shown as a whole.
      new PaintedItem(
          plot, QStringLiteral("main"), false,
          [&dataSet, &layout](QCPPainter& painter) { paintCircles(painter, dataSet, layout); });
      break;
  }
}

void addAllSeries(QCustomPlot& plot, const BaseChartView& chart, const ChartLayout& layout) {
  const auto visitAll = [&](auto visit) {
    std::ranges::for_each(chart.noninteractiveDataSets(), visit);
    if (chart.interactiveDataSet) {
      visit(*chart.interactiveDataSet);
    }
  };
  // Lines stand above all bands.
  visitAll([&](const ChartDataSet& dataSet) {
    if (dataSet.fill && !dataSet.entries.empty()) {
      addBand(plot, dataSet, layout.shownEntries(dataSet));
    }
  });
  visitAll([&](const ChartDataSet& dataSet) { addSeries(plot, dataSet, layout); });
}

void styleAxis(QCPAxis& axis, const std::vector<ChartLayout::Tick>& ticks) {
  const QColor separator = theme::colour(Colour::Name::separator);
  axis.setBasePen(Qt::NoPen);
  axis.setTickPen(Qt::NoPen);
  axis.setSubTickPen(Qt::NoPen);
  axis.setTickLabelColor(theme::colour(Colour::Name::secondaryLabel));
  axis.setTickLabelFont(chartLabelFont());
  axis.setTickLabelPadding(6);
  axis.setTickLabels(!ticks.empty());
  axis.grid()->setPen(QPen(separator, 1, Qt::DotLine));
  axis.grid()->setZeroLinePen(QPen(separator, 1));
  auto ticker = QSharedPointer<QCPAxisTickerText>::create();
  for (const ChartLayout::Tick& tick : ticks) {
    ticker->addTick(tick.value, qtText(tick.label));
  }
  axis.setTicker(ticker);
}

void setAxes(QCustomPlot& plot, const BaseChartView& chart, const ChartLayout& layout) {
  styleAxis(*plot.xAxis, {});
  styleAxis(*plot.yAxis, layout.leftTicks());
  styleAxis(*plot.yAxis2, layout.rightTicks());
  plot.xAxis->setVisible(chart.drawsAxes);
  plot.yAxis->setVisible(chart.drawsAxes);
  plot.yAxis2->setVisible(chart.drawsAxes);
  plot.xAxis->setBasePen(QPen(theme::colour(Colour::Name::separator)));
  plot.xAxis->grid()->setVisible(false);
  plot.yAxis2->grid()->setVisible(false);
  plot.xAxis->setRange(layout.xRange().lower, layout.xRange().upper);
  plot.yAxis->setRange(layout.yRange().lower, layout.yRange().upper);
  plot.yAxis2->setRange(layout.yRange().lower, layout.yRange().upper);
  const ChartLayout::Box& area = layout.plotArea();
  QCPAxisRect* rect = plot.axisRect();
  rect->setAutoMargins(QCP::msNone);
  rect->setMinimumMargins(QMargins());
  rect->setMargins(QMargins(qRound(area.left), qRound(area.top), qRound(plot.width() - area.right),
                            qRound(plot.height() - area.bottom)));
}

/// What lines across the dates keep of their opacity: in light grey they outshine a dark chart.
float verticalLineStrength() {
  return theme::appearance() == Appearance::dark ? 0.4F : 0.85F;
}

void paintLimitLines(QCPPainter& painter, const BaseChartView& chart, const ChartLayout& layout,
                     double viewWidth) {
  const ChartLayout::Box& area = layout.plotArea();
  painter.setAntialiasing(false);
  // Where there are too many, only those that a label stands at tell anything.
  const bool areDense = static_cast<double>(chart.xAxisLimitLines.size()) * leastLineDistance >
                        area.right - area.left;
  const auto isLabelled = [&](double x) {
    return std::ranges::any_of(layout.dateLabels(),
                               [&](const auto& label) { return std::abs(label.x - x) < 1; });
  };
  for (const LimitLine& line : chart.drawsAxes ? chart.xAxisLimitLines : std::vector<LimitLine>()) {
    if (theme::colour(line.colour).alpha() > 0) {
      QPen pen = limitPen(line);
      QColor faint = pen.color();
      faint.setAlphaF(faint.alphaF() * verticalLineStrength());
      pen.setColor(faint);
      painter.setPen(pen);
      const double x = layout.xPixel(line.value);
      if (areDense && !isLabelled(x)) {
        continue;
      }
      painter.drawLine(QLineF(x, area.top, x, area.bottom));
    }
  }
  for (const LimitLine& line : chart.leftAxisLimitLines(viewWidth)) {
    painter.setPen(limitPen(line));
    const double y = layout.yPixel(line.value);
    painter.drawLine(QLineF(area.left, y, area.right, y));
  }
}

void paintLabels(QCPPainter& painter, const std::vector<ChartLayout::Label>& labels,
                 const QColor& colour, const QColor& plate) {
  const double height = QFontMetricsF(chartLabelFont()).height();
  painter.setFont(chartLabelFont());
  for (const ChartLayout::Label& label : labels) {
    const QRectF box(label.x, label.y, label.width + 1, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(plate);
    painter.drawRoundedRect(box.adjusted(-3, 0, 3, 0), 3, 3);
    painter.setPen(colour);
    painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, qtText(label.text));
  }
}

void paintLegend(QCPPainter& painter, const ChartLayout& layout) {
  using Mark = ChartLegendEntry::Mark;
  const double height = QFontMetricsF(chartLabelFont()).height();
  painter.setFont(chartLabelFont());
  painter.setAntialiasing(true);
  for (const ChartLayout::LegendLabel& label : layout.legend()) {
    const QColor colour = chartColour(label.entry.colour);
    const QRectF mark(label.x, label.y + (height - markHeight) / 2,
                      ChartLayout::legendMarkWidth - spacing::tight, markHeight);
    QPen line(colour, 2, Qt::SolidLine, Qt::FlatCap);
    switch (label.entry.mark) {
      case Mark::dashedLine:
        line.setDashPattern({2, 1.5});
        [[fallthrough]];
      case Mark::line:
        painter.setPen(line);
        painter.drawLine(QLineF(mark.left(), mark.center().y(), mark.right(), mark.center().y()));
        break;
      case Mark::area:
      case Mark::circle:
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        if (label.entry.mark == Mark::area) {
          painter.drawRoundedRect(mark, 2, 2);
        } else {
          painter.drawEllipse(mark.center(), markHeight / 2, markHeight / 2);
        }
        break;
    }
    painter.setPen(theme::colour(Colour::Name::secondaryLabel));
    painter.drawText(QRectF(label.x + ChartLayout::legendMarkWidth, label.y,
                            label.width - ChartLayout::legendMarkWidth + 1, height),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip,
                     qtText(label.entry.label));
  }
}

void addDecoration(QCustomPlot& plot, const BaseChartView& chart, const ChartLayout& layout) {
  const QString legendLayer = QStringLiteral("legend");
  const double viewWidth = plot.width();
  new PaintedItem(plot, QStringLiteral("axes"), true,
                  [&chart, &layout, viewWidth](QCPPainter& painter) {
                    paintLimitLines(painter, chart, layout, viewWidth);
                  });
  new PaintedItem(plot, legendLayer, false, [&layout](QCPPainter& painter) {
    QColor plate = theme::colour(Colour::Name::controlBackground);
    plate.setAlphaF(0.85F);
    paintLabels(painter, layout.bandLabels(), theme::colour(Colour::Name::label), plate);
    paintLabels(painter, layout.dateLabels(), theme::colour(Colour::Name::secondaryLabel),
                Qt::transparent);
    paintLegend(painter, layout);
  });
}

}  // namespace

QFont chartLabelFont() {
  return theme::font(0.88);
}

ChartLayout::Surface chartSurface(double width, double height) {
  const QFontMetricsF metrics(chartLabelFont());
  return {.width = width,
          .height = height,
          .lineHeight = metrics.height(),
          .textWidth = [metrics](std::string_view text) {
            return metrics.horizontalAdvance(qtText(text));
          }};
}

QColor chartColour(const Colour& colour) {
  QColor drawn = theme::colour(colour);
  if (drawn.red() == 0 && drawn.green() == 0 && drawn.blue() == 0 && drawn.alpha() > 0) {
    const float alpha = drawn.alphaF();
    drawn = theme::colour(Colour::Name::label);
    drawn.setAlphaF(alpha * drawn.alphaF());
  }
  return drawn;
}

void fillPlot(QCustomPlot& plot, const BaseChartView& chart, const ChartLayout& layout) {
  plot.clearItems();
  plot.clearPlottables();
  plot.setPlottingHint(QCP::phFastPolylines, false);
  plot.setBackground(plot.palette().color(QPalette::Window));
  setAxes(plot, chart, layout);
  addAllSeries(plot, chart, layout);
  addDecoration(plot, chart, layout);
}

}  // namespace corvane::desktop
