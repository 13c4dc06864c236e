#include "core/market/quote_query.h"

namespace corvane {

QuoteQuery QuoteQuery::currentPeriod(EquityPointer equity, bool usingSnapshots) {
  DateRange range(Date::distantPast(), Date::distantPast());
  const auto& session = equity->recentTradingPeriod;
  if (session && equity->recentDate && *equity->recentDate >= session->lower()) {
    range = DateRange(session->lower(), *equity->recentDate).clamped(*session);
  }
  return {std::move(equity), range, CurrentPeriodQuotes{usingSnapshots}};
}

bool QuoteQuery::seeksWholeEventHistory() const {
  const bool seeksEvents = std::holds_alternative<EventsOnly>(seeking) ||
                           std::holds_alternative<EventsWithoutAdjustment>(seeking);
  return seeksEvents && dateRange == equity->fullDateRange();
}

std::string_view caseName(PriceAdjustment adjustment) {
  switch (adjustment) {
    case PriceAdjustment::marketNominal:
      return "marketNominal";
    case PriceAdjustment::marketNominalSnapshot:
      return "marketNominalSnapshot";
    case PriceAdjustment::adjustedForSplits:
      return "adjustedForSplits";
    case PriceAdjustment::adjustedForSplitsAndDividends:
      return "adjustedForSplitsAndDividends";
  }
  __builtin_unreachable();
}

}  // namespace corvane
