// A market-data service on the loopback interface that answers as a test has scripted it.
#pragma once

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "marketdata/yahoo/wire/yahoo_service.h"
#include "support/deadline.h"

namespace corvane::testing {

/// Answers each path with the script that the test has given for it; hands out a cookie and the
/// crumb "x/y.Z+1" until it is told otherwise.
class YahooLoopbackService {
 public:
  struct Answer {
    std::string body = {};
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers = {};
    bool dropsConnection = false;  ///< after half of the body
  };
  struct Request {
    std::string path;
    std::string target;  ///< path and query as they came
    std::string userAgent;
    std::string accept;
    std::string cookie;
  };

  static constexpr const char* cookiesPath = "/%20";
  static constexpr const char* crumbPath = "/v1/test/getcrumb";
  static constexpr const char* quotePath = "/v7/finance/quote";
  static constexpr const char* searchPath = "/v1/finance/search";
  static constexpr const char* chartPath = "/v8/finance/chart/";  ///< whatever the symbol is

  YahooLoopbackService() {
    script(cookiesPath, {cookie()});
    script(crumbPath, {{.body = "x/y.Z+1"}});
    server_.Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
      handle(request, response);
    });
    server_.new_task_queue = [] { return new httplib::ThreadPool(16); };
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) {
      std::this_thread::yield();
    }
  }
  ~YahooLoopbackService() {
    release();
    server_.stop();
    thread_.join();
  }

  static Answer cookie() { return {.status = 404, .headers = {{"Set-Cookie", "A3=d; Path=/"}}}; }

  /// The answers for `path`, one after the other; the last one is for all further requests.
  void script(const std::string& path, std::deque<Answer> answers) {
    const std::lock_guard lock(mutex_);
    scripts_[path] = std::move(answers);
  }

  /// Lets requests for `path` wait until release().
  void hold(const std::string& path) {
    const std::lock_guard lock(mutex_);
    held_ = path;
  }
  void release() {
    const std::lock_guard lock(mutex_);
    held_.reset();
    released_.notify_all();
  }

  /// What has come in for `path`, the chart's for every symbol.
  [[nodiscard]] std::vector<Request> requests(const std::string& path) {
    const std::lock_guard lock(mutex_);
    std::vector<Request> found;
    for (const Request& request : requests_) {
      if (request.path == path) {
        found.push_back(request);
      }
    }
    return found;
  }

  /// The settings that lead here, with pauses that a test can wait for.
  [[nodiscard]] YahooService service() const {
    return {.scheme = "http",
            .apiHost = "127.0.0.1",
            .webHost = "127.0.0.1",
            .port = port_,
            .userAgent = "Test/1",
            .pauses = {.first = 0.02, .longest = 0.1, .untilRequestsEndThem = 0.05}};
  }

 private:
  void handle(const httplib::Request& request, httplib::Response& response) {
    std::string path = request.target.substr(0, request.target.find('?'));
    if (path.starts_with(chartPath)) {
      path = chartPath;
    }
    std::unique_lock lock(mutex_);
    requests_.push_back({path, request.target, request.get_header_value("User-Agent"),
                         request.get_header_value("Accept"), request.get_header_value("Cookie")});
    released_.wait_for(lock, deadline, [&] { return held_ != path; });
    auto& answers = scripts_[path];
    const Answer answer = answers.empty() ? Answer{.status = 404} : answers.front();
    if (answers.size() > 1) {
      answers.pop_front();
    }
    lock.unlock();
    response.status = answer.status;
    for (const auto& [name, value] : answer.headers) {
      response.set_header(name.c_str(), value);
    }
    if (answer.dropsConnection) {
      response.set_content_provider(
          answer.body.size(), "application/json",
          [body = answer.body](std::size_t, std::size_t, httplib::DataSink& sink) {
            sink.write(body.data(), body.size() / 2);
            return false;
          });
    } else {
      response.set_content(answer.body, "application/json");
    }
  }

  httplib::Server server_;
  std::thread thread_;
  int port_ = 0;
  std::mutex mutex_;
  std::condition_variable released_;
  std::optional<std::string> held_;
  std::map<std::string, std::deque<Answer>> scripts_;
  std::vector<Request> requests_;
};

}  // namespace corvane::testing
