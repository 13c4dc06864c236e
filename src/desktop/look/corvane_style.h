// How controls are drawn.
#pragma once

#include <QProxyStyle>

class QStyleOptionSlider;

namespace corvane::desktop {

/// Fusion with edges that a dark window does not swallow, air around the text of a button, scroll
/// bars that are a plain thumb, tabs that are underlined, tables and their headings without frames,
/// one mark beside the chosen item of a menu, and icons in the ink of the text. Colours are those
/// of theme.h at the time of drawing.
///
/// A style sheet could say much of this, but keeps some eight kilobytes for each widget.
class CorvaneStyle : public QProxyStyle {
 public:
  /// The property of a button that stands among fields: its text begins where theirs do.
  static constexpr const char* fieldProperty = "standsAmongFields";

  CorvaneStyle();

  using QProxyStyle::polish;
  using QProxyStyle::unpolish;
  void polish(QWidget* widget) override;
  void unpolish(QWidget* widget) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
  QRect subElementRect(SubElement element, const QStyleOption* option,
                       const QWidget* widget) const override;
  QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                       const QWidget* widget) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override;
  QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                     const QWidget* widget) const override;
  QPixmap standardPixmap(StandardPixmap which, const QStyleOption* option,
                         const QWidget* widget) const override;
};

}  // namespace corvane::desktop
