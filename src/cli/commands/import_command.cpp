#include <optional>

#include "cli/commands/commands.h"
#include "cli/console/console_exchange_window.h"
#include "cli/console/field_names.h"
#include "cli/console/workspace_file.h"
#include "exchange/imports/import_controller.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "platform/system/terminal.h"

namespace corvane::cli {
namespace {

ExchangeAnswers answersIn(const CommandLine& line, const ImportBroker& broker) {
  ExchangeAnswers answers = {.file = line.word(0),
                             .fields = std::nullopt,
                             .includesHeaderRow = !line.has("--no-header"),
                             .dateFormat = line.value("--date-format"),
                             .currencyCode = line.value("--currency")};
  if (answers.currencyCode && !Currency::byCode().contains(*answers.currencyCode)) {
    throw UsageError("“" + *answers.currencyCode +
                     "” is not the code of a currency, such as CAD or EUR.");
  }
  if (const auto list = line.value("--fields")) {
    answers.fields = fieldNames(*list, broker.allFields());
  }
  return answers;
}

void importStatement(const CommandLine& line, const Console& console) {
  WorkspaceFile workspace(line.required("--into"), console);
  workspace.requireSound();
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  // The settings of the desktop's last import are not used: a command means the same each time.
  const auto importer = PortfolioTransactionsImporter::make(portfolio, nullptr);
  const auto window = std::make_shared<ConsoleExchangeWindow>(answersIn(line, *importer), console);
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
  }
  console.out << "Imported " << importer->transactionsToRecord().size() << " transactions.\n";
}

}  // namespace

Command importCommand() {
  return {
      .name = "import",
      .summary = "Reads a statement into a portfolio.",
      .words = {"FILE"},
      .options = {{"--into", "WORKSPACE", "the workspace", true},
                  {"--portfolio", "NAME", "the portfolio in it", true},
                  {"--fields", "LIST", "what stands in which column, see below"},
                  {"--no-header", "", "the first line is a transaction and no header"},
                  {"--date-format", "FORMAT", "how dates are written, such as dd.MM.yyyy"},
                  {"--currency", "CODE",
                   "the currency of rows that name none; else the portfolio's"},
                  {"--dry-run", "",
                   "imports without saving, to see whether the file is understood"}},
      .explanation =
          "FILE is text in UTF-8 whose columns are separated by commas, semicolons or tabs.\n"
          "\n"
          "LIST names the field of each column from left to right, with commas between. Nothing\n"
          "between two commas ignores a column, as do columns behind the last name:\n"
          "  --fields tradeDate,type,,symbol,numberOfShares,cashAmount\n"
          "Without --fields the columns are taken in the order of this table.\n"
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
          "Either all rows are recorded or none. An error names the line of the file.\n",
      .run = &importStatement};
}

}  // namespace corvane::cli
