// A ledger of 20 years in 50 equities and 3 currencies: walking it, editing its end, recording it.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <random>

#include "core/quote_provider.h"
#include "ledger/ledger_walk.h"
#include "ledger/portfolio_manager.h"

namespace corvane {
namespace {

constexpr int years = 20;

struct World {
  World() {
    manager->calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
    portfolio = manager->createPortfolio(Currency::cad());
    const Currency currencies[] = {Currency::cad(), Currency::usd(),
                                   Currency::byCode().find("EUR")->second};
    for (int i = 0; i < 50; ++i) {
      equities.push_back(provider->equityWithId("EQUITY" + std::to_string(i) + ".TO"));
      equities.back()->currency = currencies[i % 3];
    }
  }

  /// `count` transactions in date order that the ledger takes: mostly purchases and sales, some
  /// dividends and deposits.
  std::vector<BasicTransaction> transactions(int count) {
    std::mt19937_64 random(1);
    const Date start =
        *manager->calendar.date({{CalendarUnit::year, 2004}, {CalendarUnit::hour, 12}});
    const double step = years * 365.0 * 86400 / count;
    std::vector<Decimal> held(equities.size());
    std::vector<BasicTransaction> made;
    made.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
      const std::size_t index = random() % equities.size();
      const EquityPointer& equity = equities[index];
      const auto cents = [&](std::uint64_t most) {
        return Decimal::fromParts(Sign::plus, -2, static_cast<unsigned long>(random() % most + 1));
      };
      const Date date = start + step * i;
      BasicTransaction::Kind kind;
      if (i < 3 || random() % 20 == 0) {
        const Currency& currency = equities[static_cast<std::size_t>(i) % 3]->currency;
        kind = BasicTransaction::Transfer{
            {currency, i < 3 ? Decimal(1'000'000'000) : cents(1'000'000)}};
      } else if (random() % 10 == 0) {
        const Decimal amount = cents(10'000);
        kind = BasicTransaction::Yield{BasicTransaction::YieldType::dividend,
                                       equity,
                                       held[index],
                                       {equity->currency, amount},
                                       amount};
      } else {
        const bool isSale = held[index] >= 100 && random() % 2 == 0;
        const Decimal shares = isSale ? -Decimal(static_cast<long>(random() % 50 + 1))
                                      : Decimal(static_cast<long>(random() % 100 + 1));
        const Decimal cost = (isSale ? Decimal(-1) : Decimal(1)) * cents(1'000'000);
        held[index] += shares;
        kind = BasicTransaction::Trade{equity, {equity->currency, cost}, cost, shares};
      }
      made.push_back({std::move(kind), date, date, std::nullopt});
    }
    return made;
  }

  void record(int count) { manager->recordTransactions(transactions(count), portfolio, nullptr); }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  std::shared_ptr<PortfolioManager> manager = std::make_shared<PortfolioManager>(provider);
  PortfolioPointer portfolio;
  std::vector<EquityPointer> equities;
};

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
  const std::size_t start = rows.size() - rows.size() / years;
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
