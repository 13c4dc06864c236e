// Delimited text in and out.

#include <algorithm>
#include <optional>

#include "cli/command.h"
#include "cli/console_exchange_window.h"
#include "cli/console_workspace.h"
#include "exchange/export_controller.h"
#include "exchange/import_controller.h"
#include "exchange/portfolio_gain_loss_exporter.h"
#include "exchange/portfolio_holdings_exporter.h"
#include "exchange/portfolio_transactions_exporter.h"
#include "exchange/portfolio_transactions_importer.h"
#include "platform/async/dispatch_queue.h"

namespace corvane::cli {
namespace {

/// The words between commas; "a,b,,c" has an empty one.
std::vector<std::string> split(const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (character == ',') {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

std::string fieldsHelp(const ImportOrExportBroker& broker) {
  std::string text;
  for (const std::string& field : broker.allFields()) {
    text += (text.empty() ? "" : ", ") + field;
  }
  return text;
}

/// The fields of --fields, in order. Throws UsageError for one that does not exist, is there twice,
/// or is empty where that means nothing.
std::optional<std::vector<std::string>> fields(const Arguments& arguments,
                                               const ImportOrExportBroker& broker,
                                               bool mayBeEmpty) {
  const auto text = arguments.value("--fields");
  if (!text) {
    return std::nullopt;
  }
  const auto all = broker.allFields();
  std::vector<std::string> order = split(*text);
  for (const std::string& field : order) {
    if (field.empty() ? !mayBeEmpty : std::ranges::find(all, field) == all.end()) {
      throw UsageError("There is no field “" + field + "”. There are: " + fieldsHelp(broker) + ".");
    }
    if (!field.empty() && std::ranges::count(order, field) > 1) {
      throw UsageError("The field “" + field + "” is there twice.");
    }
  }
  return order;
}

/// Runs the main loop through an import or an export; whether it ran to its end.
template <typename Begin>
bool runToEnd(Begin begin) {
  std::optional<bool> outcome;
  begin([&](bool succeeded) { outcome = succeeded; });
  waitUntil([&] { return outcome.has_value(); });
  return *outcome;
}

bool import(const Arguments& arguments, Console& console) {
  const ConsolePrices prices(PriceSource::none);
  ConsoleWorkspace workspace(console, prices.provider(), arguments.value("--into").value());
  const auto portfolio = workspace.portfolioNamed(arguments.value("--portfolio").value());
  const auto importer = PortfolioTransactionsImporter::make(portfolio, nullptr);
  const auto order = fields(arguments, *importer, true);
  const auto currency = arguments.currency("--currency");
  importer->changeSettings([&](TransactionsImportConfiguration& settings) {
    if (const auto format = arguments.value("--date-format")) {
      settings.useDateFormatString = true;
      settings.dateFormatString = *format;
    }
    settings.defaultCurrencyCode =
        std::string((currency ? *currency : portfolio->primaryCurrency()).code);
    settings.includesHeaderRow = !arguments.has("--no-header");
  });
  const auto window = std::make_shared<ConsoleExchangeWindow>(
      console, arguments.operand(0), [&](ImportExportFieldSetupViewController& setup) {
        if (!order) {
          return;
        }
        const std::size_t columns = setup.numberOfRows();
        if (order->size() > columns) {
          throw ConsoleError("--fields names " + std::to_string(order->size()) +
                             " columns, and the file has " + std::to_string(columns) + ".");
        }
        setup.setIncludesHeaderRow(!arguments.has("--no-header"));
        // First none, so that no field is moved to and fro. Columns beyond the list are ignored.
        for (std::size_t column = 0; column < columns; ++column) {
          setup.changeField(column, "");
        }
        for (std::size_t column = 0; column < order->size(); ++column) {
          setup.changeField(column, (*order)[column]);
        }
      });
  const auto controller = ImportController::make(importer);
  if (!runToEnd([&](auto completion) { controller->beginImport(window, std::move(completion)); })) {
    return false;
  }
  workspace.save();
  console.out << "Imported " << importer->transactionsToRecord().size() << " transactions.\n";
  return true;
}

/// The days of the options, from the first row to today where they are absent. Throws UsageError
/// where they end before they start.
ClosedRange<YearMonthDay> daysOf(const Arguments& arguments, const PortfolioPointer& portfolio,
                                 const Calendar& calendar) {
  const YearMonthDay today = YearMonthDay::of(Date::now(), calendar);
  const auto& rows = portfolio->transactions();
  const YearMonthDay last = arguments.day("--to").value_or(today);
  const YearMonthDay first = arguments.day("--from").value_or(
      rows.empty() ? last
                   : std::min(last, YearMonthDay::of(rows.front()->settlementDate(), calendar)));
  if (last < first) {
    throw UsageError("--to is before --from.");
  }
  return {first, last};
}

/// Fetches the daily balance sheets of `slice`. What has no price is told as a warning.
void fetchSnapshots(PortfolioDataSlice& slice, PortfolioManager& manager, Console& console) {
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
  waitUntil([&] { return outcome.has_value(); });
  if (!*outcome) {
    (*outcome).error()->raise();
  }
  auto& fetched = **outcome;
  for (const auto& [equity, error] : fetched.fetchErrorsByEquity) {
    console.err << "No prices of " << equity->symbol << ": " << *error << '\n';
  }
  for (const auto& [currency, error] : fetched.fetchErrorsByCurrency) {
    console.err << "No rates of " << std::string_view(currency.code) << ": " << *error << '\n';
  }
  slice.snapshotGroup =
      std::make_shared<const PortfolioSnapshotGroup>(std::move(fetched.snapshotGroup));
}

bool exportPortfolio(const Arguments& arguments, Console& console) {
  const std::string& what = arguments.operand(0);
  if (what != "transactions" && what != "holdings" && what != "gains") {
    throw UsageError("An export is of transactions, holdings or gains, not of “" + what + "”.");
  }
  const ConsolePrices prices(what == "transactions" ? PriceSource::none : priceSource(arguments));
  ConsoleWorkspace workspace(console, prices.provider(), arguments.operand(1));
  const auto portfolio = workspace.portfolioNamed(arguments.value("--portfolio").value());
  PortfolioDataSlice slice{.portfolio = portfolio};
  slice.selectDays(daysOf(arguments, portfolio, workspace.manager().calendar));

  std::shared_ptr<PortfolioExporter> exporter;
  if (what == "transactions") {
    exporter = PortfolioTransactionsExporter::make(*portfolio, slice.transactions.value(), nullptr);
  } else {
    fetchSnapshots(slice, workspace.manager(), console);
    if (what == "holdings") {
      exporter = PortfolioHoldingsExporter::make(slice, nullptr);
    } else {
      exporter = PortfolioGainLossExporter::make(slice, nullptr);
    }
  }
  const auto order = fields(arguments, *exporter, false);
  exporter->changeSettings([&](PortfolioExportConfiguration& settings) {
    settings.useDateFormatString = true;
    settings.dateFormatString = arguments.value("--date-format").value_or("yyyy-MM-dd");
    settings.includeCurrencySymbol = false;
    settings.includeThousandsSeparator = false;
    settings.negativeNumbersAccountingStyle = false;
    settings.includesHeaderRow = !arguments.has("--no-header");
    if (order) {
      settings.fieldOrder = *order;
    }
  });
  const auto window = std::make_shared<ConsoleExchangeWindow>(
      console, arguments.value("--out").value(), [](auto&) {});
  const auto controller = ExportController::make(exporter);
  return runToEnd([&](auto completion) { controller->beginExport(window, std::move(completion)); });
}

}  // namespace

std::vector<Command> exchangeCommands() {
  Signature exporting = {
      .operands = {"transactions|holdings|gains", "WORKSPACE"},
      .options = {
          {.name = "--portfolio",
           .value = "NAME",
           .help = "the portfolio's name",
           .isRequired = true},
          {.name = "--out", .value = "FILE", .help = "the file to write", .isRequired = true},
          {.name = "--from", .value = "DAY", .help = "the first day, such as 2024-01-01"},
          {.name = "--to", .value = "DAY", .help = "the last day; today if absent"},
          {.name = "--fields", .value = "a,b,c", .help = "the columns, in order"},
          {.name = "--no-header", .value = "", .help = "leave out the row of titles"},
          {.name = "--date-format", .value = "FORMAT", .help = "such as dd.MM.yyyy"}}};
  std::ranges::copy(priceSourceOptions(), std::back_inserter(exporting.options));
  return {
      {.name = "import",
       .summary = "Reads transactions from a delimited text file.",
       .details =
           "Either all rows are recorded or none. --fields says what stands in which column;\n"
           "“a,b,,c” ignores the third one. There are: type, tradeDate, settlementDate, symbol,\n"
           "numberOfShares, sharesNet, cashAmount, cashCurrency, exchangeRate, equivalentAmount,\n"
           "costBaseAdded, note.",
       .signature =
           {.operands = {"FILE"},
            .options =
                {{.name = "--into",
                  .value = "WORKSPACE",
                  .help = "the workspace to change",
                  .isRequired = true},
                 {.name = "--portfolio",
                  .value = "NAME",
                  .help = "the portfolio's name",
                  .isRequired = true},
                 {.name = "--fields", .value = "a,b,,c", .help = "what stands in each column"},
                 {.name = "--no-header", .value = "", .help = "the first row is no row of titles"},
                 {.name = "--date-format",
                  .value = "FORMAT",
                  .help = "such as dd/MM/yyyy; worked out from the file if absent"},
                 {.name = "--currency",
                  .value = "CODE",
                  .help = "of rows that name none; that of the portfolio if "
                          "absent"}}},
       .run = import},
      {.name = "export",
       .summary = "Writes transactions, holdings or gains to a delimited text file.",
       .details = "Without --from the days start with the first row of the ledger.",
       .signature = std::move(exporting),
       .run = exportPortfolio},
  };
}

}  // namespace corvane::cli
