// The sample statements: with the right setup each becomes the ledger that its paper tells of.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "exchange/imports/portfolio_transactions_importer_accessory_view_controller.h"
#include "exchange/statement_world.h"
#include "support/checkout.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::StatementWorld;

/// Has the program run in a locale.
class InLocale {
 public:
  explicit InLocale(const char* identifier) {
    if (const char* before = std::getenv("LC_ALL")) {
      before_ = before;
    }
    setenv("LC_ALL", identifier, 1);
  }
  InLocale(const InLocale&) = delete;
  InLocale& operator=(const InLocale&) = delete;
  ~InLocale() { before_ ? setenv("LC_ALL", before_->c_str(), 1) : unsetenv("LC_ALL"); }

 private:
  std::optional<std::string> before_;
};

class SampleStatements : public ::testing::Test {
 protected:
  StatementWorld world;

  // The guard is on, and a question would end the import.
  SampleStatements() { world.isGuarded = true; }

  /// The ledger that a sample file gives in an empty portfolio that refuses what it cannot afford.
  std::vector<std::string> ledgerOf(const std::string& name, const std::string& currency,
                                    std::vector<std::string> fields) {
    world.ledger.portfolio = world.ledger.manager->createPortfolio(Currency::byCode().at(currency));
    world.fields = std::move(fields);
    EXPECT_TRUE(world.importFile(testing::sourcePath("resources/examples/" + name)))
        << world.error();
    return world.lines();
  }
  [[nodiscard]] std::string cash(const std::string& currency) const {
    return world.ledger.finalSnapshot()
        .currencySnapshots.get(Currency::byCode().at(currency))
        .cashOnHand.description();
  }
};

TEST_F(SampleStatements, OfACanadianBrokerWithRates) {
  EXPECT_THAT(
      ledgerOf("tamarack-trading.csv", "CAD",
               {"tradeDate", "settlementDate", "type", "symbol", "note", "numberOfShares", "", "",
                "", "cashAmount", "cashCurrency", "exchangeRate", ""}),
      ElementsAre(
          "2024-01-08 transfer 25000 CAD | CONTRIBUTION, EFT",
          "2024-01-10/2024-01-12 trade 100 BOREA.TO for 9219.95 CAD = 9219.95 | BOREALIND RAILWAY "
          "COMPANY",
          "2024-01-22/2024-01-24 trade 150 TAMRK.TO for 7249.95 CAD = 7249.95 | TAMRACK FINANCIAL "
          "GROUP",
          "2024-02-05 transfer 4000 USD | CONVERTED FROM CAD",
          "2024-02-06/2024-02-08 trade 25 CASTR for 3039.95 USD = 4097.24 | CASTRELLE NETWORKS INC",
          "2024-03-28 dividend BOREA.TO on 100 84.5 CAD = 84.5 | CASH DIV ON 100 SHS",
          "2024-04-15 adjust -25 CAD | ACCOUNT MAINTENANCE FEE",
          "2024-05-21/2024-05-23 trade -40 BOREA.TO for -3877.05 CAD = -3877.05 | BOREALIND "
          "RAILWAY COMPANY",
          "2024-06-14 dividend CASTR on 25 12.75 USD = 17.51 | CASH DIV ON 25 SHS"));
  EXPECT_EQ(cash("CAD"), "12466.65");
  EXPECT_EQ(cash("USD"), "972.8");
}

TEST_F(SampleStatements, OfAnAmericanBrokerWithBrackets) {
  EXPECT_THAT(
      ledgerOf("harborline-brokerage.csv", "USD",
               {"tradeDate", "type", "symbol", "note", "numberOfShares", "cashAmount"}),
      ElementsAre(
          "2024-03-14 transfer 15000 USD | ELECTRONIC FUNDS TRANSFER RECEIVED",
          "2024-03-18 trade 120 OAKWN for 6288 USD = 6288 | OAKWYN FOODS COMPANY",
          "2024-03-18 trade 30.5 ALLUS for 4727.5 USD = 4727.5 | CORRIN TOTAL AMERICA FUND",
          "2024-04-02 dividend OAKWN on 120 54 USD = 54 | OAKWYN FOODS COMPANY",
          "2024-04-25 reinvested distribution ALLUS on 30.5 21.35 USD = 21.35 | CORRIN TOTAL "
          "AMERICA FUND",
          "2024-05-30 adjust 3.18 USD | CREDIT INTEREST FOR MAY",
          "2024-06-12 trade -20 OAKWN for -1102.4 USD = -1102.4 | OAKWYN FOODS COMPANY",
          "2024-06-28 transfer -500 USD | WIRE TO CHECKING ...4411"));
  EXPECT_EQ(cash("USD"), "4644.08");
}

TEST_F(SampleStatements, OfABankWithSignsAtTheEnd) {
  EXPECT_THAT(
      ledgerOf("penwyth-bank.tsv", "GBP", {"tradeDate", "type", "symbol", "cashAmount", "", ""}),
      ElementsAre("2024-01-15 transfer 2500 GBP | Salary sweep",
                  "2024-01-31 adjust 4.17 GBP | Interest earned in January",
                  "2024-02-02 transfer -750 GBP | To joint account",
                  "2024-02-29 adjust -5 GBP | Monthly account fee",
                  "2024-03-11 adjust 5 GBP | Refund of account fee",
                  "2024-05-27 transfer -200 GBP | Cash machine"));
  EXPECT_EQ(cash("GBP"), "1554.17") << "the last balance in the file";
}

TEST_F(SampleStatements, OfAContinentalBankWithDecimalCommas) {
  const InLocale german("de_DE.UTF-8");
  EXPECT_THAT(ledgerOf("rhenwerk-depot.csv", "EUR",
                       {"tradeDate", "settlementDate", "type", "symbol", "numberOfShares", "",
                        "cashAmount", "cashCurrency", "note"}),
              ElementsAre("2024-01-02 transfer 10000 EUR | Überweisung",
                          "2024-01-15/2024-01-17 trade 40 RHNWK.F for 3250 EUR = 3250 | Erstkauf",
                          "2024-02-26/2024-02-28 trade 12.5 ALPTC.F for 1505 EUR = 1505",
                          "2024-05-14/2024-05-16 dividend RHNWK.F on 40 44 EUR = 44 | für 2023",
                          "2024-06-03/2024-06-05 trade -10 RHNWK.F for -860 EUR = -860",
                          "2024-06-28 adjust -12.5 EUR | Depotgebühr"));
  EXPECT_EQ(cash("EUR"), "6136.5");
}

TEST_F(SampleStatements, WithoutAHeaderAndWithLineBreaksInCells) {
  world.hasHeader = false;
  EXPECT_THAT(
      ledgerOf("thrale-mossop.csv", "GBP",
               {"tradeDate", "type", "symbol", "numberOfShares", "cashAmount", "cashCurrency"}),
      ElementsAre("2024-01-31 transfer 5000 GBP | Bank transfer\r\nRef \"HOLIDAY\"",
                  "2024-02-05 trade 1000 SKERR.L for 1845.5 GBP = 1845.5",
                  "2024-02-19 trade 200 CUKEQ.L for 1120 GBP = 1120",
                  "2024-03-28 dividend CUKEQ.L on 200 18.4 GBP = 18.4",
                  "2024-04-08 trade -400 SKERR.L for -792.1 GBP = -792.1",
                  "2024-04-30 transfer -250 GBP | To current account"));
  EXPECT_EQ(cash("GBP"), "2595");
}

TEST_F(SampleStatements, OfCorporateActionsWithCompactDates) {
  world.atSetup = [](ImportExportFieldSetupViewController& setup) {
    auto& accessory = dynamic_cast<PortfolioTransactionsImporterAccessoryViewController&>(
        *setup.accessoryViewController);
    accessory.chooseCustomDateFormat();
    accessory.setDateFormatString("yyyyMMdd");
  };
  EXPECT_THAT(
      ledgerOf("keewana-desk.csv", "CAD",
               {"tradeDate", "settlementDate", "type", "symbol", "numberOfShares", "sharesNet",
                "cashAmount", "costBaseAdded", "note"}),
      ElementsAre(
          "2024-01-03 journal 300 MAPRK.TO at 12450 | From account 77-1024",
          "2024-01-03 journal 80.25 CWRLD.TO at 3210 | From account 77-1024",
          "2024-01-31 transfer 1000 CAD | Standing order",
          "2024-02-16 split 300 MAPRK.TO into 900 | Split of common shares",
          "2024-03-28 return of capital CWRLD.TO on 80.25 16.05 CAD = 16.05",
          "2024-03-28 capital gains dividend CWRLD.TO on 80.25 40.13 CAD = 40.13",
          "2024-04-05/2024-04-09 trade -150 MAPRK.TO for -2118 CAD = -2118 | Rebalancing",
          "2024-04-30 split 750 MAPRK.TO into 150",
          "2024-05-15 journal -50 MAPRK.TO | To account 77-2090",
          "2024-12-31 reinvested distribution CWRLD.TO on 80.25 22.87 CAD = 22.87 | Year end"));
  const auto snapshot = world.ledger.finalSnapshot();
  const auto& holdings = snapshot.equitySnapshots;
  const auto mapleRock = world.ledger.provider->equityWithId("MAPRK.TO");
  EXPECT_EQ(holdings.get(mapleRock).sharesHeld, 100);
  // 12450 less 150 of 900 shares, and then less 50 of 150.
  EXPECT_EQ(holdings.get(mapleRock).costBase, testing::dec("6916.67"));
  EXPECT_EQ(holdings.get(world.ledger.provider->equityWithId("CWRLD.TO")).costBase,
            testing::dec("3216.82"));
}

TEST_F(SampleStatements, OfAnAppThatTellsAmountsInBothCurrencies) {
  EXPECT_THAT(
      ledgerOf("nimbria-app.csv", "CAD",
               {"type", "tradeDate", "symbol", "numberOfShares", "cashAmount", "cashCurrency",
                "equivalentAmount"}),
      ElementsAre("2024-01-05 transfer 3000 CAD | Top-up", "2024-01-05 transfer 1200 USD | Top-up",
                  "2024-01-16 trade 4.125 QUARO for 1001.85 USD = 1351.2",
                  "2024-02-20 trade 75 KEEWA.TO for 1380 CAD = 1380",
                  "2024-03-29 dividend QUARO on 4.125 3.3 USD = 4.47",
                  "2024-05-31 trade -2.125 QUARO for -560.15 USD = -763.98",
                  "2024-06-03 adjust 25 CAD | Friend joined"));
  EXPECT_EQ(cash("USD"), "761.6");
}

}  // namespace
}  // namespace corvane
