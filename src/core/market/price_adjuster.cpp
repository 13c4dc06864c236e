#include "core/market/price_adjuster.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

#include "core/market/price_conversion.h"
#include "platform/async/dispatch_queue.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

/// The basis that `result` has to be brought to; none where it already satisfies `subject`.
std::optional<PriceAdjustment> conversionTarget(const QuoteFetchResult& result,
                                                const QuoteQuery::Subject& subject) {
  using Target = std::optional<PriceAdjustment>;
  return std::visit(Overloaded{[&](const QuoteQuery::Quotes& quotes) {
                                 return result.prices == quotes.prices ? Target() : quotes.prices;
                               },
                               [&](const QuoteQuery::CurrentPeriodQuotes&) {
                                 return result.prices && isNominal(*result.prices)
                                            ? Target()
                                            : PriceAdjustment::marketNominal;
                               },
                               [&](const QuoteQuery::EventsOnly& events) {
                                 const bool isSatisfied =
                                     !result.events ||
                                     std::ranges::all_of(
                                         *result.events, [&](const EquityEvent& event) {
                                           return event.priceAdjustment == events.prices;
                                         });
                                 return isSatisfied ? Target() : events.prices;
                               },
                               [](QuoteQuery::EventsWithoutAdjustment) { return Target(); }},
                    subject);
}

}  // namespace

/// What the adjuster and the conversions that wait in its queue share. Whatever waits keeps it
/// alive, so that a caller may let go of the adjuster and still gets its answer.
struct PriceAdjuster::History {
  explicit History(std::shared_ptr<QuoteProvider> provider) : eventsProvider(std::move(provider)) {}

  /// Lets the conversions go on, with the history or with the error that took its place.
  void arrive(Result<QuoteFetchResult> result) {
    fetchEventsResult = std::move(result);
    fulfillmentQueue->activate();
  }

  [[nodiscard]] Result<QuoteFetchResult> convert(QuoteFetchResult result, PriceAdjustment target) {
    if (!*fetchEventsResult) {
      return std::unexpected(fetchEventsResult->error());
    }
    const auto& events = (*fetchEventsResult)->events;
    if (!events) {
      return failure(QuoteProviderError(QuoteProviderError::QueryNotSatisfied{}));
    }
    const std::vector<EquityEvent> all = completed(*events, result.events);
    return converted(std::move(result), target, all);
  }

  /// `history` with the later events that answers have told of, `told` being those of one more. The
  /// history was asked for up to the equity's latest date, and an answer of today may know more
  /// than an equity that has not been refreshed yet. Bars before an event that is left out would
  /// come out wrong.
  [[nodiscard]] std::vector<EquityEvent> completed(
      std::vector<EquityEvent> history, const std::optional<std::vector<EquityEvent>>& told) {
    const auto latest = std::ranges::max_element(history, {}, &EquityEvent::date);
    const Date known = latest == history.end() ? Date::distantPast() : latest->date;
    const std::lock_guard lock(mutex);
    if (told) {
      std::ranges::copy_if(*told, std::back_inserter(laterEvents), [&](const EquityEvent& event) {
        return known < event.date && std::ranges::find(laterEvents, event) == laterEvents.end();
      });
    }
    std::ranges::copy_if(laterEvents, std::back_inserter(history),
                         [&](const EquityEvent& event) { return known < event.date; });
    fewestLaterEventsUsed = std::min(fewestLaterEventsUsed, laterEvents.size());
    return history;
  }

  const std::shared_ptr<QuoteProvider> eventsProvider;
  const std::shared_ptr<DispatchQueue> fulfillmentQueue =
      DispatchQueue::concurrent("ca.orlend.corvane.PriceAdjuster-fulfillment",
                                QualityOfService::standard, DispatchQueue::Start::inactive);
  /// Set on the main queue; elsewhere it only spares a detour through that queue.
  std::atomic<bool> hasFetchedEvents = false;
  /// Written once, before the queue is activated, and read only by the blocks of the queue.
  std::optional<Result<QuoteFetchResult>> fetchEventsResult;

  std::mutex mutex;
  std::vector<EquityEvent> laterEvents;  ///< under the mutex, each once
  /// How many of them the conversion had that had the fewest; under the mutex.
  std::size_t fewestLaterEventsUsed = std::numeric_limits<std::size_t>::max();
};

PriceAdjuster::PriceAdjuster(std::shared_ptr<QuoteProvider> eventsProvider)
    : history_(std::make_shared<History>(std::move(eventsProvider))) {}

PriceAdjuster::~PriceAdjuster() = default;

bool PriceAdjuster::isOutdated() const {
  const std::lock_guard lock(history_->mutex);
  return history_->fewestLaterEventsUsed < history_->laterEvents.size();
}

std::shared_ptr<PriceAdjuster> PriceAdjuster::successor(
    std::shared_ptr<QuoteProvider> eventsProvider) const {
  auto next = std::make_shared<PriceAdjuster>(std::move(eventsProvider));
  const std::lock_guard lock(history_->mutex);
  next->history_->laterEvents = history_->laterEvents;
  return next;
}

void PriceAdjuster::adjust(QuoteFetchResult result, QuoteQuery query,
                           QuoteProvider::QuoteCompletion completion) {
  const auto target = conversionTarget(result, query.seeking);
  if (!target) {
    DispatchQueue::global()->async(
        [result = std::move(result), completion = std::move(completion)]() mutable {
          completion(std::move(result));
        });
    return;
  }
  // Events in hand may turn out to be the whole history.
  std::optional<QuoteFetchResult> events;
  if (std::holds_alternative<QuoteQuery::EventsOnly>(query.seeking)) {
    events = result;
  }
  history_->fulfillmentQueue->async([history = history_, result = std::move(result),
                                     target = *target,
                                     completion = std::move(completion)]() mutable {
    completion(history->convert(std::move(result), target));
  });
  if (!history_->hasFetchedEvents) {
    DispatchQueue::main()->async(
        [self = shared_from_this(), query = std::move(query),
         events = std::move(events)]() mutable { self->obtainHistory(query, std::move(events)); });
  }
}

void PriceAdjuster::obtainHistory(const QuoteQuery& query, std::optional<QuoteFetchResult> events) {
  if (history_->hasFetchedEvents.exchange(true)) {
    return;
  }
  if (query.seeksWholeEventHistory()) {
    history_->arrive(*std::move(events));
    return;
  }
  // This query needs no conversion, so its answer does not wait for the queue that waits for it.
  const QuoteQuery wholeHistory{query.equity, query.equity->fullDateRange(),
                                QuoteQuery::EventsWithoutAdjustment{}};
  history_->eventsProvider->fetchQuotes(
      wholeHistory, shared_from_this(),
      [weakHistory = std::weak_ptr(history_)](Result<QuoteFetchResult> result) {
        if (const auto history = weakHistory.lock()) {
          history->arrive(std::move(result));
        }
      });
}

}  // namespace corvane
