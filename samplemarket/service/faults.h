// Which request fails, and how.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "samplemarket/prices/noise.h"
#include "samplemarket/service/answer.h"
#include "samplemarket/service/fault_rule.h"

namespace corvane::samplemarket {

/// Safe on any thread.
class Faults {
 public:
  Faults(int perThousand, std::uint64_t seed);

  void add(SampleMarketFaultRule rule);
  void clear();

  /// The failure of the next request, which has this path and asks for these symbols; uses up one
  /// of the rule's. None where the request is to succeed.
  [[nodiscard]] std::optional<SampleMarketFaultRule> next(const std::string& path,
                                                          const std::vector<std::string>& symbols);

 private:
  std::mutex mutex_;
  std::vector<SampleMarketFaultRule> rules_;
  int perThousand_;
  Noise noise_;
  std::int64_t requests_ = 0;
};

/// `answer` after what the fault does to it. Slow answers and dropped connections are for the
/// server to do.
[[nodiscard]] Answer spoiled(Answer answer, const SampleMarketFaultRule& rule);

}  // namespace corvane::samplemarket
