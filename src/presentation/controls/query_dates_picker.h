// The control that chooses a range of days and, where a screen wants one, the length of a bar.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/market/quote_interval.h"
#include "core/money/year_month_day.h"
#include "platform/range.h"
#include "platform/time/calendar.h"
#include "platform/time/date.h"

namespace corvane {

/// The state of a date range control: two days, a menu of presets, a menu of intervals. Setters are
/// for the screen that owns it and tell nobody; the operations that start with `choose` are what
/// the user does, and call `action`. The start is never after the end. Main queue only.
class QueryDatesPicker {
 public:
  /// What a preset stands for.
  struct Selection {
    YearMonthDay from;
    YearMonthDay to;
    QuoteInterval interval;
    friend bool operator==(const Selection&, const Selection&) = default;
  };
  /// An item of the preset menu.
  struct Preset {
    std::string label;
    std::function<Selection(YearMonthDay today, const Calendar&)> makeDates;
    [[nodiscard]] bool isSeparator() const { return label == separatorLabel; }
    [[nodiscard]] static Preset separator();
  };
  static constexpr std::string_view separatorLabel = "—";

  static constexpr std::array<std::pair<QuoteInterval, std::string_view>, 11> intervalLabels = {
      {{QuoteInterval::oneMinute, "1 minute"},
       {QuoteInterval::twoMinutes, "2 minutes"},
       {QuoteInterval::fiveMinutes, "5 minutes"},
       {QuoteInterval::fifteenMinutes, "15 minutes"},
       {QuoteInterval::thirtyMinutes, "30 minutes"},
       {QuoteInterval::oneHour, "1 hour"},
       {QuoteInterval::oneDay, "1 day"},
       {QuoteInterval::fiveDays, "5 days"},
       {QuoteInterval::oneWeek, "1 week"},
       {QuoteInterval::oneMonth, "1 month"},
       {QuoteInterval::threeMonths, "3 months"}}};

  /// Shows today, by what `now` says, and an hour.
  explicit QueryDatesPicker(std::function<Date()> now = &Date::now);

  /// Called after every choice of the user.
  std::function<void()> action = [] {};
  /// Called whenever there is something new to draw.
  std::function<void()> changeHandler = [] {};

  // What is shown.

  [[nodiscard]] const YearMonthDay& startDate() const { return dates_.from; }
  [[nodiscard]] const YearMonthDay& endDate() const { return dates_.to; }
  [[nodiscard]] QuoteInterval selectedInterval() const { return dates_.interval; }
  /// From the start of the first day to the end of the last one.
  [[nodiscard]] DateRange nominalDateRange() const;
  /// The days that the two day controls accept.
  [[nodiscard]] ClosedRange<YearMonthDay> startDateLimits() const;
  [[nodiscard]] ClosedRange<YearMonthDay> endDateLimits() const;

  [[nodiscard]] const std::vector<Preset>& presets() const { return presets_; }
  /// Without presets there is nothing to choose from.
  [[nodiscard]] bool isPresetMenuHidden() const { return presets_.empty(); }
  /// The label of the preset that the present choice is, or "Custom Range".
  [[nodiscard]] std::string presetTitle() const;

  [[nodiscard]] bool allowsIntervalSelection() const { return allowsIntervalSelection_; }
  /// Whether intervalLabels[index] may be chosen for the present days.
  [[nodiscard]] bool isIntervalEnabled(std::size_t index) const;

  // What the user does.

  /// Takes presets()[index]; a separator does nothing.
  void choosePreset(std::size_t index);
  void chooseStartDate(const YearMonthDay& day);
  void chooseEndDate(const YearMonthDay& day);
  void chooseInterval(QuoteInterval interval);

  // What the screen sets.

  [[nodiscard]] const Calendar& calendar() const { return calendar_; }
  void setCalendar(const Calendar& calendar);
  /// `from` is not after `to`; a day that lies outside the limits moves to the nearest that does
  /// not.
  void setDates(const YearMonthDay& from, const YearMonthDay& to);
  /// The days that may be chosen. The present ones stay until they are set anew.
  void setLimits(const YearMonthDay& minimumDate, const YearMonthDay& maximumDate);
  [[nodiscard]] const YearMonthDay& minimumDate() const { return minimumDate_; }
  [[nodiscard]] const YearMonthDay& maximumDate() const { return maximumDate_; }
  void setSelectedInterval(QuoteInterval interval);
  void setPresets(std::vector<Preset> presets);
  void setAllowsIntervalSelection(bool allows);
  /// The intervals that can be had for a range of dates; empty for all.
  void setAvailableIntervalsFilter(std::function<std::set<QuoteInterval>(const DateRange&)> filter);

  /// The earliest and the latest day that there are.
  static constexpr YearMonthDay earliestPossibleDay{1, 1, 1};
  static constexpr YearMonthDay latestPossibleDay{4001, 1, 1};

 private:
  [[nodiscard]] YearMonthDay withinLimits(const YearMonthDay& day) const;
  [[nodiscard]] Selection selectionOf(const Preset& preset) const;
  void update();
  void restrictInterval();
  void choose(const Selection& selection);

  std::function<Date()> now_;
  Calendar calendar_ = Calendar::current();
  Selection dates_;
  YearMonthDay minimumDate_ = earliestPossibleDay;
  YearMonthDay maximumDate_ = latestPossibleDay;
  std::vector<Preset> presets_;
  bool allowsIntervalSelection_ = true;
  std::function<std::set<QuoteInterval>(const DateRange&)> availableIntervalsFilter_;
  std::optional<std::set<QuoteInterval>> availableIntervals_;
};

}  // namespace corvane
