// Somebody who has saved and invested on the sample market for years.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "ledger/transaction/basic_transaction.h"
#include "samplemarket/prices/daily_history.h"

namespace corvane::samplemarket {

/// Lives through the days of the market one after the other and keeps a list of what happens:
/// orders at closing prices, dividends and splits of what is held. All that is asked for happens on
/// the day of the call; a trade settles two days later.
class InventedInvestor {
 public:
  /// What becomes of the dividends of an equity.
  using Income = BasicTransaction::YieldType;

  InventedInvestor(std::shared_ptr<QuoteProvider> provider, Currency primaryCurrency,
                   std::int64_t firstDay);

  /// Lets the days before `day` pass. Days are counted from 1970-01-01.
  void goOnTo(std::int64_t day);

  void deposit(const std::string& currency, int amount, const std::string& note = "");
  void adjustCash(const std::string& currency, const std::string& amount, const std::string& note);
  /// Buys as many whole shares as `budget` pays for; none while a split is near.
  void buy(const std::string& symbol, int budget);
  /// Sells a part of what is held, in percent; nothing while a split is near.
  void sell(const std::string& symbol, int percent);
  /// Moves shares in at today's price as their cost base, or out where negative.
  void journal(const std::string& symbol, int shares, const std::string& note);
  void takeIncomeAs(const std::string& symbol, Income income) { incomes_[symbol] = income; }

  /// All that has happened, by settlement date.
  [[nodiscard]] std::vector<BasicTransaction> ledger() const;

 private:
  struct Holding {
    Decimal shares;
    std::vector<std::pair<std::int64_t, Decimal>> unsettled;  ///< by day of settlement
  };

  const DailyHistory& history(const std::string& symbol);
  /// The last closing price by the end of today, in the equity's currency.
  Decimal price(const std::string& symbol);
  Decimal inPrimaryCurrency(const Decimal& amount, const Currency& currency);
  bool isSplitNear(const std::string& symbol);
  void passDay();
  void passEvents(const std::string& symbol, Holding& holding);
  void trade(const std::string& symbol, const Decimal& shares);
  void record(BasicTransaction::Kind kind, std::int64_t settlementDay, std::string note = "");
  EquityPointer equity(const std::string& symbol);

  const std::shared_ptr<QuoteProvider> provider_;
  const Currency primaryCurrency_;
  std::int64_t today_;
  std::map<std::string, DailyHistory> histories_;
  std::map<std::string, EquityPointer> equities_;
  std::map<std::string, Holding> holdings_;
  std::map<std::string, Income> incomes_;
  std::vector<BasicTransaction> ledger_;
};

}  // namespace corvane::samplemarket
