// What the exporters write into each cell, and how their settings change it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exchange/export_world.h"
#include "exchange/exports/portfolio_exporter_accessory_view_controller.h"
#include "exchange/exports/portfolio_gain_loss_exporter.h"
#include "exchange/exports/portfolio_holdings_exporter.h"
#include "exchange/exports/portfolio_transactions_exporter.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using Cells = std::map<std::string, std::string>;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

class ExporterTest : public ::testing::Test, protected ExportWorld {
 protected:
  InLocale locale{"en_US.UTF-8"};
  TemporaryFolder folder;
  UserDefaults defaults{folder / "settings.json"};

  std::shared_ptr<PortfolioTransactionsExporter> exporter() {
    return PortfolioTransactionsExporter::make(*portfolio, rows(), &defaults);
  }
  /// The cells of the last row recorded.
  Cells lastRow() { return cellsOf(*exporter(), static_cast<int>(rows().size()) - 1); }
  Cells exported(BasicTransaction transaction) {
    record({std::move(transaction)});
    return lastRow();
  }
};

TEST_F(ExporterTest, WritesASale) {
  record({deposit("10000"), buy("100", "1000")});
  auto sale = sell("10", "1234.50");
  sale.note = "good";
  EXPECT_EQ(exported(sale), (Cells{{"tradeDate", "3/3/21"},
                                   {"settlementDate", "3/3/21"},
                                   {"type", "Sell"},
                                   {"symbol", "ABC"},
                                   {"numberOfShares", "(10)"},
                                   {"sharesNet", "90"},
                                   {"cashAdded", "CA$1,234.50"},
                                   {"cashNet", "CA$10,234.50"},
                                   {"cashCurrency", "CAD"},
                                   {"exchangeRate", "1.00"},
                                   {"equivalentAmount", "CA$1,234.50"},
                                   {"equivalentCurrency", "CAD"},
                                   {"costBaseAdded", "(CA$100.00)"},
                                   {"costBaseNet", "CA$900.00"},
                                   {"capitalGain", "CA$1,134.50"},
                                   {"note", "good"}}));
}

TEST_F(ExporterTest, WritesWhatAKindHasAndLeavesTheRestEmpty) {
  record({deposit("10000"), buy("100", "1000")});
  EXPECT_EQ(exported(split("100", "50")), (Cells{{"tradeDate", "3/3/21"},
                                                 {"settlementDate", "3/3/21"},
                                                 {"type", "Consolidation"},
                                                 {"symbol", "ABC"},
                                                 {"numberOfShares", "100"},
                                                 {"sharesNet", "50"},
                                                 {"equivalentCurrency", "CAD"},
                                                 {"costBaseAdded", "CA$0.00"},
                                                 {"costBaseNet", "CA$1,000.00"}}));
  EXPECT_EQ(exported(withdrawal("1000")), (Cells{{"tradeDate", "3/4/21"},
                                                 {"settlementDate", "3/4/21"},
                                                 {"type", "Transfer Out"},
                                                 {"cashAdded", "(CA$1,000.00)"},
                                                 {"cashNet", "CA$8,000.00"},
                                                 {"cashCurrency", "CAD"}}));
  portfolio->allowsNegativeBalances = true;
  // A foreign yield: the rate has no more than five digits after the point, amounts have all.
  EXPECT_EQ(exported(make(BasicTransaction::Yield{BasicTransaction::YieldType::dividend,
                                                  abc,
                                                  std::nullopt,
                                                  {yen, dec("3000")},
                                                  dec("35.12345")})),
            (Cells{{"tradeDate", "3/5/21"},
                   {"settlementDate", "3/5/21"},
                   {"type", "Dividend"},
                   {"symbol", "ABC"},
                   {"numberOfShares", "50"},
                   {"sharesNet", "50"},
                   {"cashAdded", "¥3,000"},
                   {"cashNet", "¥3,000"},
                   {"cashCurrency", "JPY"},
                   {"exchangeRate", "0.01171"},
                   {"equivalentAmount", "CA$35.12345"},
                   {"equivalentCurrency", "CAD"},
                   {"costBaseAdded", "CA$0.00"},
                   {"costBaseNet", "CA$1,000.00"}}));
}

TEST_F(ExporterTest, NamesEveryKind) {
  record(everyKind());
  std::vector<std::string> words;
  for (const auto& row : rows()) {
    words.emplace_back(exportedWord(row->basic.kind));
  }
  EXPECT_THAT(words, ElementsAre("Transfer In", "Transfer In", "Transfer In", "Buy", "Buy", "Buy",
                                 "Sell", "Split", "Consolidation", "Journal", "Journal", "Dividend",
                                 "Cap. Gains Dividend", "Reinvested Distribution",
                                 "Return of Capital", "Dividend", "Cash Adjustment",
                                 "Cash Adjustment", "Transfer Out", "Transfer Out"));
  EXPECT_EQ(exportedWord(deposit("0").kind), "Transfer Out");
  EXPECT_EQ(exportedWord(buy("0", "1").kind), "Sell");
}

TEST_F(ExporterTest, FollowsItsSettingsAtOnce) {
  record({deposit("10000"), buy("1000.5", "1000"), sell("1000.5", "5000.25"), withdrawal("2000")});
  const auto broker = exporter();
  const auto cells = [&] { return cellsOf(*broker, 3); };
  EXPECT_THAT(cells(), Contains(Pair("cashAdded", "(CA$2,000.00)")));
  broker->changeSettings([](auto& settings) { settings.negativeNumbersAccountingStyle = false; });
  EXPECT_THAT(cells(), Contains(Pair("cashAdded", "-CA$2,000.00")));
  EXPECT_THAT(cellsOf(*broker, 2), Contains(Pair("numberOfShares", "-1,000.5")));
  broker->changeSettings([](auto& settings) { settings.includeCurrencySymbol = false; });
  EXPECT_THAT(cells(), Contains(Pair("cashAdded", "-2,000.00")));
  broker->changeSettings([](auto& settings) { settings.includeThousandsSeparator = false; });
  EXPECT_THAT(cells(), Contains(Pair("cashAdded", "-2000.00")));
  EXPECT_THAT(cellsOf(*broker, 2), Contains(Pair("numberOfShares", "-1000.5")));
  broker->changeSettings([](auto& settings) { settings.negativeNumbersAccountingStyle = true; });
  EXPECT_THAT(cells(), Contains(Pair("cashAdded", "(2000.00)")));
  broker->changeSettings([](auto& settings) {
    settings.useDateFormatString = true;
    settings.dateFormatString = "YYYY-MM-dd";
  });
  EXPECT_THAT(cells(), Contains(Pair("tradeDate", "2021-03-04")));
  broker->changeSettings([](auto& settings) { settings.dateFormatString = "d/HH:mm"; });
  EXPECT_THAT(cells(), Contains(Pair("tradeDate", "4/12:00")));
}

TEST_F(ExporterTest, KeepsItsSettingsForTheNextExport) {
  {
    const auto broker = exporter();
    EXPECT_TRUE(broker->settings().fieldOrder.empty());
    broker->changeSettings([](auto& settings) {
      settings.fieldDelimiter = ImportExportFieldDelimiter::tab;
      settings.includesHeaderRow = false;
      settings.fieldOrder = {"note", "type"};
      settings.useDateFormatString = true;
      settings.dateFormatString = "dd.MM.yy";
      settings.negativeNumbersAccountingStyle = false;
      settings.includeThousandsSeparator = false;
      settings.includeCurrencySymbol = false;
    });
  }
  EXPECT_EQ(defaults.string("portfolioTransactionsExportConfiguration"),
            R"({"fieldDelimiter":"tab","includesHeaderRow":false,"fieldOrder":["note","type"],)"
            R"("useDateFormatString":true,"dateFormatString":"dd.MM.yy",)"
            R"("negativeNumbersAccountingStyle":false,"includeThousandsSeparator":false,)"
            R"("includeCurrencySymbol":false})");
  EXPECT_EQ(exporter()->settings().fieldOrder, (std::vector<std::string>{"note", "type"}));
  EXPECT_FALSE(exporter()->settings().includeCurrencySymbol);
  defaults.set("portfolioTransactionsExportConfiguration", R"({"fieldDelimiter":"tab"})");
  EXPECT_EQ(exporter()->settings(), PortfolioExportConfiguration());
}

TEST_F(ExporterTest, OffersItsSettingsInAnAccessory) {
  const auto broker = exporter();
  const auto accessory = std::dynamic_pointer_cast<PortfolioExporterAccessoryViewController>(
      broker->accessoryConfigurationViewController());
  EXPECT_TRUE(accessory->dateFormatDefaultButton.isOn);
  EXPECT_FALSE(accessory->dateFormatCustomTextField.isEnabled);
  EXPECT_EQ(accessory->dateFormatCustomTextField.text, "YYYY-MM-dd");
  accessory->chooseCustomDateFormat();
  accessory->setDateFormatString("y");
  accessory->setAccountingStyle(false);
  accessory->setThousandSeparator(false);
  accessory->setCurrencySymbol(false);
  int told = 0;
  broker->didChangeConfiguration = [&](const ConfigurationPointer&) { ++told; };
  MainLoop::drain();
  EXPECT_EQ(told, 5);
  EXPECT_TRUE(accessory->dateFormatCustomButton.isOn);
  EXPECT_TRUE(accessory->dateFormatCustomTextField.isEnabled);
  EXPECT_EQ(accessory->dateFormatCustomTextField.text, "y");
  EXPECT_FALSE(accessory->accountingStyleCheckboxButton.isOn);
  EXPECT_FALSE(accessory->thousandSeparatorCheckboxButton.isOn);
  EXPECT_FALSE(accessory->currencySymbolCheckboxButton.isOn);
  EXPECT_EQ(broker->dateFormatter().format, "y");
}

TEST_F(ExporterTest, TitlesItsColumnsAndNamesTheFile) {
  const auto broker = exporter();
  EXPECT_EQ(broker->defaultFilename(), "Savings");
  EXPECT_EQ(broker->titleForSavePanel(), std::nullopt);
  EXPECT_EQ(broker->allFields().size(), 16U);
  EXPECT_EQ(broker->fieldTitle("cashAdded"), "Cash Amount");
  EXPECT_EQ(broker->fieldTitle("costBaseNet"), "Cost Base Net †");
  EXPECT_EQ(broker->exportRowCount(), 0);
  EXPECT_EQ(broker->exportValue(0, "type"), std::nullopt);
  EXPECT_EQ(broker->leadingRows(), std::nullopt);
  EXPECT_EQ(broker->trailingRows(), std::nullopt);
}

TEST_F(ExporterTest, WritesRowsOfAPortfolioThatIsGone) {
  record({deposit("10000"), buy("100", "1000")});
  const auto broker = exporter();
  undo.reset();  // its steps hold the portfolio too
  portfolio.reset();
  manager.reset();
  const Cells cells = cellsOf(*broker, 1);
  EXPECT_THAT(cells, Contains(Pair("exchangeRate", "1")));
  EXPECT_THAT(cells, Contains(Pair("cashAdded", "(CA$1,000.00)")));
  EXPECT_THAT(cells, Not(Contains(Pair("equivalentAmount", ::testing::_))));
}

/// March 2021 as a screen has it after prices have come.
class SliceExporterTest : public ExporterTest {
 protected:
  SliceExporterTest() {
    portfolio->allowsNegativeBalances = true;
    slice.portfolio = portfolio;
    slice.selectDays({{2021, 3, 1}, {2021, 3, 31}});
    PortfolioSnapshot opening;
    opening.equitySnapshots.set(
        abc, {.sharesHeld = 10, .sharePrice = {}, .costBase = 90, .cumulativeCapitalGain = 100});
    PortfolioSnapshot closing;
    closing.currencySnapshots.set(
        Currency::cad(), {.cashOnHand = dec("1234.5"), .netCashDeposited = 0, .exchangeRate = 1});
    closing.currencySnapshots.set(
        Currency::usd(),
        {.cashOnHand = dec("-100"), .netCashDeposited = 0, .exchangeRate = dec("1.25")});
    closing.currencySnapshots.set(
        yen, {.cashOnHand = 500, .netCashDeposited = 0, .exchangeRate = std::nullopt});
    closing.equitySnapshots.set(
        xyz,
        {.sharesHeld = 8, .sharePrice = dec("20.5"), .costBase = 100, .cumulativeCapitalGain = 0});
    closing.equitySnapshots.set(
        abc,
        {.sharesHeld = 0, .sharePrice = 5, .costBase = 0, .cumulativeCapitalGain = dec("87.5")});
    group->sortedSnapshots = {{{2021, 2, 28}, opening}, {{2021, 3, 31}, closing}};
    group->currenciesHeldOrTraded = {Currency::cad(), Currency::usd(), yen};
    group->equitiesHeldOrTraded = {abc, xyz};
    group->tradingSummaryByEquity[abc] = {.sharesBought = 2,
                                          .sharesSold = 12,
                                          .costBaseAdded = 10,
                                          .costBaseDisposed = 100,
                                          .proceedsOfSale = dec("87.50")};
    slice.snapshotGroup = group;
  }

  std::shared_ptr<PortfolioSnapshotGroup> group = std::make_shared<PortfolioSnapshotGroup>();
  PortfolioDataSlice slice;
};

TEST_F(SliceExporterTest, WritesHoldings) {
  const auto broker = PortfolioHoldingsExporter::make(slice, &defaults);
  EXPECT_EQ(broker->defaultFilename(), "Savings 3/31/21");
  EXPECT_EQ(broker->titleForSavePanel(), "Exporting holdings as of 3/31/21.");
  ASSERT_EQ(broker->exportRowCount(), 4) << "the equity without shares is left out";
  EXPECT_EQ(cellsOf(*broker, 0), (Cells{{"date", "3/31/21"},
                                        {"kind", "Cash"},
                                        {"symbol", "CAD"},
                                        {"name", "Canadian Dollar"},
                                        {"sharesHeld", "1,234.5"},
                                        {"marketValue", "CA$1,234.50"}}));
  EXPECT_EQ(cellsOf(*broker, 1), (Cells{{"date", "3/31/21"},
                                        {"kind", "Cash"},
                                        {"symbol", "JPY"},
                                        {"name", "Japanese Yen"},
                                        {"sharesHeld", "500"}}));
  EXPECT_THAT(cellsOf(*broker, 2), Contains(Pair("marketValue", "(CA$125.00)")));
  EXPECT_EQ(cellsOf(*broker, 3), (Cells{{"date", "3/31/21"},
                                        {"kind", "Shares"},
                                        {"symbol", "XYZ"},
                                        {"sharesHeld", "8"},
                                        {"marketPrice", "CA$25.625"},
                                        {"marketValue", "CA$205.00"},
                                        {"averagePrice", "CA$12.50"},
                                        {"costBase", "CA$100.00"},
                                        {"marketGain", "CA$105.00"},
                                        {"portfolioCurrency", "CAD"}}));
}

TEST_F(SliceExporterTest, WritesHoldingsWithoutPrices) {
  PortfolioSnapshot& closing = group->sortedSnapshots.back().snapshot;
  closing.equitySnapshots.set(
      xyz, {.sharesHeld = 8, .sharePrice = {}, .costBase = 100, .cumulativeCapitalGain = 0});
  EXPECT_EQ(cellsOf(*PortfolioHoldingsExporter::make(slice, nullptr), 3),
            (Cells{{"date", "3/31/21"},
                   {"kind", "Shares"},
                   {"symbol", "XYZ"},
                   {"sharesHeld", "8"},
                   {"averagePrice", "CA$12.50"},
                   {"costBase", "CA$100.00"},
                   {"portfolioCurrency", "CAD"}}));
}

TEST_F(SliceExporterTest, WritesGains) {
  const auto broker = PortfolioGainLossExporter::make(slice, &defaults);
  EXPECT_EQ(broker->defaultFilename(), "Savings 3/31/21");
  EXPECT_EQ(broker->titleForSavePanel(), "Exporting gains/losses from 3/1/21 to 3/31/21.");
  ASSERT_EQ(broker->exportRowCount(), 1) << "what was not traded is left out";
  EXPECT_EQ(cellsOf(*broker, 0), (Cells{{"openingDate", "3/1/21"},
                                        {"closingDate", "3/31/21"},
                                        {"symbol", "ABC"},
                                        {"name", "Alphabet Soup, \"Inc.\""},
                                        {"sharesBought", "2"},
                                        {"sharesSold", "12"},
                                        {"sharesNet", "0"},
                                        {"costBaseAdded", "CA$10.00"},
                                        {"costBaseDisposed", "CA$100.00"},
                                        {"proceedsOfSale", "CA$87.50"},
                                        {"capitalGain", "(CA$12.50)"},
                                        {"portfolioCurrency", "CAD"}}));
}

TEST_F(SliceExporterTest, HasNothingToWriteBeforeTheFiguresHaveCome) {
  slice.snapshotGroup = nullptr;
  EXPECT_EQ(PortfolioHoldingsExporter::make(slice, nullptr)->exportRowCount(), 0);
  EXPECT_EQ(PortfolioGainLossExporter::make(slice, nullptr)->exportRowCount(), 0);
}

}  // namespace
}  // namespace corvane::testing
