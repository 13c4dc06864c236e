#include "presentation/source/watchlist_thumbnails.h"

#include <algorithm>
#include <utility>

#include "core/market/price_adjuster.h"
#include "core/market/quote_provider.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {

void WatchlistThumbnails::follow(std::vector<EquityPointer> watchlist) {
  watchlist_ = std::move(watchlist);
  std::erase_if(thumbnails_, [this](const auto& entry) {
    return std::ranges::find(watchlist_, entry.first) == watchlist_.end();
  });
  for (const EquityPointer& equity : watchlist_) {
    if (isDue(equity)) {
      fetch(equity);
    }
  }
}

void WatchlistThumbnails::clear() {
  watchlist_.clear();
  thumbnails_.clear();
}

std::shared_ptr<const QuoteChartView> WatchlistThumbnails::chart(
    const EquityPointer& equity) const {
  static const auto none = std::make_shared<const QuoteChartView>(QuoteChartView::Mode::thumbnail);
  const auto found = thumbnails_.find(equity);
  return found == thumbnails_.end() ? none : found->second.chart;
}

bool WatchlistThumbnails::isDue(const EquityPointer& equity) const {
  const auto found = thumbnails_.find(equity);
  return found == thumbnails_.end() || found->second.session != equity->recentTradingPeriod ||
         found->second.latest != equity->recentDate;
}

WatchlistThumbnails::Thumbnail& WatchlistThumbnails::thumbnailOf(const EquityPointer& equity) {
  Thumbnail& thumbnail = thumbnails_[equity];
  if (thumbnail.chart == nullptr) {
    thumbnail.chart = std::make_shared<QuoteChartView>(QuoteChartView::Mode::thumbnail);
  }
  return thumbnail;
}

void WatchlistThumbnails::fetch(const EquityPointer& equity) {
  const auto provider = equity->quoteProvider.lock();
  // Before the first refresh its currency is not known, and no price would be taken.
  if (provider == nullptr || !equity->isAuthoritative) {
    return;
  }
  Thumbnail& thumbnail = thumbnailOf(equity);
  thumbnail.session = equity->recentTradingPeriod;
  thumbnail.latest = equity->recentDate;
  const QuoteQuery query = QuoteQuery::currentPeriod(equity, true);
  provider->fetchQuotes(query, std::make_shared<PriceAdjuster>(provider),
                        [self = weak_from_this(), query](Result<QuoteFetchResult> result) {
                          DispatchQueue::main()->async([self, query, result = std::move(result)] {
                            if (const auto living = self.lock()) {
                              living->fetchDidEnd(query, result);
                            }
                          });
                        });
}

void WatchlistThumbnails::fetchDidEnd(const QuoteQuery& query,
                                      const Result<QuoteFetchResult>& result) {
  const auto followed = std::ranges::find_if(
      watchlist_, [&](const EquityPointer& equity) { return *equity == *query.equity; });
  if (followed == watchlist_.end()) {
    return;
  }
  if (query.dateRange.isEmpty() &&
      !QuoteQuery::currentPeriod(query.equity, true).dateRange.isEmpty()) {
    // No session was known when this was asked; the answer has told of it.
    fetch(*followed);
    return;
  }
  Thumbnail& thumbnail = thumbnailOf(query.equity);
  if (!result) {
    thumbnail.latest = Date::distantPast();
  }
  if (result && result->quotes && !query.dateRange.isEmpty()) {
    thumbnail.chart->setQuotes(*result->quotes, query);
  } else {
    thumbnail.chart->clear();
  }
  changeHandler(*followed);
}

}  // namespace corvane
