// Market data without a market, for a program under test.
#pragma once

#include "core/market/quote_provider.h"

namespace corvane {

/// Answers every search with one equity named after what was typed and every fetch with nothing, so
/// that a document can be opened without a network and without a cache. Never fails.
///
/// Its equities stay as they were made: not authoritative, in the neutral currency until somebody
/// sets another. Main queue only; searches and refreshes complete there, fetches on a background
/// queue.
class NominalQuoteProvider : public QuoteProvider {
 public:
  [[nodiscard]] std::string providerName() const override;
  void searchEquities(std::string text, EquitiesCompletion completion) override;
  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override;
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override;
};

}  // namespace corvane
