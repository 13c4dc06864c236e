// A refresh that one equity cannot spoil for the others.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/market/quote_provider.h"

namespace corvane {

/// Equities that a source could not refresh by any means, and why. Main queue only.
class RefreshFaults {
 public:
  using Clock = std::chrono::steady_clock;

  /// How long a finding is believed.
  static constexpr std::chrono::hours validity{1};

  void note(const EquityPointer& equity, ErrorPointer why, Clock::time_point now = Clock::now());
  /// Why this equity cannot be refreshed at present; null where it may be tried.
  [[nodiscard]] ErrorPointer find(std::string_view id, Clock::time_point now = Clock::now()) const;

 private:
  struct Fault {
    ErrorPointer why;
    Clock::time_point found;
  };
  std::unordered_map<std::string, Fault> faults_;
};

/// Refreshes `equities` at `source`. Some answers of a source are spoiled by one of the equities,
/// such as a share that is no longer traded. That one is found by asking for ever smaller parts,
/// and left out for an hour; its `refreshProblem` says why it has no price, as does the log of
/// network activity.
///
/// Main queue only, where `completion` runs too. It gets what has been refreshed, and an error
/// where nothing has been or where the source itself failed.
void refreshAroundFaults(
    const std::shared_ptr<QuoteProvider>& source, const std::vector<EquityPointer>& equities,
    const std::shared_ptr<RefreshFaults>& faults,
    std::move_only_function<void(ErrorPointer, const std::vector<EquityPointer>&)> completion);

}  // namespace corvane
