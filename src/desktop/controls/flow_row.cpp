#include "desktop/controls/flow_row.h"

#include <QWidget>
#include <algorithm>

#include "desktop/look/theme.h"

namespace corvane::desktop {

FlowRow::FlowRow(QWidget* parent) : QLayout(parent) {
  setContentsMargins(0, 0, 0, 0);
  setSpacing(spacing::narrow);
}

FlowRow::~FlowRow() {
  qDeleteAll(items_);
}

void FlowRow::addItem(QLayoutItem* item) {
  items_.append(item);
  invalidate();
}

void FlowRow::addStretch() {
  addItem(new QSpacerItem(0, 0, QSizePolicy::Expanding));
}

int FlowRow::count() const {
  return static_cast<int>(items_.size());
}

QLayoutItem* FlowRow::itemAt(int index) const {
  return items_.value(index);
}

QLayoutItem* FlowRow::takeAt(int index) {
  return index >= 0 && index < items_.size() ? items_.takeAt(index) : nullptr;
}

int FlowRow::heightForWidth(int width) const {
  return flow(QRect(0, 0, width, 0), false);
}

QSize FlowRow::sizeHint() const {
  QSize hint(0, 0);
  for (const QLayoutItem* item : items_) {
    if (!item->isEmpty()) {
      const QSize wanted = item->sizeHint();
      hint.setWidth(hint.width() + (hint.width() > 0 ? spacing() : 0) + wanted.width());
      hint.setHeight(std::max(hint.height(), wanted.height()));
    }
  }
  return hint;
}

QSize FlowRow::minimumSize() const {
  QSize least;
  for (const QLayoutItem* item : items_) {
    if (!item->isEmpty()) {
      least = least.expandedTo(item->sizeHint());
    }
  }
  return least;
}

void FlowRow::setGeometry(const QRect& area) {
  QLayout::setGeometry(area);
  flow(area, true);
}

void FlowRow::invalidate() {
  QLayout::invalidate();
  if (QWidget* widget = parentWidget()) {
    widget->updateGeometry();
  }
}

int FlowRow::flow(const QRect& area, bool places) const {
  int y = area.y();
  for (qsizetype first = 0; first < items_.size();) {
    qsizetype end = first;
    int width = 0;
    int height = 0;
    for (; end < items_.size(); ++end) {
      if (items_[end]->isEmpty()) {
        continue;
      }
      const QSize wanted = items_[end]->sizeHint();
      const int wider = width + (width > 0 ? spacing() : 0) + wanted.width();
      if (width > 0 && wider > area.width()) {
        break;
      }
      width = wider;
      height = std::max(height, wanted.height());
    }
    if (places) {
      placeLine(first, end, QRect(area.x(), y, area.width(), height), area.width() - width);
    }
    y += height + (end < items_.size() ? spacing() : 0);
    first = end;
  }
  return y - area.y();
}

void FlowRow::placeLine(qsizetype first, qsizetype end, const QRect& line, int room) const {
  int x = line.x();
  for (qsizetype i = first; i < end; ++i) {
    if (items_[i]->spacerItem() != nullptr && x > line.x()) {
      x += std::max(room, 0);
    }
    if (items_[i]->isEmpty()) {
      continue;
    }
    const QSize wanted = items_[i]->sizeHint();
    const int y = line.y() + (line.height() - wanted.height()) / 2;
    items_[i]->setGeometry(QRect(QPoint(x, y), wanted));
    x += wanted.width() + spacing();
  }
}

}  // namespace corvane::desktop
