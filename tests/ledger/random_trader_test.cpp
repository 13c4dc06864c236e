#include "ledger/manager/random_trader.h"

#include <random>
#include <set>

#include "support/ledger_builder.h"

namespace corvane::testing {
namespace {

std::vector<EquityPointer> equities(Ledger& ledger, int count, std::optional<Decimal> price) {
  std::vector<EquityPointer> made;
  for (int i = 0; i < count; ++i) {
    made.push_back(ledger.provider->equityWithId("E" + std::to_string(i)));
    made.back()->currency = i % 2 == 0 ? Currency::cad() : Currency::usd();
    made.back()->recentPrice = price;
  }
  return made;
}

TEST(RandomTrader, MakesAValidLedgerOfAtMostFiveEquities) {
  Ledger ledger;
  const auto watchlist = equities(ledger, 8, dec("42.50"));
  RandomTrader().populateRandomly(ledger.portfolio, watchlist);
  EXPECT_GE(ledger.rows().size(), 101U);
  std::set<std::string> traded;
  for (const auto& row : ledger.rows()) {
    if (const auto* trade = std::get_if<BasicTransaction::Trade>(&row->basic.kind)) {
      traded.insert(trade->equity->id());
      // Two days later by the clocks, which a change of the hour may have moved.
      const Calendar& calendar = ledger.manager->calendar;
      const auto tradeDay = YearMonthDay::of(row->tradeDate(), calendar);
      EXPECT_EQ(
          YearMonthDay::of(row->settlementDate(), calendar),
          YearMonthDay::normalised(tradeDay.year, tradeDay.month, tradeDay.day + 2, calendar));
      if (trade->cashDisposed.currency == Currency::usd()) {
        EXPECT_EQ(trade->equivalentCashDisposed,
                  rounded(trade->cashDisposed.amount * dec("1.25"), 2, RoundingMode::bankers));
      }
    }
  }
  EXPECT_LE(traded.size(), 5U);
  EXPECT_GE(traded.size(), 1U);
  EXPECT_NO_THROW((void)PortfolioManager::replay(ledger.rows(), {}));
}

TEST(RandomTrader, OpensWithADepositThatBuysAHundredSharesAStep) {
  Ledger ledger;
  const auto one = equities(ledger, 1, dec("42.50"));
  RandomTrader([](std::uint64_t) {
    return 0;
  }).populate(one, ledger.portfolio, 100, {day(2020, 1, 1), day(2022, 12, 31)});
  const auto& opening = ledger.rows().front()->basic;
  EXPECT_EQ(std::get<BasicTransaction::Transfer>(opening.kind).amount, Ledger::cad("425000"));
  EXPECT_FALSE(opening.note.has_value());
  EXPECT_EQ(ledger.rows()[1]->basic.note, "This transaction was randomly generated.");
  // The least choice takes all cash away at the first step, in whole hundreds.
  EXPECT_EQ(ledger.rows()[1]->cashNet, dec("0"));
  EXPECT_EQ(ledger.rows()[1]->settlementDate(), day(2020, 1, 11));
}

TEST(RandomTrader, LeavesThePortfolioEmptyWithoutEquitiesOfItsProvider) {
  Ledger ledger;
  const auto other = std::make_shared<QuoteProvider>();
  RandomTrader().populateRandomly(ledger.portfolio, {});
  RandomTrader().populateRandomly(ledger.portfolio, {other->equityWithId("X")});
  EXPECT_TRUE(ledger.rows().empty());
}

TEST(RandomTrader, RecordsNothingInAStepWithoutAChoice) {
  // Every step is a trade at a price that rounds to 0: only the opening deposit of 0 is left.
  Ledger cheap;
  RandomTrader([](std::uint64_t n) { return n == 101 ? 50U : 0U; })
      .populate(equities(cheap, 1, dec("0.001")), cheap.portfolio, 10,
                {day(2020, 1, 1), day(2021, 1, 1)});
  EXPECT_EQ(cheap.rows().size(), 1U);

  // Far below 0, no transfer of the usual size makes the cash good.
  Ledger indebted;
  indebted.portfolio->allowsNegativeBalances = true;
  indebted.on(day(2019, 1, 1)).record({indebted.withdrawal("1000000")});
  RandomTrader([](std::uint64_t) { return 0; })
      .populate(equities(indebted, 1, dec("1")), indebted.portfolio, 10,
                {day(2020, 1, 1), day(2021, 1, 1)});
  EXPECT_EQ(indebted.rows().size(), 2U);
}

TEST(RandomTrader, TradesEquitiesWithoutAPriceAtAboutOne) {
  Ledger ledger;
  RandomTrader().populate(equities(ledger, 1, std::nullopt), ledger.portfolio, 50,
                          {day(2020, 1, 1), day(2022, 1, 1)});
  for (const auto& row : ledger.rows()) {
    if (const auto* trade = std::get_if<BasicTransaction::Trade>(&row->basic.kind)) {
      EXPECT_LE(abs(trade->cashDisposed.amount), abs(trade->sharesAdded) * dec("1.2"));
      EXPECT_GE(abs(trade->cashDisposed.amount), abs(trade->sharesAdded) * dec("0.8"));
    }
  }
}

TEST(RandomTrader, StopsAtTheFirstErrorOfTheLedger) {
  Ledger ledger;
  ledger.portfolio->usesCashAccounts = false;
  EXPECT_THROW(RandomTrader().populateRandomly(ledger.portfolio, equities(ledger, 2, dec("5"))),
               PortfolioManagerError);
  EXPECT_TRUE(ledger.rows().empty());
}

}  // namespace
}  // namespace corvane::testing
