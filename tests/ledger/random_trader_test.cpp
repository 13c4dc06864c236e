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

/// Gives numbers that were chosen beforehand, and keeps how many there were to choose from.
class ChosenNumbers {
 public:
  explicit ChosenNumbers(std::vector<std::uint64_t> numbers) : numbers_(std::move(numbers)) {}

  RandomTrader trader() {
    return RandomTrader([this](std::uint64_t n) {
      choices.push_back(n);
      const std::uint64_t number = numbers_.at(choices.size() - 1);
      EXPECT_LT(number, n);
      return number;
    });
  }

  std::vector<std::uint64_t> choices;

 private:
  std::vector<std::uint64_t> numbers_;
};

constexpr std::uint64_t allOfAFactor = 1ULL << 53;

TEST(RandomTrader, OpensWithTheAveragePriceOfEachCurrency) {
  Ledger ledger;
  auto three = equities(ledger, 3, std::nullopt);
  three[0]->recentPrice = dec("10.01");
  three[1]->recentPrice = dec("7.77");
  three[2]->recentPrice = dec("20.04");
  // The averages are 15.025, to the even cent, and 7.77.
  ChosenNumbers numbers({0, 0, 0, 0});
  numbers.trader().populate(three, ledger.portfolio, 1, {day(2020, 1, 1), day(2021, 1, 1)});
  std::map<std::string, Decimal> deposits;
  for (std::size_t i = 0; i < 2; ++i) {
    const auto& deposit = std::get<BasicTransaction::Transfer>(ledger.rows()[i]->basic.kind);
    deposits[std::string(deposit.amount.currency.code)] = deposit.amount.amount;
  }
  EXPECT_EQ(deposits, (std::map<std::string, Decimal>{{"CAD", dec("1502")}, {"USD", dec("777")}}));
}

TEST(RandomTrader, TransfersUpToAHundredSharesInOrAllCashOut) {
  Ledger ledger;
  const auto one = equities(ledger, 1, dec("42.507"));
  // The calendar's equity; then twice the equity, a transfer, and the pick.
  ChosenNumbers numbers({0, 0, 20, 0, 0, 0, 4250});
  numbers.trader().populate(one, ledger.portfolio, 2, {day(2020, 1, 1), day(2021, 1, 1)});
  // The average of 42.51 for 200 shares is there to be taken out, and 4250.7 may come in.
  EXPECT_EQ(numbers.choices,
            (std::vector<std::uint64_t>{1, 1, 101, 8502 + 4250 + 1, 1, 101, 2 + 4250 + 1}));
  ASSERT_EQ(ledger.rows().size(), 3U);
  const auto amount = [&](std::size_t row) {
    return std::get<BasicTransaction::Transfer>(ledger.rows()[row]->basic.kind).amount;
  };
  // Hundreds are cut off towards 0.
  EXPECT_EQ(amount(1), Ledger::cad("-8500"));
  EXPECT_EQ(amount(2), Ledger::cad("4200"));
}

TEST(RandomTrader, TradesHalfOfWhatThereIsAtAPriceAroundTheRecentOne) {
  Ledger ledger;
  auto one = equities(ledger, 1, dec("3.33"));
  one[0]->currency = Currency::usd();
  ChosenNumbers numbers({
      0,                            // the calendar's equity
      0, 21, allOfAFactor, 101,     // a purchase at the highest price
      0, 100, 0, 1,                 // a sale at the lowest
      0, 50, allOfAFactor / 4, 31,  // a purchase for 0.9 of the price
  });
  numbers.trader().populate(one, ledger.portfolio, 3, {day(2020, 1, 1), day(2021, 1, 1)});
  // 999.00 buys 249 shares at 4.00; what is left buys 223 at 2.66, and then 241 at 3.00.
  EXPECT_EQ(numbers.choices, (std::vector<std::uint64_t>{
                                 1,                              //
                                 1, 101, allOfAFactor + 1, 125,  // 0 to 124
                                 1, 101, allOfAFactor + 1, 162,  // -50 to 111
                                 1, 101, allOfAFactor + 1, 147,  // -26 to 120
                             }));
  std::vector<BasicTransaction::Trade> trades;
  for (std::size_t i = 1; i < ledger.rows().size(); ++i) {
    trades.push_back(std::get<BasicTransaction::Trade>(ledger.rows()[i]->basic.kind));
  }
  const auto trade = [&](const char* shares, const char* cost, const char* equivalent) {
    return BasicTransaction::Trade{
        one[0], {Currency::usd(), dec(cost)}, dec(equivalent), dec(shares)};
  };
  // 130.34 dollars are 162.925 in the primary currency, to the even cent.
  EXPECT_EQ(trades, (std::vector{trade("101", "404", "505"), trade("-49", "-130.34", "-162.92"),
                                 trade("5", "15", "18.75")}));
}

TEST(RandomTrader, PaysAtMostAFifthMoreThanThePriceToTheLastDigit) {
  Ledger ledger;
  ChosenNumbers numbers({0, 0, 21, allOfAFactor, 1});
  numbers.trader().populate(equities(ledger, 1, dec("1000000000000000")), ledger.portfolio, 1,
                            {day(2020, 1, 1), day(2021, 1, 1)});
  EXPECT_EQ(std::get<BasicTransaction::Trade>(ledger.rows()[1]->basic.kind).cashDisposed,
            Ledger::cad("1200000000000000"));
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
