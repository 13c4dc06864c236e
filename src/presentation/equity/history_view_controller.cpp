#include "presentation/equity/history_view_controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "presentation/equity/equity_formats.h"
#include "presentation/text/formatting.h"
#include "storage/application/app_delegate.h"

namespace corvane {
namespace {

using Selection = QueryDatesPicker::Selection;

/// The preset of the last `days` days, today among them.
QueryDatesPicker::Preset pastDays(std::string label, int days, QuoteInterval interval) {
  return {std::move(label), [days, interval](YearMonthDay today, const Calendar& calendar) {
            return Selection{
                YearMonthDay::normalised(today.year, today.month, today.day + 1 - days, calendar),
                today, interval};
          }};
}

std::vector<QueryDatesPicker::Preset> historyPresets() {
  return {pastDays("Today", 1, QuoteInterval::fiveMinutes),
          {"Yesterday",
           [](YearMonthDay today, const Calendar& calendar) {
             const auto day =
                 YearMonthDay::normalised(today.year, today.month, today.day - 1, calendar);
             return Selection{day, day, QuoteInterval::fiveMinutes};
           }},
          pastDays("Past 7 days", 7, QuoteInterval::oneHour),
          pastDays("Past 30 days", 30, QuoteInterval::oneHour),
          pastDays("Past 60 days", 60, QuoteInterval::oneHour),
          {"Past year", [](YearMonthDay today, const Calendar& calendar) {
             return Selection{
                 YearMonthDay::normalised(today.year - 1, today.month, today.day, calendar), today,
                 QuoteInterval::oneDay};
           }}};
}

/// Today may well be a day without trading, which would make a poor first sight.
constexpr std::size_t initialPreset = 3;

}  // namespace

std::shared_ptr<HistoryViewController> HistoryViewController::make(
    const ScreenSurroundings& surroundings) {
  auto made = std::make_shared<HistoryViewController>(Passkey{}, surroundings);
  made->connect();
  made->datesPicker.action = [self = made->weak_from_this()] {
    if (const auto living = self.lock()) {
      living->reload();
    }
  };
  return made;
}

HistoryViewController::HistoryViewController(Passkey /*passkey*/,
                                             const ScreenSurroundings& surroundings)
    : EquityMarketTab(surroundings), datesPicker(surroundings.now), table_(*surroundings.defaults) {
  datesPicker.setPresets(historyPresets());
  datesPicker.choosePreset(initialPreset);
  datesPicker.setAvailableIntervalsFilter([this](const DateRange& range) {
    const auto provider =
        currentEquity_ == nullptr ? nullptr : currentEquity_->quoteProvider.lock();
    return provider == nullptr ? std::set<QuoteInterval>()
                               : provider->availableIntervals(currentEquity_, range);
  });
  chart.tooltipProvider = [this](std::size_t index) { return tooltip(index); };
  chart.valueSelectedHandler = [this](std::optional<std::size_t> index) { chartSelected(index); };
}

const std::vector<Quote>& HistoryViewController::shownQuotes() const {
  return table_.quotes();
}

void HistoryViewController::forgetAnswers() {
  allEquityEvents_.clear();
  currentQuery_.reset();
  showQuotes(currentEquity_, {}, "");
}

void HistoryViewController::fetchQuotes() {
  if (!canAsk()) {
    quotesInquiry_->stop();
    return;
  }
  table_.setMarksFetchedRows(
      surroundings_.defaults->boolean("indicateFetchedRows").value_or(false));
  preparePicker();
  askForQuotes();
}

/// Days to come have no prices, and what today is depends on the exchange.
void HistoryViewController::preparePicker() {
  const Calendar& calendar = currentEquity_->calendar;
  const auto today = YearMonthDay::of(surroundings_.now(), calendar);
  auto from = std::min(datesPicker.startDate(), today);
  auto to = std::min(datesPicker.endDate(), today);
  // A preset stays the same preset on the days of another exchange.
  const std::string shown = datesPicker.presetTitle();
  for (const auto& preset : datesPicker.presets()) {
    if (!preset.isSeparator() && preset.label == shown) {
      const auto days = preset.makeDates(today, calendar);
      from = days.from;
      to = days.to;
    }
  }
  datesPicker.setCalendar(calendar);
  datesPicker.setLimits(QueryDatesPicker::earliestPossibleDay, today);
  datesPicker.setDates(from, to);
}

std::optional<QuoteQuery> HistoryViewController::makeQuotesQuery() const {
  if (currentEquity_ == nullptr) {
    return std::nullopt;
  }
  const DateRange nominal = datesPicker.nominalDateRange();
  const Date now =
      Date::sinceReferenceDate(std::floor(surroundings_.now().timeIntervalSinceReferenceDate()));
  const Date end = std::max(std::min(nominal.upper(), now), nominal.lower());
  return QuoteQuery{
      currentEquity_, DateRange(nominal.lower(), end),
      QuoteQuery::Quotes{datesPicker.selectedInterval(),
                         AppDelegate::selectedPriceAdjustment(*surroundings_.defaults)}};
}

void HistoryViewController::quotesDidArrive(const MarketInquiry::Answer& answer) {
  const Result<QuoteFetchResult>& result = answer.result;
  if (!result || !result->quotes) {
    currentQuery_.reset();
    showQuotes(currentEquity_, {}, "No prices could be had.");
    presentFailure(answer);
    return;
  }
  currentQuery_ = answer.query;
  showQuotes(answer.query.equity, *result->quotes, "No prices in these days.");
}

void HistoryViewController::eventsDidArrive(const MarketInquiry::Answer& answer) {
  const Result<QuoteFetchResult>& result = answer.result;
  allEquityEvents_ = result && result->events ? *result->events : std::vector<EquityEvent>();
  refreshAdjustmentText(allEquityEvents_);
  askAgainIfOutdated();
}

void HistoryViewController::showQuotes(const EquityPointer& equity, std::vector<Quote> quotes,
                                       const std::string& textForNone) {
  table_.setQuotes(equity, std::move(quotes));
  selectedRow_.reset();
  chart.noDataText = currentEquity_ == nullptr ? "No equity selected." : textForNone;
  if (currentQuery_) {
    showInChart(chart, table_.quotes(), *currentQuery_, *surroundings_.defaults);
  }
  if (table_.quotes().empty()) {
    chart.clear();
  }
  refreshAdjustmentText(allEquityEvents_);
  rowsChangeHandler();
}

std::optional<std::size_t> HistoryViewController::rowToScrollTo() const {
  const std::size_t rows = table_.numberOfRows();
  return rows == 0 ? std::nullopt : std::optional(rows == 1 ? 0 : rows - 2);
}

void HistoryViewController::selectRow(std::optional<std::size_t> row) {
  if (row != selectedRow_ && (!row || *row < table_.numberOfRows())) {
    selectedRow_ = row;
    chart.highlight(row);
    selectionChangeHandler(false);
  }
}

void HistoryViewController::chartSelected(std::optional<std::size_t> index) {
  selectedRow_ = index && *index < table_.numberOfRows() ? index : std::nullopt;
  chart.highlight(selectedRow_);
  selectionChangeHandler(selectedRow_.has_value());
}

AttributedText HistoryViewController::tooltip(std::size_t index) const {
  if (currentEquity_ == nullptr || index >= table_.numberOfRows()) {
    return {};
  }
  const Quote& quote = table_.quotes()[index];
  AttributedText text;
  if (quote.open && quote.close) {
    const auto formatter = equityPriceFormatter(*currentEquity_);
    text.append(formatter.string(*quote.open).value_or("") + " → " +
                formatter.string(*quote.close).value_or("") + "\n");
  }
  return text.append(
      Formatting::quoteDateRangeText(quote, *currentEquity_, *surroundings_.defaults));
}

}  // namespace corvane
