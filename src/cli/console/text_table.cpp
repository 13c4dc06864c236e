#include "cli/console/text_table.h"

#include <algorithm>
#include <cassert>
#include <string_view>
#include <utility>

namespace corvane::cli {
namespace {

/// The number of characters of UTF-8 text.
std::size_t length(std::string_view text) {
  constexpr unsigned char topBits = 0xC0;
  constexpr unsigned char continuation = 0x80;
  return static_cast<std::size_t>(std::ranges::count_if(text, [](char byte) {
    return (static_cast<unsigned char>(byte) & topBits) != continuation;
  }));
}

void makeLineless(std::vector<std::string>& cells) {
  for (std::string& cell : cells) {
    std::ranges::replace_if(
        cell, [](char character) { return character >= 0 && character < ' '; }, ' ');
  }
}

}  // namespace

void TextTable::add(std::vector<std::string> cells) {
  assert(cells.size() == columns_.size());
  rows_.push_back(std::move(cells));
}

void TextTable::write(std::ostream& out) const {
  write(out, rows_.size(), [&](std::size_t row) { return rows_[row]; });
}

void TextTable::write(std::ostream& out, std::size_t count, const RowMaker& makeRow) const {
  std::vector<std::size_t> widths;
  std::vector<std::string> titles;
  for (const Column& column : columns_) {
    titles.push_back(column.title);
    widths.push_back(length(column.title));
  }
  for (std::size_t row = 0; row < count; ++row) {
    const std::vector<std::string> cells = makeRow(row);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      widths[i] = std::max(widths[i], length(cells[i]));
    }
  }
  const auto writeRow = [&](std::vector<std::string> cells) {
    makeLineless(cells);
    std::string line;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const std::string space(widths[i] - length(cells[i]), ' ');
      line += i == 0 ? "" : "  ";
      line += columns_[i].alignment == Alignment::left ? cells[i] + space : space + cells[i];
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  };
  writeRow(std::move(titles));
  for (std::size_t row = 0; row < count; ++row) {
    writeRow(makeRow(row));
  }
}

}  // namespace corvane::cli
