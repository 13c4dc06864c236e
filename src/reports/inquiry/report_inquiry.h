// Has reports computed on a queue of their own, for whoever shows them.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "ledger/portfolio/portfolio.h"
#include "platform/async/dispatch_queue.h"
#include "reports/inquiry/cancellation.h"

namespace corvane {

/// The serial queue on which reports are computed, one after the other.
[[nodiscard]] const std::shared_ptr<DispatchQueue>& reportQueue();

/// One question at a time about copies of ledgers. A new question takes the place of the one before
/// it, whose answer nobody gets; so does the end of the inquiry.
///
/// Main queue only. The copies are made on the main queue in slices of a few milliseconds, between
/// which other work goes on; when a ledger changes meanwhile they are made anew, and while an
/// import changes one in the background they wait.
class ReportInquiry {
 public:
  using Ledgers = std::vector<PortfolioPointer>;

  ReportInquiry() = default;
  ReportInquiry(const ReportInquiry&) = delete;
  ReportInquiry& operator=(const ReportInquiry&) = delete;
  ~ReportInquiry();

  /// Calls `compute(ledgers, cancellation)` on the report queue, with copies of `portfolios` in
  /// their order, and then `deliver(answer)` on the main queue. `compute` must not throw and uses
  /// nothing of the main queue; what it holds goes there. A computation that has been cancelled may
  /// answer with anything: the answer is dropped.
  template <typename Compute, typename Deliver>
  void ask(Ledgers portfolios, Compute compute, Deliver deliver) {
    start(std::move(portfolios), [compute = std::move(compute), deliver = std::move(deliver)](
                                     const Ledgers& ledgers,
                                     const Cancellation& cancellation) mutable {
      return [deliver = std::move(deliver), answer = compute(ledgers, cancellation)]() mutable {
        deliver(std::move(answer));
      };
    });
  }

  /// Gives up the question that is being answered, if there is one.
  void cancel();
  /// Whether an answer is still to come.
  [[nodiscard]] bool isAsking() const;

 private:
  using Delivery = std::move_only_function<void()>;
  using Work = std::move_only_function<Delivery(const Ledgers&, const Cancellation&)>;
  struct Question;

  void start(Ledgers portfolios, Work work);

  std::weak_ptr<Question> question_;
};

}  // namespace corvane
