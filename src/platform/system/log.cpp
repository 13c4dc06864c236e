#include "platform/system/log.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace corvane {
namespace {

struct LogListeners {
  std::mutex mutex;
  std::vector<std::weak_ptr<const Log::Listener>> all;
};

LogListeners& logListeners() {
  static LogListeners listeners;
  return listeners;
}

}  // namespace

Subscription Log::listen(Listener listener) {
  auto kept = std::make_shared<const Listener>(std::move(listener));
  LogListeners& listeners = logListeners();
  const std::lock_guard lock(listeners.mutex);
  listeners.all.push_back(kept);
  return Subscription(std::move(kept));
}

bool Log::hasListeners() {
  LogListeners& listeners = logListeners();
  const std::lock_guard lock(listeners.mutex);
  std::erase_if(listeners.all, [](const auto& listener) { return listener.expired(); });
  return !listeners.all.empty();
}

void Log::writeLine(const std::string& line) {
  LogListeners& listeners = logListeners();
  const std::lock_guard lock(listeners.mutex);
  for (const auto& weakListener : listeners.all) {
    if (const auto listener = weakListener.lock()) {
      (*listener)(line);
    }
  }
}

}  // namespace corvane
