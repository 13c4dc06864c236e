#include "desktop/look/theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <algorithm>

namespace corvane::desktop::theme {
namespace {

Appearance current = Appearance::light;

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

QString styleSheet() {
  return QStringLiteral(
             "QTableView, QListView#sourceList { border: none; outline: none; }"
             "QHeaderView { background: %2; border: none; }"
             "QHeaderView::section { background: %2; border: none; padding: 5px 7px;"
             "  border-bottom: 1px solid %1; color: %3; }"
             "QTableCornerButton::section { background: %2; border: none; }"
             "QSplitter::handle { background: %1; }"
             "QTabWidget::pane { border: none; }"
             "QTabBar::tab { padding: 7px 16px; border: none; border-bottom: 2px solid transparent;"
             "  color: %3; background: transparent; }"
             "QTabBar::tab:selected { color: %4; border-bottom: 2px solid %5; }"
             "QTabBar::tab:hover { color: %4; }"
             "QTabBar::tab:focus { color: %5; }"
             "QToolTip { border: 1px solid %1; padding: 3px; }")
      .arg(colour(Colour::Name::separator).name(), colour(Colour::Name::controlBackground).name(),
           colour(Colour::Name::secondaryLabel).name(), colour(Colour::Name::label).name(),
           colour(Colour::Name::systemBlue).name());
}

/// Fusion with edges that a dark window does not swallow, and with air around the text of a button.
class CorvaneStyle : public QProxyStyle {
 public:
  CorvaneStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override {
    QSize made = QProxyStyle::sizeFromContents(type, option, size, widget);
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (type == CT_PushButton && button != nullptr && !button->text.isEmpty()) {
      // A button has a least width of its own, in which a short text has air enough.
      made.setWidth(std::max(made.width(), size.width() + 2 * spacing::medium));
    }
    return made;
  }

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    switch (element) {
      case PE_IndicatorCheckBox:
      case PE_IndicatorRadioButton:
        drawIndicator(*option, *painter, element == PE_IndicatorRadioButton);
        return;
      case PE_FrameLineEdit:
      case PE_Frame:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        drawEdge(*option, *painter);
        return;
      default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
  }

  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox || control == CC_SpinBox) {
      drawEdge(*option, *painter);
    }
  }

 private:
  /// The edge of a field in a dark window; that of the field with the keyboard is the style's own.
  static void drawEdge(const QStyleOption& option, QPainter& painter) {
    const bool hasKeyboard = option.state.testFlag(State_HasFocus);
    if (current != Appearance::dark || (hasKeyboard && option.state.testFlag(State_Enabled))) {
      return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(option.state.testFlag(State_Enabled) ? QColor(0x58, 0x59, 0x5F)
                                                        : QColor(0x40, 0x41, 0x46));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    painter.restore();
  }

  static void drawIndicator(const QStyleOption& option, QPainter& painter, bool isRound) {
    const bool isEnabled = option.state.testFlag(State_Enabled);
    const bool isFull = option.state.testFlag(State_On) || option.state.testFlag(State_NoChange);
    const double side = std::min(option.rect.width(), option.rect.height()) - 1;
    QRectF box(0, 0, side, side);
    box.moveCenter(QRectF(option.rect).center());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor fill = option.palette.color(isFull ? QPalette::Highlight : QPalette::Base);
    QColor edge = theme::colour(isEnabled ? Colour::Name::secondaryLabel : Colour::Name::separator);
    if (isFull) {
      edge = fill;
    }
    if (option.state.testFlag(State_HasFocus)) {
      edge = theme::colour(Colour::Name::systemBlue);
    }
    painter.setPen(QPen(edge, 1));
    painter.setBrush(fill);
    isRound ? painter.drawEllipse(box) : painter.drawRoundedRect(box, 3, 3);
    const QColor ink = option.palette.color(QPalette::HighlightedText);
    if (isFull && isRound) {
      painter.setPen(Qt::NoPen);
      painter.setBrush(ink);
      painter.drawEllipse(box.center(), side * 0.2, side * 0.2);
    } else if (isFull) {
      painter.setPen(QPen(ink, side * 0.14, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
      const auto at = [&](double x, double y) { return box.topLeft() + QPointF(x, y) * side; };
      painter.drawPolyline(option.state.testFlag(State_On)
                               ? QPolygonF({at(0.24, 0.52), at(0.43, 0.72), at(0.78, 0.30)})
                               : QPolygonF({at(0.26, 0.5), at(0.74, 0.5)}));
    }
    painter.restore();
  }
};

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
  return font;
}

}  // namespace

void apply(QApplication& application, Appearance appearance) {
  current = appearance;
  static const QFont body = bodyFont();
  QApplication::setStyle(new CorvaneStyle);
  QApplication::setFont(body);
  QApplication::setPalette(palette());
  application.setStyleSheet(styleSheet());
  QApplication::setWindowIcon(applicationIcon());
}

Appearance appearance() {
  return current;
}

QColor colour(const Colour& colour) {
  const RGBA rgba = colour.resolved(current);
  return QColor::fromRgbF(static_cast<float>(rgba.red), static_cast<float>(rgba.green),
                          static_cast<float>(rgba.blue), static_cast<float>(rgba.alpha));
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
