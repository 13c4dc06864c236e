// A workspace: portfolios, a watchlist and scenario settings in one package.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/async/notification_center.h"
#include "platform/system/open_file.h"
#include "storage/workspace/document.h"
#include "storage/workspace/document_shell.h"
#include "storage/workspace/general_properties.h"
#include "storage/workspace/working_copy.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

class StoredPortfolioManager;

/// What a document needs of the program around it.
struct WorkspaceSurroundings {
  /// The provider of all documents, asked for when a document opens its store. Never null.
  std::function<std::shared_ptr<QuoteProvider>()> sharedQuoteProvider;

  /// Set where the program runs under test: makes the provider without data that takes the place of
  /// the shared one. Each document asks once.
  std::function<std::shared_ptr<QuoteProvider>()> makeQuoteProviderUnderTest = nullptr;

  /// Called with the model of a document that has been read, whose equities want fresh prices.
  std::function<void(const std::shared_ptr<WorkspaceModel>&)> refreshModel = nullptr;

  /// The running program.
  std::string appBundleVersion;
  std::string appMarketingVersion;

  /// Null where nobody sits in front of the program; its errors go to the log then.
  std::shared_ptr<DocumentShell> shell = nullptr;

  /// The user's time zone.
  std::function<TimeZone()> presentTimeZone = &TimeZone::current;

  /// Where working directories are made.
  std::filesystem::path temporaryDirectory = files::temporaryDirectory();

  /// Hears, where it is set, what part of a document has been written while it is being saved: from
  /// 0 to 1.
  std::function<void(double)> savingHandler = nullptr;
};

/// Works on a private copy of the package, in which the database is open and locked. Only save()
/// changes the package itself. While there are unsaved changes the copy says so, and holds them,
/// watchlist and all, so that they are found again when the program is killed. Main queue only.
class WorkspaceDocument final : public Document {
 public:
  using Model = WorkspaceModel;
  using GeneralProperties = corvane::GeneralProperties;
  using Error = WorkspaceDocumentError;

  static constexpr std::string_view workspaceType = "ca.orlend.corvane.workspace";
  static constexpr std::string_view filenameExtension = ".corvane";
  static constexpr std::string_view defaultDraftName = "Untitled Workspace";
  static constexpr bool autosavesInPlace = false;
  static constexpr bool isEntireFileLoaded = false;

  static constexpr std::string_view databaseName = "LocalPortfolios.sqlite3";
  static constexpr std::string_view generalPropertiesName = "General.json";

  /// An empty document, without a store until it is opened or makeWindowControllers() is called.
  explicit WorkspaceDocument(WorkspaceSurroundings surroundings);
  /// Closes the store and removes the working directory.
  ~WorkspaceDocument() override;

  /// Makes this empty document one of the unsaved work in `copy`: a draft that is called after what
  /// it was, since the file of that name may have gone on without it. Throws what read() throws;
  /// then the copy stays where it is for another attempt.
  void recover(std::unique_ptr<WorkingCopy> copy);
  /// What a document recovered from `unsaved` is called.
  [[nodiscard]] static std::string recoveredName(const WorkingCopy::Unsaved& unsaved);

  /// Leaves the unsaved work, if there is any, for a later start to find when this document goes.
  void keepUnsavedWork();

  /// Looks, on a background queue, whether the database in the package is sound, and tells the user
  /// where it is not. For a document that has just been opened.
  void checkFileInBackground();

  [[nodiscard]] const std::shared_ptr<Model>& model() const { return model_; }

  /// A folder in the system's temporary folder that only the user can look into, made on first use
  /// and kept for the life of the document. Not beside the user's file: that folder may be
  /// read-only, or be carried elsewhere while the database changes.
  [[nodiscard]] const std::filesystem::path& workingDirectoryURL();

  /// The provider of a run under test; null otherwise.
  [[nodiscard]] const std::shared_ptr<QuoteProvider>& nominalQuoteProviderUnderTest();

  /// Gives the document its window, which is handed the model; null for none. A new document gets
  /// its store, where it has none yet. Throws what the store and FileError what the working
  /// directory throws: the caller shows it and lets the document go.
  void makeWindowControllers(const std::shared_ptr<WorkspaceDocumentModelHaving>& window);

  /// Posted by the document, inline, when the user has decided in which zone the days stand. News
  /// of the ledgers that have other days for it has gone out before.
  static constexpr Topic<NoPayload> datesTimeZoneDidChange{
      "ca.orlend.corvane.WorkspaceDocument.datesTimeZoneDidChange"};

  /// Takes the days of the workspace for those of `zone`, wherever it is opened from now on. It can
  /// be said again at any time: no row is rewritten, and all undo steps stay, among which this is
  /// none. To be called with a store.
  void useDatesTimeZone(const TimeZone& zone);
  /// Takes them for those of the user's time zone. Where there is a doubt about them, it is settled
  /// until the workspace comes to yet another zone. Otherwise as useDatesTimeZone().
  void usePresentTimeZone();

  /// The user's zone.
  [[nodiscard]] TimeZone presentTimeZone() const { return surroundings_.presentTimeZone(); }
  /// The dates of all rows of all portfolios, each once. Throws SQLiteError.
  [[nodiscard]] std::vector<Date> datesOfRows() const;

  [[nodiscard]] std::string typeOf(const std::filesystem::path& path) const override;

  /// Throws DocumentError::UnsupportedType, WorkspaceDocumentError, FileError, and
  /// DocumentError::Unreadable with what StoredPortfolioManager::open and
  /// GeneralProperties::fromJSON have to say. The package is never changed. A document that has
  /// content keeps it where this fails.
  void read(const std::filesystem::path& url, std::string_view type) override;

  /// Throws DocumentError, WorkspaceDocumentError, FileError, SQLiteError and JSONError. A database
  /// that is damaged is never written: then it is DocumentError::Damaged. The document goes on in
  /// any case.
  void write(const std::filesystem::path& url, std::string_view type) override;

 private:
  static void requireType(std::string_view type);
  void changeCountDidChange() override;
  void closeStore();
  void openStore();
  void openModel();
  void loadGeneralProperties();
  void settleDatesTimeZone();
  [[nodiscard]] StoredPortfolioManager& store() const;
  void changeDatesTimeZone(DatesTimeZone zone);
  void requireReadable(const std::filesystem::path& package);
  void requireSoundStorage();
  void tellSaved(double part) const;
  [[nodiscard]] std::string generalPropertiesText() const;
  void writeGeneralProperties();
  /// How messages call the file.
  [[nodiscard]] std::filesystem::path fileForMessages() const;
  /// Hands the model to the window, and tells the user of a file from a newer program.
  void finishLoading();
  void showCompatibilityAlert();
  void presentError(const corvane::Error& error);

  const WorkspaceSurroundings surroundings_;
  const std::shared_ptr<Model> model_ = std::make_shared<Model>();
  std::unique_ptr<WorkingCopy> workingCopy_;
  /// What stands in the general properties of the working copy.
  std::string writtenGeneralProperties_;
  std::optional<std::shared_ptr<QuoteProvider>> providerUnderTest_;
  std::weak_ptr<WorkspaceDocumentModelHaving> window_;
  /// Through which the database is copied while it is open; see OpenFile.
  std::optional<OpenFile> databaseFile_;
};

}  // namespace corvane
