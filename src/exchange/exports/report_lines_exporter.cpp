#include "exchange/exports/report_lines_exporter.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

/// A day of a valuation, with its figures where it was measured.
struct ReturnDay {
  const ValuationDay* valued;
  std::optional<double> dailyReturn, index, drawdown;
};

std::vector<ReturnDay> returnDaysOf(const ReturnsReport& report) {
  std::vector<ReturnDay> days;
  auto measured = report.timeWeighted.days.begin();
  const auto end = report.timeWeighted.days.end();
  double peak = 1;
  for (const ValuationDay& day : report.series.days) {
    measured = std::find_if(measured, end, [&](const auto& other) { return day.day <= other.day; });
    ReturnDay& made = days.emplace_back(&day);
    if (measured != end && measured->day == day.day) {
      peak = std::max(peak, measured->index);
      made.dailyReturn = measured->dailyReturn;
      made.index = measured->index;
      made.drawdown = 1 - measured->index / peak;
    }
  }
  return days;
}

std::string noteOf(const ReturnDay& day) {
  std::string note = day.index ? "" : "not measured";
  if (day.valued->isAtTradePrice) {
    note += note.empty() ? "at trade price" : ", at trade price";
  }
  return note;
}

}  // namespace

std::string kindOfIncome(TransactionType kind) {
  switch (kind) {
    case TransactionType::dividend:
      return "dividend";
    case TransactionType::capitalGainsDividend:
      return "capital gains dividend";
    case TransactionType::reinvestedDistribution:
      return "reinvested distribution";
    default:
      return "return of capital";
  }
}

ReportLinesExporter::ReportLinesExporter(UserDefaults* defaults, std::span<const Field> fields,
                                         std::vector<std::vector<Cell>> lines,
                                         const std::string& title)
    : PortfolioExporter(defaults, std::string(userDefaultsKey), fields, lines.size()),
      lines_(std::move(lines)) {
  constexpr int digitsOfFractions = 12;
  fractionFormatter_.maximumFractionDigits = digitsOfFractions;
  fractionFormatter_.usesGroupingSeparator = false;
  setDefaultFilename(title);
  setTitleForSavePanel("Exporting " + title + ".");
}

ReportLinesExporter::Cell ReportLinesExporter::roundedAmount(const Decimal& amount,
                                                             const Currency& currency) {
  return CurrencyAmount{currency, roundedToMinorUnits(amount, currency)};
}

ReportLinesExporter::Cell ReportLinesExporter::codeOf(const Currency& currency) {
  return std::string(currency.code);
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofReturns(
    const ReturnsReport& report, const std::optional<BenchmarkReturn>& benchmark,
    const std::string& title, const Calendar& calendar, UserDefaults* defaults) {
  const auto money = [&](const Decimal& amount) {
    return CurrencyAmount{report.series.currency, amount};
  };
  const auto fraction = [](const std::optional<double>& value) {
    return value ? Cell(Fraction{*value}) : Cell();
  };
  using Day = ReturnDay;
  const auto exporter = of(
      returnDaysOf(report),
      {{{"date", "Date"}, [&](const Day& day) { return day.valued->day.startIn(calendar); }},
       {{"value", "Value"}, [&](const Day& day) { return money(day.valued->value); }},
       {{"inflow", "Inflow"}, [&](const Day& day) { return money(day.valued->inflow); }},
       {{"outflow", "Outflow"}, [&](const Day& day) { return money(day.valued->outflow); }},
       {{"dailyReturn", "Daily Return"}, [&](const Day& day) { return fraction(day.dailyReturn); }},
       {{"index", "Index"}, [&](const Day& day) { return fraction(day.index); }},
       {{"benchmarkIndex", "Benchmark Index"},
        [&](const Day& day) {
          return benchmark ? fraction(benchmark->indexOn(day.valued->day)) : Cell();
        }},
       {{"drawdown", "Drawdown"}, [&](const Day& day) { return fraction(day.drawdown); }},
       {{"note", "Note"}, &noteOf}},
      title, defaults);
  exporter->writeDaysOf(calendar);
  return exporter;
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofDisposals(const TaxYear& year,
                                                                      const std::string& title,
                                                                      const Calendar& calendar,
                                                                      UserDefaults* defaults) {
  using Disposal = TaxYear::Disposal;
  const auto primary = [](const Disposal& line) -> const Currency& {
    return line.place.portfolio->primaryCurrency();
  };
  const auto exporter = of(
      year.disposals,
      {{{"settlement", "Settlement"},
        [&](const Disposal& line) { return line.place.settlement.startIn(calendar); }},
       {{"tradeDate", "Trade Date"},
        [&](const Disposal& line) { return line.place.trade.startIn(calendar); }},
       {{"portfolio", "Portfolio"},
        [](const Disposal& line) { return line.place.portfolio->name; }},
       {{"symbol", "Symbol"}, [](const Disposal& line) { return line.place.equity->symbol; }},
       {{"shares", "Shares"}, [](const Disposal& line) { return Shares{line.shares}; }},
       {{"proceeds", "Proceeds"}, &Disposal::proceeds},
       {{"currency", "Currency"},
        [](const Disposal& line) { return codeOf(line.proceeds.currency); }},
       {{"rate", "Rate"}, [](const Disposal& line) { return Rate{line.rate}; }},
       {{"equivalent", "Equivalent"},
        [&](const Disposal& line) { return roundedAmount(line.equivalent, primary(line)); }},
       {{"costBase", "Cost Base"},
        [&](const Disposal& line) { return roundedAmount(line.tax.costDisposed, primary(line)); }},
       {{"ledgerGain", "Ledger Gain"},
        [&](const Disposal& line) {
          return line.ledgerGain ? roundedAmount(*line.ledgerGain, primary(line)) : Cell();
        }},
       {{"denied", "Denied"},
        [&](const Disposal& line) {
          return roundedAmount(line.tax.superficial.denied, primary(line));
        }},
       {{"addedTo", "Added To"}, &Disposal::addedTo},
       {{"taxGain", "Tax Gain"},
        [&](const Disposal& line) { return roundedAmount(line.tax.taxGain, primary(line)); }},
       {{"primaryCurrency", "Portfolio Currency"},
        [&](const Disposal& line) { return codeOf(primary(line)); }},
       {{"note", "Note"}, &Disposal::note}},
      title, defaults);
  exporter->writeDaysOf(calendar);
  return exporter;
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxIncome(const TaxYear& year,
                                                                      const std::string& title,
                                                                      UserDefaults* defaults) {
  using Income = TaxYear::Income;
  return of(
      year.income,
      {{{"symbol", "Symbol"}, [](const Income& line) { return line.equity->symbol; }},
       {{"kind", "Kind"}, [](const Income& line) { return kindOfIncome(line.kind); }},
       {{"amount", "Amount"}, &Income::amount},
       {{"currency", "Currency"}, [](const Income& line) { return codeOf(line.amount.currency); }},
       {{"equivalent", "Equivalent"}, &Income::equivalent},
       {{"primaryCurrency", "Portfolio Currency"},
        [](const Income& line) { return codeOf(line.equivalent.currency); }}},
      title, defaults);
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofIncome(
    std::span<const IncomePayment> payments, const std::string& title, const Calendar& calendar,
    UserDefaults* defaults) {
  using Payment = IncomePayment;
  const auto rateCell = [](const std::optional<Decimal>& rate) {
    return rate ? Cell(Rate{*rate}) : Cell();
  };
  const auto exporter = of(
      payments,
      {{{"date", "Date"}, [&](const Payment& line) { return line.day.startIn(calendar); }},
       {{"portfolio", "Portfolio"}, &Payment::portfolio},
       {{"symbol", "Symbol"}, [](const Payment& line) { return line.equity->symbol; }},
       {{"kind", "Kind"}, [](const Payment& line) { return kindOfIncome(line.kind); }},
       {{"shares", "Shares"},
        [](const Payment& line) { return line.shares ? Cell(Shares{*line.shares}) : Cell(); }},
       {{"perShare", "Per Share"}, [&](const Payment& line) { return rateCell(line.perShare); }},
       {{"amount", "Amount"}, &Payment::amount},
       {{"currency", "Currency"}, [](const Payment& line) { return codeOf(line.amount.currency); }},
       {{"rate", "Rate"}, [&](const Payment& line) { return rateCell(line.rate); }},
       {{"equivalent", "Equivalent"},
        [](const Payment& line) { return line.equivalent ? Cell(*line.equivalent) : Cell(); }},
       {{"status", "Status"},
        [](const Payment& line) { return std::string(displayName(line.status)); }},
       {{"note", "Note"}, &Payment::note}},
      title, defaults);
  exporter->writeDaysOf(calendar);
  return exporter;
}

std::optional<std::string> ReportLinesExporter::cellText(std::size_t row, std::size_t field) {
  const Cell& cell = lines_[row][field];
  if (const auto* text = std::get_if<std::string>(&cell)) {
    return *text;
  }
  if (const auto* date = std::get_if<Date>(&cell)) {
    return dateText(*date);
  }
  if (const auto* shares = std::get_if<Shares>(&cell)) {
    return shareText(shares->count);
  }
  if (const auto* rate = std::get_if<Rate>(&cell)) {
    return rateText(rate->value, std::nullopt);
  }
  if (const auto* fraction = std::get_if<Fraction>(&cell)) {
    return fractionFormatter_.string(Decimal::fromDouble(fraction->value));
  }
  if (const auto* amount = std::get_if<CurrencyAmount>(&cell)) {
    return moneyText(amount->amount, amount->currency);
  }
  return std::nullopt;
}

}  // namespace corvane
