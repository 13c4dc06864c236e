#include "desktop/transactions/edit_bulk_transactions_dialog.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/controls/equity_combo_box_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/transactions/date_entry_view.h"
#include "desktop/transactions/entry_buttons.h"

namespace corvane::desktop {
namespace {

constexpr int lettersOfField = 42;

}  // namespace

EditBulkTransactionsDialog* EditBulkTransactionsDialog::open(QWidget* parent,
                                                             std::unique_ptr<Form> form,
                                                             Revise revise) {
  if (form == nullptr || form->transactions.empty()) {
    return nullptr;
  }
  auto* dialog = new EditBulkTransactionsDialog(parent, std::move(form), std::move(revise));
  static_cast<QDialog*>(dialog)->open();
  return dialog;
}

EditBulkTransactionsDialog::EditBulkTransactionsDialog(QWidget* parent, std::unique_ptr<Form> form,
                                                       Revise revise)
    : QDialog(parent),
      form_(std::move(form)),
      revise_(std::move(revise)),
      summary_(new QLabel),
      equity_(new EquityComboBoxView(form_->equityComboBox, QStringLiteral("New equity"))),
      note_(new QLineEdit),
      words_(new QLabel),
      buttons_(new EntryButtons(*this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  form_->completionHandler = [this](const auto& revision) {
    if (!revision) {
      done(Rejected);
    } else if (revise_(*revision)) {
      done(Accepted);
    }
  };
  form_->load();
  layOut();
  form_->changeHandler = [this] { showState(); };
  showState();
}

/// The fields go before the form that they show.
EditBulkTransactionsDialog::~EditBulkTransactionsDialog() {
  form_->changeHandler = [] {};
  form_->completionHandler = [](const auto&) {};
  qDeleteAll(findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
}

void EditBulkTransactionsDialog::reject() {
  form_->performAction(Form::Sender::cancelButton);
}

void EditBulkTransactionsDialog::layOut() {
  setWindowTitle(qtText(form_->title));
  auto* heading = new QLabel(qtText(form_->title));
  heading->setFont(theme::font(1.3, QFont::DemiBold));
  summary_->setText(qtText(form_->summaryLabel.text));

  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(spacing::narrow);
  grid->setVerticalSpacing(spacing::narrow);
  grid->setColumnMinimumWidth(1, theme::widthOfLetters(lettersOfField));
  addDate(*grid, 0);
  addDate(*grid, 1);
  addBox(*grid, 2, equity_);
  addBox(*grid, 3, note_);
  note_->setAccessibleName(QStringLiteral("New note"));
  note_->installEventFilter(this);
  connect(note_, &QLineEdit::textChanged, this, [this](const QString& text) {
    if (!isShowing_) {
      form_->setNote(utf8Text(text));
    }
  });
  connect(&buttons_->go(), &QPushButton::clicked, this,
          [this] { form_->performAction(Form::Sender::goButton); });
  connect(&buttons_->cancel(), &QPushButton::clicked, this, &EditBulkTransactionsDialog::reject);
  words_->setWordWrap(true);
  words_->setForegroundRole(QPalette::PlaceholderText);
  words_->setMinimumHeight(words_->fontMetrics().lineSpacing());

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::section, spacing::wide, spacing::section, spacing::wide);
  column->setSpacing(spacing::medium);
  column->addWidget(heading);
  column->addWidget(summary_);
  column->addLayout(grid);
  column->addWidget(words_);
  column->addWidget(buttons_);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void EditBulkTransactionsDialog::addBox(QGridLayout& grid, std::size_t index, QWidget* field) {
  CheckBox& state = *form_->allCheckboxes()[index];
  auto* box = new QCheckBox(qtText(state.title + ":"));
  box->setAccessibleName(QStringLiteral("Change ") + qtText(state.title).toLower());
  boxes_[index] = box;
  grid.addWidget(box, static_cast<int>(index), 0);
  grid.addWidget(field, static_cast<int>(index), 1);
  // The field has the keyboard as soon as it can be used. Assistive technologies toggle a box
  // without a click.
  connect(box, &QCheckBox::toggled, this, [this, &state, field](bool isOn) {
    if (isShowing_) {
      return;
    }
    form_->setOn(state, isOn);
    if (state.isOn) {
      field->setFocus(Qt::ShortcutFocusReason);
    }
  });
}

void EditBulkTransactionsDialog::addDate(QGridLayout& grid, std::size_t index) {
  Form::DateElements& date = form_->dateElements[index];
  DateRow& row = dates_[index];
  row.picker = new DateEntryView(
      date.datePicker, [this, &date](const auto& change) { form_->changeDate(date, change); });
  row.picker->field().setAccessibleName(QStringLiteral("New ") +
                                        qtText(date.datePicker.label).toLower());
  row.multipleValues = new QLabel(qtText(date.multipleValuesLabel.text));
  row.multipleValues->setForegroundRole(QPalette::PlaceholderText);
  row.multipleValues->setMinimumHeight(row.picker->sizeHint().height());
  auto* field = new QWidget;
  field->setFocusProxy(row.picker);
  auto* both = new QHBoxLayout(field);
  both->setContentsMargins(0, 0, 0, 0);
  both->addWidget(row.picker);
  both->addWidget(row.multipleValues);
  addBox(grid, index, field);
}

void EditBulkTransactionsDialog::showState() {
  isShowing_ = true;
  const auto states = form_->allCheckboxes();
  for (std::size_t i = 0; i < boxes_.size(); ++i) {
    boxes_[i]->setChecked(states[i]->isOn);
    boxes_[i]->setEnabled(states[i]->isEnabled);
  }
  for (std::size_t i = 0; i < dates_.size(); ++i) {
    const Form::DateElements& date = form_->dateElements[i];
    dates_[i].picker->setVisible(!date.isDatePickerHidden);
    dates_[i].multipleValues->setVisible(!date.multipleValuesLabel.isHidden);
    dates_[i].picker->update();
    dates_[i].picker->field().setAccessibleDescription(qtText(date.datePicker.hint().text));
  }
  if (const QString note = qtText(form_->noteField.text); note_->text() != note) {
    note_->setText(note);
  }
  note_->setPlaceholderText(qtText(form_->noteField.placeholder));
  note_->setEnabled(form_->noteField.isEnabled);
  words_->setText(qtText(form_->goButton.tooltip));
  showButton(buttons_->go(), form_->goButton);
  showButton(buttons_->cancel(), form_->cancelButton);
  isShowing_ = false;
}

bool EditBulkTransactionsDialog::eventFilter(QObject* watched, QEvent* event) {
  if (watched == note_ && event->type() == QEvent::FocusIn) {
    form_->noteEditingDidBegin();
  } else if (watched == note_ && event->type() == QEvent::FocusOut) {
    form_->noteEditingDidEnd();
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace corvane::desktop
