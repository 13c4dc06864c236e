// A trial tells what an entry would do. The judge is the ledger itself: each entry is tried, then
// made and taken back.
//
// CORVANE_TEST_CASES sets the number of ledgers, CORVANE_TEST_SEED the first seed.

#include <random>

#include "ledger/random_edits.h"
#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

using Balances = LedgerTrial::Balances;

LedgerTrial trialOf(Ledger& ledger, const BasicTransaction& basic,
                    const TransactionPointer& revised = nullptr) {
  const auto trial = ledger.manager->trial(basic, ledger.portfolio, revised);
  EXPECT_TRUE(trial) << *trial.error();
  return trial.value_or(LedgerTrial());
}

TEST(LedgerTrial, TellsOfASaleInTheMiddle) {
  Ledger ledger;
  ledger.record({ledger.deposit("1000"), ledger.buy("10", "100"), ledger.buy("10", "300")});
  const BasicTransaction sale = ledger.on(ledger.rows()[1]->settlementDate()).sell("4", "60");
  const LedgerTrial trial = trialOf(ledger, sale);
  EXPECT_EQ(trial.before, (Balances{dec("900"), dec("10"), dec("100")}));
  EXPECT_EQ(trial.after, (Balances{dec("960"), dec("6"), dec("60")}));
  EXPECT_EQ(trial.atEnd, (Balances{dec("660"), dec("16"), dec("360")}));
  EXPECT_EQ(trial.atEndNow, (Balances{dec("600"), dec("20"), dec("400")}));
  EXPECT_EQ(trial.capitalGain, dec("20"));
}

TEST(LedgerTrial, HasOnlyTheFiguresThatTheEntryNames) {
  Ledger ledger;
  EXPECT_EQ(trialOf(ledger, ledger.deposit("5")).after, (Balances{dec("5"), {}, {}}));
  ledger.record({ledger.journal("3", dec("7"))});
  const LedgerTrial split = trialOf(ledger, ledger.split("3", "6"));
  EXPECT_EQ(split.after, (Balances{{}, dec("6"), dec("7")}));
  EXPECT_EQ(split.capitalGain, std::nullopt);
}

TEST(LedgerTrial, NamesTheRowThatTheEntryWouldBreak) {
  Ledger ledger;
  ledger.record({ledger.deposit("100"), ledger.buy("10", "100"), ledger.sell("10", "90")});
  const auto trial = ledger.manager->trial(
      ledger.on(ledger.rows()[1]->settlementDate()).sell("1", "5"), ledger.portfolio);
  ASSERT_FALSE(trial);
  const auto* error = dynamic_cast<const PortfolioManagerError*>(trial.error().get());
  ASSERT_NE(error, nullptr);
  const auto* violation = error->as<PortfolioManagerError::ViolatesExistingTransaction>();
  ASSERT_NE(violation, nullptr);
  EXPECT_EQ(violation->existing, ledger.rows()[2]);
}

TEST(LedgerTrial, RefusesWhatIsNotTheManagers) {
  Ledger ledger;
  Ledger other;
  const auto rows = other.record({other.deposit("1")});
  EXPECT_FALSE(ledger.manager->trial(ledger.deposit("1"), other.portfolio));
  EXPECT_FALSE(ledger.manager->trial(ledger.deposit("1"), ledger.portfolio, rows.front()));
  ledger.manager->beginBackgroundEdit();
  EXPECT_FALSE(ledger.manager->trial(ledger.deposit("1"), ledger.portfolio));
}

/// Tries entries at random places of a random ledger and then makes them.
class RandomTrials {
 public:
  explicit RandomTrials(std::uint64_t seed) : edits_(seed, ledger_.manager, ledger_.portfolio) {
    ledger_.portfolio->allowsNegativeBalances = edits_.chance(2);
    ledger_.portfolio->usesCashAccounts = !edits_.chance(3);
  }

  void run(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      if (edits_.chance(3)) {
        try {
          edits_.perform(edits_.next(), ledger_.undo);
        } catch (const PortfolioManagerError&) {
        }
      }
      const auto& rows = ledger_.rows();
      const bool revises = !rows.empty() && edits_.chance(2);
      const TransactionPointer revised = revises ? rows[edits_.below(rows.size())] : nullptr;
      BasicTransaction basic = edits_.transaction();
      if (revises && edits_.chance(2)) {
        basic.tradeDate = revised->tradeDate();
        basic.settlementDate = revised->settlementDate();
      }
      compare(basic, revised);
    }
  }

 private:
  void compare(const BasicTransaction& basic, const TransactionPointer& revised) {
    const LedgerState before = ledger_.state();
    const LastChanges changes;
    const auto trial = ledger_.manager->trial(basic, ledger_.portfolio, revised);
    EXPECT_EQ(ledger_.state(), before);
    EXPECT_EQ(changes.count, 0);
    const PortfolioSnapshot now = ledger_.finalSnapshot();
    try {
      TransactionPointer row = revised;
      if (revised == nullptr) {
        row = ledger_.manager->recordTransactions({basic}, ledger_.portfolio, ledger_.undo).front();
      } else {
        ledger_.manager->reviseTransactions({revised}, {basic}, std::nullopt, ledger_.portfolio,
                                            ledger_.undo);
      }
      ASSERT_TRUE(trial) << *trial.error() << " but the ledger took " << basic;
      EXPECT_EQ(trial->after, (Balances{row->cashNet, row->sharesNet, row->costBaseNet()}));
      EXPECT_EQ(trial->before.costBase, row->costBasePrior);
      EXPECT_EQ(trial->capitalGain, row->capitalGain());
      EXPECT_EQ(trial->atEnd, balancesIn(ledger_.finalSnapshot(), basic));
      EXPECT_EQ(trial->atEndNow, balancesIn(now, basic));
      ledger_.undo->undo();
      EXPECT_EQ(ledger_.state(), before);
    } catch (const PortfolioManagerError& error) {
      ASSERT_FALSE(trial) << error << " but the trial took " << basic;
      EXPECT_EQ(trial.error()->description(), error.description());
      EXPECT_EQ(trial.error()->recoverySuggestion(), error.recoverySuggestion());
    }
  }

  static Balances balancesIn(const PortfolioSnapshot& snapshot, const BasicTransaction& basic) {
    Balances balances;
    if (basic.currency() != nullptr) {
      balances.cashOnHand = snapshot.currencySnapshots.get(*basic.currency()).cashOnHand;
    }
    if (basic.equity() != nullptr) {
      const auto holding = snapshot.equitySnapshots.get(*basic.equity());
      balances.sharesHeld = holding.sharesHeld;
      balances.costBase = holding.costBase;
    }
    return balances;
  }

  Ledger ledger_;
  RandomEdits edits_;
};

TEST(LedgerTrial, ComesToWhatTheLedgerDoes) {
  const std::uint64_t first = setting("CORVANE_TEST_SEED", std::random_device()());
  const std::uint64_t count = setting("CORVANE_TEST_CASES", 40);
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    SCOPED_TRACE("CORVANE_TEST_SEED=" + std::to_string(seed));
    RandomTrials(seed).run(120);
    if (HasFailure()) {
      return;
    }
  }
}

}  // namespace
}  // namespace corvane::testing
