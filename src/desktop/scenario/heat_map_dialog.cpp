#include "desktop/scenario/heat_map_dialog.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QProgressBar>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include "desktop/charts/chart_widget.h"
#include "desktop/controls/busy_bar.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr QSize dialogSize(980, 500);
constexpr int chartWidth = 300;
constexpr int leastChartWidth = 220;

}  // namespace

/// Hands the cells of a map to a table, with their colours as backgrounds.
class HeatMapModel : public QAbstractTableModel {
 public:
  HeatMapModel(const ScenarioHeatMap& map, QObject* parent)
      : QAbstractTableModel(parent), map_(map) {}

  void cellsDidChange() {
    emit dataChanged(index(0, 0), index(rowCount({}) - 1, columnCount({}) - 1));
    emit headerDataChanged(Qt::Horizontal, 0, columnCount({}) - 1);
    emit headerDataChanged(Qt::Vertical, 0, rowCount({}) - 1);
  }

  [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : static_cast<int>(ScenarioHeatMap::numberOfRows());
  }
  [[nodiscard]] int columnCount(const QModelIndex& parent) const override {
    return parent.isValid() ? 0 : static_cast<int>(ScenarioHeatMap::numberOfColumns());
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    const auto row = static_cast<std::size_t>(index.row());
    const auto column = static_cast<std::size_t>(index.column());
    switch (role) {
      case Qt::DisplayRole:
        return qtText(map_.cellText(row, column));
      case Qt::AccessibleTextRole:
      case Qt::ToolTipRole:
        return qtText(map_.cellDescription(row, column));
      case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::Alignment(Qt::AlignCenter));
      case Qt::BackgroundRole: {
        const auto colour = map_.cellColour(row, column);
        return colour ? QVariant(theme::background(*colour)) : QVariant();
      }
      default:
        return {};
    }
  }
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role) const override {
    const auto place = static_cast<std::size_t>(section);
    return role == Qt::DisplayRole
               ? QVariant(qtText(orientation == Qt::Vertical ? map_.rowTitle(place)
                                                             : map_.columnTitle(place)))
               : QVariant();
  }

 private:
  const ScenarioHeatMap& map_;
};

HeatMapDialog::HeatMapDialog(std::unique_ptr<ScenarioHeatMap> map, QWidget* parent)
    : QDialog(parent),
      map_(std::move(map)),
      model_(new HeatMapModel(*map_, this)),
      rows_(new QComboBox),
      columns_(new QComboBox),
      table_(new QTableView),
      progress_(makeBusyBar(QStringLiteral("Progress"))),
      chartTitle_(new QLabel),
      chart_(new ChartWidget(map_->rowChart, QStringLiteral("Returns of the row"))),
      note_(new QLabel) {
  setWindowTitle(QStringLiteral("Heat Map"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(dialogSize.boundedTo(parent != nullptr ? parent->window()->size() : dialogSize));
  table_->setAccessibleName(QStringLiteral("Returns"));
  table_->setModel(model_);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setTabKeyNavigation(false);
  table_->setCornerButtonEnabled(false);
  table_->setFont(theme::font(theme::tableFactor));
  for (QHeaderView* header : {table_->horizontalHeader(), table_->verticalHeader()}) {
    header->setSectionResizeMode(QHeaderView::Stretch);
    header->setFont(theme::font(theme::figureFactor));
  }
  // With large text the table scrolls rather than that its figures are cut.
  table_->horizontalHeader()->setMinimumSectionSize(
      QFontMetrics(table_->font()).horizontalAdvance(QStringLiteral("+10.00% ▲")) +
      spacing::narrow);
  note_->setWordWrap(true);

  auto* split = new QSplitter(Qt::Horizontal);
  split->setHandleWidth(1);
  split->setChildrenCollapsible(false);
  split->addWidget(table_);
  split->addWidget(makeChart());
  split->setStretchFactor(0, 1);
  split->setSizes({dialogSize.width() - chartWidth, chartWidth});
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(makeMenus());
  column->addWidget(split, 1);
  column->addWidget(note_);
  column->addWidget(buttons);
  connectControls();
  update();
  table_->setCurrentIndex(model_->index(0, 0));
}

HeatMapDialog::~HeatMapDialog() {
  // It draws what belongs to the map, which goes before the widgets do.
  delete chart_;
}

QWidget* HeatMapDialog::makeMenus() {
  auto* menus = new QWidget;
  auto* row = new QHBoxLayout(menus);
  row->setContentsMargins(0, 0, 0, 0);
  auto* down = new QLabel(QStringLiteral("&Down:"));
  auto* across = new QLabel(QStringLiteral("&Across:"));
  down->setBuddy(rows_);
  across->setBuddy(columns_);
  rows_->setAccessibleName(QStringLiteral("Down"));
  columns_->setAccessibleName(QStringLiteral("Across"));
  for (const ScenarioHeatMap::Parameter& parameter : map_->parameters()) {
    rows_->addItem(qtText(parameter.title));
    columns_->addItem(qtText(parameter.title));
  }
  for (QWidget* widget : std::initializer_list<QWidget*>{down, rows_, across, columns_}) {
    row->addWidget(widget);
  }
  row->addWidget(progress_);
  row->addStretch(1);
  return menus;
}

QWidget* HeatMapDialog::makeChart() {
  auto* side = new QWidget;
  side->setMinimumWidth(leastChartWidth);
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(spacing::narrow, 0, 0, 0);
  column->setSpacing(spacing::tight);
  chartTitle_->setFont(theme::font(1, QFont::DemiBold));
  chartTitle_->setWordWrap(true);
  column->addWidget(chartTitle_);
  column->addWidget(chart_, 1);
  return side;
}

void HeatMapDialog::connectControls() {
  connect(rows_, &QComboBox::activated, this,
          [this](int index) { map_->chooseRowParameter(static_cast<std::size_t>(index)); });
  connect(columns_, &QComboBox::activated, this,
          [this](int index) { map_->chooseColumnParameter(static_cast<std::size_t>(index)); });
  connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex& current) {
            if (current.isValid()) {
              map_->chartRow(static_cast<std::size_t>(current.row()));
            }
          });
  map_->presentError = [this](const Error& error) { showError(this, error); };
  changes_ = subscribe(map_->changeHandler, [this] { update(); });
}

void HeatMapDialog::update() {
  const ProgressIndicator progress = map_->progress();
  rows_->setCurrentIndex(static_cast<int>(map_->rowParameter()));
  columns_->setCurrentIndex(static_cast<int>(map_->columnParameter()));
  progress_->setRange(0, static_cast<int>(progress.maximum));
  progress_->setValue(static_cast<int>(progress.value));
  progress_->setVisible(progress.isAnimated);
  chartTitle_->setText(qtText(map_->chartTitle()));
  note_->setText(qtText(map_->noteText()));
  model_->cellsDidChange();
}

}  // namespace corvane::desktop
