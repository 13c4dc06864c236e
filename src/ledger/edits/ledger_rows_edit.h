// The changes that one edit makes to the rows of a ledger, kept so that all can be taken back.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "ledger/edits/linked_rows.h"
#include "ledger/portfolio/portfolio_transaction.h"

namespace corvane {

/// Inserts, removes, moves and revises rows and knows how to undo it. An edit of few rows works on
/// the rows themselves, and what it keeps grows with the number of changes; one of many works on a
/// list that apply() makes into rows, in time for each row of the ledger but not for each pair.
///
/// Rows that are named stand in the ledger, which has() tells; those to be inserted do not.
class LedgerRowsEdit {
 public:
  using Rows = std::vector<TransactionPointer>;

  /// For about `changeCount` changes of `rows`, which must outlive the edit.
  LedgerRowsEdit(Rows& rows, std::size_t changeCount);

  [[nodiscard]] bool has(const PortfolioTransaction& row) const;
  /// The row behind `row`, or null at the end.
  [[nodiscard]] TransactionPointer rowAfter(const PortfolioTransaction& row) const;

  /// In front of `anchor`, or at the end where that is null.
  void insert(const TransactionPointer& row, const TransactionPointer& anchor);
  /// Behind all rows of its settlement date.
  void insertByDate(const TransactionPointer& row);
  void remove(const TransactionPointer& row);
  void move(const TransactionPointer& row, const TransactionPointer& anchor);
  /// Gives `row` another transaction at its place and marks it dirty, so that its keeper is told
  /// even where no balance changes.
  void revise(const TransactionPointer& row, BasicTransaction transaction);
  /// As revise(), and puts the row behind all rows of its new settlement date.
  void reviseByDate(const TransactionPointer& row, BasicTransaction transaction);

  /// Brings the changes into the rows. Returns the first position that differs from what was there
  /// at the last time; the number of rows where none does.
  [[nodiscard]] std::size_t apply();

  /// Brings rows and transactions back to what they were at the start.
  void takeBack();

 private:
  struct Change {
    enum class Kind { inserted, removed, revised } kind;
    std::size_t position;
    TransactionPointer row;                               ///< null for those that were inserted
    std::unique_ptr<BasicTransaction> formerTransaction;  ///< of a revised row
    bool wasDirty = false;                                ///< of a revised row
    std::size_t count = 1;                                ///< rows that were inserted in a run
  };

  void insertAt(std::size_t position, const TransactionPointer& row);
  void removeAt(std::size_t position);
  [[nodiscard]] std::size_t placeOf(const PortfolioTransaction& row) const;
  [[nodiscard]] std::size_t applyList();

  Rows& rows_;
  std::size_t lowest_;
  std::vector<Change> changes_;
  std::optional<LinkedRows> list_;  ///< of an edit of many rows, until it is applied
  std::optional<Rows> formerRows_;  ///< after a list has been applied
};

/// The position of `row` itself in `rows`, which are in ledger order.
[[nodiscard]] std::optional<std::size_t> positionOf(const PortfolioTransaction& row,
                                                    const std::vector<TransactionPointer>& rows);

/// The position behind all rows of `settlementDate`.
[[nodiscard]] std::size_t positionByDate(Date settlementDate,
                                         const std::vector<TransactionPointer>& rows);

}  // namespace corvane
