// The files of a package: a folder that the user sees as one file.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>

#include "platform/error.h"
#include "platform/system/file_manager.h"
#include "platform/system/open_file.h"

namespace corvane {

/// The cases of WorkspaceDocumentError.
struct WorkspaceDocumentErrorCases {
  /// The folder is missing, is no folder, or cannot be listed.
  struct FileEnumerationError {
    std::filesystem::path directory;
    int number;  ///< the system's error number
    friend bool operator==(const FileEnumerationError&, const FileEnumerationError&) = default;
  };
  using Case = std::variant<FileEnumerationError>;
};

/// Why a package could not be looked through.
class WorkspaceDocumentError
    : public VariantError<WorkspaceDocumentError, WorkspaceDocumentErrorCases> {
 public:
  using VariantError::VariantError;

  /// "The files of “/home/a/b” cannot be listed: Not a directory."
  [[nodiscard]] std::optional<std::string> description() const override;
};

/// Operations on the flat files of a package. Folders inside are passed over, and so are empty
/// files. All throw WorkspaceDocumentError where the folder cannot be listed, and FileError.
namespace package {

/// Copies every file of `source` to `destination`, which exists. A link is refused, since what it
/// leads to belongs to somebody else. The file `held.name` is copied through `held.file`, so that
/// the locks on it stay.
struct HeldFile {
  std::string name;
  const OpenFile* file;
};
void copyFiles(const std::filesystem::path& source, const std::filesystem::path& destination,
               const std::optional<HeldFile>& held = std::nullopt);

/// Removes every file of `directory`.
void removeFiles(const std::filesystem::path& directory);

/// Whether every file of `directory` stands in `other` with the same bytes. What processes share of
/// a database ("…-shm") says nothing of that, and is passed over.
[[nodiscard]] bool isContained(const std::filesystem::path& directory,
                               const std::filesystem::path& other);

/// All that is in a package, by name: equal as long as nobody has changed it.
using Stamp = std::map<std::string, FileStamp>;

/// None where there is nothing at `path`. The stamp of a plain file has one entry without a name.
[[nodiscard]] std::optional<Stamp> stamp(const std::filesystem::path& path);

/// Gives `package` and its files the permissions that `former` and its files of the same names
/// have.
void takeOverPermissions(const std::filesystem::path& package, const std::filesystem::path& former);

}  // namespace package
}  // namespace corvane
