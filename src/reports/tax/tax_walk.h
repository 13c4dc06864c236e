// The cost base of one equity as its owner's tax return sees it: one pool for each person, over all
// of his portfolios, with losses denied that were superficial.
//
// The method for Canada is that of its tax law: the average cost of identical shares (Income Tax
// Act, s. 47), a deemed gain where a return of capital exceeds the cost (s. 40(3)), and the
// superficial loss (s. 54), whose denied part goes to the cost of those who bought. How a loss is
// divided among several buyers, and that settlement days count, follows the tax office's letters
// 2022-0940941C6 and 2021-0896031C6, which are practice and not law. That for the United Kingdom is
// in share_matching.h. None of this is tax advice.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "core/money/currency_amount.h"
#include "core/money/year_month_day.h"
#include "core/tax/tax_settings.h"
#include "reports/tax/tax_pool.h"

namespace corvane {

/// Somebody who holds shares: a person with his taxable portfolios, or one registered account.
struct TaxHolder {
  std::string name;
  bool isTaxable = true;  ///< what is added to a registered account's cost is lost for good
};

/// What happened to the shares of one equity. Money is in the primary currency.
struct TaxRow {
  enum class Kind { purchase, sale, journaled, split, reinvestedDistribution, returnOfCapital };
  Kind kind = Kind::purchase;
  YearMonthDay day;
  std::size_t holder = 0;     ///< a position among the holders
  std::size_t portfolio = 0;  ///< any number for each portfolio; a split is one portfolio's
  Decimal shares = {};        ///< bought or sold, positive; journaled in, or out where negative
  /// What a purchase cost, what a sale brought, what was distributed, or the cost journaled in,
  /// which may be negative.
  Decimal amount = {};
  Decimal splitFrom = {};  ///< holding of the portfolio before a split
  Decimal splitInto = {};
};

/// What of a loss is denied, and who gets it.
struct SuperficialLoss {
  YearMonthDay from;  ///< the window, both days inside: 30 days before the sale to 30 after
  YearMonthDay to;
  // All in shares of the day of the sale.
  Decimal sold;
  Decimal bought;     ///< by all in the window
  Decimal heldAtEnd;  ///< by all at the end of the window
  /// What `bought` is the sum of, and `heldAtEnd`; told of losses alone. Shares that were journaled
  /// out are negative.
  struct Purchase {
    std::size_t row;
    Decimal shares;
  };
  std::vector<Purchase> purchases = {};
  struct Holding {
    std::size_t holder;
    Decimal shares;
  };
  std::vector<Holding> holdings = {};

  struct Addition {
    std::size_t holder;
    Decimal amount;
  };
  Decimal denied;
  /// By the shares that the buyers hold at the end of the window. For a taxable holder it is in his
  /// cost base; for another it is lost.
  std::vector<Addition> additions;
  /// The buyers hold fewer shares than were counted: please check.
  bool isOverApplied = false;
  /// The window is not over; holdings are those of today.
  bool isProvisional = false;
};

/// The window around a sale on `day`.
[[nodiscard]] SuperficialLoss superficialWindow(const YearMonthDay& day);

struct TaxDisposal {
  std::size_t row;
  Decimal sharesBefore;  ///< of the pool
  Decimal costBefore;    ///< of the pool
  Decimal costDisposed;  ///< exact: costBefore × sold / sharesBefore
  Decimal gain;          ///< before anything is denied
  SuperficialLoss superficial;
  Decimal taxGain;       ///< gain + what is denied
  bool isShort = false;  ///< more was sold than the pool held; nothing is denied

  /// Where shares are matched with purchases: what the cost disposed of is the sum of.
  struct Match {
    enum class Rule { sameDay, next30Days, pool };
    Rule rule;
    YearMonthDay day;  ///< of the purchase; of the sale for the pool
    Decimal shares;    ///< in shares of the day of the sale
    Decimal cost;      ///< exact
    /// The same as `shares`, in those of the first purchase of its day; of the pool as `shares`.
    Decimal sharesOfPurchase;
  };
  std::vector<Match> matches;
};

struct TaxWalk {
  using Pool = TaxPool;
  struct DeemedGain {
    std::size_t row;
    Decimal amount;
  };
  std::vector<TaxDisposal> disposals;  ///< of taxable holders
  std::vector<DeemedGain> deemedGains;
  /// The pool of its holder after each row, before a denied loss is added to it.
  std::vector<Pool> poolsAfter;
  std::vector<Pool> pools;  ///< of each holder in the end
};

struct TaxRules {
  Currency currency;  ///< money is rounded to its minor units
  TaxCountry country = TaxCountry::canada;
  YearMonthDay today;
};

/// Walks `rows`, which ascend by day. Those of several portfolios on one day stand in the order in
/// which they count. O(rows), and the rows of a window for each loss.
[[nodiscard]] TaxWalk walkTaxes(std::span<const TaxRow> rows, std::span<const TaxHolder> holders,
                                const TaxRules& rules);

}  // namespace corvane
