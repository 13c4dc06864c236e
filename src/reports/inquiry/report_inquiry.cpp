#include "reports/inquiry/report_inquiry.h"

#include <algorithm>
#include <atomic>

#include "ledger/manager/portfolio_manager.h"
#include "reports/inquiry/frozen_ledger.h"

namespace corvane {
namespace {

/// So many rows are copied in a few milliseconds, also on a machine that has other things to do.
constexpr std::size_t rowsOfSlice = 4'000;
/// How long an import in the background is waited for before it is looked at again.
constexpr double secondsBetweenLooks = 0.05;

bool isBeingEdited(const PortfolioPointer& portfolio) {
  const auto manager = portfolio->manager.lock();
  return manager != nullptr && manager->isEditedInBackground();
}

}  // namespace

const std::shared_ptr<DispatchQueue>& reportQueue() {
  static const auto queue = DispatchQueue::serial("ca.orlend.corvane.Reports");
  return queue;
}

/// A question on its way: held by the block that takes it a step further.
struct ReportInquiry::Question : std::enable_shared_from_this<Question> {
  Question(Ledgers ledgersAsked, Work workToDo)
      : portfolios(std::move(ledgersAsked)), work(std::move(workToDo)), freezer(portfolios) {}

  void begin() {
    changes = NotificationCenter::defaultCenter().addObserver(
        PortfolioManager::didChangePortfolio, nullptr,
        [this](const PortfolioManager::PortfolioChange& change) {
          if (std::ranges::find(portfolios, change.portfolio) != portfolios.end()) {
            isStale = true;
          }
        });
    copySlice();
  }

  void copySlice() {
    if (cancellation.isCancelled()) {
      return;
    }
    if (std::ranges::any_of(portfolios, isBeingEdited)) {
      isStale = true;
      DispatchQueue::main()->asyncAfter(DispatchQueue::Duration(secondsBetweenLooks),
                                        [self = shared_from_this()] { self->copySlice(); });
      return;
    }
    if (isStale.exchange(false)) {
      freezer = LedgerFreezer(portfolios);
    }
    if (!freezer.advance(rowsOfSlice)) {
      DispatchQueue::main()->async([self = shared_from_this()] { self->copySlice(); });
      return;
    }
    changes = {};
    reportQueue()->async([self = shared_from_this(), ledgers = freezer.take()]() mutable {
      compute(std::move(self), std::move(ledgers));
    });
  }

  /// The question goes back to the main queue in any case: what is to be done with the answer may
  /// hold a screen.
  static void compute(std::shared_ptr<Question> self, Ledgers ledgers) {
    Delivery delivery;
    if (!self->cancellation.isCancelled()) {
      delivery = self->work(ledgers, self->cancellation);
    }
    ledgers.clear();  // large, and given back on this queue
    DispatchQueue::main()->async(
        [self = std::move(self), delivery = std::move(delivery)]() mutable {
          if (!self->cancellation.isCancelled()) {
            self->isAnswered = true;
            delivery();
          }
        });
  }

  const Ledgers portfolios;
  Work work;
  LedgerFreezer freezer;
  Cancellation cancellation;
  Subscription changes;
  std::atomic<bool> isStale = false;  ///< an import makes its change known on its own thread
  bool isAnswered = false;
};

ReportInquiry::~ReportInquiry() {
  cancel();
}

void ReportInquiry::cancel() {
  if (const auto question = question_.lock()) {
    question->cancellation.cancel();
  }
  question_.reset();
}

bool ReportInquiry::isAsking() const {
  const auto question = question_.lock();
  return question != nullptr && !question->isAnswered;
}

void ReportInquiry::start(Ledgers portfolios, Work work) {
  cancel();
  const auto question = std::make_shared<Question>(std::move(portfolios), std::move(work));
  question_ = question;
  question->begin();
}

}  // namespace corvane
