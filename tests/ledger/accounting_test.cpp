// What the walk over a ledger derives and refuses.

#include "ledger/transaction/adjusted_cost_base.h"
#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

using Type = BasicTransaction::YieldType;
using Failure = PortfolioManagerError;

/// "cash shares costBefore costAfter gain" of a row, "-" for what it has not.
std::string figures(const TransactionPointer& row) {
  std::string text;
  for (const std::optional<Decimal>& figure : std::initializer_list<std::optional<Decimal>>{
           row->cashNet, row->sharesNet, row->costBasePrior, row->costBaseNet(),
           row->capitalGain()}) {
    text += (text.empty() ? "" : " ") + (figure ? figure->description() : "-");
  }
  return text;
}

std::vector<std::string> figures(const std::vector<TransactionPointer>& rows) {
  std::vector<std::string> lines;
  for (const auto& row : rows) {
    lines.push_back(figures(row));
  }
  return lines;
}

TEST(Accounting, FollowsAHoldingThroughItsLife) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("10000.00"), ledger.buy("300", "3000.00"),
                                   ledger.buy("100", "1400.00"),
                                   ledger.yield(Type::reinvestedDistribution, "40.00"),
                                   ledger.yield(Type::returnOfCapital, "20.00"),
                                   ledger.split("400", "800"), ledger.sell("200", "1500.00")});
  EXPECT_THAT(figures(rows),
              ::testing::ElementsAre("10000 - - - -", "7000 300 0 3000 -", "5600 400 3000 4400 -",
                                     "5600 400 4400 4440 -", "5600 400 4440 4420 -",
                                     "- 800 4420 4420 -", "7100 600 4420 3315 395"));
  EXPECT_EQ(std::get<BasicTransaction::Yield>(rows[3]->basic.kind).netShares, dec("400"));
  EXPECT_NO_THROW((void)PortfolioManager::replay(ledger.rows(), {}));
}

TEST(Accounting, RoundsCostBaseAndGainEachOnce) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.deposit("1000"), ledger.buy("300", "1000"),
                                   ledger.sell("100", "500"), ledger.sell("200", "600")});
  EXPECT_EQ(figures(rows[2]), "500 200 1000 666.67 166.67");
  EXPECT_EQ(figures(rows[3]), "1100 0 666.67 0 -66.67");
}

TEST(Accounting, MovesSharesWithoutCashOrGain) {
  Ledger ledger;
  const auto rows = ledger.record({ledger.journal("30", dec("90")), ledger.journal("10"),
                                   ledger.journal("-10", dec("999")),
                                   ledger.yield(Type::capitalGainsDividend, "5"),
                                   ledger.yield(Type::dividend, "7", dec("30"))});
  EXPECT_THAT(figures(rows), ::testing::ElementsAre("- 30 0 90 -", "- 40 90 90 -", "- 30 90 67.5 -",
                                                    "0 30 67.5 67.5 -", "7 30 67.5 67.5 -"));
}

TEST(Accounting, KeepsTheCostBaseInThePrimaryCurrency) {
  Ledger ledger;
  const CurrencyAmount cost{Currency::usd(), dec("100")};
  ledger.record({ledger.make(BasicTransaction::Transfer{{Currency::usd(), dec("150")}}),
                 ledger.make(BasicTransaction::Trade{ledger.xyz, cost, dec("125"), dec("8")})});
  const auto state = ledger.finalSnapshot();
  EXPECT_EQ(state.currencySnapshots.get(Currency::usd()).cashOnHand, dec("50"));
  EXPECT_EQ(state.currencySnapshots.size(), 1U);
  EXPECT_EQ(state.equitySnapshots.get(ledger.xyz).costBase, dec("125"));
}

TEST(Accounting, GoesBelowZeroOnlyWhereThatIsAllowed) {
  Ledger ledger;
  ledger.portfolio->allowsNegativeBalances = true;
  const auto rows = ledger.record({ledger.sell("5", "50"), ledger.withdrawal("80")});
  EXPECT_EQ(figures(rows[0]), "50 -5 0 0 50");
  EXPECT_EQ(rows[1]->cashNet, dec("-30"));
}

TEST(Accounting, MultipliesBeforeItDivides) {
  Ledger ledger;
  // Half a cent of cost stays, and two and a half go. Sixths that were rounded beforehand would tip
  // both.
  ledger.record({ledger.deposit("1"), ledger.buy("3", "0.03"), ledger.sell("2.5", "0.03")});
  EXPECT_EQ(figures(ledger.rows().back()), "1 0.5 0.03 0 0");
}

TEST(Accounting, CountsWhatASaleCostsAsALoss) {
  Ledger ledger;
  ledger.record({ledger.deposit("1000"), ledger.buy("20", "1000"), ledger.deposit("2"),
                 ledger.buy("-10", "2")});
  EXPECT_EQ(figures(ledger.rows().back()), "0 10 1000 500 -502");
  EXPECT_NO_THROW((void)PortfolioManager::replay(ledger.rows(), {}));
}

TEST(Accounting, LeavesANegativeCostBaseAfterALargeReturnOfCapital) {
  Ledger ledger;
  ledger.record({ledger.deposit("100"), ledger.buy("10", "50"),
                 ledger.yield(Type::returnOfCapital, "60"), ledger.sell("10", "20")});
  EXPECT_EQ(figures(ledger.rows().back()), "70 0 -10 0 30");
}

TEST(Accounting, WithoutCashAccountsTradesDepositWhatTheyCost) {
  Ledger ledger;
  ledger.portfolio->usesCashAccounts = false;
  const BasicTransaction buy = ledger.make(
      BasicTransaction::Trade{ledger.abc, Ledger::cad("10.005"), dec("10.01"), dec("1")});
  const auto rows = ledger.record({buy, ledger.yield(Type::dividend, "2")});
  EXPECT_EQ(rows[0]->cashNet, dec("0"));
  EXPECT_EQ(rows[1]->cashNet, dec("2"));
  EXPECT_EQ(ledger.finalSnapshot().currencySnapshots.get(Currency::cad()).netCashDeposited,
            dec("10.005"));
  const auto error = errorOf([&] { ledger.record({ledger.deposit("1")}); });
  EXPECT_THAT(
      *error->description(),
      ::testing::StartsWith("Found a transfer but cash accounting is disabled: 2021-03-03"));
}

TEST(Accounting, KeepsOneSnapshotForEachYearThatHasARow) {
  Ledger ledger;
  ledger.on(day(2021, 12, 30)).record({ledger.deposit("10"), ledger.deposit("20")});
  ledger.on(day(2023, 1, 1)).record({ledger.withdrawal("30")});
  ASSERT_EQ(ledger.portfolio->snapshotsByYear.size(), 2U);
  EXPECT_EQ(
      ledger.portfolio->snapshotsByYear.at(2021).currencySnapshots.get(Currency::cad()).cashOnHand,
      dec("30"));
  EXPECT_TRUE(ledger.portfolio->snapshotsByYear.at(2023).currencySnapshots.isEmpty());
  EXPECT_TRUE(ledger.manager->snapshotBefore(0, ledger.portfolio).currencySnapshots.isEmpty());
  EXPECT_EQ(ledger.manager->snapshotBefore(2, ledger.portfolio),
            ledger.portfolio->snapshotsByYear.at(2021));
}

struct Refusal {
  std::string name;
  std::function<std::vector<BasicTransaction>(Ledger&)> transactions;
  std::string description;
};

class RefusedTransaction : public ::testing::TestWithParam<Refusal> {};

TEST_P(RefusedTransaction, SaysWhyAndLeavesTheLedgerAlone) {
  Ledger ledger;
  ledger.record({ledger.deposit("100"), ledger.buy("10", "40")});
  const LedgerState before = ledger.state();
  LastChanges changes;
  const auto error = errorOf([&] { ledger.record(GetParam().transactions(ledger)); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->description(), GetParam().description);
  EXPECT_EQ(ledger.state(), before);
  EXPECT_EQ(changes.count, 0);
}

const std::string nbsp = "\u00A0";

INSTANTIATE_TEST_SUITE_P(
    Accounting, RefusedTransaction,
    ::testing::Values(
        Refusal{
            "Withdrawal", [](Ledger& l) { return std::vector{l.withdrawal("60.01")}; },
            "Insufficient cash. The transaction requires CA$60.01 but only CA$60.00 is on hand."},
        Refusal{"Sale", [](Ledger& l) { return std::vector{l.sell("10.5", "1")}; },
                "Insufficient shares. The transaction requires 10.5" + nbsp +
                    "shares of ABC but 10 are held."},
        Refusal{"Journal", [](Ledger& l) { return std::vector{l.journal("-11")}; },
                "Insufficient shares. The transaction requires 11" + nbsp +
                    "shares of ABC but 10 are held."},
        Refusal{"Split", [](Ledger& l) { return std::vector{l.split("10.0001", "20")}; },
                "Expecting to split 10.0001" + nbsp + "shares of ABC but 10 are held."},
        Refusal{
            "Yield",
            [](Ledger& l) { return std::vector{l.yield(Type::returnOfCapital, "1", dec("9"))}; },
            "The transaction declares a return of capital from 9" + nbsp +
                "shares of ABC but 10 are held."},
        Refusal{"Precision", [](Ledger& l) { return std::vector{l.buy("1", "10.005")}; },
                "The cash amount CA$10.005 is of a greater precision than can be traded. (Round to "
                "CA$10.00?)"},
        Refusal{
            "DepositPrecision", [](Ledger& l) { return std::vector{l.deposit("0.125")}; },
            "The cash amount (CA$0.125) is of a greater precision than can be traded. (Round to "
            "(CA$0.12)?)"},
        Refusal{"Dates",
                [](Ledger& l) {
                  auto late = l.deposit("1");
                  late.tradeDate = late.tradeDate + 1;
                  return std::vector{late};
                },
                "The settlement date must be equal to or later than the trade date."}),
    [](const auto& test) { return test.param.name; });

TEST(Accounting, RefusesFiguresThatAreNoNumbersAndBalancesThatCannotBeKept) {
  Ledger ledger;
  ledger.portfolio->allowsNegativeBalances = true;
  const std::string largest = "99999999999999999999999999999999999999";
  ledger.record({ledger.deposit(largest), ledger.journal(largest, dec(largest))});
  const LedgerState before = ledger.state();
  const Decimal nan = Decimal::nan();
  const CurrencyAmount nothing{Currency::cad(), nan};
  const auto& abc = ledger.abc;
  const std::vector<BasicTransaction::Kind> kinds = {
      BasicTransaction::Transfer{nothing},
      BasicTransaction::CashAdjustment{nothing},
      BasicTransaction::Trade{abc, nothing, 1, 1},
      BasicTransaction::Trade{abc, Ledger::cad("1"), nan, 1},
      BasicTransaction::Trade{abc, Ledger::cad("1"), 1, nan},
      BasicTransaction::Split{abc, nan, 1},
      BasicTransaction::Split{abc, dec(largest), nan},
      BasicTransaction::JournaledShares{abc, nan, std::nullopt},
      BasicTransaction::JournaledShares{abc, 1, nan},
      BasicTransaction::Yield{Type::dividend, abc, nan, Ledger::cad("1"), 1},
      BasicTransaction::Yield{Type::dividend, abc, std::nullopt, nothing, 1},
      BasicTransaction::Yield{Type::returnOfCapital, abc, std::nullopt, Ledger::cad("1"), nan},
      BasicTransaction::Transfer{Ledger::cad("0.01")},
      BasicTransaction::CashAdjustment{{Currency::cad(), Decimal::greatestFiniteMagnitude()}},
      BasicTransaction::JournaledShares{abc, dec("0.1"), std::nullopt},
      BasicTransaction::JournaledShares{abc, 0, dec("0.01")},
  };
  for (const auto& kind : kinds) {
    EXPECT_THROW(ledger.record({ledger.make(kind)}), PortfolioManagerError)
        << ledger.make(kind).description();
    EXPECT_EQ(ledger.state(), before);
  }
}

TEST(Accounting, TakesSentinelDatesAndRefusesDatesThatAreNone) {
  Ledger ledger;
  ledger.on(Date::distantPast()).record({ledger.deposit("1")});
  ledger.on(Date::distantFuture()).record({ledger.deposit("2")});
  ledger.on(Date()).record({ledger.deposit("4")});
  EXPECT_EQ(ledger.rows()[1]->cashNet, dec("5"));
  const LedgerState before = ledger.state();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double seconds : {std::nan(""), infinity, -infinity}) {
    ledger.on(Date::sinceReferenceDate(seconds));
    EXPECT_THROW(ledger.record({ledger.deposit("1")}), PortfolioManagerError);
    EXPECT_EQ(ledger.state(), before);
  }
}

TEST(Accounting, KeepsAnEquityWhoseProviderIsGone) {
  Ledger ledger;
  auto provider = std::make_shared<QuoteProvider>();
  ledger.abc = provider->equityWithId("GONE");
  ledger.abc->currency = Currency::cad();
  ledger.record({ledger.deposit("10"), ledger.buy("1", "5")});
  provider.reset();
  ledger.record({ledger.sell("1", "6")});
  EXPECT_EQ(ledger.rows().back()->capitalGain(), dec("1"));
}

TEST(Replay, NamesTheRowThatDisagrees) {
  using Change = std::function<void(PortfolioTransaction&)>;
  const std::vector<std::tuple<std::size_t, Change, std::string>> cases = {
      {0, [](auto& row) { row.cashNet.reset(); },
       "Expected cash amount of 100 but none reported for CAD at transaction 0!"},
      {1, [](auto& row) { row.cashNet = 61; },
       "Expected cash amount of 60 but reported 61 for CAD at transaction 1!"},
      {1, [](auto& row) { row.sharesNet.reset(); },
       "Expected share count of 10 but none reported for ABC at transaction 1!"},
      {1, [](auto& row) { row.costBasePrior = 1; },
       "Expected net cost base of 40 but reported 41 for ABC at transaction 1!"},
      {2,
       [](auto& row) {
         auto& trade = std::get<BasicTransaction::Trade>(row.basic.kind);
         trade.cashDisposed.amount = -31;
       },
       "Expected cash amount of 91 but reported 90 for CAD at transaction 2!"},
      {2, [](auto& row) { row.basic.settlementDate = Date(); },
       "Transactions not ordered by date (2001-01-01 00:00:00 +0000 found after 2021-03-02 "
       "17:00:00 +0000)!"},
      {2, [](auto& row) { row.portfolio.reset(); },
       "Transactions do not belong to the same portfolio!"},
      {0, [](auto& row) { row.portfolio.reset(); }, "Transactions lack a portfolio."}};
  for (const auto& [position, change, reason] : cases) {
    Ledger ledger;
    ledger.record({ledger.deposit("100"), ledger.buy("10", "40"), ledger.sell("5", "30")});
    change(*ledger.rows()[position]);
    const auto error = errorOf([&] { (void)PortfolioManager::replay(ledger.rows(), {}); });
    EXPECT_EQ(error->description(), reason);
  }
}

}  // namespace
}  // namespace corvane::testing
