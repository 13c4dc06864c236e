#include "presentation/reports/report_scope.h"

#include <algorithm>
#include <map>

#include "ledger/manager/portfolio_manager.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "presentation/screen/cache_fallback.h"

namespace corvane {
namespace {

std::shared_ptr<PortfolioManager> reportManager(const ReportScope& scope) {
  return scope.portfolios.empty() ? nullptr : scope.portfolios.front()->manager.lock();
}

}  // namespace

const Calendar& calendarOf(const ReportScope& scope) {
  static const Calendar fallback;
  const auto manager = reportManager(scope);
  return manager == nullptr ? fallback : manager->calendar;
}

std::shared_ptr<QuoteProvider> reportQuotes(const ReportScope& scope) {
  const auto manager = reportManager(scope);
  if (manager == nullptr) {
    return nullptr;
  }
  auto chain = std::dynamic_pointer_cast<SwitchableQuoteProvider>(manager->quoteProvider);
  return chain == nullptr ? manager->quoteProvider : std::make_shared<CacheFallback>(chain);
}

std::vector<Currency> primaryCurrencies(const std::vector<PortfolioPointer>& portfolios) {
  std::map<std::string, int> counts;
  std::vector<Currency> currencies;
  for (const PortfolioPointer& portfolio : portfolios) {
    const Currency& currency = portfolio->primaryCurrency();
    if (++counts[std::string(currency.code)] == 1) {
      currencies.push_back(currency);
    }
  }
  std::ranges::stable_sort(currencies, std::greater(), [&](const Currency& currency) {
    return counts[std::string(currency.code)];
  });
  return currencies;
}

}  // namespace corvane
