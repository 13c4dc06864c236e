// Times that a clock can be moved by.
#pragma once

#include <algorithm>
#include <chrono>

#include "platform/async/dispatch_queue.h"

namespace corvane {

/// `duration` in the clock's own unit, held to between none and some thirty years: a longer one, or
/// an infinite one, would overflow the clock and mean no time at all.
[[nodiscard]] inline std::chrono::steady_clock::duration clampedDuration(
    DispatchQueue::Duration duration) {
  constexpr double longestSeconds = 1e9;
  const DispatchQueue::Duration held(std::clamp(duration.count(), 0.0, longestSeconds));
  return std::chrono::ceil<std::chrono::steady_clock::duration>(held);
}

}  // namespace corvane
