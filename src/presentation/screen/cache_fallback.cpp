#include "presentation/screen/cache_fallback.h"

#include <mutex>
#include <utility>

#include "core/market/price_adjuster.h"
#include "marketdata/chain/stored_prices.h"
#include "platform/async/dispatch_queue.h"
#include "presentation/screen/market_inquiry.h"

namespace corvane {

struct CacheFallback::Record {
  std::mutex mutex;
  EquityMap<Date> ends;
};

CacheFallback::CacheFallback(std::shared_ptr<SwitchableQuoteProvider> chain)
    : chain_(std::move(chain)), record_(std::make_shared<Record>()) {}

EquityPointer CacheFallback::equityWithId(std::string_view id) {
  return chain_->equityWithId(id);
}

EquityPointer CacheFallback::exchangeRateEquity(const Currency& from, const Currency& to) {
  return chain_->exchangeRateEquity(from, to);
}

void CacheFallback::fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                                QuoteCompletion completion) {
  // An answer must not keep the chain: its cache may only be closed on the main queue.
  auto answered = [record = record_, weakChain = std::weak_ptr(chain_), query,
                   completion = std::move(completion)](Result<QuoteFetchResult> answer) mutable {
    if (answer || !MarketInquiry::isForWantOfNetwork(*answer.error())) {
      completion(std::move(answer));
      return;
    }
    DispatchQueue::main()->async([record, weakChain, query = std::move(query),
                                  completion = std::move(completion),
                                  error = answer.error()]() mutable {
      const auto chain = weakChain.lock();
      if (chain == nullptr ||
          chain->dataSource != SwitchableQuoteProvider::DataSource::sourceAndCache) {
        completion(std::unexpected(error));
        return;
      }
      fetchStoredPrices(chain->smartQuoteProvider->cacheProvider, query,
                        [record, equity = query.equity, completion = std::move(completion),
                         error](Result<QuoteFetchResult> stored) mutable {
                          if (!stored || !stored->quotes || stored->quotes->empty()) {
                            completion(std::unexpected(error));
                            return;
                          }
                          {
                            const std::scoped_lock lock(record->mutex);
                            record->ends.insert_or_assign(equity, stored->quotes->back().toDate);
                          }
                          completion(std::move(stored));
                        });
    });
  };
  chain_->fetchQuotes(std::move(query), std::make_shared<PriceAdjuster>(chain_),
                      std::move(answered));
}

EquityMap<Date> CacheFallback::endsOfStoredPrices() const {
  const std::scoped_lock lock(record_->mutex);
  return record_->ends;
}

}  // namespace corvane
