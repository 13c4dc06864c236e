// Draws a pie.
#pragma once

#include <QWidget>

#include "presentation/charts/pie_chart_view.h"

namespace corvane::desktop {

class PieRing;
class TableModelAdapter;
class TableView;

/// A ring, and its slices with their shares in a list beside it, or below it where that leaves the
/// ring more room. The list scrolls, so that every slice can be read, and names them from the
/// largest to the smallest; the slice of its selected row is drawn bold.
class PieChartWidget : public QWidget {
 public:
  explicit PieChartWidget(const QString& accessibleName, QWidget* parent = nullptr);
  ~PieChartWidget() override;

  void setPie(const PieChartView& pie);

  [[nodiscard]] QSize sizeHint() const override { return {230, 240}; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {180, 120}; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void place();

  PieChartView pie_;
  PieRing* ring_;
  TableModelAdapter* adapter_;
  TableView* list_;
};

}  // namespace corvane::desktop
