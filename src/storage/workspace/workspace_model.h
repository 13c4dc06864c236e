// What the rest of the program sees of a workspace document.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/market/equity_info.h"
#include "ledger/manager/portfolio_manager.h"
#include "storage/workspace/general_properties.h"

namespace corvane {

/// The watchlist, the portfolios and the scenario settings of a document, which owns this. Views
/// hold it weakly. Main queue only.
struct WorkspaceModel {
  std::vector<EquityPointer> watchlistEquities;  ///< in the order of display

  /// One stored manager while a store is open; none before, and while a file is being read.
  std::vector<std::shared_ptr<PortfolioManager>> portfolioManagers;

  GeneralProperties::RegressionSettings tradingScenarioSettings;

  // Changed by changeTaxSettings() and changeTaxRole().
  TaxSettings taxSettings;
  /// What the user has said that portfolios are to taxes. Of whom he has not been asked there is no
  /// entry.
  std::map<std::weak_ptr<Portfolio>, PortfolioTaxRole, std::owner_less<>> taxRoles;
  [[nodiscard]] std::optional<PortfolioTaxRole> taxRoleOf(const PortfolioPointer& portfolio) const {
    const auto found = taxRoles.find(portfolio);
    return found == taxRoles.end() ? std::nullopt : std::optional(found->second);
  }

  // Changed by the document alone.
  std::optional<DatesTimeZone> datesTimeZone;
  /// None where the days are surely right. Until the user has decided, no statement is imported.
  std::optional<DatesDoubt> datesDoubt;

  /// The build that wrote the file from which this was read.
  std::optional<std::string> lastSavedAppVersion;

  /// All portfolios as they are now, those of one manager after those of the other.
  [[nodiscard]] std::vector<PortfolioPointer> portfolios() const {
    std::vector<PortfolioPointer> all;
    for (const auto& manager : portfolioManagers) {
      const auto& ofManager = manager->portfolios();
      all.insert(all.end(), ofManager.begin(), ofManager.end());
    }
    return all;
  }
};

/// Whatever shows a model: a document's window, and the screens below it, which pass it on.
class WorkspaceDocumentModelHaving {
 public:
  virtual ~WorkspaceDocumentModelHaving() = default;
  [[nodiscard]] virtual std::weak_ptr<WorkspaceModel> documentModel() const = 0;
  virtual void setDocumentModel(std::weak_ptr<WorkspaceModel> model) = 0;
};

}  // namespace corvane
