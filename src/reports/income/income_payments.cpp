#include "reports/income/income_payments.h"

#include <utility>

#include "reports/inquiry/frozen_ledger.h"

namespace corvane {
namespace {

IncomePayment paymentOf(const PortfolioPointer& portfolio, const IncomeRow& row) {
  IncomePayment payment{.day = row.day,
                        .portfolio = portfolio->name,
                        .equity = row.equity,
                        .kind = row.kind,
                        .shares = row.shares,
                        .amount = row.amount,
                        .equivalent = row.equivalent,
                        .ledger = ledgerOf(portfolio),
                        .position = row.position};
  if (row.shares && !row.shares->isZero()) {
    payment.perShare = row.amount.amount / *row.shares;
  }
  if (!row.amount.amount.isZero()) {
    payment.rate = row.equivalent.amount / row.amount.amount;
  }
  return payment;
}

IncomePayment paymentOf(const ExpectedIncome& income, const IncomeProjection::Payment& expected) {
  using enum IncomePayment::Status;
  const EquityPointer& equity = income.line.equity;
  IncomePayment payment{
      .day = expected.day,
      .portfolio = income.portfolio->name,
      .equity = equity,
      .shares = income.line.shares,
      .perShare = expected.perShare,
      .amount = {equity->currency, expected.perShare * income.line.shares},
      .rate = income.rate,
      .status = expected.isDeclared ? declared : estimated,
      .note = income.rate ? "" : "no rate of " + std::string(equity->currency.code)};
  if (income.rate) {
    payment.equivalent = CurrencyAmount{income.portfolio->primaryCurrency(), expected.amount};
  }
  return payment;
}

}  // namespace

std::string_view displayName(IncomePayment::Status status) {
  switch (status) {
    case IncomePayment::Status::paid:
      return "paid";
    case IncomePayment::Status::declared:
      return "declared";
    case IncomePayment::Status::estimated:
      return "estimated";
  }
  __builtin_unreachable();
}

std::vector<IncomePayment> incomePayments(std::span<const PortfolioPointer> portfolios,
                                          std::span<const ExpectedIncome> expected,
                                          const Calendar& calendar, bool includesReturnOfCapital) {
  std::vector<IncomePayment> payments;
  for (const PortfolioPointer& portfolio : portfolios) {
    for (const IncomeRow& row : recordedIncome(*portfolio, calendar, includesReturnOfCapital)) {
      payments.push_back(paymentOf(portfolio, row));
    }
  }
  for (const ExpectedIncome& income : expected) {
    for (const IncomeProjection::Payment& payment : income.projection.payments) {
      payments.push_back(paymentOf(income, payment));
    }
  }
  return payments;
}

}  // namespace corvane
