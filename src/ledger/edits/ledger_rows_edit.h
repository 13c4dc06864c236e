// The changes that one edit makes to the rows of a ledger, kept so that all can be taken back.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// Inserts, removes and revises rows of `rows` and knows how to undo it. What it keeps grows with
/// the number of changes, not with that of the rows.
class LedgerRowsEdit {
 public:
  using Rows = std::vector<TransactionPointer>;

  /// `rows` must outlive the edit.
  explicit LedgerRowsEdit(Rows& rows) : rows_(rows), lowest_(rows.size()) {}

  [[nodiscard]] const Rows& rows() const { return rows_; }

  void insert(std::size_t position, TransactionPointer row);
  void remove(std::size_t position);
  /// Takes the row at `from` out and inserts it so that it ends up at `to`.
  void move(std::size_t from, std::size_t to);
  /// Gives the row at `position` another transaction and marks it dirty, so that its keeper is told
  /// even where no balance changes.
  void revise(std::size_t position, BasicTransaction transaction);

  /// The first position that was changed; the number of rows at the start where none was.
  [[nodiscard]] std::size_t lowest() const { return lowest_; }

  /// Brings rows and transactions back to what they were at the start.
  void takeBack();

 private:
  struct Change {
    enum class Kind { inserted, removed, revised } kind;
    std::size_t position;
    TransactionPointer row;
    std::unique_ptr<BasicTransaction> formerTransaction;  ///< of a revised row
    bool wasDirty = false;                                ///< of a revised row
  };

  Rows& rows_;
  std::size_t lowest_;
  std::vector<Change> changes_;
};

/// The position of `row` itself in `rows`; fast where they are in ledger order.
[[nodiscard]] std::optional<std::size_t> positionOf(const PortfolioTransaction& row,
                                                    const std::vector<TransactionPointer>& rows);

/// The position behind all rows of `settlementDate`.
[[nodiscard]] std::size_t positionByDate(Date settlementDate,
                                         const std::vector<TransactionPointer>& rows);

}  // namespace corvane
