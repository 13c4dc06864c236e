#include "presentation/charts/fiscal_chart_view.h"

#include <algorithm>
#include <cmath>

#include "platform/text/formats/date_formatter.h"
#include "presentation/text/formatting.h"

namespace corvane {
namespace {

/// Views that are wider than this have room for a bold opening line.
constexpr double narrowWidth = 300;
/// From this number of days on the label of a day goes without its month.
constexpr int manyDays = 11;
/// Digits after the point that a price has at most.
constexpr int priceDigits = 5;
/// From this size on a value is a sum of money, in which parts of a cent are noise.
constexpr double leastSum = 10'000;
constexpr int sumDigits = 2;

Decimal shownNumber(double value, double largest) {
  return rounded(Decimal::fromDouble(value), largest < leastSum ? priceDigits : sumDigits,
                 RoundingMode::bankers);
}

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

FiscalChartView::FiscalChartView() : moneyAxis_(std::make_shared<MoneyAxisRenderer>()) {
  leftAxisRenderer = moneyAxis_;
  rightAxisRenderer = std::make_shared<PercentageAxisRenderer>([this] { return openingValue(); });
  reset();
}

void FiscalChartView::clear() {
  prescribedOpeningValue.reset();
  prescribedClosingValue.reset();
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
  moneyAxis_->setCurrencyFormatter(std::move(formatter));
  valueText = [shown = currency](double value) {
    const Decimal number = Decimal::fromDouble(value);
    if (!shown) {
      return number.description();
    }
    DecimalNumberFormatter money = DecimalNumberFormatter::money(*shown);
    money.maximumFractionDigits = std::max(money.minimumFractionDigits, priceDigits);
    return money.string(shownNumber(value, std::abs(value))).value_or(number.description());
  };
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
    return Colour::Name::label;
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

std::vector<LimitLine> FiscalChartView::leftAxisLimitLines(double viewWidth) const {
  const auto line = openingLine(viewWidth);
  return line ? std::vector{*line} : std::vector<LimitLine>();
}

AttributedText FiscalChartView::changeText(double from, double to) const {
  // Of what grew out of nothing there is no percentage.
  if (!currency || from == 0) {
    return BaseChartView::changeText(from, to);
  }
  const double largest = std::max(std::abs(from), std::abs(to));
  return Formatting::changeText(*currency, shownNumber(from, largest), shownNumber(to, largest));
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
