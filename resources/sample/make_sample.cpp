// Makes the workspace that a first run shows: a few years of somebody who holds well-known shares.
// Prices, rates and dividends are about those of the time; the person is invented.

#include "ledger/manager/portfolio_manager.h"
#include "platform/time/civil_day.h"
#include "sample/sample_workspace.h"

namespace corvane::sample {
namespace {

Decimal number(std::string_view text) {
  return Decimal::fromWholeString(text).value();
}

/// Writes a ledger in the order of what happens.
class LedgerWriter {
 public:
  explicit LedgerWriter(std::shared_ptr<QuoteProvider> provider) : provider_(std::move(provider)) {}

  LedgerWriter& on(int year, int month, int day) {
    date_ = Date::since1970(static_cast<double>(dayCount(year, month, day)) * 86400 + 43200);
    return *this;
  }
  LedgerWriter& transfer(const char* currency, const char* amount, const char* note = nullptr) {
    return record(BasicTransaction::Transfer{{Currency::byCode().at(currency), number(amount)}},
                  note);
  }
  LedgerWriter& adjust(const char* amount, const char* note) {
    return record(BasicTransaction::CashAdjustment{{Currency::cad(), number(amount)}}, note);
  }
  /// Buys for `cash`, or sells where both figures are negative. `rate` is the price of one unit of
  /// the currency in Canadian dollars.
  LedgerWriter& trade(const char* symbol, const char* shares, const char* cash,
                      const char* currency = "CAD", const char* rate = "1") {
    const Currency paidIn = Currency::byCode().at(currency);
    return record(BasicTransaction::Trade{
        equity(symbol, paidIn), {paidIn, number(cash)}, inCAD(cash, rate), number(shares)});
  }
  LedgerWriter& income(BasicTransaction::YieldType type, const char* symbol, const char* amount,
                       const char* currency = "CAD", const char* rate = "1") {
    const Currency paidIn = Currency::byCode().at(currency);
    return record(BasicTransaction::Yield{
        type, equity(symbol, paidIn), std::nullopt, {paidIn, number(amount)}, inCAD(amount, rate)});
  }
  LedgerWriter& split(const char* symbol, const char* before, const char* after) {
    return record(
        BasicTransaction::Split{provider_->equityWithId(symbol), number(before), number(after)});
  }
  LedgerWriter& journal(const char* symbol, const char* shares, const char* costBase,
                        const char* note) {
    return record(BasicTransaction::JournaledShares{provider_->equityWithId(symbol), number(shares),
                                                    number(costBase)},
                  note);
  }

  [[nodiscard]] std::vector<BasicTransaction> take() { return std::move(ledger_); }

 private:
  static Decimal inCAD(const char* amount, const char* rate) {
    return roundedToMinorUnits(number(amount) * number(rate), Currency::cad());
  }
  EquityPointer equity(const char* symbol, const Currency& currency) {
    EquityPointer& known = equities_.emplace_back(provider_->equityWithId(symbol));
    known->currency = currency;
    return known;
  }
  LedgerWriter& record(BasicTransaction::Kind kind, const char* note = nullptr) {
    ledger_.push_back({std::move(kind), date_, date_,
                       note == nullptr ? std::nullopt : std::optional<std::string>(note)});
    return *this;
  }

  const std::shared_ptr<QuoteProvider> provider_;
  Date date_;
  std::vector<EquityPointer> equities_;
  std::vector<BasicTransaction> ledger_;
};

std::vector<BasicTransaction> savings(const std::shared_ptr<QuoteProvider>& provider) {
  using enum BasicTransaction::YieldType;
  LedgerWriter ledger(provider);
  ledger.on(2017, 1, 10).transfer("CAD", "15000", "First savings");
  ledger.on(2017, 1, 16).trade("XIC.TO", "200", "4925").trade("RY.TO", "50", "4680");
  ledger.on(2017, 4, 3).transfer("USD", "6000");
  ledger.on(2017, 4, 5).trade("MSFT", "60", "3935", "USD", "1.34");
  ledger.on(2017, 5, 24).income(dividend, "RY.TO", "43.50");
  ledger.on(2017, 6, 8).income(dividend, "MSFT", "23.40", "USD", "1.35");
  ledger.on(2017, 12, 29).income(reinvestedDistribution, "XIC.TO", "31.20");
  ledger.on(2018, 2, 5).transfer("CAD", "5000");
  ledger.on(2018, 2, 7).trade("ENB.TO", "100", "4395");
  ledger.on(2018, 6, 11).trade("AAPL", "10", "1920", "USD", "1.30");
  ledger.on(2018, 9, 4).income(dividend, "ENB.TO", "67.10");
  ledger.on(2018, 12, 31)
      .income(capitalGainsDividend, "XIC.TO", "18.60")
      .income(returnOfCapital, "XIC.TO", "3.10");
  ledger.on(2019, 5, 24).income(dividend, "RY.TO", "51.00");
  ledger.on(2019, 9, 3).income(dividend, "ENB.TO", "73.80");
  ledger.on(2020, 8, 31).split("AAPL", "10", "40");
  ledger.on(2020, 11, 16).trade("MSFT", "-20", "-4275", "USD", "1.31");
  ledger.on(2021, 1, 7).transfer("CAD", "4000");
  ledger.on(2021, 6, 15).trade("RY.TO", "20", "2525");
  ledger.on(2021, 12, 31).adjust("12.35", "Interest").adjust("-25", "Account fee");
  ledger.on(2022, 4, 4).transfer("EUR", "2500");
  ledger.on(2022, 5, 9).trade("SAP.DE", "25", "2380", "EUR", "1.37");
  ledger.on(2023, 2, 24).journal("RY.TO", "10", "1310", "From an employer's plan");
  ledger.on(2023, 5, 15).income(dividend, "SAP.DE", "51.25", "EUR", "1.47");
  ledger.on(2023, 7, 10).transfer("CAD", "-2000", "Holiday");
  ledger.on(2024, 5, 24).income(dividend, "RY.TO", "110.40");
  ledger.on(2024, 9, 3).income(dividend, "ENB.TO", "91.50");
  return ledger.take();
}

void write(const std::filesystem::path& package) {
  const auto provider = sampleProvider();
  writeWorkspace(
      package, provider,
      {{.name = "Savings", .primaryCurrency = Currency::cad(), .ledger = savings(provider)}},
      {"^GSPTSE", "^GSPC", "AAPL", "MSFT", "RY.TO", "SHOP.TO", "SAP.DE", "EURCAD=X"});
}

}  // namespace
}  // namespace corvane::sample

int main(int count, char** arguments) {
  return corvane::sample::runMaker(count, arguments, corvane::sample::write);
}
