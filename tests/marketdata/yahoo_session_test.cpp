// Access to the service: cookies, crumb, refusals, and the requests that wait.

#include "marketdata/yahoo/yahoo_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "marketdata/yahoo/yahoo_provider_error.h"
#include "marketdata/yahoo_loopback_service.h"
#include "platform/system/user_defaults.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"

namespace corvane {
namespace {

using corvane::testing::deadline;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using Service = corvane::testing::YahooLoopbackService;

class YahooSessionTest : public ::testing::Test {
 protected:
  void open(const YahooService& service) {
    session = std::make_shared<YahooSession>(service);
    session->start();
  }
  void open() { open(server.service()); }

  std::future<Result<HTTPResponse>> send(const std::string& path, bool includeCrumb) {
    auto promise = std::make_shared<std::promise<Result<HTTPResponse>>>();
    const auto service = server.service();
    const std::string url = "http://127.0.0.1:" + std::to_string(*service.port) + path;
    session->runRequest("Test", URLRequest{url}, includeCrumb,
                        [promise](auto result) { promise->set_value(std::move(result)); });
    return promise->get_future();
  }
  static Result<HTTPResponse> get(std::future<Result<HTTPResponse>> future) {
    if (future.wait_for(deadline) != std::future_status::ready) {
      ADD_FAILURE() << "no answer came";
      return failure(YahooProviderError(YahooProviderError::IncompleteData{}));
    }
    return future.get();
  }
  /// Waits until `path` has been asked for so many times.
  void waitForRequests(const std::string& path, std::size_t count) {
    EXPECT_TRUE(MainLoop::runUntil([&] { return server.requests(path).size() >= count; }, deadline))
        << path << " was asked for " << server.requests(path).size() << " times";
  }

  Service server;
  std::shared_ptr<YahooSession> session;
};

TEST_F(YahooSessionTest, AsksForCookiesAndThenForTheCrumb) {
  open();
  EXPECT_TRUE(get(send("/v7/finance/quote?symbols=A", true)));
  const auto cookies = server.requests(Service::cookiesPath);
  ASSERT_THAT(cookies, SizeIs(1));
  EXPECT_EQ(cookies[0].accept, "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8");
  EXPECT_EQ(cookies[0].userAgent, "Test/1");
  const auto crumbs = server.requests(Service::crumbPath);
  ASSERT_THAT(crumbs, SizeIs(1));
  EXPECT_EQ(crumbs[0].userAgent, "Mozilla/5.0 (Macintosh)");
  EXPECT_EQ(crumbs[0].cookie, "A3=d");
  const auto quotes = server.requests(Service::quotePath);
  ASSERT_THAT(quotes, SizeIs(1));
  EXPECT_EQ(quotes[0].target, "/v7/finance/quote?crumb=x/y.Z%2B1&symbols=A");
  EXPECT_EQ(quotes[0].cookie, "A3=d");
  EXPECT_EQ(quotes[0].userAgent, "Test/1");
}

TEST_F(YahooSessionTest, HoldsBackOnlyWhatNeedsTheCrumb) {
  server.hold(Service::crumbPath);
  open();
  auto quote = send(Service::quotePath, true);
  waitForRequests(Service::crumbPath, 1);
  EXPECT_TRUE(get(send("/v8/finance/chart/ABC", false)));
  EXPECT_THAT(server.requests(Service::quotePath), SizeIs(0));
  server.release();
  EXPECT_TRUE(get(std::move(quote)));
  EXPECT_EQ(server.requests(Service::quotePath).front().target,
            "/v7/finance/quote?crumb=x/y.Z%2B1");
}

TEST_F(YahooSessionTest, AsksAgainAfterEveryKindOfRefusal) {
  const auto cookie = Service::cookie();
  server.script(Service::cookiesPath,
                {{.body = "half an answer", .dropsConnection = true}, {.status = 200}, cookie});
  server.script(Service::crumbPath, {{.body = "Too Many Requests", .status = 429},
                                     {.body = "crumb\n"},
                                     {.body = ""},
                                     {.body = "\xff\xfe"},
                                     {.body = "Unauthorized", .status = 401},
                                     {.body = "half an answer", .dropsConnection = true},
                                     {.body = "good"},
                                     {.body = "later"}});
  const testing::LogCapture log;
  open();
  EXPECT_TRUE(get(send(Service::quotePath, true)));
  const std::string printed = log.text();
  for (const char* line :
       {"Yahoo bootstrapping failed: No cookies acquired.\n", "Received 1 cookies from Yahoo.\n",
        "Yahoo bootstrapping failed: Crumb response: Too Many Requests\n",
        "Yahoo bootstrapping failed: Crumb response: crumb\n\n",
        "Yahoo bootstrapping failed: No crumb received.\n",
        "Yahoo bootstrapping failed: HTTP status 401\n", "Received crumb \"good\" from Yahoo.\n"}) {
    EXPECT_THAT(printed, HasSubstr(line));
  }
  EXPECT_THAT(server.requests(Service::crumbPath), SizeIs(7));
  EXPECT_THAT(server.requests(Service::quotePath).front().target, HasSubstr("crumb=good"));
}

TEST_F(YahooSessionTest, RenewsARefusedCrumbOnceInAWhile) {
  const Service::Answer refusal{.body = "Invalid Crumb", .status = 401};
  server.script(Service::quotePath, {refusal, {.body = "fine"}, refusal, {.body = "fine"}});
  open();
  EXPECT_EQ(get(send(Service::quotePath, true))->body, "fine") << "repeated with a new crumb";
  EXPECT_THAT(server.requests(Service::crumbPath), SizeIs(2));
  EXPECT_EQ(get(send(Service::quotePath, true))->statusCode, 401) << "too soon for another";
  EXPECT_EQ(get(send(Service::quotePath, true))->body, "fine");
  EXPECT_THAT(server.requests(Service::crumbPath), SizeIs(2));
  EXPECT_THAT(server.requests(Service::cookiesPath), SizeIs(2));
}

TEST_F(YahooSessionTest, GivesUpRequestsThatHaveWaitedTooLong) {
  server.script(Service::cookiesPath, {{.status = 200}});
  auto service = server.service();
  service.pauses.requestLimit = 0.2;
  open(service);
  waitForRequests(Service::cookiesPath, 2);
  const auto result = get(send(Service::quotePath, true));
  ASSERT_FALSE(result);
  EXPECT_EQ(*result.error(),
            YahooProviderError(YahooProviderError::BootstrapFailed{
                "The quote service gives no access at present. (No cookies acquired.)"}));
  EXPECT_THAT(server.requests(Service::quotePath), SizeIs(0));
  // The service is asked further on, and a later request gets through.
  server.script(Service::cookiesPath, {Service::cookie()});
  Result<HTTPResponse> later;
  do {
    later = get(send(Service::quotePath, true));
  } while (!later && !HasFailure());
  EXPECT_TRUE(later);
}

TEST_F(YahooSessionTest, KeepsNobodyWaitingForAccessWithoutANetwork) {
  auto service = server.service();
  service.webHost = "127.0.0.1";
  service.port = 1;  // where nobody listens
  open(service);
  for (int i = 0; i < 2; ++i) {
    const auto result = get(send(Service::quotePath, true));
    ASSERT_FALSE(result);
    EXPECT_EQ(dynamic_cast<const URLError&>(*result.error()).code, URLError::Code::cannotConnect);
  }
}

TEST_F(YahooSessionTest, EndsALongPauseForARequestButNotOneThatTheServiceNamed) {
  auto service = server.service();
  service.pauses.first = service.pauses.longest = 3600;
  server.script(Service::cookiesPath, {{.status = 200}, Service::cookie()});
  open(service);
  waitForRequests(Service::cookiesPath, 1);
  EXPECT_TRUE(get(send(Service::quotePath, true)));

  // Also where it comes just before the refusal.
  server.script(Service::cookiesPath, {{.status = 200}, Service::cookie()});
  server.hold(Service::cookiesPath);
  open(service);
  auto early = send(Service::quotePath, true);
  server.release();
  EXPECT_TRUE(get(std::move(early)));

  service.pauses.requestLimit = 3000;  // which nobody waits for
  server.script(Service::cookiesPath,
                {{.status = 429, .headers = {{"Retry-After", "3600"}}}, Service::cookie()});
  const std::size_t before = server.requests(Service::cookiesPath).size();
  open(service);
  waitForRequests(Service::cookiesPath, before + 1);
  for (int i = 0; i < 2; ++i) {
    const auto refused = get(send(Service::quotePath, true));
    ASSERT_FALSE(refused);
    EXPECT_EQ(*refused.error(), YahooProviderError(YahooProviderError::HTTPResponse{429}));
  }
  EXPECT_THAT(server.requests(Service::cookiesPath), SizeIs(before + 1));
  EXPECT_GT(session->pauseEnd().value().timeIntervalSince(Date::now()), 3500);
}

TEST_F(YahooSessionTest, EndsEveryRequestOnceWhenItGoes) {
  server.hold(Service::crumbPath);
  open();
  auto waiting = send(Service::quotePath, true);
  waitForRequests(Service::crumbPath, 1);
  session.reset();
  const auto result = get(std::move(waiting));
  ASSERT_FALSE(result);
  EXPECT_EQ(dynamic_cast<const URLError&>(*result.error()).code, URLError::Code::cancelled);
}

TEST_F(YahooSessionTest, ReportsAnAddressThatIsNone) {
  auto service = server.service();
  service.webHost = "not a host";
  service.pauses.requestLimit = 0.1;
  open(service);
  EXPECT_FALSE(get(send(Service::quotePath, true)));
}

TEST(YahooPauses, GrowToTheirLimitAndAreNeverShorterThanTheServiceNames) {
  const YahooService::Pauses pauses;
  EXPECT_EQ(pauseAfterRefusal(pauses, 1, 0, 0.5), 1);
  EXPECT_EQ(pauseAfterRefusal(pauses, 2, 0, 0.5), 2);
  EXPECT_EQ(pauseAfterRefusal(pauses, 9, 0, 0.5), 256);
  EXPECT_EQ(pauseAfterRefusal(pauses, 10, 0, 0.5), 300);
  EXPECT_EQ(pauseAfterRefusal(pauses, 100000, 0, 0.5), 300);
  EXPECT_EQ(pauseAfterRefusal(pauses, 3, 0, 0), 3);
  EXPECT_EQ(pauseAfterRefusal(pauses, 3, 0, 1), 5);
  EXPECT_EQ(pauseAfterRefusal(pauses, 3, 900, 1), 900);

  const auto named = [](int status, const std::string& text) {
    return namedPause(
        {.url = "", .statusCode = status, .headers = {{"retry-after", text}}, .body = ""});
  };
  EXPECT_EQ(named(429, "120"), 120);
  EXPECT_EQ(named(429, "1000000"), 86400);
  EXPECT_EQ(named(429, "-5"), 0);
  EXPECT_EQ(named(429, "soon"), 0);
  EXPECT_EQ(named(429, "Wed, 21 Oct 2015 07:28:00 GMT"), 0);
  EXPECT_EQ(named(429, "Thu, 21 Oct 2100 07:28:00 GMT"), 86400);
  EXPECT_EQ(named(503, "120"), 0);
}

TEST(YahooServiceSettings, ReplaceTheDefaultsOneByOne) {
  const corvane::testing::TemporaryFolder folder;
  UserDefaults settings(folder / "settings.json");
  EXPECT_EQ(YahooService::named(settings).apiHost, YahooService().apiHost);
  settings.set("quoteService.apiHost", "127.0.0.1");
  settings.set("quoteService.scheme", "http");
  settings.set("quoteService.port", 8080);
  const YahooService service = YahooService::named(settings);
  EXPECT_EQ(service.apiHost, "127.0.0.1");
  EXPECT_EQ(service.webHost, YahooService().webHost);
  EXPECT_EQ(service.scheme, "http");
  EXPECT_EQ(service.port, 8080);
  settings.set("quoteService.port", 80808);
  EXPECT_EQ(YahooService::named(settings).port, std::nullopt);
}

}  // namespace
}  // namespace corvane
