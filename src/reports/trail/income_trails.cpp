#include "reports/trail/income_trails.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "ledger/transaction/transaction_effect.h"
#include "reports/series/report_days.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

YearMonthDay oneYearBefore(const YearMonthDay& day) {
  return {day.year - 1, day.month, std::min(day.day, daysInMonth(day.year - 1, day.month))};
}

/// The holding of an equity, and what a share of today was paid in the last twelve months.
struct PaidHolding {
  Decimal shares;
  Decimal costBase;
  std::size_t lastRow = 0;
  std::vector<TrailNode> perShare;
};

TrailNode paymentPerShare(Portfolio& portfolio, std::size_t row, const TransactionEffect& effect,
                          const YearMonthDay& day) {
  const std::string unit(portfolio.primaryCurrency().code);
  TrailNode paid = fromRow({.label = "Paid, as entered",
                            .value = effect.equivalentAmount.value_or(0),
                            .unit = unit,
                            .day = day},
                           portfolio, row);
  TrailNode shares =
      fromRow({.label = "On shares", .value = *effect.declaredShares, .day = day}, portfolio, row);
  TrailNode made =
      quotientOf("Paid per share on " + isoText(day), unit, std::move(paid), std::move(shares));
  made.day = day;
  return made;
}

void restateForSplit(TrailNode& perShare, const TransactionEffect& effect, Portfolio& portfolio,
                     std::size_t row) {
  const std::string unit = perShare.unit;
  const auto day = perShare.day;
  TrailNode before = fromRow({.label = "Shares before the split", .value = *effect.declaredShares},
                             portfolio, row);
  TrailNode after =
      fromRow({.label = "Shares after the split", .value = *effect.splitInto}, portfolio, row);
  TrailNode product =
      productOf("Paid per share × shares before", unit, {std::move(perShare), std::move(before)});
  perShare =
      quotientOf("Paid per share of after the split", unit, std::move(product), std::move(after));
  perShare.day = day;
}

PaidHolding paidHolding(Portfolio& portfolio, const EquityPointer& equity,
                        const YearMonthDay& today, const Calendar& calendar) {
  PaidHolding holding;
  const YearMonthDay start = oneYearBefore(today);
  const auto& rows = portfolio.transactions();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const EquityPointer* other = rows[i]->basic.equity();
    if (other == nullptr || !(**other == *equity)) {
      continue;
    }
    const YearMonthDay day = YearMonthDay::of(rows[i]->settlementDate(), calendar);
    if (today < day) {
      break;
    }
    const TransactionEffect effect = transactionEffect(rows[i]->basic.kind);
    holding.shares = rows[i]->sharesNet.value_or(0);
    holding.costBase = rows[i]->costBaseNet().value_or(0);
    holding.lastRow = i;
    if (effect.splitInto && effect.declaredShares && !effect.splitInto->isZero()) {
      for (TrailNode& payment : holding.perShare) {
        restateForSplit(payment, effect, portfolio, i);
      }
    }
    const bool pays = effect.isYield() && effect.type != TransactionType::returnOfCapital &&
                      effect.declaredShares && *effect.declaredShares > 0;
    if (pays && start < day) {
      holding.perShare.push_back(paymentPerShare(portfolio, i, effect, day));
    }
  }
  return holding;
}

/// What the shares of today would have been paid.
TrailNode paidOnHolding(Portfolio& portfolio, PaidHolding& holding) {
  const std::string unit(portfolio.primaryCurrency().code);
  TrailNode perShare =
      sumOf("Paid per share in the last 12 months", unit, std::exchange(holding.perShare, {}));
  TrailNode shares =
      fromRow({.label = "Shares held", .value = holding.shares}, portfolio, holding.lastRow);
  return productOf("Paid on the shares of today", unit, {std::move(perShare), std::move(shares)});
}

}  // namespace

std::optional<TrailNode> yieldOnCostTrail(Portfolio& portfolio, const EquityPointer& equity,
                                          const YearMonthDay& today, const Calendar& calendar) {
  PaidHolding holding = paidHolding(portfolio, equity, today, calendar);
  if (holding.costBase <= 0) {
    return std::nullopt;
  }
  TrailNode cost = fromRow({.label = "Cost base",
                            .value = holding.costBase,
                            .unit = std::string(portfolio.primaryCurrency().code)},
                           portfolio, holding.lastRow);
  TrailNode paid = paidOnHolding(portfolio, holding);
  return percentOf("Yield on cost of " + equity->symbol,
                   quotientOf("Paid by cost base", "", std::move(paid), std::move(cost)));
}

std::optional<TrailNode> yieldOnValueTrail(Portfolio& portfolio, const EquityPointer& equity,
                                           const Decimal& rate, const YearMonthDay& today,
                                           const Calendar& calendar) {
  PaidHolding holding = paidHolding(portfolio, equity, today, calendar);
  if (!equity->recentPrice || holding.shares * *equity->recentPrice * rate <= 0) {
    return std::nullopt;
  }
  const std::string primary(portfolio.primaryCurrency().code);
  std::vector<TrailNode> factors = {{.label = "Shares held", .value = holding.shares},
                                    {.label = "Price",
                                     .value = *equity->recentPrice,
                                     .unit = std::string(equity->currency.code),
                                     .source = "latest price of " + equity->symbol}};
  if (equity->currency != portfolio.primaryCurrency()) {
    factors.push_back({.label = "Rate of " + std::string(equity->currency.code),
                       .value = rate,
                       .source = "latest rate in " + primary});
  }
  TrailNode paid = paidOnHolding(portfolio, holding);
  return percentOf("Yield on value of " + equity->symbol,
                   quotientOf("Paid by value", "", std::move(paid),
                              productOf("Value", primary, std::move(factors))));
}

std::optional<TrailNode> projectionTrail(const ExpectedIncome& income) {
  if (!income.rate) {
    return std::nullopt;
  }
  const Currency& primary = income.portfolio->primaryCurrency();
  const std::string unit(primary.code);
  const Currency& own = income.line.equity->currency;
  std::vector<TrailNode> parts;
  for (const IncomeProjection::Payment& payment : income.projection.payments) {
    std::vector<TrailNode> factors = {
        {.label = "Shares held", .value = income.line.shares},
        {.label = payment.isDeclared ? "Declared per share" : "Paid per share a year before",
         .value = payment.perShare,
         .unit = std::string(own.code),
         .source = income.isFromOwnRows ? "the ledger of “" + income.portfolio->name + "”"
                                        : "dividends of " + income.line.equity->symbol}};
    if (own != primary) {
      factors.push_back({.label = "Rate of " + std::string(own.code),
                         .value = *income.rate,
                         .source = "latest rate in " + unit});
    }
    TrailNode part =
        roundedTo(primary.minorUnits,
                  (payment.isDeclared ? "Declared for " : "Estimated for ") + isoText(payment.day),
                  productOf("Shares × amount", unit, std::move(factors)));
    part.day = payment.day;
    parts.push_back(std::move(part));
  }
  for (const IncomeProjection::LeftOut& left : income.projection.leftOut) {
    parts.push_back({.label = "Left out: " + left.perShare.description() + " a share",
                     .value = 0,
                     .unit = unit,
                     .day = left.day,
                     .note = left.reason});
  }
  return sumOf("Next 12 months of " + income.line.equity->symbol, unit, std::move(parts));
}

}  // namespace corvane
