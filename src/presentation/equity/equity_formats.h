// The forms in which the screens of an equity write its prices and days.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/market/equity_info.h"
#include "core/money/decimal_number_formatter.h"
#include "platform/system/user_defaults.h"
#include "presentation/charts/quote_chart_view.h"
#include "presentation/screen/market_inquiry.h"

namespace corvane {

/// Prices of an equity: accounting style, the minor units of its currency and up to five digits,
/// since a price may be finer than the money that is paid.
[[nodiscard]] DecimalNumberFormatter equityPriceFormatter(const EquityInfo& equity);

/// Whether dates of the market are told in the user's time zone and not in the exchange's.
[[nodiscard]] bool prefersLocalTimeZone(const UserDefaults& defaults);
[[nodiscard]] TimeZone shownTimeZone(const EquityInfo& equity, const UserDefaults& defaults);

/// Shows `quotes`, the answer to `query`, in `chart`, which says what it shows in words too.
void showInChart(QuoteChartView& chart, const std::vector<Quote>& quotes, const QuoteQuery& query,
                 const UserDefaults& defaults);

/// Whether `error` says no more than that an equity was asked for before its currency was known: a
/// refresh is on its way, and tells it.
[[nodiscard]] bool isOfUnknownEquity(const Error& error);

/// How current what `inquiry` has brought is, in a sentence: that it is on its way, from when it
/// is, that only the cache could be asked. `newest` is the latest date in what is shown.
[[nodiscard]] std::string marketStatusText(const MarketInquiry& inquiry,
                                           std::optional<Date> newest);

}  // namespace corvane
