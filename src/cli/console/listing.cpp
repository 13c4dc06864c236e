#include "cli/console/listing.h"

#include <cassert>
#include <utility>

#include "cli/console/text_table.h"
#include "exchange/brokers/row_text.h"
#include "platform/data/json.h"

namespace corvane::cli {
namespace {

JSONValue jsonOf(const std::string& cell, Listing::Kind kind) {
  if (cell.empty() && kind != Listing::Kind::text) {
    return {};
  }
  switch (kind) {
    case Listing::Kind::text:
      break;
    case Listing::Kind::number:
      if (auto number = JSONNumber::fromText(cell)) {
        return JSONValue(std::move(*number));
      }
      break;
    case Listing::Kind::boolean:
      return JSONValue(cell == "true");
  }
  return cell.empty() ? JSONValue() : JSONValue(cell);
}

}  // namespace

std::vector<Option> listingOptions() {
  return {{"--csv", "", "writes delimited text, the first row with the names of the fields"},
          {"--json", "", "writes an array of objects, one a line"}};
}

ListingFormat listingFormat(const CommandLine& line, ListingFormat otherwise) {
  if (line.has("--csv") && line.has("--json")) {
    throw UsageError("--csv and --json exclude each other.");
  }
  return line.has("--csv")    ? ListingFormat::csv
         : line.has("--json") ? ListingFormat::json
                              : otherwise;
}

void Listing::add(std::vector<std::string> cells) {
  assert(cells.size() == fields_.size());
  rows_.push_back(std::move(cells));
}

void Listing::write(ListingFormat format, std::ostream& out) const {
  write(format, out, rows_.size(), [&](std::size_t row) { return rows_[row]; });
}

void Listing::write(ListingFormat format, std::ostream& out, std::size_t count,
                    const RowMaker& makeRow) const {
  switch (format) {
    case ListingFormat::table:
      writeTable(out, count, makeRow);
      break;
    case ListingFormat::csv:
      writeCSV(out, count, makeRow);
      break;
    case ListingFormat::json:
      writeJSON(out, count, makeRow);
      break;
  }
}

void Listing::writeTable(std::ostream& out, std::size_t count, const RowMaker& makeRow) const {
  std::vector<TextTable::Column> columns;
  for (const Field& field : fields_) {
    columns.push_back({std::string(field.title), field.kind == Kind::number
                                                     ? TextTable::Alignment::right
                                                     : TextTable::Alignment::left});
  }
  TextTable(std::move(columns)).write(out, count, makeRow);
}

void Listing::writeCSV(std::ostream& out, std::size_t count, const RowMaker& makeRow) const {
  std::vector<std::string> names;
  for (const Field& field : fields_) {
    names.emplace_back(field.name);
  }
  out << rowText(names, ImportExportFieldDelimiter::comma);
  for (std::size_t row = 0; row < count; ++row) {
    out << rowText(makeRow(row), ImportExportFieldDelimiter::comma);
  }
}

void Listing::writeJSON(std::ostream& out, std::size_t count, const RowMaker& makeRow) const {
  if (count == 0) {
    out << "[]\n";
    return;
  }
  out << '[';
  const char* separator = "\n";
  for (std::size_t row = 0; row < count; ++row) {
    const std::vector<std::string> cells = makeRow(row);
    JSONValue::Object object;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      object.emplace_back(fields_[i].name, jsonOf(cells[i], fields_[i].kind));
    }
    out << std::exchange(separator, ",\n") << JSONValue(std::move(object)).text();
  }
  out << "\n]\n";
}

}  // namespace corvane::cli
