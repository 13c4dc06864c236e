// The form that says whose the portfolios of a workspace are, and what its tax year goes by.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/async/undo_manager.h"
#include "storage/workspace/tax_settings_change.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// A plain state that is applied as one step. Main queue only.
class TaxRolesForm {
 public:
  struct Line {
    PortfolioPointer portfolio;
    PortfolioTaxRole role;
    bool isConfirmed = false;  ///< the user has said so before
    std::string proposal;      ///< why the form proposes the role; empty where it does not
  };

  /// Filled with what `model` has; where it has nothing, with what the name of a portfolio
  /// suggests.
  TaxRolesForm(std::shared_ptr<WorkspaceModel> model, std::shared_ptr<UndoManager> undoManager);

  std::vector<Line> lines;
  TaxSettings settings;
  std::string yearStart;  ///< "01-01"

  /// Why it cannot be applied; empty where it can.
  [[nodiscard]] std::string problem() const;
  /// Sets all roles and settings. To be called without a problem().
  void apply();

 private:
  std::shared_ptr<WorkspaceModel> model_;
  std::shared_ptr<UndoManager> undoManager_;
};

}  // namespace corvane
