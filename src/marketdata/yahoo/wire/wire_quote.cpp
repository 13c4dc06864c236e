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
    field("exchangeTimezoneShortName", &QuoteResult::exchangeTimezoneShortName),
    field("fullExchangeName", &QuoteResult::fullExchangeName),
    field("gmtOffSetMilliseconds", &QuoteResult::gmtOffSetMilliseconds),
    field("market", &QuoteResult::market),
    field("marketState", &QuoteResult::marketState),
    field("quoteType", &QuoteResult::quoteType),
    field("region", &QuoteResult::region),
    field("shortName", &QuoteResult::shortName),
    field("symbol", &QuoteResult::symbol),
    field("ask", &QuoteResult::ask),
    field("bid", &QuoteResult::bid),
    field("bookValue", &QuoteResult::bookValue),
    field("epsCurrentYear", &QuoteResult::epsCurrentYear),
    field("epsForward", &QuoteResult::epsForward),
    field("epsTrailingTwelveMonths", &QuoteResult::epsTrailingTwelveMonths),
    field("fiftyDayAverage", &QuoteResult::fiftyDayAverage),
    field("fiftyDayAverageChange", &QuoteResult::fiftyDayAverageChange),
    field("fiftyDayAverageChangePercent", &QuoteResult::fiftyDayAverageChangePercent),
    field("fiftyTwoWeekHigh", &QuoteResult::fiftyTwoWeekHigh),
    field("fiftyTwoWeekHighChange", &QuoteResult::fiftyTwoWeekHighChange),
    field("fiftyTwoWeekHighChangePercent", &QuoteResult::fiftyTwoWeekHighChangePercent),
    field("fiftyTwoWeekLow", &QuoteResult::fiftyTwoWeekLow),
    field("fiftyTwoWeekLowChange", &QuoteResult::fiftyTwoWeekLowChange),
    field("fiftyTwoWeekLowChangePercent", &QuoteResult::fiftyTwoWeekLowChangePercent),
    field("forwardPE", &QuoteResult::forwardPE),
    field("marketCap", &QuoteResult::marketCap),
    field("priceEpsCurrentYear", &QuoteResult::priceEpsCurrentYear),
    field("priceToBook", &QuoteResult::priceToBook),
    field("regularMarketChange", &QuoteResult::regularMarketChange),
    field("regularMarketChangePercent", &QuoteResult::regularMarketChangePercent),
    field("regularMarketDayHigh", &QuoteResult::regularMarketDayHigh),
    field("regularMarketDayLow", &QuoteResult::regularMarketDayLow),
    field("regularMarketOpen", &QuoteResult::regularMarketOpen),
    field("regularMarketPreviousClose", &QuoteResult::regularMarketPreviousClose),
    field("regularMarketPrice", &QuoteResult::regularMarketPrice),
    field("twoHundredDayAverage", &QuoteResult::twoHundredDayAverage),
    field("twoHundredDayAverageChange", &QuoteResult::twoHundredDayAverageChange),
    field("twoHundredDayAverageChangePercent", &QuoteResult::twoHundredDayAverageChangePercent),
    field("askSize", &QuoteResult::askSize),
    field("averageDailyVolume10Day", &QuoteResult::averageDailyVolume10Day),
    field("averageDailyVolume3Month", &QuoteResult::averageDailyVolume3Month),
    field("bidSize", &QuoteResult::bidSize),
    field("earningsTimestamp", &QuoteResult::earningsTimestamp),
    field("earningsTimestampEnd", &QuoteResult::earningsTimestampEnd),
    field("earningsTimestampStart", &QuoteResult::earningsTimestampStart),
    field("exchangeDataDelayedBy", &QuoteResult::exchangeDataDelayedBy),
    field("firstTradeDateMilliseconds", &QuoteResult::firstTradeDateMilliseconds),
    field("priceHint", &QuoteResult::priceHint),
    field("regularMarketVolume", &QuoteResult::regularMarketVolume),
    field("sharesOutstanding", &QuoteResult::sharesOutstanding),
    field("sourceInterval", &QuoteResult::sourceInterval),
    field("averageAnalystRating", &QuoteResult::averageAnalystRating),
    field("customPriceAlertConfidence", &QuoteResult::customPriceAlertConfidence),
    field("fiftyTwoWeekRange", &QuoteResult::fiftyTwoWeekRange),
    field("financialCurrency", &QuoteResult::financialCurrency),
    field("language", &QuoteResult::language),
    field("longName", &QuoteResult::longName),
    field("messageBoardId", &QuoteResult::messageBoardId),
    field("quoteSourceName", &QuoteResult::quoteSourceName),
    field("regularMarketDayRange", &QuoteResult::regularMarketDayRange),
    field("typeDisp", &QuoteResult::typeDisp),
    field("cryptoTradeable", &QuoteResult::cryptoTradeable),
    field("esgPopulated", &QuoteResult::esgPopulated),
    field("tradeable", &QuoteResult::tradeable),
    field("triggerable", &QuoteResult::triggerable),
    field("regularMarketTime", &QuoteResult::regularMarketTime),
    field("trailingAnnualDividendRate", &QuoteResult::trailingAnnualDividendRate),
    field("trailingAnnualDividendYield", &QuoteResult::trailingAnnualDividendYield),
};

template <>
inline constexpr std::tuple fieldsOf<QuoteResponseContainer>{
    field("result", &QuoteResponseContainer::result),
    field("error", &QuoteResponseContainer::error),
};

template <>
inline constexpr std::tuple fieldsOf<YahooFinanceAPI::Quote>{
    field("quoteResponse", &YahooFinanceAPI::Quote::quoteResponse),
};

template <>
inline constexpr std::tuple fieldsOf<Search::QuoteSearchResult>{
    field("exchange", &Search::QuoteSearchResult::exchange),
    field("shortname", &Search::QuoteSearchResult::shortname),
    field("quoteType", &Search::QuoteSearchResult::quoteType),
    field("symbol", &Search::QuoteSearchResult::symbol),
    field("index", &Search::QuoteSearchResult::index),
    field("score", &Search::QuoteSearchResult::score),
    field("typeDisp", &Search::QuoteSearchResult::typeDisp),
    field("longname", &Search::QuoteSearchResult::longname),
    field("exchDisp", &Search::QuoteSearchResult::exchDisp),
    field("sector", &Search::QuoteSearchResult::sector),
    field("industry", &Search::QuoteSearchResult::industry),
    field("dispSecIndFlag", &Search::QuoteSearchResult::dispSecIndFlag),
    field("isYahooFinance", &Search::QuoteSearchResult::isYahooFinance),
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
