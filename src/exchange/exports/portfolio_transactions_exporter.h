// Writes the rows of a ledger to a delimited text file.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/exports/portfolio_exporter.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/transaction/transaction_effect.h"

namespace corvane {

/// A line for each row, with what it did and the balances after it. PortfolioTransactionsImporter
/// understands the words and the numbers.
class PortfolioTransactionsExporter final : public PortfolioExporter {
 public:
  static constexpr std::string_view userDefaultsKey = "portfolioTransactionsExportConfiguration";

  /// Exports `transactions`, rows of `portfolio`, in the given order. `defaults` may be null;
  /// otherwise it outlives the exporter.
  [[nodiscard]] static std::shared_ptr<PortfolioTransactionsExporter> make(
      const Portfolio& portfolio, std::vector<TransactionPointer> transactions,
      UserDefaults* defaults);

  [[nodiscard]] const std::vector<TransactionPointer>& transactions() const {
    return transactions_;
  }

 private:
  struct Line {
    const PortfolioTransaction& row;
    TransactionEffect effect;

    [[nodiscard]] std::optional<Currency> primaryCurrency() const;
    [[nodiscard]] std::optional<Currency> ownCurrency() const;
  };
  using Self = PortfolioTransactionsExporter;
  using SchemaField = SchemaFieldOf<Self, Line>;
  static const std::array<SchemaField, 16> schema;

  PortfolioTransactionsExporter(const Portfolio& portfolio,
                                std::vector<TransactionPointer> transactions,
                                UserDefaults* defaults);

  [[nodiscard]] CellText cellText(std::size_t row, std::size_t field) override;

  const std::vector<TransactionPointer> transactions_;
  /// As they were when the exporter was made: equities belong to the main queue.
  EquityMap<std::string> symbols_;
};

/// What an export calls a kind of transaction, such as "Buy".
[[nodiscard]] std::string_view exportedWord(const BasicTransaction::Kind& kind);

}  // namespace corvane
