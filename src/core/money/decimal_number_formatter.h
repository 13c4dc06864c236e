// The number formatter of money and share fields.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"
#include "platform/text/formats/number_formatter.h"

namespace corvane {

/// Formats exact decimals in the user's locale, and reads what a user types or pastes: an amount
/// with a currency symbol, with letters around it, or in accounting brackets.
///
/// A new one has the decimal style and shows all digits that a number has. Made where it is needed;
/// not to be shared between threads.
class DecimalNumberFormatter : public NumberFormatter {
 public:
  DecimalNumberFormatter();

  /// For amounts of `currency`: accounting style, exactly its minor units after the point.
  [[nodiscard]] static DecimalNumberFormatter money(const Currency& currency);

  /// Whether an empty field reads as 0 instead of as nothing.
  bool treatsEmptyStringAsZero = false;

  /// The text of `value`; none where the locale service gives none, as for a NaN.
  [[nodiscard]] std::optional<std::string> string(const Decimal& value) const;

  /// The number in `text`: its first run of digits of any script, grouping and decimal separators
  /// of this formatter's locale. Everything around it is ignored but for a sign: a minus or a
  /// bracket anywhere in the text makes the number negative. In the percent style "5" and "5.00%"
  /// are 0.05. None where there is no number.
  [[nodiscard]] std::optional<Decimal> decimalFromString(std::string_view text) const;
};

}  // namespace corvane
