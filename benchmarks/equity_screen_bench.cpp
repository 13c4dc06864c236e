// What a user waits for who selects an equity whose prices are in the cache: from the click to the
// painted chart, over ten years of days and over thirty days of minutes.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <cmath>
#include <filesystem>
#include <memory>

#include "core/market/price_adjuster.h"
#include "core/money/year_month_day.h"
#include "desktop/app/main_queue_pump.h"
#include "desktop/charts/chart_widget.h"
#include "desktop/equity/history_tab.h"
#include "desktop/equity/overview_tab.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "presentation/equity/equity_view_controller.h"
#include "qt_application.h"

namespace corvane {
namespace equity_screen_bench {

constexpr YearMonthDay today{2024, 6, 28};
constexpr std::size_t tenYears = 8;  // of OverviewViewController::periodPresets
constexpr int minutesOfADay = 390;

/// A source that has every weekday and every minute, and calls all of it final.
class EverySession : public QuoteProvider {
 public:
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override {
    QuoteFetchResult result{std::nullopt, std::nullopt, std::vector<EquityEvent>(),
                            query.dateRange};
    if (const auto* sought = std::get_if<QuoteQuery::Quotes>(&query.seeking)) {
      result.quotes = bars(query, sought->interval == QuoteInterval::oneDay);
      result.prices = PriceAdjustment::adjustedForSplits;
    }
    adjuster->adjust(std::move(result), std::move(query), std::move(completion));
  }
  [[nodiscard]] std::set<QuoteInterval> availableIntervals(
      const EquityPointer& /*equity*/, const DateRange& /*range*/) const override {
    return {QuoteInterval::oneMinute, QuoteInterval::oneDay};
  }

 private:
  static std::vector<Quote> bars(const QuoteQuery& query, bool areDaily) {
    const Calendar& calendar = query.equity->calendar;
    std::vector<Quote> made;
    auto day = YearMonthDay::of(query.dateRange.lower(), calendar);
    for (; day.startIn(calendar) < query.dateRange.upper();
         day = YearMonthDay::normalised(day.year, day.month, day.day + 1, calendar)) {
      const Date opens = day.startIn(calendar) + 34200;
      if (calendar.isDateInWeekend(opens)) {
        continue;
      }
      for (int minute = 0; minute < (areDaily ? 1 : minutesOfADay); ++minute) {
        Quote bar;
        const double place = opens.timeIntervalSinceReferenceDate() / 86400 + minute / 390.0;
        const double close = 100 + 20 * std::sin(place / 300) + 3 * std::sin(place * 1.7);
        bar.fromDate = opens + 60.0 * minute;
        bar.toDate = bar.fromDate + (areDaily ? 86400 : 60);
        bar.open = bar.close = Decimal::fromDouble(std::round(close * 100) / 100);
        bar.high = Decimal::fromDouble(std::round(close * 100 + 125) / 100);
        bar.low = Decimal::fromDouble(std::round(close * 100 - 150) / 100);
        bar.volume = 12345;
        if (query.dateRange.contains(bar.fromDate)) {
          made.push_back(bar);
        }
      }
    }
    return made;
  }
};

/// The two tabs in windows of 1440 by 700, over a chain with its cache on disk.
struct ShownEquities {
  ShownEquities() {
    startQt();
    for (const EquityPointer& equity : {first, second}) {
      equity->isAuthoritative = true;
      equity->calendar = calendar;
      equity->currency = Currency::usd();
      equity->firstTradeDate = YearMonthDay{1990, 1, 2}.startIn(calendar);
    }
    surroundings.now = [this] { return now; };
    surroundings.defaults = &defaults;
  }
  ~ShownEquities() { std::filesystem::remove_all(folder); }

  /// Selects the other equity and paints until its chart is there; how many bars that has.
  template <typename Controller>
  std::size_t select(Controller& controller) {
    controller.setCurrentEquity(controller.currentEquity() == first ? second : first);
    while (controller.isFetching()) {
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    // Layouts that have been asked for, the chart, and what it is painted on.
    for (int i = 0; i < 3; ++i) {
      QApplication::processEvents();
    }
    return controller.chart.interactiveDataSet->entries.size();
  }

  desktop::MainQueuePump pump;
  Calendar calendar{*TimeZone::withIdentifier("America/New_York")};
  Date now = today.startIn(calendar) + 60000;
  std::filesystem::path folder = [] {
    auto made = std::filesystem::temp_directory_path() / "corvane-equity-screen-bench";
    std::filesystem::remove_all(made);
    std::filesystem::create_directory(made);
    return made;
  }();
  UserDefaults defaults{folder / "settings.json"};
  std::shared_ptr<SwitchableQuoteProvider> provider = std::make_shared<SwitchableQuoteProvider>(
      std::make_shared<EverySession>(), folder / "Cache.sqlite3");
  EquityPointer first = provider->equityWithId("ABC");
  EquityPointer second = provider->equityWithId("XYZ");
  ScreenSurroundings surroundings;
};

template <typename Tab, typename Controller>
void selectAnEquity(benchmark::State& state, ShownEquities& shown,
                    const std::shared_ptr<Controller>& controller) {
  Tab tab(controller);
  tab.resize(1440, 700);
  tab.show();
  controller->setShown(true);
  for (int i = 0; i < 2; ++i) {
    shown.select(*controller);  // and warms the cache
  }
  for (auto _ : state) {
    state.counters["bars"] = static_cast<double>(shown.select(*controller));
  }
}

void selectWithTenYears(benchmark::State& state) {
  ShownEquities shown;
  const auto controller = OverviewViewController::make(shown.surroundings);
  controller->selectPeriod(tenYears);
  selectAnEquity<desktop::OverviewTab>(state, shown, controller);
}
BENCHMARK(selectWithTenYears)
    ->Name("Equity screen/from selecting an equity to ten years of days, painted")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void selectWithThirtyDays(benchmark::State& state) {
  ShownEquities shown;
  const auto controller = HistoryViewController::make(shown.surroundings);
  // Thirty sessions of minutes are a good month of days.
  controller->datesPicker.setDates({2024, 5, 17}, today);
  controller->datesPicker.setSelectedInterval(QuoteInterval::oneMinute);
  selectAnEquity<desktop::HistoryTab>(state, shown, controller);
}
BENCHMARK(selectWithThirtyDays)
    ->Name("Equity screen/from selecting an equity to thirty days of minutes, painted")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace equity_screen_bench
}  // namespace corvane
