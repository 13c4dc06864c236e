// Colours by their meaning, turned into numbers only when something is drawn.
#pragma once

#include <memory>
#include <variant>

namespace corvane {

/// Whether the window is drawn dark on light or light on dark.
enum class Appearance { light, dark };

/// A colour of the sRGB space, each part from 0 to 1, not multiplied by alpha.
struct RGBA {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  friend bool operator==(const RGBA&, const RGBA&) = default;
};

/// A colour by name, by numbers, or blended of two others. A cheap value to copy; equal to one that
/// was made in the same way.
class Colour {
 public:
  enum class Name {
    label,
    secondaryLabel,
    tertiaryLabel,
    separator,
    controlBackground,
    rowBackground,
    alternatingRowBackground,
    systemRed,
    systemOrange,
    systemYellow,
    systemGreen,
    systemTeal,
    systemBlue,
    systemIndigo,
    systemPurple,
    systemPink,
    systemBrown,
    systemGray,
    black,
    white,
    lightGray,
    clear
  };

  Colour(Name name) : value_(name) {}  // NOLINT(google-explicit-constructor): a name is a colour
  explicit Colour(const RGBA& rgba) : value_(rgba) {}

  /// Hue, saturation and brightness from 0 to 1; hue 0 is red, 1/3 green, 2/3 blue.
  [[nodiscard]] static Colour fromHue(double hue, double saturation, double brightness,
                                      double alpha = 1);

  /// `fraction` (0 to 1) of the way from this colour to `other`.
  [[nodiscard]] Colour blended(double fraction, const Colour& other) const;
  /// This colour with `alpha` in place of its own.
  [[nodiscard]] Colour withAlpha(double alpha) const;

  [[nodiscard]] RGBA resolved(Appearance appearance) const;

  friend bool operator==(const Colour& left, const Colour& right);

 private:
  struct Blend;
  struct Faded;
  template <typename T>
  explicit Colour(std::shared_ptr<const T> value) : value_(std::move(value)) {}

  std::variant<Name, RGBA, std::shared_ptr<const Blend>, std::shared_ptr<const Faded>> value_;
};

}  // namespace corvane
