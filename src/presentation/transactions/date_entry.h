// A field for a day: what stands in it, the date that it means, and what to say about it.
#pragma once

#include <optional>
#include <string>

#include "core/money/year_month_day.h"
#include "platform/time/calendar.h"
#include "presentation/transactions/number_entry.h"

namespace corvane {

/// A day that the user types, picks or steps to. A day that the user enters is the first moment of
/// it; a date that the field is filled with stays as it is.
class DateEntry {
 public:
  std::string label = {};
  bool isEnabled = true;

  /// The days are those of `calendar`.
  void setCalendar(Calendar calendar) { calendar_ = std::move(calendar); }
  /// A day before that of `date` is refused in these words.
  void setMinimum(Date date, std::string words);

  [[nodiscard]] const std::string& text() const { return text_; }
  /// None where the text is no date that the field takes.
  [[nodiscard]] const std::optional<Date>& date() const { return date_; }
  /// The day on which a calendar opens: the last one that was understood.
  [[nodiscard]] YearMonthDay day() const { return YearMonthDay::of(lastDate_, calendar_); }
  [[nodiscard]] std::optional<YearMonthDay> minimumDay() const;
  /// While the user types, the day with its weekday; where there is none, why.
  [[nodiscard]] FieldHint hint() const;

  void setDate(Date date);
  void setText(std::string text);
  void setDay(const YearMonthDay& day);
  /// Up and Down: so many days on.
  void step(int days);
  void endEditing();

 private:
  void take(const YearMonthDay& day);
  [[nodiscard]] std::optional<YearMonthDay> dayOf(const std::string& text) const;
  [[nodiscard]] std::string formatted() const;

  Calendar calendar_;
  std::optional<Date> minimum_;
  std::string minimumWords_;
  std::string text_;
  std::optional<Date> date_;
  Date lastDate_;
  std::string problem_;
  bool isTyped_ = false;
};

}  // namespace corvane
