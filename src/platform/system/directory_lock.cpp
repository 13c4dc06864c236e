#include "platform/system/directory_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace corvane {
namespace {

namespace fs = std::filesystem;

int openDirectory(const fs::path& path) {
  return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

int lockDescriptor(int directory, int operation) {
  int result = -1;
  do {
    result = ::flock(directory, operation);
  } while (result != 0 && errno == EINTR);
  return result;
}

/// Whether the open folder is the one that stands at `path`, and not one that has been removed.
bool standsAt(const fs::path& path, int directory) {
  struct stat opened {};
  struct stat standing {};
  return ::fstat(directory, &opened) == 0 && ::lstat(path.c_str(), &standing) == 0 &&
         opened.st_dev == standing.st_dev && opened.st_ino == standing.st_ino;
}

}  // namespace

DirectoryLock::~DirectoryLock() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

DirectoryLock DirectoryLock::tryLock(const fs::path& path) {
  DirectoryLock lock(openDirectory(path));
  return lock.isHeld() && lockDescriptor(lock.descriptor_, LOCK_EX | LOCK_NB) == 0
             ? std::move(lock)
             : DirectoryLock();
}

DirectoryLock DirectoryLock::waitFor(const fs::path& path) {
  DirectoryLock lock(openDirectory(path));
  return lock.isHeld() && lockDescriptor(lock.descriptor_, LOCK_EX) == 0 ? std::move(lock)
                                                                         : DirectoryLock();
}

std::pair<fs::path, DirectoryLock> DirectoryLock::onNewDirectory(
    const std::function<fs::path()>& make) {
  while (true) {
    fs::path made = make();
    DirectoryLock lock(openDirectory(made));
    if (!lock.isHeld()) {
      if (errno == ENOENT) {
        continue;
      }
      return {std::move(made), DirectoryLock()};
    }
    if (lockDescriptor(lock.descriptor_, LOCK_EX | LOCK_NB) != 0) {
      if (errno == EWOULDBLOCK) {
        continue;
      }
      return {std::move(made), DirectoryLock()};
    }
    if (standsAt(made, lock.descriptor_)) {
      return {std::move(made), std::move(lock)};
    }
  }
}

}  // namespace corvane
