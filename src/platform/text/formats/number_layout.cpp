#include "platform/text/formats/number_layout.h"

#include <unicode/formattedvalue.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/text/formats/number_parts.h"
#include "platform/text/unicode/icu_text.h"

namespace corvane {
namespace {

using icu::number::LocalizedNumberFormatter;

/// Long enough to show every size of a group: the last one, and two of those before it.
constexpr std::string_view sampleDigits = "1234567890123456789";

/// Where fields lie in a formatted number.
struct Fields {
  icu::UnicodeString integer;  ///< with its separators
  icu::UnicodeString decimalSeparator;
  icu::UnicodeString groupingSeparator;
  std::vector<std::int32_t> separatorPlaces;  ///< from the start of the integer
};

Fields fieldsOf(const icu::number::FormattedNumber& number, UErrorCode& status) {
  Fields fields;
  std::vector<std::int32_t> places;
  std::int32_t start = 0;
  const icu::UnicodeString text = number.toString(status);
  icu::ConstrainedFieldPosition position;
  position.constrainCategory(UFIELD_CATEGORY_NUMBER);
  while (number.nextPosition(position, status)) {
    const icu::UnicodeString part(text, position.getStart(),
                                  position.getLimit() - position.getStart());
    if (position.getField() == UNUM_INTEGER_FIELD) {
      start = position.getStart();
      fields.integer = part;
    } else if (position.getField() == UNUM_DECIMAL_SEPARATOR_FIELD) {
      fields.decimalSeparator = part;
    } else if (position.getField() == UNUM_GROUPING_SEPARATOR_FIELD) {
      fields.groupingSeparator = part;
      places.push_back(position.getStart());
    }
  }
  for (const std::int32_t place : places) {
    fields.separatorPlaces.push_back(place - start);
  }
  return fields;
}

/// `integer` without its separators.
std::string digitsOf(const Fields& fields) {
  icu::UnicodeString digits = fields.integer;
  digits.findAndReplace(fields.groupingSeparator, icu::UnicodeString());
  return toUtf8(digits);
}

icu::number::FormattedNumber format(const LocalizedNumberFormatter& formatter,
                                    std::string_view number, UErrorCode& status) {
  return formatter.formatDecimal(pieceOf(number), status);
}

}  // namespace

std::optional<NumberLayout> NumberLayout::learned(const LocalizedNumberFormatter& formatter,
                                                  bool removesSpacesAroundDigits) {
  UErrorCode status = U_ZERO_ERROR;
  const auto affixesOf = [&](const std::string& number) {
    const NumberParts parts =
        partsOf(format(formatter, number, status), removesSpacesAroundDigits, status);
    return Affixes{toUtf8(parts.prefix), toUtf8(parts.suffix)};
  };
  NumberLayout layout;
  const std::string sample = std::string(sampleDigits) + ".5";
  layout.positive_ = affixesOf(sample);
  layout.negative_ = affixesOf("-" + sample);

  const auto number = format(formatter, sample, status);
  const Fields fields = fieldsOf(number, status);
  layout.decimalSeparator_ = toUtf8(fields.decimalSeparator);
  layout.groupingSeparator_ = toUtf8(fields.groupingSeparator);
  // A separator is one unit of ICU's text; anything else is left to ICU.
  const bool isPlain = fields.groupingSeparator.length() <= 1 &&
                       (digitsOf(fields) == sampleDigits ||
                        // Where no fraction is shown, the half has been rounded into the integer.
                        digitsOf(fields) == "1234567890123456790");
  if (U_FAILURE(status) || !isPlain) {
    return std::nullopt;
  }
  const auto& places = fields.separatorPlaces;
  if (!places.empty()) {
    layout.primaryGroup_ = static_cast<std::size_t>(fields.integer.length() - places.back() - 1);
    layout.secondaryGroup_ =
        places.size() < 2 ? sampleDigits.size()
                          : static_cast<std::size_t>(places.back() - places[places.size() - 2] - 1);
    layout.shortestGrouped_ = layout.primaryGroup_ + 1;
    while (
        layout.shortestGrouped_ < sampleDigits.size() &&
        fieldsOf(format(formatter, sampleDigits.substr(0, layout.shortestGrouped_), status), status)
            .separatorPlaces.empty()) {
      ++layout.shortestGrouped_;
    }
  }
  return U_SUCCESS(status) ? std::optional(layout) : std::nullopt;
}

void NumberLayout::appendGrouped(std::string& text, std::string_view integer) const {
  if (primaryGroup_ == 0 || integer.size() < shortestGrouped_) {
    text += integer;
    return;
  }
  const std::size_t beforeLast = integer.size() - primaryGroup_;
  std::size_t length = beforeLast % secondaryGroup_;
  length = length == 0 ? std::min(secondaryGroup_, beforeLast) : length;
  for (std::size_t start = 0; start < beforeLast;) {
    text += integer.substr(start, length);
    text += groupingSeparator_;
    start += length;
    length = secondaryGroup_;
  }
  text += integer.substr(beforeLast);
}

std::string NumberLayout::text(const PlainDigits& digits, int minimumFractionDigits,
                               std::string_view digitsSuffix) const {
  const Affixes& affixes = digits.isNegative ? negative_ : positive_;
  std::string text = affixes.prefix;
  appendGrouped(text, digits.integer);
  const std::size_t fractionLength = std::max(
      digits.fraction.size(), static_cast<std::size_t>(std::max(minimumFractionDigits, 0)));
  if (fractionLength > 0) {
    text += decimalSeparator_;
    text += digits.fraction;
    text.append(fractionLength - digits.fraction.size(), '0');
  }
  text += digitsSuffix;
  text += affixes.suffix;
  return text;
}

}  // namespace corvane
