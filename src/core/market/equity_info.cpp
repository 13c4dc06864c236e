#include "core/market/equity_info.h"

#include <algorithm>

namespace corvane {

EquityInfo::EquityInfo(std::string id, std::weak_ptr<QuoteProvider> provider)
    : quoteProvider(std::move(provider)),
      symbol(id),
      calendar(TimeZone::current()),
      currency(Currency::noCurrency()),
      id_(std::move(id)) {}

DateRange EquityInfo::fullDateRange() const {
  const Date end = recentDate.value_or(Date::distantFuture());
  // A service may tell a first trade after the last one.
  return {std::min(firstTradeDate.value_or(Date::distantPast()), end), end};
}

std::string EquityInfo::description() const {
  return id_ + " (" + symbol + ") (" + exchange.value_or("?") + "/" + std::string(currency.code) +
         ")";
}

bool operator==(const EquityInfo& left, const EquityInfo& right) {
  if (&left == &right) {
    return true;
  }
  // Ids never change, so that most comparisons on other threads touch nothing that a refresh sets.
  if (left.id_ != right.id_) {
    return false;
  }
  const auto leftProvider = left.quoteProvider.lock();
  return leftProvider != nullptr && leftProvider == right.quoteProvider.lock();
}

std::ostream& operator<<(std::ostream& out, const EquityInfo& equity) {
  return out << equity.description();
}

}  // namespace corvane
