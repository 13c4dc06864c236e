// Whatever shows a choice of portfolio and days: the tabs of a portfolio's screen.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "ledger/manager/portfolio_data_slice.h"
#include "ledger/manager/portfolio_manager.h"
#include "presentation/controls/table_model.h"

namespace corvane {

class PortfolioExporter;

class CurrentPortfolioHaving {
 public:
  virtual ~CurrentPortfolioHaving() = default;
  [[nodiscard]] virtual const PortfolioDataSlice& currentData() const = 0;
  /// Shows `data`. `changes` tells what an edit of the ledger has just done, where one has.
  virtual void setCurrentData(PortfolioDataSlice data,
                              const std::optional<TransactionChanges>& changes) = 0;
};

/// A tab of a portfolio's screen.
class PortfolioTab : public CurrentPortfolioHaving {
 public:
  [[nodiscard]] virtual std::string_view tabTitle() const = 0;
  /// What writes the tab, which has a portfolio, to a file.
  [[nodiscard]] virtual std::shared_ptr<PortfolioExporter> makeExporter() const = 0;
  /// Whether commands for rows are meant for this tab, which they are while it is selected.
  virtual void setReceivesCommands(bool /*receivesCommands*/) {}

  /// Whether the tab has charts of its own, so that it wants the place of the one above the tabs.
  [[nodiscard]] virtual bool hasOwnChart() const { return false; }

  /// Shows how a figure came about; what it is given makes the trail.
  std::function<void(const TrailMaker&)> explainHandler = [](const TrailMaker&) {};
  /// Shows the equity of a row on its own screen.
  std::function<void(const EquityPointer&)> openEquityHandler = [](const EquityPointer&) {};
};

}  // namespace corvane
