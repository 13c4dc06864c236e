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
#include "presentation/equity/equity_market_tab.h"
#include "presentation/equity/history_table.h"

namespace corvane {

/// A chart and a table of the same bars, of which one at most is selected in both. It asks the
/// market while it is shown. Held by shared pointer only. Main queue only.
class HistoryViewController final : public EquityMarketTab {
  struct Passkey {};

 public:
  [[nodiscard]] static std::shared_ptr<HistoryViewController> make(
      const ScreenSurroundings& surroundings);
  HistoryViewController(Passkey passkey, const ScreenSurroundings& surroundings);

  /// Called when the table has other rows; see rowToScrollTo().
  std::function<void()> rowsChangeHandler = [] {};
  /// Called when another row is selected. `takesKeyboard` where a click on the chart has done it.
  std::function<void(bool takesKeyboard)> selectionChangeHandler = [](bool) {};

  QueryDatesPicker datesPicker;
  QuoteChartView chart{QuoteChartView::Mode::presentation};

  [[nodiscard]] const HistoryTable& table() const { return table_; }
  /// The query that the table answers; none while there is nothing.
  [[nodiscard]] const std::optional<QuoteQuery>& currentQuery() const { return currentQuery_; }
  /// The newest bars are shown at first: the last row but one, so that the one that may still grow
  /// stands at the end. None without rows.
  [[nodiscard]] std::optional<std::size_t> rowToScrollTo() const;
  [[nodiscard]] std::optional<std::size_t> selectedRow() const { return selectedRow_; }
  /// What the user does in the table.
  void selectRow(std::optional<std::size_t> row);

 private:
  [[nodiscard]] const std::vector<Quote>& shownQuotes() const override;
  void forgetAnswers() override;
  void fetchQuotes() override;
  void preparePicker();
  [[nodiscard]] std::optional<QuoteQuery> makeQuotesQuery() const override;
  void quotesDidArrive(const MarketInquiry::Answer& answer) override;
  void eventsDidArrive(const MarketInquiry::Answer& answer) override;
  void showQuotes(const EquityPointer& equity, std::vector<Quote> quotes,
                  const std::string& textForNone);
  void chartSelected(std::optional<std::size_t> index);
  [[nodiscard]] AttributedText tooltip(std::size_t index) const;

  HistoryTable table_;
  std::vector<EquityEvent> allEquityEvents_;
  std::optional<std::size_t> selectedRow_;
};

}  // namespace corvane
