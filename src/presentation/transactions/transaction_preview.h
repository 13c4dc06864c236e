// What an entry would do, in words and figures beside the form.
#pragma once

#include <string>
#include <vector>

#include "ledger/manager/portfolio_manager.h"

namespace corvane {

/// Figures before and after an entry, or the reason for which the ledger would refuse it. Empty
/// where there is no entry yet.
struct TransactionPreview {
  struct Figure {
    std::string label;
    std::string before;  ///< empty for a figure that the entry brings about
    std::string after;
    friend bool operator==(const Figure&, const Figure&) = default;
  };

  std::vector<Figure> figures = {};
  std::string refusal = {};  ///< what is wrong
  std::string reason = {};   ///< and what is behind it; mostly empty

  friend bool operator==(const TransactionPreview&, const TransactionPreview&) = default;
};

/// What recording `transaction` would do to the ledger of `portfolio`, or giving it to the row
/// `revised`. Changes nothing. `portfolio` has a manager.
[[nodiscard]] TransactionPreview previewOf(const BasicTransaction& transaction,
                                           const PortfolioPointer& portfolio,
                                           const TransactionPointer& revised);

}  // namespace corvane
