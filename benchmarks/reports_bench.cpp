// Reports on 20 years of 100,000 rows in 50 equities and 3 currencies, from prices that are there.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>

#include "ledger_world.h"
#include "platform/async/dispatch_queue.h"
#include "reports/income/expected_income.h"
#include "reports/inquiry/report_inquiry.h"
#include "reports/overview/overview_history.h"
#include "reports/overview/portfolios_overview.h"
#include "reports/returns/returns_report.h"
#include "reports/series/report_days.h"
#include "reports/tax/tax_year.h"
#include "reports/trail/equity_trails.h"
#include "reports/trail/heading_trails.h"
#include "reports/trail/ledger_trails.h"
#include "reports/trail/returns_trails.h"
#include "reports/trail/tax_trails.h"

namespace corvane {
namespace reports_bench {

constexpr YearMonthDay firstDay{2004, 1, 1};
constexpr YearMonthDay lastDay{2023, 12, 31};
constexpr int rowCount = 100'000;

struct ReportedWorld : World {
  ReportedWorld() {
    record(rowCount);
    for (const EquityPointer& equity : equities) {
      market.prices[equity] = closes(40'00);
    }
    for (const char* code : {"USD", "EUR"}) {
      market.rates[{Currency::byCode().find(code)->second, Currency::cad()}] = closes(1'30);
    }
  }

  /// A close on each weekday, around `cents`.
  static PriceLine closes(unsigned long cents) {
    PriceLine line;
    for (YearMonthDay day = daysAfter(firstDay, -leadInDays); day <= lastDay;
         day = daysAfter(day, 1)) {
      if (dayOfWeek(dayNumber(day)) < 5) {
        line.closes.push_back(
            {day, Decimal::fromParts(Sign::plus, -2, cents + line.closes.size() * 7 % 50)});
      }
    }
    return line;
  }

  MarketHistory market;
};

ReportedWorld& reportedWorld() {
  static ReportedWorld made;
  return made;
}

EquityTrailGround groundOf(const ReportedWorld& world) {
  return {world.portfolio, ValuationScope{firstDay, lastDay},
          std::make_shared<const MarketHistory>(world.market), world.manager->calendar};
}

void measureReturns(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  for (auto _ : state) {
    const ReturnsReport report =
        returnsReport(*world.portfolio, {firstDay, lastDay}, world.market, world.manager->calendar);
    state.counters["days"] = static_cast<double>(report.series.days.size());
    state.counters["equities"] = static_cast<double>(report.equities.size());
    benchmark::DoNotOptimize(report.timeWeighted.total);
  }
}
BENCHMARK(measureReturns)->Name("Reports/returns")->Unit(benchmark::kMillisecond);

void solveMoneyWeighted(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const ValuationSeries series =
      valuationSeries(*world.portfolio, {firstDay, lastDay}, world.market, world.manager->calendar);
  const auto payments = ownersPayments(series.days);
  state.counters["payments"] = static_cast<double>(payments.size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(moneyWeightedReturn(payments, 0));
  }
}
BENCHMARK(solveMoneyWeighted)->Name("Reports/money-weighted")->Unit(benchmark::kMillisecond);

void lookAtTaxYear(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const std::vector<TaxedPortfolio> portfolios{{world.portfolio}};
  const TaxYearQuestion question{{2023, 1, 1}, lastDay, {2024, 6, 1}};
  for (auto _ : state) {
    const TaxYear year = taxYear(portfolios, question, world.manager->calendar);
    state.counters["disposals"] = static_cast<double>(year.disposals.size());
  }
}
BENCHMARK(lookAtTaxYear)->Name("Reports/tax year")->Unit(benchmark::kMillisecond);

/// From the question of a screen to its answer: the ledger copied in slices, then the year.
void askForTaxYear(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const Calendar calendar = world.manager->calendar;
  for (auto _ : state) {
    ReportInquiry inquiry;
    std::size_t disposals = 0;
    inquiry.ask(
        {world.portfolio},
        [calendar](const ReportInquiry::Ledgers& ledgers, const Cancellation& cancellation) {
          TaxYearQuestion question{{2023, 1, 1}, lastDay, {2024, 6, 1}};
          question.cancellation = cancellation;
          const std::vector<TaxedPortfolio> taxed{{ledgers.front()}};
          return taxYear(taxed, question, calendar);
        },
        [&](const TaxYear& year) { disposals = year.disposals.size(); });
    MainLoop::runUntil([&] { return disposals > 0; }, std::chrono::seconds(10));
    state.counters["disposals"] = static_cast<double>(disposals);
  }
}
BENCHMARK(askForTaxYear)
    ->Name("Reports/tax year, asked from a screen")
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void matchSharesOfAYear(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const std::vector<TaxedPortfolio> portfolios{{world.portfolio}};
  TaxYearQuestion question{{2023, 1, 1}, lastDay, {2024, 6, 1}};
  question.country = TaxCountry::unitedKingdom;
  for (auto _ : state) {
    benchmark::DoNotOptimize(taxYear(portfolios, question, world.manager->calendar));
  }
}
BENCHMARK(matchSharesOfAYear)
    ->Name("Reports/tax year, shares matched")
    ->Unit(benchmark::kMillisecond);

/// Income by month, and what each of 50 holdings has paid and is expected to pay.
void lookAtIncome(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const std::vector<PortfolioPointer> portfolios{world.portfolio};
  for (auto _ : state) {
    const auto rows = recordedIncome(*world.portfolio, world.manager->calendar);
    benchmark::DoNotOptimize(incomeByPeriod(rows, IncomePeriod::Length::month, lastDay));
    const auto expected =
        expectedIncomes(portfolios, lastDay, world.manager->calendar, {}, DividendCalendar());
    state.counters["rows"] = static_cast<double>(rows.size());
    state.counters["equities"] = static_cast<double>(expected.size());
  }
}
BENCHMARK(lookAtIncome)->Name("Reports/income")->Unit(benchmark::kMillisecond);

/// The longest time for which a question keeps the main queue, where it copies 100,000 rows.
void openReport(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  for (auto _ : state) {
    using Clock = std::chrono::steady_clock;
    std::chrono::duration<double> longest{};
    ReportInquiry inquiry;
    bool isAnswered = false;
    auto begin = Clock::now();
    inquiry.ask(
        {world.portfolio}, [](const auto&, const Cancellation&) { return 0; },
        [&](int) { isAnswered = true; });
    while (!isAnswered) {
      longest = std::max<std::chrono::duration<double>>(longest, Clock::now() - begin);
      // A turn of the event loop runs one slice.
      begin = Clock::now();
      bool hasTurned = false;
      DispatchQueue::main()->async([&] { hasTurned = true; });
      MainLoop::runUntil([&] { return hasTurned || isAnswered; }, std::chrono::seconds(10));
    }
    state.SetIterationTime(longest.count());
  }
}
BENCHMARK(openReport)
    ->Name("Reports/longest stop of the main queue for a question")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void nameNeeds(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  for (auto _ : state) {
    MarketNeeds needs;
    addMarketNeeds(needs, *world.portfolio, firstDay, lastDay, world.manager->calendar);
    benchmark::DoNotOptimize(needs);
  }
}
BENCHMARK(nameNeeds)->Name("Reports/what a report needs")->Unit(benchmark::kMillisecond);

void explainTimeWeighted(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const ValuationSeries series =
      valuationSeries(*world.portfolio, {firstDay, lastDay}, world.market, world.manager->calendar);
  for (auto _ : state) {
    benchmark::DoNotOptimize(timeWeightedTrail(series.days, series.currency));
  }
}
BENCHMARK(explainTimeWeighted)
    ->Name("Reports/explain time-weighted return")
    ->Unit(benchmark::kMillisecond);

void explainMoneyWeighted(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const ValuationSeries series =
      valuationSeries(*world.portfolio, {firstDay, lastDay}, world.market, world.manager->calendar);
  for (auto _ : state) {
    benchmark::DoNotOptimize(moneyWeightedTrail(series.days, series.currency));
  }
}
BENCHMARK(explainMoneyWeighted)
    ->Name("Reports/explain money-weighted return")
    ->Unit(benchmark::kMillisecond);

/// Of 5,000 deposits, which have the rates of their days beside those of today.
void explainDeposits(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  for (auto _ : state) {
    benchmark::DoNotOptimize(depositsTrail(*world.portfolio, &world.market));
  }
}
BENCHMARK(explainDeposits)->Name("Reports/explain net deposits")->Unit(benchmark::kMillisecond);

/// What `explain` makes of a tax year of the world.
template <typename Explain>
void explainTaxYear(benchmark::State& state, Explain explain) {
  ReportedWorld& world = reportedWorld();
  const Calendar& calendar = world.manager->calendar;
  const std::vector<TaxedPortfolio> portfolios{{world.portfolio}};
  TaxYearQuestion question{{2023, 1, 1}, lastDay, {2024, 6, 1}};
  question.country = state.range(0) == 0 ? TaxCountry::canada : TaxCountry::unitedKingdom;
  const TaxYear year = taxYear(portfolios, question, calendar);
  for (auto _ : state) {
    benchmark::DoNotOptimize(explain(year, portfolios, question, calendar));
  }
}

/// Of the last sale of a year: the pool of its equity is walked anew. Without matched shares and
/// with them.
void explainTaxGain(benchmark::State& state) {
  explainTaxYear(state, [](const TaxYear& year, const auto&... asked) {
    return taxGainTrail(year.disposals.back(), asked...);
  });
}
BENCHMARK(explainTaxGain)
    ->Name("Reports/explain a tax gain")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);

void explainCostAtEnd(benchmark::State& state) {
  explainTaxYear(state, [](const TaxYear& year, const auto&... asked) {
    return taxCostAtEndTrail(year.costs.front(), asked...);
  });
}
BENCHMARK(explainCostAtEnd)
    ->Name("Reports/explain the cost base at the end of a year")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);

/// With the rows of the equity that moved money.
void explainEquityGain(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const EquityTrailGround ground = groundOf(world);
  const ReturnsReport report =
      returnsReport(*world.portfolio, ground.scope, world.market, ground.calendar);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        equityFigureTrail(EquityFigure::gain, report.equities.front().figures, ground));
  }
}
BENCHMARK(explainEquityGain)
    ->Name("Reports/explain the gain of an equity")
    ->Unit(benchmark::kMillisecond);

void explainEquityReturn(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const EquityTrailGround ground = groundOf(world);
  const ReturnsReport report =
      returnsReport(*world.portfolio, ground.scope, world.market, ground.calendar);
  for (auto _ : state) {
    benchmark::DoNotOptimize(equityMoneyWeightedTrail(report.equities.front(), ground));
  }
}
BENCHMARK(explainEquityReturn)
    ->Name("Reports/explain the money-weighted return of an equity")
    ->Unit(benchmark::kMillisecond);

void explainCostBase(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const auto& rows = world.portfolio->transactions();
  std::size_t last = rows.size() - 1;
  while (!rows[last]->capitalGain()) {
    --last;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(costBaseTrail(*world.portfolio, last, world.manager->calendar));
    benchmark::DoNotOptimize(capitalGainTrail(*world.portfolio, last, world.manager->calendar));
  }
}
BENCHMARK(explainCostBase)
    ->Name("Reports/explain cost base and gain")
    ->Unit(benchmark::kMillisecond);

void measureWorkspace(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  constexpr int portfolioCount = 10;
  for (auto _ : state) {
    std::vector<ReturnsReport> reports;
    for (int i = 0; i < portfolioCount; ++i) {
      reports.push_back(returnsReport(*world.portfolio, {firstDay, lastDay}, world.market,
                                      world.manager->calendar));
    }
    benchmark::DoNotOptimize(combinedReport(reports, Currency::cad(), world.market));
  }
}
BENCHMARK(measureWorkspace)
    ->Name("Reports/returns of 10 portfolios")
    ->Unit(benchmark::kMillisecond);

/// What the page over all portfolios works out when it opens, and at each refresh of prices.
void measureOverview(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const std::vector<PortfolioPointer> portfolios(10, world.portfolio);
  for (auto _ : state) {
    benchmark::DoNotOptimize(overviewHistory(portfolios, {firstDay, lastDay}, world.market,
                                             world.manager->calendar, Currency::cad()));
  }
}
BENCHMARK(measureOverview)
    ->Name("Reports/history of 10 portfolios together")
    ->Unit(benchmark::kMillisecond);

void refreshOverview(benchmark::State& state) {
  ReportedWorld& world = reportedWorld();
  const std::vector<PortfolioPointer> portfolios(10, world.portfolio);
  const EquitySet rates = ratesOfOverview(portfolios, Currency::cad(), *world.provider);
  for (const EquityPointer& rate : rates) {
    rate->recentPrice = 1;
  }
  for (const EquityPointer& equity : world.equities) {
    equity->recentPrice = equity->previousClosePrice = 40;
    equity->recentDate = Date::now();
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(portfoliosOverview(portfolios, Currency::cad(), *world.provider));
  }
}
BENCHMARK(refreshOverview)
    ->Name("Reports/latest figures of 10 portfolios together")
    ->Unit(benchmark::kMicrosecond);

}  // namespace reports_bench
}  // namespace corvane
