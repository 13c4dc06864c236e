// From the texts of a statement's row to what it may come to.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "exchange/reading/row_texts.h"
#include "exchange/reading/row_values.h"
#include "exchange/reading/statement_options.h"
#include "exchange/reading/statement_rows.h"

namespace corvane {

/// Whether rows of `kind` move shares against cash, are income, or are cash alone.
[[nodiscard]] bool isTradeKind(StatementKind kind);
[[nodiscard]] bool isYieldKind(StatementKind kind);
[[nodiscard]] bool isCashKind(StatementKind kind);

/// What the user has said of the words for kinds and of accounts, for each row.
class RowKinds {
 public:
  /// `options` outlives it.
  explicit RowKinds(const StatementOptions& options);

  /// What the layout makes of the row; where it does not know the word, what the user has said.
  [[nodiscard]] std::optional<StatementKind> kindOf(const RowTexts& row) const;
  [[nodiscard]] bool takesAccountOf(const RowTexts& row) const;

 private:
  const StatementOptions& options_;
  std::map<std::string, StatementKind> kinds_;  ///< by the folded word
};

/// Reads one row after the other.
class RowDrafter {
 public:
  /// All of them outlive it. `row` is at the row that draft() is to read.
  RowDrafter(const RowTexts& row, const StatementProfile& profile,
             const StatementSurroundings& surroundings, const StatementOptions& options,
             StatementNotation notation);

  /// The draft of the row, good until `row` goes on. Whatever is wrong with it stands in its stop.
  [[nodiscard]] RowDraft draft();

  /// What was rounded so far, by the code of the currency.
  [[nodiscard]] const std::map<std::string, Decimal>& rounded() const { return rounded_; }

 private:
  void fill(RowDraft& draft);
  void fillMoney(RowDraft& draft);
  void fillShares(RowFigures& figures) const;
  [[nodiscard]] EquityPointer equityOf(RowDraft& draft);
  [[nodiscard]] EquityPointer equityNamed(std::string_view symbol);
  [[nodiscard]] const std::string* saidSymbol(std::string_view name);
  [[nodiscard]] Decimal inDigits(const RowFigures& figures, const Decimal& amount);

  const RowTexts& row_;
  const StatementProfile& profile_;
  const StatementSurroundings& surroundings_;
  const StatementOptions& options_;
  RowKinds kinds_;
  RowValues values_;
  std::map<std::string, Decimal> rounded_;
  std::map<std::string, EquityPointer, std::less<>> equities_;  ///< that were asked for
  /// Symbols that the user has said, by the text of a cell; null for none.
  std::map<std::string, const std::string*, std::less<>> said_;
};

}  // namespace corvane
