// Why the market-data service did not answer as it should.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "platform/error.h"

namespace corvane {

/// A refusal of the service. Faults of the transport arrive as URLError, answers that do not have
/// the agreed form as JSONError.
class YahooProviderError : public ErrorValue<YahooProviderError> {
 public:
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

  explicit YahooProviderError(Case what) : case_(std::move(what)) {}

  [[nodiscard]] const Case& which() const { return case_; }
  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] bool hasSameValues(const YahooProviderError& other) const {
    return case_ == other.case_;
  }

 private:
  Case case_;
};

}  // namespace corvane
