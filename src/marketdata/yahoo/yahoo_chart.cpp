#include "marketdata/yahoo/yahoo_chart.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "core/market/quote_provider.h"
#include "marketdata/yahoo/price_unit.h"
#include "marketdata/yahoo/yahoo_equity_details.h"

namespace corvane {
namespace {

using YahooFinanceAPI::ChartResult;
using YahooFinanceAPI::Events;
using YahooFinanceAPI::Meta;

/// `numerator` to `denominator` as whole numbers, both scaled by one power of ten.
Fraction ratioOf(const Events::Split& split) {
  const auto refuse = [&] {
    throw QuoteProviderError(QuoteProviderError::DataInconsistency{
        "The split of " + split.date.description() + " has no usable ratio: " +
        split.numerator.description() + " to " + split.denominator.description() + "."});
  };
  const int exponent = std::min({split.numerator.exponent(), split.denominator.exponent(), 0});
  if (-exponent > Decimal::maximumExponent) {
    refuse();
  }
  const Decimal scale = Decimal::fromParts(Sign::plus, -exponent, 1);
  const auto whole = [&](const Decimal& value) {
    const Decimal scaled = value * scale;
    const std::int64_t number = scaled.integerValue();
    if (Decimal(number) != scaled) {
      refuse();
    }
    return number;
  };
  return {whole(split.numerator), whole(split.denominator)};
}

/// What the figures of a chart are told in. A chart that names no known currency may still tell
/// events, whose figures are then taken as they are.
PriceUnit unitOf(const Meta& meta) {
  return PriceUnit::withCode(meta.currency).value_or(PriceUnit{Currency::noCurrency()});
}

std::vector<EquityEvent> eventsOf(const std::optional<Events>& events, const PriceUnit& unit) {
  std::vector<EquityEvent> list;
  if (events && events->splits) {
    for (const auto& [key, split] : *events->splits) {
      list.push_back(
          {split.date, EquityEvent::Split{ratioOf(split)}, PriceAdjustment::adjustedForSplits});
    }
  }
  if (events && events->dividends) {
    for (const auto& [key, dividend] : *events->dividends) {
      list.push_back({dividend.date, EquityEvent::Dividend{unit.amount(dividend.amount)},
                      PriceAdjustment::adjustedForSplits});
    }
  }
  std::ranges::stable_sort(list, {}, [](const EquityEvent& event) {
    return event.date.timeIntervalSinceReferenceDate();
  });
  return list;
}

/// The part of what was asked for that the data reaches.
DateRange reachOf(const Meta& meta, const DateRange& asked) {
  const Date lower = std::max(meta.firstTradeDate, asked.lower());
  const Date upper = std::min(meta.regularMarketTime, asked.upper());
  return {std::min(lower, upper), upper};
}

/// Bars of these lengths overlap the trading periods in ways that change from day to day, so none
/// of them is final.
bool isNeverDurable(QuoteInterval interval) {
  return interval == QuoteInterval::fiveDays || interval == QuoteInterval::threeMonths;
}

/// `reach` cut to the bars that are complete.
DateRange durableRange(const std::vector<Quote>& bars, QuoteInterval interval,
                       const DateRange& reach) {
  if (isNeverDurable(interval)) {
    return {reach.lower(), reach.lower()};
  }
  const auto isComplete = [](const Quote& bar) { return !bar.isPartial; };
  const auto first = std::ranges::find_if(bars, isComplete);
  if (first == bars.end()) {
    return reach;
  }
  const auto last = std::find_if(bars.rbegin(), bars.rend(), isComplete);
  // Bars that are out of order prove nothing to be complete.
  return {first->fromDate, std::max(first->fromDate, last->toDate)};
}

/// Makes the bars of one chart.
class BarReading {
 public:
  BarReading(const ChartResult& chart, const YahooTradingPeriods& periods,
             const YahooChartRequest& request, const DateRange& reach)
      : chart_(chart), periods_(periods), request_(request), reach_(reach) {}

  /// The bars; none where the chart lacks one of the six lists.
  [[nodiscard]] std::vector<Quote> bars() const {
    const YahooFinanceAPI::Indicators::Quote& series = chart_.indicators.quote.front();
    const auto& [close, high, low, open, volume] = series;
    const auto& times = chart_.timestamp;
    if (!times || !open || !close || !low || !high || !volume) {
      return {};
    }
    const std::size_t count = std::min(
        {times->size(), open->size(), close->size(), low->size(), high->size(), volume->size()});
    if (count > 0) {
      requireCurrency();
    }
    std::vector<Quote> bars;
    bars.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      const DateRange dates = datesOf((*times)[i]);
      if (periods_.endAt(dates.lower())) {
        continue;
      }
      // The service tells some bars twice, as the day's after its close. The later one is newer.
      if (!bars.empty() && bars.back().fromDate == dates.lower() &&
          bars.back().toDate == dates.upper()) {
        bars.pop_back();
      }
      bars.push_back({.fromDate = dates.lower(),
                      .toDate = dates.upper(),
                      .open = unit_.amount((*open)[i]),
                      .close = unit_.amount((*close)[i]),
                      .low = unit_.amount((*low)[i]),
                      .high = unit_.amount((*high)[i]),
                      .volume = (*volume)[i],
                      .isPartial = dates.lower() < reach_.lower() || dates.upper() > reach_.upper(),
                      .isCached = false});
    }
    return bars;
  }

 private:
  void requireCurrency() const {
    const std::string_view expected = request_.currency.code;
    if (std::string_view(unit_.currency.code) != expected) {
      throw QuoteProviderError(
          QuoteProviderError::CurrencyMismatch{std::string(expected), chart_.meta.currency});
    }
  }

  /// From the start of a bar to its end, which is not after the end of its trading period.
  [[nodiscard]] DateRange datesOf(Date timestamp) const {
    // A running bar of a day or more bears the time of the last trade instead of its start.
    const bool isRunning =
        timestamp == chart_.meta.regularMarketTime && *request_.interval >= QuoteInterval::oneDay;
    const Date from = isRunning ? startOfSessionAt(timestamp) : timestamp;
    Date to = request_.calendar.dateByAdding(span_, from).value_or(from);
    if (const DateRange* period = periods_.containing(from)) {
      to = std::min(to, period->upper());
    }
    return {from, to};
  }

  /// The start of the session in which the last trade was made. After a close the service soon
  /// tells the next session only; the trade then belongs to its own day, whose session began at the
  /// same time of day.
  [[nodiscard]] Date startOfSessionAt(Date lastTrade) const {
    const Date recent = periods_.recent().lower();
    if (recent <= lastTrade) {
      return recent;
    }
    const auto day = request_.calendar.dateComponents(
        {CalendarUnit::year, CalendarUnit::month, CalendarUnit::day}, lastTrade);
    auto opening = request_.calendar.dateComponents(
        {CalendarUnit::hour, CalendarUnit::minute, CalendarUnit::second}, recent);
    for (const CalendarUnit unit : {CalendarUnit::year, CalendarUnit::month, CalendarUnit::day}) {
      opening.set(unit, day.get(unit));
    }
    const Date start = request_.calendar.date(opening).value_or(lastTrade);
    return start <= lastTrade ? start : lastTrade;
  }

  const ChartResult& chart_;
  const YahooTradingPeriods& periods_;
  const YahooChartRequest& request_;
  const DateRange reach_;
  const PriceUnit unit_ = unitOf(chart_.meta);
  const DateComponents span_ = dateComponents(*request_.interval);
};

}  // namespace

YahooTradingPeriods::YahooTradingPeriods(const Meta& meta) : recent_(Date(), Date()) {
  if (meta.tradingPeriods && meta.tradingPeriods->regular) {
    for (const auto& day : *meta.tradingPeriods->regular) {
      for (const YahooFinanceAPI::TimePeriod& period : day) {
        if (const auto range = period.range()) {
          periods_.push_back(*range);
        }
      }
    }
  }
  const auto current = meta.currentTradingPeriod.regular.range();
  if (!current) {
    throw QuoteProviderError(QuoteProviderError::DataInconsistency{
        "The trading period of " + meta.symbol + " ends before it starts."});
  }
  recent_ = *current;
  const auto endOf = [](const DateRange& period) { return period.upper(); };
  const auto last = std::ranges::max_element(
      periods_, [](Date left, Date right) { return left < right; }, endOf);
  if (last != periods_.end() && last->upper() < current->lower()) {
    recent_ = *last;
  }
  areInOrder_ = std::ranges::adjacent_find(periods_, [](const auto& first, const auto& second) {
                  return second.lower() < first.upper();
                }) == periods_.end();
  std::ranges::transform(periods_, std::back_inserter(ends_), endOf);
  ends_.push_back(recent_.upper());
  std::sort(ends_.begin(), ends_.end());
}

const DateRange* YahooTradingPeriods::containing(Date date) const {
  auto found = periods_.begin();
  if (areInOrder_) {
    const auto next = std::upper_bound(
        periods_.begin(), periods_.end(), date,
        [](Date wanted, const DateRange& period) { return wanted < period.lower(); });
    found = next == periods_.begin() ? periods_.end() : std::prev(next);
    return found != periods_.end() && found->contains(date) ? &*found : nullptr;
  }
  found = std::ranges::find_if(periods_,
                               [&](const DateRange& period) { return period.contains(date); });
  return found == periods_.end() ? nullptr : &*found;
}

bool YahooTradingPeriods::endAt(Date date) const {
  return std::binary_search(ends_.begin(), ends_.end(), date);
}

/// What an equity is traded in, and by which clocks, a chart tells as well as a refresh does.
/// Prices may be asked for before the first refresh has come.
static void learnUnitAndZone(EquityInfo& equity, const Meta& meta) {
  if (equity.isAuthoritative) {
    return;
  }
  const auto unit = PriceUnit::withCode(meta.currency);
  if (unit && equity.currency == Currency::noCurrency()) {
    equity.currency = unit->currency;
  }
  if (const auto zone = TimeZone::withIdentifier(meta.exchangeTimezoneName)) {
    equity.calendar = Calendar(*zone);
  }
}

void applyChart(EquityInfo& equity, const Meta& meta, const YahooTradingPeriods& periods) {
  learnUnitAndZone(equity, meta);
  if (!equity.firstTradeDate) {
    equity.firstTradeDate = meta.firstTradeDate;
  }
  equity.recentTradingPeriod = periods.recent();
  setRecentPrice(equity, unitOf(meta).amount(meta.regularMarketPrice), meta.regularMarketTime);
}

QuoteFetchResult fetchResult(const ChartResult& chart, const YahooTradingPeriods& periods,
                             const YahooChartRequest& request) {
  assert(!chart.indicators.quote.empty());
  const DateRange reach = reachOf(chart.meta, request.dates.value_or(periods.recent()));
  std::vector<EquityEvent> events = eventsOf(chart.events, unitOf(chart.meta));
  if (!request.interval) {
    return {.quotes = std::nullopt,
            .prices = std::nullopt,
            .events = std::move(events),
            .durableDateRange = reach};
  }
  std::vector<Quote> bars = BarReading(chart, periods, request, reach).bars();
  const DateRange durable = durableRange(bars, *request.interval, reach);
  if (request.dates) {
    // The service adds the running bar to charts of any past, and the whole first week or month to
    // ranges that begin within it.
    std::erase_if(bars, [&](const Quote& bar) { return !request.dates->contains(bar.fromDate); });
  }
  return {.quotes = std::move(bars),
          .prices = PriceAdjustment::adjustedForSplits,
          .events = std::move(events),
          .durableDateRange = durable};
}

}  // namespace corvane
