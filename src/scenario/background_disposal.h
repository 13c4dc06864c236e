// Letting go of large results without making the window wait.
#pragma once

#include <memory>

#include "core/market/quote_provider.h"

namespace corvane {

/// Lets go of `thing` on a background queue: a run that traded on every quote has a row for each,
/// and taking down the many runs of a batch takes longer than a window may stand still. `provider`,
/// which the thing may hold too, is let go of behind it, on the main queue; null for none.
void disposeElsewhere(std::shared_ptr<const void> thing, std::shared_ptr<QuoteProvider> provider);

}  // namespace corvane
