#include "marketdata/yahoo/yahoo_session.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <random>
#include <utility>

#include "marketdata/yahoo/network_activity_monitor.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"
#include "marketdata/yahoo/yahoo_provider_error.h"
#include "marketdata/yahoo/yahoo_response.h"
#include "platform/net/url_components.h"
#include "platform/system/log.h"
#include "platform/text/formats/date_formatter.h"
#include "platform/text/unicode/utf8.h"

namespace corvane {
namespace {

constexpr double longestNamedPause = 24 * 3600;

ErrorPointer bootstrapFailed(std::string text) {
  return YahooProviderError(YahooProviderError::BootstrapFailed{std::move(text)}).copy();
}

/// A request that fails as a bad URL where there is none.
URLRequest requestFor(const std::optional<std::string>& url, HTTPHeaders headers) {
  return {.url = url.value_or(""), .headers = std::move(headers)};
}

std::string withCrumb(const std::string& url, const std::string& crumb) {
  auto components = URLComponents::parse(url);
  if (!components) {
    return url;
  }
  auto& items = components->queryItems;
  if (!items) {
    items.emplace();
  }
  items->insert(items->begin(), {"crumb", crumb});
  return components->string().value_or(url);
}

}  // namespace

YahooSession::YahooSession(YahooService service)
    : service_(std::move(service)),
      callbackQueue_(DispatchQueue::concurrent("ca.orlend.corvane.YahooQuoteProvider-answers")),
      sessionQueue_(DispatchQueue::concurrent("ca.orlend.corvane.YahooQuoteProvider-session",
                                              QualityOfService::standard,
                                              DispatchQueue::Start::inactive)),
      session_(callbackQueue_, {{"User-Agent", service_.userAgent}}) {}

YahooSession::~YahooSession() {
  for (auto& entry : waiting_) {
    callbackQueue_->async([waiting = std::move(entry.second)]() mutable {
      waiting.completion(failure(
          URLError(URLError::Code::cancelled, waiting.request.url, "the session has ended")));
    });
  }
}

void YahooSession::start() {
  askForCookies();
}

void YahooSession::runRequest(std::string label, URLRequest request, bool includeCrumb,
                              Completion completion) {
  if (!includeCrumb) {
    send(std::move(label), std::move(request), std::move(completion));
    return;
  }
  WaitingRequest waiting{std::move(label), std::move(request), std::move(completion)};
  std::unique_lock lock(mutex_);
  if (access_ == Access::granted) {
    lock.unlock();
    sendWithCrumb(std::move(waiting));
    return;
  }
  const std::uint64_t id = nextWaitingId_++;
  waiting_.emplace(id, std::move(waiting));
  DispatchQueue::global()->asyncAfter(DispatchQueue::Duration(service_.pauses.requestLimit),
                                      [weakSelf = weak_from_this(), id] {
                                        if (const auto self = weakSelf.lock()) {
                                          self->giveUp(id);
                                        }
                                      });
  if (access_ == Access::asked) {
    hasComeWhileAsking_ = true;
  } else {
    const double pause = std::chrono::duration<double>(Clock::now() - refusedAt_).count();
    askAgainAfter(std::max(0.0, pauseForRequests() - pause), refusals_);
  }
}

double YahooSession::pauseForRequests() const {
  return std::max(service_.pauses.untilRequestsEndThem, namedPause_);
}

void YahooSession::send(std::string label, URLRequest request, Completion completion) {
  std::optional<NetworkActivityMonitor::Activity> activity;
  if (NetworkActivityMonitor::isOn()) {
    activity.emplace().name = std::move(label);
    NetworkActivityMonitor::post(*activity, request.url, std::nullopt);
  }
  session_.send(
      std::move(request), [activity = std::move(activity), completion = std::move(completion)](
                              Result<HTTPResponse> response) mutable {
        if (activity) {
          NetworkActivityMonitor::post(*activity, std::nullopt,
                                       response ? std::optional(response->body) : std::nullopt);
        }
        completion(std::move(response));
      });
}

void YahooSession::sendWithCrumb(WaitingRequest waiting) {
  sessionQueue_->async([self = shared_from_this(), waiting = std::move(waiting)]() mutable {
    waiting.request.url = withCrumb(waiting.request.url, self->sessionCrumb_);
    self->send(std::move(waiting.label), std::move(waiting.request), std::move(waiting.completion));
  });
}

void YahooSession::askForCookies() {
  URLRequest request =
      requestFor(YahooFinanceAPI::cookiesURL(service_),
                 {{"Accept", "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8"}});
  send("Fetch Yahoo cookies", std::move(request),
       [weakSelf = weak_from_this()](Result<HTTPResponse> response) {
         if (const auto self = weakSelf.lock()) {
           self->receiveCookies(std::move(response));
         }
       });
}

void YahooSession::receiveCookies(Result<HTTPResponse> response) {
  if (!response) {
    refuseAccess(response.error(), 0);
    return;
  }
  const std::size_t count = session_.cookies().size();
  if (count == 0) {
    refuseAccess(bootstrapFailed("No cookies acquired."), namedPause(*response));
    return;
  }
  Log::write("Received ", count, " cookies from Yahoo.");
  askForCrumb();
}

void YahooSession::askForCrumb() {
  URLRequest request =
      requestFor(YahooFinanceAPI::crumbURL(service_), {{"User-Agent", "Mozilla/5.0 (Macintosh)"}});
  send("Fetch Yahoo crumb", std::move(request),
       [weakSelf = weak_from_this()](Result<HTTPResponse> response) {
         if (const auto self = weakSelf.lock()) {
           self->receiveCrumb(std::move(response));
         }
       });
}

void YahooSession::receiveCrumb(Result<HTTPResponse> response) {
  if (!response) {
    refuseAccess(response.error(), 0);
    return;
  }
  const std::string& crumb = response->body;
  const double pause = namedPause(*response);
  if (crumb.empty() || !isUTF8(crumb)) {
    refuseAccess(bootstrapFailed("No crumb received."), pause);
  } else if (containsWhitespace(crumb)) {
    refuseAccess(bootstrapFailed("Crumb response: " + crumb), pause);
  } else if (!isSuccess(response->statusCode)) {
    // An error page of one word would be kept as the crumb for good.
    refuseAccess(YahooProviderError(YahooProviderError::HTTPResponse{response->statusCode}).copy(),
                 pause);
  } else {
    Log::write("Received crumb \"", crumb, "\" from Yahoo.");
    grantAccess(crumb);
  }
}

void YahooSession::grantAccess(std::string crumb) {
  std::map<std::uint64_t, WaitingRequest> waiting;
  {
    const std::lock_guard lock(mutex_);
    sessionCrumb_ = std::move(crumb);
    access_ = Access::granted;
    waiting.swap(waiting_);
  }
  sessionQueue_->activate();
  for (auto& [id, request] : waiting) {
    sendWithCrumb(std::move(request));
  }
}

void YahooSession::refuseAccess(const ErrorPointer& error, double namedPause) {
  const std::string text = error->description().value_or("unknown reason");
  Log::write("Yahoo bootstrapping failed: ", text);
  std::random_device random;
  const double chance = std::uniform_real_distribution<double>(0, 1)(random);
  const std::lock_guard lock(mutex_);
  access_ = Access::refused;
  ++refusals_;
  refusedAt_ = Clock::now();
  namedPause_ = namedPause;
  refusalText_ = text;
  double pause = pauseAfterRefusal(service_.pauses, refusals_, namedPause, chance);
  if (hasComeWhileAsking_) {
    pause = std::min(pause, pauseForRequests());
  }
  askAgainAfter(pause, refusals_);
}

void YahooSession::askAgainAfter(double pause, std::uint64_t refusal) {
  const auto askAgain = [weakSelf = weak_from_this(), refusal] {
    const auto self = weakSelf.lock();
    if (self == nullptr) {
      return;
    }
    {
      const std::lock_guard lock(self->mutex_);
      if (self->access_ != Access::refused || self->refusals_ != refusal) {
        return;
      }
      self->access_ = Access::asked;
      self->hasComeWhileAsking_ = false;
    }
    self->askForCookies();
  };
  DispatchQueue::global()->asyncAfter(DispatchQueue::Duration(pause), askAgain);
}

void YahooSession::giveUp(std::uint64_t waitingId) {
  std::unique_lock lock(mutex_);
  auto waiting = waiting_.extract(waitingId);
  if (waiting.empty()) {
    return;
  }
  std::string text = "The quote service gives no access at present.";
  if (!refusalText_.empty()) {
    text += " (" + refusalText_ + ")";
  }
  lock.unlock();
  waiting.mapped().completion(std::unexpected(bootstrapFailed(std::move(text))));
}

double pauseAfterRefusal(const YahooService::Pauses& pauses, std::uint64_t refusals,
                         double namedPause, double chance) {
  // 2^60 times the first pause is beyond every longest one.
  const auto doublings = static_cast<double>(std::min<std::uint64_t>(refusals - 1, 60));
  const double pause = std::min(pauses.first * std::exp2(doublings), pauses.longest);
  return std::max(pause * (0.75 + 0.5 * chance), namedPause);
}

double namedPause(const HTTPResponse& response) {
  const auto text = headerValue(response.headers, "Retry-After");
  if (response.statusCode != 429 || !text) {
    return 0;
  }
  double seconds = 0;
  const char* const end = text->data() + text->size();
  const auto [next, error] = std::from_chars(text->data(), end, seconds);
  if (error != std::errc() || next != end) {
    const DateFormatter formatter{.format = "EEE, dd MMM yyyy HH:mm:ss 'GMT'",
                                  .timeZone = TimeZone(),
                                  .locale = Locale{"en_US"}};
    const auto date = formatter.date(*text);
    seconds = date ? date->timeIntervalSince(Date::now()) : 0;
  }
  return std::isfinite(seconds) ? std::clamp(seconds, 0.0, longestNamedPause) : 0;
}

}  // namespace corvane
