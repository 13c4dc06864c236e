#include "marketdata/yahoo/yahoo_response.h"

#include <optional>
#include <string>

#include "marketdata/yahoo/yahoo_provider_error.h"
#include "platform/data/json_reader.h"

namespace corvane {
namespace {

/// What an answer says about itself.
struct Verdict {
  std::optional<YahooProviderError::APIError> error;
  bool hasResult = false;
};

YahooProviderError::APIError readError(JSONCursor& cursor) {
  YahooProviderError::APIError error{std::nullopt, "no description available"};
  cursor.forEachField([&](std::string_view key, JSONCursor& value) {
    const bool isWanted = key == "code" || key == "description";
    if (!isWanted || value.type() != JSONCursor::Type::string) {
      return;
    }
    if (key == "code") {
      error.code = std::string(value.string());
    } else {
      error.description = value.string();
    }
  });
  return error;
}

Verdict verdictOn(std::string_view body, std::string_view rootKey) {
  Verdict verdict;
  const auto lookIntoRoot = [&](std::string_view key, JSONCursor& value) {
    if (key == "error" && value.type() == JSONCursor::Type::object) {
      verdict.error = readError(value);
    } else if (key == "result") {
      verdict.hasResult = !value.isNull();
    }
  };
  try {
    JSONReader(body).read([&](JSONCursor& document) {
      if (document.type() != JSONCursor::Type::object) {
        return;
      }
      document.forEachField([&](std::string_view key, JSONCursor& value) {
        if (key == rootKey && value.type() == JSONCursor::Type::object) {
          value.forEachField(lookIntoRoot);
        }
      });
    });
  } catch (const JSONError&) {
    return {};
  }
  return verdict;
}

[[noreturn]] void throwWithoutResult(const HTTPResponse& response) {
  if (!isSuccess(response.statusCode)) {
    throw YahooProviderError(YahooProviderError::HTTPResponse{response.statusCode});
  }
  throw YahooProviderError(YahooProviderError::IncompleteData{});
}

}  // namespace

const HTTPResponse& verifyResponse(const Result<HTTPResponse>& response, std::string_view rootKey) {
  if (!response) {
    response.error()->raise();
  }
  const Verdict verdict = verdictOn(response->body, rootKey);
  if (verdict.error) {
    throw YahooProviderError(*verdict.error);
  }
  if (!verdict.hasResult) {
    throwWithoutResult(*response);
  }
  return *response;
}

void throwDecodingError(const HTTPResponse& response, const JSONError& error) {
  try {
    JSONReader(response.body).finish();
  } catch (const JSONError&) {
    throwWithoutResult(response);
  }
  throw error;
}

}  // namespace corvane
