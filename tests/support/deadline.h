// How long a test waits.
#pragma once

#include <chrono>

namespace corvane::testing {

/// For what another thread or a service is to do: a test that has waited this long fails.
inline constexpr std::chrono::seconds deadline(20);

}  // namespace corvane::testing
