#include "marketdata/chain/refresh_faults.h"

#include <utility>

#include "marketdata/chain/refusal_text.h"
#include "marketdata/yahoo/network_activity_monitor.h"
#include "platform/async/dispatch_queue.h"
#include "platform/data/json_error.h"

namespace corvane {
namespace {

/// Whether `error` comes of what a source says of one equity.
bool isAboutOneEquity(const Error& error) {
  return dynamic_cast<const JSONError*>(&error) != nullptr ||
         dynamic_cast<const QuoteProviderError*>(&error) != nullptr;
}

void logProblem(const std::string& text) {
  if (NetworkActivityMonitor::isOn()) {
    NetworkActivityMonitor::Activity activity;
    activity.name = text;
    NetworkActivityMonitor::post(activity, std::nullopt, std::nullopt);
  }
}

/// One refresh with all its parts. Lives by what is under way.
class RefreshInParts : public std::enable_shared_from_this<RefreshInParts> {
 public:
  using Completion = std::move_only_function<void(ErrorPointer, const std::vector<EquityPointer>&)>;

  RefreshInParts(std::shared_ptr<QuoteProvider> source, std::shared_ptr<RefreshFaults> faults,
                 Completion completion)
      : source_(std::move(source)),
        faults_(std::move(faults)),
        completion_(std::move(completion)) {}

  void start(const std::vector<EquityPointer>& equities) {
    std::vector<EquityPointer> untried;
    for (const EquityPointer& equity : equities) {
      if (ErrorPointer why = faults_->find(equity->id())) {
        knownFault_ = std::move(why);
      } else {
        untried.push_back(equity);
      }
    }
    if (untried.empty() && knownFault_ != nullptr) {
      DispatchQueue::main()->async([self = shared_from_this()] { self->finish(); });
    } else {
      ask(untried);
    }
  }

 private:
  void ask(const std::vector<EquityPointer>& part) {
    ++underWay_;
    source_->refreshEquities(part, [self = shared_from_this(), part](const ErrorPointer& error) {
      const auto take = [self, part, error] { self->take(part, error); };
      if (DispatchQueue::main()->isCurrent()) {
        take();
      } else {
        DispatchQueue::main()->async(take);
      }
    });
  }

  void take(const std::vector<EquityPointer>& part, const ErrorPointer& error) {
    if (error == nullptr) {
      for (const EquityPointer& equity : part) {
        refreshed_.push_back(equity);
        equity->refreshProblem =
            equity->isAuthoritative
                ? std::nullopt
                : std::optional("The quote service does not know “" + equity->id() + "”.");
      }
    } else if (!isAboutOneEquity(*error)) {
      sourceError_ = error;
    } else if (part.size() > 1) {
      const auto middle = part.begin() + static_cast<std::ptrdiff_t>(part.size() / 2);
      ask({part.begin(), middle});
      ask({middle, part.end()});
    } else if (!part.empty()) {
      knownFault_ = error;
      faults_->note(part.front(), error);
      part.front()->refreshProblem = refusalText(*error, part.front()->symbol);
      logProblem(*part.front()->refreshProblem);
    }
    if (--underWay_ == 0) {
      finish();
    }
  }

  void finish() {
    ErrorPointer error = sourceError_;
    if (error == nullptr && refreshed_.empty()) {
      error = knownFault_;
    }
    std::exchange(completion_, nullptr)(std::move(error), refreshed_);
  }

  const std::shared_ptr<QuoteProvider> source_;
  const std::shared_ptr<RefreshFaults> faults_;
  Completion completion_;
  int underWay_ = 0;
  std::vector<EquityPointer> refreshed_;
  ErrorPointer sourceError_;
  ErrorPointer knownFault_;
};

}  // namespace

void RefreshFaults::note(const EquityPointer& equity, ErrorPointer why, Clock::time_point now) {
  faults_.insert_or_assign(equity->id(), Fault{std::move(why), now});
}

ErrorPointer RefreshFaults::find(std::string_view id, Clock::time_point now) const {
  const auto found = faults_.find(std::string(id));
  const bool isValid = found != faults_.end() && now - found->second.found < validity;
  return isValid ? found->second.why : nullptr;
}

void refreshAroundFaults(
    const std::shared_ptr<QuoteProvider>& source, const std::vector<EquityPointer>& equities,
    const std::shared_ptr<RefreshFaults>& faults,
    std::move_only_function<void(ErrorPointer, const std::vector<EquityPointer>&)> completion) {
  std::make_shared<RefreshInParts>(source, faults, std::move(completion))->start(equities);
}

}  // namespace corvane
