// Changes the settings of a portfolio whose ledger may forbid it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "ledger/portfolio/portfolio.h"
#include "platform/async/undo_manager.h"
#include "platform/error.h"

namespace corvane {

/// Changes the three settings of a portfolio that are not fixed at its creation, in one step that
/// can be undone. Main queue only.
class PortfolioPropertyChanger {
 public:
  struct Properties {
    std::string name;
    bool allowsNegativeBalances = false;
    bool usesCashAccounts = true;

    [[nodiscard]] static Properties of(const Portfolio& portfolio);
    friend bool operator==(const Properties&, const Properties&) = default;
  };

  /// What an Error can be: of the first row in ledger order that stands against the change.
  struct ErrorCases {
    struct ExistingNegativeBalanceTransaction {
      TransactionPointer transaction;
      friend bool operator==(const ExistingNegativeBalanceTransaction&,
                             const ExistingNegativeBalanceTransaction&) = default;
    };
    struct ExistingTransferTransaction {
      TransactionPointer transaction;
      friend bool operator==(const ExistingTransferTransaction&,
                             const ExistingTransferTransaction&) = default;
    };
    using Case = std::variant<ExistingNegativeBalanceTransaction, ExistingTransferTransaction>;
  };

  /// Which row stands against the change.
  class Error : public VariantError<Error, ErrorCases> {
   public:
    using VariantError::VariantError;

    [[nodiscard]] std::optional<std::string> description() const override;
    [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;
  };

  /// Gives `portfolio` the properties, walks its ledger again where cash accounts are turned on or
  /// off, tells the manager, and registers the way back with `undoManager` where there is one.
  ///
  /// Throws Error where a row forbids the change, and what the walk or the manager throws. Then the
  /// portfolio, its rows and its yearly snapshots are as they were.
  void changeProperties(const PortfolioPointer& portfolio, const Properties& properties,
                        const std::shared_ptr<UndoManager>& undoManager) const;
};

}  // namespace corvane
