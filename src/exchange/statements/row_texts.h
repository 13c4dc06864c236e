// One row of a statement in the terms of its layout: its kind, and the text of each field.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "exchange/statements/statement_file.h"

namespace corvane {

/// Picks the texts out of the cells of a row. Good as long as the file.
class RowTexts {
 public:
  RowTexts(const StatementTable& table, const StatementCells& row);

  [[nodiscard]] std::uint32_t line() const { return row_->line; }
  /// What the row is; none where its type is not in the layout, or fits two of its patterns.
  [[nodiscard]] std::optional<StatementKind> kind() const { return kind_; }
  /// Why a row that is to be ignored is left out; empty where the layout does not say.
  [[nodiscard]] const std::string& why() const { return why_; }

  /// The text of a field; empty where there is none.
  [[nodiscard]] std::string text(std::string_view field) const;
  /// A column that a field's text comes from, for messages.
  [[nodiscard]] std::string columnOf(std::string_view field) const;

  /// What the text of a field is to be multiplied by, and the column that divides it.
  struct Scale {
    Decimal times = 1;
    std::string over;  ///< the text of the column; empty for none
  };
  [[nodiscard]] Scale scaleOf(std::string_view field) const;

 private:
  void findKind();
  [[nodiscard]] const std::vector<FieldSource>* sourcesOf(std::string_view field) const;
  [[nodiscard]] std::string cell(std::string_view column) const;
  [[nodiscard]] std::string textOf(const FieldSource& source, std::string_view field) const;

  const StatementTable* table_;
  const StatementCells* row_;
  const KindRule* rule_ = nullptr;
  std::optional<StatementKind> kind_;
  std::string why_;
  TextPattern::Captures captures_;
};

}  // namespace corvane
