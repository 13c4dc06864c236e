#include "desktop/charts/chart_widget.h"

#include <qcustomplot.h>

#include <QAccessible>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QSaveFile>
#include <QScreen>
#include <QStackedLayout>
#include <QSvgGenerator>
#include <algorithm>
#include <cmath>

#include "desktop/charts/chart_data_dialog.h"
#include "desktop/charts/chart_drawing.h"
#include "desktop/charts/chart_plot.h"
#include "desktop/charts/painted_item.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "presentation/charts/chart_table.h"

namespace corvane::desktop {
namespace {

constexpr int leastHeight = 130;
constexpr double zoomStep = 0.5;
constexpr double markerRadius = 4;
constexpr double pictureScale = 2;  // so that a picture is sharp on paper as well
constexpr int selectionAlpha = 40;
const QString overlayName = QStringLiteral("overlay");

AttributedLabel* makePanel(QWidget* parent, Qt::WindowFlags flags) {
  auto* panel = new AttributedLabel(parent);
  panel->setWindowFlags(flags);
  panel->setAutoFillBackground(true);
  panel->setBackgroundRole(QPalette::ToolTipBase);
  panel->setFrameShape(QFrame::Box);
  panel->setFrameShadow(QFrame::Plain);
  panel->setMargin(static_cast<int>(BaseChartView::tooltipInset));
  panel->setAttribute(Qt::WA_TransparentForMouseEvents);
  panel->setAttribute(Qt::WA_ShowWithoutActivating);
  panel->hide();
  return panel;
}

void paintSelection(QCPPainter& painter, const BaseChartView& chart, const ChartLayout& layout) {
  const auto span = chart.selection();
  if (!span) {
    return;
  }
  const ChartLayout::Box& area = layout.plotArea();
  const double left = layout.xPixel(span->from);
  const double right = layout.xPixel(span->to);
  QColor shade = theme::colour(Colour::Name::label);
  painter.setPen(QPen(shade, 1));
  painter.drawLine(QLineF(left, area.top, left, area.bottom));
  painter.drawLine(QLineF(right, area.top, right, area.bottom));
  shade.setAlpha(selectionAlpha);
  painter.fillRect(QRectF(left, area.top, right - left, area.height()), shade);
}

/// A line down the chart and a ring on the value.
void paintMarker(QCPPainter& painter, const ChartEntry& entry, const ChartLayout& layout,
                 Qt::PenStyle style, const QColor& fill) {
  const QColor colour = theme::colour(Colour::Name::label);
  const ChartLayout::Box& area = layout.plotArea();
  const double x = layout.xPixel(entry.x);
  painter.setAntialiasing(false);
  painter.setPen(QPen(colour, 1, style));
  painter.drawLine(QLineF(x, area.top, x, area.bottom));
  painter.setAntialiasing(true);
  painter.setPen(QPen(colour, 1.5));
  painter.setBrush(fill);
  painter.drawEllipse(QPointF(x, layout.yPixel(entry.y)), markerRadius, markerRadius);
}

/// Tells assistive technology what the chart shows and what is at its cursor.
class AccessibleChart : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit AccessibleChart(ChartWidget* widget)
      : QAccessibleWidget(widget, QAccessible::Chart), chart_(widget->chart()) {}

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Value ? qtText(chart_.cursorText()) : QAccessibleWidget::text(kind);
  }
  void* interface_cast(QAccessible::InterfaceType type) override {
    return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                               : QAccessibleWidget::interface_cast(type);
  }
  QVariant currentValue() const override {
    const auto index = chart_.currentMouseoverDataIndex();
    const ChartEntry* entry = index ? chart_.entryAt(*index) : nullptr;
    return entry != nullptr ? QVariant(entry->y) : QVariant();
  }
  void setCurrentValue(const QVariant& /*value*/) override {}
  QVariant maximumValue() const override { return extreme(&std::max<double>); }
  QVariant minimumValue() const override { return extreme(&std::min<double>); }
  QVariant minimumStepSize() const override { return {}; }

 private:
  QVariant extreme(const double& (*better)(const double&, const double&)) const {
    if (!chart_.interactiveDataSet || chart_.interactiveDataSet->entries.empty()) {
      return {};
    }
    double found = chart_.interactiveDataSet->entries.front().y;
    for (const ChartEntry& entry : chart_.interactiveDataSet->entries) {
      found = better(found, entry.y);
    }
    return found;
  }

  const BaseChartView& chart_;
};

QAccessibleInterface* accessibleChart(const QString& /*className*/, QObject* object) {
  auto* widget = qobject_cast<ChartWidget*>(object);
  return widget != nullptr ? new AccessibleChart(widget) : nullptr;
}

bool writeFile(const QString& path, const QByteArray& bytes) {
  QSaveFile file(path);
  return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

}  // namespace

ChartWidget::ChartWidget(BaseChartView& chart, const QString& accessibleName, QWidget* parent)
    : QFrame(parent),
      chart_(chart),
      plot_(new ChartPlot),
      noData_(new QLabel),
      tooltip_(makePanel(this, Qt::ToolTip | Qt::FramelessWindowHint)),
      selectionLabel_(makePanel(plot_, Qt::Widget)) {
  static const bool isFactoryInstalled = [] {
    QAccessible::installFactory(accessibleChart);
    return true;
  }();
  static_cast<void>(isFactoryInstalled);
  setAccessibleName(accessibleName);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumHeight(leastHeight);
  plot_->setFocusPolicy(Qt::NoFocus);
  plot_->setMouseTracking(true);
  plot_->installEventFilter(this);
  plot_->setNoAntialiasingOnDrag(false);
  overlay_ = plot_->layer(overlayName);
  overlay_->setMode(QCPLayer::lmLogical);
  noData_->setAlignment(Qt::AlignCenter);
  noData_->setWordWrap(true);
  noData_->setForegroundRole(QPalette::PlaceholderText);

  auto* pages = new QStackedLayout(this);
  pages->addWidget(plot_);
  pages->addWidget(noData_);
  addActions();
  changes_ = subscribe(chart_.changeHandler, [this] { redraw(); });
  highlightChanges_ = subscribe(chart_.highlightChangeHandler, [this] { updateOverlay(); });
  redraw();
}

ChartWidget::~ChartWidget() = default;

QWidget& ChartWidget::tooltip() const {
  return *tooltip_;
}

void ChartWidget::addActions() {
  auto* table = new QAction(QStringLiteral("Show Data as Table…"), this);
  table->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_T));
  table->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  connect(table, &QAction::triggered, this, &ChartWidget::showDataTable);
  auto* saving = new QAction(QStringLiteral("Save Data…"), this);
  connect(saving, &QAction::triggered, this, &ChartWidget::saveData);
  auto* picture = new QAction(QStringLiteral("Save Picture…"), this);
  connect(picture, &QAction::triggered, this, &ChartWidget::savePicture);
  QWidget::addActions({table, saving, picture});
}

void ChartWidget::redraw() {
  const bool isEmpty = chart_.isEmpty();
  setAccessibleDescription(qtText(isEmpty ? chart_.noDataText : chart_.accessibleText));
  noData_->setText(qtText(chart_.noDataText));
  auto* pages = static_cast<QStackedLayout*>(layout());
  pages->setCurrentWidget(isEmpty ? static_cast<QWidget*>(noData_) : plot_);
  plot_->clearItems();
  plot_->clearPlottables();
  layout_.reset();
  if (!isEmpty && plot_->width() > 0 && plot_->height() > 0) {
    layout_ = std::make_unique<ChartLayout>(chart_, chartSurface(plot_->width(), plot_->height()));
    fillPlot(*plot_, chart_, *layout_);
    addOverlay();
  }
  plot_->redraw();
  updateTooltip();
  updateSelectionLabel();
}

void ChartWidget::addOverlay() {
  new PaintedItem(*plot_, overlayName, true, [this](QCPPainter& painter) {
    const auto entryAt = [&](std::optional<std::size_t> index) {
      return index ? chart_.entryAt(*index) : nullptr;
    };
    paintSelection(painter, chart_, *layout_);
    if (const ChartEntry* entry = entryAt(chart_.highlightedDataIndex())) {
      paintMarker(painter, *entry, *layout_, Qt::SolidLine, theme::colour(Colour::Name::label));
    }
    if (const ChartEntry* entry = entryAt(chart_.currentMouseoverDataIndex())) {
      paintMarker(painter, *entry, *layout_, Qt::DotLine, palette().color(QPalette::Window));
    }
  });
}

/// With a buffer of its own a move of the pointer paints nothing but what follows it. That takes as
/// much memory as the chart, so it is there as long as there is something in it.
void ChartWidget::repaintOverlay() {
  const bool isNeeded =
      chart_.selection() || chart_.highlightedDataIndex() || chart_.currentMouseoverDataIndex();
  const auto mode = isNeeded ? QCPLayer::lmBuffered : QCPLayer::lmLogical;
  if (overlay_->mode() != mode) {
    overlay_->setMode(mode);
    plot_->redraw();
  } else if (isNeeded && plot_->bufferCount() > 0) {
    overlay_->replot();
  }
}

void ChartWidget::updateOverlay() {
  if (layout_ != nullptr) {
    repaintOverlay();
  }
  updateTooltip();
  updateSelectionLabel();
  const std::string cursor = chart_.cursorText();
  setAccessibleDescription(qtText(cursor.empty() ? chart_.accessibleText : cursor));
  QAccessibleValueChangeEvent event(this, qtText(cursor));
  QAccessible::updateAccessibility(&event);
}

void ChartWidget::updateTooltip() {
  const auto index = chart_.currentMouseoverDataIndex();
  const ChartEntry* entry = index ? chart_.entryAt(*index) : nullptr;
  const auto text = chart_.tooltip();
  // Where keys move the end of a selection, what that says is enough.
  const bool isSelecting = !pointer_ && chart_.selection();
  if (layout_ == nullptr || entry == nullptr || !text || text->isEmpty() || !isVisible() ||
      isSelecting) {
    tooltip_->hide();
    return;
  }
  tooltip_->setAttributedText(*text);
  tooltip_->adjustSize();
  const QPointF at =
      pointer_.value_or(QPointF(layout_->xPixel(entry->x), layout_->yPixel(entry->y)));
  const QPoint pointer = plot_->mapToGlobal(at.toPoint());
  const QScreen* shown = QGuiApplication::screenAt(pointer);
  const QRect area = (shown != nullptr ? shown : screen())->availableGeometry();
  const ChartLayout::Box place =
      tooltipPlace(pointer.x(), pointer.y(), tooltip_->width(), tooltip_->height(),
                   {static_cast<double>(area.left()), static_cast<double>(area.top()),
                    static_cast<double>(area.right()), static_cast<double>(area.bottom())});
  tooltip_->move(qRound(place.left), qRound(place.top));
  tooltip_->show();
  tooltip_->raise();
}

void ChartWidget::updateSelectionLabel() {
  const auto text = chart_.selectionText();
  selectionLabel_->setVisible(layout_ != nullptr && text.has_value());
  if (layout_ == nullptr || !text) {
    return;
  }
  selectionLabel_->setAttributedText(*text);
  selectionLabel_->adjustSize();
  const ChartLayout::Box& area = layout_->plotArea();
  const double middle =
      (layout_->xPixel(chart_.selection()->from) + layout_->xPixel(chart_.selection()->to)) / 2;
  const double left = std::clamp(middle - selectionLabel_->width() / 2.0, area.left,
                                 std::max(area.left, area.right - selectionLabel_->width()));
  selectionLabel_->move(qRound(left), qRound(area.top) + spacing::tight);
}

std::optional<double> ChartWidget::xNear(const QPointF& position) const {
  const auto entry =
      layout_ != nullptr ? layout_->nearestEntry(position.x(), position.y()) : std::nullopt;
  return entry ? std::optional(chart_.interactiveDataSet->entries[*entry].x) : std::nullopt;
}

void ChartWidget::pointerMoved(const QPointF& position, bool isDragging) {
  pointer_ = position;
  if (isDragging && pressed_ && layout_ != nullptr && !chart_.isEmpty()) {
    const double distance = std::abs(position.x() - pressed_->x());
    if (!selectionAnchor_ && distance >= QGuiApplication::styleHints()->startDragDistance()) {
      selectionAnchor_ = xNear(*pressed_);
    }
    if (selectionAnchor_) {
      const ChartLayout::Box& area = layout_->plotArea();
      const auto end = xNear({std::clamp(position.x(), area.left, area.right),
                              std::clamp(position.y(), area.top, area.bottom)});
      chart_.pointerLeft();
      chart_.select(end ? std::optional(BaseChartView::Span{*selectionAnchor_, *end})
                        : std::nullopt);
      return;
    }
  }
  const auto before = chart_.currentMouseoverDataIndex();
  chart_.pointerMovedTo(xNear(position));
  if (before == chart_.currentMouseoverDataIndex()) {
    updateTooltip();
  }
}

void ChartWidget::pointerReleased(const QPointF& position) {
  if (!pressed_) {
    return;
  }
  const bool hasSelected = selectionAnchor_.has_value();
  pressed_.reset();
  selectionAnchor_.reset();
  if (!hasSelected) {
    chart_.select(std::nullopt);
    chart_.clicked(xNear(position));
  }
}

bool ChartWidget::eventFilter(QObject* watched, QEvent* event) {
  const auto position = [&] { return static_cast<QMouseEvent*>(event)->position(); };
  const auto isLeft = [&] { return static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton; };
  switch (event->type()) {
    case QEvent::MouseMove:
      pointerMoved(position(),
                   static_cast<QMouseEvent*>(event)->buttons().testFlag(Qt::LeftButton));
      break;
    case QEvent::Leave:
      pointer_.reset();
      chart_.pointerLeft();
      break;
    case QEvent::MouseButtonPress:
      setFocus(Qt::MouseFocusReason);
      if (isLeft()) {
        pressed_ = position();
      }
      break;
    case QEvent::MouseButtonRelease:
      if (isLeft()) {
        pointerReleased(position());
      }
      break;
    case QEvent::MouseButtonDblClick:
      if (const auto x = isLeft() ? xNear(position()) : std::nullopt) {
        chart_.doubleClicked(*x);
      }
      break;
    case QEvent::Resize:
      redraw();
      return false;
    case QEvent::Wheel: {
      const auto* wheel = static_cast<QWheelEvent*>(event);
      if (layout_ != nullptr && wheel->modifiers().testFlag(Qt::ControlModifier)) {
        chart_.zoomBy(std::pow(zoomStep, wheel->angleDelta().y() / 240.0),
                      layout_->xAt(wheel->position().x()));
        return true;
      }
      return false;
    }
    default:
      return QFrame::eventFilter(watched, event);
  }
  return false;
}

std::optional<std::size_t> ChartWidget::cursorPosition() const {
  const auto index = chart_.currentMouseoverDataIndex();
  const ChartEntry* entry = index ? chart_.entryAt(*index) : nullptr;
  return entry != nullptr ? std::optional(static_cast<std::size_t>(
                                entry - chart_.interactiveDataSet->entries.data()))
                          : std::nullopt;
}

bool ChartWidget::moveCursor(const QKeyEvent& event) {
  using Step = ChartLayout::Step;
  const bool isTenth = event.modifiers().testFlag(Qt::ControlModifier);
  std::optional<Step> step;
  switch (event.key()) {
    case Qt::Key_Left:
      step = isTenth ? Step::tenthBack : Step::back;
      break;
    case Qt::Key_Right:
      step = isTenth ? Step::tenthForward : Step::forward;
      break;
    case Qt::Key_Home:
      step = Step::first;
      break;
    case Qt::Key_End:
      step = Step::last;
      break;
    default:
      return false;
  }
  const auto present = cursorPosition();
  const auto next = layout_->nextEntry(present, *step);
  if (!next) {
    return false;
  }
  const auto& entries = chart_.interactiveDataSet->entries;
  if (event.modifiers().testFlag(Qt::ShiftModifier)) {
    selectionAnchor_ = selectionAnchor_.value_or(entries[present.value_or(*next)].x);
    chart_.select(BaseChartView::Span{*selectionAnchor_, entries[*next].x});
  } else {
    selectionAnchor_.reset();
  }
  pointer_.reset();
  chart_.scrollTo(entries[*next].x);
  chart_.pointerMovedTo(entries[*next].x);
  return true;
}

void ChartWidget::zoom(double factor) {
  const auto position = cursorPosition();
  const BaseChartView::Span shown = chart_.shownXRange();
  chart_.zoomBy(factor, position ? chart_.interactiveDataSet->entries[*position].x
                                 : (shown.from + shown.to) / 2);
}

bool ChartWidget::zoomOrAct(const QKeyEvent& event) {
  const auto position = cursorPosition();
  const auto x =
      position ? std::optional(chart_.interactiveDataSet->entries[*position].x) : std::nullopt;
  switch (event.key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      zoom(zoomStep);
      return true;
    case Qt::Key_Minus:
      zoom(1 / zoomStep);
      return true;
    case Qt::Key_0:
      chart_.resetZoom();
      return true;
    case Qt::Key_Space:
      chart_.clicked(x);
      return x.has_value();
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (x) {
        chart_.doubleClicked(*x);
      }
      return x.has_value();
    case Qt::Key_Escape: {
      const bool hasSomething = x || chart_.selection() || chart_.highlightedDataIndex();
      selectionAnchor_.reset();
      chart_.select(std::nullopt);
      chart_.pointerLeft();
      if (hasSomething) {
        chart_.clicked(std::nullopt);
      }
      return hasSomething;
    }
    default:
      return false;
  }
}

void ChartWidget::keyPressEvent(QKeyEvent* event) {
  if (layout_ == nullptr || (!moveCursor(*event) && !zoomOrAct(*event))) {
    QFrame::keyPressEvent(event);
  }
}

void ChartWidget::focusOutEvent(QFocusEvent* event) {
  QFrame::focusOutEvent(event);
  if (!pointer_) {
    chart_.pointerLeft();
  }
}

void ChartWidget::contextMenuEvent(QContextMenuEvent* event) {
  if (!chart_.isEmpty()) {
    QMenu::exec(actions(), event->globalPos(), nullptr, this);
  }
}

void ChartWidget::showDataTable() {
  if (!chart_.isEmpty()) {
    ChartDataDialog::open(this, chart_, accessibleName());
  }
}

bool ChartWidget::writeData(const QString& path) const {
  return writeFile(path, QByteArray::fromStdString(ChartTable(chart_).csv()));
}

bool ChartWidget::writePicture(const QString& path) {
  if (layout_ == nullptr) {
    return false;
  }
  if (!path.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive)) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return plot_->toPixmap(0, 0, pictureScale).save(&buffer, "PNG") && writeFile(path, bytes);
  }
  QByteArray bytes;
  QBuffer buffer(&bytes);
  QSvgGenerator generator;
  generator.setOutputDevice(&buffer);
  generator.setSize(plot_->size());
  generator.setViewBox(plot_->rect());
  generator.setTitle(accessibleName());
  generator.setDescription(qtText(chart_.accessibleText));
  QCPPainter painter;
  if (!painter.begin(&generator)) {
    return false;
  }
  painter.setMode(QCPPainter::pmVectorized);
  painter.setMode(QCPPainter::pmNoCaching);
  painter.fillRect(plot_->rect(), plot_->palette().color(QPalette::Window));
  plot_->toPainter(&painter, plot_->width(), plot_->height());
  painter.end();
  return writeFile(path, bytes);
}

void ChartWidget::savePicture() {
  const QString path = QFileDialog::getSaveFileName(
      this, QStringLiteral("Save Picture"), accessibleName() + QStringLiteral(".png"),
      QStringLiteral("PNG picture (*.png);;SVG drawing (*.svg)"));
  if (!path.isEmpty() && !writePicture(path)) {
    QMessageBox::warning(this, QStringLiteral("Save Picture"),
                         QStringLiteral("The picture could not be written to “%1”.").arg(path));
  }
}

void ChartWidget::saveData() {
  const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save Data"),
                                                    accessibleName() + QStringLiteral(".csv"),
                                                    QStringLiteral("Delimited text (*.csv)"));
  if (!path.isEmpty() && !writeData(path)) {
    QMessageBox::warning(this, QStringLiteral("Save Data"),
                         QStringLiteral("The data could not be written to “%1”.").arg(path));
  }
}

void ChartWidget::changeEvent(QEvent* event) {
  QFrame::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
    redraw();
  }
}

void ChartWidget::hideEvent(QHideEvent* event) {
  QFrame::hideEvent(event);
  tooltip_->hide();
  overlay_->setMode(QCPLayer::lmLogical);
}

}  // namespace corvane::desktop
