#include "platform/system/replacement_directory.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "platform/system/file_manager.h"
#include "platform/system/log.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// Whether `name` is one that files::makeReplacementDirectory gives beside a file called `target`.
bool isReplacementName(const std::string& name, const std::string& target) {
  const std::string start = "." + target + ".";
  return name.size() > start.size() && name.starts_with(start) &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(start.size()), name.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

/// The folders beside `target` that are called as replacement folders are.
std::vector<fs::path> replacementDirectoriesOf(const fs::path& target) {
  const fs::path parent = target.has_parent_path() ? target.parent_path() : fs::path(".");
  std::error_code error;
  std::vector<fs::path> found;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isReplacementName(entry->path().filename(), target.filename())) {
      found.push_back(entry->path());
    }
  }
  return found;
}

bool stands(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

/// Whether a replacement in two steps was cut short, so that the former file stands in `directory`
/// and nothing else tells that the new one has taken its place.
bool mayHoldFormerFile(const fs::path& directory, const fs::path& target) {
  std::error_code error;
  bool holdsFormer = false;
  for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    holdsFormer = holdsFormer || entry->path().extension() == files::asideExtension;
  }
  const bool isReplaced = stands(target) && !stands(directory / target.filename());
  return error || (holdsFormer && !isReplaced);
}

}  // namespace

ReplacementDirectory::ReplacementDirectory(const fs::path& target) {
  std::tie(path_, lock_) =
      DirectoryLock::onNewDirectory([&] { return files::makeReplacementDirectory(target); });
}

ReplacementDirectory::~ReplacementDirectory() {
  try {
    files::remove(path_);
  } catch (const FileError& error) {
    Log::write(error);
  }
}

void ReplacementDirectory::removeAbandoned(const fs::path& target) {
  for (const fs::path& directory : replacementDirectoriesOf(target)) {
    const auto lock = DirectoryLock::tryLock(directory);
    if (lock.isHeld() && !mayHoldFormerFile(directory, target)) {
      std::error_code ignored;
      fs::remove_all(directory, ignored);
    }
  }
}

void ReplacementDirectory::putBackInterrupted(const fs::path& target) {
  if (stands(target)) {
    return;
  }
  for (const fs::path& directory : replacementDirectoriesOf(target)) {
    const auto lock = DirectoryLock::tryLock(directory);
    const fs::path aside = files::asideOf(directory / target.filename());
    if (lock.isHeld() && stands(aside) && !stands(target)) {
      std::error_code error;
      fs::rename(aside, target, error);
      if (!error) {
        fs::remove_all(directory, error);
      }
    }
  }
}

}  // namespace corvane
