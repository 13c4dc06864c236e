#include "marketdata/yahoo/yahoo_quote_provider.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <unordered_map>
#include <utility>

#include "core/market/price_adjuster.h"
#include "core/market/quote_interval_name.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"
#include "marketdata/yahoo/yahoo_chart.h"
#include "marketdata/yahoo/yahoo_equity_details.h"
#include "marketdata/yahoo/yahoo_provider_error.h"
#include "marketdata/yahoo/yahoo_response.h"
#include "marketdata/yahoo/yahoo_session.h"
#include "platform/async/dispatch_queue.h"
#include "platform/overloaded.h"

namespace corvane {

/// What a query is asked of the service as.
struct YahooQuoteProvider::ChartOrder {
  std::string_view what;  ///< the word in the activity log
  std::optional<QuoteInterval> interval;
  std::optional<DateRange> dates;
};

namespace {

using ChartOrder = YahooQuoteProvider::ChartOrder;
using YahooFinanceAPI::ChartResult;
using YahooFinanceAPI::QuoteResult;
using YahooFinanceAPI::Search;

constexpr int daysInAChunk = 7;

/// What `work` returns, or the Error that it throws.
template <typename Work>
auto resultOf(Work work) -> Result<decltype(work())> {
  try {
    return work();
  } catch (const Error& error) {
    return failure(error);
  }
}

[[noreturn]] void throwIncompleteData() {
  throw YahooProviderError(YahooProviderError::IncompleteData{});
}

/// What of a chart is of use, with the trading periods that it tells.
struct Chart {
  ChartResult result;
  YahooTradingPeriods periods;
};

Chart readChart(const Result<HTTPResponse>& response) {
  auto answer = decodeVerified<YahooFinanceAPI::ChartResponse>(verifyResponse(response, "chart"));
  auto& results = answer.chart.result;
  if (!results || results->empty() || results->front().indicators.quote.empty()) {
    throwIncompleteData();
  }
  YahooTradingPeriods periods(results->front().meta);
  return {std::move(results->front()), std::move(periods)};
}

std::vector<QuoteResult> readDetails(const Result<HTTPResponse>& response) {
  auto answer = decodeVerified<YahooFinanceAPI::Quote>(verifyResponse(response, "quoteResponse"));
  if (!answer.quoteResponse.result) {
    throwIncompleteData();
  }
  return *std::move(answer.quoteResponse.result);
}

/// The symbols of the shares, funds and currency pairs that a search has found.
std::vector<std::string> readFindings(const Result<HTTPResponse>& response) {
  if (!response) {
    response.error()->raise();
  }
  if (!isSuccess(response->statusCode)) {
    throw YahooProviderError(YahooProviderError::HTTPResponse{response->statusCode});
  }
  if (response->body.empty()) {
    throwIncompleteData();
  }
  const auto answer = Search::ResponseContainer::decode(response->body);
  if (!answer.quotes) {
    throwIncompleteData();
  }
  std::vector<std::string> symbols;
  for (const Search::QuoteSearchResult& found : *answer.quotes) {
    const auto& kind = found.quoteType;
    if (found.symbol && (kind == "EQUITY" || kind == "ETF" || kind == "CURRENCY")) {
      symbols.push_back(*found.symbol);
    }
  }
  return symbols;
}

using EquitiesById = std::unordered_map<std::string, EquityPointer>;

/// The equity that an element of an answer is about, or null. The service calls the pair of the US
/// dollar with another currency by the other's code at times: "CAD=X" for "USDCAD=X".
EquityPointer equityFor(const std::string& symbol, const EquitiesById& equities) {
  auto found = equities.find(symbol);
  if (found == equities.end() && symbol.size() == 5 && symbol.ends_with("=X")) {
    found = equities.find("USD" + symbol);
  }
  return found == equities.end() ? nullptr : found->second;
}

ErrorPointer applyDetails(const EquitiesById& equities, const std::vector<QuoteResult>& results) {
  try {
    for (const QuoteResult& details : results) {
      if (const EquityPointer equity = equityFor(details.symbol, equities)) {
        applyQuoteResult(*equity, details);
      }
    }
    return nullptr;
  } catch (const Error& error) {
    return error.copy();
  }
}

/// Long before every exchange that the service knows, and far enough from where dates go wrong.
const Date earliestDate = Date::since1970(-2208988800);  // 1900

QuoteFetchResult nothingIn(const DateRange& dates) {
  return {.quotes = std::vector<Quote>(),
          .prices = PriceAdjustment::adjustedForSplits,
          .events = std::vector<EquityEvent>(),
          .durableDateRange = dates};
}

/// Whether `error` says that the service has nothing of the range that was asked for.
bool saysThatThereIsNothing(const Error& error) {
  const auto* refusal = dynamic_cast<const YahooProviderError*>(&error);
  const auto* told =
      refusal == nullptr ? nullptr : std::get_if<YahooProviderError::APIError>(&refusal->which());
  return told != nullptr && told->code == "Bad Request" &&
         told->description.starts_with("Data doesn't exist for startDate");
}

/// The part of `dates` that is past for `equity`. Main queue only.
DateRange pastOf(const EquityInfo& equity, const DateRange& dates) {
  const Date end = std::min(dates.upper(), equity.recentDate.value_or(Date::now()));
  return {dates.lower(), std::max(dates.lower(), end)};
}

ChartOrder orderFor(const QuoteQuery& query) {
  const DateRange& range = query.dateRange;
  return std::visit(Overloaded{[&](const QuoteQuery::Quotes& quotes) {
                                 return ChartOrder{"quotes", quotes.interval, range};
                               },
                               [&](const QuoteQuery::CurrentPeriodQuotes&) {
                                 return ChartOrder{
                                     "current quotes", QuoteInterval::oneMinute,
                                     range.isEmpty() ? std::nullopt : std::optional(range)};
                               },
                               [&](const QuoteQuery::EventsOnly&) {
                                 return ChartOrder{"events", std::nullopt, range};
                               },
                               [&](QuoteQuery::EventsWithoutAdjustment) {
                                 return ChartOrder{"events", std::nullopt, range};
                               }},
                    query.seeking);
}

/// The length of bars with which events are asked for. The service tells no more dividends than the
/// chart has bars: of 183 that a fund paid in as many quarters, a chart of 164 quarters had 164,
/// and left out five years (seen in October 2025); a chart by days lost none. Pairs and indices
/// have no events, and are asked with the fewest bars.
QuoteInterval intervalForEvents(std::string_view id) {
  return id.ends_with("=X") || id.starts_with("^") ? QuoteInterval::threeMonths
                                                   : QuoteInterval::oneDay;
}

/// Takes a chart over into its equity, on the main queue, and makes the result elsewhere.
void deliver(Chart chart, const EquityPointer& equity, const ChartOrder& order,
             std::unordered_map<std::string, Date>& firstTrades,
             QuoteProvider::QuoteCompletion completion) {
  applyChart(*equity, chart.result.meta, chart.periods);
  if (equity->firstTradeDate) {
    firstTrades.insert_or_assign(equity->id(), *equity->firstTradeDate);
  }
  YahooChartRequest request{order.interval, order.dates, equity->calendar, equity->currency};
  DispatchQueue::global()->async(
      [chart = std::move(chart), request, completion = std::move(completion)]() mutable {
        completion(resultOf([&] { return fetchResult(chart.result, chart.periods, request); }));
      });
}

/// Whether this is the id of a pair with the neutral currency, which nobody trades.
bool isNoPair(std::string_view id) {
  const std::string_view none = Currency::noCurrency().code;
  return id.size() == 8 && id.ends_with("=X") &&
         (id.starts_with(none) || id.substr(3).starts_with(none));
}

bool isServedInChunks(const QuoteQuery::Subject& subject) {
  const auto* quotes = std::get_if<QuoteQuery::Quotes>(&subject);
  return std::holds_alternative<QuoteQuery::CurrentPeriodQuotes>(subject) ||
         (quotes != nullptr && quotes->interval == QuoteInterval::oneMinute);
}

}  // namespace

YahooQuoteProvider::YahooQuoteProvider(YahooService service)
    : session_(std::make_shared<YahooSession>(std::move(service))) {
  session_->start();
}

YahooQuoteProvider::~YahooQuoteProvider() = default;

std::string YahooQuoteProvider::providerName() const {
  return "YahooFinance";
}

void YahooQuoteProvider::searchEquities(std::string text, EquitiesCompletion completion) {
  URLRequest request{YahooFinanceAPI::searchURL(session_->service(), text).value_or("")};
  auto receive = [weakSelf = weak_from_this(),
                  completion = std::move(completion)](Result<HTTPResponse> response) mutable {
    auto symbols = resultOf([&] { return readFindings(response); });
    DispatchQueue::main()->async([weakSelf = std::move(weakSelf), symbols = std::move(symbols),
                                  completion = std::move(completion)]() mutable {
      const auto self = weakSelf.lock();
      if (self == nullptr) {
        return;
      }
      if (!symbols) {
        completion(std::unexpected(symbols.error()));
        return;
      }
      std::vector<EquityPointer> equities;
      std::vector<EquityPointer> unknown;
      for (const std::string& symbol : *symbols) {
        equities.push_back(self->equityWithId(symbol));
        if (!equities.back()->isAuthoritative) {
          unknown.push_back(equities.back());
        }
      }
      if (unknown.empty()) {
        completion(std::move(equities));
        return;
      }
      auto answer = [equities = std::move(equities),
                     completion = std::move(completion)](const ErrorPointer&) mutable {
        std::erase_if(equities, [](const auto& equity) { return !equity->isAuthoritative; });
        completion(std::move(equities));
      };
      self->refreshEquities(std::move(unknown), std::move(answer));
    });
  };
  session_->runRequest("Search for “" + text + "”", std::move(request), false, std::move(receive));
}

EquityPointer YahooQuoteProvider::equityWithId(std::string_view id) {
  EquityPointer equity = QuoteProvider::equityWithId(id);
  if (!equity->firstTradeDate) {
    const auto learned = firstTrades_->find(equity->id());
    if (learned != firstTrades_->end()) {
      equity->firstTradeDate = learned->second;
    }
  }
  return equity;
}

EquityPointer YahooQuoteProvider::exchangeRateEquity(const Currency& from, const Currency& to) {
  EquityPointer equity = equityWithId(pairId(from, to));
  equity->currency = to;
  return equity;
}

std::string YahooQuoteProvider::pairId(const Currency& from, const Currency& to) {
  return std::string(from.code) + std::string(to.code) + "=X";
}

void YahooQuoteProvider::refreshEquities(std::vector<EquityPointer> equities,
                                         RefreshCompletion completion) {
  std::erase_if(equities, [](const EquityPointer& equity) { return isNoPair(equity->id()); });
  if (equities.empty()) {
    QuoteProvider::refreshEquities({}, std::move(completion));
    return;
  }
  EquitiesById equitiesById;
  std::vector<std::string> ids;
  for (const EquityPointer& equity : equities) {
    equitiesById.emplace(equity->id(), equity);
    ids.push_back(equity->id());
  }
  auto receive = [equitiesById = std::move(equitiesById),
                  completion = std::move(completion)](Result<HTTPResponse> response) mutable {
    auto details = resultOf([&] { return readDetails(response); });
    DispatchQueue::main()->async([equitiesById = std::move(equitiesById),
                                  details = std::move(details),
                                  completion = std::move(completion)]() mutable {
      completion(details ? applyDetails(equitiesById, *details) : details.error());
    });
  };
  URLRequest request{YahooFinanceAPI::quoteURL(session_->service(), ids).value_or("")};
  session_->runRequest("Fetch " + std::to_string(ids.size()) + " symbol(s)", std::move(request),
                       true, std::move(receive));
}

void YahooQuoteProvider::fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                                     QuoteCompletion completion) {
  assert(adjuster != nullptr);
  if (isNoPair(query.equity->id())) {
    QuoteProvider::fetchQuotes(std::move(query), std::move(adjuster), std::move(completion));
    return;
  }
  const ChartOrder order = orderFor(query);
  const EquityPointer equity = query.equity;
  auto adjust = [adjuster = std::move(adjuster), query = std::move(query),
                 completion = std::move(completion)](Result<QuoteFetchResult> result) mutable {
    if (result) {
      adjuster->adjust(*std::move(result), std::move(query), std::move(completion));
    } else {
      completion(std::move(result));
    }
  };
  fetchChart(equity, order, std::move(adjust));
}

void YahooQuoteProvider::fetchChart(const EquityPointer& equity, const ChartOrder& order,
                                    QuoteCompletion completion) {
  const auto& dates = order.dates;
  const bool isBeforeAllTrades =
      dates && (dates->upper() <= earliestDate ||
                (equity->firstTradeDate && *equity->firstTradeDate >= dates->upper()));
  if (isBeforeAllTrades) {
    DispatchQueue::global()->async(
        [nothing = nothingIn(*dates), completion = std::move(completion)]() mutable {
          completion(std::move(nothing));
        });
    return;
  }
  const auto bound = [](Date date) { return std::max(date, earliestDate); };
  const auto url =
      YahooFinanceAPI::chartURL(session_->service(), equity->id(),
                                shortName(order.interval.value_or(intervalForEvents(equity->id()))),
                                dates ? std::optional(bound(dates->lower())) : std::nullopt,
                                dates ? std::optional(bound(dates->upper())) : std::nullopt);
  auto receive = [equity, order, firstTrades = firstTrades_,
                  completion = std::move(completion)](Result<HTTPResponse> response) mutable {
    auto chart = resultOf([&] { return readChart(response); });
    DispatchQueue::main()->async([chart = std::move(chart), equity, order, firstTrades,
                                  completion = std::move(completion)]() mutable {
      if (chart) {
        deliver(*std::move(chart), equity, order, *firstTrades, std::move(completion));
        return;
      }
      Result<QuoteFetchResult> answer = std::unexpected(chart.error());
      if (order.dates && saysThatThereIsNothing(*chart.error())) {
        answer = nothingIn(pastOf(*equity, *order.dates));
      }
      DispatchQueue::global()->async(
          [answer = std::move(answer), completion = std::move(completion)]() mutable {
            completion(std::move(answer));
          });
    });
  };
  session_->runRequest("Fetch " + std::string(order.what) + " for " + equity->symbol,
                       URLRequest{url.value_or("")}, false, std::move(receive));
}

std::vector<QuoteQuery> YahooQuoteProvider::sourceQueries(const QuoteQuery& query) const {
  if (!isServedInChunks(query.seeking)) {
    return {query};
  }
  const Date end = query.dateRange.upper();
  std::vector<QuoteQuery> chunks;
  Date chunkEnd = query.dateRange.lower();
  do {
    const Date start = chunkEnd;
    const auto later = query.equity->calendar.dateByAdding(CalendarUnit::day, daysInAChunk, start);
    chunkEnd = std::min(later.value_or(end), end);
    chunks.push_back({query.equity, DateRange(start, chunkEnd), query.seeking});
  } while (chunkEnd < end);
  return chunks;
}

std::set<QuoteInterval> YahooQuoteProvider::availableIntervals(const EquityPointer& equity,
                                                               const DateRange& range) const {
  return intervalsServed(equity->calendar, range.lower(), Date::now());
}

std::optional<Date> YahooQuoteProvider::nextRequestDate() const {
  return session_->pauseEnd();
}

std::set<QuoteInterval> YahooQuoteProvider::intervalsServed(const Calendar& calendar, Date start,
                                                            Date now) {
  // How old bars up to a length may be. Two years of bars of an hour, and so on.
  struct Limit {
    int days;
    QuoteInterval longestWithout;
  };
  constexpr Limit limits[] = {{730, QuoteInterval::oneHour},
                              {60, QuoteInterval::ninetyMinutes},
                              {30, QuoteInterval::oneMinute}};
  const auto age = calendar.dateComponents({CalendarUnit::day, CalendarUnit::second}, start, now);
  // A date that the calendar cannot express is older than everything.
  const int days = age.valueOr(CalendarUnit::day, std::numeric_limits<int>::max());
  const int seconds = age.valueOr(CalendarUnit::second, 0);

  std::set<QuoteInterval> intervals(allQuoteIntervals.begin(), allQuoteIntervals.end());
  for (const auto& [limit, longestWithout] : limits) {
    if (days > limit || (days == limit && seconds > 0)) {
      std::erase_if(intervals, [&](QuoteInterval interval) { return interval <= longestWithout; });
      break;
    }
  }
  return intervals;
}

}  // namespace corvane
