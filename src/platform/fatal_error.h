// The end of the program where it cannot go on.
#pragma once

#include <string_view>

namespace corvane {

/// Writes `message` to the standard error and stops the program: for what only the programmer or
/// whoever packaged it can put right. Any thread.
[[noreturn]] void fatalError(std::string_view message);

}  // namespace corvane
