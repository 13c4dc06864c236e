// What a user waits for when a portfolio of 20 years is shown: its 100,000 transactions, and its
// chart.

#include <benchmark/benchmark.h>

#include "ledger_world.h"
#include "presentation/performance/portfolio_chart.h"
#include "presentation/transactions/portfolio_transactions_view_controller.h"

namespace corvane {
namespace screens_bench {

constexpr std::size_t visibleRows = 40;
const ClosedRange<YearMonthDay> allTime({2004, 1, 1}, {2023, 12, 31});

/// Makes the texts of one screen of `table`; their length in bytes.
std::size_t readScreen(const TableModel& table, std::size_t firstRow) {
  std::size_t length = 0;
  for (std::size_t row = firstRow; row < firstRow + visibleRows; ++row) {
    for (std::size_t column = 0; column < table.columns().size(); ++column) {
      length += table.cell(row, column).plainText().size();
    }
  }
  return length;
}

PortfolioDataSlice sliceOf(const PortfolioPointer& portfolio) {
  PortfolioDataSlice slice{.portfolio = portfolio};
  slice.selectDays(allTime);
  return slice;
}

/// From the choice of days to the texts of the first screen.
void openTransactions(benchmark::State& state) {
  const World& world = largeWorld();
  for (auto _ : state) {
    PortfolioTransactionsViewController table{ScreenSurroundings{}};
    table.setCurrentData(sliceOf(world.portfolio), std::nullopt);
    benchmark::DoNotOptimize(table.title());
    benchmark::DoNotOptimize(readScreen(table, 0));
  }
}
BENCHMARK(openTransactions)
    ->Name("Screens/open 100000 transactions")
    ->Unit(benchmark::kMicrosecond);

/// Forty rows that come into view.
void scrollTransactions(benchmark::State& state) {
  PortfolioTransactionsViewController table{ScreenSurroundings{}};
  table.setCurrentData(sliceOf(largeWorld().portfolio), std::nullopt);
  std::size_t row = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(readScreen(table, row));
    row = (row + visibleRows) % (table.numberOfRows() - visibleRows);
  }
}
BENCHMARK(scrollTransactions)
    ->Name("Screens/scroll 40 transactions into view")
    ->Unit(benchmark::kMicrosecond);

/// The floor of opening: the rows of the range are found and shared, and nothing is written.
void selectDays(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(sliceOf(largeWorld().portfolio));
  }
}
BENCHMARK(selectDays)->Name("Screens/select all days")->Unit(benchmark::kMicrosecond);

/// An edit whose rows are found among all and selected.
void showEdit(benchmark::State& state) {
  const World& world = largeWorld();
  PortfolioTransactionsViewController table{ScreenSurroundings{}};
  const TransactionChanges changes{.modified =
                                       TransactionSet{world.portfolio->transactions().back()}};
  for (auto _ : state) {
    table.setCurrentData(sliceOf(world.portfolio), changes);
  }
}
BENCHMARK(showEdit)->Name("Screens/show an edit of 100000")->Unit(benchmark::kMicrosecond);

/// 5,000 days with 50 equities in 3 currencies.
void drawChart(benchmark::State& state) {
  const World& world = largeWorld();
  PortfolioSnapshot snapshot;
  for (const EquityPointer& equity : world.equities) {
    snapshot.equitySnapshots.set(equity, {100, Decimal::fromDouble(12.34), 1000, 0});
    snapshot.currencySnapshots.set(equity->currency, {5000, 4000, Decimal::fromDouble(1.25)});
  }
  auto group = std::make_shared<PortfolioSnapshotGroup>();
  for (int i = 0; i < 5000; ++i) {
    group->sortedSnapshots.push_back(
        {YearMonthDay::normalised(2004, 1, 1 + i * 7 / 5, world.manager->calendar), snapshot});
  }
  group->equitiesHeldOrTraded.insert(world.equities.begin(), world.equities.end());
  PortfolioDataSlice slice = sliceOf(world.portfolio);
  slice.snapshotGroup = std::move(group);
  FiscalChartView chart;
  for (auto _ : state) {
    drawPortfolioChart(chart, slice, std::nullopt);
    benchmark::DoNotOptimize(chart.closingValue());
  }
}
BENCHMARK(drawChart)->Name("Screens/chart 5000 days of 50 equities")->Unit(benchmark::kMillisecond);

}  // namespace screens_bench
}  // namespace corvane
