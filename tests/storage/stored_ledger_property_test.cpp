// Whatever is edited, refused, undone and redone: the file says what memory says.
//
// CORVANE_TEST_CASES sets the number of ledgers, CORVANE_TEST_SEED the first seed.

#include "ledger/manager/portfolio_property_changer.h"
#include "ledger/random_edits.h"
#include "storage/stored_ledger.h"

namespace corvane::testing {
namespace {

void editAtRandom(std::uint64_t seed, int steps) {
  StoredLedger ledger;
  std::optional<RandomEdits> edits(std::in_place, seed, ledger.manager, ledger.portfolio);
  const PortfolioPropertyChanger::Properties properties = {"Savings", edits->chance(3),
                                                           !edits->chance(3)};
  PortfolioPropertyChanger().changeProperties(ledger.portfolio, properties, nullptr);
  for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
    const StoredState before = ledger.state();
    try {
      edits->perform(edits->next(), ledger.undo);
    } catch (const PortfolioManagerError&) {
      EXPECT_EQ(ledger.state(), before);
    } catch (const Error& error) {
      ADD_FAILURE() << error;
    }
    ledger.expectFileIsMemory();
  }
  // Rows that were read must be as good to edit as those that were made.
  const StoredState last = ledger.state();
  edits.reset();
  ledger.reopen();
  ASSERT_EQ(ledger.state(), last);
  EXPECT_EQ(ledger.manager->recalculateLedger(0, ledger.portfolio), TransactionSet());
  EXPECT_EQ(ledger.state(), last) << "a walk from the start comes to other figures";
  ledger.expectFileIsMemory();
}

TEST(RandomStoredLedgers, StandInTheFileAsInMemory) {
  const std::uint64_t first = setting("CORVANE_TEST_SEED", std::random_device()());
  const std::uint64_t count = setting("CORVANE_TEST_CASES", 12);
  for (std::uint64_t seed = first; seed < first + count && !HasFailure(); ++seed) {
    SCOPED_TRACE("CORVANE_TEST_SEED=" + std::to_string(seed));
    editAtRandom(seed, 40);
  }
}

}  // namespace
}  // namespace corvane::testing
