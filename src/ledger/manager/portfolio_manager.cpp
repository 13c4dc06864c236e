#include "ledger/manager/portfolio_manager.h"

#include <algorithm>
#include <any>
#include <cassert>
#include <limits>
#include <ranges>
#include <utility>

#include "ledger/accounting/calendar_years.h"
#include "ledger/accounting/ledger_replay.h"
#include "ledger/accounting/ledger_walk.h"
#include "ledger/edits/blame.h"
#include "ledger/edits/ledger_journal.h"
#include "ledger/edits/ledger_rows_edit.h"
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

/// Gives `variable` a value until the end of a scope.
template <typename Value>
class Assignment {
 public:
  Assignment(Value& variable, Value value) : variable_(variable), before_(variable) {
    variable = value;
  }
  Assignment(const Assignment&) = delete;
  Assignment& operator=(const Assignment&) = delete;
  ~Assignment() { variable_ = before_; }

 private:
  Value& variable_;
  const Value before_;
};

}  // namespace

PortfolioManager::PortfolioManager(std::shared_ptr<QuoteProvider> provider,
                                   TransactionType recordedTransactions,
                                   std::vector<OrderFeature> orderFeatures)
    : calendar(Calendar::current()),
      quoteProvider(std::move(provider)),
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

template <typename Change>
TransactionSet PortfolioManager::editLedger(const PortfolioPointer& portfolio,
                                            const BasicTransaction* subject,
                                            std::size_t changeCount, Change change) {
  LedgerRowsEdit edit(portfolio->transactions(), changeCount);
  TransactionSet recalculated;
  try {
    changeLedger(portfolio, [&] {
      EditedRows edited;
      try {
        recalculated = change(edit, edited);
      } catch (const Failure& error) {
        // Who is to blame is decided while a refused revision still stands in its row.
        throw blaming(subject, error);
      }
      return edited;
    });
  } catch (...) {
    edit.takeBack();
    throw;
  }
  return recalculated;
}

void PortfolioManager::changeLedger(const PortfolioPointer& portfolio,
                                    const std::function<EditedRows()>& change) {
  requireOwn(*portfolio);
  assert(journal_ == nullptr && "one change of a ledger at a time");
  LedgerJournal journal(portfolio->snapshotsByYear);
  journal_ = &journal;
  try {
    keepEdit(portfolio, change);
  } catch (...) {
    journal_ = nullptr;
    journal.restore();
    portfolio->lastWalkStart_.reset();
    throw;
  }
  journal_ = nullptr;
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
                               walkStart(first, portfolio));
}

Transactions PortfolioManager::recordTransactions(std::vector<BasicTransaction> basics,
                                                  const PortfolioPointer& portfolio,
                                                  const UndoManagerPointer& undoManager,
                                                  const RecordingObserver& observer) {
  requireOwn(*portfolio);
  if (basics.empty()) {
    return {};
  }
  Recording recording{observer};
  const Assignment<Recording*> current(recording_, &recording);
  const BasicTransaction first = basics.front();
  const std::size_t atOnce = countRecordedAtOnce(basics, portfolio);
  const std::size_t between = goToTheEnd(basics, portfolio->transactions()) ? 0 : atOnce;
  Transactions recorded;
  recorded.reserve(basics.size());
  TransactionSet recalculated =
      editLedger(portfolio, &first, between, [&](LedgerRowsEdit& edit, EditedRows& edited) {
        TransactionSet changed;
        const auto walk = [&] {
          TransactionSet rows = walkFrom(edit, portfolio);
          changed.empty() ? changed.swap(rows) : changed.merge(rows);
        };
        for (BasicTransaction& basic : basics) {
          recorded.push_back(
              recordedTransactionType_(std::move(basic), portfolio, /*isDirty=*/true));
          edit.insertByDate(recorded.back());
          if (recorded.size() >= atOnce) {
            walk();
          }
        }
        edited.placed = recorded;
        return changed;
      });

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
  TransactionSet recalculated = editLedger(
      portfolio, &revisions.front(), subjects.size(),
      [&](LedgerRowsEdit& edit, EditedRows& edited) {
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
        edited.placed = subjects;
        return walkFrom(edit, portfolio);
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
  TransactionSet recalculated = editLedger(
      portfolio, nullptr, subjects.size(), [&](LedgerRowsEdit& edit, EditedRows& edited) {
        for (const TransactionPointer& row : deleted | std::views::reverse) {
          neighbours.push_back(edit.rowAfter(*row));
          edit.remove(row);
        }
        edited.removed = deleted;
        return walkFrom(edit, portfolio);
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
  TransactionSet recalculated = editLedger(
      portfolio, nullptr, subjects.size(), [&](LedgerRowsEdit& edit, EditedRows& edited) {
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
        edited.placed = subjects;
        return walkFrom(edit, portfolio);
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
  TransactionSet recalculated = editLedger(
      portfolio, nullptr, subjects.size(), [&](LedgerRowsEdit& edit, EditedRows& edited) {
        for (std::size_t i = 0; i < subjects.size(); ++i) {
          requireRow(subjects[i], edit, "Cannot find existing transaction in portfolio to move.");
          neighbours.push_back(edit.rowAfter(*subjects[i]));
          requireAnchor(anchors[i], edit,
                        "Cannot find existing transaction in portfolio to anchor the move.");
          edit.move(subjects[i], anchors[i]);
        }
        edited.placed = subjects;
        return walkFrom(edit, portfolio);
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
  if (journal_ != nullptr) {
    return walkLedger(startIndex, portfolio);
  }
  TransactionSet recalculated;
  changeAsOne(portfolio, [&] { recalculated = walkLedger(startIndex, portfolio); });
  return recalculated;
}

void PortfolioManager::changeAsOne(const PortfolioPointer& portfolio,
                                   const std::function<void()>& change) {
  changeLedger(portfolio, [&] {
    change();
    return EditedRows();
  });
}

TransactionSet PortfolioManager::walkLedger(std::size_t startIndex,
                                            const PortfolioPointer& portfolio) {
  const auto& rows = portfolio->transactions();
  assert(startIndex <= rows.size());
  portfolio->lastWalkStart_ = {startIndex, walkStart(startIndex, portfolio)};
  LedgerWalk walk(*portfolio, portfolio->lastWalkStart_->state);
  CalendarYears years(calendar);
  auto& snapshots = portfolio->snapshotsByYear;
  if (startIndex == 0) {
    journal_->takeYearsFrom(std::numeric_limits<int>::min());
  } else {
    const int lastKept = years.yearOf(rows[startIndex - 1]->settlementDate());
    journal_->takeYearsFrom(lastKept);
    snapshots.insert_or_assign(lastKept, walk.state());
  }

  try {
    for (std::size_t i = startIndex; i < rows.size(); ++i) {
      const bool isNew = !rows[i]->cashNet && !rows[i]->sharesNet;
      walk.derive(rows[i]);
      const int year = years.yearOf(rows[i]->settlementDate());
      // Only the last row of a year leaves a snapshot behind, so that no row copies the balances.
      if (i + 1 == rows.size() || years.yearOf(rows[i + 1]->settlementDate()) != year) {
        snapshots.insert_or_assign(year, walk.state());
      }
      if (isNew && recording_ != nullptr) {
        ++recording_->recordedCount;
        tellRecordingObserver();
      }
    }
    for (const LedgerWalk::Before& before : walk.dirtyRows()) {
      transactionRecalculated(*before.row, *portfolio);
      before.row->isDirty = false;
    }
    ledgerRecalculated(startIndex, *portfolio);
  } catch (...) {
    walk.restoreRows();
    throw;
  }

  TransactionSet recalculated;
  recalculated.reserve(walk.dirtyRows().size());
  for (const LedgerWalk::Before& before : walk.dirtyRows()) {
    recalculated.insert(before.row);
  }
  journal_->keep(walk.takeDirtyRows());
  return recalculated;
}

PortfolioSnapshot PortfolioManager::snapshotBefore(std::size_t index,
                                                   const PortfolioPointer& portfolio) const {
  const std::size_t count = portfolio->transactions().size();
  const auto& snapshots = portfolio->snapshotsByYear;
  if (index >= count && count > 0) {
    return snapshots.empty() ? PortfolioSnapshot() : snapshots.rbegin()->second;
  }
  return replayedBefore(std::min(index, count), portfolio);
}

PortfolioSnapshot PortfolioManager::replayedBefore(std::size_t index,
                                                   const PortfolioPointer& portfolio) const {
  if (index == 0) {
    return {};
  }
  const auto& rows = portfolio->transactions();
  const auto& snapshots = portfolio->snapshotsByYear;
  const int year = calendar.component(CalendarUnit::year, rows[index - 1]->settlementDate());
  const Date yearStart =
      calendar.date({{CalendarUnit::year, year}, {CalendarUnit::month, 1}, {CalendarUnit::day, 1}})
          .value_or(Date::distantPast());

  const auto thisYear = snapshots.lower_bound(year);
  PortfolioSnapshot base =
      thisYear == snapshots.begin() ? PortfolioSnapshot() : std::prev(thisYear)->second;
  const auto before = std::span(rows).first(index);
  const auto first = std::ranges::lower_bound(before, yearStart, std::less<>(),
                                              &PortfolioTransaction::settlementDate);
  return replay(std::span(first, before.end()), std::move(base));
}

PortfolioSnapshot PortfolioManager::walkStart(std::size_t index,
                                              const PortfolioPointer& portfolio) const {
  const auto& last = portfolio->lastWalkStart_;
  if (!last || last->index > index) {
    return replayedBefore(index, portfolio);
  }
  const auto yearOf = [&](const TransactionPointer& row) {
    return calendar.component(CalendarUnit::year, row->settlementDate());
  };
  const auto since = std::span(portfolio->transactions()).subspan(last->index, index - last->index);
  if (!since.empty() && yearOf(since.front()) != yearOf(since.back())) {
    return replayedBefore(index, portfolio);
  }
  return replay(since, last->state);
}

PortfolioSnapshot PortfolioManager::replay(std::span<const TransactionPointer> rows,
                                           PortfolioSnapshot start) {
  return replayLedger(rows, std::move(start));
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

void PortfolioManager::keepEdit(const PortfolioPointer& /*portfolio*/,
                                const std::function<EditedRows()>& edit) {
  edit();
}

void PortfolioManager::tellRecordingObserver() const {
  if (recording_ != nullptr && recording_->observer) {
    recording_->observer(recording_->recordedCount);
  }
}

void PortfolioManager::transactionRecalculated(PortfolioTransaction& /*row*/,
                                               Portfolio& /*portfolio*/) {}

void PortfolioManager::ledgerRecalculated(std::size_t /*startIndex*/, Portfolio& /*portfolio*/) {}

TransactionSet PortfolioManager::walkFrom(LedgerRowsEdit& edit, const PortfolioPointer& portfolio) {
  const std::size_t start = edit.apply();
  const auto& rows = portfolio->transactions();
  // The walk compares each row with the one before it, but for its first.
  if (start > 0 && start < rows.size()) {
    requireLedgerOrder(*rows[start - 1], *rows[start]);
  }
  return recalculateLedger(start, portfolio);
}

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
