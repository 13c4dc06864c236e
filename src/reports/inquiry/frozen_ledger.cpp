#include "reports/inquiry/frozen_ledger.h"

#include <cassert>
#include <utility>

#include "core/market/frozen_equity.h"
#include "ledger/manager/portfolio_manager.h"

namespace corvane {
namespace {

/// The equity that a transaction names, to be replaced; null where it names none.
EquityPointer* equityOfKind(BasicTransaction::Kind& kind) {
  return std::visit(
      [](auto& held) -> EquityPointer* {
        if constexpr (requires { held.equity; }) {
          return &held.equity;
        } else {
          return nullptr;
        }
      },
      kind);
}

}  // namespace

FrozenPortfolio::FrozenPortfolio(const PortfolioPointer& portfolio)
    : Portfolio(std::weak_ptr<PortfolioManager>(), portfolio->primaryCurrency()),
      original(portfolio) {
  name = portfolio->name;
  allowsNegativeBalances = portfolio->allowsNegativeBalances;
  usesCashAccounts = portfolio->usesCashAccounts;
}

PortfolioPointer originalOf(const PortfolioPointer& portfolio) {
  return ledgerOf(portfolio).lock();
}

std::weak_ptr<Portfolio> ledgerOf(const PortfolioPointer& portfolio) {
  const auto* frozen = dynamic_cast<const FrozenPortfolio*>(portfolio.get());
  return frozen == nullptr ? std::weak_ptr<Portfolio>(portfolio) : frozen->original;
}

LedgerFreezer::LedgerFreezer(std::vector<PortfolioPointer> portfolios)
    : originals_(std::move(portfolios)) {
  for (const PortfolioPointer& original : originals_) {
    copies_.push_back(std::make_shared<FrozenPortfolio>(original));
  }
}

bool LedgerFreezer::advance(std::size_t rowCount) {
  for (; current_ < originals_.size(); ++current_) {
    const auto& rows = originals_[current_]->transactions();
    const std::shared_ptr<FrozenPortfolio>& copy = copies_[current_];
    while (copy->rows_->size() < rows.size()) {
      if (rowCount == 0) {
        return false;
      }
      --rowCount;
      copyRow(*rows[copy->rows_->size()], copy);
    }
  }
  return true;
}

std::vector<PortfolioPointer> LedgerFreezer::take() {
  assert(current_ == originals_.size() && "not all rows are copied");
  std::vector<PortfolioPointer> ledgers;
  for (auto& copy : std::exchange(copies_, {})) {
    ledgers.push_back(std::move(copy));
  }
  return ledgers;
}

void LedgerFreezer::copyRow(const PortfolioTransaction& row,
                            const std::shared_ptr<FrozenPortfolio>& into) {
  const BasicTransaction& basic = row.basic;
  const bool keepsNote = std::holds_alternative<BasicTransaction::JournaledShares>(basic.kind);
  PortfolioTransaction& copy =
      into->rows_->emplace_back(BasicTransaction{basic.kind, basic.tradeDate, basic.settlementDate,
                                                 keepsNote ? basic.note : std::nullopt},
                                into, false);
  if (EquityPointer* equity = equityOfKind(copy.basic.kind)) {
    *equity = frozenOf(*equity);
  }
  copy.cashNet = row.cashNet;
  copy.sharesNet = row.sharesNet;
  copy.costBasePrior = row.costBasePrior;
  into->pointers_.emplace_back(into->rows_, &copy);
}

const EquityPointer& LedgerFreezer::frozenOf(const EquityPointer& equity) {
  EquityPointer& frozen = equities_[equity.get()];
  if (frozen == nullptr) {
    frozen = frozenEquity(*equity);
  }
  return frozen;
}

}  // namespace corvane
