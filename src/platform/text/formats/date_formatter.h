// Dates and times as the user's locale writes them, and back.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/text/unicode/formatting_context.h"
#include "platform/text/unicode/locale.h"
#include "platform/time/date.h"
#include "platform/time/time_zone.h"

namespace corvane {

/// How to write a date, as settings to be changed at will. A plain value; copies are independent
/// and each thread may use its own. Dates are always those of the Gregorian calendar.
struct DateFormatter {
  enum class Style { none, shortStyle, mediumStyle, longStyle, fullStyle };

  Style dateStyle = Style::none;
  Style timeStyle = Style::none;
  /// A pattern of Unicode date fields such as "yyyy-MM-dd"; where present it replaces the styles.
  /// A week-based year "Y" without a week "w" is taken as the plain year "y": with a month and a
  /// day it would write the last days of December into the next year.
  std::optional<std::string> format = std::nullopt;
  /// Fields to be shown, in whatever order, such as "jjmm" for hours and minutes; the locale
  /// decides on their order and on what stands between them. Replaces the styles; `format` replaces
  /// it.
  std::optional<std::string> localizedTemplate = std::nullopt;
  TimeZone timeZone = TimeZone::current();
  Locale locale = Locale::current();
  /// Whether date() forgives: any run of spaces and signs reads as any other, and a month may be a
  /// number or a name, short or long, in the locale's language or in English. Days and times that
  /// do not exist are not forgiven: they mostly are a day and a month exchanged.
  bool isLenient = false;
  FormattingContext context = FormattingContext::unknown;

  /// Empty where no date can be written: for a NaN or an infinity, or with neither style nor
  /// pattern.
  [[nodiscard]] std::string string(Date date) const;

  /// The pattern of Unicode date fields by which string() writes; empty where it writes nothing.
  [[nodiscard]] std::string pattern() const;

  /// The date that the whole of `text` describes; none where it is not of the form that string()
  /// writes. Fields that the form lacks are those of 2000-01-01 00:00:00.
  [[nodiscard]] std::optional<Date> date(std::string_view text) const;

  friend bool operator==(const DateFormatter&, const DateFormatter&) = default;
};

}  // namespace corvane
