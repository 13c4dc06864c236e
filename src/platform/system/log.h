// What the parts of the program tell of what they do.
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <string_view>

#include "platform/async/subscription.h"

namespace corvane {

/// Lines for those who want to follow what the program does. The program decides where they go;
/// while nobody listens they are dropped, and cost next to nothing. Any thread.
class Log {
 public:
  /// Hears each line, without the break at its end, on the thread that writes it. One line at a
  /// time.
  using Listener = std::function<void(std::string_view line)>;

  Log() = delete;

  /// Has `listener` hear every line until the subscription ends. It must not write or listen
  /// itself.
  [[nodiscard]] static Subscription listen(Listener listener);

  /// Writes a line: its parts one after the other, as a stream would show them.
  template <typename... Parts>
  static void write(const Parts&... parts) {
    if (hasListeners()) {
      std::ostringstream line;
      (line << ... << parts);
      writeLine(line.str());
    }
  }

 private:
  [[nodiscard]] static bool hasListeners();
  static void writeLine(const std::string& line);
};

}  // namespace corvane
