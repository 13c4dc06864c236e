#include "presentation/portfolio/portfolio_export.h"

#include <utility>

#include "exchange/exports/portfolio_exporter.h"

namespace corvane {

std::shared_ptr<PortfolioExport> PortfolioExport::make(
    std::weak_ptr<PortfolioViewController> screen, ScreenSurroundings surroundings,
    std::shared_ptr<ImportExportWindow> window) {
  return std::make_shared<PortfolioExport>(Passkey{}, std::move(screen), std::move(surroundings),
                                           std::move(window));
}

PortfolioExport::PortfolioExport(Passkey /*passkey*/, std::weak_ptr<PortfolioViewController> screen,
                                 ScreenSurroundings surroundings,
                                 std::shared_ptr<ImportExportWindow> window)
    : screen_(std::move(screen)),
      surroundings_(std::move(surroundings)),
      window_(std::move(window)) {}

bool PortfolioExport::canExport() const {
  const auto screen = screen_.lock();
  return screen != nullptr && screen->currentData().portfolio != nullptr &&
         importExportController_ == nullptr;
}

void PortfolioExport::exportAction() {
  if (!canExport()) {
    return;
  }
  // Held here too: with nothing to export the completion runs at once.
  const auto controller = ExportController::make(screen_.lock()->selectedTab().makeExporter());
  importExportController_ = controller;
  controller->beginExport(window_, [weakSelf = weak_from_this()](bool /*hasEnded*/) {
    if (const auto self = weakSelf.lock()) {
      self->importExportController_ = nullptr;
    }
  });
}

}  // namespace corvane
