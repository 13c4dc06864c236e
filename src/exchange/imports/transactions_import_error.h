// What is wrong with a row of a statement.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/error.h"

namespace corvane {

/// The cases of TransactionsImportError.
struct TransactionsImportErrorCases {
  struct UnrecognizedType {
    std::string text;  ///< in lower case
    friend bool operator==(const UnrecognizedType&, const UnrecognizedType&) = default;
  };
  struct InvalidExchangeRate {
    std::string text;
    friend bool operator==(const InvalidExchangeRate&, const InvalidExchangeRate&) = default;
  };
  struct TypeMissing {
    friend bool operator==(TypeMissing, TypeMissing) = default;
  };
  struct DateMissing {
    std::string text;  ///< what stands where a date should; may be empty
    friend bool operator==(const DateMissing&, const DateMissing&) = default;
  };
  struct SymbolMissing {
    friend bool operator==(SymbolMissing, SymbolMissing) = default;
  };
  struct SharesMissing {
    friend bool operator==(SharesMissing, SharesMissing) = default;
  };
  struct CashAmountMissing {
    friend bool operator==(CashAmountMissing, CashAmountMissing) = default;
  };
  struct EquivalentAmountMissing {
    friend bool operator==(EquivalentAmountMissing, EquivalentAmountMissing) = default;
  };
  struct CostBaseAdjustmentMissing {
    friend bool operator==(CostBaseAdjustmentMissing, CostBaseAdjustmentMissing) = default;
  };
  using Case = std::variant<UnrecognizedType, InvalidExchangeRate, TypeMissing, DateMissing,
                            SymbolMissing, SharesMissing, CashAmountMissing,
                            EquivalentAmountMissing, CostBaseAdjustmentMissing>;
};

class TransactionsImportError
    : public VariantError<TransactionsImportError, TransactionsImportErrorCases> {
 public:
  using VariantError::VariantError;

  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;
};

}  // namespace corvane
