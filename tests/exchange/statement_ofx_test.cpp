// Statements in OFX: what their tags become beyond the sample of the layout, currencies, accounts,
// numbers of transactions, files on one line, and what is wrong with a file, by its line.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/statement_world.h"
#include "exchange/statements/statement_memory.h"
#include "exchange/statements/statement_preview.h"
#include "support/checkout.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::told;

/// A movement of cash, on lines of its own; `further` are tags within.
std::string movement(const std::string& day, const std::string& amount, const std::string& id,
                     const std::string& further = "<TRNTYPE>CREDIT") {
  return "<STMTTRN>\n<DTPOSTED>" + day + "<TRNAMT>" + amount + "<FITID>" + id + further +
         "\n</STMTTRN>\n";
}

/// A statement of an account, in a file whose first transaction stands on line 4.
std::string ofxFile(const std::string& transactions, const std::string& currency = "CAD",
                    const std::string& securities = "") {
  return "OFXHEADER:100\nVERSION:102\n<OFX><INVSTMTRS><CURDEF>" + currency +
         "<INVACCTFROM><ACCTID>A1</INVACCTFROM><INVTRANLIST>\n" + transactions +
         "</INVTRANLIST></INVSTMTRS>\n" + securities + "</OFX>\n";
}

/// "ABC" under the number 1.
const std::string securityABC =
    "<SECLIST><SECINFO><SECID><UNIQUEID>1</SECID><SECNAME>Acme<TICKER>ABC</SECINFO></SECLIST>\n";

/// A transaction of "ABC" on one line but for its end.
std::string trade(const std::string& name, const std::string& day, const std::string& tags) {
  return "<" + name + "><INVTRAN><FITID>" + name + "<DTTRADE>" + day +
         "</INVTRAN><SECID><UNIQUEID>1</SECID>" + tags + "\n</" + name + ">\n";
}

class OFXStatements : public ::testing::Test {
 protected:
  OFXStatements() { ledger.portfolio->allowsNegativeBalances = true; }

  StatementPreview preview(const std::string& text) {
    static const ProfileShelf shelf =
        ProfileShelf::of({testing::sourcePath("resources/statements")});
    return previewStatement(text, shelf.profiles, ledger.portfolio, options, nullptr,
                            StatementMemory(folder.path(), *ledger.portfolio).imports());
  }

  /// "line verdict, transactions (reason)" in the order in which they are recorded.
  std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (const StatementRow& row : preview(text).reading.rows) {
      lines.push_back(testing::lineText(row));
    }
    return lines;
  }

  std::string problemOf(const std::string& text) {
    try {
      (void)preview(text);
      return "";
    } catch (const Error& error) {
      return error.description().value_or("");
    }
  }

  void record(const std::string& text) {
    const StatementPreview read = preview(text);
    ASSERT_TRUE(read.isReady());
    recordStatement(read, ledger.portfolio);
    StatementMemory memory(folder.path(), *ledger.portfolio);
    memory.rememberImport("a.ofx", read, Calendar::current());
    memory.write();
  }

  testing::Ledger ledger;
  testing::TemporaryFolder folder;
  StatementOptions options;
};

TEST_F(OFXStatements, ReadBothKindsInTheirEncodings) {
  const std::string body =
      "<OFX><STMTRS><CURDEF>CAD</CURDEF><BANKACCTFROM><ACCTID>7</ACCTID></BANKACCTFROM>"
      "<BANKTRANLIST>\n<STMTTRN><TRNTYPE>XFER</TRNTYPE><DTPOSTED>20250103</DTPOSTED>"
      "<TRNAMT>-12,50</TRNAMT><FITID>x</FITID><NAME>Caf\xE9 \xA4</NAME></STMTTRN>\n"
      "</BANKTRANLIST></STMTRS></OFX>\n";
  const StatementPreview read = preview(
      "<?xml version=\"1.0\" encoding=\"ISO-8859-15\"?>\n<?OFX OFXHEADER=\"200\" "
      "VERSION=\"211\"?>\n" +
      body);
  ASSERT_EQ(read.reading.rows.size(), 1U);
  EXPECT_EQ(told(read.reading.rows[0].transactions.at(0)),
            "2025-01-03 transfer -12.5 CAD | Café €");
  EXPECT_EQ(read.encodingName, "ISO 8859-15");
  EXPECT_EQ(read.reading.remarks.at(0), "OFX 211, 1 transaction.");
  EXPECT_THAT(linesOf("OFXHEADER:100\nCHARSET:1252\n" + body),
              ElementsAre("4 new, 2025-01-03 transfer -12.5 CAD | Café ¤"));
}

TEST_F(OFXStatements, TakeRatesThatTheyTellForThePortfoliosCurrency) {
  const std::string dollars = "<CURRENCY><CURRATE>1.25<CURSYM>USD</CURRENCY>";
  const std::string euros = "<ORIGCURRENCY><CURRATE>1.5<CURSYM>EUR</ORIGCURRENCY>";
  const std::string noRate = "<CURRENCY><CURRATE>1.0<CURSYM>USD</CURRENCY>";
  const std::string file =
      ofxFile(trade("BUYSTOCK", "20250103", "<UNITS>2<UNITPRICE>10<TOTAL>-20" + dollars) +
                  trade("SELLSTOCK", "20250104", "<UNITS>-1<UNITPRICE>15<TOTAL>15" + euros) +
                  trade("INCOME", "20250105", "<INCOMETYPE>DIV<TOTAL>1<WITHHOLDING>0.15" + noRate),
              "CAD", securityABC);
  EXPECT_THAT(linesOf(file), ElementsAre("4 new, 2025-01-03 trade 2 ABC for 20 USD = 25",
                                         "6 new, 2025-01-04 trade -1 ABC for -15 CAD = -15",
                                         "8 asks (no exchange rate for USD on 5 January 2025.)"));
  // In a portfolio of another currency than the account's the rate is of no use.
  ledger.portfolio = ledger.manager->createPortfolio(Currency::byCode().at("EUR"));
  EXPECT_THAT(linesOf(file)[0], HasSubstr("asks (no exchange rate for USD"));
}

TEST_F(OFXStatements, WorkOutAmountsThatLackOnlyWhereThePriceTellsThem) {
  EXPECT_THAT(
      linesOf(
          ofxFile(trade("BUYSTOCK", "20250103", "<UNITS>5<UNITPRICE>10<COMMISSION>1<FEES>0.5") +
                      trade("SELLSTOCK", "20250104", "<UNITS>-1<UNITPRICE>15<COMMISSION>1") +
                      trade("BUYDEBT", "20250105", "<UNITS>1000<UNITPRICE>99.5") +
                      trade("SELLMF", "20250106",
                            "<UNITS>-1<UNITPRICE>20<WITHHOLDING>3<STATEWITHHOLDING>1<TOTAL>20") +
                      trade("TRANSFER", "20250107", "<UNITS>1<TFERACTION>OUT"),
                  "CAD", securityABC)),
      ElementsAre("4 new, 2025-01-03 trade 5 ABC for 51.5 CAD = 51.5",
                  "6 new, 2025-01-04 trade -1 ABC for -14 CAD = -14",
                  "8 refused (column “TOTAL”: the cell is empty.)",
                  "10 new, 2025-01-06 trade -1 ABC for -20 CAD = -20, 2025-01-06 adjust -4 CAD | "
                  "Tax, ABC",
                  "12 new, 2025-01-07 journal -1 ABC"));
}

TEST_F(OFXStatements, KeepReinvestmentsInOrderInFilesOfEitherOrder) {
  const std::string reinvested =
      trade("REINVEST", "20250110", "<INCOMETYPE>DIV<TOTAL>-5<UNITS>0.5<UNITPRICE>10");
  const std::string bought = trade("BUYSTOCK", "20250103", "<UNITS>2<UNITPRICE>10<TOTAL>-20");
  const std::vector<std::string> newestFirst =
      linesOf(ofxFile(reinvested + bought, "CAD", securityABC));
  EXPECT_THAT(newestFirst, ElementsAre("6 new, 2025-01-03 trade 2 ABC for 20 CAD = 20",
                                       "5 new, 2025-01-10 dividend ABC 5 CAD = 5",
                                       "4 new, 2025-01-10 trade 0.5 ABC for 5 CAD = 5"));
  EXPECT_THAT(linesOf(ofxFile(bought + reinvested, "CAD", securityABC)),
              ElementsAre("4 new, 2025-01-03 trade 2 ABC for 20 CAD = 20",
                          "6 new, 2025-01-10 dividend ABC 5 CAD = 5",
                          "7 new, 2025-01-10 trade 0.5 ABC for 5 CAD = 5"));
}

TEST_F(OFXStatements, AskForWhatTheyDoNotKnowAndRecordNoCorrectionUnasked) {
  const std::string file = ofxFile(
      movement("20250103", "10", "1", "<TRNTYPE>OTHER") +
      movement("20250104", "20", "2", "<TRNTYPE>CREDIT<CORRECTFITID>1<CORRECTACTION>REPLACE") +
      "<CLOSUREOPT><INVTRAN><FITID>3<DTTRADE>20250105</INVTRAN><UNITS>1\n</CLOSUREOPT>\n" +
      movement("20250106", "30", "4"));
  EXPECT_THAT(
      linesOf(file),
      ElementsAre("4 refused (column “transaction”: “STMTTRN / OTHER” is not in the layout.)",
                  "7 refused (column “transaction”: “STMTTRN / correction” is not in the layout.)",
                  "10 refused (column “transaction”: “CLOSUREOPT” is not in the layout.)",
                  "12 new, 2025-01-06 transfer 30 CAD"));
  options.kinds = {{"STMTTRN / OTHER", StatementKind::cash},
                   {"STMTTRN / correction", StatementKind::ignore}};
  options.leaveOut = {10};
  EXPECT_THAT(
      linesOf(file),
      ElementsAre("4 new, 2025-01-03 adjust 10 CAD", "7 left out (the layout leaves it out)",
                  "10 left out (you leave it out)", "12 new, 2025-01-06 transfer 30 CAD"));
}

TEST_F(OFXStatements, TellAccountsApartAndLeavePendingRowsOut) {
  const auto account = [](const std::string& name, const std::string& rows) {
    return "<STMTRS><CURDEF>CAD<BANKACCTFROM><ACCTID>" + name +
           "</BANKACCTFROM>\n<BANKTRANLIST>\n" + rows + "</BANKTRANLIST></STMTRS>\n";
  };
  const std::string file =
      "OFXHEADER:100\n<OFX>\n" +
      account("A",
              movement("20250103", "10", "1", "<TRNTYPE>XFER<BANKACCTTO><ACCTID>B</BANKACCTTO>")) +
      account("B", movement("20250103", "20", "1")) +
      "<BANKTRANLISTP>\n<STMTTRNP><TRNTYPE>DEBIT<DTTRAN>20250104<TRNAMT>-1\n</STMTTRNP>\n"
      "</BANKTRANLISTP></OFX>\n";
  EXPECT_EQ(preview(file).reading.accounts, (std::set<std::string>{"A", "B"}));
  options.accounts = {"B"};
  EXPECT_THAT(linesOf(file), ElementsAre("5 left out (it is of another account)",
                                         "11 new, 2025-01-03 transfer 20 CAD",
                                         "16 left out (it is not booked yet)"));
}

TEST_F(OFXStatements, TakeANumberTogetherWithItsDayAndAmount) {
  record(ofxFile(movement("20250103", "10", "1") + movement("20250103", "10", "2")));
  // Equal to the letter but for the number, and the number again on another day.
  const std::string further =
      ofxFile(movement("20250103", "10", "2") + movement("20250103", "10", "3") +
              movement("20250105", "10", "1") + movement("20250103", "11", "1"));
  EXPECT_THAT(linesOf(further), ElementsAre(HasSubstr("4 already there"), HasSubstr("7 new"),
                                            HasSubstr("13 new"), HasSubstr("10 new")));
  record(further);
  EXPECT_EQ(preview(further).newRowCount(), 0U);
}

TEST_F(OFXStatements, TakeCurrenciesInSmallLettersForWhatTheyAre) {
  const std::string euros = "<CURRENCY><CURRATE>1.5<CURSYM>eur</CURRENCY>";
  EXPECT_THAT(
      linesOf(ofxFile(trade("BUYSTOCK", "20250103", "<UNITS>2<UNITPRICE>10<TOTAL>-20" + euros) +
                          movement("20250104", "10", "1"),
                      "cad", securityABC)),
      ElementsAre("4 new, 2025-01-03 trade 2 ABC for 20 EUR = 30",
                  "6 new, 2025-01-04 transfer 10 CAD"));
}

TEST_F(OFXStatements, RecordOnceWhatAFileRepeatsWithinAnAccount) {
  const std::string payment = movement("20250103", "10", "1");
  const std::string reinvested =
      trade("REINVEST", "20250110", "<INCOMETYPE>DIV<TOTAL>-5<UNITS>0.5<UNITPRICE>10");
  const std::string file = ofxFile(payment + reinvested + payment + reinvested, "CAD", securityABC);
  EXPECT_THAT(
      linesOf(file),
      ElementsAre("4 new, 2025-01-03 transfer 10 CAD",
                  "9 already there, 2025-01-03 transfer 10 CAD (it is the transaction of line 4)",
                  "7 new, 2025-01-10 dividend ABC 5 CAD = 5",
                  "8 new, 2025-01-10 trade 0.5 ABC for 5 CAD = 5",
                  "12 already there, 2025-01-10 dividend ABC 5 CAD = 5 (it is the transaction of "
                  "line 7)",
                  "13 already there, 2025-01-10 trade 0.5 ABC for 5 CAD = 5 (it is the transaction "
                  "of line 8)"));
  record(file);
  EXPECT_EQ(ledger.portfolio->transactions().size(), 3U);
  EXPECT_EQ(preview(file).newRowCount(), 0U);
  // Another bank account counts its numbers by itself, and what has none is told by nothing.
  const auto account = [](const std::string& name, const std::string& rows) {
    return "<STMTRS><CURDEF>CAD<BANKACCTFROM><ACCTID>" + name +
           "</BANKACCTFROM>\n<BANKTRANLIST>\n" + rows + "</BANKTRANLIST></STMTRS>\n";
  };
  const std::string other = movement("20250203", "20", "5");
  EXPECT_EQ(preview("OFXHEADER:100\n<OFX>\n" + account("A", other) + account("B", other) +
                    account("C", movement("20250204", "30", "") + movement("20250204", "30", "")) +
                    "</OFX>\n")
                .newRowCount(),
            4U);
}

TEST_F(OFXStatements, CountTransactionsThatStandOnOneLine) {
  std::string file = ofxFile(movement("20250103", "10", "1") + movement("20250104", "x", "2"));
  std::erase(file, '\n');
  const StatementPreview read = preview(file);
  EXPECT_THAT(read.reading.remarks, ::testing::Contains(HasSubstr("They are counted, from 2 on")));
  EXPECT_THAT(linesOf(file), ElementsAre("2 new, 2025-01-03 transfer 10 CAD",
                                         "3 refused (column “TRNAMT”: “x” is not a number.)"));
  options.leaveOut = {3};
  EXPECT_TRUE(preview(file).isReady());
}

TEST_F(OFXStatements, NameTheLineOfWhatIsWrong) {
  EXPECT_EQ(problemOf(ofxFile(movement("20250103", "10", "1") + movement("20250231", "1", "2"))),
            "Line 7, column “DTPOSTED”: “20250231” is not a day.");
  EXPECT_EQ(problemOf(ofxFile("<STMTTRN>\n<TRNTYPE>DEP<TRNAMT>1\n</STMTTRN>\n")),
            "Line 4, column “DTPOSTED”: the transaction has no day.");
  const std::string whole = ofxFile(movement("20250103", "10", "1"));
  EXPECT_EQ(problemOf(whole.substr(0, whole.find("</INVTRANLIST>"))),
            "Line 7: the file ends within “OFX”, which line 3 begins. It is not whole.");
  EXPECT_EQ(
      problemOf("<OFX>\n<INVSTMTRS>\n" + movement("20250103", "10", "1") + "</INVSTMTRS></OFX>"),
      "Line 3: “STMTTRN” stands in no list. The file is not whole.");
  EXPECT_EQ(problemOf("<OFX><STATUS><CODE>15500<SEVERITY>ERROR\n<MESSAGE>Sign in "
                      "again</STATUS></OFX>"),
            "Line 2: the bank reports “Sign in again”.");
}

}  // namespace
}  // namespace corvane
