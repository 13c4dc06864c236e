#include <iterator>

#include "cli/commands/commands.h"
#include "cli/commands/report_output.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "cli/console/text_table.h"
#include "reports/overview/portfolios_overview.h"

namespace corvane::cli {
namespace {

std::vector<Listing::Field> overviewPortfolioFields() {
  using enum Listing::Kind;
  return {{"portfolio", "Portfolio"},      {"value", "Value", number},
          {"share", "Share", number},      {"dayChange", "Change", number},
          {"dayRate", "Change %", number}, {"netDeposits", "Deposited", number},
          {"gain", "Gain", number},        {"currency", "Currency"}};
}

std::vector<Listing::Field> overviewHoldingFields() {
  using enum Listing::Kind;
  return {{"kind", "Kind"},
          {"symbol", "Symbol"},
          {"name", "Name"},
          {"held", "Held", number},
          {"price", "Price", number},
          {"priceCurrency", "In"},
          {"value", "Value", number},
          {"share", "Share", number},
          {"dayChange", "Change", number},
          {"dayRate", "Change %", number},
          {"unrealizedGain", "Gain", number},
          {"currency", "Currency"},
          {"portfolios", "Held by"}};
}

/// The cells of an overview: figures for eyes, or with all their digits for programs.
class OverviewCells {
 public:
  OverviewCells(const PortfoliosOverview& overview, ListingFormat format)
      : overview_(overview), isForEyes_(format == ListingFormat::table) {}

  [[nodiscard]] std::string money(const std::optional<Decimal>& amount) const {
    return amount ? moneyText(*amount, overview_.currency) : nothing();
  }
  /// Percent for eyes, else a fraction of 1.
  [[nodiscard]] std::string rate(const std::optional<double>& value) const {
    if (isForEyes_) {
      return percentText(value);
    }
    return value ? Decimal::fromDouble(*value).description() : "";
  }
  [[nodiscard]] std::string code() const { return std::string(overview_.currency.code); }
  [[nodiscard]] std::string nothing() const { return std::string(isForEyes_ ? noFigure : ""); }

  [[nodiscard]] std::vector<std::string> portfolio(const std::string& name,
                                                   const PortfoliosOverview::Figures& figures,
                                                   const std::optional<double>& share) const {
    return {name,
            money(figures.value),
            rate(share),
            money(figures.dayChange),
            rate(figures.dayRate()),
            money(figures.netDeposits),
            money(figures.gain()),
            code()};
  }

  [[nodiscard]] std::vector<std::string> holding(
      const PortfoliosOverview::HoldingLine& line) const {
    const bool isCash = line.equity == nullptr;
    std::string holders;
    for (const auto& part : line.parts) {
      holders += (holders.empty() ? "" : "; ") + part.portfolio->name;
    }
    return {isCash ? "cash" : "equity",
            isCash ? "" : line.equity->symbol,
            isCash ? "" : line.equity->name.value_or(""),
            isCash ? moneyText(line.held, line.currency) : line.held.description(),
            line.price ? line.price->description() : nothing(),
            std::string(line.currency.code),
            money(line.value),
            rate(line.share),
            money(line.change),
            rate(line.dayRate()),
            money(line.gain),
            code(),
            holders};
  }

 private:
  const PortfoliosOverview& overview_;
  bool isForEyes_;
};

void writePortfolioLines(const PortfoliosOverview& overview, ListingFormat format,
                         std::ostream& out) {
  const OverviewCells cells(overview, format);
  ReportTable table(overviewPortfolioFields());
  for (const auto& [portfolio, figures, share] : overview.portfolios) {
    table.add(cells.portfolio(portfolio->name, figures, share));
  }
  if (overview.portfolios.size() > 1) {
    table.addTotal(cells.portfolio("All portfolios", overview.total, std::nullopt));
  }
  table.write(format, out);
}

void writeHoldingLines(const PortfoliosOverview& overview, ListingFormat format,
                       std::ostream& out) {
  const OverviewCells cells(overview, format);
  ReportTable table(overviewHoldingFields());
  for (const PortfoliosOverview::HoldingLine& line : overview.holdings) {
    table.add(cells.holding(line));
  }
  table.write(format, out);
}

void writeCurrencyLines(const PortfoliosOverview& overview, std::ostream& out) {
  using enum TextTable::Alignment;
  const OverviewCells cells(overview, ListingFormat::table);
  TextTable table({{"Currency"}, {"Amount", right}, {"Value", right}, {"Share", right}});
  for (const auto& [currency, amount, value, share] : overview.currencies) {
    table.add({std::string(currency.code),
               amount ? moneyText(*amount, currency) : std::string(noFigure), cells.money(value),
               cells.rate(share)});
  }
  table.write(out);
}

/// The overview at the latest prices; without what has none, which is warned of, and then
/// `isComplete` becomes false.
PortfoliosOverview freshOverview(const CommandLine& line, const WorkspaceFile& workspace,
                                 QuoteProvider& quotes, const Console& console, bool& isComplete) {
  const PortfolioManager& manager = *workspace.manager();
  const std::vector<PortfolioPointer> portfolios = manager.portfolios();
  const auto code = line.value("--currency");
  const Currency currency = code ? currencyNamed(*code) : commonCurrency(portfolios);
  refreshHoldings(manager, quotes, console);
  // Held until the overview is made, so that the rates are not forgotten.
  const EquitySet rates = ratesOfOverview(portfolios, currency, quotes);
  std::vector<EquityPointer> unknown;
  std::ranges::copy_if(rates, std::back_inserter(unknown),
                       [](const EquityPointer& pair) { return !pair->recentPrice; });
  if (!unknown.empty()) {
    refreshEquities(quotes, unknown, console);
  }
  PortfoliosOverview overview = portfoliosOverview(portfolios, currency, quotes);
  if (overview.missing.isEmpty()) {
    return overview;
  }
  isComplete = false;
  for (const std::string& name : overview.missing.names()) {
    console.warn("No latest price or rate of " + name + ", which is left out.");
  }
  return portfoliosOverview(portfolios, currency, quotes, overview.missing);
}

void writeOverview(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
  const PriceSource prices(line);
  const WorkspaceFile workspace(line.word(0), console, prices.provider());
  bool isComplete = true;
  const PortfoliosOverview overview =
      freshOverview(line, workspace, *prices.provider(), console, isComplete);
  if (format == ListingFormat::table && overview.portfolios.empty()) {
    console.out << "There are no portfolios.\n";
    return;
  }
  const bool wantsHoldings = line.has("--holdings");
  if (format == ListingFormat::table || !wantsHoldings) {
    writePortfolioLines(overview, format, console.out);
  }
  if (format == ListingFormat::table) {
    console.out << '\n';
  }
  if (format == ListingFormat::table || wantsHoldings) {
    writeHoldingLines(overview, format, console.out);
  }
  if (format == ListingFormat::table) {
    console.out << '\n';
    writeCurrencyLines(overview, console.out);
  }
  if (!isComplete) {
    throw Failed(exitCode::failure);
  }
}

}  // namespace

Command overviewCommand() {
  return {
      .name = "overview",
      .summary = "Shows what all portfolios are worth together, and what they hold.",
      .words = {"WORKSPACE"},
      .options = joined(
          {{"--currency", "C", "the currency of all figures; else that of most portfolios"},
           {"--holdings", "", "has --csv and --json write the holdings, not the portfolios"}},
          listingOptions(), priceSourceOptions()),
      .explanation =
          "Everything stands at the latest prices and rates, deposits and costs in other "
          "currencies too. The\nchange is that of the latest session: the shares held now, "
          "from the close before it to the latest\nprice. What has no price is left out with "
          "a warning, and the exit code is then 1. --csv and --json\nwrite shares and rates "
          "of change as fractions of 1.\n",
      .listings = {{"", overviewPortfolioFields()}, {"with --holdings", overviewHoldingFields()}},
      .run = &writeOverview};
}

}  // namespace corvane::cli
