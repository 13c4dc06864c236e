// A folder that one program has for itself.
#pragma once

#include <filesystem>
#include <functional>
#include <utility>

namespace corvane {

/// A lock on a folder, which ends with this object and with the program at the latest: whoever gets
/// it knows that the program that held it before runs no more. It keeps nobody out who does not ask
/// for it. Some volumes have no locks; there it is never held. Any thread.
class DirectoryLock {
 public:
  /// Holds nothing.
  DirectoryLock() = default;
  DirectoryLock(DirectoryLock&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  DirectoryLock& operator=(DirectoryLock&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~DirectoryLock();

  /// The lock on the folder at `path` where nobody has it.
  [[nodiscard]] static DirectoryLock tryLock(const std::filesystem::path& path);

  /// The lock on the folder at `path`, once nobody has it any more.
  [[nodiscard]] static DirectoryLock waitFor(const std::filesystem::path& path);

  /// A folder that `make` makes, with the lock on it. Should another program, which takes it for
  /// an abandoned one, sweep it away before it is locked, `make` is called again.
  [[nodiscard]] static std::pair<std::filesystem::path, DirectoryLock> onNewDirectory(
      const std::function<std::filesystem::path()>& make);

  [[nodiscard]] bool isHeld() const { return descriptor_ >= 0; }

 private:
  explicit DirectoryLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_ = -1;
};

}  // namespace corvane
