#include "reports/income/income_report.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// The rows of one equity, on the way to what is held of it.
struct IncomeOfEquity {
  EquityIncome line;
  std::optional<YearMonthDay> heldSince;
  struct Paid {
    YearMonthDay day;
    Decimal perShare;    ///< in the primary currency
    Decimal inOwn;       ///< in the currency of the payment
    bool isOwnCurrency;  ///< whether that is the equity's
    std::size_t row;
  };
  std::vector<Paid> paid;  ///< in the shares of the row that the walk has reached

  void take(const PortfolioTransaction& row, std::size_t position, const Calendar& calendar) {
    const TransactionEffect effect = transactionEffect(row.basic.kind);
    line.lastRow = position;
    // The day is asked for where it is needed: a calendar takes longer than all else here.
    const auto day = [&] { return YearMonthDay::of(row.settlementDate(), calendar); };
    if (line.shares.isZero() && row.sharesNet && !row.sharesNet->isZero()) {
      heldSince = day();
    }
    line.shares = row.sharesNet.value_or(0);
    if (effect.splitInto && effect.declaredShares && !effect.splitInto->isZero()) {
      for (Paid& payment : paid) {
        payment.perShare = payment.perShare * *effect.declaredShares / *effect.splitInto;
        payment.inOwn = payment.inOwn * *effect.declaredShares / *effect.splitInto;
      }
    }
    if (effect.isYield() && effect.type != TransactionType::returnOfCapital &&
        effect.declaredShares && *effect.declaredShares > 0) {
      paid.push_back({day(), effect.equivalentAmount.value_or(0) / *effect.declaredShares,
                      effect.amount / *effect.declaredShares,
                      *effect.currency == (*effect.equity)->currency, position});
    }
  }
};

YearMonthDay yearBefore(const YearMonthDay& day) {
  return {day.year - 1, day.month, std::min(day.day, daysInMonth(day.year - 1, day.month))};
}

void finishIncome(IncomeOfEquity& of, const YearMonthDay& today, Portfolio& portfolio,
                  const std::function<std::optional<Decimal>(const Currency&)>& recentRate) {
  EquityIncome& line = of.line;
  const Currency& primary = portfolio.primaryCurrency();
  line.costBase = portfolio.transactions()[line.lastRow]->costBaseNet().value_or(0);
  const YearMonthDay start = yearBefore(today);
  std::vector<Decimal> perShare;
  for (const IncomeOfEquity::Paid& payment : of.paid) {
    if (start < payment.day) {
      perShare.push_back(payment.perShare);
      line.paidRows.push_back({payment.row, payment.day, payment.perShare * line.shares});
      line.lastYear += line.paidRows.back().amount;
    }
    if (payment.isOwnCurrency) {
      line.payments.push_back({payment.day, payment.inOwn});
    }
  }
  line.isSoFar = of.heldSince && start < *of.heldSince;
  line.yieldOnCost = yieldOn(line.costBase, line.shares, perShare);
  const EquityPointer& equity = line.equity;
  const auto rate =
      equity->currency == primary ? std::optional(Decimal(1)) : recentRate(equity->currency);
  if (equity->recentPrice && rate) {
    line.yieldOnValue = yieldOn(line.shares * *equity->recentPrice * *rate, line.shares, perShare);
  }
}

}  // namespace

std::vector<IncomeRow> recordedIncome(Portfolio& portfolio, const Calendar& calendar,
                                      bool includesReturnOfCapital) {
  std::vector<IncomeRow> income;
  const auto& rows = portfolio.transactions();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const PortfolioTransaction& row = *rows[i];
    const auto* yield = std::get_if<BasicTransaction::Yield>(&row.basic.kind);
    if (yield == nullptr ||
        (yield->type == BasicTransaction::YieldType::returnOfCapital && !includesReturnOfCapital)) {
      continue;
    }
    income.push_back({i,
                      yield->equity,
                      YearMonthDay::of(row.settlementDate(), calendar),
                      transactionType(yield->type),
                      yield->netShares,
                      yield->netAmount,
                      {portfolio.primaryCurrency(), yield->equivalentNetAmount}});
  }
  return income;
}

std::string IncomePeriod::name() const {
  constexpr int monthsOfQuarter = 3;
  switch (length) {
    case Length::month:
      return isoText(first).substr(0, 7);
    case Length::quarter:
      return std::to_string(first.year) + " Q" +
             std::to_string((first.month - 1) / monthsOfQuarter + 1);
    case Length::year:
      return std::to_string(first.year);
  }
  __builtin_unreachable();
}

std::vector<IncomePeriod> incomeByPeriod(std::span<const IncomeRow> rows,
                                         IncomePeriod::Length length, const YearMonthDay& today) {
  constexpr int monthsOfQuarter = 3;
  const auto startOf = [&](const YearMonthDay& day) -> YearMonthDay {
    switch (length) {
      case IncomePeriod::Length::month:
        return {day.year, day.month, 1};
      case IncomePeriod::Length::quarter:
        return {day.year, (day.month - 1) / monthsOfQuarter * monthsOfQuarter + 1, 1};
      case IncomePeriod::Length::year:
        return {day.year, 1, 1};
    }
    __builtin_unreachable();
  };
  // By the code, whose text stands in `rows`.
  std::map<std::pair<std::string_view, YearMonthDay>, IncomePeriod> periods;
  std::map<std::pair<std::string_view, YearMonthDay>, Decimal> before;
  for (const IncomeRow& row : rows) {
    const Currency& currency = row.equivalent.currency;
    const std::string_view code = currency.code;
    const YearMonthDay first = startOf(row.day);
    periods.try_emplace({code, first}, IncomePeriod{length, first, currency})
        .first->second.income += row.equivalent.amount;
    const YearMonthDay next{row.day.year + 1, row.day.month, 1};
    const YearMonthDay period = startOf(next);
    const bool isRunning = startOf(today) == period;
    if (!isRunning || next <= today) {
      before[{code, period}] += row.equivalent.amount;
    }
  }
  std::vector<IncomePeriod> listed;
  for (auto& [key, period] : periods) {
    const auto found = before.find(key);
    period.sameMonthsBefore = found == before.end() ? Decimal() : found->second;
    listed.push_back(std::move(period));
  }
  return listed;
}

std::vector<EquityIncome> equityIncomes(
    Portfolio& portfolio, const YearMonthDay& today, const Calendar& calendar,
    const std::function<std::optional<Decimal>(const Currency&)>& recentRate) {
  EquityMap<IncomeOfEquity> byEquity;
  // Rows of one ledger share their objects, which are found sooner than their identities.
  std::unordered_map<const EquityInfo*, IncomeOfEquity*> byObject;
  const Date end = daysAfter(today, 1).startIn(calendar);
  const auto& rows = portfolio.transactions();
  for (std::size_t i = 0; i < rows.size() && rows[i]->settlementDate() < end; ++i) {
    const EquityPointer* equity = rows[i]->basic.equity();
    if (equity != nullptr) {
      IncomeOfEquity*& of = byObject[equity->get()];
      if (of == nullptr) {
        of = &byEquity[*equity];
        of->line.equity = *equity;
      }
      of->take(*rows[i], i, calendar);
    }
  }
  std::vector<EquityIncome> lines;
  for (auto& [equity, of] : byEquity) {
    if (of.line.shares > 0) {
      finishIncome(of, today, portfolio, recentRate);
      lines.push_back(std::move(of.line));
    }
  }
  std::ranges::sort(lines, {}, [](const EquityIncome& line) {
    return std::tuple<std::string_view, std::string_view>(line.equity->symbol, line.equity->id());
  });
  return lines;
}

}  // namespace corvane
