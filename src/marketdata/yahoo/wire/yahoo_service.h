// Where the market-data service is and how it is to be treated.
#pragma once

#include <optional>
#include <string>

namespace corvane {

class UserDefaults;

/// The addresses of the service and the manners of its client. The defaults are those of the real
/// service; a service of one's own, on the loopback interface for instance, is reached by setting
/// scheme, hosts and port.
struct YahooService {
  std::string scheme = "https";
  std::string apiHost = "query1.finance.yahoo.com";
  /// Hands out the cookies, without a consent page in between.
  std::string webHost = "fc.yahoo.com";
  std::optional<int> port = std::nullopt;  ///< of both hosts; none for the scheme's own

  /// Goes with every request but the one for the crumb. The service answers clients that name
  /// themselves in no browser's manner with 429.
  std::string userAgent =
      "Mozilla/5.0 (X11; Linux x86_64) AppleWebKit/537.36 (KHTML, like Gecko) "
      "Chrome/128.0.0.0 Safari/537.36";

  /// When access to the service is asked for again after a refusal, in seconds.
  struct Pauses {
    double first = 1;      ///< after the first refusal; doubles with every further one …
    double longest = 300;  ///< … up to this
    /// A request that needs access and comes after this much of a pause ends the pause.
    double untilRequestsEndThem = 5;
    /// A request that has waited this long for access is given up.
    double requestLimit = 60;
    /// So is one that waits when this many attempts in a row have found no service at all.
    int attemptsWithoutNetwork = 3;
  };
  Pauses pauses = {};

  /// The service that the user's settings name by "quoteService.scheme", "quoteService.apiHost",
  /// "quoteService.webHost", "quoteService.port" and "quoteService.userAgent"; the default for each
  /// that is absent.
  [[nodiscard]] static YahooService named(const UserDefaults& settings);
};

}  // namespace corvane
