#include "desktop/exchange/field_setup_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QItemSelection>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/exchange/broker_accessory.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/check_mark.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/row_mime.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

QString dragType() {
  return qtText(ImportExportFieldSetupViewController::draggedRowPasteboardType);
}

}  // namespace

FieldSetupModel::FieldSetupModel(ImportExportFieldSetupViewController& setup, QObject* parent)
    : QAbstractTableModel(parent), setup_(setup), rows_(static_cast<int>(setup.numberOfRows())) {}

void FieldSetupModel::reload() {
  const auto rows = static_cast<int>(setup_.numberOfRows());
  if (rows == rows_ && rows > 0) {
    // The menus stay, so the keyboard stays in the one that was used.
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnTotal - 1);
    Q_EMIT dataChanged(index(0, 0), index(rows - 1, columnTotal - 1));
    return;
  }
  beginResetModel();
  rows_ = rows;
  endResetModel();
}

int FieldSetupModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int FieldSetupModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columnTotal;
}

QVariant FieldSetupModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (!index.isValid() || row >= setup_.numberOfRows()) {
    return {};
  }
  if (index.column() == order) {
    if (role == Qt::TextAlignmentRole) {
      return QVariant::fromValue(Qt::Alignment(Qt::AlignRight | Qt::AlignVCenter));
    }
    return role == Qt::DisplayRole ? QVariant(qtText(setup_.orderText(row))) : QVariant();
  }
  if (index.column() == field) {
    return role == Qt::AccessibleTextRole ? QVariant(QStringLiteral("Field")) : QVariant();
  }
  const auto cell = setup_.exampleCell(row, index.column() - example1);
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return qtText(cell.text);
    case Qt::FontRole:
      return theme::monospacedFont();
    case Qt::ForegroundRole:
      return theme::colour(cell.isSecondary ? Colour::Name::secondaryLabel : Colour::Name::label);
    default:
      return {};
  }
}

QVariant FieldSetupModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal && role == Qt::AccessibleTextRole && section == order) {
    return QStringLiteral("Number");
  }
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
    return role == Qt::TextAlignmentRole
               ? QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter))
               : QVariant();
  }
  switch (section) {
    case order:
      return QStringLiteral("#");
    case field:
      return QStringLiteral("Field");
    default:
      return qtText(setup_.exampleTitle(section - example1));
  }
}

Qt::ItemFlags FieldSetupModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) {
    return Qt::ItemIsDropEnabled;
  }
  return QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled |
         (index.column() == field ? Qt::ItemIsEditable : Qt::NoItemFlags);
}

QStringList FieldSetupModel::mimeTypes() const {
  return {dragType()};
}

QMimeData* FieldSetupModel::mimeData(const QModelIndexList& indexes) const {
  std::set<std::size_t> rows;
  for (const QModelIndex& index : indexes) {
    rows.insert(static_cast<std::size_t>(index.row()));
  }
  return mimeDataOfRows(dragType(), {rows.begin(), rows.end()});
}

bool FieldSetupModel::dropMimeData(const QMimeData* data, Qt::DropAction /*action*/, int row,
                                   int /*column*/, const QModelIndex& parent) {
  if (!parent.isValid()) {
    const auto rows = rowsOfMimeData(dragType(), *data);
    setup_.moveFields({rows.begin(), rows.end()}, static_cast<std::size_t>(row < 0 ? rows_ : row));
  }
  // The fields have been moved already; the view must not remove any.
  return false;
}

FieldDelegate::FieldDelegate(ImportExportFieldSetupViewController& setup, QObject* parent)
    : QStyledItemDelegate(parent), setup_(setup) {}

QWidget* FieldDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                     const QModelIndex& index) const {
  const auto row = static_cast<std::size_t>(index.row());
  auto* menu = new QComboBox(parent);
  menu->setAccessibleName(QStringLiteral("Field of column %1").arg(row + 1));
  connect(menu, &QComboBox::activated, menu, [this, menu, row](int chosen) {
    const std::string field = utf8Text(menu->itemData(chosen).toString());
    // Later, since the change fills all menus anew, this one too.
    QMetaObject::invokeMethod(
        const_cast<FieldDelegate*>(this), [this, row, field] { setup_.changeField(row, field); },
        Qt::QueuedConnection);
  });
  return menu;
}

void FieldDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  using CheckState = ImportExportFieldSetupViewController::CheckState;
  auto* menu = qobject_cast<QComboBox*>(editor);
  const auto row = static_cast<std::size_t>(index.row());
  if (menu == nullptr || row >= setup_.numberOfRows()) {
    return;
  }
  menu->clear();
  for (const auto& item : setup_.fieldItems(row)) {
    // A field that another column has changes places with this one.
    const QString text = qtText(item.title);
    menu->addItem(item.state == CheckState::mixed ? text + QStringLiteral("  (in use)") : text,
                  qtText(item.field));
    if (item.state == CheckState::on) {
      menu->setCurrentIndex(menu->count() - 1);
    }
  }
}

FieldSetupDialog::FieldSetupDialog(std::shared_ptr<ImportExportFieldSetupViewController> setup,
                                   QWidget* parent)
    : QDialog(parent),
      setup_(std::move(setup)),
      model_(new FieldSetupModel(*setup_, this)),
      table_(new QTableView),
      header_(new QCheckBox),
      add_(new QPushButton(QStringLiteral("&Add"))),
      remove_(new QPushButton(QStringLiteral("&Remove"))),
      reset_(new QPushButton(QStringLiteral("R&eset"))),
      remember_(new QPushButton(QStringLiteral("Remember &Layout…"))) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  layOut();
  addShortcuts();
  connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (isUpdating_) {
      return;
    }
    std::set<std::size_t> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows()) {
      rows.insert(static_cast<std::size_t>(index.row()));
    }
    setup_->setSelectedRows(std::move(rows));
  });
  connect(header_, &QCheckBox::toggled, this,
          [this](bool isOn) { setup_->setIncludesHeaderRow(isOn); });
  connect(add_, &QPushButton::clicked, this, [this] { setup_->addField(); });
  connect(remove_, &QPushButton::clicked, this, [this] { setup_->removeSelectedFields(); });
  connect(reset_, &QPushButton::clicked, this, [this] { setup_->resetFields(); });
  connect(remember_, &QPushButton::clicked, this, &FieldSetupDialog::rememberLayout);
  remember_->setVisible(setup_->rememberLayoutHandler != nullptr);
  changes_ = subscribe(setup_->viewDidUpdate, [this] { update(); });
  update();
}

void FieldSetupDialog::reject() {
  setup_->cancel();
}

void FieldSetupDialog::layOut() {
  const bool isImport = setup_->mode() == ImportExportFieldSetupViewController::Mode::importing;
  setWindowTitle(isImport ? QStringLiteral("Import") : QStringLiteral("Export"));
  resize(780, 520);
  table_->setAccessibleName(QStringLiteral("Fields"));
  table_->setModel(model_);
  table_->setItemDelegateForColumn(FieldSetupModel::field, new FieldDelegate(*setup_, this));
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(setup_->allowsMultipleSelection() ? QAbstractItemView::ExtendedSelection
                                                             : QAbstractItemView::SingleSelection);
  table_->setDragDropMode(QAbstractItemView::InternalMove);
  table_->setDragDropOverwriteMode(false);
  table_->setShowGrid(false);
  table_->setAlternatingRowColors(true);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 16);
  QHeaderView* heading = table_->horizontalHeader();
  heading->setHighlightSections(false);
  heading->setSectionResizeMode(FieldSetupModel::order, QHeaderView::ResizeToContents);
  heading->resizeSection(FieldSetupModel::field, 220);
  heading->resizeSection(FieldSetupModel::example1, 210);
  heading->setStretchLastSection(true);

  auto* title = new QLabel(isImport ? QStringLiteral("Say what each column of the file holds.")
                                    : QStringLiteral("Choose the columns of the file."));
  title->setFont(theme::font(1.15, QFont::DemiBold));
  auto* row = new QHBoxLayout;
  row->addWidget(header_);
  row->addWidget(add_);
  row->addWidget(remove_);
  row->addWidget(reset_);
  row->addStretch(1);
  row->addWidget(remember_);

  auto* buttons = new QDialogButtonBox;
  auto* go = buttons->addButton(isImport ? QStringLiteral("Import") : QStringLiteral("Done"),
                                QDialogButtonBox::AcceptRole);
  auto* cancel = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
  connect(go, &QPushButton::clicked, this, [this] { setup_->submit(); });
  connect(cancel, &QPushButton::clicked, this, [this] { setup_->cancel(); });

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::section, spacing::wide, spacing::section, spacing::wide);
  column->setSpacing(spacing::medium);
  column->addWidget(title);
  column->addWidget(table_, 1);
  column->addLayout(row);
  if (QWidget* accessory = makeAccessory(setup_->accessoryViewController)) {
    column->addWidget(accessory);
  }
  column->addWidget(buttons);
  // Known to the dialog only once it is in it. No other button may take Return.
  for (QPushButton* button : {add_, remove_, reset_, remember_}) {
    button->setAutoDefault(false);
  }
  go->setDefault(true);
}

void FieldSetupDialog::rememberLayout() {
  auto* asked = new QInputDialog(this);
  asked->setAttribute(Qt::WA_DeleteOnClose);
  asked->setWindowTitle(QStringLiteral("Remember Layout"));
  asked->setLabelText(QStringLiteral("Name of the layout, such as “My Bank, transactions”:"));
  asked->setOkButtonText(QStringLiteral("Remember"));
  connect(asked, &QInputDialog::textValueSelected, this, [this](const QString& name) {
    if (name.trimmed().isEmpty()) {
      return;
    }
    try {
      const auto file = setup_->rememberLayoutHandler(utf8Text(name.trimmed()));
      showAlert(this, AlertKind::message, QStringLiteral("The layout is kept."),
                QStringLiteral("“Import Statement…” now reads files with these headings. What the "
                               "layout knows stands in %1.")
                    .arg(qtPath(file)),
                {QStringLiteral("OK")});
    } catch (const Error& error) {
      showError(this, error);
    }
  });
  asked->open();
}

void FieldSetupDialog::addShortcuts() {
  const auto add = [this](const QKeySequence& keys, auto perform) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, perform);
  };
  add(QKeySequence::Undo, [this] { setup_->undoManager->undo(); });
  add(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), [this] { setup_->undoManager->redo(); });
  add(QKeySequence(Qt::ALT | Qt::Key_Up), [this] { moveSelection(-1); });
  add(QKeySequence(Qt::ALT | Qt::Key_Down), [this] { moveSelection(1); });
}

void FieldSetupDialog::moveSelection(int by) {
  const std::set<std::size_t> rows = setup_->selectedRows();
  if (rows.empty()) {
    return;
  }
  const std::size_t first = *rows.begin();
  const std::size_t last = *rows.rbegin();
  if (by < 0 && first > 0) {
    setup_->moveFields(rows, first - 1);
  } else if (by > 0 && last + 1 < setup_->numberOfRows()) {
    setup_->moveFields(rows, last + 2);
  }
}

void FieldSetupDialog::update() {
  isUpdating_ = true;
  model_->reload();
  for (int row = 0; row < model_->rowCount(); ++row) {
    table_->openPersistentEditor(model_->index(row, FieldSetupModel::field));
  }
  QItemSelection selection;
  for (const std::size_t row : setup_->selectedRows()) {
    selection.select(model_->index(static_cast<int>(row), 0),
                     model_->index(static_cast<int>(row), FieldSetupModel::columnTotal - 1));
  }
  table_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  isUpdating_ = false;

  const auto header = setup_->importHasHeaderRowCheckboxButton();
  header_->setVisible(!header.isHidden);
  showChecked(*header_, header.isOn);
  header_->setText(qtText(header.title));
  const auto show = [](QPushButton* button, const Button& state) {
    button->setVisible(!state.isHidden);
    button->setEnabled(state.isEnabled);
  };
  show(add_, setup_->addButton());
  show(remove_, setup_->removeButton());
  show(reset_, setup_->resetButton());
}

}  // namespace corvane::desktop
