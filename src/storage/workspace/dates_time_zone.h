// The time zone in which the days of a workspace stand.
//
// Rows keep moments, and a moment falls on a day in a time zone only. A workspace that goes with
// its user to another zone would show other days, count them in other years, and take a statement
// that it has for a new one. So it notes the zone in which its days are right.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "core/money/year_month_day.h"
#include "platform/error.h"
#include "platform/time/date.h"
#include "platform/time/time_zone.h"

namespace corvane {

/// What a workspace notes of it.
struct DatesTimeZone {
  std::string identifier;  ///< "America/Toronto"; perhaps of a zone that is not known here
  /// Whether the days are those of this zone wherever the workspace is opened, as the user has
  /// chosen. Otherwise they are those of the user's zone.
  bool isUsedEverywhere = false;
  friend bool operator==(const DatesTimeZone&, const DatesTimeZone&) = default;
};

/// Why the days of a workspace are perhaps not those that its user has recorded.
struct DatesDoubt {
  std::optional<TimeZone> written;  ///< none where the rows only look like those of another zone
  TimeZone shown;                   ///< in which the workspace is open
  // One of the rows, by both.
  YearMonthDay writtenDay;
  YearMonthDay shownDay;

  friend bool operator==(const DatesDoubt&, const DatesDoubt&) = default;

  /// What the user is told.
  [[nodiscard]] std::string description() const;
};

/// What is doubtful about `dates` where they are shown in `shown`; none where nothing is.
///
/// Dates that were written in `written` are doubtful where one of them falls on another day. Where
/// nobody knows the zone, they are if all of them are midnights of one zone, summer time aside,
/// that lies east of `shown`, so that they come out a day early.
[[nodiscard]] std::optional<DatesDoubt> datesDoubt(std::span<const Date> dates,
                                                   const std::optional<TimeZone>& written,
                                                   const TimeZone& shown);

/// What was not begun, since it goes by the days of rows: an import would not know those that are
/// there already, and who takes one back would not know its own.
class DoubtfulDatesError : public ErrorValue<DoubtfulDatesError> {
 public:
  static constexpr std::string_view noImport =
      "Nothing has been imported: while the days of the workspace are in doubt, rows that it has "
      "already would be recorded again.";
  static constexpr std::string_view noTakingBack =
      "Nothing has been taken back: while the days of the workspace are in doubt, other "
      "transactions could be taken for those of the import.";

  /// `text` is one of the above.
  DoubtfulDatesError(std::string_view text, std::string suggestion)
      : text_(text), suggestion_(std::move(suggestion)) {}
  [[nodiscard]] std::optional<std::string> description() const override { return text_; }
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override {
    return suggestion_;
  }
  [[nodiscard]] bool hasSameValues(const DoubtfulDatesError& other) const {
    return text_ == other.text_ && suggestion_ == other.suggestion_;
  }

 private:
  std::string text_;
  std::string suggestion_;
};

}  // namespace corvane
