#include "core/money/decimal_number_formatter.h"

#include <gtest/gtest.h>

#include "core/money/currency_amount.h"
#include "support/decimals.h"

namespace corvane {
namespace {

using testing::dec;

std::optional<Decimal> read(const std::string& text, const std::string& locale = "en_US") {
  DecimalNumberFormatter formatter = DecimalNumberFormatter::money(Currency::usd());
  formatter.locale = Locale{locale};
  return formatter.decimalFromString(text);
}

TEST(DecimalNumberFormatter, ReadsWhatPeoplePaste) {
  EXPECT_EQ(read("$1,234.50"), dec("1234.50"));
  EXPECT_EQ(read("(12.50)"), dec("-12.50"));
  EXPECT_EQ(read("-3"), dec("-3"));
  EXPECT_EQ(read("3-"), dec("-3"));
  EXPECT_EQ(read("−3 USD"), dec("-3"));
  EXPECT_EQ(read("about 7 or 8"), dec("7"));
  EXPECT_EQ(read("1 000"), dec("1"));
  EXPECT_EQ(read(".5"), dec("0.5"));
  for (const auto* text : {"", "abc", ".", ",", "-", "\xFF\xFE"}) {
    EXPECT_EQ(read(text), std::nullopt) << text;
  }
  EXPECT_EQ(read("1.234,50 €", "de_DE"), dec("1234.50"));
  EXPECT_EQ(read("1\u202F234,50 €", "fr_FR"), dec("1234.50"));
}

TEST(DecimalNumberFormatter, ReadsWhatItHasWrittenInTheDigitsOfTheLocale) {
  for (const auto* locale : {"ar_EG", "fa_IR", "mr_IN", "my_MM", "bn_BD", "ne_NP"}) {
    for (const auto* number : {"0", "7.05", "-1234567.89", "98765432101234567890.12"}) {
      DecimalNumberFormatter plain;
      DecimalNumberFormatter money = DecimalNumberFormatter::money(Currency::usd());
      for (DecimalNumberFormatter* formatter : {&plain, &money}) {
        formatter->locale = Locale{locale};
        const std::string text = formatter->string(dec(number)).value();
        EXPECT_EQ(formatter->decimalFromString(text), dec(number)) << locale << " " << text;
      }
    }
  }
  // What is shown is edited on a keyboard with other digits.
  EXPECT_EQ(read("٢٥٠٫١5", "ar_EG"), dec("250.15"));
  EXPECT_EQ(read("１２.５ 円", "ja_JP"), dec("12.5"));
}

TEST(DecimalNumberFormatter, ReadsAnEmptyFieldAsZeroWhereThatIsWanted) {
  DecimalNumberFormatter formatter;
  formatter.treatsEmptyStringAsZero = true;
  EXPECT_EQ(formatter.decimalFromString(""), Decimal(0));
  EXPECT_EQ(formatter.decimalFromString(" "), std::nullopt);
}

TEST(DecimalNumberFormatter, WritesMoneyInAccountingStyle) {
  DecimalNumberFormatter formatter = DecimalNumberFormatter::money(Currency::usd());
  formatter.locale = Locale{"en_US"};
  EXPECT_EQ(formatter.string(dec("-1234.5")), "($1,234.50)");
  EXPECT_EQ(formatter.string(dec("0")), "$0.00");
  EXPECT_EQ(formatter.string(Decimal::nan()), std::nullopt);
  EXPECT_EQ(formatter.string(dec("99999999999999999999999999999999999.99")),
            "$99,999,999,999,999,999,999,999,999,999,999,999.99");
  formatter.maximumFractionDigits = 20;
  EXPECT_EQ(formatter.string(dec("10.005")), "$10.005");
  const Currency yen = Currency::byCode().find("JPY")->second;
  EXPECT_EQ((CurrencyAmount{yen, dec("-5")}).description(), "(¥5)");
}

TEST(DecimalNumberFormatter, ShowsEveryDigitOfAPlainNumber) {
  DecimalNumberFormatter formatter;
  formatter.locale = Locale{"en_US"};
  EXPECT_EQ(formatter.string(dec("1234.000000000000000000000000001")),
            "1,234.000000000000000000000000001");
}

}  // namespace
}  // namespace corvane
