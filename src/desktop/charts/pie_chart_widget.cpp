#include "desktop/charts/pie_chart_widget.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"

namespace corvane::desktop {
namespace {

constexpr double holeShare = 0.58;         // of the ring's radius
constexpr double leastLabelledAngle = 30;  // degrees; a narrower slice has no room for a text
constexpr double degreesAtTop = 90;

}  // namespace

PieChartWidget::PieChartWidget(const QString& accessibleName, QWidget* parent) : QWidget(parent) {
  setAccessibleName(accessibleName);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
}

void PieChartWidget::setPie(const PieChartView& pie) {
  pie_ = pie;
  setAccessibleDescription(qtText(pie.accessibleText()));
  update();
}

void PieChartWidget::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF area =
      QRectF(rect()).adjusted(spacing::medium, spacing::narrow, -spacing::medium, -spacing::medium);
  if (pie_.slices.empty()) {
    painter.setPen(theme::colour(Colour::Name::secondaryLabel));
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, qtText(pie_.noDataText));
    return;
  }
  const double rowHeight = fontMetrics().height() + 2.0;
  const double listHeight = rowHeight * static_cast<double>(pie_.slices.size());
  const double besideSide = std::min(area.height(), area.width() * 0.55);
  const double belowSide =
      std::min(area.width(),
               area.height() - spacing::narrow - std::min(listHeight + 1, area.height() * 0.55));
  if (belowSide > besideSide) {
    const QRectF ring(area.center().x() - belowSide / 2, area.top(), belowSide, belowSide);
    drawRing(painter, ring);
    drawList(painter, QRectF(area.left(), ring.bottom() + spacing::narrow, area.width(),
                             area.bottom() - ring.bottom() - spacing::narrow));
  } else {
    const QRectF ring(area.left(), area.center().y() - besideSide / 2, besideSide, besideSide);
    drawRing(painter, ring);
    drawList(painter, QRectF(ring.right() + spacing::wide, area.top(),
                             area.right() - ring.right() - spacing::wide, area.height()));
  }
}

void PieChartWidget::drawRing(QPainter& painter, const QRectF& area) const {
  double whole = 0;
  for (const PieSlice& slice : pie_.slices) {
    whole += std::max(0.0, slice.value);
  }
  const QPointF centre = area.center();
  const double outer = area.width() / 2 - 1;
  const double inner = outer * holeShare;
  const QRectF outerBox(centre.x() - outer, centre.y() - outer, 2 * outer, 2 * outer);
  const QRectF innerBox(centre.x() - inner, centre.y() - inner, 2 * inner, 2 * inner);
  if (whole <= 0) {
    painter.setPen(QPen(theme::colour(Colour::Name::separator), 1));
    painter.drawEllipse(outerBox);
    painter.drawEllipse(innerBox);
    return;
  }
  double angle = degreesAtTop;
  painter.setFont(theme::font(0.85, QFont::DemiBold));
  for (const PieSlice& slice : pie_.slices) {
    const double span = 360 * std::max(0.0, slice.value) / whole;
    QPainterPath path;
    path.arcMoveTo(outerBox, angle);
    path.arcTo(outerBox, angle, -span);
    path.arcTo(innerBox, angle - span, span);
    path.closeSubpath();
    const QColor colour = theme::colour(slice.colour);
    painter.setPen(QPen(palette().color(QPalette::Window), 1.5));
    painter.setBrush(colour);
    painter.drawPath(path);
    const double textWidth =
        QFontMetricsF(painter.font()).horizontalAdvance(qtText(slice.percentText));
    if (span >= leastLabelledAngle && textWidth + spacing::tight < outer - inner) {
      const double middle = (angle - span / 2) * std::numbers::pi / 180;
      const double radius = (outer + inner) / 2;
      const QPointF point(centre.x() + radius * std::cos(middle),
                          centre.y() - radius * std::sin(middle));
      painter.setPen(colour.lightnessF() > 0.5F ? Qt::black : Qt::white);
      painter.drawText(QRectF(point.x() - 40, point.y() - 10, 80, 20), Qt::AlignCenter,
                       qtText(slice.percentText));
    }
    angle -= span;
  }
}

void PieChartWidget::drawList(QPainter& painter, const QRectF& area) const {
  painter.setFont(font());
  const QFontMetricsF metrics(font());
  const double rowHeight = metrics.height() + 2;
  const auto fitting = static_cast<std::size_t>(std::max(0.0, area.height() / rowHeight));
  const std::size_t count = pie_.slices.size();
  // The largest first; the smallest are told of together where there is no room for them.
  const std::size_t shown = count <= fitting ? count : (fitting > 0 ? fitting - 1 : 0);
  double y =
      area.top() +
      std::max(0.0,
               (area.height() - rowHeight * static_cast<double>(std::min(count, fitting))) / 2);
  const double swatch = metrics.height() * 0.6;
  for (std::size_t i = 0; i < shown; ++i) {
    const PieSlice& slice = pie_.slices[count - 1 - i];
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::colour(slice.colour));
    painter.drawRoundedRect(QRectF(area.left(), y + (rowHeight - swatch) / 2, swatch, swatch), 2,
                            2);
    painter.setPen(theme::colour(Colour::Name::label));
    const QString percent = qtText(slice.percentText);
    const double percentWidth = metrics.horizontalAdvance(percent);
    const QRectF row(area.left() + swatch + spacing::narrow, y,
                     area.width() - swatch - spacing::narrow, rowHeight);
    painter.drawText(row, Qt::AlignRight | Qt::AlignVCenter, percent);
    painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter,
                     metrics.elidedText(qtText(slice.label), Qt::ElideRight,
                                        row.width() - percentWidth - spacing::narrow));
    y += rowHeight;
  }
  if (shown < count && fitting > 0) {
    painter.setPen(theme::colour(Colour::Name::secondaryLabel));
    painter.drawText(QRectF(area.left() + swatch + spacing::narrow, y, area.width(), rowHeight),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     QStringLiteral("%1 more").arg(count - shown));
  }
}

}  // namespace corvane::desktop
