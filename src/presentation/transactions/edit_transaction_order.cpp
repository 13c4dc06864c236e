// What the form of a transaction makes of its fields: an order, or what is wrong with them.
#include <optional>
#include <utility>

#include "presentation/transactions/edit_transaction_view_controller.h"

namespace corvane {
namespace {

using Mode = TransactionMode;
using Kind = BasicTransaction::Kind;
using KindResult = std::expected<Kind, OrderError>;

std::unexpected<OrderError> failed(OrderError::Case what) {
  return std::unexpected(OrderError(what));
}

/// Whether the mode takes cash or shares away, so that its figures are stored negative.
bool isOutgoing(Mode mode) {
  return mode == Mode::sell || mode == Mode::withdraw || mode == Mode::cashExpense;
}

Decimal signedFor(Mode mode, const Decimal& value) {
  return isOutgoing(mode) ? 0 - value : value;
}

/// What is wrong with an entry of shares and the money that goes with them.
std::optional<OrderError::Case> lackOf(const EquityPointer& equity, const auto& numberOfShares,
                                       const std::optional<Decimal>& total,
                                       const std::optional<Decimal>& equivalent) {
  if (equity == nullptr) {
    return OrderError::invalidEquity;
  }
  if (!numberOfShares.isGreaterThan(0)) {
    return OrderError::invalidNumberOfShares;
  }
  if (!total || !equivalent) {
    return OrderError::indeterminateMoneyAmount;
  }
  return std::nullopt;
}

}  // namespace

std::expected<Order, OrderError> EditTransactionViewController::makeOrder() const {
  if (!supports(OrderFeature::allowsRecordTransaction)) {
    return makePlainOrder();
  }
  auto kind = makeKind();
  if (!kind) {
    return std::unexpected(kind.error());
  }
  BasicTransaction made{
      .kind = std::move(*kind),
      .tradeDate = transactionDatePicker.date().value_or(Date::distantPast()),
      .settlementDate = settlementDatePicker.date().value_or(Date::distantPast()),
      .note = noteTextView.text.empty() ? std::nullopt : std::optional(noteTextView.text)};
  return Order{Order::Record{std::move(made)}};
}

KindResult EditTransactionViewController::makeKind() const {
  switch (transactionMode_) {
    case Mode::buy:
    case Mode::sell:
      return makeTrade();
    case Mode::dividend:
    case Mode::capitalGainsDividend:
    case Mode::reinvestedDistribution:
    case Mode::returnOfCapital:
      return makeYield();
    case Mode::split:
      return makeSplit();
    case Mode::journaledShares:
      return makeJournal();
    case Mode::deposit:
    case Mode::withdraw:
    case Mode::cashExpense:
    case Mode::cashCredit:
      return makeCashEntry();
  }
  return failed(OrderError::unsupportedOrderType);
}

KindResult EditTransactionViewController::makeTrade() const {
  const auto& value = equivalentValueField.value();
  if (const auto lack =
          lackOf(currentEquity_, numberOfSharesField, totalAmountField.value(), value)) {
    return failed(*lack);
  }
  return BasicTransaction::Trade{
      .equity = currentEquity_,
      .cashDisposed = {currentCurrency_, signedFor(transactionMode_, *totalAmountField.value())},
      .equivalentCashDisposed = signedFor(transactionMode_, *value),
      .sharesAdded = signedFor(transactionMode_, *numberOfSharesField.value())};
}

KindResult EditTransactionViewController::makeYield() const {
  const auto& value = equivalentValueField.value();
  if (const auto lack =
          lackOf(currentEquity_, numberOfSharesField, totalAmountField.value(), value)) {
    return failed(*lack);
  }
  return BasicTransaction::Yield{.type = *yieldTypeOf(transactionMode_),
                                 .equity = currentEquity_,
                                 .netShares = numberOfSharesField.value(),
                                 .netAmount = {currentCurrency_, *totalAmountField.value()},
                                 .equivalentNetAmount = *value};
}

KindResult EditTransactionViewController::makeSplit() const {
  if (currentEquity_ == nullptr) {
    return failed(OrderError::invalidEquity);
  }
  if (!priorNumberOfSharesField.isGreaterThan(0) || !numberOfSharesField.isGreaterThan(0)) {
    return failed(OrderError::invalidNumberOfShares);
  }
  return BasicTransaction::Split{.equity = currentEquity_,
                                 .priorShares = *priorNumberOfSharesField.value(),
                                 .netShares = *numberOfSharesField.value()};
}

KindResult EditTransactionViewController::makeJournal() const {
  if (currentEquity_ == nullptr) {
    return failed(OrderError::invalidEquity);
  }
  const auto& shares = numberOfSharesField.value();
  if (!shares || shares->isZero()) {
    return failed(OrderError::invalidNumberOfShares);
  }
  BasicTransaction::JournaledShares journaled{
      .equity = currentEquity_, .sharesAdded = *shares, .costBaseAdded = std::nullopt};
  if (*shares > 0) {
    const auto& value = equivalentValueField.value();
    if (!value || *value < 0) {
      return failed(OrderError::indeterminateMoneyAmount);
    }
    journaled.costBaseAdded = value;
  }
  return journaled;
}

KindResult EditTransactionViewController::makeCashEntry() const {
  if (!totalAmountField.value()) {
    return failed(OrderError::indeterminateMoneyAmount);
  }
  const CurrencyAmount amount{currentCurrency_,
                              signedFor(transactionMode_, *totalAmountField.value())};
  if (transactionMode_ == Mode::deposit || transactionMode_ == Mode::withdraw) {
    return BasicTransaction::Transfer{amount};
  }
  return BasicTransaction::CashAdjustment{amount};
}

/// For a manager that trades but records nothing.
std::expected<Order, OrderError> EditTransactionViewController::makePlainOrder() const {
  if (transactionMode_ == Mode::buy || transactionMode_ == Mode::sell) {
    if (currentEquity_ == nullptr) {
      return failed(OrderError::invalidEquity);
    }
    if (!numberOfSharesField.isGreaterThan(0)) {
      return failed(OrderError::invalidNumberOfShares);
    }
    return transactionMode_ == Mode::buy
               ? Order{Order::Buy{currentEquity_, *numberOfSharesField.value()}}
               : Order{Order::Sell{currentEquity_, *numberOfSharesField.value()}};
  }
  if (transactionMode_ != Mode::deposit && transactionMode_ != Mode::withdraw) {
    return failed(OrderError::unsupportedOrderType);
  }
  if (!totalAmountField.value()) {
    return failed(OrderError::indeterminateMoneyAmount);
  }
  const CurrencyAmount amount{currentCurrency_, *totalAmountField.value()};
  return transactionMode_ == Mode::deposit ? Order{Order::Deposit{amount}}
                                           : Order{Order::Withdraw{amount}};
}

}  // namespace corvane
