#include "presentation/controls/query_dates_picker.h"

#include <algorithm>
#include <cassert>

namespace corvane {

QueryDatesPicker::Preset QueryDatesPicker::Preset::separator() {
  return {std::string(separatorLabel), [](YearMonthDay, const Calendar& calendar) {
            const auto past = YearMonthDay::of(Date::distantPast(), calendar);
            return Selection{past, past, QuoteInterval::oneDay};
          }};
}

QueryDatesPicker::QueryDatesPicker(std::function<Date()> now) : now_(std::move(now)) {
  const auto today = YearMonthDay::of(now_(), calendar_);
  dates_ = {today, today, QuoteInterval::oneHour};
}

DateRange QueryDatesPicker::nominalDateRange() const {
  const YearMonthDay& last = dates_.to;
  return {dates_.from.startIn(calendar_),
          YearMonthDay{last.year, last.month, last.day + 1}.startIn(calendar_)};
}

ClosedRange<YearMonthDay> QueryDatesPicker::startDateLimits() const {
  return {std::min(minimumDate_, dates_.from), std::max(dates_.from, dates_.to)};
}

ClosedRange<YearMonthDay> QueryDatesPicker::endDateLimits() const {
  return {dates_.from, std::max(maximumDate_, dates_.to)};
}

std::string QueryDatesPicker::presetTitle() const {
  for (const Preset& preset : presets_) {
    if (preset.isSeparator()) {
      continue;
    }
    const Selection selection = selectionOf(preset);
    if (selection.from == dates_.from && selection.to == dates_.to &&
        (!allowsIntervalSelection_ || selection.interval == dates_.interval)) {
      return preset.label;
    }
  }
  return "Custom Range";
}

bool QueryDatesPicker::isIntervalEnabled(std::size_t index) const {
  return !availableIntervals_ || availableIntervals_->contains(intervalLabels.at(index).first);
}

void QueryDatesPicker::choosePreset(std::size_t index) {
  const Preset& preset = presets_.at(index);
  if (!preset.isSeparator()) {
    choose(selectionOf(preset));
  }
}

void QueryDatesPicker::chooseStartDate(const YearMonthDay& day) {
  choose({std::min(withinLimits(day), dates_.to), dates_.to, dates_.interval});
}

void QueryDatesPicker::chooseEndDate(const YearMonthDay& day) {
  choose({dates_.from, std::max(withinLimits(day), dates_.from), dates_.interval});
}

void QueryDatesPicker::chooseInterval(QuoteInterval interval) {
  choose({dates_.from, dates_.to, interval});
}

void QueryDatesPicker::setCalendar(const Calendar& calendar) {
  calendar_ = calendar;
  update();
}

void QueryDatesPicker::setDates(const YearMonthDay& from, const YearMonthDay& to) {
  assert(from <= to && "a range of days must not end before it starts");
  dates_.from = withinLimits(from);
  dates_.to = withinLimits(to);
  update();
}

void QueryDatesPicker::setLimits(const YearMonthDay& minimumDate, const YearMonthDay& maximumDate) {
  assert(minimumDate <= maximumDate);
  minimumDate_ = minimumDate;
  maximumDate_ = maximumDate;
  update();
}

void QueryDatesPicker::setSelectedInterval(QuoteInterval interval) {
  dates_.interval = interval;
  update();
}

void QueryDatesPicker::setPresets(std::vector<Preset> presets) {
  presets_ = std::move(presets);
  changeHandler();
}

void QueryDatesPicker::setAllowsIntervalSelection(bool allows) {
  allowsIntervalSelection_ = allows;
  changeHandler();
}

void QueryDatesPicker::setAvailableIntervalsFilter(
    std::function<std::set<QuoteInterval>(const DateRange&)> filter) {
  availableIntervalsFilter_ = std::move(filter);
  update();
}

YearMonthDay QueryDatesPicker::withinLimits(const YearMonthDay& day) const {
  return std::clamp(day, minimumDate_, maximumDate_);
}

/// The part of the preset that may be chosen: a year that a ledger starts in the middle of begins
/// with the ledger, and still is that year.
QueryDatesPicker::Selection QueryDatesPicker::selectionOf(const Preset& preset) const {
  Selection selection = preset.makeDates(YearMonthDay::of(now_(), calendar_), calendar_);
  selection.from = withinLimits(selection.from);
  selection.to = withinLimits(selection.to);
  return selection;
}

void QueryDatesPicker::update() {
  availableIntervals_.reset();
  if (availableIntervalsFilter_) {
    availableIntervals_ = availableIntervalsFilter_(nominalDateRange());
    restrictInterval();
  }
  changeHandler();
}

/// Steps from the selected interval to the next one that can be had; without any it stays.
void QueryDatesPicker::restrictInterval() {
  const auto selected = std::ranges::find(intervalLabels, dates_.interval,
                                          [](const auto& pair) { return pair.first; });
  const std::size_t start = selected == intervalLabels.end()
                                ? 0
                                : static_cast<std::size_t>(selected - intervalLabels.begin());
  for (std::size_t step = 0; step < intervalLabels.size(); ++step) {
    const std::size_t index = (start + step) % intervalLabels.size();
    if (isIntervalEnabled(index)) {
      dates_.interval = intervalLabels.at(index).first;
      return;
    }
  }
}

void QueryDatesPicker::choose(const Selection& selection) {
  dates_ = selection;
  update();
  action();
}

}  // namespace corvane
