#include "presentation/frame/settings_view_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marketdata/yahoo/wire/yahoo_service.h"
#include "presentation/frame/quote_service_address.h"
#include "presentation/portfolio_screen_world.h"
#include "samplemarket/sample_market.h"
#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

using ::testing::StartsWith;

TEST(QuoteServiceAddress, ReadsWhatAPersonTypes) {
  struct Case {
    const char* typed;
    std::optional<QuoteServiceAddress> read;
  };
  const Case cases[] = {
      {"prices.example.org", QuoteServiceAddress{"https", "prices.example.org", std::nullopt}},
      {"localhost:8080", QuoteServiceAddress{"https", "localhost", 8080}},
      {"http://127.0.0.1:80/", QuoteServiceAddress{"http", "127.0.0.1", 80}},
      {"ftp://example.org", std::nullopt},
      {"example.org/v8", std::nullopt},
      {"me@example.org", std::nullopt},
      {"example.org:70000", std::nullopt},
      {"two words", std::nullopt},
      {"", std::nullopt}};
  for (const auto& [typed, read] : cases) {
    EXPECT_EQ(QuoteServiceAddress::parse(typed), read) << typed;
  }
  EXPECT_EQ(QuoteServiceAddress::parse("http://h:1")->text(), "http://h:1");
  EXPECT_EQ(QuoteServiceAddress::parse("https://h")->text(), "h");
}

class SettingsTest : public ::testing::Test {
 protected:
  class Shell : public ApplicationShell {
   public:
    ApplicationMenuState menus;
    void applyMenuState(const ApplicationMenuState& state) override { menus = state; }
    void runAlert(const std::string& /*message*/, const std::string& /*informative*/) override {}
    void presentError(const Error& /*error*/) override {}
    void openExternally(const std::filesystem::path& /*file*/) override {}
    void showWebDocument(const std::filesystem::path& /*file*/, double /*seconds*/) override {}
    void showNetworkActivityWindow(bool /*inFront*/) override {}
    void closeNetworkActivityWindow() override {}
    [[nodiscard]] bool isNetworkActivityWindowVisible() const override { return false; }
    void clearActivity() override {}
  };

  std::shared_ptr<SettingsViewController> open() {
    return std::make_shared<SettingsViewController>(*application, defaults);
  }
  /// What the test of the address says in the end.
  std::string tested(SettingsViewController& settings) {
    settings.testServiceAction();
    EXPECT_FALSE(settings.testServiceButton.isEnabled);
    EXPECT_TRUE(MainLoop::runUntil([&] { return settings.testServiceButton.isEnabled; },
                                   std::chrono::seconds(20)));
    return settings.testResultLabel.text;
  }

  TemporaryFolder folder;
  UserDefaults defaults{folder.path() / "settings.json"};
  std::shared_ptr<Shell> shell = std::make_shared<Shell>();
  std::shared_ptr<AppDelegate> application = std::make_shared<AppDelegate>(ApplicationSurroundings{
      .defaults = defaults,
      .info = InfoDictionary(
          JSONValue::Object{{"CFBundleVersion", "7"}, {"CFBundleShortVersionString", "0.7"}}),
      .makeSourceProvider = [] { return std::make_shared<ScriptedQuoteProvider>(); },
      .shell = shell,
      .documentShell = std::make_shared<ScriptedShell>(),
      .sampleDocument = {},
      .resources = {}});
};

TEST_F(SettingsTest, KeepsEachSettingAtOnceAndFollowsOthers) {
  const auto settings = open();
  settings->setLocalTimeZone(true);
  settings->setFetchedRows(true);
  settings->setConfirmQuit(true);
  settings->setDiagnosticTools(true);
  settings->choosePriceAdjustment(2);
  EXPECT_TRUE(application->preferLocalTimeZone.get() && application->indicateFetchedRows.get() &&
              application->confirmBeforeQuit.get() && application->diagnosticToolsEnabled.get());
  EXPECT_EQ(application->selectedPriceAdjustment(), PriceAdjustment::adjustedForSplitsAndDividends);
  EXPECT_EQ(shell->menus.checkedPriceAdjustment, PriceAdjustment::adjustedForSplitsAndDividends);
  EXPECT_EQ(open()->priceAdjustmentPopUpButton.selectedIndex, 2U);
  EXPECT_TRUE(open()->diagnosticToolsButton.isOn);

  MainLoop::drain();
  int changes = 0;
  settings->changeHandler = [&] { ++changes; };
  application->preferLocalTimeZone.set(false);  // as the menu does
  application->choosePriceAdjustment(PriceAdjustment::marketNominal);
  MainLoop::drain();
  EXPECT_EQ(changes, 2);
  EXPECT_FALSE(settings->localTimeZoneButton.isOn);
  EXPECT_EQ(settings->priceAdjustmentPopUpButton.selectedIndex, 0U);
}

TEST_F(SettingsTest, KeepsAFolderOfWorkspacesThatIsThere) {
  std::filesystem::create_directory(folder.path() / "books");
  const std::string books = (folder.path() / "books").string();
  const auto settings = open();
  settings->typeWorkspacesFolder(books);
  EXPECT_EQ(application->workspacesFolder.get(), "") << "not while typing";
  settings->keepWorkspacesFolder();
  EXPECT_EQ(application->workspacesFolder.get(), books);
  EXPECT_EQ(open()->workspacesFolderField.text, books);
  for (const std::string& wrong :
       {books + "/none", std::string("books"), (folder.path() / "settings.json").string()}) {
    settings->typeWorkspacesFolder(wrong);
    settings->keepWorkspacesFolder();
    EXPECT_THAT(settings->workspacesFolderField.error, StartsWith("There is no folder")) << wrong;
    EXPECT_EQ(settings->workspacesFolderField.text, wrong) << "what was typed is not lost";
    EXPECT_EQ(application->workspacesFolder.get(), books);
  }
  settings->typeWorkspacesFolder("~");
  settings->keepWorkspacesFolder();
  EXPECT_EQ(application->workspacesFolder.get(), std::getenv("HOME"));
  settings->typeWorkspacesFolder(" ");
  settings->keepWorkspacesFolder();
  EXPECT_EQ(application->workspacesFolder.get(), "");
  EXPECT_EQ(settings->workspacesFolderField.error, "");
}

TEST_F(SettingsTest, KeepsTheAddressOfAServiceThatIsOne) {
  const auto settings = open();
  EXPECT_EQ(settings->serviceField.placeholder, YahooService().apiHost);
  settings->typeService("http://localhost:8080");
  EXPECT_EQ(YahooService::named(defaults).apiHost, YahooService().apiHost) << "not while typing";
  settings->keepService();
  const YahooService named = YahooService::named(defaults);
  EXPECT_EQ(named.scheme + "|" + named.apiHost + "|" + named.webHost, "http|localhost|localhost");
  EXPECT_EQ(named.port, 8080);
  EXPECT_EQ(open()->serviceField.text, "http://localhost:8080");

  settings->typeService("no address");
  settings->keepService();
  EXPECT_THAT(settings->serviceField.error, StartsWith("This is not the address of a server."));
  EXPECT_EQ(settings->serviceField.text, "no address") << "can be mended";
  EXPECT_EQ(YahooService::named(defaults).apiHost, "localhost");

  settings->typeService(" ");
  settings->keepService();
  EXPECT_EQ(settings->serviceField.error, "");
  EXPECT_EQ(YahooService::named(defaults).webHost, YahooService().webHost);
  EXPECT_EQ(YahooService::named(defaults).port, std::nullopt);
  EXPECT_EQ(YahooService::named(defaults).scheme, "https");
}

TEST_F(SettingsTest, LeavesHostsThatDifferAloneUntilTheAddressIsChanged) {
  defaults.set("quoteService.apiHost", JSONValue(std::string("api.example.org")));
  defaults.set("quoteService.webHost", JSONValue(std::string("cookies.example.org")));
  const auto settings = open();
  EXPECT_EQ(settings->serviceField.text, "api.example.org");
  settings->keepService();
  EXPECT_EQ(YahooService::named(defaults).webHost, "cookies.example.org");
}

TEST_F(SettingsTest, TestsTheServiceAsItWouldBeAsked) {
  SampleMarket market;
  const auto settings = open();
  settings->typeService(market.baseURL());
  EXPECT_THAT(tested(*settings), StartsWith("The service answers: 1 USD is 1"));
  EXPECT_GT(market.requestCount("/v7/finance/quote"), 0);
  market.addFault(
      {.fault = SampleMarketFault::serverError, .pathPrefix = "/v7/finance/quote", .count = 10});
  EXPECT_THAT(tested(*settings), StartsWith("The service does not answer: "));
}

TEST_F(SettingsTest, MayBeClosedWhileATestIsUnderWay) {
  SampleMarket market;
  auto settings = open();
  settings->typeService(market.baseURL());
  settings->testServiceAction();
  settings.reset();
  MainLoop::drain();
}

}  // namespace
}  // namespace corvane::testing
