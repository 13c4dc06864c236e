// Makes the workspace that is shown on the sample market: ten years of two people's investments.
// Its one argument is where the package goes.

#include "platform/time/civil_day.h"
#include "sample/sample_workspace.h"
#include "samplemarket/workspace/invented_investor.h"

namespace corvane::samplemarket {
namespace {

constexpr int firstYear = 2016;
constexpr int lastYear = 2026;

/// Saves every quarter, buys at home and abroad, and holds on to most of it.
std::vector<BasicTransaction> retirementLedger(const std::shared_ptr<QuoteProvider>& provider) {
  InventedInvestor investor(provider, Currency::cad(), dayCount(firstYear, 1, 1));
  investor.takeIncomeAs("CWRLD.TO", BasicTransaction::YieldType::reinvestedDistribution);
  investor.takeIncomeAs("ALLCA.TO", BasicTransaction::YieldType::capitalGainsDividend);
  investor.takeIncomeAs("LAURV.TO", BasicTransaction::YieldType::returnOfCapital);
  const std::vector<std::string> homeShares = {"ALLCA.TO", "BOREA.TO", "TAMRK.TO", "CWRLD.TO",
                                               "LAURV.TO"};
  struct Abroad {
    std::string currency;
    int amount;
    std::string symbol;
  };
  const std::vector<Abroad> abroad = {{"USD", 4000, "HOLVK"},
                                      {"EUR", 3000, "RHNWK.F"},
                                      {"JPY", 400000, "0417.T"},
                                      {"GBP", 2500, "PENWY.L"},
                                      {"USD", 5000, "QUARO"}};

  std::size_t turn = 0;
  for (int year = firstYear; year <= lastYear; ++year) {
    for (const int month : {1, 4, 7, 10}) {
      investor.goOnTo(dayCount(year, month, 6));
      investor.deposit("CAD", 6000, month == 1 ? "Yearly plan" : "");
      investor.buy(homeShares[turn++ % homeShares.size()], 5800);
    }
    investor.goOnTo(dayCount(year, 10, 20));
    const Abroad& purchase = abroad[static_cast<std::size_t>(year) % abroad.size()];
    investor.deposit(purchase.currency, purchase.amount);
    investor.buy(purchase.symbol, purchase.amount);
    if (year == lastYear) {
      break;
    }
    investor.goOnTo(dayCount(year, 11, 4));
    if (year == 2018) {
      investor.journal("MAPRK.TO", 120, "Moved in from an employer's plan");
    }
    if (year == 2021) {
      investor.sell("BOREA.TO", 40);
      investor.sell("HOLVK", 50);
    }
    if (year == 2023) {
      investor.journal("MAPRK.TO", -40, "A gift");
      investor.sell("RHNWK.F", 30);
    }
    investor.goOnTo(dayCount(year, 12, 20));
    investor.adjustCash("CAD", "18.40", "Interest");
    investor.adjustCash("CAD", "-25.00", "Account fee");
    if (year == 2022) {
      investor.deposit("CAD", -3500, "New roof");
    }
  }
  return investor.ledger();
}

/// Trades in and out, in dollars, without accounts.
std::vector<BasicTransaction> tradingLedger(const std::shared_ptr<QuoteProvider>& provider) {
  InventedInvestor investor(provider, Currency::usd(), dayCount(firstYear, 1, 1));
  const std::vector<std::string> symbols = {"NIMBR", "CASTR", "VESTM", "OAKWN", "PELLR"};
  std::size_t turn = 0;
  for (int year = firstYear; year <= lastYear; ++year) {
    for (const int month : {2, 5, 8}) {
      investor.goOnTo(dayCount(year, month, 15));
      investor.buy(symbols[turn % symbols.size()], 7500);
      investor.goOnTo(dayCount(year, month + 1, 12));
      investor.sell(symbols[(turn + 2) % symbols.size()], 60);
      ++turn;
    }
  }
  return investor.ledger();
}

void write(const std::filesystem::path& package) {
  const auto provider = sample::sampleProvider();
  sample::writeWorkspace(
      package, provider,
      {{.name = "Retirement",
        .primaryCurrency = Currency::cad(),
        .ledger = retirementLedger(provider)},
       {.name = "Trading",
        .primaryCurrency = Currency::usd(),
        .usesCashAccounts = false,
        .ledger = tradingLedger(provider)}},
      {"^CTO60", "^CNY100", "CASTR", "NIMBR", "BOREA.TO", "KEEWA.TO", "THRAL.L", "0582.T"});
}

}  // namespace
}  // namespace corvane::samplemarket

int main(int count, char** arguments) {
  return corvane::sample::runMaker(count, arguments, corvane::samplemarket::write);
}
