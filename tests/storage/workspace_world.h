// A folder for workspaces, the program around them, and a user who answers as a test tells him.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "storage/stored_ledger.h"
#include "storage/workspace/document_controller.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

namespace fs = std::filesystem;

/// All that is in a folder: contents and permissions by path; of links, where they lead.
inline std::map<std::string, std::string> contentsOf(const fs::path& folder) {
  std::map<std::string, std::string> contents;
  if (fs::is_regular_file(fs::symlink_status(folder))) {
    contents[""] = readText(folder);
    return contents;
  }
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const auto permissions = static_cast<unsigned>(entry.symlink_status().permissions());
    std::string& content = contents[entry.path().lexically_relative(folder)];
    content = std::to_string(permissions) + " ";
    if (entry.is_symlink()) {
      content += "-> " + fs::read_symlink(entry.path()).string();
    } else if (entry.is_regular_file()) {
      content += readText(entry.path());
    }
  }
  return contents;
}

inline std::vector<std::string> namesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

class ScriptedShell : public DocumentShell {
 public:
  struct Window : WorkspaceDocumentModelHaving {
    std::weak_ptr<WorkspaceModel> model;
    [[nodiscard]] std::weak_ptr<WorkspaceModel> documentModel() const override { return model; }
    void setDocumentModel(std::weak_ptr<WorkspaceModel> shown) override { model = shown; }
  };

  ChangesAnswer changes = ChangesAnswer::cancel;
  std::optional<fs::path> location;
  bool replaces = false;
  RecoveryAnswer recovery = RecoveryAnswer::later;

  /// What was asked and shown, in order.
  std::vector<std::string> heard;
  std::vector<DocumentAlert> alerts;
  std::function<void(std::size_t)> pressed;
  std::map<const WorkspaceDocument*, std::shared_ptr<Window>> windows;

  std::vector<std::string> takeHeard() { return std::exchange(heard, {}); }

  std::shared_ptr<WorkspaceDocumentModelHaving> showWindow(
      const std::shared_ptr<WorkspaceDocument>& document) override {
    heard.push_back("show " + document->displayName());
    auto& window = windows[document.get()];
    if (window == nullptr) {
      window = std::make_shared<Window>();
    }
    return window;
  }
  ChangesAnswer askToSaveChanges(WorkspaceDocument& document) override {
    heard.push_back("changes of " + document.displayName());
    return changes;
  }
  std::optional<fs::path> askForLocation(WorkspaceDocument& document) override {
    heard.push_back("location of " + document.displayName());
    return location;
  }
  bool askToReplace(WorkspaceDocument& document, const DocumentError& problem) override {
    heard.push_back("replace for " + document.displayName() + ": " + *problem.description());
    return replaces;
  }
  RecoveryAnswer askToRecover(const std::vector<std::string>& names) override {
    std::string question = "recover";
    for (const std::string& name : names) {
      question += " " + name;
    }
    heard.push_back(question);
    return recovery;
  }
  void showAlert(WorkspaceDocument&, const DocumentAlert& alert,
                 std::function<void(std::size_t)> onPressed) override {
    alerts.push_back(alert);
    pressed = std::move(onPressed);
  }
  void presentError(WorkspaceDocument& document, const Error& error) override {
    heard.push_back("error for " + document.displayName() + ": " +
                    error.description().value_or("?"));
  }
};

class NamedProvider : public QuoteProvider {
 public:
  explicit NamedProvider(std::string name) : name_(std::move(name)) {}
  [[nodiscard]] std::string providerName() const override { return name_; }

 private:
  std::string name_;
};

class WorkspaceWorld {
 public:
  WorkspaceWorld() {
    fs::create_directory(files);
    fs::create_directory(surroundings.temporaryDirectory);
    surroundings.sharedQuoteProvider = [this] { return provider; };
    surroundings.refreshModel = [this](const auto& model) { refreshed.push_back(model.get()); };
    surroundings.shell = shell;
  }

  TemporaryFolder folder;
  fs::path files = folder / "files";
  fs::path file = files / "Family.corvane";
  std::shared_ptr<QuoteProvider> provider = std::make_shared<NamedProvider>("Shared");
  std::shared_ptr<ScriptedShell> shell = std::make_shared<ScriptedShell>();
  std::vector<const WorkspaceModel*> refreshed;
  WorkspaceSurroundings surroundings = {.sharedQuoteProvider = nullptr,
                                        .appBundleVersion = "100",
                                        .appMarketingVersion = "1.0",
                                        .temporaryDirectory = folder / "temporary"};
  Ledger make;

  [[nodiscard]] std::shared_ptr<WorkspaceDocument> newDocument() const {
    auto document = std::make_shared<WorkspaceDocument>(surroundings);
    document->makeWindowControllers(nullptr);
    return document;
  }
  [[nodiscard]] std::shared_ptr<WorkspaceDocument> open(const fs::path& path) const {
    auto document = std::make_shared<WorkspaceDocument>(surroundings);
    document->open(path);
    return document;
  }

  /// Records a deposit in the first portfolio of `document`, which is made where there is none.
  PortfolioPointer deposit(WorkspaceDocument& document, const std::string& amount) {
    const auto& manager = document.model()->portfolioManagers.front();
    const auto portfolio = manager->portfolios().empty() ? manager->createPortfolio(Currency::cad())
                                                         : manager->portfolios().front();
    manager->recordTransactions({make.deposit(amount)}, portfolio, document.undoManager());
    return portfolio;
  }

  /// A saved workspace with one portfolio and one deposit.
  fs::path savedWorkspace() {
    const auto document = newDocument();
    deposit(*document, "1000");
    document->save(file);
    return file;
  }

  /// Runs `sql` on the database of the package at `package`.
  static void change(const fs::path& package, const std::string& sql) {
    SQLiteDatabase(package / WorkspaceDocument::databaseName, SQLiteDatabase::Mode::readWrite)
        .executeScript(sql);
  }
};

}  // namespace corvane::testing
