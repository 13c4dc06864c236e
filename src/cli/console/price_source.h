// Where a command takes its prices from.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "cli/console/command_line.h"
#include "cli/console/console.h"
#include "core/market/quote_provider.h"
#include "samplemarket/sample_market.h"

namespace corvane::cli {

/// The options that choose a source: none for the market-data service and the cache, "--offline"
/// for the cache alone, "--sample-market" for the invented market.
[[nodiscard]] std::vector<Option> priceSourceOptions();

/// The provider chain of one run. Main thread only.
class PriceSource {
 public:
  /// What a command does with prices.
  enum class Need {
    prices,
    names,  ///< of equities alone, for which nobody is kept waiting: the cache has to do
  };

  /// Throws UsageError where both options are there, and SQLiteError or FileError for a cache that
  /// cannot be opened.
  explicit PriceSource(const CommandLine& line, Need need = Need::prices);
  PriceSource(const PriceSource&) = delete;
  PriceSource& operator=(const PriceSource&) = delete;
  ~PriceSource();

  [[nodiscard]] const std::shared_ptr<QuoteProvider>& provider() const { return provider_; }
  /// Whether nobody is asked for prices: by an option, or since the market cannot be reached.
  [[nodiscard]] bool isCacheOnly() const;

 private:
  std::unique_ptr<SampleMarket> market_;
  std::filesystem::path temporaryFolder_;
  std::shared_ptr<QuoteProvider> provider_;
};

/// Brings the recent prices and the other fields of `equities` up to date. What cannot be had is
/// told as a warning. Where the market cannot be reached, the cache has to do from here on. Whether
/// it has answered.
bool refreshEquities(QuoteProvider& provider, const std::vector<EquityPointer>& equities,
                     const Console& console);

/// Pumps the main queue until `isDone()`. Throws Failed where the user interrupts the program.
void waitFor(const std::function<bool()>& isDone);

}  // namespace corvane::cli
