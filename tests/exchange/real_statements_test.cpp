// Sample statements of real brokers, which lie beside the project where they do: their rows, the
// shares at their end, and the cash that a plain sum over their amounts gives.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/statement_world.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/statements/symbol_search.h"
#include "exchange/strict/cell_text.h"
#include "platform/data/json.h"
#include "support/checkout.h"
#include "support/shared_data.h"

namespace corvane {
namespace {

/// Rows that are put together, left out with a reason, or come in two.
const std::map<std::string, std::string, std::less<>> otherCounts = {
    {"etoro", "14"}, {"ibkr-transaction-history", "10"}, {"revolut-invest", "9"}};

/// The columns whose amounts come to the cash at the end, and what else there is to know.
struct CashColumns {
  std::string amount;
  std::string fee;       ///< is added; empty for none
  std::string currency;  ///< a column; empty for that of the portfolio
  bool hasComma = false;
};
const std::map<std::string, CashColumns, std::less<>> cashColumns = {
    {"avanza", {"Belopp", "", "Transaktionsvaluta", true}},
    {"degiro-transactions", {"Total EUR", "", "", true}},
    {"rbc-direct", {"Value", "", "Currency", false}},
    {"swissquote", {"Net Amount", "", "Currency", false}},
    {"traderepublic-2025", {"amount", "fee", "currency", false}},
    {"vanguard-us", {"Net Amount", "", "", false}},
    {"wealthsimple-activities", {"net_cash_amount", "", "currency", false}},
    {"xtb", {"Amount", "", "", false}},
};

/// The cells of a line, without any of the program's reading.
std::vector<std::string> cellsOf(const std::string& line, char delimiter) {
  std::vector<std::string> cells(1);
  bool isQuoted = false;
  for (const char byte : line) {
    if (byte == '"') {
      isQuoted = !isQuoted;
    } else if (byte == delimiter && !isQuoted) {
      cells.emplace_back();
    } else if (byte != '\r') {
      cells.back() += byte;
    }
  }
  return cells;
}

/// Cash by currency as the columns tell it; currencies that come to nothing are not there.
std::map<std::string, Decimal> cashIn(const std::string& file, const CashColumns& columns,
                                      const std::string& primary) {
  std::map<std::string, Decimal> cash;
  std::istringstream lines(file);
  std::map<std::string, std::size_t> places;
  char delimiter = ',';
  for (std::string line; std::getline(lines, line);) {
    if (places.empty()) {
      delimiter = line.contains(';') ? ';' : ',';
      const auto cells = cellsOf(line, delimiter);
      if (std::ranges::find(cells, columns.amount) != cells.end()) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
          places.emplace(cells[i], i);
        }
      }
      continue;
    }
    auto cells = cellsOf(line, delimiter);
    cells.resize(std::max(cells.size(), places.size() + 1));
    for (const std::string& column : {columns.amount, columns.fee}) {
      std::string text = column.empty() ? "" : cells[places.at(column)];
      if (columns.hasComma) {
        std::erase(text, '.');
        std::ranges::replace(text, ',', '.');
      }
      if (const auto amount = Decimal::fromWholeString(text); amount && !text.empty()) {
        cash[columns.currency.empty() ? primary : cells[places.at(columns.currency)]] += *amount;
      }
    }
  }
  std::erase_if(cash, [](const auto& entry) { return entry.second.isZero(); });
  return cash;
}

class RealStatements : public ::testing::Test {
 protected:
  static const ProfileShelf& shelf() {
    static const ProfileShelf all = ProfileShelf::of({testing::sourcePath("resources/statements")});
    return all;
  }

  StatementPreview preview(const std::string& text) {
    return previewStatement(text, shelf().profiles, ledger.portfolio, options,
                            [](const Currency&, YearMonthDay) {
                              return StatementSurroundings::Rate{1, "a test"};
                            });
  }

  /// Reads `text` with each question for a symbol answered by its own words.
  StatementPreview answered(const std::string& text) {
    for (const RowQuestion& question : symbolQuestions(preview(text).reading.rows)) {
      options.symbols[foldedText(question.subject)] =
          question.subject.substr(0, question.subject.find(' '));
    }
    return preview(text);
  }

  /// Checks one sample; `name` is that of its folder.
  void check(const std::string& name, const std::filesystem::path& folder) {
    const auto expected = JSONValue::parse(testing::readText(folder / "expected.json"));
    const std::string currency = expected.at("currency").string();
    ledger.portfolio = ledger.manager->createPortfolio(Currency::byCode().at(currency));
    ledger.portfolio->allowsNegativeBalances = true;
    options = {};
    options.currencyCode = currency;
    const std::string text = testing::readText(folder / "statement.csv");
    const StatementPreview read = answered(text);
    ASSERT_TRUE(read.isReady());
    for (const StatementRow& row : read.reading.rows) {
      EXPECT_TRUE(row.verdict == RowVerdict::isNew || !row.reason.empty()) << row.line;
    }
    const auto other = otherCounts.find(name);
    EXPECT_EQ(std::to_string(read.newRowCount()),
              other == otherCounts.end() ? expected.at("rows").number().text() : other->second);
    recordStatement(read, ledger.portfolio);
    EXPECT_EQ(preview(text).newRowCount(), 0U) << "a second reading adds something";
    checkShares(expected);
    if (const auto columns = cashColumns.find(name); columns != cashColumns.end()) {
      checkCash(cashIn(text, columns->second, currency));
    }
  }

  void checkShares(const JSONValue& expected) {
    for (const auto& [symbol, shares] : expected.at("shares").object("shares")) {
      Decimal held = 0;
      for (const TransactionPointer& row : ledger.portfolio->transactions()) {
        const EquityPointer* equity = row->basic.equity();
        if (equity != nullptr &&
            ((*equity)->id() == symbol || (*equity)->id().starts_with(symbol))) {
          held = row->sharesNet.value_or(0);
        }
      }
      EXPECT_EQ(held.description(), shares.string(symbol)) << symbol;
    }
  }

  void checkCash(const std::map<std::string, Decimal>& expected) {
    std::map<std::string, Decimal> cash;
    for (const TransactionPointer& row : ledger.portfolio->transactions()) {
      if (const Currency* currency = row->basic.currency()) {
        cash[std::string(currency->code)] = row->cashNet.value_or(0);
      }
    }
    std::erase_if(cash, [](const auto& entry) { return entry.second.isZero(); });
    EXPECT_EQ(cash, expected);
  }

  testing::Ledger ledger;
  StatementOptions options;
};

TEST_F(RealStatements, GoInWithTheirRowsSharesAndCash) {
  const auto folder = testing::sharedData("statements");
  if (!folder) {
    GTEST_SKIP() << "CORVANE_SHARED_DATA names no folder with sample statements";
  }
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(*folder)) {
    if (entry.is_directory()) {
      const std::string name = entry.path().filename().string();
      SCOPED_TRACE(name);
      check(name, entry.path());
      ++count;
    }
  }
  EXPECT_GE(count, 18U);
}

}  // namespace
}  // namespace corvane
