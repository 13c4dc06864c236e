#include "presentation/portfolio/statement_imports_controller.h"

#include <algorithm>
#include <array>
#include <utility>

#include "exchange/statements/ledger_matching.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/text/unicode/isolation.h"
#include "storage/workspace/dates_time_zone.h"

namespace corvane {
namespace {

struct ImportRow {
  const RecordedImport& import;
  std::size_t left;  ///< its transactions that are in the ledger
};

constexpr std::array<ColumnOf<ImportRow>, 5> importColumns = {{
    {{"day", "Imported"}, [](const ImportRow& row) { return AttributedText(row.import.day); }},
    {{"file", "File"}, [](const ImportRow& row) { return AttributedText(row.import.file); }},
    {{"layout", "Layout"}, [](const ImportRow& row) { return AttributedText(row.import.profile); }},
    {{"recorded", "Transactions", true},
     [](const ImportRow& row) {
       return AttributedText(std::to_string(row.import.transactionCount()));
     }},
    {{"left", "In the Ledger", true},
     [](const ImportRow& row) { return AttributedText(std::to_string(row.left)); }},
}};

std::string transactionsText(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " transaction" : " transactions");
}

}  // namespace

StatementImportsController::StatementImportsController(PortfolioPointer portfolio,
                                                       const std::filesystem::path& memoryFolder,
                                                       ScreenSurroundings surroundings,
                                                       bool areDaysDoubtful)
    : portfolio_(std::move(portfolio)),
      areDaysDoubtful_(areDaysDoubtful),
      surroundings_(std::move(surroundings)),
      imports_(StatementMemory(memoryFolder, *portfolio_).imports()) {
  std::ranges::reverse(imports_);
  count();
}

void StatementImportsController::count() {
  left_.clear();
  const auto manager = portfolio_->manager.lock();
  for (const RecordedImport& import : imports_) {
    left_.push_back(manager == nullptr ? 0
                                       : rowsLeftOf(import, *portfolio_, manager->calendar).size());
  }
}

const std::vector<TableColumn>& StatementImportsController::columns() const {
  static const std::vector<TableColumn> columns = columnsOf(importColumns);
  return columns;
}

AttributedText StatementImportsController::cell(std::size_t row, std::size_t column) const {
  return importColumns.at(column).cell({imports_.at(row), left_.at(row)});
}

bool StatementImportsController::canTakeBack(std::size_t row) const {
  return row < left_.size() && (left_[row] > 0 || areDaysDoubtful_);
}

void StatementImportsController::takeBackAction(std::size_t row) {
  if (!canTakeBack(row)) {
    return;
  }
  if (areDaysDoubtful_) {
    surroundings_.presentError(
        DoubtfulDatesError(DoubtfulDatesError::noTakingBack,
                           "Decide in which time zone the days stand first: Edit › Time Zone of "
                           "Days."));
    return;
  }
  const std::size_t gone = imports_[row].transactionCount() - left_[row];
  DocumentAlert alert;
  alert.messageText = "Take back the import of “" + isolatedName(imports_[row].file) + "”?";
  alert.informativeText = "This deletes " + transactionsText(left_[row]) + " of the portfolio.";
  if (gone > 0) {
    alert.informativeText +=
        " " + transactionsText(gone) + " that were changed or deleted since then are left alone.";
  }
  alert.buttons = {"Take Back", "Cancel"};
  surroundings_.showAlert(alert, [this, row](std::size_t button) {
    if (button == 0) {
      takeBack(row);
    }
  });
}

void StatementImportsController::takeBack(std::size_t row) {
  const auto manager = portfolio_->manager.lock();
  if (manager == nullptr) {
    return;
  }
  try {
    manager->deleteTransactions(rowsLeftOf(imports_.at(row), *portfolio_, manager->calendar),
                                portfolio_, surroundings_.undoManager);
    if (surroundings_.undoManager != nullptr) {
      surroundings_.undoManager->setActionName("Take Back Import");
    }
  } catch (const Error& error) {
    surroundings_.presentError(error);
    return;
  }
  count();
  if (changeHandler) {
    changeHandler();
  }
}

}  // namespace corvane
