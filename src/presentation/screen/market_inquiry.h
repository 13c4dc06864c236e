// What a screen asks of the market, for as long as it wants to know.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "core/market/quote_fetch_result.h"
#include "core/market/quote_query.h"
#include "platform/async/dispatch_queue.h"
#include "platform/async/subscription.h"
#include "platform/async/timer.h"
#include "platform/error.h"
#include "platform/time/date.h"

namespace corvane {

/// One question to the market at a time. An answer that a later question has overtaken is dropped,
/// in whatever order answers come. What failed for want of a network is asked of the cache, and of
/// the market again by itself: after a while that grows, and as soon as others get through. What
/// failed because the market wants a pause is asked again at its end. Held by shared pointer only.
/// Main queue only.
class MarketInquiry : public std::enable_shared_from_this<MarketInquiry> {
  struct Passkey {};

 public:
  struct Answer {
    QuoteQuery query;
    Result<QuoteFetchResult> result;
    /// The market could not be reached; this is what the cache has.
    bool isFromCacheOnly = false;
    /// The user has been told of this failure, and nothing has succeeded since; or it is a pause
    /// that the market has asked for, of which the status tells.
    bool isRepeatedFailure = false;
  };

  /// How long to wait before asking again: at first, doubling, and at most.
  struct Delays {
    DispatchQueue::Duration first{5};
    DispatchQueue::Duration longest{300};
  };

  /// What to ask at this moment; none for nothing. It is called again for each attempt, so that a
  /// range that ends now still does hours later. Must not keep the screen alive.
  using MakeQuery = std::function<std::optional<QuoteQuery>()>;

  [[nodiscard]] static std::shared_ptr<MarketInquiry> make(std::function<Date()> now) {
    return make(std::move(now), Delays{});
  }
  [[nodiscard]] static std::shared_ptr<MarketInquiry> make(std::function<Date()> now,
                                                           Delays delays);
  MarketInquiry(Passkey passkey, std::function<Date()> now, Delays delays);
  MarketInquiry(const MarketInquiry&) = delete;
  MarketInquiry& operator=(const MarketInquiry&) = delete;

  /// Called with the answer to the latest question, which may be taken: it is of no further use.
  std::function<void(Answer&)> answerHandler = [](Answer&) {};
  /// Called when one of the properties below has changed; after answerHandler.
  std::function<void()> changeHandler = [] {};

  /// Asks, in place of what was asked before.
  void ask(MakeQuery makeQuery);
  /// Asks the same once more.
  void askAgain();
  /// Wants to know nothing more.
  void stop();

  [[nodiscard]] bool isWaiting() const { return isWaiting_; }
  /// Why the latest answer is none, or only what the cache has; null where it is one.
  [[nodiscard]] const ErrorPointer& failure() const { return failure_; }
  /// Whether it will ask again by itself.
  [[nodiscard]] bool isTryingAgain() const { return retryTimer_ != nullptr; }
  /// When it will, where the market has asked for a pause.
  [[nodiscard]] const std::optional<Date>& pauseEnd() const { return pauseEnd_; }
  /// When the market last answered the present question; none until it has.
  [[nodiscard]] const std::optional<Date>& answeredAt() const { return answeredAt_; }
  /// Whether stored prices of the equity have been given up since the question: a split or dividend
  /// has become known of which the answer knew nothing.
  [[nodiscard]] bool isOutdated() const;

  /// Whether `error` says that the market could not be reached at all.
  [[nodiscard]] static bool isForWantOfNetwork(const Error& error);

 private:
  void observe();
  void send();
  void answerDidArrive(const QuoteQuery& query, Result<QuoteFetchResult> result);
  void askCache(const QuoteQuery& query, ErrorPointer error);
  void fail(const QuoteQuery& query, const ErrorPointer& error);
  void hand(Answer answer);
  void tryAgainLater();
  void tryAgainAfter(DispatchQueue::Duration delay);

  const std::function<Date()> now_;
  const Delays delays_;
  MakeQuery makeQuery_;
  int generation_ = 0;
  bool isWaiting_ = false;
  ErrorPointer failure_;
  ErrorPointer toldFailure_;  ///< since the last success
  std::optional<Date> pauseEnd_;
  std::optional<Date> answeredAt_;
  std::optional<QuoteQuery> askedQuery_;
  std::uint64_t timesClearedAtQuestion_ = 0;
  DispatchQueue::Duration nextDelay_;
  std::shared_ptr<Timer> retryTimer_;
  Subscription refreshObservation_;
};

}  // namespace corvane
