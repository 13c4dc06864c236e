// Numbers as the user's locale writes them.
//
// Numbers come in as decimal text ("-1234.50", "1E-8") and are formatted exactly, whatever their
// length: binary floating point plays no part.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/text/unicode/locale.h"

namespace corvane {

/// How to write a number, as settings to be changed at will. A plain value; copies are independent
/// and each thread may use its own. What is made for the settings is kept for a while behind the
/// scenes, so making a NumberFormatter anew for every number costs little.
struct NumberFormatter {
  enum class Style {
    decimal,
    percent,            ///< the number times 100
    currency,           ///< negative amounts with the sign of the locale
    currencyAccounting  ///< negative amounts in the locale's accounting form, such as "($5.00)"
  };

  /// For maximumFractionDigits: as many as the number has.
  static constexpr int unlimited = -1;

  Style style = Style::decimal;
  /// ISO 4217. Without one the currency styles write no symbol.
  std::optional<std::string> currencyCode = std::nullopt;
  /// Whether the currency styles write a currency symbol.
  bool showsCurrencySymbol = true;
  int minimumFractionDigits = 0;
  /// Further digits are rounded half to even. Never effective below minimumFractionDigits.
  int maximumFractionDigits = 0;
  int minimumIntegerDigits = 1;
  bool usesGroupingSeparator = true;
  /// Put before the prefix of zero and of positive numbers: "+" for changes.
  std::string positivePrefix = "";
  /// In place of the minus sign before a negative number, and after it; for "(" and ")".
  std::optional<std::string> negativePrefix = std::nullopt;
  std::optional<std::string> negativeSuffix = std::nullopt;
  /// Put directly after the digits, before what the style adds: "M" for millions.
  std::string digitsSuffix = "";
  /// The number is multiplied by ten to this power before it is written; -6 for millions.
  int powerOfTen = 0;
  /// The whole text for a number that is exactly zero.
  std::optional<std::string> zeroSymbol = std::nullopt;
  Locale locale = Locale::current();

  /// `decimalText` in the form that the settings describe; "NaN" where that is what it says. A
  /// negative number stays one, "-0.00", when all its digits are rounded away. None where it is no
  /// number, or one of more than a thousand digits before or after the point.
  [[nodiscard]] std::optional<std::string> string(std::string_view decimalText) const;

  /// The separators of the locale; for the currency styles those that it uses for money.
  [[nodiscard]] std::string groupingSeparator() const;
  [[nodiscard]] std::string decimalSeparator() const;

  friend bool operator==(const NumberFormatter&, const NumberFormatter&) = default;
};

}  // namespace corvane
