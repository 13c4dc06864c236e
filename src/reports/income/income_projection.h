// How often an equity pays, and what it can be expected to pay in the next twelve months.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/money/currency_amount.h"
#include "core/money/year_month_day.h"

namespace corvane {

enum class PaymentRhythm { none, unknown, monthly, quarterly, halfYearly, annual, irregular };

/// By the mean interval of `days`, which ascend: 20 to 60 days are monthly, up to 130 quarterly, up
/// to 270 half-yearly, up to 430 annual. Unknown for a single payment.
[[nodiscard]] PaymentRhythm rhythmOf(std::span<const YearMonthDay> days);

/// "none", "unknown", "monthly", "quarterly", "half-yearly", "annual", "irregular"
[[nodiscard]] std::string_view displayName(PaymentRhythm rhythm);

/// What one share was paid, or is declared to be paid, in the equity's currency.
struct SharePayment {
  YearMonthDay day;
  Decimal amount;
};

/// A split that makes `into` shares of `from`, for payments before its day.
struct ShareSplit {
  YearMonthDay day;
  Decimal from;
  Decimal into;
};

/// `payments` in shares of after all `splits`.
[[nodiscard]] std::vector<SharePayment> restatedForSplits(std::vector<SharePayment> payments,
                                                          std::span<const ShareSplit> splits);

/// What is held and what a payment is worth in the primary currency today.
struct ProjectedHolding {
  Decimal shares;
  Decimal rate;       ///< units of the primary currency for one of the equity's
  Currency currency;  ///< the primary one, whose minor units amounts are rounded to
};

struct IncomeProjection {
  struct Payment {
    YearMonthDay day;
    Decimal perShare;
    Decimal amount;  ///< of the whole holding, in the primary currency
    bool isDeclared = false;
  };
  struct LeftOut {
    YearMonthDay day;
    Decimal perShare;
    std::string reason;
  };
  PaymentRhythm rhythm = PaymentRhythm::none;
  std::vector<Payment> payments;  ///< ascending
  std::vector<LeftOut> leftOut;

  [[nodiscard]] Decimal next12Months() const;
};

/// Places each payment of the last twelve months a year later, without any growth. A payment that
/// is declared for the future takes the place of the estimate nearest to it. Left out are payments
/// of more than three times the median of three years, and all of an equity that has not paid for
/// one and a half of its intervals.
///
/// `payments` ascend and are in today's shares.
[[nodiscard]] IncomeProjection projectedIncome(std::span<const SharePayment> payments,
                                               const YearMonthDay& today,
                                               const ProjectedHolding& holding);

/// The sum of `perShare` of `shares` as a part of `base`, a cost base or a market value in the same
/// currency. None where `base` is not above 0.
[[nodiscard]] std::optional<double> yieldOn(const Decimal& base, const Decimal& shares,
                                            std::span<const Decimal> perShare);

}  // namespace corvane
