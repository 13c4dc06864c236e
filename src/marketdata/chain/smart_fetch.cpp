#include "marketdata/chain/smart_fetch.h"

#include <algorithm>
#include <utility>

#include "core/market/price_adjuster.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/smart_quote_provider.h"
#include "marketdata/chain/storable_range.h"
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

/// `missing` with the length of one bar more at its end.
QuoteQuery withOneBarMore(QuoteQuery missing, QuoteInterval interval) {
  const DateRange& range = missing.dateRange;
  const auto end = missing.equity->calendar.dateByAdding(dateComponents(interval), range.upper());
  missing.dateRange = {range.lower(), std::max(range.upper(), end.value_or(range.upper()))};
  return missing;
}

/// Whether bars of this length can be cut off by the end of a range of days: shorter ones end with
/// their trading period, and some are never final.
bool canReachBeyondADay(QuoteInterval interval) {
  return interval == QuoteInterval::oneDay || interval == QuoteInterval::oneWeek ||
         interval == QuoteInterval::oneMonth;
}

/// `query`, with the length of one bar more where it asks for bars of the past. A bar of a day
/// begins with its session and is final 24 hours later, after the midnight with which most queries
/// end. An answer up to there would leave the last bar unfinished, which cannot be kept; every
/// later look would ask for it again, and without a network it would be missing.
QuoteQuery withLastBar(QuoteQuery query) {
  const auto* quotes = std::get_if<QuoteQuery::Quotes>(&query.seeking);
  const bool isPast =
      query.equity->recentDate && query.dateRange.upper() < *query.equity->recentDate;
  if (quotes == nullptr || !canReachBeyondADay(quotes->interval) || !isPast ||
      query.dateRange.isEmpty()) {
    return query;
  }
  const QuoteInterval interval = quotes->interval;
  return withOneBarMore(std::move(query), interval);
}

/// What of `piece` begins before the end of `wanted`.
QuoteFetchResult cutTo(const DateRange& wanted, QuoteFetchResult piece) {
  piece.durableDateRange = piece.durableDateRange.clamped(wanted);
  if (piece.quotes) {
    std::erase_if(*piece.quotes, [&](const Quote& bar) { return bar.fromDate >= wanted.upper(); });
  }
  return piece;
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
  adjuster_ = adjuster;
  try {
    const CacheQuoteProvider& cache = *provider_->cacheProvider;
    latestEventDate_ = cache.latestEventDate(query_.equity);
    const QuoteQuery sought = withAllKnownEvents(query_);
    const CoveragePlan plan = cache.coveragePlan(withLastBar(sought));
    timesCleared_ = provider_->timesCleared(query_.equity);
    const auto wantedOf = [&](const QuoteQuery& piece) {
      return piece.dateRange.clamped(sought.dateRange);
    };
    // What begins after the end is not part of the answer, but tells what the bar before it meets.
    const auto isBeyond = [&](const QuoteQuery& piece) {
      return !sought.dateRange.isEmpty() && piece.dateRange.lower() >= sought.dateRange.upper();
    };
    for (const QuoteQuery& exact : plan.exactQueries) {
      QuoteFetchResult kept = read(exact);
      if (!isBeyond(exact)) {
        widen(wantedOf(exact));
        gather(cutTo(wantedOf(exact), std::move(kept)));
      }
    }
    std::vector<QuoteFetchResult> convertible;
    for (const QuoteQuery& cached : plan.convertibleQueries) {
      convertible.push_back(read(cached));
    }
    for (std::size_t i = 0; i < convertible.size(); ++i) {
      const QuoteQuery& cached = plan.convertibleQueries[i];
      if (!isBeyond(cached)) {
        convert(cached, wantedOf(cached), std::move(convertible[i]), *adjuster);
      }
    }
    for (const QuoteQuery& missing : plan.missingQueries) {
      if (!isBeyond(missing)) {
        requestMissing(missing, wantedOf(missing), adjuster);
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

/// What the cache has of `cached`. Remembers its start unless a bar starts right there.
QuoteFetchResult SmartFetch::read(const QuoteQuery& cached) {
  QuoteFetchResult result = provider_->cacheProvider->readQuery(cached);
  const Date start = cached.dateRange.lower();
  if (result.quotes && (result.quotes->empty() || result.quotes->front().fromDate != start)) {
    seams_.push_back(start);
  }
  return result;
}

bool SmartFetch::isSeam(Date date) const {
  return std::ranges::find(seams_, date) != seams_.end();
}

void SmartFetch::convert(const QuoteQuery& cached, const DateRange& wanted, QuoteFetchResult result,
                         PriceAdjuster& adjuster) {
  const QuoteQuery target{cached.equity, cached.dateRange, query_.seeking};
  if (result.quotes && !result.quotes->empty() && isSeam(cached.dateRange.upper())) {
    // The last bar reaches into what is covered next, where no other begins before its end.
    const Date end = std::max(cached.dateRange.upper(), result.quotes->back().toDate);
    result.durableDateRange = {cached.dateRange.lower(), end};
  }
  group_.enter();
  adjuster.adjust(std::move(result), target,
                  [self = shared_from_this(), target, wanted](Result<QuoteFetchResult> adjusted) {
                    self->end(std::move(adjusted), target, wanted, wanted);
                  });
}

/// A range without the start of a bar can be covered before the bar that reaches into it is
/// finished. What is missing before it is then asked for beyond its end, or the service would cut
/// that bar off for ever.
void SmartFetch::requestMissing(const QuoteQuery& missing, const DateRange& wanted,
                                const std::shared_ptr<PriceAdjuster>& adjuster) {
  const auto* quotes = std::get_if<QuoteQuery::Quotes>(&query_.seeking);
  const QuoteQuery asked = quotes != nullptr && isSeam(missing.dateRange.upper())
                               ? withOneBarMore(missing, quotes->interval)
                               : missing;
  for (const QuoteQuery& chunk : provider_->sourceProvider->sourceQueries(asked)) {
    request(chunk, wanted, adjuster);
  }
}

/// Of the answer only what begins in `wanted` is part of this fetch's own.
void SmartFetch::request(const QuoteQuery& asked, const DateRange& wanted,
                         const std::shared_ptr<PriceAdjuster>& adjuster) {
  group_.enter();
  provider_->sourceProvider->fetchQuotes(
      asked, adjuster,
      [self = shared_from_this(), asked, wanted](Result<QuoteFetchResult> fetched) {
        self->end(std::move(fetched), asked, wanted, std::nullopt);
      });
}

void SmartFetch::end(Result<QuoteFetchResult> answer, const QuoteQuery& asked,
                     const DateRange& wanted, std::optional<DateRange> finalRange) {
  queue_->sync([&] {
    if (!answer) {
      error_ = answer.error();
      return;
    }
    QuoteFetchResult piece = *answer;
    if (asked.dateRange.upper() > wanted.upper()) {
      piece = cutTo(wanted, std::move(piece));
    }
    widen(finalRange.value_or(piece.durableDateRange));
    try {
      gather(std::move(piece));
    } catch (const Error& error) {
      error_ = error.copy();
      return;
    }
    writes_.push_back({*std::move(answer), asked});
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
  // Of the pieces of one answer some may tell of an event that others were converted without.
  if (hasSeenNewerEvent_ || isOvertaken || adjuster_->isOutdated()) {
    return restarts_ < mostRestarts ? Settlement::outdated : Settlement::stored;
  }
  for (Write& write : writes_) {
    write.result.durableDateRange = storableRange(write.result, write.query);
    write.result.events = storableEvents(write.result, write.query);
    provider_->cacheProvider->storeFetchResult(write.result, write.query);
  }
  return Settlement::stored;
}

void SmartFetch::restart() {
  const auto again = std::make_shared<SmartFetch>(provider_, query_, std::move(completion_));
  again->restarts_ = restarts_ + 1;
  again->start(adjuster_->successor(provider_));
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
