#include "presentation/reports/returns_tables.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "presentation/reports/report_sums.h"
#include "presentation/text/table_text.h"
#include "reports/series/report_days.h"
#include "reports/trail/returns_trails.h"

namespace corvane {
namespace {

constexpr const char* yearRule = "Spans of up to 366 days are not stated as a return a year.";

/// A part of a month or year stands in a weaker colour, with words for it.
AttributedText periodCell(const std::optional<PeriodReturn>& period) {
  if (!period) {
    return {};
  }
  if (period->isWhole) {
    return returnRateCell(period->value);
  }
  AttributedText cell(returnRateText(period->value) + " *",
                      {.colour = Colour::Name::secondaryLabel, .isMonospaced = true});
  cell.alignment = TextAlignment::right;
  return cell;
}

ReportFigure rateFigure(std::string title, const std::optional<double>& period,
                        const std::optional<double>& annual, std::string hint) {
  return {.title = std::move(title),
          .value = returnRateCell(period),
          .detail = "a year: " + returnRateText(annual),
          .hint = std::move(hint) + (period && !annual ? " " + std::string(yearRule) : "")};
}

ReportFigure volatilityFigure(const ReturnsReport& report) {
  ReportFigure figure{.title = "Volatility", .value = plainRateCell(std::nullopt)};
  if (report.volatility) {
    figure.value = plainRateCell(report.volatility->annual());
    figure.detail = "a year; period: " + plainRateText(report.volatility->period());
    figure.hint = "The deviation of daily returns.";
  } else {
    figure.hint = "Fewer than 20 daily returns say nothing.";
  }
  return figure;
}

ReportFigure drawdownFigure(const ReturnsReport& report) {
  ReportFigure figure{
      .title = "Max drawdown",
      .value = plainRateCell(report.timeWeighted.total ? std::optional<double>(0) : std::nullopt),
      .hint = "The deepest fall from a highest point."};
  if (!report.drawdowns) {
    return figure;
  }
  const auto dayAt = [&](std::size_t i) { return mediumDayText(report.timeWeighted.days[i].day); };
  const Drawdown& deepest = report.drawdowns->deepest;
  const Drawdown& longest = report.drawdowns->longest;
  figure.value = plainRateCell(-deepest.size);
  figure.detail =
      dayAt(deepest.peak) + " → " + dayAt(deepest.trough) + ", " +
      (deepest.recovered ? "recovered " + dayAt(*deepest.recovered) : std::string("not recovered"));
  figure.hint += " The longest one began " + dayAt(longest.peak) + " and " +
                 (longest.recovered ? "ended " + dayAt(*longest.recovered) : "has not ended") + ".";
  return figure;
}

ReportFigure bestMonthFigure(const ReturnsReport& report) {
  ReportFigure figure{.title = "Best and worst month",
                      .value = AttributedText(std::string(noFigureText)),
                      .hint = "Whole calendar months only."};
  const auto months = monthlyReturns(report.timeWeighted);
  if (const auto found = bestAndWorst(months)) {
    figure.value =
        returnRateCell(found->best.value).append(" / ").append(returnRateCell(found->worst.value));
    figure.detail = monthText(found->best.first) + " / " + monthText(found->worst.first);
  }
  return figure;
}

std::optional<TrailNode> bridgeGainTrail(const ReturnsReport& report) {
  const ValueBridge& bridge = report.series.bridge;
  const std::string unit(report.series.currency.code);
  const auto leaf = [&](const char* label, const Decimal& value) {
    return TrailNode{.label = label, .value = value, .unit = unit};
  };
  TrailNode closing = leaf("Closing value", bridge.closing);
  TrailNode opening = leaf("Opening value", bridge.opening);
  closing.day = report.series.days.back().day;
  opening.day = report.series.days.front().day;
  return roundedTo(
      report.series.currency.minorUnits, "Gain",
      differenceOf("Closing value and withdrawals, less what was there and came in", unit,
                   {sumOf("Closing value and withdrawals", unit,
                          {std::move(closing), leaf("Withdrawals", bridge.withdrawals)}),
                    std::move(opening), leaf("Deposits", bridge.deposits),
                    leaf("Shares journaled", bridge.journaled)}));
}

TrailMaker equityFigureTrailMaker(EquityFigure figure, const EquityFigures& figures,
                                  std::optional<EquityTrailGround> ground) {
  if (!ground) {
    return nullptr;
  }
  return [figure, figures, made = std::move(*ground)] {
    return std::optional(equityFigureTrail(figure, figures, made));
  };
}

}  // namespace

std::vector<RecordTable<YearOfReturns>::Column> monthColumns(
    const std::function<std::shared_ptr<const ReturnsReport>()>& report) {
  const auto trail = [report](const std::optional<PeriodReturn>& period) -> TrailMaker {
    if (!period) {
      return nullptr;
    }
    return [shown = report(), measured = *period]() -> std::optional<TrailNode> {
      return shown == nullptr ? std::nullopt : periodTrail(*shown, measured);
    };
  };
  using Column = RecordTable<YearOfReturns>::Column;
  std::vector<Column> columns = {{{"year", "Year"}, [](const YearOfReturns& line) {
                                    return plainCell(std::to_string(line.year));
                                  }}};
  for (std::size_t i = 0; i < 12; ++i) {
    columns.push_back({monthHead(static_cast<int>(i) + 1),
                       [i](const YearOfReturns& line) { return periodCell(line.months.at(i)); },
                       [i, trail](const YearOfReturns& line) { return trail(line.months.at(i)); }});
  }
  columns.push_back({{"whole", "Year", true},
                     [](const YearOfReturns& line) { return periodCell(line.whole); },
                     [trail](const YearOfReturns& line) { return trail(line.whole); }});
  return columns;
}

std::vector<RecordTable<EquityReturns>::Column> equityReturnsColumns(
    std::function<Currency()> currency, const EquityTrails& trails) {
  using Column = RecordTable<EquityReturns>::Column;
  const auto money = [&](std::string_view identifier, std::string_view title, EquityFigure figure,
                         auto amountOf) -> Column {
    return {{identifier, title, true},
            [currency, amountOf](const EquityReturns& line) {
              return reportMoneyCell(amountOf(line.figures), currency());
            },
            [ground = trails.ground, figure, amountOf](const EquityReturns& line) {
              return amountOf(line.figures).isZero()
                         ? TrailMaker()
                         : equityFigureTrailMaker(figure, line.figures, ground());
            }};
  };
  using ReturnTrail = decltype(&equityTimeWeightedTrail);
  const auto rate = [&](std::string_view identifier, std::string_view title, auto rateOf,
                        ReturnTrail trail) -> Column {
    return {{identifier, title, true},
            [rateOf](const EquityReturns& line) { return returnRateCell(rateOf(line)); },
            [ground = trails.ground, rateOf, trail](const EquityReturns& line) -> TrailMaker {
              auto made = ground();
              if (!made || !rateOf(line)) {
                return nullptr;
              }
              return [line, trail, made = std::move(*made)] { return trail(line, made); };
            }};
  };
  return {
      {{"symbol", "Symbol"},
       [](const EquityReturns& line) { return PortfolioAsset(line.figures.equity).title(); }},
      money("opening", "Opening", EquityFigure::opening, std::mem_fn(&EquityFigures::opening)),
      money("bought", "Bought", EquityFigure::bought, std::mem_fn(&EquityFigures::bought)),
      money("sold", "Sold", EquityFigure::sold, std::mem_fn(&EquityFigures::sold)),
      money("dividends", "Dividends", EquityFigure::dividends,
            std::mem_fn(&EquityFigures::dividends)),
      money("closing", "Closing", EquityFigure::closing, std::mem_fn(&EquityFigures::closing)),
      {{"gain", "Gain", true},
       [currency](const EquityReturns& line) {
         return signedMoneyCell(line.figures.gain(), currency());
       },
       [ground = trails.ground](const EquityReturns& line) {
         return equityFigureTrailMaker(EquityFigure::gain, line.figures, ground());
       }},
      rate("timeWeighted", "Time-w.", std::mem_fn(&EquityReturns::timeWeighted),
           &equityTimeWeightedTrail),
      rate("moneyWeighted", "Money-w.", std::mem_fn(&EquityReturns::moneyWeighted),
           &equityMoneyWeightedTrail),
      {{"shareOfGain", "Share of Gain", true},
       [](const EquityReturns& line) { return plainRateCell(line.shareOfGain); },
       [report = trails.report](const EquityReturns& line) -> TrailMaker {
         if (!line.shareOfGain) {
           return nullptr;
         }
         return [shown = report(), figures = line.figures] {
           return std::optional(shareOfGainTrail(*shown, figures));
         };
       }},
  };
}

std::vector<RecordTable<ReconciliationLine>::Column> reconciliationColumns(
    std::function<Currency()> currency) {
  return {{{"title", "From the Opening to the Closing Value"},
           [](const ReconciliationLine& line) {
             const bool isSum = line.kind == ReconciliationLine::Kind::sum;
             return AttributedText(
                 (line.kind == ReconciliationLine::Kind::part ? "      " : "") + line.title,
                 {.weight = isSum ? FontWeight::semibold : FontWeight::regular});
           }},
          {{"amount", "Amount", true},
           [currency = std::move(currency)](const ReconciliationLine& line) {
             return reportMoneyCell(line.amount, currency());
           },
           [](const ReconciliationLine& line) { return line.explain; }},
          {{"note", "Note"}, [](const ReconciliationLine& line) {
             return AttributedText(line.note, {.colour = Colour::Name::secondaryLabel});
           }}};
}

std::vector<ReportFigure> returnsFigures(const std::shared_ptr<const ReturnsReport>& report) {
  const ValueBridge& bridge = report->series.bridge;
  const Currency& currency = report->series.currency;
  ReportFigure timeWeighted =
      rateFigure("Time-weighted", report->timeWeighted.total, report->timeWeighted.annual(),
                 "What the investments returned, whatever was paid in or out.");
  timeWeighted.explain = [report] {
    return timeWeightedTrail(report->series.days, report->series.currency);
  };
  ReportFigure moneyWeighted =
      rateFigure("Money-weighted", report->moneyWeighted.period, report->moneyWeighted.annual(),
                 "The rate at which your own payments have grown.");
  if (report->moneyWeighted.period) {
    moneyWeighted.explain = [report] {
      return moneyWeightedTrail(report->series.days, report->series.currency);
    };
  }
  return {std::move(timeWeighted),
          std::move(moneyWeighted),
          {.title = "Gain",
           .value = signedMoneyCell(bridge.gain(), currency),
           .detail = "of it realized: " + reportMoneyText(bridge.realised, currency),
           .hint = "Closing value and withdrawals, less opening value and deposits.",
           .explain = [report] { return bridgeGainTrail(*report); }},
          volatilityFigure(*report),
          drawdownFigure(*report),
          bestMonthFigure(*report)};
}

ReportFigure benchmarkFigure(const BenchmarkReturn& benchmark, const std::string& name,
                             const TimeWeightedReturn& returns) {
  ReportFigure figure{.title = name,
                      .value = returnRateCell(benchmark.total()),
                      .hint = "With its dividends, which are reinvested on their day."};
  if (returns.total) {
    figure.detail = "difference: " + returnRateText(*returns.total - benchmark.total());
  }
  const TimeWeightedReturn compared = benchmark.asReturns();
  if (const auto volatility = volatilityOf(compared)) {
    figure.hint += " Volatility a year: " + plainRateText(volatility->annual()) + ".";
  }
  if (const auto falls = drawdownsOf(compared)) {
    figure.hint += " Max drawdown: " + plainRateText(-falls->deepest.size) + ".";
  }
  return figure;
}

std::vector<ReconciliationLine> bridgeLines(const std::shared_ptr<const ReturnsReport>& report,
                                            const ClosedRange<YearMonthDay>& days) {
  using enum ReconciliationLine::Kind;
  const ValueBridge& bridge = report->series.bridge;
  const auto ofEquities = [&](const char* label, auto amountOf) -> TrailMaker {
    if (report->equities.empty()) {
      return nullptr;
    }
    return [report, label, amountOf] { return equitiesTrail(*report, label, amountOf); };
  };
  std::vector<ReconciliationLine> lines = {
      {"Opening value", bridge.opening, sum,
       "at the end of " + mediumDayText(daysAfter(days.lower(), -1))},
      {"+ Deposits", bridge.deposits, term, "at the rates of their days"},
      {"− Withdrawals", -bridge.withdrawals, term, "at the rates of their days"}};
  if (!bridge.journaled.isZero()) {
    lines.push_back({"± Shares journaled", bridge.journaled, term, "at the prices of their days"});
  }
  lines.insert(
      lines.end(),
      {{"+ Gain of equities", bridge.equityGain, term, "",
        ofEquities("Gain of equities", [](const EquityFigures& line) { return line.gain(); })},
       {"of it realized", bridge.realised, part, "the ledger's capital gains",
        ofEquities("Realized gain", [](const EquityFigures& line) { return line.realised; })},
       {"of it unrealized", bridge.equityGain - bridge.realised, part, "",
        ofEquities("Unrealized gain",
                   [](const EquityFigures& line) { return line.gain() - line.realised; })},
       {"+ Dividends", bridge.dividends, term, "",
        ofEquities("Dividends", [](const EquityFigures& line) { return line.dividends; })},
       {"± Interest, fees and adjustments", bridge.adjustments},
       {"± Currency", bridge.currency(), term,
        bridge.currency().isZero() ? "" : "foreign cash, and rates other than those of the day",
        [report] { return std::optional(currencyTrail(*report)); }},
       {"= Closing value", bridge.closing, sum, "at the end of " + mediumDayText(days.upper()),
        [report] { return std::optional(closingTrail(*report)); }}});
  return lines;
}

}  // namespace corvane
