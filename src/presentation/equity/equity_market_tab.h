// What the tabs of an equity's screen have in common that ask the market for its prices and events.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/market/equity_event.h"
#include "core/market/quote.h"
#include "core/market/quote_query.h"
#include "presentation/screen/current_equity_having.h"
#include "presentation/screen/market_inquiry.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// Asks while it is shown, and once it is shown for what has become due meanwhile. Of several
/// questions asked one after the other the last one counts, however late the answers to the others
/// come. Held by shared pointer only. Main queue only.
class EquityMarketTab : public std::enable_shared_from_this<EquityMarketTab>, public EquityTab {
 public:
  EquityMarketTab(const EquityMarketTab&) = delete;
  EquityMarketTab& operator=(const EquityMarketTab&) = delete;

  /// Called when labels have changed.
  std::function<void()> changeHandler = [] {};

  [[nodiscard]] const EquityPointer& currentEquity() const override { return currentEquity_; }
  void setCurrentEquity(EquityPointer equity) override;
  void setShown(bool isShown) override;
  /// Fetches the prices again, for a choice or a setting that has changed.
  void reload();

  /// Says that prices are not what was paid; none where it need not be said.
  [[nodiscard]] const std::optional<std::string>& priceAdjustmentText() const {
    return priceAdjustmentText_;
  }
  /// How current the prices are.
  [[nodiscard]] std::string statusText() const;
  [[nodiscard]] bool isFetching() const {
    return quotesInquiry_->isWaiting() || eventsInquiry_->isWaiting();
  }

 protected:
  explicit EquityMarketTab(const ScreenSurroundings& surroundings);
  /// To be called as soon as a shared pointer holds this.
  void connect();

  /// The prices that are shown, the oldest first.
  [[nodiscard]] virtual const std::vector<Quote>& shownQuotes() const = 0;
  /// The equity is another one, of which nothing is known yet.
  virtual void forgetAnswers() = 0;
  /// Asks quotesInquiry_, with askForQuotes(), or shows that there is nothing to ask.
  virtual void fetchQuotes() = 0;
  [[nodiscard]] virtual std::optional<QuoteQuery> makeQuotesQuery() const = 0;
  virtual void quotesDidArrive(const MarketInquiry::Answer& answer) = 0;
  virtual void eventsDidArrive(const MarketInquiry::Answer& answer) = 0;

  /// Whether there is anybody who could be asked about the equity.
  [[nodiscard]] bool canAsk() const;
  void askForQuotes();
  /// A split that has just become known makes the stored prices on the screen those of before.
  void askAgainIfOutdated();
  /// Tells the user why there are no prices, unless the line with the status says so.
  void presentFailure(const MarketInquiry::Answer& answer);
  void refreshAdjustmentText(const std::vector<EquityEvent>& events);

  ScreenSurroundings surroundings_;
  EquityPointer currentEquity_;
  std::optional<QuoteQuery> currentQuery_;  ///< that shownQuotes() answer
  std::optional<std::string> priceAdjustmentText_;
  std::shared_ptr<MarketInquiry> quotesInquiry_;
  std::shared_ptr<MarketInquiry> eventsInquiry_;
  bool isShown_ = false;

 private:
  void fetch();

  bool isFetchDue_ = false;
};

/// Why `answer` has nothing of what was asked for.
[[nodiscard]] ErrorPointer failureOf(const MarketInquiry::Answer& answer);

}  // namespace corvane
