#include "platform/net/url_components.h"

#include <algorithm>
#include <charconv>

namespace corvane {
namespace {

bool isAlphanumeric(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isOneOf(char c, std::string_view characters) {
  return characters.find(c) != characters.npos;
}

// RFC 3986, section 2.3 and appendix A.
constexpr std::string_view unreservedMarks = "-._~";
constexpr std::string_view subDelimiters = "!$&'()*+,;=";

struct Allowed {
  std::string_view marks;
  bool operator()(char c) const {
    return isAlphanumeric(c) || isOneOf(c, unreservedMarks) || isOneOf(c, marks);
  }
};

constexpr Allowed inUser{"!$&'()*+,;=:"};
constexpr Allowed inHost{subDelimiters};
constexpr Allowed inPath{"!$&'()*+,;=:@/"};
constexpr Allowed inQueryItem{"!$'()*,;:@/?"};  // without what parts items, and without "+"
constexpr Allowed inFragment{"!$&'()*+,;=:@/?"};

std::string encoded(std::string_view text, Allowed isAllowed) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string result;
  for (const char c : text) {
    if (isAllowed(c)) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += '%';
      result += digits[byte >> 4];
      result += digits[byte & 15];
    }
  }
  return result;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> decoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    if (i + 2 >= text.size() || hexValue(text[i + 1]) < 0 || hexValue(text[i + 2]) < 0) {
      return std::nullopt;
    }
    result += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
    i += 2;
  }
  return result;
}

bool isScheme(std::string_view text) {
  return !text.empty() && isAlphanumeric(text.front()) && !(text.front() <= '9') &&
         std::ranges::all_of(text, [](char c) { return isAlphanumeric(c) || isOneOf(c, "+-."); });
}

bool isAddressInBrackets(std::string_view host) {
  return host.size() > 2 && host.front() == '[' && host.back() == ']' &&
         std::ranges::all_of(host.substr(1, host.size() - 2),
                             [](char c) { return hexValue(c) >= 0 || isOneOf(c, ":."); });
}

/// The part of `text` in front of the first of `separators`, which is taken off together with it.
std::string_view takeUntil(std::string_view& text, std::string_view separators) {
  const std::string_view part = text.substr(0, text.find_first_of(separators));
  text.remove_prefix(part.size());
  return part;
}

bool parseAuthority(std::string_view authority, URLComponents& url) {
  if (const auto at = authority.rfind('@'); at != authority.npos) {
    url.user = decoded(authority.substr(0, at));
    if (!url.user) {
      return false;
    }
    authority.remove_prefix(at + 1);
  }
  const auto bracket = authority.rfind(']');
  const auto colon = authority.find(':', bracket == authority.npos ? 0 : bracket);
  const std::string_view host = authority.substr(0, colon);
  if (host.starts_with('[') ? !isAddressInBrackets(host) : isOneOf(']', host)) {
    return false;
  }
  url.host = decoded(host);
  if (!url.host) {
    return false;
  }
  const std::string_view port = colon == authority.npos ? "" : authority.substr(colon + 1);
  if (!port.empty()) {
    int number = 0;
    const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
    if (error != std::errc() || end != port.data() + port.size() || number < 0 || number > 65535) {
      return false;
    }
    url.port = number;
  }
  return true;
}

bool parseQuery(std::string_view query, URLComponents& url) {
  url.queryItems.emplace();
  while (!query.empty()) {
    std::string_view item = takeUntil(query, "&");
    query.remove_prefix(query.empty() ? 0 : 1);
    const auto name = decoded(takeUntil(item, "="));
    const auto value = item.empty() ? std::nullopt : decoded(item.substr(1));
    if (!name || (!item.empty() && !value)) {
      return false;
    }
    url.queryItems->push_back({*name, value});
  }
  return true;
}

}  // namespace

std::optional<URLComponents> URLComponents::parse(std::string_view url) {
  const auto isForeign = [](char c) {
    return c <= ' ' || c == '\x7F' || static_cast<unsigned char>(c) >= 0x80 ||
           isOneOf(c, "\"<>\\^`{|}");
  };
  if (url.empty() || std::ranges::any_of(url, isForeign)) {
    return std::nullopt;
  }
  URLComponents parts;
  if (const auto colon = url.find_first_of(":/?#"); colon != url.npos && url[colon] == ':') {
    parts.scheme = url.substr(0, colon);
    if (!isScheme(parts.scheme)) {
      return std::nullopt;
    }
    url.remove_prefix(colon + 1);
  }
  if (url.starts_with("//")) {
    url.remove_prefix(2);
    if (!parseAuthority(takeUntil(url, "/?#"), parts)) {
      return std::nullopt;
    }
  }
  const auto path = decoded(takeUntil(url, "?#"));
  if (!path) {
    return std::nullopt;
  }
  parts.path = *path;
  if (url.starts_with('?')) {
    url.remove_prefix(1);
    if (!parseQuery(takeUntil(url, "#"), parts)) {
      return std::nullopt;
    }
  }
  if (url.starts_with('#')) {
    parts.fragment = decoded(url.substr(1));
    if (!parts.fragment) {
      return std::nullopt;
    }
  }
  return parts;
}

std::optional<std::string> URLComponents::string() const {
  std::string url;
  if (!scheme.empty()) {
    if (!isScheme(scheme)) {
      return std::nullopt;
    }
    url = scheme + ":";
  }
  if (host) {
    const bool isAddress = host->starts_with('[');
    const bool isName = std::ranges::none_of(*host, [](char c) {
      return (c >= 0 && c <= ' ') || c == '\x7F' || isOneOf(c, "/?#@[]:\\<>^`{|}%\"");
    });
    if (isAddress ? !isAddressInBrackets(*host) : !isName) {
      return std::nullopt;
    }
    url += "//" + (user ? encoded(*user, inUser) + "@" : "") +
           (isAddress ? *host : encoded(*host, inHost));
    if (port) {
      if (*port < 0 || *port > 65535) {
        return std::nullopt;
      }
      url += ":" + std::to_string(*port);
    }
    if (!path.empty() && !path.starts_with('/')) {
      return std::nullopt;
    }
  } else if (user || port || path.starts_with("//")) {
    return std::nullopt;
  }
  url += encoded(path, inPath);
  if (queryItems) {
    char separator = '?';
    for (const QueryItem& item : *queryItems) {
      url += separator + encoded(item.name, inQueryItem);
      if (item.value) {
        url += "=" + encoded(*item.value, inQueryItem);
      }
      separator = '&';
    }
    if (queryItems->empty()) {
      url += '?';
    }
  }
  if (fragment) {
    url += "#" + encoded(*fragment, inFragment);
  }
  return url;
}

}  // namespace corvane
