#include "cli/console/text_table.h"

#include <algorithm>
#include <cassert>
#include <string_view>

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

}  // namespace

void TextTable::add(std::vector<std::string> cells) {
  assert(cells.size() == columns_.size());
  for (std::string& cell : cells) {
    std::ranges::replace_if(
        cell, [](char character) { return character >= 0 && character < ' '; }, ' ');
  }
  rows_.push_back(std::move(cells));
}

void TextTable::write(std::ostream& out) const {
  std::vector<std::size_t> widths;
  std::vector<std::string> titles;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    titles.push_back(columns_[i].title);
    widths.push_back(length(columns_[i].title));
    for (const auto& row : rows_) {
      widths[i] = std::max(widths[i], length(row[i]));
    }
  }
  const auto writeRow = [&](const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string space(widths[i] - length(cells[i]), ' ');
      line += i == 0 ? "" : "  ";
      line += columns_[i].alignment == Alignment::left ? cells[i] + space : space + cells[i];
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  };
  writeRow(titles);
  std::ranges::for_each(rows_, writeRow);
}

}  // namespace corvane::cli
