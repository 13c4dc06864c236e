#include "storage/application/app_delegate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "marketdata/cache/cache_quote_provider.h"
#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using DataSource = SwitchableQuoteProvider::DataSource;
using namespace std::chrono_literals;

class ListeningShell : public ApplicationShell {
 public:
  std::vector<ApplicationMenuState> menus;
  std::vector<std::string> alerts, errors, external, pages;
  std::vector<bool> activityWindows;
  int clearings = 0;
  int activityClosings = 0;

  void applyMenuState(const ApplicationMenuState& state) override { menus.push_back(state); }
  void runAlert(const std::string& message, const std::string& informative) override {
    alerts.push_back(message + "|" + informative);
  }
  void presentError(const Error& error) override {
    errors.push_back(error.description().value_or("?"));
  }
  void openExternally(const fs::path& file) override { external.push_back(file.filename()); }
  void showWebDocument(const fs::path& file, double timeoutSeconds) override {
    EXPECT_EQ(timeoutSeconds, 60.0);
    pages.push_back(file.filename());
  }
  void showNetworkActivityWindow(bool inFront) override { activityWindows.push_back(inFront); }
  void closeNetworkActivityWindow() override { ++activityClosings; }
  [[nodiscard]] bool isNetworkActivityWindowVisible() const override { return true; }
  void clearActivity() override { ++clearings; }
};

/// A program with its settings, data files and cache in a folder of the test.
class AppDelegateTest : public ::testing::Test {
 protected:
  AppDelegateTest() {
    fs::create_directory(resources);
    for (const char* page : {"Welcome.html", "Legal.html", "guide.html"}) {
      writeText(resources / page, "<p>A page</p>");
    }
    fs::rename(world.savedWorkspace(), sample);
  }

  std::shared_ptr<AppDelegate> launch() {
    auto app = std::make_shared<AppDelegate>(ApplicationSurroundings{
        .defaults = defaults,
        .info = InfoDictionary(JSONValue::Object{{"CFBundleVersion", "7"},
                                                 {"CFBundleShortVersionString", "0.7"},
                                                 {"CorvaneUserGuideFilename", "guide.html"},
                                                 {"CorvaneReleaseNotesFilename", "absent.html"}}),
        .makeSourceProvider = [this]() -> std::shared_ptr<QuoteProvider> {
          sources.push_back(std::make_shared<NamedProvider>("Service"));
          return sources.back();
        },
        .shell = shell,
        .documentShell = world.shell,
        .cacheURL = cache,
        .isActivityMonitored = [this] { return isMonitored; },
        .monitorActivity = [this](bool isOn) { isMonitored = isOn; },
        .sampleDocument = sample,
        .resources = resources});
    app->applicationDidFinishLaunching();
    MainLoop::drain();
    return app;
  }

  WorkspaceWorld world;
  fs::path resources = world.folder / "resources";
  fs::path sample = world.folder / "Sample.corvane";
  fs::path cache = world.folder / "Cache.sqlite3";
  UserDefaults defaults{world.folder / "settings.json"};
  std::shared_ptr<ListeningShell> shell = std::make_shared<ListeningShell>();
  std::vector<std::shared_ptr<QuoteProvider>> sources;
  bool isMonitored = false;
};

TEST_F(AppDelegateTest, TheSampleIsShownUntilARunHasEndedNormally) {
  launch();
  EXPECT_THAT(world.shell->takeHeard(), ElementsAre("show Sample"));
  EXPECT_THAT(shell->pages, ElementsAre("Welcome.html"));

  auto second = launch();  // The first was killed.
  EXPECT_THAT(world.shell->takeHeard(), ElementsAre("show Sample"));
  second->applicationWillTerminate();
  shell->pages.clear();

  launch();
  EXPECT_THAT(world.shell->takeHeard(), IsEmpty());
  EXPECT_THAT(shell->pages, IsEmpty());
  EXPECT_EQ(defaults.string("lastAppBundleVersion"), "7");
}

TEST_F(AppDelegateTest, SettingsOfAnotherTypeReadAsTheirDefaults) {
  const auto app = launch();
  defaults.set("preferLocalTimeZone", "yes");
  defaults.set("lastAppBundleVersion", 3);
  EXPECT_FALSE(app->preferLocalTimeZone.get());
  EXPECT_EQ(app->lastAppBundleVersion.get(), "");
  app->preferLocalTimeZone.set(true);
  EXPECT_TRUE(app->preferLocalTimeZone.get());
}

TEST_F(AppDelegateTest, ThePriceAdjustmentIsRememberedAndTheDataSourceIsNot) {
  {
    const auto app = launch();
    EXPECT_EQ(shell->menus.back().checkedPriceAdjustment, PriceAdjustment::adjustedForSplits);
    int news = 0;
    const auto observation = NotificationCenter::defaultCenter().addObserver(
        AppDelegate::quoteDataSourceChanged, app.get(), [&](const auto&) { ++news; });
    app->choosePriceAdjustment(PriceAdjustment::marketNominal);
    app->chooseDataSource(DataSource::cacheOnly);
    EXPECT_EQ(news, 2);
    EXPECT_EQ(shell->menus.back().checkedDataSource, DataSource::cacheOnly);
    const auto provider =
        std::dynamic_pointer_cast<SwitchableQuoteProvider>(app->sharedYahooQuoteProvider());
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(provider->dataSource, DataSource::cacheOnly);  // The sample document uses it.
  }
  const auto app = launch();
  EXPECT_EQ(app->selectedPriceAdjustment(), PriceAdjustment::marketNominal);
  EXPECT_EQ(shell->menus.back().checkedDataSource, DataSource::sourceAndCache);

  for (const JSONValue& damaged : {JSONValue(99), JSONValue("2"), JSONValue()}) {
    defaults.set("quotePriceAdjustment", damaged);
    EXPECT_EQ(app->selectedPriceAdjustment(), PriceAdjustment::adjustedForSplits);
  }
  app->choosePriceAdjustment(PriceAdjustment::marketNominalSnapshot);
  EXPECT_EQ(app->selectedPriceAdjustment(), PriceAdjustment::adjustedForSplits);
}

TEST_F(AppDelegateTest, WithoutACacheTheServiceIsAskedAloneAndTheUserToldOnce) {
  fs::create_directory(cache);
  const auto app = launch();
  EXPECT_EQ(app->sharedYahooQuoteProvider(), sources.back());
  EXPECT_EQ(app->sharedYahooQuoteProvider(), app->sharedYahooQuoteProvider());
  ASSERT_EQ(shell->alerts.size(), 1U);
  EXPECT_THAT(shell->alerts.front(),
              StartsWith("A problem occurred with the local quote cache. Cache will be disabled.|"
                         "Please contact Corvane support for assistance. (Error: “"));
  EXPECT_THAT(shell->alerts.front(), EndsWith("”)"));
  app->chooseDataSource(DataSource::sourceOnly);
  app->emptyCache();
  EXPECT_THAT(shell->errors, IsEmpty());
}

TEST_F(AppDelegateTest, EmptyingTheCacheForgetsWhatWasFetched) {
  const auto app = launch();
  const auto provider =
      std::dynamic_pointer_cast<SwitchableQuoteProvider>(app->sharedYahooQuoteProvider());
  ASSERT_NE(provider, nullptr);
  const auto equity = provider->equityWithId("ABC");
  equity->currency = Currency::usd();
  provider->smartQuoteProvider->cacheProvider->storeEquity(equity);
  const int clearings = shell->clearings;
  app->emptyCache();
  EXPECT_EQ(shell->clearings, clearings + 1);
  SQLiteDatabase file(cache, SQLiteDatabase::Mode::readOnly);
  EXPECT_FALSE(file.query("SELECT * FROM equities;").step());
}

TEST_F(AppDelegateTest, DiagnosticToolsAreOutOfReachUnlessTurnedOn) {
  launch();
  EXPECT_FALSE(shell->menus.back().showsDataSources);
  EXPECT_FALSE(shell->menus.back().showsNetworkActivity);
  EXPECT_THAT(shell->activityWindows, IsEmpty());

  isMonitored = true;
  defaults.set("diagnosticToolsEnabled", true);
  const auto app = launch();
  EXPECT_TRUE(shell->menus.back().showsDataSources);
  EXPECT_TRUE(shell->menus.back().showsNetworkActivity);
  app->showNetworkActivity();
  app->applicationWillTerminate();  // The window is there, and is so again the next time.
  launch();
  EXPECT_THAT(shell->activityWindows, ElementsAre(true, false));
}

TEST_F(AppDelegateTest, DiagnosticToolsComeAndGoAtOnce) {
  const auto app = launch();
  app->diagnosticToolsEnabled.set(true);
  MainLoop::drain();
  EXPECT_TRUE(shell->menus.back().showsDataSources && shell->menus.back().showsNetworkActivity);
  app->chooseDataSource(DataSource::cacheOnly);
  EXPECT_EQ(shell->activityClosings, 0);

  app->diagnosticToolsEnabled.set(false);
  MainLoop::drain();
  EXPECT_EQ(shell->menus.back(), ApplicationMenuState()) << "the menu that could undo it is gone";
  EXPECT_EQ(shell->activityClosings, 1);
}

TEST_F(AppDelegateTest, HelpOpensItsPagesOrSaysWhichFileIsMissing) {
  const auto app = launch();
  shell->pages.clear();
  app->showHelp(AppDelegate::HelpDocument::userGuide);
  app->showHelp(AppDelegate::HelpDocument::legal);
  EXPECT_THAT(shell->external, ElementsAre("guide.html"));
  EXPECT_THAT(shell->pages, ElementsAre("Legal.html"));
  EXPECT_THAT(shell->errors, IsEmpty());
  app->showHelp(AppDelegate::HelpDocument::releaseNotes);
  fs::remove_all(sample);
  app->openSampleDocument();
  EXPECT_THAT(shell->errors,
              ElementsAre(::testing::HasSubstr("absent.html"), ::testing::HasSubstr("Sample")));
}

}  // namespace
}  // namespace corvane::testing
