// An equity as it was at one moment.
#pragma once

#include "core/market/equity_info.h"

namespace corvane {

/// A copy of `equity` for work on other threads, in which nothing changes when the provider brings
/// the equity up to date or is put into another one's place. It equals the original for as long as
/// the provider lives, whom it does not keep alive. Main queue only; the copy may be read on any
/// thread.
[[nodiscard]] EquityPointer frozenEquity(const EquityInfo& equity);

}  // namespace corvane
