// The workspaces that come with the program, put together when the program is built.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/market/quote_provider.h"
#include "ledger/transaction/basic_transaction.h"

namespace corvane::sample {

struct SamplePortfolio {
  std::string name;
  Currency primaryCurrency;
  bool usesCashAccounts = true;
  std::vector<BasicTransaction> ledger = {};  ///< by settlement date
};

/// The provider under whose name the program keeps equities.
[[nodiscard]] std::shared_ptr<QuoteProvider> sampleProvider();

/// Writes a workspace with `portfolios` and the equities of the ids `watchlist` to `package`, in
/// place of what is there. Its days are those of Toronto wherever it is opened. Throws what
/// recording and saving throw.
void writeWorkspace(const std::filesystem::path& package,
                    const std::shared_ptr<QuoteProvider>& provider,
                    const std::vector<SamplePortfolio>& portfolios,
                    const std::vector<std::string>& watchlist);

/// Runs `write` with the one argument of a program, the package, and reports what it throws.
int runMaker(int count, char** arguments,
             const std::function<void(const std::filesystem::path&)>& write);

}  // namespace corvane::sample
