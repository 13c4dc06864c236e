// What a report is about, and who is asked for its prices.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "core/money/year_month_day.h"
#include "ledger/portfolio/portfolio.h"
#include "platform/range.h"
#include "platform/time/calendar.h"

namespace corvane {

/// One portfolio, or all of a workspace, in a range of days.
struct ReportScope {
  std::string name;                          ///< of the portfolio, or what stands for all of them
  std::vector<PortfolioPointer> portfolios;  ///< empty for none; with a manager that they share
  ClosedRange<YearMonthDay> days{{}, {}};
  /// An equity of the one portfolio, or null for all.
  EquityPointer equity = nullptr;

  [[nodiscard]] bool isOnePortfolio() const { return portfolios.size() == 1; }
};

/// The calendar of the portfolios' manager.
[[nodiscard]] const Calendar& calendarOf(const ReportScope& scope);

/// Who answers for prices: the provider of the portfolios' manager, and for want of a network what
/// its cache has. Null without a manager.
[[nodiscard]] std::shared_ptr<QuoteProvider> reportQuotes(const ReportScope& scope);

/// The primary currencies of `portfolios`, the one that most of them have first.
[[nodiscard]] std::vector<Currency> primaryCurrencies(
    const std::vector<PortfolioPointer>& portfolios);

/// The bar above a report that could not be made, or only in part.
struct ReportWarning {
  std::string text;          ///< empty for no bar
  bool canLeaveOut = false;  ///< something is named that may be left out
};

}  // namespace corvane
