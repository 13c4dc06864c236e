#include "storage/database/stored_row.h"

#include <string>

#include "ledger/portfolio/portfolio_manager_error.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;

/// `value` as a whole number of 64 bits; none where it is not one.
std::optional<std::int64_t> wholeNumber(const Decimal& value) {
  const std::int64_t whole = value.integerValue();
  return Decimal(whole) == value ? std::optional(whole) : std::nullopt;
}

/// `value` × 10^`places`
Decimal movedPoint(const Decimal& value, int places) {
  return Decimal::fromMantissa(value.sign(), value.mantissa(), value.exponent() + places);
}

BasicTransaction::YieldType yieldType(TransactionType type) {
  switch (type) {
    case TransactionType::dividend:
      return BasicTransaction::YieldType::dividend;
    case TransactionType::capitalGainsDividend:
      return BasicTransaction::YieldType::capitalGainsDividend;
    case TransactionType::reinvestedDistribution:
      return BasicTransaction::YieldType::reinvestedDistribution;
    case TransactionType::returnOfCapital:
      return BasicTransaction::YieldType::returnOfCapital;
    default:
      failInconsistent("Transaction type not mapped for other-return type!");
  }
}

}  // namespace

[[noreturn]] void failInconsistent(std::string reason) {
  throw Failure(Failure::LedgerInconsistency{std::move(reason)});
}

StoredFigures storedFigures(const PortfolioTransaction& row, const Currency& primaryCurrency) {
  const TransactionEffect effect = transactionEffect(row.basic.kind);
  StoredFigures figures = {effect.type, primaryCurrency, effect.amount, row.cashNet.value_or(0),
                           std::nullopt};
  if (effect.currency != nullptr) {
    figures.currency = *effect.currency;
  }
  if (effect.equity == nullptr) {
    return figures;
  }
  if (!row.sharesNet || !row.costBasePrior) {
    failInconsistent("Share balance and/or prior cost base is uncalculated.");
  }
  const bool isJournaled = effect.type == TransactionType::journaledShares;
  if (isJournaled && effect.costAdded < 0) {
    // It would be read back as none, and the ledger would not balance any more.
    failInconsistent("A negative cost base of journaled shares cannot be kept.");
  }
  figures.holding = StoredFigures::Holding{
      *effect.equity, effect.sharesAdded, *row.sharesNet,
      isJournaled ? effect.costAdded : effect.equivalentAmount.value_or(0), *row.costBasePrior};
  return figures;
}

BasicTransaction::Kind transactionKind(const StoredFigures& figures) {
  const CurrencyAmount cash = {figures.currency, figures.cashAdded};
  switch (figures.type) {
    case TransactionType::transfer:
      return BasicTransaction::Transfer{cash};
    case TransactionType::cashAdjustment:
      return BasicTransaction::CashAdjustment{cash};
    default:
      break;
  }
  if (!figures.holding) {
    failInconsistent("Missing equity-related transaction data.");
  }
  const StoredFigures::Holding& holding = *figures.holding;
  switch (figures.type) {
    case TransactionType::trade:
      return BasicTransaction::Trade{holding.equity,
                                     {figures.currency, -figures.cashAdded},
                                     -holding.equivalentCashAdded,
                                     holding.sharesAdded};
    case TransactionType::split:
      return BasicTransaction::Split{holding.equity, holding.sharesNet - holding.sharesAdded,
                                     holding.sharesNet};
    case TransactionType::journaledShares:
      return BasicTransaction::JournaledShares{holding.equity, holding.sharesAdded,
                                               holding.equivalentCashAdded > 0
                                                   ? std::optional(holding.equivalentCashAdded)
                                                   : std::nullopt};
    default:
      return BasicTransaction::Yield{yieldType(figures.type), holding.equity, holding.sharesNet,
                                     cash, holding.equivalentCashAdded};
  }
}

SQLiteValue storedAmount(const Decimal& amount, const Currency& currency) {
  const Decimal minorUnits = movedPoint(amount, currency.minorUnits);
  if (const auto whole = wholeNumber(minorUnits)) {
    return *whole;
  }
  const double real = minorUnits.doubleValue();
  if (Decimal::fromDouble(real) == minorUnits && !minorUnits.isNaN()) {
    return real;
  }
  if (minorUnits.exponent() < 0) {
    throw Failure(Failure::InvalidCashDenomination{amount, currency});
  }
  failInconsistent("The amount " + amount.description() + " " + std::string(currency.code) +
                   " has too many digits to be kept.");
}

Decimal amountOf(const Decimal& stored, const Currency& currency) {
  return movedPoint(stored, -currency.minorUnits);
}

std::int64_t storedShares(const Decimal& shares, int decimals) {
  if (const auto units = wholeNumber(movedPoint(shares, decimals))) {
    return *units;
  }
  failInconsistent("The number of shares " + shares.description() +
                   " has too many digits to be kept.");
}

Decimal sharesOf(const Decimal& stored, int decimals) {
  return movedPoint(stored, -decimals);
}

}  // namespace corvane
