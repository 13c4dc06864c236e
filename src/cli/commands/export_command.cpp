#include <algorithm>
#include <functional>
#include <optional>

#include "cli/commands/commands.h"
#include "cli/commands/expected_income_question.h"
#include "cli/commands/returns_question.h"
#include "cli/commands/tax_question.h"
#include "cli/console/console_exchange_window.h"
#include "cli/console/field_names.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "cli/console/workspace_file.h"
#include "exchange/exports/export_controller.h"
#include "exchange/exports/portfolio_gain_loss_exporter.h"
#include "exchange/exports/portfolio_holdings_exporter.h"
#include "exchange/exports/portfolio_transactions_exporter.h"
#include "exchange/exports/report_lines_exporter.h"
#include "ledger/reports/asset_lines.h"
#include "platform/system/terminal.h"

namespace corvane::cli {
namespace {

/// The days of the options, from the first row to today where they are absent. Throws UsageError
/// where they end before they start.
ClosedRange<YearMonthDay> daysOf(const CommandLine& line, const PortfolioPointer& portfolio,
                                 const Calendar& calendar) {
  const YearMonthDay today = YearMonthDay::of(Date::now(), calendar);
  const auto& rows = portfolio->transactions();
  const YearMonthDay last = dayOption(line, "--to").value_or(today);
  const YearMonthDay first =
      dayOption(line, "--from")
          .value_or(rows.empty() ? last
                                 : std::min(last, YearMonthDay::of(rows.front()->settlementDate(),
                                                                   calendar)));
  if (last < first) {
    throw UsageError("--to is before --from.");
  }
  return {first, last};
}

/// Tells of what is held at the end of `slice` and has no value there, without those that `isTold`
/// says the user knows of. Whether everything has one.
bool everythingHasAValue(const PortfolioDataSlice& slice,
                         const std::function<bool(const PortfolioAsset&)>& isTold,
                         const Console& console) {
  bool isComplete = true;
  for (const PortfolioAsset& asset : slice.assetEntries({.excludingZero = true})) {
    const Currency* cash = asset.cash();
    const HoldingLine line = cash != nullptr ? holdingLine(slice.lastSnapshot(), *cash)
                                             : holdingLine(slice.lastSnapshot(), asset.equity());
    if (line.marketValue) {
      continue;
    }
    isComplete = false;
    if (!isTold(asset)) {
      console.warn(cash != nullptr ? "No rates of " + std::string(cash->code) + "."
                                   : "No value of " + asset.equity()->symbol +
                                         ": its price, or the rate of its currency, is missing.");
    }
  }
  return isComplete;
}

/// Fetches the daily balance sheets of `slice`. What has no price is told as a warning where the
/// figures need one. Whether all that are needed are there.
bool fetchSnapshots(PortfolioDataSlice& slice, bool needsPrices, PortfolioManager& manager,
                    const Console& console) {
  EquitySet equities;
  for (const TransactionPointer& row : slice.portfolio->transactions()) {
    if (const EquityPointer* equity = row->basic.equity()) {
      equities.insert(*equity);
    }
  }
  // Which currency an equity is traded in has to be known before its prices are asked for.
  refreshEquities(*manager.quoteProvider, {equities.begin(), equities.end()}, console);
  std::optional<Result<PortfolioManager::FetchDailySnapshotsResult>> outcome;
  manager.fetchDailySnapshots(slice.portfolio, slice.ymdRange.lower(), slice.ymdRange.upper(),
                              [&](auto result) { outcome = std::move(result); });
  waitFor([&] { return outcome.has_value(); });
  if (!*outcome) {
    (*outcome).error()->raise();
  }
  auto& fetched = **outcome;
  slice.snapshotGroup =
      std::make_shared<const PortfolioSnapshotGroup>(std::move(fetched.snapshotGroup));
  if (!needsPrices) {
    return true;
  }
  for (const auto& [equity, error] : fetched.fetchErrorsByEquity) {
    console.warn("No prices of " + equity->symbol + ". " + error->description().value_or(""));
  }
  for (const auto& [currency, error] : fetched.fetchErrorsByCurrency) {
    console.warn("No rates of " + std::string(currency.code) + ". " +
                 error->description().value_or(""));
  }
  return everythingHasAValue(
      slice,
      [&](const PortfolioAsset& asset) {
        return asset.cash() != nullptr ? fetched.fetchErrorsByCurrency.contains(*asset.cash())
                                       : fetched.fetchErrorsByEquity.contains(asset.equity());
      },
      console);
}

/// What is to be written, and whether it lacks no price.
struct Contents {
  std::shared_ptr<PortfolioExporter> exporter;
  bool isComplete = true;
};

Contents contentsOf(const std::string& what, PortfolioDataSlice slice, PortfolioManager& manager,
                    const Console& console) {
  if (what == "transactions") {
    return {
        PortfolioTransactionsExporter::make(*slice.portfolio, slice.transactions.value(), nullptr)};
  }
  const bool isComplete = fetchSnapshots(slice, what == "holdings", manager, console);
  if (what == "holdings") {
    return {PortfolioHoldingsExporter::make(std::move(slice), nullptr), isComplete};
  }
  return {PortfolioGainLossExporter::make(std::move(slice), nullptr), isComplete};
}

/// Plain figures and days, which programs and spreadsheets everywhere read alike.
void setUp(PortfolioExporter& exporter, const CommandLine& line) {
  std::vector<std::string> order = exporter.allFields();
  if (const auto list = line.value("--fields")) {
    order = fieldNames(*list, exporter.allFields());
    if (std::ranges::find(order, "") != order.end()) {
      throw UsageError("--fields names a column without a field.");
    }
  }
  exporter.changeSettings([&](PortfolioExportConfiguration& settings) {
    settings.useDateFormatString = true;
    settings.dateFormatString = line.value("--date-format").value_or("yyyy-MM-dd");
    settings.includeCurrencySymbol = false;
    settings.includeThousandsSeparator = false;
    settings.negativeNumbersAccountingStyle = false;
    settings.includesHeaderRow = !line.has("--no-header");
    settings.fieldOrder = std::move(order);
  });
}

Contents portfolioContents(const std::string& what, const CommandLine& line,
                           const WorkspaceFile& workspace, const Console& console) {
  const auto name = line.value("--portfolio");
  if (!name) {
    throw UsageError("“--portfolio NAME” is missing.");
  }
  PortfolioDataSlice slice{.portfolio = workspace.portfolio(*name)};
  slice.selectDays(daysOf(line, slice.portfolio, workspace.manager()->calendar));
  return contentsOf(what, std::move(slice), *workspace.manager(), console);
}

Contents returnsContents(const CommandLine& line, const WorkspaceFile& workspace,
                         const Console& console) {
  PortfolioManager& manager = *workspace.manager();
  ReturnsQuestion question = returnsQuestion(line, workspace);
  askMarket(question, manager, console);
  bool isComplete = true;
  const ReturnsReport report = reportOf(question, manager.calendar, console, isComplete);
  const auto benchmark =
      benchmarkOf(line, question, report.series.currency, *manager.quoteProvider, console);
  isComplete &= benchmark.has_value() || !line.has("--benchmark");
  return {ReportLinesExporter::ofReturns(report, benchmark, scopeTitle(question), manager.calendar,
                                         nullptr),
          isComplete};
}

Contents taxContents(const CommandLine& line, const WorkspaceFile& workspace) {
  const std::string section = line.value("--section").value_or("disposals");
  if (section != "disposals" && section != "income") {
    throw UsageError("--section is neither disposals nor income.");
  }
  const Calendar& calendar = workspace.manager()->calendar;
  const TaxYearQuestion question =
      taxQuestion(line, workspace.document()->model()->taxSettings, calendar);
  const TaxYear year = taxYear(portfoliosWithRoles(line, workspace), question, calendar);
  const std::string title = "Tax year " + std::to_string(question.first.year);
  return {section == "income" ? ReportLinesExporter::ofTaxIncome(year, title, nullptr)
                              : ReportLinesExporter::ofDisposals(year, title, calendar, nullptr)};
}

Contents incomeContents(const CommandLine& line, const WorkspaceFile& workspace,
                        const Console& console) {
  const PortfolioManager& manager = *workspace.manager();
  const std::vector<PortfolioPointer> portfolios = portfoliosOf(line, workspace);
  std::vector<ExpectedIncome> expected;
  if (line.has("--projected")) {
    expected = askForExpected(portfolios, manager, YearMonthDay::of(Date::now(), manager.calendar),
                              console);
  }
  const bool isComplete =
      std::ranges::all_of(expected, [](const auto& each) { return each.rate.has_value(); });
  return {ReportLinesExporter::ofIncome(incomePayments(portfolios, expected, manager.calendar,
                                                       line.has("--return-of-capital")),
                                        "Income", manager.calendar, nullptr),
          isComplete};
}

/// The source of prices that writing `what` needs; none where it needs none.
std::optional<PriceSource::Need> needOf(const std::string& what, const CommandLine& line) {
  if (what == "transactions" || what == "tax" || (what == "income" && !line.has("--projected"))) {
    return std::nullopt;
  }
  // Gains tell the names of equities.
  return what == "gains" ? PriceSource::Need::names : PriceSource::Need::prices;
}

void exportPortfolio(const CommandLine& line, const Console& console) {
  const std::string& what = line.word(0);
  constexpr std::string_view kinds[] = {"transactions", "holdings", "gains",
                                        "returns",      "tax",      "income"};
  if (std::ranges::find(kinds, what) == std::end(kinds)) {
    throw UsageError("“" + what +
                     "” is none of transactions, holdings, gains, returns, tax and income.");
  }
  const auto need = needOf(what, line);
  std::optional<PriceSource> prices;
  if (need) {
    prices.emplace(line, *need);
  }
  const WorkspaceFile workspace(line.word(1), console,
                                prices ? prices->provider() : makeOfflineProvider());
  const auto [exporter, isComplete] = what == "returns" ? returnsContents(line, workspace, console)
                                      : what == "tax"   ? taxContents(line, workspace)
                                      : what == "income"
                                          ? incomeContents(line, workspace, console)
                                          : portfolioContents(what, line, workspace, console);
  if (exporter->exportRowCount() < 1) {
    console.warn(what == "tax" || what == "income"
                     ? "There is nothing to export. Nothing has been written."
                     : "There are no " + what + " in these days. Nothing has been exported.");
    throw Failed(exitCode::failure);
  }
  setUp(*exporter, line);

  const auto window = std::make_shared<ConsoleExchangeWindow>(
      ExchangeAnswers{.file = line.required("--out")}, console);
  const auto controller = ExportController::make(exporter);
  std::optional<bool> outcome;
  controller->beginExport(window, [&outcome](bool succeeded) { outcome = succeeded; });
  pumpUntil([&] { return outcome.has_value(); }, [&] { window->cancel(); });
  if (!*outcome) {
    throw Failed(terminal::wasInterrupted() ? exitCode::interrupted : exitCode::failure);
  }
  if (!isComplete) {
    throw Failed(exitCode::failure);  // What is missing has been told; the rest is in the file.
  }
}

}  // namespace

Command exportCommand() {
  return {
      .name = "export",
      .summary = "Writes transactions, holdings, gains or a report to a file.",
      .words = {"transactions|holdings|gains|returns|tax|income", "WORKSPACE"},
      .options = joined(
          {{"--portfolio", "NAME", "the portfolio; of reports all where it is absent"},
           {"--out", "FILE", "the file to write", true},
           {"--from", "DAY",
            "the first day, such as 2024-01-01; else that of the first transaction"},
           {"--to", "DAY", "the last day; else today"},
           {"--fields", "LIST", "the columns, with commas between; else all"},
           {"--no-header", "", "leaves out the row of titles"},
           {"--date-format", "FORMAT", "how dates are written, such as dd.MM.yyyy"},
           {"--symbol", "S", "returns of one equity alone"},
           {"--benchmark", "S", "an equity to compare returns with"},
           {"--currency", "C", "the currency of returns of all portfolios together"},
           {"--year", "YEAR",
            "of taxes, the year in which the tax year starts; else that of today"},
           {"--person", "NAME", "whose tax year; else your own"},
           {"--section", "NAME", "of taxes, disposals or income", false, false, "disposals income"},
           {"--projected", "", "income with what the next twelve months are expected to bring"},
           {"--return-of-capital", "", "counts returns of capital as income"}},
          priceSourceOptions()),
      .explanation =
          "FILE is text in UTF-8, each cell in quotes, with commas between. A file that is there "
          "is\nreplaced. Transactions that were written with all columns can be read by "
          "corvane-cli "
          "import:\n  --fields tradeDate,settlementDate,type,symbol,numberOfShares,sharesNet,"
          "cashAmount,,\\\n    cashCurrency,exchangeRate,equivalentAmount,,costBaseAdded,,,note\n"
          "\nHoldings are those at the end of the last day. Gains are those of what was bought or "
          "sold in\nthe days. Where a price or a rate is missing, its cells stay empty and the "
          "exit "
          "code is 1. Returns have a line for each day, taxes for each disposal, income for each "
          "payment.\n",
      .run = &exportPortfolio};
}

}  // namespace corvane::cli
