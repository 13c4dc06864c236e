// Requests to web servers, with cookies that they share.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/async/dispatch_queue.h"
#include "platform/error.h"
#include "platform/net/url_request.h"

namespace corvane {

/// A cookie that a session has been given.
struct Cookie {
  std::string domain;
  std::string path;
  std::string name;
  std::string value;
  friend bool operator==(const Cookie&, const Cookie&) = default;
};

/// Sends requests from one thread of its own, eight at a time; more wait for their turn, which does
/// not count towards their timeout. Cookies live in memory as long as the session and travel with
/// all of its requests. Redirects are followed, up to ten, but never from https to http; only these
/// two are spoken; certificates are verified, against the authorities of the file that
/// SSL_CERT_FILE names where the environment has it; compressed answers are unpacked. Any thread.
class URLSession {
 public:
  using Completion = std::move_only_function<void(Result<HTTPResponse>)>;

  /// A request under way. Letting go of it does not end the request.
  class Task {
   public:
    /// Ends the request with URLError::Code::cancelled, unless it has ended.
    void cancel() const;

   private:
    friend class URLSession;
    struct State;
    explicit Task(std::shared_ptr<State> state) : state_(std::move(state)) {}
    std::shared_ptr<State> state_;
  };

  /// `headers` go with every request, such as a User-Agent. Completions run on `callbackQueue`.
  explicit URLSession(std::shared_ptr<DispatchQueue> callbackQueue, HTTPHeaders headers = {});
  URLSession(const URLSession&) = delete;
  URLSession& operator=(const URLSession&) = delete;
  /// Cancels all requests that are under way.
  ~URLSession();

  /// Starts a request. `completion` runs exactly once, later, with an answer or a URLError.
  Task send(URLRequest request, Completion completion);

  [[nodiscard]] std::vector<Cookie> cookies() const;

 private:
  class Transport;
  std::shared_ptr<Transport> transport_;
};

}  // namespace corvane
