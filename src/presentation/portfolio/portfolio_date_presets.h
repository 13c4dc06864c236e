// The choices of days that the screen of a portfolio offers.
#pragma once

#include <vector>

#include "platform/range.h"
#include "presentation/controls/query_dates_picker.h"

namespace corvane {

/// Presets for a ledger that spans `days`: all of it, spans that end today, and each of its years
/// but the one of `today`, newest first.
[[nodiscard]] std::vector<QueryDatesPicker::Preset> portfolioDatePresets(
    const ClosedRange<YearMonthDay>& days, const YearMonthDay& today);

}  // namespace corvane
