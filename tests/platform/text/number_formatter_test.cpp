#include "platform/text/formats/number_formatter.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <array>
#include <string>

#include "random_cases.h"

#include <string>
#include <thread>
#include <vector>

namespace corvane {
namespace {

using Style = NumberFormatter::Style;

NumberFormatter formatter(Style style, const char* locale = "en_US") {
  NumberFormatter result;
  result.style = style;
  result.locale = {locale};
  return result;
}

NumberFormatter money(const char* currency, int fractionDigits, const char* locale = "en_US",
                      Style style = Style::currencyAccounting) {
  NumberFormatter result = formatter(style, locale);
  result.currencyCode = currency;
  result.minimumFractionDigits = fractionDigits;
  result.maximumFractionDigits = fractionDigits;
  return result;
}

TEST(NumberFormatter, WritesEveryDigitOfALongNumber) {
  NumberFormatter plain = formatter(Style::decimal);
  plain.maximumFractionDigits = NumberFormatter::unlimited;
  EXPECT_EQ(plain.string("9007199254740993"), "9,007,199,254,740,993");
  EXPECT_EQ(plain.string("-12345678901234567890123456789012345678"),
            "-12,345,678,901,234,567,890,123,456,789,012,345,678");
  EXPECT_EQ(plain.string("0.1234567890123456789012345678901234567"),
            "0.1234567890123456789012345678901234567");
  EXPECT_EQ(plain.string("1.5E-12"), "0.0000000000015");
  plain.usesGroupingSeparator = false;
  EXPECT_EQ(plain.string("34028236692093846346E+108"),
            "34028236692093846346" + std::string(108, '0'));
}

TEST(NumberFormatter, RefusesWhatIsNoNumber) {
  const NumberFormatter plain = formatter(Style::decimal);
  for (const char* text : {"", "-", ".", "abc", "1,000", "1.2.3", "1E", "1E+-5", "0x10", " 1", "1 ",
                           "Infinity", "--1", "1E1001", "1E-99999999999", "١"}) {
    EXPECT_FALSE(plain.string(text)) << text;
  }
  EXPECT_FALSE(plain.string(std::string(1001, '1')));
  EXPECT_EQ(plain.string("NaN"), "NaN");
  EXPECT_EQ(plain.string("+.5E1"), "5");
}

TEST(NumberFormatter, RoundsHalfToEven) {
  const NumberFormatter dollars = money("USD", 2);
  EXPECT_EQ(dollars.string("2.345"), "$2.34");
  EXPECT_EQ(dollars.string("2.355"), "$2.36");
  EXPECT_EQ(dollars.string("2.3450000000000000000000000000000001"), "$2.35");
  EXPECT_EQ(dollars.string("-0.001"), "($0.00)");
}

TEST(NumberFormatter, WritesNegativeMoneyInTheFormOfTheStyleAndLocale) {
  EXPECT_EQ(money("USD", 2).string("-5"), "($5.00)");
  EXPECT_EQ(money("USD", 2, "en_US", Style::currency).string("-5"), "-$5.00");
  EXPECT_EQ(money("JPY", 0).string("-1234"), "(¥1,234)");
  EXPECT_EQ(money("EUR", 2, "de_DE").string("-1234567.5"), "-1.234.567,50\u00a0€");
  EXPECT_EQ(money("EUR", 2, "fr_FR").string("-1234.5"), "(1\u202f234,50\u00a0€)");
  EXPECT_EQ(money("EUR", 2, "sv_SE").string("-5"),
            "\u2212"
            "5,00\u00a0€");
}

TEST(NumberFormatter, PartsACurrencyCodeFromTheDigitsAlsoBehindASign) {
  NumberFormatter francs = money("CHF", 2, "en_US", Style::currency);
  francs.positivePrefix = "+";
  EXPECT_EQ(francs.string("5"),
            "+CHF\u00a0"
            "5.00");
  EXPECT_EQ(francs.string("-5"),
            "-CHF\u00a0"
            "5.00");
}

TEST(NumberFormatter, LeavesNoSpaceWhereASymbolIsHiddenOrUnknown) {
  for (const char* locale : {"de_DE", "de_CH", "fr_FR"}) {
    NumberFormatter hidden = money("EUR", 2, locale, Style::currency);
    hidden.usesGroupingSeparator = false;
    hidden.showsCurrencySymbol = false;
    const std::string separator = hidden.decimalSeparator();
    EXPECT_EQ(hidden.string("-1234.5"), "-1234" + separator + "50") << locale;
  }
  NumberFormatter without = money("USD", 2);
  without.currencyCode.reset();
  EXPECT_EQ(without.string("-1234.5"), "(1,234.50)");
  without.currencyCode = "no such code";
  EXPECT_EQ(without.string("1234.5"), "1,234.50");
}

TEST(NumberFormatter, PutsThePositivePrefixBeforeZeroButNotBeforeNegatives) {
  NumberFormatter percent = formatter(Style::percent);
  percent.positivePrefix = "+";
  percent.minimumFractionDigits = 2;
  EXPECT_EQ(percent.string("0.12345"), "+12.34%");
  EXPECT_EQ(percent.string("0"), "+0.00%");
  EXPECT_EQ(percent.string("-0"), "+0.00%");
  EXPECT_EQ(percent.string("-1"), "-100.00%");
  percent.locale = {"de_DE"};
  EXPECT_EQ(percent.string("0.5"), "+50,00\u00a0%");
  percent.locale = {"tr_TR"};
  EXPECT_EQ(percent.string("0.5"), "+%50,00");
}

TEST(NumberFormatter, ReplacesTheMinusSignByBrackets) {
  NumberFormatter shares = formatter(Style::decimal);
  shares.maximumFractionDigits = NumberFormatter::unlimited;
  shares.negativePrefix = "(";
  shares.negativeSuffix = ")";
  EXPECT_EQ(shares.string("-1234.5678"), "(1,234.5678)");
  EXPECT_EQ(shares.string("10"), "10");
}

TEST(NumberFormatter, ScalesByPowersOfTenAndMarksThemBehindTheDigits) {
  NumberFormatter axis = money("USD", 1);
  axis.powerOfTen = -6;
  axis.digitsSuffix = "M";
  axis.zeroSymbol = "0";
  EXPECT_EQ(axis.string("1234567"), "$1.2M");
  EXPECT_EQ(axis.string("-1234567"), "($1.2M)");
  EXPECT_EQ(axis.string("-0.00"), "0");
  axis.locale = {"de_DE"};
  EXPECT_EQ(axis.string("1234567"), "1,2M\u00a0$");
}

TEST(NumberFormatter, FillsUpIntegerAndFractionDigits) {
  NumberFormatter plain = formatter(Style::decimal);
  plain.minimumIntegerDigits = 3;
  plain.minimumFractionDigits = 4;
  EXPECT_EQ(plain.string("1.5"), "001.5000");
  plain.maximumFractionDigits = NumberFormatter::unlimited;
  EXPECT_EQ(plain.string("1.123456"), "001.123456");
}

TEST(NumberFormatter, TellsTheSeparatorsThatItWrites) {
  EXPECT_EQ(formatter(Style::decimal).groupingSeparator(), ",");
  EXPECT_EQ(formatter(Style::decimal, "fr_FR").groupingSeparator(), "\u202f");
  EXPECT_EQ(formatter(Style::decimal, "fr_FR").decimalSeparator(), ",");
  // Austria parts the thousands of money by points, other thousands by spaces.
  EXPECT_EQ(formatter(Style::decimal, "de_AT").groupingSeparator(), "\u00a0");
  EXPECT_EQ(formatter(Style::currency, "de_AT").groupingSeparator(), ".");
}

TEST(NumberFormatter, WritesTheSameOnEveryThread) {
  std::vector<std::thread> threads;
  for (int count = 0; count < 4; ++count) {
    threads.emplace_back([] {
      for (int digits = 0; digits < 40; ++digits) {
        EXPECT_EQ(money("USD", digits).string("1"),
                  digits == 0 ? "$1" : "$1." + std::string(static_cast<std::size_t>(digits), '0'));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST(NumberFormatter, WritesShortFormsAsItWritesLongOnes) {
  // A number with an exponent goes through the locale service, one without mostly does not.
  const auto compare = [](std::mt19937_64& random) {
    static std::int32_t localeCount = 0;
    static const icu::Locale* locales = icu::Locale::getAvailableLocales(localeCount);
    NumberFormatter formatter{
        .locale = {locales[random() % static_cast<std::uint64_t>(localeCount)].getName()}};
    formatter.style =
        std::array{Style::decimal, Style::currency, Style::currencyAccounting}[random() % 3];
    formatter.currencyCode = std::array{"USD", "CAD", "EUR", "JPY", "CHF", "INR"}[random() % 6];
    formatter.showsCurrencySymbol = random() % 3 != 0;
    formatter.usesGroupingSeparator = random() % 4 != 0;
    formatter.minimumFractionDigits = static_cast<int>(random() % 4);
    formatter.maximumFractionDigits =
        random() % 2 == 0 ? NumberFormatter::unlimited : static_cast<int>(random() % 6);
    if (random() % 4 == 0) {
      formatter.negativePrefix = "(";
      formatter.negativeSuffix = ")";
    }
    for (int round = 0; round < 8; ++round) {
      std::string digits = random() % 2 == 0 ? "-" : "";
      digits += static_cast<char>('1' + random() % 9);
      for (auto length = random() % 24; length > 0; --length) {
        digits += static_cast<char>('0' + (random() % 2 == 0 ? 0 : random() % 10));
      }
      const auto places = random() % (digits.size() - (digits[0] == '-' ? 1 : 0));
      std::string number = digits;
      if (places > 0) {
        number.insert(number.size() - places, ".");
      }
      ASSERT_EQ(formatter.string(number), formatter.string(digits + "E-" + std::to_string(places)))
          << number << " in " << formatter.locale.identifier;
    }
  };
  corvane::testing::forRandomCases(1500, compare);
}

}  // namespace
}  // namespace corvane
