// A table of texts whose columns stand below one another.
#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace corvane::cli {

class TextTable {
 public:
  enum class Alignment { left, right };
  struct Column {
    std::string title;
    Alignment alignment = Alignment::left;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// A cell for each column. Line breaks in cells become blanks.
  void add(std::vector<std::string> cells);

  /// The titles and the rows, two blanks between columns and none at the end of a line.
  void write(std::ostream& out) const;

  /// Makes the cells of the row at a place; it is asked twice for each row.
  using RowMaker = std::function<std::vector<std::string>(std::size_t row)>;
  /// The same with `count` rows that are made on the way in place of those that were added.
  void write(std::ostream& out, std::size_t count, const RowMaker& makeRow) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace corvane::cli
