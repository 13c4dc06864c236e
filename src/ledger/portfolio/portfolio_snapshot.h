// The balance sheet of a portfolio at one moment.
#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>

#include "core/decimal/decimal.h"
#include "core/market/equity_info.h"
#include "core/money/currency.h"

namespace corvane {

/// Balances by key, of which none is ever the default: a missing key and an all-zero balance are
/// one and the same state, and a reader cannot tell them apart.
template <typename Key, typename Balance, typename Hash, typename Equal>
class BalanceMap {
 public:
  using Storage = std::unordered_map<Key, Balance, Hash, Equal>;
  using const_iterator = typename Storage::const_iterator;

  /// The balance of `key`, the default where there is none.
  [[nodiscard]] Balance get(const Key& key) const {
    const auto found = balances_.find(key);
    return found == balances_.end() ? Balance() : found->second;
  }

  /// Makes `balance` that of `key`.
  void set(const Key& key, const Balance& balance) {
    if (balance == Balance()) {
      balances_.erase(key);
    } else {
      balances_.insert_or_assign(key, balance);
    }
  }

  /// Lets `change(balance)` alter the balance of `key` in place. One lookup, for the walk over a
  /// ledger. When `change` throws, a default entry may be left behind: the map is then good only to
  /// be thrown away.
  template <typename Change>
  void update(const Key& key, Change&& change) {
    const auto entry = balances_.try_emplace(key).first;
    change(entry->second);
    if (entry->second == Balance()) {
      balances_.erase(entry);
    }
  }

  /// Makes room for `count` balances.
  void reserve(std::size_t count) { balances_.reserve(count); }

  [[nodiscard]] std::size_t size() const { return balances_.size(); }
  [[nodiscard]] bool isEmpty() const { return balances_.empty(); }
  [[nodiscard]] const_iterator begin() const { return balances_.begin(); }
  [[nodiscard]] const_iterator end() const { return balances_.end(); }

  /// Equal balances for equal keys, by the key's own rule of equality.
  friend bool operator==(const BalanceMap& left, const BalanceMap& right) {
    if (left.size() != right.size()) {
      return false;
    }
    for (const auto& [key, balance] : left) {
      const auto found = right.balances_.find(key);
      if (found == right.balances_.end() || !(found->second == balance)) {
        return false;
      }
    }
    return true;
  }

 private:
  Storage balances_;
};

/// Cash per currency and holdings per equity. The ledger's own snapshots carry no prices and no
/// rates; those that a view asks for do.
struct PortfolioSnapshot {
  struct CurrencySnapshot {
    Decimal cashOnHand;
    Decimal netCashDeposited;  ///< deposits less withdrawals since the start of the ledger
    /// Units of the primary currency for one of this currency.
    std::optional<Decimal> exchangeRate;
    friend bool operator==(const CurrencySnapshot&, const CurrencySnapshot&) = default;
  };

  struct EquitySnapshot {
    Decimal sharesHeld;                 ///< may be fractional, and negative where that is allowed
    std::optional<Decimal> sharePrice;  ///< in the equity's own currency
    Decimal costBase;                   ///< in the primary currency
    Decimal cumulativeCapitalGain;      ///< all gains realized so far, in the primary currency
    friend bool operator==(const EquitySnapshot&, const EquitySnapshot&) = default;
  };

  BalanceMap<Currency, CurrencySnapshot, std::hash<Currency>, std::equal_to<Currency>>
      currencySnapshots;
  BalanceMap<EquityPointer, EquitySnapshot, EquityIdentity, EquityIdentity> equitySnapshots;

  /// What the holding of `equity` is worth in the primary currency; none where its price or the
  /// rate of its currency is not known.
  [[nodiscard]] std::optional<Decimal> marketValue(const EquityPointer& equity) const {
    const EquitySnapshot holding = equitySnapshots.get(equity);
    const auto rate = currencySnapshots.get(equity->currency).exchangeRate;
    if (!holding.sharePrice || !rate) {
      return std::nullopt;
    }
    return holding.sharesHeld * *holding.sharePrice * *rate;
  }

  friend bool operator==(const PortfolioSnapshot&, const PortfolioSnapshot&) = default;
};

}  // namespace corvane
