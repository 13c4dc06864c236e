// The days of an equity as a bar over time.
#pragma once

#include <QWidget>
#include <functional>

#include "desktop/look/attributed_text_view.h"
#include "presentation/coverage/coverage_view_controller.h"

namespace corvane::desktop {

/// Draws the cells of the column with the bars in place of their text. The controller must outlive
/// this.
class CoverageBarDelegate : public AttributedTextDelegate {
 public:
  explicit CoverageBarDelegate(const CoverageViewController& controller, QObject* parent = nullptr);
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  /// Room for a bar, however long the text is that says the same.
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex& index) const override;

 private:
  const CoverageViewController& controller_;
};

/// What the parts of a bar mean, in as many lines as the width makes of it.
class CoverageLegend : public QWidget {
 public:
  explicit CoverageLegend(QWidget* parent = nullptr);
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }
  [[nodiscard]] bool hasHeightForWidth() const override { return true; }
  [[nodiscard]] int heightForWidth(int width) const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  [[nodiscard]] int lineHeight() const;
  /// The number of lines in `width`, which `painter` draws if there is one.
  int flow(int width, QPainter* painter) const;
};

}  // namespace corvane::desktop
