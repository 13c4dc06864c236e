// From the cells of a statement to what would be recorded.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "exchange/reading/statement_file.h"
#include "exchange/reading/statement_options.h"
#include "exchange/reading/statement_rows.h"

namespace corvane {

/// The rows of a statement in the order in which they would be recorded, and what is to be known
/// of them.
struct StatementReading {
  StatementRows rows;
  /// Sentences: how days and numbers were read, what was rounded.
  std::vector<std::string> remarks;
  std::set<std::string> accounts;  ///< whose rows the file has
};

/// Reads all rows of `file`. Whatever is wrong with one row stands at the row; what is wrong with
/// all of them (the order of days, the decimal mark) throws StatementError.
[[nodiscard]] StatementReading readStatement(const StatementFile& file,
                                             const StatementSurroundings& surroundings,
                                             const StatementOptions& options);

}  // namespace corvane
