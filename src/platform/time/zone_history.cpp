#include "platform/time/zone_history.h"

#include <algorithm>
#include <cassert>

#include "platform/time/civil_day.h"

namespace corvane {
namespace {

using Seconds = ZoneHistory::Seconds;

// Beyond every date, and far enough from the ends of 64 bits to add a few offsets.
constexpr Seconds outOfReach = Seconds{1} << 60;

constexpr Seconds cycleSeconds = daysPerGregorianCycle * secondsPerDay;
constexpr Seconds firstCycleStart = dayCount(ZoneHistory::firstRepeatingYear, 1, 1) * secondsPerDay;

/// What to subtract from `time` to reach the same place of the first round of the repeating years.
Seconds distanceToFirstCycle(Seconds time) {
  if (time < firstCycleStart + cycleSeconds) {
    return 0;
  }
  return (time - firstCycleStart) / cycleSeconds * cycleSeconds;
}

}  // namespace

ZoneHistory::ZoneHistory(std::int32_t firstOffset, const std::vector<Transition>& transitions)
    : starts_{-outOfReach}, offsets_{firstOffset} {
  for (const Transition& transition : transitions) {
    assert(transition.at > starts_.back() && transition.offset != offsets_.back());
    wallEnds_.push_back(transition.at + std::max(offsets_.back(), transition.offset));
    starts_.push_back(transition.at);
    offsets_.push_back(transition.offset);
  }
  wallEnds_.push_back(outOfReach);
  assert(std::is_sorted(wallEnds_.begin(), wallEnds_.end()));
}

std::int32_t ZoneHistory::offsetAt(Seconds time) const {
  const Seconds folded = time - distanceToFirstCycle(time);
  const auto next = std::upper_bound(starts_.begin(), starts_.end(), folded);
  return offsets_[static_cast<std::size_t>(next - starts_.begin()) - 1];
}

ZoneHistory::Period ZoneHistory::periodAt(Seconds time) const {
  const Seconds distance = distanceToFirstCycle(time);
  const auto next = std::upper_bound(starts_.begin(), starts_.end(), time - distance);
  const Seconds end = next == starts_.end() ? outOfReach : *next;
  const auto index = static_cast<std::size_t>(next - starts_.begin()) - 1;
  return {starts_[index] + distance, end + distance, offsets_[index]};
}

std::size_t ZoneHistory::periodOfWall(Seconds wall) const {
  const auto period = std::upper_bound(wallEnds_.begin(), wallEnds_.end(), wall);
  return static_cast<std::size_t>(period - wallEnds_.begin());
}

Seconds ZoneHistory::momentOfWall(Seconds wall) const {
  return wall - offsets_[periodOfWall(wall - distanceToFirstCycle(wall))];
}

Seconds ZoneHistory::momentOfWall(Seconds wall, std::int32_t preferred) const {
  const Seconds moment = wall - preferred;
  return offsetAt(moment) == preferred ? moment : momentOfWall(wall);
}

Seconds ZoneHistory::firstMomentFromWall(Seconds wall) const {
  const Seconds distance = distanceToFirstCycle(wall);
  const std::size_t period = periodOfWall(wall - distance);
  const Seconds moment = wall - offsets_[period];
  const bool last = period + 1 == starts_.size();
  return last ? moment : std::min(moment, starts_[period + 1] + distance);
}

}  // namespace corvane
