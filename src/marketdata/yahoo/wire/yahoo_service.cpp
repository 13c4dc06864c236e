#include "marketdata/yahoo/wire/yahoo_service.h"

#include "platform/system/user_defaults.h"

namespace corvane {

YahooService YahooService::named(const UserDefaults& settings) {
  YahooService service;
  const auto take = [&](std::string_view key, std::string& field) {
    field = settings.string(key).value_or(field);
  };
  take("quoteService.scheme", service.scheme);
  take("quoteService.apiHost", service.apiHost);
  take("quoteService.webHost", service.webHost);
  take("quoteService.userAgent", service.userAgent);
  if (const auto port = settings.integer("quoteService.port"); port && *port > 0 && *port < 65536) {
    service.port = static_cast<int>(*port);
  }
  return service;
}

}  // namespace corvane
