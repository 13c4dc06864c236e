#include "platform/text/formats/number_formatter.h"

#include <unicode/dcfmtsym.h>
#include <unicode/numberformatter.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/text/formats/number_layout.h"
#include "platform/text/formats/number_parts.h"
#include "platform/text/formats/recent_cache.h"
#include "platform/text/unicode/icu_text.h"

namespace corvane {
namespace {

using icu::number::LocalizedNumberFormatter;

constexpr int mostDigits = 1000;
/// More fraction digits than any number here has.
constexpr int mostFractionDigits = 999;

/// What decimal text says about its number.
struct DecimalText {
  bool isNegative = false;
  bool isZero = true;
  bool isNaN = false;
  bool hasExponent = false;
  std::string_view integer;
  std::string_view fraction;
};

/// Reads [+-] digits [. digits] [E [+-] digits], with a digit before or after the point.
std::optional<DecimalText> readDecimalText(std::string_view text) {
  DecimalText result;
  if (text == "NaN") {
    return DecimalText{.isZero = false, .isNaN = true, .integer = {}, .fraction = {}};
  }
  std::size_t position = 0;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
    result.isNegative = text[0] == '-';
    ++position;
  }
  const auto skipDigits = [&] {
    const std::size_t start = position;
    for (; position < text.size() && text[position] >= '0' && text[position] <= '9'; ++position) {
      result.isZero = result.isZero && text[position] == '0';
    }
    return static_cast<int>(std::min<std::size_t>(position - start, mostDigits + 1));
  };
  const std::size_t integerStart = position;
  int integerDigits = skipDigits();
  result.integer = text.substr(integerStart, position - integerStart);
  int fractionDigits = 0;
  if (position < text.size() && text[position] == '.') {
    const std::size_t fractionStart = ++position;
    fractionDigits = skipDigits();
    result.fraction = text.substr(fractionStart, position - fractionStart);
  }
  if (integerDigits + fractionDigits == 0) {
    return std::nullopt;
  }
  if (position < text.size() && (text[position] == 'E' || text[position] == 'e')) {
    result.hasExponent = true;
    ++position;
    if (position < text.size() && text[position] == '+') {
      ++position;
    }
    int exponent = 0;
    const auto [end, error] =
        std::from_chars(text.data() + position, text.data() + text.size(), exponent);
    if (error != std::errc() || exponent > mostDigits || exponent < -mostDigits) {
      return std::nullopt;
    }
    position = static_cast<std::size_t>(end - text.data());
    integerDigits += exponent;
    fractionDigits -= exponent;
  }
  if (position != text.size() || integerDigits > mostDigits || fractionDigits > mostDigits) {
    return std::nullopt;
  }
  return result;
}

bool isCurrency(NumberFormatter::Style style) {
  return style == NumberFormatter::Style::currency ||
         style == NumberFormatter::Style::currencyAccounting;
}

icu::number::Precision precision(const NumberFormatter& settings) {
  const int minimum = std::clamp(settings.minimumFractionDigits, 0, mostFractionDigits);
  if (settings.maximumFractionDigits == NumberFormatter::unlimited) {
    return icu::number::Precision::minFraction(minimum);
  }
  const int maximum = std::clamp(settings.maximumFractionDigits, minimum, mostFractionDigits);
  return icu::number::Precision::minMaxFraction(minimum, maximum);
}

UNumberSignDisplay signDisplay(const NumberFormatter& settings) {
  return settings.style == NumberFormatter::Style::currencyAccounting ? UNUM_SIGN_ACCOUNTING
                                                                      : UNUM_SIGN_AUTO;
}

std::optional<icu::CurrencyUnit> currencyUnit(const NumberFormatter& settings) {
  if (!settings.currencyCode || settings.currencyCode->size() != 3) {
    return std::nullopt;
  }
  UErrorCode status = U_ZERO_ERROR;
  icu::CurrencyUnit currency(pieceOf(*settings.currencyCode), status);
  return U_SUCCESS(status) ? std::optional(currency) : std::nullopt;
}

bool hidesSymbol(const NumberFormatter& settings) {
  return isCurrency(settings.style) && (!settings.showsCurrencySymbol || !currencyUnit(settings));
}

LocalizedNumberFormatter makeFormatter(const NumberFormatter& settings) {
  auto formatter =
      icu::number::NumberFormatter::withLocale(toIcu(settings.locale))
          .precision(precision(settings))
          .roundingMode(UNUM_ROUND_HALFEVEN)
          .integerWidth(icu::number::IntegerWidth::zeroFillTo(
              std::clamp(settings.minimumIntegerDigits, 0, mostFractionDigits)))
          .grouping(settings.usesGroupingSeparator ? UNUM_GROUPING_AUTO : UNUM_GROUPING_OFF)
          .sign(signDisplay(settings))
          .scale(icu::number::Scale::powerOfTen(
              settings.powerOfTen + (settings.style == NumberFormatter::Style::percent ? 2 : 0)));
  if (settings.style == NumberFormatter::Style::percent) {
    return formatter.unit(icu::NoUnit::percent());
  }
  if (!isCurrency(settings.style)) {
    return formatter;
  }
  const auto currency = currencyUnit(settings);
  return currency && settings.showsCurrencySymbol
             ? formatter.unit(*currency)
             // A currency whose symbol is hidden leaves the form of the currency styles.
             : formatter.unit(currency.value_or(icu::CurrencyUnit()))
                   .unitWidth(UNUM_UNIT_WIDTH_HIDDEN);
}

struct Separators {
  std::string grouping;
  std::string decimal;
};

/// Those of numbers, or of money, in `locale`. An import asks for them with every cell.
const Separators& separatorsFor(const Locale& locale, bool isMoney) {
  thread_local RecentCache<std::pair<Locale, bool>, Separators> separators;
  return separators.get({locale, isMoney}, [](const auto& key) {
    using Symbols = icu::DecimalFormatSymbols;
    UErrorCode status = U_ZERO_ERROR;
    const Symbols symbols(toIcu(key.first), status);
    return Separators{
        toUtf8(symbols.getSymbol(key.second ? Symbols::kMonetaryGroupingSeparatorSymbol
                                            : Symbols::kGroupingSeparatorSymbol)),
        toUtf8(symbols.getSymbol(key.second ? Symbols::kMonetarySeparatorSymbol
                                            : Symbols::kDecimalSeparatorSymbol))};
  });
}

/// What is made for one set of settings.
struct NumberFormats {
  LocalizedNumberFormatter formatter;
  std::optional<NumberLayout> layout;
};

NumberFormats makeNumberFormats(const NumberFormatter& settings) {
  LocalizedNumberFormatter formatter = makeFormatter(settings);
  auto layout = NumberLayout::learned(formatter, hidesSymbol(settings));
  return {std::move(formatter), std::move(layout)};
}

const NumberFormats& formatsFor(const NumberFormatter& settings) {
  thread_local RecentCache<NumberFormatter, NumberFormats> formats;
  return formats.get(settings, makeNumberFormats);
}

/// `number` where it can be written as it is, digit by digit.
std::optional<PlainDigits> plainDigits(const DecimalText& number, const NumberFormatter& settings) {
  const bool isScaled =
      settings.style == NumberFormatter::Style::percent || settings.powerOfTen != 0;
  const std::string_view integer = number.integer;
  const bool hasLeadingZeros = integer.size() > 1 && integer.front() == '0';
  if (number.hasExponent || isScaled || settings.minimumIntegerDigits != 1 || integer.empty() ||
      hasLeadingZeros) {
    return std::nullopt;
  }
  std::string_view fraction = number.fraction;
  fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
  const int most = std::max(settings.maximumFractionDigits, settings.minimumFractionDigits);
  const bool isRounded = settings.maximumFractionDigits != NumberFormatter::unlimited &&
                         static_cast<int>(fraction.size()) > most;
  return isRounded ? std::nullopt
                   : std::optional(PlainDigits{number.isNegative, integer, fraction});
}

}  // namespace

std::optional<std::string> NumberFormatter::string(std::string_view decimalText) const {
  const auto number = readDecimalText(decimalText);
  if (!number) {
    return std::nullopt;
  }
  if (number->isNaN) {
    return std::string(decimalText);
  }
  if (number->isZero && zeroSymbol) {
    return zeroSymbol;
  }
  const bool isNegative = number->isNegative && !number->isZero;
  const bool replacesSign = isNegative && (negativePrefix || negativeSuffix);
  const bool dropsSign = replacesSign || (number->isZero && number->isNegative);

  const NumberFormats& formats = formatsFor(*this);
  std::string text;
  auto digits = formats.layout ? plainDigits(*number, *this) : std::nullopt;
  if (digits) {
    digits->isNegative = isNegative && !replacesSign;
    text = formats.layout->text(*digits, std::min(minimumFractionDigits, mostFractionDigits),
                                digitsSuffix);
  } else {
    UErrorCode status = U_ZERO_ERROR;
    const NumberParts parts =
        partsOf(formats.formatter.formatDecimal(
                    pieceOf(dropsSign ? decimalText.substr(1) : decimalText), status),
                hidesSymbol(*this), status);
    if (U_FAILURE(status)) {
      return std::nullopt;
    }
    text = toUtf8(parts.prefix) + toUtf8(parts.digits) + digitsSuffix + toUtf8(parts.suffix);
  }
  if (replacesSign) {
    return negativePrefix.value_or("") + text + negativeSuffix.value_or("");
  }
  return isNegative ? text : positivePrefix + text;
}

std::string NumberFormatter::groupingSeparator() const {
  return separatorsFor(locale, isCurrency(style)).grouping;
}

std::string NumberFormatter::decimalSeparator() const {
  return separatorsFor(locale, isCurrency(style)).decimal;
}

}  // namespace corvane
