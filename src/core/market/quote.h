// One bar of a price history.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "core/decimal/decimal.h"
#include "platform/time/date.h"

namespace corvane {

/// The trading of one period. Lists of quotes are kept in ascending fromDate.
struct Quote {
  Date fromDate;  ///< start of the bar, inclusive
  Date toDate;
  std::optional<Decimal> open;
  std::optional<Decimal> close;
  std::optional<Decimal> low;
  std::optional<Decimal> high;
  std::optional<std::int64_t> volume;  ///< shares traded

  /// The bar is incomplete: a snapshot of a running period, or a last bar cut off by the end of the
  /// data.
  bool isPartial = false;
  /// The bar was read from the cache and not from a source.
  bool isCached = false;

  /// The bar in one line, "?" for what is absent.
  [[nodiscard]] std::string description() const;

  /// Where a bar came from and whether it is complete take no part.
  friend bool operator==(const Quote& left, const Quote& right) {
    return left.fromDate == right.fromDate && left.toDate == right.toDate &&
           left.open == right.open && left.close == right.close && left.low == right.low &&
           left.high == right.high && left.volume == right.volume;
  }
  friend std::ostream& operator<<(std::ostream& out, const Quote& quote);
};

}  // namespace corvane
