// Why the market-data service did not answer as it should.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "platform/error.h"

namespace corvane {

/// The cases of YahooProviderError.
struct YahooProviderErrorCases {
  /// The service gives no access.
  struct BootstrapFailed {
    std::string text;
    friend bool operator==(const BootstrapFailed&, const BootstrapFailed&) = default;
  };
  /// The service says in its answer what is wrong.
  struct APIError {
    std::optional<std::string> code;
    std::string description;
    friend bool operator==(const APIError&, const APIError&) = default;
  };
  struct HTTPResponse {
    int statusCode;
    friend bool operator==(const HTTPResponse&, const HTTPResponse&) = default;
  };
  /// The answer is no JSON, or lacks its result.
  struct IncompleteData {
    friend bool operator==(IncompleteData, IncompleteData) = default;
  };
  using Case = std::variant<BootstrapFailed, APIError, HTTPResponse, IncompleteData>;
};

/// A refusal of the service. Faults of the transport arrive as URLError, answers that do not have
/// the agreed form as JSONError.
class YahooProviderError : public VariantError<YahooProviderError, YahooProviderErrorCases> {
 public:
  using VariantError::VariantError;

  [[nodiscard]] std::optional<std::string> description() const override;
};

}  // namespace corvane
