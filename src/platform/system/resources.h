// Where the data files that belong to the program lie.
#pragma once

#include <filesystem>
#include <string_view>

namespace corvane {

/// The path of the data file `name`, such as "iso-4217-list-one.xml".
///
/// Data files lie under share/corvane beside the folder of the running program, both in an
/// installed prefix and in the build tree; the environment variable CORVANE_RESOURCES names another
/// folder. The file is not looked at: a missing one shows when it is opened. Any thread.
[[nodiscard]] std::filesystem::path resourcePath(std::string_view name);

}  // namespace corvane
