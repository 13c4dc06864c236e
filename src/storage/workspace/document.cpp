#include "storage/workspace/document.h"

#include "platform/system/replacement_directory.h"

namespace corvane {

namespace fs = std::filesystem;

Document::Document() {
  undoObservation_ = undoManager_->addObserver([this](UndoManager::Change change) {
    switch (change) {
      case UndoManager::Change::registered:
        // A new edit after undoing past the saved content cuts the way back to that off.
        isSavedContentReachable_ = isSavedContentReachable_ && savedPosition_ <= position_;
        ++position_;
        changeCountDidChange();
        break;
      case UndoManager::Change::undone:
        updateChangeCount(ChangeType::undone);
        break;
      case UndoManager::Change::redone:
        updateChangeCount(ChangeType::redone);
        break;
    }
  });
}

std::string Document::displayName() const {
  return fileURL_ ? fileURL_->stem().string() : draftName_;
}

bool Document::isDocumentEdited() const {
  return !isSavedContentReachable_ || position_ != savedPosition_;
}

void Document::updateChangeCount(ChangeType type) {
  switch (type) {
    case ChangeType::done:
      isSavedContentReachable_ = false;
      break;
    case ChangeType::undone:
      --position_;
      break;
    case ChangeType::redone:
      ++position_;
      break;
    case ChangeType::cleared:
      savedPosition_ = position_;
      isSavedContentReachable_ = true;
      break;
  }
  changeCountDidChange();
}

fs::path Document::resolved(const fs::path& path) {
  std::error_code error;
  fs::path full = fs::weakly_canonical(fs::absolute(path, error), error);
  if (error) {
    full = fs::absolute(path, error).lexically_normal();
  }
  return full.has_filename() ? full : full.parent_path();
}

void Document::open(const fs::path& path) {
  const fs::path url = resolved(path);
  ReplacementDirectory::putBackInterrupted(url);
  // Taken first, so that a change while the files are being read is noticed at the next save.
  const auto found = package::stamp(url);
  fileURL_ = url;
  read(url, typeOf(url));
  stamp_ = found;
  updateChangeCount(ChangeType::cleared);
}

void Document::revertToSaved() {
  if (fileURL_) {
    open(*fileURL_);
    undoManager_->removeAllActions();
  }
}

void Document::save(const fs::path& path, Replacing replacing) {
  const fs::path target = resolved(path);
  ReplacementDirectory::putBackInterrupted(target);
  requireReplaceable(target, replacing);
  const ReplacementDirectory beside(target);
  const fs::path finished = beside.path() / target.filename();
  write(finished, typeOf(target));
  if (package::stamp(target)) {
    package::takeOverPermissions(finished, target);
  }
  files::synchronize(finished);
  const auto written = package::stamp(finished);

  // Once more, since writing takes its time, and then on what has come out.
  requireReplaceable(target, replacing);
  if (!files::replace(target, finished, [&](const fs::path& former) {
        return isReplaceable(former, target, replacing);
      })) {
    failReplacing(target);
  }
  fileURL_ = target;
  stamp_ = written;
  updateChangeCount(ChangeType::cleared);
  ReplacementDirectory::removeAbandoned(target);
}

bool Document::isReplaceable(const fs::path& found, const fs::path& path,
                             Replacing replacing) const {
  if (replacing == Replacing::anything) {
    return true;
  }
  try {
    return path == fileURL_ && package::stamp(found) == stamp_;
  } catch (const Error&) {
    // Somebody changes it at this moment.
    return false;
  }
}

void Document::requireReplaceable(const fs::path& path, Replacing replacing) const {
  if (package::stamp(path) && !isReplaceable(path, path, replacing)) {
    failReplacing(path);
  }
}

void Document::failReplacing(const fs::path& path) const {
  if (path == fileURL_) {
    throw DocumentError(DocumentError::ChangedElsewhere{path});
  }
  throw DocumentError(DocumentError::AlreadyExists{path});
}

}  // namespace corvane
