// What a refresh of prices holds up: the time that a click would wait on the main queue.

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace market_refresh_bench {

using Clock = std::chrono::steady_clock;

/// Gives every equity another price at each refresh, as at noon on a day of trading.
class LivelySource : public QuoteProvider {
 public:
  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override {
    now_ = now_ + 30;
    for (const EquityPointer& equity : equities) {
      equity->currency = Currency::usd();
      equity->recentTradingPeriod = DateRange(now_ - 3600, now_ + 3600);
      equity->recentDate = now_;
      equity->recentPrice = Decimal(100) + Decimal(++ticks_ % 100) / Decimal(100);
      equity->previousClosePrice = 99;
      equity->isAuthoritative = true;
    }
    DispatchQueue::global()->async(
        [completion = std::move(completion)]() mutable { completion(nullptr); });
  }

 private:
  Date now_ = Date::since1970(1'750'000'000);
  int ticks_ = 0;
};

/// Posts to the main queue all the time and keeps how long it took until its turn came.
class Clicks {
 public:
  Clicks()
      : thread_([this](const std::stop_token& stop) {
          while (!stop.stop_requested()) {
            DispatchQueue::main()->async([this, posted = Clock::now()] {
              longest_ = std::max(longest_, Clock::now() - posted);
            });
            std::this_thread::sleep_for(std::chrono::microseconds(300));
          }
        }) {}
  /// Milliseconds; on the main queue.
  double takeLongest() {
    const double longest = std::chrono::duration<double, std::milli>(longest_).count();
    longest_ = {};
    return longest;
  }

 private:
  Clock::duration longest_{};
  std::jthread thread_;
};

void refreshEquities(benchmark::State& state) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / "corvane-refresh-bench";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  auto provider = std::make_shared<SwitchableQuoteProvider>(std::make_shared<LivelySource>(),
                                                            folder / "Cache.sqlite3");
  std::vector<EquityPointer> equities;
  for (int i = 0; i < state.range(0); ++i) {
    equities.push_back(provider->equityWithId("E" + std::to_string(i)));
  }
  double longest = 0;
  {
    Clicks clicks;
    for (auto _ : state) {
      provider->refreshEquities(equities, [](const ErrorPointer& error) {
        if (error != nullptr) {
          std::abort();
        }
        DispatchQueue::main()->async([] { MainLoop::stop(); });
      });
      MainLoop::run();
      longest = std::max(longest, clicks.takeLongest());
    }
  }
  MainLoop::drain();
  state.counters["longest stall, ms"] = longest;
  provider.reset();
  std::filesystem::remove_all(folder);
}
BENCHMARK(refreshEquities)
    ->Name("Market refresh/equities, all steps")
    ->Arg(9)
    ->Arg(50)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace market_refresh_bench
}  // namespace corvane
