// One provider made of a source and a cache: it asks the source only for what the cache lacks.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "core/market/quote_provider.h"
#include "marketdata/chain/refresh_faults.h"

namespace corvane {

class CacheQuoteProvider;

/// Looks like its source, but answers from its cache what is there, converts what is there in
/// another price basis, fetches the rest, and writes what it fetched or converted back, so that the
/// same question is answered from the cache the next time.
///
/// A failure of any part fails the whole fetch, and nothing is written then. An event that is newer
/// than all that the cache knows puts the stored prices in doubt: they are given up, and the fetch
/// starts over.
///
/// Main queue only, like the cache. Fetches complete on a background queue, searches on the main
/// queue; a search ends without its completion where the provider has gone before the source
/// answers.
class SmartQuoteProvider : public QuoteProvider {
 public:
  /// From here on `source` and `cache` make their equities in this provider's table.
  SmartQuoteProvider(std::shared_ptr<QuoteProvider> source,
                     std::shared_ptr<CacheQuoteProvider> cache);
  ~SmartQuoteProvider() override;

  const std::shared_ptr<QuoteProvider> sourceProvider;
  const std::shared_ptr<CacheQuoteProvider> cacheProvider;

  [[nodiscard]] std::string providerName() const override;

  /// What the source finds, kept in the cache. Fails with the first error of source or cache.
  void searchEquities(std::string text, EquitiesCompletion completion) override;

  /// As the source knows it, else as the cache has kept it.
  [[nodiscard]] EquityPointer equityWithId(std::string_view id) override;
  [[nodiscard]] EquityPointer exchangeRateEquity(const Currency& from, const Currency& to) override;

  /// Refreshes at the source and keeps the equities and their recent prices in the cache. A trading
  /// period that ended before the latest price is dropped, and the price is then not kept. An
  /// equity that spoils the answer for the others is found and left out; see refreshAroundFaults().
  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override;

  /// The durable range of the answer spans from the first to the last final point of its pieces,
  /// holes between them included.
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override;

  [[nodiscard]] std::vector<QuoteQuery> sourceQueries(const QuoteQuery& query) const override;

  /// What the cache or the source can give.
  [[nodiscard]] std::set<QuoteInterval> availableIntervals(const EquityPointer& equity,
                                                           const DateRange& range) const override;
  [[nodiscard]] std::optional<Date> nextRequestDate() const override;

  /// How often the stored prices of the equity have been given up. What was read or converted at
  /// another count must not be written.
  [[nodiscard]] std::uint64_t timesCleared(const EquityPointer& equity) const;

  /// Gives up the stored prices of `equity`. Throws what the cache throws.
  void clearCachedData(const EquityPointer& equity);

 private:
  std::shared_ptr<SmartQuoteProvider> shared();

  /// What the cache fails with, or null.
  ErrorPointer storeAll(const std::vector<EquityPointer>& equities);

  std::unordered_map<std::string, std::uint64_t> timesCleared_;
  const std::shared_ptr<RefreshFaults> refreshFaults_ = std::make_shared<RefreshFaults>();
};

}  // namespace corvane
