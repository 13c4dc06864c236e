#include "presentation/charts/fiscal_chart_view.h"

#include <array>

#include "platform/text/formats/date_formatter.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

/// Views that are wider than this have room for a bold opening line.
constexpr double narrowWidth = 300;
/// From this number of days on the label of a day goes without its month.
constexpr int manyDays = 11;

struct DateLabelling {
  const char* localizedTemplate;
  CalendarUnit changingUnit;
};

std::optional<DateLabelling> dateLabelling(const DateRange& displayed, const Calendar& calendar) {
  const DateComponents length = calendar.dateComponents(
      {CalendarUnit::year, CalendarUnit::month, CalendarUnit::day, CalendarUnit::hour},
      displayed.lower(), displayed.upper());
  if (length.year().value_or(0) >= 1) {
    return DateLabelling{"yyyy", CalendarUnit::year};
  }
  if (length.month().value_or(0) >= 1) {
    return DateLabelling{"LLL", CalendarUnit::month};
  }
  if (length.day().value_or(0) >= manyDays) {
    return DateLabelling{"dd", CalendarUnit::day};
  }
  if (length.day().value_or(0) >= 1) {
    return DateLabelling{"MMMdd", CalendarUnit::day};
  }
  if (length.hour().value_or(0) >= 1) {
    return DateLabelling{"jj", CalendarUnit::hour};
  }
  return std::nullopt;
}

}  // namespace

FiscalChartView::FiscalChartView() : rightAxis([this] { return openingValue(); }) {
  reset();
}

void FiscalChartView::clear() {
  prescribedOpeningValue.reset();
  prescribedClosingValue.reset();
  xAxisLimitLines.clear();
  BaseChartView::clear();
}

void FiscalChartView::reset() {
  DecimalNumberFormatter formatter;
  formatter.style = NumberFormatter::Style::currencyAccounting;
  if (currency) {
    formatter.currencyCode = std::string(currency->code);
  }
  formatter.zeroSymbol = "0";
  formatter.minimumIntegerDigits = 1;
  leftAxis.setCurrencyFormatter(std::move(formatter));
}

std::optional<double> FiscalChartView::openingValue() const {
  if (prescribedOpeningValue || !interactiveDataSet || interactiveDataSet->entries.empty()) {
    return prescribedOpeningValue;
  }
  return interactiveDataSet->entries.front().y;
}

std::optional<double> FiscalChartView::closingValue() const {
  if (prescribedClosingValue || !interactiveDataSet || interactiveDataSet->entries.empty()) {
    return prescribedClosingValue;
  }
  return interactiveDataSet->entries.back().y;
}

Colour FiscalChartView::movementColour() const {
  const auto opening = openingValue();
  const auto closing = closingValue();
  if (!opening || !closing) {
    return Colour::Name::black;
  }
  return Formatting::movementIndicator(*opening <= *closing ? 1 : -1).colour;
}

std::optional<LimitLine> FiscalChartView::openingLine(double viewWidth) const {
  const auto opening = openingValue();
  if (!opening) {
    return std::nullopt;
  }
  LimitLine line{.value = *opening, .colour = movementColour()};
  if (viewWidth > narrowWidth) {
    line.lineWidth = 1;
    line.dash = 7;
    line.gap = 5;
  } else {
    line.lineWidth = 0.5;
    line.dash = 2;
    line.gap = 1;
  }
  return line;
}

void FiscalChartView::addDateLabels(const std::vector<std::pair<double, Date>>& points,
                                    const DateRange& displayed, const Calendar& calendar) {
  const auto labelling = dateLabelling(displayed, calendar);
  if (!labelling) {
    return;
  }
  const TimeZone zone = prefersLocalTimeZone ? TimeZone::current() : calendar.timeZone();
  const Calendar shown(zone);
  DateFormatter formatter;
  formatter.localizedTemplate = labelling->localizedTemplate;
  formatter.timeZone = zone;
  std::optional<int> before;
  for (const auto& [x, date] : points) {
    const int component = shown.component(labelling->changingUnit, date);
    if (component == before) {
      continue;
    }
    LimitLine line{.value = x, .label = formatter.string(date)};
    if (!before) {
      line.colour = Colour::Name::clear;
    }
    xAxisLimitLines.push_back(std::move(line));
    before = component;
  }
}

}  // namespace corvane
