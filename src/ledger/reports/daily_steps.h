// A value that changes from day to day.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <vector>

#include "core/money/year_month_day.h"

namespace corvane {

/// A step function of days: each value holds from its day on, until that of a later day.
template <typename Value>
class DailySteps {
 public:
  struct Step {
    YearMonthDay day;
    Value value;
  };

  [[nodiscard]] bool isEmpty() const { return steps_.empty(); }
  [[nodiscard]] const std::vector<Step>& steps() const { return steps_; }
  /// The value after all steps; there is one.
  [[nodiscard]] const Value& last() const {
    assert(!steps_.empty());
    return steps_.back().value;
  }

  /// Makes `value` that of `day`, in place of one that the day may have. Fast for ascending days.
  void set(YearMonthDay day, const Value& value) {
    if (steps_.empty() || steps_.back().day < day) {
      steps_.push_back({day, value});
      return;
    }
    const auto place = std::ranges::lower_bound(steps_, day, {}, &Step::day);
    if (place->day == day) {
      place->value = value;
    } else {
      steps_.insert(place, {day, value});
    }
  }

  /// The value in force on `day`, or null before the first. For a walk over ascending days.
  [[nodiscard]] const Value* advanceTo(YearMonthDay day) {
    while (reached_ < steps_.size() && steps_[reached_].day <= day) {
      ++reached_;
    }
    return reached_ == 0 ? nullptr : &steps_[reached_ - 1].value;
  }

 private:
  std::vector<Step> steps_;
  std::size_t reached_ = 0;  ///< the steps that advanceTo has passed
};

}  // namespace corvane
