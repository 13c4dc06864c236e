#include "ledger/reports/daily_snapshots.h"

#include <iterator>
#include <ranges>
#include <utility>

#include "ledger/transaction/transaction_effect.h"

namespace corvane {
namespace {

using CurrencySnapshot = PortfolioSnapshot::CurrencySnapshot;
using EquitySnapshot = PortfolioSnapshot::EquitySnapshot;

template <typename Value>
void addDays(const DailySteps<Value>& steps, std::vector<YearMonthDay>& days,
             std::vector<YearMonthDay>& scratch) {
  scratch.clear();
  std::ranges::set_union(days, steps.steps() | std::views::transform(&DailySteps<Value>::Step::day),
                         std::back_inserter(scratch));
  days.swap(scratch);
}

}  // namespace

DailySnapshots::DailySnapshots(const Portfolio& portfolio, Calendar calendar, YearMonthDay seedDay,
                               YearMonthDay lastDay, PortfolioSnapshot seed,
                               std::span<const TransactionPointer> rows)
    : primary_(portfolio.primaryCurrency()),
      calendar_(std::move(calendar)),
      seedDay_(seedDay),
      lastDay_(lastDay),
      seed_(std::move(seed)) {
  for (const auto& [currency, cash] : seed_.currencySnapshots) {
    if (!cash.cashOnHand.isZero()) {
      heldCashOf(currency);
    }
  }
  for (const auto& [equity, holding] : seed_.equitySnapshots) {
    if (!holding.sharesHeld.isZero()) {
      holdingOf(equity);
    }
  }
  for (const auto& row : rows) {
    take(*row, YearMonthDay::of(row->settlementDate(), calendar_), portfolio.usesCashAccounts);
  }
  // Prices in a currency that no cash is held in need its rate all the same.
  for (const Holding& holding : holdings_) {
    if (holding.equity->currency != primary_) {
      cashOf(holding.equity->currency);
    }
  }
}

void DailySnapshots::take(const PortfolioTransaction& row, YearMonthDay day,
                          bool usesCashAccounts) {
  const TransactionEffect effect = transactionEffect(row.basic.kind);
  if (effect.currency != nullptr && row.cashNet) {
    auto& balances = heldCashOf(*effect.currency).balances;
    CurrencySnapshot cash = balances.last();
    cash.cashOnHand = *row.cashNet;
    cash.netCashDeposited += effect.deposited(usesCashAccounts);
    balances.set(day, cash);
  }

  const auto costBase = row.costBaseNet();
  if (effect.equity != nullptr && row.sharesNet && costBase) {
    auto& balances = holdingOf(*effect.equity).balances;
    EquitySnapshot holding = balances.last();
    holding.sharesHeld = *row.sharesNet;
    holding.costBase = *costBase;
    holding.cumulativeCapitalGain += row.capitalGain().value_or(0);
    balances.set(day, holding);
    if (effect.type == TransactionType::trade) {
      takeTrade(row, effect);
    }
  }
}

void DailySnapshots::takeTrade(const PortfolioTransaction& row, const TransactionEffect& trade) {
  auto& summary = tradingSummaryByEquity_[*trade.equity];
  if (trade.sharesAdded > 0) {
    summary.sharesBought += trade.sharesAdded;
    summary.costBaseAdded += trade.costAdded;
    return;
  }
  summary.sharesSold -= trade.sharesAdded;
  summary.proceedsOfSale += trade.equivalentAmount.value_or(0);
  const auto costBaseNet = row.costBaseNet();
  if (row.costBasePrior && costBaseNet) {
    summary.costBaseDisposed += *row.costBasePrior - *costBaseNet;
  }
}

DailySnapshots::Cash& DailySnapshots::cashOf(const Currency& currency) {
  const auto [found, isNew] = cashPositions_.try_emplace(currency, cash_.size());
  if (isNew) {
    cash_.push_back({currency, {}, {}});
  }
  return cash_[found->second];
}

DailySnapshots::Cash& DailySnapshots::heldCashOf(const Currency& currency) {
  Cash& cash = cashOf(currency);
  if (cash.balances.isEmpty()) {
    cash.balances.set(seedDay_, seed_.currencySnapshots.get(currency));
  }
  return cash;
}

DailySnapshots::Holding& DailySnapshots::holdingOf(const EquityPointer& equity) {
  const auto [found, isNew] = holdingPositions_.try_emplace(equity, holdings_.size());
  if (isNew) {
    EquitySnapshot start = seed_.equitySnapshots.get(equity);
    // A cost base can be left on no shares, by a distribution after everything was sold. It shows
    // from the first row in the range on.
    if (start.sharesHeld.isZero()) {
      start.costBase = 0;
    }
    holdings_.push_back({equity, {}, {}});
    holdings_.back().balances.set(seedDay_, start);
  }
  return holdings_[found->second];
}

std::vector<EquityPointer> DailySnapshots::equities() const {
  std::vector<EquityPointer> equities;
  for (const Holding& holding : holdings_) {
    equities.push_back(holding.equity);
  }
  return equities;
}

std::vector<Currency> DailySnapshots::foreignCurrencies() const {
  std::vector<Currency> currencies;
  for (const Cash& cash : cash_) {
    if (cash.currency != primary_) {
      currencies.push_back(cash.currency);
    }
  }
  return currencies;
}

void DailySnapshots::addPrices(const EquityPointer& equity, const std::vector<Quote>& quotes,
                               const Calendar& exchange) {
  addSeries(holdings_[holdingPositions_.at(equity)].prices, quotes, exchange);
}

void DailySnapshots::addRates(const Currency& currency, const std::vector<Quote>& quotes,
                              const Calendar& exchange) {
  addSeries(cash_[cashPositions_.at(currency)].rates, quotes, exchange);
}

void DailySnapshots::addSeries(DailySteps<Decimal>& series, const std::vector<Quote>& quotes,
                               const Calendar& exchange) const {
  bool isFirst = true;
  for (const Quote& quote : quotes) {
    const YearMonthDay day = YearMonthDay::of(quote.fromDate, exchange);
    if (day < seedDay_ || lastDay_ < day) {
      continue;
    }
    if (std::exchange(isFirst, false) && quote.open) {
      series.set(seedDay_, *quote.open);
    }
    if (quote.close) {
      series.set(day, *quote.close);
    }
  }
}

std::vector<YearMonthDay> DailySnapshots::daysWithValues() const {
  std::vector<YearMonthDay> days = {seedDay_};
  std::vector<YearMonthDay> scratch;
  for (const Cash& cash : cash_) {
    addDays(cash.balances, days, scratch);
    addDays(cash.rates, days, scratch);
  }
  for (const Holding& holding : holdings_) {
    addDays(holding.balances, days, scratch);
    addDays(holding.prices, days, scratch);
  }
  return days;
}

PortfolioSnapshotGroup DailySnapshots::merge() {
  PortfolioSnapshotGroup group;
  const std::vector<YearMonthDay> days = daysWithValues();
  group.sortedSnapshots.reserve(days.size());
  for (const YearMonthDay day : days) {
    // The seed shows also what is neither held nor traded any more: past gains, past deposits.
    PortfolioSnapshot& today =
        group.sortedSnapshots
            .emplace_back(day, day == seedDay_ ? std::move(seed_) : PortfolioSnapshot())
            .snapshot;
    today.currencySnapshots.reserve(cash_.size());
    for (Cash& line : cash_) {
      today.currencySnapshots.update(line.currency, [&](CurrencySnapshot& cash) {
        if (const auto* balance = line.balances.advanceTo(day)) {
          cash = *balance;
        }
        if (line.currency == primary_) {
          cash.exchangeRate = 1;
        } else if (const Decimal* rate = line.rates.advanceTo(day)) {
          cash.exchangeRate = *rate;
        }
      });
    }
    today.equitySnapshots.reserve(holdings_.size());
    for (Holding& line : holdings_) {
      today.equitySnapshots.update(line.equity, [&](EquitySnapshot& holding) {
        holding = *line.balances.advanceTo(day);
        if (const Decimal* price = line.prices.advanceTo(day)) {
          holding.sharePrice = *price;
        }
      });
    }
  }
  for (const Cash& line : cash_) {
    if (!line.balances.isEmpty()) {
      group.currenciesHeldOrTraded.insert(line.currency);
    }
  }
  for (const Holding& line : holdings_) {
    group.equitiesHeldOrTraded.insert(line.equity);
  }
  group.tradingSummaryByEquity = std::move(tradingSummaryByEquity_);
  return group;
}

}  // namespace corvane
