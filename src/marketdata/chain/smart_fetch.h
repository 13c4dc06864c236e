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
  [[nodiscard]] QuoteFetchResult read(const QuoteQuery& cached);
  [[nodiscard]] bool isSeam(Date date) const;
  void convert(const QuoteQuery& cached, const DateRange& wanted, QuoteFetchResult result,
               PriceAdjuster& adjuster);
  void requestMissing(const QuoteQuery& missing, const DateRange& wanted,
                      const std::shared_ptr<PriceAdjuster>& adjuster);
  void request(const QuoteQuery& asked, const DateRange& wanted,
               const std::shared_ptr<PriceAdjuster>& adjuster);

  /// A piece that was under way has ended, and counts as final in `finalRange`, or where it says so
  /// itself. Any thread but one that runs `queue_`.
  void end(Result<QuoteFetchResult> answer, const QuoteQuery& asked, const DateRange& wanted,
           std::optional<DateRange> finalRange);

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
  std::shared_ptr<PriceAdjuster> adjuster_;
  int restarts_ = 0;

  // Read from the cache at the start.
  std::optional<Date> latestEventDate_;
  std::uint64_t timesCleared_ = 0;
  /// Where something covered begins in the middle of what may be a bar: a bar that starts before
  /// such a point may end after it.
  std::vector<Date> seams_;

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
