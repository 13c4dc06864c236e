// What a user waits for who enters transactions by hand into a ledger of 100,000 rows: the form,
// each keystroke in it with its preview, and the accepted entry on disk and on the screen.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <QApplication>
#include <filesystem>

#include "desktop/transactions/edit_transaction_dialog.h"
#include "ledger_world.h"
#include "platform/async/dispatch_queue.h"
#include "presentation/portfolio/portfolio_view_controller.h"
#include "qt_application.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane {
namespace forms_bench {

using Form = EditTransactionViewController;

constexpr int rowCount = 100'000;

/// A ledger of 100,000 rows in a database of its own, and the screen that shows it.
class EntryWorld {
 public:
  EntryWorld() {
    std::string pattern = std::filesystem::temp_directory_path() / "corvane-bench-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    const auto provider = std::make_shared<QuoteProvider>();
    world_ = std::make_unique<World>(provider,
                                     StoredPortfolioManager::open(provider, folder_ / "ledger"));
    world_->record(rowCount);
    ScreenSurroundings surroundings;
    surroundings.undoManager = std::make_shared<UndoManager>();
    screen = PortfolioViewController::make(surroundings);
    screen->setPortfolio(world_->portfolio);
    settle();
  }
  ~EntryWorld() {
    world_.reset();
    std::filesystem::remove_all(folder_);
  }

  /// The form for a purchase on the last day of the ledger, filled in.
  [[nodiscard]] std::unique_ptr<Form> purchase(YearMonthDay day = {2023, 12, 29}) const {
    auto form = makeForm();
    form->load();
    fillIn(*form, day);
    return form;
  }
  [[nodiscard]] std::unique_ptr<Form> makeForm() const {
    return screen->makeCreateTransactionForm({world_->portfolio});
  }
  void fillIn(Form& form, YearMonthDay day) const {
    form.changeTransactionDate([&](DateEntry& date) { date.setDay(day); });
    form.chooseEquity(world_->equities.front());
    form.typeInto(form.numberOfSharesField, "10");
    form.typeInto(form.totalAmountField, "1000");
  }
  /// The form for a return of capital on `day`: it moves cash and cost base of all that comes
  /// behind it, and is refused by none of it, as a purchase is by the dividends that declare their
  /// shares.
  [[nodiscard]] std::unique_ptr<Form> returnOfCapital(YearMonthDay day) const {
    auto form = purchase(day);
    form->chooseMode(TransactionMode::returnOfCapital);
    const Date settlement = *form->settlementDatePicker.date();
    Decimal held;
    for (const TransactionPointer& row : portfolio()->transactions()) {
      const EquityPointer* equity = row->basic.equity();
      if (row->settlementDate() >= settlement) {
        break;
      }
      if (equity != nullptr && *equity == world_->equities.front()) {
        held = row->sharesNet.value_or(0);
      }
    }
    form->typeInto(form->numberOfSharesField, held.description());
    return form;
  }
  /// Runs the main loop until the prices of the chart have come.
  void settle() const {
    MainLoop::runUntil([this] { return !screen->isFetching(); }, std::chrono::seconds(60));
  }
  [[nodiscard]] const PortfolioPointer& portfolio() const { return world_->portfolio; }

  std::shared_ptr<PortfolioViewController> screen;

 private:
  std::filesystem::path folder_;
  std::unique_ptr<World> world_;
};

EntryWorld& entryWorld() {
  static EntryWorld world;
  return world;
}

void openForm(benchmark::State& state) {
  const EntryWorld& world = entryWorld();
  for (auto _ : state) {
    const auto form = world.makeForm();
    form->load();
    benchmark::DoNotOptimize(form->availableCurrencies());
  }
}
BENCHMARK(openForm)->Name("Forms/open on 100000 rows")->Unit(benchmark::kMillisecond);

void typeInto(benchmark::State& state, Form& form) {
  bool isOdd = false;
  for (auto _ : state) {
    isOdd = !isOdd;
    form.typeInto(form.totalAmountField, isOdd ? "101" : "102");
    benchmark::DoNotOptimize(form.preview());
  }
  if (form.preview().figures.empty()) {
    state.SkipWithError(("there was no preview: " + form.preview().refusal).c_str());
  }
}

/// A keystroke with its preview, for an entry at the end of the ledger.
void typeAtTheEnd(benchmark::State& state) {
  typeInto(state, *entryWorld().purchase());
}
BENCHMARK(typeAtTheEnd)->Name("Forms/keystroke with preview")->Unit(benchmark::kMillisecond);

/// The same for an entry before all others but the deposits, which has the most behind it.
void typeAtTheStart(benchmark::State& state) {
  typeInto(state, *entryWorld().returnOfCapital({2004, 2, 2}));
}
BENCHMARK(typeAtTheStart)
    ->Name("Forms/keystroke with preview, 20 years back")
    ->Unit(benchmark::kMillisecond);

/// The sheet from the command until it stands laid out and drawn.
void openSheet(benchmark::State& state) {
  startQt();
  const EntryWorld& world = entryWorld();
  for (auto _ : state) {
    auto* sheet = desktop::EditTransactionDialog::open(nullptr, world.makeForm(),
                                                       [](const auto&) { return true; });
    benchmark::DoNotOptimize(sheet->grab());
    state.PauseTiming();
    delete sheet;
    state.ResumeTiming();
  }
}
BENCHMARK(openSheet)->Name("Forms/open the sheet")->Unit(benchmark::kMillisecond);

/// A keystroke in the sheet, until it is drawn.
void typeInSheet(benchmark::State& state) {
  startQt();
  const EntryWorld& world = entryWorld();
  auto* sheet = desktop::EditTransactionDialog::open(nullptr, world.makeForm(),
                                                     [](const auto&) { return true; });
  world.fillIn(sheet->form(), {2023, 12, 29});
  bool isOdd = false;
  for (auto _ : state) {
    isOdd = !isOdd;
    sheet->form().typeInto(sheet->form().totalAmountField, isOdd ? "1001" : "1002");
    QApplication::sendPostedEvents();
    QApplication::processEvents();
  }
  delete sheet;
}
BENCHMARK(typeInSheet)->Name("Forms/keystroke in the sheet")->Unit(benchmark::kMillisecond);

/// From the go button until the entry is in the database and the table shows it, with its rows and
/// balances. The prices of the chart come later, and nobody waits for them.
void acceptEntry(benchmark::State& state) {
  EntryWorld& world = entryWorld();
  const auto form = world.purchase();
  const auto order = form->makeOrder();
  bool isShown = false;
  world.screen->transactions->changeHandler = [&](const auto& update) {
    isShown = isShown || update.rowsChanged;
  };
  for (auto _ : state) {
    isShown = false;
    if (!world.screen->placeOrder(*order, world.portfolio())) {
      state.SkipWithError("the ledger refused the entry");
      break;
    }
    MainLoop::runUntil([&] { return isShown; }, std::chrono::seconds(10));
    state.PauseTiming();
    world.settle();
    state.ResumeTiming();
  }
  world.screen->transactions->changeHandler = [](const auto&) {};
}
BENCHMARK(acceptEntry)
    ->Name("Forms/accepted entry on disk and in the table")
    ->Unit(benchmark::kMillisecond);

}  // namespace forms_bench
}  // namespace corvane
