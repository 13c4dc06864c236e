#include "reports/tax/share_matching.h"

#include <algorithm>
#include <map>

#include "reports/series/report_days.h"
#include "reports/tax/equity_splits.h"

namespace corvane {
namespace {

using Rule = TaxDisposal::Match::Rule;

/// All that a holder bought on one day, which counts as one purchase.
struct DayOfPurchases {
  YearMonthDay day;
  std::size_t firstRow = 0;  ///< in whose shares the figures are
  Decimal shares;
  Decimal cost;
  Decimal unmatched;
};

class ShareMatcher {
 public:
  ShareMatcher(std::span<const TaxRow> rows, std::span<const TaxHolder> holders,
               const TaxRules& rules)
      : rows_(rows), holders_(holders), rules_(rules), splits_(rows), matches_(rows.size()) {
    walk_.pools.resize(holders.size());
    purchases_.resize(holders.size());
    collectPurchases();
    matchSales(Rule::sameDay, 0, 0);
    matchSales(Rule::next30Days, 1, daysOfMatching);
  }

  TaxWalk walk() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      if (holders_[rows_[i].holder].isTaxable) {
        book(i);
      }
      walk_.poolsAfter.push_back(walk_.pools[rows_[i].holder]);
    }
    return std::move(walk_);
  }

 private:
  [[nodiscard]] Decimal inMinorUnits(const Decimal& amount) const {
    return roundedToMinorUnits(amount, rules_.currency);
  }

  void collectPurchases() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      const TaxRow& row = rows_[i];
      if (row.kind != TaxRow::Kind::purchase) {
        continue;
      }
      auto& days = purchases_[row.holder];
      if (days.empty() || days.back().day != row.day) {
        days.push_back({row.day, i, {}, {}, {}});
      }
      DayOfPurchases& day = days.back();
      const Decimal shares =
          splits_.converted(row.shares, splits_.before(i), splits_.before(day.firstRow));
      day.shares += shares;
      day.unmatched += shares;
      day.cost += row.amount;
    }
  }

  /// Matches what is left of each sale with purchases `from` to `to` days after it.
  void matchSales(Rule rule, int from, int to) {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      const TaxRow& row = rows_[i];
      if (row.kind != TaxRow::Kind::sale || !holders_[row.holder].isTaxable) {
        continue;
      }
      auto& days = purchases_[row.holder];
      auto day = std::ranges::lower_bound(days, daysAfter(row.day, from), {}, &DayOfPurchases::day);
      for (; day != days.end() && day->day <= daysAfter(row.day, to); ++day) {
        matchSale(i, *day, rule);
      }
    }
  }

  void matchSale(std::size_t i, DayOfPurchases& day, Rule rule) {
    const auto toDay = [&](const Decimal& shares) {
      return splits_.converted(shares, splits_.before(i), splits_.before(day.firstRow));
    };
    const Decimal left = rows_[i].shares - matchedShares(i);
    const Decimal wanted = toDay(left);
    const Decimal taken = std::min(wanted, day.unmatched);
    if (taken <= 0) {
      return;
    }
    // All that is left is matched to the last digit, whatever a ratio of 3 has made of it.
    const Decimal ofSale =
        taken == wanted ? left
                        : splits_.converted(taken, splits_.before(day.firstRow), splits_.before(i));
    matches_[i].push_back({rule, day.day, ofSale, day.cost * taken / day.shares, taken});
    day.unmatched -= taken;
    if (rule == Rule::next30Days) {
      earlySales_[day.firstRow].push_back({rows_[i].portfolio, taken});
    }
  }

  [[nodiscard]] Decimal matchedShares(std::size_t i) const {
    Decimal sum;
    for (const TaxDisposal::Match& match : matches_[i]) {
      sum += match.shares;
    }
    return sum;
  }

  void book(std::size_t i) {
    const TaxRow& row = rows_[i];
    TaxWalk::Pool& pool = walk_.pools[row.holder];
    switch (row.kind) {
      case TaxRow::Kind::purchase:
        bookPurchase(i, pool);
        break;
      case TaxRow::Kind::sale:
        bookSale(i, pool);
        break;
      case TaxRow::Kind::journaled:
        pool.journal(row.shares, row.amount, rules_.currency);
        break;
      case TaxRow::Kind::split:
        bookSplit(row, pool);
        break;
      case TaxRow::Kind::reinvestedDistribution:
        pool.addCost(row.amount, rules_.currency);
        break;
      case TaxRow::Kind::returnOfCapital:
        if (const Decimal beyond = pool.returnCost(row.amount, rules_.currency); beyond > 0) {
          walk_.deemedGains.push_back({i, beyond});
        }
        break;
    }
  }

  /// What is not matched goes into the pool, with the first row of its day.
  void bookPurchase(std::size_t i, TaxWalk::Pool& pool) {
    const auto& days = purchases_[rows_[i].holder];
    const auto day = std::ranges::lower_bound(days, rows_[i].day, {}, &DayOfPurchases::day);
    if (day->firstRow != i) {
      return;
    }
    if (day->unmatched > 0) {
      pool.take(day->unmatched, day->cost * day->unmatched / day->shares, rules_.currency);
    }
    for (const auto& [portfolio, shares] : earlySales_[i]) {
      pending_[portfolio] -= shares;
    }
  }

  /// The pool keeps the shares that were sold and are bought again later: they grow with it, though
  /// the ledger's split is of what was left.
  void bookSplit(const TaxRow& row, TaxWalk::Pool& pool) {
    Decimal& pending = pending_[row.portfolio];
    pool.shares += row.splitInto - row.splitFrom;
    if (!pending.isZero() && !row.splitFrom.isZero()) {
      const Decimal after = pending * row.splitInto / row.splitFrom;
      pool.shares += after - pending;
      pending = after;
    }
  }

  void bookSale(std::size_t i, TaxWalk::Pool& pool) {
    const TaxRow& row = rows_[i];
    TaxDisposal made{.row = i,
                     .sharesBefore = pool.shares,
                     .costBefore = pool.cost,
                     .costDisposed = {},
                     .gain = {},
                     .superficial = superficialWindow(row.day),
                     .taxGain = {},
                     .matches = matches_[i]};
    for (const TaxDisposal::Match& match : matches_[i]) {
      pending_[row.portfolio] += match.rule == Rule::next30Days ? match.shares : Decimal();
    }
    const Decimal rest = row.shares - matchedShares(i);
    made.isShort = rest > pool.shares;
    if (rest > 0) {
      const Decimal cost = pool.shares > 0 ? pool.cost * rest / pool.shares : Decimal();
      made.matches.push_back({Rule::pool, row.day, rest, cost, rest});
      pool.giveUp(rest, rules_.currency);
      made.superficial.isProvisional = rules_.today < made.superficial.to;
    }
    for (const TaxDisposal::Match& match : made.matches) {
      made.costDisposed += match.cost;
    }
    made.superficial.sold = row.shares;
    made.gain = inMinorUnits(row.amount - made.costDisposed);
    made.taxGain = made.gain;
    walk_.disposals.push_back(std::move(made));
  }

  struct EarlySale {
    std::size_t portfolio;
    Decimal shares;  ///< in those of the purchase
  };

  std::span<const TaxRow> rows_;
  std::span<const TaxHolder> holders_;
  const TaxRules& rules_;
  const EquitySplits splits_;
  std::vector<std::vector<DayOfPurchases>> purchases_;  ///< of each holder, ascending by day
  std::vector<std::vector<TaxDisposal::Match>> matches_;
  std::map<std::size_t, std::vector<EarlySale>> earlySales_;  ///< by the purchases that match them
  /// Shares by portfolio that were sold and are still to be bought again, in those of the moment.
  std::map<std::size_t, Decimal> pending_;
  TaxWalk walk_;
};

}  // namespace

TaxWalk matchShares(std::span<const TaxRow> rows, std::span<const TaxHolder> holders,
                    const TaxRules& rules) {
  return ShareMatcher(rows, holders, rules).walk();
}

}  // namespace corvane
