#include "core/money/currency_amount.h"

#include "core/money/decimal_number_formatter.h"

namespace corvane {

std::string CurrencyAmount::description() const {
  return DecimalNumberFormatter::money(currency).string(amount).value_or(amount.description());
}

std::ostream& operator<<(std::ostream& out, const CurrencyAmount& amount) {
  return out << amount.amount << " " << std::string_view(amount.currency.code);
}

Decimal roundedToMinorUnits(const Decimal& amount, const Currency& currency) {
  return rounded(amount, currency.minorUnits, RoundingMode::bankers);
}

bool fitsMinorUnits(const Decimal& amount, const Currency& currency) {
  return amount.exponent() >= -currency.minorUnits;
}

}  // namespace corvane
