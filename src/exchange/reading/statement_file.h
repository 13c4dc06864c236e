// A statement's file: which layout it has, and where its rows stand under the headings.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/csv/csv_parser.h"
#include "exchange/profiles/statement_profile.h"
#include "exchange/reading/statement_rows.h"
#include "exchange/reading/statement_table.h"
#include "platform/text/unicode/text_encoding.h"

namespace corvane {

/// Where a row of a table starts. Its cells are cut when they are needed.
struct StatementRowPlace {
  std::uint32_t offset = 0;  ///< in the text, which is less than 4 GiB long
  std::uint32_t line = 0;
  std::uint16_t table = 0;
  std::uint16_t continuations = 0;  ///< lines behind it on which one of its cells goes on
};

/// A file that has been read and recognised. It looks at the bytes that it was read from, and
/// holds a text of its own only where those had to be decoded.
struct StatementFile {
  const StatementProfile* profile = nullptr;
  TextEncoding encoding = TextEncoding::utf8;
  std::string_view text;
  CSVDelimiter delimiter = CSVDelimiter::comma();
  std::vector<StatementTable> tables;
  std::vector<StatementRowPlace> rows;
  StatementRows apart;  ///< rows that belong to no table, or are left out by it
  /// Sentences: by what the layout was recognised, and which columns are not as it has them.
  std::vector<std::string> remarks;
  std::unique_ptr<const std::string> decoded;  ///< null where the text is that of the bytes

  /// Told again and again what part is done, from 0 to 1; may be null. What it throws ends the
  /// reading.
  using ProgressHandler = std::function<void(double fraction)>;

  /// Finds the layout of `bytes` among `profiles`, both of which outlive the result. Throws
  /// StatementError where none fits or several do equally well, TextEncodingError and
  /// CSVParseError.
  [[nodiscard]] static StatementFile read(std::string_view bytes,
                                          const std::vector<StatementProfile>& profiles,
                                          const std::optional<std::string>& profileId,
                                          const ProgressHandler& progress = nullptr);
};

/// Cuts rows of a file into cells: trimmed, without those that the layout takes for empty, and as
/// many as the table has.
class StatementCells {
 public:
  /// `file` outlives it.
  explicit StatementCells(const StatementFile& file);

  /// Cuts the row at `index`. Fastest where one row follows another.
  void goTo(std::size_t index);
  /// Of the row, good until the next is cut.
  [[nodiscard]] const std::vector<std::string_view>& cells() const { return cells_; }
  [[nodiscard]] std::uint32_t line() const { return place_.line; }
  [[nodiscard]] const StatementTable& table() const { return file_.tables[place_.table]; }

  /// The cells of `row`, without empty ones at the end.
  static void trim(const CSVRow& row, const StatementProfile& profile,
                   std::vector<std::string_view>& cells);
  /// The cell with which `cells` go on with the row before; none where they are a row themselves.
  [[nodiscard]] static std::optional<std::size_t> continuedColumn(
      const StatementProfile& profile, const StatementTable& table,
      const std::vector<std::string_view>& cells);

 private:
  void takeContinuations();

  const StatementFile& file_;
  CSVRowReader reader_;
  StatementRowPlace place_;
  std::vector<std::string_view> cells_;
  std::vector<std::string_view> further_;
  std::vector<std::string> keptCells_;  ///< of a row that goes on
};

}  // namespace corvane
