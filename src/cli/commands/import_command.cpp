#include <array>
#include <optional>

#include "cli/commands/commands.h"
#include "cli/commands/statement_import.h"
#include "cli/console/console_exchange_window.h"
#include "cli/console/field_names.h"
#include "cli/console/option_values.h"
#include "cli/console/price_source.h"
#include "cli/console/workspace_file.h"
#include "exchange/imports/import_controller.h"
#include "exchange/imports/import_job.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "platform/system/terminal.h"

namespace corvane::cli {
namespace {

ExchangeAnswers answersIn(const CommandLine& line, const ImportBroker& broker) {
  ExchangeAnswers answers = {.file = line.word(0),
                             .fields = std::nullopt,
                             .includesHeaderRow = !line.has("--no-header"),
                             .dateFormat = line.value("--date-format"),
                             .currencyCode = std::nullopt};
  if (const auto code = line.value("--currency")) {
    answers.currencyCode = std::string(currencyNamed(*code).code);
  }
  if (const auto list = line.value("--fields")) {
    answers.fields = fieldNames(*list, broker.allFields());
  }
  return answers;
}

/// What the options say of how cells are read. Throws UsageError.
void setUpReading(PortfolioTransactionsImporter& importer, const CommandLine& line,
                  const std::shared_ptr<ImportExportWindow>& window) {
  if (const auto days = line.value("--days")) {
    importer.strictOptions.days = dayOrderWithRawValue(*days);
    if (!importer.strictOptions.days) {
      throw UsageError("“" + *days + "” is none of dmy, mdy and ymd.");
    }
  }
  if (const auto mark = line.value("--decimal")) {
    if (*mark != "." && *mark != ",") {
      throw UsageError("“" + *mark + "” is neither a point nor a comma.");
    }
    importer.strictOptions.decimal = *mark == "." ? DecimalMark::point : DecimalMark::comma;
  }
  importer.prefersFileReading =
      line.has("--file-reading") || line.has("--days") || line.has("--decimal");
  if (importer.prefersFileReading && line.has("--standard-reading")) {
    throw UsageError("--standard-reading excludes --file-reading, --days and --decimal.");
  }
  if (!line.has("--standard-reading")) {
    importer.reviewHandler = reviewIn(window);
  }
}

/// Options that say how columns are read which --fields has placed, and those for layouts.
constexpr std::array forFields = {"--no-header", "--date-format", "--file-reading",
                                  "--standard-reading", "--remember-layout"};
constexpr std::array forLayouts = {
    "--preview", "--profile", "--leave-out",    "--symbol",        "--rates", "--offline", "--kind",
    "--account", "--twins",   "--find-symbols", "--sample-market", "--csv",   "--json"};

/// Keeps the places of the columns as a layout, where the user has named one.
void rememberLayout(const CommandLine& line, PortfolioTransactionsImporter& importer,
                    const Console& console) {
  if (const auto name = line.value("--remember-layout")) {
    const auto heading = ImportSource(line.word(0)).header().strings();
    console.out << "Kept in " << importer.rememberLayout(*name, heading).string() << ".\n";
  }
}

void importStatement(const CommandLine& line, const Console& console) {
  const bool hasFields = line.has("--fields");
  const auto requireNone = [&](const auto& options, const std::string& reason) {
    for (const char* option : options) {
      if (line.has(option)) {
        throw UsageError("“" + std::string(option) + "” " + reason);
      }
    }
  };
  if (!hasFields) {
    requireNone(forFields, "needs --fields.");
    importStatementByLayout(line, console);
    return;
  }
  requireNone(forLayouts, "excludes --fields.");
  WorkspaceFile workspace(line.required("--into"), console);
  workspace.requireSound();
  workspace.requireSureDates(DoubtfulDatesError::noImport);
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  // The settings of the desktop's last import are not used: a command means the same each time.
  const auto importer = PortfolioTransactionsImporter::make(portfolio, nullptr);
  const auto window = std::make_shared<ConsoleExchangeWindow>(answersIn(line, *importer), console);
  setUpReading(*importer, line, window);
  const auto controller = ImportController::make(importer);

  std::optional<bool> outcome;
  controller->beginImport(window, [&outcome](bool succeeded) { outcome = succeeded; });
  pumpUntil([&] { return outcome.has_value(); }, [&] { window->cancel(); });
  if (!*outcome) {
    if (terminal::wasInterrupted()) {
      console.warn("Cancelled. Nothing has been imported.");
      throw Failed(exitCode::interrupted);
    }
    if (!window->hasPresentedError()) {
      console.warn("“" + line.word(0) + "” is empty. Nothing has been imported.");
    }
    throw Failed(exitCode::failure);
  }
  if (!line.has("--dry-run")) {
    workspace.save();
    rememberLayout(line, *importer, console);
  }
  console.out << "Imported " << importer->transactionsToRecord().size() << " transactions.\n";
}

std::vector<Option> importOptions() {
  return joined(
      {{"--into", "WORKSPACE", "the workspace", true},
       {"--portfolio", "NAME", "the portfolio in it", true},
       {"--preview", "", "tells what would become of each line, and saves nothing"},
       {"--profile", "LAYOUT", "the layout of the file, where several fit; see statements"},
       {"--leave-out", "LINES", "lines that are not imported, with commas between"},
       {"--symbol", "TEXT=SYMBOL", "the symbol of what the file calls TEXT; may be repeated", false,
        true},
       {"--find-symbols", "", "searches the market for symbols that are missing, and tells them"},
       {"--kind", "WORD=KIND",
        "what a word of the file means, such as Uttag=withdrawal; may be "
        "repeated, and is kept in your layouts",
        false, true},
       {"--account", "NAME", "takes the rows of this account alone; may be repeated", false, true},
       {"--rates", "SOURCE",
        "takes missing exchange rates from the market's daily closes (market), "
        "or from a file with day, currency and rate",
        false, false, "market"},
       {"--twins", "record", "records rows that are perhaps there already", false, false, "record"},
       {"--days", "ORDER", "dmy, mdy or ymd: how days are written", false, false, "dmy mdy ymd"},
       {"--decimal", "MARK", "what stands before decimals, . or ,"},
       {"--currency", "CODE", "the currency of rows that name none"},
       {"--fields", "LIST", "places the columns by hand, see below"},
       {"--remember-layout", "NAME",
        "with --fields: keeps a layout of this name in your folder, by "
        "which such files are read without --fields"},
       {"--no-header", "", "with --fields: the first line is a transaction and no header"},
       {"--date-format", "FORMAT", "with --fields: how dates are written, such as dd.MM.yyyy"},
       {"--file-reading", "", "with --fields: takes each cell for what it means by itself"},
       {"--standard-reading", "", "with --fields: takes cells by the forgiving rules"},
       {"--dry-run", "", "imports without saving, to see whether the file is understood"}},
      priceSourceOptions(),
      std::vector<Option>{
          {"--csv", "", "with --preview: writes the lines as delimited text"},
          {"--json", "", "with --preview: writes the lines as an array of objects"}});
}

}  // namespace

Command importCommand() {
  return {
      .name = "import",
      .summary = "Reads a statement into a portfolio.",
      .words = {"FILE"},
      .options = importOptions(),
      .explanation =
          "FILE is a statement as a broker or bank writes it. The program knows the layouts that\n"
          "“corvane-cli statements” lists, and finds the one that fits. What the file leaves open\n"
          "is told with the option that answers it; --preview shows all lines. Rows that the\n"
          "ledger has already are not imported again.\n"
          "\n"
          "Other files are read by --fields. LIST names the field of each column from left to\n"
          "right, with commas between. Nothing between two commas ignores a column, as do columns\n"
          "behind the last name. The columns are separated by commas, semicolons or tabs:\n"
          "  --fields tradeDate,type,,symbol,numberOfShares,cashAmount\n"
          "\n"
          "  type              what happened: Buy, Sell, Deposit, Withdrawal, Transfer, Dividend,\n"
          "                    Distribution, Cap. Gains Dividend, Reinvested…, Return of Capital,\n"
          "                    Split…, Consolidation…, Journal…, Interest, Credit, Fees, Expense\n"
          "  tradeDate         the day of the trade; one of the two days is enough\n"
          "  settlementDate    the day on which it took effect\n"
          "  symbol            the symbol, a name behind it is ignored; a description for cash\n"
          "  numberOfShares    shares bought, sold, journaled, or before a split; for a dividend\n"
          "                    those on which it was paid\n"
          "  sharesNet         shares after a split; for a dividend as numberOfShares\n"
          "  cashAmount        cost, proceeds, or amount of cash, in the currency of the row\n"
          "  cashCurrency      the code of that currency\n"
          "  exchangeRate      what one unit of it is worth in the portfolio's currency\n"
          "  equivalentAmount  or the amount itself in the portfolio's currency\n"
          "  costBaseAdded     the cost base of journaled shares\n"
          "  note              your note\n"
          "\n"
          "Signs are made right for the kind of transaction, brackets count as a minus. Numbers\n"
          "are read as your locale writes them: LC_ALL=de_DE.UTF-8 for 1.234,56. Without a\n"
          "--date-format the order of day, month and year is worked out from the file.\n"
          "\n"
          "These rules forgive much. Where a cell by itself means something else than they would\n"
          "record, nothing is imported, and the first such cell is told. --standard-reading then\n"
          "imports by the rules, --file-reading what the cells mean; --days and --decimal say "
          "what\n"
          "the cells leave open.\n"
          "\n"
          "Either all rows are recorded or none. An error names the line of the file.\n",
      .listings = {{"with --preview", statementPreviewFields()}},
      .run = &importStatement};
}

}  // namespace corvane::cli
