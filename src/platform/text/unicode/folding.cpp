#include "platform/text/unicode/folding.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/text/unicode/icu_text.h"

namespace corvane {
namespace {

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string foldedAscii(std::string_view text) {
  std::string folded(text);
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return folded;
}

/// Letters that Unicode does not take apart, though a keyboard without them has another in their
/// place.
constexpr std::array<std::pair<char16_t, const char16_t*>, 9> plainLetters = {{
    {u'æ', u"ae"},
    {u'ð', u"d"},
    {u'ø', u"o"},
    {u'đ', u"d"},
    {u'ħ', u"h"},
    {u'ı', u"i"},
    {u'ł', u"l"},
    {u'œ', u"oe"},
    {u'ŧ', u"t"},
}};

bool isDash(UChar32 character) {
  constexpr UChar32 firstDash = 0x2010;
  constexpr UChar32 lastDash = 0x2015;
  constexpr UChar32 minusSign = 0x2212;
  return character == minusSign || (character >= firstDash && character <= lastDash);
}

bool isApostrophe(UChar32 character) {
  constexpr UChar32 leftMark = 0x2018;
  constexpr UChar32 rightMark = 0x2019;
  return character == leftMark || character == rightMark;
}

void appendFolded(icu::UnicodeString& folded, UChar32 character) {
  if (u_charType(character) == U_NON_SPACING_MARK) {
    return;
  }
  if (const std::int32_t digit = u_charDigitValue(character); digit >= 0) {
    folded.append(static_cast<UChar32>(u'0' + digit));
  } else if (u_isUWhiteSpace(character)) {
    folded.append(u' ');
  } else if (isDash(character)) {
    folded.append(u'-');
  } else if (isApostrophe(character)) {
    folded.append(u'\'');
  } else if (const auto* const plain = std::ranges::find(
                 plainLetters, character, [](const auto& pair) { return UChar32{pair.first}; });
             plain != plainLetters.end()) {
    folded.append(plain->second);
  } else {
    folded.append(character);
  }
}

}  // namespace

std::string foldedForSearch(std::string_view text) {
  if (isAscii(text)) {
    return foldedAscii(text);
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* smallLetters = icu::Normalizer2::getNFKCCasefoldInstance(status);
  const icu::Normalizer2* apart = icu::Normalizer2::getNFDInstance(status);
  if (U_FAILURE(status)) {
    return foldedAscii(text);
  }
  const icu::UnicodeString plain =
      apart->normalize(smallLetters->normalize(toIcu(text), status), status);
  icu::UnicodeString folded;
  for (std::int32_t i = 0; i < plain.length(); i = plain.moveIndex32(i, 1)) {
    appendFolded(folded, plain.char32At(i));
  }
  return toUtf8(folded);
}

}  // namespace corvane
