// A statement's file: which layout it has, and its rows under the headings.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "exchange/profiles/statement_profile.h"
#include "exchange/statements/statement_rows.h"
#include "platform/text/unicode/text_encoding.h"

namespace corvane {

/// A table of a layout as a file has it.
class StatementTable {
 public:
  StatementTable(const StatementTableLayout& layout, const std::vector<std::string>& heading);

  [[nodiscard]] const StatementTableLayout& layout() const { return *layout_; }
  /// The place of a heading or of "#9"; none where the file has no such column.
  [[nodiscard]] std::optional<std::size_t> column(std::string_view name) const;
  [[nodiscard]] std::size_t width() const { return width_; }

  /// What a text of the type's columns means.
  struct KindMatch {
    const KindRule* rule = nullptr;     ///< null where no pattern of the layout matches
    std::optional<StatementKind> kind;  ///< none where the layout does not know the text
    TextPattern::Captures captures = {};
  };
  /// Good as long as the table. Texts that were asked for before are remembered; so not safe on two
  /// threads at once.
  [[nodiscard]] const KindMatch& kindOf(const std::string& type) const;

 private:
  [[nodiscard]] KindMatch matchOf(const std::string& type) const;

  const StatementTableLayout* layout_;
  std::unordered_map<std::string, std::size_t> columns_;
  mutable std::unordered_map<std::string, KindMatch> kinds_;
  std::size_t width_;
};

/// A row of cells, and the table that it belongs to.
struct StatementCells {
  std::uint32_t line = 0;
  std::size_t table = 0;
  std::vector<std::string> cells;  ///< trimmed, as many as the table has
};

/// A file that has been read and recognised.
struct StatementFile {
  const StatementProfile* profile = nullptr;
  TextEncoding encoding = TextEncoding::utf8;
  std::vector<StatementTable> tables;
  std::vector<StatementCells> rows;
  std::vector<StatementRow> apart;  ///< rows that belong to no table, or are left out by it
  /// Sentences: by what the layout was recognised, and which columns are not as it has them.
  std::vector<std::string> remarks;

  /// Finds the layout of `bytes` among `profiles`, which outlive the result. Throws StatementError
  /// where none fits or several do equally well, TextEncodingError and CSVParseError.
  [[nodiscard]] static StatementFile read(const std::string& bytes,
                                          const std::vector<StatementProfile>& profiles,
                                          const std::optional<std::string>& profileId);
};

}  // namespace corvane
