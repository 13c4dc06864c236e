// What is wrong with a row of a statement.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/error.h"

namespace corvane {

class TransactionsImportError : public ErrorValue<TransactionsImportError> {
 public:
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

  explicit TransactionsImportError(Case what) : case_(std::move(what)) {}

  [[nodiscard]] const Case& which() const { return case_; }
  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;
  [[nodiscard]] bool hasSameValues(const TransactionsImportError& other) const {
    return case_ == other.case_;
  }

 private:
  Case case_;
};

}  // namespace corvane
