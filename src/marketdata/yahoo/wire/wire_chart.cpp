// The fields of a chart answer.

#include "marketdata/yahoo/wire/wire_error.h"
#include "marketdata/yahoo/wire/wire_fields.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"

namespace corvane::wire {

using namespace YahooFinanceAPI;

template <>
inline constexpr std::tuple fieldsOf<TimePeriod>{
    field("end", &TimePeriod::end),
    byTheWay("gmtoffset", &TimePeriod::gmtoffset),
    field("start", &TimePeriod::start),
    byTheWay("timezone", &TimePeriod::timezone),
};

template <>
inline constexpr std::tuple fieldsOf<CurrentTradingPeriod>{
    byTheWay("post", &CurrentTradingPeriod::post),
    byTheWay("pre", &CurrentTradingPeriod::pre),
    field("regular", &CurrentTradingPeriod::regular),
};

template <>
inline constexpr std::tuple fieldsOf<TradingPeriods>{
    byTheWay("post", &TradingPeriods::post),
    byTheWay("pre", &TradingPeriods::pre),
    field("regular", &TradingPeriods::regular),
};

template <>
inline constexpr std::tuple fieldsOf<Meta>{
    byTheWay("chartPreviousClose", &Meta::chartPreviousClose),
    field("currency", &Meta::currency),
    field("currentTradingPeriod", &Meta::currentTradingPeriod),
    byTheWay("dataGranularity", &Meta::dataGranularity),
    byTheWay("exchangeName", &Meta::exchangeName),
    byTheWay("exchangeTimezoneName", &Meta::exchangeTimezoneName),
    field("firstTradeDate", &Meta::firstTradeDate),
    byTheWay("gmtoffset", &Meta::gmtoffset),
    byTheWay("instrumentType", &Meta::instrumentType),
    byTheWay("previousClose", &Meta::previousClose),
    byTheWay("priceHint", &Meta::priceHint),
    field("regularMarketPrice", &Meta::regularMarketPrice),
    field("regularMarketTime", &Meta::regularMarketTime),
    byTheWay("scale", &Meta::scale),
    byTheWay("symbol", &Meta::symbol),
    byTheWay("timezone", &Meta::timezone),
    field("tradingPeriods", &Meta::tradingPeriods),
    byTheWay("validRanges", &Meta::validRanges),
};

template <>
inline constexpr std::tuple fieldsOf<Events::Split>{
    field("date", &Events::Split::date),
    field("denominator", &Events::Split::denominator),
    field("numerator", &Events::Split::numerator),
    byTheWay("splitRatio", &Events::Split::splitRatio),
};

template <>
inline constexpr std::tuple fieldsOf<Events::Dividend>{
    field("amount", &Events::Dividend::amount),
    field("date", &Events::Dividend::date),
};

template <>
inline constexpr std::tuple fieldsOf<Events>{
    field("splits", &Events::splits),
    field("dividends", &Events::dividends),
};

template <>
inline constexpr std::tuple fieldsOf<Indicators::Quote>{
    field("close", &Indicators::Quote::close),   field("high", &Indicators::Quote::high),
    field("low", &Indicators::Quote::low),       field("open", &Indicators::Quote::open),
    field("volume", &Indicators::Quote::volume),
};

template <>
inline constexpr std::tuple fieldsOf<Indicators>{
    field("quote", &Indicators::quote),
};

template <>
inline constexpr std::tuple fieldsOf<ChartResult>{
    field("indicators", &ChartResult::indicators),
    field("events", &ChartResult::events),
    field("meta", &ChartResult::meta),
    field("timestamp", &ChartResult::timestamp),
};

template <>
inline constexpr std::tuple fieldsOf<ChartContainer>{
    field("result", &ChartContainer::result),
    byTheWay("error", &ChartContainer::error),
};

template <>
inline constexpr std::tuple fieldsOf<ChartResponse>{
    field("chart", &ChartResponse::chart),
};

}  // namespace corvane::wire

namespace corvane::YahooFinanceAPI {

ChartResponse ChartResponse::decode(std::string_view json) {
  return wire::decode<ChartResponse>(json);
}

}  // namespace corvane::YahooFinanceAPI
