#include "platform/system/replacement_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/system/file_manager.h"
#include "platform/system/log.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// A lock on the folder at `path`, which ends with the program; -1 where another has it.
int lockOn(const fs::path& path) {
  const int directory = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (directory >= 0 && ::flock(directory, LOCK_EX | LOCK_NB) != 0) {
    ::close(directory);
    return -1;
  }
  return directory;
}

/// Whether `name` is one that files::makeReplacementDirectory gives beside a file called `target`.
bool isReplacementName(const std::string& name, const std::string& target) {
  const std::string start = "." + target + ".";
  return name.size() > start.size() && name.starts_with(start) &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(start.size()), name.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

/// Whether a replacement in two steps was cut short, so that the former file stands here.
bool mayHoldFormerFile(const fs::path& directory) {
  std::error_code error;
  for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->path().extension() == ".old") {
      return true;
    }
  }
  return bool(error);
}

}  // namespace

ReplacementDirectory::ReplacementDirectory(const fs::path& target)
    : path_(files::makeReplacementDirectory(target)), lock_(lockOn(path_)) {}

ReplacementDirectory::~ReplacementDirectory() {
  try {
    files::remove(path_);
  } catch (const FileError& error) {
    Log::write(error);
  }
  if (lock_ >= 0) {
    ::close(lock_);
  }
}

void ReplacementDirectory::removeAbandoned(const fs::path& target) {
  const fs::path parent = target.has_parent_path() ? target.parent_path() : fs::path(".");
  std::error_code error;
  std::vector<fs::path> found;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isReplacementName(entry->path().filename(), target.filename())) {
      found.push_back(entry->path());
    }
  }
  for (const fs::path& directory : found) {
    const int lock = lockOn(directory);
    if (lock < 0) {
      continue;
    }
    if (!mayHoldFormerFile(directory)) {
      fs::remove_all(directory, error);
    }
    ::close(lock);
  }
}

}  // namespace corvane
