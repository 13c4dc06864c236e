// From raw charts to bars, events and the extent of what is final.

#include "marketdata/yahoo/yahoo_chart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "core/market/quote_provider.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using YahooFinanceAPI::ChartResult;
using YahooFinanceAPI::Events;
using YahooFinanceAPI::TimePeriod;
using YahooFinanceAPI::TradingPeriods;

constexpr double hour = 3600;
constexpr double day = 24 * hour;

/// Sessions in New York of March 2024, before the clocks change: half past nine to four.
Date opens(int dayOfMarch) {
  return Date::since1970(1709303400 + (dayOfMarch - 1) * day);
}
Date closes(int dayOfMarch) {
  return opens(dayOfMarch) + 6.5 * hour;
}
DateRange session(int dayOfMarch) {
  return {opens(dayOfMarch), closes(dayOfMarch)};
}

TimePeriod period(const DateRange& range) {
  return {.end = range.upper(), .gmtoffset = -18000, .start = range.lower(), .timezone = "EST"};
}

/// A chart of Tuesday the 5th at noon, without bars.
class ChartBuilder {
 public:
  ChartBuilder() {
    chart.meta.symbol = "ABC";
    chart.meta.currency = "USD";
    chart.meta.firstTradeDate = Date::since1970(345479400);
    chart.meta.regularMarketTime = opens(5) + 2.5 * hour;
    chart.meta.regularMarketPrice = 10;
    chart.meta.currentTradingPeriod.regular = period(session(5));
    chart.timestamp.emplace();
    auto& series = chart.indicators.quote.emplace_back();
    for (auto* prices : {&series.open, &series.close, &series.low, &series.high}) {
      prices->emplace();
    }
    series.volume.emplace();
  }

  ChartBuilder& sessions(std::initializer_list<DateRange> ranges) {
    auto& regular = chart.meta.tradingPeriods.emplace().regular.emplace();
    for (const DateRange& range : ranges) {
      regular.push_back({period(range)});
    }
    return *this;
  }
  ChartBuilder& bar(Date from, int close = 10) {
    auto& series = chart.indicators.quote.front();
    chart.timestamp->push_back(from);
    series.open->push_back(close - 1);
    series.close->push_back(close);
    series.low->push_back(close - 2);
    series.high->push_back(close + 1);
    series.volume->push_back(100 * close);
    return *this;
  }

  [[nodiscard]] QuoteFetchResult read(std::optional<QuoteInterval> interval,
                                      std::optional<DateRange> dates) const {
    return fetchResult(chart, YahooTradingPeriods(chart.meta),
                       {interval, dates, calendar, Currency::usd()});
  }

  ChartResult chart;
  Calendar calendar{TimeZone::withIdentifier("America/New_York").value()};
};

struct Extent {
  Date from;
  Date to;
  bool isPartial;
  friend bool operator==(const Extent&, const Extent&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Extent& extent) {
    return out << extent.from.description() << " to " << extent.to.description()
               << (extent.isPartial ? ", partial" : "");
  }
};

std::vector<Extent> extentsOf(const QuoteFetchResult& result) {
  std::vector<Extent> extents;
  for (const Quote& quote : result.quotes.value()) {
    extents.push_back({quote.fromDate, quote.toDate, quote.isPartial});
  }
  return extents;
}

TEST(YahooChart, MakesBarsThatEndWithTheirSessionAndDropsThoseThatStartAtItsEnd) {
  ChartBuilder chart;
  chart.sessions({session(4), session(5)});
  chart.bar(closes(4) - hour, 11).bar(closes(4) - hour / 2).bar(closes(4)).bar(closes(4) + hour);
  const DateRange asked(opens(4), opens(5));
  const auto result = chart.read(QuoteInterval::oneHour, asked);
  EXPECT_THAT(extentsOf(result),
              ElementsAre(Extent{closes(4) - hour, closes(4), false},
                          Extent{closes(4) - hour / 2, closes(4), false},
                          Extent{closes(4) + hour, closes(4) + 2 * hour, false}));
  EXPECT_EQ(result.durableDateRange, DateRange(closes(4) - hour, closes(4) + 2 * hour));
  EXPECT_EQ(result.prices, PriceAdjustment::adjustedForSplits);
  const Quote first{.fromDate = closes(4) - hour,
                    .toDate = closes(4),
                    .open = 10,
                    .close = 11,
                    .low = 9,
                    .high = 12,
                    .volume = 1100};
  EXPECT_EQ(result.quotes->front(), first);
}

TEST(YahooChart, KeepsPartialBarsOutOfTheDurableRange) {
  ChartBuilder chart;
  chart.sessions({session(5)});
  const Date now = chart.chart.meta.regularMarketTime;
  chart.bar(now - 120).bar(now - 60).bar(now - 30);
  EXPECT_EQ(chart.read(QuoteInterval::oneMinute, session(5)).durableDateRange,
            DateRange(now - 120, now));
  EXPECT_TRUE(chart.read(QuoteInterval::oneMinute, session(5)).quotes->back().isPartial);

  // From the middle of the first bar on, only the second one is complete.
  const auto cut = chart.read(QuoteInterval::oneMinute, DateRange(now - 90, closes(5)));
  EXPECT_EQ(cut.quotes->front().fromDate, now - 60) << "the first one began before";
  EXPECT_EQ(cut.durableDateRange, DateRange(now - 60, now));

  // Where no bar is complete, what was asked for stands as far as the data reaches.
  EXPECT_EQ(chart.read(QuoteInterval::oneMinute, DateRange(now - 20, closes(5))).durableDateRange,
            DateRange(now - 20, now));
}

TEST(YahooChart, LetsTheRunningBarOfADayStartWithItsSession) {
  ChartBuilder chart;
  const Date now = chart.chart.meta.regularMarketTime;
  chart.bar(opens(1)).bar(opens(4)).bar(now);
  const DateRange asked(opens(1), opens(9));
  const auto result = chart.read(QuoteInterval::oneDay, asked);
  EXPECT_THAT(extentsOf(result),
              ElementsAre(Extent{opens(1), opens(2), false}, Extent{opens(4), opens(5), false},
                          Extent{opens(5), opens(6), true}));
  EXPECT_EQ(result.durableDateRange, DateRange(opens(1), opens(5)));
  // A minute bar at the time of the last trade keeps its time.
  EXPECT_EQ(chart.read(QuoteInterval::oneMinute, asked).quotes->back().fromDate, now);
}

TEST(YahooChart, TakesABarThatIsToldTwiceOnce) {
  ChartBuilder chart;
  chart.sessions({session(4), session(5)});
  // After the close the service tells the day a second time, at the time of its last trade.
  chart.chart.meta.regularMarketTime = closes(5);
  chart.bar(opens(4), 11).bar(opens(4), 12).bar(opens(5), 13).bar(closes(5), 14);
  const auto result = chart.read(QuoteInterval::oneDay, DateRange(opens(4), closes(5)));
  EXPECT_THAT(extentsOf(result),
              ElementsAre(Extent{opens(4), closes(4), false}, Extent{opens(5), closes(5), false}));
  EXPECT_EQ(result.quotes->front().close, 12) << "the later one counts";
  EXPECT_EQ(result.quotes->back().close, 14);
}

TEST(YahooChart, CountsBarsByTheCalendarOfTheExchange) {
  ChartBuilder chart;
  // The night of the 10th is an hour shorter.
  chart.chart.meta.regularMarketTime = opens(60);
  chart.bar(opens(8)).bar(opens(9));
  const DateRange asked(opens(1), opens(90));
  EXPECT_EQ(chart.read(QuoteInterval::oneDay, asked).quotes->back().toDate, opens(10) - hour);
  EXPECT_EQ(chart.read(QuoteInterval::oneMonth, asked).quotes->front().toDate, opens(39) - hour);
}

TEST(YahooChart, NeverCallsBarsOfFiveDaysOrAQuarterFinal) {
  for (const QuoteInterval interval : {QuoteInterval::fiveDays, QuoteInterval::threeMonths}) {
    ChartBuilder chart;
    EXPECT_TRUE(chart.read(interval, session(4)).durableDateRange.isEmpty());
    chart.bar(opens(1)).bar(opens(4));
    EXPECT_TRUE(chart.read(interval, DateRange(opens(1), opens(9))).durableDateRange.isEmpty());
    chart.chart.timestamp.reset();
    EXPECT_TRUE(chart.read(interval, session(4)).durableDateRange.isEmpty());
  }
}

TEST(YahooChart, CoversARangeWithoutTrades) {
  ChartBuilder chart;
  const auto expectNothing = [&] {
    const auto result = chart.read(QuoteInterval::oneDay, session(4));
    EXPECT_EQ(result.quotes, std::vector<Quote>());
    EXPECT_EQ(result.durableDateRange, session(4));
  };
  expectNothing();
  chart.bar(opens(4));
  chart.chart.indicators.quote.front().volume.reset();
  expectNothing();
  // The reach of the data: from the first trade to the last.
  chart.chart.meta.firstTradeDate = opens(2);
  EXPECT_EQ(chart.read(QuoteInterval::oneDay, DateRange(opens(1), opens(9))).durableDateRange,
            DateRange(opens(2), chart.chart.meta.regularMarketTime));
  EXPECT_TRUE(chart.read(QuoteInterval::oneDay, session(6)).durableDateRange.isEmpty());
}

TEST(YahooChart, WalksToTheEndOfTheShortestListAndKeepsWhatIsNull) {
  ChartBuilder chart;
  chart.bar(opens(1)).bar(opens(4));
  auto& series = chart.chart.indicators.quote.front();
  series.close->front().reset();
  series.volume->front().reset();
  series.low->pop_back();
  chart.chart.timestamp->push_back(opens(5));
  const auto result = chart.read(QuoteInterval::oneDay, DateRange(opens(1), opens(9)));
  const std::vector<Quote>& quotes = result.quotes.value();
  ASSERT_EQ(quotes.size(), 1U);
  EXPECT_EQ(quotes.front().close, std::nullopt);
  EXPECT_EQ(quotes.front().volume, std::nullopt);
  EXPECT_EQ(quotes.front().open, Decimal(9));
}

TEST(YahooChart, TakesTheLastSessionBeforeTheCurrentOneForTheRecentOne) {
  ChartBuilder chart;
  const auto recent = [&] { return YahooTradingPeriods(chart.chart.meta).recent(); };
  EXPECT_EQ(recent(), session(5));
  chart.sessions({session(4), session(1)});
  EXPECT_EQ(recent(), session(4));
  chart.sessions({session(4), session(5)});
  EXPECT_EQ(recent(), session(5));
  chart.sessions({{opens(4), opens(5)}});
  EXPECT_EQ(recent(), session(5)) << "one that ends when the current one begins is not before it";
  // Without dates the recent session is meant, as far as it has gone.
  chart.sessions({session(1), session(4)});
  EXPECT_EQ(chart.read(std::nullopt, std::nullopt).durableDateRange, session(4));
}

TEST(YahooChart, FindsTheFirstSessionThatADateFallsInWhateverTheirOrder) {
  ChartBuilder chart;
  const DateRange early(opens(4), closes(4));
  const DateRange overlapping(opens(4) + hour, closes(4) + hour);
  for (const auto& list : {std::vector{early, session(5)}, std::vector{session(5), early},
                           std::vector{overlapping, early}, std::vector{early, overlapping}}) {
    auto& regular = chart.chart.meta.tradingPeriods.emplace().regular.emplace();
    for (const DateRange& range : list) {
      regular.push_back({period(range)});
    }
    const YahooTradingPeriods periods(chart.chart.meta);
    for (const double offset : {-1.0, 0.0, 2 * hour, 6.5 * hour - 1, 6.5 * hour, 7 * hour}) {
      const Date date = opens(4) + offset;
      const auto expected =
          std::ranges::find_if(list, [&](const auto& range) { return range.contains(date); });
      const DateRange* found = periods.containing(date);
      ASSERT_EQ(found != nullptr, expected != list.end()) << date.description();
      EXPECT_TRUE(found == nullptr || *found == *expected);
    }
  }
}

TEST(YahooChart, TellsEventsInTheOrderOfTheirDates) {
  ChartBuilder chart;
  EXPECT_EQ(chart.read(std::nullopt, session(4)).events, std::vector<EquityEvent>());
  auto& events = chart.chart.events.emplace();
  events.splits = {{1, {.date = opens(4), .denominator = 1, .numerator = 1, .splitRatio = ""}},
                   {2, {.date = opens(1), .denominator = 1, .numerator = 1, .splitRatio = ""}}};
  events.splits->at(1).numerator = *Decimal::fromString("1.5");
  events.splits->at(2).denominator = 20;
  events.dividends = {{3, {.amount = *Decimal::fromString("0.25"), .date = opens(2)}}};
  const auto basis = PriceAdjustment::adjustedForSplits;
  const auto result = chart.read(std::nullopt, session(4));
  EXPECT_EQ(result.quotes, std::nullopt);
  EXPECT_EQ(result.prices, std::nullopt);
  EXPECT_THAT(
      result.events.value(),
      ElementsAre(EquityEvent{opens(1), EquityEvent::Split{{1, 20}}, basis},
                  EquityEvent{opens(2), EquityEvent::Dividend{*Decimal::fromString("0.25")}, basis},
                  EquityEvent{opens(4), EquityEvent::Split{{15, 10}}, basis}));
  const auto& split = std::get<EquityEvent::Split>(result.events->back().kind);
  EXPECT_EQ(split.ratio.numerator, 15);
  EXPECT_EQ(split.ratio.denominator, 10);

  for (const char* numerator : {"1e30", "0.12345678901234567890123", "1e-128", "NaN"}) {
    events.splits->at(1).numerator = Decimal::fromWholeString(numerator).value_or(Decimal::nan());
    EXPECT_THROW((void)chart.read(std::nullopt, session(4)), QuoteProviderError) << numerator;
  }
}

TEST(YahooChart, RefusesPricesInAnotherCurrency) {
  ChartBuilder chart;
  chart.chart.meta.currency = "GBp";
  EXPECT_NO_THROW((void)chart.read(QuoteInterval::oneDay, session(4))) << "there are no prices";
  chart.bar(opens(4));
  try {
    (void)chart.read(QuoteInterval::oneDay, session(4));
    FAIL();
  } catch (const QuoteProviderError& error) {
    EXPECT_EQ(error.description(), "Currency mismatch; expected USD but received GBp.");
  }
}

TEST(YahooChart, SurvivesSessionsAndBarsThatMakeNoSense) {
  ChartBuilder chart;
  // Bars that run backwards make no durable range.
  chart.bar(opens(4)).bar(opens(1));
  EXPECT_TRUE(
      chart.read(QuoteInterval::oneDay, DateRange(opens(1), opens(9))).durableDateRange.isEmpty());
  chart.chart.timestamp = {{Date::since1970(1e300), Date::since1970(-1e300)}};
  EXPECT_EQ(chart.read(QuoteInterval::oneDay, session(4)).quotes->size(), 0U);

  const TimePeriod backwards{
      .end = opens(4), .gmtoffset = 0, .start = closes(4), .timezone = "EST"};
  chart.chart.meta.tradingPeriods.emplace().regular = {{backwards}};
  EXPECT_EQ(YahooTradingPeriods(chart.chart.meta).containing(opens(4) + 1), nullptr);
  chart.chart.meta.currentTradingPeriod.regular = backwards;
  EXPECT_THROW(YahooTradingPeriods{chart.chart.meta}, QuoteProviderError);
}

}  // namespace
}  // namespace corvane
