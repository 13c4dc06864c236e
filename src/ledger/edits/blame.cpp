#include "ledger/edits/blame.h"

#include <type_traits>
#include <variant>

namespace corvane {

PortfolioManagerError blaming(const BasicTransaction* subject, const PortfolioManagerError& error) {
  using Failure = PortfolioManagerError;
  const TransactionPointer row = std::visit(
      [](const auto& what) -> TransactionPointer {
        using What = std::decay_t<decltype(what)>;
        if constexpr (std::is_same_v<What, Failure::InsufficientCash> ||
                      std::is_same_v<What, Failure::InsufficientShares> ||
                      std::is_same_v<What, Failure::IncompleteSplit>) {
          return what.transaction;
        } else {
          return nullptr;
        }
      },
      error.which());
  if (row == nullptr || (subject != nullptr && row->basic == *subject)) {
    return error;
  }
  return Failure(Failure::ViolatesExistingTransaction{row, error.copy()});
}

}  // namespace corvane
