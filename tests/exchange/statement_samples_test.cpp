// One statement in the form of each layout that comes with the program, and what becomes of each of
// its lines. Beside every statement lies a text: the currency of the portfolio, the symbols that
// the user tells, and then the lines.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "exchange/profiles/profile_shelf.h"
#include "exchange/profiles/profile_writer.h"
#include "exchange/statement_world.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/strict/cell_text.h"
#include "support/checkout.h"

namespace corvane {
namespace {

using testing::told;

/// What is expected of one statement.
struct StatementPaper {
  std::string currency;
  StatementOptions options;
  std::string lines;
};

StatementPaper paperOf(const std::string& id) {
  std::istringstream text(
      testing::readText(testing::sourcePath("tests/exchange/statements/" + id + ".txt")));
  StatementPaper paper;
  std::string symbol;
  std::getline(text, paper.currency);
  std::getline(text, symbol);
  if (const std::size_t sign = symbol.find('='); sign != std::string::npos) {
    paper.options.symbols.emplace(foldedText(symbol.substr(0, sign)), symbol.substr(sign + 1));
  }
  paper.lines.assign(std::istreambuf_iterator<char>(text), {});
  return paper;
}

std::string linesText(const StatementPreview& preview) {
  std::string text;
  for (const std::uint32_t place : preview.reading.rows.byLine()) {
    const StatementRow row = preview.reading.rows[place];
    text += std::to_string(row.line) + " " + std::string(displayName(row.verdict));
    for (const BasicTransaction& transaction : row.transactions) {
      text += ", " + told(transaction);
    }
    text += (row.reason.empty() ? "" : " (" + row.reason + ")") + "\n";
  }
  return text;
}

class EveryLayout : public ::testing::TestWithParam<std::string> {
 protected:
  static const ProfileShelf& shelf() {
    static const ProfileShelf all = ProfileShelf::of({testing::sourcePath("resources/statements")});
    return all;
  }
  testing::Ledger ledger;

  StatementPreview preview(const StatementOptions& options,
                           const std::vector<StatementProfile>& profiles) {
    auto file = testing::sourcePath("tests/exchange/statements/" + GetParam() + ".csv");
    if (!std::filesystem::exists(file)) {
      file.replace_extension(".ofx");
    }
    return previewStatement(testing::readText(file), profiles, ledger.portfolio, options);
  }
};

TEST_P(EveryLayout, ReadsItsStatementOnce) {
  StatementPaper paper = paperOf(GetParam());
  paper.options.currencyCode = paper.currency;
  ledger.portfolio = ledger.manager->createPortfolio(Currency::byCode().at(paper.currency));
  ledger.portfolio->allowsNegativeBalances = true;
  const StatementPreview first = preview(paper.options, shelf().profiles);
  EXPECT_EQ(first.profileId, GetParam()) << "another layout claims it";
  EXPECT_EQ(linesText(first), paper.lines);
  ASSERT_TRUE(first.isReady());

  // The layout says the same when the program has written it.
  const StatementProfile rewritten =
      StatementProfile::parse(profileText(*shelf().find(GetParam())), GetParam(), "rewritten");
  EXPECT_EQ(linesText(preview(paper.options, {rewritten})), paper.lines);

  recordStatement(first, ledger.portfolio);
  EXPECT_EQ(preview(paper.options, shelf().profiles).newRowCount(), 0U);
}

TEST_P(EveryLayout, IsTheOnlyOneForItsStatement) {
  for (const StatementProfile& other : shelf().profiles) {
    if (other.id != GetParam()) {
      EXPECT_ANY_THROW((void)preview({}, {other})) << other.id;
    }
  }
}

std::vector<std::string> layoutIds() {
  std::vector<std::string> ids;
  for (const auto& entry :
       std::filesystem::directory_iterator(testing::sourcePath("resources/statements"))) {
    ids.push_back(entry.path().stem().string());
  }
  std::ranges::sort(ids);
  return ids;
}

INSTANTIATE_TEST_SUITE_P(Statements, EveryLayout, ::testing::ValuesIn(layoutIds()),
                         [](const auto& layout) {
                           std::string name = layout.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace corvane
