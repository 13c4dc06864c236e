#include "presentation/equity/equity_market_tab.h"

#include <utility>

#include "presentation/equity/equity_formats.h"
#include "presentation/text/formatting.h"
#include "storage/application/app_delegate.h"

namespace corvane {

EquityMarketTab::EquityMarketTab(const ScreenSurroundings& surroundings)
    : surroundings_(surroundings),
      quotesInquiry_(MarketInquiry::make(surroundings.now)),
      eventsInquiry_(MarketInquiry::make(surroundings.now)) {}

void EquityMarketTab::connect() {
  const auto self = weak_from_this();
  quotesInquiry_->answerHandler = [self](const MarketInquiry::Answer& answer) {
    if (const auto living = self.lock()) {
      living->quotesDidArrive(answer);
    }
  };
  eventsInquiry_->answerHandler = [self](const MarketInquiry::Answer& answer) {
    if (const auto living = self.lock()) {
      living->eventsDidArrive(answer);
    }
  };
  quotesInquiry_->changeHandler = eventsInquiry_->changeHandler = [self] {
    if (const auto living = self.lock()) {
      living->changeHandler();
    }
  };
}

void EquityMarketTab::setCurrentEquity(EquityPointer equity) {
  const bool isAnother = currentEquity_ != equity;
  currentEquity_ = std::move(equity);
  if (isAnother) {
    forgetAnswers();
  }
  isFetchDue_ = true;
  if (isShown_) {
    fetch();
  } else {
    quotesInquiry_->stop();
    eventsInquiry_->stop();
  }
}

void EquityMarketTab::setShown(bool isShown) {
  isShown_ = isShown;
  if (isShown_ && isFetchDue_) {
    fetch();
  }
}

void EquityMarketTab::reload() {
  if (isShown_) {
    fetchQuotes();
  } else {
    isFetchDue_ = true;
  }
}

void EquityMarketTab::fetch() {
  isFetchDue_ = false;
  fetchQuotes();
  eventsInquiry_->ask([self = weak_from_this()]() -> std::optional<QuoteQuery> {
    const auto living = self.lock();
    if (living == nullptr || living->currentEquity_ == nullptr) {
      return std::nullopt;
    }
    return QuoteQuery{living->currentEquity_, living->currentEquity_->fullDateRange(),
                      QuoteQuery::EventsOnly{PriceAdjustment::marketNominal}};
  });
}

bool EquityMarketTab::canAsk() const {
  return currentEquity_ != nullptr && !currentEquity_->quoteProvider.expired();
}

void EquityMarketTab::askForQuotes() {
  quotesInquiry_->ask([self = weak_from_this()] {
    const auto living = self.lock();
    return living == nullptr ? std::nullopt : living->makeQuotesQuery();
  });
}

void EquityMarketTab::askAgainIfOutdated() {
  if (quotesInquiry_->isOutdated()) {
    quotesInquiry_->askAgain();
  }
}

void EquityMarketTab::presentFailure(const MarketInquiry::Answer& answer) {
  const ErrorPointer error = failureOf(answer);
  // Where the network is missing the line with the status says so, as long as it is so.
  if (!answer.isRepeatedFailure && !MarketInquiry::isForWantOfNetwork(*error)) {
    surroundings_.presentError(*error);
  }
}

void EquityMarketTab::refreshAdjustmentText(const std::vector<EquityEvent>& events) {
  priceAdjustmentText_ = Formatting::priceAdjustmentNote(
      AppDelegate::selectedPriceAdjustment(*surroundings_.defaults), shownQuotes(), events);
}

std::string EquityMarketTab::statusText() const {
  const std::vector<Quote>& quotes = shownQuotes();
  return currentEquity_ == nullptr
             ? ""
             : marketStatusText(*quotesInquiry_, quotes.empty()
                                                     ? std::nullopt
                                                     : std::optional(quotes.back().toDate));
}

ErrorPointer failureOf(const MarketInquiry::Answer& answer) {
  return answer.result ? QuoteProviderError(QuoteProviderError::QueryNotSatisfied{}).copy()
                       : answer.result.error();
}

}  // namespace corvane
