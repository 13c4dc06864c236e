// How the market-data service is asked, and what it answers, field by field.
//
// The fields of the records carry the names of their JSON keys. Those that figures are made of must
// be there unless they are a std::optional, and a value of another type fails the whole answer. All
// others are taken where they are as agreed, and are empty where they are not: the service changes
// them without notice. Keys that no record names are ignored. No logic and no state: any thread.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/decimal/decimal.h"
#include "marketdata/yahoo/wire/yahoo_service.h"
#include "platform/time/date.h"

namespace corvane::YahooFinanceAPI {

/// One period of trading.
struct TimePeriod {
  Date end;
  std::int64_t gmtoffset = 0;  ///< seconds
  Date start;
  std::string timezone;

  /// From the start up to the end; none for a period that ends before it starts.
  [[nodiscard]] std::optional<DateRange> range() const;
};

struct CurrentTradingPeriod {
  TimePeriod post;
  TimePeriod pre;
  TimePeriod regular;
};

/// A list of periods for each day.
struct TradingPeriods {
  using Days = std::vector<std::vector<TimePeriod>>;
  std::optional<Days> post;
  std::optional<Days> pre;
  std::optional<Days> regular;
};

struct Meta {
  Decimal chartPreviousClose;
  std::string currency;
  CurrentTradingPeriod currentTradingPeriod;
  std::string dataGranularity;
  std::string exchangeName;
  std::string exchangeTimezoneName;
  Date firstTradeDate;
  std::int64_t gmtoffset = 0;
  std::string instrumentType;
  std::optional<Decimal> previousClose;
  std::int64_t priceHint = 0;
  Decimal regularMarketPrice;
  Date regularMarketTime;
  std::optional<std::int64_t> scale;
  std::string symbol;
  std::string timezone;
  std::optional<TradingPeriods> tradingPeriods;
  std::vector<std::string> validRanges;
};

struct Events {
  struct Split {
    Date date;
    Decimal denominator;
    Decimal numerator;
    std::string splitRatio;
  };
  struct Dividend {
    Decimal amount;
    Date date;
  };
  /// The keys are whole numbers written as text; each value has its own date.
  std::optional<std::map<std::int64_t, Split>> splits;
  std::optional<std::map<std::int64_t, Dividend>> dividends;
};

/// Prices in step with the timestamps of the chart, without a value where a bar has none.
using Prices = std::vector<std::optional<Decimal>>;

/// The closes adjusted for dividends, "adjclose", which the service tells as well, are not read:
/// prices are adjusted by the events.
struct Indicators {
  struct Quote {
    std::optional<Prices> close;
    std::optional<Prices> high;
    std::optional<Prices> low;
    std::optional<Prices> open;
    std::optional<std::vector<std::optional<std::int64_t>>> volume;
  };
  std::vector<Quote> quote;
};

struct ChartResult {
  Indicators indicators;
  std::optional<Events> events;
  Meta meta;
  std::optional<std::vector<Date>> timestamp;
};

struct ErrorDescription {
  std::optional<std::int64_t> code;
  std::optional<std::string> description;
};

struct ChartContainer {
  std::optional<std::vector<ChartResult>> result;
  std::optional<ErrorDescription> error;
};

struct ChartResponse {
  ChartContainer chart;

  /// Reads the JSON text of an answer. Throws JSONError, which names the key and the reason.
  [[nodiscard]] static ChartResponse decode(std::string_view json);
};

/// The details of one equity.
struct QuoteResult {
  std::string currency;
  std::string exchange;
  std::string exchangeTimezoneName;
  std::string exchangeTimezoneShortName;
  std::string fullExchangeName;
  std::int64_t gmtOffSetMilliseconds = 0;
  std::string market;
  std::string marketState;
  std::string quoteType;
  std::string region;
  std::string shortName;
  std::string symbol;

  std::optional<Decimal> ask;
  std::optional<Decimal> bid;
  std::optional<Decimal> bookValue;
  std::optional<Decimal> epsCurrentYear;
  std::optional<Decimal> epsForward;
  std::optional<Decimal> epsTrailingTwelveMonths;
  std::optional<Decimal> fiftyDayAverage;
  std::optional<Decimal> fiftyDayAverageChange;
  std::optional<Decimal> fiftyDayAverageChangePercent;
  std::optional<Decimal> fiftyTwoWeekHigh;
  std::optional<Decimal> fiftyTwoWeekHighChange;
  std::optional<Decimal> fiftyTwoWeekHighChangePercent;
  std::optional<Decimal> fiftyTwoWeekLow;
  std::optional<Decimal> fiftyTwoWeekLowChange;
  std::optional<Decimal> fiftyTwoWeekLowChangePercent;
  std::optional<Decimal> forwardPE;
  std::optional<Decimal> marketCap;
  std::optional<Decimal> priceEpsCurrentYear;
  std::optional<Decimal> priceToBook;
  std::optional<Decimal> regularMarketChange;
  std::optional<Decimal> regularMarketChangePercent;
  std::optional<Decimal> regularMarketDayHigh;
  std::optional<Decimal> regularMarketDayLow;
  std::optional<Decimal> regularMarketOpen;
  std::optional<Decimal> regularMarketPreviousClose;
  std::optional<Decimal> regularMarketPrice;
  std::optional<Decimal> twoHundredDayAverage;
  std::optional<Decimal> twoHundredDayAverageChange;
  std::optional<Decimal> twoHundredDayAverageChangePercent;

  std::optional<std::int64_t> askSize;
  std::optional<std::int64_t> averageDailyVolume10Day;
  std::optional<std::int64_t> averageDailyVolume3Month;
  std::optional<std::int64_t> bidSize;
  std::optional<std::int64_t> earningsTimestamp;
  std::optional<std::int64_t> earningsTimestampEnd;
  std::optional<std::int64_t> earningsTimestampStart;
  std::optional<std::int64_t> exchangeDataDelayedBy;
  std::optional<std::int64_t> firstTradeDateMilliseconds;  ///< since 1970
  std::optional<std::int64_t> priceHint;
  std::optional<std::int64_t> regularMarketVolume;
  std::optional<std::int64_t> sharesOutstanding;
  std::optional<std::int64_t> sourceInterval;

  std::optional<std::string> averageAnalystRating;
  std::optional<std::string> customPriceAlertConfidence;
  std::optional<std::string> fiftyTwoWeekRange;
  std::optional<std::string> financialCurrency;
  std::optional<std::string> language;
  std::optional<std::string> longName;
  std::optional<std::string> messageBoardId;
  std::optional<std::string> quoteSourceName;
  std::optional<std::string> regularMarketDayRange;
  std::optional<std::string> typeDisp;

  std::optional<bool> cryptoTradeable;
  std::optional<bool> esgPopulated;
  std::optional<bool> tradeable;
  std::optional<bool> triggerable;

  std::optional<Date> regularMarketTime;

  std::optional<double> trailingAnnualDividendRate;
  std::optional<double> trailingAnnualDividendYield;
};

struct QuoteResponseContainer {
  std::optional<std::vector<QuoteResult>> result;
  std::optional<ErrorDescription> error;
};

/// The answer about the details of equities; not to be taken for corvane::Quote.
struct Quote {
  QuoteResponseContainer quoteResponse;

  /// Reads the JSON text of an answer. Throws JSONError, which names the key and the reason.
  [[nodiscard]] static Quote decode(std::string_view json);
};

struct Search {
  struct QuoteSearchResult {
    std::optional<std::string> exchange;
    std::optional<std::string> shortname;
    std::optional<std::string> quoteType;
    std::optional<std::string> symbol;  ///< some findings, such as private companies, have none
    std::optional<std::string> index;
    std::optional<std::int64_t> score;
    std::optional<std::string> typeDisp;
    std::optional<std::string> longname;
    std::optional<std::string> exchDisp;
    std::optional<std::string> sector;
    std::optional<std::string> industry;
    std::optional<bool> dispSecIndFlag;
    std::optional<bool> isYahooFinance;
  };
  struct ResponseContainer {
    std::optional<std::vector<QuoteSearchResult>> quotes;

    /// Reads the JSON text of an answer. Throws JSONError, which names the key and the reason.
    [[nodiscard]] static ResponseContainer decode(std::string_view json);
  };
};

/// The addresses of the requests; none where the parts make no URL, as with a host that is none.
[[nodiscard]] std::optional<std::string> searchURL(const YahooService& service,
                                                   std::string_view text);
[[nodiscard]] std::optional<std::string> quoteURL(const YahooService& service,
                                                  const std::vector<std::string>& symbols);
/// The dates go in whole seconds since 1970, cut towards zero; -1 for one that is absent.
[[nodiscard]] std::optional<std::string> chartURL(const YahooService& service,
                                                  std::string_view symbol,
                                                  std::string_view intervalText,
                                                  std::optional<Date> start,
                                                  std::optional<Date> end);
/// Answers with the crumb as plain text.
[[nodiscard]] std::optional<std::string> crumbURL(const YahooService& service);
/// A page that hands out the cookies.
[[nodiscard]] std::optional<std::string> cookiesURL(const YahooService& service);

}  // namespace corvane::YahooFinanceAPI
