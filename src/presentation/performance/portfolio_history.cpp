#include "presentation/performance/portfolio_history.h"

#include <chrono>
#include <utility>

#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/log.h"
#include "presentation/screen/cache_fallback.h"

namespace corvane {
namespace {

/// A window draws what has changed as soon as it is back in its loop.
constexpr std::chrono::milliseconds timeToDraw{10};

}  // namespace

void PortfolioHistory::follow(PortfolioPointer portfolio) {
  portfolio_ = std::move(portfolio);
  missing_ = {};
}

void PortfolioHistory::fetch(const ClosedRange<YearMonthDay>& days) {
  if (portfolio_ == nullptr || portfolio_->manager.expired()) {
    return;
  }
  days_ = days;
  ++fetchesUnderWay_;
  DispatchQueue::main()->asyncAfter(timeToDraw,
                                    [self = weak_from_this(), question = ++latestQuestion_] {
                                      if (const auto living = self.lock()) {
                                        living->ask(question);
                                      }
                                    });
}

void PortfolioHistory::ask(int question) {
  const auto manager = portfolio_ == nullptr ? nullptr : portfolio_->manager.lock();
  // Who edits in the background asks again when that has ended.
  if (question != latestQuestion_ || manager == nullptr || manager->isEditedInBackground()) {
    --fetchesUnderWay_;
    changeHandler();
    return;
  }
  const auto chain = std::dynamic_pointer_cast<SwitchableQuoteProvider>(manager->quoteProvider);
  const auto fallback = chain == nullptr ? nullptr : std::make_shared<CacheFallback>(chain);
  manager->fetchDailySnapshots(
      portfolio_, days_.lower(), days_.upper(),
      fallback == nullptr ? manager->quoteProvider : fallback,
      [self = weak_from_this(), fallback, portfolio = portfolio_,
       days = days_](Result<FetchResult> result) {
        const auto living = self.lock();
        if (living == nullptr) {
          return;
        }
        --living->fetchesUnderWay_;
        if (living->portfolio_ == portfolio) {
          living->take(std::move(result),
                       fallback == nullptr ? EquityMap<Date>() : fallback->endsOfStoredPrices());
          // An answer for more days can arrive after the one for the days that were chosen since.
          // What it tells must not stay under the wrong dates.
          if (living->fetchesUnderWay_ == 0 && days != living->days_) {
            living->fetch(living->days_);
          }
        }
        living->changeHandler();
      });
}

void PortfolioHistory::take(Result<FetchResult> result, EquityMap<Date> endsOfStoredPrices) {
  if (!result) {
    answerHandler(std::unexpected(result.error()));
    return;
  }
  missing_ = {.endsOfStoredPrices = std::move(endsOfStoredPrices)};
  keepAccount(*result);
  answerHandler(std::move(result->snapshotGroup));
}

void PortfolioHistory::keepAccount(const FetchResult& result) {
  for (const auto& [equity, error] : result.fetchErrorsByEquity) {
    Log::write("Failed to fetch past performance for ", equity->id(), ": ", *error);
    missing_.incompleteEquities.insert(equity);
  }
  for (const auto& [currency, error] : result.fetchErrorsByCurrency) {
    // The neutral one is that of an equity of which a refresh has told nothing yet.
    if (currency != Currency::noCurrency()) {
      Log::write("Failed to fetch exchange rates for ", currency.code, ": ", *error);
      missing_.incompleteCurrencies.insert(currency);
    }
  }
}

}  // namespace corvane
