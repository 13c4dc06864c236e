#include "storage/workspace/workspace_document.h"

#include <cerrno>
#include <map>
#include <utility>

#include "platform/async/dispatch_queue.h"
#include "platform/system/log.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane {

namespace fs = std::filesystem;

WorkspaceDocument::WorkspaceDocument(WorkspaceSurroundings surroundings)
    : surroundings_(std::move(surroundings)) {
  setDraftName(std::string(defaultDraftName));
}

WorkspaceDocument::~WorkspaceDocument() {
  closeStore();
  if (!workingDirectory_) {
    return;
  }
  try {
    files::remove(*workingDirectory_);
  } catch (const FileError& error) {
    Log::write("Failed to clean up document working temp directory ", workingDirectory_->string(),
               ": ", error);
  }
}

const fs::path& WorkspaceDocument::workingDirectoryURL() {
  if (!workingDirectory_) {
    workingDirectory_ = files::makePrivateDirectory(surroundings_.temporaryDirectory);
  }
  return *workingDirectory_;
}

const std::shared_ptr<QuoteProvider>& WorkspaceDocument::nominalQuoteProviderUnderTest() {
  if (!providerUnderTest_) {
    const auto& make = surroundings_.makeQuoteProviderUnderTest;
    providerUnderTest_ = make ? make() : nullptr;
  }
  return *providerUnderTest_;
}

void WorkspaceDocument::makeWindowControllers(
    const std::shared_ptr<WorkspaceDocumentModelHaving>& window) {
  window_ = window;
  if (!fileURL() && model_->portfolioManagers.empty()) {
    openStore();
    loadGeneralProperties();
  }
  finishLoading();
}

std::string WorkspaceDocument::typeOf(const fs::path& path) const {
  return path.extension() == filenameExtension ? std::string(workspaceType) : std::string();
}

void WorkspaceDocument::requireType(std::string_view type) {
  if (type != workspaceType) {
    throw DocumentError(DocumentError::UnsupportedType{std::string(type)});
  }
}

void WorkspaceDocument::read(const fs::path& url, std::string_view type) {
  requireType(type);
  closeStore();
  const fs::path& workingDirectory = workingDirectoryURL();
  package::removeFiles(workingDirectory);
  package::copyFiles(url, workingDirectory);
  // A folder is passed over like an empty file, but not one that stands for what we keep.
  for (const std::string_view name : {databaseName, generalPropertiesName}) {
    if (fs::is_directory(url / name)) {
      throw FileError("read", url / name, EISDIR);
    }
  }
  openStore();
  try {
    loadGeneralProperties();
  } catch (const corvane::Error&) {
    // A model that was read by half must not be saved.
    closeStore();
    throw;
  }
  if (surroundings_.refreshModel) {
    surroundings_.refreshModel(model_);
  }
  finishLoading();
}

void WorkspaceDocument::closeStore() {
  model_->portfolioManagers.clear();
  databaseFile_.reset();
}

void WorkspaceDocument::openStore() {
  auto provider = nominalQuoteProviderUnderTest();
  if (provider == nullptr) {
    provider = surroundings_.sharedQuoteProvider();
  }
  const fs::path database = workingDirectoryURL() / databaseName;
  auto manager = StoredPortfolioManager::open(std::move(provider), database);
  databaseFile_.emplace(database);
  manager->presentError = [weakSelf = weak_from_this()](const corvane::Error& error) {
    if (const auto self = weakSelf.lock()) {
      static_cast<WorkspaceDocument&>(*self).presentError(error);
    }
  };
  model_->portfolioManagers = {std::move(manager)};
}

void WorkspaceDocument::loadGeneralProperties() {
  std::string text;
  try {
    text = files::read(workingDirectoryURL() / generalPropertiesName);
  } catch (const FileError& error) {
    if (error.number == ENOENT) {
      return;
    }
    throw;
  }
  GeneralProperties properties;
  try {
    properties = GeneralProperties::fromJSON(text);
  } catch (const JSONError& error) {
    throw JSONError(
        std::string(generalPropertiesName) + (error.path.empty() ? "" : ": ") + error.path,
        error.reason);
  }

  std::map<std::string, std::shared_ptr<QuoteProvider>> providers;
  for (const auto& manager : model_->portfolioManagers) {
    providers.emplace(manager->quoteProvider->providerName(), manager->quoteProvider);
  }
  model_->watchlistEquities.clear();
  for (const auto& entry :
       properties.watchlistSymbols.value_or(std::vector<GeneralProperties::WatchlistEntry>())) {
    const auto known = providers.find(entry.provider);
    auto provider = nominalQuoteProviderUnderTest();
    if (provider == nullptr && known != providers.end()) {
      provider = known->second;
    }
    if (provider != nullptr) {
      model_->watchlistEquities.push_back(provider->equityWithId(entry.identifier));
    }
  }
  model_->tradingScenarioSettings =
      properties.lastTradingScenarioSettings.value_or(GeneralProperties::RegressionSettings());
  model_->lastSavedAppVersion = properties.appBundleVersion;
}

void WorkspaceDocument::write(const fs::path& url, std::string_view type) {
  requireType(type);
  if (model_->portfolioManagers.empty()) {
    throw DocumentError(DocumentError::NothingLoaded());
  }
  writeGeneralProperties();
  for (const auto& manager : model_->portfolioManagers) {
    manager->compactStorage();
  }
  std::error_code error;
  if (!fs::create_directory(url, error)) {
    throw FileError("create", url, error ? error.value() : EEXIST);
  }
  package::copyFiles(workingDirectoryURL(), url,
                     package::HeldFile{std::string(databaseName), &*databaseFile_});
}

void WorkspaceDocument::writeGeneralProperties() {
  GeneralProperties properties = {
      .appBundleVersion = surroundings_.appBundleVersion,
      .appMarketingVersion = surroundings_.appMarketingVersion,
      .watchlistSymbols = std::vector<GeneralProperties::WatchlistEntry>(),
      .lastTradingScenarioSettings = model_->tradingScenarioSettings,
  };
  for (const auto& equity : model_->watchlistEquities) {
    const auto provider = equity->quoteProvider.lock();
    properties.watchlistSymbols->push_back(
        {provider ? provider->providerName() : "?", equity->id()});
  }
  files::writeAtomically(workingDirectoryURL() / generalPropertiesName, properties.json());
}

void WorkspaceDocument::finishLoading() {
  const auto window = window_.lock();
  if (window == nullptr) {
    return;
  }
  window->setDocumentModel(model_);
  const auto& saved = model_->lastSavedAppVersion;
  // Build numbers are compared as texts, so that "99" counts as newer than "100".
  if (!fileURL() || !saved || surroundings_.appBundleVersion >= *saved) {
    return;
  }
  Log::write("Compatibility warning when opening ", fileURL()->string(), ": saved with version ",
             *saved, ".");
  DispatchQueue::main()->async([weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) {
      static_cast<WorkspaceDocument&>(*self).showCompatibilityAlert();
    }
  });
}

void WorkspaceDocument::showCompatibilityAlert() {
  if (surroundings_.shell == nullptr) {
    return;
  }
  const DocumentAlert alert = {
      fileURL()->filename().string() + " was created with a newer version of Corvane.",
      "Some data might be ignored, and could be lost on re-save. Update to the latest version for "
      "best results.",
      {"Continue", "Check for Updates…"}};
  surroundings_.shell->showAlert(
      *this, alert, [checkForUpdates = surroundings_.checkForUpdates](std::size_t button) {
        if (button == 1 && checkForUpdates) {
          checkForUpdates();
        }
      });
}

void WorkspaceDocument::presentError(const corvane::Error& error) {
  // An undo or redo has failed. It counts as done all the same, so the count no longer tells
  // whether the content is the saved one.
  updateChangeCount(ChangeType::done);
  if (surroundings_.shell) {
    surroundings_.shell->presentError(*this, error);
  } else {
    Log::write(error);
  }
}

}  // namespace corvane
