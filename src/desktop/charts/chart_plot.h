// The plot of a chart, which keeps its pictures only as long as somebody may see them.
#pragma once

#include <qcustomplot.h>

namespace corvane::desktop {

/// A QCustomPlot paints into pictures of its own size, each of which takes four bytes a pixel. This
/// one makes them when it is painted and has none.
class ChartPlot : public QCustomPlot {
 public:
  /// What the plot shows has changed.
  void redraw() {
    if (isVisible() && !mPaintBuffers.isEmpty()) {
      replot(rpQueuedReplot);
    } else {
      releaseBuffers();
    }
  }

  void releaseBuffers() {
    mPaintBuffers.clear();
    update();
  }

  [[nodiscard]] int bufferCount() const { return static_cast<int>(mPaintBuffers.size()); }

 protected:
  void paintEvent(QPaintEvent* event) override {
    if (mPaintBuffers.isEmpty()) {
      replot(rpQueuedRefresh);
    }
    QCustomPlot::paintEvent(event);
  }
  void resizeEvent(QResizeEvent* /*event*/) override {
    setViewport(rect());
    releaseBuffers();
  }
  void hideEvent(QHideEvent* event) override {
    QCustomPlot::hideEvent(event);
    releaseBuffers();
  }
};

}  // namespace corvane::desktop
