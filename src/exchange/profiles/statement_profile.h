// One layout of statements: which columns mean what, and which words which kind of transaction.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/decimal/decimal.h"
#include "exchange/profiles/text_pattern.h"
#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"
#include "platform/text/unicode/text_encoding.h"

namespace corvane {

/// What a row can be.
enum class StatementKind {
  buy,
  sell,
  trade,
  deposit,
  withdrawal,
  transfer,
  dividend,
  capitalGainsDividend,
  reinvested,
  returnOfCapital,
  split,
  splitAdded,
  journal,
  cash,
  credit,
  expense,
  ignore
};

/// "buy", "capital-gains-dividend" and so on, as layouts have them.
[[nodiscard]] std::string_view rawValue(StatementKind kind);
[[nodiscard]] std::optional<StatementKind> statementKindWithRawValue(std::string_view rawValue);

/// Where the text of a field comes from.
struct FieldSource {
  std::string column;  ///< a heading, or "#9" for the ninth column; empty for a constant
  std::string constant;
  std::optional<TextPattern> pattern = {};  ///< what is picked out of the column
  Decimal times = 1;
  std::string over;  ///< a column that divides; empty for none
};

using FieldSources = std::map<std::string, std::vector<FieldSource>, std::less<>>;

/// What the type's text means.
struct KindRule {
  TextPattern pattern;
  StatementKind kind = StatementKind::ignore;
  std::string why;      ///< of rows that are left out
  FieldSources fields;  ///< that differ for these rows; no source means none
};

/// Whether rows of both come to the same, so that it does not matter which pattern is taken.
[[nodiscard]] bool haveSameResult(const KindRule& left, const KindRule& right);

/// Texts in columns that a row has, or has not.
struct RowRule {
  std::vector<std::pair<std::string, std::vector<TextPattern>>> columns;  ///< all have to match
  std::string why;
};

/// Texts that hold several fields.
struct TextRule {
  std::string column;
  TextPattern pattern;
};

/// One table of a file.
struct StatementTableLayout {
  std::vector<std::string> heading;
  FieldSources fields;
  std::vector<KindRule> kinds;
  bool usesStandardWords = false;
  std::optional<StatementKind> kind = {};  ///< of all rows where no column tells it
  std::vector<TextRule> text;
  std::vector<RowRule> ignore;
  std::optional<RowRule> only;
  bool isOptional = false;

  /// The columns that something is taken from, by their headings.
  [[nodiscard]] std::vector<std::string> usedColumns() const;
};

/// A layout, as it stands in one TOML file. A plain value.
struct StatementProfile {
  std::string id;  ///< the name of the file
  std::string name;
  std::vector<StatementTableLayout> tables;
  bool tradesBySignOfAmount = false;
  std::optional<DecimalMark> decimal = {};
  bool decimalOfEachCell = false;
  std::optional<DayOrder> days = {};
  bool isNewestFirst = false;
  bool chargesAreNegative = false;
  bool roundsAmounts = false;
  std::vector<std::string> emptyTexts;  ///< folded
  struct CurrencyAlias {
    std::string code;
    Decimal divide = 1;
  };
  std::map<std::string, CurrencyAlias, std::less<>> currencies;
  TextEncoding encoding = TextEncoding::windowsLatin1;
  std::string continued;
  /// A cell of several words begins with the symbol, and tells what cash was for.
  bool takesFirstWordOfSymbols = false;

  /// Reads a layout. `path` is what messages call the file. Throws ProfileError.
  [[nodiscard]] static StatementProfile parse(std::string_view text, std::string id,
                                              const std::string& path);
};

}  // namespace corvane
