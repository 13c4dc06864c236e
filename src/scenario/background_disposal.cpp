#include "scenario/background_disposal.h"

#include <utility>

#include "platform/async/dispatch_queue.h"

namespace corvane {

void disposeElsewhere(std::shared_ptr<const void> thing, std::shared_ptr<QuoteProvider> provider) {
  if (thing == nullptr) {
    return;
  }
  DispatchQueue::global(QualityOfService::utility)
      ->async([thing = std::move(thing), provider = std::move(provider)]() mutable {
        thing.reset();
        if (provider != nullptr) {
          DispatchQueue::main()->async([provider = std::move(provider)] {});
        }
      });
}

}  // namespace corvane
