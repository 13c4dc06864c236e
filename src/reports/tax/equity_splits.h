// The splits of an equity that several portfolios hold.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <vector>

#include "reports/tax/tax_walk.h"

namespace corvane {

/// The splits of an equity, each once, although every portfolio has a row of its own for it, dated
/// a few days apart from the others' perhaps.
class EquitySplits {
 public:
  explicit EquitySplits(std::span<const TaxRow> rows);

  /// How many of them the shares of a row have behind them.
  [[nodiscard]] std::size_t before(std::size_t row) const { return applied_[row]; }
  /// The same for what a portfolio holds at the end of a day.
  [[nodiscard]] std::size_t upTo(std::size_t portfolio, const YearMonthDay& day) const;

  /// `shares` with `from` splits behind them as shares with `to` splits behind them.
  [[nodiscard]] Decimal converted(Decimal shares, std::size_t from, std::size_t to) const;

 private:
  struct Event {
    Decimal from;
    Decimal into;
    YearMonthDay first;
    std::map<std::size_t, YearMonthDay> days;  ///< by portfolio
  };

  void take(const TaxRow& row);
  [[nodiscard]] std::size_t countUpTo(std::size_t portfolio, const YearMonthDay& day,
                                      std::size_t ownSplits) const;

  std::vector<Event> events_;
  std::vector<std::size_t> applied_;
};

}  // namespace corvane
