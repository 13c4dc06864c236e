#include "samplemarket/sample_market.h"

#include <httplib.h>
#include <sys/socket.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "samplemarket/service/access.h"
#include "samplemarket/service/answer.h"
#include "samplemarket/service/faults.h"

namespace corvane {

namespace {

using samplemarket::Answer;
using Fault = SampleMarketFault;

constexpr const char* loopback = "127.0.0.1";
constexpr std::string_view chartPath = "/v8/finance/chart/";
constexpr std::string_view quotePath = "/v7/finance/quote";
constexpr std::string_view searchPath = "/v1/finance/search";
constexpr std::string_view crumbPath = "/v1/test/getcrumb";
/// "/%20" once it is decoded.
constexpr std::string_view cookiePath = "/ ";
constexpr std::string_view plainText = "text/plain;charset=utf-8";
constexpr std::size_t requestsKept = 10000;
/// More than clients of one machine have open: slow answers keep theirs.
constexpr std::size_t threads = 64;

std::vector<std::string> splitAtCommas(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find(',', start), text.size());
    if (end > start) {
      parts.push_back(text.substr(start, end - start));
    }
    start = end + 1;
  }
  return parts;
}

std::vector<std::string> symbolsIn(const httplib::Request& request) {
  if (request.path.starts_with(chartPath)) {
    return {request.path.substr(chartPath.size())};
  }
  return splitAtCommas(request.get_param_value("symbols"));
}

bool matches(const SampleMarket::Request& request, std::string_view pathPrefix,
             std::string_view symbol) {
  return request.path.starts_with(pathPrefix) &&
         (symbol.empty() || std::ranges::find(request.symbols, symbol) != request.symbols.end());
}

void write(const Answer& answer, httplib::Response& response) {
  response.status = answer.status;
  for (const auto& [name, value] : answer.headers) {
    response.set_header(name, value);
  }
  response.set_content(answer.body, answer.contentType);
}

void dropConnection(httplib::Response& response) {
  constexpr std::size_t promised = 1000;
  response.set_content_provider(promised, "application/json",
                                [](std::size_t, std::size_t, httplib::DataSink&) { return false; });
}

}  // namespace

struct SampleMarket::Service {
  explicit Service(Options chosen)
      : options(std::move(chosen)), faults(options.faultsPerThousand, options.faultSeed) {
    // A connection for each request: an idle one would hold up the end of the server.
    server.set_keep_alive_max_count(1);
    server.set_tcp_nodelay(true);
    server.new_task_queue = [] { return new httplib::ThreadPool(threads); };
    // Patterns are matched against the decoded path, so symbols may hold anything.
    server.Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
      serve(request, response);
    });
    listen();
    thread = std::thread([this] { server.listen_after_bind(); });
    while (!server.is_running()) {
      std::this_thread::yield();
    }
  }

  ~Service() {
    releaseSlowAnswers(true);
    server.stop();
    thread.join();
  }

  /// Takes the port, with a queue that holds a burst of clients: a connection that doesn't fit into
  /// it is tried again after a second only.
  void listen() {
    socket_t listener = INVALID_SOCKET;
    server.set_socket_options([&listener](socket_t made) {
      listener = made;
      const int yes = 1;
      ::setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    port = options.port == 0                             ? server.bind_to_any_port(loopback)
           : server.bind_to_port(loopback, options.port) ? options.port
                                                         : -1;
    if (port < 0 || ::listen(listener, SOMAXCONN) != 0) {
      throw SampleMarketError("The port " + std::to_string(options.port) + " cannot be used.");
    }
  }

  [[nodiscard]] std::int64_t now() const {
    const Date date = options.clock ? options.clock() : Date::now();
    return static_cast<std::int64_t>(date.timeIntervalSince1970());
  }

  void releaseSlowAnswers(bool forGood) {
    const std::lock_guard lock(mutex);
    ++releases;
    isEnding = isEnding || forGood;
    changed.notify_all();
  }

  void waitBeforeAnswer(std::chrono::milliseconds delay) {
    std::unique_lock lock(mutex);
    const int releasesBefore = releases;
    changed.wait_for(lock, delay, [&] { return isEnding || releases != releasesBefore; });
  }

  void serve(const httplib::Request& request, httplib::Response& response) {
    const std::vector<std::string> symbols = symbolsIn(request);
    countArrival(request, symbols);
    const auto fault = faults.next(request.path, symbols);
    if (fault && fault->fault == Fault::staleCrumb) {
      access.expireCrumb();
    }
    if (fault && fault->fault == Fault::slowAnswer) {
      waitBeforeAnswer(fault->delay);
    }
    int status = 0;
    if (fault && fault->fault == Fault::droppedConnection) {
      dropConnection(response);
    } else {
      Answer answer = rightAnswer(request, symbols, fault && fault->fault == Fault::nullBars);
      if (fault) {
        answer = samplemarket::spoiled(std::move(answer), *fault);
      }
      status = answer.status;
      write(answer, response);
    }
    recordAnswer(request, symbols, status);
  }

  Answer rightAnswer(const httplib::Request& request, const std::vector<std::string>& symbols,
                     bool omitsBars) {
    const std::string& path = request.path;
    if (path == cookiePath) {
      // The real page is an error page too, and sets its cookies all the same.
      return {.status = 404,
              .body = "<!DOCTYPE html><title>Sample market</title>\n",
              .contentType = "text/html;charset=utf-8",
              .headers = {{"Set-Cookie", access.cookieToSet()}}};
    }
    if (path == crumbPath) {
      return access.holdsCookie(request.get_header_value("Cookie"))
                 ? Answer{.body = access.crumb(), .contentType = std::string(plainText)}
                 : Answer{.status = 401,
                          .body = "A cookie is needed",
                          .contentType = std::string(plainText)};
    }
    if (path.starts_with(chartPath)) {
      return samplemarket::chartAnswer(
          market,
          {.symbol = symbols.front(),
           .period1 = request.get_param_value("period1"),
           .period2 = request.get_param_value("period2"),
           .interval = request.get_param_value("interval"),
           .events = request.get_param_value("events"),
           .includesPrePost = request.get_param_value("includePrePost") == "true"},
          now(), omitsBars);
    }
    if (path == quotePath) {
      if (!access.holdsCookie(request.get_header_value("Cookie"))) {
        return samplemarket::errorAnswer(401, "finance", "Unauthorized", "A cookie is needed");
      }
      if (request.get_param_value("crumb") != access.crumb()) {
        return samplemarket::errorAnswer(401, "finance", "Unauthorized", "Invalid Crumb");
      }
      return samplemarket::quoteAnswer(market, symbols, now());
    }
    if (path == searchPath) {
      return samplemarket::searchAnswer(request.get_param_value("q"));
    }
    return {.status = 404, .body = "Not found\n", .contentType = std::string(plainText)};
  }

  void countArrival(const httplib::Request& request, const std::vector<std::string>& symbols) {
    const std::lock_guard lock(mutex);
    ++arrivals[{request.path, symbols}];
    changed.notify_all();
  }

  void recordAnswer(const httplib::Request& request, const std::vector<std::string>& symbols,
                    int status) {
    const std::size_t queryStart = std::min(request.target.find('?'), request.target.size() - 1);
    const std::lock_guard lock(mutex);
    answered.push_back({request.path, symbols, request.target.substr(queryStart + 1), status});
    if (answered.size() > requestsKept) {
      answered.pop_front();
    }
  }

  /// To be called with the lock held.
  [[nodiscard]] int arrivalCount(std::string_view pathPrefix, std::string_view symbol) const {
    int count = 0;
    for (const auto& [request, times] : arrivals) {
      if (matches({request.first, request.second, {}, 0}, pathPrefix, symbol)) {
        count += times;
      }
    }
    return count;
  }

  const Options options;
  samplemarket::MarketData market;
  samplemarket::Access access;
  samplemarket::Faults faults;
  httplib::Server server;
  std::thread thread;
  int port = 0;

  std::mutex mutex;
  std::condition_variable changed;
  int releases = 0;
  bool isEnding = false;
  std::map<std::pair<std::string, std::vector<std::string>>, int> arrivals;
  std::deque<Request> answered;
};

SampleMarket::SampleMarket(Options options)
    : service_(std::make_unique<Service>(std::move(options))) {}

SampleMarket::~SampleMarket() = default;

std::string SampleMarket::host() const {
  return loopback;
}

int SampleMarket::port() const {
  return service_->port;
}

std::string SampleMarket::baseURL() const {
  return "http://" + host() + ":" + std::to_string(port());
}

void SampleMarket::addFault(FaultRule rule) {
  service_->faults.add(std::move(rule));
}

void SampleMarket::clearFaults() {
  service_->faults.clear();
  releaseSlowAnswers();
}

void SampleMarket::releaseSlowAnswers() {
  service_->releaseSlowAnswers(false);
}

void SampleMarket::expireCrumb() {
  service_->access.expireCrumb();
}

void SampleMarket::addSplit(std::string_view symbol, Date date, int numerator, int denominator) {
  const auto time = static_cast<std::int64_t>(date.timeIntervalSince1970());
  if (!service_->market.addSplit(symbol, time, {numerator, denominator})) {
    throw SampleMarketError("There is no such split of " + std::string(symbol) + ".");
  }
}

int SampleMarket::requestCount(std::string_view pathPrefix, std::string_view symbol) const {
  const std::lock_guard lock(service_->mutex);
  return service_->arrivalCount(pathPrefix, symbol);
}

std::vector<SampleMarket::Request> SampleMarket::requests() const {
  const std::lock_guard lock(service_->mutex);
  return {service_->answered.begin(), service_->answered.end()};
}

bool SampleMarket::waitForRequests(int count, std::string_view pathPrefix, std::string_view symbol,
                                   std::chrono::milliseconds deadline) {
  std::unique_lock lock(service_->mutex);
  return service_->changed.wait_for(
      lock, deadline, [&] { return service_->arrivalCount(pathPrefix, symbol) >= count; });
}

}  // namespace corvane
