// The private folder in which a document works, and what is known there of unsaved work.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/system/directory_lock.h"
#include "platform/system/file_manager.h"

namespace corvane {

/// A folder in the temporary folder that only the user can look into and only one document uses: it
/// is locked while the program runs. So a later start can tell what a killed program has left, and
/// by a note beside the files whether there is something in it that was never saved. Throws
/// FileError. Main queue only.
class WorkingCopy {
 public:
  /// Work that stands in the copy and nowhere else.
  struct Unsaved {
    std::string name;                           ///< of the document, as its window shows it
    std::optional<std::filesystem::path> file;  ///< where it was opened or saved last
    friend bool operator==(const Unsaved&, const Unsaved&) = default;
  };

  static constexpr std::string_view folderName = "corvane-workspace-";
  static constexpr std::string_view noteName = "Unsaved.json";

  /// An empty copy in `parent`.
  explicit WorkingCopy(const std::filesystem::path& parent);
  WorkingCopy(const WorkingCopy&) = delete;
  WorkingCopy& operator=(const WorkingCopy&) = delete;
  /// Removes the folder with all that is in it, unless it is kept.
  ~WorkingCopy();

  /// The folder of the files themselves.
  [[nodiscard]] const std::filesystem::path& files() const { return files_; }

  [[nodiscard]] const std::optional<Unsaved>& unsaved() const { return unsaved_; }
  /// Notes what is unsaved, or that nothing is. Writes only what differs from the note that stands.
  void setUnsaved(std::optional<Unsaved> unsaved);

  /// Whether the folder stays when this goes, for a later start to find.
  void setKept(bool isKept) { isKept_ = isKept; }

  /// The copies in `parent` with unsaved work whose programs run no more, each of which is kept
  /// until it is told otherwise. Others that nobody uses are removed, among them those whose work
  /// was saved although their notes say otherwise. Copies of other users and
  /// those in use are passed over, as is a folder that cannot be listed.
  [[nodiscard]] static std::vector<std::unique_ptr<WorkingCopy>> findAbandoned(
      const std::filesystem::path& parent);

 private:
  /// One that was found.
  WorkingCopy(std::filesystem::path folder, DirectoryLock lock);

  std::filesystem::path folder_;
  std::filesystem::path files_;
  DirectoryLock lock_;
  std::optional<Unsaved> unsaved_;
  bool isKept_ = false;
};

}  // namespace corvane
