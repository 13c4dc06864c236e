#include "desktop/scenario/heat_map_dialog.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QTableView>
#include <QVBoxLayout>

#include "desktop/controls/busy_bar.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr QSize dialogSize(760, 460);

}  // namespace

/// Hands the cells of a map to a table, with their colours as backgrounds.
class HeatMapModel : public QAbstractTableModel {
 public:
  HeatMapModel(const ScenarioHeatMap& map, QObject* parent)
      : QAbstractTableModel(parent), map_(map) {}

  void cellsDidChange() {
    emit dataChanged(index(0, 0), index(rowCount({}) - 1, columnCount({}) - 1));
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
        return colour ? QVariant(theme::colour(*colour)) : QVariant();
      }
      default:
        return {};
    }
  }
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation /*orientation*/,
                                    int role) const override {
    return role == Qt::DisplayRole
               ? QVariant(qtText(ScenarioHeatMap::valueTitle(static_cast<std::size_t>(section))))
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
      note_(new QLabel) {
  setWindowTitle(QStringLiteral("Heat Map"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(dialogSize);
  rows_->setAccessibleName(QStringLiteral("Down"));
  columns_->setAccessibleName(QStringLiteral("Across"));
  table_->setAccessibleName(QStringLiteral("Returns"));
  table_->setModel(model_);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setTabKeyNavigation(false);
  table_->setCornerButtonEnabled(false);
  table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  table_->verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  note_->setWordWrap(true);

  auto* top = new QHBoxLayout;
  auto* down = new QLabel(QStringLiteral("&Down:"));
  auto* across = new QLabel(QStringLiteral("&Across:"));
  down->setBuddy(rows_);
  across->setBuddy(columns_);
  for (QWidget* widget :
       {static_cast<QWidget*>(down), static_cast<QWidget*>(rows_), static_cast<QWidget*>(across),
        static_cast<QWidget*>(columns_), static_cast<QWidget*>(progress_)}) {
    top->addWidget(widget);
  }
  top->addStretch(1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  auto* column = new QVBoxLayout(this);
  column->addLayout(top);
  column->addWidget(table_, 1);
  column->addWidget(note_);
  column->addWidget(buttons);

  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(rows_, &QComboBox::activated, this,
          [this](int index) { map_->chooseRowParameter(static_cast<std::size_t>(index)); });
  connect(columns_, &QComboBox::activated, this,
          [this](int index) { map_->chooseColumnParameter(static_cast<std::size_t>(index)); });
  map_->presentError = [this](const Error& error) { showError(this, error); };
  changes_ = subscribe(map_->changeHandler, [this] { update(); });
  fillMenus();
  update();
}

HeatMapDialog::~HeatMapDialog() = default;

void HeatMapDialog::fillMenus() {
  for (const ScenarioHeatMap::Parameter& parameter : map_->parameters()) {
    rows_->addItem(qtText(parameter.title));
    columns_->addItem(qtText(parameter.title));
  }
}

void HeatMapDialog::update() {
  const ProgressIndicator progress = map_->progress();
  rows_->setCurrentIndex(static_cast<int>(map_->rowParameter()));
  columns_->setCurrentIndex(static_cast<int>(map_->columnParameter()));
  progress_->setRange(0, static_cast<int>(progress.maximum));
  progress_->setValue(static_cast<int>(progress.value));
  progress_->setVisible(progress.isAnimated);
  note_->setText(qtText(map_->noteText()));
  model_->cellsDidChange();
}

}  // namespace corvane::desktop
