// What is wrong with a delimited text.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "platform/error.h"

namespace corvane {

/// The cases of CSVParseError.
struct CSVParseErrorCases {
  /// The reader itself cannot go on: "me_irl" where it has lost its state, which no text brings
  /// about, or that the text is longer than it can take.
  struct Generic {
    std::string message;
    friend bool operator==(const Generic&, const Generic&) = default;
  };
  /// A character follows a closing quote where it cannot stand: "Can't have non-quote here: x".
  struct Quotation {
    std::string message;
    friend bool operator==(const Quotation&, const Quotation&) = default;
  };
  using Case = std::variant<Generic, Quotation>;
};

/// The error of the reader of delimited text; the description is the message.
class CSVParseError : public VariantError<CSVParseError, CSVParseErrorCases> {
 public:
  using VariantError::VariantError;

  [[nodiscard]] std::optional<std::string> description() const override {
    return std::visit([](const auto& what) { return what.message; }, which());
  }
};

}  // namespace corvane
