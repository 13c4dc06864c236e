#include "presentation/screen/market_inquiry.h"

#include <algorithm>
#include <utility>

#include "core/market/price_adjuster.h"
#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/refusal_text.h"
#include "marketdata/chain/stored_prices.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/async/notification_center.h"
#include "platform/net/url_request.h"
#include "storage/application/watchlist_manager.h"

namespace corvane {
namespace {

/// The chain behind `equity`, where there is one and it may ask the network.
std::shared_ptr<SmartQuoteProvider> chainOf(const EquityInfo& equity) {
  const auto chain =
      std::dynamic_pointer_cast<SwitchableQuoteProvider>(equity.quoteProvider.lock());
  return chain == nullptr ? nullptr : chain->smartQuoteProvider;
}

std::uint64_t timesCleared(const QuoteQuery& query) {
  const auto chain = chainOf(*query.equity);
  return chain == nullptr ? 0 : chain->timesCleared(query.equity);
}

bool hasSomething(const Result<QuoteFetchResult>& result) {
  return result && ((result->quotes && !result->quotes->empty()) ||
                    (result->events && !result->events->empty()));
}

}  // namespace

std::shared_ptr<MarketInquiry> MarketInquiry::make(std::function<Date()> now, Delays delays) {
  auto made = std::make_shared<MarketInquiry>(Passkey{}, std::move(now), delays);
  made->observe();
  return made;
}

MarketInquiry::MarketInquiry(Passkey /*passkey*/, std::function<Date()> now, Delays delays)
    : now_(std::move(now)), delays_(delays), nextDelay_(delays.first) {}

/// A refresh that succeeds shows that the network is back.
void MarketInquiry::observe() {
  refreshObservation_ = NotificationCenter::defaultCenter().addObserver(
      WatchlistManager::didRefreshWatchlistEquities, nullptr,
      [self = weak_from_this()](const EquitySet&) {
        const auto living = self.lock();
        if (living != nullptr && living->isTryingAgain()) {
          living->send();
        }
      },
      DispatchQueue::main());
}

void MarketInquiry::ask(MakeQuery makeQuery) {
  makeQuery_ = std::move(makeQuery);
  answeredAt_.reset();
  failure_ = nullptr;
  nextDelay_ = delays_.first;
  send();
}

void MarketInquiry::askAgain() {
  nextDelay_ = delays_.first;
  send();
}

void MarketInquiry::stop() {
  makeQuery_ = nullptr;
  failure_ = nullptr;
  answeredAt_.reset();
  send();
}

bool MarketInquiry::isOutdated() const {
  return askedQuery_ && timesCleared(*askedQuery_) != timesClearedAtQuestion_;
}

bool MarketInquiry::isForWantOfNetwork(const Error& error) {
  const auto* transport = dynamic_cast<const URLError*>(&error);
  return transport != nullptr && transport->code != URLError::Code::cancelled;
}

void MarketInquiry::send() {
  const int generation = ++generation_;
  retryTimer_ = nullptr;
  pauseEnd_.reset();
  askedQuery_ = makeQuery_ ? makeQuery_() : std::nullopt;
  const auto provider =
      askedQuery_ ? askedQuery_->equity->quoteProvider.lock() : std::shared_ptr<QuoteProvider>();
  isWaiting_ = provider != nullptr;
  if (provider != nullptr) {
    timesClearedAtQuestion_ = timesCleared(*askedQuery_);
    provider->fetchQuotes(
        *askedQuery_, std::make_shared<PriceAdjuster>(provider),
        [self = weak_from_this(), generation,
         query = *askedQuery_](Result<QuoteFetchResult> result) mutable {
          DispatchQueue::main()->async(
              [self, generation, query = std::move(query), result = std::move(result)]() mutable {
                const auto living = self.lock();
                if (living != nullptr && living->generation_ == generation) {
                  living->answerDidArrive(query, std::move(result));
                }
              });
        });
  }
  changeHandler();
}

void MarketInquiry::answerDidArrive(const QuoteQuery& query, Result<QuoteFetchResult> result) {
  if (!result && isForWantOfNetwork(*result.error())) {
    askCache(query, result.error());
    return;
  }
  if (!result) {
    fail(query, result.error());
    return;
  }
  failure_ = nullptr;
  toldFailure_ = nullptr;
  answeredAt_ = now_();
  nextDelay_ = delays_.first;
  hand({.query = query, .result = std::move(result)});
}

/// Asks for what the cache alone can tell.
void MarketInquiry::askCache(const QuoteQuery& query, ErrorPointer error) {
  const auto chain = chainOf(*query.equity);
  if (chain == nullptr) {
    fail(query, error);
    return;
  }
  fetchStoredPrices(
      chain->cacheProvider, query,
      [self = weak_from_this(), generation = generation_, query,
       error = std::move(error)](Result<QuoteFetchResult> result) mutable {
        DispatchQueue::main()->async([self, generation, query = query, error = std::move(error),
                                      result = std::move(result)]() mutable {
          const auto living = self.lock();
          if (living == nullptr || living->generation_ != generation) {
            return;
          }
          if (!hasSomething(result)) {
            living->fail(query, error);
            return;
          }
          living->failure_ = error;
          living->tryAgainLater();
          living->hand({.query = query, .result = std::move(result), .isFromCacheOnly = true});
        });
      });
}

void MarketInquiry::fail(const QuoteQuery& query, const ErrorPointer& error) {
  failure_ = error;
  const bool isWantOfNetwork = isForWantOfNetwork(*error);
  const bool isTold =
      toldFailure_ != nullptr &&
      (*toldFailure_ == *error || (isWantOfNetwork && isForWantOfNetwork(*toldFailure_)));
  toldFailure_ = error;
  const auto provider = query.equity->quoteProvider.lock();
  pauseEnd_ = provider && asksForAPause(*error) ? provider->nextRequestDate() : std::nullopt;
  if (isWantOfNetwork) {
    tryAgainLater();
  } else if (pauseEnd_) {
    constexpr double afterIt = 0.1;
    tryAgainAfter(DispatchQueue::Duration(std::max(pauseEnd_->timeIntervalSince(Date::now()), 0.0) +
                                          afterIt));
  }
  hand({.query = query,
        .result = std::unexpected(error),
        .isRepeatedFailure = isTold || pauseEnd_.has_value()});
}

void MarketInquiry::hand(Answer answer) {
  isWaiting_ = false;
  answerHandler(answer);
  changeHandler();
}

void MarketInquiry::tryAgainLater() {
  tryAgainAfter(nextDelay_);
  nextDelay_ = std::min(2 * nextDelay_, delays_.longest);
}

void MarketInquiry::tryAgainAfter(DispatchQueue::Duration delay) {
  retryTimer_ = Timer::scheduled(delay, false, [self = weak_from_this()](Timer&) {
    if (const auto living = self.lock()) {
      living->send();
    }
  });
}

}  // namespace corvane
