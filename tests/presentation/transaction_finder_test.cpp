// Words that are looked for in the rows of a ledger.

#include "presentation/transactions/transaction_finder.h"

#include <set>

#include "platform/text/unicode/characters.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/transactions/portfolio_transactions_view_controller.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using YieldType = BasicTransaction::YieldType;

class TransactionFinderTest : public PortfolioScreenWorld {
 protected:
  TransactionFinderTest() { abc->name = "Société Ñandú Łódź"; }

  /// A ledger with a row of each kind that the tests below look for.
  void recordAll() {
    record({on(day(2021, 3, 1)).deposit("1000000"), on(day(2021, 3, 1)).depositDollars("5000")});
    auto purchase = on(day(2021, 3, 31)).buy("400", "1234.5");
    purchase.note = "Straße 12\tof the broker’s";
    record({purchase, on(day(2021, 4, 1)).buyForeign("3", "1000", "1300"),
            on(day(2022, 5, 2)).split("400", "1200"),
            on(day(2022, 6, 3)).yield(YieldType::dividend, "77.7"),
            on(day(2023, 7, 4)).sell("30", "100.5"), on(day(2023, 8, 5)).adjustment("-12.25")});
  }
  void recordOtherKinds() {
    on(day(2023, 9, 1));
    record({yield(YieldType::returnOfCapital, "10"), yield(YieldType::reinvestedDistribution, "1"),
            journal("-5"), withdrawal("99999")});
  }
  TransactionFinderTest& on(Date date) {
    Ledger::on(date);
    return *this;
  }

  std::vector<std::uint32_t> found(std::string_view text, bool showsCash = true) {
    TransactionFinder finder(rows(), portfolio->primaryCurrency(), manager->calendar, showsCash);
    return finder.places(text);
  }
};

TEST_F(TransactionFinderTest, FindsRowsByWhateverTheyShow) {
  recordAll();
  EXPECT_THAT(found(""), SizeIs(8));
  EXPECT_THAT(found("  \t "), SizeIs(8));
  EXPECT_THAT(found("split"), ElementsAre(4));
  EXPECT_THAT(found("3-for-1"), ElementsAre(4));
  EXPECT_THAT(found("DIV abc 2022"), ElementsAre(5));
  EXPECT_THAT(found("2023 sell"), ElementsAre(6));
  EXPECT_THAT(found("sell 2022"), IsEmpty());
  EXPECT_THAT(found("xyz"), ElementsAre(3));
  EXPECT_THAT(found("usd"), ElementsAre(1, 3));
  EXPECT_THAT(found("canadian dollar transfer"), ElementsAre(0));
  EXPECT_THAT(found("expense"), ElementsAre(7));
}

TEST_F(TransactionFinderTest, PassesOverCapitalsAccentsAndTheShapesOfMarks) {
  recordAll();
  EXPECT_THAT(found("societe NANDU lodz sell"), ElementsAre(6));
  EXPECT_THAT(found("SOCIÉTÉ sell"), ElementsAre(6));
  EXPECT_THAT(found("STRASSE"), ElementsAre(2));
  EXPECT_THAT(found("broker's"), ElementsAre(2));
  EXPECT_THAT(found("ｓｐｌｉｔ"), ElementsAre(4)) << "letters as wide as Japanese ones";
}

TEST_F(TransactionFinderTest, FindsDaysInAnyForm) {
  recordAll();
  EXPECT_THAT(found("2021-03"), ElementsAre(0, 1, 2));
  EXPECT_THAT(found("2021-03-31"), ElementsAre(2));
  EXPECT_THAT(found("Mar 31, 2021"), ElementsAre(2));
  EXPECT_THAT(found("march 2021"), ElementsAre(0, 1, 2));
}

TEST_F(TransactionFinderTest, FindsNumbersAsTheyAreShownAndPlainly) {
  recordAll();
  for (const char* amount : {"1,234.50", "1234.5", "1234.50", "1,234.5", "CA$1,234.50", "$1,234.50",
                             "(CA$1,234.50)", "-1234.5", "１２３４.５"}) {
    EXPECT_THAT(found(std::string("buy abc ") + amount), ElementsAre(2)) << amount;
  }
  EXPECT_THAT(found("1234.56"), IsEmpty());
  EXPECT_THAT(found("-100.50"), IsEmpty()) << "what came in";
  EXPECT_THAT(found("100.50"), ElementsAre(6));
  EXPECT_THAT(found("-30"), ElementsAre(6));
  EXPECT_THAT(found("q1234"), IsEmpty()) << "a letter that is no currency's";
  EXPECT_THAT(found("1.234.5"), IsEmpty());
}

TEST_F(TransactionFinderTest, PassesOverBalancesOfCashThatAreNotShown) {
  recordAll();
  const auto balance = rows()[7]->cashNet;
  ASSERT_TRUE(balance.has_value());
  EXPECT_THAT(found(balance->description()), ElementsAre(7));
  EXPECT_THAT(found(balance->description(), false), IsEmpty());
}

/// Every word of every cell is found in its row, whatever stands there.
TEST_F(TransactionFinderTest, FindsEachWordThatTheTableShows) {
  recordAll();
  recordOtherKinds();
  PortfolioTransactionsViewController table{surroundings};
  PortfolioDataSlice slice{.portfolio = portfolio};
  slice.selectDays({{2021, 1, 1}, {2023, 12, 31}});
  table.setCurrentData(slice, {});
  TransactionFinder finder(rows(), portfolio->primaryCurrency(), manager->calendar, true);
  std::size_t looked = 0;
  for (std::size_t row = 0; row < table.numberOfRows(); ++row) {
    for (std::size_t column = 0; column < table.columns().size(); ++column) {
      const std::string text = table.cell(row, column).plainText();
      if (text == "—") {
        continue;  // the mark of nothing, which no row is looked for by
      }
      const auto& places = finder.places(text);
      EXPECT_TRUE(std::ranges::binary_search(places, static_cast<std::uint32_t>(row)))
          << text << " in row " << row;
      ++looked;
    }
  }
  EXPECT_GT(looked, 100U);
}

/// Numbers are read in the user's locale, and plainly as well.
TEST_F(TransactionFinderTest, ReadsNumbersOfTheLocale) {
  recordAll();
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  for (const char* amount : {"1.234,50", "1234,5", "1234.50", "(1.234,50"}) {
    EXPECT_THAT(found(std::string("buy abc ") + amount), ElementsAre(2)) << amount;
  }
  EXPECT_THAT(found("1,234.50"), IsEmpty());
  EXPECT_THAT(found("märz"), ElementsAre(0, 1, 2));
  setenv("LC_ALL", "de_CH.UTF-8", 1);
  EXPECT_THAT(found("buy abc 1'234.50"), ElementsAre(2));
  unsetenv("LC_ALL");
}

/// Typing on looks only through what is left, which must not change what is found.
TEST_F(TransactionFinderTest, FindsTheSameKeyByKey) {
  recordAll();
  for (const std::string text : {"div abc 2022", "1,234.50", "(CA$1,234.50) buy", "-30 sell",
                                 "2021-03-31", "$5,000", "1.3", "12.25 x", "split 1,2"}) {
    TransactionFinder finder(rows(), portfolio->primaryCurrency(), manager->calendar, true);
    for (std::size_t length = 0; length <= text.size(); ++length) {
      EXPECT_EQ(finder.places(text.substr(0, length)), found(text.substr(0, length)))
          << text.substr(0, length);
    }
    for (std::size_t length = text.size(); length-- > 0;) {
      EXPECT_EQ(finder.places(text.substr(0, length)), found(text.substr(0, length)))
          << text.substr(0, length) << ", taken back";
    }
  }
}

}  // namespace
}  // namespace corvane::testing
