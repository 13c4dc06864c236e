// Exact decimals beside the compiler's 34-digit _Decimal128 and Boost's 50-digit decimal float.
//
// "money" is up to 12 digits with 2 to 4 of them after the point, "wide" is 38 digits (which
// _Decimal128 holds rounded to 34). The compiler has no routine that reads text or rounds to a
// scale: reading is left out, and rounding is the usual addition of a large power of ten.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <boost/multiprecision/cpp_dec_float.hpp>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "core/decimal/decimal.h"

namespace corvane {
namespace decimal_bench {

typedef float Decimal128 __attribute__((mode(TD)));
using BoostDecimal = boost::multiprecision::cpp_dec_float_50;

constexpr std::size_t operandCount = 1024;

/// The same texts in every run.
class Texts {
 public:
  std::string money() {
    return number(static_cast<int>(3 + random_() % 10), static_cast<int>(2 + random_() % 3));
  }
  std::string wide() { return number(38, static_cast<int>(10 + random_() % 20)); }

 private:
  std::string number(int digits, int decimals) {
    std::string text(1, static_cast<char>('1' + random_() % 9));
    while (static_cast<int>(text.size()) < digits)
      text += static_cast<char>('0' + random_() % 10);
    while (static_cast<int>(text.size()) <= decimals)
      text.insert(0, "0");
    text.insert(text.size() - static_cast<std::size_t>(decimals), ".");
    return random_() % 4 == 0 ? "-" + text : text;
  }

  std::mt19937_64 random_{20010101};
};

std::vector<std::string> texts(std::string (Texts::*kind)()) {
  Texts source;
  std::vector<std::string> all(2 * operandCount);
  std::ranges::generate(all, [&] { return (source.*kind)(); });
  return all;
}

template <class Number>
Number read(const std::string& text) {
  return Number(text);
}

template <>
Decimal read(const std::string& text) {
  return *Decimal::fromString(text);
}

template <>
Decimal128 read(const std::string& text) {
  const auto ten = static_cast<Decimal128>(10);
  auto value = static_cast<Decimal128>(0);
  for (const char c : text) {
    if (c >= '0' && c <= '9')
      value = value * ten + static_cast<Decimal128>(c - '0');
  }
  for (auto decimals = text.size() - text.find('.') - 1; decimals > 0; --decimals)
    value /= ten;
  return text.front() == '-' ? -value : value;
}

Decimal roundToCents(const Decimal& value) {
  return rounded(value, 2, RoundingMode::bankers);
}

Decimal128 roundToCents(Decimal128 value) {
  // At 10^31 the last of 34 digits is the second decimal.
  static const Decimal128 shift = read<Decimal128>("1" + std::string(31, '0') + ".0");
  return value < static_cast<Decimal128>(0) ? (value - shift) + shift : (value + shift) - shift;
}

BoostDecimal roundToCents(const BoostDecimal& value) {
  return round(value * 100) / 100;
}

/// Times `operation` on every pair of operands in turn.
template <class Number, class Operation>
void measure(const std::string& name, const std::vector<std::string>& spelled,
             Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    std::vector<Number> operands;
    for (const auto& text : spelled)
      operands.push_back(read<Number>(text));
    const Number* const left = operands.data();
    const Number* const right = left + operandCount;
    std::size_t i = 0;
    for (auto _ : state) {
      auto result = operation(left[i], right[i]);
      benchmark::DoNotOptimize(result);
      i = (i + 1) % operandCount;
    }
  });
}

template <class Number>
void measureReading(const std::string& name, const std::vector<std::string>& spelled) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
      Number result = read<Number>(spelled[i]);
      benchmark::DoNotOptimize(result);
      i = (i + 1) % operandCount;
    }
  });
}

template <class Number>
void measureAll(const std::string& type) {
  for (const auto& [size, spelled] :
       {std::pair("/money", texts(&Texts::money)), std::pair("/wide", texts(&Texts::wide))}) {
    const auto name = [&](std::string_view operation) {
      return type + "/" + std::string(operation) + size;
    };
    using N = const Number&;
    measure<Number>(name("add"), spelled, [](N a, N b) { return Number(a + b); });
    measure<Number>(name("subtract"), spelled, [](N a, N b) { return Number(a - b); });
    measure<Number>(name("multiply"), spelled, [](N a, N b) { return Number(a * b); });
    measure<Number>(name("divide"), spelled, [](N a, N b) { return Number(a / b); });
    measure<Number>(name("compare"), spelled, [](N a, N b) { return a < b; });
    measure<Number>(name("equal"), spelled, [](N a, N b) { return a == b; });
    measure<Number>(name("round"), spelled, [](N a, N) { return roundToCents(a); });
    if constexpr (!std::is_same_v<Number, Decimal128>) {
      measureReading<Number>(name("read"), spelled);
    }
  }
}

const bool registered = [] {
  measureAll<Decimal>("Decimal");
  measureAll<Decimal128>("_Decimal128");
  measureAll<BoostDecimal>("cpp_dec_float_50");
  return true;
}();

}  // namespace decimal_bench
}  // namespace corvane
