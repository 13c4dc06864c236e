#include "samplemarket/prices/currency_rates.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <string>
#include <utility>

#include "core/money/currency.h"
#include "samplemarket/prices/noise.h"

namespace corvane::samplemarket {

namespace {

/// Long-run worths in dollars, times 10^12.
constexpr std::int64_t dollar = 1000000000000;
constexpr std::array<std::pair<std::string_view, std::int64_t>, 34> longRunWorths = {{
    {"AED", 272300000000}, {"AUD", 715000000000},  {"BHD", 2652000000000}, {"BRL", 240000000000},
    {"CAD", 775000000000}, {"CHF", 1040000000000}, {"CLP", 1450000000},    {"CNY", 146000000000},
    {"CZK", 44500000000},  {"DKK", 155000000000},  {"EUR", 1155000000000}, {"GBP", 1420000000000},
    {"HKD", 128400000000}, {"HUF", 3300000000},    {"IDR", 72000000},      {"ILS", 282000000000},
    {"INR", 14800000000},  {"JPY", 8650000000},    {"KRW", 850000000},     {"KWD", 3290000000000},
    {"MXN", 61000000000},  {"MYR", 242000000000},  {"NOK", 123000000000},  {"NZD", 665000000000},
    {"PLN", 258000000000}, {"SAR", 266600000000},  {"SEK", 118000000000},  {"SGD", 730000000000},
    {"THB", 29500000000},  {"TRY", 95000000000},   {"TWD", 32300000000},   {"USD", dollar},
    {"VND", 43000000},     {"ZAR", 71000000000},
}};

/// A worth for the currencies that are not in the table, between a tenth of a cent and two dollars.
std::int64_t inventedWorth(std::string_view code) {
  const Noise noise(code);
  std::int64_t worth = dollar / 1000 * (100 + noise.uniform(0, 0, 1900)) / 1000;
  for (auto steps = noise.uniform(0, 1, 4); steps > 0; --steps) {
    worth *= 10;
  }
  return worth;
}

std::int64_t longRunWorth(std::string_view code) {
  const auto found =
      std::ranges::find(longRunWorths, code, [](const auto& entry) { return entry.first; });
  return found == longRunWorths.end() ? inventedWorth(code) : found->second;
}

}  // namespace

bool hasRate(std::string_view code) {
  // The codes for testing and for no currency at all are on the list too.
  return code != "XXX" && code != "XTS" && Currency::byCode().contains(code);
}

int rateDecimals(std::string_view base, std::string_view quote) {
  constexpr int digits = 7;
  Wide price = Wide{longRunWorth(base)} * powerOfTen(14) / longRunWorth(quote);  // 10^14 is 1
  int integerDigits = -14;
  while (price > 0) {
    price /= 10;
    ++integerDigits;
  }
  return std::clamp(digits - integerDigits, 2, 14);
}

CurrencyWorth::CurrencyWorth(std::string_view code)
    : seedStream_(Noise(code).bits(1, 0)),
      longRunWorth_(longRunWorth(code)),
      dailyDeviation_(code == "USD" ? 0 : 4500) {}

void CurrencyWorth::advance() {
  const Noise noise(Noise("currencies"), static_cast<std::int64_t>(seedStream_ >> 1U));
  deviation_ = deviation_ * 997 / 1000 + noise.normal(0, session_, dailyDeviation_);
  deviation_ = std::clamp<std::int64_t>(deviation_, -500000, 500000);
  ++session_;
}

Wide CurrencyWorth::worth() const {
  return Wide{longRunWorth_} * (1000000 + deviation_);
}

}  // namespace corvane::samplemarket
