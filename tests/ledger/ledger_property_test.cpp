// Random ledgers under random edits. Whatever is edited, refused, undone and redone, the ledger
// must agree with a naive bookkeeper, with its own walk from the start, and with its own past.
//
// CORVANE_TEST_CASES sets the number of ledgers, CORVANE_TEST_SEED the first seed.

#include <cstdlib>
#include <random>

#include "ledger/ledger_builder.h"
#include "ledger/naive_ledger.h"

namespace corvane::testing {
namespace {

std::uint64_t setting(const char* name, std::uint64_t standard) {
  const char* text = std::getenv(name);
  return text == nullptr ? standard : std::strtoull(text, nullptr, 10);
}

class RandomLedger {
 public:
  explicit RandomLedger(std::uint64_t seed) : random_(seed) {
    ledger_.portfolio->allowsNegativeBalances = chance(3);
    ledger_.portfolio->usesCashAccounts = !chance(3);
    for (const auto* id : {"A", "B", "C"}) {
      equities_.push_back(ledger_.provider->equityWithId(id));
    }
    ledger_.manager->presentError = [](const Error& error) { ADD_FAILURE() << error; };
    initial_ = ledger_.state();
  }

  void run(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      edit();
      checkLedger();
    }
    undoAllAndRedoAll();
  }

 private:
  std::uint64_t below(std::uint64_t n) { return random_() % n; }
  bool chance(std::uint64_t n) { return below(n) == 0; }
  template <typename Container>
  auto& pick(Container& values) {
    return values[below(values.size())];
  }

  Decimal number(int largest, int scale) {
    const auto digits = static_cast<long>(below(static_cast<std::uint64_t>(largest)));
    return Decimal::fromParts(Sign::plus, -scale, digits);
  }
  Decimal money() { return number(100'000, chance(40) ? 3 : 2); }

  Decimal heldAtEnd(const EquityPointer& equity) {
    return ledger_.finalSnapshot().equitySnapshots.get(equity).sharesHeld;
  }

  BasicTransaction::Kind randomKind() {
    static const std::vector<Currency> currencies = {Currency::cad(), Currency::usd(),
                                                     Currency::byCode().find("JPY")->second};
    const Currency& currency = currencies[below(currencies.size())];
    const EquityPointer& equity = pick(equities_);
    CurrencyAmount amount{currency, currency.minorUnits == 0 ? number(100'000, 0) : money()};
    const bool isNegative = chance(3);
    if (isNegative) {
      amount.amount = -amount.amount;
    }
    Decimal shares = number(1000, chance(4) ? 4 : 0);
    switch (below(10)) {
      case 0:
        return BasicTransaction::Split{equity, chance(4) ? shares : heldAtEnd(equity), shares};
      case 1:
        return BasicTransaction::JournaledShares{equity, isNegative ? -shares : shares,
                                                 chance(2) ? std::optional(money()) : std::nullopt};
      case 2:
      case 3:
        return BasicTransaction::Yield{static_cast<BasicTransaction::YieldType>(below(4)),
                                       equity,
                                       chance(3) ? std::optional(heldAtEnd(equity)) : std::nullopt,
                                       {currency, abs(amount.amount)},
                                       number(10'000'000, chance(3) ? 5 : 2)};
      case 4:
        return BasicTransaction::CashAdjustment{amount};
      case 5:
      case 6:
        return BasicTransaction::Transfer{{currency, amount.amount * 10}};
      default:
        // Now and then a sale that costs money.
        return BasicTransaction::Trade{equity, amount,
                                       isNegative && !chance(10) ? -money() : money(),
                                       isNegative ? -shares : shares};
    }
  }

  BasicTransaction randomTransaction() {
    const Date trade =
        day(2019 + static_cast<int>(below(5)), 12, 28) + 86400.0 * static_cast<double>(below(8));
    const double settlesAfter = chance(50) ? -86400.0 : 86400.0 * static_cast<double>(below(3));
    return {randomKind(), trade, trade + settlesAfter, std::nullopt};
  }

  std::vector<TransactionPointer> pickRows(std::size_t most) {
    const auto& rows = ledger_.rows();
    std::vector<TransactionPointer> picked;
    for (const auto& row : rows) {
      if (picked.size() < most && below(rows.size()) < most) {
        picked.push_back(row);
      }
    }
    return picked.empty() ? std::vector{rows[below(rows.size())]} : picked;
  }

  void edit() {
    const bool isEmpty = ledger_.rows().empty();
    switch (isEmpty ? 0 : below(10)) {
      case 6:
        return undoOrRedo(false);
      case 7:
        return undoOrRedo(true);
      case 5: {
        const auto subjects = pickRows(3);
        return attempt(
            [&] { ledger_.manager->deleteTransactions(subjects, ledger_.portfolio, ledger_.undo); },
            subjects, Announced::inModified, std::nullopt);
      }
      case 3:
      case 4: {
        const auto subjects = pickRows(2);
        std::vector<BasicTransaction> revisions;
        for (const auto& row : subjects) {
          revisions.push_back(chance(2) ? randomTransaction()
                                        : BulkRevision{.note = "n"}.applied(row->basic));
        }
        return attempt(
            [&] {
              ledger_.manager->reviseTransactions(subjects, revisions, std::nullopt,
                                                  ledger_.portfolio, ledger_.undo);
            },
            subjects, Announced::inRecalculated, std::nullopt);
      }
      case 2: {
        const auto subjects = pickRows(2);
        PortfolioManager::Anchors anchors;
        for (std::size_t i = 0; i < subjects.size(); ++i) {
          anchors.push_back(chance(5) ? nullptr : ledger_.rows()[below(ledger_.rows().size())]);
        }
        return attempt(
            [&] {
              ledger_.manager->moveTransactions(subjects, anchors, ledger_.portfolio, ledger_.undo);
            },
            subjects, Announced::inRecalculated, std::nullopt);
      }
      default: {
        std::vector<BasicTransaction> basics;
        for (std::uint64_t i = 0; i <= below(4); ++i) {
          basics.push_back(randomTransaction());
        }
        const bool isSound = canRecord(basics);
        std::vector<TransactionPointer> subjects;
        return attempt([&] { subjects = ledger_.record(basics); }, subjects,
                       Announced::inRecalculated, isSound);
      }
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

  template <typename Edit>
  void attempt(Edit edit, const std::vector<TransactionPointer>& subjects, Announced where,
               std::optional<bool> isSound) {
    const LedgerState before = ledger_.state();
    LastChanges changes;
    try {
      edit();
    } catch (const PortfolioManagerError& error) {
      EXPECT_FALSE(isSound.value_or(false)) << error;
      EXPECT_EQ(ledger_.state(), before) << "after a refusal: " << error;
      EXPECT_EQ(changes.count, 0);
      return;
    }
    EXPECT_TRUE(isSound.value_or(true));
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

  std::mt19937_64 random_;
  Ledger ledger_;
  std::vector<EquityPointer> equities_;
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

}  // namespace
}  // namespace corvane::testing
