#include "core/money/decimal_number_formatter.h"

#include <algorithm>
#include <array>

#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

constexpr std::array<std::string_view, 4> negativeSigns = {"(", ")", "−", "-"};

/// The length of `separator` where `text` starts with it, else 0.
std::size_t separatorLength(std::string_view text, std::string_view separator) {
  return !separator.empty() && text.starts_with(separator) ? separator.size() : 0;
}

bool startsWithDigit(std::string_view text) {
  return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

}  // namespace

DecimalNumberFormatter::DecimalNumberFormatter() {
  style = Style::decimal;
  minimumFractionDigits = 0;
  maximumFractionDigits = unlimited;
}

DecimalNumberFormatter DecimalNumberFormatter::money(const Currency& currency) {
  DecimalNumberFormatter formatter;
  formatter.style = Style::currencyAccounting;
  formatter.currencyCode = std::string(currency.code);
  formatter.minimumFractionDigits = currency.minorUnits;
  formatter.maximumFractionDigits = currency.minorUnits;
  return formatter;
}

std::optional<std::string> DecimalNumberFormatter::string(const Decimal& value) const {
  return value.isNaN() ? std::nullopt : NumberFormatter::string(value.description());
}

std::optional<Decimal> DecimalNumberFormatter::decimalFromString(std::string_view text) const {
  if (text.empty()) {
    return treatsEmptyStringAsZero ? std::optional<Decimal>(0) : std::nullopt;
  }
  const std::string grouping = groupingSeparator();
  const std::string decimal = decimalSeparator();
  // The first run, with a point for the locale's decimal separator and without the grouping.
  std::string number;
  bool isInRun = false;
  const std::string plain = withPlainDigits(text);
  for (std::string_view rest = plain; !rest.empty();) {
    if (startsWithDigit(rest)) {
      number += rest.front();
      rest.remove_prefix(1);
    } else if (const std::size_t length = separatorLength(rest, grouping)) {
      rest.remove_prefix(length);
    } else if (const std::size_t separator = separatorLength(rest, decimal)) {
      number += '.';
      rest.remove_prefix(separator);
    } else if (isInRun) {
      break;
    } else {
      rest.remove_prefix(1);
      continue;
    }
    isInRun = true;
  }
  auto value = Decimal::fromString(number);
  if (value && style == Style::percent) {
    value = Decimal::fromParts(Sign::plus, -2, *value);
  }
  const bool isNegative = std::ranges::any_of(
      negativeSigns, [&](std::string_view sign) { return text.find(sign) != text.npos; });
  return value && isNegative ? -*value : value;
}

}  // namespace corvane
