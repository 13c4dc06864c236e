// The command that imports transactions into the portfolio of a screen.
#pragma once

#include <memory>

#include "exchange/imports/import_controller.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "presentation/portfolio/portfolio_view_controller.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// Runs one import at a time, and shows what it has brought. Held by shared pointer only; an import
/// that runs does not keep it alive. Main queue only.
class PortfolioImport : public std::enable_shared_from_this<PortfolioImport> {
  struct Passkey {};

 public:
  /// `window` shows the panels and sheets.
  [[nodiscard]] static std::shared_ptr<PortfolioImport> make(
      std::weak_ptr<PortfolioViewController> screen, ScreenSurroundings surroundings,
      std::shared_ptr<ImportExportWindow> window);
  PortfolioImport(Passkey passkey, std::weak_ptr<PortfolioViewController> screen,
                  ScreenSurroundings surroundings, std::shared_ptr<ImportExportWindow> window);
  PortfolioImport(const PortfolioImport&) = delete;
  PortfolioImport& operator=(const PortfolioImport&) = delete;

  /// Whether the screen has a portfolio and no import is running.
  [[nodiscard]] bool canImport() const;

  /// Asks for a file and imports it. Afterwards the screen shows the days of the imported rows, the
  /// user is told how many there are, and all undo steps are gone: an import cannot be undone, and
  /// the steps before it would no longer fit the ledger.
  void importAction();

  /// Does what follows an import, for rows that were recorded in `portfolio` by other means.
  void importDidEnd(const std::vector<BasicTransaction>& rows, const PortfolioPointer& portfolio);

 private:
  std::weak_ptr<PortfolioViewController> screen_;
  ScreenSurroundings surroundings_;
  std::shared_ptr<ImportExportWindow> window_;
  std::shared_ptr<ImportController> importExportController_;
};

}  // namespace corvane
