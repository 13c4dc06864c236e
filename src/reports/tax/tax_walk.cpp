#include "reports/tax/tax_walk.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "reports/series/report_days.h"
#include "reports/tax/equity_splits.h"
#include "reports/tax/share_matching.h"

namespace corvane {
namespace {

using Kind = TaxRow::Kind;
constexpr int windowDays = 30;

using Holdings = std::map<std::size_t, Decimal>;  ///< shares by portfolio

void move(Holdings& holdings, const TaxRow& row) {
  Decimal& held = holdings[row.portfolio];
  switch (row.kind) {
    case Kind::purchase:
    case Kind::journaled:
      held += row.shares;
      break;
    case Kind::sale:
      held -= row.shares;
      break;
    case Kind::split:
      held += row.splitInto - row.splitFrom;
      break;
    case Kind::reinvestedDistribution:
    case Kind::returnOfCapital:
      break;
  }
}

/// `amount` in parts that are as `weights` to each other and add up to it, each in minor units;
/// the cents that are left over go where most was cut off.
std::vector<Decimal> dividedByWeights(const Decimal& amount, const std::vector<Decimal>& weights,
                                      const Currency& currency) {
  const Decimal sum = std::accumulate(weights.begin(), weights.end(), Decimal());
  std::vector<Decimal> parts;
  // Times `sum`: quotients without an end would tell equal rests apart.
  std::vector<Decimal> rests;
  Decimal left = amount;
  for (const Decimal& weight : weights) {
    const Decimal exact = amount * weight;
    parts.push_back(rounded(exact / sum, currency.minorUnits, RoundingMode::down));
    rests.push_back(exact - parts.back() * sum);
    left -= parts.back();
  }
  const Decimal unit = Decimal::fromParts(Sign::plus, -currency.minorUnits, 1);
  while (left > 0) {
    const auto most = std::ranges::max_element(rests);
    const Decimal given = std::min(unit, left);
    parts[static_cast<std::size_t>(most - rests.begin())] += given;
    *most -= unit * sum;
    left -= given;
  }
  return parts;
}

class TaxWalker {
 public:
  TaxWalker(std::span<const TaxRow> rows, std::span<const TaxHolder> holders, const TaxRules& rules)
      : rows_(rows), holders_(holders), rules_(rules), splits_(rows) {
    for (const TaxRow& row : rows) {
      holderOf_[row.portfolio] = row.holder;
    }
    walk_.pools.resize(holders.size());
  }

  TaxWalk walk() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      move(held_, rows_[i]);
      if (holders_[rows_[i].holder].isTaxable) {
        book(i);
      }
      walk_.poolsAfter.push_back(walk_.pools[rows_[i].holder]);
      if (!walk_.disposals.empty() && walk_.disposals.back().row == i) {
        addDenied(walk_.disposals.back().superficial);
      }
    }
    return std::move(walk_);
  }

 private:
  [[nodiscard]] Decimal inMinorUnits(const Decimal& amount) const {
    return roundedToMinorUnits(amount, rules_.currency);
  }

  void book(std::size_t i) {
    const TaxRow& row = rows_[i];
    TaxWalk::Pool& pool = walk_.pools[row.holder];
    switch (row.kind) {
      case Kind::purchase:
        pool.take(row.shares, row.amount, rules_.currency);
        break;
      case Kind::sale:
        walk_.disposals.push_back(disposal(i, pool));
        pool.giveUp(row.shares, rules_.currency);
        break;
      case Kind::journaled:
        pool.journal(row.shares, row.amount, rules_.currency);
        break;
      case Kind::split:
        pool.shares += row.splitInto - row.splitFrom;
        break;
      case Kind::reinvestedDistribution:
        pool.addCost(row.amount, rules_.currency);
        break;
      case Kind::returnOfCapital:
        if (const Decimal beyond = pool.returnCost(row.amount, rules_.currency); beyond > 0) {
          walk_.deemedGains.push_back({i, beyond});
        }
        break;
    }
  }

  [[nodiscard]] TaxDisposal disposal(std::size_t i, const TaxWalk::Pool& pool) const {
    const TaxRow& row = rows_[i];
    TaxDisposal made{.row = i,
                     .sharesBefore = pool.shares,
                     .costBefore = pool.cost,
                     .costDisposed = {},
                     .gain = {},
                     .superficial = superficialWindow(row.day),
                     .taxGain = {},
                     .isShort = pool.shares < row.shares,
                     .matches = {}};
    if (pool.shares > 0) {
      made.costDisposed = pool.cost * row.shares / pool.shares;
    }
    made.gain = inMinorUnits(row.amount - made.costDisposed);
    made.superficial.sold = row.shares;
    if (made.gain < 0 && rules_.country == TaxCountry::canada && !made.isShort) {
      deny(made, row);
    }
    made.taxGain = made.gain + made.superficial.denied;
    return made;
  }

  /// What was bought in the window, in shares of the day of row `i`: by holder, and journaled in.
  struct Bought {
    std::map<std::size_t, Decimal> byHolder;
    Decimal sum;
    std::vector<SuperficialLoss::Purchase> rows;
  };
  [[nodiscard]] Bought boughtAround(std::size_t i, const SuperficialLoss& window) const {
    Bought bought;
    std::map<std::size_t, Decimal> journaled;
    Decimal journaledIn;
    std::vector<SuperficialLoss::Purchase> journaledRows;
    const auto first =
        std::ranges::lower_bound(rows_, window.from, std::less<>(), &TaxRow::day) - rows_.begin();
    for (auto k = static_cast<std::size_t>(first); k < rows_.size() && rows_[k].day <= window.to;
         ++k) {
      const TaxRow& row = rows_[k];
      const Decimal shares = splits_.converted(row.shares, splits_.before(k), splits_.before(i));
      if (row.kind == Kind::purchase) {
        bought.byHolder[row.holder] += shares;
        bought.sum += shares;
        bought.rows.push_back({k, shares});
      } else if (row.kind == Kind::journaled) {
        journaled[row.holder] += shares;
        journaledIn += shares;
        journaledRows.push_back({k, shares});
      }
    }
    if (journaledIn > 0) {
      bought.rows.insert(bought.rows.end(), journaledRows.begin(), journaledRows.end());
      bought.sum += journaledIn;
      for (const auto& [holder, shares] : journaled) {
        bought.byHolder[holder] += std::max(shares, Decimal(0));
      }
    }
    return bought;
  }

  /// What each holder has at the end of the window, in shares of the day of row `i`.
  [[nodiscard]] std::map<std::size_t, Decimal> heldAfter(std::size_t i,
                                                         const SuperficialLoss& window) const {
    Holdings holdings = held_;
    for (std::size_t k = i + 1; k < rows_.size() && rows_[k].day <= window.to; ++k) {
      move(holdings, rows_[k]);
    }
    std::map<std::size_t, Decimal> byHolder;
    for (const auto& [portfolio, shares] : holdings) {
      byHolder[holderOf_.at(portfolio)] +=
          splits_.converted(shares, splits_.upTo(portfolio, window.to), splits_.before(i));
    }
    return byHolder;
  }

  void deny(TaxDisposal& made, const TaxRow& row) const {
    SuperficialLoss& loss = made.superficial;
    loss.isProvisional = rules_.today < loss.to;
    Bought bought = boughtAround(made.row, loss);
    const auto held = heldAfter(made.row, loss);
    loss.bought = bought.sum;
    loss.purchases = std::move(bought.rows);
    for (const auto& [holder, shares] : held) {
      loss.heldAtEnd += shares;
      loss.holdings.push_back({holder, shares});
    }
    const Decimal counted = std::min({row.shares, loss.bought, loss.heldAtEnd});
    if (counted <= 0) {
      return;
    }
    loss.denied = inMinorUnits(-made.gain * counted / row.shares);
    std::vector<std::size_t> buyers;
    std::vector<Decimal> weights;
    for (const auto& [holder, shares] : bought.byHolder) {
      const auto own = held.find(holder);
      if (shares > 0 && own != held.end() && own->second > 0) {
        buyers.push_back(holder);
        weights.push_back(own->second);
      }
    }
    loss.isOverApplied = std::accumulate(weights.begin(), weights.end(), Decimal()) < counted;
    if (!buyers.empty()) {
      const auto parts = dividedByWeights(loss.denied, weights, rules_.currency);
      for (std::size_t k = 0; k < buyers.size(); ++k) {
        loss.additions.push_back({buyers[k], parts[k]});
      }
    }
  }

  void addDenied(const SuperficialLoss& loss) {
    for (const auto& [holder, amount] : loss.additions) {
      if (holders_[holder].isTaxable) {
        walk_.pools[holder].cost += amount;
      }
    }
  }

  std::span<const TaxRow> rows_;
  std::span<const TaxHolder> holders_;
  const TaxRules& rules_;
  const EquitySplits splits_;
  std::map<std::size_t, std::size_t> holderOf_;
  Holdings held_;
  TaxWalk walk_;
};

}  // namespace

SuperficialLoss superficialWindow(const YearMonthDay& day) {
  SuperficialLoss loss;
  loss.from = daysAfter(day, -windowDays);
  loss.to = daysAfter(day, windowDays);
  return loss;
}

TaxWalk walkTaxes(std::span<const TaxRow> rows, std::span<const TaxHolder> holders,
                  const TaxRules& rules) {
  return rules.country == TaxCountry::unitedKingdom ? matchShares(rows, holders, rules)
                                                    : TaxWalker(rows, holders, rules).walk();
}

}  // namespace corvane
