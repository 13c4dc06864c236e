#include "storage/workspace/workspace_document.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <map>
#include <utility>

#include "platform/async/dispatch_queue.h"
#include "platform/system/log.h"
#include "storage/database/ledger_reader.h"
#include "storage/database/storage_verification.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// The number that `text` starts with, without leading zeros; empty where it starts with none.
std::string_view leadingNumber(std::string_view text) {
  const auto end = text.find_first_not_of("0123456789");
  const std::string_view digits = text.substr(0, end);
  const auto first = digits.find_first_not_of('0');
  return digits.empty() ? digits : digits.substr(std::min(first, digits.size() - 1));
}

/// Whether the build `one` came before `other`. Their parts between the points are compared as
/// numbers, so that 0.10 comes after 0.9, and parts that are no numbers as texts. A build that
/// another one only adds parts to came before it.
bool isEarlierBuild(std::string_view one, std::string_view other) {
  while (!one.empty() && !other.empty()) {
    const auto take = [](std::string_view& text) {
      const auto point = text.find('.');
      const std::string_view part = text.substr(0, point);
      text.remove_prefix(point == text.npos ? text.size() : point + 1);
      return part;
    };
    const std::string_view left = take(one);
    const std::string_view right = take(other);
    const std::string_view leftNumber = leadingNumber(left);
    const std::string_view rightNumber = leadingNumber(right);
    if (!leftNumber.empty() && !rightNumber.empty() && leftNumber != rightNumber) {
      return leftNumber.size() != rightNumber.size() ? leftNumber.size() < rightNumber.size()
                                                     : leftNumber < rightNumber;
    }
    if (left != right) {
      return left < right;
    }
  }
  return one.empty() && !other.empty();
}

}  // namespace

WorkspaceDocument::WorkspaceDocument(WorkspaceSurroundings surroundings)
    : surroundings_(std::move(surroundings)) {
  setDraftName(std::string(defaultDraftName));
}

WorkspaceDocument::~WorkspaceDocument() {
  closeStore();
}

const fs::path& WorkspaceDocument::workingDirectoryURL() {
  if (workingCopy_ == nullptr) {
    workingCopy_ = std::make_unique<WorkingCopy>(surroundings_.temporaryDirectory);
  }
  return workingCopy_->files();
}

std::string WorkspaceDocument::recoveredName(const WorkingCopy::Unsaved& unsaved) {
  const std::string start = "Recovered ";
  return unsaved.name.starts_with(start) ? unsaved.name : start + unsaved.name;
}

void WorkspaceDocument::recover(std::unique_ptr<WorkingCopy> copy) {
  assert(copy != nullptr && copy->unsaved() && workingCopy_ == nullptr && !fileURL());
  setDraftName(recoveredName(*copy->unsaved()));
  workingCopy_ = std::move(copy);
  openModel();
  workingCopy_->setKept(false);
  updateChangeCount(ChangeType::done);
  if (surroundings_.refreshModel) {
    surroundings_.refreshModel(model_);
  }
}

void WorkspaceDocument::keepUnsavedWork() {
  if (workingCopy_ != nullptr) {
    workingCopy_->setKept(workingCopy_->unsaved().has_value());
  }
}

void WorkspaceDocument::changeCountDidChange() {
  if (workingCopy_ == nullptr || model_->portfolioManagers.empty()) {
    return;
  }
  try {
    if (isDocumentEdited()) {
      writeGeneralProperties();
      workingCopy_->setUnsaved(WorkingCopy::Unsaved{displayName(), fileURL()});
    } else {
      workingCopy_->setUnsaved(std::nullopt);
    }
  } catch (const corvane::Error& error) {
    // The document is as good as before; only a later start would not find it.
    Log::write(error);
  }
}

void WorkspaceDocument::checkFileInBackground() {
  if (!fileURL() || surroundings_.shell == nullptr) {
    return;
  }
  DispatchQueue::global()->async([weakSelf = weak_from_this(), package = *fileURL()] {
    const fs::path database = package / databaseName;
    std::error_code error;
    const auto size = fs::file_size(database, error);
    const auto damage = error || size == 0 ? std::nullopt : structuralDamage(database);
    if (!damage) {
      return;
    }
    DispatchQueue::main()->async([weakSelf, package, reason = *damage] {
      if (const auto self = weakSelf.lock()) {
        static_cast<WorkspaceDocument&>(*self).presentError(
            DocumentError(DocumentError::Damaged{package, reason}));
      }
    });
  });
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
    openModel();
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
  if (!model_->portfolioManagers.empty()) {
    requireReadable(url);
  }
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
  openModel();
  if (surroundings_.refreshModel) {
    surroundings_.refreshModel(model_);
  }
  finishLoading();
}

/// Reads the package once beforehand, in a document of its own, so that nothing is lost of this one
/// where that fails.
void WorkspaceDocument::requireReadable(const fs::path& package) {
  WorkspaceSurroundings alone = surroundings_;
  alone.sharedQuoteProvider = [] { return std::make_shared<QuoteProvider>(); };
  alone.makeQuoteProviderUnderTest = nullptr;
  alone.refreshModel = nullptr;
  alone.shell = nullptr;
  std::make_shared<WorkspaceDocument>(std::move(alone))->open(package);
}

void WorkspaceDocument::closeStore() {
  writtenGeneralProperties_.clear();
  model_->portfolioManagers.clear();
  databaseFile_.reset();
}

void WorkspaceDocument::openModel() {
  openStore();
  model_->datesTimeZone.reset();
  try {
    loadGeneralProperties();
    settleDatesTimeZone();
  } catch (const corvane::Error&) {
    // A model that was read by half must not be saved.
    closeStore();
    throw;
  }
}

void WorkspaceDocument::openStore() {
  auto provider = nominalQuoteProviderUnderTest();
  if (provider == nullptr) {
    provider = surroundings_.sharedQuoteProvider();
  }
  const fs::path database = workingDirectoryURL() / databaseName;
  std::shared_ptr<StoredPortfolioManager> manager;
  std::string portfolio;
  try {
    manager = StoredPortfolioManager::open(std::move(provider), database, &portfolio);
  } catch (const corvane::Error& error) {
    const std::string where =
        portfolio.empty() ? std::string(databaseName) : "portfolio “" + portfolio + "”";
    throw DocumentError(DocumentError::Unreadable{fileForMessages(),
                                                  where + ": " + error.description().value_or("")});
  }
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
  } catch (const corvane::Error& error) {
    throw DocumentError(DocumentError::Unreadable{
        fileForMessages(),
        std::string(generalPropertiesName) + ": " + error.description().value_or("")});
  }
  writtenGeneralProperties_ = std::move(text);

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
  model_->taxSettings = properties.taxSettings.value_or(TaxSettings());
  model_->datesTimeZone = properties.datesTimeZone;
  model_->taxRoles.clear();
  for (const PortfolioPointer& portfolio : model_->portfolios()) {
    const auto* stored = dynamic_cast<const StoredPortfolio*>(portfolio.get());
    if (stored != nullptr && properties.taxRoles.contains(stored->portfolioId)) {
      model_->taxRoles.emplace(portfolio, properties.taxRoles.at(stored->portfolioId));
    }
  }
}

/// Opens the days in the zone that the user has chosen, else in his own. Where the rows are the
/// same days in both, what he records from now on is in his own, which is noted then.
void WorkspaceDocument::settleDatesTimeZone() {
  StoredPortfolioManager& manager = store();
  const TimeZone present = surroundings_.presentTimeZone();
  auto& noted = model_->datesTimeZone;
  const auto written = noted ? TimeZone::withIdentifier(noted->identifier) : std::nullopt;
  const TimeZone days = written && noted->isUsedEverywhere ? *written : present;
  if (manager.calendar.timeZone() != days) {
    manager.changeCalendar(Calendar(days));
  }
  model_->datesDoubt.reset();
  if (noted && (!written || noted->isUsedEverywhere || *written == present)) {
    return;
  }
  try {
    model_->datesDoubt = datesDoubt(datesOfRows(), written, present);
  } catch (const SQLiteError& error) {
    // A damaged ledger is told of where it is used.
    Log::write(error);
    return;
  }
  if (!model_->datesDoubt) {
    noted = DatesTimeZone{present.identifier()};
  }
}

StoredPortfolioManager& WorkspaceDocument::store() const {
  return static_cast<StoredPortfolioManager&>(*model_->portfolioManagers.front());
}

void WorkspaceDocument::useDatesTimeZone(const TimeZone& zone) {
  changeDatesTimeZone({zone.identifier(), /*isUsedEverywhere=*/true});
}

void WorkspaceDocument::usePresentTimeZone() {
  changeDatesTimeZone({surroundings_.presentTimeZone().identifier()});
}

void WorkspaceDocument::changeDatesTimeZone(DatesTimeZone zone) {
  assert(!model_->portfolioManagers.empty() && "the days of rows that are there");
  model_->datesTimeZone = std::move(zone);
  settleDatesTimeZone();
  updateChangeCount(ChangeType::done);
  NotificationCenter::defaultCenter().post(datesTimeZoneDidChange, this, {});
}

std::vector<Date> WorkspaceDocument::datesOfRows() const {
  return readDifferentDates(store().database());
}

void WorkspaceDocument::write(const fs::path& url, std::string_view type) {
  requireType(type);
  if (model_->portfolioManagers.empty()) {
    throw DocumentError(DocumentError::NothingLoaded());
  }
  // By the time that each takes of a large workspace.
  tellSaved(0);
  requireSoundStorage();
  tellSaved(0.3);
  writeGeneralProperties();
  for (const auto& manager : model_->portfolioManagers) {
    manager->compactStorage();
  }
  tellSaved(0.8);
  std::error_code error;
  if (!fs::create_directory(url, error)) {
    throw FileError("create", url, error ? error.value() : EEXIST);
  }
  package::copyFiles(workingDirectoryURL(), url,
                     package::HeldFile{std::string(databaseName), &*databaseFile_});
  tellSaved(1);
}

void WorkspaceDocument::tellSaved(double part) const {
  if (surroundings_.savingHandler) {
    surroundings_.savingHandler(part);
  }
}

void WorkspaceDocument::requireSoundStorage() {
  for (const auto& manager : model_->portfolioManagers) {
    const auto stored = std::dynamic_pointer_cast<StoredPortfolioManager>(manager);
    if (const auto damage = stored ? stored->storageDamage() : std::nullopt) {
      throw DocumentError(DocumentError::Damaged{fileForMessages(), *damage});
    }
  }
}

fs::path WorkspaceDocument::fileForMessages() const {
  return fileURL().value_or(displayName());
}

std::string WorkspaceDocument::generalPropertiesText() const {
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
  if (model_->taxSettings != TaxSettings()) {
    properties.taxSettings = model_->taxSettings;
  }
  properties.datesTimeZone = model_->datesTimeZone;
  for (const PortfolioPointer& portfolio : model_->portfolios()) {
    const auto* stored = dynamic_cast<const StoredPortfolio*>(portfolio.get());
    if (const auto role = model_->taxRoleOf(portfolio); stored != nullptr && role) {
      properties.taxRoles.emplace(stored->portfolioId, *role);
    }
  }
  return properties.json();
}

void WorkspaceDocument::writeGeneralProperties() {
  std::string text = generalPropertiesText();
  if (text != writtenGeneralProperties_) {
    files::writeAtomically(workingDirectoryURL() / generalPropertiesName, text);
    writtenGeneralProperties_ = std::move(text);
  }
}

void WorkspaceDocument::finishLoading() {
  const auto window = window_.lock();
  if (window == nullptr) {
    return;
  }
  window->setDocumentModel(model_);
  const auto& saved = model_->lastSavedAppVersion;
  if (!fileURL() || !saved || !isEarlierBuild(surroundings_.appBundleVersion, *saved)) {
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
      {"Continue"}};
  surroundings_.shell->showAlert(*this, alert, [](std::size_t) {});
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
