// Workspaces and prices, as the commands use them.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/command.h"
#include "marketdata/switchable_quote_provider.h"
#include "samplemarket/sample_market.h"
#include "storage/workspace_document.h"

namespace corvane::cli {

/// Where a command takes its prices from.
enum class PriceSource {
  none,          ///< nothing is asked for; equities are known as the cache has them
  network,       ///< the market-data service, with the cache
  cache,         ///< what has been fetched before
  sampleMarket,  ///< the invented market
};

/// The options that choose between them, and what they choose.
[[nodiscard]] std::vector<Signature::Option> priceSourceOptions();
/// Throws UsageError where both are there.
[[nodiscard]] PriceSource priceSource(const Arguments& arguments);

/// The provider chain of one run of the program. Main thread only.
class ConsolePrices {
 public:
  /// Throws SQLiteError and FileError for a cache that cannot be opened.
  explicit ConsolePrices(PriceSource source);
  ConsolePrices(const ConsolePrices&) = delete;
  ConsolePrices& operator=(const ConsolePrices&) = delete;
  ~ConsolePrices();

  [[nodiscard]] const std::shared_ptr<QuoteProvider>& provider() const { return provider_; }

 private:
  std::unique_ptr<SampleMarket> market_;
  std::filesystem::path temporaryFolder_;
  std::shared_ptr<QuoteProvider> provider_;
};

/// A workspace that a command works on.
class ConsoleWorkspace {
 public:
  /// A new one, not saved yet.
  ConsoleWorkspace(Console& console, std::shared_ptr<QuoteProvider> provider);
  /// The one at `path`. Throws what opening it throws.
  ConsoleWorkspace(Console& console, std::shared_ptr<QuoteProvider> provider,
                   const std::filesystem::path& path);

  [[nodiscard]] WorkspaceDocument& document() { return *document_; }
  [[nodiscard]] WorkspaceModel& model() { return *document_->model(); }
  [[nodiscard]] PortfolioManager& manager() { return *model().portfolioManagers.front(); }

  /// The portfolio that goes by `name`. Throws ConsoleError where there is none or more than one.
  [[nodiscard]] PortfolioPointer portfolioNamed(const std::string& name);

  /// Writes the workspace back to where it came from.
  void save();

 private:
  std::shared_ptr<WorkspaceDocument> document_;
};

/// What a command cannot do, said to the user.
class ConsoleError : public ErrorValue<ConsoleError> {
 public:
  explicit ConsoleError(std::string what) : text(std::move(what)) {}
  std::string text;
  [[nodiscard]] std::optional<std::string> description() const override { return text; }
  [[nodiscard]] bool hasSameValues(const ConsoleError& other) const { return text == other.text; }
};

/// Brings the recent prices and the other fields of `equities` up to date. What cannot be had is
/// told as a warning.
void refreshEquities(QuoteProvider& provider, std::vector<EquityPointer> equities,
                     Console& console);

/// Pumps the main queue until `isDone` holds.
void waitUntil(const std::function<bool()>& isDone);

}  // namespace corvane::cli
