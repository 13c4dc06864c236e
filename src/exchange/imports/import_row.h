// One row of a statement, understood as a transaction.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "core/money/currency.h"
#include "core/money/decimal_number_formatter.h"
#include "exchange/brokers/import_export_broker.h"
#include "ledger/transaction/basic_transaction.h"

namespace corvane {

/// What a row means in the portfolio that it is read for.
struct ImportSurroundings {
  Currency primaryCurrency;
  /// The code of rows that name no currency that is known.
  std::optional<std::string> defaultCurrencyCode;
  const DecimalNumberFormatter& numberFormatter;
  /// Reads a number or a currency in place of the forgiving rules; null for those. Whatever they
  /// throw ends the row.
  std::function<std::optional<Decimal>(std::string_view field, const std::string& text)>
      strictNumber = nullptr;
  std::function<std::optional<Currency>(const std::string& text)> strictCurrency = nullptr;
  /// Whether the program itself has written the row: then its figures have the signs that they were
  /// written with, also where its word says otherwise, as of a sale that costs money.
  bool isOwnExport = false;
  /// The equity with a symbol, which is not empty; null where nobody can tell.
  std::function<EquityPointer(std::string_view symbol)> equityFor;
};

/// The first of the words in `text`; empty where there is none. A cell of a symbol and a name gives
/// the symbol.
[[nodiscard]] std::string_view firstWord(std::string_view text);

/// Builds what the cells of a row tell, but for its dates.
class ImportRow {
 public:
  /// The sign that the amounts of a row get.
  enum class SignRule { positive, negative, asInFile, oppositeToFile };

  ImportRow(const ImportBroker::ValuesByField& values, const ImportSurroundings& surroundings)
      : values_(values), surroundings_(surroundings) {}

  /// What happened. Throws TransactionsImportError.
  [[nodiscard]] BasicTransaction::Kind kind() const;

  /// The row's note, as long as its cells. In rows that name no equity the symbol's column holds a
  /// description.
  [[nodiscard]] std::optional<std::string_view> note(const BasicTransaction::Kind& kind) const;

 private:
  using Kind = BasicTransaction::Kind;

  /// The cell of `field`; null where the file has no such column.
  [[nodiscard]] const std::string* cell(std::string_view field) const;
  [[nodiscard]] std::optional<Decimal> number(std::string_view field) const;
  [[nodiscard]] EquityPointer equity() const;
  [[nodiscard]] std::optional<Currency> namedCurrency() const;
  [[nodiscard]] CurrencyAmount cashAmount(SignRule rule) const;
  /// `cash` told in the primary currency, which is rounded to its minor units.
  [[nodiscard]] Decimal equivalent(const CurrencyAmount& cash, SignRule rule) const;

  [[nodiscard]] Kind trade(bool isPurchase) const;
  [[nodiscard]] Kind split() const;
  [[nodiscard]] Kind yield(BasicTransaction::YieldType type) const;
  [[nodiscard]] Kind journaledShares() const;

  const ImportBroker::ValuesByField& values_;
  const ImportSurroundings& surroundings_;
};

}  // namespace corvane
