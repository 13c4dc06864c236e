#include "marketdata/chain/nominal_quote_provider.h"

#include <utility>

#include "platform/async/dispatch_queue.h"
#include "platform/text/unicode/letter_case.h"

namespace corvane {

std::string NominalQuoteProvider::providerName() const {
  return "Nominal";
}

void NominalQuoteProvider::searchEquities(std::string text, EquitiesCompletion completion) {
  // A block that is on its way keeps the provider, so that its equity has somebody to answer for
  // it.
  DispatchQueue::main()->async([self = shared_from_this(), id = uppercased(text),
                                completion = std::move(completion)]() mutable {
    completion(std::vector{self->equityWithId(id)});
  });
}

void NominalQuoteProvider::refreshEquities(std::vector<EquityPointer> /*equities*/,
                                           RefreshCompletion completion) {
  DispatchQueue::main()->async(
      [completion = std::move(completion)]() mutable { completion(nullptr); });
}

void NominalQuoteProvider::fetchQuotes(QuoteQuery /*query*/,
                                       std::shared_ptr<PriceAdjuster> /*adjuster*/,
                                       QuoteCompletion completion) {
  DispatchQueue::global()->async([completion = std::move(completion)]() mutable {
    completion(QuoteFetchResult{.quotes = std::vector<Quote>(),
                                .prices = PriceAdjustment::marketNominal,
                                .events = std::vector<EquityEvent>(),
                                .durableDateRange = {Date::distantPast(), Date::distantPast()}});
  });
}

}  // namespace corvane
