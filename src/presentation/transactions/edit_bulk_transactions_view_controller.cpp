#include "presentation/transactions/edit_bulk_transactions_view_controller.h"

#include <algorithm>
#include <utility>

namespace corvane {

EditBulkTransactionsViewController::EditBulkTransactionsViewController()
    : dateElements{{{.accessor = &BasicTransaction::tradeDate},
                    {.accessor = &BasicTransaction::settlementDate}}} {
  tradeDate().checkboxButton.title = "Transaction date";
  tradeDate().datePicker.label = "Transaction date";
  settlementDate().checkboxButton.title = "Settlement date";
  settlementDate().datePicker.label = "Settlement date";
  equityCheckboxButton.title = "Equity";
  noteCheckboxButton.title = "Note";
  equityComboBox.action = [this] { update(); };
}

std::array<CheckBox*, 4> EditBulkTransactionsViewController::allCheckboxes() {
  return {&tradeDate().checkboxButton, &settlementDate().checkboxButton, &equityCheckboxButton,
          &noteCheckboxButton};
}

void EditBulkTransactionsViewController::load() {
  const auto manager = portfolio == nullptr ? nullptr : portfolio->manager.lock();
  if (transactions.empty() || manager == nullptr) {
    completionHandler(std::nullopt);
    return;
  }
  for (DateElements& date : dateElements) {
    date.datePicker.setCalendar(manager->calendar);
    loadDate(date);
  }
  equityComboBox.setQuoteProvider(manager->quoteProvider);
  loadEquity();
  loadNote();
  summaryLabel.text = "Modifying " + std::to_string(transactions.size()) + " transactions.";
  update();
}

void EditBulkTransactionsViewController::loadDate(DateElements& date) {
  const Date first = transactions.front()->basic.*date.accessor;
  date.datePicker.setDate(first);
  date.hasMultipleValues =
      std::ranges::any_of(transactions, [&](const TransactionPointer& transaction) {
        return transaction->basic.*date.accessor != first;
      });
}

/// The box has the equity of the rows that name one, where they agree.
void EditBulkTransactionsViewController::loadEquity() {
  std::vector<EquityPointer> named;
  for (const TransactionPointer& transaction : transactions) {
    const EquityPointer* equity = transaction->basic.equity();
    const auto isSame = [&](const EquityPointer& other) { return *other == **equity; };
    if (equity != nullptr && std::ranges::none_of(named, isSame)) {
      named.push_back(*equity);
    }
  }
  equityCheckboxButton.isEnabled = !named.empty();
  equityComboBox.setDefaultEquities(named);
  if (named.size() == 1) {
    equityComboBox.setSelectedEquity(named.front());
  } else if (!named.empty()) {
    equityComboBox.setPlaceholder(std::string(multipleValuesText));
  }
}

void EditBulkTransactionsViewController::loadNote() {
  const auto& first = transactions.front()->basic.note;
  noteHasMultipleValues =
      std::ranges::any_of(transactions, [&](const TransactionPointer& transaction) {
        return transaction->basic.note.value_or("") != first.value_or("");
      });
  noteField.text = noteHasMultipleValues ? "" : first.value_or("");
}

void EditBulkTransactionsViewController::setOn(CheckBox& box, bool isOn) {
  box.isOn = isOn && box.isEnabled;
  update();
}

void EditBulkTransactionsViewController::changeDate(DateElements& date,
                                                    const std::function<void(DateEntry&)>& change) {
  change(date.datePicker);
  update();
}

void EditBulkTransactionsViewController::setNote(std::string note) {
  noteField.text = std::move(note);
  update();
}

void EditBulkTransactionsViewController::noteEditingDidBegin() {
  isEditingNote_ = true;
  update();
}

void EditBulkTransactionsViewController::noteEditingDidEnd() {
  isEditingNote_ = false;
  update();
}

void EditBulkTransactionsViewController::update() {
  for (DateElements& date : dateElements) {
    updateDate(date);
  }
  equityComboBox.setEnabled(equityCheckboxButton.isOn);
  noteField.isEnabled = noteCheckboxButton.isOn;
  noteField.placeholder =
      noteHasMultipleValues && !isEditingNote_ ? std::string(multipleValuesText) : "";
  updateGoButton();
  changeHandler();
}

void EditBulkTransactionsViewController::updateDate(DateElements& date) {
  const bool isOn = date.checkboxButton.isOn;
  const bool showsLabel = !isOn && date.hasMultipleValues;
  date.datePicker.isEnabled = isOn;
  date.isDatePickerHidden = showsLabel;
  date.multipleValuesLabel.isHidden = !showsLabel;
  if (!isOn && !date.hasMultipleValues) {
    date.datePicker.setDate(transactions.front()->basic.*date.accessor);
  }
}

void EditBulkTransactionsViewController::updateGoButton() {
  std::string missing;
  const auto boxes = allCheckboxes();
  if (std::ranges::none_of(boxes, [](const CheckBox* box) { return box->isOn; })) {
    missing = "Tick what is to be changed.";
  }
  for (const DateElements& date : dateElements) {
    if (date.checkboxButton.isOn && !date.datePicker.date()) {
      missing = date.datePicker.hint().text;
    }
  }
  if (equityCheckboxButton.isOn && equityComboBox.selectedEquity() == nullptr) {
    missing = "Choose an equity.";
  }
  goButton.isEnabled = missing.empty();
  goButton.tooltip = missing;
}

void EditBulkTransactionsViewController::performAction(Sender sender) {
  if (sender == Sender::cancelButton) {
    completionHandler(std::nullopt);
    return;
  }
  if (!goButton.isEnabled) {
    return;
  }
  BulkRevision revision;
  if (tradeDate().checkboxButton.isOn) {
    revision.tradeDate = tradeDate().datePicker.date();
  }
  if (settlementDate().checkboxButton.isOn) {
    revision.settlementDate = settlementDate().datePicker.date();
  }
  if (equityCheckboxButton.isOn) {
    revision.equity = equityComboBox.selectedEquity();
  }
  if (noteCheckboxButton.isOn) {
    revision.note = noteField.text;
  }
  completionHandler(std::move(revision));
}

}  // namespace corvane
