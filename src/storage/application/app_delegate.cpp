#include "storage/application/app_delegate.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/chain/nominal_quote_provider.h"
#include "platform/system/file_manager.h"

namespace corvane {

AppDelegate::AppDelegate(ApplicationSurroundings surroundings)
    : lastAppBundleVersion("lastAppBundleVersion", "", surroundings.defaults),
      wantsPrereleaseUpdates("wantsPrereleaseUpdates", false, surroundings.defaults),
      showNetworkActivityWindow("showNetworkActivityWindow", false, surroundings.defaults),
      preferLocalTimeZone("preferLocalTimeZone", false, surroundings.defaults),
      indicateFetchedRows("indicateFetchedRows", false, surroundings.defaults),
      confirmBeforeQuit("confirmBeforeQuit", false, surroundings.defaults),
      workspacesFolder("workspacesFolder", "", surroundings.defaults),
      diagnosticToolsEnabled("diagnosticToolsEnabled", false, surroundings.defaults),
      surroundings_(std::move(surroundings)),
      documentController_(workspaceSurroundings(), surroundings_.defaults),
      diagnosticToolsObservation_(surroundings_.defaults.observe(
          std::string(diagnosticToolsEnabled.key), [this] { diagnosticToolsDidChange(); })) {}

WorkspaceSurroundings AppDelegate::workspaceSurroundings() {
  WorkspaceSurroundings workspace = {
      .sharedQuoteProvider = [this] { return sharedYahooQuoteProvider(); },
      .refreshModel =
          [this](const std::shared_ptr<WorkspaceModel>& model) {
            if (watchlistManager_ != nullptr) {
              watchlistManager_->refreshModel(model);
            }
          },
      .appBundleVersion = surroundings_.info.bundleVersion(),
      .appMarketingVersion = surroundings_.info.shortVersion(),
      .shell = surroundings_.documentShell};
  if (isRunningUnderTest()) {
    workspace.makeQuoteProviderUnderTest = [] { return std::make_shared<NominalQuoteProvider>(); };
  }
  return workspace;
}

bool AppDelegate::isRunningUnderTest() {
  static const bool isSet = std::getenv("XCTestSessionIdentifier") != nullptr;
  return isSet;
}

void AppDelegate::applicationDidFinishLaunching() {
  if (isRunningUnderTest()) {
    return;
  }
  chooseDataSource(SwitchableQuoteProvider::DataSource::sourceAndCache);
  watchlistManager_ = WatchlistManager::start([this] {
    std::vector<std::shared_ptr<WorkspaceModel>> models;
    for (const auto& document : documentController_.documents()) {
      models.push_back(document->model());
    }
    return models;
  });
  if (surroundings_.isActivityMonitored() && showNetworkActivityWindow.get()) {
    surroundings_.shell->showNetworkActivityWindow(false);
  }
  if (lastAppBundleVersion.get().empty()) {
    openSampleDocument();
    DispatchQueue::main()->async([weakSelf = weak_from_this()] {
      if (const auto self = weakSelf.lock()) {
        self->showHelp(HelpDocument::welcome);
      }
    });
  }
}

void AppDelegate::applicationWillTerminate() {
  showNetworkActivityWindow.set(surroundings_.shell->isNetworkActivityWindowVisible());
  lastAppBundleVersion.set(surroundings_.info.bundleVersion());
}

const std::shared_ptr<QuoteProvider>& AppDelegate::sharedYahooQuoteProvider() {
  if (sharedYahooQuoteProvider_ == nullptr) {
    try {
      sharedYahooQuoteProvider_ = std::make_shared<SwitchableQuoteProvider>(
          surroundings_.makeSourceProvider(), surroundings_.cacheURL);
    } catch (const Error& error) {
      sharedYahooQuoteProvider_ = surroundings_.makeSourceProvider();
      surroundings_.shell->runAlert(
          "A problem occurred with the local quote cache. Cache will be disabled.",
          "Please contact Corvane support for assistance. (Error: “" +
              error.description().value_or("") + "”)");
    }
  }
  return sharedYahooQuoteProvider_;
}

PriceAdjustment AppDelegate::selectedPriceAdjustment() const {
  return selectedPriceAdjustment(surroundings_.defaults);
}

PriceAdjustment AppDelegate::selectedPriceAdjustment(const UserDefaults& defaults) {
  const auto tag = defaults.integer(priceAdjustmentUserDefaultsKey);
  for (const auto& [adjustment, number] : priceAdjustmentUserDefaultsMap) {
    if (tag == number) {
      return adjustment;
    }
  }
  return PriceAdjustment::adjustedForSplits;
}

ApplicationMenuState AppDelegate::menuState() const {
  return {.showsDataSources = diagnosticToolsEnabled.get(),
          .showsNetworkActivity = surroundings_.isActivityMonitored(),
          .checkedDataSource = dataSource_,
          .checkedPriceAdjustment = selectedPriceAdjustment()};
}

void AppDelegate::diagnosticToolsDidChange() {
  const bool isOn = diagnosticToolsEnabled.get();
  surroundings_.monitorActivity(isOn);
  if (!isOn) {
    surroundings_.shell->closeNetworkActivityWindow();
  }
  using DataSource = SwitchableQuoteProvider::DataSource;
  if (!isOn && dataSource_ != DataSource::sourceAndCache) {
    chooseDataSource(DataSource::sourceAndCache);
  } else {
    surroundings_.shell->applyMenuState(menuState());
  }
}

void AppDelegate::chooseDataSource(SwitchableQuoteProvider::DataSource source) {
  for (const auto& provider : switchableProviders()) {
    provider->dataSource = source;
  }
  dataSource_ = source;
  announceQuoteDataSourceChange();
}

void AppDelegate::choosePriceAdjustment(PriceAdjustment adjustment) {
  const auto found = std::ranges::find(priceAdjustmentUserDefaultsMap, adjustment,
                                       &std::pair<PriceAdjustment, std::int64_t>::first);
  const auto tag = found != priceAdjustmentUserDefaultsMap.end()
                       ? found->second
                       : priceAdjustmentUserDefaultsMap[1].second;
  surroundings_.defaults.set(priceAdjustmentUserDefaultsKey, tag);
  announceQuoteDataSourceChange();
}

void AppDelegate::emptyCache() {
  for (const auto& provider : switchableProviders()) {
    try {
      provider->smartQuoteProvider->cacheProvider->empty();
    } catch (const Error& error) {
      surroundings_.shell->presentError(error);
      return;
    }
  }
  announceQuoteDataSourceChange();
}

void AppDelegate::refreshPrices() {
  if (watchlistManager_ != nullptr) {
    watchlistManager_->refreshNow();
  }
}

void AppDelegate::announceQuoteDataSourceChange() {
  surroundings_.shell->clearActivity();
  NotificationCenter::defaultCenter().post(quoteDataSourceChanged, this);
  surroundings_.shell->applyMenuState(menuState());
}

std::vector<std::shared_ptr<SwitchableQuoteProvider>> AppDelegate::switchableProviders() const {
  std::vector<std::shared_ptr<SwitchableQuoteProvider>> providers;
  for (const auto& document : documentController_.documents()) {
    for (const auto& manager : document->model()->portfolioManagers) {
      auto provider = std::dynamic_pointer_cast<SwitchableQuoteProvider>(manager->quoteProvider);
      if (provider != nullptr && std::ranges::find(providers, provider) == providers.end()) {
        providers.push_back(std::move(provider));
      }
    }
  }
  return providers;
}

void AppDelegate::showNetworkActivity() {
  surroundings_.shell->showNetworkActivityWindow(true);
}

void AppDelegate::showHelp(HelpDocument document) {
  const auto fileName = [&]() -> std::optional<std::string> {
    switch (document) {
      case HelpDocument::userGuide:
        return surroundings_.info.userGuideFilename();
      case HelpDocument::releaseNotes:
        return surroundings_.info.releaseNotesFilename();
      case HelpDocument::welcome:
        return "Welcome.html";
      case HelpDocument::legal:
        return "Legal.html";
    }
    return std::nullopt;
  }();
  const std::filesystem::path file = surroundings_.resources / fileName.value_or("");
  if (!fileName || !std::filesystem::exists(file)) {
    surroundings_.shell->presentError(FileError("open", file, ENOENT));
  } else if (document == HelpDocument::welcome || document == HelpDocument::legal) {
    surroundings_.shell->showWebDocument(file, 60.0);
  } else {
    surroundings_.shell->openExternally(file);
  }
}

void AppDelegate::openSampleDocument() {
  try {
    if (!std::filesystem::exists(surroundings_.sampleDocument)) {
      throw FileError("open", surroundings_.sampleDocument, ENOENT);
    }
    documentController_.openDocument(surroundings_.sampleDocument);
  } catch (const Error& error) {
    surroundings_.shell->presentError(error);
  }
}

}  // namespace corvane
