// Draws a pie.
#pragma once

#include <QWidget>

#include "presentation/charts/pie_chart_view.h"

namespace corvane::desktop {

/// A ring with its labels in a list beside it, or below it where that leaves the ring more room.
/// The list names the slices in the order in which they go round, so that no colour need be
/// recognised.
class PieChartWidget : public QWidget {
 public:
  explicit PieChartWidget(const QString& accessibleName, QWidget* parent = nullptr);

  void setPie(const PieChartView& pie);

  [[nodiscard]] QSize sizeHint() const override { return {230, 240}; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {180, 120}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void drawRing(QPainter& painter, const QRectF& area) const;
  void drawList(QPainter& painter, const QRectF& area) const;

  PieChartView pie_;
};

}  // namespace corvane::desktop
