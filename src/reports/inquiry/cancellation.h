// The wish that a computation ends early.
#pragma once

#include <atomic>
#include <memory>

namespace corvane {

/// Handed to work that takes a while, which asks now and then. Copies are one wish. Any thread.
class Cancellation {
 public:
  void cancel() const { *isCancelled_ = true; }
  [[nodiscard]] bool isCancelled() const { return *isCancelled_; }

 private:
  std::shared_ptr<std::atomic<bool>> isCancelled_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace corvane
