// The engine that cuts delimited text into rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "exchange/csv/csv_delimiter.h"
#include "exchange/csv/csv_parse_error.h"
#include "exchange/csv/csv_row.h"

namespace corvane {

/// Is given each row; the row is good until it returns. Whatever it throws ends the walk.
using CSVRowCallback = std::function<void(const CSVRow&)>;

/// Calls `rowCallback` with the rows of `text` from the row at `startAt` on, at most `rowLimit` of
/// them; without a limit, or with one below 0, all. Rows before `startAt` are read as well, so a
/// fault in them shows. Nothing is read beyond the last row asked for.
///
/// Works on characters as a reader sees them: a quote or a comma that carries an accent is neither,
/// and a carriage return with a line feed is one line break. A field in quotes may hold everything;
/// a quote in it, or in a field without quotes, is written twice. Blanks before a field and after a
/// closing quote are dropped, others stay. A field whose closing quote is missing reaches to the
/// end of the text. A text that is no UTF-8 is taken byte for byte.
///
/// Tells where the quote stands, as an offset into `text`, that was opened and never closed; none
/// where all are, or where the walk ended before. Throws CSVParseError. Any thread.
std::optional<std::size_t> parseRows(std::string_view text, const CSVDelimiter& delimiter,
                                     std::size_t startAt, std::optional<std::int64_t> rowLimit,
                                     const CSVRowCallback& rowCallback);

/// Reads the rows of a text one by one, and once more from any place where one starts: whoever
/// keeps those places needs no table of the cells. How rows are cut is told at parseRows. Any
/// thread, one at a time.
class CSVRowReader {
 public:
  /// `text` outlives the reader. Throws CSVParseError for a text that is too long.
  CSVRowReader(std::string_view text, CSVDelimiter delimiter);
  CSVRowReader(const CSVRowReader&) = delete;
  CSVRowReader& operator=(const CSVRowReader&) = delete;
  ~CSVRowReader();

  /// The next row, good until the next call; none at the end of the text. Throws CSVParseError.
  [[nodiscard]] std::optional<CSVRow> next();
  /// Where the next row starts, as an offset into the text.
  [[nodiscard]] std::size_t position() const;
  /// At the end of the text: where the quote stands that was opened and never closed.
  [[nodiscard]] std::optional<std::size_t> unclosedQuote() const;
  /// Goes to the row that starts at `position`, which stands on `line` of the text.
  void moveTo(std::size_t position, std::uint32_t line);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace corvane
