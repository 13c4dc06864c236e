#include "cli/console/workspace_file.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "cli/console/command_line.h"
#include "cli/console/option_values.h"
#include "cli/console/progress_bar.h"
#include "platform/async/dispatch_queue.h"
#include "platform/system/replacement_directory.h"
#include "platform/system/resources.h"
#include "storage/application/info_dictionary.h"
#include "storage/database/storage_verification.h"
#include "storage/database/stored_portfolio_manager.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

/// Nobody can be asked on a console: what needs an answer is refused.
class ConsoleDocumentShell : public DocumentShell {
 public:
  explicit ConsoleDocumentShell(const Console& console) : console_(console) {}

  std::shared_ptr<WorkspaceDocumentModelHaving> showWindow(
      const std::shared_ptr<WorkspaceDocument>& /*document*/) override {
    return nullptr;
  }
  ChangesAnswer askToSaveChanges(WorkspaceDocument& /*document*/) override {
    return ChangesAnswer::cancel;
  }
  std::optional<fs::path> askForLocation(WorkspaceDocument& /*document*/) override {
    return std::nullopt;
  }
  bool askToReplace(WorkspaceDocument& /*document*/, const DocumentError& /*problem*/) override {
    return false;
  }
  RecoveryAnswer askToRecover(const std::vector<std::string>& /*names*/) override {
    return RecoveryAnswer::later;
  }
  void showAlert(WorkspaceDocument& /*document*/, const DocumentAlert& alert,
                 std::function<void(std::size_t)> /*pressed*/) override {
    console_.warn(alert.messageText + " " + alert.informativeText);
  }
  void presentError(WorkspaceDocument& /*document*/, const Error& error) override {
    console_.present(error);
  }

 private:
  const Console& console_;
};

struct NoWindow : WorkspaceDocumentModelHaving {
  [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override { return model; }
  void setDocumentModel(std::weak_ptr<WorkspaceModel> shown) override { model = std::move(shown); }
  std::weak_ptr<WorkspaceModel> model;
};

fs::path packagePath(const std::string& path) {
  std::error_code ignored;
  fs::path package = path;
  if (package.extension() != WorkspaceDocument::filenameExtension &&
      !fs::exists(package, ignored)) {
    package += WorkspaceDocument::filenameExtension;
  }
  ReplacementDirectory::putBackInterrupted(Document::resolved(package));
  return package;
}

void tellOfUnsavedWork(const fs::path& temporaryDirectory, const Console& console) {
  std::string names;
  for (const auto& copy : WorkingCopy::findAbandoned(temporaryDirectory)) {
    names += (names.empty() ? "“" : ", “") + copy->unsaved()->name + "”";
  }
  if (!names.empty()) {
    console.warn("A program that was ended has left unsaved changes of " + names +
                 ". “corvane-cli recover FOLDER” saves them to workspaces of their own.");
  }
}

/// Throws what is told of a workspace at `package` in which `what` is wrong at `where`.
[[noreturn]] void failDamaged(const fs::path& package, const std::string& where,
                              const std::string& what) {
  throw WorkspaceFileError("“" + package.filename().string() + "” is damaged: " + where + what,
                           "Nothing has been changed. Go back to a copy of the workspace.");
}

/// How a doubt about days is settled.
std::string decisionAbout(const DatesDoubt& doubt, const fs::path& package) {
  const std::string command = "“corvane-cli time-zone " + package.filename().string();
  return command + " --use " + (doubt.written ? doubt.written->identifier() : "ZONE") +
         "” goes back to the days that were written, " + command +
         " --present” keeps those of the present zone.";
}

}  // namespace

bool WorkspaceFile::exists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(packagePath(path), ignored);
}

WorkspaceFile::WorkspaceFile(const std::string& path, const Console& console,
                             std::shared_ptr<QuoteProvider> provider, bool isNew)
    : console_(console),
      path_(packagePath(path)),
      shell_(std::make_shared<ConsoleDocumentShell>(console)),
      window_(std::make_shared<NoWindow>()) {
  const auto info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName));
  WorkspaceSurroundings surroundings = {
      .sharedQuoteProvider = [provider = std::move(provider)] { return provider; },
      .appBundleVersion = info.bundleVersion(),
      .appMarketingVersion = info.shortVersion(),
      .shell = shell_,
      .temporaryDirectory = temporaryDirectory(console),
      .savingHandler = barOf("Saving")};
  tellOfUnsavedWork(surroundings.temporaryDirectory, console);
  document_ = std::make_shared<WorkspaceDocument>(std::move(surroundings));
  if (!isNew) {
    document_->open(path_);
  }
  document_->makeWindowControllers(window_);
  dynamic_cast<StoredPortfolioManager&>(*manager()).readingHandler = barOf("Reading");
  // A warning about a file of a newer program comes by way of the main queue.
  MainLoop::drain();
  if (const auto& doubt = document_->model()->datesDoubt) {
    console.warn(doubt->description() + " " + decisionAbout(*doubt, path_));
  }
  endIfInterrupted();
}

bool WorkspaceFile::isLarge() const {
  constexpr std::uintmax_t bytesOfLarge = 4'000'000;  // some 50,000 rows: a few tenths of a second
  std::uintmax_t bytes = 0;
  for (const char* ending : {"", "-wal"}) {
    std::error_code error;
    const auto size = fs::file_size(
        document_->workingDirectoryURL() / (std::string(WorkspaceDocument::databaseName) + ending),
        error);
    bytes += error ? 0 : size;
  }
  return bytes >= bytesOfLarge;
}

std::function<void(double)> WorkspaceFile::barOf(const std::string& text) const {
  const auto bar = std::make_shared<std::optional<ProgressBar>>();
  return [this, text, bar](double fraction) {
    if (fraction >= 1) {
      bar->reset();
    } else if (*bar || isLarge()) {
      if (!*bar) {
        bar->emplace(console_.err, text);
      }
      (*bar)->show(fraction);
    }
  };
}

bool WorkspaceFile::hasPortfolio(const std::string& name) const {
  return std::ranges::any_of(manager()->portfolios(),
                             [&](const auto& portfolio) { return portfolio->name == name; });
}

PortfolioPointer WorkspaceFile::portfolio(const std::string& name) const {
  PortfolioPointer found;
  std::string names;
  for (const auto& portfolio : manager()->portfolios()) {
    names += (names.empty() ? "“" : ", “") + portfolio->name + "”";
    if (portfolio->name != name) {
      continue;
    }
    if (found != nullptr) {
      throw WorkspaceFileError(
          "There is more than one portfolio “" + name + "” in “" + path_.filename().string() + "”.",
          "Give one of them another name in the desktop program.");
    }
    found = portfolio;
  }
  if (found == nullptr) {
    throw WorkspaceFileError(
        "There is no portfolio “" + name + "” in “" + path_.filename().string() + "”.",
        names.empty() ? "It holds no portfolio at all." : "It holds " + names + ".");
  }
  try {
    requireRows(found);
  } catch (const Error& error) {
    throw WorkspaceFileError("The ledger of “" + name + "” in “" + path_.filename().string() +
                                 "” cannot be read: " + error.description().value_or(""),
                             error.recoverySuggestion());
  }
  return found;
}

void WorkspaceFile::requireSound() const {
  auto& stored = dynamic_cast<StoredPortfolioManager&>(*manager());
  const auto bar = barOf("Checking");
  bar(0);
  if (const auto damage = anyDamage(stored.database())) {
    failDamaged(path_, "", *damage);
  }
  bar(1);
  for (const auto& portfolio : stored.portfolios()) {
    endIfInterrupted();
    try {
      requireRows(portfolio);
      stored.verify(portfolio, bar);
    } catch (const Error& error) {
      failDamaged(path_, "portfolio “" + portfolio->name + "”: ",
                  error.description().value_or("the ledger is inconsistent."));
    }
  }
}

void WorkspaceFile::requireSureDates(std::string_view text) const {
  if (document_->model()->datesDoubt) {
    throw DoubtfulDatesError(text, "Decide with “corvane-cli time-zone” first.");
  }
}

fs::path temporaryDirectory(const Console& console) {
  std::optional<FileError> problem;
  fs::path directory = files::temporaryDirectory(&problem);
  if (problem) {
    console.warn(problem->description().value_or("") + " “" + directory.string() +
                 "” is used instead.");
  }
  return directory;
}

void WorkspaceFile::save() {
  endIfInterrupted();
  document_->save(path_);
}

void requireRows(const PortfolioPointer& portfolio) {
  if (const auto stored = std::dynamic_pointer_cast<StoredPortfolio>(portfolio)) {
    stored->requireTransactions();
  }
}

TransactionPointer rowNumbered(const std::string& text, const PortfolioPointer& portfolio) {
  const auto& rows = portfolio->transactions();
  const std::size_t number = wholeNumber(text).value_or(0);
  if (number < 1) {
    throw UsageError("“" + text + "” is not the number of a transaction.");
  }
  if (number > rows.size()) {
    throw WorkspaceFileError("The ledger has no transaction " + text + ".",
                             "It has " + std::to_string(rows.size()) + " transactions.");
  }
  return rows[number - 1];
}

}  // namespace corvane::cli
