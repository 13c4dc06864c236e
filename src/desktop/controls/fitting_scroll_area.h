// The content of a sheet, which scrolls where the sheet would be higher than its window.
#pragma once

#include <QScrollArea>

namespace corvane::desktop {

/// As high as its content, and no higher than leaves the sheet around it inside of the window that
/// it belongs to: with large text a form may need more than a small screen has.
class FittingScrollArea : public QScrollArea {
 public:
  /// Takes `content`. The sheet takes `heightAround` pixels above and below it.
  FittingScrollArea(QWidget* content, int heightAround, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  int heightAround_;
};

}  // namespace corvane::desktop
