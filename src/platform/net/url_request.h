// What is sent to a web server, what it answers, and why it did not.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/error.h"

namespace corvane {

/// Names and values of HTTP headers in their order. Names are compared without regard to case.
using HTTPHeaders = std::vector<std::pair<std::string, std::string>>;

/// The value of the last header called `name`.
[[nodiscard]] std::optional<std::string> headerValue(const HTTPHeaders& headers,
                                                     std::string_view name);

struct URLRequest {
  std::string url;  ///< http or https
  std::string method = "GET";
  HTTPHeaders headers = {};  ///< in place of the session's, where it has some of the same name
  std::string body = {};
  double timeoutSeconds = 60;  ///< without progress, once it is under way
  std::size_t maximumBodySize = std::size_t{64} << 20;
};

struct HTTPResponse {
  std::string url;  ///< after all redirects
  int statusCode = 0;
  HTTPHeaders headers;
  std::string body;
};

/// Why there is no answer. An answer with an unwelcome status code is an answer.
class URLError : public ErrorValue<URLError> {
 public:
  enum class Code {
    badURL,
    timedOut,
    cannotFindHost,
    cannotConnect,
    connectionLost,
    secureConnectionFailed,
    tooManyRedirects,
    tooLarge,
    cancelled,
    other
  };

  URLError(Code errorCode, std::string requested, std::string text)
      : code(errorCode), url(std::move(requested)), details(std::move(text)) {}

  Code code;
  std::string url;
  std::string details;  ///< the transport's own words, for logs

  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] bool hasSameValues(const URLError& other) const {
    return code == other.code && url == other.url;
  }
};

}  // namespace corvane
