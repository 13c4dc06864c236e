// What was recorded from a statement, as the workspace remembers it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

/// One row of a file that became transactions.
struct RecordedRow {
  std::uint32_t line = 0;
  std::string id;                         ///< the broker's number of the row, may be empty
  std::vector<std::string> fingerprints;  ///< of its transactions
};

/// One import. Whether its rows are still there, only the ledger tells.
struct RecordedImport {
  std::string file;      ///< its name
  std::string sha256;    ///< of its bytes, in hexadecimal digits
  std::string day;       ///< of the import, "2025-01-31"
  std::string profile;   ///< the layout's name
  std::string firstDay;  ///< of the trades in the file; empty where it is not known
  std::string lastDay;
  std::vector<RecordedRow> rows;

  /// How many transactions came of the rows.
  [[nodiscard]] std::size_t transactionCount() const {
    std::size_t count = 0;
    for (const RecordedRow& row : rows) {
      count += row.fingerprints.size();
    }
    return count;
  }
};

}  // namespace corvane
