#include "platform/text/unicode/characters.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

namespace corvane {
namespace {

bool isAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

/// A code point and the number of its bytes; U_SENTINEL and 1 for a byte that is no UTF-8.
struct CodePoint {
  UChar32 value;
  std::size_t length;
};

// The macros of ICU narrow integers.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

CodePoint codePointAt(std::string_view text, std::size_t position) {
  const auto available =
      static_cast<std::int32_t>(std::min<std::size_t>(text.size() - position, U8_MAX_LENGTH));
  std::int32_t length = 0;
  UChar32 value = 0;
  // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): what the macro does
  U8_NEXT(text.data() + position, length, available, value);
  return value < 0 ? CodePoint{U_SENTINEL, 1} : CodePoint{value, static_cast<std::size_t>(length)};
}

CodePoint codePointBefore(std::string_view text, std::size_t position) {
  const std::size_t window = std::min<std::size_t>(position, U8_MAX_LENGTH);
  auto index = static_cast<std::int32_t>(window);
  UChar32 value = 0;
  U8_PREV(text.data() + (position - window), 0, index, value);
  return value < 0 ? CodePoint{U_SENTINEL, 1}
                   : CodePoint{value, window - static_cast<std::size_t>(index)};
}

#pragma GCC diagnostic pop

UGraphemeClusterBreak classOf(UChar32 codePoint) {
  return codePoint < 0 ? U_GCB_OTHER
                       : static_cast<UGraphemeClusterBreak>(
                             u_getIntPropertyValue(codePoint, UCHAR_GRAPHEME_CLUSTER_BREAK));
}

bool isPictograph(UChar32 codePoint) {
  return codePoint >= 0 && u_hasBinaryProperty(codePoint, UCHAR_EXTENDED_PICTOGRAPHIC);
}

bool breaksAlways(UGraphemeClusterBreak kind) {
  return kind == U_GCB_CONTROL || kind == U_GCB_CR || kind == U_GCB_LF;
}

/// Whether two parts of a Hangul syllable belong together.
bool joinsHangul(UGraphemeClusterBreak before, UGraphemeClusterBreak after) {
  switch (before) {
    case U_GCB_L:
      return after == U_GCB_L || after == U_GCB_V || after == U_GCB_LV || after == U_GCB_LVT;
    case U_GCB_LV:
    case U_GCB_V:
      return after == U_GCB_V || after == U_GCB_T;
    case U_GCB_LVT:
    case U_GCB_T:
      return after == U_GCB_T;
    default:
      return false;
  }
}

/// Whether a pictograph with its modifiers ends at `position`.
bool endsInPictograph(std::string_view text, std::size_t position) {
  while (position > 0) {
    const CodePoint before = codePointBefore(text, position);
    if (classOf(before.value) != U_GCB_EXTEND) {
      return isPictograph(before.value);
    }
    position -= before.length;
  }
  return false;
}

/// The letters of flags go in pairs: whether a pair is still open at `position`.
bool endsInHalfAFlag(std::string_view text, std::size_t position) {
  bool isOpen = false;
  while (position > 0) {
    const CodePoint before = codePointBefore(text, position);
    if (classOf(before.value) != U_GCB_REGIONAL_INDICATOR) {
      break;
    }
    isOpen = !isOpen;
    position -= before.length;
  }
  return isOpen;
}

}  // namespace

bool isCharacterBoundary(std::string_view text, std::size_t position) {
  if (position == 0 || position >= text.size()) {
    return true;
  }
  if (isAscii(text[position - 1]) && isAscii(text[position])) {
    return text[position - 1] != '\r' || text[position] != '\n';
  }
  const CodePoint before = codePointBefore(text, position);
  const CodePoint after = codePointAt(text, position);
  const UGraphemeClusterBreak left = classOf(before.value);
  const UGraphemeClusterBreak right = classOf(after.value);
  if (breaksAlways(left) || breaksAlways(right)) {
    return true;
  }
  if (right == U_GCB_EXTEND || right == U_GCB_ZWJ || right == U_GCB_SPACING_MARK ||
      left == U_GCB_PREPEND || joinsHangul(left, right)) {
    return false;
  }
  if (left == U_GCB_ZWJ && isPictograph(after.value)) {
    return !endsInPictograph(text, position - before.length);
  }
  if (left == U_GCB_REGIONAL_INDICATOR && right == U_GCB_REGIONAL_INDICATOR) {
    return !endsInHalfAFlag(text, position);
  }
  return true;
}

std::size_t characterLength(std::string_view text, std::size_t position) {
  std::size_t end = position;
  do {
    end += codePointAt(text, end).length;
  } while (!isCharacterBoundary(text, end));
  return end - position;
}

std::size_t whitespaceLength(std::string_view text, std::size_t position) {
  const CodePoint first = codePointAt(text, position);
  if (first.value < 0 || !u_isUWhiteSpace(first.value)) {
    return 0;
  }
  const std::size_t length = characterLength(text, position);
  const bool isWholeCharacter = length == first.length || text.substr(position, length) == "\r\n";
  return isWholeCharacter ? length : 0;
}

}  // namespace corvane
