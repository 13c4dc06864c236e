#include "desktop/look/theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>
#include <algorithm>
#include <optional>

#include "desktop/look/corvane_style.h"

namespace corvane::desktop::theme {
namespace {

Appearance current = Appearance::light;
Contrast currentContrast = Contrast::normal;
std::optional<double> bodySize;

/// Text and lines further away from the background that they stand on, and the backgrounds, which
/// are nearly white or nearly black, as they are.
QColor withHighContrast(const QColor& colour) {
  constexpr float palestInk = 0.9F;
  constexpr float darkestInk = 0.2F;
  constexpr float kept = 0.5F;
  float hue = 0;
  float saturation = 0;
  float lightness = 0;
  float alpha = 0;
  colour.getHslF(&hue, &saturation, &lightness, &alpha);
  if (current == Appearance::light && lightness < palestInk) {
    lightness *= kept;
  } else if (current == Appearance::dark && lightness > darkestInk) {
    lightness = 1 - (1 - lightness) * kept;
  }
  return QColor::fromHslF(std::max(hue, 0.0F), saturation, lightness, alpha);
}

QPalette palette() {
  const bool isDark = current == Appearance::dark;
  const QColor window = isDark ? QColor(0x24, 0x25, 0x28) : QColor(0xFB, 0xFB, 0xFC);
  const QColor button = isDark ? QColor(0x3A, 0x3B, 0x40) : QColor(0xF3, 0xF4, 0xF6);
  const QColor label = colour(Colour::Name::label);
  QPalette made(button, window);
  made.setColor(QPalette::Window, window);
  made.setColor(QPalette::WindowText, label);
  made.setColor(QPalette::Base, colour(Colour::Name::controlBackground));
  made.setColor(QPalette::AlternateBase, colour(Colour::Name::alternatingRowBackground));
  made.setColor(QPalette::Text, label);
  made.setColor(QPalette::Button, button);
  made.setColor(QPalette::ButtonText, label);
  made.setColor(QPalette::BrightText, colour(Colour::Name::systemRed));
  made.setColor(QPalette::ToolTipBase,
                isDark ? QColor(0x34, 0x35, 0x3A) : QColor(0xFF, 0xFF, 0xFF));
  made.setColor(QPalette::ToolTipText, label);
  made.setColor(QPalette::PlaceholderText, colour(Colour::Name::secondaryLabel));
  made.setColor(QPalette::Link, colour(Colour::Name::systemBlue));
  // White text stands on the highlight, which is therefore the same blue in both appearances.
  made.setColor(QPalette::Highlight, QColor(0x0A, 0x62, 0xD0));
  made.setColor(QPalette::HighlightedText, Qt::white);
  const QColor tertiary = colour(Colour::Name::tertiaryLabel);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    made.setColor(QPalette::Disabled, role, tertiary);
  }
  made.setColor(QPalette::Disabled, QPalette::Highlight, colour(Colour::Name::separator));
  made.setColor(QPalette::Disabled, QPalette::HighlightedText, tertiary);
  return made;
}

/// The first of `families` that is installed; `otherwise` where none is.
QString installed(std::initializer_list<const char*> families, const QString& otherwise) {
  for (const char* family : families) {
    if (QFontDatabase::hasFamily(QString::fromLatin1(family))) {
      return QString::fromLatin1(family);
    }
  }
  return otherwise;
}

QFont::Weight qtWeight(FontWeight weight) {
  switch (weight) {
    case FontWeight::light:
      return QFont::Light;
    case FontWeight::regular:
      return QFont::Normal;
    case FontWeight::medium:
      return QFont::Medium;
    case FontWeight::semibold:
      return QFont::DemiBold;
    case FontWeight::bold:
      return QFont::Bold;
  }
  return QFont::Normal;
}

/// The platform's font where the desktop has chosen one; a plain drawing surface has no opinion.
QFont bodyFont() {
  static const QFont system = QApplication::font();
  QFont font = system;
  if (QGuiApplication::platformName() == QLatin1String("offscreen")) {
    font.setFamily(installed({"Open Sans", "Noto Sans", "DejaVu Sans"}, font.family()));
    font.setPointSizeF(10);
  }
  if (bodySize) {
    font.setPointSizeF(*bodySize);
  }
  return font;
}

}  // namespace

void apply(Appearance appearance, Contrast contrast) {
  current = appearance;
  currentContrast = contrast;
  static const QFont body = bodyFont();
  QApplication::setStyle(new CorvaneStyle);
  QApplication::setFont(body);
  QApplication::setPalette(palette());
  QApplication::setWindowIcon(applicationIcon());
}

void setBodySize(double points) {
  bodySize = points;
}

Appearance appearance() {
  return current;
}

Contrast contrast() {
  return currentContrast;
}

QColor background(const Colour& colour) {
  const RGBA rgba = colour.resolved(current);
  return QColor::fromRgbF(static_cast<float>(rgba.red), static_cast<float>(rgba.green),
                          static_cast<float>(rgba.blue), static_cast<float>(rgba.alpha));
}

QColor colour(const Colour& colour) {
  const QColor made = background(colour);
  return currentContrast == Contrast::high && made.alpha() > 0 ? withHighContrast(made) : made;
}

QColor sidebarBackground() {
  return current == Appearance::dark ? QColor(0x2C, 0x2D, 0x31) : QColor(0xEE, 0xF0, 0xF3);
}

QFont font(double factor, QFont::Weight weight) {
  QFont font = QApplication::font();
  if (font.pointSizeF() > 0) {
    font.setPointSizeF(font.pointSizeF() * factor);
  } else {
    font.setPixelSize(qRound(font.pixelSize() * factor));
  }
  font.setWeight(weight);
  return font;
}

QFont monospacedFont(QFont::Weight weight) {
  static const QString family = [] {
    const QString system = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    return QFontInfo(QFont(system)).fixedPitch()
               ? system
               : installed({"Noto Sans Mono", "DejaVu Sans Mono", "Liberation Mono"}, system);
  }();
  QFont made = font(figureFactor, weight);
  made.setFamily(family);
  made.setStyleHint(QFont::Monospace);
  return made;
}

QFont font(const QFont& base, const TextStyle& style) {
  QFont styled = base;
  if (style.isMonospaced) {
    const QFont figures = monospacedFont();
    styled.setFamily(figures.family());
    styled.setStyleHint(QFont::Monospace);
    styled.setPointSizeF(std::min(styled.pointSizeF(), figures.pointSizeF()));
  }
  if (style.weight != FontWeight::regular) {
    styled.setWeight(qtWeight(style.weight));
  }
  return styled;
}

int widthOfLetters(int count) {
  constexpr int leastLetter = 8;  // below which a small font makes nothing narrower
  return count * std::max(leastLetter, QFontMetrics(QApplication::font()).averageCharWidth());
}

QIcon applicationIcon() {
  QIcon icon;
  for (const int size : {16, 32, 48, 128, 256}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 64.0, size / 64.0);
    QLinearGradient sky(0, 0, 0, 64);
    sky.setColorAt(0, QColor(0x1E, 0x3A, 0x5F));
    sky.setColorAt(1, QColor(0x0F, 0x1F, 0x35));
    painter.setPen(Qt::NoPen);
    painter.setBrush(sky);
    painter.drawRoundedRect(QRectF(2, 2, 60, 60), 14, 14);
    QPainterPath line;
    line.moveTo(11, 44);
    line.lineTo(23, 33);
    line.lineTo(33, 39);
    line.lineTo(52, 19);
    QPainterPath area = line;
    area.lineTo(52, 52);
    area.lineTo(11, 52);
    area.closeSubpath();
    painter.setBrush(QColor(0x5A, 0xA5, 0xFF, 90));
    painter.drawPath(area);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0x8F, 0xC7, 0xFF), 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(line);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x5C, 0xF0, 0x8C));
    painter.drawEllipse(QPointF(52, 19), 4.5, 4.5);
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace corvane::desktop::theme
