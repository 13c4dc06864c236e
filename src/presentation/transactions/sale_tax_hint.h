// What a sale that is being entered would have denied of its loss.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ledger/portfolio/portfolio.h"
#include "ledger/transaction/basic_transaction.h"
#include "reports/inquiry/report_inquiry.h"
#include "storage/workspace/workspace_model.h"

namespace corvane {

class Timer;

/// Says of an entry that sells at a loss what of it would be denied, where the workspace's country
/// has such a rule: over all portfolios of the person whose portfolio it is. It begins a moment
/// after the last change and computes on copies, so that no key waits for it; what an earlier entry
/// would have come to is dropped. Main queue only.
class SaleTaxHint {
 public:
  explicit SaleTaxHint(std::weak_ptr<WorkspaceModel> workspace)
      : workspace_(std::move(workspace)) {}

  /// Called when there is another text.
  std::function<void()> changeHandler = [] {};

  /// Takes `entry` for what is being entered into `portfolio`, `today`; none for no sale.
  void consider(const std::optional<BasicTransaction>& entry, const PortfolioPointer& portfolio,
                Date today);

  /// "Superficial-loss hint: selling 20 now would deny 75.00 …"; empty where there is nothing to
  /// say, or not yet.
  [[nodiscard]] const std::string& text() const { return text_; }
  /// Whether a text may still come.
  [[nodiscard]] bool isBusy() const { return timer_ != nullptr || inquiry_.isAsking(); }

 private:
  void ask();

  std::weak_ptr<WorkspaceModel> workspace_;
  std::optional<BasicTransaction> entry_;
  PortfolioPointer portfolio_;
  Date today_;
  std::string text_;
  std::shared_ptr<Timer> timer_;
  ReportInquiry inquiry_;
};

}  // namespace corvane
