// The address of the market-data service as a person types it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/system/user_defaults.h"

namespace corvane {

/// A server that speaks the service's protocol in place of the usual one. Typed as
/// "prices.example.org", "localhost:8080" or "http://127.0.0.1:8080"; without a scheme it is https.
struct QuoteServiceAddress {
  std::string scheme = "https";
  std::string host;
  std::optional<int> port = std::nullopt;

  /// None where `text` is no such address: another scheme, a path, a user, a port out of range.
  [[nodiscard]] static std::optional<QuoteServiceAddress> parse(std::string_view text);
  /// As it is typed; https and a port that is none are left out.
  [[nodiscard]] std::string text() const;

  /// The one that the settings name; none where they leave the usual one.
  [[nodiscard]] static std::optional<QuoteServiceAddress> of(const UserDefaults& settings);
  /// Has the settings name this one for all requests, or, for none, leave the usual one. The
  /// provider asks there from the next start of the program.
  static void keep(const std::optional<QuoteServiceAddress>& address, UserDefaults& settings);

  friend bool operator==(const QuoteServiceAddress&, const QuoteServiceAddress&) = default;
};

}  // namespace corvane
