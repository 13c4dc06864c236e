#include "exchange/profiles/profile_shelf.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>

#include "platform/system/file_manager.h"
#include "platform/system/resources.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view folderName = "statements";
constexpr std::string_view extension = ".toml";

/// `path` with the user's own folder as "~".
std::string shortPath(const fs::path& path) {
  const char* home = std::getenv("HOME");
  std::string text = path.string();
  if (home != nullptr && *home != '\0' && text.starts_with(std::string(home) + "/")) {
    text.replace(0, std::string_view(home).size(), "~");
  }
  return text;
}

}  // namespace

fs::path shippedProfilesFolder() {
  return resourcePath(folderName);
}

fs::path userProfilesFolder() {
  return files::configDirectory() / folderName;
}

StatementProfile readProfile(const fs::path& file) {
  return StatementProfile::parse(files::read(file), file.stem().string(), shortPath(file));
}

ProfileShelf ProfileShelf::of(const std::vector<fs::path>& folders) {
  std::map<std::string, fs::path> filesById;
  for (const fs::path& folder : folders) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored)) {
      if (entry.path().extension() == extension) {
        filesById[entry.path().stem().string()] = entry.path();
      }
    }
  }
  ProfileShelf shelf;
  for (const auto& [id, file] : filesById) {
    try {
      shelf.profiles.push_back(readProfile(file));
    } catch (const Error& error) {
      shelf.problems.push_back(error.copy());
    }
  }
  return shelf;
}

ProfileShelf ProfileShelf::standard() {
  return of({shippedProfilesFolder(), userProfilesFolder()});
}

const StatementProfile* ProfileShelf::find(std::string_view id) const {
  const auto found = std::ranges::find(profiles, id, &StatementProfile::id);
  return found == profiles.end() ? nullptr : &*found;
}

}  // namespace corvane
