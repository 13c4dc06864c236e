// The one object through which a ledger changes.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "ledger/manager/ledger_trial.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_keeper.h"
#include "ledger/portfolio/portfolio_manager_error.h"
#include "ledger/reports/daily_snapshots_fetch.h"
#include "ledger/reports/portfolio_valuation.h"
#include "ledger/transaction/order.h"
#include "platform/async/notification_center.h"
#include "platform/async/undo_manager.h"

namespace corvane {

class LedgerChange;

/// Rows that an edit touched. An absent set means that the edit has no such rows to tell of.
struct TransactionChanges {
  std::optional<TransactionSet> inserted = {};
  std::optional<TransactionSet> deleted = {};
  std::optional<TransactionSet> modified = {};
  std::optional<TransactionSet> recalculated = {};
};

/// Owns portfolios and changes their ledgers by five edits: record, revise, delete, insert, move.
///
/// Every edit is all-or-nothing: it changes the rows, lets the engine walk the ledger from the
/// first row that it touched, and takes everything back when the engine refuses. What succeeds
/// registers one undo step and posts one notification. Held by shared pointer only. Edits run on
/// the calling thread, the main thread but for an import's one recordTransactions; nothing is
/// locked.
///
/// A subclass that keeps the ledger elsewhere wraps every change of a ledger through keepEdit,
/// which hands it all that the change has done, or hears of each row through
/// transactionRecalculated.
class PortfolioManager : public PortfolioKeeper,
                         public std::enable_shared_from_this<PortfolioManager> {
 public:
  using Order = corvane::Order;
  using OrderFeatures = corvane::OrderFeature;
  using BulkRevision = corvane::BulkRevision;
  using TransactionChanges = corvane::TransactionChanges;

  /// Makes a row of the class that a manager records.
  using TransactionType = TransactionPointer (*)(BasicTransaction transaction,
                                                 std::weak_ptr<Portfolio> portfolio, bool isDirty);
  template <typename Row>
  static TransactionPointer makeTransaction(BasicTransaction transaction,
                                            std::weak_ptr<Portfolio> portfolio, bool isDirty) {
    return std::make_shared<Row>(std::move(transaction), std::move(portfolio), isDirty);
  }

  /// A row for each subject: the row in front of which the subject goes, or null for the end.
  using Anchors = std::vector<TransactionPointer>;
  using Transactions = std::vector<TransactionPointer>;
  using UndoManagerPointer = std::shared_ptr<UndoManager>;

  struct PortfolioChange {
    std::shared_ptr<PortfolioManager> portfolioManager;
    PortfolioPointer portfolio;
    std::optional<TransactionChanges> transactionChanges;  ///< where an edit has made them
  };
  /// Posted by the manager, inline, after a change of a portfolio or of its rows.
  static constexpr Topic<PortfolioChange> didChangePortfolio{
      "ca.orlend.corvane.PortfolioManager.didChangePortfolio"};

  explicit PortfolioManager(
      std::shared_ptr<QuoteProvider> provider,
      TransactionType recordedTransactions = &makeTransaction<PortfolioTransaction>,
      std::vector<OrderFeature> orderFeatures = {OrderFeature::allowsFractionalShares,
                                                 OrderFeature::allowsRecordTransaction});
  PortfolioManager(const PortfolioManager&) = delete;
  PortfolioManager& operator=(const PortfolioManager&) = delete;
  virtual ~PortfolioManager();

  std::shared_ptr<QuoteProvider> quoteProvider;

  /// Shows an error that an undo or redo met, to which nobody else can answer. Prints it until the
  /// application sets its own.
  std::function<void(const Error&)> presentError;

  [[nodiscard]] const std::vector<PortfolioPointer>& portfolios() const { return portfolios_; }
  [[nodiscard]] const std::vector<OrderFeature>& supportedOrderFeatures() const {
    return supportedOrderFeatures_;
  }

  /// Gives back storage that is no longer used.
  virtual void compactStorage();

  virtual PortfolioPointer createPortfolio(const Currency& primaryCurrency);

  /// To be called after the name or a setting of `portfolio` has changed.
  virtual void portfolioPropertiesDidChange(const PortfolioPointer& portfolio);

  /// Throws PortfolioManagerError::InvalidPortfolio where the portfolio is not this manager's.
  virtual void removePortfolio(const PortfolioPointer& portfolio);

  /// Told of a recording under way how many of the transactions stand in the ledger by now: after
  /// each of them, and again and again while they are stored; on the thread of the edit. What it
  /// throws ends the recording, which is taken back. Where a recording fails the last that it was
  /// told is the place of the transaction at fault, counted from 0; the number of all of them where
  /// none is at fault more than the others.
  using RecordingObserver = std::function<void(std::size_t recordedCount)>;

  /// Records what has happened, in order, each behind all rows of its settlement date. Returns the
  /// new rows in the order given. Recording nothing changes nothing.
  virtual Transactions recordTransactions(const std::vector<BasicTransaction>& basics,
                                          const PortfolioPointer& portfolio,
                                          const UndoManagerPointer& undoManager,
                                          const RecordingObserver& observer = nullptr);

  /// Gives each subject its revision. Without `neighbours` a row whose settlement date stays keeps
  /// its place, and another goes behind all rows of its new date.
  virtual void reviseTransactions(const Transactions& subjects,
                                  const std::vector<BasicTransaction>& revisions,
                                  const std::optional<Anchors>& neighbours,
                                  const PortfolioPointer& portfolio,
                                  const UndoManagerPointer& undoManager);

  /// Removes rows, which are given in ledger order.
  virtual void deleteTransactions(const Transactions& subjects, const PortfolioPointer& portfolio,
                                  const UndoManagerPointer& undoManager);

  /// Puts row objects back that were deleted.
  virtual void insertTransactions(const Transactions& subjects, const Anchors& anchors,
                                  const PortfolioPointer& portfolio,
                                  const UndoManagerPointer& undoManager);

  /// Changes the order of rows of one settlement date.
  virtual void moveTransactions(const Transactions& subjects, const Anchors& anchors,
                                const PortfolioPointer& portfolio,
                                const UndoManagerPointer& undoManager);

  /// Derives the balances of all rows from `startIndex` on, which may equal the number of rows, and
  /// the yearly snapshots. Returns the rows whose balances changed and those that were dirty
  /// before.
  ///
  /// Throws PortfolioManagerError, or what the keeper of the rows throws; then everything is as it
  /// was.
  TransactionSet recalculateLedger(std::size_t startIndex, const PortfolioPointer& portfolio);

  /// Runs `edit`, which may walk the ledger and change the properties of `portfolio`, as one change
  /// that is kept whole or not at all. The properties in memory are the caller's to take back.
  void changeAsOne(const PortfolioPointer& portfolio,
                   const std::function<void(LedgerChange&)>& edit);

  /// The state just before the row at `index`; that after the last row where there is no such row.
  /// Reads at most one calendar year of rows. Throws PortfolioManagerError::LedgerInconsistency.
  [[nodiscard]] PortfolioSnapshot snapshotBefore(std::size_t index,
                                                 const PortfolioPointer& portfolio) const;

  /// The state after `rows`, a run of consecutive rows, where it was `start` before; verifies the
  /// balances of every row on the way and writes nothing. The system's self-check. Throws
  /// PortfolioManagerError::LedgerInconsistency with the first row that disagrees.
  [[nodiscard]] static PortfolioSnapshot replay(std::span<const TransactionPointer> rows,
                                                PortfolioSnapshot start);

  using FetchDailySnapshotsResult = corvane::FetchDailySnapshotsResult;
  using FetchDailySnapshotsCompletion = corvane::FetchDailySnapshotsCompletion;

  /// The balance sheets of `portfolio` on days of the manager's calendar, at the prices and rates
  /// of its quote provider; see corvane::fetchDailySnapshots. Main queue only.
  void fetchDailySnapshots(const PortfolioPointer& portfolio, YearMonthDay from, YearMonthDay to,
                           FetchDailySnapshotsCompletion completion);
  /// The same at the prices and rates of `prices`, which is not null.
  void fetchDailySnapshots(const PortfolioPointer& portfolio, YearMonthDay from, YearMonthDay to,
                           const std::shared_ptr<QuoteProvider>& prices,
                           FetchDailySnapshotsCompletion completion);

  /// The worth of `portfolio` at the recent prices of what it holds. Main queue only.
  ///
  /// Throws PortfolioManagerError: InvalidPortfolio where the portfolio is not this manager's,
  /// ForeignExchangeRateMissing, and LedgerInconsistency where an equity that is held has no recent
  /// price.
  [[nodiscard]] PortfolioValuation valuation(const PortfolioPointer& portfolio) const;

  /// The equities and currency pairs whose recent prices a valuation needs, so that they can be
  /// refreshed before. Throws PortfolioManagerError::InvalidPortfolio as valuation() does.
  [[nodiscard]] EquitySet valuationEquities(const PortfolioPointer& portfolio) const;

  /// Says that another thread is about to change a ledger. Until that change is made known, or
  /// endBackgroundEdit() is called, valuation(), valuationEquities() and fetchDailySnapshots() fail
  /// with PortfolioManagerError::LedgerInconsistency instead of reading what is changing, and views
  /// do not look at rows. Main queue only.
  void beginBackgroundEdit() { isEditedInBackground_ = true; }
  /// For a change that came to nothing. Any thread.
  void endBackgroundEdit() { isEditedInBackground_ = false; }
  [[nodiscard]] bool isEditedInBackground() const { return isEditedInBackground_; }

  /// Carries out what a view has asked for. Only Order::Record is taken; others throw
  /// PortfolioManagerError::InvalidOrderType.
  void placeOrder(const Order& order, const PortfolioPointer& portfolio,
                  const UndoManagerPointer& undoManager);

  /// What recording `transaction` would do, or giving it to the row `revised` without neighbours;
  /// or the PortfolioManagerError with which the ledger would refuse it. The row of such an error
  /// is one that nobody keeps where it is the entry itself.
  ///
  /// Changes nothing, posts nothing and registers no undo, so that a form may ask on each
  /// keystroke: it reads the year up to the entry and, behind it, only rows of the same equity or
  /// currency, up to where their balances are what they are now. What only a keeper of the ledger
  /// refuses does not show. Main queue only.
  [[nodiscard]] Result<LedgerTrial> trial(const BasicTransaction& transaction,
                                          const PortfolioPointer& portfolio,
                                          const TransactionPointer& revised = nullptr) const;

  /// Posts the change of a ledger, or without `changes` that of a portfolio's properties.
  virtual void postPortfolioChange(std::optional<TransactionChanges> changes,
                                   const PortfolioPointer& portfolio);

 protected:
  /// Runs `edit`, one change of a ledger with all its walks, which `change` then tells of. A
  /// subclass that keeps the ledger elsewhere makes sure here that it is kept whole or not at all.
  /// What this throws, also after `edit` has returned, takes the change back in memory; only what
  /// it lets pass registers an undo step and is made known.
  virtual void keepEdit(LedgerChange& change, const std::function<void()>& edit);

  /// Called for each row whose balances have changed, in ledger order, once a whole walk has
  /// succeeded; inside keepEdit. May throw.
  virtual void transactionRecalculated(PortfolioTransaction& row, Portfolio& portfolio);

  std::vector<PortfolioPointer> portfolios_;

 private:
  using UndoStep = std::move_only_function<void(PortfolioManager&, const UndoManagerPointer&)>;

  /// Lets `edit(change)` edit the rows and walk them. When that throws, takes everything back and
  /// throws what the user is to be told; `subject` is the entry that he made.
  template <typename Edit>
  TransactionSet editLedger(LedgerChange& change, const BasicTransaction* subject, Edit edit);
  /// Lets keepEdit run `edit`, and takes back what `change` has done when that throws.
  void keepWhole(LedgerChange& change, const std::function<void()>& edit);
  /// Tells the keeper of each row of `portfolio` that is walked.
  [[nodiscard]] std::function<void(PortfolioTransaction&)> rowRecalculated(Portfolio& portfolio);
  /// How many of `basics` can be recorded with one walk, which comes to the same as one for each.
  [[nodiscard]] std::size_t countRecordedAtOnce(const std::vector<BasicTransaction>& basics,
                                                const PortfolioPointer& portfolio) const;
  void registerUndo(const UndoManagerPointer& undoManager, UndoStep step);

  /// Throws where a background edit is under way.
  void requireReadable() const;
  /// The state at the end of the ledger, without a walk. Throws as valuation() does.
  [[nodiscard]] const PortfolioSnapshot& newestSnapshot(const Portfolio& portfolio) const;
  /// Throws PortfolioManagerError::InvalidPortfolio where `portfolio` is not one of portfolios().
  void requireOwn(const Portfolio& portfolio) const;

  TransactionType recordedTransactionType_;
  std::vector<OrderFeature> supportedOrderFeatures_;
  std::atomic<bool> isEditedInBackground_ = false;
  bool isChanging_ = false;  ///< for the promise that changes do not nest
};

}  // namespace corvane
