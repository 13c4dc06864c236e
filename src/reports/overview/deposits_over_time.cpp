#include "reports/overview/deposits_over_time.h"

#include <map>
#include <optional>
#include <string>

#include "ledger/transaction/transaction_effect.h"
#include "reports/series/price_cursor.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

PriceCursor cursorOf(const MarketHistory& history, const CurrencyPair& pair, std::int64_t baseDay) {
  const auto line = history.rates.find(pair);
  return {line == history.rates.end() ? nullptr : &line->second, baseDay, true};
}

/// What one portfolio has been given in one currency, and the way of that to the shown currency.
struct DepositsInCurrency {
  std::vector<PriceCursor> rates;  ///< to be multiplied
  Decimal balance = {};

  /// None where a rate is not known.
  std::optional<Decimal> worthOn(const YearMonthDay& day) {
    Decimal worth = balance;
    for (PriceCursor& rate : rates) {
      rate.advanceTo(day);
      if (rate.price() == nullptr) {
        return balance.isZero() ? std::optional<Decimal>(0) : std::nullopt;
      }
      worth = worth * *rate.price();
    }
    return worth;
  }
};

/// The deposits of one portfolio on its way through the days.
class DepositWalk {
 public:
  DepositWalk(Portfolio& portfolio, const Currency& shown, const MarketHistory& history,
              std::int64_t baseDay)
      : portfolio_(portfolio), shown_(shown), history_(history), baseDay_(baseDay) {}

  /// At the end of `day`, which is `end` for the ledger.
  std::optional<Decimal> worthOn(const YearMonthDay& day, Date end) {
    const auto& rows = portfolio_.transactions();
    for (; next_ < rows.size() && rows[next_]->settlementDate() < end; ++next_) {
      const TransactionEffect effect = transactionEffect(rows[next_]->basic.kind);
      const Decimal deposited = effect.deposited(portfolio_.usesCashAccounts);
      if (!deposited.isZero()) {
        depositsIn(*effect.currency).balance += deposited;
      }
    }
    std::optional<Decimal> sum = 0;
    for (auto& [code, deposits] : byCurrency_) {
      const auto worth = deposits.worthOn(day);
      sum = sum && worth ? std::optional(*sum + *worth) : std::nullopt;
    }
    return sum;
  }

 private:
  DepositsInCurrency& depositsIn(const Currency& currency) {
    const auto [place, isNew] = byCurrency_.try_emplace(std::string(currency.code));
    if (isNew && currency != shown_) {
      const Currency& primary = portfolio_.primaryCurrency();
      if (currency != primary) {
        place->second.rates.push_back(cursorOf(history_, {currency, primary}, baseDay_));
      }
      if (primary != shown_) {
        place->second.rates.push_back(cursorOf(history_, {primary, shown_}, baseDay_));
      }
    }
    return place->second;
  }

  Portfolio& portfolio_;
  const Currency& shown_;
  const MarketHistory& history_;
  const std::int64_t baseDay_;
  std::size_t next_ = 0;
  std::map<std::string, DepositsInCurrency> byCurrency_;
};

}  // namespace

std::vector<Decimal> depositsOverTime(std::span<const PortfolioPointer> portfolios,
                                      std::span<const ValuationDay> days, const Currency& currency,
                                      const MarketHistory& history, const Calendar& calendar) {
  std::vector<Decimal> deposits;
  if (days.empty()) {
    return deposits;
  }
  std::vector<DepositWalk> walks;
  for (const PortfolioPointer& portfolio : portfolios) {
    walks.emplace_back(*portfolio, currency, history, dayNumber(days.front().day));
  }
  deposits.reserve(days.size());
  for (const ValuationDay& day : days) {
    const Date end = daysAfter(day.day, 1).startIn(calendar);
    Decimal& sum = deposits.emplace_back();
    for (DepositWalk& walk : walks) {
      const auto worth = walk.worthOn(day.day, end);
      if (!worth) {
        return {};
      }
      sum += *worth;
    }
  }
  return deposits;
}

void addDepositNeeds(MarketNeeds& needs, const Portfolio& portfolio) {
  for (const auto& [year, balances] : portfolio.snapshotsByYear) {
    for (const auto& [currency, cash] : balances.currencySnapshots) {
      if (!cash.netCashDeposited.isZero() && currency != portfolio.primaryCurrency()) {
        needs.pairs.insert({currency, portfolio.primaryCurrency()});
      }
    }
  }
}

}  // namespace corvane
