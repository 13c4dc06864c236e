#include "marketdata/chain/smart_quote_provider.h"

#include <algorithm>
#include <utility>

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/smart_fetch.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace {

/// Keeps `equity` and, where it belongs to a session, its recent price.
void storeRefreshed(CacheQuoteProvider& cache, const EquityPointer& equity) {
  if (equity->recentDate) {
    const bool periodIsOver =
        equity->recentTradingPeriod && equity->recentTradingPeriod->upper() < *equity->recentDate;
    if (periodIsOver) {
      equity->recentTradingPeriod.reset();
    } else if (equity->recentPrice) {
      cache.storeSnapshotQuote(equity);
    }
  }
  cache.storeEquity(equity);
}

/// Runs `store` for each of `equities` until it throws; what it threw, or null.
template <typename Store>
ErrorPointer forEach(const std::vector<EquityPointer>& equities, Store store) {
  try {
    for (const EquityPointer& equity : equities) {
      store(equity);
    }
  } catch (const Error& error) {
    return error.copy();
  }
  return nullptr;
}

}  // namespace

SmartQuoteProvider::SmartQuoteProvider(std::shared_ptr<QuoteProvider> source,
                                       std::shared_ptr<CacheQuoteProvider> cache)
    : sourceProvider(std::move(source)), cacheProvider(std::move(cache)) {
  sourceProvider->setEquitiesById(equitiesById());
  cacheProvider->setEquitiesById(equitiesById());
}

SmartQuoteProvider::~SmartQuoteProvider() = default;

std::shared_ptr<SmartQuoteProvider> SmartQuoteProvider::shared() {
  return std::static_pointer_cast<SmartQuoteProvider>(shared_from_this());
}

std::string SmartQuoteProvider::providerName() const {
  return sourceProvider->providerName();
}

void SmartQuoteProvider::searchEquities(std::string text, EquitiesCompletion completion) {
  sourceProvider->searchEquities(
      std::move(text), [weakSelf = weak_from_this(), completion = std::move(completion)](
                           Result<std::vector<EquityPointer>> found) mutable {
        // The source answers where it likes, and the cache is to be touched on the main queue only.
        DispatchQueue::main()->async(
            [weakSelf, completion = std::move(completion), found = std::move(found)]() mutable {
              const auto self = std::static_pointer_cast<SmartQuoteProvider>(weakSelf.lock());
              if (self == nullptr) {
                return;
              }
              if (found) {
                ErrorPointer error = forEach(*found, [&](const EquityPointer& equity) {
                  self->cacheProvider->storeEquity(equity);
                  equity->quoteProvider = self;
                });
                if (error != nullptr) {
                  found = std::unexpected(std::move(error));
                }
              }
              completion(std::move(found));
            });
      });
}

EquityPointer SmartQuoteProvider::equityWithId(std::string_view id) {
  EquityPointer equity = sourceProvider->equityWithId(id);
  if (!equity->isAuthoritative) {
    equity = cacheProvider->equityWithId(id);
  }
  equity->quoteProvider = weak_from_this();
  return equity;
}

EquityPointer SmartQuoteProvider::exchangeRateEquity(const Currency& from, const Currency& to) {
  EquityPointer equity = sourceProvider->exchangeRateEquity(from, to);
  if (!equity->isAuthoritative) {
    equity = cacheProvider->equityWithId(equity->id());
    equity->currency = to;
  }
  equity->quoteProvider = weak_from_this();
  return equity;
}

void SmartQuoteProvider::refreshEquities(std::vector<EquityPointer> equities,
                                         RefreshCompletion completion) {
  refreshAroundFaults(sourceProvider, equities, refreshFaults_,
                      [weakSelf = weak_from_this(), completion = std::move(completion)](
                          ErrorPointer error, const std::vector<EquityPointer>& refreshed) mutable {
                        const auto self =
                            std::static_pointer_cast<SmartQuoteProvider>(weakSelf.lock());
                        if (self != nullptr && !refreshed.empty()) {
                          if (ErrorPointer failure = self->storeAll(refreshed)) {
                            error = std::move(failure);
                          }
                        }
                        completion(std::move(error));
                      });
}

/// Commits once for all, and where one cannot be kept, once for each up to that one.
ErrorPointer SmartQuoteProvider::storeAll(const std::vector<EquityPointer>& equities) {
  const auto store = [&](const EquityPointer& equity) { storeRefreshed(*cacheProvider, equity); };
  try {
    cacheProvider->atOnce([&] { std::ranges::for_each(equities, store); });
    return nullptr;
  } catch (const Error&) {
    return forEach(equities, store);
  }
}

void SmartQuoteProvider::fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                                     QuoteCompletion completion) {
  std::make_shared<SmartFetch>(shared(), std::move(query), std::move(completion))->start(adjuster);
}

std::vector<QuoteQuery> SmartQuoteProvider::sourceQueries(const QuoteQuery& query) const {
  return sourceProvider->sourceQueries(query);
}

std::set<QuoteInterval> SmartQuoteProvider::availableIntervals(const EquityPointer& equity,
                                                               const DateRange& range) const {
  auto intervals = cacheProvider->availableIntervals(equity, range);
  intervals.merge(sourceProvider->availableIntervals(equity, range));
  return intervals;
}

std::uint64_t SmartQuoteProvider::timesCleared(const EquityPointer& equity) const {
  const auto found = timesCleared_.find(equity->id());
  return found == timesCleared_.end() ? 0 : found->second;
}

void SmartQuoteProvider::clearCachedData(const EquityPointer& equity) {
  cacheProvider->clearCachedData(equity);
  ++timesCleared_[equity->id()];
}

std::optional<Date> SmartQuoteProvider::nextRequestDate() const {
  return sourceProvider->nextRequestDate();
}

}  // namespace corvane
