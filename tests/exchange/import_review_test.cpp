// The guard of imports: silent where the rules record what the cells mean, loud where they do not,
// and the way out where the rules refuse a file that can be understood.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/statement_world.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::StatementWorld;

class ImportReview : public ::testing::Test {
 protected:
  StatementWorld world;

  ImportReview() {
    world.isGuarded = true;
    world.fields = {"tradeDate",  "type",         "symbol",       "numberOfShares",
                    "cashAmount", "cashCurrency", "exchangeRate", "equivalentAmount"};
  }

  static constexpr std::string_view header =
      "Date,Type,Description,Shares,Amount,Cur,Rate,Equivalent\n";

  /// What is asked about a file of these rows; nothing is ever recorded before the answer.
  std::string asked(const std::string& rows) {
    world.window->heard.clear();
    const auto before = world.lines();
    const bool succeeded = world.importText(std::string(header) + rows);
    const std::string question = world.question();
    EXPECT_EQ(succeeded, question.empty()) << world.error();
    if (!question.empty()) {
      EXPECT_EQ(world.lines(), before);
      EXPECT_EQ(world.error(), "") << "a user who cancels is told nothing";
    }
    return question;
  }
};

TEST_F(ImportReview, IsSilentWhereBothReadingsAgree) {
  EXPECT_EQ(asked("2024-01-31,deposit,From the bank,,1000,CAD,,\n"
                  "2024-02-13,buy,ABC Acme Banking,10,\"1,000.50\",CAD,,\n"
                  "2024-02-13,buy,ABC,1,100,USD,1.25,\n"
                  "2024-03-31,dividend,ABC,,12.50,CAD,,\n"),
            "Line 4, column “Equivalent”: the empty cell would be recorded as 0.");
  world.fields.pop_back();
  EXPECT_EQ(asked("2024-01-31,deposit,From the bank,,1000,CAD,,\n"
                  "2024-02-13,buy,ABC Acme Banking,10,\"1,000.50\",CAD,,\n"
                  "2024-02-13,buy,ABC,1,100,USD,1.25,\n"
                  "2024-03-31,dividend,ABC,,12.50,CAD,,\n"),
            "");
  EXPECT_EQ(world.lines().size(), 4U);
}

TEST_F(ImportReview, AsksBeforeWhatACellDoesNotMeanIsRecorded) {
  const std::vector<std::pair<std::string, std::string>> traps = {
      {"2017-01-04,deposit,,,1,CAD,,\n2017-02-12,deposit,,,1,CAD,,\n",
       "Problem on line 2: Trade and/or settlement dates are missing. “2017-01-04” is not read as "
       "a "
       "date."},
      {"31/01/2024,deposit,,,7.36,CAD,,\n31/01/2024,deposit,,,\"1.000,00\",CAD,,\n",
       "Line 3, column “Amount”: “1.000,00” has a decimal comma, but “7.36” on line 2 a decimal "
       "point."},
      {"31/01/2024,deposit,,,\"7,36\",CAD,,\n31/01/2024,deposit,,,\"1.000,00\",CAD,,\n",
       "Line 2, column “Amount”: “7,36” would be recorded as 736."},
      {"31/01/2024,deposit,,,1'234.50,CAD,,\n",
       "Line 2, column “Amount”: “1'234.50” would be recorded as 1."},
      {"31/01/2024,interest,,,2.5E-4,CAD,,\n",
       "Line 2, column “Amount”: “2.5E-4” would be recorded as -2.5."},
      {"31/01/2024,deposit,,,12.50 DR,CAD,,\n",
       "Line 2, column “Amount”: “12.50 DR” is not a number."},
      {"31/01/2024,deposit,,,12.50,US$,,\n",
       "Line 2, column “Cur”: “US$” is not the code of a currency."},
      {"31/01/2024,deposit,,,US$12.50,,,\n",
       "Line 2, column “Amount”: “US$12.50” is in USD, but the row is in CAD."},
      {"31/01/2024,deposit,,,,CAD,,\n", "Line 2, column “Amount”: the cell is empty."},
      {"31/01/2024,deposit,,,\"1,234\",CAD,,\n",
       "Line 2, column “Amount”: “1,234” may be 1234 or 1.234. Say --decimal . or --decimal ,"},
      {"31/01/2024,buy,ISHARES CORE EQUITY ETF,1,1,CAD,,\n"
       "31/01/2024,buy,ISHARES S&P/TSX 60 INDEX ETF,1,1,CAD,,\n",
       "Line 3, column “Description”: “ISHARES S&P/TSX 60 INDEX ETF” would be recorded as ISHARES, "
       "as “ISHARES CORE EQUITY ETF” on line 2 is."},
  };
  for (const auto& [rows, question] : traps) {
    EXPECT_EQ(asked(rows), question) << rows;
  }
}

TEST_F(ImportReview, RecordsTheReadingThatIsChosen) {
  const std::string rows =
      "2017-01-14,deposit,,,\"1,5\",CAD,,\n2017-02-12,deposit,,,\"2,25\",CAD,,\n";
  world.window->reading = ReadingAnswer::file;
  EXPECT_TRUE(world.importText(std::string(header) + rows));
  EXPECT_THAT(world.lines(),
              ElementsAre("2017-01-14 transfer 1.5 CAD", "2017-02-12 transfer 2.25 CAD"));
  EXPECT_THAT(world.window->lastQuestion->fileReading,
              ElementsAre("14 January 2017: transfer of 1.5 CAD",
                          "12 February 2017: transfer of 2.25 CAD"));
  world.window->reading = ReadingAnswer::standard;
  EXPECT_TRUE(world.importText(std::string(header) + rows));
  EXPECT_THAT(world.lines(), ::testing::Contains("2017-01-14 transfer 15 CAD"));
}

TEST_F(ImportReview, OffersWhatTheRulesRefuse) {
  world.fields = {"tradeDate", "type", "symbol", "numberOfShares", "cashAmount"};
  world.window->reading = ReadingAnswer::file;
  const std::string top = "Date,Type,Symbol,Shares,Cash\n2024-01-31,buy,ABC,10,100\n";
  const std::vector<std::pair<std::string, std::string>> refused = {
      {top + "\n2024-02-13,sell,ABC,1,12\n\n\n", "Row 3 has 1 columns but 5 were expected."},
      {"Date,Type,Symbol,Shares,Cash,\n2024-01-31,buy,ABC,10,100,\n2024-02-13,sell,ABC,1,12",
       "Row 3 has 5 columns but 6 were expected."},
      {top + "2024-02-13T10:11:12Z,sell,ABC,1,12\n", "Trade and/or settlement dates are missing."},
      {top + "2024-02-13,dividend,ABC,0,12\n", "Problem on line 3: "},
      {top + "2024-02-13,sell,\xC4"
             "BC,1,12\n2024-02-13,buy,\xC4"
             "BC,1,12\n",
       "The file is not UTF-8 text."},
  };
  world.ledger.portfolio->allowsNegativeBalances = true;
  for (const auto& [text, question] : refused) {
    world.ledger.portfolio = world.ledger.manager->createPortfolio(Currency::cad());
    world.ledger.portfolio->allowsNegativeBalances = true;
    world.window->heard.clear();
    const bool succeeded = world.importText(text);
    EXPECT_THAT(world.question(), HasSubstr(question)) << text;
    EXPECT_TRUE(succeeded) << world.error();
    EXPECT_GE(world.lines().size(), 2U) << text;
  }
}

TEST_F(ImportReview, TurnsAFileRoundThatTheLedgerRefuses) {
  world.fields = {"tradeDate", "type", "symbol", "numberOfShares", "cashAmount"};
  world.ledger.portfolio->allowsNegativeBalances = false;
  world.window->reading = ReadingAnswer::file;
  EXPECT_TRUE(
      world.importText("Date,Type,Symbol,Shares,Cash\n"
                       "2024-03-14,sell,ABC,10,120\n"
                       "2024-02-13,buy,ABC,10,100\n"
                       "2024-01-31,deposit,,0,1000\n"))
      << world.error();
  EXPECT_THAT(world.question(), HasSubstr("Problem on line 2: "));
  EXPECT_THAT(world.lines(), ElementsAre("2024-01-31 transfer 1000 CAD",
                                         "2024-02-13 trade 10 ABC for 100 CAD = 100",
                                         "2024-03-14 trade -10 ABC for -120 CAD = -120"));
  // Where the other order does not help either, nothing is asked.
  world.window->heard.clear();
  EXPECT_FALSE(world.importText("Date,Type,Symbol,Shares,Cash\n2024-03-14,sell,ABC,10,120\n"));
  EXPECT_EQ(world.question(), "");
  EXPECT_THAT(world.error(), HasSubstr("Problem on line 2: "));
}

TEST_F(ImportReview, TakesWhatIsSaidBeforehand) {
  world.fields = {"tradeDate", "type", "cashAmount"};
  const std::string text = "Date,Type,Cash\n03/04/2024,deposit,\"1,234\"\n";
  world.atStart = [](PortfolioTransactionsImporter& importer) {
    importer.prefersFileReading = true;
    importer.strictOptions = {.days = DayOrder::mdy, .decimal = DecimalMark::comma};
  };
  EXPECT_FALSE(world.importText(text)) << "a tenth of a cent is refused";
  world.atStart = [](PortfolioTransactionsImporter& importer) {
    importer.prefersFileReading = true;
    importer.strictOptions = {.days = DayOrder::mdy, .decimal = DecimalMark::point};
  };
  EXPECT_TRUE(world.importText(text)) << world.error();
  EXPECT_THAT(world.lines(), ElementsAre("2024-03-04 transfer 1234 CAD"));
  EXPECT_EQ(world.question(), "");
}

}  // namespace
}  // namespace corvane
