// The form for one transaction: its state, and what a person does with it.
#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "core/controls/form_controls.h"
#include "ledger/manager/portfolio_manager.h"
#include "presentation/controls/equity_combo_box.h"
#include "presentation/transactions/date_entry.h"
#include "presentation/transactions/number_entry.h"
#include "presentation/transactions/order_error.h"
#include "presentation/transactions/transaction_mode.h"
#include "presentation/transactions/transaction_preview.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

class SaleTaxHint;

/// Turns its fields into an order. Amounts are entered as positive numbers; the mode gives the
/// sign. Every operation leaves the form consistent and calls `changeHandler` once, at its end.
/// Main queue only.
///
/// An equivalent that follows from amount and rate is exact, in the form's arithmetic as in the
/// order. Where it has more digits than the primary currency, which no ledger takes of a trade, the
/// form offers to round it; nothing is rounded unasked. In the primary currency, where no rate is
/// shown, the rate is 1.
class EditTransactionViewController {
 public:
  using TransactionMode = corvane::TransactionMode;
  using OrderError = corvane::OrderError;

  /// Makes a transaction, filled from `original` where there is one, but of today.
  struct Create {
    PortfolioPointer portfolio;
    std::optional<BasicTransaction> original = {};
  };
  /// Changes `row` of the ledger of `portfolio`, or where there is no row a transaction that stands
  /// in none.
  struct Modify {
    BasicTransaction transaction;
    PortfolioPointer portfolio;
    TransactionPointer row = nullptr;
  };
  using BehaviourMode = std::variant<Create, Modify>;

  struct Placement {
    Order order;
    PortfolioPointer portfolio;
  };
  enum class Sender { goButton, insertAnotherButton, cancelButton };
  /// What has changed before a redraw; each level includes those after it.
  enum class RedrawLevel { mode, equity, currency };

  EditTransactionViewController();
  ~EditTransactionViewController();
  EditTransactionViewController(const EditTransactionViewController&) = delete;
  EditTransactionViewController& operator=(const EditTransactionViewController&) = delete;

  /// What the form is for; to be set before load().
  std::optional<BehaviourMode> behaviour;
  /// Called with what the form has come to, or with nothing where the user cancelled or the
  /// portfolio is gone. The caller closes the form, or keeps it open and calls
  /// prepareForAnother() where insertsAnother() says so.
  std::function<void(std::optional<Placement>)> completionHandler = [](const auto&) {};
  /// Shows why there is no order; the form stays open.
  std::function<void(const Error&)> presentError = [](const Error&) {};
  /// Called when there is something new to draw.
  std::function<void()> changeHandler = [] {};
  std::function<Date()> now = &Date::now;
  /// Has a new sale at a loss say what taxes would deny of it, as `workspace` has its portfolios;
  /// to be called before load().
  void setWorkspace(std::weak_ptr<WorkspaceModel> workspace);

  void load();

  // What is shown.

  std::string title;
  [[nodiscard]] static std::span<const TransactionModeEntry> transactionModeEntries() {
    return corvane::transactionModeEntries();
  }
  [[nodiscard]] TransactionMode transactionMode() const { return transactionMode_; }
  [[nodiscard]] const TransactionModeLayout& layout() const { return layoutOf(transactionMode_); }

  DateEntry transactionDatePicker;
  DateEntry settlementDatePicker;
  Label detailSectionLabel;
  EquityComboBox equityComboBox;
  PopUpButton<EquityPointer> equityPopUpButton;
  /// Why the text of the box stands for no equity, or that the equity has no prices.
  [[nodiscard]] FieldHint equityHint() const;
  NumberEntry priorNumberOfSharesField;
  NumberEntry numberOfSharesField;
  PopUpButton<Currency> currencyPopUpButton;
  NumberEntry sharePriceField;
  NumberEntry totalAmountField;
  Label equivalentSectionLabel;
  NumberEntry exchangeRateField;
  NumberEntry equivalentValueField;
  /// Offers to round an equivalent that has more digits than its currency; hidden for any other.
  Button roundButton;
  TextView noteTextView;
  bool isNoteOpen = false;
  /// A word on what the form has just done by itself; mostly empty.
  std::string notice;
  Button goButton;
  Button insertAnotherButton{"Insert Another"};
  Button cancelButton{"Cancel"};

  /// What the go button still waits for, each in a sentence.
  [[nodiscard]] const std::vector<std::string>& missing() const { return missing_; }
  /// What the entry would do to the ledger, or why the ledger would refuse it.
  [[nodiscard]] const TransactionPreview& preview() const { return preview_; }

  /// What of a sale at a loss would be denied. It comes a moment after the entry; else empty.
  [[nodiscard]] const std::string& taxHint() const;

  [[nodiscard]] PortfolioPointer portfolio() const { return portfolio_; }
  [[nodiscard]] std::shared_ptr<PortfolioManager> portfolioManager() const;
  /// The equity of the entry; null where none is chosen, or where the mode shows none.
  [[nodiscard]] const EquityPointer& currentEquity() const { return currentEquity_; }
  [[nodiscard]] const Currency& currentCurrency() const { return currentCurrency_; }
  [[nodiscard]] const std::vector<Currency>& availableCurrencies() const {
    return availableCurrencies_;
  }
  [[nodiscard]] const std::vector<EquityPointer>& heldEquities() const { return heldEquities_; }
  [[nodiscard]] bool isModifying() const;

  // What the user does.

  void chooseMode(TransactionMode mode);
  /// The search box calls this by itself.
  void chooseEquity(const EquityPointer& equity);
  void chooseCurrency(const Currency& currency);
  /// Types into one of the form's own number fields, and lets the others follow.
  void typeInto(NumberEntry& field, std::string text);
  void endEditing(NumberEntry& field);
  /// Puts the equivalent that the button offers in place of the exact one; the rate follows.
  void roundEquivalent();
  /// For the two dates: `change` alters the field as the user does.
  void changeTransactionDate(const std::function<void(DateEntry&)>& change);
  void changeSettlementDate(const std::function<void(DateEntry&)>& change);
  void setNote(std::string note) { noteTextView.text = std::move(note); }
  void toggleNote();
  void performAction(Sender sender);

  /// The order that the fields make, or why they make none.
  [[nodiscard]] std::expected<Order, OrderError> makeOrder() const;

  /// Whether the form is to stay for the next entry once the one at hand is recorded.
  [[nodiscard]] bool insertsAnother() const { return insertsAnother_; }
  /// Empties the fields for the next entry of the same mode, equity, currency and dates.
  void prepareForAnother();

 private:
  [[nodiscard]] bool isCreating() const { return !isModifying(); }
  [[nodiscard]] const Currency& primaryCurrency() const { return portfolio_->primaryCurrency(); }
  [[nodiscard]] bool supports(OrderFeature feature) const;
  [[nodiscard]] bool isForeign() const { return currentCurrency_ != primaryCurrency(); }
  [[nodiscard]] bool hasEquivalent() const;

  void loadHeldEquities();
  void loadNewTransaction(const Create& mode);
  void loadTransaction(const BasicTransaction& transaction);
  void fillFrom(const BasicTransaction& transaction);
  void fillShares(const std::optional<Decimal>& shares, const std::optional<Decimal>& prior = {});
  void fillAmounts(const Decimal& total, const std::optional<Decimal>& equivalent);

  void applyMode(TransactionMode mode);
  void redraw(RedrawLevel level);
  void redrawMode();
  void redrawEquity(bool startsHere);
  void redrawCurrency();
  void setFormatters();
  void updateEquityMenu();
  void updateAvailableCurrencies();
  void recomputeSettlementDate();

  void computeTotal();
  void computePrice();
  void computeEquivalent();
  void computeRate();

  void didChange();
  void validate();
  void offerRounding();
  void updatePreview();
  [[nodiscard]] std::vector<std::string> whatIsMissing() const;
  void requireEquity(std::vector<std::string>& missing) const;
  void requireDates(std::vector<std::string>& missing) const;

  [[nodiscard]] std::expected<BasicTransaction::Kind, OrderError> makeKind() const;
  [[nodiscard]] std::expected<BasicTransaction::Kind, OrderError> makeTrade() const;
  [[nodiscard]] std::expected<BasicTransaction::Kind, OrderError> makeYield() const;
  [[nodiscard]] std::expected<BasicTransaction::Kind, OrderError> makeSplit() const;
  [[nodiscard]] std::expected<BasicTransaction::Kind, OrderError> makeJournal() const;
  [[nodiscard]] std::expected<BasicTransaction::Kind, OrderError> makeCashEntry() const;
  [[nodiscard]] std::expected<Order, OrderError> makePlainOrder() const;
  PortfolioPointer portfolio_;
  TransactionMode transactionMode_ = TransactionMode::buy;
  EquityPointer currentEquity_;
  Currency currentCurrency_;
  std::vector<Currency> availableCurrencies_;
  std::vector<EquityPointer> heldEquities_;
  /// The currency of the transaction that the form was filled from.
  std::optional<Currency> originalCurrency_;
  bool insertsAnother_ = false;
  std::vector<std::string> missing_;
  TransactionPreview preview_;
  std::unique_ptr<SaleTaxHint> taxHint_;  ///< null without a workspace
};

}  // namespace corvane
