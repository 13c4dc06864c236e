#include "presentation/reports/income_tables.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "presentation/reports/report_sums.h"
#include "presentation/text/table_text.h"
#include "reports/series/report_days.h"
#include "reports/trail/income_trails.h"

namespace corvane {
namespace {

/// A running count of months; that of year 0 January is 0.
int monthNumber(const YearMonthDay& day) {
  return 12 * day.year + day.month - 1;
}

YearMonthDay monthNumbered(int number) {
  return {number / 12, number % 12 + 1, 1};
}

/// What a month has brought, and may bring.
struct MonthOfIncome {
  Decimal paid;
  Decimal declared;
  Decimal estimated;
  [[nodiscard]] Decimal total() const { return paid + declared + estimated; }
};
using IncomeByMonth = std::map<int, MonthOfIncome>;

IncomeByMonth incomeByMonth(const std::vector<IncomePayment>& payments,
                            const std::vector<ExpectedIncome>& expected) {
  IncomeByMonth months;
  for (const IncomePayment& payment : payments) {
    months[monthNumber(payment.day)].paid += payment.equivalent->amount;
  }
  for (const ExpectedIncome& each : expected) {
    for (const IncomeProjection::Payment& payment : each.projection.payments) {
      if (each.rate) {
        MonthOfIncome& month = months[monthNumber(payment.day)];
        (payment.isDeclared ? month.declared : month.estimated) += payment.amount;
      }
    }
  }
  return months;
}

/// The three tones of the bars, from the bottom.
std::array<ChartDataSet, 3> incomeBars() {
  const Colour full = Colour::Name::systemGreen;
  const auto bars = [](std::string label, const Colour& colour) {
    return ChartDataSet{
        .label = std::move(label), .colour = colour, .shape = ChartDataSet::Shape::bars};
  };
  return {bars("Paid", full), bars("Declared", full.blended(0.35, Colour::Name::controlBackground)),
          bars("Estimated", full.blended(0.7, Colour::Name::controlBackground))};
}

/// A bar of each tone at `x`.
void stackMonth(std::array<ChartDataSet, 3>& bars, double x, const MonthOfIncome& month) {
  Decimal base;
  const std::array<Decimal, 3> parts = {month.paid, month.declared, month.estimated};
  for (std::size_t i = 0; i < bars.size(); ++i) {
    bars.at(i).entries.push_back({x, (base + parts.at(i)).doubleValue(), base.doubleValue()});
    base += parts.at(i);
  }
}

AttributedText monthTooltip(const MonthOfIncome& month, const std::string& name,
                            const Currency& currency) {
  AttributedText text(name);
  const auto add = [&](const char* label, const Decimal& amount) {
    if (!amount.isZero()) {
      text.append("\n" + std::string(label) + " " + reportMoneyText(amount, currency));
    }
  };
  add("Paid", month.paid);
  add("Declared", month.declared);
  add("Estimated", month.estimated);
  return text;
}

/// The places of bars along the chart, with what stands at each.
struct IncomeBars {
  std::vector<MonthOfIncome> months;
  std::vector<std::string> names;
  std::vector<double> places;
  std::vector<LimitLine> labels;
};

IncomeBars barsInARow(const IncomeByMonth& months) {
  IncomeBars bars;
  const int first = months.begin()->first;
  const int last = months.rbegin()->first;
  const bool isLong = last - first > 24;
  for (int number = first; number <= last; ++number) {
    const auto found = months.find(number);
    const YearMonthDay month = monthNumbered(number);
    const auto x = static_cast<double>(number - first);
    bars.months.push_back(found == months.end() ? MonthOfIncome() : found->second);
    bars.names.push_back(monthText(month));
    bars.places.push_back(x);
    if (isLong ? month.month == 1 : month.month % 3 == 1) {
      bars.labels.push_back(
          {.value = x - 0.5, .label = isLong ? std::to_string(month.year) : monthText(month)});
    }
  }
  return bars;
}

/// January of all years, then February …
IncomeBars barsByYear(const IncomeByMonth& months) {
  IncomeBars bars;
  const int firstYear = months.begin()->first / 12;
  const int years = months.rbegin()->first / 12 - firstYear + 1;
  for (int month = 0; month < 12; ++month) {
    const int start = month * (years + 1);
    bars.labels.push_back({.value = start - 0.5, .label = monthNameText(month + 1)});
    for (int year = 0; year < years; ++year) {
      const auto found = months.find(12 * (firstYear + year) + month);
      bars.months.push_back(found == months.end() ? MonthOfIncome() : found->second);
      bars.names.push_back(monthText({firstYear + year, month + 1, 1}));
      bars.places.push_back(start + year);
    }
  }
  return bars;
}

void placeBars(IncomeChartView& chart, IncomeBars bars, const Currency& currency) {
  auto tones = incomeBars();
  for (std::size_t i = 0; i < bars.months.size(); ++i) {
    stackMonth(tones, bars.places[i], bars.months[i]);
  }
  std::vector<ChartLegendEntry> legend;
  for (const ChartDataSet& tone : tones) {
    legend.push_back({tone.label, tone.colour, ChartLegendEntry::Mark::area});
  }
  chart.legendEntries = std::move(legend);
  chart.xAxisLimitLines = std::move(bars.labels);
  chart.convertXFromDataIndexToGraph = [places = bars.places](std::size_t index) {
    return index < places.size() ? places[index] : 0;
  };
  chart.convertXFromGraphToDataIndex = [places =
                                            bars.places](double x) -> std::optional<std::size_t> {
    const auto found = std::ranges::lower_bound(places, x - 0.5);
    return found == places.end() ? std::nullopt
                                 : std::optional(static_cast<std::size_t>(found - places.begin()));
  };
  chart.keyText = [names = bars.names](std::size_t index) {
    return index < names.size() ? names[index] : std::string();
  };
  chart.tooltipProvider = [bars, currency](std::size_t index) {
    return index < bars.months.size()
               ? monthTooltip(bars.months[index], bars.names[index], currency)
               : AttributedText();
  };
  chart.interactiveDataSet = std::move(tones.back());
  chart.setNoninteractiveDataSets({std::move(tones[0]), std::move(tones[1])});
}

/// The sum of the payments of the months from `first` to `last`.
Decimal paidIn(const std::vector<IncomePayment>& payments, int first, int last) {
  Decimal sum;
  for (const IncomePayment& payment : payments) {
    const int month = monthNumber(payment.day);
    if (first <= month && month <= last) {
      sum += payment.equivalent->amount;
    }
  }
  return sum;
}

ReportFigure expectedFigure(const std::vector<ExpectedIncome>& expected, const Currency& currency) {
  ReportFigure figure{.title = "Next 12 months",
                      .value = AttributedText(std::string(noFigureText)),
                      .hint =
                          "Payments of the last twelve months a year later, on the shares of "
                          "today at today's rate, and what is declared. No growth is assumed."};
  Decimal declared;
  Decimal estimated;
  for (const ExpectedIncome& each : expected) {
    if (!each.rate) {
      figure.detail = "⚠️ no rate for " + each.line.equity->symbol;
      return figure;
    }
    for (const IncomeProjection::Payment& payment : each.projection.payments) {
      (payment.isDeclared ? declared : estimated) += payment.amount;
    }
  }
  if (!expected.empty()) {
    figure.value = reportMoneyCell(declared + estimated, currency);
    figure.detail = "of it declared: " + reportMoneyText(declared, currency);
    figure.explain = [expected, currency] { return expectedTrail(expected, currency); };
  }
  return figure;
}

}  // namespace

IncomeChartView::IncomeChartView() {
  rightAxisRenderer = nullptr;
  axisMinimum = 0;
}

std::vector<LimitLine> IncomeChartView::leftAxisLimitLines(double /*viewWidth*/) const {
  return {};
}

AttributedText IncomeChartView::changeText(double from, double to) const {
  return AttributedText(reportMoneyText(Decimal::fromDouble(to - from), *currency));
}

std::vector<RecordTable<IncomeOfYear>::Column> incomeMonthColumns(
    const std::function<Currency()>& currency, const std::function<PaidIncome()>& payments) {
  const auto money = [currency](const Decimal& amount) {
    return amount.isZero() ? AttributedText() : reportMoneyCell(amount, currency());
  };
  // `month` from 1 to 12, or 0 for all of them.
  const auto trail = [currency, payments](const IncomeOfYear& line, const Decimal& amount,
                                          int month) -> TrailMaker {
    if (amount.isZero()) {
      return nullptr;
    }
    return [currency, paid = payments(), equity = line.equity, year = line.year, month] {
      const auto counts = [&](const IncomePayment& payment) {
        return payment.day.year == year && (month == 0 || payment.day.month == month) &&
               (equity == nullptr || *payment.equity == *equity);
      };
      const std::string name = equity == nullptr ? "Income" : "Income of " + equity->symbol;
      const std::string when = month == 0 ? std::to_string(year) : monthText({year, month, 1});
      return std::optional(paymentsTrail(name + ", " + when, *paid, currency(), counts));
    };
  };
  std::vector<RecordTable<IncomeOfYear>::Column> columns = {
      {{"symbol", "Symbol"}, [](const IncomeOfYear& line) {
         return line.equity == nullptr ? AttributedText("Total", {.weight = FontWeight::semibold})
                                       : plainCell(line.equity->symbol);
       }}};
  for (std::size_t i = 0; i < 12; ++i) {
    columns.push_back({monthHead(static_cast<int>(i) + 1),
                       [i, money](const IncomeOfYear& line) { return money(line.months.at(i)); },
                       [i, trail](const IncomeOfYear& line) {
                         return trail(line, line.months.at(i), static_cast<int>(i) + 1);
                       }});
  }
  columns.push_back({{"total", "Total", true},
                     [money](const IncomeOfYear& line) { return money(line.total); },
                     [trail](const IncomeOfYear& line) { return trail(line, line.total, 0); }});
  return columns;
}

std::vector<RecordTable<ExpectedIncome>::Column> expectedIncomeColumns(
    const std::function<IncomeMoment()>& moment) {
  const auto primaryMoney = [](const ExpectedIncome& each, const Decimal& amount) {
    return reportMoneyCell(amount, each.portfolio->primaryCurrency());
  };
  const auto yieldTrail = [moment](const ExpectedIncome& each) -> TrailMaker {
    if (!each.line.yieldOnCost) {
      return nullptr;
    }
    return [each, now = moment()] {
      return yieldOnCostTrail(*each.portfolio, each.line.equity, now.today, now.calendar);
    };
  };
  const auto valueTrailOf = [moment](const ExpectedIncome& each) -> TrailMaker {
    if (!each.line.yieldOnValue || !each.rate) {
      return nullptr;
    }
    return [each, now = moment()] {
      return yieldOnValueTrail(*each.portfolio, each.line.equity, *each.rate, now.today,
                               now.calendar);
    };
  };
  return {
      {{"symbol", "Symbol"},
       [](const ExpectedIncome& each) { return PortfolioAsset(each.line.equity).title(); }},
      {{"portfolio", "Portfolio"},
       [](const ExpectedIncome& each) { return plainCell(each.portfolio->name); }},
      {{"shares", "Shares", true},
       [](const ExpectedIncome& each) { return sharesCell(each.line.shares); }},
      {{"lastYear", "Last 12 Months", true},
       [primaryMoney](const ExpectedIncome& each) {
         return primaryMoney(each, each.line.lastYear);
       }},
      {{"yieldOnCost", "Yield on Cost", true},
       [](const ExpectedIncome& each) { return plainRateCell(each.line.yieldOnCost); },
       yieldTrail},
      {{"yieldOnValue", "Yield on Value", true},
       [](const ExpectedIncome& each) { return plainRateCell(each.line.yieldOnValue); },
       valueTrailOf},
      {{"rhythm", "Rhythm"},
       [](const ExpectedIncome& each) { return plainCell(displayName(each.projection.rhythm)); }},
      {{"next", "Next Payment"},
       [](const ExpectedIncome& each) {
         return plainCell(each.projection.payments.empty()
                              ? std::string(noFigureText)
                              : mediumDayText(each.projection.payments.front().day));
       }},
      {{"next12Months", "Next 12 Months", true},
       [primaryMoney](const ExpectedIncome& each) {
         return each.rate ? primaryMoney(each, each.projection.next12Months())
                          : numericCell("⚠️ no rate");
       },
       [](const ExpectedIncome& each) -> TrailMaker {
         return [each] { return projectionTrail(each); };
       }},
      {{"note", "Note"}, [](const ExpectedIncome& each) {
         std::string note = each.line.isSoFar ? "held for less than a year: so far" : "";
         if (each.isFromOwnRows) {
           note += std::string(note.empty() ? "" : "; ") + "by the ledger's own rows";
         }
         return AttributedText(note, {.colour = Colour::Name::secondaryLabel});
       }}};
}

std::vector<IncomeOfYear> incomeOfYear(const std::vector<IncomePayment>& payments, int year) {
  std::map<std::string, IncomeOfYear> bySymbol;
  IncomeOfYear sum;
  sum.year = year;
  for (const IncomePayment& payment : payments) {
    if (payment.day.year != year) {
      continue;
    }
    const EquityPointer& equity = payment.equity;
    IncomeOfYear& line = bySymbol[equity->symbol + '\n' + equity->id()];
    line.equity = equity;
    line.year = year;
    for (IncomeOfYear* each : {&line, &sum}) {
      each->months.at(static_cast<std::size_t>(payment.day.month - 1)) +=
          payment.equivalent->amount;
      each->total += payment.equivalent->amount;
    }
  }
  std::vector<IncomeOfYear> lines;
  for (auto& [symbol, line] : bySymbol) {
    lines.push_back(std::move(line));
  }
  if (!lines.empty()) {
    lines.push_back(std::move(sum));
  }
  return lines;
}

void drawIncome(IncomeChartView& chart, const std::vector<IncomePayment>& payments,
                const std::vector<ExpectedIncome>& expected, const Currency& currency,
                const YearMonthDay& today, bool isByYear) {
  chart.clear();
  chart.currency = currency;
  chart.reset();
  const IncomeByMonth months = incomeByMonth(payments, expected);
  if (months.empty()) {
    chart.changeHandler();
    return;
  }
  placeBars(chart, isByYear ? barsByYear(months) : barsInARow(months), currency);
  Decimal paid;
  for (const auto& [number, month] : months) {
    paid += month.paid;
  }
  chart.accessibleText = reportMoneyText(paid, currency) + " paid from " +
                         monthText(monthNumbered(months.begin()->first)) + " to " +
                         mediumDayText(today) + ".";
  chart.changeHandler();
}

std::vector<ReportFigure> incomeFigures(const PaidIncome& payments,
                                        const std::vector<ExpectedIncome>& expected,
                                        const Currency& currency, const YearMonthDay& today) {
  const int month = monthNumber(today);
  const int january = 12 * today.year;
  const Decimal thisYear = paidIn(*payments, january, month);
  const Decimal before = paidIn(*payments, january - 12, month - 12);
  ReportFigure year{.title = std::to_string(today.year) + " so far",
                    .value = reportMoneyCell(thisYear, currency),
                    .detail = "same months of " + std::to_string(today.year - 1) + ": " +
                              reportMoneyText(before, currency),
                    .hint = "Net of what was withheld, at the equivalents that were entered."};
  if (before > 0) {
    year.detail += " (" + returnRateText(thisYear.doubleValue() / before.doubleValue() - 1) + ")";
  }
  Decimal lastYear;
  Decimal cost;
  for (const ExpectedIncome& each : expected) {
    lastYear += each.line.lastYear;
    cost += each.line.costBase;
  }
  const bool hasCost = cost > 0;
  const auto paidTrail = [&](const std::string& label, int first, int last) -> TrailMaker {
    return [payments, currency, label, first, last] {
      return std::optional(
          paymentsTrail(label, *payments, currency, [&](const IncomePayment& payment) {
            return first <= monthNumber(payment.day) && monthNumber(payment.day) <= last;
          }));
    };
  };
  year.explain = paidTrail(year.title, january, month);
  const std::string fullYear = "Full " + std::to_string(today.year - 1);
  return {std::move(year),
          {.title = fullYear,
           .value = reportMoneyCell(paidIn(*payments, january - 12, january - 1), currency),
           .explain = paidTrail(fullYear, january - 12, january - 1)},
          expectedFigure(expected, currency),
          {.title = "Yield on cost",
           .value = plainRateCell(
               hasCost ? std::optional(lastYear.doubleValue() / cost.doubleValue()) : std::nullopt),
           .detail = hasCost ? "of all holdings" : "",
           .hint = "What today's shares were paid in the last twelve months, by their cost base.",
           .explain = hasCost ? TrailMaker([expected, currency] {
             return yieldOfAllTrail(expected, currency);
           })
                              : nullptr}};
}

}  // namespace corvane
