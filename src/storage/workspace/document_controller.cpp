#include "storage/workspace/document_controller.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "platform/system/replacement_directory.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view recentDocumentsKey = "recentDocuments";

}  // namespace

DocumentController::DocumentController(WorkspaceSurroundings surroundings, UserDefaults& defaults)
    : surroundings_(std::move(surroundings)), defaults_(defaults) {
  assert(surroundings_.shell && "documents need somebody to ask");
}

std::shared_ptr<WorkspaceDocument> DocumentController::newDocument() {
  auto document = std::make_shared<WorkspaceDocument>(surroundings_);
  document->setDraftName(unusedDraftName());
  // The store first: a window of a document that cannot work would only have to go again.
  document->makeWindowControllers(nullptr);
  documents_.push_back(document);
  showWindow(document);
  return document;
}

std::shared_ptr<WorkspaceDocument> DocumentController::openDocument(const fs::path& path) {
  const fs::path url = Document::resolved(path);
  auto document = documentAt(url);
  if (document != nullptr) {
    (void)surroundings_.shell->showWindow(document);
  } else {
    document = std::make_shared<WorkspaceDocument>(surroundings_);
    document->open(url);
    documents_.push_back(document);
    showWindow(document);
    document->checkFileInBackground();
  }
  noteRecentDocument(url);
  return document;
}

void DocumentController::offerRecovery() {
  auto copies = WorkingCopy::findAbandoned(surroundings_.temporaryDirectory);
  if (copies.empty()) {
    return;
  }
  std::vector<std::string> names;
  for (const auto& copy : copies) {
    names.push_back(copy->unsaved()->name);
  }
  switch (surroundings_.shell->askToRecover(names)) {
    case DocumentShell::RecoveryAnswer::recover:
      for (auto& copy : copies) {
        recover(std::move(copy));
      }
      break;
    case DocumentShell::RecoveryAnswer::later:
      break;
    case DocumentShell::RecoveryAnswer::discard:
      for (auto& copy : copies) {
        copy->setKept(false);
      }
      break;
  }
}

void DocumentController::recover(std::unique_ptr<WorkingCopy> copy) {
  auto document = std::make_shared<WorkspaceDocument>(surroundings_);
  try {
    document->recover(std::move(copy));
  } catch (const Error& error) {
    surroundings_.shell->presentError(*document, error);
    return;
  }
  documents_.push_back(document);
  showWindow(document);
}

std::shared_ptr<WorkspaceDocument> DocumentController::documentAt(const fs::path& url) const {
  const auto found = std::ranges::find_if(documents_, [&](const auto& document) {
    std::error_code error;
    const auto& own = document->fileURL();
    return own && (*own == url || fs::equivalent(*own, url, error));
  });
  return found == documents_.end() ? nullptr : *found;
}

std::string DocumentController::unusedDraftName() const {
  const std::string first(WorkspaceDocument::defaultDraftName);
  std::string name = first;
  for (int number = 2; std::ranges::count(documents_, name, &WorkspaceDocument::displayName) > 0;
       ++number) {
    name = first + " " + std::to_string(number);
  }
  return name;
}

void DocumentController::showWindow(const std::shared_ptr<WorkspaceDocument>& document) {
  document->makeWindowControllers(surroundings_.shell->showWindow(document));
}

bool DocumentController::saveDocument(const std::shared_ptr<WorkspaceDocument>& document) {
  return document->fileURL() ? save(document, *document->fileURL(), Document::Replacing::ownFile)
                             : saveDocumentAs(document);
}

bool DocumentController::saveDocumentAs(const std::shared_ptr<WorkspaceDocument>& document) {
  auto location = surroundings_.shell->askForLocation(*document);
  if (!location) {
    return false;
  }
  if (document->typeOf(*location) != WorkspaceDocument::workspaceType) {
    *location += WorkspaceDocument::filenameExtension;
  }
  return save(document, *location, Document::Replacing::ownFile);
}

bool DocumentController::save(const std::shared_ptr<WorkspaceDocument>& document,
                              const fs::path& path, Document::Replacing replacing) {
  DocumentShell& shell = *surroundings_.shell;
  try {
    const fs::path url = Document::resolved(path);
    const auto other = documentAt(url);
    if (other != nullptr && other != document) {
      throw DocumentError(DocumentError::OpenElsewhere{url});
    }
    document->save(url, replacing);
    noteRecentDocument(url);
    return true;
  } catch (const DocumentError& error) {
    if (!error.isAboutReplacing()) {
      shell.presentError(*document, error);
    } else if (shell.askToReplace(*document, error)) {
      return save(document, path, Document::Replacing::anything);
    }
  } catch (const Error& error) {
    shell.presentError(*document, error);
  }
  return false;
}

bool DocumentController::closeDocument(const std::shared_ptr<WorkspaceDocument>& document) {
  // A copy, since what is given may be the very place in the list that goes.
  const auto closing = document;  // NOLINT(performance-unnecessary-copy-initialization)
  if (closing->isDocumentEdited()) {
    switch (surroundings_.shell->askToSaveChanges(*closing)) {
      case DocumentShell::ChangesAnswer::save:
        if (!saveDocument(closing)) {
          return false;
        }
        break;
      case DocumentShell::ChangesAnswer::discard:
        break;
      case DocumentShell::ChangesAnswer::cancel:
        return false;
    }
  }
  std::erase(documents_, closing);
  return true;
}

bool DocumentController::closeAllDocuments() {
  while (!documents_.empty()) {
    if (!closeDocument(documents_.front())) {
      return false;
    }
  }
  return true;
}

std::vector<fs::path> DocumentController::recentDocuments() const {
  std::vector<fs::path> recent;
  for (const auto& path :
       defaults_.stringList(recentDocumentsKey).value_or(std::vector<std::string>())) {
    std::error_code error;
    ReplacementDirectory::putBackInterrupted(path);
    if (fs::exists(path, error)) {
      recent.emplace_back(path);
    }
  }
  return recent;
}

void DocumentController::clearRecentDocuments() {
  defaults_.remove(recentDocumentsKey);
}

void DocumentController::noteRecentDocument(const fs::path& url) {
  auto recent = defaults_.stringList(recentDocumentsKey).value_or(std::vector<std::string>());
  std::erase(recent, url.string());
  recent.insert(recent.begin(), url.string());
  recent.resize(std::min(recent.size(), maximumRecentDocuments));
  defaults_.setStringList(recentDocumentsKey, recent);
}

}  // namespace corvane
