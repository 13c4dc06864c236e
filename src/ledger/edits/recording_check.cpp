#include "ledger/edits/recording_check.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <memory>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

#include "ledger/accounting/booking.h"
#include "ledger/portfolio/portfolio_manager_error.h"
#include "ledger/transaction/transaction_effect.h"

namespace corvane {
namespace {

/// Whether a million such numbers can be added up without losing a digit.
bool isModest(const Decimal& number) {
  static const Decimal limit = Decimal::fromMantissa(Sign::plus, 1, 15);
  return !number.isNaN() && number.exponent() >= -15 && abs(number) < limit;
}

bool isModest(const std::optional<Decimal>& number) {
  return !number || isModest(*number);
}

bool isModest(const TransactionEffect& effect) {
  return isModest(effect.amount) && isModest(effect.equivalentAmount) &&
         isModest(effect.sharesAdded) && isModest(effect.declaredShares) &&
         isModest(effect.splitInto) && isModest(effect.costAdded);
}

/// The balances of one asset along its rows, of which some are not there yet. A binary tree over
/// the rows, so that a row arrives in logarithmic time.
class BalanceLine {
 public:
  /// What a row does to the balance.
  struct Step {
    Decimal change;
    bool mustNotLeaveLess = false;  ///< the balance after it may not be below 0
    bool declaresBalance = false;   ///< the balance before it has to stay what it is
  };

  /// Makes room for one more row, which is not there yet. Returns its place.
  std::size_t addPlace() { return places_++; }
  void setStart(const Decimal& balance) { start_ = balance; }

  void place(std::size_t place, const Step& step) {
    if (nodes_.empty()) {
      leaves_ = std::bit_ceil(std::max<std::size_t>(places_, 1));
      nodes_.resize(2 * leaves_);
    }
    std::size_t node = leaves_ + place;
    nodes_[node] = {step.change, step.mustNotLeaveLess ? std::optional(step.change) : std::nullopt,
                    step.declaresBalance ? 1U : 0U};
    for (node /= 2; node > 0; node /= 2) {
      nodes_[node] = joined(nodes_[2 * node], nodes_[2 * node + 1]);
    }
  }

  /// The balance before the row at `place`, of those that are there.
  [[nodiscard]] Decimal balanceBefore(std::size_t place) const {
    Decimal sum = start_;
    for (std::size_t node = leaves_ + place; !nodes_.empty() && node > 1; node /= 2) {
      sum += node % 2 == 1 ? nodes_[node - 1].sum : Decimal();
    }
    return sum;
  }
  [[nodiscard]] bool isDeclaredBehind(std::size_t place) const {
    for (std::size_t node = leaves_ + place; !nodes_.empty() && node > 1; node /= 2) {
      if (node % 2 == 0 && nodes_[node + 1].declarations > 0) {
        return true;
      }
    }
    return false;
  }
  [[nodiscard]] bool goesBelowZero() const {
    return !nodes_.empty() && nodes_[1].least && start_ + *nodes_[1].least < 0;
  }

 private:
  struct Node {
    Decimal sum = {};
    std::optional<Decimal> least = {};  ///< the least sum up to a row that may not leave less
    unsigned declarations = 0;
  };

  static Node joined(const Node& left, const Node& right) {
    Node node{left.sum + right.sum, left.least, left.declarations + right.declarations};
    if (right.least) {
      const Decimal least = left.sum + *right.least;
      node.least = node.least ? std::min(*node.least, least) : least;
    }
    return node;
  }

  Decimal start_;
  std::size_t places_ = 0;
  std::size_t leaves_ = 0;
  std::vector<Node> nodes_;
};

/// A row and its places in the lines of its cash and its holding.
struct Placed {
  const BasicTransaction* basic = nullptr;
  BalanceLine* cash = nullptr;
  std::size_t cashPlace = 0;
  BalanceLine* holding = nullptr;
  std::size_t holdingPlace = 0;
};

class RecordingCheck {
 public:
  RecordingCheck(const Portfolio& portfolio, const PortfolioSnapshot& start)
      : portfolio_(portfolio), start_(start) {}

  /// Lays the lines of `basics` and the rows already there, in the order that they will have.
  bool layOut(std::span<const BasicTransaction> basics, std::span<const TransactionPointer> rows) {
    std::vector<std::size_t> byDate(basics.size());
    std::iota(byDate.begin(), byDate.end(), std::size_t{0});
    std::ranges::stable_sort(byDate, {}, [&](std::size_t i) { return basics[i].settlementDate; });
    recorded_.resize(basics.size());
    existing_.reserve(rows.size());
    auto next = byDate.begin();
    for (const TransactionPointer& row : rows) {
      for (; next != byDate.end() && basics[*next].settlementDate < row->settlementDate(); ++next) {
        recorded_[*next] = placed(basics[*next]);
      }
      if (!areModest(*row)) {
        return false;
      }
      existing_.push_back(placed(row->basic));
    }
    for (; next != byDate.end(); ++next) {
      recorded_[*next] = placed(basics[*next]);
    }
    for (const Placed& row : existing_) {
      arrive(row, transactionEffect(row.basic->kind));
    }
    return areStartsModest_;
  }

  /// Lets the next of `basics` arrive. False where it, or a row behind it, might not be taken.
  bool takesNext() {
    const Placed& row = recorded_[taken_++];
    const TransactionEffect effect = transactionEffect(row.basic->kind);
    if (!isModest(effect) || !isBooked(*row.basic, effect, row)) {
      return false;
    }
    if (row.holding != nullptr && !effect.sharesAdded.isZero() &&
        row.holding->isDeclaredBehind(row.holdingPlace)) {
      return false;
    }
    arrive(row, effect);
    return portfolio_.allowsNegativeBalances ||
           ((row.cash == nullptr || !row.cash->goesBelowZero()) &&
            (row.holding == nullptr || !row.holding->goesBelowZero()));
  }

 private:
  static bool areModest(const PortfolioTransaction& row) {
    return isModest(row.cashNet) && isModest(row.sharesNet) && isModest(row.costBasePrior) &&
           isModest(transactionEffect(row.basic.kind));
  }

  Placed placed(const BasicTransaction& basic) {
    Placed row{.basic = &basic};
    if (const Currency* currency = basic.currency()) {
      const auto [line, isNew] = cash_.try_emplace(*currency);
      if (isNew) {
        start(line->second, start_.currencySnapshots.get(*currency).cashOnHand);
      }
      row.cash = &line->second;
      row.cashPlace = row.cash->addPlace();
    }
    if (const EquityPointer* equity = basic.equity()) {
      const auto [line, isNew] = holdings_.try_emplace(*equity);
      if (isNew) {
        const auto holding = start_.equitySnapshots.get(*equity);
        start(line->second, holding.sharesHeld);
        areStartsModest_ = areStartsModest_ && isModest(holding.costBase) &&
                           isModest(holding.cumulativeCapitalGain);
      }
      row.holding = &line->second;
      row.holdingPlace = row.holding->addPlace();
    }
    return row;
  }

  void start(BalanceLine& line, const Decimal& balance) {
    line.setStart(balance);
    areStartsModest_ = areStartsModest_ && isModest(balance);
  }

  void arrive(const Placed& row, const TransactionEffect& effect) const {
    if (row.cash != nullptr) {
      row.cash->place(row.cashPlace, {.change = effect.cashAdded(portfolio_.usesCashAccounts),
                                      .mustNotLeaveLess = true});
    }
    if (row.holding != nullptr) {
      // A yield that does not declare its holding does so from its first walk on.
      row.holding->place(row.holdingPlace, {.change = effect.sharesAdded,
                                            .mustNotLeaveLess = effect.movesShares(),
                                            .declaresBalance = !effect.movesShares()});
    }
  }

  /// Whether the rules take the transaction itself, on the balances of those before it.
  bool isBooked(const BasicTransaction& basic, const TransactionEffect& effect,
                const Placed& row) const {
    PortfolioSnapshot state;
    if (row.cash != nullptr) {
      state.currencySnapshots.set(*effect.currency,
                                  {row.cash->balanceBefore(row.cashPlace), 0, {}});
    }
    if (row.holding != nullptr) {
      state.equitySnapshots.set(*effect.equity,
                                {row.holding->balanceBefore(row.holdingPlace), {}, 0, 0});
    }
    try {
      (void)book(basic, nullptr, portfolio_, state);
    } catch (const PortfolioManagerError&) {
      return false;
    }
    return true;
  }

  const Portfolio& portfolio_;
  const PortfolioSnapshot& start_;
  std::unordered_map<Currency, BalanceLine> cash_;
  EquityMap<BalanceLine> holdings_;
  std::vector<Placed> existing_;
  std::vector<Placed> recorded_;
  std::size_t taken_ = 0;
  bool areStartsModest_ = true;
};

}  // namespace

std::size_t countOfSureRecordings(const std::vector<BasicTransaction>& basics,
                                  std::span<const TransactionPointer> rows,
                                  const Portfolio& portfolio, const PortfolioSnapshot& start) {
  const auto dated = std::ranges::find_if_not(basics, [](const BasicTransaction& basic) {
    return std::isfinite(basic.settlementDate.timeIntervalSinceReferenceDate());
  });
  const std::span candidates(basics.begin(), dated);
  RecordingCheck check(portfolio, start);
  if (!check.layOut(candidates, rows)) {
    return 0;
  }
  std::size_t sure = 0;
  while (sure < candidates.size() && check.takesNext()) {
    ++sure;
  }
  return sure;
}

}  // namespace corvane
