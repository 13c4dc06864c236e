// A thing on a plot that is painted by a function.
#pragma once

#include <qcustomplot.h>

#include <functional>

namespace corvane::desktop {

/// Paints in pixels of the plot. The plot owns it.
class PaintedItem : public QCPAbstractItem {
 public:
  using Paint = std::function<void(QCPPainter&)>;

  /// `isClipped` keeps it inside the axes.
  PaintedItem(QCustomPlot& plot, const QString& layer, bool isClipped, Paint paint)
      : QCPAbstractItem(&plot), paint_(std::move(paint)) {
    setLayer(layer);
    setClipToAxisRect(isClipped);
    setSelectable(false);
  }

  double selectTest(const QPointF& /*position*/, bool /*onlySelectable*/,
                    QVariant* /*details*/) const override {
    return -1;
  }

 protected:
  void draw(QCPPainter* painter) override { paint_(*painter); }

 private:
  Paint paint_;
};

}  // namespace corvane::desktop
