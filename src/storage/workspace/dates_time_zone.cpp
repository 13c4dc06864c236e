#include "storage/workspace/dates_time_zone.h"

#include <algorithm>
#include <cmath>

#include "platform/text/formats/date_formatter.h"
#include "platform/time/calendar.h"

namespace corvane {
namespace {

constexpr int secondsADay = 86'400;
constexpr int secondsOfSummerTime = 3'600;
constexpr int secondsBetweenOffsets = 900;

/// The offset from UTC of the zone in which `date` is a midnight. None where no zone has such an
/// offset, and half a day away from Greenwich, where it could lie on either side and where noon in
/// London would pass for a midnight.
std::optional<int> offsetOfMidnight(Date date) {
  const double seconds = date.timeIntervalSince1970();
  const double timeOfDay = seconds - std::floor(seconds / secondsADay) * secondsADay;
  if (!std::isfinite(timeOfDay) || std::fmod(timeOfDay, secondsBetweenOffsets) != 0) {
    return std::nullopt;
  }
  const int time = static_cast<int>(timeOfDay);
  if (std::abs(time - secondsADay / 2) <= secondsOfSummerTime) {
    return std::nullopt;
  }
  return time > secondsADay / 2 ? secondsADay - time : -time;
}

/// Whether all `dates` are midnights of one zone.
bool areMidnights(std::span<const Date> dates) {
  std::optional<int> least;
  std::optional<int> most;
  for (const Date date : dates) {
    const auto offset = offsetOfMidnight(date);
    if (!offset) {
      return false;
    }
    least = std::min(least.value_or(*offset), *offset);
    most = std::max(most.value_or(*offset), *offset);
  }
  return least && (*most == *least || *most == *least + secondsOfSummerTime);
}

std::string textOf(const YearMonthDay& day) {
  const Calendar calendar;
  return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                       .timeZone = calendar.timeZone()}
      .string(day.startIn(calendar));
}

}  // namespace

std::string DatesDoubt::description() const {
  const std::string place = "In " + shown.identifier() + ", where it is open now, ";
  if (written) {
    return "The days of this workspace were written in the time zone " + written->identifier() +
           ". " + place + "some of them are others: " + textOf(writtenDay) + " is shown as " +
           textOf(shownDay) + ".";
  }
  return "The days of this workspace seem to have been written in another time zone. " + place +
         "some of them would be others: what is shown as " + textOf(shownDay) + " was perhaps " +
         textOf(writtenDay) + ".";
}

std::optional<DatesDoubt> datesDoubt(std::span<const Date> dates,
                                     const std::optional<TimeZone>& written,
                                     const TimeZone& shown) {
  if (!written && !areMidnights(dates)) {
    return std::nullopt;
  }
  const Calendar shownCalendar(shown);
  const Calendar writtenCalendar(written.value_or(TimeZone()));
  std::optional<DatesDoubt> doubt;
  Date latest = Date::distantPast();
  for (const Date date : dates) {
    const Date moved =
        written ? date : Date::since1970(date.timeIntervalSince1970() + *offsetOfMidnight(date));
    const YearMonthDay day = YearMonthDay::of(moved, writtenCalendar);
    const YearMonthDay shownDay = YearMonthDay::of(date, shownCalendar);
    // Of the latest one the user is most likely to remember the day.
    if (day != shownDay && date >= latest) {
      latest = date;
      doubt = DatesDoubt{written, shown, day, shownDay};
    }
  }
  return doubt;
}

}  // namespace corvane
