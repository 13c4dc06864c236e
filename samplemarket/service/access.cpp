#include "samplemarket/service/access.h"

#include "samplemarket/prices/noise.h"

namespace corvane::samplemarket {

namespace {

/// Eleven characters, some of which need to be encoded in a URL.
std::string token(std::string_view key, int generation) {
  constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz.&/+";
  std::string result;
  for (int i = 0; i < 11; ++i) {
    result += letters[static_cast<std::size_t>(
        Noise(key).uniform(generation, i, static_cast<std::int64_t>(letters.size())))];
  }
  return result;
}

std::string cookie() {
  return std::string(Access::cookieName) + "=d=invented&S=for-the-sample-market";
}

}  // namespace

std::string Access::cookieToSet() const {
  return cookie() + "; Path=/; HttpOnly; SameSite=Lax";
}

bool Access::holdsCookie(std::string_view cookieHeader) const {
  return cookieHeader.find(cookie()) != std::string_view::npos;
}

std::string Access::crumb() const {
  return token("crumb", generation_);
}

}  // namespace corvane::samplemarket
