// The layouts of statements: patterns, what is wrong with a layout, and what each of those that
// come with the program makes of a statement in its form.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/statement_world.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"
#include "support/checkout.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::told;

std::string found(const std::string& pattern, const std::string& cell) {
  const auto read = TextPattern::read(pattern);
  if (!read) {
    return "no pattern";
  }
  const auto captures = read->match(cell);
  if (!captures) {
    return "no match";
  }
  std::string text;
  for (const auto& [name, value] : *captures) {
    text += name + "=" + value + ";";
  }
  return text;
}

TEST(TextPattern, PicksFieldsOutOfTexts) {
  EXPECT_EQ(found("Koop {shares} @ *", "KOOP  1.000,5 @ 12 EUR"), "shares=1.000,5;");
  EXPECT_EQ(found("Bought {shares} {name} ({symbol})", "Bought 3 FTSE 100 (Acc) Fund (VUKE)"),
            "name=FTSE 100 (Acc) Fund;shares=3;symbol=VUKE;");
  EXPECT_EQ(found("{name} {digits} @ *", "Vanguard 500 250 @ 31"), "name=Vanguard 500;");
  EXPECT_EQ(found("{symbol}({isin}) *", "VT(US9220427424) Cash Dividend"),
            "isin=US9220427424;symbol=VT;");
  EXPECT_EQ(found("ränta", "RÄNTA "), "");
  EXPECT_EQ(found("B{digits}", "B12x"), "no match");
  EXPECT_EQ(found("DIV: {symbol}.*", "DIV: a b.L"), "no match");
  EXPECT_EQ(found("*a*a*a*a*b", std::string(3000, 'a')), "no match");
  EXPECT_EQ(found("{share}", "1"), "no pattern");
  EXPECT_EQ(found("a}", "a}"), "no pattern");
}

/// What is wrong with a layout whose lines are these.
std::string problemOf(const std::string& text) {
  try {
    (void)StatementProfile::parse(text, "x", "x.toml");
    return "";
  } catch (const ProfileError& error) {
    return error.description().value();
  }
}

TEST(StatementProfile, NamesThePlaceOfWhatIsWrong) {
  const std::string top = "name = \"X\"\nheading = \"Date,Type,Amount,Amount\"\n";
  const std::string fields = "fields = { date = \"Date\", type = \"Type\", amount = \"#3\" }\n";
  EXPECT_EQ(problemOf(top + fields + "kinds = { \"a\" = \"buy\" }\n"), "");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {top + fields + "kinds = { \"a\" = \"bying\" }\n",
       "x.toml, line 4, column 17: “bying” is not a kind."},
      {top + fields + "kindz = 1\n", "x.toml, line 4, column 1: “kindz” is not a key of a layout."},
      {top + "fields = { date = \"Dat\" }\nkind = \"cash\"\n",
       "x.toml, line 3, column 19: the heading has no column “Dat”."},
      {top + "fields = { date = \"Date\", amount = \"Amount\" }\nkind = \"cash\"\n",
       "x.toml, line 3, column 36: the heading has “Amount” twice; name it by its number, such as "
       "“#3”."},
      {top + "fields = { date = \"Date\", colour = \"Type\" }\nkind = \"cash\"\n",
       "x.toml, line 3, column 27: “colour” is not a field."},
      {top + fields + "kinds = { \"{x}\" = \"buy\" }\n",
       "x.toml, line 4, column 11: “{x}” has braces without a name that a pattern knows."},
      {top + fields + "kinds = { \"A b\" = \"buy\", \"a  B\" = \"sell\" }\n",
       "x.toml, line 4, column 26: “a  B” stands here twice."},
      {top + fields + "kinds = { \"*fee\" = \"cash\", \"*tax\" = \"ignore\" }\n", ""},
      {top + fields + "kinds = { \"*fee*\" = \"cash\", \"*tax*\" = \"ignore\" }\n",
       "x.toml, line 4, column 29: “*tax*” and “*fee*” fit the same texts equally well."},
      {top + fields + "kinds = { \"*fee*\" = \"cash\", \"*tax*\" = \"cash\" }\n", ""},
      {top + fields + "kinds = { \"{digits}a\" = \"cash\", \"{symbol}b\" = \"buy\" }\n", ""},
      {top + fields + "days = \"ydm\"\nkind = \"cash\"\n",
       "x.toml, line 4, column 8: “ydm” is none of “ymd”, “dmy”, “mdy”."},
      {top + "note = \"\"\"a\"\"\"\n",
       "x.toml, line 3, column 1: texts in three quotes are not taken; write them in one line."},
      {top + "name = \"Y\"\n", "x.toml, line 3, column 8: this key stands here a second time."},
  };
  for (const auto& [text, problem] : cases) {
    EXPECT_EQ(problemOf(text), problem) << text;
  }
}

TEST(StatementProfile, OfTheUserGuideCanBeUsed) {
  const std::string guide = testing::readText(testing::sourcePath("docs/user-guide.html"));
  const std::size_t start = guide.find("<pre>name    =") + 5;
  const auto profile =
      StatementProfile::parse(guide.substr(start, guide.find("</pre>", start) - start), "x", "x");
  testing::Ledger ledger;
  ledger.portfolio = ledger.manager->createPortfolio(Currency::byCode().at("EUR"));
  const auto preview = previewStatement(
      "Day;What;Share;Count;Amount\n03.04.2025;Paid in;;;1.000,00\n04.04.2025;Bought;ABC;2;50,00\n",
      {profile}, ledger.portfolio, {});
  ASSERT_TRUE(preview.isReady());
  EXPECT_THAT(preview.transactions(),
              ElementsAre(::testing::ResultOf(told, "2025-04-03 transfer 1000 EUR"),
                          ::testing::ResultOf(told, "2025-04-04 trade 2 ABC for 50 EUR = 50")));
}

class Statements : public ::testing::Test {
 protected:
  static const ProfileShelf& shelf() {
    static const ProfileShelf all = ProfileShelf::of({testing::sourcePath("resources/statements")});
    return all;
  }

  testing::Ledger ledger;
  StatementOptions options;

  Statements() { ledger.portfolio->allowsNegativeBalances = true; }

  void usePortfolio(const std::string& currency) {
    ledger.portfolio = ledger.manager->createPortfolio(Currency::byCode().at(currency));
    ledger.portfolio->allowsNegativeBalances = true;
  }

  StatementPreview preview(const std::string& text) {
    return previewStatement(text, shelf().profiles, ledger.portfolio, options);
  }

  /// Of each row, in the order of the lines.
  static std::vector<std::string> linesOf(const StatementPreview& preview) {
    std::vector<std::string> lines;
    for (const std::uint32_t place : preview.reading.rows.byLine()) {
      lines.push_back(testing::lineText(preview.reading.rows[place]));
    }
    return lines;
  }
};

TEST_F(Statements, LayoutsOfTheProgramCanAllBeRead) {
  for (const ErrorPointer& problem : shelf().problems) {
    ADD_FAILURE() << problem->description().value_or("");
  }
  EXPECT_GE(shelf().profiles.size(), 30U);
}

TEST_F(Statements, OwnHeadingIsRecognisedByOneLayoutAlone) {
  for (const StatementProfile& profile : shelf().profiles) {
    std::string text;
    for (const StatementTableLayout& table : profile.tables) {
      for (const std::string& cell : table.heading) {
        text += "\"" + cell + "\",";
      }
      text.pop_back();
      text += "\n";
    }
    const StatementFile file = StatementFile::read(text, shelf().profiles, std::nullopt);
    EXPECT_EQ(file.profile->id, profile.id);
  }
}

TEST_F(Statements, GoesInOnceAndNotAgain) {
  const std::string text =
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n"
      "2025-01-06,2025-01-06,A1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,,1000\n"
      "2025-01-07,2025-01-08,A1,TFSA,Trade,BUY,,BOREA,Boreal,CAD,10,20.5,0,-205\n"
      "2025-01-07,2025-01-08,A1,TFSA,Trade,BUY,,BOREA,Boreal,CAD,10,20.5,0,-205\n"
      "2025-03-31,2025-03-31,A1,TFSA,Dividend,,,BOREA,Boreal,CAD,,,,4.2\n"
      "\"As of 2025-04-01\"\n";
  const StatementPreview first = preview(text);
  EXPECT_THAT(linesOf(first),
              ElementsAre("2 new, 2025-01-06 transfer 1000 CAD",
                          "3 new, 2025-01-07/2025-01-08 trade 10 BOREA for 205 CAD = 205",
                          "4 new, 2025-01-07/2025-01-08 trade 10 BOREA for 205 CAD = 205",
                          "5 new, 2025-03-31 dividend BOREA 4.2 CAD = 4.2",
                          "6 left out (below the table)"));
  ASSERT_TRUE(first.isReady());
  ledger.manager->recordTransactions(first.transactions(), ledger.portfolio, nullptr);
  const StatementPreview again = preview(text);
  EXPECT_EQ(again.newRowCount(), 0U) << "also of twins none is new";
  // A third one of the twins is, where no dividend behind it declares what was held.
  usePortfolio("CAD");
  const std::string twins = text.substr(0, text.find("2025-03-31"));
  ledger.manager->recordTransactions(preview(twins).transactions(), ledger.portfolio, nullptr);
  const StatementPreview more =
      preview(twins + "2025-01-07,2025-01-08,A1,TFSA,Trade,BUY,,BOREA,Boreal,CAD,10,20.5,0,-205\n");
  EXPECT_EQ(more.newRowCount(), 1U);
}

TEST_F(Statements, PutsAnOrderOfSeveralRowsTogether) {
  usePortfolio("EUR");
  options.symbols = {{"us0000000001", "CASTR"}};
  const std::string heading =
      "Datum,Tijd,Valutadatum,Product,ISIN,Omschrijving,FX,Mutatie,,Saldo,,Order Id\n";
  EXPECT_THAT(
      linesOf(preview(
          heading +
          "15-01-2025,15:31,15-01-2025,CASTRELLE,US0000000001,Valuta Debitering,,EUR,\"-92,00\",,,"
          "ab-cd\n"
          "15-01-2025,15:31,15-01-2025,CASTRELLE,US0000000001,Valuta Creditering,\"1,0870\",USD,"
          "\"100,00\",,,ab-cd\n"
          "15-01-2025,15:31,15-01-2025,CASTRELLE,US0000000001,DEGIRO Transactiekosten en/of "
          "kosten van derden,,EUR,\"-1,00\",,,ab-cd\n"
          "15-01-2025,15:31,15-01-2025,CASTRELLE,US0000000001,\"Koop 4 @ 25,00 USD\",,USD,"
          "\"-100,00\",,,ab\n"
          ",,,,,,,,,,,-cd\n"
          "14-01-2025,08:00,14-01-2025,,,Degiro Cash Sweep Transfer,,EUR,\"5,00\",,,\n")),
      ElementsAre("2 belongs (to line 5)", "3 belongs (to line 5)", "4 belongs (to line 5)",
                  "5 new, 2025-01-15 trade 4 CASTR for 93 EUR = 93",
                  "7 left out (a sweep to or from the bank account)"));
}

TEST_F(Statements, KeepsTheGainRightWhereTaxIsWithheld) {
  usePortfolio("EUR");
  options.symbols = {{"de0000000001", "RHNWK"}};
  EXPECT_THAT(
      linesOf(preview("date;time;status;reference;description;assetType;type;isin;shares;price;"
                      "amount;fee;tax;currency\n"
                      "2025-01-02;10:00:00;Executed;r1;Rhenwerk;Security;Buy;DE0000000001;10;"
                      "100,00;-1.000,00;0,99;0,00;EUR\n"
                      "2025-02-03;10:00:00;Cancelled;r2;Rhenwerk;Security;Sell;DE0000000001;5;;;;;"
                      "EUR\n"
                      "2025-02-04;10:00:00;Executed;r3;Rhenwerk;Security;Sell;DE0000000001;5;"
                      "120,00;600,00;0,99;26,38;EUR\n")),
      ElementsAre("2 new, 2025-01-02 trade 10 RHNWK for 1000.99 EUR = 1000.99",
                  "3 left out (an order that was not carried out)",
                  "4 new, 2025-02-04 trade -5 RHNWK for -599.01 EUR = -599.01, 2025-02-04 adjust "
                  "-26.38 EUR | Tax, RHNWK"));
}

TEST_F(Statements, AsksWhatOnlyTheUserKnows) {
  usePortfolio("GBP");
  const std::string text =
      "Security / ISIN,Transaction Type,Quantity,Share Price,Total Trade Value,Trade Date/Time,"
      "Settlement Date,Broker\n"
      "Penwyth World / ISIN IE0000000001,Buy,2.5,£40.00,£100.00,23/12/24 15:18:12,27/12/24,None\n"
      "Penwyth World / ISIN IE0000000001,Swap,2.5,£40.00,£100.00,23/12/24 15:18:12,27/12/24,None\n";
  EXPECT_THAT(linesOf(preview(text)),
              ElementsAre("2 asks (“IE0000000001” has no symbol yet.)",
                          "3 refused (column “Transaction Type”: “Swap” is not in the layout.)"));
  std::vector<std::string> remedies;
  for (const StatementRow& row : preview(text).reading.rows) {
    remedies.push_back(row.remedy);
  }
  EXPECT_THAT(remedies, ::testing::UnorderedElementsAre(
                            "Say --symbol \"IE0000000001=…\".",
                            "Leave the line out (--leave-out 3) or tell what it means in "
                            "~/.config/corvane/statements/investengine.toml."));
  options.symbols = {{"ie0000000001", "PWLD.L"}};
  options.leaveOut = {3};
  const StatementPreview answered = preview(text);
  EXPECT_THAT(linesOf(answered),
              ElementsAre("2 new, 2024-12-23/2024-12-27 trade 2.5 PWLD.L for 100 GBP = 100",
                          "3 left out (you leave it out)"));
  EXPECT_TRUE(answered.isReady());
}

TEST_F(Statements, ReadsNewestFirstAndTellsTheLedgersRefusals) {
  ledger.portfolio->allowsNegativeBalances = false;
  usePortfolio("USD");
  ledger.portfolio->allowsNegativeBalances = false;
  const std::string heading = "Date,Action,Symbol,Description,Quantity,Price,Fees & Comm,Amount\n";
  EXPECT_THAT(
      linesOf(preview(heading +
                      "01/15/2025,Sell,ABC,ABC CORP,4,$30.00,,$120.00\n"
                      "01/15/2025,Buy,ABC,ABC CORP,4,$25.00,,-$100.00\n"
                      "01/10/2025 as of 01/09/2025,Wire Funds Received,,WIRE,,,,\"$1,000.00\"\n")),
      ElementsAre("2 new, 2025-01-15 trade -4 ABC for -120 USD = -120",
                  "3 new, 2025-01-15 trade 4 ABC for 100 USD = 100",
                  "4 new, 2025-01-10 transfer 1000 USD | WIRE"));
  const auto refused =
      linesOf(preview(heading + "01/15/2025,Sell,ABC,ABC CORP,4,$30.00,,$120.00\n"
                                "01/10/2025,Wire Funds Received,,WIRE,,,,\"$1,000.00\"\n"));
  EXPECT_THAT(refused[0], HasSubstr("2 the ledger refuses"));
  EXPECT_THAT(refused[0], HasSubstr("Insufficient shares."));
  EXPECT_THAT(refused[1], HasSubstr("3 new"));
}

TEST_F(Statements, NamesTheLayoutThatIsNearest) {
  try {
    (void)preview("Date,Action,Symbol,Description,Quantity,Price,Fees\n01/15/2025,Buy,A,A,1,1,1\n");
    FAIL();
  } catch (const StatementError& error) {
    EXPECT_EQ(error.description(),
              "No known layout fits this file. Place the columns yourself (--fields), or name a "
              "layout (--profile). Nearest: “Charles Schwab, transactions”, which lacks “Amount”.");
  }
}

}  // namespace
}  // namespace corvane
