// Reading statements of 100,000 rows: by the rules with columns that were placed, with the guard
// that reads all cells a second time, by a layout up to the preview, and by the console from the
// start of the program to the saved workspace; next to the reader of delimited text alone.

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

#include "exchange/imports/import_job.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "exchange/profiles/profile_shelf.h"
#include "exchange/statements/statement_preview.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/file_manager.h"

namespace corvane {
namespace import_bench {

constexpr int rowCount = 100'000;

/// Deposits, purchases and dividends in the order of time, three or four rows a day.
std::string statement() {
  std::string text =
      "transaction_date,settlement_date,account_id,account_type,activity_type,activity_sub_type,"
      "direction,symbol,name,currency,quantity,unit_price,commission,net_cash_amount\n";
  const Calendar calendar;
  for (int row = 0; row < rowCount; ++row) {
    const auto day = YearMonthDay::normalised(1950, 1, 1 + row / 4, calendar);
    const auto two = [](int number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    const std::string date = std::to_string(day.year) + "-" + two(day.month) + "-" + two(day.day);
    text += date + "," + date + ",A1,TFSA,";
    switch (row % 4) {
      case 0:
        text += "MoneyMovement,deposit,,,,CAD,,,,1000.25\n";
        break;
      case 1:
        text += "Trade,BUY,,ABC,Acme,CAD,10,20.5,0,-205.00\n";
        break;
      case 2:
        text += "Dividend,Dividend,,ABC,Acme,CAD,,,,4.21\n";
        break;
      default:
        text += "Trade,SELL,,ABC,Acme,CAD,9,20.5,0,184.50\n";
        break;
    }
  }
  return text;
}

class Statement {
 public:
  Statement() { files::writeAtomically(file(), statement()); }
  ~Statement() { files::remove(folder_); }
  [[nodiscard]] std::filesystem::path file() const { return folder_ / "statement.csv"; }

 private:
  std::filesystem::path folder_ =
      files::makePrivateDirectory(std::filesystem::temp_directory_path());
};

const Statement& prepared() {
  static const Statement prepared;
  return prepared;
}

struct World {
  std::shared_ptr<PortfolioManager> manager =
      std::make_shared<PortfolioManager>(std::make_shared<QuoteProvider>());
  PortfolioPointer portfolio = manager->createPortfolio(Currency::cad());
};

void Import_floorRows(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(ImportSource(prepared().file()).rows().size());
  }
}
BENCHMARK(Import_floorRows)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The job of an import as a shell runs it, without the sheet, on the main queue.
void Import_rows(benchmark::State& state) {
  const bool isGuarded = state.range(0) != 0;
  for (auto _ : state) {
    World world;
    const auto importer = PortfolioTransactionsImporter::make(world.portfolio, nullptr);
    importer->changeSettings([](auto& settings) {
      settings.fieldOrder = {
          "tradeDate",    "settlementDate", "", "note", "",          "type", "", "symbol", "",
          "cashCurrency", "numberOfShares", "", "",     "cashAmount"};
    });
    if (isGuarded) {
      importer->reviewHandler = [](const ReadingQuestion&) { return ReadingAnswer::cancel; };
    }
    MainLoop::drain();
    auto source = std::make_shared<const ImportSource>(prepared().file());
    Progress progress;
    DispatchQueue::main()->async([&] {
      try {
        runImportJob(std::move(source), *importer, progress);
      } catch (const Error& error) {
        state.SkipWithError(error.description().value_or("").c_str());
      }
    });
    MainLoop::drain();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * rowCount);
}
BENCHMARK(Import_rows)
    ->ArgName("guard")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// Runs the console in `folder` with `arguments`; what it used. Null where it fails.
std::optional<rusage> runConsole(const std::filesystem::path& folder,
                                 const std::string& arguments) {
  const pid_t child = fork();
  if (child == 0) {
    const std::string command =
        "cd '" + folder.string() + "' && exec '" CORVANE_CLI "' " + arguments + " >/dev/null 2>&1";
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(usage) : std::nullopt;
}

/// The console imports the statement into an empty portfolio, with these options. The most memory
/// that it took, in KiB.
long importByConsole(benchmark::State& state, const std::string& options) {
  const std::filesystem::path folder = prepared().file().parent_path();
  long peak = 0;
  for (auto _ : state) {
    state.PauseTiming();
    files::remove(folder / "Family.corvane");
    (void)runConsole(folder, "create Family --portfolio Savings --currency CAD");
    state.ResumeTiming();
    const auto usage =
        runConsole(folder, "import statement.csv --into Family --portfolio Savings " + options);
    if (!usage) {
      state.SkipWithError("the console has refused the statement");
      break;
    }
    peak = std::max(peak, usage->ru_maxrss);
  }
  state.counters["peak MB"] = static_cast<double>(peak) / 1000;
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * rowCount);
  return peak;
}

void Import_console(benchmark::State& state) {
  importByConsole(state,
                  "--fields tradeDate,settlementDate,,note,,type,,symbol,,cashCurrency,"
                  "numberOfShares,,,cashAmount");
}
BENCHMARK(Import_console)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void Statement_preview(benchmark::State& state) {
  const ProfileShelf shelf = ProfileShelf::standard();
  const std::string bytes = files::read(prepared().file());
  for (auto _ : state) {
    World world;
    const auto preview = previewStatement(bytes, shelf.profiles, world.portfolio, {});
    if (preview.newRowCount() != rowCount) {
      state.SkipWithError("not all rows are new");
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * rowCount);
}
BENCHMARK(Statement_preview)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The console's preview of the statement, and its import, by the layout; the peak is told in MB
/// and as a multiple of the file.
void Statement_console(benchmark::State& state) {
  const auto size = static_cast<double>(std::filesystem::file_size(prepared().file()));
  const long peak = importByConsole(state, state.range(0) != 0 ? "--preview --csv" : "");
  state.counters["times the file"] = static_cast<double>(peak) * 1024 / size;
}
BENCHMARK(Statement_console)
    ->ArgName("preview")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

}  // namespace import_bench
}  // namespace corvane
