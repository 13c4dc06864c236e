#include "ledger/manager/portfolio_property_changer.h"

#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

using Properties = PortfolioPropertyChanger::Properties;

void change(Ledger& ledger, const Properties& properties) {
  PortfolioPropertyChanger().changeProperties(ledger.portfolio, properties, ledger.undo);
}

TEST(PropertyChanges, AreUndoneAndRedone) {
  Ledger ledger;
  LastChanges changes;
  change(ledger, {"Savings", true, true});
  EXPECT_EQ(ledger.portfolio->name, "Savings");
  EXPECT_EQ(changes.count, 1);
  EXPECT_FALSE(changes.changes.has_value());
  ledger.undo->undo();
  EXPECT_EQ(Properties::of(*ledger.portfolio), (Properties{"Untitled Portfolio", false, true}));
  ledger.undo->redo();
  EXPECT_EQ(ledger.portfolio->name, "Savings");
  EXPECT_EQ(changes.count, 3);
}

TEST(PropertyChanges, FindEveryRowThatEverWasNegative) {
  Ledger ledger;
  ledger.portfolio->allowsNegativeBalances = true;
  ledger.record({ledger.withdrawal("500"), ledger.deposit("500")});
  const auto cash = errorOf<PortfolioPropertyChanger::Error>([&] { change(ledger, {}); });
  EXPECT_EQ(cash->description(),
            "A transaction settled on Mar 1, 2021 has a negative balance of (CA$500.00).");
  EXPECT_EQ(cash->recoverySuggestion(),
            "Ensure that all existing transactions balance in order to change this setting.");

  ledger.manager->deleteTransactions(ledger.rows(), ledger.portfolio, nullptr);
  ledger.record({ledger.journal("-2.5")});
  const auto shares = errorOf<PortfolioPropertyChanger::Error>([&] { change(ledger, {}); });
  EXPECT_EQ(shares->description(),
            "A transaction settled on Mar 3, 2021 has a negative balance of -2.5 shares of ABC.");
  EXPECT_TRUE(ledger.portfolio->allowsNegativeBalances);
  EXPECT_EQ(ledger.undo->undoActionName(), "");
}

TEST(PropertyChanges, KeepCashAccountsWhileThereAreTransfers) {
  Ledger ledger;
  ledger.record({ledger.adjustment("500"), ledger.withdrawal("500")});
  const auto error = errorOf<PortfolioPropertyChanger::Error>([&] {
    change(ledger, {"P", false, false});
  });
  EXPECT_EQ(error->description(), "A withdrawal of CA$500.00 exists on Mar 2, 2021.");
  EXPECT_EQ(ledger.portfolio->name, "Untitled Portfolio");
}

TEST(PropertyChanges, WalkTheLedgerAgainWhenCashAccountsAreTurnedOff) {
  Ledger ledger;
  ledger.record({ledger.adjustment("100"), ledger.buy("1", "40")});
  change(ledger, {"P", false, false});
  EXPECT_EQ(ledger.rows()[1]->cashNet, dec("100"));
  ledger.undo->undo();
  EXPECT_EQ(ledger.rows()[1]->cashNet, dec("60"));
}

TEST(PropertyChanges, LeaveLedgerAndYearsAsTheyWereWhenTheWalkRefuses) {
  Ledger ledger;
  ledger.portfolio->usesCashAccounts = false;
  ledger.on(day(2019, 1, 5)).record({ledger.adjustment("10"), ledger.buy("1", "5")});
  ledger.on(day(2021, 1, 5)).record({ledger.buy("1", "50"), ledger.buy("1", "60")});
  const LedgerState before = ledger.state();
  EXPECT_THROW(change(ledger, {"P", false, true}), PortfolioManagerError);
  EXPECT_EQ(ledger.state(), before);
  EXPECT_EQ(Properties::of(*ledger.portfolio), (Properties{"Untitled Portfolio", false, false}));
}

/// A manager that cannot keep the properties.
class ReadOnlyManager : public PortfolioManager {
 public:
  using PortfolioManager::PortfolioManager;
  void portfolioPropertiesDidChange(const PortfolioPointer& /*portfolio*/) override {
    throw std::runtime_error("read-only");
  }
};

TEST(PropertyChanges, BringTheFiguresBackWhenTheManagerCannotKeepTheProperties) {
  Ledger ledger;
  ledger.manager = std::make_shared<ReadOnlyManager>(ledger.provider);
  ledger.portfolio = ledger.manager->createPortfolio(Currency::cad());
  ledger.record({ledger.adjustment("100"), ledger.buy("1", "40")});
  const LedgerState before = ledger.state();
  EXPECT_THROW(change(ledger, {"P", false, false}), std::runtime_error);
  EXPECT_EQ(ledger.state(), before);
}

}  // namespace
}  // namespace corvane::testing
