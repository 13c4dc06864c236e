// The last few results of a costly construction, found again by what they were made from.
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace corvane {

/// Holds as many values as a screen uses at the same time; the one that was made first makes room
/// for a new one. Not safe on several threads: meant to be thread_local.
template <typename Key, typename Value>
class RecentCache {
 public:
  /// The value for `key`, made by `make(key)` (which returns a Value) if it is not there. Valid
  /// until the next call.
  template <typename Make>
  Value& get(const Key& key, Make make) {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const auto& entry) {
      return entry != nullptr && entry->first == key;
    });
    if (found != entries_.end()) {
      return (*found)->second;
    }
    auto& entry = entries_[next_++ % entries_.size()];
    entry = std::make_unique<std::pair<const Key, Value>>(key, make(key));
    return entry->second;
  }

 private:
  std::array<std::unique_ptr<std::pair<const Key, Value>>, 16> entries_;
  std::size_t next_ = 0;
};

}  // namespace corvane
