// Currencies by the codes and numbers of ISO 4217.
#pragma once

#include <array>
#include <cassert>
#include <cstdint>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>

namespace corvane {

/// The alphabetic code of a currency, such as "CAD", kept in place: at most seven bytes.
class CurrencyCode {
 public:
  static constexpr std::size_t maximumLength = 7;

  constexpr CurrencyCode() = default;
  constexpr CurrencyCode(std::string_view text)  // NOLINT(google-explicit-constructor): it is text
      : length_(static_cast<std::uint8_t>(text.size())) {
    assert(text.size() <= maximumLength && "a currency code is short");
    for (std::size_t i = 0; i < text.size(); ++i) {
      bytes_[i] = text[i];
    }
  }
  constexpr CurrencyCode(const char* text)  // NOLINT(google-explicit-constructor): it is text
      : CurrencyCode(std::string_view(text)) {}

  constexpr operator std::string_view() const {  // NOLINT(google-explicit-constructor): it is text
    return {bytes_.data(), length_};
  }

  friend constexpr bool operator==(const CurrencyCode&, const CurrencyCode&) = default;
  friend constexpr bool operator==(const CurrencyCode& code, const char* text) {
    return std::string_view(code) == text;
  }
  friend std::ostream& operator<<(std::ostream& out, const CurrencyCode& code) {
    return out << std::string_view(code);
  }

 private:
  std::array<char, maximumLength> bytes_{};
  std::uint8_t length_ = 0;
};

/// A currency. Currencies are equal when number and code are; the minor units take no part.
struct Currency {
  CurrencyCode code;
  std::int32_t number = 0;      ///< the numeric code
  std::int32_t minorUnits = 0;  ///< digits after the decimal point

  using CodeTable = std::map<std::string, Currency, std::less<>>;
  using NumberTable = std::unordered_map<int, Currency>;

  /// The known currencies, built once on first use from the published list. Any thread.
  [[nodiscard]] static const CodeTable& byCode();
  [[nodiscard]] static const NumberTable& byNumber();

  [[nodiscard]] static const Currency& cad();
  [[nodiscard]] static const Currency& usd();
  /// "XXX", which stands for an equity whose currency is not known.
  [[nodiscard]] static const Currency& noCurrency();

  /// "CAD/124"
  [[nodiscard]] std::string description() const;

  friend bool operator==(const Currency& left, const Currency& right) {
    return left.number == right.number && left.code == right.code;
  }
  friend std::ostream& operator<<(std::ostream& out, const Currency& currency);
};

static_assert(sizeof(Currency) == 16);

/// `currencies` by number. Two with one number are a fault of the data, which stops the program.
[[nodiscard]] Currency::NumberTable currenciesByNumber(const Currency::CodeTable& currencies);

}  // namespace corvane

template <>
struct std::hash<corvane::Currency> {
  std::size_t operator()(const corvane::Currency& currency) const noexcept {
    return std::hash<std::int32_t>()(currency.number);
  }
};
