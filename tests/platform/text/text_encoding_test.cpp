#include "platform/text/unicode/text_encoding.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using namespace std::string_literals;

TEST(TextEncoding, ReadsAndWritesEachEncoding) {
  const std::string text = "Zürich, 5 €";
  EXPECT_EQ(decodedText("Z\xFCrich, 5 \x80", TextEncoding::windowsLatin1), text);
  EXPECT_EQ(decodedText("\xFF\xFEZ\0\xFC\0"s, TextEncoding::utf16), "Zü");
  EXPECT_EQ(decodedText("\0Z\0\xFC"s, TextEncoding::utf16), "Zü");
  for (const auto encoding :
       {TextEncoding::utf8, TextEncoding::utf16, TextEncoding::windowsLatin1}) {
    EXPECT_EQ(decodedText(encodedText(text, encoding), encoding), text);
    EXPECT_EQ(decodedText(encodedText("", encoding), encoding), "");
  }
}

TEST(TextEncoding, RefusesWhatItCannotRead) {
  for (const auto& bytes : {"a\xFF"s, "\xC0\x80"s, "\xED\xA0\x80"s, "a\xE2\x82"s}) {
    EXPECT_THROW((void)decodedText(bytes, TextEncoding::utf8), TextEncodingError);
  }
  EXPECT_THROW((void)decodedText("\xFF\xFE\0\xD8"s, TextEncoding::utf16), TextEncodingError);
  EXPECT_THROW((void)encodedText("中", TextEncoding::windowsLatin1), TextEncodingError);
  EXPECT_THROW((void)encodedText("\xFF", TextEncoding::utf16), TextEncodingError);
  EXPECT_EQ(TextEncodingError(TextEncoding::utf8, true).description(),
            "The file is not UTF-8 text.");
}

}  // namespace
}  // namespace corvane
