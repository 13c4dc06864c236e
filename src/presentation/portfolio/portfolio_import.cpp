#include "presentation/portfolio/portfolio_import.h"

#include <algorithm>
#include <string>
#include <utility>

namespace corvane {

std::shared_ptr<PortfolioImport> PortfolioImport::make(
    std::weak_ptr<PortfolioViewController> screen, ScreenSurroundings surroundings,
    std::shared_ptr<ImportExportWindow> window) {
  return std::make_shared<PortfolioImport>(Passkey{}, std::move(screen), std::move(surroundings),
                                           std::move(window));
}

PortfolioImport::PortfolioImport(Passkey /*passkey*/, std::weak_ptr<PortfolioViewController> screen,
                                 ScreenSurroundings surroundings,
                                 std::shared_ptr<ImportExportWindow> window)
    : screen_(std::move(screen)),
      surroundings_(std::move(surroundings)),
      window_(std::move(window)) {}

bool PortfolioImport::canImport() const {
  const auto screen = screen_.lock();
  return screen != nullptr && screen->canCreateTransaction() && importExportController_ == nullptr;
}

void PortfolioImport::importAction() {
  if (!canImport()) {
    return;
  }
  const auto importer = PortfolioTransactionsImporter::make(screen_.lock()->currentData().portfolio,
                                                            surroundings_.defaults);
  importer->reviewHandler = reviewIn(window_);
  const auto controller = ImportController::make(importer);
  importExportController_ = controller;
  controller->beginImport(window_, [weakSelf = weak_from_this(), importer](bool hasImported) {
    const auto self = weakSelf.lock();
    if (self == nullptr) {
      return;
    }
    if (hasImported) {
      self->importDidEnd(importer->transactionsToRecord(), importer->portfolio());
    }
    self->importExportController_ = nullptr;
  });
}

void PortfolioImport::importDidEnd(const std::vector<BasicTransaction>& rows,
                                   const PortfolioPointer& portfolio) {
  const auto screen = screen_.lock();
  const auto manager = portfolio->manager.lock();
  if (screen != nullptr && manager != nullptr && !rows.empty() &&
      screen->currentData().portfolio == portfolio) {
    // Statements list the newest row first as often as last.
    const auto [first, last] = std::minmax(rows.front().settlementDate, rows.back().settlementDate);
    screen->datesPicker.setLimits(QueryDatesPicker::earliestPossibleDay,
                                  QueryDatesPicker::latestPossibleDay);
    screen->datesPicker.setDates(YearMonthDay::of(first, manager->calendar),
                                 YearMonthDay::of(last, manager->calendar));
    screen->reload(PortfolioViewController::PortfolioChanged{});
  }
  surroundings_.presentMessage("Imported " + std::to_string(rows.size()) + " transactions.");
  if (surroundings_.undoManager != nullptr) {
    surroundings_.undoManager->removeAllActions();
  }
  surroundings_.documentDidChange();
}

}  // namespace corvane
