// Any bytes as delimited text: what is accepted is written and read back as the same rows, and a
// walk over part of the rows sees what a walk over all of them sees.

#include <cstdint>
#include <cstdlib>

#include "exchange/csv/csv.h"

namespace {

using corvane::CSVDelimiter;
using corvane::CSVRow;
using Rows = std::vector<std::vector<std::string>>;

void require(bool isSo) {
  if (!isSo) {
    std::abort();
  }
}

Rows rowsOf(std::string_view text, const CSVDelimiter& delimiter, std::size_t startAt,
            std::optional<std::int64_t> rowLimit) {
  Rows rows;
  corvane::parseRows(text, delimiter, startAt, rowLimit,
                     [&](const CSVRow& row) { rows.push_back(row.strings()); });
  return rows;
}

/// `rows` with every cell in quotes, as exports write it.
std::string quoted(const Rows& rows) {
  std::string text;
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      text += column == 0 ? "\"" : ",\"";
      for (const char byte : row[column]) {
        text.append(byte == '"' ? 2 : 1, byte);
      }
      text += '"';
    }
    text += "\r\n";
  }
  return text;
}

/// Whether quotes around a cell stay quotes: they do not where a mark in the cell joins them.
bool canBeQuoted(const Rows& rows) {
  for (const auto& row : rows) {
    for (const auto& cell : row) {
      for (const char byte : cell) {
        if (static_cast<unsigned char>(byte) >= 0x80) {
          return false;
        }
      }
    }
  }
  return true;
}

void check(std::string_view text, const CSVDelimiter& delimiter) {
  Rows rows;
  try {
    rows = rowsOf(text, delimiter, 0, std::nullopt);
  } catch (const corvane::CSVParseError& error) {
    const std::string message = error.description().value();
    require(message.starts_with("Can't have non-quote here: "));
    return;
  }
  const Rows tail = rowsOf(text, delimiter, 1, std::nullopt);
  require(tail.size() + 1 == rows.size() || rows.empty());
  require(std::equal(tail.rbegin(), tail.rend(), rows.rbegin()));
  const Rows head = rowsOf(text, delimiter, 0, 2);
  require(std::equal(head.begin(), head.end(), rows.begin()) && head.size() <= 2);

  const corvane::CSV<corvane::Enumerated> csv(std::string(text), delimiter);
  (void)csv.serialized();
  const auto columns = csv.content().columns();
  for (const auto& column : columns.value()) {
    require(column.rows.size() == csv.content().rows().size());
  }
  const corvane::CSV<corvane::Named> named(std::string(text), delimiter);
  (void)named.serialized();

  if (canBeQuoted(rows)) {
    require(rowsOf(quoted(rows), CSVDelimiter::comma(), 0, std::nullopt) == rows);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  while (text.starts_with(mark)) {  // the reader itself drops only one
    text.remove_prefix(mark.size());
  }
  check(text, CSVDelimiter::guessed(text));
  check(text, CSVDelimiter::tab());
  check(text, CSVDelimiter("\U0001F1E8\U0001F1E6"));
  return 0;
}
