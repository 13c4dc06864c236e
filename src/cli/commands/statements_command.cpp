#include "cli/commands/commands.h"
#include "cli/console/listing.h"
#include "exchange/profiles/profile_shelf.h"

namespace corvane::cli {
namespace {

std::vector<Listing::Field> layoutFields() {
  return {{"layout", "Layout"}, {"name", "Statements"}};
}

void listProfiles(const CommandLine& line, const Console& console) {
  if (const auto file = line.value("--check")) {
    const StatementProfile profile = readProfile(*file);
    console.out << "“" << profile.name << "” can be used.\n";
    return;
  }
  const ListingFormat format = listingFormat(line);
  const ProfileShelf shelf = ProfileShelf::standard();
  Listing layouts(layoutFields());
  for (const StatementProfile& profile : shelf.profiles) {
    layouts.add({profile.id, profile.name});
  }
  layouts.write(format, console.out);
  for (const ErrorPointer& problem : shelf.problems) {
    console.warn(problem->description().value_or(""));
  }
  if (!shelf.problems.empty()) {
    throw Failed(exitCode::failure);
  }
}

}  // namespace

Command statementsCommand() {
  return {
      .name = "statements",
      .summary = "Lists the layouts of statements that import knows.",
      .words = {},
      .options = joined({{"--check", "FILE", "reads one layout and tells what is wrong with it"}},
                        listingOptions()),
      .explanation =
          "A layout is a TOML file. Your own go into ~/.config/corvane/statements; one with "
          "the\nname of a layout that comes with the program replaces it.\n",
      .listings = {{"", layoutFields()}},
      .run = &listProfiles};
}

}  // namespace corvane::cli
