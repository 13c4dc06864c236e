// Why an import or an export did not come to its end.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/error.h"

namespace corvane {

/// The errors of the framework. Rows count from 0, which is the file's first line.
class ImportExportError : public ErrorValue<ImportExportError> {
 public:
  /// A row has another number of cells than the rows before it have led to expect.
  struct InconsistentColumnLayout {
    int row;
    int haveColumns;
    int expectedColumns;
    friend bool operator==(const InconsistentColumnLayout&,
                           const InconsistentColumnLayout&) = default;
  };
  /// The broker could not make sense of a row, or the ledger did not take it.
  struct BrokerImportError {
    ErrorPointer underlyingError;  ///< never null
    int row;
    friend bool operator==(const BrokerImportError& left, const BrokerImportError& right) {
      return left.row == right.row && *left.underlyingError == *right.underlyingError;
    }
  };
  /// The broker is neither one for imports nor one for exports.
  struct InternalMisconfiguration {
    friend bool operator==(InternalMisconfiguration, InternalMisconfiguration) = default;
  };
  using Case = std::variant<InconsistentColumnLayout, BrokerImportError, InternalMisconfiguration>;

  /// The one button under the message; nothing is attempted when it is pressed.
  static constexpr std::array<std::string_view, 1> recoveryOptions = {"Cancel"};

  explicit ImportExportError(Case what) : case_(std::move(what)) {}

  [[nodiscard]] const Case& which() const { return case_; }
  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;
  [[nodiscard]] std::optional<std::string> advice() const override;
  [[nodiscard]] bool hasSameValues(const ImportExportError& other) const {
    return case_ == other.case_;
  }

 private:
  Case case_;
};

/// The user has pressed Cancel. Nobody is told of it, who knows it best.
class UserCancelledError : public ErrorValue<UserCancelledError> {
 public:
  static constexpr std::string_view domain = "NSCocoaErrorDomain";
  static constexpr int code = 3072;

  [[nodiscard]] std::optional<std::string> description() const override {
    return "The operation was cancelled.";
  }
  [[nodiscard]] bool hasSameValues(const UserCancelledError& /*other*/) const { return true; }
};

}  // namespace corvane
