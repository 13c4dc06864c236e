#include "desktop/controls/frozen_columns.h"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionHeader>
#include <QTableView>
#include <functional>

#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

/// A surface that lets the mouse through and is drawn by a function.
class Overlay : public QWidget {
 public:
  Overlay(QWidget* parent, std::function<void(QPainter&)> draw)
      : QWidget(parent), draw_(std::move(draw)) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    draw_(painter);
    painter.setPen(theme::colour(Colour::Name::separator));
    painter.drawLine(width() - 1, 0, width() - 1, height());
  }

 private:
  std::function<void(QPainter&)> draw_;
};

}  // namespace

FrozenColumns::FrozenColumns(QTableView& table, int count)
    : QObject(&table),
      table_(table),
      count_(count),
      rows_(new Overlay(&table, [this](QPainter& painter) { drawRows(painter); })),
      header_(new Overlay(&table, [this](QPainter& painter) { drawHeader(painter); })) {
  table.viewport()->installEventFilter(this);
  connect(table.horizontalScrollBar(), &QScrollBar::valueChanged, this, &FrozenColumns::place);
  connect(table.horizontalHeader(), &QHeaderView::sectionResized, this, &FrozenColumns::place);
}

bool FrozenColumns::isShown() const {
  return rows_->isVisibleTo(&table_);
}

bool FrozenColumns::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::Paint:
      // Whatever changes the table changes what lies over it.
      rows_->update();
      break;
    case QEvent::Resize:
    case QEvent::Move:
      place();
      break;
    default:
      break;
  }
  return QObject::eventFilter(watched, event);
}

int FrozenColumns::width() const {
  int width = 0;
  for (int place = 0; place < count_; ++place) {
    width += table_.columnWidth(table_.horizontalHeader()->logicalIndex(place));
  }
  return width;
}

void FrozenColumns::place() {
  const QRect body = table_.viewport()->geometry();
  const QRect heading = table_.horizontalHeader()->geometry();
  const int frozen = width();
  // Where they would leave too little room for the others, they scroll like these.
  const bool isShown = table_.horizontalScrollBar()->value() > 0 && frozen < body.width() * 2 / 3;
  rows_->setGeometry(body.x(), body.y(), frozen, body.height());
  header_->setGeometry(body.x(), heading.y(), frozen, heading.height());
  rows_->setVisible(isShown);
  header_->setVisible(isShown);
  rows_->raise();
  header_->raise();
  rows_->update();
  header_->update();
}

void FrozenColumns::drawRows(QPainter& painter) const {
  painter.fillRect(rows_->rect(), table_.palette().base());
  if (table_.model() == nullptr) {
    return;
  }
  QStyleOptionViewItem option;
  option.initFrom(table_.viewport());
  option.state &= ~QStyle::State_MouseOver;
  option.widget = &table_;
  option.font = table_.font();
  option.showDecorationSelected = true;
  const QStyle::State plainState = option.state & ~QStyle::State_HasFocus;
  for (int row = table_.rowAt(0); row >= 0 && row < table_.model()->rowCount(); ++row) {
    const int top = table_.rowViewportPosition(row);
    if (top > rows_->height()) {
      break;
    }
    int left = 0;
    for (int place = 0; place < count_; ++place) {
      const int column = table_.horizontalHeader()->logicalIndex(place);
      const QModelIndex index = table_.model()->index(row, column);
      option.rect = QRect(left, top, table_.columnWidth(column), table_.rowHeight(row));
      option.state = plainState;
      option.state.setFlag(QStyle::State_Selected, table_.selectionModel()->isSelected(index));
      option.features.setFlag(QStyleOptionViewItem::Alternate,
                              table_.alternatingRowColors() && row % 2 == 1);
      table_.style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &option, &painter, &table_);
      table_.itemDelegate()->paint(&painter, option, index);
      left += table_.columnWidth(column);
    }
  }
}

void FrozenColumns::drawHeader(QPainter& painter) const {
  QHeaderView& header = *table_.horizontalHeader();
  painter.setFont(header.font());
  int left = 0;
  for (int place = 0; place < count_; ++place) {
    const int column = header.logicalIndex(place);
    QStyleOptionHeader option;
    option.initFrom(&header);
    option.state &= ~QStyle::State_MouseOver;
    option.rect = QRect(left, 0, table_.columnWidth(column), header.height());
    option.section = column;
    option.position = place == 0 ? QStyleOptionHeader::Beginning : QStyleOptionHeader::Middle;
    option.text = table_.model()->headerData(column, Qt::Horizontal).toString();
    option.textAlignment =
        Qt::Alignment(table_.model()
                          ->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole)
                          .value<Qt::Alignment>());
    header.style()->drawControl(QStyle::CE_Header, &option, &painter, &header);
    left += option.rect.width();
  }
}

}  // namespace corvane::desktop
