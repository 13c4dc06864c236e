#include "platform/text/unicode/isolation.h"

#include <gtest/gtest.h>
#include <unicode/ubidi.h>
#include <unicode/unistr.h>

namespace corvane {
namespace {

/// `text` as it stands on a screen from left to right, by the text service.
std::string onScreen(const std::string& text) {
  const auto logical = icu::UnicodeString::fromUTF8(text);
  UErrorCode status = U_ZERO_ERROR;
  UBiDi* bidi = ubidi_open();
  ubidi_setPara(bidi, logical.getBuffer(), logical.length(), UBIDI_DEFAULT_LTR, nullptr, &status);
  icu::UnicodeString visual;
  const std::int32_t length =
      ubidi_writeReordered(bidi, visual.getBuffer(2 * logical.length()), 2 * logical.length(),
                           UBIDI_REMOVE_BIDI_CONTROLS, &status);
  visual.releaseBuffer(length);
  ubidi_close(bidi);
  EXPECT_TRUE(U_SUCCESS(status));
  std::string shown;
  visual.toUTF8String(shown);
  return shown;
}

const std::string hebrew = "אבג";
const std::string hebrewOnScreen = "גבא";

TEST(Isolation, KeepsNumbersBesideANameInTheirPlaces) {
  // Without it a number behind the name is drawn before it.
  ASSERT_EQ(onScreen("SYM, " + hebrew + ", 500 of 12"), "SYM, 500 ,גבא of 12");
  EXPECT_EQ(onScreen("SYM, " + isolatedName(hebrew) + ", 500 of 12"),
            "SYM, " + hebrewOnScreen + ", 500 of 12");
  EXPECT_EQ(onScreen(isolatedName(hebrew) + ", Mar 4, 2021 – Mar 5, 2021"),
            hebrewOnScreen + ", Mar 4, 2021 – Mar 5, 2021");
  EXPECT_EQ(onScreen(isolatedName("A\u202Ebc") + " 12 d"), "Acb 12 d") << "an override ends";
}

TEST(Isolation, LeavesOtherNamesAsTheyAre) {
  for (const std::string name : {"", "Savings", "Épargne 2", "貯金", "Сбережения", "a\xFF"}) {
    EXPECT_EQ(isolatedName(name), name);
    EXPECT_EQ(isolatingQuotedNames("row 3 of “" + name + "”"), "row 3 of “" + name + "”");
  }
}

TEST(Isolation, FindsQuotedNamesInASentence) {
  EXPECT_EQ(isolatingQuotedNames("row 3 of “" + hebrew + "”, “A”, “" + hebrew + " 2”."),
            "row 3 of “\u2068" + hebrew + "\u2069”, “A”, “\u2068" + hebrew + " 2\u2069”.");
  for (const std::string& unquoted : {hebrew + " 2", "“" + hebrew, hebrew + "” “"}) {
    EXPECT_EQ(isolatingQuotedNames(unquoted), unquoted);
  }
}

}  // namespace
}  // namespace corvane
