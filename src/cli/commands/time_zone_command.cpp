#include "cli/commands/commands.h"
#include "cli/console/workspace_file.h"

namespace corvane::cli {
namespace {

void showOrUse(const CommandLine& line, const Console& console) {
  const auto name = line.value("--use");
  const auto zone = name ? TimeZone::withIdentifier(*name) : std::nullopt;
  if (name && !zone) {
    throw UsageError("“" + *name + "” is no time zone such as America/Toronto.");
  }
  if (name && line.has("--present")) {
    throw UsageError("--use excludes --present.");
  }
  WorkspaceFile workspace(line.word(0), console);
  WorkspaceDocument& document = *workspace.document();
  if (!name && !line.has("--present")) {
    const auto& noted = document.model()->datesTimeZone;
    const std::string& shown = workspace.manager()->calendar.timeZone().identifier();
    const bool isEverywhere = noted && noted->isUsedEverywhere;
    console.out << "Days are shown in " << shown
                << (isEverywhere && noted->identifier == shown
                        ? ", wherever the workspace is opened.\n"
                        : ", the present time zone.\n");
    if (isEverywhere && noted->identifier != shown) {
      console.warn("They are those of “" + noted->identifier + "”, which is not known here.");
    }
    return;
  }
  workspace.requireSound();
  if (zone) {
    document.useDatesTimeZone(*zone);
  } else {
    document.usePresentTimeZone();
  }
  workspace.save();
}

}  // namespace

Command timeZoneCommand() {
  return {.name = "time-zone",
          .summary = "Shows or changes the time zone of a workspace's days.",
          .words = {"WORKSPACE"},
          .options = {{"--use", "ZONE",
                       "the days are those of this zone, such as America/Toronto, wherever the "
                       "workspace is opened"},
                      {"--present", "",
                       "the days are those of the user's own zone, and as he sees them now"}},
          .explanation =
              "A transaction keeps a moment, which is one day here and another elsewhere. The "
              "workspace\nnotes the zone in which its days were recorded, and you are warned where "
              "they would come\nout differently. The transactions themselves are never changed.\n",
          .run = &showOrUse};
}

}  // namespace corvane::cli
