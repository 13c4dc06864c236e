#include "desktop/controls/fitting_scroll_area.h"

#include <QEvent>
#include <QLayout>
#include <QScrollBar>
#include <algorithm>

namespace corvane::desktop {
namespace {

constexpr int leastSheet = 640;  // pixels, which any screen has

}  // namespace

FittingScrollArea::FittingScrollArea(QWidget* content, int heightAround, QWidget* parent)
    : QScrollArea(parent), heightAround_(heightAround) {
  setFrameShape(NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  setWidget(content);
  // It is as grey or dark as the sheet.
  viewport()->setAutoFillBackground(false);
  content->setAutoFillBackground(false);
}

QSize FittingScrollArea::sizeHint() const {
  QSize hint =
      widget()->sizeHint().expandedTo(widget()->minimumSize()).boundedTo(widget()->maximumSize());
  if (widget()->hasHeightForWidth()) {
    hint.setHeight(widget()->heightForWidth(hint.width()));
  }
  const QWidget* sheet = window();
  const QWidget* owner =
      sheet->parentWidget() == nullptr ? nullptr : sheet->parentWidget()->window();
  if (owner == nullptr) {
    return hint;
  }
  const int most = std::max(leastSheet, owner->height()) - heightAround_;
  return hint.height() <= most
             ? hint
             : QSize(hint.width() + verticalScrollBar()->sizeHint().width(), most);
}

bool FittingScrollArea::eventFilter(QObject* watched, QEvent* event) {
  if (watched == widget() && event->type() == QEvent::LayoutRequest) {
    updateGeometry();
    // At once, so that nothing is seen through a sheet that is still as low as before.
    if (parentWidget() != nullptr && parentWidget()->layout() != nullptr) {
      parentWidget()->layout()->activate();
    }
  }
  return QScrollArea::eventFilter(watched, event);
}

}  // namespace corvane::desktop
