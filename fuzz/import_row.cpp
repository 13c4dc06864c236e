// Any bytes as a small statement: importing it never crashes or hangs, throws only the program's
// own errors, and whatever is refused leaves the ledger empty. The first byte chooses the settings.

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>

#include "exchange/brokers/import_export_error.h"
#include "exchange/csv/csv.h"
#include "exchange/imports/portfolio_transactions_importer.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/async/dispatch_queue.h"

namespace {

using namespace corvane;

using Columns = ImportBroker::ColumnsByField;
using Values = ImportBroker::ValuesByField;

/// Imports the rows of `text` in the order of the schema, on the main queue.
void importRows(PortfolioTransactionsImporter& importer, std::string_view text) {
  const auto fields = importer.allFields();
  std::vector<Values> rows;
  Columns columns;
  parseRows(text, CSVDelimiter::comma(), 0, 1000, [&](const CSVRow& row) {
    Values values;
    for (std::size_t i = 0; i < row.size() && i < fields.size(); ++i) {
      values.emplace(fields[i], row[i]);
      columns[fields[i]].emplace_back(row[i]);
    }
    rows.push_back(std::move(values));
  });
  if (!importer.preflightFields().empty()) {
    importer.preflight(columns);
  }
  for (const Values& row : rows) {
    importer.importRow(row);
  }
  importer.finishImport(Progress());
}

void run(std::uint8_t settings, std::string_view text) {
  const auto manager = std::make_shared<PortfolioManager>(std::make_shared<QuoteProvider>());
  const auto portfolio = manager->createPortfolio(Currency::cad());
  portfolio->allowsNegativeBalances = (settings & 1) != 0;
  portfolio->usesCashAccounts = (settings & 2) == 0;
  const auto importer = PortfolioTransactionsImporter::make(portfolio, nullptr);
  importer->changeSettings([&](auto& configuration) {
    configuration.useDateFormatString = (settings & 4) != 0;
    if ((settings & 8) != 0) {
      configuration.defaultCurrencyCode.reset();
    }
  });
  MainLoop::drain();
  DispatchQueue::main()->async([&] {
    try {
      importRows(*importer, text);
    } catch (const Error& error) {
      if (!error.description() || !portfolio->transactions().empty()) {
        std::abort();
      }
      return;
    }
    (void)PortfolioManager::replay(portfolio->transactions(), {});
    if (portfolio->transactions().size() != importer->transactionsToRecord().size()) {
      std::abort();
    }
  });
  MainLoop::drain();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::cout.rdbuf(nullptr);
  if (size > 0) {
    run(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1});
  }
  return 0;
}
