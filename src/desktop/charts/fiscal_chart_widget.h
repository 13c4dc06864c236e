// Draws a money chart.
#pragma once

#include <QFrame>

#include "presentation/charts/fiscal_chart_view.h"

class QCPItemStraightLine;
class QCPItemTracer;
class QCustomPlot;
class QLabel;

namespace corvane::desktop {

class AttributedLabel;

/// Shows a FiscalChartView and tells it what the pointer does; the arrow keys do the same. The
/// chart must outlive this; this takes its changeHandler.
class FiscalChartWidget : public QFrame {
  Q_OBJECT

 public:
  explicit FiscalChartWidget(FiscalChartView& chart, const QString& accessibleName,
                             QWidget* parent = nullptr);
  ~FiscalChartWidget() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void redraw();
  void styleAxes();
  void addSeries(const ChartDataSet& series);
  void addBandLabels(const std::vector<ChartDataSet>& bands);
  void addSeriesLabel(const ChartDataSet& series, double x, double pixelY, Qt::Alignment alignment);
  void addDates();
  void addOpeningLine();
  void setRanges();
  void showHighlight();
  [[nodiscard]] std::optional<double> nearestX(double pixel) const;

  FiscalChartView& chart_;
  QCustomPlot* plot_;
  QLabel* noData_;
  AttributedLabel* tooltip_;
  QCPItemTracer* marker_ = nullptr;
  QCPItemStraightLine* markerLine_ = nullptr;
};

}  // namespace corvane::desktop
