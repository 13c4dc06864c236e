// Numbers of statements, read only where the whole cell is one, whatever notation it is in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/decimal/decimal.h"

namespace corvane {

/// What stands before the decimals.
enum class DecimalMark { point, comma };

/// A cell that is a number: a sign in front or behind, or brackets; a currency's sign or code at
/// either end; digits with marks; an exponent. Nothing else may stand in it, and an empty cell is
/// no number, least of all 0. The user's locale plays no part.
class NumberCell {
 public:
  /// What the cell tells of its decimal mark.
  enum class Evidence {
    none,       ///< it has no mark, so it reads the same either way
    point,      ///< its point stands before decimals, or its comma groups
    comma,      ///< its comma stands before decimals, or its point groups
    undecided,  ///< one mark with three digits behind it, as in "1,234"
  };

  /// None where `text` is no number.
  [[nodiscard]] static std::optional<NumberCell> read(std::string_view text);

  [[nodiscard]] Evidence evidence() const { return evidence_; }

  /// The number, where `mark` stands before its decimals; none where the digits are then not in
  /// groups of three.
  [[nodiscard]] std::optional<Decimal> value(DecimalMark mark) const;

  /// The code of the currency that stands beside the digits, as far as it tells one: "USD" for
  /// "US$12", none for "$12", which may be any dollar.
  [[nodiscard]] const std::string& currencyCode() const { return currencyCode_; }

 private:
  [[nodiscard]] bool readCore(std::string_view core);
  [[nodiscard]] bool takeCurrency(std::string_view text);

  bool isNegative_ = false;
  std::string digits_;  ///< digits and marks: '.' ',' and ' ' for every other mark of groups
  int exponent_ = 0;
  std::string currencyCode_;
  Evidence evidence_ = Evidence::none;
};

/// What NumberCell makes of `text`, where it is written in digits alone, with at most a minus in
/// front and one `mark` among them: the number of most cells, in a fraction of the time. None for
/// others.
[[nodiscard]] std::optional<Decimal> plainNumber(std::string_view text, DecimalMark mark);

/// Learns from the number cells of a file which mark stands before its decimals.
class DecimalMarkRecognition {
 public:
  /// A cell that told something, and where it stands.
  struct Witness {
    std::uint32_t line;
    std::string column;
    std::string text;
  };

  /// Cells that are no numbers are left alone: whether one may stand there is not decided here.
  void add(std::uint32_t line, std::string_view column, std::string_view cell);

  /// A trade of so many shares at such a price for such an amount, which may tell where nothing
  /// else does: shares times price comes to the amount, but for charges of one in a hundred.
  void addTrade(std::string_view shares, std::string_view price, std::string_view amount);

  /// The mark; any where no cell needs one. Throws StatementError where both were seen, and where
  /// nothing tells of a cell such as "1,234".
  [[nodiscard]] DecimalMark mark() const;

  [[nodiscard]] bool isUndecided() const {
    return !point_ && !comma_ && !byTrades_ && undecided_.has_value();
  }

 private:
  std::optional<Witness> point_;
  std::optional<Witness> comma_;
  std::optional<Witness> undecided_;
  std::optional<DecimalMark> byTrades_;
};

}  // namespace corvane
