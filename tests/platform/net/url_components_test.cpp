#include "platform/net/url_components.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

std::optional<std::string> rebuilt(const std::string& url) {
  const auto parts = URLComponents::parse(url);
  return parts ? parts->string() : std::nullopt;
}

TEST(URLComponents, EncodeWhatAPartCannotHave) {
  URLComponents url{.scheme = "https", .host = "example.com", .path = "/v8/chart/^GSPC & BRK B/é"};
  url.queryItems = {{{"q", "a&b=c+d/e?f#g%"}, {"symbols", "BTC-USD,EURUSD=X"}, {"flag", {}}}};
  url.fragment = "top of page";
  const std::string text =
      "https://example.com/v8/chart/%5EGSPC%20&%20BRK%20B/%C3%A9"
      "?q=a%26b%3Dc%2Bd/e?f%23g%25&symbols=BTC-USD,EURUSD%3DX&flag#top%20of%20page";
  EXPECT_EQ(url.string(), text);
  EXPECT_EQ(URLComponents::parse(text), url);
}

TEST(URLComponents, TakeAURLApart) {
  const auto url = URLComponents::parse("http://me:secret@[::1]:8080/a%2Fb?x=1&x=+&&y=#");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->user, "me:secret");
  EXPECT_EQ(url->host, "[::1]");
  EXPECT_EQ(url->port, 8080);
  EXPECT_EQ(url->path, "/a/b");
  EXPECT_EQ(url->queryItems,
            (std::vector<URLComponents::QueryItem>{{"x", "1"}, {"x", "+"}, {"", {}}, {"y", ""}}));
  EXPECT_EQ(url->fragment, "");
  for (const auto* text : {"https://example.com", "mailto:a@b", "/path?q", "https://h/?", "a/b"}) {
    EXPECT_EQ(rebuilt(text), text);
  }
}

TEST(URLComponents, RefuseWhatIsNoURL) {
  for (const auto* text :
       {"", "http://a b/", "http://h/%", "http://h/%g1", "http://h:99999/", "http://h:x/",
        "http://[::1/", "http://[x]/", "http://a]/", "1http://h/", "http://h/\x7F", "http://h/é"}) {
    EXPECT_EQ(URLComponents::parse(text), std::nullopt) << text;
  }
  const auto refused = [](URLComponents url) { return !url.string().has_value(); };
  EXPECT_TRUE(refused({.scheme = "a b", .host = "h"}));
  EXPECT_TRUE(refused({.scheme = "http", .host = "a/b"}));
  EXPECT_TRUE(refused({.scheme = "http", .host = "h", .path = "relative"}));
  EXPECT_TRUE(refused({.scheme = "http", .host = "h", .port = 70000}));
  EXPECT_TRUE(refused({.scheme = "http", .path = "//h/x"}));
}

}  // namespace
}  // namespace corvane
