#include "reports/returns/returns_report.h"

#include <algorithm>
#include <tuple>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

EquityReturns returnsOfEquity(const EquityFigures& figures, std::span<const ValuationDay> days) {
  EquityReturns line{.figures = figures};
  line.timeWeighted = timeWeightedReturn(days).total;
  line.moneyWeighted =
      moneyWeightedReturn(ownersPayments(days), line.timeWeighted.value_or(0)).period;
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
  return sum;
}

}  // namespace corvane
