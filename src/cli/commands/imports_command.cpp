#include "cli/commands/commands.h"
#include "cli/console/listing.h"
#include "cli/console/option_values.h"
#include "cli/console/workspace_file.h"
#include "exchange/statements/ledger_matching.h"
#include "exchange/statements/statement_memory.h"

namespace corvane::cli {
namespace {

std::string countedTransactions(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " transaction" : " transactions");
}

/// The import that the list shows with the number that `text` is.
const RecordedImport& importNumbered(const std::string& text,
                                     const std::vector<RecordedImport>& imports) {
  const std::size_t number = wholeNumber(text).value_or(0);
  if (number < 1) {
    throw UsageError("“" + text + "” is not the number of an import.");
  }
  if (number > imports.size()) {
    throw WorkspaceFileError("There is no import " + text + ".",
                             imports.empty()
                                 ? "No statement was imported into this portfolio."
                                 : "The last one is " + std::to_string(imports.size()) + ".");
  }
  return imports[number - 1];
}

void takeBackImport(const std::string& number, WorkspaceFile& workspace,
                    const PortfolioPointer& portfolio, const StatementMemory& memory,
                    const Console& console) {
  const RecordedImport& import = importNumbered(number, memory.imports());
  const auto left = rowsLeftOf(import, *portfolio, workspace.manager()->calendar);
  if (left.empty()) {
    console.warn("Nothing of “" + import.file + "” is in the ledger any more.");
    throw Failed(exitCode::failure);
  }
  workspace.manager()->deleteTransactions(left, portfolio, nullptr);
  workspace.save();
  console.out << "Took back " << countedTransactions(left.size()) << " of “" << import.file
              << "”.\n";
  if (const std::size_t gone = import.transactionCount() - left.size(); gone > 0) {
    console.out << countedTransactions(gone)
                << (gone == 1 ? " that was changed or deleted since then is left alone.\n"
                              : " that were changed or deleted since then are left alone.\n");
  }
}

std::vector<Listing::Field> importFields() {
  using enum Listing::Kind;
  return {{"number", "No", number},
          {"day", "Imported"},
          {"file", "File"},
          {"layout", "Layout"},
          {"recorded", "Transactions", number},
          {"left", "In the Ledger", number}};
}

void listImports(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
  const auto takenBack = line.value("--take-back");
  if (takenBack && format != ListingFormat::table) {
    throw UsageError("--csv and --json go with the list.");
  }
  WorkspaceFile workspace(line.word(0), console);
  if (takenBack) {
    workspace.requireSound();
    workspace.requireSureDates(DoubtfulDatesError::noTakingBack);
  }
  const PortfolioPointer portfolio = workspace.portfolio(line.required("--portfolio"));
  const StatementMemory memory(workspace.document()->workingDirectoryURL(), *portfolio);
  if (memory.wasDamaged()) {
    console.warn("What was remembered of earlier statements cannot be read any more.");
  }
  if (takenBack) {
    takeBackImport(*takenBack, workspace, portfolio, memory, console);
    return;
  }
  Listing list(importFields());
  std::size_t place = 0;
  for (const RecordedImport& import : memory.imports()) {
    ++place;
    list.add(
        {std::to_string(place), import.day, import.file, import.profile,
         std::to_string(import.transactionCount()),
         std::to_string(rowsLeftOf(import, *portfolio, workspace.manager()->calendar).size())});
  }
  list.write(format, console.out);
}

}  // namespace

Command importsCommand() {
  return {.name = "imports",
          .summary = "Lists what was imported from statements, and takes it back.",
          .words = {"WORKSPACE"},
          .options = joined(
              {{"--portfolio", "NAME", "into which portfolio", true},
               {"--take-back", "N", "deletes what the import with this number has recorded"}},
              listingOptions()),
          .explanation =
              "The oldest import has the number 1. Taking one back deletes its transactions as far "
              "as\nthey are still in the ledger unchanged; what was changed since then stays. "
              "Transactions\nthat others rely on cannot go: then nothing is deleted, and the first "
              "that is in the way\nis told.\n",
          .listings = {{"", importFields()}},
          .run = &listImports};
}

}  // namespace corvane::cli
