#include "storage/workspace/package_files.h"

#include <system_error>
#include <vector>

namespace corvane {

std::optional<std::string> WorkspaceDocumentError::description() const {
  const auto& [directory, number] = std::get<FileEnumerationError>(which());
  return "The files of “" + directory.string() +
         "” cannot be listed: " + std::generic_category().message(number) + ".";
}

namespace package {
namespace {

namespace fs = std::filesystem;

/// Calls `visit` with each entry of `directory`.
template <typename Visit>
void forEachEntry(const fs::path& directory, Visit visit) {
  std::error_code error;
  fs::directory_iterator entry(directory, error);
  // The list is read to its end first, since a visit may remove what it is shown.
  std::vector<fs::path> found;
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    found.push_back(entry->path());
  }
  if (error) {
    throw WorkspaceDocumentError(
        WorkspaceDocumentError::FileEnumerationError{directory, error.value()});
  }
  for (const fs::path& path : found) {
    visit(path);
  }
}

/// Whether `path` is a link, or a file with something in it.
bool holdsSomething(const fs::path& path) {
  std::error_code error;
  const auto status = fs::symlink_status(path, error);
  if (fs::is_symlink(status)) {
    return true;
  }
  const auto size = fs::is_regular_file(status) ? fs::file_size(path, error) : 0;
  return !error && size > 0;
}

}  // namespace

void copyFiles(const fs::path& source, const fs::path& destination,
               const std::optional<HeldFile>& held) {
  forEachEntry(source, [&](const fs::path& path) {
    if (!holdsSomething(path)) {
      return;
    }
    const fs::path copy = destination / path.filename();
    if (held && path.filename() == held->name) {
      held->file->copyTo(copy);
    } else {
      OpenFile(path).copyTo(copy);
    }
  });
}

void removeFiles(const fs::path& directory) {
  forEachEntry(directory, [](const fs::path& path) {
    if (holdsSomething(path)) {
      files::remove(path);
    }
  });
}

bool isContained(const fs::path& directory, const fs::path& other) {
  bool isContained = true;
  forEachEntry(directory, [&](const fs::path& path) {
    if (!isContained || !holdsSomething(path) || path.native().ends_with("-shm")) {
      return;
    }
    const fs::path twin = other / path.filename();
    isContained = holdsSomething(twin) && files::read(path) == files::read(twin);
  });
  return isContained;
}

std::optional<Stamp> stamp(const fs::path& path) {
  std::error_code error;
  const auto status = fs::symlink_status(path, error);
  if (status.type() == fs::file_type::not_found) {
    return std::nullopt;
  }
  if (!fs::is_directory(status)) {
    return Stamp{{"", files::stamp(path)}};
  }
  Stamp stamp;
  forEachEntry(
      path, [&](const fs::path& entry) { stamp.emplace(entry.filename(), files::stamp(entry)); });
  return stamp;
}

void takeOverPermissions(const fs::path& package, const fs::path& former) {
  const auto takeOver = [](const fs::path& from, const fs::path& to, fs::perms atLeast) {
    std::error_code error;
    const auto status = fs::symlink_status(from, error);
    if (fs::is_symlink(status) || !fs::exists(status)) {
      return;
    }
    fs::permissions(to, status.permissions() | atLeast, error);
    if (error) {
      throw FileError("write", to, error.value());
    }
  };
  forEachEntry(package, [&](const fs::path& file) {
    takeOver(former / file.filename(), file, fs::perms::none);
  });
  // A folder that its owner may not write to could be neither moved nor removed.
  takeOver(former, package, fs::perms::owner_all);
}

}  // namespace package
}  // namespace corvane
