#include "cli/commands/expected_income_question.h"

#include "cli/console/price_source.h"

namespace corvane::cli {

std::vector<ExpectedIncome> askForExpected(const std::vector<PortfolioPointer>& portfolios,
                                           const PortfolioManager& manager,
                                           const YearMonthDay& today, const Console& console) {
  QuoteProvider& quotes = *manager.quoteProvider;
  const std::vector<EquityPointer> equities = equitiesOf(portfolios);
  refreshEquities(quotes, equities, console);
  EquitySet needed;
  for (const PortfolioPointer& portfolio : portfolios) {
    needed.merge(manager.valuationEquities(portfolio));
  }
  refreshEquities(quotes, {needed.begin(), needed.end()}, console);
  std::optional<DividendCalendar> dividends;
  fetchDividendCalendar(manager.quoteProvider, {equities.begin(), equities.end()}, today,
                        [&](DividendCalendar told) { dividends = std::move(told); });
  waitFor([&] { return dividends.has_value(); });
  for (const auto& [equity, error] : dividends->errors) {
    console.warn("No dividends of " + equity->symbol + " could be had; those of the ledger count.");
  }
  return expectedIncomes(portfolios, today, manager.calendar, recentRates(portfolios, quotes),
                         *dividends);
}

}  // namespace corvane::cli
