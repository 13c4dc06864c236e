#include "marketdata/yahoo/price_unit.h"

#include <algorithm>
#include <string>

#include "core/money/currency_almanac.h"

namespace corvane {
namespace {

struct PartOfCurrency {
  std::string_view code;
  std::string_view currency;
  int decimals;
};

/// London, Johannesburg, Tel Aviv, futures in US cents, Kuwait.
constexpr PartOfCurrency partsOfCurrencies[] = {
    {"GBp", "GBP", 2}, {"GBX", "GBP", 2}, {"ZAc", "ZAR", 2}, {"ZAC", "ZAR", 2},
    {"ILA", "ILS", 2}, {"USX", "USD", 2}, {"KWF", "KWD", 3},
};

}  // namespace

std::optional<PriceUnit> PriceUnit::withCode(std::string_view code) {
  const auto part = std::ranges::find(partsOfCurrencies, code, &PartOfCurrency::code);
  const bool isPart = part != std::end(partsOfCurrencies);
  const auto& currencies = CurrencyAlmanac::allCurrenciesByCode();
  const auto currency = currencies.find(std::string(isPart ? part->currency : code));
  if (currency == currencies.end()) {
    return std::nullopt;
  }
  return PriceUnit{currency->second, isPart ? part->decimals : 0};
}

Decimal PriceUnit::amount(const Decimal& price) const {
  return decimals == 0 ? price : price * Decimal::fromParts(Sign::plus, -decimals, 1);
}

std::optional<Decimal> PriceUnit::amount(const std::optional<Decimal>& price) const {
  return price ? std::optional(amount(*price)) : std::nullopt;
}

}  // namespace corvane
