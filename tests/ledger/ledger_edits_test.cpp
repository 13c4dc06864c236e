// The five edits: what each does to the rows, what it announces, and that all of it can be undone.

#include <optional>
#include <thread>

#include "ledger/manager/portfolio_property_changer.h"
#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using Failure = PortfolioManagerError;

std::string reasonOf(const std::optional<Failure>& error) {
  return error ? error->description().value_or("") : "";
}

TEST(RecordTransactions, TakesAllBackWhenOneIsRefused) {
  Ledger ledger;
  ledger.record({ledger.deposit("100")});
  const LedgerState before = ledger.state();
  const auto sale = ledger.sell("5", "1");
  const auto error = errorOf([&] {
    ledger.record({ledger.deposit("1"), sale, ledger.deposit("2")});
  });
  const auto* violation = error->as<Failure::ViolatesExistingTransaction>();
  ASSERT_NE(violation, nullptr);
  EXPECT_EQ(violation->existing->basic, sale);
  EXPECT_THAT(error->recoverySuggestion().value(), ::testing::StartsWith("Insufficient shares."));
  EXPECT_EQ(ledger.state(), before);
}

TEST(RecordTransactions, WalksEachRowWithTheLedgerAsTheRowsBeforeItLeftIt) {
  Ledger ledger;
  ledger.on(day(2021, 5, 1));
  const auto purchase = ledger.buy("1", "10");
  // The deposit settles earlier but comes later, so the purchase meets an empty account.
  ledger.on(day(2021, 4, 1));
  const auto deposit = ledger.deposit("10");
  EXPECT_THROW(ledger.record({purchase, deposit}), Failure);
  EXPECT_NO_THROW(ledger.record({deposit, purchase}));
}

TEST(RecordTransactions, TellTheirObserverWhichOneIsAtFault) {
  Ledger ledger;
  ledger.on(day(2021, 3, 1));
  ledger.record({ledger.deposit("100")});
  ledger.on(day(2021, 3, 10));
  ledger.record({ledger.withdrawal("80")});
  std::vector<std::size_t> told;
  const auto placeAtFault = [&](std::vector<BasicTransaction> basics) {
    told.clear();
    EXPECT_THROW(
        ledger.manager->recordTransactions(std::move(basics), ledger.portfolio, nullptr,
                                           [&](std::size_t count) { told.push_back(count); }),
        Failure);
    return told.back();
  };
  // The second breaks a row that was there, the fourth cannot be taken itself.
  ledger.on(day(2021, 3, 2));
  EXPECT_EQ(placeAtFault({ledger.deposit("1"), ledger.withdrawal("50"), ledger.deposit("5")}), 1U);
  ledger.on(day(2021, 3, 11));
  EXPECT_EQ(placeAtFault({ledger.deposit("1"), ledger.deposit("1"), ledger.deposit("1"),
                          ledger.withdrawal("50"), ledger.deposit("1")}),
            3U);
}

TEST(RecordTransactions, NamesTheLaterRowThatAnEarlierOneBreaks) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("100"), ledger.withdrawal("80")});
  ledger.on(day(2021, 3, 1) + 60);
  const auto error = errorOf([&] { ledger.record({ledger.withdrawal("30")}); });
  EXPECT_EQ(
      *error,
      Failure(Failure::ViolatesExistingTransaction{
          rows[1], Failure(Failure::InsufficientCash{rows[1], 80, 70, Currency::cad()}).copy()}));
  EXPECT_EQ(error->description(),
            "This change would violate a transaction settled on Mar 2, 2021.");
}

TEST(RecordTransactions, SaysWhatToDoAboutADividendThatCountedOtherShares) {
  Ledger ledger;
  const auto dividend =
      ledger.record({ledger.deposit("100"), ledger.buy("5", "10"),
                     ledger.yield(BasicTransaction::YieldType::dividend, "1")})[2];
  ledger.on(day(2021, 3, 2) + 60);
  const auto found = ledger.buy("3", "6");
  const auto error = errorOf([&] { ledger.record({found}); });
  EXPECT_EQ(reasonOf(error),
            "The transaction declares a dividend from 5\u00A0shares of ABC but 8 are held.");
  EXPECT_EQ(error->recoverySuggestion(), std::nullopt);
  EXPECT_EQ(error->furtherText(),
            "The dividend settled on Mar 3, 2021 is in the ledger already and was paid on the "
            "shares held then. Delete it, make this change, and record it again.");

  BasicTransaction again = dividend->basic;
  std::get<BasicTransaction::Yield>(again.kind).netShares.reset();
  ledger.manager->deleteTransactions({dividend}, ledger.portfolio, nullptr);
  ledger.record({found});
  EXPECT_EQ(ledger.record({again})[0]->sharesNet, dec("8"));

  // An entry of the user's own needs no such advice, and neither does his change of a dividend.
  const auto kept = ledger.rows().back();
  BasicTransaction change = kept->basic;
  std::get<BasicTransaction::Yield>(change.kind).netShares = dec("9");
  const auto refused = errorOf([&] {
    ledger.manager->reviseTransactions({kept}, {change}, std::nullopt, ledger.portfolio, nullptr);
  });
  EXPECT_EQ(refused->furtherText(), "");
  const auto wrong = errorOf(
      [&] { ledger.record({ledger.yield(BasicTransaction::YieldType::dividend, "1", dec("7"))}); });
  EXPECT_EQ(wrong->furtherText(), "");
}

TEST(ReviseTransactions, KeepsTheRowInItsPlaceUntilItsDateChanges) {
  Ledger ledger;
  ledger.on(day(2021, 3, 1));
  auto first = ledger.deposit("1");
  auto second = first, third = first;
  const auto rows = ledger.record({first, second, third});
  LastChanges changes;

  first.note = "a note";
  ledger.manager->reviseTransactions({rows[0]}, {first}, std::nullopt, ledger.portfolio,
                                     ledger.undo);
  EXPECT_THAT(ledger.rows(), ElementsAre(rows[0], rows[1], rows[2]));
  EXPECT_EQ(changes.changes->modified, TransactionSet({rows[0]}));
  EXPECT_EQ(changes.changes->recalculated, TransactionSet());

  const auto moved = BulkRevision{.settlementDate = day(2021, 3, 2)}.applied(first);
  ledger.manager->reviseTransactions({rows[0]}, {moved}, std::nullopt, ledger.portfolio,
                                     ledger.undo);
  EXPECT_THAT(ledger.rows(), ElementsAre(rows[1], rows[2], rows[0]));
  EXPECT_EQ(changes.changes->recalculated, TransactionSet({rows[1], rows[2]}));

  ledger.undo->undo();
  EXPECT_THAT(ledger.rows(), ElementsAre(rows[0], rows[1], rows[2]));
  EXPECT_EQ(rows[0]->basic, first);
}

TEST(ReviseTransactions, TellsTheUserOfHisOwnFaultInTheWordsOfHisEntry) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("100"), ledger.withdrawal("80")});
  auto revision = rows[1]->basic;
  revision.kind = BasicTransaction::Transfer{{Currency::usd(), dec("-5")}};
  const auto error = errorOf([&] {
    ledger.manager->reviseTransactions({rows[1]}, {revision}, std::nullopt, ledger.portfolio,
                                       ledger.undo);
  });
  EXPECT_EQ(reasonOf(error),
            "Insufficient cash. The transaction requires $5.00 but only $0.00 is on hand.");
}

TEST(DeleteTransactions, GivesTheSameRowsBackOnUndo) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("1"), ledger.deposit("2"), ledger.deposit("3")});
  const LedgerState before = ledger.state();
  LastChanges changes;
  ledger.manager->deleteTransactions({rows[0], rows[2]}, ledger.portfolio, ledger.undo);
  EXPECT_THAT(ledger.rows(), ElementsAre(rows[1]));
  EXPECT_EQ(changes.changes->deleted, TransactionSet({rows[0], rows[2]}));
  EXPECT_EQ(changes.changes->modified, TransactionSet({rows[1]}));
  EXPECT_FALSE(changes.changes->recalculated.has_value());

  ledger.undo->undo();
  EXPECT_EQ(ledger.state(), before);
  EXPECT_EQ(changes.changes->inserted, TransactionSet({rows[0], rows[2]}));
  ledger.undo->redo();
  EXPECT_THAT(ledger.rows(), ElementsAre(rows[1]));
}

TEST(DeleteTransactions, LeavesNoYearBehindInAnEmptyLedger) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("1"), ledger.deposit("2")});
  ledger.manager->deleteTransactions(rows, ledger.portfolio, ledger.undo);
  EXPECT_TRUE(ledger.portfolio->snapshotsByYear.empty());
  ledger.undo->undo();
  EXPECT_THAT(ledger.rows(), ElementsAre(rows[0], rows[1]));
}

TEST(MoveTransactions, ReordersRowsOfOneDateOnly) {
  Ledger ledger;
  const auto deposit = ledger.deposit("5");
  auto adjustment = deposit;
  adjustment.kind = BasicTransaction::CashAdjustment{Ledger::cad("0")};
  const auto rows = ledger.record({deposit, adjustment, deposit, ledger.deposit("1")});
  LastChanges changes;
  ledger.manager->moveTransactions({rows[2]}, {rows[1]}, ledger.portfolio, ledger.undo);
  EXPECT_THAT(ledger.rows(), ElementsAre(rows[0], rows[2], rows[1], rows[3]));
  EXPECT_EQ(changes.changes->recalculated, TransactionSet({rows[1]}));

  const LedgerState before = ledger.state();
  const auto error = errorOf([&] {
    ledger.manager->moveTransactions({rows[3]}, {rows[0]}, ledger.portfolio, ledger.undo);
  });
  EXPECT_THAT(reasonOf(error), ::testing::StartsWith("Transactions not ordered by date ("));
  EXPECT_EQ(ledger.state(), before);
}

TEST(LedgerEdits, KeepTheOrderOfDatesAlsoBehindTheRowsThatStay) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("1"), ledger.deposit("2"), ledger.deposit("3")});
  const auto expectDisorder = [&](const auto& edit) {
    const LedgerState before = ledger.state();
    EXPECT_THAT(reasonOf(errorOf(edit)), ::testing::StartsWith("Transactions not ordered by date"));
    EXPECT_EQ(ledger.state(), before);
  };
  // Both touch the last place alone.
  BasicTransaction early = rows[2]->basic;
  early.tradeDate = early.settlementDate = rows[0]->settlementDate();
  expectDisorder([&] {
    ledger.manager->reviseTransactions({rows[2]}, {early}, PortfolioManager::Anchors{nullptr},
                                       ledger.portfolio, ledger.undo);
  });
  ledger.manager->deleteTransactions({rows[0]}, ledger.portfolio, nullptr);
  expectDisorder([&] {
    ledger.manager->insertTransactions({rows[0]}, {nullptr}, ledger.portfolio, ledger.undo);
  });
}

TEST(LedgerEdits, RefuseRowsThatTheyDoNotKnow) {
  Ledger ledger, other;
  const auto rows = ledger.record({ledger.deposit("1"), ledger.deposit("2")});
  const auto strange = other.record({other.deposit("1")});
  const LedgerState before = ledger.state();
  const auto& portfolio = ledger.portfolio;
  auto& manager = *ledger.manager;
  const auto basic = rows[0]->basic;
  using Anchors = PortfolioManager::Anchors;
  const std::vector<std::pair<std::function<void()>, std::string>> cases = {
      {[&] { manager.reviseTransactions({}, {}, std::nullopt, portfolio, nullptr); },
       "Subject and target transaction counts are mismatched for revision."},
      {[&] {
         manager.reviseTransactions(rows, {basic, basic}, Anchors{}, portfolio, nullptr);
       },
       "Subject and target transaction counts are mismatched for revision."},
      {[&] { manager.reviseTransactions(strange, {basic}, std::nullopt, portfolio, nullptr); },
       "Cannot find existing transaction in the ledger to revise."},
      {[&] { manager.reviseTransactions({rows[0]}, {basic}, strange, portfolio, nullptr); },
       "Cannot find neighbour transaction in the ledger during revision."},
      {[&] {
         manager.deleteTransactions({rows[0], strange[0]}, portfolio, nullptr);
       },
       "Cannot find existing transaction in the ledger to delete."},
      {[&] {
         manager.deleteTransactions({rows[0], rows[0]}, portfolio, nullptr);
       },
       "Cannot find existing transaction in the ledger to delete."},
      {[&] { manager.insertTransactions({rows[0]}, {}, portfolio, nullptr); },
       "Subject and target transaction counts are mismatched for insertion."},
      {[&] { manager.insertTransactions({rows[0]}, {strange[0]}, portfolio, nullptr); },
       "Cannot find existing transaction in portfolio to anchor the insertion."},
      {[&] { manager.insertTransactions({rows[0]}, {nullptr}, portfolio, nullptr); },
       "Cannot insert a transaction that is in the portfolio already or belongs to another."},
      {[&] { manager.moveTransactions({rows[0]}, {}, portfolio, nullptr); },
       "Subject and target transaction counts are mismatched for a move."},
      {[&] { manager.moveTransactions(strange, {nullptr}, portfolio, nullptr); },
       "Cannot find existing transaction in portfolio to move."},
      {[&] { manager.moveTransactions({rows[0]}, strange, portfolio, nullptr); },
       "Cannot find existing transaction in portfolio to anchor the move."},
      {[&] { manager.removePortfolio(other.portfolio); },
       "The portfolio is not known to this portfolio manager."}};
  for (const auto& [edit, reason] : cases) {
    EXPECT_EQ(reasonOf(errorOf(edit)), reason);
    EXPECT_EQ(ledger.state(), before);
  }
}

TEST(LedgerEdits, OfAPortfolioThatIsNotTheManagersAreRefused) {
  const PortfolioManagerError stranger(PortfolioManagerError::InvalidPortfolio{
      "The portfolio is not known to this portfolio manager."});
  Ledger ledger;
  PortfolioManager& manager = *ledger.manager;
  const auto rows = ledger.record({ledger.deposit("10"), ledger.deposit("20")});
  manager.deleteTransactions({rows[1]}, ledger.portfolio, ledger.undo);
  const PortfolioPointer removed = ledger.portfolio;
  manager.removePortfolio(removed);
  ledger.portfolio = manager.createPortfolio(Currency::cad());
  const LedgerState before = LedgerState::of(removed);
  const BasicTransaction basic = ledger.deposit("5");
  const std::vector<std::function<void()>> edits = {
      [&] { manager.recordTransactions({basic}, removed, nullptr); },
      [&] { manager.reviseTransactions({rows[0]}, {basic}, std::nullopt, removed, nullptr); },
      [&] { manager.deleteTransactions({rows[0]}, removed, nullptr); },
      [&] { manager.insertTransactions({rows[1]}, {nullptr}, removed, nullptr); },
      [&] { manager.moveTransactions({rows[0]}, {nullptr}, removed, nullptr); },
      [&] { manager.recalculateLedger(0, removed); },
      [&] { manager.portfolioPropertiesDidChange(removed); },
      [&] { manager.removePortfolio(removed); },
      [&] {
        PortfolioPropertyChanger().changeProperties(removed, {"Name", true, true}, nullptr);
      }};
  for (const auto& edit : edits) {
    EXPECT_EQ(errorOf(edit), stranger);
    EXPECT_EQ(LedgerState::of(removed), before);
  }
  EXPECT_EQ(removed->name, "Untitled Portfolio");

  int presented = 0;
  manager.presentError = [&](const Error&) { ++presented; };
  ledger.undo->undo();
  EXPECT_EQ(presented, 1);
  EXPECT_TRUE(ledger.rows().empty());
}

TEST(LedgerEdits, BlameALaterSplitForItsShares) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.journal("10"), ledger.split("10", "20")});
  const auto error =
      errorOf([&] { ledger.on(rows[0]->settlementDate()).record({ledger.journal("1")}); });
  const auto* violation = error->as<PortfolioManagerError::ViolatesExistingTransaction>();
  ASSERT_NE(violation, nullptr);
  EXPECT_EQ(violation->existing, rows[1]);
  EXPECT_EQ(violation->because->description(),
            "Expecting to split 10\u00A0shares of ABC but 11 are held.");
}

TEST(LedgerEdits, ReviseInBulkWhatTheFormSays) {
  Ledger ledger;
  const BasicTransaction trade = ledger.buy("1", "2");
  const Date other = day(2020, 1, 1);
  EXPECT_EQ(BulkRevision{.tradeDate = other}.applied(trade),
            (BasicTransaction{trade.kind, other, trade.settlementDate, std::nullopt}));
  EXPECT_EQ(*BulkRevision{.equity = ledger.xyz}.applied(trade).equity(), ledger.xyz);
  const BasicTransaction deposit = ledger.deposit("1");
  EXPECT_EQ(BulkRevision{.equity = ledger.xyz}.applied(deposit), deposit);
}

TEST(LedgerEdits, ThatTakeNothingChangeNothing) {
  Ledger ledger;
  LastChanges changes;
  ledger.record({});
  ledger.manager->deleteTransactions({}, ledger.portfolio, ledger.undo);
  ledger.manager->moveTransactions({}, {}, ledger.portfolio, ledger.undo);
  EXPECT_EQ(changes.count, 0);
  EXPECT_FALSE(ledger.undo->canUndo());
}

/// A keeper of rows that refuses when it is told to, as a full disk would.
class FailingManager : public PortfolioManager {
 public:
  using PortfolioManager::PortfolioManager;
  int failAt = -1;

 protected:
  void transactionRecalculated(PortfolioTransaction& /*row*/, Portfolio& /*portfolio*/) override {
    if (failAt-- == 0) {
      throw std::runtime_error("disk full");
    }
  }
};

TEST(LedgerEdits, AreTakenBackWhenTheKeeperOfTheRowsFails) {
  Ledger ledger;
  const auto manager = std::make_shared<FailingManager>(ledger.provider);
  ledger.manager = manager;
  ledger.portfolio = manager->createPortfolio(Currency::cad());
  ledger.record({ledger.deposit("10"), ledger.buy("10", "5")});
  const LedgerState before = ledger.state();
  for (const int failAt : {0, 1, 2}) {
    manager->failAt = failAt;
    EXPECT_THROW(ledger.record({ledger.yield(BasicTransaction::YieldType::dividend, "1"),
                                ledger.deposit("1"), ledger.on(day(2021, 3, 2)).deposit("1")}),
                 std::runtime_error);
    EXPECT_EQ(ledger.state(), before);
  }
}

TEST(LedgerEdits, PresentAnErrorThatAnUndoMeets) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("10")});
  // Spent without the undo manager's knowledge.
  ledger.manager->recordTransactions({ledger.withdrawal("10")}, ledger.portfolio, nullptr);
  std::string presented;
  ledger.manager->presentError = [&](const Error& error) { presented = *error.description(); };
  EXPECT_NO_THROW(ledger.undo->undo());
  EXPECT_EQ(presented, "This change would violate a transaction settled on Mar 2, 2021.");
  EXPECT_EQ(ledger.rows().size(), 2U);
}

TEST(Orders, OtherThanRecordsAreNotSupported) {
  Ledger ledger;
  const auto order = [&](auto kind) { ledger.manager->placeOrder({kind}, ledger.portfolio, {}); };
  EXPECT_EQ(reasonOf(errorOf([&] {
              order(Order::Buy{ledger.abc, 1});
            })),
            "Buy orders are not supported by this provider.");
  EXPECT_EQ(reasonOf(errorOf([&] { order(Order::Withdraw{Ledger::cad("1")}); })),
            "Withdrawal orders are not supported by this provider.");
  order(Order::Record{ledger.deposit("1")});
  EXPECT_EQ(ledger.rows().size(), 1U);
}

TEST(BackgroundEdits, KeepTheMainQueueFromReadingUntilTheyAreMadeKnown) {
  Ledger ledger;
  ledger.manager->beginBackgroundEdit();
  EXPECT_THROW((void)ledger.manager->valuation(ledger.portfolio), PortfolioManagerError);
  EXPECT_THROW((void)ledger.manager->valuationEquities(ledger.portfolio), PortfolioManagerError);
  std::optional<bool> fetched;
  ledger.manager->fetchDailySnapshots(ledger.portfolio, {2021, 1, 1}, {2021, 1, 2},
                                      [&](const auto& result) { fetched = result.has_value(); });
  EXPECT_EQ(fetched, false);

  bool couldRead = false;
  const auto observation = NotificationCenter::defaultCenter().addObserver(
      PortfolioManager::didChangePortfolio, ledger.manager.get(), [&](const auto&) {
        couldRead = ledger.manager->valuation(ledger.portfolio).currentValue == dec("1000");
      });
  std::thread([&] {
    ledger.manager->recordTransactions({ledger.deposit("1000")}, ledger.portfolio, nullptr);
  }).join();
  EXPECT_TRUE(couldRead) << "whoever hears the news reads the ledger";
}

}  // namespace
}  // namespace corvane::testing
