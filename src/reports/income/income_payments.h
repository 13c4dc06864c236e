// Every payment of income, made or expected, in one list.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "reports/income/expected_income.h"

namespace corvane {

struct IncomePayment {
  enum class Status { paid, declared, estimated };
  YearMonthDay day;
  std::string portfolio;
  EquityPointer equity;
  TransactionType kind = TransactionType::dividend;
  std::optional<Decimal> shares = {};
  std::optional<Decimal> perShare = {};
  CurrencyAmount amount = {};
  std::optional<Decimal> rate = {};               ///< to the primary currency
  std::optional<CurrencyAmount> equivalent = {};  ///< in the primary currency; none without a rate
  Status status = Status::paid;
  std::string note = {};
  /// Whose row tells of a payment that was made, never a copy; null for one that is expected.
  std::weak_ptr<Portfolio> ledger = {};
  std::size_t position = 0;  ///< in the ledger, from 0
};

/// "paid", "declared", "estimated"
[[nodiscard]] std::string_view displayName(IncomePayment::Status status);

/// What `portfolios` were paid, in the order of their ledgers, then what is expected. Return of
/// capital counts only where that is asked for. On the main queue, or on any thread for frozen
/// ledgers.
[[nodiscard]] std::vector<IncomePayment> incomePayments(
    std::span<const PortfolioPointer> portfolios, std::span<const ExpectedIncome> expected,
    const Calendar& calendar, bool includesReturnOfCapital = false);

}  // namespace corvane
