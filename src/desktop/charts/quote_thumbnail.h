// The prices of a session in the row of a list.
#pragma once

#include <QColor>
#include <QRectF>
#include <optional>

#include "presentation/charts/quote_chart_view.h"

class QPainter;

namespace corvane::desktop {

/// Paints `chart` in `area`: the closing prices over their candles, the opening line, a border.
/// `ink` replaces all colours, as on the ground of a selection. An empty chart paints nothing.
void paintThumbnail(QPainter& painter, const QRectF& area, const QuoteChartView& chart,
                    std::optional<QColor> ink = std::nullopt);

}  // namespace corvane::desktop
