#include "cli/text_table.h"

#include <algorithm>
#include <cassert>

namespace corvane::cli {
namespace {

/// The characters of UTF-8 text, each of which counts as one place wide.
std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

std::string onOneLine(std::string text) {
  std::ranges::replace_if(
      text, [](char character) { return character == '\n' || character == '\r'; }, ' ');
  return text;
}

}  // namespace

void TextTable::write(std::ostream& out) const {
  std::vector<std::size_t> widths;
  for (const Column& column : columns_) {
    widths.push_back(width(column.title));
  }
  for (const auto& row : rows_) {
    assert(row.size() == columns_.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], width(row[i]));
    }
  }
  const auto writeRow = [&](auto cellAt) {
    std::string line;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const std::string cell = onOneLine(cellAt(i));
      const std::string padding(widths[i] - width(cell), ' ');
      line += columns_[i].alignment == Alignment::right ? padding + cell : cell + padding;
      line += "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  };
  writeRow([&](std::size_t i) { return columns_[i].title; });
  for (const auto& row : rows_) {
    writeRow([&](std::size_t i) { return row[i]; });
  }
}

}  // namespace corvane::cli
