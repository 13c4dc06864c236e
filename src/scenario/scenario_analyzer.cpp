#include "scenario/scenario_analyzer.h"

#include <cassert>
#include <utility>

#include "scenario/scenario_run.h"

namespace corvane {
namespace {

constexpr double sessionsOfAYear = 252;

/// Numbers the days of the exchange on which there are quotes, from 0.
std::vector<int> numbersOfSessions(const std::vector<Quote>& quotes, const Calendar& calendar) {
  std::vector<int> numbers;
  numbers.reserve(quotes.size());
  int number = -1;
  std::optional<DateRange> sameDay;
  for (const Quote& quote : quotes) {
    if (!sameDay || !sameDay->contains(quote.fromDate)) {
      const Date start = calendar.startOfDay(quote.fromDate);
      const Date end = calendar.dateByAdding(CalendarUnit::day, 1, start).value_or(start);
      sameDay = DateRange(start, end);
      ++number;
    }
    numbers.push_back(number);
  }
  return numbers;
}

}  // namespace

std::vector<int> tradingDayNumbers(const std::vector<Quote>& quotes, const EquityInfo& equity) {
  constexpr Date epoch = Date::since1970(0);
  const Calendar& calendar = equity.calendar;
  std::vector<int> numbers;
  numbers.reserve(quotes.size());
  // Most quotes are of the day of the one before, and need not ask the calendar.
  int number = 0;
  DateRange sameDay(epoch, epoch);
  for (const Quote& quote : quotes) {
    if (!sameDay.contains(quote.fromDate)) {
      number = calendar.dateComponents({CalendarUnit::day}, epoch, quote.fromDate)
                   .valueOr(CalendarUnit::day, 0);
      const auto start = calendar.dateByAdding(CalendarUnit::day, number, epoch);
      const auto end = calendar.dateByAdding(CalendarUnit::day, number + 1, epoch);
      // Before 1970 days count towards the epoch, and a day has other ends.
      const bool isKnown = start && end && quote.fromDate >= epoch;
      sameDay = isKnown ? DateRange(*start, *end) : DateRange(epoch, epoch);
    }
    numbers.push_back(number);
  }
  return numbers;
}

ScenarioAnalyzer::ScenarioAnalyzer(EquityPointer testedEquity, std::vector<Quote> history,
                                   std::vector<int> dayNumbers)
    : equity(std::move(testedEquity)),
      quotes(std::move(history)),
      tradingDayNumbers(std::move(dayNumbers)),
      sessionNumbers(numbersOfSessions(quotes, equity->calendar)) {
  assert(quotes.size() == tradingDayNumbers.size());
}

ScenarioAnalyzer::Analysis ScenarioAnalyzer::analyze(const std::optional<IndexRange>& range,
                                                     const InvestmentStrategy& strategy,
                                                     const Decimal& initialInvestment) const {
  const IndexRange indices = range.value_or(IndexRange(0, quotes.size()));
  assert(indices.upper() <= quotes.size() && "the range lies within the quotes");
  ScenarioRun run(equity, strategy, initialInvestment, indices.upper() - indices.lower());
  for (std::size_t i = indices.lower(); i < indices.upper(); ++i) {
    run.take(quotes[i], tradingDayNumbers[i], sessionNumbers[i]);
  }
  return run.finish();
}

Decimal ScenarioAnalyzer::Analysis::initialInvestment() const {
  if (portfolio->transactions().empty()) {
    return 0;
  }
  const auto& kind = portfolio->transactions().front()->basic.kind;
  if (const auto* transfer = std::get_if<BasicTransaction::Transfer>(&kind)) {
    return transfer->amount.amount;
  }
  const auto* trade = std::get_if<BasicTransaction::Trade>(&kind);
  return trade == nullptr ? Decimal() : trade->cashDisposed.amount;
}

Decimal ScenarioAnalyzer::Analysis::netGain() const {
  return portfolio->currentValue() - initialInvestment();
}

Decimal ScenarioAnalyzer::Analysis::rateOfReturn() const {
  return portfolio->currentValue() / initialInvestment() - 1;
}

Decimal ScenarioAnalyzer::Analysis::annualizedReturn() const {
  return rateOfReturn() * Decimal::fromDouble(sessionsOfAYear / totalSessions);
}

}  // namespace corvane
