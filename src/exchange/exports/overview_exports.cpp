// The overview of all portfolios as lines of a file.

#include "exchange/exports/report_lines_exporter.h"

namespace corvane {
namespace {

using OverviewToWrite = PortfoliosOverview;

std::string holdersOf(const OverviewToWrite::HoldingLine& line) {
  std::string names;
  for (const auto& part : line.parts) {
    names += (names.empty() ? "" : "; ") + part.portfolio->name;
  }
  return names;
}

}  // namespace

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofPortfolios(
    const PortfoliosOverview& overview, const std::string& title, UserDefaults* defaults) {
  using Line = OverviewToWrite::PortfolioLine;
  const auto money = [&](const std::optional<Decimal>& amount) {
    return amount ? roundedAmount(*amount, overview.currency) : Cell();
  };
  const auto fraction = [](const std::optional<double>& value) {
    return value ? Cell(Fraction{*value}) : Cell();
  };
  return of(
      overview.portfolios,
      {{{"portfolio", "Portfolio"}, [](const Line& line) { return line.portfolio->name; }},
       {{"value", "Value"}, [&](const Line& line) { return money(line.figures.value); }},
       {{"share", "Share"}, [&](const Line& line) { return fraction(line.share); }},
       {{"dayChange", "Change"}, [&](const Line& line) { return money(line.figures.dayChange); }},
       {{"dayRate", "Change Rate"},
        [&](const Line& line) { return fraction(line.figures.dayRate()); }},
       {{"netDeposits", "Net Deposits"},
        [&](const Line& line) { return money(line.figures.netDeposits); }},
       {{"gain", "Gain"}, [&](const Line& line) { return money(line.figures.gain()); }},
       {{"currency", "Currency"}, [&](const Line&) { return codeOf(overview.currency); }}},
      title, defaults);
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofAllHoldings(
    const PortfoliosOverview& overview, const std::string& title, UserDefaults* defaults) {
  using Line = OverviewToWrite::HoldingLine;
  const auto money = [&](const std::optional<Decimal>& amount) {
    return amount ? roundedAmount(*amount, overview.currency) : Cell();
  };
  const auto fraction = [](const std::optional<double>& value) {
    return value ? Cell(Fraction{*value}) : Cell();
  };
  return of(
      overview.holdings,
      {{{"kind", "Kind"},
        [](const Line& line) { return std::string(line.equity == nullptr ? "cash" : "equity"); }},
       {{"symbol", "Symbol"},
        [](const Line& line) { return line.equity == nullptr ? "" : line.equity->symbol; }},
       {{"name", "Name"},
        [](const Line& line) {
          return line.equity == nullptr ? "" : line.equity->name.value_or("");
        }},
       {{"held", "Shares or Cash"}, [](const Line& line) { return Shares{line.held}; }},
       {{"price", "Price"},
        [](const Line& line) {
          return line.equity != nullptr && line.price ? Cell(Rate{*line.price}) : Cell();
        }},
       {{"priceCurrency", "Price Currency"},
        [](const Line& line) { return codeOf(line.currency); }},
       {{"value", "Value"}, [&](const Line& line) { return money(line.value); }},
       {{"share", "Share"}, [&](const Line& line) { return fraction(line.share); }},
       {{"dayChange", "Change"}, [&](const Line& line) { return money(line.change); }},
       {{"dayRate", "Change Rate"}, [&](const Line& line) { return fraction(line.dayRate()); }},
       {{"unrealizedGain", "Unrealized Gain"}, [&](const Line& line) { return money(line.gain); }},
       {{"currency", "Currency"}, [&](const Line&) { return codeOf(overview.currency); }},
       {{"portfolios", "Held By"}, &holdersOf}},
      title, defaults);
}

std::shared_ptr<ReportLinesExporter> ReportLinesExporter::ofCurrencies(
    const PortfoliosOverview& overview, const std::string& title, UserDefaults* defaults) {
  using Line = OverviewToWrite::CurrencyLine;
  return of(overview.currencies,
            {{{"held", "Currency Held"}, [](const Line& line) { return codeOf(line.currency); }},
             {{"amount", "Amount"},
              [](const Line& line) {
                return line.amount ? roundedAmount(*line.amount, line.currency) : Cell();
              }},
             {{"value", "Value"},
              [&](const Line& line) {
                return line.value ? roundedAmount(*line.value, overview.currency) : Cell();
              }},
             {{"share", "Share"},
              [](const Line& line) { return line.share ? Cell(Fraction{*line.share}) : Cell(); }},
             {{"currency", "Currency"}, [&](const Line&) { return codeOf(overview.currency); }}},
            title, defaults);
}

}  // namespace corvane
