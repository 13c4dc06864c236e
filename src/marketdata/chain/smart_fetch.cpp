#include "marketdata/chain/smart_fetch.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/market/price_adjuster.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/smart_quote_provider.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

/// A fetch that others keep overtaking ends at some time: it then answers with what it has and
/// writes nothing.
constexpr int mostRestarts = 3;

std::optional<PriceAdjustment> targetPrices(const QuoteQuery::Subject& subject) {
  using Prices = std::optional<PriceAdjustment>;
  return std::visit(
      Overloaded{[](const QuoteQuery::Quotes& quotes) { return Prices(quotes.prices); },
                 [](const QuoteQuery::CurrentPeriodQuotes& quotes) {
                   return Prices(quotes.usingSnapshots ? PriceAdjustment::marketNominalSnapshot
                                                       : PriceAdjustment::marketNominal);
                 },
                 [](const QuoteQuery::EventsOnly&) { return Prices(); },
                 [](QuoteQuery::EventsWithoutAdjustment) { return Prices(); }},
      subject);
}

/// The largest part of `range` between whole seconds, which is all that the cache takes; a query's
/// own bounds may lie anywhere.
DateRange wholeSeconds(const DateRange& range) {
  const double lower = std::ceil(range.lower().timeIntervalSince1970());
  const double upper = std::floor(range.upper().timeIntervalSince1970());
  return {Date::since1970(lower), Date::since1970(std::max(lower, upper))};
}

template <typename Element, typename Dates>
void sortByDate(std::vector<Element>& list, Dates date) {
  if (!std::ranges::is_sorted(list, std::less<>(), date)) {
    std::ranges::stable_sort(list, std::less<>(), date);
  }
}

template <typename Element>
void append(std::vector<Element>& list, std::vector<Element>&& more) {
  if (list.empty()) {
    list = std::move(more);
  } else {
    std::ranges::move(more, std::back_inserter(list));
  }
}

}  // namespace

SmartFetch::SmartFetch(std::shared_ptr<SmartQuoteProvider> provider, QuoteQuery query,
                       QuoteProvider::QuoteCompletion completion)
    : provider_(std::move(provider)),
      query_(std::move(query)),
      targetPrices_(targetPrices(query_.seeking)),
      completion_(std::move(completion)),
      queue_(DispatchQueue::serial("ca.orlend.corvane.SmartQuoteProvider.fetchQuotes-coalescing")) {
}

void SmartFetch::start(const std::shared_ptr<PriceAdjuster>& adjuster) {
  const auto global = DispatchQueue::global();
  try {
    CacheQuoteProvider& cache = *provider_->cacheProvider;
    latestEventDate_ = cache.latestEventDate(query_.equity);
    const auto plan = cache.coveragePlan(withAllKnownEvents(query_));
    timesCleared_ = provider_->timesCleared(query_.equity);
    for (const QuoteQuery& exact : plan.exactQueries) {
      readExact(exact);
    }
    for (const QuoteQuery& cached : plan.convertibleQueries) {
      convert(cached, *adjuster);
    }
    for (const QuoteQuery& missing : plan.missingQueries) {
      for (QuoteQuery& chunk : provider_->sourceProvider->sourceQueries(missing)) {
        request(std::move(chunk), adjuster);
      }
    }
  } catch (const Error& error) {
    // What is under way already ends in lists that nobody looks at any more.
    global->async([completion = std::move(completion_), error = error.copy()]() mutable {
      completion(std::unexpected(std::move(error)));
    });
    return;
  }
  group_.notify(global, [self = shared_from_this()] { self->finish(); });
}

/// `query`, up to the last event that is known where it asks for the whole history. An equity that
/// has not been refreshed yet ends it sooner, but prices of later days may be there already, and
/// converting them takes the events of those days.
QuoteQuery SmartFetch::withAllKnownEvents(QuoteQuery query) const {
  if (std::holds_alternative<QuoteQuery::EventsWithoutAdjustment>(query.seeking) &&
      query.seeksWholeEventHistory() && latestEventDate_ &&
      query.dateRange.upper() < *latestEventDate_) {
    query.dateRange = DateRange(query.dateRange.lower(), *latestEventDate_);
  }
  return query;
}

void SmartFetch::readExact(const QuoteQuery& query) {
  widen(query.dateRange);
  gather(provider_->cacheProvider->readQuery(query));
}

void SmartFetch::convert(const QuoteQuery& cached, PriceAdjuster& adjuster) {
  QuoteQuery target{cached.equity, cached.dateRange, query_.seeking};
  QuoteFetchResult result = provider_->cacheProvider->readQuery(cached);
  group_.enter();
  adjuster.adjust(std::move(result), target,
                  [self = shared_from_this(), target](Result<QuoteFetchResult> adjusted) {
                    self->end(std::move(adjusted), [&](QuoteFetchResult& piece) {
                      self->widen(target.dateRange);
                      piece.durableDateRange = wholeSeconds(piece.durableDateRange);
                      return target;
                    });
                  });
}

void SmartFetch::request(QuoteQuery missing, const std::shared_ptr<PriceAdjuster>& adjuster) {
  group_.enter();
  provider_->sourceProvider->fetchQuotes(
      missing, adjuster, [self = shared_from_this(), missing](Result<QuoteFetchResult> fetched) {
        self->end(std::move(fetched), [&](const QuoteFetchResult& piece) {
          self->widen(piece.durableDateRange);
          return missing;
        });
      });
}

template <typename Take>
void SmartFetch::end(Result<QuoteFetchResult> answer, Take take) {
  queue_->sync([&] {
    if (!answer) {
      error_ = answer.error();
      return;
    }
    QuoteQuery query = take(*answer);
    try {
      gather(*answer);
    } catch (const Error& error) {
      error_ = error.copy();
      return;
    }
    writes_.push_back({*std::move(answer), std::move(query)});
  });
  group_.leave();
}

void SmartFetch::gather(QuoteFetchResult piece) {
  if (piece.events && !piece.events->empty() && latestEventDate_ &&
      *latestEventDate_ < piece.events->back().date) {
    hasSeenNewerEvent_ = true;
  }
  if (targetPrices_ ? !piece.quotes : !piece.events) {
    throw QuoteProviderError(QuoteProviderError::QueryNotSatisfied{});
  }
  if (targetPrices_) {
    append(quotes_, *std::move(piece.quotes));
  } else {
    append(events_, *std::move(piece.events));
  }
}

/// An empty range has no final point, and adds none.
void SmartFetch::widen(const DateRange& range) {
  if (!finalRange_ || finalRange_->isEmpty()) {
    if (!finalRange_ || !range.isEmpty()) {
      finalRange_ = range;
    }
  } else if (!range.isEmpty()) {
    finalRange_ = DateRange(std::min(finalRange_->lower(), range.lower()),
                            std::max(finalRange_->upper(), range.upper()));
  }
}

void SmartFetch::finish() {
  if (error_ == nullptr && (hasSeenNewerEvent_ || !writes_.empty())) {
    auto settlement = Settlement::stored;
    DispatchQueue::main()->sync([&] {
      try {
        settlement = settle();
        if (settlement == Settlement::outdated) {
          restart();
        }
      } catch (const Error& error) {
        error_ = error.copy();
      }
    });
    if (settlement == Settlement::outdated) {
      return;
    }
  }
  if (error_ != nullptr) {
    completion_(std::unexpected(error_));
  } else {
    completion_(answer());
  }
}

/// Writes the pieces, unless they turn out to stem from before an event that changes all prices.
/// Main queue only.
SmartFetch::Settlement SmartFetch::settle() {
  // Another fetch may have seen the event and given up the prices while this one was converting
  // what it had read before. Nothing of that may be written beside the prices that are fetched now.
  const bool isOvertaken = provider_->timesCleared(query_.equity) != timesCleared_;
  if (hasSeenNewerEvent_ && !isOvertaken) {
    provider_->clearCachedData(query_.equity);
  }
  if (hasSeenNewerEvent_ || isOvertaken) {
    return restarts_ < mostRestarts ? Settlement::outdated : Settlement::stored;
  }
  for (const Write& write : writes_) {
    provider_->cacheProvider->storeFetchResult(write.result, write.query);
  }
  return Settlement::stored;
}

void SmartFetch::restart() {
  const auto again = std::make_shared<SmartFetch>(provider_, query_, std::move(completion_));
  again->restarts_ = restarts_ + 1;
  again->start(std::make_shared<PriceAdjuster>(provider_));
}

QuoteFetchResult SmartFetch::answer() {
  // Nothing was to be read or asked for: an answer without anything final.
  const Date start = query_.dateRange.lower();
  QuoteFetchResult result{.quotes = std::nullopt,
                          .prices = targetPrices_,
                          .events = std::nullopt,
                          .durableDateRange = finalRange_.value_or(DateRange(start, start))};
  if (targetPrices_) {
    sortByDate(quotes_, &Quote::fromDate);
    result.quotes = std::move(quotes_);
  } else {
    sortByDate(events_, &EquityEvent::date);
    result.events = std::move(events_);
  }
  return result;
}

}  // namespace corvane
