#include "platform/text/formats/duration_formatter.h"

#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "platform/text/unicode/icu_text.h"

namespace corvane {
namespace {

/// So many of one unit.
struct Part {
  CalendarUnit unit;
  int count;
};

std::vector<Part> partsOf(const std::vector<CalendarUnit>& units, Date from, Date to,
                          const Calendar& calendar) {
  std::vector<Part> parts;
  Date cursor = from;
  for (const CalendarUnit unit : units) {
    const int count = calendar.dateComponents({unit}, cursor, to).valueOr(unit, 0);
    parts.push_back({unit, count});
    cursor = calendar.dateByAdding(unit, count, cursor).value_or(cursor);
  }
  return parts;
}

/// The units from the largest of which there is one on; at least the smallest.
std::vector<CalendarUnit> unitsInUse(std::vector<CalendarUnit> units, Date from, Date to,
                                     const Calendar& calendar) {
  while (units.size() > 1 && partsOf(units, from, to, calendar).front().count == 0) {
    units.erase(units.begin());
  }
  return units;
}

/// Whether one unit is followed by some of the next smaller one, as in 1 year, 1 month.
bool isCollapsible(const std::vector<Part>& parts) {
  return parts.size() > 1 && std::abs(parts[0].count) == 1 && parts[1].count != 0;
}

std::unique_ptr<icu::MeasureUnit> measureUnit(CalendarUnit unit) {
  UErrorCode status = U_ZERO_ERROR;
  icu::MeasureUnit* created = nullptr;
  switch (unit) {
    case CalendarUnit::year:
      created = icu::MeasureUnit::createYear(status);
      break;
    case CalendarUnit::month:
      created = icu::MeasureUnit::createMonth(status);
      break;
    case CalendarUnit::weekOfYear:
      created = icu::MeasureUnit::createWeek(status);
      break;
    case CalendarUnit::day:
      created = icu::MeasureUnit::createDay(status);
      break;
    case CalendarUnit::hour:
      created = icu::MeasureUnit::createHour(status);
      break;
    case CalendarUnit::minute:
      created = icu::MeasureUnit::createMinute(status);
      break;
    case CalendarUnit::second:
      created = icu::MeasureUnit::createSecond(status);
      break;
  }
  return std::unique_ptr<icu::MeasureUnit>(created);
}

std::optional<std::string> textOf(const std::vector<Part>& parts, const Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  std::vector<icu::Measure> measures;
  for (const Part& part : parts) {
    measures.emplace_back(icu::Formattable(part.count), measureUnit(part.unit).release(), status);
  }
  const icu::MeasureFormat format(toIcu(locale), UMEASFMT_WIDTH_WIDE, status);
  icu::UnicodeString text;
  icu::FieldPosition position;
  format.formatMeasures(measures.data(), static_cast<std::int32_t>(measures.size()), text, position,
                        status);
  return U_SUCCESS(status) ? std::optional(toUtf8(text)) : std::nullopt;
}

}  // namespace

std::optional<std::string> DurationFormatter::string(Date from, Date to,
                                                     const Calendar& calendar) const {
  const bool areExpressible =
      calendar.dateComponents({CalendarUnit::day}, from, to).day().has_value();
  if (allowedUnits.empty() || maximumUnitCount < 1 || !areExpressible) {
    return std::nullopt;
  }
  std::vector<CalendarUnit> units = allowedUnits;
  std::sort(units.begin(), units.end());
  units.erase(std::unique(units.begin(), units.end()), units.end());

  units = unitsInUse(std::move(units), from, to, calendar);
  if (collapsesLargestUnit && isCollapsible(partsOf(units, from, to, calendar))) {
    units.erase(units.begin());
  }
  std::vector<Part> parts = partsOf(units, from, to, calendar);
  const Part none{units.back(), 0};
  std::erase_if(parts, [](const Part& part) { return part.count == 0; });
  if (parts.empty()) {
    parts.push_back(none);
  }
  parts.resize(std::min(parts.size(), static_cast<std::size_t>(maximumUnitCount)), none);
  return textOf(parts, locale);
}

}  // namespace corvane
