// Threads beside the main thread.
#pragma once

#include <functional>
#include <thread>

namespace corvane {

/// Starts a thread that runs `work`. The requests to end the program (SIGINT, SIGTERM, SIGHUP)
/// never reach it: they are the main thread's, which therefore acts on each of them, whatever the
/// other threads wait for.
[[nodiscard]] std::thread startBackgroundThread(std::move_only_function<void()> work);

}  // namespace corvane
