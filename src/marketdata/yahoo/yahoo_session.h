// Requests to the market-data service, and the access that some of them need.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "marketdata/yahoo/wire/yahoo_service.h"
#include "platform/async/dispatch_queue.h"
#include "platform/net/url_session.h"
#include "platform/time/date.h"

namespace corvane {

/// The session with the service: its cookies, its crumb, and the requests that wait for the crumb.
///
/// The crumb is a short token that the service hands out to a client that already holds its
/// cookies. start() asks for both. A refusal is followed by a pause, and then they are asked for
/// again: after growing pauses, drawn at random within a quarter of their length so that many
/// clients do not come at one time, and once sooner for each request that needs the crumb, but
/// never before the end of a wait that the service itself has named with a status of 429. While the
/// service cannot be reached at all, requests that wait for the crumb end with that error after a
/// few attempts, and with a status of 429 where such a wait is longer than theirs may be: nobody is
/// kept waiting for access in vain. Crumb and
/// cookies are kept in memory only. A program may run for longer than they are good for: when the
/// service refuses the crumb they are asked for anew, at most once in ten minutes, and the request
/// that was refused is repeated once.
///
/// An answer of 429 to any request pauses all of them: for as long as the service says, or for a
/// time that doubles with every further such answer. Requests wait for the end of a short pause; in
/// a long one they fail with a status of 429. Any thread.
class YahooSession : public std::enable_shared_from_this<YahooSession> {
 public:
  using Completion = URLSession::Completion;

  explicit YahooSession(YahooService service);
  YahooSession(const YahooSession&) = delete;
  YahooSession& operator=(const YahooSession&) = delete;
  /// Cancels all requests, also those that wait for the crumb.
  ~YahooSession();

  /// When the service may be asked again; none where that is now.
  [[nodiscard]] std::optional<Date> pauseEnd() const;

  [[nodiscard]] const YahooService& service() const { return service_; }

  /// Asks for the cookies and the crumb. To be called once.
  void start();

  /// Sends `request` and logs it as `label` while network activity is logged. With `includeCrumb`
  /// it starts when there is a crumb, which becomes its first query item, and fails with
  /// YahooProviderError::BootstrapFailed when it has waited too long for one. `completion` runs
  /// exactly once, later, on a background queue.
  void runRequest(std::string label, URLRequest request, bool includeCrumb, Completion completion);

 private:
  using Clock = std::chrono::steady_clock;
  enum class Access { asked, refused, granted };
  struct WaitingRequest {
    std::string label;
    URLRequest request;
    Completion completion;
    bool isRepeated = false;
  };
  enum class Purpose { access, data };

  void send(std::string label, URLRequest request, Completion completion,
            Purpose purpose = Purpose::data);
  /// Sends at once.
  void transmit(std::string label, URLRequest request, Completion completion, Purpose purpose);
  void notePauses(const HTTPResponse& response);
  [[nodiscard]] double secondsOfPause() const;
  /// What is left of the wait that the service has named when it refused access. To be called with
  /// the lock held.
  [[nodiscard]] double secondsOfNamedPause() const;
  /// To be called with the lock held.
  void putInWait(WaitingRequest waiting);
  /// Whether `waiting`, whose crumb was refused, is taken over to be sent once more.
  bool repeatWithNewCrumb(const std::string& refused, WaitingRequest& waiting);
  void sendWithCrumb(WaitingRequest waiting);

  void askForCookies();
  void receiveCookies(Result<HTTPResponse> response);
  void askForCrumb();
  void receiveCrumb(Result<HTTPResponse> response);
  void grantAccess(std::string crumb);
  void refuseAccess(const ErrorPointer& error, double namedPause);
  /// To be called with the lock held.
  void noteRefusal(const std::string& text, double namedPause, double chance);

  /// Lets access be asked for again when `pause` seconds have passed, unless that has happened by
  /// then.
  void askAgainAfter(double pause, std::uint64_t refusal);
  /// Seconds after a refusal at which a request may have access asked for again.
  [[nodiscard]] double pauseForRequests() const;
  void giveUp(std::uint64_t waitingId);

  const YahooService service_;
  const std::shared_ptr<DispatchQueue> callbackQueue_;
  /// Where requests with the crumb start; inactive until there is one. Until then they wait in
  /// waiting_ and not in the queue itself, so that they can be given up.
  const std::shared_ptr<DispatchQueue> sessionQueue_;

  mutable std::mutex mutex_;
  Access access_ = Access::asked;
  std::string sessionCrumb_;  ///< written before sessionQueue_ is activated, and when renewed
  std::optional<Clock::time_point> crumbRenewedAt_;
  std::uint64_t pausesAskedFor_ = 0;  ///< since the last success
  Clock::time_point pauseEnd_;
  std::uint64_t refusals_ = 0;
  Clock::time_point refusedAt_;
  double namedPause_ = 0;            ///< seconds after refusedAt_ in which nothing may be asked
  bool hasComeWhileAsking_ = false;  ///< a request that no attempt has been made for since
  int attemptsWithoutNetwork_ = 0;   ///< in a row
  std::string refusalText_;
  std::uint64_t nextWaitingId_ = 0;
  std::map<std::uint64_t, WaitingRequest> waiting_;

  URLSession session_;
};

/// Seconds to wait after so many refusals in a row, of which the service named `namedPause` for the
/// last one (0 for none). `chance` is from 0 to 1.
[[nodiscard]] double pauseAfterRefusal(const YahooService::Pauses& pauses, std::uint64_t refusals,
                                       double namedPause, double chance);

/// The wait that a response of status 429 names in its Retry-After header, as seconds or as an HTTP
/// date, but not more than a day; 0 for every other one.
[[nodiscard]] double namedPause(const HTTPResponse& response);

}  // namespace corvane
