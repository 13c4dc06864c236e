// The terminal that a console program runs in.
#pragma once

#include <cstddef>

namespace corvane::terminal {

/// Whether the standard error goes to a screen, and not to a file or another program.
[[nodiscard]] bool isErrorStreamShown();

/// The columns of that screen; 80 where it does not tell.
[[nodiscard]] std::size_t width();

/// From now on the key that interrupts programs, a request of the system to end and the end of the
/// terminal do not end this program, but make wasInterrupted() true. A second one ends it. A reader
/// of the output that goes away does not end it either: writing fails then.
void catchInterrupts();
[[nodiscard]] bool wasInterrupted();

}  // namespace corvane::terminal
