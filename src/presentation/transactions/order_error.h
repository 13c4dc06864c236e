// Why the fields of the form for a transaction make no order.
#pragma once

#include <optional>
#include <string>

#include "platform/error.h"

namespace corvane {

class OrderError : public ErrorValue<OrderError> {
 public:
  enum class Case {
    unsupportedOrderType,
    invalidEquity,
    invalidNumberOfShares,
    indeterminateMoneyAmount
  };

  static constexpr Case unsupportedOrderType = Case::unsupportedOrderType;
  static constexpr Case invalidEquity = Case::invalidEquity;
  static constexpr Case invalidNumberOfShares = Case::invalidNumberOfShares;
  static constexpr Case indeterminateMoneyAmount = Case::indeterminateMoneyAmount;

  explicit OrderError(Case what) : case_(what) {}

  [[nodiscard]] Case which() const { return case_; }
  [[nodiscard]] std::optional<std::string> description() const override {
    switch (case_) {
      case Case::unsupportedOrderType:
        return "Unsupported order type.";
      case Case::invalidEquity:
        return "Invalid equity.";
      case Case::invalidNumberOfShares:
        return "Invalid number of shares.";
      case Case::indeterminateMoneyAmount:
        return "Indeterminate money amount.";
    }
    return std::nullopt;
  }
  [[nodiscard]] bool hasSameValues(const OrderError& other) const { return case_ == other.case_; }

 private:
  Case case_;
};

}  // namespace corvane
