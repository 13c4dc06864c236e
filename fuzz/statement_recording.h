// What every target with a statement holds: what the preview shows as new is what a ledger takes.
#pragma once

#include <cstdlib>
#include <functional>
#include <memory>

#include "exchange/statements/statement_preview.h"
#include "ledger/manager/portfolio_manager.h"

namespace corvane {

/// Records what `preview` finds new for an empty portfolio, and ends the program where the ledger
/// takes anything else, or an error has no words.
inline void recordWhatIsNew(
    const std::function<StatementPreview(const PortfolioPointer&)>& preview) {
  const auto manager = std::make_shared<PortfolioManager>(std::make_shared<QuoteProvider>());
  const auto portfolio = manager->createPortfolio(Currency::cad());
  try {
    const auto transactions = preview(portfolio).transactions();
    if (!transactions.empty()) {
      manager->recordTransactions(transactions, portfolio, nullptr);
      if (portfolio->transactions().size() != transactions.size()) {
        std::abort();
      }
    }
  } catch (const Error& error) {
    if (!error.description() || !portfolio->transactions().empty()) {
      std::abort();
    }
  }
}

}  // namespace corvane
