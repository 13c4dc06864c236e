// What happens when the system asks the program to end.
#pragma once

#include <functional>
#include <memory>

namespace corvane {

/// Calls a handler on the main queue when the program is told to end: by the end of a session, by
/// its terminal, or by a person (SIGTERM, SIGHUP, SIGINT). The second time the program ends at
/// once, as it would without this. A signal that whoever started the program has asked to be
/// ignored stays so. At most one at a time; the main queue must be pumped.
class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> handler);
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;
  /// From now on the program ends at the first signal.
  ~TerminationSignals();

 private:
  class Listener;
  std::unique_ptr<Listener> listener_;
};

}  // namespace corvane
