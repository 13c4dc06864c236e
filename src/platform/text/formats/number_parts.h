// A formatted number taken apart. For the sources of this folder only.
#pragma once

#include <unicode/formattedvalue.h>
#include <unicode/numberformatter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <limits>

namespace corvane {

/// A formatted number in its three parts.
struct NumberParts {
  icu::UnicodeString prefix;
  icu::UnicodeString digits;
  icu::UnicodeString suffix;
};

/// Takes out the spaces that would have parted a symbol from the digits.
inline void removeSpaces(icu::UnicodeString& text) {
  for (std::int32_t index = text.length() - 1; index >= 0; --index) {
    if (u_isUWhiteSpace(text.charAt(index))) {
      text.remove(index, 1);
    }
  }
}

inline NumberParts partsOf(const icu::number::FormattedNumber& number,
                           bool removesSpacesAroundDigits, UErrorCode& status) {
  std::int32_t start = std::numeric_limits<std::int32_t>::max();
  std::int32_t end = 0;
  icu::ConstrainedFieldPosition position;
  position.constrainCategory(UFIELD_CATEGORY_NUMBER);
  while (number.nextPosition(position, status)) {
    if (position.getField() == UNUM_INTEGER_FIELD || position.getField() == UNUM_FRACTION_FIELD) {
      start = std::min(start, position.getStart());
      end = std::max(end, position.getLimit());
    }
  }
  const icu::UnicodeString text = number.toString(status);
  NumberParts parts = {icu::UnicodeString(text, 0, start),
                       icu::UnicodeString(text, start, end - start), icu::UnicodeString(text, end)};
  if (removesSpacesAroundDigits) {
    removeSpaces(parts.prefix);
    removeSpaces(parts.suffix);
  }
  return parts;
}

}  // namespace corvane
