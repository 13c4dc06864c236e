// The reports of the console program, at the prices of the invented market.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "cli/console_program.h"

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
  const std::string heading = program.output("value Family --sample-market");
  const std::string value =
      program.output("explain value Family --portfolio Savings --sample-market");
  EXPECT_THAT(heading, HasSubstr(std::to_string(figure(value, "Value:")).substr(0, 6)));
  EXPECT_EQ(program.run("explain gain Family --portfolio Savings --row 2").exitCode, 2);
  EXPECT_EQ(program.run("explain gain Family --portfolio Savings --row 99").exitCode, 2);
  EXPECT_EQ(program.run("explain gain Family --portfolio Savings").exitCode, 2);
}

}  // namespace
}  // namespace corvane
