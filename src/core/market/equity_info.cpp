#include "core/market/equity_info.h"

namespace corvane {

EquityInfo::EquityInfo(std::string id, std::weak_ptr<QuoteProvider> provider)
    : quoteProvider(std::move(provider)),
      symbol(id),
      calendar(TimeZone::current()),
      currency(Currency::noCurrency()),
      id_(std::move(id)) {}

DateRange EquityInfo::fullDateRange() const {
  return {firstTradeDate.value_or(Date::distantPast()), recentDate.value_or(Date::distantFuture())};
}

std::string EquityInfo::description() const {
  return id_ + " (" + symbol + ") (" + exchange.value_or("?") + "/" + std::string(currency.code) +
         ")";
}

bool operator==(const EquityInfo& left, const EquityInfo& right) {
  if (&left == &right) {
    return true;
  }
  const auto leftProvider = left.quoteProvider.lock();
  return leftProvider != nullptr && leftProvider == right.quoteProvider.lock() &&
         left.id_ == right.id_;
}

std::ostream& operator<<(std::ostream& out, const EquityInfo& equity) {
  return out << equity.description();
}

}  // namespace corvane
