// The one object above all documents: the provider chain, the settings, and the commands that are
// no document's.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "core/market/quote_provider.h"
#include "core/market/quote_query.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/system/user_defaults.h"
#include "storage/application/application_shell.h"
#include "storage/application/info_dictionary.h"
#include "storage/application/watchlist_manager.h"
#include "storage/workspace/document_controller.h"

namespace corvane {

/// What the application controller needs of the program around it.
struct ApplicationSurroundings {
  UserDefaults& defaults;
  InfoDictionary info;
  /// A new client of the market-data service.
  std::function<std::shared_ptr<QuoteProvider>()> makeSourceProvider;
  std::shared_ptr<ApplicationShell> shell;
  std::shared_ptr<DocumentShell> documentShell;
  /// Where the cache is kept; by default where a cache of the source has its place.
  std::optional<std::filesystem::path> cacheURL = std::nullopt;
  /// Whether requests are being recorded; see NetworkActivityMonitor.
  std::function<bool()> isActivityMonitored = [] { return false; };
  /// Begins to record requests, or ends that.
  std::function<void(bool)> monitorActivity = [](bool) {};
  /// The package that a first run opens, and the folder of the pages below it.
  std::filesystem::path sampleDocument;
  std::filesystem::path resources;
};

/// Owns what all documents share. Commands report failures through the shell and change nothing
/// then. There is no update service: a newer version comes with the system's packages. Main queue
/// only.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
 public:
  /// A setting with a default, which also stands for a value of another type.
  template <typename Value>
  class UserDefaultsBacked {
   public:
    UserDefaultsBacked(std::string_view settingKey, Value defaultValue, UserDefaults& storage)
        : key(settingKey), default_(std::move(defaultValue)), storage_(storage) {}

    const std::string_view key;

    [[nodiscard]] Value get() const {
      if constexpr (std::is_same_v<Value, bool>) {
        return storage_.boolean(key).value_or(default_);
      } else {
        return storage_.string(key).value_or(default_);
      }
    }
    void set(const Value& value) { storage_.set(key, JSONValue(value)); }

   private:
    const Value default_;
    UserDefaults& storage_;
  };

  enum class HelpDocument { userGuide, releaseNotes, welcome, legal };

  static constexpr Topic<NoPayload> quoteDataSourceChanged =
      WatchlistManager::quoteDataSourceChanged;
  static constexpr std::string_view priceAdjustmentUserDefaultsKey = "quotePriceAdjustment";
  /// The price adjustments of the menu and the numbers under which the settings keep them.
  static constexpr std::array<std::pair<PriceAdjustment, std::int64_t>, 3>
      priceAdjustmentUserDefaultsMap = {{{PriceAdjustment::marketNominal, 1},
                                         {PriceAdjustment::adjustedForSplits, 2},
                                         {PriceAdjustment::adjustedForSplitsAndDividends, 3}}};

  explicit AppDelegate(ApplicationSurroundings surroundings);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  UserDefaultsBacked<std::string> lastAppBundleVersion;
  UserDefaultsBacked<bool> wantsPrereleaseUpdates;
  UserDefaultsBacked<bool> showNetworkActivityWindow;
  UserDefaultsBacked<bool> preferLocalTimeZone;
  UserDefaultsBacked<bool> indicateFetchedRows;
  UserDefaultsBacked<bool> confirmBeforeQuit;
  /// Where panels for workspaces begin, an absolute path; empty for the user's documents.
  UserDefaultsBacked<std::string> workspacesFolder;
  /// A change shows in the menus of all windows with the next turn of the main queue. Without the
  /// tools nothing of theirs stays behind: the log closes, and prices come from everywhere again.
  UserDefaultsBacked<bool> diagnosticToolsEnabled;

  /// Begins the run: menus, timers, and on a first run the sample and the welcome page.
  void applicationDidFinishLaunching();
  /// Ends the run; the next one is no first run.
  void applicationWillTerminate();

  [[nodiscard]] DocumentController& documentController() { return documentController_; }

  /// The chain that all documents share, made at first use. Where its cache cannot be opened the
  /// user is told, once, and the service is asked without a cache until the program ends.
  [[nodiscard]] const std::shared_ptr<QuoteProvider>& sharedYahooQuoteProvider();

  [[nodiscard]] PriceAdjustment selectedPriceAdjustment() const;
  /// The one that `defaults` keep; for splits where they keep none.
  [[nodiscard]] static PriceAdjustment selectedPriceAdjustment(const UserDefaults& defaults);

  /// Whether the environment says so; then launching does nothing.
  [[nodiscard]] static bool isRunningUnderTest();

  [[nodiscard]] ApplicationMenuState menuState() const;

  /// Lets all open documents read from `source`. Not remembered between runs.
  void chooseDataSource(SwitchableQuoteProvider::DataSource source);
  void choosePriceAdjustment(PriceAdjustment adjustment);
  /// Asks for all prices at once, without waiting for the next refresh.
  void refreshPrices();
  /// Forgets all prices that were fetched.
  void emptyCache();
  void showNetworkActivity();
  void showHelp(HelpDocument document);
  void openSampleDocument();

 private:
  [[nodiscard]] WorkspaceSurroundings workspaceSurroundings();
  [[nodiscard]] std::vector<std::shared_ptr<SwitchableQuoteProvider>> switchableProviders() const;
  void diagnosticToolsDidChange();
  /// Tells everybody that prices may be others now.
  void announceQuoteDataSourceChange();

  ApplicationSurroundings surroundings_;
  SwitchableQuoteProvider::DataSource dataSource_ =
      SwitchableQuoteProvider::DataSource::sourceAndCache;
  std::shared_ptr<QuoteProvider> sharedYahooQuoteProvider_;
  DocumentController documentController_;
  std::shared_ptr<WatchlistManager> watchlistManager_;
  Subscription diagnosticToolsObservation_;
};

}  // namespace corvane
