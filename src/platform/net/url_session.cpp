#include "platform/net/url_session.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/async/background_thread.h"

namespace corvane {
namespace {

constexpr long maximumRedirects = 10;
// As many as browsers keep connections to a host: more requests than this wait for their turn.
constexpr std::size_t maximumUnderWay = 8;
constexpr std::chrono::milliseconds longestPoll(1000);

using Clock = std::chrono::steady_clock;

struct FreeEasy {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using EasyHandle = std::unique_ptr<CURL, FreeEasy>;
using List = std::unique_ptr<curl_slist, FreeList>;

void append(List& list, const std::string& line) {
  curl_slist* longer = curl_slist_append(list.get(), line.c_str());
  if (longer == nullptr) {
    throw std::bad_alloc();
  }
  (void)list.release();
  list.reset(longer);
}

bool isSecure(std::string_view url) {
  constexpr std::string_view scheme = "https:";
  return std::ranges::equal(url.substr(0, scheme.size()), scheme, [](char given, char lower) {
    return given == lower || given == lower - 'a' + 'A';
  });
}

/// The file of certificate authorities that the user has named as for other programs; empty for the
/// system's. A company whose network looks into connections has authorities of its own.
std::string authoritiesFile() {
  const char* named = std::getenv("SSL_CERT_FILE");
  return named == nullptr ? "" : named;
}

URLError::Code codeFor(CURLcode result) {
  switch (result) {
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
      return URLError::Code::badURL;
    case CURLE_OPERATION_TIMEDOUT:
      return URLError::Code::timedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return URLError::Code::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return URLError::Code::cannotConnect;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return URLError::Code::connectionLost;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CACERT_BADFILE:
      return URLError::Code::secureConnectionFailed;
    case CURLE_TOO_MANY_REDIRECTS:
      return URLError::Code::tooManyRedirects;
    case CURLE_FILESIZE_EXCEEDED:
      return URLError::Code::tooLarge;
    default:
      return URLError::Code::other;
  }
}

/// One request on its way. Only the session's thread touches it.
struct Exchange {
  URLRequest request;
  URLSession::Completion completion;
  HTTPResponse response;
  EasyHandle handle;
  List headers;
  bool isTooLarge = false;
  Clock::time_point progressedAt;  ///< when it was begun, or something last arrived

  [[nodiscard]] Clock::time_point timesOutAt() const {
    return progressedAt + std::chrono::duration_cast<Clock::duration>(
                              std::chrono::duration<double>(request.timeoutSeconds));
  }

  static std::size_t receiveBody(char* bytes, std::size_t, std::size_t count, void* self) {
    auto& exchange = *static_cast<Exchange*>(self);
    exchange.progressedAt = Clock::now();
    if (exchange.response.body.size() + count > exchange.request.maximumBodySize) {
      exchange.isTooLarge = true;
      return 0;
    }
    exchange.response.body.append(bytes, count);
    return count;
  }

  static std::size_t receiveHeader(char* bytes, std::size_t, std::size_t count, void* self) {
    auto& exchange = *static_cast<Exchange*>(self);
    exchange.progressedAt = Clock::now();
    const std::string_view line(bytes, count);
    if (line.starts_with("HTTP/")) {
      // The answer after a redirect begins: what came before is not part of it.
      exchange.response.headers.clear();
      exchange.response.body.clear();
    } else if (const auto colon = line.find(':'); colon != line.npos) {
      const auto first = line.find_first_not_of(" \t\r\n", colon + 1);
      const auto last = line.find_last_not_of(" \t\r\n");
      exchange.response.headers.emplace_back(
          line.substr(0, colon), first == line.npos ? "" : line.substr(first, last - first + 1));
    }
    return count;
  }
};

}  // namespace

/// The session's thread and what it works on; shared with the tasks, which may outlive the session.
class URLSession::Transport {
 public:
  Transport(std::shared_ptr<DispatchQueue> callbackQueue, HTTPHeaders headers)
      : callbackQueue_(std::move(callbackQueue)), headers_(std::move(headers)) {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    share_ = curl_share_init();
    multi_ = curl_multi_init();
    if (initialised != CURLE_OK || share_ == nullptr || multi_ == nullptr) {
      throw std::bad_alloc();
    }
    curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    curl_share_setopt(share_, CURLSHOPT_LOCKFUNC, &lockShared);
    curl_share_setopt(share_, CURLSHOPT_UNLOCKFUNC, &unlockShared);
    curl_share_setopt(share_, CURLSHOPT_USERDATA, this);
    thread_ = startBackgroundThread([this] { run(); });
  }

  ~Transport() {
    curl_multi_cleanup(multi_);
    curl_share_cleanup(share_);
  }

  void stop() {
    isStopping_ = true;
    curl_multi_wakeup(multi_);
    thread_.join();
  }

  std::uint64_t start(URLRequest request, Completion completion) {
    auto exchange = std::make_unique<Exchange>();
    exchange->request = std::move(request);
    exchange->completion = std::move(completion);
    const std::lock_guard lock(mutex_);
    const std::uint64_t id = nextId_++;
    arrivals_.emplace(id, std::move(exchange));
    curl_multi_wakeup(multi_);
    return id;
  }

  void cancel(std::uint64_t id) {
    const std::lock_guard lock(mutex_);
    cancellations_.push_back(id);
    if (!isStopping_) {
      curl_multi_wakeup(multi_);
    }
  }

  std::vector<Cookie> cookies() {
    const EasyHandle handle(curl_easy_init());
    curl_easy_setopt(handle.get(), CURLOPT_SHARE, share_);
    curl_slist* lines = nullptr;
    curl_easy_getinfo(handle.get(), CURLINFO_COOKIELIST, &lines);
    const List owned(lines);
    std::vector<Cookie> cookies;
    for (const curl_slist* line = lines; line != nullptr; line = line->next) {
      // The seven fields of a Netscape cookie file: domain, for subdomains, path, secure, expiry,
      // name, value.
      std::array<std::string, 7> fields;
      std::string_view rest = line->data;
      for (std::string& field : fields) {
        const auto tab = rest.find('\t');
        field = rest.substr(0, tab);
        rest.remove_prefix(tab == rest.npos ? rest.size() : tab + 1);
      }
      constexpr std::string_view httpOnly = "#HttpOnly_";
      if (fields[0].starts_with(httpOnly)) {
        fields[0].erase(0, httpOnly.size());
      }
      cookies.push_back({fields[0], fields[2], fields[5], fields[6]});
    }
    return cookies;
  }

 private:
  static void lockShared(CURL*, curl_lock_data, curl_lock_access, void* self) {
    static_cast<Transport*>(self)->shareMutex_.lock();
  }
  static void unlockShared(CURL*, curl_lock_data, void* self) {
    static_cast<Transport*>(self)->shareMutex_.unlock();
  }

  void run() {
    while (!isStopping_) {
      takeOrders();
      int running = 0;
      curl_multi_perform(multi_, &running);
      finishWhatHasEnded();
      endWhatStandsStill();
      beginWhatMayStart();
      curl_multi_poll(multi_, nullptr, 0, static_cast<int>(untilNextTimeout().count()), nullptr);
    }
    takeOrders();
    while (!exchanges_.empty()) {
      end(exchanges_.begin(), cancelled(*exchanges_.begin()->second));
    }
  }

  /// Starts and cancels what other threads have asked for.
  void takeOrders() {
    std::map<std::uint64_t, std::unique_ptr<Exchange>> arrivals;
    std::vector<std::uint64_t> cancellations;
    {
      const std::lock_guard lock(mutex_);
      arrivals.swap(arrivals_);
      cancellations.swap(cancellations_);
    }
    for (auto& [id, exchange] : arrivals) {
      exchanges_.emplace(id, std::move(exchange));
      waiting_.insert(id);
    }
    beginWhatMayStart();
    for (const std::uint64_t id : cancellations) {
      if (const auto found = exchanges_.find(id); found != exchanges_.end()) {
        end(found, cancelled(*found->second));
      }
    }
  }

  /// In the order in which they came.
  void beginWhatMayStart() {
    while (!waiting_.empty() && underWay_.size() < maximumUnderWay) {
      const std::uint64_t id = *waiting_.begin();
      waiting_.erase(waiting_.begin());
      underWay_.insert(id);
      begin(*exchanges_.at(id));
    }
  }

  void endWhatStandsStill() {
    const auto now = Clock::now();
    const std::set<std::uint64_t> underWay = underWay_;
    for (const std::uint64_t id : underWay) {
      const auto found = exchanges_.find(id);
      const Exchange& exchange = *found->second;
      if (exchange.timesOutAt() <= now) {
        end(found, failure(URLError(URLError::Code::timedOut, exchange.request.url,
                                    "nothing arrived in time")));
      }
    }
  }

  [[nodiscard]] std::chrono::milliseconds untilNextTimeout() const {
    auto next = Clock::now() + longestPoll;
    for (const std::uint64_t id : underWay_) {
      next = std::min(next, exchanges_.at(id)->timesOutAt());
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
    return std::max(left, std::chrono::milliseconds(0));
  }

  void begin(Exchange& exchange) {
    exchange.progressedAt = Clock::now();
    exchange.handle.reset(curl_easy_init());
    CURL* handle = exchange.handle.get();
    const URLRequest& request = exchange.request;
    const auto set = [&](CURLoption option, auto value) {
      curl_easy_setopt(handle, option, value);
    };
    set(CURLOPT_PRIVATE, &exchange);
    set(CURLOPT_URL, request.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    // What was asked for in secret is not to be had in the open.
    set(CURLOPT_REDIR_PROTOCOLS_STR, isSecure(request.url) ? "https" : "http,https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, maximumRedirects);
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    set(CURLOPT_ACCEPT_ENCODING, "");
    set(CURLOPT_NOSIGNAL, 1L);
    if (!authoritiesFile_.empty()) {
      set(CURLOPT_CAINFO, authoritiesFile_.c_str());
    }
    set(CURLOPT_SHARE, share_);
    set(CURLOPT_COOKIEFILE, "");
    set(CURLOPT_WRITEFUNCTION, &Exchange::receiveBody);
    set(CURLOPT_WRITEDATA, &exchange);
    set(CURLOPT_HEADERFUNCTION, &Exchange::receiveHeader);
    set(CURLOPT_HEADERDATA, &exchange);
    if (request.method == "HEAD") {
      set(CURLOPT_NOBODY, 1L);
    } else if (request.method != "GET" || !request.body.empty()) {
      set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
      set(CURLOPT_POSTFIELDS, request.body.c_str());
      set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    }
    for (const auto& [name, value] : request.headers) {
      append(exchange.headers, name + ": " + value);
    }
    for (const auto& [name, value] : headers_) {
      if (!headerValue(request.headers, name)) {
        append(exchange.headers, name + ": " + value);
      }
    }
    set(CURLOPT_HTTPHEADER, exchange.headers.get());
    curl_multi_add_handle(multi_, handle);
  }

  void finishWhatHasEnded() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
      Exchange* exchange = nullptr;
      curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &exchange);
      const CURLcode result = message->data.result;
      for (auto it = exchanges_.begin(); it != exchanges_.end(); ++it) {
        if (it->second.get() == exchange) {
          end(it, outcome(*exchange, result));
          break;
        }
      }
    }
  }

  static Result<HTTPResponse> outcome(Exchange& exchange, CURLcode result) {
    if (exchange.isTooLarge) {
      return failure(URLError(URLError::Code::tooLarge, exchange.request.url, ""));
    }
    if (result != CURLE_OK) {
      return failure(URLError(codeFor(result), exchange.request.url, curl_easy_strerror(result)));
    }
    long status = 0;
    const char* url = nullptr;
    curl_easy_getinfo(exchange.handle.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(exchange.handle.get(), CURLINFO_EFFECTIVE_URL, &url);
    exchange.response.statusCode = static_cast<int>(status);
    exchange.response.url = url == nullptr ? exchange.request.url : url;
    return std::move(exchange.response);
  }

  static Result<HTTPResponse> cancelled(const Exchange& exchange) {
    return failure(URLError(URLError::Code::cancelled, exchange.request.url, ""));
  }

  using Exchanges = std::map<std::uint64_t, std::unique_ptr<Exchange>>;

  void end(Exchanges::iterator position, Result<HTTPResponse> result) {
    const std::unique_ptr<Exchange> exchange = std::move(position->second);
    waiting_.erase(position->first);
    underWay_.erase(position->first);
    exchanges_.erase(position);
    if (exchange->handle != nullptr) {
      curl_multi_remove_handle(multi_, exchange->handle.get());
    }
    callbackQueue_->async(
        [completion = std::move(exchange->completion), result = std::move(result)]() mutable {
          completion(std::move(result));
        });
  }

  const std::shared_ptr<DispatchQueue> callbackQueue_;
  const HTTPHeaders headers_;
  const std::string authoritiesFile_ = authoritiesFile();
  CURLM* multi_ = nullptr;
  CURLSH* share_ = nullptr;
  std::mutex shareMutex_;
  std::atomic<bool> isStopping_ = false;

  std::mutex mutex_;
  std::uint64_t nextId_ = 1;
  Exchanges arrivals_;
  std::vector<std::uint64_t> cancellations_;

  // Of the session's thread alone.
  Exchanges exchanges_;
  std::set<std::uint64_t> waiting_;   ///< for their turn
  std::set<std::uint64_t> underWay_;  ///< the others
  std::thread thread_;
};

struct URLSession::Task::State {
  std::weak_ptr<Transport> transport;
  std::uint64_t id;
};

void URLSession::Task::cancel() const {
  if (const auto transport = state_->transport.lock()) {
    transport->cancel(state_->id);
  }
}

URLSession::URLSession(std::shared_ptr<DispatchQueue> callbackQueue, HTTPHeaders headers)
    : transport_(std::make_shared<Transport>(std::move(callbackQueue), std::move(headers))) {}

URLSession::~URLSession() {
  transport_->stop();
}

URLSession::Task URLSession::send(URLRequest request, Completion completion) {
  const std::uint64_t id = transport_->start(std::move(request), std::move(completion));
  return Task(std::make_shared<Task::State>(Task::State{transport_, id}));
}

std::vector<Cookie> URLSession::cookies() const {
  return transport_->cookies();
}

}  // namespace corvane
