#include "desktop/reports/coverage_bar.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <array>

#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "presentation/coverage/coverage_tables.h"
#include "reports/series/report_days.h"

namespace corvane::desktop {
namespace {

using CoverState = PriceCoverage::State;

constexpr std::array statesInOrder = {CoverState::covered, CoverState::carriedForward,
                                      CoverState::withoutPrice, CoverState::running,
                                      CoverState::missing};
constexpr int barMargin = 7;
constexpr int barHeight = 10;
constexpr int leastBarWidth = 180;
constexpr int swatchWidth = 18;
/// A day of many years is seen all the same.
constexpr double leastStretchWidth = 2;

/// The heights tell the states apart for whoever does not see the colours: what is missing is a
/// frame with nothing in it.
void paintStretch(QPainter& painter, const QRectF& area, CoverState state) {
  const QColor ink = theme::colour(colourOf(state));
  QRectF part = area;
  switch (state) {
    case CoverState::covered:
      break;
    case CoverState::carriedForward:
      part.setTop(area.top() + area.height() / 2);
      break;
    case CoverState::withoutPrice:
      part.setTop(area.bottom() - area.height() / 5);
      break;
    case CoverState::running:
      painter.fillRect(part, QBrush(ink, Qt::Dense4Pattern));
      return;
    case CoverState::missing:
      painter.setPen(QPen(ink, 1));
      painter.setBrush(Qt::NoBrush);
      painter.drawRect(part.adjusted(0.5, 0.5, -0.5, -0.5));
      return;
  }
  painter.fillRect(part, ink);
}

QRectF barArea(const QRectF& cell) {
  return {cell.left() + barMargin, cell.center().y() - barHeight / 2.0,
          cell.width() - 2 * barMargin, barHeight};
}

}  // namespace

CoverageBarDelegate::CoverageBarDelegate(const CoverageViewController& controller, QObject* parent)
    : AttributedTextDelegate(parent), controller_(controller) {}

void CoverageBarDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
  const auto& lines = controller_.table.records();
  const auto row = static_cast<std::size_t>(index.row());
  if (row >= lines.size()) {
    return;
  }
  QStyleOptionViewItem cell = option;
  initStyleOption(&cell, index);
  cell.text.clear();
  const QStyle* style = cell.widget != nullptr ? cell.widget->style() : QApplication::style();
  style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);

  const QRectF area = barArea(cell.rect);
  const auto first = dayNumber(controller_.days().lower());
  const double dayWidth =
      area.width() / static_cast<double>(dayNumber(controller_.days().upper()) - first + 1);
  const auto placeOf = [&](const YearMonthDay& day) {
    return area.left() + dayWidth * static_cast<double>(dayNumber(day) - first);
  };
  painter->save();
  // What stands out is drawn over what does not.
  for (const CoverState state : statesInOrder) {
    for (const auto& stretch : lines[row].coverage.stretches) {
      if (stretch.state == state) {
        const double left = placeOf(stretch.days.first);
        const double right = placeOf(stretch.days.last) + dayWidth;
        paintStretch(
            *painter,
            QRectF(left, area.top(), std::max(right - left, leastStretchWidth), area.height()),
            state);
      }
    }
  }
  painter->restore();
}

QSize CoverageBarDelegate::sizeHint(const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const {
  return {leastBarWidth, AttributedTextDelegate::sizeHint(option, index).height()};
}

CoverageLegend::CoverageLegend(QWidget* parent) : QWidget(parent) {
  setFont(theme::font(0.85));
  QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

QSize CoverageLegend::sizeHint() const {
  return {0, lineHeight()};
}

int CoverageLegend::lineHeight() const {
  return fontMetrics().height() + spacing::tight;
}

int CoverageLegend::heightForWidth(int width) const {
  return flow(width, nullptr) * lineHeight();
}

void CoverageLegend::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  flow(width(), &painter);
}

int CoverageLegend::flow(int width, QPainter* painter) const {
  int line = 0;
  int left = 0;
  for (const CoverState state : statesInOrder) {
    const QString title = qtText(titleOf(state));
    const int text = swatchWidth + spacing::tight;
    const int whole = text + fontMetrics().horizontalAdvance(title);
    if (left > 0 && left + whole > width) {
      ++line;
      left = 0;
    }
    if (painter != nullptr) {
      const int top = line * lineHeight();
      paintStretch(*painter,
                   QRectF(left, top + (lineHeight() - barHeight) / 2.0, swatchWidth, barHeight),
                   state);
      painter->setPen(palette().color(QPalette::PlaceholderText));
      painter->drawText(QRectF(left + text, top, whole, lineHeight()),
                        Qt::AlignLeft | Qt::AlignVCenter, title);
    }
    left += whole + spacing::wide;
  }
  return line + 1;
}

}  // namespace corvane::desktop
