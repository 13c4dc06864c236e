// What a portfolio knows of whoever keeps it.
#pragma once

#include "platform/time/calendar.h"

namespace corvane {

/// The base of the manager of portfolios. It stands below it, so that a row can tell its day.
class PortfolioKeeper {
 public:
  /// All year boundaries of the ledgers are taken in it. The user's calendar at creation.
  Calendar calendar = Calendar::current();

 protected:
  PortfolioKeeper() = default;
  ~PortfolioKeeper() = default;
};

}  // namespace corvane
