// The screen that shows what an import of a statement would do, before it does it.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/statements/statement_memory.h"
#include "exchange/statements/statement_preview.h"
#include "presentation/controls/table_model.h"

namespace corvane {

/// A statement that has been read for a portfolio, the questions that it leaves open, and the rows
/// that the user has ticked. Main queue only; the portfolio's manager outlives it.
class StatementPreviewController final : public TableModel {
 public:
  /// Reads `file` for `portfolio`. `memoryFolder` is where the workspace keeps its further files.
  /// What is wrong with the whole file is told by problem(). Throws FileError.
  StatementPreviewController(const std::filesystem::path& file, PortfolioPointer portfolio,
                             const std::filesystem::path& memoryFolder);

  /// Called when something else is to be shown.
  std::function<void()> changeHandler;

  /// What was recognised, and how days and numbers were read; a sentence on each line.
  [[nodiscard]] std::string summary() const;
  /// Why nothing can be shown of the file; empty where it can.
  [[nodiscard]] const std::string& problem() const { return problem_; }

  /// What only the user knows.
  struct Question {
    std::string text;  ///< "Which symbol has “ISHARES CORE EQUITY ETF”?"
    std::string key;   ///< what the file calls it
    std::string answer;
  };
  [[nodiscard]] const std::vector<Question>& questions() const { return questions_; }
  /// Reads the file once more with these answers, one for each question; empty ones stay open.
  void answer(const std::vector<std::string>& answers);
  /// Says how days are written, or what stands before decimals.
  void setDays(std::optional<DayOrder> days);
  void setDecimal(std::optional<DecimalMark> mark);

  // The rows, in the order of the lines of the file.

  [[nodiscard]] const std::vector<TableColumn>& columns() const override;
  [[nodiscard]] std::size_t numberOfRows() const override { return rows_.size(); }
  [[nodiscard]] AttributedText cell(std::size_t row, std::size_t column) const override;
  /// Whether a row is to be recorded. Only new ones and those that ask or are refused can be.
  [[nodiscard]] bool isTicked(std::size_t row) const;
  [[nodiscard]] bool mayBeTicked(std::size_t row) const;
  void setTicked(std::size_t row, bool isOn);

  /// "Import 12 Rows"
  [[nodiscard]] std::string importTitle() const;
  /// Whether there is a row to record, and no ticked one asks or is refused.
  [[nodiscard]] bool canImport() const;
  /// Records the ticked rows as one edit that cannot be undone, and remembers the answers. Throws
  /// what the ledger throws; then nothing has changed.
  std::vector<BasicTransaction> import();

 private:
  void readAgain();
  void findQuestions();

  std::string filename_;
  std::string bytes_;
  PortfolioPointer portfolio_;
  StatementMemory memory_;
  ProfileShelf shelf_;
  StatementOptions options_;
  StatementPreview preview_;
  std::string problem_;
  std::vector<Question> questions_;
  std::vector<const StatementRow*> rows_;
};

}  // namespace corvane
