#include "marketdata/chain/switchable_quote_provider.h"

#include <utility>

#include "marketdata/cache/cache_quote_provider.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {
namespace {

std::shared_ptr<SmartQuoteProvider> joined(const std::shared_ptr<QuoteProvider>& source,
                                           std::optional<std::filesystem::path> cacheLocation) {
  const auto location =
      cacheLocation ? *std::move(cacheLocation) : CacheQuoteProvider::defaultLocation(*source);
  return std::make_shared<SmartQuoteProvider>(source,
                                              std::make_shared<CacheQuoteProvider>(location));
}

/// Runs `work` on the main queue: at once where that is where the caller is.
template <typename Work>
void onMainQueue(Work work) {
  if (DispatchQueue::main()->isCurrent()) {
    work();
  } else {
    DispatchQueue::main()->async(std::move(work));
  }
}

}  // namespace

std::optional<SwitchableQuoteProvider::DataSource> SwitchableQuoteProvider::dataSourceWithRawValue(
    int rawValue) {
  if (rawValue < static_cast<int>(DataSource::sourceAndCache) ||
      rawValue > static_cast<int>(DataSource::cacheOnly)) {
    return std::nullopt;
  }
  return static_cast<DataSource>(rawValue);
}

SwitchableQuoteProvider::SwitchableQuoteProvider(const std::shared_ptr<QuoteProvider>& source,
                                                 std::optional<std::filesystem::path> cacheLocation)
    : smartQuoteProvider(joined(source, std::move(cacheLocation))) {}

QuoteProvider& SwitchableQuoteProvider::activeProvider() const {
  switch (dataSource) {
    case DataSource::sourceOnly:
      return *smartQuoteProvider->sourceProvider;
    case DataSource::cacheOnly:
      return *smartQuoteProvider->cacheProvider;
    case DataSource::sourceAndCache:
      break;
  }
  return *smartQuoteProvider;
}

EquityPointer SwitchableQuoteProvider::adopted(EquityPointer equity) {
  equity->quoteProvider = weak_from_this();
  return equity;
}

std::string SwitchableQuoteProvider::providerName() const {
  return activeProvider().providerName();
}

void SwitchableQuoteProvider::searchEquities(std::string text, EquitiesCompletion completion) {
  activeProvider().searchEquities(
      std::move(text), [self = weak_from_this(), completion = std::move(completion)](
                           Result<std::vector<EquityPointer>> found) mutable {
        if (!found) {
          completion(std::move(found));
          return;
        }
        onMainQueue([self, completion = std::move(completion), found = std::move(found)]() mutable {
          for (const EquityPointer& equity : *found) {
            equity->quoteProvider = self;
          }
          completion(std::move(found));
        });
      });
}

EquityPointer SwitchableQuoteProvider::equityWithId(std::string_view id) {
  return adopted(activeProvider().equityWithId(id));
}

EquityPointer SwitchableQuoteProvider::exchangeRateEquity(const Currency& from,
                                                          const Currency& to) {
  // Only a source knows what its pairs are called, also in the cache. It does not ask the network.
  QuoteProvider& namer =
      dataSource == DataSource::cacheOnly ? *smartQuoteProvider : activeProvider();
  return adopted(namer.exchangeRateEquity(from, to));
}

void SwitchableQuoteProvider::refreshEquities(std::vector<EquityPointer> equities,
                                              RefreshCompletion completion) {
  activeProvider().refreshEquities(
      equities, [self = weak_from_this(), equities,
                 completion = std::move(completion)](ErrorPointer error) mutable {
        if (error != nullptr) {
          completion(std::move(error));
          return;
        }
        onMainQueue(
            [self, equities = std::move(equities), completion = std::move(completion)]() mutable {
              for (const EquityPointer& equity : equities) {
                equity->quoteProvider = self;
              }
              completion(nullptr);
            });
      });
}

void SwitchableQuoteProvider::fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                                          QuoteCompletion completion) {
  activeProvider().fetchQuotes(std::move(query), std::move(adjuster), std::move(completion));
}

std::vector<QuoteQuery> SwitchableQuoteProvider::sourceQueries(const QuoteQuery& query) const {
  return activeProvider().sourceQueries(query);
}

std::set<QuoteInterval> SwitchableQuoteProvider::availableIntervals(const EquityPointer& equity,
                                                                    const DateRange& range) const {
  return activeProvider().availableIntervals(equity, range);
}

std::optional<Date> SwitchableQuoteProvider::nextRequestDate() const {
  return activeProvider().nextRequestDate();
}

}  // namespace corvane
