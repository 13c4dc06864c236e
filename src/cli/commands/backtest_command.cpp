#include <algorithm>
#include <array>
#include <optional>

#include "cli/commands/commands.h"
#include "cli/console/date_text.h"
#include "cli/console/listing.h"
#include "cli/console/option_values.h"
#include "cli/console/price_bars.h"
#include "cli/console/price_source.h"
#include "cli/console/progress_bar.h"
#include "cli/console/text_table.h"
#include "core/money/currency_amount.h"
#include "core/strategy/investment_scenario.h"
#include "ledger/transaction/transaction_effect.h"
#include "scenario/scenario_analyzer.h"
#include "scenario/scenario_batch.h"

namespace corvane::cli {
namespace {

using enum Listing::Kind;
using enum TextTable::Alignment;

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

/// The dates of the scenario. Throws UsageError where they end before they begin.
DateRange datesOf(const InvestmentScenario& scenario, const EquityInfo& equity) {
  const auto range = scenario.dateRange(equity.calendar);
  if (!range) {
    throw UsageError("--to is before --from.");
  }
  return *range;
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

std::vector<Listing::Field> tradeFields() {
  return {{"when", "When"},          {"event", "Event"},       {"shares", "Shares", number},
          {"cash", "Cash", number},  {"held", "Held", number}, {"onHand", "On hand", number},
          {"price", "Price", number}};
}

Listing tradesOf(const ScenarioAnalyzer::Analysis& analysis, const EquityInfo& equity) {
  Listing trades(tradeFields());
  for (const TransactionPointer& pointer : analysis.portfolio->transactions()) {
    const auto& row = dynamic_cast<const ScenarioPortfolio::Transaction&>(*pointer);
    const TransactionEffect effect = transactionEffect(row.basic.kind);
    const std::string shares = effect.movesShares() ? effect.sharesAdded.description() : "";
    const std::string cash = effect.currency != nullptr ? effect.amount.description() : "";
    trades.add({timeText(row.tradeDate(), equity.calendar),
                std::string(row.eventType ? eventName(*row.eventType) : ""), shares, cash,
                row.runningNetShares.description(), row.cashNet ? row.cashNet->description() : "",
                row.mostRecentSharePrice.description()});
  }
  return trades;
}

std::string percent(const Decimal& rate) {
  return rate.isNaN() ? "—"
                      : rounded(rate * Decimal(100), 2, RoundingMode::bankers).description() + "%";
}

std::string priceCurrencyText(const Decimal& amount, const EquityInfo& equity) {
  return roundedToMinorUnits(amount, equity.currency).description();
}

void replayOnce(const EquityPointer& equity, const std::vector<Quote>& quotes,
                const InvestmentStrategy& strategy, const Decimal& initialInvestment,
                ListingFormat format, const Console& console) {
  const ScenarioAnalyzer analyzer(equity, quotes, tradingDayNumbers(quotes, *equity));
  const auto analysis = analyzer.analyze(std::nullopt, strategy, initialInvestment);
  const auto held =
      analyzer.analyze(std::nullopt, InvestmentStrategy::buyAndHold(), initialInvestment);
  tradesOf(analysis, *equity).write(format, console.out);
  if (format != ListingFormat::table) {
    return;
  }
  const auto money = [&](const Decimal& amount) {
    return priceCurrencyText(amount, *equity) + " " + std::string(equity->currency.code);
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
               priceCurrencyText(analysis.portfolio->currentValue(), answer.equity),
               priceCurrencyText(analysis.netGain(), answer.equity),
               percent(result->strategyPeriodReturn), percent(result->strategyAnnualizedReturn),
               percent(result->buyAndHoldReturn)});
  }
  table.write(console.out);
  const auto [least, greatest] = returnSpan(answer.results);
  console.out << "\nYields range from " << percent(least) << " to " << percent(greatest)
              << ". Analyzed returns over " << answer.results.size() << " time periods.\n"
              << "Money is in " << answer.equity.currency.code << ".\n";
}

std::vector<Listing::Field> periodFields() {
  return {{"from", "From"},
          {"to", "To"},
          {"days", "Days", number},
          {"finalValue", "Final value", number},
          {"gain", "Gain", number},
          {"return", "Return", number},
          {"annualizedReturn", "A year", number},
          {"buyAndHoldReturn", "Buy and hold", number},
          {"currency", "Currency"}};
}

void writeBatchData(const BatchAnswer& answer, ListingFormat format, const Console& console) {
  const auto rate = [](const Decimal& part) {
    return part.isNaN() ? "" : rounded(part, 6, RoundingMode::bankers).description();
  };
  Listing periods(periodFields());
  for (const BatchResultPointer& result : answer.results) {
    const auto& analysis = result->analysis;
    const auto [from, to] = boundsOf(*result, answer);
    periods.add({from, to, std::to_string(analysis.totalTradingDays),
                 priceCurrencyText(analysis.portfolio->currentValue(), answer.equity),
                 priceCurrencyText(analysis.netGain(), answer.equity),
                 rate(result->strategyPeriodReturn), rate(result->strategyAnnualizedReturn),
                 rate(result->buyAndHoldReturn), std::string(answer.equity.currency.code)});
  }
  periods.write(format, console.out);
}

/// Throws Failed, after all that could be had is written, where a sub-period failed.
void replayBatch(ScenarioBatch::Setting setting, bool isIntraday, ListingFormat format,
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
  if (format == ListingFormat::table) {
    writeBatchTable(answer, console);
  } else {
    writeBatchData(answer, format, console);
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
  const ListingFormat format = listingFormat(line);
  const PriceSource prices(line);
  const EquityPointer equity = prices.provider()->equityWithId(line.word(0));
  refreshEquities(*prices.provider(), {equity}, console);
  std::vector<Quote> quotes = fetchBars(
      {equity, datesOf(scenario, *equity),
       QuoteQuery::Quotes{scenario.quoteInterval, QuoteQuery::PriceAdjustment::adjustedForSplits}},
      prices, console);
  if (method) {
    replayBatch({equity, std::move(quotes), *method, strategy, scenario.initialInvestment},
                scenario.quoteInterval < QuoteInterval::oneDay, format, console);
  } else {
    replayOnce(equity, quotes, strategy, scenario.initialInvestment, format, console);
  }
}

}  // namespace

Command backtestCommand() {
  return {
      .name = "backtest",
      .summary = "Replays a trading strategy over past prices.",
      .words = {"SYMBOL"},
      .options = joined(
          {{"--from", "DAY", "the first day, such as 2024-01-01", true},
           {"--to", "DAY", "the last day", true},
           intervalOption(),
           {"--invest", "MONEY", "what there is to start with; else 1000"},
           {"--buy-spread", "PART", "how far below the last trade to buy; else 0.05, which is 5%"},
           {"--buy-max", "MONEY", "the most that one purchase spends; else 1000"},
           {"--sell-spread", "PART", "how far above the last trade to sell; else 0.05"},
           {"--sell-slice", "PART", "the part of the shares that one sale gives up; else 1"},
           {"--stop-loss", "", "uses the four rules below too"},
           {"--stop-loss-buy-spread", "PART", "how far above the last trade to buy"},
           {"--stop-loss-buy-max", "MONEY", "the most that one such purchase spends"},
           {"--stop-loss-sell-spread", "PART", "how far below the last trade to sell"},
           {"--stop-loss-sell-slice", "PART", "the part of the shares that one such sale gives up"},
           {"--batch", "METHOD",
            "a run for each day (daily), or for periods that grow or shrink by a day "
            "(from-start, from-end)",
            false, false, "daily from-start from-end"}},
          listingOptions(), priceSourceOptions()),
      .explanation =
          "Shows each trade, and the outcome beside that of buying and holding. "
          "Prices are restated for\nsplits; money is in the currency of the equity.\n"
          "With --batch each period is a run of its own, and a line of the answer. As data, "
          "returns "
          "are\nparts of one: 0.05 is 5%.\n",
      .listings = {{"", tradeFields()}, {"with --batch", periodFields()}},
      .run = &backtest};
}

}  // namespace corvane::cli
