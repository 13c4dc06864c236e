// The chart of an equity's prices, large or as a thumbnail.
#pragma once

#include <optional>
#include <vector>

#include "core/market/quote.h"
#include "core/market/quote_query.h"
#include "presentation/charts/fiscal_chart_view.h"

namespace corvane {

/// Quotes as a line through the closing prices, with a bar from the lowest to the highest price
/// behind each. Main queue only.
class QuoteChartView : public FiscalChartView {
 public:
  enum class Mode {
    presentation,  ///< with axes, dates, a legend, and highlights on the line
    thumbnail      ///< the two series in a border
  };

  QuoteChartView() = default;
  explicit QuoteChartView(Mode shownMode) : mode(shownMode) {
    drawsAxes = shownMode == Mode::presentation;
  }

  /// Without a mode quotes are ignored.
  std::optional<Mode> mode;

  ChartDataSet candleChartDataSet{.label = "High/Low", .shape = ChartDataSet::Shape::candles};
  ChartDataSet lineChartDataSet{.label = "Close"};

  /// Shows `quotes`, the answer to `query`. Those of a running session stand at their minute of the
  /// session, and what was traded before it opened or after it closed is left out; others stand one
  /// beside the other, whatever the hour.
  void setQuotes(const std::vector<Quote>& quotes, const QuoteQuery& query);

  void clear() override;

 private:
  void placeInSession(const std::vector<Quote>& quotes, const DateRange& session);
  [[nodiscard]] bool isOnAxis(double x) const;
  void addEntries(const std::vector<Quote>& quotes);
  void prescribeValues(const std::vector<Quote>& quotes, const QuoteQuery& query);
};

}  // namespace corvane
