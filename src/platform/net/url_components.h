// The parts of a URL.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// A URL in parts, each without percent encoding. Put together, every part is encoded as RFC 3986
/// says for its place, so that a symbol such as "^GSPC" or a text with "&" arrives as it is.
struct URLComponents {
  struct QueryItem {
    std::string name;
    std::optional<std::string> value;  ///< without one there is no "="
    friend bool operator==(const QueryItem&, const QueryItem&) = default;
  };

  std::string scheme = {};
  std::optional<std::string> user = {};  ///< with a password after a colon, where there is one
  std::optional<std::string> host = {};  ///< an IPv6 address in its brackets
  std::optional<int> port = {};
  std::string path = {};
  std::optional<std::vector<QueryItem>> queryItems = {};
  std::optional<std::string> fragment = {};

  /// The parts of `url`, decoded. None where it is no URL: characters that a URL does not have, a
  /// percent sign without two hexadecimal digits, a port that is none. A "+" in a query stays one.
  [[nodiscard]] static std::optional<URLComponents> parse(std::string_view url);

  /// The URL. In query items "+" is encoded too, since servers that decode forms read it as a
  /// blank. None where the parts make no URL: a host or scheme with characters that it cannot have,
  /// a port out of range, a path beside a host that does not start with a slash.
  [[nodiscard]] std::optional<std::string> string() const;

  friend bool operator==(const URLComponents&, const URLComponents&) = default;
};

}  // namespace corvane
