#include "core/market/quote_provider.h"

#include <cassert>

#include "platform/async/dispatch_queue.h"
#include "platform/overloaded.h"

namespace corvane {

EquityPointer EquityTable::find(std::string_view id) const {
  const auto found = equities_.find(id);
  return found == equities_.end() ? nullptr : found->second.lock();
}

void EquityTable::insert(const EquityPointer& equity) {
  equities_.insert_or_assign(equity->id(), equity);
  // Entries of equities that have gone are swept when the table has doubled, so that a long search
  // session does not grow it without bound and an insertion stays cheap.
  if (equities_.size() >= sweepAt_) {
    std::erase_if(equities_, [](const auto& entry) { return entry.second.expired(); });
    sweepAt_ = 2 * equities_.size() + 64;
  }
}

QuoteProvider::QuoteProvider() : equitiesById_(std::make_shared<EquityTable>()) {}

QuoteProvider::~QuoteProvider() = default;

std::string QuoteProvider::providerName() const {
  return "";
}

// The providers keep what they are given.
// NOLINTBEGIN(performance-unnecessary-value-param)
void QuoteProvider::searchEquities(std::string /*text*/, EquitiesCompletion completion) {
  DispatchQueue::main()->async(
      [completion = std::move(completion)]() mutable { completion(std::vector<EquityPointer>()); });
}

EquityPointer QuoteProvider::equityWithId(std::string_view id) {
  EquityPointer equity = equitiesById_->find(id);
  if (equity == nullptr) {
    equity = std::make_shared<EquityInfo>(std::string(id), weak_from_this());
    equitiesById_->insert(equity);
  }
  return equity;
}

EquityPointer QuoteProvider::exchangeRateEquity(const Currency& from, const Currency& to) {
  EquityPointer equity = equityWithId("FX " + std::string(from.code) + "/" + std::string(to.code));
  equity->currency = to;
  return equity;
}

void QuoteProvider::refreshEquities(std::vector<EquityPointer> /*equities*/,
                                    RefreshCompletion completion) {
  DispatchQueue::main()->async(
      [completion = std::move(completion)]() mutable { completion(nullptr); });
}

void QuoteProvider::fetchQuotes(QuoteQuery /*query*/, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                                QuoteCompletion completion) {
  DispatchQueue::main()->async([completion = std::move(completion)]() mutable {
    completion(failure(QuoteProviderError(QuoteProviderError::NotAvailable{})));
  });
}

// NOLINTEND(performance-unnecessary-value-param)

std::vector<QuoteQuery> QuoteProvider::sourceQueries(const QuoteQuery& query) const {
  return {query};
}

std::set<QuoteInterval> QuoteProvider::availableIntervals(const EquityPointer& /*equity*/,
                                                          const DateRange& /*range*/) const {
  return {};
}

std::optional<Date> QuoteProvider::nextRequestDate() const {
  return std::nullopt;
}

void QuoteProvider::setEquitiesById(std::shared_ptr<EquityTable> table) {
  assert(table != nullptr);
  equitiesById_ = std::move(table);
}

std::optional<std::string> QuoteProviderError::description() const {
  return std::visit(
      Overloaded{[](const DataInconsistency& error) { return error.description; },
                 [](const CurrencyMismatch& error) {
                   return std::optional("Currency mismatch; expected " + error.expected +
                                        " but received " + error.received + ".");
                 },
                 [](const UnsupportedCurrency& error) {
                   return std::optional("Currency code \"" + error.code + "\" is not recognized.");
                 },
                 [](const UnrecognizedTimeZone& error) {
                   return std::optional("“" + error.name + "” is an unrecognized time zone name.");
                 },
                 [](const UnsupportedPriceAdjustment& error) {
                   return std::optional("Can’t transform from " +
                                        std::string(caseName(error.from)) + " to " +
                                        std::string(caseName(error.to)) + ".");
                 },
                 [](NotAvailable) { return std::optional<std::string>("Not available."); },
                 [](QueryNotSatisfied) {
                   return std::optional<std::string>("Fetch result does not satisfy the query.");
                 }},
      which());
}

}  // namespace corvane
