#include "presentation/equity/overview_view_controller.h"

#include <algorithm>
#include <cmath>

#include "platform/text/formats/date_formatter.h"
#include "presentation/equity/equity_formats.h"
#include "presentation/text/formatting.h"
#include "storage/application/app_delegate.h"

namespace corvane {
namespace {

constexpr std::size_t currentPeriodSegment = 0;

bool seeksSession(const QuoteQuery& query) {
  return std::holds_alternative<QuoteQuery::CurrentPeriodQuotes>(query.seeking);
}

/// What a chart of `query` spans.
DateRange displayedRange(const QuoteQuery& query) {
  return seeksSession(query) ? query.equity->recentTradingPeriod.value_or(
                                   DateRange(Date::distantPast(), Date::distantPast()))
                             : query.dateRange;
}

}  // namespace

const std::array<OverviewViewController::PeriodPreset, 10> OverviewViewController::periodPresets = {
    {
        {"1D", [](YearMonthDay day) { return day; }, QuoteInterval::oneMinute},
        {"7D",
         [](YearMonthDay day) {
           return YearMonthDay{day.year, day.month, day.day - 6};
         },
         QuoteInterval::fiveMinutes},
        {"1M",
         [](YearMonthDay day) {
           return YearMonthDay{day.year, day.month - 1, day.day + 1};
         },
         QuoteInterval::fiveMinutes},
        {"3M",
         [](YearMonthDay day) {
           return YearMonthDay{day.year, day.month - 3, day.day + 1};
         },
         QuoteInterval::oneHour},
        {"6M",
         [](YearMonthDay day) {
           return YearMonthDay{day.year, day.month - 6, day.day + 1};
         },
         QuoteInterval::oneHour},
        {"1Y",
         [](YearMonthDay day) {
           return YearMonthDay{day.year - 1, day.month, day.day + 1};
         },
         QuoteInterval::oneHour},
        {"2Y",
         [](YearMonthDay day) {
           return YearMonthDay{day.year - 2, day.month, day.day + 1};
         },
         QuoteInterval::oneDay},
        {"5Y",
         [](YearMonthDay day) {
           return YearMonthDay{day.year - 5, day.month, day.day + 1};
         },
         QuoteInterval::oneDay},
        {"10Y",
         [](YearMonthDay day) {
           return YearMonthDay{day.year - 10, day.month, day.day + 1};
         },
         QuoteInterval::oneDay},
        {"Max",
         [](YearMonthDay) {
           return YearMonthDay{0, 0, 0};
         },
         QuoteInterval::oneDay},
    }};

std::shared_ptr<OverviewViewController> OverviewViewController::make(
    const ScreenSurroundings& surroundings) {
  auto made = std::make_shared<OverviewViewController>(Passkey{}, surroundings);
  made->connect();
  return made;
}

OverviewViewController::OverviewViewController(Passkey /*passkey*/,
                                               const ScreenSurroundings& surroundings)
    : EquityMarketTab(surroundings), eventsTable_(*surroundings.defaults) {
  chart.tooltipProvider = [this](std::size_t index) { return tooltip(index); };
}

void OverviewViewController::selectPeriod(std::size_t segment) {
  selectedPeriod_ = std::min(segment, periodPresets.size() - 1);
  reload();
  changeHandler();
}

void OverviewViewController::equityDidRefresh() {
  if (isShown_ && selectedPeriod_ == currentPeriodSegment && !quotesInquiry_->isWaiting() &&
      currentQuery_ && makeQuotesQuery() != currentQuery_) {
    quotesInquiry_->askAgain();
  }
}

const std::vector<Quote>& OverviewViewController::shownQuotes() const {
  return currentQuotes_;
}

void OverviewViewController::forgetAnswers() {
  clearQuotes();
  eventsTable_.setEvents(currentEquity_, {});
  eventsChangeHandler();
}

void OverviewViewController::fetchQuotes() {
  if (!canAsk()) {
    quotesInquiry_->stop();
    clearQuotes();
    changeHandler();
    return;
  }
  askForQuotes();
}

std::optional<QuoteQuery> OverviewViewController::makeQuotesQuery() const {
  if (currentEquity_ == nullptr) {
    return std::nullopt;
  }
  if (selectedPeriod_ == currentPeriodSegment) {
    return QuoteQuery::currentPeriod(currentEquity_, false);
  }
  const PeriodPreset& preset = periodPresets.at(selectedPeriod_);
  const Calendar& calendar = currentEquity_->calendar;
  const Date now = surroundings_.now();
  const YearMonthDay first = preset.firstDay(YearMonthDay::of(now, calendar));
  const auto start = calendar.date({{CalendarUnit::year, first.year},
                                    {CalendarUnit::month, first.month},
                                    {CalendarUnit::day, first.day}});
  const Date end = Date::sinceReferenceDate(std::floor(now.timeIntervalSinceReferenceDate()));
  if (!start || end < *start) {
    return std::nullopt;
  }
  return QuoteQuery{currentEquity_, DateRange(*start, end),
                    QuoteQuery::Quotes{preset.interval, AppDelegate::selectedPriceAdjustment(
                                                            *surroundings_.defaults)}};
}

void OverviewViewController::quotesDidArrive(const MarketInquiry::Answer& answer) {
  const Result<QuoteFetchResult>& result = answer.result;
  if (!result || !result->quotes) {
    clearQuotes();
    chart.noDataText = "No prices could be had.";
    chart.changeHandler();
    presentFailure(answer);
    return;
  }
  if (seeksSession(answer.query) && answer.query.dateRange.isEmpty()) {
    // No session was known when this was asked; the answer may have told of it.
    if (const auto known = makeQuotesQuery(); known && !known->dateRange.isEmpty()) {
      quotesInquiry_->askAgain();
      return;
    }
  }
  // A session that has not begun has no prices, whatever a source tells of the one before.
  const bool hasNotBegun = seeksSession(answer.query) && answer.query.dateRange.isEmpty();
  currentQuotes_ = hasNotBegun ? std::vector<Quote>() : *result->quotes;
  currentQuery_ = answer.query;
  chart.noDataText = hasNotBegun                  ? "No prices of a session yet."
                     : seeksSession(answer.query) ? "No prices in this session."
                                                  : "No prices in this period.";
  showInChart(chart, currentQuotes_, answer.query, *surroundings_.defaults);
  refreshLabels(answer.query);
}

void OverviewViewController::eventsDidArrive(const MarketInquiry::Answer& answer) {
  const Result<QuoteFetchResult>& result = answer.result;
  if (!result || !result->events) {
    const ErrorPointer error = failureOf(answer);
    const bool isToldAlready = answer.isRepeatedFailure || (quotesInquiry_->failure() != nullptr &&
                                                            *quotesInquiry_->failure() == *error);
    if (!isToldAlready && !MarketInquiry::isForWantOfNetwork(*error)) {
      surroundings_.presentError(*error);
    }
    return;
  }
  eventsTable_.setEvents(currentEquity_, *result->events);
  refreshAdjustmentText(eventsTable_.allEquityEvents());
  eventsChangeHandler();
  askAgainIfOutdated();
}

void OverviewViewController::clearQuotes() {
  currentQuotes_.clear();
  currentQuery_.reset();
  dateRangeText_.clear();
  priceAdjustmentText_.reset();
  chart.noDataText = currentEquity_ == nullptr ? "No equity selected." : "";
  chart.clear();
}

void OverviewViewController::refreshLabels(const QuoteQuery& query) {
  const EquityInfo& equity = *query.equity;
  const DateRange range = displayedRange(query);
  const DateFormatter formatter{.dateStyle = DateFormatter::Style::longStyle,
                                .timeZone = shownTimeZone(equity, *surroundings_.defaults)};
  // A period that begins before the equity was traded begins with its first trade.
  Date first = range.lower();
  if (!currentQuotes_.empty() && !seeksSession(query)) {
    first =
        std::max(first, std::min(equity.firstTradeDate.value_or(currentQuotes_.front().fromDate),
                                 currentQuotes_.front().fromDate));
  }
  dateRangeText_ = range.isEmpty() ? "" : formatter.string(first);
  if (!range.isEmpty() && !equity.calendar.isDateInSameDay(first, range.upper())) {
    dateRangeText_ += " – " + formatter.string(range.upper());
  }
  refreshAdjustmentText(eventsTable_.allEquityEvents());
}

AttributedText OverviewViewController::tooltip(std::size_t index) const {
  if (!currentQuery_ || index >= currentQuotes_.size()) {
    return {};
  }
  const EquityInfo& equity = *currentQuery_->equity;
  const Quote& quote = currentQuotes_[index];
  const std::optional<Decimal> reference =
      seeksSession(*currentQuery_) ? equity.previousClosePrice : currentQuotes_.front().open;
  AttributedText text(equityPriceFormatter(equity).string(quote.close.value_or(0)).value_or(""));
  if (reference) {
    text.append(" (")
        .append(Formatting::changeText(equity.currency, reference, quote.close))
        .append(")");
  }
  const DateFormatter formatter{.dateStyle = DateFormatter::Style::longStyle,
                                .timeStyle = DateFormatter::Style::shortStyle,
                                .timeZone = shownTimeZone(equity, *surroundings_.defaults)};
  return text.append("\n" + formatter.string(quote.toDate));
}

void OverviewViewController::setShowsSplits(bool shows) {
  eventsTable_.setShowsSplits(shows);
  eventsChangeHandler();
}

void OverviewViewController::setShowsDividends(bool shows) {
  eventsTable_.setShowsDividends(shows);
  eventsChangeHandler();
}

}  // namespace corvane
