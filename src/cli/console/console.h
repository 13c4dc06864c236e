// Where a command writes to, and what it has of the program around it.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "core/market/quote_provider.h"
#include "platform/async/dispatch_queue.h"
#include "platform/error.h"

namespace corvane::cli {

/// A command has come to nothing. What went wrong stands on the standard error already.
class Failed : public ErrorValue<Failed> {
 public:
  explicit Failed(int code) : exitCode(code) {}
  int exitCode;
  [[nodiscard]] std::optional<std::string> description() const override { return std::nullopt; }
  [[nodiscard]] bool hasSameValues(const Failed& other) const { return exitCode == other.exitCode; }
};

namespace exitCode {
constexpr int success = 0;
constexpr int failure = 1;
constexpr int usage = 2;
constexpr int interrupted = 130;
}  // namespace exitCode

/// The two streams of a run. `out` gets results and nothing else, so that it can go to a file or
/// another program; `err` gets errors, and a progress bar where it is a terminal.
struct Console {
  std::ostream& out;
  std::ostream& err;

  /// Writes an error, and what can be done about it.
  void present(const Error& error) const;
  void warn(const std::string& text) const;
};

/// A provider for work on files alone: it knows symbols but asks no service. It goes by the name of
/// the service, since a workspace keeps that name with the equities of its watchlist, and names
/// exchange rates as the service does.
[[nodiscard]] std::shared_ptr<QuoteProvider> makeOfflineProvider();

/// Throws Failed where the user has interrupted the program. What takes its time calls this where
/// it can end without leaving anything half done.
void endIfInterrupted();

/// Pumps the main queue until `isDone()`. When the user interrupts the program `interrupted` is
/// called, once.
void pumpUntil(const std::function<bool()>& isDone, const std::function<void()>& interrupted);

}  // namespace corvane::cli
