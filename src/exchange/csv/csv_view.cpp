#include "exchange/csv/csv_view.h"

#include <algorithm>
#include <numeric>

#include "exchange/csv/csv_parser.h"

namespace corvane {
namespace {

CSVTable tableOf(const CSVRow& header) {
  CSVTable table;
  if (!header.empty()) {
    table.append(header);
  }
  return table;
}

/// Reads the rows behind the first one into `rows`; where a quote stands that is never closed.
std::optional<std::size_t> readContent(std::string_view text, const CSVDelimiter& delimiter,
                                       std::optional<std::int64_t> rowLimit, CSVTable& rows) {
  if (!rowLimit || *rowLimit < 0) {
    // No row ends without a line break and no field without that or a delimiter, but for the last.
    const auto count = [&](char byte) {
      return static_cast<std::size_t>(std::ranges::count(text, byte));
    };
    const std::size_t lineBreaks = count('\n') + count('\r') + 1;
    rows.reserve(lineBreaks, lineBreaks + count(delimiter.rawValue().front()), text.size());
  }
  return parseRows(text, delimiter, 1, rowLimit, [&](const CSVRow& row) { rows.append(row); });
}

/// Writes fields one after the other.
class Serializer {
 public:
  explicit Serializer(const CSVDelimiter& delimiter) : delimiter_(delimiter.rawValue()) {}

  void add(std::string_view field) {
    if (!isAtStartOfRow_) {
      text_ += delimiter_;
    }
    isAtStartOfRow_ = false;
    if (!field.contains('"') && !field.contains(delimiter_)) {
      text_ += field;
      return;
    }
    text_ += '"';
    for (const char byte : field) {
      text_.append(byte == '"' ? 2 : 1, byte);
    }
    text_ += '"';
  }
  void startRow() {
    text_ += '\n';
    isAtStartOfRow_ = true;
  }
  [[nodiscard]] std::string text() && { return std::move(text_); }

 private:
  std::string_view delimiter_;
  std::string text_;
  bool isAtStartOfRow_ = true;
};

}  // namespace

Enumerated::Enumerated(const CSVRow& header, std::string_view text, const CSVDelimiter& delimiter,
                       bool loadColumns, std::optional<std::int64_t> rowLimit)
    : header_(tableOf(header)),
      unclosedQuote_(readContent(text, delimiter, rowLimit, rows_)),
      hasColumns_(loadColumns) {}

std::string Enumerated::serialized(const CSVRow& header, const CSVDelimiter& delimiter) const {
  Serializer serializer(delimiter);
  std::ranges::for_each(header, [&](std::string_view field) { serializer.add(field); });
  for (const CSVRow& row : rows_) {
    serializer.startRow();
    std::ranges::for_each(row, [&](std::string_view field) { serializer.add(field); });
  }
  return std::move(serializer).text();
}

Named::Named(const CSVRow& header, std::string_view text, const CSVDelimiter& delimiter,
             bool loadColumns, std::optional<std::int64_t> rowLimit)
    : header_(tableOf(header)), columnsByName_(header.size()), hasColumns_(loadColumns) {
  (void)readContent(text, delimiter, rowLimit, rows_);
  std::iota(columnsByName_.begin(), columnsByName_.end(), 0U);
  std::ranges::sort(columnsByName_, {}, [&](std::uint32_t place) {
    return std::pair<std::string_view, std::uint32_t>(header[place], place);
  });
}

std::vector<std::uint32_t>::const_iterator Named::firstNamed(std::string_view name) const {
  return std::ranges::lower_bound(columnsByName_, name, {},
                                  [&](std::uint32_t place) { return header_[0][place]; });
}

std::optional<std::string_view> Named::Row::operator[](std::string_view name) const {
  std::optional<std::string_view> value;
  const auto end = view_->columnsByName_.end();
  for (auto place = view_->firstNamed(name);
       place != end && *place < fields_.size() && view_->header_[0][*place] == name; ++place) {
    value = fields_[*place];
  }
  return value;
}

std::optional<Named::Column> Named::Columns::operator[](std::string_view name) const {
  const auto place = view_->firstNamed(name);
  if (place == view_->columnsByName_.end() || view_->header_[0][*place] != name) {
    return std::nullopt;
  }
  return Column(*view_, view_->header_[0][*place]);
}

std::string Named::serialized(const CSVRow& header, const CSVDelimiter& delimiter) const {
  Serializer serializer(delimiter);
  std::ranges::for_each(header, [&](std::string_view name) { serializer.add(name); });
  for (const Row& row : rows()) {
    serializer.startRow();
    for (const std::string_view name : header) {
      serializer.add(row[name].value_or(std::string_view()));
    }
  }
  return std::move(serializer).text();
}

}  // namespace corvane
