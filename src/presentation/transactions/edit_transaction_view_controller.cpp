#include "presentation/transactions/edit_transaction_view_controller.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "core/market/portfolio_asset.h"
#include "platform/overloaded.h"
#include "platform/text/unicode/locale.h"
#include "presentation/text/formatting.h"
#include "presentation/transactions/sale_tax_hint.h"

namespace corvane {
namespace {

using Mode = TransactionMode;

/// More digits of a computed rate help nobody; all of them count.
constexpr int maximumRateDigits = 10;
/// A trade settles so many weekdays later.
constexpr int settlementWeekdays = 2;

bool isTrade(Mode mode) {
  return mode == Mode::buy || mode == Mode::sell;
}

bool isCashEntry(Mode mode) {
  return mode == Mode::deposit || mode == Mode::withdraw || mode == Mode::cashExpense ||
         mode == Mode::cashCredit;
}

const PortfolioSnapshot& newestSnapshotOf(const Portfolio& portfolio) {
  static const PortfolioSnapshot empty;
  const auto& years = portfolio.snapshotsByYear;
  return years.empty() ? empty : years.rbegin()->second;
}

void describe(NumberEntry& field, std::string_view label) {
  field.label = label;
  field.isHidden = label.empty();
}

}  // namespace

EditTransactionViewController::EditTransactionViewController() {
  transactionDatePicker.label = "Transaction Date:";
  settlementDatePicker.label = "Settlement Date:";
  exchangeRateField.label = "Exchange Rate:";
  equityComboBox.action = [this] { chooseEquity(equityComboBox.selectedEquity()); };
}

EditTransactionViewController::~EditTransactionViewController() = default;

std::shared_ptr<PortfolioManager> EditTransactionViewController::portfolioManager() const {
  return portfolio_ == nullptr ? nullptr : portfolio_->manager.lock();
}

bool EditTransactionViewController::isModifying() const {
  return behaviour && std::holds_alternative<Modify>(*behaviour);
}

bool EditTransactionViewController::supports(OrderFeature feature) const {
  const auto manager = portfolioManager();
  return manager != nullptr && std::ranges::find(manager->supportedOrderFeatures(), feature) !=
                                   manager->supportedOrderFeatures().end();
}

// Loading.

void EditTransactionViewController::load() {
  assert(behaviour && "what the form is for must be set before it is loaded");
  portfolio_ = std::visit([](const auto& mode) { return mode.portfolio; }, *behaviour);
  const auto manager = portfolioManager();
  if (manager == nullptr) {
    completionHandler(std::nullopt);
    return;
  }
  transactionDatePicker.setCalendar(manager->calendar);
  settlementDatePicker.setCalendar(manager->calendar);
  DecimalNumberFormatter rateFormatter;
  rateFormatter.maximumFractionDigits = maximumRateDigits;
  exchangeRateField.minimum = 0;
  exchangeRateField.setFormatter(rateFormatter);
  exchangeRateField.setValue(1);
  currentCurrency_ = primaryCurrency();

  loadHeldEquities();
  equityComboBox.setQuoteProvider(manager->quoteProvider);
  equityComboBox.setOffersNominalEquityWithCurrency(supports(OrderFeature::allowsRecordTransaction)
                                                        ? std::optional(primaryCurrency())
                                                        : std::nullopt);
  equivalentSectionLabel.text = Locale::current()
                                    .localizedCurrencyName(primaryCurrency().code)
                                    .value_or(std::string(primaryCurrency().code)) +
                                " value";
  std::visit(Overloaded{[this](const Create& mode) { loadNewTransaction(mode); },
                        [this](const Modify& mode) { loadTransaction(mode.transaction); }},
             *behaviour);
  didChange();
}

void EditTransactionViewController::loadHeldEquities() {
  heldEquities_.clear();
  for (const auto& [equity, holding] : newestSnapshotOf(*portfolio_).equitySnapshots) {
    heldEquities_.push_back(equity);
  }
  std::ranges::sort(heldEquities_, {}, [](const EquityPointer& equity) -> const std::string& {
    return equity->symbol;
  });
  equityComboBox.setDefaultEquities(heldEquities_);
}

void EditTransactionViewController::loadNewTransaction(const Create& mode) {
  title = "New Transaction";
  insertAnotherButton.isHidden = false;
  numberOfSharesField.setValue(0);
  transactionDatePicker.setDate(portfolioManager()->calendar.startOfDay(now()));
  if (mode.original) {
    fillFrom(*mode.original);
    recomputeSettlementDate();
    noteTextView.text = mode.original->note.value_or("");
    isNoteOpen = !noteTextView.text.empty();
    return;
  }
  applyMode(transactionMode_);
  numberOfSharesField.setValue(0);
  isNoteOpen = false;
}

void EditTransactionViewController::loadTransaction(const BasicTransaction& transaction) {
  title = "Modify Transaction";
  insertAnotherButton.isHidden = true;
  fillFrom(transaction);
  transactionDatePicker.setDate(transaction.tradeDate);
  settlementDatePicker.setMinimum(transaction.tradeDate,
                                  "The settlement date must be equal to or later than the trade "
                                  "date.");
  settlementDatePicker.setDate(transaction.settlementDate);
  noteTextView.text = transaction.note.value_or("");
  isNoteOpen = !noteTextView.text.empty();
}

void EditTransactionViewController::fillFrom(const BasicTransaction& transaction) {
  if (const Currency* currency = transaction.currency()) {
    originalCurrency_ = *currency;
  }
  transactionMode_ = transactionModeOf(transaction.kind);
  redraw(RedrawLevel::mode);
  if (const EquityPointer* equity = transaction.equity()) {
    currentEquity_ = *equity;
    redraw(RedrawLevel::equity);
  }
  if (originalCurrency_) {
    currentCurrency_ = *originalCurrency_;
    redraw(RedrawLevel::currency);
  }
  std::visit(
      Overloaded{[this](const BasicTransaction::Trade& trade) {
                   fillShares(abs(trade.sharesAdded));
                   fillAmounts(abs(trade.cashDisposed.amount), abs(trade.equivalentCashDisposed));
                 },
                 [this](const BasicTransaction::Split& split) {
                   fillShares(split.netShares, split.priorShares);
                 },
                 [this](const BasicTransaction::JournaledShares& journaled) {
                   fillShares(journaled.sharesAdded);
                   equivalentValueField.setValue(journaled.costBaseAdded);
                 },
                 [this](const BasicTransaction::Yield& yield) {
                   fillShares(yield.netShares);
                   fillAmounts(yield.netAmount.amount, yield.equivalentNetAmount);
                 },
                 [this](const auto& cash) { fillAmounts(abs(cash.amount.amount), std::nullopt); }},
      transaction.kind);
}

void EditTransactionViewController::fillShares(const std::optional<Decimal>& shares,
                                               const std::optional<Decimal>& prior) {
  priorNumberOfSharesField.setValue(prior);
  numberOfSharesField.setValue(shares);
}

void EditTransactionViewController::fillAmounts(const Decimal& total,
                                                const std::optional<Decimal>& equivalent) {
  totalAmountField.setValue(total);
  computePrice();
  if (!equivalent) {
    computeEquivalent();
    return;
  }
  equivalentValueField.setValue(equivalent);
  computeRate();
  if (!isForeign()) {
    exchangeRateField.compute(1);
  }
}

// Redrawing.

void EditTransactionViewController::chooseMode(TransactionMode mode) {
  notice.clear();
  applyMode(mode);
  didChange();
}

void EditTransactionViewController::applyMode(TransactionMode mode) {
  if (mode == Mode::sell && heldEquities_.empty()) {
    notice = "Nothing is held that could be sold.";
    mode = Mode::buy;
  }
  const bool entersSplit = mode == Mode::split && transactionMode_ != Mode::split;
  transactionMode_ = mode;
  if (entersSplit) {
    priorNumberOfSharesField.setValue(numberOfSharesField.value());
  }
  redraw(RedrawLevel::mode);
  if (isCreating()) {
    recomputeSettlementDate();
  }
}

void EditTransactionViewController::redraw(RedrawLevel level) {
  switch (level) {
    case RedrawLevel::mode:
      redrawMode();
      [[fallthrough]];
    case RedrawLevel::equity:
      redrawEquity(level == RedrawLevel::equity);
      [[fallthrough]];
    case RedrawLevel::currency:
      redrawCurrency();
  }
  if (isCreating() && currentEquity_ != nullptr) {
    sharePriceField.setValue(currentEquity_->recentPrice);
    computeTotal();
  }
}

void EditTransactionViewController::redrawMode() {
  const TransactionModeLayout& rows = layout();
  detailSectionLabel.text = rows.detailSection;
  equityPopUpButton.isHidden = rows.equity != EquityRow::held;
  describe(priorNumberOfSharesField, rows.priorSharesLabel);
  describe(numberOfSharesField, rows.sharesLabel);
  describe(sharePriceField, rows.priceLabel);
  describe(totalAmountField, rows.totalLabel);
  describe(equivalentValueField, rows.equivalentLabel);
  currencyPopUpButton.isHidden = rows.totalLabel.empty();

  for (NumberEntry* shares : {&priorNumberOfSharesField, &numberOfSharesField}) {
    shares->allowsFractions = supports(OrderFeature::allowsFractionalShares);
    shares->minimum = transactionMode_ == Mode::journaledShares ? std::optional<Decimal>()
                                                                : std::optional<Decimal>(0);
    shares->setFormatter(DecimalNumberFormatter());
  }
  goButton.title = isModifying() ? "Modify" : std::string(rows.buttonTitle);
}

void EditTransactionViewController::redrawEquity(bool startsHere) {
  if (startsHere && currentEquity_ != nullptr) {
    currentCurrency_ = currentEquity_->currency;
  }
  updateEquityMenu();
  updateAvailableCurrencies();
  if (std::ranges::find(availableCurrencies_, currentCurrency_) == availableCurrencies_.end()) {
    currentCurrency_ = primaryCurrency();
  }
}

void EditTransactionViewController::redrawCurrency() {
  currencyPopUpButton.select(currentCurrency_);
  const bool isCostBase = transactionMode_ == Mode::journaledShares;
  const bool showsEquivalent = isCostBase || (hasEquivalent() && isForeign());
  equivalentSectionLabel.isHidden = !showsEquivalent;
  equivalentValueField.isHidden = !showsEquivalent;
  exchangeRateField.isHidden = !showsEquivalent || isCostBase;
  setFormatters();
  // A rate that nobody sees must not change what is recorded.
  if (!isCostBase && !isForeign() && exchangeRateField.value() != Decimal(1)) {
    exchangeRateField.compute(1);
    computeEquivalent();
  } else if (!showsEquivalent && !equivalentValueField.value()) {
    computeEquivalent();
  }
}

/// Whether the mode records a value in the primary currency beside the amount.
bool EditTransactionViewController::hasEquivalent() const {
  return isTrade(transactionMode_) || yieldTypeOf(transactionMode_).has_value();
}

void EditTransactionViewController::setFormatters() {
  DecimalNumberFormatter price = DecimalNumberFormatter::money(currentCurrency_);
  price.maximumFractionDigits = std::max(maximumPriceDigits, price.minimumFractionDigits);
  sharePriceField.setFormatter(price);
  totalAmountField.setFormatter(DecimalNumberFormatter::money(currentCurrency_));
  equivalentValueField.setFormatter(DecimalNumberFormatter::money(primaryCurrency()));
}

/// The two ways to an equity stay in step. The menu has an equity that is not held where it is the
/// one of the entry: what is recorded must be seen.
void EditTransactionViewController::updateEquityMenu() {
  if (equityComboBox.selectedEquity() != currentEquity_) {
    equityComboBox.setSelectedEquity(currentEquity_);
  }
  equityPopUpButton.items.clear();
  equityPopUpButton.selectedIndex.reset();
  const auto add = [this](const EquityPointer& equity) {
    equityPopUpButton.items.push_back({PortfolioAsset(equity).title().plainText(), equity});
  };
  std::ranges::for_each(heldEquities_, add);
  if (currentEquity_ != nullptr && !equityPopUpButton.select(currentEquity_)) {
    add(currentEquity_);
    equityPopUpButton.select(currentEquity_);
  }
}

void EditTransactionViewController::updateAvailableCurrencies() {
  std::vector<Currency> available;
  if (layout().offersAllCurrencies) {
    for (const auto& [code, currency] : Currency::byCode()) {
      available.push_back(currency);
    }
  } else {
    for (const auto& [currency, cash] : newestSnapshotOf(*portfolio_).currencySnapshots) {
      available.push_back(currency);
    }
    available.push_back(primaryCurrency());
    if (currentEquity_ != nullptr) {
      available.push_back(currentEquity_->currency);
    }
  }
  // Changing the note of a payment must not move it to another account.
  if (originalCurrency_) {
    available.push_back(*originalCurrency_);
  }
  const auto code = [](const Currency& currency) { return std::string_view(currency.code); };
  std::ranges::sort(available, {}, code);
  const auto repeated = std::ranges::unique(available);
  available.erase(repeated.begin(), repeated.end());
  if (available == availableCurrencies_) {
    return;
  }
  availableCurrencies_ = std::move(available);
  currencyPopUpButton.items.clear();
  for (const Currency& currency : availableCurrencies_) {
    currencyPopUpButton.items.push_back({PortfolioAsset(currency).title().plainText(), currency});
  }
}

void EditTransactionViewController::chooseEquity(const EquityPointer& equity) {
  notice.clear();
  if (currentEquity_ != equity) {
    currentEquity_ = equity;
    redraw(RedrawLevel::equity);
  }
  didChange();
}

FieldHint EditTransactionViewController::equityHint() const {
  if (equityComboBox.isSelectionNominal()) {
    return {equityComboBox.selectedEquity()->symbol +
            " is not known to the source of prices. It can be recorded, but will have no prices."};
  }
  return {equityComboBox.message().value_or(""), true};
}

void EditTransactionViewController::chooseCurrency(const Currency& currency) {
  currentCurrency_ = currency;
  redraw(RedrawLevel::currency);
  didChange();
}

// Dates.

void EditTransactionViewController::changeTransactionDate(
    const std::function<void(DateEntry&)>& change) {
  const auto before = transactionDatePicker.date();
  change(transactionDatePicker);
  if (transactionDatePicker.date() && transactionDatePicker.date() != before) {
    recomputeSettlementDate();
  }
  didChange();
}

void EditTransactionViewController::changeSettlementDate(
    const std::function<void(DateEntry&)>& change) {
  change(settlementDatePicker);
  didChange();
}

/// Two weekdays after the trade for a trade, the same day for everything else.
void EditTransactionViewController::recomputeSettlementDate() {
  if (!transactionDatePicker.date()) {
    return;
  }
  const Calendar calendar = portfolioManager() ? portfolioManager()->calendar : Calendar();
  const Date tradeDate = *transactionDatePicker.date();
  Date settled = tradeDate;
  for (int steps = isTrade(transactionMode_) ? settlementWeekdays : 0; steps > 0; --steps) {
    do {
      settled = calendar.dateByAdding(CalendarUnit::day, 1, settled).value_or(settled + 86400);
    } while (calendar.isDateInWeekend(settled));
  }
  settlementDatePicker.setMinimum(
      tradeDate, "The settlement date must be equal to or later than the trade date.");
  settlementDatePicker.setDate(settled);
}

// Field arithmetic.

void EditTransactionViewController::typeInto(NumberEntry& field, std::string text) {
  notice.clear();
  field.setText(std::move(text));
  if (&field == &numberOfSharesField || &field == &sharePriceField) {
    computeTotal();
  } else if (&field == &totalAmountField) {
    computePrice();
    computeEquivalent();
  } else if (&field == &exchangeRateField) {
    computeEquivalent();
  } else if (&field == &equivalentValueField) {
    computeRate();
  }
  didChange();
}

void EditTransactionViewController::endEditing(NumberEntry& field) {
  field.endEditing();
  changeHandler();
}

void EditTransactionViewController::computeTotal() {
  const auto& shares = numberOfSharesField.value();
  const auto& price = sharePriceField.value();
  totalAmountField.compute(shares && price ? roundedToMinorUnits(*shares * *price, currentCurrency_)
                                           : 0);
  computeEquivalent();
}

void EditTransactionViewController::computePrice() {
  const auto& shares = numberOfSharesField.value();
  const auto& total = totalAmountField.value();
  sharePriceField.compute(shares && total && !shares->isZero() ? *total / *shares : 0);
}

void EditTransactionViewController::computeEquivalent() {
  if (transactionMode_ == Mode::journaledShares) {
    return;
  }
  const auto& total = totalAmountField.value();
  const auto& rate = exchangeRateField.value();
  equivalentValueField.compute(total && rate ? *total * *rate : 0);
}

void EditTransactionViewController::computeRate() {
  if (transactionMode_ == Mode::journaledShares) {
    return;
  }
  const auto& total = totalAmountField.value();
  const auto& value = equivalentValueField.value();
  exchangeRateField.compute(total && value ? *value / (total->isZero() ? Decimal(1) : *total) : 0);
}

void EditTransactionViewController::roundEquivalent() {
  if (const auto& value = equivalentValueField.value()) {
    notice.clear();
    equivalentValueField.setValue(roundedToMinorUnits(*value, primaryCurrency()));
    computeRate();
    didChange();
  }
}

void EditTransactionViewController::offerRounding() {
  const auto& value = equivalentValueField.value();
  const Currency& primary = primaryCurrency();
  roundButton.isHidden =
      equivalentValueField.isHidden || !value || value->exponent() >= -primary.minorUnits;
  if (roundButton.isHidden) {
    return;
  }
  const CurrencyAmount rounded{primary, roundedToMinorUnits(*value, primary)};
  roundButton.title = "Round to " + rounded.description();
  roundButton.tooltip = "The exact value is " + value->description() + " " +
                        std::string(primary.code) + ". A trade is kept with at most " +
                        std::to_string(primary.minorUnits) + " digits after the point.";
}

// Validation.

void EditTransactionViewController::didChange() {
  validate();
  offerRounding();
  updatePreview();
  changeHandler();
}

void EditTransactionViewController::setWorkspace(std::weak_ptr<WorkspaceModel> workspace) {
  taxHint_ = std::make_unique<SaleTaxHint>(std::move(workspace));
  taxHint_->changeHandler = [this] { changeHandler(); };
}

const std::string& EditTransactionViewController::taxHint() const {
  static const std::string none;
  return taxHint_ == nullptr ? none : taxHint_->text();
}

void EditTransactionViewController::updatePreview() {
  preview_ = {};
  const auto order = goButton.isEnabled ? std::optional(makeOrder()) : std::nullopt;
  const auto* record = order && *order ? std::get_if<Order::Record>(&(*order)->kind) : nullptr;
  if (taxHint_ != nullptr) {
    taxHint_->consider(
        record != nullptr && isCreating() ? std::optional(record->transaction) : std::nullopt,
        portfolio_, now());
  }
  if (record == nullptr) {
    return;
  }
  const auto* modified = std::get_if<Modify>(&*behaviour);
  preview_ =
      previewOf(record->transaction, portfolio_, modified == nullptr ? nullptr : modified->row);
}

void EditTransactionViewController::validate() {
  if (transactionMode_ == Mode::journaledShares) {
    equivalentValueField.isEnabled = numberOfSharesField.isGreaterThan(0);
    if (!equivalentValueField.isEnabled) {
      equivalentValueField.setValue(std::nullopt);
    }
  } else {
    equivalentValueField.isEnabled = true;
  }
  missing_ = whatIsMissing();
  goButton.isEnabled = missing_.empty();
  goButton.tooltip.clear();
  for (const std::string& words : missing_) {
    goButton.tooltip += (goButton.tooltip.empty() ? "" : " ") + words;
  }
  insertAnotherButton.isEnabled = goButton.isEnabled;
  insertAnotherButton.tooltip = goButton.isEnabled
                                    ? "Record this entry and go on with the next one of the same "
                                      "kind, equity and date (Shift+Return)"
                                    : goButton.tooltip;
}

std::vector<std::string> EditTransactionViewController::whatIsMissing() const {
  std::vector<std::string> missing;
  requireDates(missing);
  const auto require = [&missing](bool holds, const char* words) {
    if (!holds) {
      missing.emplace_back(words);
    }
  };
  if (isCashEntry(transactionMode_)) {
    require(totalAmountField.isGreaterThan(0), "Enter an amount above 0.");
    return missing;
  }
  if (transactionMode_ == Mode::journaledShares) {
    require(numberOfSharesField.value().has_value(),
            "Enter a number of shares; a negative one for shares that leave.");
    return missing;
  }
  if (transactionMode_ == Mode::split) {
    require(priorNumberOfSharesField.isGreaterThan(0), "Enter the shares held before the split.");
    require(numberOfSharesField.isGreaterThan(0), "Enter the shares held after the split.");
    return missing;
  }
  requireEquity(missing);
  require(numberOfSharesField.isGreaterThan(0), "Enter a number of shares above 0.");
  require(totalAmountField.isAtLeast(0), "Enter a total of 0 or more.");
  require(equivalentValueField.isAtLeast(0), "Enter an equivalent of 0 or more.");
  return missing;
}

void EditTransactionViewController::requireEquity(std::vector<std::string>& missing) const {
  if (currentEquity_ != nullptr) {
    return;
  }
  const bool isSearched = layout().equity == EquityRow::search && !equityComboBox.text().empty();
  missing.emplace_back(isSearched
                           ? "Choose one of the equities found for “" + equityComboBox.text() + "”."
                           : "Choose an equity.");
}

void EditTransactionViewController::requireDates(std::vector<std::string>& missing) const {
  for (const DateEntry* date : {&transactionDatePicker, &settlementDatePicker}) {
    if (!date->date()) {
      missing.push_back(date->hint().text);
    }
  }
}

// Orders.

void EditTransactionViewController::toggleNote() {
  isNoteOpen = !isNoteOpen;
  changeHandler();
}

void EditTransactionViewController::performAction(Sender sender) {
  if (sender == Sender::cancelButton) {
    completionHandler(std::nullopt);
    return;
  }
  if (!transactionDatePicker.date() || !settlementDatePicker.date()) {
    return;  // The words stand beside the date.
  }
  const auto order = makeOrder();
  if (!order) {
    presentError(order.error());
    return;
  }
  insertsAnother_ = sender == Sender::insertAnotherButton && isCreating();
  completionHandler(Placement{*order, portfolio_});
}

void EditTransactionViewController::prepareForAnother() {
  insertsAnother_ = false;
  notice = "Recorded. Ready for the next entry.";
  loadHeldEquities();
  numberOfSharesField.setValue(0);
  priorNumberOfSharesField.setValue(0);
  totalAmountField.setValue(std::nullopt);
  equivalentValueField.setValue(std::nullopt);
  noteTextView.text.clear();
  isNoteOpen = false;
  const Currency currency = currentCurrency_;
  redraw(RedrawLevel::mode);
  if (currency != currentCurrency_) {
    currentCurrency_ = currency;
    redraw(RedrawLevel::currency);
  }
  didChange();
}

}  // namespace corvane
