#include <filesystem>
#include <memory>
#include <system_error>

#include "cli/commands/commands.h"
#include "cli/console/listing.h"
#include "cli/console/workspace_file.h"
#include "platform/system/resources.h"
#include "storage/application/info_dictionary.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

/// A place in `folder` for a workspace called `name`, where nothing stands.
fs::path freePlace(const fs::path& folder, const std::string& name) {
  std::error_code error;
  const std::string extension(WorkspaceDocument::filenameExtension);
  fs::path place = folder / (name + extension);
  for (int number = 2; fs::exists(fs::symlink_status(place, error)); ++number) {
    place = folder / (name + " " + std::to_string(number) + extension);
  }
  return place;
}

std::vector<Listing::Field> recoveredFields() {
  return {{"workspace", "Workspace"}, {"path", "Path"}};
}

void recover(const CommandLine& line, const Console& console) {
  const ListingFormat format = listingFormat(line);
  const fs::path folder = line.word(0);
  std::error_code error;
  if (!fs::is_directory(folder, error)) {
    throw FileError("save to", folder, error ? error.value() : ENOTDIR);
  }
  const auto info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName));
  const WorkspaceSurroundings surroundings = {
      .sharedQuoteProvider = [provider = makeOfflineProvider()] { return provider; },
      .appBundleVersion = info.bundleVersion(),
      .appMarketingVersion = info.shortVersion(),
      .temporaryDirectory = temporaryDirectory(console)};
  bool isAllWell = true;
  Listing recovered(recoveredFields());
  std::size_t count = 0;
  for (auto& copy : WorkingCopy::findAbandoned(surroundings.temporaryDirectory)) {
    endIfInterrupted();
    const std::string name = WorkspaceDocument::recoveredName(*copy->unsaved());
    const auto document = std::make_shared<WorkspaceDocument>(surroundings);
    try {
      document->recover(std::move(copy));
      const fs::path place = freePlace(folder, name);
      document->save(place);
      if (format == ListingFormat::table) {
        console.out << place.string() << '\n';
      }
      recovered.add({name, place.string()});
      ++count;
    } catch (const Error& failure) {
      document->keepUnsavedWork();
      console.present(failure);
      isAllWell = false;
    }
  }
  if (format != ListingFormat::table) {
    recovered.write(format, console.out);
  }
  if (!isAllWell) {
    throw Failed(exitCode::failure);
  }
  if (count == 0) {
    console.warn("There is no unsaved work.");
  }
}

}  // namespace

Command recoverCommand() {
  return {.name = "recover",
          .summary = "Saves what programs that were ended have left unsaved.",
          .words = {"FOLDER"},
          .options = listingOptions(),
          .explanation =
              "Each becomes a workspace “Recovered …” in FOLDER; nothing is replaced there. The "
              "file that\nit was opened from stays as it is. Their paths are written out.\n",
          .listings = {{"", recoveredFields()}},
          .run = &recover};
}

}  // namespace corvane::cli
