#include "presentation/charts/quote_chart_view.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "presentation/text/formatting.h"

namespace corvane {
namespace {

constexpr double candleAlpha = 0.4;

bool seeksCurrentPeriod(const QuoteQuery& query) {
  return std::holds_alternative<QuoteQuery::CurrentPeriodQuotes>(query.seeking);
}

DateRange shownRange(const QuoteQuery& query) {
  return seeksCurrentPeriod(query) ? query.equity->recentTradingPeriod.value_or(query.dateRange)
                                   : query.dateRange;
}

std::optional<double> doubleOf(const std::optional<Decimal>& price) {
  return price ? std::optional(price->doubleValue()) : std::nullopt;
}

/// In minutes; may have a fraction.
double minutes(Date from, Date to) {
  return to.timeIntervalSince(from) / 60;
}

/// When each of `quotes` was traded.
std::function<std::string(std::size_t)> keyTexts(const std::vector<Quote>& quotes,
                                                 const EquityPointer& equity) {
  std::vector<DateRange> ranges;
  ranges.reserve(quotes.size());
  for (const Quote& quote : quotes) {
    ranges.emplace_back(std::min(quote.fromDate, quote.toDate), quote.toDate);
  }
  return [ranges = std::move(ranges), equity](std::size_t index) {
    return index < ranges.size() ? Formatting::dateRangeText(ranges[index], *equity)
                                 : std::string();
  };
}

}  // namespace

void QuoteChartView::clear() {
  lineChartDataSet.entries.clear();
  candleChartDataSet.entries.clear();
  FiscalChartView::clear();
}

void QuoteChartView::setQuotes(const std::vector<Quote>& quotes, const QuoteQuery& query) {
  if (!mode) {
    return;
  }
  const DateRange range = shownRange(query);
  clear();
  if (quotes.empty()) {
    return;
  }
  resetConversions();
  xAxisMinimum = 0;
  xAxisMaximum = static_cast<double>(quotes.size());
  if (seeksCurrentPeriod(query)) {
    placeInSession(quotes, range);
  }
  addEntries(quotes);
  if (mode == Mode::presentation) {
    std::vector<std::pair<double, Date>> points;
    for (std::size_t i = 0; i < quotes.size(); ++i) {
      if (const double x = convertXFromDataIndexToGraph(i); isOnAxis(x)) {
        points.emplace_back(x, quotes[i].toDate);
      }
    }
    addDateLabels(points, range, query.equity->calendar);
    xAxisMinimum = *xAxisMinimum - 0.5;
    xAxisMaximum = *xAxisMaximum - 0.5;
  }
  prescribeValues(quotes, query);

  const bool isThumbnail = mode == Mode::thumbnail;
  drawsAxes = !isThumbnail;
  lineChartDataSet.lineWidth = isThumbnail ? 1 : 2;
  lineChartDataSet.isHighlightEnabled = !isThumbnail;
  candleChartDataSet.isHighlightEnabled = false;
  // Where no values are prescribed, the movement is that of the line.
  interactiveDataSet = lineChartDataSet;
  const Colour movement = movementColour();
  lineChartDataSet.colour = movement;
  interactiveDataSet->colour = movement;
  candleChartDataSet.colour = movement.withAlpha(candleAlpha);
  setNoninteractiveDataSets({candleChartDataSet});
  if (isThumbnail) {
    interactiveDataSet.reset();
    setNoninteractiveDataSets({candleChartDataSet, lineChartDataSet});
  }
  keyText = keyTexts(quotes, query.equity);
  changeHandler();
}

void QuoteChartView::placeInSession(const std::vector<Quote>& quotes, const DateRange& session) {
  xAxisMaximum = minutes(session.lower(), session.upper());
  std::vector<Date> ends;
  for (const Quote& quote : quotes) {
    ends.push_back(quote.toDate);
  }
  const Date start = session.lower();
  convertXFromDataIndexToGraph = [ends, start](std::size_t index) {
    return minutes(start, ends.at(index));
  };
  convertXFromGraphToDataIndex = [ends, start](double x) -> std::optional<std::size_t> {
    const auto found = std::ranges::find(ends, x, [&](Date end) { return minutes(start, end); });
    return found == ends.end() ? std::nullopt
                               : std::optional(static_cast<std::size_t>(found - ends.begin()));
  };
}

/// Bars of the hours before and after a session have no place on its axis: a cursor that led to
/// them would be lost.
bool QuoteChartView::isOnAxis(double x) const {
  return *xAxisMinimum <= x && x <= *xAxisMaximum;
}

void QuoteChartView::addEntries(const std::vector<Quote>& quotes) {
  for (std::size_t i = 0; i < quotes.size(); ++i) {
    const double x = convertXFromDataIndexToGraph(i);
    if (!isOnAxis(x)) {
      continue;
    }
    const auto low = doubleOf(quotes[i].low);
    const auto high = doubleOf(quotes[i].high);
    if (low && high) {
      candleChartDataSet.entries.push_back({x, *high, *low});
    }
    if (const auto close = doubleOf(quotes[i].close)) {
      lineChartDataSet.entries.push_back({x, *close});
    }
  }
}

void QuoteChartView::prescribeValues(const std::vector<Quote>& quotes, const QuoteQuery& query) {
  if (seeksCurrentPeriod(query)) {
    prescribedOpeningValue = doubleOf(query.equity->previousClosePrice);
    prescribedClosingValue = doubleOf(query.equity->recentPrice);
  } else {
    prescribedOpeningValue = doubleOf(quotes.front().open);
    prescribedClosingValue = doubleOf(quotes.back().close);
  }
}

}  // namespace corvane
