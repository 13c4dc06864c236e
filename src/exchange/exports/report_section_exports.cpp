// The smaller lists that reports are made of, as lines of a delimited text file.
#include <array>
#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

CurrencyAmount roundedAmount(const Decimal& amount, const Currency& currency) {
  return {currency, roundedToMinorUnits(amount, currency)};
}

}  // namespace

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxTotals(const TaxYear& year,
                                                                      const std::string& title,
                                                                      UserDefaults* defaults) {
  static constexpr std::array<Field, 8> fields = {{{"symbol", "Symbol"},
                                                   {"primaryCurrency", "Portfolio Currency"},
                                                   {"proceeds", "Proceeds"},
                                                   {"costBase", "Cost Base"},
                                                   {"gains", "Gains"},
                                                   {"losses", "Losses"},
                                                   {"denied", "Denied"},
                                                   {"net", "Net"}}};
  std::vector<std::vector<Cell>> lines;
  for (const TaxYear::Totals& totals : year.totals) {
    const auto money = [&](const Decimal& amount) {
      return roundedAmount(amount, totals.currency);
    };
    lines.push_back({totals.equity == nullptr ? Cell() : Cell(totals.equity->symbol),
                     std::string(totals.currency.code), money(totals.proceeds),
                     money(totals.costBase), money(totals.gains), money(totals.losses),
                     money(totals.denied), money(totals.net())});
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxChecks(const TaxYear& year,
                                                                      const std::string& title,
                                                                      const Calendar& calendar,
                                                                      UserDefaults* defaults) {
  static constexpr std::array<Field, 7> fields = {{{"settlement", "Settlement"},
                                                   {"tradeDate", "Trade Date"},
                                                   {"portfolio", "Portfolio"},
                                                   {"symbol", "Symbol"},
                                                   {"deemedGain", "Deemed Gain"},
                                                   {"primaryCurrency", "Portfolio Currency"},
                                                   {"note", "Note"}}};
  std::vector<std::vector<Cell>> lines;
  const auto add = [&](const TaxRowPlace& place, Cell gain, std::string note) {
    lines.push_back({place.settlement.startIn(calendar), place.trade.startIn(calendar),
                     place.portfolio->name,
                     place.equity == nullptr ? Cell() : Cell(place.equity->symbol), std::move(gain),
                     std::string(place.portfolio->primaryCurrency().code), std::move(note)});
  };
  for (const TaxYear::DeemedGain& deemed : year.deemedGains) {
    add(deemed.place, roundedAmount(deemed.amount, deemed.place.portfolio->primaryCurrency()),
        "deemed gain: the return of capital was more than the cost base");
  }
  for (const TaxYear::ToCheck& check : year.toCheck) {
    add(check.place, Cell(), check.reason);
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxCosts(const TaxYear& year,
                                                                     const std::string& title,
                                                                     UserDefaults* defaults) {
  static constexpr std::array<Field, 4> fields = {{{"symbol", "Symbol"},
                                                   {"shares", "Shares"},
                                                   {"costBase", "Cost Base"},
                                                   {"primaryCurrency", "Portfolio Currency"}}};
  std::vector<std::vector<Cell>> lines;
  for (const TaxYear::CostAtEnd& line : year.costs) {
    lines.push_back({line.equity->symbol, Shares{line.pool.shares},
                     roundedAmount(line.pool.cost, line.currency),
                     std::string(line.currency.code)});
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofCoverage(
    std::span<const PriceCoverage> coverages, const std::string& title, const Calendar& calendar,
    UserDefaults* defaults) {
  static constexpr std::array<Field, 7> fields = {{{"symbol", "Symbol"},
                                                   {"kind", "Kind"},
                                                   {"state", "State"},
                                                   {"from", "From"},
                                                   {"to", "To"},
                                                   {"days", "Days"},
                                                   {"note", "Note"}}};
  std::vector<std::vector<Cell>> lines;
  for (const PriceCoverage& coverage : coverages) {
    const std::string kind = coverage.isExchangeRate ? "rate" : "equity";
    for (const auto& [days, state] : coverage.stretches) {
      lines.push_back({coverage.equity->symbol, kind, std::string(rawValue(state)),
                       days.first.startIn(calendar), days.last.startIn(calendar),
                       Shares{daysBetween(days.first, days.last) + 1}, Cell()});
    }
    if (coverage.problem) {
      lines.push_back({coverage.equity->symbol, kind, std::string("refused"), Cell(), Cell(),
                       Cell(), *coverage.problem});
    }
  }
  return std::shared_ptr<ReportLinesExporter>(
      new ReportLinesExporter(defaults, fields, std::move(lines), title));
}

}  // namespace corvane
