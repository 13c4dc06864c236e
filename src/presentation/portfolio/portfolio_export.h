// The command that exports what the selected tab of a portfolio's screen shows.
#pragma once

#include <memory>

#include "exchange/exports/export_controller.h"
#include "presentation/portfolio/portfolio_view_controller.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// Runs one export at a time. Held by shared pointer only; an export that runs does not keep it
/// alive. Main queue only.
class PortfolioExport : public std::enable_shared_from_this<PortfolioExport> {
  struct Passkey {};

 public:
  /// `window` shows the panels and sheets.
  [[nodiscard]] static std::shared_ptr<PortfolioExport> make(
      std::weak_ptr<PortfolioViewController> screen, ScreenSurroundings surroundings,
      std::shared_ptr<ImportExportWindow> window);
  PortfolioExport(Passkey passkey, std::weak_ptr<PortfolioViewController> screen,
                  ScreenSurroundings surroundings, std::shared_ptr<ImportExportWindow> window);
  PortfolioExport(const PortfolioExport&) = delete;
  PortfolioExport& operator=(const PortfolioExport&) = delete;

  /// Whether the screen has a portfolio and no export is running.
  [[nodiscard]] bool canExport() const;

  /// Asks for a place and writes the file. A tab with no rows exports nothing and asks nothing.
  void exportAction();

 private:
  std::weak_ptr<PortfolioViewController> screen_;
  ScreenSurroundings surroundings_;
  std::shared_ptr<ImportExportWindow> window_;
  std::shared_ptr<ExportController> importExportController_;
};

}  // namespace corvane
