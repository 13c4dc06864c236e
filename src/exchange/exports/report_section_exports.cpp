// The smaller lists that reports are made of, as lines of a delimited text file.
#include <functional>

#include "exchange/exports/report_lines_exporter.h"
#include "reports/series/report_days.h"

namespace corvane {

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxTotals(const TaxYear& year,
                                                                      const std::string& title,
                                                                      UserDefaults* defaults) {
  using Totals = TaxYear::Totals;
  const auto money = [](auto figure) {
    return [figure](const Totals& line) {
      return roundedAmount(std::invoke(figure, line), line.currency);
    };
  };
  return of(year.totals,
            {{{"symbol", "Symbol"},
              [](const Totals& line) {
                return line.equity == nullptr ? Cell() : Cell(line.equity->symbol);
              }},
             {{"primaryCurrency", "Portfolio Currency"},
              [](const Totals& line) { return codeOf(line.currency); }},
             {{"proceeds", "Proceeds"}, money(&Totals::proceeds)},
             {{"costBase", "Cost Base"}, money(&Totals::costBase)},
             {{"gains", "Gains"}, money(&Totals::gains)},
             {{"losses", "Losses"}, money(&Totals::losses)},
             {{"denied", "Denied"}, money(&Totals::denied)},
             {{"net", "Net"}, money(&Totals::net)}},
            title, defaults);
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxChecks(const TaxYear& year,
                                                                      const std::string& title,
                                                                      const Calendar& calendar,
                                                                      UserDefaults* defaults) {
  struct Check {
    const TaxRowPlace* place;
    std::optional<Decimal> gain;
    std::string note;
  };
  std::vector<Check> checks;
  for (const TaxYear::DeemedGain& deemed : year.deemedGains) {
    checks.push_back({&deemed.place, deemed.amount,
                      "deemed gain: the return of capital was more than the cost base"});
  }
  for (const TaxYear::ToCheck& check : year.toCheck) {
    checks.push_back({&check.place, std::nullopt, check.reason});
  }
  const auto primary = [](const Check& line) -> const Currency& {
    return line.place->portfolio->primaryCurrency();
  };
  const auto exporter = of(
      checks,
      {{{"settlement", "Settlement"},
        [&](const Check& line) { return line.place->settlement.startIn(calendar); }},
       {{"tradeDate", "Trade Date"},
        [&](const Check& line) { return line.place->trade.startIn(calendar); }},
       {{"portfolio", "Portfolio"}, [](const Check& line) { return line.place->portfolio->name; }},
       {{"symbol", "Symbol"},
        [](const Check& line) {
          return line.place->equity == nullptr ? Cell() : Cell(line.place->equity->symbol);
        }},
       {{"deemedGain", "Deemed Gain"},
        [&](const Check& line) {
          return line.gain ? roundedAmount(*line.gain, primary(line)) : Cell();
        }},
       {{"primaryCurrency", "Portfolio Currency"},
        [&](const Check& line) { return codeOf(primary(line)); }},
       {{"note", "Note"}, &Check::note}},
      title, defaults);
  exporter->writeDaysOf(calendar);
  return exporter;
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofTaxCosts(const TaxYear& year,
                                                                     const std::string& title,
                                                                     UserDefaults* defaults) {
  using Cost = TaxYear::CostAtEnd;
  return of(year.costs,
            {{{"symbol", "Symbol"}, [](const Cost& line) { return line.equity->symbol; }},
             {{"shares", "Shares"}, [](const Cost& line) { return Shares{line.pool.shares}; }},
             {{"costBase", "Cost Base"},
              [](const Cost& line) { return roundedAmount(line.pool.cost, line.currency); }},
             {{"primaryCurrency", "Portfolio Currency"},
              [](const Cost& line) { return codeOf(line.currency); }}},
            title, defaults);
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofCoverage(
    std::span<const PriceCoverage> coverages, const std::string& title, const Calendar& calendar,
    UserDefaults* defaults) {
  struct Stretch {
    const PriceCoverage* coverage;
    std::string_view state;
    std::optional<DaySpan> days;  ///< none where the prices were refused
  };
  std::vector<Stretch> stretches;
  for (const PriceCoverage& coverage : coverages) {
    for (const auto& [days, state] : coverage.stretches) {
      stretches.push_back({&coverage, rawValue(state), days});
    }
    if (coverage.problem) {
      stretches.push_back({&coverage, "refused", std::nullopt});
    }
  }
  const auto exporter =
      of(stretches,
         {{{"symbol", "Symbol"}, [](const Stretch& line) { return line.coverage->equity->symbol; }},
          {{"kind", "Kind"},
           [](const Stretch& line) { return line.coverage->isExchangeRate ? "rate" : "equity"; }},
          {{"state", "State"}, [](const Stretch& line) { return std::string(line.state); }},
          {{"from", "From"},
           [&](const Stretch& line) {
             return line.days ? Cell(line.days->first.startIn(calendar)) : Cell();
           }},
          {{"to", "To"},
           [&](const Stretch& line) {
             return line.days ? Cell(line.days->last.startIn(calendar)) : Cell();
           }},
          {{"days", "Days"},
           [](const Stretch& line) {
             return line.days ? Cell(Shares{daysBetween(line.days->first, line.days->last) + 1})
                              : Cell();
           }},
          {{"note", "Note"},
           [](const Stretch& line) { return line.days ? Cell() : Cell(*line.coverage->problem); }}},
         title, defaults);
  exporter->writeDaysOf(calendar);
  return exporter;
}

}  // namespace corvane
