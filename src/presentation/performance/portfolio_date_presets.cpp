#include "presentation/performance/portfolio_date_presets.h"

#include <algorithm>
#include <string>

namespace corvane {
namespace {

using Preset = QueryDatesPicker::Preset;
using Selection = QueryDatesPicker::Selection;

Selection daily(const YearMonthDay& from, const YearMonthDay& to) {
  return {from, to, QuoteInterval::oneDay};
}

/// From `years` and `months` ago to today.
Preset past(std::string label, int years, int months) {
  return {std::move(label), [=](YearMonthDay today, const Calendar& calendar) {
            return daily(YearMonthDay::normalised(today.year - years, today.month - months,
                                                  today.day, calendar),
                         today);
          }};
}

}  // namespace

std::vector<Preset> portfolioDatePresets(const ClosedRange<YearMonthDay>& days,
                                         const YearMonthDay& today) {
  std::vector<Preset> presets = {
      {"All time",
       [days](YearMonthDay, const Calendar&) { return daily(days.lower(), days.upper()); }},
      Preset::separator(),
      {"Year to date",
       [](YearMonthDay day, const Calendar&) {
         return daily({day.year, 1, 1}, day);
       }},
      past("Past month", 0, 1),
      past("Past 3 months", 0, 3),
      past("Past 6 months", 0, 6),
      past("Past year", 1, 0)};
  std::vector<Preset> years;
  for (int year = days.upper().year; year >= days.lower().year; --year) {
    if (year != today.year) {
      years.push_back({std::to_string(year), [year](YearMonthDay, const Calendar&) {
                         return daily({year, 1, 1}, {year, 12, 31});
                       }});
    }
  }
  if (!years.empty()) {
    presets.push_back(Preset::separator());
    presets.insert(presets.end(), years.begin(), years.end());
  }
  return presets;
}

void PortfolioDays::limit(QueryDatesPicker& picker, Portfolio& portfolio, const Calendar& calendar,
                          Date now) {
  const auto today = YearMonthDay::of(now, calendar);
  const auto& rows = portfolio.transactions();
  picker.setCalendar(calendar);
  if (!picker.presets().empty()) {
    showsAllTime_ =
        picker.startDate() == picker.minimumDate() && picker.endDate() == picker.maximumDate();
  }
  if (rows.empty()) {
    picker.setLimits(QueryDatesPicker::earliestPossibleDay, QueryDatesPicker::latestPossibleDay);
    picker.setDates({today.year, 1, 1}, {today.year, 12, 31});
    picker.setPresets({});
    return;
  }
  const Date lastSettlement = rows.back()->settlementDate();
  const auto latest = YearMonthDay::of(now < lastSettlement ? lastSettlement : now, calendar);
  const auto earliest =
      std::min(YearMonthDay::of(rows.front()->settlementDate(), calendar), latest);
  const ClosedRange<YearMonthDay> days(earliest, latest);
  picker.setLimits(earliest, latest);
  const auto kept = [&](const YearMonthDay& day, const YearMonthDay& otherwise) {
    return !showsAllTime_ && days.contains(day) ? day : otherwise;
  };
  picker.setDates(kept(picker.startDate(), earliest), kept(picker.endDate(), latest));
  picker.setPresets(portfolioDatePresets(days, today));
}

}  // namespace corvane
