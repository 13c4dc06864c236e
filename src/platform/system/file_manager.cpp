#include "platform/system/file_manager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <system_error>

#include "platform/system/directory_lock.h"

namespace corvane {

std::optional<std::string> FileError::description() const {
  return "Cannot " + operation + " “" + path.string() +
         "”: " + std::generic_category().message(number) + ".";
}

namespace files {
namespace {

namespace fs = std::filesystem;

/// An open file descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) {
      ::close(number_);
    }
  }
  [[nodiscard]] int number() const { return number_; }
  /// Closes the file and tells whether that, and with it the last writing, went well.
  [[nodiscard]] bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

void require(bool isDone, const char* operation, const fs::path& path) {
  if (!isDone) {
    throw FileError(operation, path, errno);
  }
}

void require(const std::error_code& error, const char* operation, const fs::path& path) {
  if (error) {
    throw FileError(operation, path, error.value());
  }
}

fs::path parentOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

void synchronizeOne(const fs::path& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  require(file.number() >= 0 && ::fsync(file.number()) == 0, "save", path);
}

void writeAll(int file, std::string_view content, const fs::path& path) {
  while (!content.empty()) {
    const ssize_t written = ::write(file, content.data(), content.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    require(written >= 0, "write", path);
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

fs::path programDirectory(const char* variable, const char* underHome) {
  // The base directories are absolute by definition; others are to be ignored.
  const char* base = std::getenv(variable);
  const char* home = std::getenv("HOME");
  fs::path directory;
  if (base != nullptr && *base == '/') {
    directory = base;
  } else {
    directory = fs::path(home != nullptr && *home != '\0' ? home : "/tmp") / underHome;
  }
  directory /= "corvane";
  std::error_code error;
  fs::create_directories(directory, error);
  require(error, "create", directory);
  return directory;
}

/// Makes something hidden beside `path` with a name that nothing has, by `make(name)`, which
/// answers less than 0 where that fails; returns its answer. What is made has the usual
/// permissions.
template <typename Make>
int makeBeside(const fs::path& path, fs::path& made, Make make) {
  std::random_device random;
  int result = -1;
  do {
    made = parentOf(path) / ("." + path.filename().string() + "." + std::to_string(random()));
    result = make(made);
  } while (result < 0 && errno == EEXIST);
  return result;
}

/// Why files cannot be made in `directory`: the system's error number; 0 where they can.
int whyUnusable(const fs::path& directory) {
  std::error_code error;
  if (!fs::is_directory(directory, error)) {
    return error ? error.value() : ENOTDIR;
  }
  return ::access(directory.c_str(), W_OK | X_OK) == 0 ? 0 : errno;
}

/// Lets the names of two existing files or folders change places in one step; false where the
/// system has no such step.
bool exchangeNames(const fs::path& first, const fs::path& second) {
#if defined(__linux__)
  return ::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE) == 0;
#elif defined(__APPLE__)
  return ::renamex_np(first.c_str(), second.c_str(), RENAME_SWAP) == 0;
#else
  errno = ENOSYS;
  return false;
#endif
}

/// Gives `from` the name `to` where nothing has it; false with EEXIST where something has.
bool renameToFreeName(const fs::path& from, const fs::path& to) {
#if defined(__linux__)
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
#elif defined(__APPLE__)
  if (::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0) {
    return true;
  }
#else
  errno = ENOSYS;
#endif
  if (errno != EINVAL && errno != ENOSYS) {
    return false;
  }
  // A volume without that step.
  std::error_code error;
  if (fs::exists(fs::symlink_status(to, error))) {
    errno = EEXIST;
    return false;
  }
  return ::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

fs::path cachesDirectory() {
  return programDirectory("XDG_CACHE_HOME", ".cache");
}

fs::path configDirectory() {
  return programDirectory("XDG_CONFIG_HOME", ".config");
}

fs::path temporaryDirectory(std::optional<FileError>* problem) {
  const char* named = std::getenv("TMPDIR");
  fs::path wanted = named != nullptr && *named != '\0' ? named : "/tmp";
  const int reason = whyUnusable(wanted);
  if (reason == 0) {
    return wanted;
  }
  if (problem != nullptr) {
    problem->emplace("use the temporary folder", wanted, reason);
  }
  if (whyUnusable("/tmp") == 0) {
    return "/tmp";
  }
  try {
    return cachesDirectory();
  } catch (const FileError&) {
    return wanted;
  }
}

/// A file may say that it is larger than what is in it.
constexpr off_t mostRoomAtOnce = off_t{64} << 20;

std::string read(const fs::path& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  require(file.number() >= 0, "read", path);
  std::string content;
  struct stat status {};
  if (::fstat(file.number(), &status) == 0 && status.st_size > 0) {
    content.reserve(static_cast<std::size_t>(std::min(status.st_size, mostRoomAtOnce)));
  }
  char buffer[1 << 16];
  while (true) {
    const ssize_t length = ::read(file.number(), buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) {
      continue;
    }
    require(length >= 0, "read", path);
    if (length == 0) {
      return content;
    }
    content.append(buffer, static_cast<std::size_t>(length));
  }
}

/// Writes into a device or a pipe, whose place no file can take.
static void writeInto(const fs::path& path, std::string_view content) {
  Descriptor device(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  require(device.number() >= 0, "write", path);
  writeAll(device.number(), content, path);
  require(device.close(), "write", path);
}

void writeAtomically(const fs::path& path, std::string_view content) {
  // A link stays one: what it leads to is written.
  std::error_code error;
  const fs::path resolved = fs::canonical(path, error);
  const fs::path& target = error ? path : resolved;
  if (fs::exists(path, error) && !fs::is_regular_file(path, error) &&
      !fs::is_directory(path, error)) {
    writeInto(path, content);
    return;
  }
  fs::path temporary;
  Descriptor file(makeBeside(target, temporary, [](const fs::path& candidate) {
    return ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  }));
  require(file.number() >= 0, "write", path);
  try {
    struct stat existing {};
    if (::stat(target.c_str(), &existing) == 0) {
      require(::fchmod(file.number(), existing.st_mode & 07777) == 0, "write", path);
    }
    writeAll(file.number(), content, path);
    require(::fsync(file.number()) == 0 && file.close(), "write", path);
    require(::rename(temporary.c_str(), target.c_str()) == 0, "write", path);
  } catch (const FileError&) {
    ::unlink(temporary.c_str());
    throw;
  }
  synchronizeOne(parentOf(target));
}

fs::path makeReplacementDirectory(const fs::path& path) {
  fs::path directory;
  const int result = makeBeside(
      path, directory, [](const fs::path& candidate) { return ::mkdir(candidate.c_str(), 0777); });
  require(result == 0, "create a folder beside", path);
  return directory;
}

fs::path makePrivateDirectory(const fs::path& parent, std::string_view name) {
  std::string pattern = parent / (std::string(name) + "XXXXXX");
  require(::mkdtemp(pattern.data()) != nullptr, "create a folder in", parent);
  return pattern;
}

FileStamp stamp(const fs::path& path) {
  struct stat status {};
  require(::lstat(path.c_str(), &status) == 0, "read", path);
#if defined(__APPLE__)
  const timespec& modified = status.st_mtimespec;
#else
  const timespec& modified = status.st_mtim;
#endif
  return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
          static_cast<std::uint64_t>(status.st_size),
          std::int64_t{modified.tv_sec} * 1'000'000'000 + modified.tv_nsec};
}

void synchronize(const fs::path& path) {
  std::error_code error;
  if (fs::is_directory(fs::symlink_status(path, error))) {
    fs::directory_iterator entry(path, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      if (!entry->is_symlink(error)) {
        synchronize(entry->path());
      }
    }
    require(error, "save", path);
  }
  synchronizeOne(path);
}

fs::path asideOf(const fs::path& replacement) {
  return replacement.string() + std::string(asideExtension);
}

bool replace(const fs::path& path, const fs::path& replacement,
             const std::function<bool(const fs::path& former)>& isExpected) {
  // Two programs that change back what they did not expect could lose what a third has put there
  // in between.
  const auto turn = DirectoryLock::waitFor(parentOf(path));
  const auto isRefused = [&](const fs::path& former) { return isExpected && !isExpected(former); };
  if (renameToFreeName(replacement, path)) {
    synchronizeOne(parentOf(path));
    return true;
  }
  require(errno == EEXIST, "replace", path);
  if (exchangeNames(replacement, path)) {
    if (isRefused(replacement)) {
      require(exchangeNames(replacement, path), "replace", path);
      return false;
    }
    synchronizeOne(parentOf(path));
    return true;
  }
  require(errno == EINVAL || errno == ENOSYS, "replace", path);
  // A volume without the exchange: the old one steps aside, and comes back if the new one fails.
  const fs::path aside = asideOf(replacement);
  require(::rename(path.c_str(), aside.c_str()) == 0, "replace", path);
  if (isRefused(aside)) {
    require(::rename(aside.c_str(), path.c_str()) == 0, "replace", path);
    return false;
  }
  if (::rename(replacement.c_str(), path.c_str()) != 0) {
    const int reason = errno;
    ::rename(aside.c_str(), path.c_str());
    throw FileError("replace", path, reason);
  }
  require(::rename(aside.c_str(), replacement.c_str()) == 0, "replace", path);
  synchronizeOne(parentOf(path));
  return true;
}

void copy(const fs::path& from, const fs::path& to) {
  std::error_code error;
  if (fs::exists(fs::symlink_status(to, error))) {
    throw FileError("copy to", to, EEXIST);
  }
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
  if (error) {
    std::error_code ignored;
    fs::remove_all(to, ignored);
  }
  require(error, "copy", from);
}

void remove(const fs::path& path) {
  std::error_code error;
  fs::remove_all(path, error);
  require(error, "remove", path);
}

}  // namespace files
}  // namespace corvane
