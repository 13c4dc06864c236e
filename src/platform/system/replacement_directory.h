// A folder in which something is built that is to take the place of a file.
#pragma once

#include <filesystem>

#include "platform/system/directory_lock.h"

namespace corvane {

/// A hidden folder beside a file, on the same volume. It goes with this object, together with
/// whatever is in it then. It is locked, so that others see that it is in use. Any thread.
class ReplacementDirectory {
 public:
  /// Makes the folder beside `target`. Throws FileError.
  explicit ReplacementDirectory(const std::filesystem::path& target);
  ReplacementDirectory(const ReplacementDirectory&) = delete;
  ReplacementDirectory& operator=(const ReplacementDirectory&) = delete;
  /// Removes the folder; where that fails, one line of the log tells.
  ~ReplacementDirectory();

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// Removes such folders beside `target` that were left when a program was killed. One that a
  /// running program uses stays, and so does one that may hold the only copy of what was replaced.
  /// What cannot be removed is left.
  static void removeAbandoned(const std::filesystem::path& target);

  /// Where nothing stands at `target`, and a program was killed while it replaced it on a volume
  /// that takes two steps for that: puts what had stepped aside back.
  static void putBackInterrupted(const std::filesystem::path& target);

 private:
  std::filesystem::path path_;
  DirectoryLock lock_;
};

}  // namespace corvane
