#include "marketdata/chain/stored_prices.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "core/market/price_adjuster.h"
#include "marketdata/cache/recent_price_bar.h"
#include "platform/async/dispatch_group.h"

namespace corvane {
namespace {

template <typename Element>
void appendAll(std::optional<std::vector<Element>>& list,
               std::optional<std::vector<Element>>&& more) {
  if (list && list->empty() && more) {
    list = std::move(more);
  } else if (list && more) {
    std::ranges::move(*more, std::back_inserter(*list));
  }
}

/// A history of events that is there already, for an adjuster.
class KeptEvents : public QuoteProvider {
 public:
  explicit KeptEvents(QuoteFetchResult events) : events_(std::move(events)) {}

  void fetchQuotes(QuoteQuery /*query*/, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                   QuoteCompletion completion) override {
    DispatchQueue::global()->async(
        [events = events_, completion = std::move(completion)]() mutable {
          completion(std::move(events));
        });
  }

 private:
  const QuoteFetchResult events_;
};

/// All events that the cache has of `equity`; null where some in `range` may be missing. Prices are
/// restated by the events after them only.
std::shared_ptr<KeptEvents> keptEvents(const CacheQuoteProvider& cache, const EquityPointer& equity,
                                       const DateRange& range) {
  const auto planFor = [&](const DateRange& dates) {
    return cache.coveragePlan({equity, dates, QuoteQuery::EventsWithoutAdjustment{}});
  };
  if (!planFor(range).missingQueries.empty()) {
    return nullptr;
  }
  QuoteFetchResult events{.quotes = std::nullopt,
                          .prices = std::nullopt,
                          .events = std::vector<EquityEvent>(),
                          .durableDateRange = range};
  for (const QuoteQuery& covered :
       planFor({Date::distantPast(), Date::distantFuture()}).exactQueries) {
    appendAll(events.events, cache.readQuery(covered).events);
  }
  return std::make_shared<KeptEvents>(std::move(events));
}

/// An answer that is put together of what the cache has. Changes on the main queue only.
struct StoredAnswer {
  QuoteQuery query;
  QuoteFetchResult result;
  QuoteProvider::QuoteCompletion completion;

  void take(QuoteFetchResult piece) {
    appendAll(result.quotes, std::move(piece.quotes));
    appendAll(result.events, std::move(piece.events));
  }

  void finish() {
    if (result.quotes && !std::ranges::is_sorted(*result.quotes, {}, &Quote::fromDate)) {
      std::ranges::sort(*result.quotes, {}, &Quote::fromDate);
    }
    if (result.events) {
      std::ranges::sort(*result.events, {}, &EquityEvent::date);
    }
    result = withRecentPrice(std::move(result), query);
    DispatchQueue::global()->async(
        [result = std::move(result), completion = std::move(completion)]() mutable {
          completion(std::move(result));
        });
  }
};

void convertStored(const CacheQuoteProvider& cache, const std::vector<QuoteQuery>& convertible,
                   const std::shared_ptr<StoredAnswer>& answer, const DispatchGroup& group) {
  const EquityPointer& equity = answer->query.equity;
  const auto events = keptEvents(
      cache, equity, {convertible.front().dateRange.lower(), convertible.back().dateRange.upper()});
  if (events == nullptr) {
    return;
  }
  const auto adjuster = std::make_shared<PriceAdjuster>(events);
  for (const QuoteQuery& kept : convertible) {
    group.enter();
    adjuster->adjust(
        cache.readQuery(kept), {equity, kept.dateRange, answer->query.seeking},
        [answer, group, adjuster](Result<QuoteFetchResult> converted) {
          DispatchQueue::main()->async([answer, group, converted = std::move(converted)]() mutable {
            if (converted) {
              answer->take(*std::move(converted));
            }
            group.leave();
          });
        });
  }
}

}  // namespace

void fetchStoredPrices(const std::shared_ptr<CacheQuoteProvider>& cache, const QuoteQuery& query,
                       QuoteProvider::QuoteCompletion completion) {
  const auto* quotes = std::get_if<QuoteQuery::Quotes>(&query.seeking);
  const auto* events = std::get_if<QuoteQuery::EventsOnly>(&query.seeking);
  if ((quotes == nullptr && events == nullptr) || query.dateRange.isEmpty()) {
    cache->fetchQuotes(query, nullptr, std::move(completion));
    return;
  }
  const auto answer = std::make_shared<StoredAnswer>(StoredAnswer{
      query,
      {.quotes = quotes == nullptr ? std::nullopt : std::optional(std::vector<Quote>()),
       .prices = quotes == nullptr ? events->prices : quotes->prices,
       .events = quotes == nullptr ? std::optional(std::vector<EquityEvent>()) : std::nullopt,
       .durableDateRange = query.dateRange},
      nullptr});
  const DispatchGroup group;
  try {
    const CoveragePlan plan = cache->coveragePlan(query);
    for (const QuoteQuery& exact : plan.exactQueries) {
      answer->take(cache->readQuery(exact));
    }
    if (!plan.convertibleQueries.empty()) {
      convertStored(*cache, plan.convertibleQueries, answer, group);
    }
  } catch (const Error& error) {
    DispatchQueue::global()->async(
        [error = error.copy(), completion = std::move(completion)]() mutable {
          completion(std::unexpected(std::move(error)));
        });
    return;
  }
  answer->completion = std::move(completion);
  group.notify(DispatchQueue::main(), [answer] { answer->finish(); });
}

}  // namespace corvane
