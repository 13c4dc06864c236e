// The offsets from UTC that one time zone has had and, by its present rules, will have.
//
// Built once, immutable afterwards, hence safe on any thread. Times are whole seconds since 1970;
// "wall" ones are those that a clock in the zone shows.
#pragma once

#include <cstdint>
#include <vector>

namespace corvane {

class ZoneHistory {
 public:
  using Seconds = std::int64_t;

  /// A change of the clocks: from the moment `at` (UTC) on, `offset` is in force.
  struct Transition {
    Seconds at;
    std::int32_t offset;
  };

  /// A stretch of constant offset, from `start` up to but not including `end`, both UTC.
  struct Period {
    Seconds start;
    Seconds end;
    std::int32_t offset;
  };

  /// From the year 2100 on the transitions repeat every 400 years; the table has to hold the whole
  /// of the first round and a year more.
  static constexpr int firstRepeatingYear = 2100;
  static constexpr int firstYearNotNeeded = firstRepeatingYear + 400 + 1;

  /// `transitions` in the order of time, each with another offset than the one before.
  ZoneHistory(std::int32_t firstOffset, const std::vector<Transition>& transitions);

  [[nodiscard]] std::int32_t offsetAt(Seconds time) const;
  [[nodiscard]] Period periodAt(Seconds time) const;

  /// The moment at which clocks show `wall`. The first of two such moments; for a time that is
  /// skipped, the one that results with the offset in force before the skip.
  [[nodiscard]] Seconds momentOfWall(Seconds wall) const;
  /// The same with `preferred` as offset where that is the second of two such moments.
  [[nodiscard]] Seconds momentOfWall(Seconds wall, std::int32_t preferred) const;
  /// The first moment at which clocks show `wall`, or the end of the gap in which they skip it.
  [[nodiscard]] Seconds firstMomentFromWall(Seconds wall) const;

 private:
  /// Index of the first period that has not ended, for good, when clocks show `wall`.
  [[nodiscard]] std::size_t periodOfWall(Seconds wall) const;

  // Parallel arrays, one element a period. The first start and the last end are out of reach.
  std::vector<Seconds> starts_;
  std::vector<Seconds> wallEnds_;  // later of what clocks show before and after the period's end
  std::vector<std::int32_t> offsets_;
};

}  // namespace corvane
