// The histories that answers are made from, kept once they are worked out.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "samplemarket/prices/daily_history.h"

namespace corvane::samplemarket {

/// Safe on any thread.
class MarketData {
 public:
  /// The history of the instrument called `symbol`, with the session that is current at `now`. Null
  /// where there is no such instrument, or none of its sessions has opened yet.
  [[nodiscard]] std::shared_ptr<const DailyHistory> history(std::string_view symbol,
                                                            std::int64_t now);

  /// Adds a split that takes effect with the first session that opens at `time` or later. False
  /// where `symbol` is not listed, its history has not begun by `time`, or a part of the ratio is
  /// not 1 to 1000.
  [[nodiscard]] bool addSplit(std::string_view symbol, std::int64_t time, SplitRatio ratio);

 private:
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<const DailyHistory>, std::less<>> histories_;
  std::map<std::string, std::vector<Split>, std::less<>> addedSplits_;
};

}  // namespace corvane::samplemarket
