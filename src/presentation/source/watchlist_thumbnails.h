// The small charts of a watchlist: the running session of each of its equities.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/market/equity_info.h"
#include "core/market/quote_fetch_result.h"
#include "core/market/quote_query.h"
#include "platform/error.h"
#include "presentation/charts/quote_chart_view.h"

namespace corvane {

/// Fetches a session once, and again while it goes on: after its close nothing can have changed. A
/// session that could not be had leaves the chart empty, and is asked for again. Held by shared
/// pointer only; a fetch does not keep it alive. Main queue only.
class WatchlistThumbnails : public std::enable_shared_from_this<WatchlistThumbnails> {
 public:
  /// Called when the chart of an equity, which is followed, has changed.
  std::function<void(const EquityPointer&)> changeHandler = [](const EquityPointer&) {};

  /// From now on the equities of `watchlist`, and no others. Fetches the sessions that are due.
  void follow(std::vector<EquityPointer> watchlist);
  /// Drops all charts and follows nothing.
  void clear();

  /// Never null; empty until the session has been fetched.
  [[nodiscard]] std::shared_ptr<const QuoteChartView> chart(const EquityPointer& equity) const;

 private:
  struct Thumbnail {
    std::shared_ptr<QuoteChartView> chart;
    std::optional<DateRange> session;  ///< the one last asked for
    std::optional<Date> latest;        ///< and up to when; the distant past where that failed
  };

  [[nodiscard]] bool isDue(const EquityPointer& equity) const;
  [[nodiscard]] Thumbnail& thumbnailOf(const EquityPointer& equity);
  void fetch(const EquityPointer& equity);
  void fetchDidEnd(const QuoteQuery& query, const Result<QuoteFetchResult>& result);

  std::vector<EquityPointer> watchlist_;
  EquityMap<Thumbnail> thumbnails_;
};

}  // namespace corvane
