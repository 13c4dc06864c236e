#include "desktop/look/attributed_text_view.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr int cellMargin = 6;

QString cssOf(const TextStyle& style) {
  QString css;
  if (style.colour) {
    css += QStringLiteral("color:%1;").arg(theme::colour(*style.colour).name());
  }
  const QFont font = theme::font(QApplication::font(), style);
  if (style.weight != FontWeight::regular) {
    css += QStringLiteral("font-weight:%1;").arg(static_cast<int>(font.weight()));
  }
  if (style.isMonospaced) {
    css += QStringLiteral("font-family:'%1';").arg(font.family());
  }
  return css;
}

double widthOfRuns(const AttributedText& text, const QFont& font) {
  double width = 0;
  for (const TextRun& run : text.runs()) {
    width += QFontMetricsF(theme::font(font, run.style)).horizontalAdvance(qtText(run.text));
  }
  return width;
}

/// The text of a cell as it fits into `width`.
AttributedText fittingText(const QModelIndex& index, const QFont& font, double width) {
  auto whole = index.data(AttributedTextDelegate::attributedTextRole).value<AttributedText>();
  if (widthOfRuns(whole, font) <= width) {
    return whole;
  }
  auto brief = index.data(AttributedTextDelegate::briefTextRole).value<AttributedText>();
  return brief.isEmpty() ? whole : brief;
}

/// The sentences of labels are the program's own, whatever script the names and figures in them are
/// of.
QString leftToRight(const QString& html) {
  return html.isEmpty() ? html
                        : QStringLiteral("<div dir=\"ltr\">") + html + QStringLiteral("</div>");
}

}  // namespace

QString richText(const AttributedText& text) {
  QString html;
  for (const TextRun& run : text.runs()) {
    html += QStringLiteral("<span style=\"%1\">%2</span>")
                .arg(cssOf(run.style), qtText(run.text).toHtmlEscaped().replace(
                                           QLatin1Char('\n'), QStringLiteral("<br>")));
  }
  return html;
}

AttributedLabel::AttributedLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::RichText);
  setTextInteractionFlags(Qt::TextSelectableByMouse);
  setFocusPolicy(Qt::NoFocus);
}

void AttributedLabel::setAttributedText(const AttributedText& text) {
  text_ = text;
  setText(leftToRight(richText(text)));
  setAccessibleName(qtText(text.plainText()));
}

void AttributedLabel::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !text_.isEmpty()) {
    setText(leftToRight(richText(text_)));
  }
}

void drawLine(QPainter& painter, const QRectF& area, const AttributedText& text, const QFont& font,
              const QColor& colour, Qt::Alignment alignment, bool usesOwnColours) {
  QString plain;
  QList<QTextLayout::FormatRange> formats;
  for (const TextRun& run : text.runs()) {
    QTextLayout::FormatRange range;
    range.start = static_cast<int>(plain.size());
    plain += qtText(run.text);
    range.length = static_cast<int>(plain.size()) - range.start;
    range.format.setFont(theme::font(font, run.style));
    range.format.setForeground(usesOwnColours && run.style.colour ? theme::colour(*run.style.colour)
                                                                  : colour);
    formats.append(range);
  }
  plain.replace(QLatin1Char('\n'), QLatin1Char(' '));
  QTextLayout layout(plain, font, painter.device());
  layout.setFormats(formats);
  QTextOption option;
  option.setWrapMode(QTextOption::NoWrap);
  layout.setTextOption(option);
  const auto measure = [&] {
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) {
      line.setNumColumns(static_cast<int>(plain.size()));
    }
    layout.endLayout();
    return line.isValid() ? QSizeF(line.naturalTextWidth(), line.height()) : QSizeF();
  };
  QSizeF size = measure();
  // A text of several styles loses characters at its end until it fits with an ellipsis.
  if (size.width() > area.width() + 0.5) {
    const QFontMetricsF metrics(font);
    const qsizetype fitting = metrics.elidedText(plain, Qt::ElideRight, area.width()).size();
    for (qsizetype kept = std::min(fitting + 2, plain.size()); kept > 0; --kept) {
      layout.setText(plain.left(kept - 1) + QChar(0x2026));
      plain = layout.text();
      size = measure();
      if (size.width() <= area.width() + 0.5) {
        break;
      }
    }
  }
  const double x = (alignment & Qt::AlignRight) != 0     ? area.right() - size.width()
                   : (alignment & Qt::AlignHCenter) != 0 ? area.center().x() - size.width() / 2
                                                         : area.left();
  painter.save();
  painter.setPen(colour);
  layout.draw(&painter, QPointF(std::max(x, area.left()), area.center().y() - size.height() / 2));
  painter.restore();
}

void AttributedTextDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
  QStyleOptionViewItem cell = option;
  initStyleOption(&cell, index);
  const QVariant value = index.data(attributedTextRole);
  if (!value.canConvert<AttributedText>()) {
    QStyledItemDelegate::paint(painter, option, index);
    return;
  }
  cell.text.clear();
  const QStyle* style = cell.widget != nullptr ? cell.widget->style() : QApplication::style();
  style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
  const bool isSelected = cell.state.testFlag(QStyle::State_Selected);
  const QColor colour = cell.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
  const QRectF area = QRectF(cell.rect).adjusted(cellMargin, 0, -cellMargin, 0);
  drawLine(*painter, area, fittingText(index, cell.font, area.width()), cell.font, colour,
           cell.displayAlignment, !isSelected);
  if (index.data(explainedRole).toBool()) {
    const QRectF line = textArea(cell.rect, cell.font, index);
    painter->save();
    painter->setPen(
        QPen(isSelected ? colour : theme::colour(Colour::Name::secondaryLabel), 1, Qt::DotLine));
    painter->drawLine(QPointF(line.left(), line.bottom()), QPointF(line.right(), line.bottom()));
    painter->restore();
  }
}

QRectF AttributedTextDelegate::textArea(const QRectF& cell, const QFont& font,
                                        const QModelIndex& index) const {
  const QRectF area = cell.adjusted(cellMargin, 0, -cellMargin, 0);
  const AttributedText text = fittingText(index, font, area.width());
  const double width = std::min(widthOfRuns(text, font), area.width());
  const double height = QFontMetricsF(font).height();
  const auto alignment = index.data(Qt::TextAlignmentRole).value<Qt::Alignment>();
  const double left = (alignment & Qt::AlignRight) != 0     ? area.right() - width
                      : (alignment & Qt::AlignHCenter) != 0 ? area.center().x() - width / 2
                                                            : area.left();
  return {left, area.center().y() - height / 2, width, height};
}

QSize AttributedTextDelegate::sizeHint(const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const {
  const QVariant value = index.data(attributedTextRole);
  if (!value.canConvert<AttributedText>()) {
    return QStyledItemDelegate::sizeHint(option, index);
  }
  const double width = widthOfRuns(value.value<AttributedText>(), option.font);
  return {qRound(width) + 2 * cellMargin + 2, QFontMetrics(option.font).height() + 10};
}

}  // namespace corvane::desktop
