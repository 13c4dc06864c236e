// Whatever shows an equity: its screen and the tabs of that.
#pragma once

#include "core/market/equity_info.h"

namespace corvane {

class CurrentEquityHaving {
 public:
  virtual ~CurrentEquityHaving() = default;
  /// Null for none.
  [[nodiscard]] virtual const EquityPointer& currentEquity() const = 0;
  /// Shows `equity`. The same one once more fetches what is shown anew.
  virtual void setCurrentEquity(EquityPointer equity) = 0;
};

/// A tab of the screen of an equity. It asks the market for nothing while it is not shown.
class EquityTab : public CurrentEquityHaving {
 public:
  virtual void setShown(bool isShown) = 0;
};

}  // namespace corvane
