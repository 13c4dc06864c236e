// Files and folders, changed in such a way that nothing is lost when the power fails.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/error.h"

namespace corvane {

/// What the file system refused, and why.
class FileError : public ErrorValue<FileError> {
 public:
  FileError(std::string what, std::filesystem::path where, int errorNumber)
      : operation(std::move(what)), path(std::move(where)), number(errorNumber) {}

  std::string operation;  ///< "read", "write", "replace" and so on
  std::filesystem::path path;
  int number;  ///< the system's error number

  /// "Cannot write “/home/a/b”: No space left on device."
  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] bool hasSameValues(const FileError& other) const {
    return operation == other.operation && path == other.path && number == other.number;
  }
};

/// What changes when a file is written or another takes its place: enough to see that somebody did.
struct FileStamp {
  std::uint64_t volume = 0;
  std::uint64_t file = 0;  ///< the system's number of the file on its volume
  std::uint64_t size = 0;
  std::int64_t modifiedNanoseconds = 0;  ///< since 1970

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// Operations on files. All throw FileError. Any thread.
namespace files {

/// The program's own folders, made where they are missing: "corvane" under $XDG_CACHE_HOME or
/// ~/.cache, and under $XDG_CONFIG_HOME or ~/.config.
[[nodiscard]] std::filesystem::path cachesDirectory();
[[nodiscard]] std::filesystem::path configDirectory();

/// Where programs keep what goes with them: $TMPDIR, or /tmp without one. Where that cannot be used
/// `problem` is told why, and another folder that can be is returned, if there is any. Throws
/// nothing.
[[nodiscard]] std::filesystem::path temporaryDirectory(std::optional<FileError>* problem = nullptr);

[[nodiscard]] std::string read(const std::filesystem::path& path);

/// Writes `content` beside `path`, has the disk confirm it, and puts it in place with one rename:
/// at no moment is there neither the old nor the new file. A file that is replaced hands its
/// permissions on. Where `path` is a link, what it leads to is written. A device or a pipe cannot
/// be replaced and is written into.
void writeAtomically(const std::filesystem::path& path, std::string_view content);

/// A new, empty, hidden folder beside `path`, on the same volume, to build something in that is to
/// take the place of `path`. The caller removes it.
[[nodiscard]] std::filesystem::path makeReplacementDirectory(const std::filesystem::path& path);

/// A new, empty folder in `parent` that only the user can look into; its name starts with `name`.
/// The caller removes it.
[[nodiscard]] std::filesystem::path makePrivateDirectory(const std::filesystem::path& parent,
                                                         std::string_view name = "corvane-");

/// The stamp of a file, or of a link itself.
[[nodiscard]] FileStamp stamp(const std::filesystem::path& path);

/// Has the disk confirm a file, or a folder with all that is in it.
void synchronize(const std::filesystem::path& path);

/// Puts the finished file or folder `replacement` into the place of `path`, on the same volume.
/// Where something stands at `path` the two change places in one step, and what was there is left
/// at `replacement`. A volume without that step takes two, with what was there at
/// asideOf(replacement) in between.
///
/// What was there is shown to `isExpected` afterwards; where that says no, the two change back and
/// the answer is false. Programs that replace files in one folder do so one after the other.
bool replace(const std::filesystem::path& path, const std::filesystem::path& replacement,
             const std::function<bool(const std::filesystem::path& former)>& isExpected = nullptr);

/// Where what is replaced by `replacement` steps aside to.
inline constexpr std::string_view asideExtension = ".old";
[[nodiscard]] std::filesystem::path asideOf(const std::filesystem::path& replacement);

/// Copies a file, or a folder with all that is in it, to `to`, where nothing may stand; where that
/// fails nothing is left there.
void copy(const std::filesystem::path& from, const std::filesystem::path& to);

/// Removes a file, or a folder with all that is in it; what does not exist is removed already.
void remove(const std::filesystem::path& path);

}  // namespace files
}  // namespace corvane
