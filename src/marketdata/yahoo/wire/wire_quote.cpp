// The fields of the answer about the details of equities, and of a search.

#include "marketdata/yahoo/wire/wire_error.h"
#include "marketdata/yahoo/wire/wire_fields.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"

namespace corvane::wire {

using namespace YahooFinanceAPI;

template <>
inline constexpr std::tuple fieldsOf<QuoteResult>{
    field("currency", &QuoteResult::currency),
    field("exchange", &QuoteResult::exchange),
    field("exchangeTimezoneName", &QuoteResult::exchangeTimezoneName),
    byTheWay("exchangeTimezoneShortName", &QuoteResult::exchangeTimezoneShortName),
    byTheWay("fullExchangeName", &QuoteResult::fullExchangeName),
    byTheWay("gmtOffSetMilliseconds", &QuoteResult::gmtOffSetMilliseconds),
    byTheWay("market", &QuoteResult::market),
    byTheWay("marketState", &QuoteResult::marketState),
    field("quoteType", &QuoteResult::quoteType),
    byTheWay("region", &QuoteResult::region),
    field("shortName", &QuoteResult::shortName),
    field("symbol", &QuoteResult::symbol),
    byTheWay("ask", &QuoteResult::ask),
    byTheWay("bid", &QuoteResult::bid),
    byTheWay("bookValue", &QuoteResult::bookValue),
    byTheWay("epsCurrentYear", &QuoteResult::epsCurrentYear),
    byTheWay("epsForward", &QuoteResult::epsForward),
    byTheWay("epsTrailingTwelveMonths", &QuoteResult::epsTrailingTwelveMonths),
    byTheWay("fiftyDayAverage", &QuoteResult::fiftyDayAverage),
    byTheWay("fiftyDayAverageChange", &QuoteResult::fiftyDayAverageChange),
    byTheWay("fiftyDayAverageChangePercent", &QuoteResult::fiftyDayAverageChangePercent),
    byTheWay("fiftyTwoWeekHigh", &QuoteResult::fiftyTwoWeekHigh),
    byTheWay("fiftyTwoWeekHighChange", &QuoteResult::fiftyTwoWeekHighChange),
    byTheWay("fiftyTwoWeekHighChangePercent", &QuoteResult::fiftyTwoWeekHighChangePercent),
    byTheWay("fiftyTwoWeekLow", &QuoteResult::fiftyTwoWeekLow),
    byTheWay("fiftyTwoWeekLowChange", &QuoteResult::fiftyTwoWeekLowChange),
    byTheWay("fiftyTwoWeekLowChangePercent", &QuoteResult::fiftyTwoWeekLowChangePercent),
    byTheWay("forwardPE", &QuoteResult::forwardPE),
    byTheWay("marketCap", &QuoteResult::marketCap),
    byTheWay("priceEpsCurrentYear", &QuoteResult::priceEpsCurrentYear),
    byTheWay("priceToBook", &QuoteResult::priceToBook),
    byTheWay("regularMarketChange", &QuoteResult::regularMarketChange),
    byTheWay("regularMarketChangePercent", &QuoteResult::regularMarketChangePercent),
    byTheWay("regularMarketDayHigh", &QuoteResult::regularMarketDayHigh),
    byTheWay("regularMarketDayLow", &QuoteResult::regularMarketDayLow),
    byTheWay("regularMarketOpen", &QuoteResult::regularMarketOpen),
    field("regularMarketPreviousClose", &QuoteResult::regularMarketPreviousClose),
    field("regularMarketPrice", &QuoteResult::regularMarketPrice),
    byTheWay("twoHundredDayAverage", &QuoteResult::twoHundredDayAverage),
    byTheWay("twoHundredDayAverageChange", &QuoteResult::twoHundredDayAverageChange),
    byTheWay("twoHundredDayAverageChangePercent", &QuoteResult::twoHundredDayAverageChangePercent),
    byTheWay("askSize", &QuoteResult::askSize),
    byTheWay("averageDailyVolume10Day", &QuoteResult::averageDailyVolume10Day),
    byTheWay("averageDailyVolume3Month", &QuoteResult::averageDailyVolume3Month),
    byTheWay("bidSize", &QuoteResult::bidSize),
    byTheWay("earningsTimestamp", &QuoteResult::earningsTimestamp),
    byTheWay("earningsTimestampEnd", &QuoteResult::earningsTimestampEnd),
    byTheWay("earningsTimestampStart", &QuoteResult::earningsTimestampStart),
    byTheWay("exchangeDataDelayedBy", &QuoteResult::exchangeDataDelayedBy),
    field("firstTradeDateMilliseconds", &QuoteResult::firstTradeDateMilliseconds),
    byTheWay("priceHint", &QuoteResult::priceHint),
    byTheWay("regularMarketVolume", &QuoteResult::regularMarketVolume),
    byTheWay("sharesOutstanding", &QuoteResult::sharesOutstanding),
    byTheWay("sourceInterval", &QuoteResult::sourceInterval),
    byTheWay("averageAnalystRating", &QuoteResult::averageAnalystRating),
    byTheWay("customPriceAlertConfidence", &QuoteResult::customPriceAlertConfidence),
    byTheWay("fiftyTwoWeekRange", &QuoteResult::fiftyTwoWeekRange),
    byTheWay("financialCurrency", &QuoteResult::financialCurrency),
    byTheWay("language", &QuoteResult::language),
    field("longName", &QuoteResult::longName),
    byTheWay("messageBoardId", &QuoteResult::messageBoardId),
    byTheWay("quoteSourceName", &QuoteResult::quoteSourceName),
    byTheWay("regularMarketDayRange", &QuoteResult::regularMarketDayRange),
    byTheWay("typeDisp", &QuoteResult::typeDisp),
    byTheWay("cryptoTradeable", &QuoteResult::cryptoTradeable),
    byTheWay("esgPopulated", &QuoteResult::esgPopulated),
    byTheWay("tradeable", &QuoteResult::tradeable),
    byTheWay("triggerable", &QuoteResult::triggerable),
    field("regularMarketTime", &QuoteResult::regularMarketTime),
    byTheWay("trailingAnnualDividendRate", &QuoteResult::trailingAnnualDividendRate),
    byTheWay("trailingAnnualDividendYield", &QuoteResult::trailingAnnualDividendYield),
};

template <>
inline constexpr std::tuple fieldsOf<QuoteResponseContainer>{
    field("result", &QuoteResponseContainer::result),
    byTheWay("error", &QuoteResponseContainer::error),
};

template <>
inline constexpr std::tuple fieldsOf<YahooFinanceAPI::Quote>{
    field("quoteResponse", &YahooFinanceAPI::Quote::quoteResponse),
};

template <>
inline constexpr std::tuple fieldsOf<Search::QuoteSearchResult>{
    byTheWay("exchange", &Search::QuoteSearchResult::exchange),
    byTheWay("shortname", &Search::QuoteSearchResult::shortname),
    byTheWay("quoteType", &Search::QuoteSearchResult::quoteType),
    byTheWay("symbol", &Search::QuoteSearchResult::symbol),
    byTheWay("index", &Search::QuoteSearchResult::index),
    byTheWay("score", &Search::QuoteSearchResult::score),
    byTheWay("typeDisp", &Search::QuoteSearchResult::typeDisp),
    byTheWay("longname", &Search::QuoteSearchResult::longname),
    byTheWay("exchDisp", &Search::QuoteSearchResult::exchDisp),
    byTheWay("sector", &Search::QuoteSearchResult::sector),
    byTheWay("industry", &Search::QuoteSearchResult::industry),
    byTheWay("dispSecIndFlag", &Search::QuoteSearchResult::dispSecIndFlag),
    byTheWay("isYahooFinance", &Search::QuoteSearchResult::isYahooFinance),
};

template <>
inline constexpr std::tuple fieldsOf<Search::ResponseContainer>{
    field("quotes", &Search::ResponseContainer::quotes),
};

}  // namespace corvane::wire

namespace corvane::YahooFinanceAPI {

Quote Quote::decode(std::string_view json) {
  return wire::decode<Quote>(json);
}

Search::ResponseContainer Search::ResponseContainer::decode(std::string_view json) {
  return wire::decode<ResponseContainer>(json);
}

}  // namespace corvane::YahooFinanceAPI
