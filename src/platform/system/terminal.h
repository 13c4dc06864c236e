// The terminal that a console program runs in.
#pragma once

#include <cstddef>

namespace corvane::terminal {

/// Whether the standard error goes to a screen, and not to a file or another program.
[[nodiscard]] bool isErrorStreamShown();

/// The columns of that screen; 80 where it does not tell.
[[nodiscard]] std::size_t width();

/// From now on the key that interrupts programs does not end this one, but makes wasInterrupted()
/// true. Pressed once more it ends the program.
void catchInterrupts();
[[nodiscard]] bool wasInterrupted();

}  // namespace corvane::terminal
