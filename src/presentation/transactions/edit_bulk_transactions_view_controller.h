// The form that changes a few fields of several transactions at once: its state, and what a person
// does with it.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/controls/form_controls.h"
#include "ledger/manager/portfolio_manager.h"
#include "presentation/controls/equity_combo_box.h"
#include "presentation/transactions/date_entry.h"

namespace corvane {

/// Turns its check boxes and fields into a BulkRevision: a value for each box that is on. Every
/// operation calls `changeHandler` once, at its end. Main queue only.
class EditBulkTransactionsViewController {
 public:
  /// Stands where the transactions do not agree.
  static constexpr std::string_view multipleValuesText = "Multiple values";

  /// One of the two dates.
  struct DateElements {
    Date BasicTransaction::*accessor;
    bool hasMultipleValues = false;
    CheckBox checkboxButton = {};
    DateEntry datePicker = {};
    bool isDatePickerHidden = false;
    Label multipleValuesLabel = {std::string(multipleValuesText)};
  };
  enum class Sender { goButton, cancelButton };

  EditBulkTransactionsViewController();
  EditBulkTransactionsViewController(const EditBulkTransactionsViewController&) = delete;
  EditBulkTransactionsViewController& operator=(const EditBulkTransactionsViewController&) = delete;

  /// The rows to change and their portfolio; to be set before load().
  std::vector<TransactionPointer> transactions;
  PortfolioPointer portfolio;
  /// Called with what the form has come to, or with nothing where the user cancelled or there is
  /// nothing to change. The caller closes the form.
  std::function<void(std::optional<BulkRevision>)> completionHandler = [](const auto&) {};
  /// Called when there is something new to draw.
  std::function<void()> changeHandler = [] {};

  void load();

  // What is shown.

  std::string title = "Modify Transactions";
  Label summaryLabel;
  std::array<DateElements, 2> dateElements;  ///< of the trade date and of the settlement date
  CheckBox equityCheckboxButton;
  EquityComboBox equityComboBox;
  CheckBox noteCheckboxButton;
  TextField noteField;
  bool noteHasMultipleValues = false;
  Button goButton{"Modify"};
  Button cancelButton{"Cancel"};

  [[nodiscard]] DateElements& tradeDate() { return dateElements[0]; }
  [[nodiscard]] DateElements& settlementDate() { return dateElements[1]; }
  /// Both dates, equity, note.
  [[nodiscard]] std::array<CheckBox*, 4> allCheckboxes();

  // What the user does.

  /// Clicks on one of allCheckboxes().
  void setOn(CheckBox& box, bool isOn);
  void changeDate(DateElements& date, const std::function<void(DateEntry&)>& change);
  void setNote(std::string note);
  void noteEditingDidBegin();
  void noteEditingDidEnd();
  void performAction(Sender sender);

 private:
  void loadDate(DateElements& date);
  void loadEquity();
  void loadNote();
  void update();
  void updateDate(DateElements& date);
  void updateGoButton();

  bool isEditingNote_ = false;
};

}  // namespace corvane
