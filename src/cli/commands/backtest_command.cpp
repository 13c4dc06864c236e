#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <optional>

#include "cli/commands/commands.h"
#include "cli/console/date_text.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "cli/console/progress_bar.h"
#include "cli/console/text_table.h"
#include "core/market/price_adjuster.h"
#include "core/money/currency_amount.h"
#include "core/strategy/investment_scenario.h"
#include "exchange/brokers/row_text.h"
#include "platform/async/dispatch_queue.h"
#include "scenario/scenario_analyzer.h"
#include "scenario/scenario_batch.h"

namespace corvane::cli {
namespace {

using enum TextTable::Alignment;

struct NamedInterval {
  std::string_view name;
  QuoteInterval interval;
};
constexpr std::array<NamedInterval, 12> namedIntervals = {{
    {"1m", QuoteInterval::oneMinute},
    {"2m", QuoteInterval::twoMinutes},
    {"5m", QuoteInterval::fiveMinutes},
    {"15m", QuoteInterval::fifteenMinutes},
    {"30m", QuoteInterval::thirtyMinutes},
    {"90m", QuoteInterval::ninetyMinutes},
    {"1h", QuoteInterval::oneHour},
    {"1d", QuoteInterval::oneDay},
    {"5d", QuoteInterval::fiveDays},
    {"1wk", QuoteInterval::oneWeek},
    {"1mo", QuoteInterval::oneMonth},
    {"3mo", QuoteInterval::threeMonths},
}};

QuoteInterval intervalOf(const CommandLine& line) {
  const std::string name = line.value("--interval").value_or("1d");
  const auto found = std::ranges::find(namedIntervals, name, &NamedInterval::name);
  if (found == namedIntervals.end()) {
    throw UsageError(
        "--interval is one of 1m, 2m, 5m, 15m, 30m, 90m, 1h, 1d, 5d, 1wk, 1mo, 3mo, "
        "not “" +
        name + "”.");
  }
  return found->interval;
}

struct NamedMethod {
  std::string_view name;
  BatchMethod method;
};
constexpr std::array<NamedMethod, 3> namedMethods = {{
    {"daily", BatchMethod::eachDay},
    {"from-start", BatchMethod::accumulatingFromStart},
    {"from-end", BatchMethod::accumulatingFromEnd},
}};

/// The method of "--batch", none without that option.
std::optional<BatchMethod> batchMethodOf(const CommandLine& line) {
  const auto name = line.value("--batch");
  if (!name) {
    if (line.has("--csv")) {
      throw UsageError("--csv goes with --batch.");
    }
    return std::nullopt;
  }
  const auto found = std::ranges::find(namedMethods, *name, &NamedMethod::name);
  if (found == namedMethods.end()) {
    throw UsageError("--batch is one of daily, from-start, from-end, not “" + *name + "”.");
  }
  return found->method;
}

InvestmentStrategy strategyOf(const CommandLine& line) {
  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  const auto take = [&](std::string_view option, Decimal& field) {
    field = numberOption(line, option).value_or(field);
  };
  take("--buy-spread", strategy.targetBuySpread);
  take("--buy-max", strategy.targetBuyMax);
  take("--sell-spread", strategy.targetSellSpread);
  take("--sell-slice", strategy.targetSellSlice);
  strategy.isStopLossActive = line.has("--stop-loss");
  take("--stop-loss-buy-spread", strategy.stopLossBuySpread);
  take("--stop-loss-buy-max", strategy.stopLossBuyMax);
  take("--stop-loss-sell-spread", strategy.stopLossSellSpread);
  take("--stop-loss-sell-slice", strategy.stopLossSellSlice);
  for (const Decimal& slice : {strategy.targetSellSlice, strategy.stopLossSellSlice}) {
    if (slice > Decimal(1)) {
      throw UsageError("A slice is a part of the shares held, and at most 1.");
    }
  }
  return strategy;
}

InvestmentScenario scenarioOf(const CommandLine& line) {
  const auto components = [](const YearMonthDay& day) {
    DateComponents parts;
    parts.set(CalendarUnit::year, day.year);
    parts.set(CalendarUnit::month, day.month);
    parts.set(CalendarUnit::day, day.day);
    return parts;
  };
  return {.fromDateComponents = components(dayOption(line, "--from").value()),
          .toDateComponents = components(dayOption(line, "--to").value()),
          .quoteInterval = intervalOf(line),
          .initialInvestment =
              numberOption(line, "--invest").value_or(InvestmentStrategy::defaultMaximum())};
}

/// The dates of the scenario as far as they are past. Throws UsageError where there are none.
DateRange pastDatesOf(const InvestmentScenario& scenario, const EquityInfo& equity) {
  const auto range = scenario.dateRange(equity.calendar);
  if (!range) {
    throw UsageError("--to is before --from.");
  }
  // Nothing has been traded after now, and services want whole seconds.
  const Date now =
      Date::sinceReferenceDate(std::floor(Date::now().timeIntervalSinceReferenceDate()));
  if (now < range->lower()) {
    throw UsageError("--from lies in the future.");
  }
  return {range->lower(), std::min(range->upper(), now)};
}

/// Throws Failed, having said what can be had instead, where the provider has no bars of this
/// length in `dates`: asking for years of minutes would take hundreds of requests, all in vain.
void requireInterval(QuoteInterval interval, const EquityPointer& equity, const DateRange& dates,
                     const QuoteProvider& provider, const Console& console) {
  const auto available = provider.availableIntervals(equity, dates);
  if (available.contains(interval)) {
    return;
  }
  std::string names;
  std::string wanted;
  for (const NamedInterval& named : namedIntervals) {
    if (named.interval == interval) {
      wanted = named.name;
    } else if (available.contains(named.interval)) {
      names += (names.empty() ? "" : ", ") + std::string(named.name);
    }
  }
  console.warn("There are no prices every " + wanted + " for days as old as " +
               dateText(dates.lower(), equity->calendar) + ". --interval may be one of " + names +
               ".");
  throw Failed(exitCode::failure);
}

Result<QuoteFetchResult> fetched(QuoteQuery query, const std::shared_ptr<QuoteProvider>& provider) {
  const auto outcome = std::make_shared<std::optional<Result<QuoteFetchResult>>>();
  provider->fetchQuotes(
      std::move(query), std::make_shared<PriceAdjuster>(provider),
      [outcome](Result<QuoteFetchResult> result) {
        DispatchQueue::main()->async(
            [outcome, result = std::move(result)]() mutable { *outcome = std::move(result); });
      });
  waitFor([&] { return outcome->has_value(); });
  return **outcome;
}

/// The bars of `dates`, as adjusted for splits. Throws what the provider fails with.
std::vector<Quote> fetchBars(const EquityPointer& equity, QuoteInterval interval,
                             const DateRange& dates,
                             const std::shared_ptr<QuoteProvider>& provider) {
  // Prices that are kept already may stem from before a split that nobody has told of yet. Where
  // the events cannot be had, that says nothing about the prices.
  (void)fetched({equity, equity->fullDateRange(), QuoteQuery::EventsWithoutAdjustment{}}, provider);
  const auto answer = fetched(
      {equity, dates, QuoteQuery::Quotes{interval, PriceAdjustment::adjustedForSplits}}, provider);
  if (!answer) {
    answer.error()->raise();
  }
  return answer->quotes.value_or(std::vector<Quote>());
}

std::string_view eventName(ScenarioPortfolio::Transaction::EventType type) {
  switch (type) {
    using enum ScenarioPortfolio::Transaction::EventType;
    case open:
      return "Open";
    case close:
      return "Close";
    case buy:
      return "Buy";
    case sell:
      return "Sell";
    case stopLossBuy:
      return "Stop-loss buy";
    case stopLossSell:
      return "Stop-loss sell";
  }
  return "";
}

/// "2024-03-09 09:30"
std::string timeText(Date date, const Calendar& calendar) {
  const auto two = [&](CalendarUnit unit) {
    const std::string text = std::to_string(calendar.component(unit, date));
    return (text.size() < 2 ? "0" : "") + text;
  };
  return dateText(date, calendar) + " " + two(CalendarUnit::hour) + ":" + two(CalendarUnit::minute);
}

void writeRows(const ScenarioAnalyzer::Analysis& analysis, const EquityInfo& equity,
               const Console& console) {
  TextTable table({{"When"},
                   {"Event"},
                   {"Shares", right},
                   {"Cash", right},
                   {"Held", right},
                   {"On hand", right},
                   {"Price", right}});
  for (const TransactionPointer& pointer : analysis.portfolio->transactions()) {
    const auto& row = dynamic_cast<const ScenarioPortfolio::Transaction&>(*pointer);
    std::string shares;
    std::string cash;
    if (const auto* trade = std::get_if<BasicTransaction::Trade>(&row.basic.kind)) {
      shares = trade->sharesAdded.description();
      cash = (-trade->cashDisposed.amount).description();
    } else if (const auto* transfer = std::get_if<BasicTransaction::Transfer>(&row.basic.kind)) {
      cash = transfer->amount.amount.description();
    }
    table.add({timeText(row.tradeDate(), equity.calendar),
               std::string(row.eventType ? eventName(*row.eventType) : ""), shares, cash,
               row.runningNetShares.description(), row.cashNet ? row.cashNet->description() : "",
               row.mostRecentSharePrice.description()});
  }
  table.write(console.out);
}

std::string percent(const Decimal& rate) {
  return rate.isNaN() ? "—"
                      : rounded(rate * Decimal(100), 2, RoundingMode::bankers).description() + "%";
}

std::string moneyText(const Decimal& amount, const EquityInfo& equity) {
  return roundedToMinorUnits(amount, equity.currency).description();
}

void replayOnce(const EquityPointer& equity, const std::vector<Quote>& quotes,
                const InvestmentStrategy& strategy, const Decimal& initialInvestment,
                const Console& console) {
  const ScenarioAnalyzer analyzer(equity, quotes, tradingDayNumbers(quotes, *equity));
  const auto analysis = analyzer.analyze(std::nullopt, strategy, initialInvestment);
  const auto held =
      analyzer.analyze(std::nullopt, InvestmentStrategy::buyAndHold(), initialInvestment);
  writeRows(analysis, *equity, console);
  const auto money = [&](const Decimal& amount) {
    return moneyText(amount, *equity) + " " + std::string(equity->currency.code);
  };
  console.out << '\n'
              << analysis.totalTradesMade << " trades on " << analysis.totalDaysTradedOn << " of "
              << analysis.totalTradingDays << " trading days, " << quotes.size() << " prices\n"
              << "Gain:         " << money(analysis.netGain()) << " ("
              << percent(analysis.rateOfReturn()) << ", " << percent(analysis.annualizedReturn())
              << " a year)\n"
              << "Buy and hold: " << money(held.netGain()) << " (" << percent(held.rateOfReturn())
              << ", " << percent(held.annualizedReturn()) << " a year)\n";
}

/// Results of a batch, and what is needed to tell of them.
struct BatchAnswer {
  const std::vector<BatchResultPointer>& results;
  const EquityInfo& equity;
  bool isIntraday;  ///< bars are shorter than a day
};

/// When a sub-period begins and ends: with the time of day where its bars are shorter than a day,
/// else the first and the last day.
std::array<std::string, 2> boundsOf(const BatchResult& result, const BatchAnswer& answer) {
  const Calendar& calendar = answer.equity.calendar;
  const Date first = result.dateRange.lower();
  const Date end = result.dateRange.upper();
  if (answer.isIntraday) {
    return {timeText(first, calendar), timeText(end, calendar)};
  }
  const Date last = calendar.dateByAdding(CalendarUnit::day, -1, end).value_or(end);
  return {dateText(first, calendar), dateText(std::max(first, last), calendar)};
}

void writeBatchTable(const BatchAnswer& answer, const Console& console) {
  TextTable table({{"From"},
                   {"To"},
                   {"Days", right},
                   {"Final value", right},
                   {"Gain", right},
                   {"Gain", right},
                   {"A year", right},
                   {"Buy and hold", right}});
  for (const BatchResultPointer& result : answer.results) {
    const auto& analysis = result->analysis;
    const auto [from, to] = boundsOf(*result, answer);
    table.add({from, to, std::to_string(analysis.totalTradingDays),
               moneyText(analysis.portfolio->currentValue(), answer.equity),
               moneyText(analysis.netGain(), answer.equity), percent(result->strategyPeriodReturn),
               percent(result->strategyAnnualizedReturn), percent(result->buyAndHoldReturn)});
  }
  table.write(console.out);
  const auto [least, greatest] = returnSpan(answer.results);
  console.out << "\nYields range from " << percent(least) << " to " << percent(greatest)
              << ". Analyzed returns over " << answer.results.size() << " time periods.\n"
              << "Money is in " << answer.equity.currency.code << ".\n";
}

void writeBatchFile(const BatchAnswer& answer, const Console& console) {
  const auto write = [&](const std::vector<std::string>& cells) {
    console.out << rowText(cells, ImportExportFieldDelimiter::comma);
  };
  const auto rate = [](const Decimal& number) {
    return number.isNaN() ? "" : rounded(number, 6, RoundingMode::bankers).description();
  };
  write({"From", "To", "Days", "Final Value", "Gain", "Return", "Annualized Return",
         "Buy & Hold Return", "Currency"});
  for (const BatchResultPointer& result : answer.results) {
    const auto& analysis = result->analysis;
    const auto [from, to] = boundsOf(*result, answer);
    write({from, to, std::to_string(analysis.totalTradingDays),
           moneyText(analysis.portfolio->currentValue(), answer.equity),
           moneyText(analysis.netGain(), answer.equity), rate(result->strategyPeriodReturn),
           rate(result->strategyAnnualizedReturn), rate(result->buyAndHoldReturn),
           std::string(answer.equity.currency.code)});
  }
}

/// Throws Failed, after all that could be had is written, where a sub-period failed.
void replayBatch(ScenarioBatch::Setting setting, bool isIntraday, bool isFile,
                 const Console& console) {
  const EquityPointer equity = setting.equity;
  ScenarioBatch batch;
  bool hasEnded = false;
  ErrorPointer error;
  {
    ProgressBar bar(console.err, "Replaying");
    batch.begin(
        std::move(setting),
        [&] {
          bar.show(static_cast<double>(batch.completedCount()) /
                   static_cast<double>(batch.totalCount()));
        },
        [&](ErrorPointer told) {
          hasEnded = true;
          error = std::move(told);
        });
    waitFor([&] { return hasEnded; });
  }
  const BatchAnswer answer{batch.results(), *equity, isIntraday};
  if (isFile) {
    writeBatchFile(answer, console);
  } else {
    writeBatchTable(answer, console);
  }
  if (error != nullptr) {
    console.present(*error);
    throw Failed(exitCode::failure);
  }
}

void backtest(const CommandLine& line, const Console& console) {
  const InvestmentScenario scenario = scenarioOf(line);
  const InvestmentStrategy strategy = strategyOf(line);
  const std::optional<BatchMethod> method = batchMethodOf(line);
  const PriceSource prices(line);
  const EquityPointer equity = prices.provider()->equityWithId(line.word(0));
  refreshEquities(*prices.provider(), {equity}, console);
  const DateRange dates = pastDatesOf(scenario, *equity);
  if (!line.has("--offline")) {  // The cache may have a part of the days, which does.
    requireInterval(scenario.quoteInterval, equity, dates, *prices.provider(), console);
  }
  std::vector<Quote> quotes = fetchBars(equity, scenario.quoteInterval, dates, prices.provider());
  if (quotes.empty()) {
    console.warn("There are no prices of " + equity->symbol + " in these days.");
    throw Failed(exitCode::failure);
  }
  if (method) {
    replayBatch({equity, std::move(quotes), *method, strategy, scenario.initialInvestment},
                scenario.quoteInterval < QuoteInterval::oneDay, line.has("--csv"), console);
  } else {
    replayOnce(equity, quotes, strategy, scenario.initialInvestment, console);
  }
}

}  // namespace

Command backtestCommand() {
  std::vector<Option> options = {
      {"--from", "DAY", "the first day, such as 2024-01-01", true},
      {"--to", "DAY", "the last day", true},
      {"--interval", "LENGTH", "how far prices are apart, 1m to 3mo; else 1d"},
      {"--invest", "MONEY", "what there is to start with; else 1000"},
      {"--buy-spread", "PART", "how far below the last trade to buy; else 0.05, which is 5%"},
      {"--buy-max", "MONEY", "the most that one purchase spends; else 1000"},
      {"--sell-spread", "PART", "how far above the last trade to sell; else 0.05"},
      {"--sell-slice", "PART", "the part of the shares that one sale gives up; else 1"},
      {"--stop-loss", "", "uses the four rules below too"},
      {"--stop-loss-buy-spread", "PART", "how far above the last trade to buy"},
      {"--stop-loss-buy-max", "MONEY", "the most that one such purchase spends"},
      {"--stop-loss-sell-spread", "PART", "how far below the last trade to sell"},
      {"--stop-loss-sell-slice", "PART", "the part of the shares that one such sale gives up"}};
  options.push_back({"--batch", "METHOD",
                     "a run for each day (daily), or for periods that grow or shrink by a day "
                     "(from-start, from-end)"});
  options.push_back({"--csv", "", "writes the periods as delimited text"});
  std::ranges::move(priceSourceOptions(), std::back_inserter(options));
  return {
      .name = "backtest",
      .summary = "Replays a trading strategy over past prices.",
      .words = {"SYMBOL"},
      .options = std::move(options),
      .explanation =
          "Shows each trade, and the outcome beside that of buying and holding. "
          "Prices are restated for\nsplits; money is in the currency of the equity.\n"
          "With --batch each period is a run of its own, and a line of the answer. In delimited "
          "text\nreturns are parts of one: 0.05 is 5%.\n",
      .run = &backtest};
}

}  // namespace corvane::cli
