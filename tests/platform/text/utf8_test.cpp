#include "platform/text/unicode/utf8.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(UTF8, IsToldFromOtherBytes) {
  for (const char* text : {"", "plain", "Zürich → 東京 😀"}) {
    EXPECT_TRUE(isUTF8(text)) << text;
  }
  for (const char* bytes : {"\xff", "caf\xe9", "\xc0\xaf", "\xed\xa0\x80", "\xf0\x9f\x98"}) {
    EXPECT_FALSE(isUTF8(bytes)) << bytes;
  }
}

TEST(UTF8, KnowsEveryKindOfWhitespace) {
  for (const char* text : {" ", "a b", "a\n", "\ta", "a\rb", "a\u00A0", "\u2003", "\u2028"}) {
    EXPECT_TRUE(containsWhitespace(text)) << text;
  }
  for (const char* text : {"", "x/y.Z+1", "é→😀"}) {
    EXPECT_FALSE(containsWhitespace(text)) << text;
  }
}

}  // namespace
}  // namespace corvane
