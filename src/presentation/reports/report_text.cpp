#include "presentation/reports/report_text.h"

#include <algorithm>
#include <array>

#include "core/money/decimal_number_formatter.h"
#include "platform/text/formats/date_formatter.h"
#include "presentation/text/formatting.h"
#include "presentation/text/table_text.h"

namespace corvane {
namespace {

constexpr int digitsOfRates = 2;

std::string rateText(const std::optional<double>& value, bool showsPlus) {
  if (!value) {
    return std::string(noFigureText);
  }
  DecimalNumberFormatter percent;
  percent.style = NumberFormatter::Style::percent;
  percent.minimumFractionDigits = digitsOfRates;
  percent.maximumFractionDigits = digitsOfRates;
  if (showsPlus) {
    percent.positivePrefix = "+";
  }
  return percent.string(Decimal::fromDouble(*value)).value_or(std::string(noFigureText));
}

/// `text` as a cell in the colour of the sign of `value`.
AttributedText signedCell(const std::string& text, const Decimal& value) {
  AttributedText cell(
      text, {.colour = Formatting::movementIndicator(value).colour, .isMonospaced = true});
  cell.alignment = TextAlignment::right;
  return cell;
}

std::string dayByTemplate(const YearMonthDay& day, const char* fields) {
  return DateFormatter{.localizedTemplate = fields, .timeZone = chartCalendar().timeZone()}.string(
      chartDate(day));
}

}  // namespace

std::string ReportFigure::accessibleText() const {
  std::string text = title + ": " + value.plainText();
  for (const std::string* part : {&detail, &hint}) {
    text += part->empty() ? "" : ", " + *part;
  }
  return text;
}

std::string returnRateText(const std::optional<double>& value) {
  return rateText(value, true);
}

std::string plainRateText(const std::optional<double>& value) {
  return rateText(value, false);
}

AttributedText returnRateCell(const std::optional<double>& value) {
  return value ? signedCell(returnRateText(value), Decimal::fromDouble(*value))
               : numericCell(std::string(noFigureText));
}

AttributedText plainRateCell(const std::optional<double>& value) {
  return numericCell(plainRateText(value));
}

std::string reportMoneyText(const std::optional<Decimal>& amount, const Currency& currency) {
  if (!amount || amount->isNaN()) {
    return std::string(noFigureText);
  }
  return DecimalNumberFormatter::money(currency)
      .string(roundedToMinorUnits(*amount, currency))
      .value_or(std::string(noFigureText));
}

AttributedText reportMoneyCell(const std::optional<Decimal>& amount, const Currency& currency) {
  return numericCell(reportMoneyText(amount, currency));
}

AttributedText signedMoneyCell(const Decimal& amount, const Currency& currency) {
  return signedCell(reportMoneyText(amount, currency), roundedToMinorUnits(amount, currency));
}

AttributedText plainCell(std::string_view text) {
  return AttributedText(text);
}

std::string namesPhrase(const std::vector<std::string>& names) {
  constexpr std::size_t mostNamed = 5;
  std::string phrase;
  for (std::size_t i = 0; i < std::min(names.size(), mostNamed); ++i) {
    phrase += (i == 0 ? "" : ", ") + names[i];
  }
  return names.size() <= mostNamed
             ? phrase
             : phrase + " and " + std::to_string(names.size() - mostNamed) + " more";
}

std::string mediumDayText(const YearMonthDay& day) {
  return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                       .timeZone = chartCalendar().timeZone()}
      .string(chartDate(day));
}

std::string monthText(const YearMonthDay& day) {
  return dayByTemplate(day, "yMMM");
}

std::string monthNameText(int month) {
  constexpr int anyYear = 2001;
  return dayByTemplate({anyYear, month, 1}, "LLL");
}

TableColumn monthHead(int month) {
  static constexpr std::array<std::string_view, 12> identifiers = {
      "month1", "month2", "month3", "month4",  "month5",  "month6",
      "month7", "month8", "month9", "month10", "month11", "month12"};
  static const std::array<std::string, 12> names = [] {
    std::array<std::string, 12> made;
    for (std::size_t i = 0; i < made.size(); ++i) {
      made.at(i) = monthNameText(static_cast<int>(i) + 1);
    }
    return made;
  }();
  const auto place = static_cast<std::size_t>(month - 1);
  return {identifiers.at(place), names.at(place), true};
}

Date chartDate(const YearMonthDay& day) {
  return day.startIn(chartCalendar());
}

const Calendar& chartCalendar() {
  static const Calendar calendar{TimeZone()};
  return calendar;
}

}  // namespace corvane
