#include "storage/workspace/working_copy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <tuple>
#include <utility>

#include "platform/data/json.h"
#include "platform/system/log.h"
#include "storage/workspace/package_files.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view filesName = "files";

bool isOwnWorkingCopy(const fs::path& path) {
  struct stat status {};
  return path.filename().string().starts_with(WorkingCopy::folderName) &&
         ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == ::geteuid();
}

std::string noteText(const WorkingCopy::Unsaved& unsaved) {
  JSONValue value{JSONValue::Object()};
  value.set("name", unsaved.name);
  if (unsaved.file) {
    value.set("file", unsaved.file->string());
  }
  return value.text();
}

/// The note at `path`; none where there is none. One that cannot be read still says that something
/// is unsaved.
std::optional<WorkingCopy::Unsaved> readNote(const fs::path& path) {
  WorkingCopy::Unsaved unsaved = {"Workspace", std::nullopt};
  try {
    const JSONValue value = JSONValue::parse(files::read(path));
    unsaved.name = value.at("name").string("name");
    if (const JSONValue* file = value.find("file")) {
      unsaved.file = file->string("file");
    }
  } catch (const FileError& error) {
    if (error.number == ENOENT) {
      return std::nullopt;
    }
  } catch (const JSONError&) {
    return unsaved;
  }
  return unsaved;
}

/// What is unsaved in the abandoned copy `folder`. A program that ended between the end of a save
/// and the removal of the note has left work that stands in the file already.
std::optional<WorkingCopy::Unsaved> unsavedIn(const fs::path& folder) {
  auto unsaved = readNote(folder / WorkingCopy::noteName);
  try {
    if (unsaved && unsaved->file && package::isContained(folder / filesName, *unsaved->file)) {
      return std::nullopt;
    }
  } catch (const Error& error) {
    Log::write("Failed to compare ", folder.string(), " with its file: ", error);
  }
  return unsaved;
}

}  // namespace

WorkingCopy::WorkingCopy(const fs::path& parent) {
  std::tie(folder_, lock_) = DirectoryLock::onNewDirectory(
      [&] { return corvane::files::makePrivateDirectory(parent, folderName); });
  files_ = folder_ / filesName;
  std::error_code error;
  fs::create_directory(files_, error);
  if (!error) {
    fs::permissions(files_, fs::perms::owner_all, error);
  }
  if (error) {
    throw FileError("create", files_, error.value());
  }
}

WorkingCopy::WorkingCopy(fs::path folder, DirectoryLock lock)
    : folder_(std::move(folder)),
      files_(folder_ / filesName),
      lock_(std::move(lock)),
      unsaved_(unsavedIn(folder_)),
      isKept_(unsaved_.has_value()) {}

WorkingCopy::~WorkingCopy() {
  if (isKept_) {
    return;
  }
  try {
    // The note first: a half removed copy is none to go on with.
    corvane::files::remove(folder_ / noteName);
    corvane::files::remove(folder_);
  } catch (const FileError& error) {
    Log::write("Failed to clean up document working temp directory ", folder_.string(), ": ",
               error);
  }
}

void WorkingCopy::setUnsaved(std::optional<Unsaved> unsaved) {
  if (unsaved == unsaved_) {
    return;
  }
  const fs::path note = folder_ / noteName;
  if (unsaved) {
    corvane::files::writeAtomically(note, noteText(*unsaved));
  } else {
    corvane::files::remove(note);
  }
  unsaved_ = std::move(unsaved);
}

std::vector<std::unique_ptr<WorkingCopy>> WorkingCopy::findAbandoned(const fs::path& parent) {
  std::vector<fs::path> candidates;
  std::error_code error;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isOwnWorkingCopy(entry->path())) {
      candidates.push_back(entry->path());
    }
  }
  std::vector<std::unique_ptr<WorkingCopy>> found;
  for (fs::path& candidate : candidates) {
    auto lock = DirectoryLock::tryLock(candidate);
    if (!lock.isHeld()) {
      continue;
    }
    // Without a note this removes it when it goes.
    std::unique_ptr<WorkingCopy> copy(new WorkingCopy(std::move(candidate), std::move(lock)));
    if (copy->unsaved()) {
      found.push_back(std::move(copy));
    }
  }
  return found;
}

}  // namespace corvane
