// Converts prices from the basis in which a source tells them to the one that is asked for.
#pragma once

#include <memory>
#include <optional>

#include "core/market/quote_provider.h"

namespace corvane {

/// Restates the answers of a provider for splits and dividends of one equity. It asks for the whole
/// event history of the equity once, holds conversions back until the history is there, and then
/// runs them side by side.
///
/// One adjuster serves one equity and as many queries as there are; most callers make a new one for
/// each fetch, with the provider that they are about to ask. `adjust` may be called on any thread;
/// the history is asked for on the main queue. A history that could not be had fails every
/// conversion that needs it, also later ones; whoever wants to try again makes a new adjuster.
class PriceAdjuster : public std::enable_shared_from_this<PriceAdjuster> {
 public:
  explicit PriceAdjuster(std::shared_ptr<QuoteProvider> eventsProvider);
  PriceAdjuster(const PriceAdjuster&) = delete;
  PriceAdjuster& operator=(const PriceAdjuster&) = delete;
  virtual ~PriceAdjuster();

  /// Brings `result` to the basis that `query` asks for. A result that needs no conversion comes
  /// back as it is, without a history. The completion runs exactly once, on a background queue,
  /// never before the call returns.
  virtual void adjust(QuoteFetchResult result, QuoteQuery query,
                      QuoteProvider::QuoteCompletion completion);

  /// Whether an answer has told of an event, later than the history, that another one was converted
  /// without. Any thread.
  [[nodiscard]] bool isOutdated() const;
  /// An adjuster that knows from the start what answers have told this one. Any thread.
  [[nodiscard]] std::shared_ptr<PriceAdjuster> successor(
      std::shared_ptr<QuoteProvider> eventsProvider) const;

 private:
  struct History;

  /// Main queue only. `events` is the result in hand where `query` seeks events.
  void obtainHistory(const QuoteQuery& query, std::optional<QuoteFetchResult> events);

  std::shared_ptr<History> history_;
};

}  // namespace corvane
