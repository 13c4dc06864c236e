#include "presentation/text/day_text.h"

#include "platform/text/formats/date_formatter.h"
#include "platform/text/formats/relative_date_formatter.h"

namespace corvane {

std::string dayWithDistance(const YearMonthDay& day, Date today, const Calendar& calendar) {
  const Date start = day.startIn(calendar);
  const DateFormatter dateFormatter{.dateStyle = DateFormatter::Style::longStyle,
                                    .timeZone = calendar.timeZone(),
                                    .context = FormattingContext::middleOfSentence};
  const RelativeDateFormatter distance{.style = RelativeDateFormatter::Style::named,
                                       .context = FormattingContext::standalone};
  return dateFormatter.string(start) + " (" +
         distance.string(start, calendar.startOfDay(today), calendar) + ")";
}

}  // namespace corvane
