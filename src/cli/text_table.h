// Columns of text for a terminal.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace corvane::cli {

/// Rows of cells that are written with aligned columns, two blanks between them.
class TextTable {
 public:
  enum class Alignment { left, right };
  struct Column {
    std::string title;
    Alignment alignment = Alignment::left;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// `cells` has one text for each column.
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  /// Line breaks within a cell are written as blanks.
  void write(std::ostream& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace corvane::cli
