// A command of the console program.
#pragma once

#include <string_view>
#include <vector>

#include "cli/console/command_line.h"
#include "cli/console/console.h"
#include "cli/console/listing.h"

namespace corvane::cli {

/// The fields of one kind of rows that a command writes as data.
struct FieldList {
  std::string_view of;  ///< when it writes them, such as "with --watchlist"; empty for always
  std::vector<Listing::Field> fields;
};

/// One entry of the table of commands. A new command is a file with a function that returns its
/// entry, and a line in the table.
struct Command {
  std::string_view name;
  std::string_view summary;             ///< one line in the list of commands
  std::vector<std::string_view> words;  ///< what its words are called, such as "WORKSPACE"
  std::vector<Option> options;
  std::string_view explanation;  ///< the rest of its help
  /// What --csv and --json write.
  std::vector<FieldList> listings = {};
  /// Does it. Throws UsageError, Failed, and whatever else kept it from being done.
  void (*run)(const CommandLine& line, const Console& console);
};

}  // namespace corvane::cli
