#include "platform/async/progress.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace corvane {

std::int64_t Progress::totalUnitCount() const {
  const std::lock_guard lock(mutex_);
  return totalUnitCount_;
}

std::int64_t Progress::completedUnitCount() const {
  const std::lock_guard lock(mutex_);
  return completedUnitCount_;
}

void Progress::setTotalUnitCount(std::int64_t count) {
  apply([&] { totalUnitCount_ = count; });
}

void Progress::setCompletedUnitCount(std::int64_t count) {
  apply([&] { completedUnitCount_ = count; });
}

double Progress::fractionCompleted() const {
  const std::lock_guard lock(mutex_);
  if (totalUnitCount_ <= 0) {
    return 0;
  }
  const double fraction =
      static_cast<double>(completedUnitCount_) / static_cast<double>(totalUnitCount_);
  return std::clamp(fraction, 0.0, 1.0);
}

bool Progress::isFinished() const {
  const std::lock_guard lock(mutex_);
  return totalUnitCount_ > 0 && completedUnitCount_ >= totalUnitCount_;
}

std::string Progress::localizedDescription() const {
  const std::lock_guard lock(mutex_);
  return localizedDescription_;
}

void Progress::setLocalizedDescription(std::string text) {
  apply([&] { localizedDescription_ = std::move(text); });
}

void Progress::cancel() {
  apply([&] { isCancelled_ = true; });
}

bool Progress::isCancelled() const {
  const std::lock_guard lock(mutex_);
  return isCancelled_;
}

Subscription Progress::addObserver(Observer observer) {
  auto kept = std::make_shared<const Observer>(std::move(observer));
  const std::lock_guard lock(mutex_);
  observers_.push_back(kept);
  return Subscription(std::move(kept));
}

template <typename Change>
void Progress::apply(Change change) {
  std::vector<std::shared_ptr<const Observer>> told;
  {
    const std::lock_guard lock(mutex_);
    change();
    std::erase_if(observers_, [&](const auto& weakObserver) {
      if (auto observer = weakObserver.lock()) {
        told.push_back(std::move(observer));
        return false;
      }
      return true;
    });
  }
  for (const auto& observer : told) {
    (*observer)(*this);
  }
}

}  // namespace corvane
