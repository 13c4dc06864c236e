#include "desktop/workspace/source_list.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>

#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/row_mime.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int rowMargin = 8;
constexpr int rowRadius = 6;
constexpr double thumbnailWidth = 56;

QString dragType() {
  return qtText(MasterSourceViewController::watchlistEquityIndexPasteboardType);
}

/// The closing prices of a session as a line in `area`.
void drawThumbnail(QPainter& painter, const QRectF& area, const QuoteChartView& chart,
                   const QColor& colour) {
  const auto& entries = chart.lineChartDataSet.entries;
  if (entries.size() < 2) {
    return;
  }
  const auto [low, high] = std::ranges::minmax(entries, {}, &ChartEntry::y);
  const double first = chart.xAxisMinimum.value_or(entries.front().x);
  const double last = std::max(chart.xAxisMaximum.value_or(entries.back().x), first + 1e-9);
  const double span = std::max(high.y - low.y, 1e-12);
  QPolygonF line;
  for (const ChartEntry& entry : entries) {
    line.append(QPointF(area.left() + (entry.x - first) / (last - first) * area.width(),
                        area.bottom() - (entry.y - low.y) / span * area.height()));
  }
  painter.save();
  painter.setPen(QPen(colour, 1.3));
  painter.setBrush(Qt::NoBrush);
  painter.drawPolyline(line);
  painter.restore();
}

}  // namespace

WatchlistModel::WatchlistModel(MasterSourceViewController& controller, QObject* parent)
    : QAbstractListModel(parent),
      controller_(controller),
      rows_(static_cast<int>(controller.numberOfWatchlistRows())) {}

void WatchlistModel::reload() {
  beginResetModel();
  rows_ = static_cast<int>(controller_.numberOfWatchlistRows());
  endResetModel();
}

void WatchlistModel::reloadRows(const std::vector<std::size_t>& rows) {
  for (const std::size_t row : rows) {
    emit dataChanged(index(static_cast<int>(row)), index(static_cast<int>(row)));
  }
}

int WatchlistModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

QVariant WatchlistModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() ||
      static_cast<std::size_t>(index.row()) >= controller_.numberOfWatchlistRows()) {
    return {};
  }
  const EquitySourceRow row = controller_.watchlistRow(static_cast<std::size_t>(index.row()));
  switch (role) {
    case Qt::DisplayRole:
      return qtText(row.symbol);
    case Qt::AccessibleTextRole:
      return qtText(row.accessibleText());
    case Qt::ToolTipRole:
      return qtText(row.name);
    default:
      return {};
  }
}

Qt::ItemFlags WatchlistModel::flags(const QModelIndex& index) const {
  return index.isValid() ? QAbstractListModel::flags(index) | Qt::ItemIsDragEnabled
                         : Qt::ItemFlags(Qt::ItemIsDropEnabled);
}

QStringList WatchlistModel::mimeTypes() const {
  return {dragType()};
}

QMimeData* WatchlistModel::mimeData(const QModelIndexList& indexes) const {
  std::vector<std::size_t> rows;
  for (const QModelIndex& index : indexes) {
    rows.push_back(static_cast<std::size_t>(index.row()));
  }
  return mimeDataOfRows(dragType(), std::move(rows));
}

bool WatchlistModel::dropMimeData(const QMimeData* data, Qt::DropAction /*action*/, int row,
                                  int /*column*/, const QModelIndex& parent) {
  if (!parent.isValid()) {
    controller_.moveWatchlistRows(rowsOfMimeData(dragType(), *data),
                                  static_cast<std::size_t>(row < 0 ? rows_ : row));
  }
  // The rows have been moved already; the view must not remove any.
  return false;
}

PortfolioListModel::PortfolioListModel(MasterSourceViewController& controller, QObject* parent)
    : QAbstractListModel(parent),
      controller_(controller),
      rows_(static_cast<int>(controller.numberOfPortfolioRows())) {}

void PortfolioListModel::reload() {
  beginResetModel();
  rows_ = static_cast<int>(controller_.numberOfPortfolioRows());
  endResetModel();
}

void PortfolioListModel::reloadRows(const std::vector<std::size_t>& rows) {
  for (const std::size_t row : rows) {
    emit dataChanged(index(static_cast<int>(row)), index(static_cast<int>(row)));
  }
}

int PortfolioListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

QVariant PortfolioListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() ||
      static_cast<std::size_t>(index.row()) >= controller_.numberOfPortfolioRows()) {
    return {};
  }
  const PortfolioSourceRow row = controller_.portfolioRow(static_cast<std::size_t>(index.row()));
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

SourceRowDelegate::SourceRowDelegate(const MasterSourceViewController& controller,
                                     bool showsPortfolios, QObject* parent)
    : QStyledItemDelegate(parent), controller_(controller), showsPortfolios_(showsPortfolios) {}

QSize SourceRowDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& /*index*/) const {
  return {200, 2 * QFontMetrics(option.font).height() + 16};
}

void SourceRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
  if (index.data().isNull()) {
    return;
  }
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  const bool isSelected = option.state.testFlag(QStyle::State_Selected);
  const QRectF box = QRectF(option.rect).adjusted(rowMargin, 1, -rowMargin, -1);
  if (isSelected) {
    painter->setPen(Qt::NoPen);
    painter->setBrush(option.palette.color(QPalette::Highlight));
    painter->drawRoundedRect(box, rowRadius, rowRadius);
  } else if (option.state.testFlag(QStyle::State_HasFocus)) {
    painter->setPen(option.palette.color(QPalette::Highlight));
    painter->drawRoundedRect(box, rowRadius, rowRadius);
  }
  const QColor strong = isSelected ? option.palette.color(QPalette::HighlightedText)
                                   : theme::colour(Colour::Name::label);
  const QColor weak = isSelected ? strong : theme::colour(Colour::Name::secondaryLabel);
  const QFont bold = theme::font(1, QFont::DemiBold);
  const QFont small = theme::font(0.9);
  const QRectF inner = box.adjusted(rowMargin, 5, -rowMargin, -5);
  const QRectF above(inner.left(), inner.top(), inner.width(), inner.height() / 2);
  const QRectF below(inner.left(), above.bottom(), inner.width(), inner.height() / 2);

  AttributedText name;
  AttributedText value;
  AttributedText left;
  AttributedText right;
  std::shared_ptr<const QuoteChartView> thumbnail;
  const auto place = static_cast<std::size_t>(index.row());
  if (showsPortfolios_) {
    const PortfolioSourceRow row = controller_.portfolioRow(place);
    name.append(row.name);
    value.append(row.value);
    right = row.gain;
  } else {
    const EquitySourceRow row = controller_.watchlistRow(place);
    name.append(row.symbol);
    value.append(row.price);
    left.append(row.name);
    right = row.change;
    thumbnail = row.thumbnail;
  }
  const double valueWidth = QFontMetricsF(bold).horizontalAdvance(qtText(value.plainText()));
  const double rightWidth = QFontMetricsF(small).horizontalAdvance(qtText(right.plainText()));
  drawLine(*painter, above.adjusted(0, 0, -valueWidth - spacing::narrow, 0), name, bold, strong,
           Qt::AlignLeft, !isSelected);
  drawLine(*painter, above, value, bold, strong, Qt::AlignRight, !isSelected);
  drawLine(*painter, below, right, small, weak, Qt::AlignRight, !isSelected);
  double leftEnd = below.right() - rightWidth - spacing::narrow;
  if (thumbnail != nullptr && !thumbnail->isEmpty()) {
    const QRectF area(
        inner.right() - std::max(valueWidth, rightWidth) - spacing::medium - thumbnailWidth,
        inner.top() + 4, thumbnailWidth, inner.height() - 8);
    if (area.left() > inner.left() + 60) {
      drawThumbnail(*painter, area, *thumbnail,
                    isSelected ? strong : theme::colour(thumbnail->movementColour()));
      leftEnd = area.left() - spacing::narrow;
    }
  }
  drawLine(*painter, QRectF(below.left(), below.top(), leftEnd - below.left(), below.height()),
           left, small, weak, Qt::AlignLeft, !isSelected);
  painter->restore();
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
