// One fetch of the smart provider: its pieces on their way from cache and source, until they are
// put together.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "core/market/quote_provider.h"
#include "platform/async/dispatch_group.h"
#include "platform/async/dispatch_queue.h"

namespace corvane {

class SmartQuoteProvider;

/// Gathers the answer to one query and hands it to the completion, once, on a background queue.
/// Lives until then by what is under way, and keeps the provider alive.
class SmartFetch : public std::enable_shared_from_this<SmartFetch> {
 public:
  SmartFetch(std::shared_ptr<SmartQuoteProvider> provider, QuoteQuery query,
             QuoteProvider::QuoteCompletion completion);

  /// Reads what the cache has and asks for the rest. Main queue only, once.
  void start(const std::shared_ptr<PriceAdjuster>& adjuster);

 private:
  /// An answer to be kept in the cache when the whole fetch has succeeded.
  struct Write {
    QuoteFetchResult result;
    QuoteQuery query;
  };

  enum class Settlement { stored, outdated };

  // On the main queue, before anything is under way or beside it.
  [[nodiscard]] QuoteQuery withAllKnownEvents(QuoteQuery query) const;
  void readExact(const QuoteQuery& query);
  void convert(const QuoteQuery& cached, PriceAdjuster& adjuster);
  void request(QuoteQuery missing, const std::shared_ptr<PriceAdjuster>& adjuster);

  /// A piece that was under way has ended. Any thread but one that runs `queue_`.
  template <typename Take>
  void end(Result<QuoteFetchResult> answer, Take take);

  // On `queue_`, or before anything is under way.
  void gather(QuoteFetchResult piece);
  void widen(const DateRange& range);

  // When all pieces have ended.
  void finish();
  Settlement settle();
  void restart();
  QuoteFetchResult answer();

  const std::shared_ptr<SmartQuoteProvider> provider_;
  const QuoteQuery query_;
  const std::optional<PriceAdjustment> targetPrices_;  ///< none where events are sought
  QuoteProvider::QuoteCompletion completion_;
  int restarts_ = 0;

  // Read from the cache at the start.
  std::optional<Date> latestEventDate_;
  std::uint64_t timesCleared_ = 0;

  DispatchGroup group_;
  const std::shared_ptr<DispatchQueue> queue_;

  std::vector<Quote> quotes_;
  std::vector<EquityEvent> events_;
  ErrorPointer error_;  ///< the last one
  std::optional<DateRange> finalRange_;
  std::vector<Write> writes_;
  bool hasSeenNewerEvent_ = false;
};

}  // namespace corvane
