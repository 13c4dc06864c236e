#include "presentation/frame/quote_service_address.h"

#include "platform/net/url_components.h"

namespace corvane {
namespace {

constexpr std::string_view serviceSchemeKey = "quoteService.scheme";
constexpr std::string_view serviceApiHostKey = "quoteService.apiHost";
constexpr std::string_view serviceWebHostKey = "quoteService.webHost";
constexpr std::string_view servicePortKey = "quoteService.port";

}  // namespace

std::optional<QuoteServiceAddress> QuoteServiceAddress::parse(std::string_view text) {
  const bool hasScheme = text.find("://") != std::string_view::npos;
  const auto url = URLComponents::parse((hasScheme ? "" : "https://") + std::string(text));
  if (!url || !url->host || url->host->empty() || url->user || url->queryItems || url->fragment ||
      (!url->path.empty() && url->path != "/") ||
      (url->scheme != "https" && url->scheme != "http") ||
      (url->port && (*url->port < 1 || *url->port > 65535))) {
    return std::nullopt;
  }
  // What has parts of the right form may still hold characters that no host has.
  QuoteServiceAddress address{url->scheme, *url->host, url->port};
  const bool isURL =
      URLComponents{.scheme = address.scheme, .host = address.host}.string().has_value();
  return isURL ? std::optional(address) : std::nullopt;
}

std::string QuoteServiceAddress::text() const {
  return (scheme == "https" ? "" : scheme + "://") + host +
         (port ? ":" + std::to_string(*port) : "");
}

std::optional<QuoteServiceAddress> QuoteServiceAddress::of(const UserDefaults& settings) {
  const auto host = settings.string(serviceApiHostKey);
  if (!host || host->empty()) {
    return std::nullopt;
  }
  QuoteServiceAddress address{.scheme = settings.string(serviceSchemeKey).value_or("https"),
                              .host = *host};
  if (const auto port = settings.integer(servicePortKey)) {
    address.port = static_cast<int>(*port);
  }
  return address;
}

void QuoteServiceAddress::keep(const std::optional<QuoteServiceAddress>& address,
                               UserDefaults& settings) {
  if (!address) {
    for (const auto key :
         {serviceSchemeKey, serviceApiHostKey, serviceWebHostKey, servicePortKey}) {
      settings.remove(key);
    }
    return;
  }
  settings.set(serviceSchemeKey, JSONValue(address->scheme));
  settings.set(serviceApiHostKey, JSONValue(address->host));
  settings.set(serviceWebHostKey, JSONValue(address->host));
  if (address->port) {
    settings.set(servicePortKey, JSONValue(std::int64_t{*address->port}));
  } else {
    settings.remove(servicePortKey);
  }
}

}  // namespace corvane
