#include "platform/text/unicode/utf8.h"

#include <simdjson.h>
#include <unicode/uchar.h>

#include "platform/text/unicode/icu_text.h"

namespace corvane {

bool isUTF8(std::string_view bytes) {
  return simdjson::validate_utf8(bytes.data(), bytes.size());
}

bool containsWhitespace(std::string_view text) {
  const icu::UnicodeString characters = toIcu(text);
  for (int32_t i = 0; i < characters.length(); ++i) {
    // Every whitespace character is one code unit.
    if (u_isUWhiteSpace(characters.charAt(i)) != 0) {
      return true;
    }
  }
  return false;
}

}  // namespace corvane
