// The lines at the top of an equity's screen.
#pragma once

#include <string>

#include "core/market/equity_info.h"
#include "platform/system/user_defaults.h"
#include "platform/text/styled/attributed_text.h"
#include "platform/time/date.h"

namespace corvane {

struct EquityHeading {
  std::string symbol;
  std::string name;        ///< empty where it is not known
  std::string price;       ///< empty where it is not known
  AttributedText summary;  ///< the change, its date and the session; empty without a price
};

/// What is known of `equity` (null for none) as told at `now`. The change is left out where the
/// close before is not known, and a session that has not begun is said to open.
[[nodiscard]] EquityHeading equityHeading(const EquityPointer& equity, Date now,
                                          const UserDefaults& defaults);

}  // namespace corvane
