// What stands above everything else on a portfolio's screen.
#pragma once

#include <string>

#include "ledger/portfolio/portfolio.h"
#include "platform/system/user_defaults.h"
#include "platform/text/styled/attributed_text.h"

namespace corvane {

struct PortfolioHeading {
  std::string name;
  std::string value;
  AttributedText summary;  ///< the gain, and how old the oldest price in the value is
};

/// The heading of `portfolio` by its newest balances and the latest prices. A value that lacks a
/// price or a rate is indeterminate and says so. `defaults` tells in which zone dates are shown.
[[nodiscard]] PortfolioHeading portfolioHeading(const PortfolioPointer& portfolio,
                                                const UserDefaults& defaults);

}  // namespace corvane
