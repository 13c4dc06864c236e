// UTF-8 and locales on the way to and from ICU, for the sources of this folder only.
#pragma once

#include <unicode/locid.h>
#include <unicode/udisplaycontext.h>
#include <unicode/unistr.h>

#include <string>
#include <string_view>

#include "platform/text/unicode/formatting_context.h"
#include "platform/text/unicode/locale.h"

namespace corvane {

inline icu::StringPiece pieceOf(std::string_view text) {
  return {text.data(), static_cast<std::int32_t>(text.size())};
}

inline icu::UnicodeString toIcu(std::string_view text) {
  return icu::UnicodeString::fromUTF8(pieceOf(text));
}

inline std::string toUtf8(const icu::UnicodeString& text) {
  std::string utf8;
  text.toUTF8String(utf8);
  return utf8;
}

/// The locale with the Gregorian calendar, also where another one is customary.
inline icu::Locale toIcu(const Locale& locale) {
  icu::Locale result(locale.identifier.c_str());
  UErrorCode status = U_ZERO_ERROR;
  result.setKeywordValue("calendar", "gregorian", status);
  return result;
}

inline UDisplayContext toIcu(FormattingContext context) {
  switch (context) {
    case FormattingContext::standalone:
      return UDISPCTX_CAPITALIZATION_FOR_STANDALONE;
    case FormattingContext::beginningOfSentence:
      return UDISPCTX_CAPITALIZATION_FOR_BEGINNING_OF_SENTENCE;
    case FormattingContext::middleOfSentence:
      return UDISPCTX_CAPITALIZATION_FOR_MIDDLE_OF_SENTENCE;
    case FormattingContext::unknown:
      break;
  }
  return UDISPCTX_CAPITALIZATION_NONE;
}

}  // namespace corvane
