// Whether an answer of the market-data service is one.
#pragma once

#include <string_view>

#include "platform/data/json_error.h"
#include "platform/error.h"
#include "platform/net/url_request.h"

namespace corvane {

/// `response`, whose body is a JSON object with a result under `rootKey` ("chart" or
/// "quoteResponse"). Throws the error of the transport unchanged, APIError where the service tells
/// an error under that key, HTTPResponse for another status than success without a result, and
/// IncompleteData for everything else that lacks one.
const HTTPResponse& verifyResponse(const Result<HTTPResponse>& response, std::string_view rootKey);

/// The record that the body of a verified response is. A body that turns out to be no JSON is
/// treated as verifyResponse does; one of another form than the record's is a JSONError.
template <typename Record>
[[nodiscard]] Record decodeVerified(const HTTPResponse& response);

/// Whether the answer has a status of success.
[[nodiscard]] constexpr bool isSuccess(int statusCode) {
  return statusCode >= 200 && statusCode <= 299;
}

/// Throws `error` if the body is JSON, and else what verifyResponse throws for one that is not.
[[noreturn]] void throwDecodingError(const HTTPResponse& response, const JSONError& error);

template <typename Record>
Record decodeVerified(const HTTPResponse& response) {
  try {
    return Record::decode(response.body);
  } catch (const JSONError& error) {
    throwDecodingError(response, error);
  }
}

}  // namespace corvane
