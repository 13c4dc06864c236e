// How the service is told to fail.
#pragma once

#include <chrono>
#include <string>

namespace corvane {

/// A way to fail. Those that change the body need an answer in JSON to change.
enum class SampleMarketFault {
  slowAnswer,         ///< the right answer after a while
  droppedConnection,  ///< the connection ends where the body should begin
  unauthorized,       ///< 401
  tooManyRequests,    ///< 429, with a Retry-After header
  serverError,        ///< 500
  truncatedJSON,      ///< the first half of the body, as if it were all
  malformedJSON,      ///< a body whose last comma is a semicolon
  nullBars,           ///< every second bar of a chart is empty
  staleCrumb          ///< expires the crumb, which a request for details then fails for with 401
};

/// Which requests fail, how, and how often.
struct SampleMarketFaultRule {
  SampleMarketFault fault;
  std::string pathPrefix = {};  ///< "/v8/" for charts; empty for all requests
  std::string symbol = {};      ///< only requests for this symbol; empty for all
  int count = 1;                ///< requests that fail before the rule is used up
  std::chrono::milliseconds delay = std::chrono::seconds(2);  ///< of a slow answer
  int retryAfterSeconds = 1;                                  ///< of a 429
};

}  // namespace corvane
