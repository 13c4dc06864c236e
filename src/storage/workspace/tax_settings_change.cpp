#include "storage/workspace/tax_settings_change.h"

#include <utility>

namespace corvane {

void changeTaxSettings(const std::shared_ptr<WorkspaceModel>& model, const TaxSettings& settings,
                       const std::shared_ptr<UndoManager>& undoManager) {
  if (model->taxSettings == settings) {
    return;
  }
  const TaxSettings before = std::exchange(model->taxSettings, settings);
  if (undoManager != nullptr) {
    undoManager->registerUndo(
        model, [before, weakModel = std::weak_ptr(model), undo = std::weak_ptr(undoManager)](
                   WorkspaceModel&) { changeTaxSettings(weakModel.lock(), before, undo.lock()); });
  }
  NotificationCenter::defaultCenter().post(taxSettingsDidChange, model.get(), model.get());
}

void changeTaxRole(const std::shared_ptr<WorkspaceModel>& model, const PortfolioPointer& portfolio,
                   const std::optional<PortfolioTaxRole>& role,
                   const std::shared_ptr<UndoManager>& undoManager) {
  const std::optional<PortfolioTaxRole> before = model->taxRoleOf(portfolio);
  if (before == role) {
    return;
  }
  if (role) {
    model->taxRoles[portfolio] = *role;
  } else {
    model->taxRoles.erase(portfolio);
  }
  if (undoManager != nullptr) {
    undoManager->registerUndo(portfolio, [before, weakModel = std::weak_ptr(model),
                                          weakPortfolio = std::weak_ptr(portfolio),
                                          undo = std::weak_ptr(undoManager)](Portfolio&) {
      if (const auto changed = weakModel.lock()) {
        changeTaxRole(changed, weakPortfolio.lock(), before, undo.lock());
      }
    });
  }
  NotificationCenter::defaultCenter().post(taxSettingsDidChange, model.get(), model.get());
}

}  // namespace corvane
