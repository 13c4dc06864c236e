#include "marketdata/chain/refusal_text.h"

#include "core/market/quote_provider.h"
#include "marketdata/yahoo/yahoo_provider_error.h"
#include "platform/data/json_error.h"
#include "platform/net/url_request.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

/// What the service keeps of a share that is no longer traded lacks what every other one has.
bool isStub(const JSONError& error) {
  const bool isAbsent = error.reason == "the field is missing" ||
                        error.reason.find("found null") != std::string::npos;
  for (const char* key : {"currency", "exchange", "exchangeTimezoneName", "shortName",
                          "firstTradeDate", "regularMarketPrice"}) {
    if (isAbsent && error.path.ends_with(std::string(".") + key)) {
      return true;
    }
  }
  return false;
}

std::string textOf(const YahooProviderError& error, const std::string& symbol) {
  return std::visit(
      Overloaded{[](const YahooProviderError::BootstrapFailed& refused) { return refused.text; },
                 [&](const YahooProviderError::APIError& told) {
                   return told.code == "Not Found"
                              ? symbol + " is no longer traded."
                              : "The quote service says of " + symbol + ": " + told.description;
                 },
                 [](YahooProviderError::HTTPResponse answer) {
                   return answer.statusCode == 429
                              ? std::string("The quote service asks for a pause.")
                              : "The quote service is out of order. (HTTP status " +
                                    std::to_string(answer.statusCode) + ")";
                 },
                 [](YahooProviderError::IncompleteData) {
                   return std::string("The quote service sent an incomplete answer.");
                 }},
      error.which());
}

}  // namespace

std::string refusalText(const Error& error, std::string_view symbol) {
  const std::string name(symbol);
  if (const auto* refusal = dynamic_cast<const YahooProviderError*>(&error)) {
    return textOf(*refusal, name);
  }
  if (const auto* json = dynamic_cast<const JSONError*>(&error)) {
    return isStub(*json) ? name + " is no longer traded."
                         : "The quote service told of " + name + " in a form that is not known.";
  }
  if (const auto* refused = dynamic_cast<const QuoteProviderError*>(&error)) {
    if (const auto* currency =
            std::get_if<QuoteProviderError::UnsupportedCurrency>(&refused->which())) {
      return name + " is traded in “" + currency->code + "”, which is no known currency.";
    }
  }
  if (isForWantOfNetwork(error)) {
    return "The quote service cannot be reached.";
  }
  return error.description().value_or("There is no price of " + name + ".");
}

bool asksForAPause(const Error& error) {
  const auto* refusal = dynamic_cast<const YahooProviderError*>(&error);
  const auto* answer = refusal == nullptr
                           ? nullptr
                           : std::get_if<YahooProviderError::HTTPResponse>(&refusal->which());
  return answer != nullptr && answer->statusCode == 429;
}

bool isForWantOfNetwork(const Error& error) {
  const auto* transport = dynamic_cast<const URLError*>(&error);
  return transport != nullptr && transport->code != URLError::Code::cancelled &&
         transport->code != URLError::Code::badURL;
}

}  // namespace corvane
