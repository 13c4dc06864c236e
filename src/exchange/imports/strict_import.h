// The cells of an import once more, each taken only for what it can mean.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "exchange/imports/import_row.h"
#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"
#include "ledger/transaction/basic_transaction.h"
#include "platform/time/calendar.h"

namespace corvane {

/// What the user has said about a file.
struct StrictImportOptions {
  std::optional<DayOrder> days;
  std::optional<DecimalMark> decimal;
  /// Whether the program has written the file itself, in the user's locale: what the cells leave
  /// open is then as it writes it.
  bool isOwnExport = false;
};

/// Where and how a file is read.
struct StrictImportSurroundings {
  const ImportSurroundings& rows;
  Calendar calendar;
  StrictImportOptions options;
  /// Reads days by a format that the user has named; null where their order is to be worked out.
  std::function<std::optional<Date>(std::string_view cell)> dateIn = nullptr;
};

/// What the strict reading of a file comes to.
struct StrictImport {
  std::vector<BasicTransaction> rows;  ///< in the order of the file, empty lines left out
  std::vector<std::uint32_t> lines;    ///< of the file, for each row
  std::vector<std::size_t> positions;  ///< of each row among the cells
  std::vector<std::optional<std::int64_t>> times;

  /// The rows as they follow one another in time: a file whose days fall is turned round, and then
  /// rows are sorted by day, and by time where each has one.
  [[nodiscard]] StrictImport inOrderOfTime() const;
  /// The places of the rows in that order.
  [[nodiscard]] std::vector<std::size_t> orderOfTime() const;
};

/// Throws StatementError for the first cell that means nothing by itself.
[[nodiscard]] StrictImport readStrictly(const ImportedCells& cells,
                                        const StrictImportSurroundings& surroundings);

/// Whether the header is that of an exported ledger, for the columns that are read.
[[nodiscard]] bool hasOwnHeadings(const ImportedCells& cells);

}  // namespace corvane
