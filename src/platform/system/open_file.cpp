#include "platform/system/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "platform/system/file_manager.h"

namespace corvane {
namespace {

constexpr std::size_t blockSize = 1 << 17;

void require(bool isDone, const char* operation, const std::filesystem::path& path) {
  if (!isDone) {
    throw FileError(operation, path, errno);
  }
}

}  // namespace

OpenFile::OpenFile(std::filesystem::path path)
    : path_(std::move(path)),
      // Opening a pipe would wait for a writer.
      descriptor_(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)) {
  require(descriptor_ >= 0, "read", path_);
  struct stat status {};
  if (::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor_);
    throw FileError("read", path_, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
  }
}

OpenFile::~OpenFile() {
  ::close(descriptor_);
}

void OpenFile::copyTo(const std::filesystem::path& to) const {
  const int target =
      ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666);
  require(target >= 0, "write", to);
  try {
    std::vector<char> block(blockSize);
    off_t position = 0;
    while (true) {
      const ssize_t length = ::pread(descriptor_, block.data(), block.size(), position);
      require(length >= 0 || errno == EINTR, "read", path_);
      if (length == 0) {
        break;
      }
      for (ssize_t done = 0; done < length;) {
        const ssize_t written =
            ::write(target, block.data() + done, static_cast<std::size_t>(length - done));
        require(written >= 0 || errno == EINTR, "write", to);
        done += std::max<ssize_t>(written, 0);
      }
      position += std::max<ssize_t>(length, 0);
    }
  } catch (const FileError&) {
    ::close(target);
    throw;
  }
  require(::close(target) == 0, "write", to);
}

}  // namespace corvane
