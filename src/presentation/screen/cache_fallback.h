// Prices for a screen that the cache has to fill while the market cannot be reached.
#pragma once

#include <memory>

#include "core/market/quote_provider.h"
#include "marketdata/chain/switchable_quote_provider.h"

namespace corvane {

/// Asks a chain, and for want of a network once more what its cache alone has: a question that the
/// chain fails as a whole may be answered in all but its newest days. It remembers which answers
/// are such. Where the user has chosen one source alone that choice stands.
///
/// For the questions of one fetch: made for it and dropped with it. Main queue only but for
/// endsOfStoredPrices().
class CacheFallback : public QuoteProvider {
 public:
  explicit CacheFallback(std::shared_ptr<SwitchableQuoteProvider> chain);

  [[nodiscard]] std::string providerName() const override { return chain_->providerName(); }
  [[nodiscard]] EquityPointer equityWithId(std::string_view id) override;
  [[nodiscard]] EquityPointer exchangeRateEquity(const Currency& from, const Currency& to) override;
  /// A question that the cache has nothing for fails as it failed at the chain. Conversions take
  /// their events from the chain, whatever `adjuster` is for.
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override;

  /// What was answered by the cache alone, and when the last of its bars ends. Any thread.
  [[nodiscard]] EquityMap<Date> endsOfStoredPrices() const;

 private:
  struct Record;

  const std::shared_ptr<SwitchableQuoteProvider> chain_;
  const std::shared_ptr<Record> record_;
};

}  // namespace corvane
