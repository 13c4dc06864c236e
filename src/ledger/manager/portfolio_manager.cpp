#include "ledger/manager/portfolio_manager.h"

#include <algorithm>
#include <cassert>
#include <ranges>
#include <utility>

#include "ledger/accounting/ledger_replay.h"
#include "ledger/accounting/ledger_states.h"
#include "ledger/edits/blame.h"
#include "ledger/edits/ledger_change.h"
#include "ledger/edits/recording_check.h"
#include "platform/async/notification_center.h"
#include "platform/system/log.h"

namespace corvane {
namespace {

using Failure = PortfolioManagerError;
using Transactions = PortfolioManager::Transactions;

[[noreturn]] void failInconsistent(std::string reason) {
  throw Failure(Failure::LedgerInconsistency{std::move(reason)});
}

void requireRow(const TransactionPointer& row, const LedgerRowsEdit& edit,
                std::string_view reason) {
  if (!edit.has(*row)) {
    throw Failure(Failure::InvalidPortfolio{std::string(reason)});
  }
}

/// As requireRow, for the row in front of which another goes; null for the end of the ledger.
void requireAnchor(const TransactionPointer& anchor, const LedgerRowsEdit& edit,
                   std::string_view reason) {
  if (anchor != nullptr) {
    requireRow(anchor, edit, reason);
  }
}

template <typename Value>
std::vector<Value> reversed(const std::vector<Value>& values) {
  return {values.rbegin(), values.rend()};
}

/// `subjects` in the order of `rows`. Throws where one of them is not there or is named twice.
Transactions inLedgerOrder(const Transactions& subjects, const Transactions& rows) {
  constexpr std::string_view unknown = "Cannot find existing transaction in the ledger to delete.";
  TransactionSet named(subjects.begin(), subjects.end());
  Transactions ordered;
  ordered.reserve(subjects.size());
  if (subjects.size() == 1) {
    if (positionOf(*subjects.front(), rows)) {
      ordered = subjects;
    }
  } else {
    std::ranges::copy_if(rows, std::back_inserter(ordered),
                         [&](const TransactionPointer& row) { return named.contains(row); });
  }
  if (ordered.size() != subjects.size()) {
    throw Failure(Failure::InvalidPortfolio{std::string(unknown)});
  }
  return ordered;
}

/// Whether `basics`, one after the other, are recorded behind all `rows`.
bool goToTheEnd(const std::vector<BasicTransaction>& basics, const Transactions& rows) {
  return positionByDate(basics.front().settlementDate, rows) == rows.size() &&
         std::ranges::is_sorted(basics, std::less<>(), &BasicTransaction::settlementDate);
}

/// The set of `subjects`, which are taken out of `rows` where they are in it.
TransactionSet separate(const Transactions& subjects, TransactionSet& rows) {
  TransactionSet separated;
  separated.reserve(subjects.size());
  for (const auto& subject : subjects) {
    if (auto node = rows.extract(subject)) {
      separated.insert(std::move(node));
    } else {
      separated.insert(subject);
    }
  }
  return separated;
}

/// Whether the balance of anything that `row` names depends on `entry`.
bool dependsOn(const PortfolioTransaction& row, const PortfolioTransaction& entry) {
  if (row.settlementDate() < entry.settlementDate()) {
    return false;
  }
  const Currency* currency = row.basic.currency();
  const Currency* other = entry.basic.currency();
  const EquityPointer* equity = row.basic.equity();
  const EquityPointer* otherEquity = entry.basic.equity();
  return (currency != nullptr && other != nullptr && *currency == *other) ||
         (equity != nullptr && otherEquity != nullptr && EquityIdentity()(*equity, *otherEquity));
}

/// The place among `recorded` of the row that could not be kept; that of the last one that it
/// depends on where it was there before, and the number of them where there is none.
std::size_t placeAtFault(const PortfolioTransaction* row, const Transactions& recorded) {
  if (row == nullptr) {
    return recorded.size();
  }
  const auto itself = std::ranges::find(recorded, row, &TransactionPointer::get);
  if (itself != recorded.end()) {
    return static_cast<std::size_t>(itself - recorded.begin());
  }
  for (std::size_t place = recorded.size(); place > 0; --place) {
    if (dependsOn(*row, *recorded[place - 1])) {
      return place - 1;
    }
  }
  return recorded.size();
}

}  // namespace

PortfolioManager::PortfolioManager(std::shared_ptr<QuoteProvider> provider,
                                   TransactionType recordedTransactions,
                                   std::vector<OrderFeature> orderFeatures)
    : quoteProvider(std::move(provider)),
      presentError([](const Error& error) { Log::write(error); }),
      recordedTransactionType_(recordedTransactions),
      supportedOrderFeatures_(std::move(orderFeatures)) {}

PortfolioManager::~PortfolioManager() = default;

void PortfolioManager::compactStorage() {}

PortfolioPointer PortfolioManager::createPortfolio(const Currency& primaryCurrency) {
  portfolios_.push_back(std::make_shared<Portfolio>(weak_from_this(), primaryCurrency));
  return portfolios_.back();
}

void PortfolioManager::portfolioPropertiesDidChange(const PortfolioPointer& portfolio) {
  requireOwn(*portfolio);
  postPortfolioChange(std::nullopt, portfolio);
}

void PortfolioManager::removePortfolio(const PortfolioPointer& portfolio) {
  requireOwn(*portfolio);
  std::erase(portfolios_, portfolio);
}

template <typename Edit>
TransactionSet PortfolioManager::editLedger(LedgerChange& change, const BasicTransaction* subject,
                                            Edit edit) {
  TransactionSet recalculated;
  keepWhole(change, [&] {
    try {
      recalculated = edit(change);
    } catch (const Failure& error) {
      // Who is to blame is decided while a refused revision still stands in its row.
      throw blaming(subject, error);
    }
  });
  return recalculated;
}

void PortfolioManager::keepWhole(LedgerChange& change, const std::function<void()>& edit) {
  assert(!isChanging_ && "one change of a ledger at a time");
  isChanging_ = true;
  try {
    keepEdit(change, edit);
  } catch (...) {
    isChanging_ = false;
    change.takeBack();
    throw;
  }
  isChanging_ = false;
}

std::function<void(PortfolioTransaction&)> PortfolioManager::rowRecalculated(Portfolio& portfolio) {
  return [this, &portfolio](PortfolioTransaction& row) { transactionRecalculated(row, portfolio); };
}

std::size_t PortfolioManager::countRecordedAtOnce(const std::vector<BasicTransaction>& basics,
                                                  const PortfolioPointer& portfolio) const {
  const auto& rows = portfolio->transactions();
  if (basics.size() == 1 || goToTheEnd(basics, rows)) {
    return basics.size();
  }
  const Date earliest =
      std::ranges::min(basics, std::less<>(), &BasicTransaction::settlementDate).settlementDate;
  const std::size_t first = positionByDate(earliest, rows);
  return countOfSureRecordings(basics, std::span(rows).subspan(first), *portfolio,
                               walkStart(first, *portfolio, calendar));
}

Transactions PortfolioManager::recordTransactions(const std::vector<BasicTransaction>& basics,
                                                  const PortfolioPointer& portfolio,
                                                  const UndoManagerPointer& undoManager,
                                                  const RecordingObserver& observer) {
  requireOwn(*portfolio);
  if (basics.empty()) {
    return {};
  }
  const std::size_t atOnce = countRecordedAtOnce(basics, portfolio);
  const std::size_t between = goToTheEnd(basics, portfolio->transactions()) ? 0 : atOnce;
  Transactions recorded;
  recorded.reserve(basics.size());
  LedgerChange change(portfolio, calendar, between, rowRecalculated(*portfolio), observer);
  TransactionSet recalculated;
  try {
    recalculated = editLedger(change, &basics.front(), [&](LedgerChange& edit) {
      TransactionSet changed;
      const auto walk = [&] {
        TransactionSet rows = edit.walk();
        changed.empty() ? changed.swap(rows) : changed.merge(rows);
      };
      const std::size_t count = basics.size();
      for (const BasicTransaction& basic : basics) {
        recorded.push_back(recordedTransactionType_(basic, portfolio, /*isDirty=*/true));
        edit.rows().insertByDate(recorded.back());
        if (recorded.size() >= atOnce && recorded.size() < count) {
          walk();
        }
      }
      walk();
      edit.placed = recorded;
      return changed;
    });
  } catch (...) {
    if (observer && !change.placed.empty()) {
      // The ledger has taken all rows, and its keeper has refused one of them.
      observer(placeAtFault(change.rowBeingKept(), recorded));
    } else if (observer && recorded.size() > atOnce) {
      // The last of those that are walked one by one, whichever row it has broken.
      observer(recorded.size() - 1);
    }
    throw;
  }

  TransactionSet inserted = separate(recorded, recalculated);
  registerUndo(undoManager,
               [recorded, portfolio](PortfolioManager& manager, const UndoManagerPointer& undo) {
                 manager.deleteTransactions(recorded, portfolio, undo);
               });
  postPortfolioChange(
      TransactionChanges{.inserted = std::move(inserted), .recalculated = std::move(recalculated)},
      portfolio);
  return recorded;
}

void PortfolioManager::reviseTransactions(const Transactions& subjects,
                                          const std::vector<BasicTransaction>& revisions,
                                          const std::optional<Anchors>& neighbours,
                                          const PortfolioPointer& portfolio,
                                          const UndoManagerPointer& undoManager) {
  requireOwn(*portfolio);
  if (subjects.empty() || subjects.size() != revisions.size() ||
      (neighbours && neighbours->size() != subjects.size())) {
    failInconsistent("Subject and target transaction counts are mismatched for revision.");
  }
  std::vector<BasicTransaction> former;
  Anchors formerNeighbours;
  LedgerChange change(portfolio, calendar, subjects.size(), rowRecalculated(*portfolio));
  TransactionSet recalculated = editLedger(change, &revisions.front(), [&](LedgerChange& whole) {
    LedgerRowsEdit& edit = whole.rows();
    for (std::size_t i = 0; i < subjects.size(); ++i) {
      const TransactionPointer& subject = subjects[i];
      requireRow(subject, edit, "Cannot find existing transaction in the ledger to revise.");
      formerNeighbours.push_back(edit.rowAfter(*subject));
      former.push_back(subject->basic);
      if (neighbours) {
        requireAnchor((*neighbours)[i], edit,
                      "Cannot find neighbour transaction in the ledger during revision.");
        edit.revise(subject, revisions[i]);
        edit.move(subject, (*neighbours)[i]);
      } else if (revisions[i].settlementDate != subject->settlementDate()) {
        edit.reviseByDate(subject, revisions[i]);
      } else {
        edit.revise(subject, revisions[i]);
      }
    }
    whole.placed = subjects;
    return whole.walk();
  });

  registerUndo(undoManager, [subjects = reversed(subjects), former = reversed(former),
                             formerNeighbours = reversed(formerNeighbours),
                             portfolio](PortfolioManager& manager, const UndoManagerPointer& undo) {
    manager.reviseTransactions(subjects, former, formerNeighbours, portfolio, undo);
  });
  TransactionSet modified = separate(subjects, recalculated);
  postPortfolioChange(
      TransactionChanges{.modified = std::move(modified), .recalculated = std::move(recalculated)},
      portfolio);
}

void PortfolioManager::deleteTransactions(const Transactions& subjects,
                                          const PortfolioPointer& portfolio,
                                          const UndoManagerPointer& undoManager) {
  requireOwn(*portfolio);
  if (subjects.empty()) {
    return;
  }
  const Transactions deleted = inLedgerOrder(subjects, portfolio->transactions());
  Anchors neighbours;
  LedgerChange change(portfolio, calendar, subjects.size(), rowRecalculated(*portfolio));
  TransactionSet recalculated = editLedger(change, nullptr, [&](LedgerChange& whole) {
    LedgerRowsEdit& edit = whole.rows();
    for (const TransactionPointer& row : deleted | std::views::reverse) {
      neighbours.push_back(edit.rowAfter(*row));
      edit.remove(row);
    }
    whole.removed = deleted;
    return whole.walk();
  });

  registerUndo(undoManager, [subjects = deleted, neighbours = reversed(neighbours), portfolio](
                                PortfolioManager& manager, const UndoManagerPointer& undo) {
    manager.insertTransactions(subjects, neighbours, portfolio, undo);
  });
  postPortfolioChange(
      TransactionChanges{.deleted = TransactionSet(subjects.begin(), subjects.end()),
                         .modified = std::move(recalculated)},
      portfolio);
}

void PortfolioManager::insertTransactions(const Transactions& subjects, const Anchors& anchors,
                                          const PortfolioPointer& portfolio,
                                          const UndoManagerPointer& undoManager) {
  requireOwn(*portfolio);
  if (subjects.size() != anchors.size()) {
    failInconsistent("Subject and target transaction counts are mismatched for insertion.");
  }
  if (subjects.empty()) {
    return;
  }
  LedgerChange change(portfolio, calendar, subjects.size(), rowRecalculated(*portfolio));
  TransactionSet recalculated = editLedger(change, nullptr, [&](LedgerChange& whole) {
    LedgerRowsEdit& edit = whole.rows();
    for (std::size_t i = 0; i < subjects.size(); ++i) {
      requireAnchor(anchors[i], edit,
                    "Cannot find existing transaction in portfolio to anchor the insertion.");
      if (subjects[i]->portfolio.lock() != portfolio || edit.has(*subjects[i])) {
        throw Failure(
            Failure::InvalidPortfolio{"Cannot insert a transaction that is in the portfolio "
                                      "already or belongs to another."});
      }
      edit.insert(subjects[i], anchors[i]);
    }
    whole.placed = subjects;
    return whole.walk();
  });

  registerUndo(undoManager,
               [subjects, portfolio](PortfolioManager& manager, const UndoManagerPointer& undo) {
                 manager.deleteTransactions(subjects, portfolio, undo);
               });
  TransactionSet inserted = separate(subjects, recalculated);
  postPortfolioChange(
      TransactionChanges{.inserted = std::move(inserted), .modified = std::move(recalculated)},
      portfolio);
}

void PortfolioManager::moveTransactions(const Transactions& subjects, const Anchors& anchors,
                                        const PortfolioPointer& portfolio,
                                        const UndoManagerPointer& undoManager) {
  requireOwn(*portfolio);
  if (subjects.size() != anchors.size()) {
    failInconsistent("Subject and target transaction counts are mismatched for a move.");
  }
  if (subjects.empty()) {
    return;
  }
  Anchors neighbours;
  LedgerChange change(portfolio, calendar, subjects.size(), rowRecalculated(*portfolio));
  TransactionSet recalculated = editLedger(change, nullptr, [&](LedgerChange& whole) {
    LedgerRowsEdit& edit = whole.rows();
    for (std::size_t i = 0; i < subjects.size(); ++i) {
      requireRow(subjects[i], edit, "Cannot find existing transaction in portfolio to move.");
      neighbours.push_back(edit.rowAfter(*subjects[i]));
      requireAnchor(anchors[i], edit,
                    "Cannot find existing transaction in portfolio to anchor the move.");
      edit.move(subjects[i], anchors[i]);
    }
    whole.placed = subjects;
    return whole.walk();
  });

  registerUndo(undoManager, [subjects = reversed(subjects), neighbours = reversed(neighbours),
                             portfolio](PortfolioManager& manager, const UndoManagerPointer& undo) {
    manager.moveTransactions(subjects, neighbours, portfolio, undo);
  });
  TransactionSet modified = separate(subjects, recalculated);
  postPortfolioChange(
      TransactionChanges{.modified = std::move(modified), .recalculated = std::move(recalculated)},
      portfolio);
}

TransactionSet PortfolioManager::recalculateLedger(std::size_t startIndex,
                                                   const PortfolioPointer& portfolio) {
  TransactionSet recalculated;
  changeAsOne(portfolio, [&](LedgerChange& change) { recalculated = change.walkFrom(startIndex); });
  return recalculated;
}

void PortfolioManager::changeAsOne(const PortfolioPointer& portfolio,
                                   const std::function<void(LedgerChange&)>& edit) {
  requireOwn(*portfolio);
  LedgerChange change(portfolio, calendar, 0, rowRecalculated(*portfolio));
  keepWhole(change, [&] { edit(change); });
}

PortfolioSnapshot PortfolioManager::snapshotBefore(std::size_t index,
                                                   const PortfolioPointer& portfolio) const {
  return stateBefore(index, *portfolio, calendar);
}

PortfolioSnapshot PortfolioManager::replay(std::span<const TransactionPointer> rows,
                                           PortfolioSnapshot start) {
  return replayLedger(rows, std::move(start));
}

void PortfolioManager::fetchDailySnapshots(const PortfolioPointer& portfolio, YearMonthDay from,
                                           YearMonthDay to,
                                           FetchDailySnapshotsCompletion completion) {
  fetchDailySnapshots(portfolio, from, to, quoteProvider, std::move(completion));
}

void PortfolioManager::fetchDailySnapshots(const PortfolioPointer& portfolio, YearMonthDay from,
                                           YearMonthDay to,
                                           const std::shared_ptr<QuoteProvider>& prices,
                                           FetchDailySnapshotsCompletion completion) {
  assert(portfolio->manager.lock().get() == this && "a portfolio of this manager");
  try {
    requireReadable();
  } catch (const Error& error) {
    completion(failure(error));
    return;
  }
  corvane::fetchDailySnapshots(*portfolio, from, to, calendar, prices, std::move(completion));
}

PortfolioValuation PortfolioManager::valuation(const PortfolioPointer& portfolio) const {
  return valuationOf(newestSnapshot(*portfolio), portfolio->primaryCurrency(), *quoteProvider);
}

EquitySet PortfolioManager::valuationEquities(const PortfolioPointer& portfolio) const {
  return equitiesOfValuation(newestSnapshot(*portfolio), portfolio->primaryCurrency(),
                             *quoteProvider);
}

const PortfolioSnapshot& PortfolioManager::newestSnapshot(const Portfolio& portfolio) const {
  requireReadable();
  if (portfolio.manager.lock().get() != this) {
    throw Failure(Failure::InvalidPortfolio{"Portfolio is unmanaged or has the wrong manager!"});
  }
  static const PortfolioSnapshot empty;
  const auto& years = portfolio.snapshotsByYear;
  return years.empty() ? empty : years.rbegin()->second;
}

void PortfolioManager::placeOrder(const Order& order, const PortfolioPointer& portfolio,
                                  const UndoManagerPointer& undoManager) {
  const auto* record = std::get_if<Order::Record>(&order.kind);
  if (record == nullptr) {
    throw Failure(Failure::InvalidOrderType{order});
  }
  recordTransactions({record->transaction}, portfolio, undoManager);
}

void PortfolioManager::postPortfolioChange(std::optional<TransactionChanges> changes,
                                           const PortfolioPointer& portfolio) {
  // Whoever hears the news reads the ledger.
  endBackgroundEdit();
  NotificationCenter::defaultCenter().post(didChangePortfolio, this,
                                           {shared_from_this(), portfolio, std::move(changes)});
}

void PortfolioManager::requireReadable() const {
  if (isEditedInBackground_) {
    throw PortfolioManagerError(
        PortfolioManagerError::LedgerInconsistency{"The ledger is being changed."});
  }
}

void PortfolioManager::requireOwn(const Portfolio& portfolio) const {
  if (std::ranges::find(portfolios_, &portfolio, &PortfolioPointer::get) == portfolios_.end()) {
    throw Failure(
        Failure::InvalidPortfolio{"The portfolio is not known to this portfolio manager."});
  }
}

void PortfolioManager::keepEdit(LedgerChange& /*change*/, const std::function<void()>& edit) {
  edit();
}

void PortfolioManager::transactionRecalculated(PortfolioTransaction& /*row*/,
                                               Portfolio& /*portfolio*/) {}

void PortfolioManager::registerUndo(const UndoManagerPointer& undoManager, UndoStep step) {
  if (undoManager == nullptr) {
    return;
  }
  undoManager->registerUndo(shared_from_this(),
                            [step = std::move(step), weakUndoManager = std::weak_ptr(undoManager)](
                                PortfolioManager& manager) mutable {
                              try {
                                step(manager, weakUndoManager.lock());
                              } catch (const Error& error) {
                                manager.presentError(error);
                              }
                            });
}

}  // namespace corvane
