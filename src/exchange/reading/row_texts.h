// One row of a statement in the terms of its layout: its kind, and the text of each field.
#pragma once

#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <string_view>

#include "exchange/reading/statement_file.h"

namespace corvane {

/// Picks the texts out of the cells of one row after the other. What it hands out is good until it
/// goes to another row, or as long as the file.
class RowTexts {
 public:
  /// `file` outlives it.
  explicit RowTexts(const StatementFile& file) : cells_(file) {}

  /// Goes to the row at `index` of the file.
  void goTo(std::size_t index);

  [[nodiscard]] std::uint32_t line() const { return cells_.line(); }
  /// What the row is; none where its type is not in the layout, or fits two of its patterns.
  [[nodiscard]] std::optional<StatementKind> kind() const { return match_->kind; }
  /// Why a row that is to be ignored is left out; empty where the layout does not say.
  [[nodiscard]] std::string_view why() const {
    return match_->rule == nullptr ? std::string_view() : std::string_view(match_->rule->why);
  }

  /// The text of a field; empty where there is none. Good until the next row is gone to.
  [[nodiscard]] std::string_view text(RowField field) const;
  /// A column that a field's text comes from, for messages.
  [[nodiscard]] std::string columnOf(RowField field) const;

  /// What the text of a field is to be multiplied by, and the column that divides it.
  struct Scale {
    Decimal times = 1;
    std::string_view over;  ///< the text of the column; empty for none
  };
  [[nodiscard]] Scale scaleOf(RowField field) const;

 private:
  using Source = StatementTable::Source;

  void capture(const TextPattern::Captures& found, bool replaces);
  [[nodiscard]] const std::vector<Source>& sourcesOf(RowField field) const;
  [[nodiscard]] std::string_view cell(std::optional<std::size_t> column) const;
  [[nodiscard]] std::string_view textOf(const Source& source, RowField field) const;

  StatementCells cells_;
  const StatementTable::KindMatch* match_ = nullptr;
  const StatementTable::Plan* plan_ = nullptr;
  std::array<std::string, rowFieldCount> captures_;
  std::bitset<rowFieldCount> isCaptured_;
  /// Texts that stand in no cell as they are.
  mutable std::array<std::string, rowFieldCount> made_;
};

}  // namespace corvane
