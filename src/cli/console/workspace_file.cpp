#include "cli/console/workspace_file.h"

#include <algorithm>
#include <utility>

#include "platform/async/dispatch_queue.h"
#include "platform/system/resources.h"
#include "storage/application/info_dictionary.h"
#include "storage/database/stored_portfolio.h"

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
  return package;
}

}  // namespace

bool WorkspaceFile::exists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(packagePath(path), ignored);
}

WorkspaceFile::WorkspaceFile(const std::string& path, const Console& console,
                             std::shared_ptr<QuoteProvider> provider, bool isNew)
    : path_(packagePath(path)),
      shell_(std::make_shared<ConsoleDocumentShell>(console)),
      window_(std::make_shared<NoWindow>()) {
  const auto info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName));
  document_ = std::make_shared<WorkspaceDocument>(WorkspaceSurroundings{
      .sharedQuoteProvider = [provider = std::move(provider)] { return provider; },
      .appBundleVersion = info.bundleVersion(),
      .appMarketingVersion = info.shortVersion(),
      .shell = shell_});
  if (!isNew) {
    document_->open(path_);
  }
  document_->makeWindowControllers(window_);
  // A warning about a file of a newer program comes by way of the main queue.
  MainLoop::drain();
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
  requireRows(found);
  return found;
}

void WorkspaceFile::save() {
  document_->save(path_);
}

void requireRows(const PortfolioPointer& portfolio) {
  if (const auto stored = std::dynamic_pointer_cast<StoredPortfolio>(portfolio)) {
    stored->requireTransactions();
  }
}

}  // namespace corvane::cli
