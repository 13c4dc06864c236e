// Text as a search compares it.

#include "platform/text/unicode/folding.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(FoldedForSearch, LeavesOutWhatAKeyboardMayLack) {
  EXPECT_EQ(foldedForSearch("Buy ABC"), "buy abc");
  EXPECT_EQ(foldedForSearch("Société Ñandú"), "societe nandu");
  EXPECT_EQ(foldedForSearch("e\u0301"), "e") << "an accent of its own";
  EXPECT_EQ(foldedForSearch("Straße"), "strasse");
  EXPECT_EQ(foldedForSearch("Łódź Ærø İzmir Isık"), "lodz aero izmir isik");
  EXPECT_EQ(foldedForSearch("１２٣४"), "1234");
  EXPECT_EQ(foldedForSearch("1\u202F234\u00A0€"), "1 234 €");
  EXPECT_EQ(foldedForSearch("−5 3–for–1 l’or"), "-5 3-for-1 l'or");
  EXPECT_EQ(foldedForSearch("\u200E-5\u200E"), "-5") << "marks of direction";
  EXPECT_EQ(foldedForSearch(""), "");
}

TEST(FoldedForSearch, TakesBytesThatAreNoText) {
  EXPECT_EQ(foldedForSearch("a\xFF"), "a\uFFFD");
}

}  // namespace
}  // namespace corvane
