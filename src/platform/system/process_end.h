// The end of a program whose background queues may still be at work.
#pragma once

namespace corvane {

/// Ends the process with `status`, once the program has let go of all that is its own. What stands
/// in the standard streams is written.
///
/// Objects of static storage, of libraries as well, are not destroyed: a request whose answer is
/// being read on another thread at that moment would lose them under its hands. They go with the
/// process. May be called on any thread.
[[noreturn]] void endProcess(int status);

}  // namespace corvane
