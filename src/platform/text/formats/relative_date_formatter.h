// "3 hours ago", "tomorrow": one date as seen from another.
#pragma once

#include <string>

#include "platform/text/unicode/formatting_context.h"
#include "platform/text/unicode/locale.h"
#include "platform/time/calendar.h"

namespace corvane {

/// How to write the distance of two dates, as settings to be changed at will. A plain value.
struct RelativeDateFormatter {
  enum class Style {
    numeric,  ///< "1 day ago", "in 2 months"
    named     ///< "yesterday" where the language has a word and the word is true, else numeric
  };

  Style style = Style::numeric;
  FormattingContext context = FormattingContext::unknown;
  Locale locale = Locale::current();

  /// `date` as seen from `reference`, in the largest unit (year, month, week, day, hour, minute,
  /// second) of which `calendar` counts a whole one between them. Smaller units are dropped: 47
  /// hours ago is "1 day ago", and "yesterday" only if that is the day before. Empty where the
  /// calendar cannot express one of the dates.
  [[nodiscard]] std::string string(Date date, Date reference, const Calendar& calendar) const;
};

}  // namespace corvane
