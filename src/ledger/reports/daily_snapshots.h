// Puts the balance sheets of a range of days together, out of ledger rows and price series.
#pragma once

#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "core/market/quote.h"
#include "ledger/portfolio/portfolio.h"
#include "ledger/portfolio/portfolio_snapshot_group.h"
#include "ledger/reports/daily_steps.h"
#include "ledger/transaction/transaction_effect.h"

namespace corvane {

/// The balances of a portfolio in a range of days, which wait for the prices of what is held.
///
/// Each asset keeps its balances and its prices as steps, one for each day that brings a new value;
/// only merge() lays them side by side. So the order in which prices arrive makes no difference,
/// and a day on which nothing happens costs nothing. Not safe on two threads at once.
class DailySnapshots {
 public:
  /// `rows` are those that settle in the range, in ledger order, and `seed` is the state before
  /// them. The range ends with `lastDay` and starts with the day after `seedDay`. Days are those of
  /// `calendar`. Nothing is kept of `portfolio` and `rows`.
  DailySnapshots(const Portfolio& portfolio, Calendar calendar, YearMonthDay seedDay,
                 YearMonthDay lastDay, PortfolioSnapshot seed,
                 std::span<const TransactionPointer> rows);

  /// The equities that prices are needed of: all that are held or traded.
  [[nodiscard]] std::vector<EquityPointer> equities() const;
  /// The currencies that rates are needed of: those that are held or traded and those of the
  /// equities, without the primary one.
  [[nodiscard]] std::vector<Currency> foreignCurrencies() const;

  /// Takes the daily bars of one of equities(), or of the exchange rate of one of
  /// foreignCurrencies().
  ///
  /// The close of a bar is the price of the day on which it starts by the clocks of `exchange`: a
  /// session in Tokyo belongs to Tokyo's day, wherever the user is. The day before the range is
  /// priced at the open of the first bar, so that a change over the range starts from where the
  /// range opened. Bars that start outside the range and the day before it have no balances to go
  /// with and are left out.
  void addPrices(const EquityPointer& equity, const std::vector<Quote>& quotes,
                 const Calendar& exchange);
  void addRates(const Currency& currency, const std::vector<Quote>& quotes,
                const Calendar& exchange);

  /// The balance sheets with all that has been added. To be called once.
  [[nodiscard]] PortfolioSnapshotGroup merge();

 private:
  struct Cash {
    Currency currency;
    DailySteps<PortfolioSnapshot::CurrencySnapshot> balances;  ///< none where not held or traded
    DailySteps<Decimal> rates;
  };
  struct Holding {
    EquityPointer equity;
    DailySteps<PortfolioSnapshot::EquitySnapshot> balances;
    DailySteps<Decimal> prices;
  };

  void take(const PortfolioTransaction& row, YearMonthDay day, bool usesCashAccounts);
  void takeTrade(const PortfolioTransaction& row, const TransactionEffect& trade);
  Cash& cashOf(const Currency& currency);
  Cash& heldCashOf(const Currency& currency);
  Holding& holdingOf(const EquityPointer& equity);
  void addSeries(DailySteps<Decimal>& series, const std::vector<Quote>& quotes,
                 const Calendar& exchange) const;
  [[nodiscard]] std::vector<YearMonthDay> daysWithValues() const;

  Currency primary_;
  Calendar calendar_;
  YearMonthDay seedDay_;
  YearMonthDay lastDay_;
  PortfolioSnapshot seed_;
  std::vector<Cash> cash_;
  std::unordered_map<Currency, std::size_t> cashPositions_;
  std::vector<Holding> holdings_;
  EquityMap<std::size_t> holdingPositions_;
  EquityMap<PortfolioSnapshotGroup::TradingSummary> tradingSummaryByEquity_;
};

}  // namespace corvane
