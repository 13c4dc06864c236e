// Why an import or an export did not come to its end.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/error.h"

namespace corvane {

/// The cases of ImportExportError.
struct ImportExportErrorCases {
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
};

/// The errors of the framework. Rows count from 0, which is the file's first line.
class ImportExportError : public VariantError<ImportExportError, ImportExportErrorCases> {
 public:
  using VariantError::VariantError;

  /// The one button under the message; nothing is attempted when it is pressed.
  static constexpr std::array<std::string_view, 1> recoveryOptions = {"Cancel"};

  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;
  [[nodiscard]] std::optional<std::string> advice() const override;
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
