// Shows a chart of any kind but a pie.
#pragma once

#include <QFrame>
#include <QPointF>
#include <memory>
#include <optional>

#include "platform/async/subscription.h"
#include "presentation/charts/base_chart_view.h"
#include "presentation/charts/chart_layout.h"

class QCPLayer;
class QLabel;

namespace corvane::desktop {

class AttributedLabel;
class ChartPlot;

/// Draws a BaseChartView and tells it what pointer and keys do. The chart must outlive this, which
/// takes its changeHandler and highlightChangeHandler; where it has no data, its noDataText stands
/// in its place.
///
/// Arrows move along the data, with Ctrl by a tenth of it, with Shift they select; Home and End
/// lead to the ends, plus and minus zoom, 0 shows everything, Space is a click and Return a double
/// click on the value at the cursor, Escape a click on nothing. Dragging selects a span.
/// Ctrl+Shift+T opens the data as a table; that, the data as a file and the picture are in the
/// context menu too.
class ChartWidget : public QFrame {
  Q_OBJECT

 public:
  explicit ChartWidget(BaseChartView& chart, const QString& accessibleName,
                       QWidget* parent = nullptr);
  ~ChartWidget() override;

  [[nodiscard]] const BaseChartView& chart() const { return chart_; }

  void showDataTable();
  /// Write files, as SVG where the name ends so and else as PNG; false where that fails.
  [[nodiscard]] bool writePicture(const QString& path);
  [[nodiscard]] bool writeData(const QString& path) const;

  /// The panel beside the pointer, a window of its own.
  [[nodiscard]] QWidget& tooltip() const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void redraw();
  void addOverlay();
  void updateOverlay();
  void repaintOverlay();
  void updateTooltip();
  void updateSelectionLabel();
  void addActions();
  void savePicture();
  void saveData();

  void pointerMoved(const QPointF& position, bool isDragging);
  void pointerReleased(const QPointF& position);
  [[nodiscard]] std::optional<double> xNear(const QPointF& position) const;

  /// Whether the key was one of the chart's.
  bool moveCursor(const QKeyEvent& event);
  bool zoomOrAct(const QKeyEvent& event);
  void zoom(double factor);
  [[nodiscard]] std::optional<std::size_t> cursorPosition() const;

  BaseChartView& chart_;
  std::unique_ptr<ChartLayout> layout_;  ///< none where there is nothing to draw
  ChartPlot* plot_;
  QCPLayer* overlay_ = nullptr;
  QLabel* noData_;
  AttributedLabel* tooltip_;
  AttributedLabel* selectionLabel_;
  std::optional<QPointF> pointer_;         ///< none where keys move the cursor
  std::optional<QPointF> pressed_;         ///< where the button went down
  std::optional<double> selectionAnchor_;  ///< the end of the selection that stays
  Subscription changes_;
  Subscription highlightChanges_;
};

}  // namespace corvane::desktop
