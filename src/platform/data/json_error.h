// Why a JSON text could not be used.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/error.h"

namespace corvane {

/// Where in a document something is wrong, and what.
class JSONError : public ErrorValue<JSONError> {
 public:
  JSONError(std::string where, std::string what)
      : path(std::move(where)), reason(std::move(what)) {}

  /// "chart.result[0].meta.currency"; empty for the document as a whole.
  std::string path;
  std::string reason;

  /// "chart.result[0].meta.currency: expected text, found a number"
  [[nodiscard]] std::optional<std::string> description() const override {
    return path.empty() ? reason : path + ": " + reason;
  }
  [[nodiscard]] bool hasSameValues(const JSONError& other) const {
    return path == other.path && reason == other.reason;
  }
};

}  // namespace corvane
