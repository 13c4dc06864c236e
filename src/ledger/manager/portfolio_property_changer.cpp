#include "ledger/manager/portfolio_property_changer.h"

#include <algorithm>

#include "ledger/edits/ledger_change.h"
#include "ledger/manager/portfolio_manager.h"
#include "ledger/portfolio/settlement_date_text.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

using Properties = PortfolioPropertyChanger::Properties;
using Refusal = PortfolioPropertyChanger::Error;

bool isNegative(const std::optional<Decimal>& balance) {
  return balance.value_or(0) < 0;
}

void requireNoNegativeBalance(Portfolio& portfolio) {
  for (const auto& row : portfolio.transactions()) {
    if (isNegative(row->cashNet) || isNegative(row->sharesNet)) {
      throw Refusal(Refusal::ExistingNegativeBalanceTransaction{row});
    }
  }
}

void requireNoTransfer(Portfolio& portfolio) {
  for (const auto& row : portfolio.transactions()) {
    if (std::holds_alternative<BasicTransaction::Transfer>(row->basic.kind)) {
      throw Refusal(Refusal::ExistingTransferTransaction{row});
    }
  }
}

void assign(const Properties& properties, Portfolio& portfolio) {
  portfolio.name = properties.name;
  portfolio.allowsNegativeBalances = properties.allowsNegativeBalances;
  portfolio.usesCashAccounts = properties.usesCashAccounts;
}

std::string negativeBalanceText(const PortfolioTransaction& row) {
  if (row.cashNet && isNegative(row.cashNet)) {
    return CurrencyAmount{*row.basic.currency(), *row.cashNet}.description();
  }
  if (row.sharesNet && isNegative(row.sharesNet)) {
    return row.sharesNet->description() + " shares of " + (*row.basic.equity())->symbol;
  }
  return "unknown";
}

std::string transferText(const PortfolioTransaction& row) {
  CurrencyAmount amount = std::get<BasicTransaction::Transfer>(row.basic.kind).amount;
  const bool isWithdrawal = amount.amount < 0;
  amount.amount = abs(amount.amount);
  return (isWithdrawal ? "A withdrawal of " : "A deposit of ") + amount.description();
}

}  // namespace

Properties Properties::of(const Portfolio& portfolio) {
  return {portfolio.name, portfolio.allowsNegativeBalances, portfolio.usesCashAccounts};
}

std::optional<std::string> Refusal::description() const {
  return std::visit(Overloaded{[](const ExistingNegativeBalanceTransaction& error) {
                                 return "A transaction settled on " +
                                        settlementDateText(*error.transaction) +
                                        " has a negative balance of " +
                                        negativeBalanceText(*error.transaction) + ".";
                               },
                               [](const ExistingTransferTransaction& error) {
                                 return transferText(*error.transaction) + " exists on " +
                                        settlementDateText(*error.transaction) + ".";
                               }},
                    which());
}

std::optional<std::string> Refusal::recoverySuggestion() const {
  return std::holds_alternative<ExistingNegativeBalanceTransaction>(which())
             ? "Ensure that all existing transactions balance in order to change this setting."
             : "First remove all deposit and withdrawal transactions in order to change this "
               "setting.";
}

void PortfolioPropertyChanger::changeProperties(
    const PortfolioPointer& portfolio, const Properties& properties,
    const std::shared_ptr<UndoManager>& undoManager) const {
  const Properties old = Properties::of(*portfolio);
  if (old.allowsNegativeBalances && !properties.allowsNegativeBalances) {
    requireNoNegativeBalance(*portfolio);
  }
  if (old.usesCashAccounts && !properties.usesCashAccounts) {
    requireNoTransfer(*portfolio);
  }

  const auto manager = portfolio->manager.lock();
  const bool needsWalk = manager != nullptr && old.usesCashAccounts != properties.usesCashAccounts;
  assign(properties, *portfolio);
  try {
    if (manager != nullptr) {
      manager->changeAsOne(portfolio, [&](LedgerChange& change) {
        if (needsWalk) {
          change.walkFrom(0);
        }
        manager->portfolioPropertiesDidChange(portfolio);
      });
    }
  } catch (...) {
    assign(old, *portfolio);
    throw;
  }

  if (undoManager == nullptr) {
    return;
  }
  undoManager->registerUndo(portfolio, [portfolio = std::weak_ptr(portfolio), old,
                                        weakUndoManager =
                                            std::weak_ptr(undoManager)](Portfolio& target) {
    try {
      PortfolioPropertyChanger().changeProperties(portfolio.lock(), old, weakUndoManager.lock());
    } catch (const corvane::Error& error) {
      if (const auto owner = target.manager.lock()) {
        owner->presentError(error);
      }
    }
  });
}

}  // namespace corvane
