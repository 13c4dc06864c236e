// Random ledgers under random edits. Whatever is edited, refused, undone and redone, the ledger
// must agree with a naive bookkeeper, with its own walk from the start, and with its own past.
//
// CORVANE_TEST_CASES sets the number of ledgers, CORVANE_TEST_SEED the first seed.

#include <random>

#include "ledger/naive_ledger.h"
#include "ledger/random_edits.h"
#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

class RandomLedger {
 public:
  explicit RandomLedger(std::uint64_t seed) : edits_(seed, ledger_.manager, ledger_.portfolio) {
    ledger_.portfolio->allowsNegativeBalances = edits_.chance(3);
    ledger_.portfolio->usesCashAccounts = !edits_.chance(3);
    ledger_.manager->presentError = [](const Error& error) { ADD_FAILURE() << error; };
    initial_ = ledger_.state();
  }

  void run(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      edit();
      checkLedger();
    }
    checkWalkFromTheStart();
    undoAllAndRedoAll();
  }

 private:
  void edit() {
    const RandomEdit edit = edits_.next();
    switch (edit.kind) {
      case RandomEdit::Kind::undo:
      case RandomEdit::Kind::redo:
        return undoOrRedo(edit.kind == RandomEdit::Kind::redo);
      case RandomEdit::Kind::record:
        return attempt(edit, Announced::inRecalculated, canRecord(edit.basics));
      case RandomEdit::Kind::remove:
        return attempt(edit, Announced::inModified, isSoundAfter(edit));
      case RandomEdit::Kind::revise:
      case RandomEdit::Kind::move:
        return attempt(edit, Announced::inRecalculated, isSoundAfter(edit));
    }
  }

  /// Whether the naive bookkeeper takes `basics` one after the other.
  bool canRecord(const std::vector<BasicTransaction>& basics) {
    std::vector<BasicTransaction> ledger = basicsOfRows();
    for (const auto& basic : basics) {
      const auto later = std::ranges::find_if(ledger, [&](const auto& existing) {
        return existing.settlementDate > basic.settlementDate;
      });
      ledger.insert(later, basic);
      if (!NaiveLedger::of(ledger, *ledger_.portfolio, ledger_.manager->calendar)) {
        return false;
      }
      fillNetShares(ledger);
    }
    return true;
  }

  /// Whether the naive bookkeeper takes the ledger that removing, revising or moving rows one after
  /// the other leads to.
  bool isSoundAfter(const RandomEdit& edit) {
    struct Entry {
      TransactionPointer row;
      BasicTransaction basic;
    };
    std::vector<Entry> ledger;
    for (const auto& row : ledger_.rows()) {
      ledger.push_back({row, row->basic});
    }
    const auto find = [&](const TransactionPointer& row) {
      return std::ranges::find(ledger, row, &Entry::row);
    };
    for (std::size_t i = 0; i < edit.subjects.size(); ++i) {
      Entry entry = *find(edit.subjects[i]);
      const bool isRevised = edit.kind == RandomEdit::Kind::revise;
      if (isRevised && edit.basics[i].settlementDate == entry.basic.settlementDate) {
        find(entry.row)->basic = edit.basics[i];
        continue;
      }
      if (edit.kind == RandomEdit::Kind::move && edit.anchors[i] == entry.row) {
        continue;
      }
      ledger.erase(find(entry.row));
      if (isRevised) {
        entry.basic = edit.basics[i];
        ledger.insert(std::ranges::find_if(ledger,
                                           [&](const Entry& other) {
                                             return entry.basic.settlementDate <
                                                    other.basic.settlementDate;
                                           }),
                      entry);
      } else if (edit.kind == RandomEdit::Kind::move) {
        ledger.insert(find(edit.anchors[i]), entry);
      }
    }
    std::vector<BasicTransaction> basics;
    for (const Entry& entry : ledger) {
      basics.push_back(entry.basic);
    }
    return NaiveLedger::of(basics, *ledger_.portfolio, ledger_.manager->calendar).has_value();
  }

  /// A yield that has once been walked declares the holding that it was paid on.
  void fillNetShares(std::vector<BasicTransaction>& basics) {
    const auto naive = NaiveLedger::of(basics, *ledger_.portfolio, ledger_.manager->calendar);
    for (std::size_t i = 0; i < basics.size(); ++i) {
      if (auto* yield = std::get_if<BasicTransaction::Yield>(&basics[i].kind)) {
        yield->netShares = naive->rows[i].sharesNet;
      }
    }
  }

  enum class Announced { inModified, inRecalculated };

  void attempt(const RandomEdit& edit, Announced where, bool isSound) {
    const LedgerState before = ledger_.state();
    std::vector<TransactionPointer> subjects;
    LastChanges changes;
    try {
      subjects = edits_.perform(edit, ledger_.undo);
    } catch (const PortfolioManagerError& error) {
      EXPECT_FALSE(isSound) << error;
      EXPECT_EQ(ledger_.state(), before) << "after a refusal: " << error;
      EXPECT_EQ(changes.count, 0);
      return;
    }
    EXPECT_TRUE(isSound);
    ASSERT_EQ(changes.count, 1);
    past_.resize(position_);
    past_.push_back(before);
    ++position_;
    checkAnnounced(
        before, subjects,
        where == Announced::inModified ? changes.changes->modified : changes.changes->recalculated);
  }

  /// Exactly the other rows whose figures moved are announced.
  void checkAnnounced(const LedgerState& before, const std::vector<TransactionPointer>& subjects,
                      const std::optional<TransactionSet>& announced) {
    TransactionSet moved;
    for (const auto& row : ledger_.state().rows) {
      const auto old = std::ranges::find(before.rows, row.row, &LedgerState::Row::row);
      if (old != before.rows.end() && !(*old == row) &&
          std::ranges::find(subjects, row.row) == subjects.end()) {
        moved.insert(row.row);
      }
    }
    EXPECT_EQ(announced, moved);
  }

  void undoOrRedo(bool isRedo) {
    if (!(isRedo ? ledger_.undo->canRedo() : ledger_.undo->canUndo())) {
      return;
    }
    const LedgerState before = ledger_.state();
    if (isRedo) {
      ledger_.undo->redo();
      past_[position_++] = before;
    } else {
      ledger_.undo->undo();
      --position_;
      EXPECT_EQ(ledger_.state(), past_[position_]);
    }
  }

  std::vector<BasicTransaction> basicsOfRows() {
    std::vector<BasicTransaction> basics;
    for (const auto& row : ledger_.rows()) {
      basics.push_back(row->basic);
    }
    return basics;
  }

  void checkLedger() {
    const LedgerState state = ledger_.state();
    const auto naive =
        NaiveLedger::of(basicsOfRows(), *ledger_.portfolio, ledger_.manager->calendar);
    ASSERT_TRUE(naive) << "the naive bookkeeper refuses what the ledger took";
    for (std::size_t i = 0; i < state.rows.size(); ++i) {
      const auto& row = state.rows[i];
      EXPECT_EQ(
          (NaiveLedger::Row{row.cashNet, row.sharesNet, row.costBasePrior, row.row->capitalGain()}),
          naive->rows[i])
          << row.basic << state;
      EXPECT_FALSE(row.row->isDirty);
    }
    std::map<int, NaiveLedger::Year> years;
    for (const auto& [year, snapshot] : state.years) {
      for (const auto& [currency, cash] : snapshot.currencySnapshots) {
        years[year].cash[std::string(currency.code)] = {cash.cashOnHand, cash.netCashDeposited};
      }
      for (const auto& [equity, holding] : snapshot.equitySnapshots) {
        years[year].holdings[equity->id()] = {holding.sharesHeld, holding.costBase,
                                              holding.cumulativeCapitalGain};
      }
      years[year];
    }
    EXPECT_EQ(years, naive->years);
    EXPECT_EQ(PortfolioManager::replay(ledger_.rows(), {}), ledger_.finalSnapshot());
  }

  /// Not after each edit, which would leave no edit a walk that starts anywhere else.
  void checkWalkFromTheStart() {
    const LedgerState state = ledger_.state();
    EXPECT_EQ(ledger_.manager->recalculateLedger(0, ledger_.portfolio), TransactionSet());
    EXPECT_EQ(ledger_.state(), state) << "the walk from the start comes to other figures";
  }

  void undoAllAndRedoAll() {
    while (ledger_.undo->canRedo()) {
      undoOrRedo(true);
    }
    const LedgerState last = ledger_.state();
    while (ledger_.undo->canUndo()) {
      undoOrRedo(false);
    }
    EXPECT_EQ(ledger_.state(), initial_);
    while (ledger_.undo->canRedo()) {
      undoOrRedo(true);
    }
    EXPECT_EQ(ledger_.state(), last);
  }

  Ledger ledger_;
  RandomEdits edits_;
  LedgerState initial_;
  /// The states that undoing leads to, the latest last; from position_ on those that were undone.
  std::vector<LedgerState> past_;
  std::size_t position_ = 0;
};

TEST(RandomLedgers, AgreeWithANaiveBookkeeperAndTheirOwnPast) {
  const std::uint64_t first = setting("CORVANE_TEST_SEED", std::random_device()());
  const std::uint64_t count = setting("CORVANE_TEST_CASES", 60);
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    SCOPED_TRACE("CORVANE_TEST_SEED=" + std::to_string(seed));
    RandomLedger(seed).run(60);
    if (HasFailure()) {
      return;
    }
  }
}

/// Recording many at once has to come to what recording them one after the other comes to, be it a
/// ledger or a refusal.
TEST(RandomRecordings, ComeToTheSameTogetherAndOneByOne) {
  const std::uint64_t first = setting("CORVANE_TEST_SEED", std::random_device()());
  const std::uint64_t count = 4 * setting("CORVANE_TEST_CASES", 60);
  int takenCount = 0;
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    SCOPED_TRACE("CORVANE_TEST_SEED=" + std::to_string(seed));
    Ledger ledger;
    RandomEdits edits(seed, ledger.manager, ledger.portfolio);
    ledger.portfolio->allowsNegativeBalances = edits.chance(2);
    ledger.portfolio->usesCashAccounts = !edits.chance(3);
    if (!ledger.portfolio->allowsNegativeBalances && ledger.portfolio->usesCashAccounts) {
      ledger.record({ledger.on(day(2018, 1, 1)).deposit("1000000")});
    }
    for (int round = 0; round < 12; ++round) {
      std::vector<BasicTransaction> basics;
      for (std::uint64_t i = 2 + edits.below(12); i > 0; --i) {
        basics.push_back(edits.transaction());
      }
      const LedgerState before = ledger.state();
      std::optional<std::string> refusal;
      std::size_t recorded = 0;
      try {
        for (; recorded < basics.size(); ++recorded) {
          ledger.record({basics[recorded]});
        }
      } catch (const PortfolioManagerError& error) {
        const auto* violation = error.as<PortfolioManagerError::ViolatesExistingTransaction>();
        refusal = violation == nullptr ? error.description() : violation->because->description();
      }
      const auto basicsAndFigures = [&] {
        std::vector<std::pair<BasicTransaction, std::optional<Decimal>>> rows;
        for (const auto& row : ledger.rows()) {
          rows.emplace_back(row->basic, row->basic.equity() ? row->costBasePrior : row->cashNet);
        }
        return rows;
      };
      const auto oneByOne = basicsAndFigures();
      for (; recorded > 0; --recorded) {
        ledger.undo->undo();
      }
      ASSERT_EQ(ledger.state(), before);
      try {
        ledger.record(basics);
        EXPECT_EQ(refusal, std::nullopt);
        EXPECT_EQ(basicsAndFigures(), oneByOne);
        ++takenCount;
      } catch (const PortfolioManagerError& error) {
        const auto* violation = error.as<PortfolioManagerError::ViolatesExistingTransaction>();
        EXPECT_EQ(violation == nullptr ? error.description() : violation->because->description(),
                  refusal);
        EXPECT_EQ(ledger.state(), before);
      }
      if (::testing::Test::HasFailure()) {
        return;
      }
    }
  }
  EXPECT_GT(takenCount, 0);
}

}  // namespace
}  // namespace corvane::testing
