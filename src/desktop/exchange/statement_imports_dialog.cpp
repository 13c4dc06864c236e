#include "desktop/exchange/statement_imports_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/controls/table_view.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {

StatementImportsDialog::StatementImportsDialog(std::unique_ptr<StatementImportsController> imports,
                                               QWidget* parent)
    : QDialog(parent),
      imports_(std::move(imports)),
      table_(new TableView(QStringLiteral("Imports"))),
      rows_(new TableModelAdapter(*imports_, this)),
      takeBack_(new QPushButton(QStringLiteral("&Take Back Import…"))) {
  setWindowTitle(QStringLiteral("Imports of Statements"));
  setWindowModality(Qt::WindowModal);
  setAttribute(Qt::WA_DeleteOnClose);
  table_->setTable(rows_, *imports_);
  table_->setPlaceholderText(
      QStringLiteral("No statement has been imported into this portfolio yet."));
  auto* heading = new QLabel(windowTitle());
  heading->setFont(theme::font(1.3, QFont::DemiBold));
  auto* hint = new QLabel(
      QStringLiteral("Taking back an import deletes what it recorded, as far as it is still there "
                     "unchanged. That can be undone."));
  hint->setWordWrap(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  buttons->addButton(takeBack_, QDialogButtonBox::ActionRole);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(takeBack_, &QPushButton::clicked, this, [this] {
    if (const auto row = selectedRow()) {
      imports_->takeBackAction(*row);
    }
  });
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::section, spacing::wide, spacing::section, spacing::wide);
  column->setSpacing(spacing::narrow);
  column->addWidget(heading);
  column->addWidget(hint);
  column->addWidget(table_, 1);
  column->addWidget(buttons);
  constexpr int width = 760;
  constexpr int height = 400;
  resize(width, height);
  imports_->changeHandler = [this] { showState(); };
  connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    takeBack_->setEnabled(selectedRow() && imports_->canTakeBack(*selectedRow()));
  });
  showState();
  table_->chooseRow(imports_->numberOfRows() > 0 ? std::optional(std::size_t{0}) : std::nullopt);
}

StatementImportsDialog::~StatementImportsDialog() {
  imports_->changeHandler = nullptr;
}

std::optional<std::size_t> StatementImportsDialog::selectedRow() const {
  const QModelIndexList rows = table_->selectionModel()->selectedRows();
  return rows.isEmpty() ? std::nullopt
                        : std::optional(static_cast<std::size_t>(rows.constFirst().row()));
}

void StatementImportsDialog::showState() {
  const auto chosen = selectedRow();
  rows_->reload();
  table_->fitColumns();
  table_->chooseRow(chosen);
  takeBack_->setEnabled(chosen && imports_->canTakeBack(*chosen));
}

}  // namespace corvane::desktop
