// Single transactions on the console: what the form of the window records, and nothing else.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/console_program.h"
#include "platform/data/json.h"
#include "storage/workspace/workspace_document.h"

namespace corvane {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using testing::ProgramResult;
using ::testing::StartsWith;

class ConsoleTransactionsTest : public ::testing::Test {
 protected:
  testing::ConsoleProgram program;

  void SetUp() override {
    ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  }
  /// "record Family --portfolio Savings --type " and the rest.
  [[nodiscard]] static std::string record(const std::string& rest) {
    return "record Family --portfolio Savings --type " + rest;
  }
  [[nodiscard]] static std::string revise(const std::string& rest) {
    return "revise Family --portfolio Savings --transaction " + rest;
  }
  /// Records, and expects it to become the last row.
  void mustRecord(const std::string& rest) {
    EXPECT_EQ(program.output(record(rest)),
              "Recorded as transaction " + std::to_string(++count_) + ".\n");
  }
  [[nodiscard]] JSONValue::Array ledger() const {
    return JSONValue::parse(program.output("ledger Family --portfolio Savings --json")).array();
  }
  /// The row with a number, in the spelling of the data.
  [[nodiscard]] std::string row(std::size_t number) const { return ledger().at(number - 1).text(); }
  [[nodiscard]] std::string contents() const {
    return testing::readText(program.folder / "Family.corvane" / WorkspaceDocument::databaseName);
  }
  /// Expects the words on the standard error and the workspace as it was.
  void expectRefused(const std::string& arguments, int exitCode, const std::string& words) const {
    const std::string before = contents();
    const ProgramResult result = program.run(arguments);
    EXPECT_EQ(result.exitCode, exitCode) << arguments;
    EXPECT_EQ(result.out, "") << arguments;
    EXPECT_THAT(result.err, StartsWith("corvane-cli: " + words)) << arguments;
    EXPECT_EQ(contents(), before) << arguments;
  }

 private:
  int count_ = 0;
};

TEST_F(ConsoleTransactionsTest, RecordsEveryKind) {
  mustRecord("transfer-in --total 10000 --date 2024-01-02");
  mustRecord("buy --symbol AB.TO --shares 100 --price 20.125 --date 2024-01-04 --note 'a \"lot\"'");
  mustRecord(
      "sell --symbol AB.TO --shares 40 --total 1000 --date 2024-02-01 --settlement 2024-02-01");
  mustRecord("dividend --symbol AB.TO --shares 60 --total 12.34 --date 2024-03-01");
  mustRecord("cap-gains-dividend --symbol AB.TO --shares 60 --total 5 --date 2024-03-02");
  mustRecord("reinvested-distribution --symbol AB.TO --shares 60 --total 7 --date 2024-03-03");
  mustRecord("return-of-capital --symbol AB.TO --shares 60 --total 6 --date 2024-03-04");
  mustRecord("split --symbol AB.TO --prior-shares 60 --shares 180 --date 2024-03-05");
  mustRecord("journaled-shares --symbol AB.TO --shares 20 --equivalent 30 --date 2024-03-06");
  mustRecord("journaled-shares --symbol AB.TO --shares -10 --date 2024-03-07");
  mustRecord("cash-credit --total 1.5 --date 2024-03-08");
  mustRecord("cash-expense --total 0.5 --date 2024-03-09");
  mustRecord("transfer-out --total 100 --date 2024-03-10");

  // A trade settles two weekdays on, which is a Monday here; an amount has the sign of its kind.
  EXPECT_EQ(row(2),
            R"({"number":2,"tradeDate":"2024-01-04","settlementDate":"2024-01-08","type":"Buy",)"
            R"("symbol":"AB.TO","shares":100,"cash":-2012.50,"currency":"CAD","sharesNet":100,)"
            R"("cashNet":7987.50,"costBase":2012.50,"capitalGain":null,"note":"a \"lot\""})");
  EXPECT_THAT(row(3), AllOf(HasSubstr(R"("settlementDate":"2024-02-01")"),
                            HasSubstr(R"("shares":-40,"cash":1000.00)"),
                            HasSubstr(R"("capitalGain":195.00)")));
  EXPECT_THAT(row(6), HasSubstr(R"("costBase":1214.50)")) << "reinvested";
  EXPECT_THAT(row(7), HasSubstr(R"("costBase":1208.50)")) << "returned";
  EXPECT_THAT(row(8), HasSubstr(R"("sharesNet":180)"));
  EXPECT_THAT(row(9), AllOf(HasSubstr(R"("sharesNet":200)"), HasSubstr(R"("costBase":1238.50)")));
  EXPECT_THAT(row(10), HasSubstr(R"("sharesNet":190)"));
  EXPECT_THAT(row(13), AllOf(HasSubstr(R"("cash":-100.00)"), HasSubstr(R"("cashNet":8900.84)")));
  EXPECT_EQ(program.output("verify Family"), "Savings: 13 transactions, all balances are right.\n");
}

/// Numbers and days of a command mean the same everywhere.
TEST_F(ConsoleTransactionsTest, RecordsTheSameInEveryLocale) {
  mustRecord("transfer-in --total 5000.25 --currency USD --date 2024-01-02");
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  mustRecord(
      "buy --symbol CD --shares 1.5 --price 1234.5 --currency USD --rate 1.3456 "
      "--date 2024-01-03");
  mustRecord("buy --symbol CD --shares 2 --total 1000.5 --equivalent 1333.33 --date 2024-01-04");
  EXPECT_THAT(row(2), AllOf(HasSubstr(R"("cash":-1851.75,"currency":"USD")"),
                            HasSubstr(R"("costBase":2491.71)")));
  // The currency is that in which the ledger last told of the symbol.
  EXPECT_THAT(row(3), AllOf(HasSubstr(R"("cash":-1000.50,"currency":"USD")"),
                            HasSubstr(R"("costBase":3825.04)")));
}

TEST_F(ConsoleTransactionsTest, RevisesWhatIsNamedAndLeavesTheRest) {
  mustRecord("transfer-in --total 10000 --date 2024-01-02");
  mustRecord("buy --symbol AB --shares 100 --price 20 --date 2024-01-04 --note first");
  EXPECT_EQ(program.output(revise("2 --total 2500")), "Revised transaction 2.\n");
  EXPECT_THAT(row(2),
              AllOf(HasSubstr(R"("shares":100,"cash":-2500.00)"),
                    HasSubstr(R"("settlementDate":"2024-01-08")"), HasSubstr(R"("note":"first")")));
  EXPECT_EQ(program.output(revise("2 --shares 200 --note ''")), "Revised transaction 2.\n");
  EXPECT_THAT(row(2),
              AllOf(HasSubstr(R"("shares":200,"cash":-5000.00)"), HasSubstr("\"note\":null")))
      << "the price stays";
  mustRecord("transfer-in --total 1 --date 2024-02-01");
  EXPECT_EQ(program.output(revise("3 --date 2024-01-03 --type cash-credit")),
            "Revised transaction 3, which is transaction 2 now.\n");
  EXPECT_THAT(row(2), AllOf(HasSubstr("Cash Adjustment"), HasSubstr(R"("cash":1.00)")));
  EXPECT_EQ(program.output("delete Family --portfolio Savings --transaction 2"),
            "Deleted 1 transaction.\n");
  EXPECT_EQ(ledger().size(), 2U);
}

/// Whoever corrects a note must not find another figure changed: not the rate that a file had
/// rounded, not a price without an end, not a settlement on another day than usual.
TEST_F(ConsoleTransactionsTest, ChangesNothingButTheNote) {
  mustRecord("transfer-in --total 9000 --currency USD --date 2024-01-02");
  mustRecord(
      "buy --symbol AB --shares 7 --total 1000 --equivalent 1333.33 --currency USD "
      "--date 2024-01-03 --settlement 2024-01-03");
  mustRecord("dividend --symbol AB --shares 7 --total 0.01 --equivalent 0.02 --date 2024-01-04");
  mustRecord("journaled-shares --symbol AB --shares 3 --equivalent 0.05 --date 2024-01-05");
  mustRecord("split --symbol AB --prior-shares 10 --shares 3.333 --date 2024-01-06");
  ASSERT_EQ(program.output("export transactions Family --portfolio Savings --out a.csv"), "");
  for (const std::string number : {"1", "2", "3", "4", "5"}) {
    EXPECT_EQ(program.output(revise(number + " --note new")),
              "Revised transaction " + number + ".\n");
    EXPECT_THAT(row(std::stoul(number)), HasSubstr(R"("note":"new")"));
    EXPECT_EQ(program.output(revise(number + " --note ''")),
              "Revised transaction " + number + ".\n");
  }
  ASSERT_EQ(program.output("export transactions Family --portfolio Savings --out b.csv"), "");
  EXPECT_EQ(testing::readText(program.folder / "b.csv"),
            testing::readText(program.folder / "a.csv"));
}

TEST_F(ConsoleTransactionsTest, RefusesInTheWordsOfTheFormAndOfTheLedger) {
  expectRefused(record("sell --symbol AB --shares 1 --total 1"), 1,
                "Nothing is held that could be sold.\n");
  mustRecord("transfer-in --total 1000 --date 2024-01-02");
  mustRecord("buy --symbol AB --shares 100 --total 900 --date 2024-01-04");
  // The form.
  expectRefused(
      record("buy"), 1,
      "Choose an equity. Enter a number of shares above 0. Enter a total of 0 or more.\n");
  expectRefused(record("transfer-in --total 0"), 1, "Enter an amount above 0.\n");
  expectRefused(record("buy --symbol AB --shares -1 --total 1"), 1,
                "--shares: Must not be negative.\n");
  expectRefused(record("journaled-shares --symbol AB --shares 1"), 1,
                "Indeterminate money amount.\n");
  expectRefused(record("buy --symbol AB --shares 1 --total 1 --date 2024-03-04 --settlement "
                       "2024-03-01"),
                1, "The settlement date must be equal to or later than the trade date.\n");
  // The ledger, of the entry itself and of those behind it.
  expectRefused(record("buy --symbol AB --shares 1 --total 100.01 --date 2024-01-05"), 1,
                "Insufficient cash. The transaction requires $100.01 but only $100.00 is on "
                "hand.\n");
  expectRefused(record("sell --symbol AB --shares 101 --total 1 --date 2024-01-05 --dry-run"), 1,
                "Insufficient shares.");
  expectRefused(revise("1 --total 899"), 1, "This change would violate a transaction settled on ");
  expectRefused("delete Family --portfolio Savings --transaction 1", 1,
                "This change would violate a transaction settled on ");
  expectRefused("delete Family --portfolio Savings --transaction 3", 1,
                "The ledger has no transaction 3.\nIt has 2 transactions.");
  // The command line.
  expectRefused(record("gift --total 1"), 2, "--type is one of buy sell transfer-in");
  expectRefused(record("transfer-in --total 1 --shares 3"), 2,
                "“--shares” does not go with transfer-in.\n");
  expectRefused(record("buy --symbol AB --shares 1 --total 1 --rate 2"), 2,
                "“--rate” does not go with buy in CAD.\n");
  expectRefused(record("transfer-in --total 1,5"), 2, "“1,5” is not a number such as 1234.56.\n");
  expectRefused(record("transfer-in --total 1 --date 2024-02-30"), 2, "“2024-02-30” is not a day");
  expectRefused(record("buy --symbol AB --shares 1 --total 1 --price 1"), 2,
                "--price and --total exclude each other.\n");
  expectRefused(record("transfer-in --total 1 --currency Euro"), 2, "“Euro” is not the code of");
  expectRefused("record Family --portfolio Savings --total 1", 2, "“--type KIND” is missing.\n");
  expectRefused("delete Family --portfolio Savings", 2, "“--transaction N” is missing.\n");
}

TEST_F(ConsoleTransactionsTest, KnowsAnEquityHoweverItsSymbolIsTyped) {
  mustRecord("transfer-in --total 1000 --date 2024-01-02");
  mustRecord("buy --symbol ab.to --shares 2 --total 10 --date 2024-01-04");
  mustRecord("sell --symbol ' Ab.To ' --shares 1 --total 5 --date 2024-01-05");
  EXPECT_THAT(row(2), HasSubstr(R"("symbol":"AB.TO","shares":2,)"));
  EXPECT_THAT(row(3), HasSubstr(R"("symbol":"AB.TO","shares":-1,)"));
  for (const auto* symbol : {"''", "' '", "'A\nB'"}) {
    const std::string named = "--symbol " + std::string(symbol);
    expectRefused(record("buy " + named + " --shares 1 --total 1"), 2, "“");
    expectRefused(revise("2 " + named), 2, "“");
    expectRefused("watch Family " + std::string(symbol), 2, "“");
  }
  EXPECT_EQ(program.output("watch Family ab.to"), "");
  EXPECT_EQ(program.output("watch Family AB.TO"), "");
  EXPECT_EQ(program.output("list Family --watchlist --json"), "[\n{\"symbol\":\"AB.TO\"}\n]\n");
}

TEST_F(ConsoleTransactionsTest, TellsWhatAnEntryWouldDo) {
  mustRecord("transfer-in --total 1000 --date 2024-01-02");
  const std::string before = contents();
  EXPECT_EQ(program.output(record("buy --symbol AB --shares 10 --total 250 --dry-run "
                                  "--date 2024-01-04")),
            "             Before     After\n"
            "Shares held  0          10\n"
            "Cost base    $0.00      $250.00\n"
            "Cash in CAD  $1,000.00  $750.00\n");
  EXPECT_EQ(contents(), before);
}

}  // namespace
}  // namespace corvane
