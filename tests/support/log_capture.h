// What the program's parts have written to the log.
#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "platform/system/log.h"

namespace corvane::testing {

/// Listens to the log while it lives.
class LogCapture {
 public:
  /// All lines so far, each with its break.
  [[nodiscard]] std::string text() const {
    const std::lock_guard lock(mutex_);
    return text_;
  }

 private:
  mutable std::mutex mutex_;
  std::string text_;
  Subscription listening_ = Log::listen([this](std::string_view line) {
    const std::lock_guard lock(mutex_);
    text_.append(line).append("\n");
  });
};

}  // namespace corvane::testing
