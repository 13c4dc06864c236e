// A document: its file, its undo steps, and whether it has changes that are not saved.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/async/undo_manager.h"
#include "storage/workspace/document_error.h"
#include "storage/workspace/package_files.h"

namespace corvane {

/// What every document does with its file; a subclass reads and writes the content.
///
/// Saving never touches the file before the new one is complete: it is built beside the old one,
/// confirmed by the disk, and changes places with it in one step. Whenever that fails the file is
/// as it was, nothing is left beside it, and the document goes on. Main queue only.
class Document : public std::enable_shared_from_this<Document> {
 public:
  enum class ChangeType { done, undone, redone, cleared };
  /// What a save may put itself in the place of.
  enum class Replacing {
    ownFile,  ///< the file that was opened or saved last, as it was then
    anything
  };

  Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  virtual ~Document() = default;

  /// The file, with all links in its path followed; none for a document that was never saved.
  [[nodiscard]] const std::optional<std::filesystem::path>& fileURL() const { return fileURL_; }
  /// The name of the file without its extension, or that of a draft.
  [[nodiscard]] std::string displayName() const;
  void setDraftName(std::string name) { draftName_ = std::move(name); }

  /// Takes the undo steps of every edit; each of them counts as a change.
  [[nodiscard]] const std::shared_ptr<UndoManager>& undoManager() const { return undoManager_; }

  /// Whether the content differs from what was opened or saved last. Undoing everything since then
  /// makes it the same again.
  [[nodiscard]] bool isDocumentEdited() const;
  /// Counts a change that registers no undo step (`done`), or takes all changes for saved
  /// (`cleared`). The undo manager's steps count by themselves.
  void updateChangeCount(ChangeType type);

  /// Reads the document from `path`. Where a save there was cut short in a way that left nothing,
  /// what it was about to replace is put back first. Throws what read() throws; a document that
  /// fails to open is of no more use.
  void open(const std::filesystem::path& path);

  /// Reads the file again; all changes and undo steps are gone. Throws what read() throws; then the
  /// document is as it was.
  void revertToSaved();

  /// Writes the document to `path`, which becomes its file.
  ///
  /// Throws DocumentError::ChangedElsewhere or AlreadyExists where something stands there that
  /// `replacing` does not allow to replace, also where another program has put it there at the very
  /// last moment; FileError, and what write() throws.
  void save(const std::filesystem::path& path, Replacing replacing = Replacing::ownFile);

  /// `path` as fileURL() of a document there would be.
  [[nodiscard]] static std::filesystem::path resolved(const std::filesystem::path& path);

  /// The type of a document at `path`, by its name; empty where it is none that is known.
  [[nodiscard]] virtual std::string typeOf(const std::filesystem::path& path) const = 0;
  /// Reads the content from an existing file. What it throws leaves content that there was.
  virtual void read(const std::filesystem::path& url, std::string_view type) = 0;
  /// Writes the content to `url`, where nothing stands yet.
  virtual void write(const std::filesystem::path& url, std::string_view type) = 0;

 protected:
  /// Called after every change of the content, and when it was opened or saved.
  virtual void changeCountDidChange() {}

 private:
  [[nodiscard]] bool isReplaceable(const std::filesystem::path& found,
                                   const std::filesystem::path& path, Replacing replacing) const;
  void requireReplaceable(const std::filesystem::path& path, Replacing replacing) const;
  [[noreturn]] void failReplacing(const std::filesystem::path& path) const;

  std::optional<std::filesystem::path> fileURL_;
  std::optional<package::Stamp> stamp_;  ///< of the file when it was opened or saved
  std::string draftName_;

  std::shared_ptr<UndoManager> undoManager_ = std::make_shared<UndoManager>();
  // Edits done less those undone; where that number was saved; whether it can get there again.
  long position_ = 0;
  long savedPosition_ = 0;
  bool isSavedContentReachable_ = true;
  Subscription undoObservation_;
};

}  // namespace corvane
