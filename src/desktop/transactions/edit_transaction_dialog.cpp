#include "desktop/transactions/edit_transaction_dialog.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "desktop/controls/equity_combo_box_view.h"
#include "desktop/controls/fitting_scroll_area.h"
#include "desktop/look/alert_box.h"
#include "desktop/look/corvane_style.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "desktop/transactions/date_entry_view.h"
#include "desktop/transactions/entry_buttons.h"
#include "desktop/transactions/entry_row.h"
#include "desktop/transactions/number_entry_view.h"
#include "desktop/transactions/preview_panel.h"

namespace corvane::desktop {
namespace {

using Form = EditTransactionViewController;

constexpr int fieldWidth = 340;
constexpr int noteLines = 3;
constexpr int mostCurrencies = 16;

template <typename Value>
void fill(QComboBox& box, const PopUpButton<Value>& menu) {
  box.clear();
  for (const std::string& title : menu.titles()) {
    box.addItem(qtText(title));
  }
}

template <typename Value>
void select(QComboBox& box, const PopUpButton<Value>& menu) {
  box.setCurrentIndex(menu.selectedIndex ? static_cast<int>(*menu.selectedIndex) : -1);
}

}  // namespace

EditTransactionDialog* EditTransactionDialog::open(QWidget* parent, std::unique_ptr<Form> form,
                                                   Place place) {
  if (form == nullptr) {
    return nullptr;
  }
  auto* dialog = new EditTransactionDialog(parent, std::move(form), std::move(place));
  if (dialog->form_->portfolioManager() == nullptr) {
    delete dialog;  // The portfolio went while the form was being made.
    return nullptr;
  }
  static_cast<QDialog*>(dialog)->open();
  dialog->startWithFirstField();
  return dialog;
}

EditTransactionDialog::EditTransactionDialog(QWidget* parent, std::unique_ptr<Form> form,
                                             Place place)
    : QDialog(parent),
      form_(std::move(form)),
      place_(std::move(place)),
      heading_(new QLabel),
      mode_(new QPushButton),
      equitySearch_(new EquityComboBoxView(form_->equityComboBox, QStringLiteral("Equity"))),
      heldEquity_(new QComboBox),
      currency_(new QComboBox),
      noteToggle_(new QToolButton),
      note_(new QPlainTextEdit),
      preview_(new PreviewPanel),
      round_(new QPushButton),
      insertAnother_(new QPushButton),
      buttons_(new EntryButtons(*this, insertAnother_)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  form_->completionHandler = [this](const auto& placement) { finish(placement); };
  form_->presentError = [this](const Error& error) { showError(this, error); };
  form_->load();
  layOut();
  form_->changeHandler = [this] { showState(); };
  // What a search has come to stands beside the box as well.
  form_->equityComboBox.changeHandler = [this, show = form_->equityComboBox.changeHandler] {
    show();
    showState();
  };
  showState();
}

/// The fields go before the form that they show.
EditTransactionDialog::~EditTransactionDialog() {
  form_->changeHandler = [] {};
  form_->completionHandler = [](const auto&) {};
  qDeleteAll(findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
}

void EditTransactionDialog::reject() {
  press(Form::Sender::cancelButton);
}

void EditTransactionDialog::finish(const std::optional<Form::Placement>& placement) {
  if (!placement) {
    done(Rejected);
  } else if (place_(*placement)) {
    if (form_->insertsAnother()) {
      form_->prepareForAnother();
      startWithFirstField();
    } else {
      done(Accepted);
    }
  }
}

void EditTransactionDialog::press(Form::Sender sender) {
  form_->performAction(sender);
}

// Layout.

void EditTransactionDialog::layOut() {
  setWindowTitle(qtText(form_->title));
  heading_->setText(qtText(form_->title));
  heading_->setFont(theme::font(1.3, QFont::DemiBold));

  auto* fields = new QWidget;
  auto* grid = new QGridLayout(fields);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setHorizontalSpacing(spacing::narrow);
  grid->setVerticalSpacing(spacing::tight);
  grid->setColumnMinimumWidth(1, fieldWidth);
  addModeMenu(*grid);
  addFields(*grid);

  auto* content = new QWidget;
  auto* middle = new QHBoxLayout(content);
  middle->setContentsMargins(0, 0, 0, 0);
  middle->setSpacing(spacing::wide);
  auto* left = new QVBoxLayout;
  left->setSpacing(spacing::narrow);
  left->addWidget(fields);
  left->addWidget(makeNote());
  left->addStretch(1);
  middle->addLayout(left, 1);
  middle->addWidget(preview_);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(spacing::section, spacing::wide, spacing::section, spacing::wide);
  column->setSpacing(spacing::medium);
  column->addWidget(heading_);
  const int around = heading_->sizeHint().height() + buttons_->sizeHint().height() +
                     2 * (spacing::wide + spacing::medium);
  column->addWidget(new FittingScrollArea(content, around), 1);
  connectButtons();
  column->addWidget(buttons_);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void EditTransactionDialog::addModeMenu(QGridLayout& grid) {
  auto* menu = new QMenu(mode_);
  for (const TransactionModeEntry& entry : Form::transactionModeEntries()) {
    if (entry.title.empty()) {
      menu->addSeparator();
      continue;
    }
    QAction* action = menu->addAction(qtText(entry.title));
    action->setCheckable(true);
    action->setData(static_cast<int>(entry.mode));
    // Plain control keys belong to the text that is being edited.
    action->setShortcut(Qt::CTRL | Qt::SHIFT | static_cast<Qt::Key>(entry.shortcut));
    connect(action, &QAction::triggered, this,
            [this, mode = entry.mode] { form_->chooseMode(mode); });
    addAction(action);
    modeActions_.push_back(action);
  }
  mode_->setMenu(menu);
  mode_->setAutoDefault(false);
  mode_->setProperty(CorvaneStyle::fieldProperty, true);
  rows_.push_back(std::make_unique<EntryRow>(grid, mode_, mode_));
  rows_.back()->show("Type:", false);
}

QLabel* EditTransactionDialog::addSection(QGridLayout& grid) {
  auto* section = new QLabel;
  section->setFont(theme::font(1, QFont::DemiBold));
  section->setContentsMargins(0, spacing::narrow, 0, 0);
  grid.addWidget(section, grid.rowCount(), 1);
  return section;
}

NumberEntryView* EditTransactionDialog::addNumber(QGridLayout& grid, NumberEntry& entry) {
  auto* view = new NumberEntryView(
      grid, entry, [this, &entry](std::string text) { form_->typeInto(entry, std::move(text)); },
      [this, &entry] { form_->endEditing(entry); });
  numbers_.push_back(view);
  return view;
}

/// From top to bottom, which is also the order in which the keyboard goes through them.
void EditTransactionDialog::addFields(QGridLayout& grid) {
  const auto addRow = [&](QWidget* field, QWidget* focus) {
    rows_.push_back(std::make_unique<EntryRow>(grid, field, focus));
    return rows_.back().get();
  };
  transactionDate_ = new DateEntryView(form_->transactionDatePicker, [this](const auto& change) {
    form_->changeTransactionDate(change);
  });
  settlementDate_ = new DateEntryView(form_->settlementDatePicker, [this](const auto& change) {
    form_->changeSettlementDate(change);
  });
  transactionDateRow_ = addRow(transactionDate_, &transactionDate_->field());
  settlementDateRow_ = addRow(settlementDate_, &settlementDate_->field());
  detailSection_ = addSection(grid);
  equitySearchRow_ = addRow(equitySearch_, &equitySearch_->field());
  heldEquityRow_ = addRow(heldEquity_, heldEquity_);
  addNumber(grid, form_->priorNumberOfSharesField);
  addNumber(grid, form_->numberOfSharesField);
  currencyRow_ = addRow(currency_, currency_);
  addNumber(grid, form_->sharePriceField);
  addNumber(grid, form_->totalAmountField);
  equivalentSection_ = addSection(grid);
  addNumber(grid, form_->exchangeRateField);
  addNumber(grid, form_->equivalentValueField);
  round_->setAutoDefault(false);
  grid.addWidget(round_, grid.rowCount(), 1, Qt::AlignRight);
  connect(round_, &QPushButton::clicked, this, [this] { form_->roundEquivalent(); });

  heldEquity_->setPlaceholderText(QStringLiteral("Choose an equity"));
  for (QComboBox* box : {heldEquity_, currency_}) {
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(12);
    box->setMaxVisibleItems(mostCurrencies);
  }
  connect(heldEquity_, &QComboBox::activated, this, [this](int index) {
    const auto& item = form_->equityPopUpButton.items.at(static_cast<std::size_t>(index));
    form_->chooseEquity(*item.value);
  });
  connect(currency_, &QComboBox::activated, this, [this](int index) {
    const auto& item = form_->currencyPopUpButton.items.at(static_cast<std::size_t>(index));
    form_->chooseCurrency(*item.value);
  });
}

QWidget* EditTransactionDialog::makeNote() {
  noteToggle_->setText(QStringLiteral("&Note"));
  noteToggle_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  noteToggle_->setCheckable(true);
  noteToggle_->setAutoRaise(true);
  noteToggle_->setFocusPolicy(Qt::StrongFocus);
  noteToggle_->setAccessibleName(QStringLiteral("Note"));
  note_->setAccessibleName(QStringLiteral("Text of the note"));
  note_->setTabChangesFocus(true);
  note_->setPlainText(qtText(form_->noteTextView.text));
  note_->setFixedHeight(note_->fontMetrics().lineSpacing() * noteLines + 2 * spacing::narrow);
  auto* box = new QWidget;
  auto* column = new QVBoxLayout(box);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(spacing::tight);
  column->addWidget(noteToggle_, 0, Qt::AlignLeft);
  column->addWidget(note_);
  connect(noteToggle_, &QToolButton::toggled, this, [this] {
    if (isShowing_) {
      return;
    }
    form_->toggleNote();
    if (form_->isNoteOpen) {
      note_->setFocus(Qt::ShortcutFocusReason);
    }
  });
  connect(note_, &QPlainTextEdit::textChanged, this, [this] {
    if (!isShowing_) {
      form_->setNote(utf8Text(note_->toPlainText()));
    }
  });
  return box;
}

void EditTransactionDialog::connectButtons() {
  connect(&buttons_->go(), &QPushButton::clicked, this, [this] {
    const bool isShiftDown = QGuiApplication::keyboardModifiers().testFlag(Qt::ShiftModifier);
    press(isShiftDown ? Form::Sender::insertAnotherButton : Form::Sender::goButton);
  });
  connect(insertAnother_, &QPushButton::clicked, this,
          [this] { press(Form::Sender::insertAnotherButton); });
  connect(&buttons_->cancel(), &QPushButton::clicked, this, &EditTransactionDialog::reject);
}

// What is shown.

void EditTransactionDialog::showState() {
  isShowing_ = true;
  showMenus();
  transactionDateRow_->show(form_->transactionDatePicker.label, false,
                            form_->transactionDatePicker.hint());
  settlementDateRow_->show(form_->settlementDatePicker.label, false,
                           form_->settlementDatePicker.hint());
  transactionDate_->update();
  settlementDate_->update();
  detailSection_->setText(qtText(form_->detailSectionLabel.text));
  equivalentSection_->setText(qtText(form_->equivalentSectionLabel.text));
  equivalentSection_->setVisible(!form_->equivalentSectionLabel.isHidden);
  for (NumberEntryView* number : numbers_) {
    number->update();
  }
  noteToggle_->setChecked(form_->isNoteOpen);
  noteToggle_->setArrowType(form_->isNoteOpen ? Qt::DownArrow : Qt::RightArrow);
  note_->setVisible(form_->isNoteOpen);
  if (const QString note = qtText(form_->noteTextView.text); note_->toPlainText() != note) {
    note_->setPlainText(note);
  }
  showButton(*round_, form_->roundButton);
  showButton(buttons_->go(), form_->goButton);
  showButton(*insertAnother_, form_->insertAnotherButton);
  showButton(buttons_->cancel(), form_->cancelButton);
  preview_->show(form_->preview(), form_->missing(), form_->notice, form_->taxHint());
  isShowing_ = false;
}

void EditTransactionDialog::showMenus() {
  const QString mode = qtText(titleOf(form_->transactionMode()));
  if (mode_->text() != mode) {
    mode_->setText(mode);
    mode_->setAccessibleDescription(mode);
  }
  for (QAction* action : modeActions_) {
    action->setChecked(action->data().toInt() == static_cast<int>(form_->transactionMode()));
  }
  const auto& equities = form_->equityPopUpButton;
  const auto searched = form_->layout().equity == EquityRow::search;
  equitySearchRow_->show("Equity:", !searched, form_->equityHint());
  heldEquityRow_->show("Equity:", equities.isHidden);
  if (shownEquities_.items != equities.items) {
    shownEquities_ = equities;
    fill(*heldEquity_, equities);
  }
  select(*heldEquity_, equities);
  currencyRow_->show("Currency:", form_->currencyPopUpButton.isHidden);
  if (shownCurrencies_.items != form_->currencyPopUpButton.items) {
    shownCurrencies_ = form_->currencyPopUpButton;
    fill(*currency_, shownCurrencies_);
  }
  select(*currency_, form_->currencyPopUpButton);
}

/// The first thing to be told of an entry, its kind and date apart.
void EditTransactionDialog::startWithFirstField() {
  switch (form_->layout().equity) {
    case EquityRow::search:
      equitySearch_->startEditing();
      return;
    case EquityRow::held:
      heldEquity_->setFocus(Qt::ShortcutFocusReason);
      return;
    case EquityRow::hidden:
      for (NumberEntryView* number : numbers_) {
        if (number->isVisibleTo(this)) {
          number->setFocus(Qt::ShortcutFocusReason);
          // The window may not have the keyboard yet.
          number->selectAll();
          return;
        }
      }
  }
}

void EditTransactionDialog::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && event->modifiers().testFlag(Qt::ShiftModifier)) {
    if (insertAnother_->isEnabled() && insertAnother_->isVisible()) {
      press(Form::Sender::insertAnotherButton);
    }
    return;
  }
  QDialog::keyPressEvent(event);
}

}  // namespace corvane::desktop
