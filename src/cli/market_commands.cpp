// What portfolios are worth, and what a strategy would have earned.

#include <algorithm>
#include <array>
#include <optional>

#include "cli/command.h"
#include "cli/console_workspace.h"
#include "cli/text_table.h"
#include "core/currency_amount.h"
#include "core/investment_scenario.h"
#include "core/price_adjuster.h"
#include "platform/async/dispatch_queue.h"
#include "scenario/scenario_analyzer.h"

namespace corvane::cli {
namespace {

using enum TextTable::Alignment;

bool value(const Arguments& arguments, Console& console) {
  const ConsolePrices prices(priceSource(arguments));
  ConsoleWorkspace workspace(console, prices.provider(), arguments.operand(0));
  PortfolioManager& manager = workspace.manager();
  // Only a refresh tells in which currency an equity is traded, and with it which rates are needed.
  EquitySet refreshed;
  for (bool hasMore = true; hasMore;) {
    std::vector<EquityPointer> wanted;
    for (const PortfolioPointer& portfolio : manager.portfolios()) {
      for (const EquityPointer& equity : manager.valuationEquities(portfolio)) {
        if (refreshed.insert(equity).second) {
          wanted.push_back(equity);
        }
      }
    }
    hasMore = !wanted.empty();
    refreshEquities(*prices.provider(), std::move(wanted), console);
  }

  TextTable table(
      {{"Portfolio"}, {"Currency"}, {"Deposited", right}, {"Value", right}, {"Gain", right}});
  bool isComplete = true;
  for (const PortfolioPointer& portfolio : manager.portfolios()) {
    try {
      const PortfolioValuation worth = manager.valuation(portfolio);
      const auto money = [&](const Decimal& amount) {
        return roundedToMinorUnits(amount, worth.currency).description();
      };
      table.add({portfolio->name, std::string(worth.currency.code), money(worth.netDeposited),
                 money(worth.currentValue), money(worth.currentValue - worth.netDeposited)});
    } catch (const Error& error) {
      isComplete = false;
      console.err << portfolio->name << ": " << error << '\n';
    }
  }
  table.write(console.out);
  return isComplete;
}

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

QuoteInterval intervalOf(const Arguments& arguments) {
  const std::string name = arguments.value("--interval").value_or("1d");
  const auto found = std::ranges::find(namedIntervals, name, &NamedInterval::name);
  if (found == namedIntervals.end()) {
    throw UsageError(
        "--interval is one of 1m, 2m, 5m, 15m, 30m, 90m, 1h, 1d, 5d, 1wk, 1mo, 3mo, "
        "not “" +
        name + "”.");
  }
  return found->interval;
}

InvestmentStrategy strategyOf(const Arguments& arguments) {
  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  const auto take = [&](std::string_view option, Decimal& field) {
    if (const auto number = arguments.number(option)) {
      if (*number < Decimal(0)) {
        throw UsageError(std::string(option) + " is not below 0.");
      }
      field = *number;
    }
  };
  take("--buy-spread", strategy.targetBuySpread);
  take("--buy-max", strategy.targetBuyMax);
  take("--sell-spread", strategy.targetSellSpread);
  take("--sell-slice", strategy.targetSellSlice);
  strategy.isStopLossActive = arguments.has("--stop-loss");
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

InvestmentScenario scenarioOf(const Arguments& arguments) {
  const auto components = [](const YearMonthDay& day) {
    DateComponents parts;
    parts.set(CalendarUnit::year, day.year);
    parts.set(CalendarUnit::month, day.month);
    parts.set(CalendarUnit::day, day.day);
    return parts;
  };
  return {.fromDateComponents = components(arguments.day("--from").value()),
          .toDateComponents = components(arguments.day("--to").value()),
          .quoteInterval = intervalOf(arguments),
          .initialInvestment =
              arguments.number("--invest").value_or(InvestmentStrategy::defaultMaximum())};
}

/// The bars of the scenario, as adjusted for splits. Throws what the provider fails with.
std::vector<Quote> fetchBars(const EquityPointer& equity, const InvestmentScenario& scenario,
                             QuoteProvider& provider, const std::shared_ptr<QuoteProvider>& owner) {
  const auto range = scenario.dateRange(equity->calendar);
  if (!range) {
    throw UsageError("--to is before --from.");
  }
  std::optional<Result<QuoteFetchResult>> outcome;
  provider.fetchQuotes(
      {equity, *range,
       QuoteQuery::Quotes{scenario.quoteInterval, PriceAdjustment::adjustedForSplits}},
      std::make_shared<PriceAdjuster>(owner), [&outcome](Result<QuoteFetchResult> result) {
        DispatchQueue::main()->async(
            [&outcome, result = std::move(result)]() mutable { outcome = std::move(result); });
      });
  waitUntil([&] { return outcome.has_value(); });
  if (!*outcome) {
    (*outcome).error()->raise();
  }
  return (*outcome)->quotes.value_or(std::vector<Quote>());
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

void writeRows(const ScenarioAnalyzer::Analysis& analysis, const EquityInfo& equity,
               Console& console) {
  TextTable table({{"When"},
                   {"Event"},
                   {"Shares", right},
                   {"Cash", right},
                   {"Held", right},
                   {"On hand", right},
                   {"Price", right}});
  for (const TransactionPointer& pointer : analysis.portfolio->transactions()) {
    const auto& row = dynamic_cast<const ScenarioPortfolio::Transaction&>(*pointer);
    const Calendar& calendar = equity.calendar;
    const auto two = [&](CalendarUnit unit) {
      const std::string text = std::to_string(calendar.component(unit, row.tradeDate()));
      return (text.size() < 2 ? "0" : "") + text;
    };
    std::string shares;
    std::string cash;
    if (const auto* trade = std::get_if<BasicTransaction::Trade>(&row.basic.kind)) {
      shares = trade->sharesAdded.description();
      cash = (-trade->cashDisposed.amount).description();
    } else if (const auto* transfer = std::get_if<BasicTransaction::Transfer>(&row.basic.kind)) {
      cash = transfer->amount.amount.description();
    }
    table.add({std::to_string(calendar.component(CalendarUnit::year, row.tradeDate())) + "-" +
                   two(CalendarUnit::month) + "-" + two(CalendarUnit::day) + " " +
                   two(CalendarUnit::hour) + ":" + two(CalendarUnit::minute),
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

bool backtest(const Arguments& arguments, Console& console) {
  const InvestmentScenario scenario = scenarioOf(arguments);
  const InvestmentStrategy strategy = strategyOf(arguments);
  const ConsolePrices prices(priceSource(arguments));
  const EquityPointer equity = prices.provider()->equityWithId(arguments.operand(0));
  refreshEquities(*prices.provider(), {equity}, console);
  const std::vector<Quote> quotes =
      fetchBars(equity, scenario, *prices.provider(), prices.provider());
  if (quotes.empty()) {
    throw ConsoleError("There are no prices of " + equity->symbol + " in these days.");
  }
  const ScenarioAnalyzer analyzer(equity, quotes, tradingDayNumbers(quotes, *equity));
  const auto analysis = analyzer.analyze(std::nullopt, strategy, scenario.initialInvestment);
  const auto held =
      analyzer.analyze(std::nullopt, InvestmentStrategy::buyAndHold(), scenario.initialInvestment);
  writeRows(analysis, *equity, console);
  const auto money = [&](const Decimal& amount) {
    return roundedToMinorUnits(amount, equity->currency).description() + " " +
           std::string(equity->currency.code);
  };
  console.out << '\n'
              << analysis.totalTradesMade << " trades on " << analysis.totalDaysTradedOn << " of "
              << analysis.totalTradingDays << " trading days, " << quotes.size() << " prices\n"
              << "Gain:         " << money(analysis.netGain()) << " ("
              << percent(analysis.rateOfReturn()) << ", " << percent(analysis.annualizedReturn())
              << " a year)\n"
              << "Buy and hold: " << money(held.netGain()) << " (" << percent(held.rateOfReturn())
              << ", " << percent(held.annualizedReturn()) << " a year)\n";
  return true;
}

}  // namespace

std::vector<Command> marketCommands() {
  Signature backtesting = {
      .operands = {"SYMBOL"},
      .options = {
          {.name = "--from",
           .value = "DAY",
           .help = "the first day, such as 2024-01-01",
           .isRequired = true},
          {.name = "--to", .value = "DAY", .help = "the last day", .isRequired = true},
          {.name = "--interval", .value = "LENGTH", .help = "of a bar: 1m to 3mo; 1d if absent"},
          {.name = "--invest", .value = "MONEY", .help = "to start with; 1000 if absent"},
          {.name = "--buy-spread", .value = "PART", .help = "how far below to buy; 0.05 is 5%"},
          {.name = "--buy-max", .value = "MONEY", .help = "the most that one purchase spends"},
          {.name = "--sell-spread", .value = "PART", .help = "how far above to sell"},
          {.name = "--sell-slice", .value = "PART", .help = "the part of the shares to sell"},
          {.name = "--stop-loss", .value = "", .help = "use the stop-loss rules too"},
          {.name = "--stop-loss-buy-spread", .value = "PART", .help = "how far above to buy"},
          {.name = "--stop-loss-buy-max", .value = "MONEY", .help = "the most that one spends"},
          {.name = "--stop-loss-sell-spread", .value = "PART", .help = "how far below to sell"},
          {.name = "--stop-loss-sell-slice", .value = "PART", .help = "the part to sell"}}};
  std::ranges::copy(priceSourceOptions(), std::back_inserter(backtesting.options));
  return {
      {.name = "value",
       .summary = "Prints what each portfolio is worth at the latest prices.",
       .details = "The exit code is 1 where a price or a rate is missing.",
       .signature = {.operands = {"WORKSPACE"}, .options = priceSourceOptions()},
       .run = value},
      {.name = "backtest",
       .summary = "Replays a strategy over past prices, next to buying and holding.",
       .details = "The strategy buys where the price has fallen and sells where it has risen, by "
                  "the spreads\ngiven, from its last trade.",
       .signature = std::move(backtesting),
       .run = backtest},
  };
}

}  // namespace corvane::cli
