#include "platform/text/unicode/letters.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <limits>

namespace corvane {

char32_t takeCharacter(std::string_view& text) {
  if (const auto first = static_cast<unsigned char>(text.front()); first < 0x80) {
    text.remove_prefix(1);
    return first;
  }
  constexpr std::size_t longest = U8_MAX_LENGTH;
  const auto size = static_cast<std::int32_t>(std::min(text.size(), longest));
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  std::int32_t length = 0;
  UChar32 character = 0;
  // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): what the macro does
  U8_NEXT_OR_FFFD(bytes, length, size, character);
  text.remove_prefix(static_cast<std::size_t>(length));
  return static_cast<char32_t>(character);
}

bool isWordCharacter(char32_t character) {
  if (character < 0x80) {
    return (character >= U'0' && character <= U'9') || (character >= U'A' && character <= U'Z') ||
           (character >= U'a' && character <= U'z') || character == U'_';
  }
  constexpr std::uint32_t wordCategories = U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK;
  constexpr char32_t zeroWidthNonJoiner = 0x200C;
  constexpr char32_t zeroWidthJoiner = 0x200D;
  const auto point = static_cast<UChar32>(character);
  return u_hasBinaryProperty(point, UCHAR_ALPHABETIC) != 0 ||
         (U_GET_GC_MASK(point) & wordCategories) != 0 || character == zeroWidthNonJoiner ||
         character == zeroWidthJoiner;
}

std::string withPlainDigits(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  while (!text.empty()) {
    const std::string_view rest = text;
    const char32_t character = takeCharacter(text);
    const int digit = character < 0x80 ? -1 : u_charDigitValue(static_cast<UChar32>(character));
    if (digit >= 0) {
      plain += static_cast<char>('0' + digit);
    } else {
      plain += rest.substr(0, rest.size() - text.size());
    }
  }
  return plain;
}

bool isWhitespace(char32_t character) {
  if (character < 0x80) {
    return character == U' ' || (character >= U'\t' && character <= U'\r');
  }
  return u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_WHITE_SPACE) != 0;
}

}  // namespace corvane
