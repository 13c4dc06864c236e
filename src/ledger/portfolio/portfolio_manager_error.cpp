#include "ledger/portfolio/portfolio_manager_error.h"

#include <algorithm>

#include "core/money/decimal_number_formatter.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/settlement_date_text.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

/// "12 shares" with a no-break space, so that the number stays with its word.
std::string shares(const Decimal& count) {
  return count.description() + "\u00A0shares";
}

/// The amount with all of its digits, in the style of its currency.
std::string unroundedCash(const Decimal& amount, const Currency& currency) {
  DecimalNumberFormatter formatter = DecimalNumberFormatter::money(currency);
  formatter.maximumFractionDigits = 20;
  return formatter.string(amount).value_or(amount.description());
}

std::string orderName(const Order& order) {
  return std::visit(
      Overloaded{[](const Order::Buy&) { return "Buy"; }, [](const Order::Sell&) { return "Sell"; },
                 [](const Order::Deposit&) { return "Deposit"; },
                 [](const Order::Withdraw&) { return "Withdrawal"; },
                 [](const Order::Record&) { return "Record-only"; }},
      order.kind);
}

bool standsInLedger(const TransactionPointer& row) {
  const auto portfolio = row == nullptr ? nullptr : row->portfolio.lock();
  return portfolio != nullptr &&
         std::ranges::find(portfolio->transactions(), row) != portfolio->transactions().end();
}

struct Describe {
  std::string operator()(const PortfolioManagerError::InsufficientCash& error) const {
    return "Insufficient cash. The transaction requires " +
           CurrencyAmount{error.currency, error.need}.description() + " but only " +
           CurrencyAmount{error.currency, error.have}.description() + " is on hand.";
  }
  std::string operator()(const PortfolioManagerError::InsufficientShares& error) const {
    return "Insufficient shares. The transaction requires " + shares(error.need) + " of " +
           error.equity->symbol + " but " + error.have.description() + " are held.";
  }
  std::string operator()(const PortfolioManagerError::IncompleteSplit& error) const {
    return "Expecting to split " + shares(error.need) + " of " + error.equity->symbol + " but " +
           error.have.description() + " are held.";
  }
  std::string operator()(const PortfolioManagerError::IncompleteYield& error) const {
    return "The transaction declares a " + std::string(displayName(error.yield.type)) + " from " +
           shares(error.yield.netShares.value_or(0)) + " of " + error.yield.equity->symbol +
           " but " + error.have.description() + " are held.";
  }
  std::string operator()(const PortfolioManagerError::InvalidSettlementDate&) const {
    return "The settlement date must be equal to or later than the trade date.";
  }
  std::string operator()(const PortfolioManagerError::InvalidCashDenomination& error) const {
    const Decimal rounded = roundedToMinorUnits(error.amount, error.currency);
    return "The cash amount " + unroundedCash(error.amount, error.currency) +
           " is of a greater precision than can be traded. (Round to " +
           unroundedCash(rounded, error.currency) + "?)";
  }
  std::string operator()(const PortfolioManagerError::LedgerInconsistency& error) const {
    return error.reason;
  }
  std::string operator()(const PortfolioManagerError::InvalidPortfolio& error) const {
    return error.reason;
  }
  std::string operator()(const PortfolioManagerError::InvalidOrderType& error) const {
    return orderName(error.order) + " orders are not supported by this provider.";
  }
  std::string operator()(const PortfolioManagerError::UnknownCurrency& error) const {
    return "Currency number \"" + std::to_string(error.number) + "\" is not recognized.";
  }
  std::string operator()(const PortfolioManagerError::ViolatesExistingTransaction& error) const {
    return "This change would violate a transaction settled on " +
           settlementDateText(*error.existing) + ".";
  }
  std::string operator()(const PortfolioManagerError::ForeignExchangeRateMissing& error) const {
    return "Foreign exchange rate is missing for " + std::string(error.currency.code) + ".";
  }
};

}  // namespace

std::optional<std::string> PortfolioManagerError::description() const {
  return std::visit(Describe(), which());
}

std::optional<std::string> PortfolioManagerError::recoverySuggestion() const {
  const auto* violation = as<ViolatesExistingTransaction>();
  return violation == nullptr ? std::nullopt : violation->because->description();
}

std::optional<std::string> PortfolioManagerError::advice() const {
  const auto* incomplete = as<IncompleteYield>();
  // A refused revision is no longer in its row by now.
  if (incomplete == nullptr || !standsInLedger(incomplete->transaction) ||
      incomplete->transaction->basic.kind != BasicTransaction::Kind(incomplete->yield)) {
    return std::nullopt;
  }
  return "The " + std::string(displayName(incomplete->yield.type)) + " settled on " +
         settlementDateText(*incomplete->transaction) +
         " is in the ledger already and was paid on the shares held then. Delete it, make this "
         "change, and record it again.";
}

}  // namespace corvane
