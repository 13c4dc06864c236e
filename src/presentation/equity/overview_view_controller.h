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
#include "presentation/equity/equity_market_tab.h"

namespace corvane {

/// Asks the market while it is shown. Of several periods chosen one after the other the last one
/// stays, however late the answers to the others come. Held by shared pointer only. Main queue
/// only.
class OverviewViewController final : public EquityMarketTab {
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

  /// Called when the table of events has other rows, which are shown from the top.
  std::function<void()> eventsChangeHandler = [] {};

  QuoteChartView chart{QuoteChartView::Mode::presentation};

  [[nodiscard]] std::size_t selectedPeriod() const { return selectedPeriod_; }
  void selectPeriod(std::size_t segment);

  [[nodiscard]] const std::vector<Quote>& currentQuotes() const { return currentQuotes_; }
  /// The days of what is shown; empty for nothing.
  [[nodiscard]] const std::string& dateRangeText() const { return dateRangeText_; }

  [[nodiscard]] const EquityEventsTable& eventsTable() const { return eventsTable_; }
  void setShowsSplits(bool shows);
  void setShowsDividends(bool shows);

  /// The present prices of the equity have changed: a session that goes on is fetched anew.
  void equityDidRefresh();

 private:
  [[nodiscard]] const std::vector<Quote>& shownQuotes() const override;
  void forgetAnswers() override;
  void fetchQuotes() override;
  [[nodiscard]] std::optional<QuoteQuery> makeQuotesQuery() const override;
  void quotesDidArrive(const MarketInquiry::Answer& answer) override;
  void eventsDidArrive(const MarketInquiry::Answer& answer) override;
  void clearQuotes();
  void refreshLabels(const QuoteQuery& query);
  [[nodiscard]] AttributedText tooltip(std::size_t index) const;

  std::size_t selectedPeriod_ = 0;
  std::vector<Quote> currentQuotes_;
  std::string dateRangeText_;
  EquityEventsTable eventsTable_;
};

}  // namespace corvane
