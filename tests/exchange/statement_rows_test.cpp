// The packed form of a statement's rows, and what is read on the way to it: nothing may be lost in
// them, however long a text or a number is.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "exchange/pools/packed_decimals.h"
#include "exchange/pools/text_pool.h"
#include "exchange/statement_world.h"
#include "exchange/statements/statement_preview.h"
#include "exchange/strict/number_form.h"
#include "exchange/strict/statement_text.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using testing::told;

Decimal number(std::string_view text) {
  return Decimal::fromWholeString(text).value();
}

TEST(TextPool, KeepsTextsOfAnyLengthAndSharesEqualOnes) {
  TextPool pool;
  std::vector<std::pair<TextPool::Key, std::string>> kept;
  for (const std::size_t length : {0UL, 1UL, 7UL, 300'000UL, 12UL, 262'140UL, 2'000'000UL, 3UL}) {
    std::string text(length, static_cast<char>('a' + length % 26));
    kept.emplace_back(pool.add(text), std::move(text));
  }
  for (int i = 0; i < 20'000; ++i) {
    std::string text = "row " + std::to_string(i);
    kept.emplace_back(pool.add(text), std::move(text));
  }
  for (const auto& [key, text] : kept) {
    ASSERT_EQ(pool.text(key), text);
  }
  EXPECT_EQ(pool.add("CAD"), pool.add("CAD"));
  EXPECT_EQ(pool.add(""), TextPool::empty);
}

TEST(PackedDecimals, ReadBackAsTheSameNumber) {
  PackedDecimals numbers;
  for (const std::string_view text :
       {"0", "-1", "12.50", "-0.00000001", "18014398509481983", "18014398509481984", "1e127",
        "-99999999999999999999999999999999999999", "1e-128", "123456789.123456789123456789"}) {
    EXPECT_EQ(numbers.number(numbers.pack(number(text))), number(text)) << text;
  }
  EXPECT_TRUE(numbers.number(numbers.pack(Decimal::nan())).isNaN());
  EXPECT_EQ(numbers.optionalNumber(numbers.pack(std::optional<Decimal>())), std::nullopt);
}

TEST(PlainNumber, IsWhatTheWholeReaderMakesOfTheCell) {
  std::mt19937 random(11);
  int plain = 0;
  for (int round = 0; round < 50'000; ++round) {
    std::string text;
    for (std::size_t length = 1 + random() % 8; text.size() < length;) {
      text += std::string_view("0123456789.,-e")[random() % 14];
    }
    for (const DecimalMark mark : {DecimalMark::point, DecimalMark::comma}) {
      if (const auto quick = plainNumber(text, mark)) {
        const auto cell = NumberCell::read(text);
        ASSERT_TRUE(cell) << text;
        EXPECT_EQ(*quick, cell->value(mark)) << text;
        ++plain;
      }
    }
  }
  EXPECT_GT(plain, 1'000);
}

TEST(StatementText, IsDecodedInPiecesAsInOne) {
  std::string bytes;
  while (bytes.size() < 2'500'000) {
    bytes += "Z\xFCrich \x80 5,00\n";
  }
  const StatementText read = decodedStatement(bytes);
  EXPECT_EQ(read.encoding, TextEncoding::windowsLatin1);
  EXPECT_TRUE(read.text == decodedText(bytes, TextEncoding::windowsLatin1));
  EXPECT_EQ(plainStatement(bytes), std::nullopt);
  EXPECT_EQ(plainStatement("\xEF\xBB\xBFZ\xC3\xBCrich"), "Z\xC3\xBCrich");
}

class LargeStatements : public ::testing::Test {
 protected:
  const std::vector<StatementProfile> profiles = {StatementProfile::parse(
      "name = \"Plain\"\nheading = \"Day,Settled,What,Share,Count,Amount,Number,Note\"\n"
      "days = \"ymd\"\ndecimal = \".\"\nfields = { date = \"Day\", settle = \"Settled\", type = "
      "\"What\", symbol = \"Share\", shares = \"Count\", amount = \"Amount\", id = \"Number\", "
      "note "
      "= \"Note\", currency = { value = \"CAD\" } }\nwords = \"standard\"\n",
      "plain", "plain.toml")};
  const std::string heading = "Day,Settled,What,Share,Count,Amount,Number,Note\n";
  testing::Ledger ledger;

  StatementPreview preview(const std::string& rows) {
    return previewStatement(heading + rows, profiles, ledger.portfolio, {});
  }
  std::vector<std::string> recorded() {
    std::vector<std::string> all;
    for (const auto& row : ledger.portfolio->transactions()) {
      all.push_back(told(row->basic));
    }
    return all;
  }
};

TEST_F(LargeStatements, AreRecordedInTheOrderOfTheirSettlement) {
  // The deposit is written behind the purchase that it pays for, and settles before it.
  const StatementPreview read = preview(
      "2025-03-03,2025-03-05,Buy,ABC,2,200.00,n1,\"with a \"\"quote\"\", and a comma\"\n"
      "2025-03-04,2025-03-04,Deposit,,,500.00,n2,\n");
  ASSERT_TRUE(read.isReady()) << read.reading.rows[0].reason;
  EXPECT_EQ(read.reading.rows[0].id, "n1");
  recordStatement(read, ledger.portfolio);
  EXPECT_THAT(recorded(), ElementsAre("2025-03-04 transfer 500 CAD",
                                      "2025-03-03/2025-03-05 trade 2 ABC for 200 CAD = 200 | with "
                                      "a \"quote\", and a comma"));
}

TEST_F(LargeStatements, TellEveryRefusalAtItsRowHoweverFarApartTheyAre) {
  std::string rows = "2025-03-03,,Deposit,,,5000.00,,\n";
  std::vector<std::uint32_t> tooMuch;
  for (std::uint32_t line = 3; line < 10'003; ++line) {
    const bool isTooMuch = line % 3'000 == 7;
    rows += isTooMuch ? "2025-03-04,,Withdrawal,,,9000.00,,\n" : "2025-03-04,,Deposit,,,0.25,,\n";
    if (isTooMuch) {
      tooMuch.push_back(line);
    }
  }
  ASSERT_EQ(tooMuch.size(), 4U);
  // Nearly all that was paid in: it is there only where every row before it counts.
  rows += "2025-03-05,,Withdrawal,,,7490.00,,\n";
  const StatementPreview read = preview(rows);
  std::vector<std::uint32_t> refused;
  for (const StatementRow& row : read.reading.rows) {
    if (row.verdict == RowVerdict::ledgerRefuses) {
      EXPECT_THAT(row.reason, ::testing::StartsWith("Insufficient cash."));
      refused.push_back(row.line);
    }
  }
  EXPECT_EQ(refused, tooMuch);
  // What is left is taken: the trial and the ledger agree.
  recordStatement(read, ledger.portfolio);
  EXPECT_EQ(recorded().size(), 10'002U - tooMuch.size());
}

TEST_F(LargeStatements, CanBeCancelledWhileTheyAreReadAndRecorded) {
  std::string rows;
  for (int row = 0; row < 20'000; ++row) {
    rows += "2025-03-03,,Deposit,,,5.00,,\n";
  }
  struct Cancelled {};
  std::vector<double> told;
  const auto cancelAt = [&](double end) {
    return [&told, end](double fraction) {
      told.push_back(fraction);
      if (fraction > end) {
        throw Cancelled();
      }
    };
  };
  const auto read = [&](double end) {
    return previewStatement(heading + rows, profiles, ledger.portfolio, {}, nullptr, {},
                            cancelAt(end));
  };
  for (const double end : {0.1, 0.3, 0.6, 0.8}) {
    EXPECT_THROW((void)read(end), Cancelled) << end;
  }
  told.clear();
  const StatementPreview whole = read(1.0);
  EXPECT_TRUE(std::ranges::is_sorted(told));
  EXPECT_EQ(told.back(), 1.0);
  EXPECT_THROW((void)recordStatement(whole, ledger.portfolio, cancelAt(0.5)), Cancelled);
  EXPECT_TRUE(recorded().empty());
}

}  // namespace
}  // namespace corvane
