// The layouts of statements that the program knows: those that it comes with and the user's own.
#pragma once

#include <filesystem>
#include <vector>

#include "exchange/profiles/profile_error.h"
#include "exchange/profiles/statement_profile.h"

namespace corvane {

struct ProfileShelf {
  std::vector<StatementProfile> profiles;  ///< by id
  /// Files that could not be read; the others are known nevertheless.
  std::vector<ErrorPointer> problems;

  /// The layouts in these folders, which need not exist. A file of a later folder replaces one of
  /// the same name.
  [[nodiscard]] static ProfileShelf of(const std::vector<std::filesystem::path>& folders);
  /// Those in share/corvane/statements and, before them, in the user's folder.
  [[nodiscard]] static ProfileShelf standard();

  /// The layout with this id; null where there is none.
  [[nodiscard]] const StatementProfile* find(std::string_view id) const;
};

/// The folder of the layouts that come with the program.
[[nodiscard]] std::filesystem::path shippedProfilesFolder();
/// The user's folder of layouts; it need not exist.
[[nodiscard]] std::filesystem::path userProfilesFolder();

/// Reads one file. Throws FileError and ProfileError.
[[nodiscard]] StatementProfile readProfile(const std::filesystem::path& file);

}  // namespace corvane
