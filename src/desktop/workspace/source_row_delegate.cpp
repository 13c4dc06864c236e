#include "desktop/workspace/source_row_delegate.h"

#include <QPainter>
#include <algorithm>
#include <optional>

#include "desktop/charts/quote_thumbnail.h"
#include "desktop/look/attributed_text_view.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr double rowMargin = 8;
constexpr double rowRadius = 6;
constexpr double thumbnailWidth = 60;
constexpr double upperLineShare = 0.56;

struct RowColours {
  QColor strong;
  QColor weak;
  bool areOwn;  ///< whether texts may have colours of their own
};

RowColours rowColours(bool isSelected) {
  if (isSelected) {
    const QColor onHighlight = QPalette().color(QPalette::HighlightedText);
    return {onHighlight, onHighlight, false};
  }
  return {theme::colour(Colour::Name::label), theme::colour(Colour::Name::secondaryLabel), true};
}

QFont nameFont() {
  return theme::font(1, QFont::DemiBold);
}

QFont detailFont() {
  return theme::font(0.9);
}

double widthOf(const QFont& font, const AttributedText& text) {
  return QFontMetricsF(font).horizontalAdvance(qtText(text.plainText()));
}

}  // namespace

QRectF drawRowGround(QPainter& painter, const QStyleOptionViewItem& option) {
  const QRectF box = QRectF(option.rect).adjusted(rowMargin, 1, -rowMargin, -1);
  painter.setRenderHint(QPainter::Antialiasing);
  if (option.state.testFlag(QStyle::State_Selected)) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(option.palette.color(QPalette::Highlight));
    painter.drawRoundedRect(box, rowRadius, rowRadius);
  } else if (option.state.testFlag(QStyle::State_HasFocus)) {
    painter.setPen(option.palette.color(QPalette::Highlight));
    painter.drawRoundedRect(box, rowRadius, rowRadius);
  }
  return box;
}

QString cutByWords(const QString& text, const QFontMetricsF& metrics, double width) {
  if (metrics.horizontalAdvance(text) <= width) {
    return text;
  }
  for (qsizetype end = text.lastIndexOf(QLatin1Char(' ')); end > 0;
       end = text.lastIndexOf(QLatin1Char(' '), end - 1)) {
    const QString cut = text.left(end).trimmed() + QChar(0x2026);
    if (metrics.horizontalAdvance(cut) <= width) {
      return cut;
    }
  }
  return metrics.elidedText(text, Qt::ElideRight, width);
}

SourceRowDelegate::SourceRowDelegate(const MasterSourceViewController& controller,
                                     bool showsPortfolios, QObject* parent)
    : QStyledItemDelegate(parent), controller_(controller), showsPortfolios_(showsPortfolios) {}

QSize SourceRowDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& /*index*/) const {
  return {200, 2 * QFontMetrics(option.font).height() + (showsPortfolios_ ? 16 : 20)};
}

void SourceRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
  if (index.data().isNull()) {
    return;
  }
  painter->save();
  const bool isSelected = option.state.testFlag(QStyle::State_Selected);
  const QRectF inner = drawRowGround(*painter, option).adjusted(rowMargin, 5, -rowMargin, -5);
  const auto place = static_cast<std::size_t>(index.row());
  if (showsPortfolios_) {
    paintPortfolio(*painter, inner, controller_.portfolioRow(place), isSelected);
  } else {
    paintEquity(*painter, inner, controller_.watchlistRow(place), isSelected);
  }
  painter->restore();
}

void SourceRowDelegate::paintPortfolio(QPainter& painter, const QRectF& area,
                                       const PortfolioSourceRow& row, bool isSelected) const {
  const auto [strong, weak, areOwn] = rowColours(isSelected);
  const QRectF above(area.left(), area.top(), area.width(), area.height() / 2);
  const QRectF below = above.translated(0, area.height() / 2);
  const AttributedText value(row.value);
  const double nameWidth = above.width() - widthOf(nameFont(), value) - spacing::narrow;
  const QString name = cutByWords(qtText(row.name), QFontMetricsF(nameFont()), nameWidth);
  drawLine(painter, above, AttributedText(utf8Text(name)), nameFont(), strong, Qt::AlignLeft,
           areOwn);
  drawLine(painter, above, value, nameFont(), strong, Qt::AlignRight, areOwn);
  drawLine(painter, below, row.gain, detailFont(), weak, Qt::AlignRight, areOwn);
}

void SourceRowDelegate::paintEquity(QPainter& painter, const QRectF& area,
                                    const EquitySourceRow& row, bool isSelected) const {
  const auto [strong, weak, areOwn] = rowColours(isSelected);
  // The price column has room for any usual price, so that charts stand below each other.
  const double ownPriceWidth = widthOf(nameFont(), AttributedText(row.price));
  const double priceWidth = std::max(
      ownPriceWidth, QFontMetricsF(nameFont()).horizontalAdvance(QStringLiteral("$00,000.00")));
  const QRectF above(area.left(), area.top(), area.width(), area.height() * upperLineShare);
  const QRectF below(area.left(), above.bottom(), area.width(), area.bottom() - above.bottom());
  const QRectF price(above.right() - priceWidth, above.top(), priceWidth, above.height());
  const QRectF chart(price.left() - spacing::narrow - thumbnailWidth, above.top(), thumbnailWidth,
                     above.height() - 2);
  // In a narrow list the chart gives way to a symbol that would be cut.
  const double besideChart = chart.left() - spacing::tight - above.left();
  const bool showsChart =
      row.thumbnail != nullptr && widthOf(nameFont(), AttributedText(row.symbol)) <= besideChart;
  const QRectF symbol(above.left(), above.top(),
                      showsChart ? besideChart : above.width() - ownPriceWidth - spacing::narrow,
                      above.height());
  drawLine(painter, symbol, AttributedText(row.symbol), nameFont(), strong, Qt::AlignLeft, areOwn);
  drawLine(painter, price, AttributedText(row.price), nameFont(), strong, Qt::AlignRight, areOwn);
  if (showsChart) {
    paintThumbnail(painter, chart, *row.thumbnail,
                   isSelected ? std::optional(strong) : std::nullopt);
  }
  drawLine(painter, below, row.change, detailFont(), weak, Qt::AlignRight, areOwn);
  const double nameWidth = below.width() - widthOf(detailFont(), row.change) - spacing::narrow;
  const QString name = cutByWords(qtText(row.name), QFontMetricsF(detailFont()), nameWidth);
  drawLine(painter, below, AttributedText(utf8Text(name)), detailFont(), weak, Qt::AlignLeft,
           areOwn);
}

}  // namespace corvane::desktop
