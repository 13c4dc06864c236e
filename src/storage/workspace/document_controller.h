// The documents that are open, and what becomes of them.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "platform/system/user_defaults.h"
#include "storage/workspace/workspace_document.h"

namespace corvane {

/// Opens, saves and closes documents as the user asks for it, and knows no widget: what only the
/// user can decide is asked through the shell. Main queue only.
class DocumentController {
 public:
  /// How many documents are remembered.
  static constexpr std::size_t maximumRecentDocuments = 10;

  /// `surroundings` has a shell. `defaults` keeps the recent documents and must outlive this.
  DocumentController(WorkspaceSurroundings surroundings, UserDefaults& defaults);
  DocumentController(const DocumentController&) = delete;
  DocumentController& operator=(const DocumentController&) = delete;

  /// The open documents, in the order in which they were opened.
  [[nodiscard]] const std::vector<std::shared_ptr<WorkspaceDocument>>& documents() const {
    return documents_;
  }

  /// A new document in its window. Throws what WorkspaceDocument::makeWindowControllers throws;
  /// then there is no document and no window.
  std::shared_ptr<WorkspaceDocument> newDocument();

  /// The document at `path` in its window; where it is open already, that one. Throws what
  /// WorkspaceDocument::read throws; then nothing has been opened.
  std::shared_ptr<WorkspaceDocument> openDocument(const std::filesystem::path& path);

  /// Clears away what programs that run no more have left. Where that is unsaved work, asks once
  /// what is to become of it; what the user wants is opened as drafts called “Recovered …”, beside
  /// whatever their files hold by now. To be called at a start.
  void offerRecovery();

  /// Saves a document where it was opened or saved last, or else where the user says. False where
  /// the user thinks better of it, or it fails, which the shell has been told then.
  bool saveDocument(const std::shared_ptr<WorkspaceDocument>& document);

  /// Saves a document where the user says, which is its file from then on. A name without the
  /// extension of workspaces gets it.
  bool saveDocumentAs(const std::shared_ptr<WorkspaceDocument>& document);

  /// Asks about unsaved changes and lets go of the document; false where it stays open.
  bool closeDocument(const std::shared_ptr<WorkspaceDocument>& document);

  /// Closes one document after the other, until one stays open: then false.
  bool closeAllDocuments();

  /// What was opened or saved last and is still there, the latest first.
  [[nodiscard]] std::vector<std::filesystem::path> recentDocuments() const;
  void clearRecentDocuments();

 private:
  [[nodiscard]] std::shared_ptr<WorkspaceDocument> documentAt(
      const std::filesystem::path& url) const;
  [[nodiscard]] std::string unusedDraftName() const;
  void recover(std::unique_ptr<WorkingCopy> copy);
  void showWindow(const std::shared_ptr<WorkspaceDocument>& document);
  bool save(const std::shared_ptr<WorkspaceDocument>& document, const std::filesystem::path& path,
            Document::Replacing replacing);
  void noteRecentDocument(const std::filesystem::path& url);

  const WorkspaceSurroundings surroundings_;
  UserDefaults& defaults_;
  std::vector<std::shared_ptr<WorkspaceDocument>> documents_;
};

}  // namespace corvane
