// What a user waits for at a chart: until it is painted, and until a step of pointer or key is. The
// chart of an equity over ten years of days and over thirty days of minutes, in a large window.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPixmap>
#include <cmath>
#include <memory>

#include "core/market/quote_provider.h"
#include "core/money/year_month_day.h"
#include "desktop/charts/chart_widget.h"
#include "presentation/charts/quote_chart_view.h"
#include "qt_application.h"

namespace corvane {
namespace charts_bench {

constexpr int tenYearsOfDays = 2520;
constexpr int thirtyDaysOfMinutes = 11700;

/// A chart in a window of 1440 by 700, and the quotes that fill it.
struct ShownChart {
  explicit ShownChart(int count) {
    startQt();
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/New_York"));
    const Date first = YearMonthDay{2015, 1, 5}.startIn(equity->calendar);
    const double seconds = count == tenYearsOfDays ? 125000 : 222;
    for (int i = 0; i < count; ++i) {
      Quote quote;
      const double close = 100 + 20 * std::sin(i / 300.0) + 3 * std::sin(i * 1.7);
      quote.fromDate = first + i * seconds;
      quote.toDate = quote.fromDate + seconds;
      quote.open = quote.close = Decimal::fromDouble(close);
      quote.high = Decimal::fromDouble(close + 1.25);
      quote.low = Decimal::fromDouble(close - 1.5);
      quotes.push_back(std::move(quote));
    }
    query = std::make_unique<QuoteQuery>(
        QuoteQuery{equity,
                   {quotes.front().fromDate, quotes.back().toDate},
                   QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}});
    chart.currency = Currency::usd();
    chart.reset();
    widget = std::make_unique<desktop::ChartWidget>(chart, QStringLiteral("Prices"));
    widget->resize(1440, 700);
    widget->show();
    chart.setQuotes(quotes, *query);
    chart.tooltipProvider = [this](std::size_t index) {
      return AttributedText(chart.keyText(index));
    };
    paint();
  }
  /// Lets everything that waits be painted.
  static void paint() { QApplication::processEvents(); }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  EquityPointer equity = provider->equityWithId("ABC");
  std::vector<Quote> quotes;
  std::unique_ptr<QuoteQuery> query;
  QuoteChartView chart{QuoteChartView::Mode::presentation};
  std::unique_ptr<desktop::ChartWidget> widget;
};

/// From the quotes to the picture, which is what selecting an equity adds to reading them.
void showQuotes(benchmark::State& state) {
  ShownChart shown(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    shown.chart.setQuotes(shown.quotes, *shown.query);
    ShownChart::paint();
  }
}
BENCHMARK(showQuotes)
    ->Name("Charts/from quotes to picture")
    ->Arg(tenYearsOfDays)
    ->Arg(thirtyDaysOfMinutes)
    ->Unit(benchmark::kMillisecond);

void hover(benchmark::State& state) {
  ShownChart shown(static_cast<int>(state.range(0)));
  QWidget* plot = shown.widget->childAt(700, 300);
  int x = 0;
  for (auto _ : state) {
    x = (x + 37) % 1200;
    const QPointF point(120 + x, 300);
    QMouseEvent move(QEvent::MouseMove, point, plot->mapToGlobal(point), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(plot, &move);
    ShownChart::paint();
  }
}
BENCHMARK(hover)
    ->Name("Charts/move of the pointer")
    ->Arg(tenYearsOfDays)
    ->Arg(thirtyDaysOfMinutes)
    ->Unit(benchmark::kMillisecond);

void step(benchmark::State& state) {
  ShownChart shown(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
    QApplication::sendEvent(shown.widget.get(), &press);
    ShownChart::paint();
  }
}
BENCHMARK(step)
    ->Name("Charts/step by key")
    ->Arg(tenYearsOfDays)
    ->Arg(thirtyDaysOfMinutes)
    ->Unit(benchmark::kMillisecond);

}  // namespace charts_bench
}  // namespace corvane
