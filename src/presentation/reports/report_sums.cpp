#include "presentation/reports/report_sums.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "reports/trail/income_trails.h"
#include "reports/trail/returns_trails.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

TrailNode amountLeaf(std::string label, const Decimal& amount, const Currency& currency) {
  return {.label = std::move(label), .value = amount, .unit = std::string(currency.code)};
}

/// `parts` added up, and rounded as it is shown.
TrailNode shownSum(const std::string& label, const Currency& currency,
                   std::vector<TrailNode> parts) {
  return roundedTo(currency.minorUnits, label,
                   sumOf(label + ", exact", std::string(currency.code), std::move(parts)));
}

TrailNode paymentLeaf(const IncomePayment& payment) {
  TrailNode leaf = fromRow({.label = payment.equity->symbol + ", " + kindOfIncome(payment.kind),
                            .value = payment.equivalent->amount,
                            .unit = std::string(payment.equivalent->currency.code),
                            .day = payment.day},
                           payment.portfolio, {payment.ledger, payment.position});
  if (payment.rate && payment.amount.currency != payment.equivalent->currency) {
    leaf.note = payment.amount.description() + " at the equivalent that was entered";
  }
  return leaf;
}

}  // namespace

std::optional<TrailNode> periodTrail(const ReturnsReport& report, const PeriodReturn& period) {
  const auto& days = report.series.days;
  const auto end = std::ranges::upper_bound(days, period.last, {}, &ValuationDay::day);
  auto first = std::ranges::lower_bound(days, period.first, {}, &ValuationDay::day);
  // What a period begins with is what the day before it ended with.
  first -= first == days.begin() ? 0 : 1;
  const std::span<const ValuationDay> ofPeriod(first, end);
  constexpr double asShown = 0.00005;
  const auto measured = timeWeightedReturn(ofPeriod).total;
  if (!measured || std::abs(*measured - period.value) > asShown) {
    return std::nullopt;
  }
  return timeWeightedTrail(ofPeriod, report.series.currency);
}

TrailNode shareOfGainTrail(const ReturnsReport& report, const EquityFigures& figures) {
  const Currency& currency = report.series.currency;
  const std::string unit(currency.code);
  const auto earned = [&](const EquityFigures& line) {
    return sumOf("Earned by " + line.equity->symbol, unit,
                 {amountLeaf("Gain", line.gain(), currency),
                  amountLeaf("Dividends", line.dividends, currency)});
  };
  std::vector<TrailNode> all;
  for (const EquityReturns& line : report.equities) {
    all.push_back(earned(line.figures));
  }
  return percentOf("Share of " + figures.equity->symbol + " in the gain",
                   quotientOf("Its part", "", earned(figures),
                              sumOf("Earned by all equities", unit, std::move(all))));
}

std::optional<TrailNode> equitiesTrail(
    const ReturnsReport& report, const std::string& label,
    const std::function<Decimal(const EquityFigures&)>& amountOf) {
  const Currency& currency = report.series.currency;
  std::vector<TrailNode> parts;
  for (const EquityReturns& line : report.equities) {
    if (const Decimal amount = amountOf(line.figures); !amount.isZero()) {
      parts.push_back(amountLeaf(line.figures.equity->symbol, amount, currency));
    }
  }
  return parts.empty() ? std::nullopt : std::optional(shownSum(label, currency, std::move(parts)));
}

TrailNode closingTrail(const ReturnsReport& report) {
  const ValueBridge& bridge = report.series.bridge;
  const Currency& currency = report.series.currency;
  const auto leaf = [&](const char* label, const Decimal& amount) {
    return amountLeaf(label, amount, currency);
  };
  return shownSum(
      "Closing value", currency,
      {leaf("Opening value", bridge.opening), leaf("Deposits", bridge.deposits),
       leaf("Withdrawals", -bridge.withdrawals), leaf("Shares journaled", bridge.journaled),
       leaf("Gain of equities", bridge.equityGain), leaf("Dividends", bridge.dividends),
       leaf("Interest, fees and adjustments", bridge.adjustments),
       leaf("Currency", bridge.currency())});
}

TrailNode currencyTrail(const ReturnsReport& report) {
  const ValueBridge& bridge = report.series.bridge;
  const Currency& currency = report.series.currency;
  const auto leaf = [&](const char* label, const Decimal& amount) {
    return amountLeaf(label, amount, currency);
  };
  return roundedTo(
      currency.minorUnits, "Currency",
      differenceOf(
          "Closing value, less what else led to it", std::string(currency.code),
          {leaf("Closing value", bridge.closing), leaf("Opening value", bridge.opening),
           leaf("Deposits", bridge.deposits), leaf("Withdrawals", -bridge.withdrawals),
           leaf("Shares journaled", bridge.journaled), leaf("Gain of equities", bridge.equityGain),
           leaf("Dividends", bridge.dividends),
           leaf("Interest, fees and adjustments", bridge.adjustments)}));
}

TrailNode paymentsTrail(const std::string& label, const std::vector<IncomePayment>& payments,
                        const Currency& currency,
                        const std::function<bool(const IncomePayment&)>& counts) {
  std::vector<TrailNode> parts;
  for (const IncomePayment& payment : payments) {
    if (payment.equivalent && counts(payment)) {
      parts.push_back(paymentLeaf(payment));
    }
  }
  return shownSum(label, currency, std::move(parts));
}

std::optional<TrailNode> expectedTrail(const std::vector<ExpectedIncome>& expected,
                                       const Currency& currency) {
  std::vector<TrailNode> parts;
  for (const ExpectedIncome& each : expected) {
    auto trail = projectionTrail(each);
    if (!trail) {
      return std::nullopt;
    }
    trail->label = each.line.equity->symbol + ", “" + each.portfolio->name + "”";
    parts.push_back(std::move(*trail));
  }
  return shownSum("Next 12 months", currency, std::move(parts));
}

std::optional<TrailNode> yieldOfAllTrail(const std::vector<ExpectedIncome>& expected,
                                         const Currency& currency) {
  const std::string unit(currency.code);
  std::vector<TrailNode> paid;
  std::vector<TrailNode> costs;
  for (const ExpectedIncome& each : expected) {
    const std::string name = each.line.equity->symbol + ", “" + each.portfolio->name + "”";
    std::vector<TrailNode> payments;
    for (const EquityIncome::PaidRow& row : each.line.paidRows) {
      TrailNode payment = amountLeaf("Paid on today's shares", row.amount, currency);
      payment.day = row.day;
      payments.push_back(fromRow(std::move(payment), *each.portfolio, row.position));
    }
    paid.push_back(payments.empty() ? amountLeaf(name, 0, currency)
                                    : sumOf(name, unit, std::move(payments)));
    costs.push_back(fromRow(amountLeaf(name, each.line.costBase, currency), *each.portfolio,
                            each.line.lastRow));
  }
  TrailNode cost = sumOf("Cost base", unit, std::move(costs));
  if (cost.value <= 0) {
    return std::nullopt;
  }
  return percentOf("Yield on cost", quotientOf("Paid by cost base", "",
                                               sumOf("Paid on today's shares in twelve months",
                                                     unit, std::move(paid)),
                                               std::move(cost)));
}

}  // namespace corvane
