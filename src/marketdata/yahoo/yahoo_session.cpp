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
constexpr std::chrono::minutes betweenRenewals{10};
constexpr int tooManyRequests = 429;

bool refusesCrumb(const Result<HTTPResponse>& response) {
  return response && response->statusCode == 401 &&
         (response->body.find("Invalid Crumb") != std::string::npos ||
          response->body.find("Invalid Cookie") != std::string::npos);
}

double chanceFromZeroToOne() {
  std::random_device random;
  return std::uniform_real_distribution<double>(0, 1)(random);
}

/// Whether `error` says that no service has been found where it should be.
bool isOutOfReach(const Error& error) {
  const auto* transport = dynamic_cast<const URLError*>(&error);
  return transport != nullptr && (transport->code == URLError::Code::cannotFindHost ||
                                  transport->code == URLError::Code::cannotConnect ||
                                  transport->code == URLError::Code::secureConnectionFailed);
}

ErrorPointer bootstrapFailed(std::string text) {
  return YahooProviderError(YahooProviderError::BootstrapFailed{std::move(text)}).copy();
}

ErrorPointer refusalForAPause() {
  return YahooProviderError(YahooProviderError::HTTPResponse{tooManyRequests}).copy();
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
  if (secondsOfNamedPause() > service_.pauses.requestLimit) {
    callbackQueue_->async([waiting = std::move(waiting)]() mutable {
      waiting.completion(std::unexpected(refusalForAPause()));
    });
    return;
  }
  putInWait(std::move(waiting));
  if (access_ == Access::asked) {
    hasComeWhileAsking_ = true;
  } else {
    const double pause = std::chrono::duration<double>(Clock::now() - refusedAt_).count();
    askAgainAfter(std::max(0.0, pauseForRequests() - pause), refusals_);
  }
}

void YahooSession::putInWait(WaitingRequest waiting) {
  const std::uint64_t id = nextWaitingId_++;
  waiting_.emplace(id, std::move(waiting));
  DispatchQueue::global()->asyncAfter(DispatchQueue::Duration(service_.pauses.requestLimit),
                                      [weakSelf = weak_from_this(), id] {
                                        if (const auto self = weakSelf.lock()) {
                                          self->giveUp(id);
                                        }
                                      });
}

double YahooSession::pauseForRequests() const {
  return std::max(service_.pauses.untilRequestsEndThem, namedPause_);
}

void YahooSession::send(std::string label, URLRequest request, Completion completion,
                        Purpose purpose) {
  const double pause = secondsOfPause();
  if (pause <= 0) {
    transmit(std::move(label), std::move(request), std::move(completion), purpose);
    return;
  }
  if (pause > service_.pauses.requestLimit) {
    callbackQueue_->async([completion = std::move(completion)]() mutable {
      HTTPResponse refusal;
      refusal.statusCode = tooManyRequests;
      completion(std::move(refusal));
    });
    return;
  }
  DispatchQueue::global()->asyncAfter(
      DispatchQueue::Duration(pause),
      [weakSelf = weak_from_this(), label = std::move(label), request = std::move(request),
       completion = std::move(completion), purpose]() mutable {
        if (const auto self = weakSelf.lock()) {
          self->send(std::move(label), std::move(request), std::move(completion), purpose);
        } else {
          completion(
              failure(URLError(URLError::Code::cancelled, request.url, "the session has ended")));
        }
      });
}

void YahooSession::transmit(std::string label, URLRequest request, Completion completion,
                            Purpose purpose) {
  std::optional<NetworkActivityMonitor::Activity> activity;
  if (NetworkActivityMonitor::isOn()) {
    activity.emplace().name = std::move(label);
    NetworkActivityMonitor::post(*activity, request.url, std::nullopt);
  }
  session_.send(std::move(request),
                [weakSelf = weak_from_this(), purpose, activity = std::move(activity),
                 completion = std::move(completion)](Result<HTTPResponse> response) mutable {
                  if (activity) {
                    NetworkActivityMonitor::post(
                        *activity, std::nullopt,
                        response ? std::optional(response->body) : std::nullopt);
                  }
                  const auto self = weakSelf.lock();
                  // Refusals of access are followed by pauses of their own.
                  if (self != nullptr && response && purpose == Purpose::data) {
                    self->notePauses(*response);
                  }
                  completion(std::move(response));
                });
}

/// Of several requests that are refused together the first counts.
void YahooSession::notePauses(const HTTPResponse& response) {
  const std::lock_guard lock(mutex_);
  if (response.statusCode != tooManyRequests) {
    pausesAskedFor_ = isSuccess(response.statusCode) ? 0 : pausesAskedFor_;
    return;
  }
  const auto now = Clock::now();
  if (now < pauseEnd_) {
    return;
  }
  const double pause = pauseAfterRefusal(service_.pauses, ++pausesAskedFor_, namedPause(response),
                                         chanceFromZeroToOne());
  pauseEnd_ =
      now + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(pause));
}

double YahooSession::secondsOfPause() const {
  const std::lock_guard lock(mutex_);
  return std::chrono::duration<double>(pauseEnd_ - Clock::now()).count();
}

double YahooSession::secondsOfNamedPause() const {
  return access_ == Access::refused && namedPause_ > 0
             ? namedPause_ - std::chrono::duration<double>(Clock::now() - refusedAt_).count()
             : 0;
}

std::optional<Date> YahooSession::pauseEnd() const {
  double pause = secondsOfPause();
  {
    const std::lock_guard lock(mutex_);
    pause = std::max(pause, secondsOfNamedPause());
  }
  return pause > 0 ? std::optional(Date::now() + pause) : std::nullopt;
}

void YahooSession::sendWithCrumb(WaitingRequest waiting) {
  sessionQueue_->async([self = shared_from_this(), waiting = std::move(waiting)]() mutable {
    std::string crumb;
    {
      const std::lock_guard lock(self->mutex_);
      crumb = self->sessionCrumb_;
    }
    URLRequest request = waiting.request;
    request.url = withCrumb(request.url, crumb);
    std::string label = waiting.label;
    self->send(std::move(label), std::move(request),
               [weakSelf = self->weak_from_this(), crumb,
                waiting = std::move(waiting)](Result<HTTPResponse> response) mutable {
                 const auto living = weakSelf.lock();
                 if (living == nullptr || !refusesCrumb(response) ||
                     !living->repeatWithNewCrumb(crumb, waiting)) {
                   waiting.completion(std::move(response));
                 }
               });
  });
}

bool YahooSession::repeatWithNewCrumb(const std::string& refused, WaitingRequest& waiting) {
  if (waiting.isRepeated) {
    return false;
  }
  std::unique_lock lock(mutex_);
  const bool isTheLatest = access_ == Access::granted && sessionCrumb_ == refused;
  const auto now = Clock::now();
  if (isTheLatest && crumbRenewedAt_ && now - *crumbRenewedAt_ < betweenRenewals) {
    return false;
  }
  waiting.isRepeated = true;
  if (access_ == Access::granted && !isTheLatest) {
    lock.unlock();
    sendWithCrumb(std::move(waiting));
    return true;
  }
  putInWait(std::move(waiting));
  if (isTheLatest) {
    crumbRenewedAt_ = now;
    access_ = Access::asked;
    lock.unlock();
    askForCookies();
  }
  return true;
}

void YahooSession::askForCookies() {
  URLRequest request =
      requestFor(YahooFinanceAPI::cookiesURL(service_),
                 {{"Accept", "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8"}});
  send(
      "Fetch Yahoo cookies", std::move(request),
      [weakSelf = weak_from_this()](Result<HTTPResponse> response) {
        if (const auto self = weakSelf.lock()) {
          self->receiveCookies(std::move(response));
        }
      },
      Purpose::access);
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
  send(
      "Fetch Yahoo crumb", std::move(request),
      [weakSelf = weak_from_this()](Result<HTTPResponse> response) {
        if (const auto self = weakSelf.lock()) {
          self->receiveCrumb(std::move(response));
        }
      },
      Purpose::access);
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
    attemptsWithoutNetwork_ = 0;
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
  const double chance = chanceFromZeroToOne();
  const bool isLongPause = namedPause > service_.pauses.requestLimit;
  std::map<std::uint64_t, WaitingRequest> hopeless;
  {
    const std::lock_guard lock(mutex_);
    attemptsWithoutNetwork_ = isOutOfReach(*error) ? attemptsWithoutNetwork_ + 1 : 0;
    if (isLongPause || attemptsWithoutNetwork_ >= service_.pauses.attemptsWithoutNetwork) {
      hopeless.swap(waiting_);
    }
    noteRefusal(text, namedPause, chance);
  }
  for (auto& [id, waiting] : hopeless) {
    waiting.completion(std::unexpected(isLongPause ? refusalForAPause() : error));
  }
}

void YahooSession::noteRefusal(const std::string& text, double namedPause, double chance) {
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
