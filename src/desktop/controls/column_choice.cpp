#include "desktop/controls/column_choice.h"

#include <QHeaderView>
#include <QMenu>
#include <QTimer>
#include <algorithm>
#include <optional>
#include <vector>

#include "desktop/controls/table_view.h"
#include "desktop/look/qt_text.h"

namespace corvane::desktop {
namespace {

constexpr int leastColumnWidth = 24;
constexpr int greatestColumnWidth = 2000;

/// One column in the settings: its identifier, then "=" and its width in pixels where it was sized,
/// or a "-" before it where it is hidden.
struct KeptColumn {
  std::string identifier;
  bool isHidden = false;
  std::optional<int> width = std::nullopt;
};

KeptColumn keptColumn(const std::string& text) {
  KeptColumn column{.identifier = text};
  if (text.starts_with('-')) {
    column.isHidden = true;
    column.identifier.erase(0, 1);
  }
  if (const auto sign = column.identifier.find('='); sign != std::string::npos) {
    bool isNumber = false;
    const int width = qtText(column.identifier.substr(sign + 1)).toInt(&isNumber);
    if (isNumber) {
      column.width = std::clamp(width, leastColumnWidth, greatestColumnWidth);
    }
    column.identifier.resize(sign);
  }
  return column;
}

}  // namespace

ColumnChoice::ColumnChoice(TableView& table, UserDefaults& defaults)
    : QObject(&table),
      table_(table),
      defaults_(defaults),
      key_("columns." + utf8Text(table.objectName())) {
  QHeaderView& heading = *table.horizontalHeader();
  heading.setSectionsMovable(true);
  heading.setFirstSectionMovable(true);
  heading.setContextMenuPolicy(Qt::CustomContextMenu);
  heading.setToolTip(QStringLiteral("Drag to move or to size columns; more by the other button"));
  connect(&heading, &QWidget::customContextMenuRequested, this, &ColumnChoice::openMenu);
  connect(&heading, &QHeaderView::sectionMoved, this, &ColumnChoice::keepSoon);
  connect(&table, &TableView::columnSized, this, &ColumnChoice::keepSoon);
  apply();
}

void ColumnChoice::apply() {
  const auto kept = defaults_.stringList(key_);
  if (!kept) {
    return;
  }
  isApplying_ = true;
  QHeaderView& heading = *table_.horizontalHeader();
  int place = 0;
  for (const std::string& text : *kept) {
    const KeptColumn wanted = keptColumn(text);
    const int column = table_.columnWithIdentifier(wanted.identifier);
    if (column < 0) {
      continue;
    }
    heading.moveSection(heading.visualIndex(column), place);
    ++place;
    table_.setPutAway(column, wanted.isHidden && shownCount() > 1);
    table_.setChosenWidth(column, wanted.width);
    table_.showColumns();
  }
  table_.fitColumns();
  isApplying_ = false;
}

void ColumnChoice::keepSoon() {
  if (isApplying_ || isKeeping_) {
    return;
  }
  // A drag tells of every pixel.
  isKeeping_ = true;
  QTimer::singleShot(500, this, &ColumnChoice::keep);
}

void ColumnChoice::keep() {
  isKeeping_ = false;
  const QHeaderView& heading = *table_.horizontalHeader();
  std::vector<std::string> texts;
  for (int place = 0; place < heading.count(); ++place) {
    const int column = heading.logicalIndex(place);
    std::string text = table_.isPutAway(column) ? "-" : "";
    text += table_.columnIdentifier(column);
    if (const auto width = table_.chosenWidth(column)) {
      text += "=" + std::to_string(*width);
    }
    texts.push_back(std::move(text));
  }
  defaults_.setStringList(key_, texts);
}

void ColumnChoice::reset() {
  isApplying_ = true;
  QHeaderView& heading = *table_.horizontalHeader();
  for (int column = 0; column < heading.count(); ++column) {
    heading.moveSection(heading.visualIndex(column), column);
    table_.setChosenWidth(column, std::nullopt);
    table_.setPutAway(column, false);
  }
  table_.showColumns();
  table_.fitColumns();
  isApplying_ = false;
  defaults_.remove(key_);
}

int ColumnChoice::shownCount() const {
  int count = 0;
  for (int column = 0; column < table_.horizontalHeader()->count(); ++column) {
    count += table_.isColumnHidden(column) ? 0 : 1;
  }
  return count;
}

void ColumnChoice::setShown(int column, bool isShown) {
  table_.setPutAway(column, !isShown);
  table_.showColumns();
  table_.fitColumns();
  keep();
}

void ColumnChoice::fillMenu(QMenu& menu) {
  const QHeaderView& heading = *table_.horizontalHeader();
  for (int place = 0; place < heading.count(); ++place) {
    const int column = heading.logicalIndex(place);
    if (!table_.isOffered(column)) {
      continue;
    }
    QAction* action = menu.addAction(table_.model()->headerData(column, Qt::Horizontal).toString());
    action->setCheckable(true);
    action->setChecked(!table_.isPutAway(column));
    // Without any column there would be no heading left to get one back.
    action->setEnabled(table_.isPutAway(column) || shownCount() > 1);
    connect(action, &QAction::toggled, this,
            [this, column](bool isShown) { setShown(column, isShown); });
  }
  menu.addSeparator();
  connect(menu.addAction(QStringLiteral("Reset Columns")), &QAction::triggered, this,
          &ColumnChoice::reset);
}

void ColumnChoice::openMenu(const QPoint& place) {
  auto* menu = new QMenu(&table_);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  fillMenu(*menu);
  menu->popup(table_.horizontalHeader()->mapToGlobal(place));
}

}  // namespace corvane::desktop
