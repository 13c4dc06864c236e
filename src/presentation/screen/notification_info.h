// What a notification carries.
#pragma once

#include <any>
#include <string_view>

#include "platform/async/notification_center.h"

namespace corvane {

/// The value under `key`, or null where there is none of this type.
template <typename Value>
[[nodiscard]] const Value* infoOf(const Notification& notification, std::string_view key) {
  const auto found = notification.userInfo.find(key);
  return found == notification.userInfo.end() ? nullptr : std::any_cast<Value>(&found->second);
}

}  // namespace corvane
