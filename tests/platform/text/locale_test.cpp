#include "platform/text/unicode/locale.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <optional>
#include <string>

namespace corvane {
namespace {

/// Sets the variables that name the user's locale for one test and puts back what was there.
class LocaleVariables : public ::testing::Test {
 protected:
  static constexpr std::array names = {"LC_ALL", "LC_MONETARY", "LANG"};

  LocaleVariables() {
    for (std::size_t index = 0; index < names.size(); ++index) {
      if (const char* value = std::getenv(names[index])) {
        before_[index] = value;
      }
      unsetenv(names[index]);
    }
  }
  ~LocaleVariables() override {
    for (std::size_t index = 0; index < names.size(); ++index) {
      if (before_[index]) {
        setenv(names[index], before_[index]->c_str(), 1);
      } else {
        unsetenv(names[index]);
      }
    }
  }

  static std::string currentWith(const char* variable, const char* value) {
    setenv(variable, value, 1);
    return Locale::current().identifier;
  }

 private:
  std::array<std::optional<std::string>, 3> before_;
};

TEST_F(LocaleVariables, DecideOnTheCurrentLocaleTheMoreSpecificFirst) {
  EXPECT_EQ(currentWith("LANG", "de_DE.UTF-8"), "de_DE");
  EXPECT_EQ(currentWith("LC_MONETARY", "fr_CA.UTF-8@euro"), "fr_CA");
  EXPECT_EQ(currentWith("LC_ALL", "en_GB"), "en_GB");
}

TEST_F(LocaleVariables, WithoutALanguageMeanAmericanEnglish) {
  for (const char* value : {"C", "C.UTF-8", "POSIX", "en_US_POSIX", "nonsense", ".UTF-8", "123"}) {
    EXPECT_EQ(currentWith("LC_ALL", value), "en_US") << value;
  }
}

TEST(Locale, KnowsTheMoneyOfItsRegion) {
  EXPECT_EQ(Locale{"en_CA"}.currencyCode(), "CAD");
  EXPECT_EQ(Locale{"de_DE"}.currencyCode(), "EUR");
  EXPECT_EQ(Locale{"ja_JP"}.currencyCode(), "JPY");
  EXPECT_FALSE(Locale{"de"}.currencyCode());
}

TEST(Locale, NamesCurrenciesInItsLanguage) {
  EXPECT_EQ(Locale{"en_US"}.localizedCurrencyName("CAD"), "Canadian Dollar");
  EXPECT_EQ(Locale{"de_DE"}.localizedCurrencyName("CAD"), "Kanadischer Dollar");
  for (const char* unknown : {"QQQ", "", "CA", "CADX", "\xff\xff\xff"}) {
    EXPECT_FALSE(Locale{"en_US"}.localizedCurrencyName(unknown)) << unknown;
  }
}

}  // namespace
}  // namespace corvane
