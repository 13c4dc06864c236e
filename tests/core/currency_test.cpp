#include "core/money/currency.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "core/money/currency_almanac.h"
#include "platform/system/resources.h"
#include "support/log_capture.h"

namespace corvane {
namespace {

Currency::CodeTable read(const std::string& entries) {
  return CurrencyAlmanac::currenciesIn("<ISO_4217 Pblshd=\"2024\"><CcyTbl>" + entries +
                                       "</CcyTbl></ISO_4217>");
}

TEST(Currency, KnowsThePublishedList) {
  EXPECT_EQ(Currency::byCode().size(), 179U);
  EXPECT_EQ(Currency::byNumber().size(), 179U);
  EXPECT_EQ(Currency::cad().description(), "CAD/124");
  EXPECT_EQ(Currency::cad().minorUnits, 2);
  EXPECT_EQ(Currency::byNumber().at(392).code, "JPY");
  EXPECT_EQ(Currency::byNumber().at(392).minorUnits, 0);
  EXPECT_EQ(Currency::byCode().at("KWD").minorUnits, 3);
  EXPECT_EQ(Currency::noCurrency().number, 999);
  EXPECT_EQ(Currency::noCurrency().minorUnits, 0);
}

TEST(Currency, IsEqualByNumberAndCodeAlone) {
  EXPECT_EQ((Currency{"CAD", 124, 2}), (Currency{"CAD", 124, 3}));
  EXPECT_FALSE((Currency{"CAD", 124, 2}) == (Currency{"CAX", 124, 2}));
  EXPECT_FALSE((Currency{"CAD", 124, 2}) == (Currency{"CAD", 125, 2}));
}

TEST(CurrencyAlmanac, TakesCompleteEntriesOnly) {
  const auto table = read(
      "<CcyNtry><CtryNm>CANADA</CtryNm><Ccy>\n  CAD\n</Ccy><CcyNbr> 124 </CcyNbr>"
      "<CcyMnrUnts>2</CcyMnrUnts></CcyNtry>"
      "<CcyNtry><Ccy>XXX</Ccy><CcyNbr>999</CcyNbr><CcyMnrUnts>N.A.</CcyMnrUnts></CcyNtry>"
      "<CcyNtry><CtryNm>ANTARCTICA</CtryNm><CcyNm>No universal currency</CcyNm></CcyNtry>"
      "<CcyNtry><Ccy>NON</Ccy><CcyMnrUnts>2</CcyMnrUnts></CcyNtry>"
      "<CcyNtry><Ccy>BAD</Ccy><CcyNbr>12x</CcyNbr><CcyMnrUnts>2</CcyMnrUnts></CcyNtry>"
      "<CcyNtry><Ccy>EMP</Ccy><CcyNbr>12</CcyNbr><CcyMnrUnts></CcyMnrUnts></CcyNtry>"
      "<CcyNtry><Ccy>ENDLESSCODE</Ccy><CcyNbr>13</CcyNbr><CcyMnrUnts>2</CcyMnrUnts></CcyNtry>");
  ASSERT_EQ(table.size(), 2U);
  EXPECT_EQ(table.at("CAD").number, 124);
  EXPECT_EQ(table.at("XXX").minorUnits, 0);
}

TEST(CurrencyAlmanac, LetsTheLastEntryOfACodeWin) {
  const auto table = read(
      "<CcyNtry><Ccy>CAD</Ccy><CcyNbr>1</CcyNbr><CcyMnrUnts>2</CcyMnrUnts></CcyNtry>"
      "<CcyNtry><Ccy>CAD</Ccy><CcyNbr>124</CcyNbr><CcyMnrUnts>2</CcyMnrUnts></CcyNtry>");
  EXPECT_EQ(table.at("CAD").number, 124);
}

TEST(CurrencyAlmanac, SaysWhatItDoesNotUnderstandAndKeepsWhatItHas) {
  const std::string entry =
      "<CcyNtry><Ccy>CAD</Ccy><CcyNbr>124</CcyNbr><CcyMnrUnts>2</CcyMnrUnts></CcyNtry>";
  const testing::LogCapture log;
  EXPECT_EQ(read("<CcyNtry><Odd>7</Odd></CcyNtry>" + entry + "<Odd/>" +
                 "<CcyNtry><Ccy>USD</Ccy><CcyNbr>840</CcyNbr><CcyMnrUnts>2</CcyMnrUnts></CcyNtry>")
                .size(),
            1U);
  EXPECT_EQ(log.text(),
            "Unknown currency entry tag \"Odd\" (value \"7\")\n"
            "Inconsistency in expected ISO 4217 XML format; aborting.\n");
  EXPECT_TRUE(CurrencyAlmanac::currenciesIn("<other/>").empty());
  EXPECT_THROW((void)CurrencyAlmanac::currenciesIn("<ISO_4217><CcyTbl>"), XMLError);
}

TEST(CurrencyDeathTest, StopsAtTwoCurrenciesWithOneNumber) {
  const Currency::CodeTable table = {{"AAA", {"AAA", 7, 2}}, {"BBB", {"BBB", 7, 2}}};
  EXPECT_DEATH((void)currenciesByNumber(table), "Duplicate values for key: '7'");
}

TEST(Resources, AreFoundWhereTheEnvironmentSaysOrBesideTheProgram) {
  EXPECT_TRUE(std::filesystem::exists(resourcePath(CurrencyAlmanac::xmlFilename)));
  setenv("CORVANE_RESOURCES", "/elsewhere", 1);
  EXPECT_EQ(resourcePath("file"), "/elsewhere/file");
  unsetenv("CORVANE_RESOURCES");
}

TEST(Resources, AreFoundFromAnInstalledPrefix) {
  namespace fs = std::filesystem;
  char pattern[] = "/tmp/corvane-prefix-XXXXXX";
  const fs::path prefix = mkdtemp(pattern);
  fs::create_directories(prefix / "bin");
  fs::create_directories(prefix / "share/corvane");
  const fs::path program = prefix / "bin/program";
  fs::copy_file(fs::read_symlink("/proc/self/exe"), program);
  const std::string run =
      program.string() + " --gtest_filter=Currency.KnowsThePublishedList >/dev/null 2>&1";
  EXPECT_NE(std::system(run.c_str()), 0) << "without the list";
  fs::copy_file(resourcePath(CurrencyAlmanac::xmlFilename),
                prefix / "share/corvane" / CurrencyAlmanac::xmlFilename);
  EXPECT_EQ(std::system(run.c_str()), 0);
  fs::remove_all(prefix);
}

}  // namespace
}  // namespace corvane
