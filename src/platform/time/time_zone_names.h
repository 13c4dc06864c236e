// The names by which a person knows the time zones.
#pragma once

#include <string>
#include <vector>

namespace corvane {

/// The zones of places, "America/Toronto", in the order of their names, and "UTC" behind them. Each
/// is one that TimeZone::withIdentifier() knows. Places that have had two names are there twice.
[[nodiscard]] const std::vector<std::string>& timeZoneNames();

}  // namespace corvane
