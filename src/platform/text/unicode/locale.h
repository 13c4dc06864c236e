// Where the user lives, as far as it decides how numbers, money and dates are written.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// A language and region, such as "en_CA". A plain value; safe on any thread.
struct Locale {
  std::string identifier = "en_US";

  /// The user's locale: the first of LC_ALL, LC_MONETARY and LANG that is set, else the one that
  /// the system reports. Where the system has no preference ("C", "POSIX"), "en_US".
  [[nodiscard]] static Locale current();

  /// The ISO 4217 code of the money of the region; none where the identifier names no region.
  [[nodiscard]] std::optional<std::string> currencyCode() const;

  /// What this locale's language calls the currency ("Canadian Dollar"); none where it has no name.
  [[nodiscard]] std::optional<std::string> localizedCurrencyName(std::string_view code) const;

  friend bool operator==(const Locale&, const Locale&) = default;
};

}  // namespace corvane
