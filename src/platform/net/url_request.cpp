#include "platform/net/url_request.h"

#include <algorithm>
#include <ranges>

namespace corvane {
namespace {

char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

}  // namespace

std::optional<std::string> headerValue(const HTTPHeaders& headers, std::string_view name) {
  for (const auto& [key, value] : headers | std::views::reverse) {
    if (std::ranges::equal(key, name, {}, lowerCase, lowerCase)) {
      return value;
    }
  }
  return std::nullopt;
}

std::optional<std::string> URLError::description() const {
  switch (code) {
    case Code::badURL:
      return "The address is not valid.";
    case Code::timedOut:
      return "The request timed out.";
    case Code::cannotFindHost:
      return "The server could not be found.";
    case Code::cannotConnect:
      return "Could not connect to the server.";
    case Code::connectionLost:
      return "The network connection was lost.";
    case Code::secureConnectionFailed:
      return "A secure connection to the server could not be made.";
    case Code::tooManyRedirects:
      return "The server redirected the request too often.";
    case Code::tooLarge:
      return "The answer of the server is too large.";
    case Code::cancelled:
      return "The request was cancelled.";
    case Code::other:
      return "The request failed: " + details + ".";
  }
  __builtin_unreachable();
}

}  // namespace corvane
