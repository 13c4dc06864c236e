// What equities have paid into portfolios, and how that compares with what they cost.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "ledger/transaction/transaction_effect.h"
#include "reports/income/income_projection.h"

namespace corvane {

/// A row that tells of income, net of what was withheld.
struct IncomeRow {
  std::size_t position = 0;  ///< in the ledger, from 0
  EquityPointer equity;
  YearMonthDay day;  ///< of settlement
  TransactionType kind;
  std::optional<Decimal> shares;  ///< on which it was paid
  CurrencyAmount amount;
  /// In the primary currency, as entered: never at the rate of another day.
  CurrencyAmount equivalent;
};

/// The income of `portfolio` in ledger order. Return of capital is income only where that is asked
/// for: it pays back what was paid in. Main queue only.
[[nodiscard]] std::vector<IncomeRow> recordedIncome(Portfolio& portfolio, const Calendar& calendar,
                                                    bool includesReturnOfCapital = false);

/// The income of a month, a quarter or a year in one primary currency, beside that of the year
/// before.
struct IncomePeriod {
  enum class Length { month, quarter, year };
  Length length;
  YearMonthDay first;
  Currency currency;
  Decimal income = {};
  /// Of the year before: of the same months, so that a period that is not over is compared with the
  /// same part of the last one.
  Decimal sameMonthsBefore = {};

  /// "2024-03", "2024 Q1", "2024"
  [[nodiscard]] std::string name() const;
};

/// The periods that have income, by currency and ascending. O(rows · log periods).
[[nodiscard]] std::vector<IncomePeriod> incomeByPeriod(std::span<const IncomeRow> rows,
                                                       IncomePeriod::Length length,
                                                       const YearMonthDay& today);

/// What is held of an equity that pays.
struct EquityIncome {
  EquityPointer equity;
  Decimal shares;
  Decimal costBase;  ///< in the primary currency
  /// What today's shares would have been paid in the last twelve months, in the primary currency at
  /// the rates of the payments.
  Decimal lastYear;
  std::optional<double> yieldOnCost;   ///< none where the cost base is not above 0
  std::optional<double> yieldOnValue;  ///< none where price or rate is not known
  /// Held for less than twelve months: the yields are those so far.
  bool isSoFar = false;
  /// The payments as one share of today was paid, in the equity's currency where they were.
  std::vector<SharePayment> payments;
  /// The rows whose payments `lastYear` is the sum of, and the last row, by position in the ledger.
  struct PaidRow {
    std::size_t position;
    YearMonthDay day;
    Decimal amount;
  };
  std::vector<PaidRow> paidRows = {};
  std::size_t lastRow = 0;
};

/// The equities that `portfolio` holds at `today`, by symbol. `recentRate` gives the units of the
/// primary currency for one of another, or none. Main queue only.
[[nodiscard]] std::vector<EquityIncome> equityIncomes(
    Portfolio& portfolio, const YearMonthDay& today, const Calendar& calendar,
    const std::function<std::optional<Decimal>(const Currency&)>& recentRate);

}  // namespace corvane
