#include "reports/returns/returns_report.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>
#include <utility>
#include <variant>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

EquityReturns returnsOfEquity(const EquityFigures& figures, std::span<const ValuationDay> days) {
  EquityReturns line{.figures = figures};
  line.timeWeighted = timeWeightedReturn(days).total;
  line.moneyWeighted =
      moneyWeightedReturn(ownersPayments(days), line.timeWeighted.value_or(0), RatesWanted::nearest)
          .period;
  return line;
}

std::string percentText(double value) {
  return rounded(Decimal::fromDouble(value * 100), 1, RoundingMode::plain).description() + " %";
}

void takeNotes(ReturnsReport& report, const YearMonthDay& from) {
  const TimeWeightedReturn& returns = report.timeWeighted;
  const std::string code(report.series.currency.code);
  if (returns.restart) {
    report.notes.push_back(
        "Measured since " + isoText(returns.restart->since) + ", because the portfolio was worth " +
        roundedToMinorUnits(returns.restart->worth, report.series.currency).description() + " " +
        code + " on " + isoText(returns.restart->worthOn) + ".");
  } else if (!returns.days.empty() && daysAfter(from, -1) < returns.days.front().day) {
    report.notes.push_back("Measured since " + isoText(daysAfter(returns.days.front().day, 1)) +
                           ", when the first money came in.");
  }
  if (!returns.days.empty() && returns.days.back().day < report.series.days.back().day) {
    report.notes.push_back("Measured until " + isoText(returns.days.back().day) +
                           ", the last day with holdings.");
  }
  if (returns.hasGainWithoutCapital) {
    report.notes.push_back(
        "Something was gained or lost while nothing was invested; it is in the gain, not in the "
        "time-weighted return.");
  }
  for (const double other : report.moneyWeighted.otherPeriods) {
    report.notes.push_back("The money-weighted return is also solved by " + percentText(other) +
                           " for the period.");
  }
  if (report.moneyWeighted.outcome == MoneyWeightedReturn::Outcome::noRate) {
    report.notes.push_back("No money-weighted rate explains these payments.");
  }
  if (std::ranges::any_of(report.series.days, &ValuationDay::isAtTradePrice)) {
    report.notes.push_back(
        "Some days are valued at the price of the last trade, at cost or at the rate of a row, "
        "since the market knew no price up to that day.");
  }
}

/// A split counts on the day of its row, and prices change on the day of the market's: where these
/// differ, the days between them show a jump that nobody has had.
std::vector<std::string> splitNotes(Portfolio& portfolio, const ValuationScope& scope,
                                    const MarketHistory& history, const Calendar& calendar) {
  std::vector<std::string> notes;
  if (history.splits.empty()) {
    return notes;
  }
  const Date start = scope.from.startIn(calendar);
  const Date end = daysAfter(scope.to, 1).startIn(calendar);
  for (const TransactionPointer& row : portfolio.transactions()) {
    const auto* split = std::get_if<BasicTransaction::Split>(&row->basic.kind);
    if (split == nullptr || row->settlementDate() < start || end <= row->settlementDate() ||
        (scope.equity != nullptr && !(*scope.equity == *split->equity))) {
      continue;
    }
    const auto told = history.splits.find(split->equity);
    if (told == history.splits.end()) {
      continue;
    }
    const YearMonthDay day = YearMonthDay::of(row->settlementDate(), calendar);
    const auto isSame = [&](const MarketHistory::Split& other) {
      return split->netShares * other.ratio.denominator ==
             split->priorShares * other.ratio.numerator;
    };
    const bool isRight = std::ranges::any_of(told->second, [&](const MarketHistory::Split& other) {
      return isSame(other) && other.day == day;
    });
    const auto near = std::ranges::find_if(told->second, [&](const MarketHistory::Split& other) {
      return isSame(other) && std::abs(daysBetween(other.day, day)) <= mostDaysBetweenSplits;
    });
    if (!isRight && near != told->second.end()) {
      notes.push_back("The split of " + split->equity->symbol + " is recorded on " + isoText(day) +
                      ", but the market made it on " + isoText(near->day) +
                      ": the days between them show a jump that was none.");
    }
  }
  return notes;
}

void takeSplitNotes(ReturnsReport& report, std::vector<std::string> notes) {
  report.notes.insert(report.notes.end(), notes.begin(), notes.end());
  report.splitNotes = std::move(notes);
}

void measure(ReturnsReport& report) {
  if (report.series.days.empty()) {
    return;
  }
  const auto& days = report.series.days;
  report.timeWeighted = timeWeightedReturn(days);
  report.moneyWeighted =
      moneyWeightedReturn(ownersPayments(days), report.timeWeighted.total.value_or(0));
  report.volatility = volatilityOf(report.timeWeighted);
  report.drawdowns = drawdownsOf(report.timeWeighted);
  takeNotes(report, daysAfter(days.front().day, 1));
}

}  // namespace

ReturnsReport returnsReport(Portfolio& portfolio, const ValuationScope& scope,
                            const MarketHistory& history, const Calendar& calendar) {
  ReturnsReport report;
  report.series =
      valuationSeries(portfolio, scope, history, calendar,
                      [&](const EquityFigures& figures, std::span<const ValuationDay> days) {
                        report.equities.push_back(returnsOfEquity(figures, days));
                      });
  if (!report.series.missing.empty()) {
    report.equities.clear();
    return report;
  }
  measure(report);
  takeSplitNotes(report, splitNotes(portfolio, scope, history, calendar));
  std::ranges::sort(report.equities, {}, [](const EquityReturns& line) {
    return std::tuple<std::string_view, std::string_view>(line.figures.equity->symbol,
                                                          line.figures.equity->id());
  });
  const auto earned = [](const EquityReturns& line) {
    return line.figures.gain() + line.figures.dividends;
  };
  Decimal sum;
  for (const EquityReturns& line : report.equities) {
    sum += earned(line);
  }
  if (!sum.isZero()) {
    for (EquityReturns& line : report.equities) {
      line.shareOfGain = earned(line).doubleValue() / sum.doubleValue();
    }
  }
  return report;
}

ReturnsReport combinedReport(const std::vector<ReturnsReport>& reports, const Currency& currency,
                             const MarketHistory& history) {
  std::vector<ValuationSeries> series;
  for (const ReturnsReport& report : reports) {
    series.push_back(report.series);
  }
  ReturnsReport sum;
  sum.series = combinedSeries(series, currency, history);
  measure(sum);
  std::vector<std::string> notes;
  for (const ReturnsReport& report : reports) {
    notes.insert(notes.end(), report.splitNotes.begin(), report.splitNotes.end());
  }
  takeSplitNotes(sum, std::move(notes));
  return sum;
}

}  // namespace corvane
