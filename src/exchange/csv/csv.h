// Delimited text as rows of texts: the reader behind every import.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "exchange/csv/csv_delimiter.h"
#include "exchange/csv/csv_parse_error.h"
#include "exchange/csv/csv_parser.h"
#include "exchange/csv/csv_row.h"
#include "exchange/csv/csv_view.h"
#include "platform/system/file_manager.h"
#include "platform/system/resources.h"
#include "platform/text/unicode/text_encoding.h"

namespace corvane {

/// A delimited text that has been read: its first row, and the others in the shape of `View`.
///
/// Holds the text and, packed, its fields; see CSVTable. How fields are cut is told at parseRows.
/// Whatever it hands out is good until it is moved or goes away. Any thread, one at a time.
template <CSVView View = Enumerated>
class CSV {
 public:
  /// Reads `text`, which is UTF-8; a leading byte order mark is dropped. At most `rowLimit` rows
  /// follow the header; without a limit, or with one below 0, all. `loadColumns` says whether the
  /// view is to have columns. Throws CSVParseError.
  CSV(std::string text, CSVDelimiter delimiter, bool loadColumns = true,
      std::optional<std::int64_t> rowLimit = std::nullopt)
      : text_(withoutByteOrderMark(std::move(text))),
        delimiter_(std::move(delimiter)),
        header_(readHeader(text_, delimiter_)),
        content_(header(), text_, delimiter_, loadColumns, rowLimit) {}

  /// Reads a file. Without a delimiter it is guessed. Throws CSVParseError, FileError and
  /// TextEncodingError.
  explicit CSV(const std::filesystem::path& file,
               const std::optional<CSVDelimiter>& delimiter = std::nullopt,
               TextEncoding encoding = TextEncoding::utf8, bool loadColumns = true)
      : CSV(decodedText(files::read(file), encoding), delimiter, loadColumns) {}

  /// Reads the data file `name`.`extension` of the program; none where there is no such file.
  [[nodiscard]] static std::optional<CSV> fromResource(
      std::string_view name, std::string_view extension,
      const std::optional<CSVDelimiter>& delimiter = std::nullopt,
      TextEncoding encoding = TextEncoding::utf8, bool loadColumns = true) {
    const auto path = resourcePath(std::string(name) + "." + std::string(extension));
    return std::filesystem::exists(path)
               ? std::optional<CSV>(std::in_place, path, delimiter, encoding, loadColumns)
               : std::nullopt;
  }

  /// The fields of the first row; empty where the text has no row.
  [[nodiscard]] CSVRow header() const { return header_.empty() ? CSVRow() : header_[0]; }
  /// The text without a byte order mark.
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] const CSVDelimiter& delimiter() const { return delimiter_; }
  /// The rows after the first one.
  [[nodiscard]] const View& content() const { return content_; }
  /// Hands them over; the text may go away then.
  [[nodiscard]] View takeContent() && { return std::move(content_); }

  /// Reads the text once more, row by row, the header being row 0; see parseRows. The rows have the
  /// length that they have in the text. Throws CSVParseError, and what the callback throws.
  void enumerateAsArray(std::size_t startAt, std::optional<std::int64_t> rowLimit,
                        const CSVRowCallback& rowCallback) const {
    parseRows(text_, delimiter_, startAt, rowLimit, rowCallback);
  }

  /// Header and rows as delimited text, parted by line feeds. Fields with a quote or the delimiter
  /// in them stand in quotes.
  [[nodiscard]] std::string serialized() const { return content_.serialized(header(), delimiter_); }
  /// The same in the bytes of `encoding`. Throws TextEncodingError where it lacks a character.
  [[nodiscard]] std::string data(TextEncoding encoding) const {
    return encodedText(serialized(), encoding);
  }

 private:
  CSV(std::string text, const std::optional<CSVDelimiter>& delimiter, bool loadColumns)
      : text_(withoutByteOrderMark(std::move(text))),
        delimiter_(delimiter.value_or(CSVDelimiter::guessed(text_))),
        header_(readHeader(text_, delimiter_)),
        content_(header(), text_, delimiter_, loadColumns, std::nullopt) {}

  static CSVTable readHeader(std::string_view text, const CSVDelimiter& delimiter) {
    CSVTable header;
    parseRows(text, delimiter, 0, 1, [&](const CSVRow& row) { header.append(row); });
    return header;
  }

  std::string text_;
  CSVDelimiter delimiter_;
  CSVTable header_;
  View content_;
};

}  // namespace corvane
