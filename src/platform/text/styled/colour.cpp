#include "platform/text/styled/colour.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <utility>

namespace corvane {

struct Colour::Blend {
  Colour from;
  Colour to;
  double fraction;

  friend bool operator==(const Blend&, const Blend&) = default;
};

struct Colour::Faded {
  Colour colour;
  double alpha;

  friend bool operator==(const Faded&, const Faded&) = default;
};

namespace {

/// A named colour as 0xRRGGBB in the light and in the dark appearance.
struct Named {
  Colour::Name name;
  std::uint32_t light;
  std::uint32_t dark;
};

// Chosen so that label colours, and the red and green of gains and losses with the green blended
// towards black, stand out from every background here by a contrast of at least 4.5 to 1.
constexpr std::array table = {
    Named{Colour::Name::label, 0x1A1A1C, 0xE8E8EA},
    Named{Colour::Name::secondaryLabel, 0x5C5C62, 0xA4A4AA},
    Named{Colour::Name::tertiaryLabel, 0x8A8A90, 0x74747A},
    Named{Colour::Name::separator, 0xD4D4D8, 0x3C3C40},
    Named{Colour::Name::controlBackground, 0xFFFFFF, 0x1E1E20},
    Named{Colour::Name::rowBackground, 0xFFFFFF, 0x1E1E20},
    Named{Colour::Name::alternatingRowBackground, 0xF4F5F7, 0x28282B},
    Named{Colour::Name::systemRed, 0xC9252D, 0xFF6B64},
    Named{Colour::Name::systemOrange, 0xC25E00, 0xFFA033},
    Named{Colour::Name::systemYellow, 0xC79A00, 0xFFD426},
    Named{Colour::Name::systemGreen, 0x1F9E45, 0x5CF08C},
    Named{Colour::Name::systemTeal, 0x0B7C93, 0x5AC8E0},
    Named{Colour::Name::systemBlue, 0x0A62D0, 0x5AA5FF},
    Named{Colour::Name::systemIndigo, 0x4F4CC8, 0x8D8BFF},
    Named{Colour::Name::systemPurple, 0x8E3FC0, 0xC98BF0},
    Named{Colour::Name::systemPink, 0xCC2457, 0xFF6F92},
    Named{Colour::Name::systemBrown, 0x8A6A45, 0xC2A27A},
    Named{Colour::Name::systemGray, 0x7C7C82, 0x9A9AA0},
    Named{Colour::Name::black, 0x000000, 0x000000},
    Named{Colour::Name::white, 0xFFFFFF, 0xFFFFFF},
    Named{Colour::Name::lightGray, 0xAAAAAA, 0xAAAAAA},
};

RGBA fromHex(std::uint32_t hex) {
  const auto part = [&](int shift) { return static_cast<double>(hex >> shift & 0xFF) / 255; };
  return {part(16), part(8), part(0), 1};
}

RGBA resolvedName(Colour::Name name, Appearance appearance) {
  if (name == Colour::Name::clear) {
    return {0, 0, 0, 0};
  }
  const auto* entry = std::find_if(table.begin(), table.end(),
                                   [&](const Named& named) { return named.name == name; });
  assert(entry != table.end() && "every named colour is in the table");
  return fromHex(appearance == Appearance::light ? entry->light : entry->dark);
}

double between(double from, double to, double fraction) {
  return from + (to - from) * fraction;
}

template <typename... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};

}  // namespace

Colour Colour::fromHue(double hue, double saturation, double brightness, double alpha) {
  // Each primary is full for a third of the circle around its own hue and fades over the next
  // sixth.
  const auto primary = [&](double ownHue) {
    const double away = std::abs(std::remainder(hue - ownHue, 1.0)) * 6;
    const double strength = std::clamp(2 - away, 0.0, 1.0);
    return brightness * (1 - saturation * (1 - strength));
  };
  return Colour(RGBA{primary(0), primary(1.0 / 3), primary(2.0 / 3), alpha});
}

Colour Colour::blended(double fraction, const Colour& other) const {
  assert(fraction >= 0 && fraction <= 1);
  return Colour(std::make_shared<const Blend>(Blend{*this, other, fraction}));
}

Colour Colour::withAlpha(double alpha) const {
  assert(alpha >= 0 && alpha <= 1);
  return Colour(std::make_shared<const Faded>(Faded{*this, alpha}));
}

RGBA Colour::resolved(Appearance appearance) const {
  return std::visit(Overloaded{[&](Name name) { return resolvedName(name, appearance); },
                               [](const RGBA& rgba) { return rgba; },
                               [&](const std::shared_ptr<const Blend>& blend) {
                                 const RGBA from = blend->from.resolved(appearance);
                                 const RGBA to = blend->to.resolved(appearance);
                                 const double fraction = blend->fraction;
                                 return RGBA{between(from.red, to.red, fraction),
                                             between(from.green, to.green, fraction),
                                             between(from.blue, to.blue, fraction),
                                             between(from.alpha, to.alpha, fraction)};
                               },
                               [&](const std::shared_ptr<const Faded>& faded) {
                                 RGBA rgba = faded->colour.resolved(appearance);
                                 rgba.alpha = faded->alpha;
                                 return rgba;
                               }},
                    value_);
}

bool operator==(const Colour& left, const Colour& right) {
  if (left.value_.index() != right.value_.index()) {
    return false;
  }
  return std::visit(
      [&]<typename Value>(const Value& value) {
        const Value& other = std::get<Value>(right.value_);
        if constexpr (requires { *value; }) {
          return *value == *other;
        } else {
          return value == other;
        }
      },
      left.value_);
}

}  // namespace corvane
