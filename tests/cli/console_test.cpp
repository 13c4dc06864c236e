// The console program: real files in, real text out.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>

#include "cli/console_program.h"
#include "platform/data/json.h"
#include "platform/data/sqlite.h"
#include "storage/workspace/general_properties.h"
#include "storage/workspace/workspace_document.h"
#include "support/checkout.h"

namespace corvane {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::ProgramResult;
using ::testing::StartsWith;

const std::string examples = testing::sourcePath("resources/examples/");

class ConsoleProgramTest : public ::testing::Test {
 protected:
  testing::ConsoleProgram program;

  /// A workspace "Family.corvane" with the portfolio "Savings" and the bank's statement in it.
  void makeFamily() {
    ASSERT_EQ(program.output("create Family --portfolio Savings --currency GBP"), "");
    ASSERT_EQ(program.output("import " + examples +
                             "penwyth-bank.tsv --into Family.corvane --portfolio Savings "
                             "--fields tradeDate,type,symbol,cashAmount"),
              "Imported 6 transactions.\n");
  }
  /// Expects a run to fail with these texts and to leave the workspace as it was.
  void expectRefused(const std::string& arguments, int exitCode, const std::string& message) {
    const auto before = contents();
    const ProgramResult result = program.run(arguments);
    EXPECT_EQ(result.exitCode, exitCode) << arguments;
    EXPECT_EQ(result.out, "") << arguments;
    EXPECT_THAT(result.err, StartsWith("corvane-cli: " + message)) << arguments;
    EXPECT_EQ(contents(), before) << arguments;
  }
  [[nodiscard]] std::string contents() const {
    const auto package = program.folder / "Family.corvane";
    return testing::readText(package / WorkspaceDocument::databaseName) +
           testing::readText(package / WorkspaceDocument::generalPropertiesName);
  }
};

TEST_F(ConsoleProgramTest, SaysThatThereIsNothingToExport) {
  makeFamily();
  // No network is asked, or the test would take minutes where there is none.
  for (const std::string what : {"transactions", "gains"}) {
    expectRefused("export " + what + " Family --portfolio Savings --out a.csv --to 2020-01-01", 1,
                  "There are no " + what + " in these days. Nothing has been exported.\n");
  }
}

TEST_F(ConsoleProgramTest, ReadsAStatementByItsLayout) {
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  const std::string heading =
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n";
  testing::writeText(
      program.folder / "a.csv",
      heading +
          "2025-01-06,2025-01-06,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,,1000\n"
          "2025-01-07,2025-01-08,A1,TFSA,Trade,BUY,,,Boreal Rail,CAD,10,20.5,0,-205\n");
  const std::string import = "import a.csv --into Family.corvane --portfolio Savings";
  expectRefused(import, 1,
                "Line 3: “Boreal Rail” has no symbol yet. Say --symbol \"Boreal Rail=…\".\n");
  EXPECT_EQ(program.run(import + " --preview").exitCode, 1);
  const std::string answered = import + " --symbol 'Boreal Rail=BOREA.TO'";
  EXPECT_EQ(program.output(answered + " --preview"),
            "“Wealthsimple, activities”, UTF-8.\n"
            "Line 1 has the headings of the layout.\n"
            "Days are year, month, day, as was said.\n"
            "Line  Verdict  Day         Kind     Symbol    Shares  Amount  Currency  Rate  Reason\n"
            "   2  new      2025-01-06  deposit                      1000  CAD\n"
            "   3  new      2025-01-07  buy      BOREA.TO      10    -205  CAD\n");
  EXPECT_EQ(program.output("list Family.corvane"),
            "Portfolio  Currency  Transactions  From  To\nSavings    CAD                  0\n");
  EXPECT_EQ(program.output(answered), "Imported 2 transactions.\n");
  // The answer is remembered, and nothing is recorded twice.
  EXPECT_EQ(program.output(import),
            "Nothing is new: all 2 rows of “a.csv” are in the ledger already.\n");
  EXPECT_THAT(program.output("statements"), HasSubstr("wealthsimple-activities"));
}

TEST_F(ConsoleProgramTest, KeepsWhatIsSaidOfAStatement) {
  setenv("XDG_CONFIG_HOME", (program.folder / "config").c_str(), 1);
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  const std::string heading =
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n";
  const std::string rows =
      "2025-01-06,2025-01-06,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,USD,,,,1000\n"
      "2025-01-07,2025-01-08,A1,TFSA,Trade,BUY,,BOREA,Boreal Rail,USD,10,20.5,0,-205\n"
      "2025-01-07,2025-01-08,B2,RRSP,Corporate,SPINOFF,,,,CAD,,,,1.25\n";
  testing::writeText(program.folder / "a.csv", heading + rows);
  testing::writeText(program.folder / "rates.csv", "2025-01-06,USD,1.4\n");
  const std::string import = "import a.csv --into Family --portfolio Savings";
  expectRefused(import, 1,
                "Line 3: no exchange rate for USD on 7 January 2025. Say --rates market to look it "
                "up.\ncorvane-cli: Line 4, column “activity_type”: “Corporate / SPINOFF” is not in "
                "the layout. Leave the line out (--leave-out 4) or tell what it means in "
                "~/.config/corvane/statements/wealthsimple-activities.toml.\n"
                "Nothing has been imported.\n");
  EXPECT_THAT(
      program.output(import + " --rates rates.csv --account A1 --preview"),
      AllOf(HasSubstr("1.4, rates.csv of 6 January 2025"), HasSubstr("it is of another account")));
  EXPECT_EQ(
      program.output(import + " --rates rates.csv --kind 'Corporate / SPINOFF=cash'"),
      "Kept in " +
          (program.folder / "config/corvane/statements/wealthsimple-activities.toml").string() +
          ".\nImported 3 transactions.\n");
  // The next file begins on the day with which this one has ended, and needs no answer.
  testing::writeText(program.folder / "a.csv",
                     heading +
                         "2025-01-07,2025-01-08,B2,RRSP,Corporate,SPINOFF,,,,CAD,,,,1.25\n"
                         "2025-01-09,2025-01-09,B2,RRSP,Corporate,SPINOFF,,,,CAD,,,,2.50\n");
  EXPECT_EQ(program.output(import),
            "Imported 1 transactions.\n1 row is perhaps there already and left out; see --preview "
            "and --twins record.\n");
  EXPECT_EQ(program.output(import + " --twins record --dry-run"), "Imported 1 transactions.\n");
  EXPECT_EQ(program.run(import + " --twins maybe").exitCode, 2);
}

TEST_F(ConsoleProgramTest, ListsImportsAndTakesThemBack) {
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  const std::string heading =
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n";
  const std::string deposits =
      "2025-01-06,2025-01-06,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,,1000\n"
      "2025-01-07,2025-01-07,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,,500\n";
  testing::writeText(program.folder / "a.csv", heading + deposits);
  testing::writeText(program.folder / "b.csv",
                     heading +
                         "2025-02-06,2025-02-07,A1,TFSA,Trade,BUY,,BOREA.TO,Boreal Rail,CAD,10,110,"
                         "0,-1100\n");
  const std::string into = " --into Family --portfolio Savings";
  const std::string imports = "imports Family --portfolio Savings";
  EXPECT_EQ(program.output(imports + " --json"), "[]\n");
  ASSERT_EQ(program.output("import a.csv" + into), "Imported 2 transactions.\n");
  ASSERT_EQ(program.output("import b.csv" + into), "Imported 1 transactions.\n");
  const std::string list = program.output(imports);
  EXPECT_THAT(list, StartsWith("No  Imported    File   Layout                    Transactions  In "
                               "the Ledger\n 1  "));
  EXPECT_THAT(list, HasSubstr("  a.csv  Wealthsimple, activities             2              2\n"));
  EXPECT_THAT(program.output(imports + " --csv"),
              StartsWith("\"number\",\"day\",\"file\",\"layout\",\"recorded\",\"left\"\r\n\"1\","));

  // What the purchase needs cannot go, and then nothing does.
  const std::string before = program.output("ledger Family --portfolio Savings");
  const auto refused = program.run(imports + " --take-back 1");
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, HasSubstr("nsufficient"));
  EXPECT_EQ(program.output("ledger Family --portfolio Savings"), before);
  EXPECT_EQ(program.output(imports + " --take-back 2"), "Took back 1 transaction of “b.csv”.\n");
  // One of the others was changed since then, and is the user's own.
  ASSERT_EQ(program.run("revise Family --portfolio Savings --transaction 2 --total 600").exitCode,
            0);
  EXPECT_EQ(program.output(imports + " --take-back 1"),
            "Took back 1 transaction of “a.csv”.\n1 transaction that was changed or deleted since "
            "then is left alone.\n");
  EXPECT_THAT(program.output("ledger Family --portfolio Savings"), HasSubstr(" 600.00  CAD "));
  EXPECT_EQ(program.run(imports + " --take-back 1").err,
            "corvane-cli: Nothing of “a.csv” is in the ledger any more.\n");
  EXPECT_EQ(program.run(imports + " --take-back 3").err,
            "corvane-cli: There is no import 3.\nThe last one is 2.\n");
  EXPECT_EQ(program.run(imports + " --take-back x").exitCode, 2);
  EXPECT_EQ(program.run(imports + " --take-back 1 --json").exitCode, 2);
}

TEST_F(ConsoleProgramTest, ReadsOFX) {
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  testing::writeText(
      program.folder / "a.qfx",
      "OFXHEADER:100\nVERSION:102\nCHARSET:1252\n\n<OFX><INVSTMTRS><CURDEF>CAD<INVACCTFROM>"
      "<ACCTID>A1</INVACCTFROM><INVTRANLIST>\n<INVBANKTRAN><STMTTRN><TRNTYPE>DEP<DTPOSTED>20250106"
      "<TRNAMT>500.00<FITID>1<NAME>Caf\xE9</STMTTRN></INVBANKTRAN>\n<BUYMF><INVBUY><INVTRAN><FITID>"
      "2<DTTRADE>20250107</INVTRAN><SECID><UNIQUEID>CA0000000001</SECID><UNITS>10<UNITPRICE>20"
      "<TOTAL>-200.00</INVBUY></BUYMF>\n</INVTRANLIST></INVSTMTRS><SECLIST><SECINFO><SECID>"
      "<UNIQUEID>CA0000000001</SECID><SECNAME>Boreal Fund</SECINFO></SECLIST></OFX>\n");
  const std::string import = "import a.qfx --into Family --portfolio Savings";
  expectRefused(import, 1,
                "Line 7: “CA0000000001” has no symbol yet. Say --symbol \"CA0000000001=…\".\n"
                "Nothing has been imported.\n");
  EXPECT_EQ(program.output(import + " --symbol CA0000000001=BOR.TO --preview"),
            "“OFX and QFX”, windows-1252.\nOFX 102, 2 transactions.\n"
            "Days are year, month, day, as was said.\n"
            "Line  Verdict  Day         Kind      Symbol  Shares  Amount  Currency  Rate  Reason\n"
            "   6  new      2025-01-06  transfer                     500  CAD\n"
            "   7  new      2025-01-07  buy       BOR.TO      10    -200  CAD\n");
  EXPECT_EQ(program.output(import + " --symbol CA0000000001=BOR.TO"), "Imported 2 transactions.\n");
  EXPECT_THAT(program.output("ledger Family --portfolio Savings"), HasSubstr("Café"));
  EXPECT_EQ(program.output(import),
            "Nothing is new: all 2 rows of “a.qfx” are in the ledger already.\n");
}

TEST_F(ConsoleProgramTest, RemembersWhereColumnsAre) {
  setenv("XDG_CONFIG_HOME", (program.folder / "config").c_str(), 1);
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  testing::writeText(program.folder / "a.csv", "Day,What,How much\n2025-01-14,Deposit,7.36\n");
  EXPECT_THAT(program.output("import a.csv --into Family --portfolio Savings --fields "
                             "tradeDate,type,cashAmount --remember-layout 'My Bank'"),
              HasSubstr("statements/my-bank.toml.\nImported 1 transactions.\n"));
  testing::writeText(program.folder / "b.csv",
                     "Day,What,How much\n2025-01-14,Deposit,7.36\n2025-02-14,Fees,-1.00\n");
  EXPECT_THAT(program.output("import b.csv --into Family --portfolio Savings"),
              HasSubstr("Imported 1 transactions.\n"));
  EXPECT_THAT(program.output("statements"), HasSubstr("my-bank"));
}

TEST_F(ConsoleProgramTest, RefusesWhatACellDoesNotMean) {
  ASSERT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  testing::writeText(program.folder / "a.csv", "Day,What,How much\n2025-01-14,deposit,\"7,36\"\n");
  const std::string import =
      "import a.csv --into Family.corvane --portfolio Savings --fields tradeDate,type,cashAmount";
  expectRefused(import, 1,
                "Line 2, column “How much”: “7,36” would be recorded as 736.\n"
                "--file-reading, what the cells mean by themselves, would record:\n"
                "  14 January 2025: transfer of 7.36 CAD\n"
                "--standard-reading would record:\n"
                "  14 January 2025: transfer of 736 CAD\n"
                "Nothing has been imported.\n");
  EXPECT_EQ(program.output(import + " --standard-reading"), "Imported 1 transactions.\n");
  EXPECT_EQ(program.output(import + " --decimal ,"), "Imported 1 transactions.\n");
}

TEST_F(ConsoleProgramTest, TurnsAStatementIntoALedger) {
  makeFamily();
  EXPECT_EQ(program.output("list Family.corvane"),
            "Portfolio  Currency  Transactions  From        To\n"
            "Savings    GBP                  6  2024-01-15  2024-05-27\n");
  EXPECT_EQ(
      program.output("ledger Family.corvane --portfolio Savings"),
      "No  Trade Date  Settlement  Type             Symbol  Shares     Cash  Currency  Shares Net  "
      "Cash Net  Cost Base  Gain  Note\n"
      " 1  2024-01-15  2024-01-15  Transfer In                      2500.00  GBP                   "
      " 2500.00                   Salary sweep\n"
      " 2  2024-01-31  2024-01-31  Cash Adjustment                     4.17  GBP                   "
      " 2504.17                   Interest earned in January\n"
      " 3  2024-02-02  2024-02-02  Transfer Out                     -750.00  GBP                   "
      " 1754.17                   To joint account\n"
      " 4  2024-02-29  2024-02-29  Cash Adjustment                    -5.00  GBP                   "
      " 1749.17                   Monthly account fee\n"
      " 5  2024-03-11  2024-03-11  Cash Adjustment                     5.00  GBP                   "
      " 1754.17                   Refund of account fee\n"
      " 6  2024-05-27  2024-05-27  Transfer Out                     -200.00  GBP                   "
      " 1554.17                   Cash machine\n");
  EXPECT_THAT(
      program.output("ledger Family.corvane --portfolio Savings --csv --find 'FEE 5.0 mar'"),
      AllOf(HasSubstr("\r\n\"5\",\"2024-03-11\""), Not(HasSubstr("\"2024-02-29\""))));
  EXPECT_EQ(program.output("ledger Family.corvane --portfolio Savings --json --find nothing"),
            "[]\n");
  EXPECT_EQ(program.output("verify Family.corvane"),
            "Savings: 6 transactions, all balances are right.\n");
}

TEST_F(ConsoleProgramTest, ShowsTradesWithTheirBalances) {
  ASSERT_EQ(program.output("create Family --portfolio Pension --currency CAD"), "");
  ASSERT_EQ(program.output("import --into=Family.corvane --portfolio=Pension " + examples +
                           "keewana-desk.csv --date-format yyyyMMdd --fields tradeDate,"
                           "settlementDate,type,symbol,numberOfShares,sharesNet,cashAmount,"
                           "costBaseAdded,note"),
            "Imported 10 transactions.\n");
  const std::string ledger = program.output("ledger Family.corvane --portfolio Pension");
  EXPECT_THAT(ledger, HasSubstr("7  2024-04-05  2024-04-09  Sell                     MAPRK.TO    "
                                "-150  2118.00  CAD              750   3118.00   10375.00  43.00  "
                                "Rebalancing\n"));
  EXPECT_THAT(ledger, HasSubstr("Consolidation            MAPRK.TO    -600 "));
}

TEST_F(ConsoleProgramTest, ReadsFilesWithoutAHeaderAndInOtherLocales) {
  ASSERT_EQ(program.output("create Family --portfolio Spar --currency EUR"), "");
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  EXPECT_EQ(program.output("import " + examples +
                           "rhenwerk-depot.csv --into Family --portfolio Spar --fields tradeDate,"
                           "settlementDate,type,symbol,numberOfShares,,cashAmount,cashCurrency,"
                           "note"),
            "Imported 6 transactions.\n");
  setenv("LC_ALL", "en_CA.UTF-8", 1);
  EXPECT_THAT(program.output("ledger Family --portfolio Spar"), HasSubstr("  6136.50  "));
  ASSERT_EQ(program.output("create Family --portfolio Isa --currency USD"), "");
  const std::string command = "import " + examples +
                              "thrale-mossop.csv --into Family --portfolio Isa --no-header "
                              "--fields tradeDate,type,symbol,numberOfShares,cashAmount";
  EXPECT_EQ(program.output(command + " --currency USD --dry-run"), "Imported 6 transactions.\n");
  EXPECT_THAT(program.output("list Family"), HasSubstr("Isa        USD                  0"));
  EXPECT_EQ(program.output(command), "Imported 6 transactions.\n");
}

TEST_F(ConsoleProgramTest, RemovesTransactionsAndPortfolios) {
  makeFamily();
  expectRefused("remove Family --portfolio Savings --transaction 1", 1,
                "This change would violate a transaction settled on ");
  expectRefused("remove Family --portfolio Savings --transaction 7", 1,
                "The ledger has no transaction 7.\nIt has 6 transactions.");
  expectRefused("remove Family --portfolio Savings --transaction 1x", 2,
                "“1x” is not the number of a transaction.");
  expectRefused("remove Family --portfolio Savings", 2, "Say what is to go:");
  EXPECT_EQ(program.output("remove Family --portfolio Savings --transaction 3"), "");
  EXPECT_THAT(program.output("ledger Family --portfolio Savings"),
              AllOf(Not(HasSubstr("To joint account")), HasSubstr("2304.17")));
  EXPECT_EQ(program.output("verify Family"), "Savings: 5 transactions, all balances are right.\n");
  EXPECT_EQ(JSONValue::parse(program.output("verify Family --json")),
            JSONValue::parse(R"([{"portfolio":"Savings","transactions":5,"isRight":true,)"
                             R"("problem":null}])"));
  EXPECT_EQ(program.output("remove Family --portfolio Savings --whole-portfolio"), "");
  EXPECT_EQ(program.output("list Family"), "Portfolio  Currency  Transactions  From  To\n");
}

TEST_F(ConsoleProgramTest, RefusesWhatItCannotDoInTheSystemsWords) {
  makeFamily();
  const std::string into = " --into Family --portfolio Savings";
  testing::writeText(program.folder / "bad.csv", "a,b\n1,2\n3\n");
  testing::writeText(program.folder / "type.csv", "a,b,c\n2024-01-31,Gift,3\n");
  testing::writeText(program.folder / "empty.csv", "");
  expectRefused("import bad.csv" + into + " --fields tradeDate,type", 1,
                "Row 3 has 1 columns but 2 were expected.\n");
  expectRefused("import type.csv" + into + " --fields tradeDate,type,cashAmount", 1,
                "Problem on line 2: Transaction type “gift” is not understood.\n");
  expectRefused("import type.csv" + into + " --fields type,,,tradeDate", 1,
                "The file has 3 columns, but --fields names 4.\n");
  expectRefused("import type.csv" + into + " --fields tradeDate,kind", 2,
                "There is no field “kind”. The fields are type, tradeDate, ");
  expectRefused("import type.csv" + into + " --fields type,type", 2,
                "The field “type” stands in two columns.\n");
  expectRefused("import type.csv" + into + " --currency Euro", 2, "“Euro” is not the code of");
  expectRefused("import empty.csv" + into, 1, "“empty.csv” is empty.");
  expectRefused("import empty.csv" + into + " --fields type", 1, "“empty.csv” is empty.");
  expectRefused("import type.csv" + into, 1, "No known layout fits this file.");
  expectRefused("import type.csv" + into + " --no-header", 2, "“--no-header” needs --fields.");
  expectRefused("import none.csv" + into, 1, "Cannot read “none.csv”: No such file");
  expectRefused("import type.csv --into Family --portfolio Other", 1,
                "There is no portfolio “Other” in “Family.corvane”.\nIt holds “Savings”.\n");
  expectRefused("create Family --portfolio Savings --currency GBP", 1,
                "There is a portfolio “Savings” in “Family.corvane” already.\n");
  expectRefused("create Family --portfolio New --currency Pound", 2, "“Pound” is not the code of");
  expectRefused("create Family --portfolio '' --currency GBP", 2, "A portfolio needs a name.");
  expectRefused("list", 2, "WORKSPACE is missing.\n");
  expectRefused("list Family more", 2, "“more” is one word too many.\n");
  expectRefused("list Family --all", 2, "There is no option “--all” here.\n");
  expectRefused("ledger Family --portfolio", 2, "“--portfolio” needs a value: NAME.\n");
  expectRefused("list Nowhere", 1, "The files of “");
  expectRefused("sell Family", 2, "There is no command “sell”.");
}

TEST_F(ConsoleProgramTest, TellsOfADamagedLedger) {
  makeFamily();
  SQLiteDatabase(program.folder / "Family.corvane" / WorkspaceDocument::databaseName,
                 SQLiteDatabase::Mode::readWrite)
      .executeScript("UPDATE transactions SET cashAdded = cashAdded + 1 WHERE id = 2;");
  const ProgramResult result = program.run("verify Family");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.out, "Savings: not right.\n");
  EXPECT_THAT(result.err, StartsWith("Savings: corvane-cli: "));
  const ProgramResult data = program.run("verify Family --json");
  EXPECT_EQ(data.exitCode, 1);
  const auto rows = JSONValue::parse(data.out).array();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_FALSE(rows[0].at("isRight").boolean());
  EXPECT_TRUE(rows[0].at("transactions").isNull());
  EXPECT_THAT(result.err, HasSubstr(rows[0].at("problem").string()));
}

TEST_F(ConsoleProgramTest, KeepsTheWatchlistOfAWorkspace) {
  makeFamily();
  const auto file = program.folder / "Family.corvane" / WorkspaceDocument::generalPropertiesName;
  testing::writeText(file, R"({"watchlistSymbols":[{"provider":"YahooFinance",)"
                           R"("identifier":"CASTR"}],"appBundleVersion":"000"})");
  ASSERT_EQ(program.output("create Family --portfolio Other --currency CAD"), "");
  const auto kept = WorkspaceDocument::GeneralProperties::fromJSON(testing::readText(file));
  ASSERT_EQ(kept.watchlistSymbols->size(), 1U);
  EXPECT_EQ(kept.watchlistSymbols->front().identifier, "CASTR");

  testing::writeText(file, R"({"appBundleVersion":"999"})");
  const ProgramResult result = program.run("list Family");
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.err, HasSubstr("was created with a newer version of Corvane."));
}

TEST_F(ConsoleProgramTest, TeachesItsUse) {
  const std::string help = program.output("--help");
  for (const std::string command : {"create", "import", "list", "ledger", "verify", "remove"}) {
    EXPECT_THAT(help, HasSubstr("\n  " + command + " ")) << command;
    EXPECT_THAT(program.output(command + " --help"), HasSubstr("Usage: corvane-cli " + command));
    EXPECT_EQ(program.output("help " + command), program.output(command + " --help"));
  }
  EXPECT_THAT(program.output("import --help"), HasSubstr("settlementDate"));
  EXPECT_EQ(program.run("").exitCode, 2);
  EXPECT_THAT(program.output("--version"), StartsWith("corvane-cli "));
}

/// Runs the program on a terminal, on which the user presses `keys` when the bar has appeared.
ProgramResult runOnTerminal(const std::filesystem::path& folder,
                            const std::vector<std::string>& arguments, const std::string& keys) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    std::vector<char*> values;
    std::string program = testing::builtProgram("corvane-cli");
    values.push_back(program.data());
    auto copies = arguments;
    for (std::string& argument : copies) {
      values.push_back(argument.data());
    }
    values.push_back(nullptr);
    setenv("TMPDIR", (folder / "temporary").c_str(), 1);
    if (chdir(folder.c_str()) == 0) {
      execv(program.c_str(), values.data());
    }
    _exit(127);
  }
  ProgramResult result = {-1, "", ""};
  std::array<char, 4096> buffer;
  bool arePressed = keys.empty();
  for (ssize_t count = 0; (count = read(terminal, buffer.data(), buffer.size())) > 0;) {
    result.out.append(buffer.data(), static_cast<std::size_t>(count));
    if (!arePressed && result.out.contains("%")) {
      arePressed = write(terminal, keys.data(), keys.size()) > 0;
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  close(terminal);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

TEST_F(ConsoleProgramTest, ShowsABarOnATerminalAndCanBeInterrupted) {
  makeFamily();
  std::string text = "Date,Type,Amount\n";
  for (int row = 0; row < 100'000; ++row) {
    text += "2024-06-" + std::to_string(row / 4000 + 1) + ",Deposit,1.00\n";
  }
  testing::writeText(program.folder / "long.csv", text);
  const auto before = contents();
  const std::vector<std::string> arguments = {
      "import",      "long.csv", "--into",   "Family",
      "--portfolio", "Savings",  "--fields", "tradeDate,type,cashAmount"};
  const ProgramResult interrupted = runOnTerminal(program.folder.path(), arguments, "\x03");
  EXPECT_EQ(interrupted.exitCode, 130) << interrupted.out;
  EXPECT_THAT(interrupted.out, HasSubstr("Cancelled. Nothing has been imported."));
  EXPECT_EQ(contents(), before);

  const ProgramResult finished = runOnTerminal(program.folder.path(), arguments, "");
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.out, AllOf(HasSubstr("Importing long.csv… ["), HasSubstr("[#"),
                                  HasSubstr("Saving ["), HasSubstr("100000 transactions.")));
}

TEST_F(ConsoleProgramTest, ShowsOnATerminalHowFarALargeWorkspaceIsReadCheckedAndSaved) {
  makeFamily();
  const std::vector<std::string> record = {"record", "Family",      "--portfolio", "Savings",
                                           "--type", "cash-credit", "--total",     "1",
                                           "--date", "2024-07-01"};
  EXPECT_THAT(runOnTerminal(program.folder.path(), record, "").out, Not(HasSubstr("%")))
      << "a small one is done before one could read it";
  std::string text = "Date,Type,Amount\n";
  for (int row = 0; row < 80'000; ++row) {
    text += "2024-06-" + std::to_string(row / 4000 + 1) + ",Deposit,1.00\n";
  }
  testing::writeText(program.folder / "long.csv", text);
  (void)program.output(
      "import long.csv --into Family --portfolio Savings --fields tradeDate,type,cashAmount");
  const ProgramResult shown = runOnTerminal(program.folder.path(), record, "");
  EXPECT_EQ(shown.exitCode, 0);
  EXPECT_THAT(shown.out, AllOf(ContainsRegex("Reading \\[#+ *\\] [1-9]"),
                               ContainsRegex("Checking \\[#+ *\\] [1-9]"),
                               ContainsRegex("Saving \\[#+ *\\] [1-9]")));
  EXPECT_EQ(program
                .run("record Family --portfolio Savings --type cash-credit --total 1 "
                     "--date 2024-07-01")
                .err,
            "")
      << "nobody looks";
}

/// The key was pressed while the file was still being read, before there was anything to cancel.
TEST_F(ConsoleProgramTest, AnInterruptionBeforeTheImportBeginsIsNotForgotten) {
  makeFamily();
  const auto before = contents();
  const std::string script =
      "cd '" + program.folder.path().string() + "' && mkfifo pipe && { TMPDIR='" +
      program.temporary.string() + "' '" + testing::builtProgram("corvane-cli") +
      "' import pipe --into Family --portfolio Savings --fields tradeDate,type,cashAmount"
      " --file-reading 2>err.txt & } && exec 3>pipe && kill -TERM $! &&"
      " printf 'Date,Type,Amount\\n2024-06-01,Deposit,1.00\\n' >&3 && exec 3>&- && wait $!";
  const int status = std::system(script.c_str());
  EXPECT_EQ(WEXITSTATUS(status), 130);
  EXPECT_EQ(testing::readText(program.folder / "err.txt"),
            "corvane-cli: Cancelled. Nothing has been imported.\n");
  EXPECT_EQ(contents(), before);
}

/// Runs the program as in another part of the world.
class TravellingConsoleTest : public ConsoleProgramTest {
 protected:
  static void travelTo(const char* zone) { setenv("TZ", zone, 1); }
  void TearDown() override { travelTo("America/Toronto"); }

  const std::string import = "import " + examples +
                             "penwyth-bank.tsv --into Family.corvane --portfolio Savings "
                             "--fields tradeDate,type,symbol,cashAmount";
  const std::string ledger = "ledger Family --portfolio Savings --csv";
};

TEST_F(TravellingConsoleTest, WarnsOfOtherDaysAndRefusesToImportThem) {
  travelTo("Asia/Tokyo");
  makeFamily();
  const std::string days = program.output(ledger);
  travelTo("America/Toronto");
  const ProgramResult shifted = program.run(ledger);
  EXPECT_EQ(shifted.exitCode, 0);
  EXPECT_NE(shifted.out, days);
  EXPECT_THAT(shifted.err,
              AllOf(HasSubstr("were written in the time zone Asia/Tokyo. In America/Toronto, "),
                    HasSubstr("“corvane-cli time-zone Family.corvane --use Asia/Tokyo”")));
  for (const std::string& command : {import, import.substr(0, import.find(" --fields"))}) {
    expectRefused(command, 1, "The days of this workspace were written");
    EXPECT_THAT(program.run(command).err, HasSubstr("Nothing has been imported: while the days"));
  }
  (void)program.run("export transactions Family --portfolio Savings --out before.csv");

  EXPECT_EQ(program.run("time-zone Family --use Asia/Tokyo").exitCode, 0);
  for (const char* place : {"America/Vancouver", "Europe/London", "Asia/Tokyo"}) {
    travelTo(place);
    EXPECT_EQ(program.output(ledger), days) << place;
    EXPECT_EQ(program.output("time-zone Family"),
              "Days are shown in Asia/Tokyo, wherever the workspace is opened.\n");
  }
  // What is written and read there are those days too.
  travelTo("America/Vancouver");
  (void)program.output("export transactions Family --portfolio Savings --out there.csv");
  travelTo("Asia/Tokyo");
  (void)program.output("export transactions Family --portfolio Savings --out here.csv");
  EXPECT_EQ(testing::readText(program.folder / "there.csv"),
            testing::readText(program.folder / "here.csv"));
  EXPECT_NE(testing::readText(program.folder / "there.csv"),
            testing::readText(program.folder / "before.csv"));
}

TEST_F(TravellingConsoleTest, TakesNoImportBackWhileItsDaysAreInDoubt) {
  travelTo("Asia/Tokyo");
  EXPECT_EQ(program.output("create Family --portfolio Savings --currency CAD"), "");
  testing::writeText(
      program.folder / "a.csv",
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n"
      "2025-01-06,2025-01-06,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,,100\n");
  ASSERT_EQ(program.output("import a.csv --into Family --portfolio Savings"),
            "Imported 1 transactions.\n");
  // One that the user has entered himself, and that is of the day of the import in Toronto.
  ASSERT_EQ(program
                .run("record Family --portfolio Savings --type transfer-in --total 100 --date "
                     "2025-01-07")
                .exitCode,
            0);
  const std::string days = program.output(ledger);
  travelTo("America/Toronto");
  const std::string takeBack = "imports Family --portfolio Savings --take-back 1";
  expectRefused(takeBack, 1, "The days of this workspace were written");
  EXPECT_THAT(program.run(takeBack).err, HasSubstr("Nothing has been taken back: while the days"));
  EXPECT_EQ(program.run("time-zone Family --use Asia/Tokyo").exitCode, 0);
  EXPECT_EQ(program.output(ledger), days);
  EXPECT_EQ(program.output(takeBack), "Took back 1 transaction of “a.csv”.\n");
  EXPECT_THAT(program.output(ledger), AllOf(HasSubstr("2025-01-07"), Not(HasSubstr("2025-01-06"))));
}

TEST_F(TravellingConsoleTest, ShowsTheSampleWithItsDaysInAllTheWorld) {
  const auto share = std::filesystem::path(testing::builtProgram("corvane-cli")).parent_path() /
                     "../share/corvane";
  for (const auto& [name, portfolio] :
       {std::pair("Sample", "Savings"), std::pair("SampleMarket", "Retirement")}) {
    std::filesystem::copy(share / (name + std::string(".corvane")),
                          program.folder / (name + std::string(".corvane")));
    const std::string command =
        "ledger " + std::string(name) + " --portfolio " + portfolio + " --csv";
    travelTo("America/Toronto");
    const std::string days = program.output(command);
    for (const char* place : {"Pacific/Auckland", "Pacific/Kiritimati", "Pacific/Honolulu"}) {
      travelTo(place);
      EXPECT_EQ(program.output(command), days) << name << " in " << place;
    }
  }
}

TEST_F(TravellingConsoleTest, TakesTheDaysOfThePresentZone) {
  travelTo("America/Toronto");
  makeFamily();
  travelTo("America/Vancouver");
  const std::string shown = program.run(ledger).out;
  EXPECT_EQ(program.run("time-zone Family --present").exitCode, 0);
  EXPECT_EQ(program.output(ledger), shown);
  EXPECT_EQ(program.output("time-zone Family"),
            "Days are shown in America/Vancouver, the present time zone.\n");
  expectRefused("time-zone Family --use Vancouver", 2, "“Vancouver” is no time zone such as");

  testing::writeText(program.folder / "Family.corvane/General.json",
                     R"({"datesTimeZone":{"identifier":"Mars/Olympus","isUsedEverywhere":true}})");
  const ProgramResult unknown = program.run("time-zone Family");
  EXPECT_EQ(unknown.out, "Days are shown in America/Vancouver, the present time zone.\n");
  EXPECT_THAT(unknown.err, HasSubstr("“Mars/Olympus”, which is not known here."));
}

}  // namespace
}  // namespace corvane
