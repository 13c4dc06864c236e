// Reading delimited text, next to a copy of it that looks at every byte.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>

#include "exchange/csv/csv.h"

namespace corvane {
namespace delimited_text_bench {

/// About 10 MB of rows as a broker's statement has them; `note` ends each row.
std::string statement(const std::string& note) {
  std::string text = "Date,Type,Symbol,Shares,Price,Amount,Currency,Note\r\n";
  const std::string row = "2021-03-04,Buy,EXAMPLE.TO,100,12.345,1234.50,CAD," + note + "\r\n";
  while (text.size() < 10'000'000) {
    text += row;
  }
  return text;
}

void setBytes(benchmark::State& state, const std::string& text) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void walkRows(benchmark::State& state, const std::string& text) {
  std::size_t fields = 0;
  for (auto _ : state) {
    parseRows(text, CSVDelimiter::comma(), 0, std::nullopt,
              [&](const CSVRow& row) { fields += row.size(); });
  }
  benchmark::DoNotOptimize(fields);
  setBytes(state, text);
}

void DelimitedText_walkPlainRows(benchmark::State& state) {
  walkRows(state, statement("bought on the way down"));
}
BENCHMARK(DelimitedText_walkPlainRows)->Unit(benchmark::kMillisecond);

void DelimitedText_walkQuotedRows(benchmark::State& state) {
  walkRows(state, statement("\"on \"\"sale\"\", at last\""));
}
BENCHMARK(DelimitedText_walkQuotedRows)->Unit(benchmark::kMillisecond);

void DelimitedText_walkAccentedRows(benchmark::State& state) {
  walkRows(state, statement("günstig, 買い, e\u0301te\u0301"));
}
BENCHMARK(DelimitedText_walkAccentedRows)->Unit(benchmark::kMillisecond);

void DelimitedText_readWhole(benchmark::State& state) {
  const std::string text = statement("bought on the way down");
  for (auto _ : state) {
    const CSV<> csv(text, CSVDelimiter::comma());
    benchmark::DoNotOptimize(csv.content().rows().size());
  }
  setBytes(state, text);
}
BENCHMARK(DelimitedText_readWhole)->Unit(benchmark::kMillisecond);

void DelimitedText_floorCopyBytes(benchmark::State& state) {
  const std::string text = statement("bought on the way down");
  std::string copy(text.size(), '\0');
  for (auto _ : state) {
    std::ranges::replace_copy(text, copy.begin(), ',', ' ');
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  setBytes(state, text);
}
BENCHMARK(DelimitedText_floorCopyBytes)->Unit(benchmark::kMillisecond);

}  // namespace delimited_text_bench
}  // namespace corvane
