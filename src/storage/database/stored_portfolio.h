// A portfolio and its rows as the portfolio database keeps them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "platform/error.h"
#include "platform/time/date.h"

namespace corvane {

/// A row with its place in the database.
class StoredPortfolioTransaction : public PortfolioTransaction {
  // Here and in this order it costs no room of its own.
  friend class LedgerWriter;
  bool awaitsWriting_ = false;

 public:
  using PortfolioTransaction::PortfolioTransaction;

  int dateSequence = 0;                       ///< place among the rows of its settlement date
  std::optional<std::int64_t> transactionId;  ///< none until the row is in the file
};

static_assert(sizeof(StoredPortfolioTransaction) <= 216, "there are very many rows");

/// What the column `settings` of a portfolio holds, as JSON.
struct PortfolioSettings {
  bool allowsNegativeBalances = false;
  bool usesCashAccounts = true;

  [[nodiscard]] std::string json() const;
  /// Throws JSONError.
  [[nodiscard]] static PortfolioSettings fromJSON(std::string_view text);

  friend bool operator==(const PortfolioSettings&, const PortfolioSettings&) = default;
};

/// A portfolio whose rows are read from the database when they are first asked for. Rows that
/// cannot be read leave the ledger empty, say so in the log, and keep it from being
/// changed.
class StoredPortfolio : public Portfolio, public std::enable_shared_from_this<StoredPortfolio> {
 public:
  StoredPortfolio(std::weak_ptr<PortfolioManager> owner, const Currency& primaryCurrency,
                  std::int64_t id);

  const std::int64_t portfolioId;
  Date dateCreated;
  Decimal sharesFactor = 1;  ///< share units in the database for one share: a power of ten

  /// Decimals of a share that the database can keep: the exponent of sharesFactor.
  [[nodiscard]] int shareDecimals() const { return sharesFactor.exponent(); }

  /// The ledger. The first use reads it.
  [[nodiscard]] std::vector<TransactionPointer>& transactions() override {
    return storedTransactions();
  }
  [[nodiscard]] std::vector<TransactionPointer>& storedTransactions();

  [[nodiscard]] bool isLoaded() const { return isLoaded_; }

  /// Throws what has kept the rows from being read. The next use then reads them once more, since
  /// the cause may have been a passing one.
  void requireTransactions();

 private:
  friend class LedgerWriter;

  bool isLoaded_ = false;
  ErrorPointer loadFailure_;
  std::vector<TransactionPointer> storedTransactions_;
  /// Row ids of the equities that the database knows for this portfolio, as far as they were
  /// needed.
  std::unordered_map<std::string, std::int64_t> equityRowIds_;
};

}  // namespace corvane
