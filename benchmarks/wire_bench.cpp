// Thirty years of daily bars as the market-data service sends them: from JSON text to records, and
// from records to quotes. Beside it, the floor: walking the same text without keeping anything.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "marketdata/yahoo/wire/yahoo_finance_api.h"
#include "marketdata/yahoo/yahoo_chart.h"
#include "platform/data/json_reader.h"

namespace corvane {
namespace wire_bench {

constexpr int barCount = 7500;
constexpr std::int64_t firstBar = 766416600;  // 1994-04-15 09:30 in New York

/// Seventeen digits, as a service sends that keeps its prices in binary.
std::string price(std::mt19937_64& random) {
  return std::to_string(10 + random() % 900) + "." +
         std::to_string(10000000000000 + random() % 89999999999999);
}

template <typename ValueOf>
std::string list(ValueOf valueOf) {
  std::string text = "[";
  for (int i = 0; i < barCount; ++i) {
    text += (i == 0 ? "" : ",") + valueOf(i);
  }
  return text + "]";
}

std::string timePeriods() {
  const std::string period =
      R"({"timezone":"EST","start":1709649000,"end":1709672400,"gmtoffset":-18000})";
  return R"({"pre":)" + period + R"(,"regular":)" + period + R"(,"post":)" + period + "}";
}

const std::string& thirtyYears() {
  static const std::string answer = [] {
    std::mt19937_64 random(7);
    const auto prices = [&] { return list([&](int) { return price(random); }); };
    return R"({"chart":{"result":[{"meta":{"currency":"USD","symbol":"ABC","exchangeName":"NMS",
"instrumentType":"EQUITY","firstTradeDate":345479400,"regularMarketTime":1709672400,
"gmtoffset":-18000,"timezone":"EST","exchangeTimezoneName":"America/New_York",
"regularMarketPrice":170.12,"chartPreviousClose":2.5,"priceHint":2,"currentTradingPeriod":)" +
           timePeriods() + R"(,"dataGranularity":"1d","range":"","validRanges":["1d","max"]},
"timestamp":)" +
           list([](int i) { return std::to_string(firstBar + i * 126000LL); }) +
           R"(,"indicators":{"quote":[{"open":)" + prices() + R"(,"close":)" + prices() +
           R"(,"low":)" + prices() + R"(,"high":)" + prices() + R"(,"volume":)" +
           list([&](int) { return std::to_string(random() % 900000000); }) +
           R"(}],"adjclose":[{"adjclose":)" + prices() + R"(}]}}],"error":null}})";
  }();
  return answer;
}

void chartDecode(benchmark::State& state) {
  const std::string& answer = thirtyYears();
  for (auto _ : state) {
    const auto chart = YahooFinanceAPI::ChartResponse::decode(answer);
    benchmark::DoNotOptimize(chart.chart.result->data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}
BENCHMARK(chartDecode)->Unit(benchmark::kMillisecond);

void chartWalk(benchmark::State& state) {
  const std::string& answer = thirtyYears();
  for (auto _ : state) {
    JSONReader(answer).finish();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}
BENCHMARK(chartWalk)->Unit(benchmark::kMillisecond);

void chartToQuotes(benchmark::State& state) {
  const auto chart = YahooFinanceAPI::ChartResponse::decode(thirtyYears());
  const auto& result = chart.chart.result->front();
  const YahooTradingPeriods periods(result.meta);
  const YahooChartRequest request{
      QuoteInterval::oneDay, DateRange(Date::since1970(0), Date::since1970(2e9)),
      Calendar(TimeZone::withIdentifier("America/New_York").value()), Currency::usd()};
  for (auto _ : state) {
    const auto quotes = fetchResult(result, periods, request);
    benchmark::DoNotOptimize(quotes.quotes->data());
  }
  state.SetItemsProcessed(state.iterations() * barCount);
}
BENCHMARK(chartToQuotes)->Unit(benchmark::kMillisecond);

}  // namespace wire_bench
}  // namespace corvane
