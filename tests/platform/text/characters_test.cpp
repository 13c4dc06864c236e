#include "platform/text/unicode/characters.h"

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "random_cases.h"

namespace corvane {
namespace {

/// The places, in bytes, at which the text service itself sees a character start or end.
std::set<std::size_t> boundariesByICU(const icu::UnicodeString& text) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> iterator(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  iterator->setText(text);
  std::set<std::size_t> boundaries;
  for (auto index = iterator->first(); index != icu::BreakIterator::DONE;
       index = iterator->next()) {
    std::string before;
    text.tempSubString(0, index).toUTF8String(before);
    boundaries.insert(before.size());
  }
  return boundaries;
}

TEST(Characters, EndWhereTheTextServiceEndsThem) {
  // One of each kind that the rules know: plain letters, marks, flags, syllables, pictures,
  // joiners.
  const std::vector<char32_t> alphabet = {
      U'a',      U'"',      U',',      U' ',      U'\t',     U'\r',     U'\n',     U'é',
      U'\u0301', U'\u0903', U'\u0600', U'\u200D', U'\uFE0F', U'\uFEFF', U'\u00A0', U'\u2028',
      U'\u1100', U'\u1161', U'\u11A8', U'\uAC00', U'\uAC01', U'中',     0x1F1E8,   0x1F1E6,
      0x1F469,   0x1F3FD,   0x1F680,   0x0E33,    0x110BD};
  corvane::testing::forRandomCases(4000, [&](std::mt19937_64& random) {
    icu::UnicodeString text;
    for (auto length = random() % 12; length > 0; --length) {
      text.append(static_cast<UChar32>(alphabet[random() % alphabet.size()]));
    }
    std::string utf8;
    text.toUTF8String(utf8);
    const std::set<std::size_t> expected = boundariesByICU(text);
    for (std::size_t position = 0; position <= utf8.size(); ++position) {
      const bool isInCodePoint =
          position < utf8.size() && (static_cast<unsigned char>(utf8[position]) & 0xC0) == 0x80;
      if (!isInCodePoint) {
        ASSERT_EQ(isCharacterBoundary(utf8, position), expected.contains(position))
            << ::testing::PrintToString(utf8) << " at " << position;
      }
    }
  });
}

TEST(Characters, AreBytesWhereTheTextIsNoUTF8) {
  const std::string text = "a\xFF\xC3,\x80\xE2\x82";
  for (std::size_t position = 0; position < text.size(); ++position) {
    EXPECT_EQ(characterLength(text, position), 1U) << position;
    EXPECT_EQ(whitespaceLength(text, position), 0U) << position;
  }
}

TEST(Characters, TellWhiteSpaceFromAnAccentOnASpace) {
  EXPECT_EQ(whitespaceLength(" x", 0), 1U);
  EXPECT_EQ(whitespaceLength("\r\n", 0), 2U);
  EXPECT_EQ(whitespaceLength("\u3000", 0), 3U);
  EXPECT_EQ(whitespaceLength(" \u0301", 0), 0U);
  EXPECT_EQ(whitespaceLength("\uFEFF", 0), 0U);
}

}  // namespace
}  // namespace corvane
