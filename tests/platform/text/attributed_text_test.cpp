#include "platform/text/styled/attributed_text.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

const TextStyle red{.colour = Colour::Name::systemRed};

TEST(AttributedText, JoinsNeighboursOfOneStyle) {
  AttributedText text("(", red);
  text.append("▼ ", red).append("").append("", {.isMonospaced = true}).append("$5.00)");
  EXPECT_EQ(text.plainText(), "(▼ $5.00)");
  EXPECT_EQ(text.runs(), (std::vector<TextRun>{{"(▼ ", red}, {"$5.00)", {}}}));
  EXPECT_TRUE(AttributedText("").isEmpty());
}

TEST(AttributedText, AppendsRunsAndKeepsItsOwnParagraph) {
  AttributedText text("as of ");
  text.alignment = TextAlignment::right;
  AttributedText other("now", red);
  other.alignment = TextAlignment::centre;
  text.append(other).append(text);
  EXPECT_EQ(text.plainText(), "as of nowas of now");
  EXPECT_EQ(text.runs().size(), 4U);
  EXPECT_EQ(text.alignment, TextAlignment::right);
}

TEST(AttributedText, DiffersByLooksAlone) {
  EXPECT_EQ(AttributedText("5", red), AttributedText("5", red));
  EXPECT_NE(AttributedText("5", red), AttributedText("5"));
  EXPECT_NE(AttributedText("5", {.weight = FontWeight::bold}), AttributedText("5"));
}

}  // namespace
}  // namespace corvane
