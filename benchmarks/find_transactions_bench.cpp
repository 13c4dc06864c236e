// What a user waits for who types words to find among 150,000 transactions: each key, in the list
// and in the window. The floor is a look at as many rows.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>
#include <chrono>
#include <limits>

#include "desktop/transactions/transactions_tab.h"
#include "ledger_world.h"
#include "presentation/transactions/portfolio_transactions_view_controller.h"
#include "qt_application.h"

namespace corvane {
namespace find_bench {

constexpr int rowCount = 150'000;

/// As largeWorld(), of more rows, every seventh with a note that no other has.
World& notedWorld() {
  static World world = [] {
    World made;
    auto transactions = made.transactions(rowCount);
    for (std::size_t i = 0; i < transactions.size(); i += 7) {
      transactions[i].note = "Order " + std::to_string(i * 7919 % 1'000'003) + " of the broker";
    }
    made.manager->recordTransactions(std::move(transactions), made.portfolio, nullptr);
    return made;
  }();
  return world;
}

std::shared_ptr<PortfolioTransactionsViewController> openList() {
  auto table = std::make_shared<PortfolioTransactionsViewController>(ScreenSurroundings{});
  PortfolioDataSlice slice{.portfolio = notedWorld().portfolio};
  slice.selectDays({{2004, 1, 1}, {2023, 12, 31}});
  table->setCurrentData(std::move(slice), std::nullopt);
  return table;
}

/// What is typed, of which each letter is a key.
constexpr const char* texts[] = {"equity1 dividend", "order 79", "1234.5", "2019-03 sell 98",
                                 "zzz"};

/// The first key after an edit or the choice of days: what rows have in common is gathered.
void findFirst(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const auto table = openList();
    state.ResumeTiming();
    table->setFindText(state.range(0) == 0 ? "e" : "9");
    benchmark::DoNotOptimize(table->numberOfRows());
  }
}
BENCHMARK(findFirst)
    ->Name("Find/first key of a word, of a number")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);

/// How long each key of a text takes at least, so that what else the machine does counts less.
class KeyTimes {
 public:
  explicit KeyTimes(std::size_t keys) : least_(keys, std::numeric_limits<double>::max()) {}

  template <typename Press>
  void press(std::size_t key, Press press) {
    const auto start = std::chrono::steady_clock::now();
    press();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    least_[key] = std::min(least_[key], taken.count());
  }

  /// The slowest of them, in milliseconds.
  [[nodiscard]] double slowest() const { return std::ranges::max(least_); }

 private:
  std::vector<double> least_;
};

/// The time is that of all keys and of clearing the field.
void typeOn(benchmark::State& state) {
  const auto table = openList();
  const std::string text = texts[state.range(0)];
  table->setFindText("9");
  table->setFindText("");
  KeyTimes times(text.size());
  for (auto _ : state) {
    for (std::size_t key = 0; key < text.size(); ++key) {
      times.press(key, [&] {
        table->setFindText(text.substr(0, key + 1));
        benchmark::DoNotOptimize(table->numberOfRows());
      });
    }
    table->setFindText("");
  }
  state.SetLabel(text);
  state.counters["slowest_key_ms"] = times.slowest();
}
BENCHMARK(typeOn)
    ->Name("Find/type a text and clear it")
    ->DenseRange(0, 4)
    ->Unit(benchmark::kMillisecond);

/// The same with the window: keys into the field, and the list is drawn.
void typeInWindow(benchmark::State& state) {
  startQt();
  const auto list = openList();
  desktop::TransactionsTab tab(list);
  tab.resize(1200, 500);
  tab.show();
  auto* field = tab.findChild<QLineEdit*>();
  const QString text = QString::fromUtf8(texts[state.range(0)]);
  list->setFindText("9");
  list->setFindText("");
  QApplication::processEvents();
  KeyTimes times(static_cast<std::size_t>(text.size()));
  for (auto _ : state) {
    for (qsizetype key = 0; key < text.size(); ++key) {
      times.press(static_cast<std::size_t>(key), [&] {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(text[key]));
        QApplication::sendEvent(field, &press);
        QApplication::processEvents();
      });
    }
    field->clear();
    QApplication::processEvents();
  }
  state.SetLabel(text.toStdString());
  state.counters["slowest_key_ms"] = times.slowest();
}
BENCHMARK(typeInWindow)
    ->Name("Find/type a text in the window")
    ->DenseRange(0, 4)
    ->Unit(benchmark::kMillisecond);

/// The floor: one look at every row, whose kind is asked for.
void lookAtRows(benchmark::State& state) {
  const auto& rows = notedWorld().portfolio->transactions();
  for (auto _ : state) {
    std::vector<TransactionPointer> sales;
    for (const TransactionPointer& row : rows) {
      if (std::holds_alternative<BasicTransaction::Trade>(row->basic.kind)) {
        sales.push_back(row);
      }
    }
    benchmark::DoNotOptimize(sales.size());
  }
}
BENCHMARK(lookAtRows)->Name("Find/look at 150000 rows once")->Unit(benchmark::kMillisecond);

}  // namespace find_bench
}  // namespace corvane
