// A ledger of 20 years in 50 equities and 3 currencies: walking it, editing its end, recording it.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>

#include <algorithm>

#include "ledger/accounting/ledger_walk.h"
#include "ledger_world.h"

namespace corvane {
namespace ledger_bench {

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

/// By how many megabytes `work` raises the most memory that the program has ever had: all that it
/// needs in a run of one benchmark alone.
template <typename Work>
void countMemory(benchmark::State& state, Work work) {
  const auto mostKilobytes = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
  };
  const auto before = mostKilobytes();
  work();
  double& most = state.counters["MB"].value;
  most = std::max(most, static_cast<double>(mostKilobytes() - before) / 1000);
}

/// Deposits and purchases, newest first: each goes in front of all before it.
void recordNewestFirst(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto world = std::make_unique<World>();
    world->portfolio->allowsNegativeBalances = true;
    auto transactions = world->transactions(count);
    std::ranges::reverse(transactions);
    for (auto& transaction : transactions) {
      if (auto* yield = std::get_if<BasicTransaction::Yield>(&transaction.kind)) {
        transaction.kind = BasicTransaction::Transfer{yield->netAmount};
      }
    }
    state.ResumeTiming();
    countMemory(state, [&] {
      world->manager->recordTransactions(std::move(transactions), world->portfolio, nullptr);
    });
    state.PauseTiming();
    world.reset();
    state.ResumeTiming();
  }
  setRate(state, static_cast<std::size_t>(count));
}
BENCHMARK(recordNewestFirst)
    ->Name("Ledger/record newest first")
    ->Arg(20'000)
    ->Unit(benchmark::kMillisecond);

/// 2,000 deposits in any order between the rows of a ledger of 20,000.
void recordBetweenOthers(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto world = std::make_unique<World>();
    world->record(20'000);
    std::vector<BasicTransaction> deposits;
    for (std::size_t i = 0; i < 2'000; ++i) {
      const Date date = world->portfolio->transactions()[(i * 7919) % 20'000]->settlementDate();
      deposits.push_back(
          {BasicTransaction::Transfer{{Currency::cad(), 1}}, date, date, std::nullopt});
    }
    state.ResumeTiming();
    countMemory(state, [&] {
      world->manager->recordTransactions(std::move(deposits), world->portfolio, nullptr);
    });
    state.PauseTiming();
    world.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(recordBetweenOthers)
    ->Name("Ledger/record 2,000 between 20,000")
    ->Unit(benchmark::kMillisecond);

void undoDeletionOfHalf(benchmark::State& state) {
  World world;
  world.portfolio->allowsNegativeBalances = true;
  world.portfolio->usesCashAccounts = false;
  std::vector<BasicTransaction> purchases = world.transactions(40'000);
  for (std::size_t i = 0; i < purchases.size(); ++i) {
    purchases[i].kind = BasicTransaction::Trade{world.equities[i % 50], {Currency::cad(), 1}, 1, 1};
  }
  world.manager->recordTransactions(std::move(purchases), world.portfolio, nullptr);
  std::vector<TransactionPointer> half;
  for (std::size_t i = 0; i < world.portfolio->transactions().size(); i += 2) {
    half.push_back(world.portfolio->transactions()[i]);
  }
  const auto undo = std::make_shared<UndoManager>();
  for (auto _ : state) {
    state.PauseTiming();
    world.manager->deleteTransactions(half, world.portfolio, undo);
    state.ResumeTiming();
    undo->undo();
  }
}
BENCHMARK(undoDeletionOfHalf)
    ->Name("Ledger/undo the deletion of 20,000 of 40,000")
    ->Unit(benchmark::kMillisecond);

void redoRecording(benchmark::State& state) {
  World world;
  const auto undo = std::make_shared<UndoManager>();
  world.manager->recordTransactions(world.transactions(100'000), world.portfolio, undo);
  for (auto _ : state) {
    state.PauseTiming();
    undo->undo();
    state.ResumeTiming();
    undo->redo();
  }
}
BENCHMARK(redoRecording)->Name("Ledger/redo 100,000 recorded")->Unit(benchmark::kMillisecond);

void reviseAllDates(benchmark::State& state) {
  World world;
  world.record(100'000);
  const std::vector<TransactionPointer> rows = world.portfolio->transactions();
  double days = 1;
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<BasicTransaction> revisions;
    for (const auto& row : rows) {
      revisions.push_back(row->basic);
      revisions.back().settlementDate = row->settlementDate() + days * 86400 * 30'000;
    }
    days = -days;
    for (auto& revision : revisions) {
      revision.tradeDate = revision.settlementDate;
    }
    state.ResumeTiming();
    world.manager->reviseTransactions(rows, revisions, std::nullopt, world.portfolio, nullptr);
  }
}
BENCHMARK(reviseAllDates)
    ->Name("Ledger/revise the dates of 100,000")
    ->Unit(benchmark::kMillisecond);

/// What a form asks on each keystroke: an entry at the end and one in the middle.
void tryAnEntry(benchmark::State& state) {
  World& world = largeWorld();
  const auto& rows = world.portfolio->transactions();
  const std::size_t place = (rows.size() - 1) * static_cast<std::size_t>(state.range(0)) / 100;
  const Date date = rows[place]->settlementDate();
  const BasicTransaction purchase{
      BasicTransaction::Trade{world.equities[0], {Currency::cad(), 1}, 1, 1}, date, date,
      std::nullopt};
  for (auto _ : state) {
    benchmark::DoNotOptimize(world.manager->trial(purchase, world.portfolio));
  }
}
BENCHMARK(tryAnEntry)
    ->Name("Ledger/try an entry at percent")
    ->Arg(100)
    ->Arg(50)
    ->Arg(0)
    ->Unit(benchmark::kMicrosecond);

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

}  // namespace ledger_bench
}  // namespace corvane
