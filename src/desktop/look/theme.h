// How the program looks: colours, fonts and spacing, light or dark as the system has it.
#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>

#include "platform/text/styled/attributed_text.h"
#include "platform/text/styled/colour.h"

namespace corvane::desktop {

/// Distances in device-independent pixels; every layout is built from these.
namespace spacing {
constexpr int tight = 4;
constexpr int narrow = 8;
constexpr int medium = 12;
constexpr int wide = 16;
constexpr int section = 24;
}  // namespace spacing

/// How far texts and lines are from what they stand on.
enum class Contrast { normal, high };

namespace theme {

/// Sets style, font and palette of the application for `appearance`. Widgets hear of a change as
/// QEvent::PaletteChange.
void apply(Appearance appearance, Contrast contrast = Contrast::normal);
/// The size of the body text in points, in place of the one that the desktop has chosen. To be
/// called before the first apply().
void setBodySize(double points);

/// What is applied now.
[[nodiscard]] Appearance appearance();
[[nodiscard]] Contrast contrast();

/// Of text and lines, which have more contrast where it is to be high.
[[nodiscard]] QColor colour(const Colour& colour);
/// Of what text stands on, as it is in either contrast.
[[nodiscard]] QColor background(const Colour& colour);

/// The background of the source list, a shade away from that of the content.
[[nodiscard]] QColor sidebarBackground();

/// The application's font in other sizes and weights; `factor` is relative to the body text.
[[nodiscard]] QFont font(double factor, QFont::Weight weight = QFont::Normal);
/// Figures of one width, for columns of numbers.
[[nodiscard]] QFont monospacedFont(QFont::Weight weight = QFont::Normal);
/// The sizes of the body text that tables and their figures have.
constexpr double tableFactor = 0.96;
constexpr double figureFactor = 0.92;
/// `base` with the weight and the figures of `style`.
[[nodiscard]] QFont font(const QFont& base, const TextStyle& style);

/// The width in pixels that so many letters of the body text take, for columns and panels that are
/// to grow with the user's font.
[[nodiscard]] int widthOfLetters(int count);

/// The application's icon, drawn at every size that a desktop asks for.
[[nodiscard]] QIcon applicationIcon();

}  // namespace theme
}  // namespace corvane::desktop
