// Who may ask for details: clients with a cookie and the crumb of the day.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

namespace corvane::samplemarket {

/// Safe on any thread.
class Access {
 public:
  static constexpr std::string_view cookieName = "A3";

  /// The value of the Set-Cookie header that lets a client ask for a crumb.
  [[nodiscard]] std::string cookieToSet() const;

  /// Whether a Cookie header holds that cookie.
  [[nodiscard]] bool holdsCookie(std::string_view cookieHeader) const;

  [[nodiscard]] std::string crumb() const;
  void expireCrumb() { ++generation_; }

 private:
  std::atomic<int> generation_ = 1;
};

}  // namespace corvane::samplemarket
