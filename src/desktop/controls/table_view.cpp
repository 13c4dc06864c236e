#include "desktop/controls/table_view.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <utility>

#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr std::string_view nameColumn = "name";
constexpr int mostRowsMeasured = 200;
constexpr int lettersOfName = 15;  // that are seen at least of the column of names

Qt::Alignment alignmentOf(const TableColumn& column, const AttributedText& text) {
  switch (text.alignment) {
    case TextAlignment::left:
      return Qt::AlignLeft | Qt::AlignVCenter;
    case TextAlignment::centre:
      return Qt::AlignCenter;
    case TextAlignment::right:
      return Qt::AlignRight | Qt::AlignVCenter;
    case TextAlignment::natural:
      break;
  }
  return (column.isNumeric ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

}  // namespace

TableModelAdapter::TableModelAdapter(const TableModel& table, QObject* parent)
    : QAbstractTableModel(parent), table_(table), rows_(static_cast<int>(table.numberOfRows())) {}

void TableModelAdapter::reload() {
  beginResetModel();
  rows_ = static_cast<int>(table_.numberOfRows());
  endResetModel();
}

void TableModelAdapter::update() {
  if (rows_ != static_cast<int>(table_.numberOfRows())) {
    reload();
  } else if (rows_ > 0) {
    emit dataChanged(index(0, 0), index(rows_ - 1, columnCount() - 1));
  }
}

void TableModelAdapter::appendRows() {
  const int rows = static_cast<int>(table_.numberOfRows());
  if (rows > rows_) {
    beginInsertRows({}, rows_, rows - 1);
    rows_ = rows;
    endInsertRows();
  }
}

int TableModelAdapter::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int TableModelAdapter::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(table_.columns().size());
}

QVariant TableModelAdapter::data(const QModelIndex& index, int role) const {
  // Between a change of the rows and the reload that follows, a view may still ask for the old
  // ones.
  if (!index.isValid() || static_cast<std::size_t>(index.row()) >= table_.numberOfRows()) {
    return {};
  }
  const auto row = static_cast<std::size_t>(index.row());
  const auto column = static_cast<std::size_t>(index.column());
  switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
      return qtText(table_.cell(row, column).plainText());
    case Qt::ToolTipRole: {
      const std::string note = table_.rowNote(row);
      return qtText(table_.cell(row, column).plainText() + (note.empty() ? "" : "\n" + note));
    }
    case Qt::AccessibleDescriptionRole:
      return qtText(table_.rowNote(row) +
                    (table_.trailOf(row, column) == nullptr ? "" : " Can be explained."));
    case Qt::BackgroundRole: {
      const auto background = table_.rowBackground(row);
      return background ? QVariant(theme::background(*background)) : QVariant();
    }
    case AttributedTextDelegate::attributedTextRole:
      return QVariant::fromValue(table_.cell(row, column));
    case AttributedTextDelegate::explainedRole:
      return table_.trailOf(row, column) != nullptr;
    case AttributedTextDelegate::briefTextRole:
      return QVariant::fromValue(table_.briefCell(row, column));
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(alignmentOf(table_.columns()[column], table_.cell(row, column)));
    case Qt::FontRole:
      return fontOf(row, column);
    default:
      return {};
  }
}

/// A row that stands out by its colour does so by slanted text as well.
QVariant TableModelAdapter::fontOf(std::size_t row, std::size_t column) const {
  const bool isNumeric = table_.columns()[column].isNumeric;
  if (table_.rowNote(row).empty()) {
    return isNumeric ? QVariant(theme::monospacedFont()) : QVariant();
  }
  QFont font = isNumeric ? theme::monospacedFont() : theme::font(theme::tableFactor);
  font.setItalic(true);
  return font;
}

QVariant TableModelAdapter::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) {
    return {};
  }
  const TableColumn& column = table_.columns().at(static_cast<std::size_t>(section));
  if (role == Qt::DisplayRole) {
    return qtText(column.title);
  }
  if (role == Qt::TextAlignmentRole) {
    return QVariant::fromValue(Qt::Alignment(column.isNumeric ? Qt::AlignRight : Qt::AlignLeft) |
                               Qt::AlignVCenter);
  }
  return {};
}

TableView::TableView(const QString& accessibleName, QWidget* parent)
    : QTableView(parent), leastStretchedWidth_(theme::widthOfLetters(lettersOfName)) {
  setAccessibleName(accessibleName);
  setFont(theme::font(theme::tableFactor));
  horizontalHeader()->setFont(theme::font(theme::figureFactor));
  setItemDelegate(new AttributedTextDelegate(this));
  setSelectionBehavior(SelectRows);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setAlternatingRowColors(true);
  setShowGrid(false);
  setWordWrap(false);
  setTabKeyNavigation(false);
  setCornerButtonEnabled(false);
  setHorizontalScrollMode(ScrollPerPixel);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 11);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setMinimumSectionSize(48);
  connect(horizontalHeader(), &QHeaderView::sectionResized, this, &TableView::noteWidth);
}

void TableView::setTable(TableModelAdapter* adapter, const TableModel& table) {
  table_ = &table;
  setModel(adapter);
  const auto found = std::ranges::find(table.columns(), nameColumn, &TableColumn::identifier);
  stretchedColumn_ =
      found == table.columns().end() ? 0 : static_cast<int>(found - table.columns().begin());
  showColumns();
  connect(adapter, &QAbstractItemModel::modelReset, this, &TableView::fitColumns);
  connect(adapter, &QAbstractItemModel::rowsInserted, this,
          [this](const QModelIndex&, int first, int last) { widenColumns(first, last); });
  fitColumns();
}

void TableView::keepingWidths(const std::function<void()>& reload) {
  keepsWidths_ = true;
  reload();
  keepsWidths_ = false;
}

void TableView::fitColumns() {
  if (keepsWidths_) {
    return;
  }
  isStale_ = model() != nullptr;
  if (isVisible()) {
    fitStaleColumns();
  }
}

void TableView::fitStaleColumns() {
  if (!std::exchange(isStale_, false)) {
    return;
  }
  fittedWidths_.clear();
  for (int column = 0; column < model()->columnCount(); ++column) {
    if (!isColumnHidden(column)) {
      fittedWidths_[column] = chosenWidth(column).value_or(fittingWidth(column));
    }
  }
  stretchedColumnWidth_ = fittedWidth(stretchedColumn_);
  stretch();
}

int TableView::fittedWidth(int column) const {
  const auto found = fittedWidths_.find(column);
  return found == fittedWidths_.end() ? 0 : found->second;
}

int TableView::fittingWidth(int column) const {
  // A heading that is not shown needs no room.
  const int heading =
      horizontalHeader()->isHidden() ? 0 : horizontalHeader()->sectionSizeHint(column);
  return std::max(heading, widthOfRows(column, 0, model()->rowCount() - 1));
}

int TableView::widthOfRows(int column, int first, int last) const {
  const int step = std::max(1, (last - first + 1) / mostRowsMeasured);
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  int width = 0;
  for (int row = first; row <= last; row += step) {
    const QModelIndex index = model()->index(row, column);
    const QVariant font = index.data(Qt::FontRole);
    option.font = font.isValid() ? font.value<QFont>() : this->font();
    width = std::max(width, itemDelegateForIndex(index)->sizeHint(option, index).width());
  }
  return width;
}

/// Rows that come one after the other only make columns wider, so that nothing jumps to and fro.
void TableView::widenColumns(int first, int last) {
  if (isStale_) {
    return;
  }
  for (int column = 0; column < model()->columnCount(); ++column) {
    if (isColumnHidden(column) || chosenWidth(column)) {
      continue;
    }
    const int needed = widthOfRows(column, first, last);
    if (column == stretchedColumn_) {
      stretchedColumnWidth_ = std::max(stretchedColumnWidth_, needed);
    } else if (needed > fittedWidth(column)) {
      fittedWidths_[column] = needed;
    }
  }
  stretch();
}

void TableView::setWidth(int column, int width) {
  isFitting_ = true;
  setColumnWidth(column, width);
  isFitting_ = false;
}

/// Showing and hiding a column changes its size as well, from nothing or to it.
void TableView::noteWidth(int column, int oldWidth, int width) {
  if (isFitting_ || oldWidth == 0 || width == 0) {
    return;
  }
  setChosenWidth(column, width);
  fittedWidths_[column] = width;
  emit columnSized();
}

int TableView::columnWithIdentifier(std::string_view identifier) const {
  const auto found = std::ranges::find(table_->columns(), identifier, &TableColumn::identifier);
  return found == table_->columns().end() ? -1
                                          : static_cast<int>(found - table_->columns().begin());
}

std::string TableView::columnIdentifier(int column) const {
  return std::string(table_->columns().at(static_cast<std::size_t>(column)).identifier);
}

bool TableView::isOffered(int column) const {
  return !table_->columns().at(static_cast<std::size_t>(column)).isHidden;
}

void TableView::showColumns() {
  for (int column = 0; column < model()->columnCount(); ++column) {
    setColumnHidden(column, !isOffered(column) || isPutAway(column));
  }
}

void TableView::setPutAway(int column, bool isPutAway) {
  if (isPutAway) {
    putAway_.insert(column);
  } else {
    putAway_.erase(column);
  }
}

std::optional<int> TableView::chosenWidth(int column) const {
  const auto found = chosenWidths_.find(column);
  return found == chosenWidths_.end() ? std::nullopt : std::optional(found->second);
}

void TableView::setChosenWidth(int column, std::optional<int> width) {
  if (width) {
    chosenWidths_[column] = *width;
  } else {
    chosenWidths_.erase(column);
  }
}

/// Where there is too little room the column of names gives way first, down to a readable width.
/// Where there is more than all columns need, they share it, so that no name is far from its
/// numbers.
void TableView::stretch() {
  int others = 0;
  int shares = 0;
  for (const auto& [column, width] : fittedWidths_) {
    others += column == stretchedColumn_ ? 0 : width;
    shares += chosenWidth(column) ? 0 : 1;
  }
  const bool isFixed = isColumnHidden(stretchedColumn_) || chosenWidth(stretchedColumn_);
  const int names = isFixed ? fittedWidth(stretchedColumn_) : stretchedColumnWidth_;
  const int left = viewport()->width() - others - names;
  const int share = left > 0 && shares > 0 ? left / shares : 0;
  for (const auto& [column, width] : fittedWidths_) {
    if (column != stretchedColumn_) {
      setWidth(column, width + (chosenWidth(column) ? 0 : share));
    }
  }
  if (isFixed) {
    if (fittedWidths_.contains(stretchedColumn_)) {
      setWidth(stretchedColumn_, names);
    }
    return;
  }
  const int least = std::min(stretchedColumnWidth_, leastStretchedWidth_);
  // What the division leaves over is the names'.
  setWidth(stretchedColumn_,
           left > 0 ? names + left - share * (shares - 1) : std::max(names + left, least));
}

int TableView::widthBesideStretchedColumn() const {
  int width = 2 * frameWidth() + style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
  for (int column = 0; column < horizontalHeader()->count(); ++column) {
    width += column == stretchedColumn_ || isColumnHidden(column) ? 0 : fittedWidth(column);
  }
  return width;
}

int TableView::neededWidth() {
  fitStaleColumns();
  return widthBesideStretchedColumn() + stretchedColumnWidth_;
}

int TableView::leastWidth() {
  fitStaleColumns();
  return widthBesideStretchedColumn() + std::min(stretchedColumnWidth_, leastStretchedWidth_);
}

void TableView::copySelectedRows() const {
  QStringList lines;
  QModelIndexList rows = selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end());
  for (const QModelIndex& row : rows) {
    QStringList cells;
    for (int column = 0; column < model()->columnCount(); ++column) {
      if (!isColumnHidden(column)) {
        cells.append(row.siblingAtColumn(column).data().toString());
      }
    }
    lines.append(cells.join(QLatin1Char('\t')));
  }
  if (!lines.isEmpty()) {
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
  }
}

void TableView::chooseRow(std::optional<std::size_t> row) {
  if (!row) {
    clearSelection();
    return;
  }
  const int place = static_cast<int>(*row);
  selectRow(place);
  scrollTo(model()->index(place, 0));
}

void TableView::setPlaceholderText(const QString& text) {
  placeholderText_ = text;
  viewport()->update();
}

void TableView::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    copySelectedRows();
    event->accept();
    return;
  }
  QTableView::keyPressEvent(event);
}

void TableView::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (model() != nullptr && model()->rowCount() == 0 && !placeholderText_.isEmpty()) {
    QPainter painter(viewport());
    painter.setPen(theme::colour(Colour::Name::secondaryLabel));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, placeholderText_);
  }
}

void TableView::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  if (model() != nullptr && !isStale_) {
    stretch();
  }
}

void TableView::showEvent(QShowEvent* event) {
  fitStaleColumns();
  QTableView::showEvent(event);
}

}  // namespace corvane::desktop
