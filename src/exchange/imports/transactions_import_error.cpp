#include "exchange/imports/transactions_import_error.h"

#include "platform/overloaded.h"

namespace corvane {

std::optional<std::string> TransactionsImportError::description() const {
  return std::visit(
      Overloaded{
          [](const UnrecognizedType& type) {
            return "Transaction type “" + type.text + "” is not understood.";
          },
          [](const InvalidExchangeRate& rate) {
            return "An exchange rate of " + rate.text + " is not valid.";
          },
          [](TypeMissing) { return std::string("Transaction type is not indicated."); },
          [](const DateMissing&) {
            return std::string("Trade and/or settlement dates are missing.");
          },
          [](SymbolMissing) {
            return std::string("The symbol is not specified for a trade transaction.");
          },
          [](SharesMissing) { return std::string("The number of shares is not specified."); },
          [](CashAmountMissing) {
            return std::string("The cash amount (cost or proceeds) is not specified.");
          },
          [](EquivalentAmountMissing) {
            return std::string(
                "The equivalent currency amount (cost or proceeds) is not specified.");
          },
          [](CostBaseAdjustmentMissing) {
            return std::string("The cost base adjustment is not specified.");
          }},
      which());
}

std::optional<std::string> TransactionsImportError::recoverySuggestion() const {
  const auto* date = as<DateMissing>();
  return date == nullptr || date->text.empty()
             ? std::nullopt
             : std::optional("“" + date->text + "” is not read as a date.");
}

}  // namespace corvane
