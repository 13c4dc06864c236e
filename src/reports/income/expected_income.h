// What holdings are expected to pay in the next twelve months, by what the market tells of their
// dividends.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "core/market/quote_provider.h"
#include "reports/income/income_projection.h"
#include "reports/income/income_report.h"
#include "reports/series/market_history.h"

namespace corvane {

/// The dividends of equities: those of the last three years and those that are declared for the
/// next, by their ex-days, in today's shares. A plain value; safe on any thread.
struct DividendCalendar {
  EquityMap<std::vector<SharePayment>> payments;  ///< ascending; empty where there are none
  EquityMap<ErrorPointer> errors;                 ///< why those of an equity could not be had
};

/// Fetches the dividends of each of `equities` once. Main queue only; the completion runs once,
/// later, on the main queue.
void fetchDividendCalendar(const std::shared_ptr<QuoteProvider>& provider,
                           const EquitySet& equities, const YearMonthDay& today,
                           std::move_only_function<void(DividendCalendar)> completion);

/// The latest rates, as far as they are known.
using RecentRates = std::map<CurrencyPair, Decimal>;

/// The latest rate of each currency of `portfolios` and of their equities to the portfolio's
/// primary one. Main queue only.
[[nodiscard]] RecentRates recentRates(std::span<const PortfolioPointer> portfolios,
                                      QuoteProvider& quotes);
/// 1 for a currency to itself.
[[nodiscard]] std::optional<Decimal> rateIn(const RecentRates& rates, const Currency& from,
                                            const Currency& to);

/// An equity of a portfolio with what it has paid and is expected to pay.
struct ExpectedIncome {
  PortfolioPointer portfolio;
  EquityIncome line;
  std::optional<Decimal> rate;  ///< to the primary currency; none where it is not known
  /// Without a rate its amounts mean nothing.
  IncomeProjection projection;
  /// The portfolio's own rows stand for the dividends, since the market knows none or could not be
  /// asked.
  bool isFromOwnRows = false;
};

/// What each holding of `portfolios` is expected to pay. On the main queue, or on any thread for
/// frozen ledgers.
[[nodiscard]] std::vector<ExpectedIncome> expectedIncomes(
    std::span<const PortfolioPointer> portfolios, const YearMonthDay& today,
    const Calendar& calendar, const RecentRates& rates, const DividendCalendar& dividends);

}  // namespace corvane
