#include "desktop/workspace/source_list.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>

#include "desktop/look/qt_text.h"
#include "desktop/look/row_mime.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

QString watchlistDragType() {
  return qtText(MasterSourceViewController::watchlistEquityIndexPasteboardType);
}

}  // namespace

SourceRowsModel::SourceRowsModel(MasterSourceViewController& controller, Count count,
                                 QObject* parent)
    : QAbstractListModel(parent),
      controller_(controller),
      count_(count),
      rows_(static_cast<int>((controller.*count)())) {}

void SourceRowsModel::reload() {
  beginResetModel();
  rows_ = static_cast<int>((controller_.*count_)());
  endResetModel();
}

void SourceRowsModel::reloadRows(const std::vector<std::size_t>& rows) {
  for (const std::size_t row : rows) {
    emit dataChanged(index(static_cast<int>(row)), index(static_cast<int>(row)));
  }
}

int SourceRowsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

bool SourceRowsModel::has(const QModelIndex& index) const {
  return index.isValid() && static_cast<std::size_t>(index.row()) < (controller_.*count_)();
}

WatchlistModel::WatchlistModel(MasterSourceViewController& controller, QObject* parent)
    : SourceRowsModel(controller, &MasterSourceViewController::numberOfWatchlistRows, parent) {}

QVariant WatchlistModel::data(const QModelIndex& index, int role) const {
  if (!has(index)) {
    return {};
  }
  const EquitySourceRow row = controller().watchlistRow(static_cast<std::size_t>(index.row()));
  switch (role) {
    case Qt::DisplayRole:
      return qtText(row.symbol);
    case Qt::AccessibleTextRole:
    case Qt::ToolTipRole:
      return qtText(row.accessibleText());
    default:
      return {};
  }
}

Qt::ItemFlags WatchlistModel::flags(const QModelIndex& index) const {
  return index.isValid() ? QAbstractListModel::flags(index) | Qt::ItemIsDragEnabled
                         : Qt::ItemFlags(Qt::ItemIsDropEnabled);
}

QStringList WatchlistModel::mimeTypes() const {
  return {watchlistDragType()};
}

QMimeData* WatchlistModel::mimeData(const QModelIndexList& indexes) const {
  std::vector<std::size_t> rows;
  for (const QModelIndex& index : indexes) {
    rows.push_back(static_cast<std::size_t>(index.row()));
  }
  return mimeDataOfRows(watchlistDragType(), std::move(rows));
}

bool WatchlistModel::dropMimeData(const QMimeData* data, Qt::DropAction /*action*/, int row,
                                  int /*column*/, const QModelIndex& parent) {
  if (!parent.isValid()) {
    controller().moveWatchlistRows(rowsOfMimeData(watchlistDragType(), *data),
                                   static_cast<std::size_t>(row < 0 ? rowCount() : row));
  }
  // The rows have been moved already; the view must not remove any.
  return false;
}

PortfolioListModel::PortfolioListModel(MasterSourceViewController& controller, QObject* parent)
    : SourceRowsModel(controller, &MasterSourceViewController::numberOfPortfolioRows, parent) {}

QVariant PortfolioListModel::data(const QModelIndex& index, int role) const {
  if (!has(index)) {
    return {};
  }
  const PortfolioSourceRow row = controller().portfolioRow(static_cast<std::size_t>(index.row()));
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return qtText(row.name);
    case Qt::AccessibleTextRole:
      return qtText(row.accessibleText());
    default:
      return {};
  }
}

SourceListView::SourceListView(const QString& accessibleName, const QString& placeholder,
                               QWidget* parent)
    : QListView(parent), placeholder_(placeholder) {
  setObjectName(QStringLiteral("sourceList"));
  setAccessibleName(accessibleName);
  setUniformItemSizes(true);
  setFrameShape(NoFrame);
  setVerticalScrollMode(ScrollPerPixel);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setMouseTracking(true);
  takeColours();
}

void SourceListView::takeColours() {
  QPalette colours = palette();
  if (colours.color(QPalette::Base) != theme::sidebarBackground()) {
    colours.setColor(QPalette::Base, theme::sidebarBackground());
    setPalette(colours);
  }
}

void SourceListView::changeEvent(QEvent* event) {
  QListView::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) {
    takeColours();
  }
}

void SourceListView::paintEvent(QPaintEvent* event) {
  QListView::paintEvent(event);
  if (model() != nullptr && model()->rowCount() == 0) {
    QPainter painter(viewport());
    painter.setPen(theme::colour(Colour::Name::secondaryLabel));
    painter.drawText(viewport()->rect().adjusted(spacing::wide, spacing::narrow, -spacing::wide, 0),
                     Qt::AlignTop | Qt::AlignLeft | Qt::TextWordWrap, placeholder_);
  }
}

}  // namespace corvane::desktop
