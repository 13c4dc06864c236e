#include "exchange/exports/report_lines_exporter.h"

#include <algorithm>
#include <array>
#include <utility>

namespace corvane {
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

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofReturns(
    const ReturnsReport& report, const std::optional<BenchmarkReturn>& benchmark,
    const std::string& title, const Calendar& calendar, UserDefaults* defaults) {
  static constexpr std::array<Field, 9> fields = {{{"date", "Date"},
                                                   {"value", "Value"},
                                                   {"inflow", "Inflow"},
                                                   {"outflow", "Outflow"},
                                                   {"dailyReturn", "Daily Return"},
                                                   {"index", "Index"},
                                                   {"benchmarkIndex", "Benchmark Index"},
                                                   {"drawdown", "Drawdown"},
                                                   {"note", "Note"}}};
  std::vector<std::vector<Cell>> lines;
  const auto money = [&](const Decimal& amount) {
    return CurrencyAmount{report.series.currency, amount};
  };
  const auto fraction = [](double value) { return Fraction{value}; };
  auto measured = report.timeWeighted.days.begin();
  const auto end = report.timeWeighted.days.end();
  double peak = 1;
  for (const ValuationDay& day : report.series.days) {
    measured = std::find_if(measured, end, [&](const auto& other) { return day.day <= other.day; });
    const bool isMeasured = measured != end && measured->day == day.day;
    std::vector<Cell> line(fields.size());
    line[0] = day.day.startIn(calendar);
    line[1] = money(day.value);
    line[2] = money(day.inflow);
    line[3] = money(day.outflow);
    std::string note = isMeasured ? "" : "not measured";
    if (isMeasured) {
      peak = std::max(peak, measured->index);
      line[4] = fraction(measured->dailyReturn);
      line[5] = fraction(measured->index);
      line[7] = fraction(1 - measured->index / peak);
    }
    if (benchmark) {
      line[6] = fraction(benchmark->indexOn(day.day));
    }
    if (day.isAtTradePrice) {
      note += note.empty() ? "at trade price" : ", at trade price";
    }
    line[8] = std::move(note);
    lines.push_back(std::move(line));
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofDisposals(const TaxYear& year,
                                                                      const std::string& title,
                                                                      const Calendar& calendar,
                                                                      UserDefaults* defaults) {
  static constexpr std::array<Field, 16> fields = {{{"settlement", "Settlement"},
                                                    {"tradeDate", "Trade Date"},
                                                    {"portfolio", "Portfolio"},
                                                    {"symbol", "Symbol"},
                                                    {"shares", "Shares"},
                                                    {"proceeds", "Proceeds"},
                                                    {"currency", "Currency"},
                                                    {"rate", "Rate"},
                                                    {"equivalent", "Equivalent"},
                                                    {"costBase", "Cost Base"},
                                                    {"ledgerGain", "Ledger Gain"},
                                                    {"denied", "Denied"},
                                                    {"addedTo", "Added To"},
                                                    {"taxGain", "Tax Gain"},
                                                    {"primaryCurrency", "Portfolio Currency"},
                                                    {"note", "Note"}}};
  std::vector<std::vector<Cell>> lines;
  for (const TaxYear::Disposal& disposal : year.disposals) {
    const Currency& primary = disposal.place.portfolio->primaryCurrency();
    const auto money = [&](const Decimal& amount) {
      return CurrencyAmount{primary, roundedToMinorUnits(amount, primary)};
    };
    lines.push_back({disposal.place.settlement.startIn(calendar),
                     disposal.place.trade.startIn(calendar), disposal.place.portfolio->name,
                     disposal.place.equity->symbol, Shares{disposal.shares}, disposal.proceeds,
                     std::string(disposal.proceeds.currency.code), Rate{disposal.rate},
                     money(disposal.equivalent), money(disposal.tax.costDisposed),
                     disposal.ledgerGain ? Cell(money(*disposal.ledgerGain)) : Cell(),
                     money(disposal.tax.superficial.denied), disposal.addedTo,
                     money(disposal.tax.taxGain), std::string(primary.code), disposal.note});
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxIncome(const TaxYear& year,
                                                                      const std::string& title,
                                                                      UserDefaults* defaults) {
  static constexpr std::array<Field, 6> fields = {{{"symbol", "Symbol"},
                                                   {"kind", "Kind"},
                                                   {"amount", "Amount"},
                                                   {"currency", "Currency"},
                                                   {"equivalent", "Equivalent"},
                                                   {"primaryCurrency", "Portfolio Currency"}}};
  std::vector<std::vector<Cell>> lines;
  for (const TaxYear::Income& income : year.income) {
    lines.push_back({income.equity->symbol, kindOfIncome(income.kind), income.amount,
                     std::string(income.amount.currency.code), income.equivalent,
                     std::string(income.equivalent.currency.code)});
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofIncome(
    std::span<const IncomePayment> payments, const std::string& title, const Calendar& calendar,
    UserDefaults* defaults) {
  static constexpr std::array<Field, 12> fields = {{{"date", "Date"},
                                                    {"portfolio", "Portfolio"},
                                                    {"symbol", "Symbol"},
                                                    {"kind", "Kind"},
                                                    {"shares", "Shares"},
                                                    {"perShare", "Per Share"},
                                                    {"amount", "Amount"},
                                                    {"currency", "Currency"},
                                                    {"rate", "Rate"},
                                                    {"equivalent", "Equivalent"},
                                                    {"status", "Status"},
                                                    {"note", "Note"}}};
  std::vector<std::vector<Cell>> lines;
  for (const IncomePayment& payment : payments) {
    lines.push_back({payment.day.startIn(calendar), payment.portfolio, payment.equity->symbol,
                     kindOfIncome(payment.kind),
                     payment.shares ? Cell(Shares{*payment.shares}) : Cell(),
                     payment.perShare ? Cell(Rate{*payment.perShare}) : Cell(), payment.amount,
                     std::string(payment.amount.currency.code),
                     payment.rate ? Cell(Rate{*payment.rate}) : Cell(),
                     payment.equivalent ? Cell(*payment.equivalent) : Cell(),
                     std::string(displayName(payment.status)), payment.note});
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
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
