// A ledger of 20 years in 50 equities and 3 currencies: walking it, editing its end, recording it.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "ledger/accounting/ledger_walk.h"
#include "ledger_world.h"

namespace corvane {
namespace {

/// A ledger of 100,000 rows, made once.
World& largeWorld() {
  static World world = [] {
    World made;
    made.record(100'000);
    return made;
  }();
  return world;
}

void setRate(benchmark::State& state, std::size_t rows) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rows));
}

/// The floor: visiting every row and adding up one amount of each.
void visitEveryRow(benchmark::State& state) {
  World& world = largeWorld();
  for (auto _ : state) {
    Decimal sum;
    for (const auto& row : world.portfolio->transactions()) {
      sum += row->cashNet.value_or(0);
    }
    benchmark::DoNotOptimize(sum);
  }
  setRate(state, world.portfolio->transactions().size());
}
BENCHMARK(visitEveryRow)->Name("Ledger/visit every row")->Unit(benchmark::kMillisecond);

void walkFromTheStart(benchmark::State& state) {
  World& world = largeWorld();
  for (auto _ : state) {
    benchmark::DoNotOptimize(world.manager->recalculateLedger(0, world.portfolio));
  }
  setRate(state, world.portfolio->transactions().size());
}
BENCHMARK(walkFromTheStart)->Name("Ledger/walk from the start")->Unit(benchmark::kMillisecond);

void replayAll(benchmark::State& state) {
  World& world = largeWorld();
  for (auto _ : state) {
    benchmark::DoNotOptimize(PortfolioManager::replay(world.portfolio->transactions(), {}));
  }
  setRate(state, world.portfolio->transactions().size());
}
BENCHMARK(replayAll)->Name("Ledger/replay")->Unit(benchmark::kMillisecond);

/// What one edit at the end may cost: the walk over a year's rows.
void walkTheLastYear(benchmark::State& state) {
  World& world = largeWorld();
  const auto& rows = world.portfolio->transactions();
  const std::size_t start = rows.size() - rows.size() / World::years;
  const PortfolioSnapshot before = world.manager->snapshotBefore(start, world.portfolio);
  for (auto _ : state) {
    LedgerWalk walk(*world.portfolio, before);
    for (std::size_t i = start; i < rows.size(); ++i) {
      walk.derive(rows[i]);
    }
    benchmark::DoNotOptimize(walk.state());
  }
}
BENCHMARK(walkTheLastYear)->Name("Ledger/walk the last year")->Unit(benchmark::kMicrosecond);

void recordOneAtTheEnd(benchmark::State& state) {
  World& world = largeWorld();
  const Date end = world.portfolio->transactions().back()->settlementDate();
  const BasicTransaction deposit{BasicTransaction::Transfer{{Currency::cad(), 1}}, end, end,
                                 std::nullopt};
  for (auto _ : state) {
    const auto rows = world.manager->recordTransactions({deposit}, world.portfolio, nullptr);
    state.PauseTiming();
    world.manager->deleteTransactions(rows, world.portfolio, nullptr);
    state.ResumeTiming();
  }
}
BENCHMARK(recordOneAtTheEnd)->Name("Ledger/record one at the end")->Unit(benchmark::kMicrosecond);

void recordInOneCall(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto world = std::make_unique<World>();
    auto transactions = world->transactions(count);
    state.ResumeTiming();
    benchmark::DoNotOptimize(
        world->manager->recordTransactions(std::move(transactions), world->portfolio, nullptr));
    state.PauseTiming();
    world.reset();
    state.ResumeTiming();
  }
  setRate(state, static_cast<std::size_t>(count));
}
BENCHMARK(recordInOneCall)
    ->Name("Ledger/record in one call")
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);

/// Reports the memory that a recorded row occupies, notes aside.
void memoryOfARow(benchmark::State& state) {
  const int count = 100'000;
  for (auto _ : state) {
    World world;
    auto transactions = world.transactions(count);
    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    world.manager->recordTransactions(transactions, world.portfolio, nullptr);
    const std::size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    state.counters["bytes/row"] = static_cast<double>(after - before) / count;
  }
}
BENCHMARK(memoryOfARow)
    ->Name("Ledger/memory of a row")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace corvane
