// The plot of a chart, which keeps its pictures only as long as somebody may see them.
#pragma once

#include <qcustomplot.h>

#include <QCoreApplication>
#include <QEvent>

namespace corvane::desktop {

/// A QCustomPlot paints into pictures of its own size, each of which takes four bytes a pixel. This
/// one makes them when it is painted, and has none while nobody sees it.
class ChartPlot : public QCustomPlot {
 public:
  ChartPlot() {
    // The base has asked for a first drawing, which would make pictures of a plot that is hidden.
    QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
    mReplotQueued = false;
  }

  /// What the plot shows has changed.
  void redraw() {
    if (isVisible()) {
      isStale_ = true;
      update();
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
    if (isStale_ || mPaintBuffers.isEmpty()) {
      isStale_ = false;
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

 private:
  bool isStale_ = false;
};

}  // namespace corvane::desktop
