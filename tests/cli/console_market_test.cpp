// What the console program does with prices, which it takes from the invented market.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/console_program.h"
#include "platform/data/json.h"
#include "samplemarket/sample_market.h"

namespace corvane {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using testing::ProgramResult;
using ::testing::StartsWith;

class ConsoleMarketTest : public ::testing::Test {
 protected:
  testing::ConsoleProgram program;

  ConsoleMarketTest() {
    setenv("XDG_CACHE_HOME", (program.folder / "cache").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (program.folder / "config").c_str(), 1);
  }

  /// Has the program ask `market` as the service of its settings.
  void useService(const SampleMarket& market) const {
    std::filesystem::create_directories(program.folder / "config/corvane");
    testing::writeText(program.folder / "config/corvane/settings.json",
                       R"({"quoteService.scheme": "http", "quoteService.apiHost": "127.0.0.1",)"
                       R"( "quoteService.webHost": "127.0.0.1", "quoteService.port": )" +
                           std::to_string(market.port()) + "}");
  }

  [[nodiscard]] std::string file(const std::string& name) const {
    return testing::readText(program.folder / name);
  }
};

TEST_F(ConsoleMarketTest, WritesTransactionsThatCanBeReadAgain) {
  program.makeFamily();
  ASSERT_EQ(program.output("export transactions Family --portfolio Savings --out a.csv"), "");
  EXPECT_THAT(file("a.csv"),
              AllOf(StartsWith("\"Trade Date\",\"Settlement Date\","),
                    HasSubstr("\r\n\"2024-01-10\",\"2024-01-12\",\"Buy\",\"BOREA.TO\",\"100\",")));

  ASSERT_EQ(program.output("create Again --portfolio Savings --currency CAD"), "");
  ASSERT_EQ(program.output("import a.csv --into Again --portfolio Savings --fields "
                           "tradeDate,settlementDate,type,symbol,numberOfShares,sharesNet,"
                           "cashAmount,,cashCurrency,exchangeRate,equivalentAmount,,"
                           "costBaseAdded,,,note"),
            "Imported 9 transactions.\n");
  ASSERT_EQ(program.output("export transactions Again --portfolio Savings --out b.csv"), "");
  EXPECT_EQ(file("a.csv"), file("b.csv"));

  ASSERT_EQ(program.output("export transactions Family --portfolio Savings --out c.csv "
                           "--from 2024-01-22 --to 2024-01-24 --fields symbol,tradeDate "
                           "--no-header --date-format dd.MM.yyyy"),
            "");
  EXPECT_EQ(file("c.csv"), "\"TAMRK.TO\",\"22.01.2024\"\r\n");
}

TEST_F(ConsoleMarketTest, WritesHoldingsAndGainsAtThePricesOfTheDay) {
  program.makeFamily();
  ASSERT_EQ(program.output("export holdings Family --portfolio Savings --sample-market "
                           "--to 2024-12-31 --out h.csv --fields kind,symbol,sharesHeld,"
                           "costBase,name"),
            "");
  EXPECT_THAT(file("h.csv"),
              AllOf(HasSubstr("\"Cash\",\"CAD\",\"12466.65\""),
                    HasSubstr("\"Shares\",\"BOREA.TO\",\"60\",\"5531.97\",\"Borealind Railway "
                              "Company\"")));
  ASSERT_EQ(program.output("export gains Family --portfolio Savings --sample-market "
                           "--to 2024-12-31 --out g.csv --fields symbol,sharesSold,capitalGain"),
            "");
  EXPECT_THAT(file("g.csv"), HasSubstr("\"BOREA.TO\",\"40\",\"189.07\""));
}

TEST_F(ConsoleMarketTest, ValuesPortfoliosAndSaysWhatIsMissing) {
  program.makeFamily();
  EXPECT_THAT(
      program.output("value Family --sample-market"),
      MatchesRegex("Portfolio  Currency  Deposited +Value +Gain\n"
                   "Savings    CAD +[0-9]+[.][0-9]{2} +[0-9]+[.][0-9]{2} +-?[0-9]+[.][0-9]{2}\n"));
  const auto values = JSONValue::parse(program.output("value Family --sample-market --json"));
  EXPECT_EQ(values.array().at(0).at("portfolio").string(), "Savings");
  EXPECT_THAT(values.array().at(0).at("value").number().text(), MatchesRegex("[0-9]+\\.?[0-9]*"));
  const ProgramResult offline = program.run("value Family --offline");
  EXPECT_EQ(offline.exitCode, 1);
  EXPECT_THAT(offline.err, StartsWith("corvane-cli: Savings: "));
  EXPECT_EQ(program.run("value Family --offline --sample-market").exitCode, 2);
}

/// The cache knows prices and rates from a run with the service, which is gone by the next.
TEST_F(ConsoleMarketTest, FindsPricesAndRatesInTheCacheOrFails) {
  program.makeFamily();
  const std::string holdings =
      "export holdings Family --portfolio Savings --to 2024-12-31 --out h.csv --fields "
      "symbol,sharesHeld,marketValue";
  const ProgramResult empty = program.run(holdings + " --offline");
  EXPECT_EQ(empty.exitCode, 1);
  EXPECT_THAT(empty.err, AllOf(HasSubstr("corvane-cli: No rates of USD. The cache has none of "),
                               HasSubstr("corvane-cli: No prices of BOREA.TO. The cache has ")));
  EXPECT_THAT(file("h.csv"), HasSubstr("\"BOREA.TO\",\"60\",\"\"")) << "the rest is written";

  auto market = std::make_unique<SampleMarket>();
  useService(*market);
  EXPECT_EQ(program.output(holdings), "");
  const std::string told = file("h.csv");
  EXPECT_THAT(told, AllOf(HasSubstr("\"USD\",\"972.8\",\"1304.8925184\""),
                          HasSubstr("\"CASTR\",\"25\",\"1943.656722\"")));
  const std::string worth = program.output("value Family");
  market.reset();
  std::filesystem::remove(program.folder / "h.csv");

  EXPECT_EQ(program.output(holdings + " --offline"), "");
  EXPECT_EQ(file("h.csv"), told);
  EXPECT_EQ(program.output("value Family --offline"), worth);
  EXPECT_THAT(program.output("quotes CASTR --offline --from 2024-12-01 --to 2024-12-31"),
              HasSubstr("\"2024-12-31\","))
      << "on another basis than the holdings";

  // Who does not say so is told, and has the same.
  std::filesystem::remove(program.folder / "h.csv");
  const ProgramResult cutOff = program.run(holdings);
  EXPECT_EQ(cutOff.exitCode, 0);
  EXPECT_EQ(cutOff.err,
            "corvane-cli: The market cannot be reached. Prices are those of the cache.\n");
  EXPECT_EQ(file("h.csv"), told);
}

TEST_F(ConsoleMarketTest, ShowsAndFetchesTheCoverageOfPrices) {
  program.makeFamily();
  EXPECT_EQ(program.run("coverage Family --offline --fetch").exitCode, 2);
  EXPECT_THAT(program.output("coverage Family"),
              AllOf(StartsWith("Symbol    Kind    State    From        To "),
                    ContainsRegex("\nBOREA.TO  equity  missing  2024-01-12  2")));

  const auto market = std::make_unique<SampleMarket>();
  useService(*market);
  const std::string told = program.output("coverage Family --fetch --csv");
  EXPECT_THAT(told, AllOf(StartsWith("\"symbol\",\"kind\",\"state\",\"from\",\"to\",\"days\","),
                          HasSubstr("\"BOREA.TO\",\"equity\",\"covered\",\"2024-01-12\","),
                          HasSubstr("\"USDCAD=X\",\"rate\",\"covered\",\"2024-02-05\","),
                          Not(HasSubstr("missing"))));
  const auto again = JSONValue::parse(program.output("coverage Family --json"));
  EXPECT_EQ(again.array().at(0).at("state").string(), "covered");
  const int asked = market->requestCount("/v8/");
  EXPECT_EQ(program.output("coverage Family --fetch --csv"), told);
  EXPECT_EQ(market->requestCount("/v8/"), asked) << "nothing is missing";
}

TEST_F(ConsoleMarketTest, TakesMissingExchangeRatesFromTheMarketWhereTheUserSaysSo) {
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  testing::writeText(
      program.folder / "a.csv",
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n"
      "2024-03-05,2024-03-05,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,USD,,,,1000\n"
      "2024-03-09,2024-03-11,A1,TFSA,Trade,BUY,,CASTR,Castrelle,USD,4,25,0,-100\n");
  const std::string import = "import a.csv --into Family --portfolio Savings";
  const ProgramResult asks = program.run(import);
  EXPECT_EQ(asks.exitCode, 1);
  EXPECT_EQ(asks.err,
            "corvane-cli: Line 3: no exchange rate for USD on 9 March 2024. Say --rates market to "
            "look it up.\nNothing has been imported.\n");
  // A Saturday, so the rate is that of the day before.
  EXPECT_THAT(program.output(import + " --rates market --sample-market --preview"),
              HasSubstr("market close of 8 March 2024"));
  EXPECT_EQ(program.output(import + " --rates market --sample-market"),
            "Imported 2 transactions.\n");
}

TEST_F(ConsoleMarketTest, FindsTheSymbolsOfAStatement) {
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  testing::writeText(
      program.folder / "a.csv",
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n"
      "2024-03-05,2024-03-05,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,,1000\n"
      "2024-03-08,2024-03-11,A1,TFSA,Trade,BUY,,MAPRK,Maplerock,CAD,4,25,0,-100\n"
      "2024-03-08,2024-03-11,A1,TFSA,Trade,BUY,,,Borealind Railway,CAD,4,25,0,-100\n");
  const ProgramResult preview = program.run(
      "import a.csv --into Family --portfolio Savings --preview --find-symbols --sample-market");
  EXPECT_EQ(preview.exitCode, 1);
  EXPECT_THAT(preview.out,
              AllOf(HasSubstr("Say --symbol \"Borealind Railway=BOREA.TO\". Found: BOREA.TO, "
                              "Borealind Railway Company"),
                    HasSubstr("“MAPRK” has no prices in CAD; say --symbol \"MAPRK=MAPRK.TO\"")));
}

TEST_F(ConsoleMarketTest, ReplaysAStrategyOverPastPrices) {
  const std::string days = "--from 2022-01-01 --to 2023-12-31 --sample-market";
  const std::string text = program.output("backtest CASTR " + days);
  EXPECT_THAT(text, AllOf(StartsWith("When              Event"),
                          HasSubstr("2022-01-03 09:30  Open              1000     0     1000"),
                          HasSubstr("\n13 trades on 13 of 500 trading days, 501 prices\n"
                                    "Gain:         186 USD (18.6%, 9.37% a year)\n"
                                    "Buy and hold: -56.54 USD (-5.65%, -2.85% a year)\n")));
  EXPECT_THAT(program.output("backtest CASTR --buy-spread 9 " + days),
              HasSubstr("\n2 trades on 2 of 500"))
      << "bought at the first price, sold, and never low enough again";
  EXPECT_EQ(program.run("backtest CASTR --interval 7d " + days).exitCode, 2);
  const ProgramResult minutes = program.run("backtest CASTR --interval 1m " + days);
  EXPECT_EQ(minutes.exitCode, 1);
  EXPECT_EQ(minutes.err,
            "corvane-cli: There are no prices every 1m for days as old as 2022-01-01. --interval "
            "may be one of 1d, 5d, 1wk, 1mo, 3mo.\n");
  EXPECT_EQ(program.run("backtest NONESUCH " + days).exitCode, 1);
}

TEST_F(ConsoleMarketTest, ReplaysAStrategyOverManyPeriods) {
  const std::string batch = "backtest CASTR --sample-market --batch ";
  const std::string days = " --from 2022-01-01 --to 2023-12-31";
  // The longest period is all of them, whose run is told by itself too.
  EXPECT_THAT(program.output(batch + "from-start" + days),
              AllOf(StartsWith("From        To          Days  Final value"),
                    HasSubstr("\n2022-01-03  2022-01-03     1 "),
                    HasSubstr("\n2022-01-03  2023-12-29   500         1186     186"),
                    HasSubstr(" 18.6%     9.37%        -5.65%\n\nYields range from "),
                    HasSubstr("Analyzed returns over 501 time periods.\nMoney is in USD.\n")));
  EXPECT_THAT(program.output(batch + "from-end --csv" + days),
              AllOf(StartsWith("\"from\",\"to\",\"days\",\"finalValue\",\"gain\",\"return\","
                               "\"annualizedReturn\",\"buyAndHoldReturn\",\"currency\"\r\n"
                               "\"2022-01-03\",\"2023-12-29\",\"500\",\"1186\",\"186\",\"0.186\","
                               "\"0.093744\",\"-0.05654\",\"USD\"\r\n\"2022-01-04\","),
                    HasSubstr("\r\n\"2023-12-29\",\"2023-12-29\",\"1\",")));
  // On that day nothing was traded, so there was nothing to invest in.
  EXPECT_THAT(program.output(batch + "daily --from 2022-05-12 --to 2022-05-13 --csv"),
              HasSubstr("\"2022-05-13\",\"2022-05-13\",\"0\",\"0\",\"0\",\"\",\"\",\"\",\"USD\""));

  EXPECT_EQ(program.run(batch + "weekly" + days).exitCode, 2);
  EXPECT_THAT(program.output("backtest CASTR --sample-market --csv" + days),
              StartsWith("\"when\",\"event\",\"shares\",\"cash\",\"held\",\"onHand\",\"price\"\r\n"
                         "\"2022-01-03 09:30\",\"Open\",\"\",\"1000\",\"0\",\"1000\","))
      << "without a batch it is the trades, and nothing but them";
  const ProgramResult future = program.run(batch + "daily --from 2999-01-01 --to 2999-01-02");
  EXPECT_EQ(future.exitCode, 2);
  EXPECT_THAT(future.err, StartsWith("corvane-cli: --from lies in the future.\n"));
}

TEST_F(ConsoleMarketTest, WritesThePriceHistoryOfASymbol) {
  const std::string week = "quotes CASTR --from 2024-01-04 --to 2024-01-08 --sample-market";
  const std::string text = program.output(week);
  EXPECT_THAT(text,
              MatchesRegex("\"date\",\"open\",\"high\",\"low\",\"close\",\"volume\",\"currency\","
                           "\"isRunning\"\r\n"
                           "\"2024-01-04\",(\"[0-9.]+\",){5}\"USD\",\"false\"\r\n"
                           "\"2024-01-05\",(\"[0-9.]+\",){5}\"USD\",\"false\"\r\n"
                           "\"2024-01-08\",(\"[0-9.]+\",){5}\"USD\",\"false\"\r\n"));
  EXPECT_EQ(program.output(week + " --csv"), text);
  const auto bars = JSONValue::parse(program.output(week + " --json")).array();
  ASSERT_EQ(bars.size(), 3U);
  EXPECT_THAT(text, HasSubstr("\"" + bars[1].at("close").number().text() + "\""));
  EXPECT_FALSE(bars[2].at("isRunning").boolean());

  // The hours are those of New York, whose markets open at half past nine.
  EXPECT_THAT(
      program.output("quotes CASTR --interval 1h --sample-market"),
      ContainsRegex("-[0-9]{2} 09:30\",(\"[0-9.]+\",){4}\"[1-9][0-9]+\",\"USD\",\"false\""));
  // NIMBR has been split in two and has paid dividends since, and goes on paying them.
  const std::string before = "quotes NIMBR --from 2005-01-05 --to 2005-01-05 --sample-market";
  EXPECT_THAT(program.output(before + " --adjust none"), HasSubstr("\"45.42\",\"4687200\""));
  EXPECT_THAT(program.output(before), HasSubstr("\"22.71\",\"9374400\""));
  const auto adjusted =
      JSONValue::parse(program.output(before + " --adjust dividends --json")).array();
  const double close = std::stod(adjusted.at(0).at("close").number().text());
  EXPECT_LE(close, 20.0536) << "what was paid until November 2026";
  EXPECT_GT(close, 0);
  EXPECT_EQ(program.run(week + " --adjust all").exitCode, 2);
  EXPECT_EQ(program.run("quotes CASTR --from 2024-01-06 --to 2024-01-04 --sample-market").exitCode,
            2);
  const ProgramResult weekend =
      program.run("quotes CASTR --from 2024-01-06 --to 2024-01-07 --sample-market");
  EXPECT_EQ(weekend.exitCode, 1);
  EXPECT_EQ(weekend.err, "corvane-cli: There are no prices of CASTR in these days.\n");
}

TEST_F(ConsoleMarketTest, KeepsAWatchlist) {
  program.makeFamily();
  ASSERT_EQ(program.output("watch Family CASTR"), "");
  ASSERT_EQ(program.output("watch Family CASTR"), "");
  EXPECT_THAT(program.output("list Family"), HasSubstr("\nWatchlist: CASTR\n"));
  EXPECT_EQ(program.output("list Family --watchlist --json"), "[\n{\"symbol\":\"CASTR\"}\n]\n");
  ASSERT_EQ(program.output("watch Family CASTR --stop"), "");
  EXPECT_EQ(program.run("watch Family CASTR --stop").exitCode, 1);
}

}  // namespace
}  // namespace corvane
