// Whatever shows a choice of portfolio and days: the tabs of a portfolio's screen.
#pragma once

#include <optional>

#include "ledger/manager/portfolio_data_slice.h"
#include "ledger/manager/portfolio_manager.h"

namespace corvane {

class CurrentPortfolioHaving {
 public:
  virtual ~CurrentPortfolioHaving() = default;
  [[nodiscard]] virtual const PortfolioDataSlice& currentData() const = 0;
  /// Shows `data`. `changes` tells what an edit of the ledger has just done, where one has.
  virtual void setCurrentData(PortfolioDataSlice data,
                              const std::optional<TransactionChanges>& changes) = 0;
};

}  // namespace corvane
