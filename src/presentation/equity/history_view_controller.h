// The second tab of an equity's screen: its price bars of any days and length.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/market/equity_event.h"
#include "presentation/charts/quote_chart_view.h"
#include "presentation/controls/query_dates_picker.h"
#include "presentation/equity/history_table.h"
#include "presentation/screen/current_equity_having.h"
#include "presentation/screen/market_inquiry.h"
#include "presentation/screen/screen_surroundings.h"

namespace corvane {

/// A chart and a table of the same bars, of which one at most is selected in both. It asks the
/// market while it is shown. Held by shared pointer only. Main queue only.
class HistoryViewController : public std::enable_shared_from_this<HistoryViewController>,
                              public EquityTab {
  struct Passkey {};

 public:
  [[nodiscard]] static std::shared_ptr<HistoryViewController> make(
      const ScreenSurroundings& surroundings);
  HistoryViewController(Passkey passkey, const ScreenSurroundings& surroundings);
  HistoryViewController(const HistoryViewController&) = delete;
  HistoryViewController& operator=(const HistoryViewController&) = delete;

  /// Called when labels have changed.
  std::function<void()> changeHandler = [] {};
  /// Called when the table has other rows; see rowToScrollTo().
  std::function<void()> rowsChangeHandler = [] {};
  /// Called when another row is selected. `takesKeyboard` where a click on the chart has done it.
  std::function<void(bool takesKeyboard)> selectionChangeHandler = [](bool) {};

  QueryDatesPicker datesPicker;
  QuoteChartView chart{QuoteChartView::Mode::presentation};

  [[nodiscard]] const EquityPointer& currentEquity() const override { return currentEquity_; }
  void setCurrentEquity(EquityPointer equity) override;
  void setShown(bool isShown) override;
  /// Fetches again, for a setting that has changed.
  void reload();

  [[nodiscard]] const HistoryTable& table() const { return table_; }
  /// The query that the table answers; none while there is nothing.
  [[nodiscard]] const std::optional<QuoteQuery>& currentQuery() const { return currentQuery_; }
  /// The newest bars are shown at first: the last row but one, so that the one that may still grow
  /// stands at the end. None without rows.
  [[nodiscard]] std::optional<std::size_t> rowToScrollTo() const;
  [[nodiscard]] std::optional<std::size_t> selectedRow() const { return selectedRow_; }
  /// What the user does in the table.
  void selectRow(std::optional<std::size_t> row);

  /// Says that prices are not what was paid; none where it need not be said.
  [[nodiscard]] const std::optional<std::string>& priceAdjustmentText() const {
    return priceAdjustmentText_;
  }
  /// How current the prices are.
  [[nodiscard]] std::string statusText() const;
  [[nodiscard]] bool isFetching() const {
    return quotesInquiry_->isWaiting() || eventsInquiry_->isWaiting();
  }

 private:
  void connect();
  void fetch();
  void fetchQuotes();
  void fetchEvents();
  void preparePicker();
  [[nodiscard]] std::optional<QuoteQuery> makeQuotesQuery() const;
  void quotesDidArrive(const MarketInquiry::Answer& answer);
  void eventsDidArrive(const MarketInquiry::Answer& answer);
  void showQuotes(const EquityPointer& equity, std::vector<Quote> quotes,
                  const std::string& textForNone);
  void refreshNote();
  void chartSelected(std::optional<std::size_t> index);
  [[nodiscard]] AttributedText tooltip(std::size_t index) const;

  ScreenSurroundings surroundings_;
  EquityPointer currentEquity_;
  bool isShown_ = false;
  bool isFetchDue_ = false;
  std::optional<QuoteQuery> currentQuery_;
  HistoryTable table_;
  std::vector<EquityEvent> allEquityEvents_;
  std::optional<std::size_t> selectedRow_;
  std::optional<std::string> priceAdjustmentText_;
  std::shared_ptr<MarketInquiry> quotesInquiry_;
  std::shared_ptr<MarketInquiry> eventsInquiry_;
};

}  // namespace corvane
