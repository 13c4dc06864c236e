// The screen that lists what was imported from statements, and takes imports back.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "exchange/statements/statement_memory.h"
#include "presentation/controls/table_model.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// The imports of one portfolio, the newest first, each with how many of its transactions are still
/// in the ledger as they were recorded. Main queue only; the portfolio's manager outlives it.
class StatementImportsController final : public TableModel {
 public:
  /// `memoryFolder` is where the workspace keeps its further files. While the days of the ledger
  /// are doubtful nothing is taken back, since rows are known by their days. Throws FileError.
  StatementImportsController(PortfolioPointer portfolio, const std::filesystem::path& memoryFolder,
                             ScreenSurroundings surroundings, bool areDaysDoubtful = false);

  /// Called when something else is to be shown.
  std::function<void()> changeHandler;

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return imports_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;

  /// Whether the ledger has something of the import in `row`, or nobody can tell.
  [[nodiscard]] bool canTakeBack(std::size_t row) const;
  /// Asks, and deletes what the import in `row` recorded and is still there unchanged, as one edit
  /// that can be undone. What the ledger refuses is shown.
  void takeBackAction(std::size_t row);

 private:
  void takeBack(std::size_t row);
  void count();

  PortfolioPointer portfolio_;
  bool areDaysDoubtful_;
  ScreenSurroundings surroundings_;
  std::vector<RecordedImport> imports_;
  std::vector<std::size_t> left_;  ///< transactions of each import in the ledger
};

}  // namespace corvane
