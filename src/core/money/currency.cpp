#include "core/money/currency.h"

#include <string>

#include "core/money/currency_almanac.h"
#include "platform/fatal_error.h"

namespace corvane {
namespace {

const Currency& known(std::string_view code) {
  const auto found = Currency::byCode().find(code);
  assert(found != Currency::byCode().end() &&
         "the list of currencies lacks one that it always has");
  return found->second;
}

}  // namespace

const Currency::CodeTable& Currency::byCode() {
  return CurrencyAlmanac::allCurrenciesByCode();
}

const Currency::NumberTable& Currency::byNumber() {
  static const NumberTable table = currenciesByNumber(byCode());
  return table;
}

Currency::NumberTable currenciesByNumber(const Currency::CodeTable& currencies) {
  Currency::NumberTable table;
  for (const auto& [code, currency] : currencies) {
    if (!table.emplace(currency.number, currency).second) {
      fatalError("Duplicate values for key: '" + std::to_string(currency.number) + "'");
    }
  }
  return table;
}

const Currency& Currency::cad() {
  static const Currency& currency = known("CAD");
  return currency;
}

const Currency& Currency::usd() {
  static const Currency& currency = known("USD");
  return currency;
}

const Currency& Currency::noCurrency() {
  static const Currency& currency = known("XXX");
  return currency;
}

std::string Currency::description() const {
  return std::string(code) + "/" + std::to_string(number);
}

std::ostream& operator<<(std::ostream& out, const Currency& currency) {
  return out << currency.description();
}

}  // namespace corvane
