#include "marketdata/yahoo/yahoo_equity_details.h"

#include <algorithm>
#include <string>

#include "core/market/quote_provider.h"
#include "core/money/currency_almanac.h"
#include "marketdata/yahoo/price_unit.h"
#include "platform/data/xml_entities.h"

namespace corvane {
namespace {

const Currency& currencyWithCode(const std::string& code) {
  const auto& currencies = CurrencyAlmanac::allCurrenciesByCode();
  const auto found = currencies.find(code);
  if (found == currencies.end()) {
    throw QuoteProviderError(QuoteProviderError::UnsupportedCurrency{code});
  }
  return found->second;
}

std::string nameOf(const YahooFinanceAPI::QuoteResult& details, const Currency& currency) {
  if (details.quoteType == "CURRENCY") {
    const std::string base = details.shortName.substr(0, details.shortName.find('/'));
    return std::string(currencyWithCode(base).code) + " → " + std::string(currency.code);
  }
  return unescapingXMLEntities(details.longName.value_or(details.shortName));
}

}  // namespace

void applyQuoteResult(EquityInfo& equity, const YahooFinanceAPI::QuoteResult& details) {
  const auto timeZone = TimeZone::withIdentifier(details.exchangeTimezoneName);
  if (!timeZone) {
    throw QuoteProviderError(
        QuoteProviderError::UnrecognizedTimeZone{details.exchangeTimezoneName});
  }
  const auto unit = PriceUnit::withCode(details.currency);
  if (!unit) {
    throw QuoteProviderError(QuoteProviderError::UnsupportedCurrency{details.currency});
  }
  std::string name = nameOf(details, unit->currency);

  equity.calendar = Calendar(*timeZone);
  equity.currency = unit->currency;
  equity.symbol = details.symbol;
  equity.exchange = details.exchange;
  equity.name = std::move(name);
  if (details.firstTradeDateMilliseconds) {
    const std::int64_t seconds = *details.firstTradeDateMilliseconds / 1000;
    equity.firstTradeDate = Date::since1970(static_cast<double>(seconds));
  }
  equity.previousClosePrice = unit->amount(details.regularMarketPreviousClose);
  setRecentPrice(equity, unit->amount(details.regularMarketPrice), details.regularMarketTime);
  equity.isAuthoritative = true;
}

void setRecentPrice(EquityInfo& equity, std::optional<Decimal> price, std::optional<Date> date) {
  equity.recentPrice = price;
  equity.recentDate = date;
  if (equity.firstTradeDate && date) {
    equity.firstTradeDate = std::min(*equity.firstTradeDate, *date);
  }
}

}  // namespace corvane
