// What a workspace remembers of the statements that were read into its portfolios.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "exchange/statements/statement_rows.h"
#include "ledger/portfolio/portfolio.h"

namespace corvane {

/// Kept as JSON in the file "Statements.json" of a workspace, by portfolio: which symbol an equity
/// of a statement has, and which rows were recorded from which file.
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
  /// The fingerprints of recorded rows by the broker's number of the row.
  [[nodiscard]] const std::map<std::string, std::string, std::less<>>& fingerprintsById() const {
    return fingerprintsById_;
  }

  void rememberSymbols(const std::map<std::string, std::string, std::less<>>& symbols);
  /// Keeps the new ones of `rows`, which were recorded from `file` by the layout `profile`.
  void rememberImport(const std::string& file, const std::string& profile,
                      const std::vector<StatementRow>& rows, const Calendar& calendar);

  /// Writes the file. Throws FileError.
  void write() const;

 private:
  std::filesystem::path file_;
  std::string key_;
  bool wasDamaged_ = false;
  std::map<std::string, std::string, std::less<>> symbols_;
  std::map<std::string, std::string, std::less<>> fingerprintsById_;
  struct Import {
    std::string file, day, profile;
    struct Row {
      std::uint32_t line;
      std::string id, fingerprint;
    };
    std::vector<Row> rows;
  };
  std::vector<Import> imports_;
  std::string others_;  ///< the whole document as it was read, for the other portfolios

  void read(const std::string& text);
};

}  // namespace corvane
