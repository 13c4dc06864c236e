// The record through which the whole system names what can be held: a share, a fund, an index, a
// currency pair.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "core/decimal/decimal.h"
#include "core/money/currency.h"
#include "platform/time/calendar.h"
#include "platform/time/date.h"

namespace corvane {

class QuoteProvider;

/// One equity as one provider knows it. There is one live object for each id and provider; only a
/// provider makes them. Main queue only, like the provider that fills the fields.
class EquityInfo {
 public:
  /// An equity of which only the id is known: the symbol equals it, the currency is the neutral
  /// one.
  EquityInfo(std::string id, std::weak_ptr<QuoteProvider> provider);
  EquityInfo(const EquityInfo&) = delete;
  EquityInfo& operator=(const EquityInfo&) = delete;

  /// Identity within the provider; never changes.
  [[nodiscard]] const std::string& id() const { return id_; }

  /// Who answers for this object. A provider that wraps another puts itself here when the object
  /// passes through it.
  std::weak_ptr<QuoteProvider> quoteProvider;

  /// Whether the fields below come from real data rather than from the constructor.
  bool isAuthoritative = false;
  std::string symbol;                   ///< the ticker that the user sees
  std::optional<std::string> exchange;  ///< the exchange's name
  std::optional<std::string> name;      ///< the security's long name
  Calendar calendar;                    ///< in the exchange's time zone
  Currency currency;                    ///< what it is traded in
  std::optional<Date> firstTradeDate;
  std::optional<DateRange> recentTradingPeriod;  ///< the latest regular session
  std::optional<Decimal> recentPrice;
  std::optional<Decimal> previousClosePrice;  ///< close of the session before the latest
  std::optional<Date> recentDate;             ///< when recentPrice was paid
  /// Why the latest refresh brought no price of this equity, in words for the user.
  std::optional<std::string> refreshProblem;

  /// From the first trade to the latest price; the distant past or future where one is not known.
  [[nodiscard]] DateRange fullDateRange() const;

  /// "AAPL (AAPL) (NMS/USD)": id, symbol, exchange or "?", currency code.
  [[nodiscard]] std::string description() const;

  /// The same object, or the same id at the same living provider. An equity whose provider is gone
  /// equals nothing but itself.
  friend bool operator==(const EquityInfo& left, const EquityInfo& right);
  friend std::ostream& operator<<(std::ostream& out, const EquityInfo& equity);

 private:
  std::string id_;
};

using EquityPointer = std::shared_ptr<EquityInfo>;

/// Hash and equality of equities by their identity, for containers keyed by equity. Neither takes a
/// null pointer.
struct EquityIdentity {
  std::size_t operator()(const EquityPointer& equity) const noexcept {
    return std::hash<std::string>()(equity->id());
  }
  bool operator()(const EquityPointer& left, const EquityPointer& right) const {
    return *left == *right;
  }
};

template <typename Value>
using EquityMap = std::unordered_map<EquityPointer, Value, EquityIdentity, EquityIdentity>;
using EquitySet = std::unordered_set<EquityPointer, EquityIdentity, EquityIdentity>;

}  // namespace corvane
