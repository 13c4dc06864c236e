// The reports of the console program, at the prices of the invented market.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "cli/console_program.h"
#include "platform/data/json.h"

namespace corvane {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ConsoleReportsTest : public ::testing::Test {
 protected:
  testing::ConsoleProgram program;

  ConsoleReportsTest() {
    setenv("XDG_CACHE_HOME", (program.folder / "cache").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (program.folder / "config").c_str(), 1);
    program.makeFamily();
  }

  /// The number behind the last `title` that begins a line.
  static double figure(const std::string& text, const std::string& title) {
    std::smatch match;
    const std::regex line("(^|\n)" + title + " +(-?[0-9.]+)");
    return std::regex_search(text, match, line) ? std::stod(match[2]) : 1e99;
  }
};

/// The closing value is what the holdings of that day are worth, and the bridge leads to it.
TEST_F(ConsoleReportsTest, ShowReturnsThatAddUp) {
  const std::string told =
      program.output("returns Family --sample-market --to 2024-12-31 --by month");
  EXPECT_THAT(told, StartsWith("Savings, 2024-01-08 to 2024-12-31, CAD\n"));
  EXPECT_THAT(told, HasSubstr("\nTime-weighted, a year   —\n")) << "not even a year";
  EXPECT_THAT(told, HasSubstr("\n2024-02-01  2024-02-29 "));

  ASSERT_EQ(program.output("export holdings Family --portfolio Savings --sample-market --to "
                           "2024-12-31 --out h.csv --fields marketValue --no-header"),
            "");
  std::istringstream cells(testing::readText(program.folder / "h.csv"));
  double worth = 0;
  for (std::string cell; std::getline(cells, cell);) {
    worth += std::stod(cell.substr(1));
  }
  const double closing = figure(told, "= Closing value");
  EXPECT_NEAR(closing, worth, 0.01);
  EXPECT_NEAR(figure(told, "Opening value") +
                  figure(told, "\\+ Deposits at the rates of their days") -
                  figure(told, "- Withdrawals") + figure(told, "\\+ Gain of equities") +
                  figure(told, "\\+ Dividends") + figure(told, "\\+ Fees and adjustments") +
                  figure(told, "\\+ Currency"),
              closing, 0.05);

  const std::string days =
      program.output("returns Family --sample-market --to 2024-12-31 --benchmark CASTR --csv");
  EXPECT_THAT(days, AllOf(StartsWith("\"date\",\"value\",\"inflow\",\"outflow\",\"dailyReturn\","),
                          HasSubstr("\r\n\"2024-01-08\",\"25000\",\"25000\",\"0\",\"0\",\"1\",")));
}

TEST_F(ConsoleReportsTest, SayWhatIsLeftOutOfReturns) {
  const auto offline = program.run("returns Family --offline --to 2024-12-31");
  EXPECT_EQ(offline.exitCode, 1);
  EXPECT_THAT(offline.err, HasSubstr("Savings: no prices or rates of USD, which is left out."));
  EXPECT_EQ(program.run("returns Family --by week").exitCode, 2);
  EXPECT_EQ(program.run("returns Family --all --portfolio Savings --offline").exitCode, 2);
  EXPECT_EQ(program.output("returns Family --sample-market --from 2023-01-02 --to 2023-12-31"),
            "Nothing was held in these days.\n");
}

TEST_F(ConsoleReportsTest, ShowATaxYear) {
  EXPECT_EQ(program.output("tax Family --year 2024 --section totals"),
            "Symbol    Currency  Proceeds  Cost Base   Gains  Losses  Denied     Net\n"
            "BOREA.TO  CAD        3877.05    3687.98  189.07    0.00    0.00  189.07\n"
            "Total     CAD        3877.05    3687.98  189.07    0.00    0.00  189.07\n");
  EXPECT_THAT(program.output("tax Family --year 2023"),
              AllOf(HasSubstr("\nNo disposals in 2023.\n"), HasSubstr("This is no tax advice.")));
  // The trade is of 21 May and settles on the 23rd.
  EXPECT_THAT(program.output("tax Family --year 2024 --year-start 05-23 --section disposals --csv"),
              HasSubstr("\r\n\"2024-05-23\",\"2024-05-21\",\"Savings\",\"BOREA.TO\",\"40\","));
  EXPECT_THAT(program.output("tax Family --year 2024 --year-start 05-23 --trade-dates"),
              HasSubstr("No disposals"));
  EXPECT_THAT(program.output("tax Family --year 2024 --registered Savings"),
              HasSubstr("No disposals"));
  EXPECT_EQ(program.output("tax Family --year 2024 --person Kim --affiliated Savings=Kim "
                           "--section totals"),
            program.output("tax Family --year 2024 --section totals"));
  for (const char* wrong : {"--year 24", "--year 2024 --year-start 02-30", "--year 2024 --person X",
                            "--year 2024 --section x", "--year 2024 --affiliated Savings"}) {
    EXPECT_EQ(program.run(std::string("tax Family ") + wrong).exitCode, 2) << wrong;
  }
}

TEST_F(ConsoleReportsTest, ShowIncomeAndWhatIsExpected) {
  EXPECT_EQ(program.output("income Family"),
            "Month    Currency  Income  Year Before\n"
            "2024-03  CAD        84.50         0.00\n"
            "2024-06  CAD        17.51         0.00\n"
            "Total    CAD       102.01\n");
  EXPECT_THAT(
      program.output("income Family --by equity --sample-market"),
      HasSubstr("\nSavings    TAMRK.TO     150            0.00   0.00 %    0.00 %  quarterly"));
  const std::string projected = program.output("income Family --projected --sample-market");
  EXPECT_THAT(projected, AllOf(HasSubstr("  Savings    BOREA.TO  "), HasSubstr("  estimated\n"),
                               HasSubstr("\nTotal ")));
  EXPECT_THAT(
      program.output("income Family --csv"),
      HasSubstr("\r\n\"2024-03-28\",\"Savings\",\"BOREA.TO\",\"dividend\",\"100\",\"0.845\","
                "\"84.5\",\"CAD\",\"1\",\"84.5\",\"paid\",\"\"\r\n"));
  EXPECT_EQ(program.output("create Empty --portfolio P --currency CAD"), "");
  EXPECT_EQ(program.output("income Empty"), "No income recorded.\n");
  EXPECT_EQ(program.run("income Family --by week").exitCode, 2);
}

TEST_F(ConsoleReportsTest, ExplainFigures) {
  EXPECT_THAT(program.output("explain gain Family --portfolio Savings --symbol BOREA.TO"),
              AllOf(StartsWith("Capital gain of row 8 of “Savings”: 189.07 CAD, difference\n"
                               "  Proceeds: 3877.05 CAD, 2024-05-23, row 8 of “Savings”\n"),
                    HasSubstr("\n    Shares held before: 100,")));
  EXPECT_THAT(program.output("explain cost-base Family --portfolio Savings --row 5 --csv"),
              HasSubstr("\r\n\"1\",\"Added to the cost base\",\"\",\"4097.24\",\"CAD\","));
  // The market moves while it is asked: what is explained lies between the values before and after.
  const auto worth = [&] {
    return figure(program.output("value Family --sample-market"),
                  "Savings +CAD +[0-9]+[.][0-9]{2}");
  };
  const double before = worth();
  const double explained =
      figure(program.output("explain value Family --portfolio Savings --sample-market"), "Value:");
  const double after = worth();
  EXPECT_GE(explained, std::min(before, after) - 0.005);
  EXPECT_LE(explained, std::max(before, after) + 0.005);
  EXPECT_EQ(program.run("explain gain Family --portfolio Savings --row 2").exitCode, 2);
  EXPECT_EQ(program.run("explain gain Family --portfolio Savings --row 99").exitCode, 2);
  EXPECT_EQ(program.run("explain gain Family --portfolio Savings").exitCode, 2);
}

TEST_F(ConsoleReportsTest, KeepTaxSettingsWithTheWorkspace) {
  EXPECT_THAT(
      program.output("tax-settings Family"),
      AllOf(StartsWith("The tax year starts on 01-01.\nRules: canada.\n"), HasSubstr("\nSavings")));
  EXPECT_EQ(program.output("tax-settings Family --year-start 05-24 --country unitedKingdom"), "");
  EXPECT_EQ(
      program.output("tax-settings Family --portfolio Savings --role affiliated --person Kim"), "");
  EXPECT_THAT(program.output("tax-settings Family"),
              StartsWith("The tax year starts on 05-24.\nRules: unitedKingdom.\n"));
  EXPECT_THAT(program.output("tax-settings Family --csv"),
              HasSubstr("\r\n\"Savings\",\"affiliated\",\"Kim\",\"false\",\"\"\r\n"));
  // The sale settles on 23 May, a day before the year starts, and is Kim's.
  EXPECT_THAT(program.output("tax Family --year 2023"), HasSubstr("No disposals in 2023."));
  EXPECT_THAT(program.output("tax Family --year 2023 --person Kim"),
              AllOf(HasSubstr("40 of the pool"), HasSubstr("Shares are matched")));
  for (const char* wrong :
       {"--role taxable", "--portfolio Savings --role x", "--portfolio Savings --role affiliated",
        "--portfolio Savings --role taxable --person Kim", "--country mars", "--year-start 02-29",
        "--counted-on x", "--person Kim"}) {
    EXPECT_EQ(program.run(std::string("tax-settings Family ") + wrong).exitCode, 2) << wrong;
  }
  EXPECT_EQ(program.output("create Plans --portfolio \"Kim TFSA\" --currency CAD"), "");
  EXPECT_THAT(program.output("tax-settings Plans --json"),
              AllOf(HasSubstr(R"("role":null)"), HasSubstr(R"("proposedRole":"registered")")));
}

TEST_F(ConsoleReportsTest, TellAndBookWhatIsDenied) {
  EXPECT_EQ(program.output("create Loss --portfolio P --currency CAD --allow-negative-balances"),
            "");
  const auto trade = [&](const std::string& rest) {
    EXPECT_EQ(program.run("record Loss --portfolio P --symbol ABC --currency CAD " + rest).exitCode,
              0)
        << rest;
  };
  trade("--type buy --shares 10 --total 100 --date 2024-01-08 --settlement 2024-01-08");
  trade("--type sell --shares 10 --total 40 --date 2024-02-01 --settlement 2024-02-01");
  trade("--type buy --shares 4 --total 20 --date 2024-02-09 --settlement 2024-02-09");
  EXPECT_THAT(program.output("tax Loss --year 2024 --section disposals --json"),
              AllOf(HasSubstr(R"("denied":24.00)"), HasSubstr(R"("taxGain":-36.00)")));
  EXPECT_THAT(program.output("explain tax Loss --portfolio P --symbol ABC"),
              AllOf(StartsWith("Tax gain of the sale of 2024-02-01: -36 CAD, sum\n"),
                    HasSubstr("Denied: 24 CAD")));
  EXPECT_THAT(program.output("tax Loss --if-sold ABC 2 --proceeds 5"),
              HasSubstr("\nToday, selling 2 now would lose 17.00, nothing of it denied."));
  EXPECT_EQ(program.run("tax Loss --if-sold ABC").exitCode, 2);
  EXPECT_EQ(program.run("tax Loss --if-sold ABC none").exitCode, 2);

  EXPECT_EQ(program.output("tax Loss --year 2024 --record-adjustments"),
            "P: 24.00 CAD added to the cost base of ABC.\n");
  EXPECT_EQ(program.output("tax Loss --year 2024 --record-adjustments"),
            "No denied loss is left to be recorded.\n");
  EXPECT_THAT(program.output("explain cost-base Loss --portfolio P --symbol ABC"),
              StartsWith("Cost base after row 4 of “P”: 44 CAD"));
  EXPECT_THAT(program.output("tax Loss --if-sold ABC 2 --proceeds 5"),
              HasSubstr("\nToday, selling 2 now would lose 17.00, nothing of it denied."))
      << "nothing is counted twice";
  EXPECT_EQ(program.run("verify Loss").exitCode, 0);
}

TEST_F(ConsoleReportsTest, ExplainAndExportReports) {
  const std::string returns = program.output(
      "returns Family --sample-market --to 2024-12-31 "
      "--benchmark CASTR --by month");
  EXPECT_THAT(returns, AllOf(HasSubstr("\nBest month "), HasSubstr("\nBenchmark, volatility "),
                             HasSubstr("\nYear  "), HasSubstr("\n2024  ")));
  const auto percent = [&](const std::string& title) {
    std::ostringstream text;
    text << figure(returns, title) << " %";
    return text.str();
  };
  EXPECT_THAT(program.output("explain return Family --portfolio Savings --sample-market "
                             "--to 2024-12-31"),
              AllOf(StartsWith("Time-weighted return from 2024-01-08 to 2024-12-31: "),
                    HasSubstr(percent("Time-weighted, period"))));
  EXPECT_THAT(program.output("explain money-return Family --portfolio Savings --sample-market "
                             "--to 2024-12-31"),
              AllOf(HasSubstr(percent("Money-weighted, period")),
                    HasSubstr("What is left of all payments at the rate: 0 CAD")));
  EXPECT_THAT(program.output("explain yield Family --portfolio Savings --symbol BOREA.TO "
                             "--day 2024-12-31 --json"),
              HasSubstr(R"("label":"Yield on cost of BOREA.TO")"));
  EXPECT_THAT(program.output("explain projection Family --portfolio Savings --symbol BOREA.TO "
                             "--sample-market"),
              StartsWith("Next 12 months of BOREA.TO: "));

  for (const char* what : {"returns --portfolio Savings --sample-market --to 2024-12-31",
                           "tax --year 2024", "income"}) {
    const std::string kind = std::string(what).substr(0, std::string(what).find(' '));
    const std::string rest = std::string(what).substr(kind.size());
    EXPECT_EQ(program.output("export " + kind + " Family --out r.csv" + rest), "");
    const std::string direct = program.output(kind + " Family --csv" + rest);
    const std::string file = testing::readText(program.folder / "r.csv");
    EXPECT_EQ(std::ranges::count(file, '\n'), std::ranges::count(direct, '\n')) << kind;
    EXPECT_THAT(file, HasSubstr(kind == "returns" ? "\"2024-01-08\",\"25000.00\",\"25000.00\""
                                : kind == "tax"   ? "\"BOREA.TO\",\"40\",\"3877.05\""
                                                  : "\"BOREA.TO\",\"dividend\",\"100\",\"0.845\""));
  }
}

/// Two portfolios hold the same share; what is told of both adds up in either currency.
TEST_F(ConsoleReportsTest, ShowAllPortfoliosTogether) {
  const auto succeeds = [&](const std::string& command) {
    EXPECT_EQ(program.run(command).exitCode, 0) << command;
  };
  const std::string into = " Family --portfolio Dollars ";
  succeeds("create" + into + "--currency USD --allow-negative-balances");
  succeeds("record" + into + "--type transfer-in --total 1000 --currency USD --date 2024-03-01");
  succeeds("record" + into +
           "--type buy --symbol BOREA.TO --shares 2 --total 200 --currency CAD --rate 0.75 --date "
           "2024-03-04");
  const auto data = [&](const std::string& options) {
    return JSONValue::parse(program.output("overview Family --sample-market --json" + options));
  };
  const auto number = [](const JSONValue& row, const char* field) {
    return std::stod(row.find(field)->number().text());
  };
  for (const std::string currency : {"CAD", "USD"}) {
    const JSONValue portfolios = data(" --currency " + currency);
    const JSONValue holdings = data(" --holdings --currency " + currency);
    ASSERT_EQ(portfolios.array().size(), 2U);
    double worth = 0;
    double held = 0;
    double shares = 0;
    for (const JSONValue& row : portfolios.array()) {
      worth += number(row, "value");
      EXPECT_NEAR(number(row, "value") - number(row, "netDeposits"), number(row, "gain"), 0.02);
    }
    for (const JSONValue& row : holdings.array()) {
      held += number(row, "value");
      shares += number(row, "share");
    }
    EXPECT_NEAR(worth, held, 0.05);
    EXPECT_NEAR(shares, 1, 0.001);
  }
  const std::string told = program.output("overview Family --sample-market");
  EXPECT_THAT(told, AllOf(HasSubstr("All portfolios"), HasSubstr("Savings; Dollars")));
}

TEST_F(ConsoleReportsTest, WriteNothingButDataAndSayWhyTheyFail) {
  ASSERT_EQ(program.output("create Empty --portfolio P --currency CAD"), "");
  EXPECT_EQ(program.output("returns Empty --offline"), "Nothing was held in these days.\n");
  EXPECT_EQ(program.output("returns Empty --offline --json"), "[]\n");
  EXPECT_THAT(program.output("returns Empty --offline --csv"), StartsWith("\"date\","));
  // Without prices each of them fails, and the standard error has the reason beside whatever the
  // data says.
  for (const std::string command :
       {"value Family", "overview Family", "returns Family",
        "explain value Family --portfolio Savings", "tax Family --if-sold BOREA.TO 1",
        "income Family --projected"}) {
    const auto result = program.run(command + " --offline --json");
    EXPECT_EQ(result.exitCode, 1) << command;
    EXPECT_THAT(result.err, StartsWith("corvane-cli: ")) << command;
    if (!result.out.empty()) {
      EXPECT_NO_THROW((void)JSONValue::parse(result.out)) << command;
    }
  }
}

TEST_F(ConsoleReportsTest, WriteOneArrayOfAnEquityThatIsHeldInTwoCurrencies) {
  for (const std::string code : {"CAD", "USD"}) {
    const std::string portfolio = " Two --portfolio " + code;
    ASSERT_EQ(
        program.output("create" + portfolio + " --currency " + code + " --allow-negative-balances"),
        "");
    ASSERT_EQ(program
                  .run("record" + portfolio +
                       " --type buy --symbol ABC --shares 3 --total 30 "
                       "--currency " +
                       code + " --date 2024-01-08")
                  .exitCode,
              0);
  }
  const std::string sold = "tax Two --if-sold ABC 1 --proceeds 12";
  EXPECT_EQ(JSONValue::parse(program.output(sold + " --json")).array().size(), 2U);
  const std::string csv = program.output(sold + " --csv");
  EXPECT_EQ(std::ranges::count(csv, '\n'), 3) << csv;
  EXPECT_THAT(program.output("tax Two --section costs --csv"),
              HasSubstr("\"ABC\",\"3\",\"30.00\",\"USD\"\r\n"));
  // What is done is told in words alone.
  EXPECT_EQ(program.run("tax Two --record-adjustments --json").exitCode, 2);
}

}  // namespace
}  // namespace corvane
