#include "sample/sample_workspace.h"

#include <iostream>

#include "storage/workspace/workspace_document.h"

namespace corvane::sample {
namespace {

constexpr const char* investorTimeZone = "America/Toronto";

class NamedProvider final : public QuoteProvider {
 public:
  [[nodiscard]] std::string providerName() const override { return "YahooFinance"; }
};

}  // namespace

std::shared_ptr<QuoteProvider> sampleProvider() {
  return std::make_shared<NamedProvider>();
}

void writeWorkspace(const std::filesystem::path& package,
                    const std::shared_ptr<QuoteProvider>& provider,
                    const std::vector<SamplePortfolio>& portfolios,
                    const std::vector<std::string>& watchlist) {
  // Older than any program, so that none takes it for the work of a newer one.
  WorkspaceDocument document({.sharedQuoteProvider = [&] { return provider; },
                              .appBundleVersion = "0",
                              .appMarketingVersion = "0",
                              .presentTimeZone = [] { return TimeZone(); }});
  document.makeWindowControllers(nullptr);
  // The rows stand at noon in Greenwich, which is the next day in New Zealand. The investor is a
  // Canadian; his days are his wherever somebody looks at them.
  document.useDatesTimeZone(TimeZone::withIdentifier(investorTimeZone).value());
  const auto& manager = document.model()->portfolioManagers.front();
  for (const SamplePortfolio& sample : portfolios) {
    const auto portfolio = manager->createPortfolio(sample.primaryCurrency);
    portfolio->name = sample.name;
    portfolio->usesCashAccounts = sample.usesCashAccounts;
    manager->portfolioPropertiesDidChange(portfolio);
    manager->recordTransactions(sample.ledger, portfolio, nullptr);
  }
  for (const std::string& id : watchlist) {
    document.model()->watchlistEquities.push_back(provider->equityWithId(id));
  }
  std::filesystem::remove_all(package);
  document.save(package);
}

int runMaker(int count, char** arguments,
             const std::function<void(const std::filesystem::path&)>& write) {
  if (count != 2) {
    std::cerr << "usage: " << arguments[0] << " PACKAGE\n";
    return 2;
  }
  try {
    write(arguments[1]);
  } catch (const Error& error) {
    std::cerr << error << "\n";
    return 1;
  }
  return 0;
}

}  // namespace corvane::sample
