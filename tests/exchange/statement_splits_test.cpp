// Splits whose statement leaves out what was held before them: overlapping files, rows that settle
// later, rows of the same day, and random histories against a count of their own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "exchange/statement_world.h"
#include "exchange/statements/statement_memory.h"
#include "exchange/statements/statement_preview.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using testing::told;

class StatementSplits : public ::testing::Test {
 protected:
  StatementSplits() {
    ledger.portfolio->allowsNegativeBalances = true;
    const char* layout =
        "name = \"Splits\"\nheading = \"Day,Settled,What,Share,Count,Amount\"\ndecimal = \".\"\n"
        "days = \"ymd\"\nfields = { date = \"Day\", settle = \"Settled\", type = \"What\", symbol "
        "= \"Share\", shares = \"Count\", amount = \"Amount\", currency = { value = \"CAD\" } }\n"
        "words = \"standard\"\n[kinds]\n\"Split\" = \"split-added\"\n";
    profiles = {StatementProfile::parse(layout, "splits", "splits.toml")};
  }

  static std::string fileOf(const std::string& rows) {
    return "Day,Settled,What,Share,Count,Amount\n" + rows;
  }
  StatementPreview preview(const std::string& text) {
    return previewStatement(text, profiles, ledger.portfolio, options, nullptr,
                            StatementMemory(folder.path(), *ledger.portfolio).imports());
  }
  std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (const StatementRow& row : preview(text).reading.rows) {
      lines.push_back(testing::lineText(row));
    }
    return lines;
  }
  void take(const std::string& text) {
    const StatementPreview read = preview(text);
    ASSERT_TRUE(read.isReady()) << ::testing::PrintToString(linesOf(text));
    recordStatement(read, ledger.portfolio);
    StatementMemory memory(folder.path(), *ledger.portfolio);
    memory.rememberImport("file.csv", read, Calendar::current());
    memory.write();
  }

  std::vector<StatementProfile> profiles;
  testing::Ledger ledger;
  testing::TemporaryFolder folder;
  StatementOptions options;
};

TEST_F(StatementSplits, CountRowsThatTheLedgerHasOnce) {
  const std::string bought = "2025-03-03,,Buy,ABC,10,100\n";
  take(fileOf(bought));
  const std::string deposited = "2025-03-01,,Deposit,,,500\n";
  const std::string overlapping =
      fileOf(deposited + bought + "2025-03-04,,Buy,ABC,5,50\n2025-03-05,,Split,ABC,15,\n");
  EXPECT_THAT(linesOf(overlapping),
              ElementsAre("2 new, 2025-03-01 transfer 500 CAD",
                          "3 already there, 2025-03-03 trade 10 ABC for 100 CAD = 100 (it is in "
                          "the ledger)",
                          "4 new, 2025-03-04 trade 5 ABC for 50 CAD = 50",
                          "5 new, 2025-03-05 split 15 ABC into 30"));
  take(overlapping);
  // The split is there, with what the ledger has of it, and once only.
  EXPECT_THAT(linesOf(overlapping).back(),
              "5 already there, 2025-03-05 split 15 ABC into 30 (it is in the ledger)");
  EXPECT_THAT(
      linesOf(fileOf(deposited + "2025-03-05,,Split,ABC,15,\n2025-03-05,,Split,ABC,15,\n"
                                 "2025-03-07,,Deposit,,,1\n")),
      ElementsAre("2 already there, 2025-03-01 transfer 500 CAD (it is in the ledger)",
                  "3 already there, 2025-03-05 split 15 ABC into 30 (it is in the ledger)",
                  "4 new, 2025-03-05 split 30 ABC into 45", "5 new, 2025-03-07 transfer 1 CAD"));
}

TEST_F(StatementSplits, CountWhatIsRecordedBeforeThemAndNothingElse) {
  take(fileOf("2025-03-03,,Buy,ABC,10,100\n2025-03-10,,Buy,ABC,7,70\n"));
  EXPECT_THAT(linesOf(fileOf("2025-03-04,2025-03-06,Buy,ABC,5,50\n"
                             "2025-03-05,,Buy,ABC,1,10\n"
                             "2025-03-05,,Split,ABC,11,\n"
                             "2025-03-05,,Sell,ABC,2,20\n")),
              ElementsAre("2 new, 2025-03-04/2025-03-06 trade 5 ABC for 50 CAD = 50",
                          "3 new, 2025-03-05 trade 1 ABC for 10 CAD = 10",
                          "4 new, 2025-03-05 split 11 ABC into 22",
                          "5 new, 2025-03-05 trade -2 ABC for -20 CAD = -20"))
      << "what settles later, or comes later that day, is not held yet";
}

TEST_F(StatementSplits, AreWorkedOutAnewWhereTheRowsOfADayAreTurnedRound) {
  ledger.portfolio->allowsNegativeBalances = false;
  EXPECT_THAT(linesOf(fileOf("2025-03-03,,Buy,ABC,10,100\n2025-03-03,,Deposit,,,500\n"
                             "2025-03-05,,Split,ABC,15,\n2025-03-05,,Buy,ABC,5,50\n")),
              ElementsAre("3 new, 2025-03-03 transfer 500 CAD",
                          "2 new, 2025-03-03 trade 10 ABC for 100 CAD = 100",
                          "5 new, 2025-03-05 trade 5 ABC for 50 CAD = 50",
                          "4 new, 2025-03-05 split 15 ABC into 30"));
}

TEST_F(StatementSplits, ComeOutAlikeHoweverAHistoryIsCutIntoFiles) {
  std::mt19937 random(5);
  const auto below = [&](int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  for (int round = 0; round < 150; ++round) {
    ledger.portfolio = ledger.manager->createPortfolio(Currency::cad());
    ledger.portfolio->allowsNegativeBalances = true;
    std::filesystem::remove(folder / "Statements.json");
    std::vector<std::string> rows;
    std::vector<std::string> expected;
    std::map<std::string, int> held;
    for (int day = 1; day < 28; day += 1 + below(2)) {
      const std::string share = below(2) == 0 ? "ABC" : "XYZ";
      const std::string date = "2025-03-" + std::string(day < 10 ? "0" : "") + std::to_string(day);
      int& count = held[share];
      const int change = 1 + below(9);
      const std::string number = std::to_string(change);
      if (count > 0 && below(3) == 0) {
        rows.push_back(date + ",,Split," + share + "," + number + ",\n");
        expected.push_back(date + " split " + std::to_string(count) + " " + share + " into " +
                           std::to_string(count + change));
      } else {
        rows.push_back(date + ",,Buy," + share + "," + number + ",10\n");
        expected.push_back(date + " trade " + number + " " + share + " for 10 CAD = 10");
      }
      count += change;
    }
    for (std::size_t start = 0; start < rows.size();) {
      const std::size_t end = std::min(start + 1 + static_cast<std::size_t>(below(6)), rows.size());
      std::string text;
      for (std::size_t row = start - std::min(start, static_cast<std::size_t>(below(5))); row < end;
           ++row) {
        text += rows[row];
      }
      take(fileOf(text));
      start = end;
    }
    std::vector<std::string> lines;
    for (const TransactionPointer& row : ledger.portfolio->transactions()) {
      lines.push_back(told(row->basic));
    }
    EXPECT_EQ(lines, expected) << "round " << round;
  }
}

}  // namespace
}  // namespace corvane
