// The rows of an answer: a table for a reader, or data for another program.
#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/console/command_line.h"

namespace corvane::cli {

/// How an answer is written.
enum class ListingFormat {
  table,  ///< columns below one another, with titles for a reader
  csv,    ///< delimited text as the exports write it; the first row names the fields
  json    ///< an array with an object for each row
};

/// The options "--csv" and "--json".
[[nodiscard]] std::vector<Option> listingOptions();

/// What the options say; `otherwise` where there are none. Throws UsageError where both are there.
[[nodiscard]] ListingFormat listingFormat(const CommandLine& line,
                                          ListingFormat otherwise = ListingFormat::table);

/// Rows of texts. The names of fields are a promise to the programs of users and never change;
/// titles may. Data has the fields of the table in its order, numbers with a point and without
/// grouping, days as 2024-02-29, whatever the locale.
class Listing {
 public:
  enum class Kind {
    text,
    number,  ///< in JSON a number with all digits of the text, and to the right in a table
    boolean  ///< "true" or "false"
  };
  struct Field {
    std::string_view name;
    std::string_view title;
    Kind kind = Kind::text;
  };

  explicit Listing(std::vector<Field> fields) : fields_(std::move(fields)) {}

  /// A cell for each field. An empty one stands for nothing, in JSON for null. A cell of a number
  /// that is none, such as the ratio of a split, becomes a text in JSON.
  void add(std::vector<std::string> cells);

  void write(ListingFormat format, std::ostream& out) const;

  /// Makes the cells of the row at a place. May be asked twice for each, from the first row on.
  using RowMaker = std::function<std::vector<std::string>(std::size_t row)>;
  /// Writes `count` rows that are made on the way, so that none but one is held. Those that were
  /// added are no part of it.
  void write(ListingFormat format, std::ostream& out, std::size_t count,
             const RowMaker& makeRow) const;

 private:
  void writeTable(std::ostream& out, std::size_t count, const RowMaker& makeRow) const;
  void writeCSV(std::ostream& out, std::size_t count, const RowMaker& makeRow) const;
  void writeJSON(std::ostream& out, std::size_t count, const RowMaker& makeRow) const;

  std::vector<Field> fields_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace corvane::cli
