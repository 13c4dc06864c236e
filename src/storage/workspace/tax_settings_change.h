// Changes what a workspace keeps about taxes, in steps that can be undone.
#pragma once

#include <memory>
#include <optional>

#include "core/tax/tax_settings.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/async/notification_center.h"
#include "platform/async/undo_manager.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

/// Posted by the model, inline, after its tax settings or the role of a portfolio have changed.
inline constexpr Topic<WorkspaceModel*> taxSettingsDidChange{
    "ca.orlend.corvane.WorkspaceModel.taxSettingsDidChange"};

/// Gives `model` the settings, and registers the way back with `undoManager` where there is one.
/// Settings that are those already change nothing. Main queue only.
void changeTaxSettings(const std::shared_ptr<WorkspaceModel>& model, const TaxSettings& settings,
                       const std::shared_ptr<UndoManager>& undoManager);

/// Gives `portfolio` the role, or takes it away; then the portfolio counts as taxable, and the user
/// is asked again. Otherwise as changeTaxSettings().
void changeTaxRole(const std::shared_ptr<WorkspaceModel>& model, const PortfolioPointer& portfolio,
                   const std::optional<PortfolioTaxRole>& role,
                   const std::shared_ptr<UndoManager>& undoManager);

}  // namespace corvane
