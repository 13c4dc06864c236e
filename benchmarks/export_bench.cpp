// Writing a ledger to a delimited text file, next to the write of a text of that size.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>

#include "exchange/exports/export_controller.h"
#include "exchange/exports/portfolio_transactions_exporter.h"
#include "ledger_world.h"
#include "platform/system/file_manager.h"

namespace corvane {
namespace export_bench {

constexpr int rowCount = 100'000;

class Export {
 public:
  Export() {
    world_.record(rowCount);
    exporter_ = PortfolioTransactionsExporter::make(*world_.portfolio,
                                                    world_.portfolio->transactions(), nullptr);
  }
  ~Export() { files::remove(folder_); }

  void run() const { ExportController::make(exporter_)->exportJob(file())(); }
  [[nodiscard]] std::filesystem::path file() const { return folder_ / "ledger.csv"; }

 private:
  World world_;
  std::shared_ptr<PortfolioTransactionsExporter> exporter_;
  std::filesystem::path folder_ =
      files::makePrivateDirectory(std::filesystem::temp_directory_path());
};

const Export& prepared() {
  static const Export prepared;
  return prepared;
}

void Export_transactions(benchmark::State& state) {
  for (auto _ : state) {
    prepared().run();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * rowCount);
}
BENCHMARK(Export_transactions)->Unit(benchmark::kMillisecond)->UseRealTime();

void Export_floorWriteOfTheText(benchmark::State& state) {
  prepared().run();
  const std::string text = files::read(prepared().file());
  for (auto _ : state) {
    files::writeAtomically(prepared().file(), text);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * rowCount);
}
BENCHMARK(Export_floorWriteOfTheText)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace export_bench
}  // namespace corvane
