#include "marketdata/yahoo/yahoo_provider_error.h"

#include "platform/overloaded.h"

namespace corvane {

std::optional<std::string> YahooProviderError::description() const {
  return std::visit(Overloaded{[](const BootstrapFailed& error) { return error.text; },
                               [](const APIError& error) { return error.description; },
                               [](HTTPResponse error) {
                                 return "HTTP status " + std::to_string(error.statusCode);
                               },
                               [](IncompleteData) { return std::string("Incomplete data"); }},
                    which());
}

}  // namespace corvane
