#include "platform/text/styled/colour.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace corvane {
namespace {

using Name = Colour::Name;

/// Relative luminance of an opaque sRGB colour.
double luminance(const RGBA& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

double contrast(const Colour& text, const Colour& background, Appearance appearance) {
  double lighter = luminance(text.resolved(appearance));
  double darker = luminance(background.resolved(appearance));
  if (lighter < darker) {
    std::swap(lighter, darker);
  }
  return (lighter + 0.05) / (darker + 0.05);
}

TEST(Colour, OfTextIsReadableOnEveryBackgroundInBothAppearances) {
  for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
    for (const Name background :
         {Name::controlBackground, Name::rowBackground, Name::alternatingRowBackground}) {
      for (const Colour& text :
           {Colour(Name::label), Colour(Name::secondaryLabel), Colour(Name::systemRed),
            Colour(Name::systemGreen).blended(0.3, Name::black)}) {
        EXPECT_GE(contrast(text, background, appearance), 4.5);
      }
    }
  }
}

TEST(Colour, EveryNameHasAValueInBothAppearances) {
  for (int name = 0; name <= static_cast<int>(Name::clear); ++name) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
      const double alpha = Colour(static_cast<Name>(name)).resolved(appearance).alpha;
      EXPECT_EQ(alpha, static_cast<Name>(name) == Name::clear ? 0 : 1);
    }
  }
}

TEST(Colour, BlendsAndFadesWhatTheAppearanceMakesOfItsParts) {
  const Colour half = Colour(Name::black).blended(0.5, Name::white);
  EXPECT_EQ(half.resolved(Appearance::dark), (RGBA{0.5, 0.5, 0.5, 1}));
  EXPECT_EQ(half.withAlpha(0.25).resolved(Appearance::light), (RGBA{0.5, 0.5, 0.5, 0.25}));
  EXPECT_NE(Colour(Name::label).blended(0.5, Name::black).resolved(Appearance::light),
            Colour(Name::label).blended(0.5, Name::black).resolved(Appearance::dark));
}

TEST(Colour, GoesAroundTheCircleOfHues) {
  const auto expectHue = [](double hue, RGBA expected) {
    const RGBA actual = Colour::fromHue(hue, 1, 1).resolved(Appearance::light);
    EXPECT_NEAR(actual.red, expected.red, 1e-9) << hue;
    EXPECT_NEAR(actual.green, expected.green, 1e-9) << hue;
    EXPECT_NEAR(actual.blue, expected.blue, 1e-9) << hue;
  };
  expectHue(0, {1, 0, 0});
  expectHue(1.0 / 12, {1, 0.5, 0});
  expectHue(1.0 / 6, {1, 1, 0});
  expectHue(1.0 / 3, {0, 1, 0});
  expectHue(7.0 / 12, {0, 0.5, 1});
  expectHue(2.0 / 3, {0, 0, 1});
  expectHue(5.0 / 6, {1, 0, 1});
  expectHue(1, {1, 0, 0});
  const RGBA pale = Colour::fromHue(0, 0.5, 0.6, 0.4).resolved(Appearance::dark);
  EXPECT_NEAR(pale.red, 0.6, 1e-9);
  EXPECT_NEAR(pale.green, 0.3, 1e-9);
  EXPECT_EQ(pale.alpha, 0.4);
}

TEST(Colour, IsEqualToOneThatWasMadeInTheSameWay) {
  const auto movement = [] { return Colour(Name::systemGreen).blended(0.3, Name::black); };
  EXPECT_EQ(movement(), movement());
  EXPECT_NE(movement(), Colour(Name::systemGreen).blended(0.4, Name::black));
  EXPECT_NE(movement(), Colour(Name::systemGreen));
  EXPECT_EQ(movement().withAlpha(0.4), movement().withAlpha(0.4));
  EXPECT_NE(Colour(Name::white), Colour(RGBA{1, 1, 1, 1}));
}

}  // namespace
}  // namespace corvane
