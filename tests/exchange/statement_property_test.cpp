// Random files, read by random layouts into random ledgers: what the preview shows is what is
// recorded, and what it refuses or leaves out never is.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "exchange/statement_world.h"
#include "exchange/statements/ledger_matching.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/strict/cell_text.h"

namespace corvane {
namespace {

class RandomStatements : public ::testing::Test {
 protected:
  const std::string& one(const std::vector<std::string>& of) { return of[random_() % of.size()]; }
  bool often() { return random_() % 3 != 0; }

  /// A layout over the same columns that uses some of them, with rules of all kinds.
  std::string layout() {
    std::string text =
        "name = \"Random\"\nheading = \"Day,Settled,What,Share,Count,Price,Amount,Fee,Tax,Cur,No,"
        "Order\"\n";
    text += one({"", "decimal = \".\"\n", "decimal = \",\"\n", "decimal = \"either\"\n"});
    text += one({"", "days = \"ymd\"\n", "days = \"ymd\"\n", "days = \"dmy\"\n"});
    text += one({"", "round = true\n"});
    text += one({"", "charges = \"negative\"\n"});
    text += one({"", "rows = \"newest first\"\n"});
    text += one({"", "empty = [\"-\"]\n"});
    text += one({"", "ignore = [{ What = [\"Total\", \"Mer*\"], why = \"a total\" }]\n"});
    const bool bySign = random_() % 4 == 0;
    text += bySign ? "kind = \"trade\"\nsign = \"" + one({"amount", "shares"}) + "\"\n" : "";
    text +=
        "fields = { date = \"Day\", symbol = \"Share\", shares = \"Count\", amount = \"Amount\"";
    text += bySign ? "" : ", type = \"What\"";
    for (const char* field : {", settle = \"Settled\"", ", price = \"Price\"", ", fee = \"Fee\"",
                              ", tax = \"Tax\"", ", id = \"No\"", ", group = \"Order\""}) {
      text += often() ? field : "";
    }
    text += often() ? ", currency = \"Cur\" }\n" : ", currency = { value = \"CAD\" } }\n";
    if (!bySign) {
      text += "words = \"standard\"\n[kinds]\n\"Total\" = \"ignore\"\n\"Merger\" = { kind = \"" +
              one({"journal", "split-added", "cash"}) + "\" }\n";
    }
    return text;
  }

  std::string file() {
    std::string text = "Day,Settled,What,Share,Count,Price,Amount,Fee,Tax,Cur,No,Order\n";
    for (std::size_t rows = 1 + random_() % 10; rows > 0; --rows) {
      const std::string day = "2025-03-0" + std::to_string(1 + random_() % 5);
      text += (random_() % 40 == 0 ? one({"2025-02-30", "soon", ""}) : day) + ",";
      text += one({"", day}) + ",";
      text += one({"Buy", "Buy", "Sell", "Dividend", "Deposit", "Withdrawal", "Journal", "Merger",
                   "Total", "Riddle"}) +
              ",";
      text += one({"ABC", "ABC", "XYZ", "Acme Corp", ""}) + ",";
      text += one({"1", "2", "-2", "3", "0.5", "few", ""}) + ",";
      text += one({"", "5", "10"}) + ",";
      text +=
          one({"10", "20", "-20", "3.25", "100", "1.005", "\"1,5\"", "\"1,234\"", "", "0", "-"}) +
          ",";
      text += one({"", "", "0.95", "-1"}) + "," + one({"", "", "0.25"}) + ",";
      text += one({"CAD", "CAD", "CAD", "USD", "XXQ", ""}) + ",";
      text += one({"", "7", "8"}) + "," + one({"", "", "o1"}) + "\n";
    }
    return text;
  }

  std::multiset<std::string> ledgerPrints() {
    std::multiset<std::string> prints;
    for (const TransactionPointer& row : ledger.portfolio->transactions()) {
      prints.insert(fingerprint(row->basic, Calendar::current()));
    }
    return prints;
  }

  /// Reads `text`, leaving out what is in the way until nothing is.
  StatementPreview readyPreview(const std::string& text,
                                const std::vector<StatementProfile>& profiles) {
    for (;;) {
      StatementPreview read = previewStatement(text, profiles, ledger.portfolio, options,
                                               [](const Currency&, YearMonthDay) {
                                                 return StatementSurroundings::Rate{2, "a test"};
                                               });
      if (read.isReady()) {
        return read;
      }
      for (const StatementRow& row : read.reading.rows) {
        if (row.verdict == RowVerdict::refused || row.verdict == RowVerdict::asks ||
            row.verdict == RowVerdict::ledgerRefuses) {
          options.leaveOut.insert(row.line);
        }
      }
    }
  }

  testing::Ledger ledger;
  StatementOptions options;
  std::mt19937 random_{1729};
};

TEST_F(RandomStatements, RecordWhatIsShownAndNothingElse) {
  int recorded = 0;
  int refused = 0;
  for (int round = 0; round < 1500; ++round) {
    if (round % 4 == 0) {
      ledger.portfolio = ledger.manager->createPortfolio(Currency::cad());
      ledger.portfolio->allowsNegativeBalances = round % 8 == 0;
    }
    options = {};
    options.symbols = {{"acme corp", "ACM"}};
    const std::string layoutText = layout();
    const std::string text = file();
    SCOPED_TRACE(layoutText + text);
    const std::vector<StatementProfile> profiles = {
        StatementProfile::parse(layoutText, "random", "random.toml")};
    std::multiset<std::string> expected = ledgerPrints();
    try {
      const StatementPreview read = readyPreview(text, profiles);
      for (const StatementRow& row : read.reading.rows) {
        ASSERT_TRUE(row.verdict == RowVerdict::isNew || !row.reason.empty()) << row.line;
        for (const BasicTransaction& transaction : row.transactions) {
          if (row.verdict == RowVerdict::isNew) {
            expected.insert(fingerprint(transaction, Calendar::current()));
          }
        }
      }
      if (read.newRowCount() > 0) {
        recordStatement(read, ledger.portfolio);
        ++recorded;
      }
    } catch (const Error& error) {
      EXPECT_TRUE(error.description());
      ++refused;
    }
    ASSERT_EQ(ledgerPrints(), expected);
  }
  EXPECT_GT(recorded, 300) << "the files say too little";
  EXPECT_GT(refused, 50);
}

}  // namespace
}  // namespace corvane
