// From the service's details of an equity to the equity.
#pragma once

#include "core/market/equity_info.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"

namespace corvane {

/// Brings `equity` up to date and makes it authoritative. Prices in pence and the like are taken
/// over in the currency itself; see PriceUnit. Throws QuoteProviderError::UnrecognizedTimeZone and
/// UnsupportedCurrency; the equity is then as it was. Main queue only.
void applyQuoteResult(EquityInfo& equity, const YahooFinanceAPI::QuoteResult& details);

/// Sets the recent price and its date. A price means that trading had begun: a first trade after it
/// is brought forward to it, since an equity must not end before it starts.
void setRecentPrice(EquityInfo& equity, std::optional<Decimal> price, std::optional<Date> date);

}  // namespace corvane
