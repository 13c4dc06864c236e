// What a workspace remembers of the statements that were read into its portfolios.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "exchange/statements/recorded_import.h"
#include "exchange/statements/statement_preview.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// Kept as JSON in the file "Statements.json" of a workspace, by portfolio: which symbol an equity
/// of a statement has, what else the user has answered, and which rows were recorded from which
/// file.
class StatementMemory {
 public:
  static constexpr std::string_view fileName = "Statements.json";

  /// What `folder` holds for `portfolio`; nothing where there is no such file. A file that cannot
  /// be understood is put aside as "Statements.json.damaged", and `wasDamaged` tells so. Throws
  /// FileError.
  StatementMemory(const std::filesystem::path& folder, const Portfolio& portfolio);

  [[nodiscard]] bool wasDamaged() const { return wasDamaged_; }
  /// Symbols by ISIN, name or the broker's symbol, folded.
  [[nodiscard]] const std::map<std::string, std::string, std::less<>>& symbols() const {
    return symbols_;
  }
  [[nodiscard]] const RememberedAnswers& answers() const { return answers_; }
  /// The imports, the oldest first.
  [[nodiscard]] const std::vector<RecordedImport>& imports() const { return imports_; }

  /// Keeps what `options` say of symbols, and of the account and currency of the layout of
  /// `preview`.
  void rememberAnswers(const StatementOptions& options, const StatementPreview& preview);
  /// Keeps the new rows of `preview`, which were recorded from `file`.
  void rememberImport(const std::string& file, const StatementPreview& preview,
                      const Calendar& calendar);

  /// Writes the file. Throws FileError.
  void write() const;

 private:
  std::filesystem::path file_;
  std::string key_;
  bool wasDamaged_ = false;
  std::map<std::string, std::string, std::less<>> symbols_;
  RememberedAnswers answers_;
  std::vector<RecordedImport> imports_;
  std::string others_;  ///< the whole document as it was read, for the other portfolios

  void read(const std::string& text);
};

}  // namespace corvane
