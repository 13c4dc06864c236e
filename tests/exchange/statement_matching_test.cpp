// Which rows of a statement are in the ledger already, over several files of one history, and what
// the workspace remembers of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/statement_world.h"
#include "exchange/statements/ledger_matching.h"
#include "exchange/statements/statement_memory.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/strict/statement_error.h"

namespace corvane {
namespace {

using testing::told;

/// A row of a history: the day within a month, the amount, and the broker's number.
struct HistoryRow {
  int day = 1;
  int amount = 1;
  std::string id = {};
};

class StatementHistory : public ::testing::Test {
 protected:
  StatementHistory() {
    const char* layout =
        "name = \"History\"\nheading = \"Day,What,Share,Count,Amount,No\"\ndecimal = \".\"\ndays "
        "= \"ymd\"\nfields = { date = \"Day\", type = \"What\", symbol = \"Share\", shares = "
        "\"Count\", amount = \"Amount\", currency = { value = \"CAD\" }, id = \"No\" }\nwords = "
        "\"standard\"\n";
    profiles = {StatementProfile::parse(layout, "history", "history.toml")};
  }

  static std::string fileOf(const std::vector<HistoryRow>& rows) {
    std::string text = "Day,What,Share,Count,Amount,No\n";
    for (const HistoryRow& row : rows) {
      text += "2025-03-" + std::string(row.day < 10 ? "0" : "") + std::to_string(row.day) +
              ",Deposit,,," + std::to_string(row.amount) + "," + row.id + "\n";
    }
    return text;
  }

  StatementPreview preview(const std::string& text) {
    return previewStatement(text, profiles, ledger.portfolio, options, nullptr,
                            StatementMemory(folder.path(), *ledger.portfolio).imports());
  }

  /// Reads a file and records what is new in it; how many rows were left out as perhaps there.
  std::size_t take(const std::string& text) {
    const StatementPreview read = preview(text);
    EXPECT_TRUE(read.isReady());
    if (read.newRowCount() > 0) {
      recordStatement(read, ledger.portfolio);
      StatementMemory memory(folder.path(), *ledger.portfolio);
      memory.rememberImport("file.csv", read, Calendar::current());
      memory.write();
    }
    return static_cast<std::size_t>(
        std::ranges::count(read.reading.rows, RowVerdict::perhapsPresent, &StatementRow::verdict));
  }

  std::vector<StatementProfile> profiles;
  testing::Ledger ledger;
  testing::TemporaryFolder folder;
  StatementOptions options;
};

TEST_F(StatementHistory, AsksWhereTwoFilesMeetWithinADay) {
  take(fileOf({{1, 10}, {5, 7}}));
  // The second file begins on the day with which the first one ended: its 7 may be the same one.
  const std::string next = fileOf({{5, 7}, {5, 8}, {9, 20}});
  const StatementPreview read = preview(next);
  EXPECT_EQ(read.reading.rows[0].verdict, RowVerdict::perhapsPresent);
  EXPECT_EQ(read.reading.rows[1].verdict, RowVerdict::isNew);
  EXPECT_TRUE(read.isReady()) << "it is left out unless the user says otherwise";
  options.recordsTwins = true;
  EXPECT_EQ(preview(next).newRowCount(), 3U);
  options.recordsTwins = false;
  options.twins = {2};
  EXPECT_EQ(preview(next).newRowCount(), 3U);
  // The same file again, and one that has the whole day, leave no doubt.
  options = {};
  EXPECT_EQ(preview(fileOf({{1, 10}, {5, 7}})).reading.rows[1].verdict, RowVerdict::present);
  EXPECT_EQ(preview(fileOf({{4, 1}, {5, 7}, {5, 7}, {6, 1}})).newRowCount(), 3U);
}

TEST_F(StatementHistory, RecordsTwinsOnceHoweverOftenTheirFileIsRead) {
  take(fileOf({{1, 10}, {5, 7}, {5, 7}}));
  const std::string next = fileOf({{5, 7}, {5, 7}, {5, 7}, {9, 20}});
  EXPECT_EQ(take(next), 2U) << "the third is one too many for the first file";
  EXPECT_EQ(ledger.portfolio->transactions().size(), 5U);
  // The one that this file has brought is no twin of itself, whatever is said of the others.
  options.recordsTwins = true;
  EXPECT_EQ(preview(next).newRowCount(), 2U);
  take(next);
  EXPECT_EQ(preview(next).newRowCount(), 0U);
  options.recordsTwins = false;
  EXPECT_EQ(preview(next).reading.rows.count(RowVerdict::present), 4U);
}

TEST_F(StatementHistory, TakesBackItsOwnOfEqualRows) {
  take(fileOf({{2, 5}}));
  BasicTransaction entered = ledger.portfolio->transactions().front()->basic;
  ledger.manager->deleteTransactions({ledger.portfolio->transactions().front()}, ledger.portfolio,
                                     nullptr);
  entered.note = "mine";
  ledger.manager->recordTransactions({entered}, ledger.portfolio, nullptr);
  take(fileOf({{2, 5}, {2, 5}}));
  const StatementMemory memory(folder.path(), *ledger.portfolio);
  const auto left = rowsLeftOf(memory.imports().back(), *ledger.portfolio, Calendar::current());
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left.front(), ledger.portfolio->transactions().back());
  EXPECT_FALSE(left.front()->basic.note);
}

TEST_F(StatementHistory, TakesANumberForWhatWasRecordedUnderItAndNothingElse) {
  take(fileOf({{1, 10, "0"}, {2, 5, "a"}}));
  // Brokers number rows of an order alike, and rows without an order with zeros.
  EXPECT_EQ(preview(fileOf({{1, 10, "0"}, {1, 11, "0"}, {9, 12, "0"}, {2, 5, "a"}, {2, 6, "a"}}))
                .newRowCount(),
            3U);
  const StatementPreview mixed = preview(fileOf({{1, 11, "0"}, {1, 10, "0"}}));
  EXPECT_EQ(mixed.reading.rows[0].verdict, RowVerdict::isNew);
  EXPECT_EQ(mixed.reading.rows[1].verdict, RowVerdict::present);
  // Another row with another number, equal to the letter, is new on the same day.
  EXPECT_EQ(preview(fileOf({{2, 5, "b"}})).newRowCount(), 1U);
  // What is no longer in the ledger is new, number or not.
  const auto rows = ledger.portfolio->transactions();
  ledger.manager->deleteTransactions({rows.back()}, ledger.portfolio, nullptr);
  EXPECT_EQ(preview(fileOf({{2, 5, "a"}})).newRowCount(), 1U);
}

TEST_F(StatementHistory, KnowsAnOrderThatTheBrokerHasRestated) {
  const std::string heading = "Day,What,Share,Count,Amount,No\n";
  take(heading + "2025-03-01,Deposit,,,1000,\n2025-03-02,Buy,ABC,2,20,7\n");
  const std::string restated = heading + "2025-03-02,Buy,ABC,2,20.10,7\n";
  EXPECT_EQ(preview(restated).reading.rows[0].verdict, RowVerdict::present);
  const StatementPreview other = preview(heading + "2025-03-02,Buy,ABC,2,20.10,8\n");
  EXPECT_EQ(other.reading.rows[0].verdict, RowVerdict::isNew);
  EXPECT_THAT(other.reading.rows[0].reason, ::testing::HasSubstr("resembles the transaction of"));
}

/// A history with many twins, cut into files that overlap.
struct CutHistory {
  std::vector<HistoryRow> rows;
  std::vector<std::vector<HistoryRow>> files;
};

CutHistory randomHistory(std::mt19937& random, bool hasIds, bool cutsWithinDays) {
  const auto below = [&](int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  CutHistory history;
  const int count = 6 + below(12);
  for (int i = 0; i < count; ++i) {
    history.rows.push_back({1 + below(6), 1 + below(3), ""});
  }
  std::ranges::stable_sort(history.rows, {}, &HistoryRow::day);
  for (int i = 0; hasIds && i < count; ++i) {
    history.rows[static_cast<std::size_t>(i)].id = "n" + std::to_string(i);
  }
  const auto& rows = history.rows;
  for (std::size_t start = 0; start < rows.size();) {
    std::size_t end = std::min(start + 1 + static_cast<std::size_t>(below(6)), rows.size());
    while (!cutsWithinDays && end < rows.size() && rows[end].day == rows[end - 1].day) {
      ++end;
    }
    // Some files begin before the last one has ended.
    std::size_t first = start - std::min(start, static_cast<std::size_t>(below(4)));
    while (!cutsWithinDays && first > 0 && rows[first - 1].day == rows[first].day) {
      --first;
    }
    history.files.emplace_back(rows.begin() + static_cast<long>(first),
                               rows.begin() + static_cast<long>(end));
    start = end;
  }
  return history;
}

TEST_F(StatementHistory, LosesNothingAndDoublesNothing) {
  std::mt19937 random(20);
  for (int round = 0; round < 300; ++round) {
    const bool hasIds = round % 3 == 0;
    const bool cutsWithinDays = round % 3 == 1 || hasIds;
    const CutHistory history = randomHistory(random, hasIds, cutsWithinDays);
    ledger.portfolio = ledger.manager->createPortfolio(Currency::cad());
    std::filesystem::remove(folder / "Statements.json");
    std::size_t doubtful = 0;
    for (const auto& file : history.files) {
      doubtful += take(fileOf(file));
      EXPECT_EQ(preview(fileOf(file)).newRowCount(), 0U) << "a file was read twice";
    }
    const std::size_t recorded = ledger.portfolio->transactions().size();
    if (hasIds || !cutsWithinDays) {
      EXPECT_EQ(recorded, history.rows.size()) << "round " << round;
    } else {
      // Cut within a day and without numbers, a twin may be taken for the other, but never unseen.
      EXPECT_LE(recorded, history.rows.size()) << "round " << round;
      EXPECT_GE(recorded + doubtful, history.rows.size()) << "round " << round;
    }
    EXPECT_TRUE(!(hasIds && doubtful > 0)) << "numbers leave no doubt";
  }
}

/// A file of cells that fit often, and often do not.
std::string randomFile(std::mt19937& random) {
  const auto one = [&](const std::vector<std::string>& of) { return of[random() % of.size()]; };
  std::string text = "Day,What,Share,Count,Amount,No\n";
  for (std::size_t rows = 1 + random() % 12; rows > 0; --rows) {
    text +=
        one({"2025-03-01", "2025-03-02", "2025-03-03", "2025-03-04", "2025-02-30", "soon"}) + ",";
    text +=
        one({"Buy", "Buy", "Sell", "Dividend", "Deposit", "Withdrawal", "Split", "Merger"}) + ",";
    text += one({"ABC", "ABC", "XYZ", "Acme Corp", ""}) + ",";
    text += one({"1", "2", "3", "0.5", "few"}) + ",";
    text += one({"10", "20", "3.25", "100", "1.005", "-7", "", "0"}) + ",";
    text += one({"", "", "7", "8"}) + "\n";
  }
  return text;
}

TEST_F(StatementHistory, RecordsWhatItShowsAndNothingElse) {
  std::mt19937 random(8);
  std::size_t ready = 0;
  for (int round = 0; round < 400; ++round) {
    ledger.portfolio = ledger.manager->createPortfolio(Currency::cad());
    ledger.portfolio->allowsNegativeBalances = round % 2 == 0;
    options = {};
    options.symbols = {{"acme corp", "ACM"}};
    std::filesystem::remove(folder / "Statements.json");
    for (int files = 0; files < 2; ++files) {
      const std::string text = randomFile(random);
      StatementPreview read;
      try {
        read = preview(text);
        // What is in the way is left out until nothing is.
        while (!read.isReady()) {
          for (const StatementRow& row : read.reading.rows) {
            if (row.verdict == RowVerdict::refused || row.verdict == RowVerdict::asks ||
                row.verdict == RowVerdict::ledgerRefuses) {
              options.leaveOut.insert(row.line);
            }
          }
          read = preview(text);
        }
      } catch (const StatementError& error) {
        EXPECT_TRUE(error.description()) << "a day that is none spoils the whole file";
        continue;
      }
      const std::size_t before = ledger.portfolio->transactions().size();
      std::multiset<std::string> shown;
      for (const BasicTransaction& transaction : read.transactions()) {
        shown.insert(fingerprint(transaction, Calendar::current()));
      }
      ASSERT_NO_THROW((void)recordStatement(read, ledger.portfolio)) << text;
      EXPECT_EQ(ledger.portfolio->transactions().size(), before + shown.size()) << text;
      for (const TransactionPointer& row : ledger.portfolio->transactions()) {
        const auto found = shown.find(fingerprint(row->basic, Calendar::current()));
        if (found != shown.end()) {
          shown.erase(found);
        }
      }
      EXPECT_TRUE(shown.empty()) << text;
      ++ready;
      options.leaveOut.clear();
    }
  }
  EXPECT_GT(ready, 100U) << "the files say too little";
}

TEST_F(StatementHistory, IsTakenBackAsFarAsItIsUnchanged) {
  take(fileOf({{1, 10}, {2, 20}, {2, 20}}));
  take(fileOf({{3, 30}}));
  const auto imports = StatementMemory(folder.path(), *ledger.portfolio).imports();
  ASSERT_EQ(imports.size(), 2U);
  EXPECT_EQ(imports[0].sha256.size(), 64U);
  EXPECT_EQ(imports[0].firstDay, "2025-03-01");
  EXPECT_EQ(imports[0].lastDay, "2025-03-02");
  auto rows = ledger.portfolio->transactions();
  ledger.manager->deleteTransactions({rows[1]}, ledger.portfolio, nullptr);
  // One more that is equal was typed by hand, and stays.
  ledger.manager->recordTransactions({rows[0]->basic}, ledger.portfolio, nullptr);
  const auto left = rowsLeftOf(imports[0], *ledger.portfolio, Calendar::current());
  EXPECT_EQ(left.size(), 2U);
  ledger.manager->deleteTransactions(left, ledger.portfolio, nullptr);
  ASSERT_EQ(ledger.portfolio->transactions().size(), 2U);
  EXPECT_EQ(told(ledger.portfolio->transactions()[0]->basic), "2025-03-01 transfer 10 CAD");
  EXPECT_EQ(told(ledger.portfolio->transactions()[1]->basic), "2025-03-03 transfer 30 CAD");
}

TEST_F(StatementHistory, RemembersAnswersOfOnePortfolioBesideThoseOfOthers) {
  options.symbols = {{"acme", "ACM"}};
  options.currencyCode = "EUR";
  options.accounts = {"A1", "B2"};
  options.takesMarketRates = true;
  StatementPreview read;
  read.profileName = "Bank";
  StatementMemory memory(folder.path(), *ledger.portfolio);
  memory.rememberAnswers(options, read);
  memory.write();
  const auto other = ledger.manager->createPortfolio(Currency::cad());
  other->name = "Other";
  StatementMemory(folder.path(), *other).write();
  const StatementMemory again(folder.path(), *ledger.portfolio);
  EXPECT_EQ(again.symbols().at("acme"), "ACM");
  EXPECT_EQ(again.answers().currencies.at("Bank"), "EUR");
  EXPECT_EQ(again.answers().accounts.at("Bank").size(), 2U);
  EXPECT_TRUE(again.answers().marketRates.contains("Bank"));

  testing::writeText(folder / "Statements.json", "{\"\": {\"symbols\": 1}");
  const StatementMemory damaged(folder.path(), *ledger.portfolio);
  EXPECT_TRUE(damaged.wasDamaged());
  EXPECT_TRUE(damaged.symbols().empty());
  EXPECT_TRUE(std::filesystem::exists(folder / "Statements.json.damaged"));
}

}  // namespace
}  // namespace corvane
