#include "presentation/transactions/date_entry.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "platform/text/formats/date_formatter.h"

namespace corvane {
namespace {

constexpr int earliestYear = 1;
constexpr int latestYear = 9999;

using Style = DateFormatter::Style;

/// Takes an integer with an optional sign off the front of `text`.
std::optional<int> takeInteger(std::string_view& text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) {
    return std::nullopt;
  }
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

bool takeHyphen(std::string_view& text) {
  const bool isHyphen = text.starts_with('-');
  text.remove_prefix(isHyphen ? 1 : 0);
  return isHyphen;
}

/// "2021-03-10", in whatever language; also with a year that no calendar shows.
std::optional<YearMonthDay> isoDay(std::string_view text) {
  const auto year = takeInteger(text);
  const bool hasMonth = takeHyphen(text);
  const auto month = takeInteger(text);
  const bool hasDay = takeHyphen(text);
  const auto day = takeInteger(text);
  if (!year || !hasMonth || !month || !hasDay || !day || !text.empty()) {
    return std::nullopt;
  }
  return YearMonthDay{*year, *month, *day};
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  return first == text.npos ? std::string_view()
                            : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

void DateEntry::setMinimum(Date date, std::string words) {
  minimum_ = date;
  minimumWords_ = std::move(words);
}

std::optional<YearMonthDay> DateEntry::minimumDay() const {
  return minimum_ ? std::optional(YearMonthDay::of(*minimum_, calendar_)) : std::nullopt;
}

FieldHint DateEntry::hint() const {
  if (!problem_.empty()) {
    return {problem_, true};
  }
  if (!isTyped_ || !date_) {
    return {};
  }
  return {DateFormatter{.dateStyle = Style::fullStyle, .timeZone = calendar_.timeZone()}.string(
      *date_)};
}

void DateEntry::setDate(Date date) {
  date_ = date;
  lastDate_ = date;
  isTyped_ = false;
  problem_.clear();
  text_ = formatted();
}

void DateEntry::setText(std::string text) {
  text_ = std::move(text);
  isTyped_ = true;
  date_.reset();
  problem_.clear();
  if (trimmed(text_).empty()) {
    problem_ = "Enter a date.";
  } else if (const auto day = dayOf(std::string(trimmed(text_)))) {
    take(*day);
  } else {
    problem_ = "“" + text_ + "” is not a date.";
  }
}

void DateEntry::setDay(const YearMonthDay& day) {
  problem_.clear();
  date_.reset();
  take(day);
  text_ = date_ ? formatted() : day.description();
  isTyped_ = false;
}

void DateEntry::step(int days) {
  const YearMonthDay day = this->day();
  setDay(YearMonthDay::normalised(day.year, day.month, day.day + days, calendar_));
}

void DateEntry::endEditing() {
  if (isTyped_ && date_) {
    text_ = formatted();
    isTyped_ = false;
  }
}

/// Makes `day` the date of the field, or says why it cannot be.
void DateEntry::take(const YearMonthDay& day) {
  if (day.year < earliestYear) {
    problem_ = "Dates before the year 1 cannot be kept.";
  } else if (day.year > latestYear) {
    problem_ = "Dates after the year " + std::to_string(latestYear) + " cannot be kept.";
  } else if (YearMonthDay::normalised(day.year, day.month, day.day, calendar_) != day) {
    problem_ = "“" + text_ + "” is not a date.";
  } else if (const auto minimum = minimumDay(); minimum && day < *minimum) {
    problem_ = minimumWords_;
    lastDate_ = day.startIn(calendar_);
  } else {
    const Date start = day.startIn(calendar_);
    // A date with a time of day, as an import may bring it, has its whole day for settlement.
    date_ = minimum_ && start < *minimum_ ? *minimum_ : start;
    lastDate_ = *date_;
  }
}

std::optional<YearMonthDay> DateEntry::dayOf(const std::string& text) const {
  if (const auto day = isoDay(text)) {
    return day;
  }
  for (const Style style :
       {Style::mediumStyle, Style::shortStyle, Style::longStyle, Style::fullStyle}) {
    const DateFormatter formatter{
        .dateStyle = style, .timeZone = calendar_.timeZone(), .isLenient = true};
    if (const auto date = formatter.date(text)) {
      return YearMonthDay::of(*date, calendar_);
    }
  }
  return std::nullopt;
}

std::string DateEntry::formatted() const {
  return DateFormatter{.dateStyle = Style::mediumStyle, .timeZone = calendar_.timeZone()}.string(
      *date_);
}

}  // namespace corvane
