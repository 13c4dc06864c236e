#include "desktop/charts/fiscal_chart_widget.h"

#include <qcustomplot.h>

#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int leastHeight = 130;
constexpr int pixelsPerTick = 44;
constexpr double headroom = 0.06;  // of the values' span, above the highest and below the lowest

/// Ticks whose labels are those of the chart's own axes.
class LabelTicker : public QCPAxisTicker {
 public:
  LabelTicker(std::function<double()> leastStep, std::function<std::string(double)> label)
      : leastStep_(std::move(leastStep)), label_(std::move(label)) {}

 protected:
  double getTickStep(const QCPRange& range) override {
    return std::max(QCPAxisTicker::getTickStep(range), leastStep_());
  }
  QString getTickLabel(double tick, const QLocale& /*locale*/, QChar /*format*/,
                       int /*precision*/) override {
    return qtText(label_(tick));
  }

 private:
  std::function<double()> leastStep_;
  std::function<std::string(double)> label_;
};

std::vector<ChartDataSet> allSeries(const FiscalChartView& chart) {
  std::vector<ChartDataSet> all = chart.noninteractiveDataSets();
  if (chart.interactiveDataSet) {
    all.push_back(*chart.interactiveDataSet);
  }
  return all;
}

}  // namespace

FiscalChartWidget::FiscalChartWidget(FiscalChartView& chart, const QString& accessibleName,
                                     QWidget* parent)
    : QFrame(parent),
      chart_(chart),
      plot_(new QCustomPlot),
      noData_(new QLabel),
      tooltip_(new AttributedLabel(this)) {
  setAccessibleName(accessibleName);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumHeight(leastHeight);
  plot_->setFocusPolicy(Qt::NoFocus);
  plot_->setMouseTracking(true);
  plot_->installEventFilter(this);
  noData_->setAlignment(Qt::AlignCenter);
  noData_->setWordWrap(true);
  noData_->setForegroundRole(QPalette::PlaceholderText);

  auto* pages = new QStackedLayout(this);
  pages->addWidget(plot_);
  pages->addWidget(noData_);

  tooltip_->setAutoFillBackground(true);
  tooltip_->setBackgroundRole(QPalette::ToolTipBase);
  tooltip_->setFrameShape(QFrame::Box);
  tooltip_->setFrameShadow(QFrame::Plain);
  tooltip_->setMargin(static_cast<int>(BaseChartView::tooltipInset));
  tooltip_->setAttribute(Qt::WA_TransparentForMouseEvents);
  tooltip_->hide();

  plot_->yAxis->setTicker(QSharedPointer<LabelTicker>::create(
      [this] { return chart_.leftAxis.granularity(); },
      [this](double value) { return chart_.leftAxis.label(value); }));
  plot_->yAxis2->setTicker(QSharedPointer<LabelTicker>::create(
      [this] { return chart_.leftAxis.granularity(); },
      [this](double value) { return chart_.rightAxis.label(value); }));
  plot_->yAxis2->setVisible(true);
  plot_->xAxis->setTicks(false);
  plot_->xAxis->setTickLabels(false);
  chart_.changeHandler = [this] { redraw(); };
  redraw();
}

FiscalChartWidget::~FiscalChartWidget() {
  chart_.changeHandler = [] {};
}

void FiscalChartWidget::redraw() {
  plot_->clearItems();
  plot_->clearGraphs();
  marker_ = nullptr;
  markerLine_ = nullptr;
  setAccessibleDescription(qtText(chart_.accessibleText));
  noData_->setText(qtText(chart_.noDataText));
  auto* pages = static_cast<QStackedLayout*>(layout());
  const bool isEmpty = chart_.isEmpty();
  pages->setCurrentWidget(isEmpty ? static_cast<QWidget*>(noData_) : plot_);
  tooltip_->raise();
  if (isEmpty) {
    tooltip_->hide();
    return;
  }
  styleAxes();
  setRanges();
  const std::vector<ChartDataSet> series = allSeries(chart_);
  for (const ChartDataSet& one : series) {
    addSeries(one);
  }
  addOpeningLine();
  addDates();
  addBandLabels(series);
  showHighlight();
  plot_->replot(QCustomPlot::rpQueuedReplot);
}

void FiscalChartWidget::styleAxes() {
  const QColor secondary = theme::colour(Colour::Name::secondaryLabel);
  const QColor separator = theme::colour(Colour::Name::separator);
  const QFont small = theme::font(0.88);
  plot_->setBackground(palette().color(QPalette::Window));
  for (QCPAxis* axis : {plot_->xAxis, plot_->yAxis, plot_->yAxis2}) {
    axis->setBasePen(axis == plot_->xAxis ? QPen(separator) : QPen(Qt::NoPen));
    axis->setTickPen(Qt::NoPen);
    axis->setSubTickPen(Qt::NoPen);
    axis->setTickLabelColor(secondary);
    axis->setTickLabelFont(small);
    axis->setTickLabelPadding(6);
    axis->grid()->setVisible(axis == plot_->yAxis);
    axis->grid()->setPen(QPen(separator, 1, Qt::DotLine));
    axis->grid()->setZeroLinePen(QPen(separator));
    axis->ticker()->setTickCount(std::max(2, plot_->height() / pixelsPerTick));
  }
  QCPAxisRect* area = plot_->axisRect();
  area->setAutoMargins(QCP::msLeft | QCP::msRight);
  area->setMinimumMargins(QMargins(8, 8, 8, 0));
  area->setMargins(QMargins(0, 8, 0, QFontMetrics(small).height() + 8));
}

void FiscalChartWidget::setRanges() {
  double low = chart_.axisMinimum.value_or(std::numeric_limits<double>::infinity());
  double high = -std::numeric_limits<double>::infinity();
  double first = std::numeric_limits<double>::infinity();
  double last = -first;
  for (const ChartDataSet& series : allSeries(chart_)) {
    for (const ChartEntry& entry : series.entries) {
      low = chart_.axisMinimum ? low : std::min(low, entry.y);
      high = std::max(high, entry.y);
      first = std::min(first, entry.x);
      last = std::max(last, entry.x);
    }
  }
  if (!std::isfinite(high) || high <= low) {
    high = low + 1;
  }
  const double span = high - low;
  high += span * headroom;
  low -= chart_.axisMinimum ? 0 : span * headroom;
  first = chart_.xAxisMinimum.value_or(first);
  last = chart_.xAxisMaximum.value_or(last);
  if (!(last > first)) {
    last = first + 1;
  }
  chart_.leftAxis.computeAxis(low, high);
  chart_.rightAxis.computeAxis(low, high);
  plot_->xAxis->setRange(first, last);
  plot_->yAxis->setRange(low, high);
  plot_->yAxis2->setRange(low, high);
  // Without an opening value all percentages read the same and say nothing.
  plot_->yAxis2->setTickLabels(chart_.rightAxis.label(low) != chart_.rightAxis.label(high));
}

void FiscalChartWidget::addSeries(const ChartDataSet& series) {
  QCPGraph* graph = plot_->addGraph();
  QVector<double> x;
  QVector<double> y;
  x.reserve(static_cast<qsizetype>(series.entries.size()));
  y.reserve(static_cast<qsizetype>(series.entries.size()));
  for (const ChartEntry& entry : series.entries) {
    x.append(entry.x);
    y.append(entry.y);
  }
  graph->setData(x, y, true);
  graph->setName(qtText(series.label));
  graph->setPen(QPen(theme::colour(series.colour), series.lineWidth));
  if (series.fill) {
    graph->setBrush(theme::colour(*series.fill));
  }
  // A single day has no line, so it is shown as a point.
  if (series.entries.size() == 1) {
    graph->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, 6));
  }
}

void FiscalChartWidget::addBandLabels(const std::vector<ChartDataSet>& bands) {
  const QFont small = theme::font(0.88);
  const double lineHeight = QFontMetricsF(small).height();
  double below = plot_->yAxis->range().lower;
  for (const ChartDataSet& band : bands) {
    if (!band.fill || band.entries.empty()) {
      continue;
    }
    const ChartEntry& end = band.entries.back();
    const double from = plot_->yAxis->coordToPixel(below);
    const double to = plot_->yAxis->coordToPixel(end.y);
    below = end.y;
    if (from - to < lineHeight) {
      continue;
    }
    addSeriesLabel(band, end.x, (from + to) / 2, Qt::AlignRight | Qt::AlignVCenter);
  }
  for (const ChartDataSet& line : bands) {
    if (!line.fill && bands.size() > 1 && !line.entries.empty()) {
      const ChartEntry& middle = line.entries[line.entries.size() / 2];
      addSeriesLabel(line, middle.x, plot_->yAxis->coordToPixel(middle.y),
                     Qt::AlignHCenter | Qt::AlignBottom);
    }
  }
}

void FiscalChartWidget::addSeriesLabel(const ChartDataSet& series, double x, double pixelY,
                                       Qt::Alignment alignment) {
  auto* text = new QCPItemText(plot_);
  text->setText(qtText(series.label));
  text->setFont(theme::font(0.85));
  text->setColor(theme::colour(Colour::Name::label));
  QColor plate = palette().color(QPalette::Window);
  plate.setAlphaF(0.72F);
  text->setBrush(plate);
  text->setPen(Qt::NoPen);
  text->setPositionAlignment(alignment);
  text->setPadding(QMargins(4, 0, 4, 0));
  text->position->setTypeX(QCPItemPosition::ptPlotCoords);
  text->position->setTypeY(QCPItemPosition::ptAbsolute);
  text->position->setCoords(x, pixelY);
}

void FiscalChartWidget::addDates() {
  const QFont small = theme::font(0.88);
  const QFontMetricsF metrics(small);
  double free = -std::numeric_limits<double>::infinity();
  for (const LimitLine& line : chart_.xAxisLimitLines) {
    const QColor colour = theme::colour(line.colour);
    if (colour.alpha() > 0) {
      auto* across = new QCPItemStraightLine(plot_);
      QPen pen(colour, line.lineWidth);
      pen.setDashPattern({line.dash / line.lineWidth, line.gap / line.lineWidth});
      across->setPen(pen);
      across->point1->setCoords(line.value, 0);
      across->point2->setCoords(line.value, 1);
    }
    const double x = plot_->xAxis->coordToPixel(line.value);
    const double width = metrics.horizontalAdvance(qtText(line.label));
    if (line.label.empty() || x < free || x + width > plot_->width() - spacing::tight) {
      continue;
    }
    free = x + width + spacing::medium;
    auto* text = new QCPItemText(plot_);
    text->setClipToAxisRect(false);
    text->setText(qtText(line.label));
    text->setFont(small);
    text->setColor(theme::colour(Colour::Name::secondaryLabel));
    text->setPositionAlignment(Qt::AlignLeft | Qt::AlignTop);
    text->position->setTypeX(QCPItemPosition::ptPlotCoords);
    text->position->setTypeY(QCPItemPosition::ptAxisRectRatio);
    text->position->setCoords(line.value, 1);
    text->setPadding(QMargins(2, 4, 0, 0));
  }
}

void FiscalChartWidget::addOpeningLine() {
  const auto opening = chart_.openingLine(plot_->width());
  if (!opening) {
    return;
  }
  auto* line = new QCPItemStraightLine(plot_);
  QPen pen(theme::colour(opening->colour), std::max(1.0, opening->lineWidth));
  pen.setDashPattern({opening->dash, opening->gap});
  line->setPen(pen);
  line->point1->setCoords(0, opening->value);
  line->point2->setCoords(1, opening->value);
}

void FiscalChartWidget::showHighlight() {
  const auto index = chart_.currentMouseoverDataIndex();
  const auto x = index && chart_.convertXFromDataIndexToGraph
                     ? std::optional(chart_.convertXFromDataIndexToGraph(*index))
                     : std::nullopt;
  if (!x || !chart_.interactiveDataSet || plot_->graphCount() == 0) {
    if (marker_ != nullptr) {
      marker_->setVisible(false);
      markerLine_->setVisible(false);
    }
    tooltip_->hide();
    return;
  }
  if (marker_ == nullptr) {
    const QColor colour = theme::colour(Colour::Name::label);
    markerLine_ = new QCPItemStraightLine(plot_);
    markerLine_->setPen(QPen(colour, 1, Qt::DotLine));
    marker_ = new QCPItemTracer(plot_);
    marker_->setStyle(QCPItemTracer::tsCircle);
    marker_->setSize(8);
    marker_->setPen(QPen(colour, 1.5));
    marker_->setBrush(palette().color(QPalette::Window));
    marker_->setGraph(plot_->graph(plot_->graphCount() - 1));
  }
  marker_->setVisible(true);
  markerLine_->setVisible(true);
  marker_->setGraphKey(*x);
  marker_->updatePosition();
  markerLine_->point1->setCoords(*x, 0);
  markerLine_->point2->setCoords(*x, 1);

  const auto text = chart_.tooltip();
  tooltip_->setVisible(text.has_value());
  if (text) {
    tooltip_->setAttributedText(*text);
    tooltip_->adjustSize();
    const QPointF point = marker_->position->pixelPosition();
    const int offset = static_cast<int>(BaseChartView::tooltipOffset);
    int left = qRound(point.x()) + offset;
    if (left + tooltip_->width() > width()) {
      left = qRound(point.x()) - offset - tooltip_->width();
    }
    const int top =
        std::clamp(qRound(point.y()) + offset, 0, std::max(0, height() - tooltip_->height()));
    tooltip_->move(std::max(0, left), top);
    tooltip_->raise();
  }
}

std::optional<double> FiscalChartWidget::nearestX(double pixel) const {
  if (!chart_.interactiveDataSet || chart_.interactiveDataSet->entries.empty()) {
    return std::nullopt;
  }
  const auto& entries = chart_.interactiveDataSet->entries;
  const double x = plot_->xAxis->pixelToCoord(pixel);
  auto found = std::ranges::lower_bound(entries, x, {}, &ChartEntry::x);
  if (found == entries.end()) {
    --found;
  } else if (found != entries.begin() && x - std::prev(found)->x < found->x - x) {
    --found;
  }
  return found->x;
}

bool FiscalChartWidget::eventFilter(QObject* watched, QEvent* event) {
  const auto x = [&]() -> std::optional<double> {
    const QPointF position = static_cast<QMouseEvent*>(event)->position();
    return plot_->axisRect()->rect().contains(position.toPoint()) ? nearestX(position.x())
                                                                  : std::nullopt;
  };
  switch (event->type()) {
    case QEvent::MouseMove:
      chart_.pointerMovedTo(x());
      break;
    case QEvent::Leave:
      chart_.pointerLeft();
      break;
    case QEvent::MouseButtonPress:
      setFocus(Qt::MouseFocusReason);
      chart_.clicked(x());
      break;
    case QEvent::MouseButtonDblClick:
      if (const auto clicked = x()) {
        chart_.doubleClicked(*clicked);
      }
      break;
    default:
      return QFrame::eventFilter(watched, event);
  }
  showHighlight();
  plot_->replot(QCustomPlot::rpQueuedReplot);
  return false;
}

void FiscalChartWidget::keyPressEvent(QKeyEvent* event) {
  const int step = event->key() == Qt::Key_Left ? -1 : event->key() == Qt::Key_Right ? 1 : 0;
  if (step == 0 || !chart_.interactiveDataSet || chart_.interactiveDataSet->entries.empty()) {
    QFrame::keyPressEvent(event);
    return;
  }
  const auto& entries = chart_.interactiveDataSet->entries;
  const auto last = static_cast<std::ptrdiff_t>(entries.size()) - 1;
  const auto present = chart_.currentMouseoverDataIndex();
  const std::ptrdiff_t next =
      present ? static_cast<std::ptrdiff_t>(*present) + step : (step > 0 ? 0 : last);
  chart_.pointerMovedTo(
      entries[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(next, 0, last))].x);
  showHighlight();
  plot_->replot(QCustomPlot::rpQueuedReplot);
}

void FiscalChartWidget::focusOutEvent(QFocusEvent* event) {
  QFrame::focusOutEvent(event);
  chart_.pointerLeft();
  showHighlight();
  plot_->replot(QCustomPlot::rpQueuedReplot);
}

void FiscalChartWidget::changeEvent(QEvent* event) {
  QFrame::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && plot_ != nullptr) {
    redraw();
  }
}

void FiscalChartWidget::resizeEvent(QResizeEvent* event) {
  QFrame::resizeEvent(event);
  // Labels are placed in pixels, and the number of ticks follows the height.
  plot_->replot();
  redraw();
}

}  // namespace corvane::desktop
