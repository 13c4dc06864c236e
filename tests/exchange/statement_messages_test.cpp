// What a user is told of a statement that cannot be read as it is, letter by letter.

#include <gtest/gtest.h>

#include "exchange/statement_world.h"
#include "exchange/statements/statement_preview.h"

namespace corvane {
namespace {

class StatementMessages : public ::testing::Test {
 protected:
  StatementMessages() { ledger.portfolio->allowsNegativeBalances = true; }

  static StatementProfile layout(const std::string& name, const std::string& further = "") {
    return StatementProfile::parse(
        "name = \"" + name +
            "\"\nheading = \"Date,Type,Symbol,Name,Shares,Amount,Cur\"\ndays = \"dmy\"\n" +
            further +
            "fields = { date = \"Date\", type = \"Type\", symbol = \"Symbol\", name = \"Name\", "
            "shares = \"Shares\", amount = \"Amount\", currency = \"Cur\" }\nkinds = { Buy = "
            "\"buy\", "
            "In = \"deposit\", Fee = \"cash\" }\n",
        "x", "x.toml");
  }

  /// What is said first of a file with these rows, as on the console.
  std::string told(const std::string& rows, const std::vector<StatementProfile>& profiles) {
    try {
      const StatementPreview read =
          previewStatement("Date,Type,Symbol,Name,Shares,Amount,Cur\n" + rows, profiles,
                           ledger.portfolio, StatementOptions());
      for (const StatementRow& row : read.reading.rows) {
        if (!row.reason.empty()) {
          return "Line " + std::to_string(row.line) +
                 (row.reason.starts_with("column “") ? ", " : ": ") + row.reason +
                 (row.remedy.empty() ? "" : " " + row.remedy);
        }
      }
      return "";
    } catch (const Error& error) {
      return error.description().value_or("");
    }
  }

  testing::Ledger ledger;
};

TEST_F(StatementMessages, NameLineColumnAndCell) {
  const std::vector<StatementProfile> plain = {layout("A")};
  const std::string deposit = "13/04/2024,In,,,,10.00,CAD\n";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {deposit + "14/04/2024,In,,,,12 abc,CAD\n",
       "Line 3, column “Amount”: “12 abc” is not a number."},
      {deposit + "14/04/2024,In,,,,,CAD\n" + deposit,
       "Line 3, column “Amount”: the cell is empty."},
      {deposit + "14/04/2024,In,,,,10,USA\n",
       "Line 3, column “Cur”: “USA” is not the code of a currency."},
      {deposit + "31/06/2024,In,,,,10,CAD\n", "Line 3, column “Date”: “31/06/2024” is not a day."},
      {deposit + "14/04/2024,In,,,,\"5,50\",CAD\n",
       "Line 3, column “Amount”: “5,50” has a decimal comma, but “10.00” on line 2 a decimal "
       "point."},
      {"14/04/2024,In,,,,\"1,234\",CAD\n",
       "Line 2, column “Amount”: “1,234” may be 1234 or 1.234. Say --decimal . or --decimal ,"},
      {deposit + "14/04/2024,Fee,,,,-0.8218,CHF\n",
       "Line 3, column “Amount”: -0.8218 CHF has more digits than francs have (Rappen). The layout "
       "does not say that amounts are rounded."},
      {deposit + "14/04/2024,Merger,,,,10,CAD\n",
       "Line 3, column “Type”: “Merger” is not in the layout. Leave the line out (--leave-out 3) "
       "or "
       "tell what it means in ~/.config/corvane/statements/x.toml."},
      {deposit + "14/04/2024,Buy,,ISHARES CORE EQUITY ETF,1,10,CAD\n",
       "Line 3: “ISHARES CORE EQUITY ETF” has no symbol yet. Say --symbol \"ISHARES CORE EQUITY "
       "ETF=…\"."},
      {deposit + "05/05/2025,Buy,ABC,,1,10,USD\n",
       "Line 3: no exchange rate for USD on 5 May 2025. Say --rates market to look it up."},
      {deposit + "14/04/2024,In,,,,10,CAD,what,is,this\n" + deposit,
       "Line 3: 10 cells, but the heading has 7."},
  };
  for (const auto& [rows, message] : cases) {
    EXPECT_EQ(told(rows, plain), message) << rows;
  }
  EXPECT_EQ(told(deposit, {layout("A"), layout("B")}),
            "This file fits “A” and “B”. Say which with --profile.");
}

TEST_F(StatementMessages, RefuseAFileThatEndsWithinACell) {
  const std::vector<StatementProfile> plain = {layout("A")};
  const std::string deposit = "13/04/2024,In,,,,10.00,CAD\n";
  // What is there of the amount is a number too.
  EXPECT_EQ(told(deposit + "14/04/2024,Fee,,,,\"-18", plain),
            "Line 3: the quote that is opened here is never closed.");
  EXPECT_EQ(told(deposit + "14/04/2024,Fee,,,,\"-18.50\",CAD", plain), "");
}

TEST_F(StatementMessages, AccountForAmountsThatAreRounded) {
  const StatementPreview read = previewStatement(
      "Date,Type,Symbol,Name,Shares,Amount,Cur\n13/04/2024,Fee,,,,-0.8218,CHF\n"
      "13/04/2024,Fee,,,,0.0049,CHF\n13/04/2024,Fee,,,,2.5,CHF\n",
      {layout("A", "round = true\n")}, ledger.portfolio, StatementOptions());
  ASSERT_EQ(read.newRowCount(), 2U);
  EXPECT_EQ(testing::told(read.transactions().front()), "2024-04-13 adjust -0.82 CHF");
  EXPECT_EQ(read.reading.remarks.back(), "Amounts were rounded, by 0.0067 CHF in all.");
}

}  // namespace
}  // namespace corvane
