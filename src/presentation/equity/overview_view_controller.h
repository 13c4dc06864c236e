// The first tab of an equity's screen: its chart over a period, and its splits and dividends.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/market/quote_interval.h"
#include "core/money/year_month_day.h"
#include "presentation/charts/quote_chart_view.h"
#include "presentation/equity/equity_events_table.h"
#include "presentation/screen/current_equity_having.h"
#include "presentation/screen/market_inquiry.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// Asks the market while it is shown. Of several periods chosen one after the other the last one
/// stays, however late the answers to the others come. Held by shared pointer only. Main queue
/// only.
class OverviewViewController : public std::enable_shared_from_this<OverviewViewController>,
                               public EquityTab {
  struct Passkey {};

 public:
  /// A segment of the control.
  struct PeriodPreset {
    std::string_view label;
    /// The first day of the period that ends today; its fields may lie outside the calendar and
    /// roll over. The first segment shows the current session instead.
    YearMonthDay (*firstDay)(YearMonthDay today);
    QuoteInterval interval;
  };
  static const std::array<PeriodPreset, 10> periodPresets;

  [[nodiscard]] static std::shared_ptr<OverviewViewController> make(
      const ScreenSurroundings& surroundings);
  OverviewViewController(Passkey passkey, const ScreenSurroundings& surroundings);
  OverviewViewController(const OverviewViewController&) = delete;
  OverviewViewController& operator=(const OverviewViewController&) = delete;

  /// Called when labels or segments have changed.
  std::function<void()> changeHandler = [] {};
  /// Called when the table of events has other rows, which are shown from the top.
  std::function<void()> eventsChangeHandler = [] {};

  QuoteChartView chart{QuoteChartView::Mode::presentation};

  [[nodiscard]] const EquityPointer& currentEquity() const override { return currentEquity_; }
  void setCurrentEquity(EquityPointer equity) override;
  void setShown(bool isShown) override;

  [[nodiscard]] std::size_t selectedPeriod() const { return selectedPeriod_; }
  void selectPeriod(std::size_t segment);

  [[nodiscard]] const std::vector<Quote>& currentQuotes() const { return currentQuotes_; }
  /// The days of what is shown; empty for nothing.
  [[nodiscard]] const std::string& dateRangeText() const { return dateRangeText_; }
  /// Says that prices are not what was paid; none where it need not be said.
  [[nodiscard]] const std::optional<std::string>& priceAdjustmentText() const {
    return priceAdjustmentText_;
  }
  /// How current the prices are.
  [[nodiscard]] std::string statusText() const;
  [[nodiscard]] bool isFetching() const {
    return quotesInquiry_->isWaiting() || eventsInquiry_->isWaiting();
  }

  [[nodiscard]] const EquityEventsTable& eventsTable() const { return eventsTable_; }
  void setShowsSplits(bool shows);
  void setShowsDividends(bool shows);

  /// The present prices of the equity have changed: a session that goes on is fetched anew.
  void equityDidRefresh();

 private:
  void connect();
  void fetch();
  void fetchQuotes();
  [[nodiscard]] std::optional<QuoteQuery> makeQuotesQuery() const;
  void quotesDidArrive(const MarketInquiry::Answer& answer);
  void eventsDidArrive(const MarketInquiry::Answer& answer);
  void clearQuotes();
  void refreshLabels(const QuoteQuery& query);
  void refreshAdjustmentText();
  [[nodiscard]] AttributedText tooltip(std::size_t index) const;

  ScreenSurroundings surroundings_;
  EquityPointer currentEquity_;
  bool isShown_ = false;
  bool isFetchDue_ = false;
  std::size_t selectedPeriod_ = 0;
  std::vector<Quote> currentQuotes_;
  std::optional<QuoteQuery> currentQuery_;  ///< that currentQuotes_ answer
  std::string dateRangeText_;
  std::optional<std::string> priceAdjustmentText_;
  EquityEventsTable eventsTable_;
  std::shared_ptr<MarketInquiry> quotesInquiry_;
  std::shared_ptr<MarketInquiry> eventsInquiry_;
};

}  // namespace corvane
