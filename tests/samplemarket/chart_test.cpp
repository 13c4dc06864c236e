// What charts say, over a real socket, and how it hangs together.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "random_cases.h"
#include "samplemarket/market_client.h"
#include "samplemarket/prices/instruments.h"
#include "samplemarket/prices/trading_calendar.h"

namespace corvane::testing {
namespace {

using samplemarket::Session;
using samplemarket::TradingCalendar;
using ::testing::Each;
using ::testing::SizeIs;

constexpr double day = 86400;

// A Tuesday, 90 minutes before New York closes.
const Date now = at("America/New_York", 2026, 3, 10, 14, 30, 20);

Date secondsSince1970(std::int64_t seconds) {
  return Date::since1970(static_cast<double>(seconds));
}

class SampleChartTest : public ::testing::Test {
 protected:
  TestClock clock{now};
  SampleMarket market{{.clock = clock.reader()}};
  MarketClient client{market};
};

/// Some of each kind and exchange, with all the oddities: recess, pence, splits, thirds of cents.
const std::vector<std::string> someSymbols = {"NIMBR",    "KEEWA.TO", "SKERR.L", "DUNVL.L",
                                              "RHNWK.F",  "0417.T",   "BNDUS",   "^CTO60",
                                              "EURUSD=X", "JPYCAD=X"};

samplemarket::ExchangeID exchangeOf(const std::string& symbol) {
  return samplemarket::instrumentNamed(symbol)->exchange;
}

TEST_F(SampleChartTest, BarsOfMinutesAddUpToTheirDay) {
  forRandomCases(4, [&](std::mt19937_64& random) {
    for (const std::string& symbol : someSymbols) {
      const auto& sessions = TradingCalendar::of(exchangeOf(symbol)).sessions();
      const std::size_t last =
          *TradingCalendar::of(exchangeOf(symbol))
               .lastOpenedBy(static_cast<std::int64_t>(now.timeIntervalSince1970()));
      const Session& session = sessions[last - random() % 19];
      const Date open = secondsSince1970(session.open);
      const Date close = secondsSince1970(session.close);
      const Chart daily = client.chart(symbol, open, close, "1d");
      ASSERT_THAT(daily.bars, SizeIs(1)) << symbol;
      for (const auto* interval : {"1m", "2m", "5m", "15m", "30m", "90m", "1h"}) {
        const Chart minutes = client.chart(symbol, open, close, interval);
        EXPECT_EQ(minutes.bars.front().time, open);
        const auto all = minutes.together(open, close);
        EXPECT_TRUE(agree(all, daily.bars.front())) << symbol << ' ' << interval << '\n'
                                                    << all << '\n'
                                                    << daily.bars.front();
      }
    }
  });
}

TEST_F(SampleChartTest, LongerBarsAddUpDays) {
  for (const std::string& symbol : someSymbols) {
    const Date from = at("UTC", 2019, 1, 1);
    const Chart daily = client.chart(symbol, from, now, "1d");
    const Calendar calendar(
        TimeZone::withIdentifier(samplemarket::exchange(exchangeOf(symbol)).timeZoneName).value());
    for (const auto& [interval, unit, count] : {std::tuple{"1wk", CalendarUnit::day, 7},
                                                {"1mo", CalendarUnit::month, 1},
                                                {"3mo", CalendarUnit::month, 3}}) {
      const Chart longer = client.chart(symbol, from, now, interval);
      ASSERT_GT(longer.bars.size(), 25U);
      for (std::size_t i = 1; i < longer.bars.size(); ++i) {
        const Chart::Bar& bar = longer.bars[i];
        const Date end = calendar.dateByAdding(unit, count, bar.time).value();
        EXPECT_EQ(calendar.startOfDay(bar.time), bar.time);
        EXPECT_TRUE(i + 1 == longer.bars.size() || longer.bars[i + 1].time == end)
            << bar.time.description();
        const auto days = daily.together(bar.time, end);
        EXPECT_TRUE(agree(days, bar)) << symbol << ' ' << interval << '\n' << days << '\n' << bar;
      }
    }
    const Chart fives = client.chart(symbol, from, now, "5d");
    EXPECT_NEAR(static_cast<double>(fives.bars.size()), static_cast<double>(daily.bars.size()) / 5,
                1.5);
    EXPECT_EQ(fives.bars.back().close, daily.bars.back().close);
  }
}

TEST_F(SampleChartTest, PricesAreTheSameOnEveryMachine) {
  // Written down from a first run. Clients' tests count on these histories.
  const auto closes = [&](const std::string& symbol, Date from) {
    std::vector<std::string> texts;
    for (const auto& bar : client.chart(symbol, from, from + 3 * day, "1d").bars) {
      texts.push_back(bar.close->description() + "/" + bar.volume->description());
    }
    return texts;
  };
  using ::testing::ElementsAre;
  EXPECT_THAT(closes("NIMBR", at("UTC", 1990, 1, 2)),
              ElementsAre("2.118889/8996400", "2.06/8719200", "2.075556/5707800"));
  EXPECT_THAT(closes("TAMRK.TO", at("UTC", 2024, 2, 27)),
              ElementsAre("13.67/592200", "13.85/1170000", "13.98/1308600"));
  EXPECT_THAT(closes("0582.T", at("UTC", 2020, 6, 2)),
              ElementsAre("1261/3817600", "1248/3913600", "1242/2624000"));
  EXPECT_THAT(closes("USDCAD=X", at("UTC", 2015, 7, 7)),
              ElementsAre("1.252576/0", "1.251215/0", "1.257013/0"));
}

TEST_F(SampleChartTest, ThePastDoesNotDependOnWhenItIsAskedFor) {
  const Date from = at("UTC", 2024, 1, 1);
  const Date to = at("UTC", 2026, 3, 1);
  SampleMarket other({.clock = TestClock(now + 900 * day).reader()});
  MarketClient otherClient(other);
  // None of them is split in the 900 days.
  for (const std::string symbol : {"TAMRK.TO", "^CLN50", "GBPUSD=X"}) {
    clock.set(now);
    const auto before = client.chart(symbol, from, to, "1d").bars;
    clock.set(now + 5 * day);
    const auto soon = client.chart(symbol, from, to, "1d").bars;
    const auto later = otherClient.chart(symbol, from, to, "1d").bars;
    ASSERT_GT(before.size(), 500U);
    EXPECT_TRUE(std::ranges::equal(before, soon, agree)) << symbol;
    EXPECT_TRUE(std::ranges::equal(before, later, agree)) << symbol;
  }
}

TEST_F(SampleChartTest, TheRunningDayOnlyGrows) {
  const Date open = at("America/New_York", 2026, 3, 10, 9, 30);
  const Date close = at("America/New_York", 2026, 3, 10, 16);
  std::optional<Chart::Bar> before;
  for (const double seconds : {0.0, 20.0, 59.0, 60.0, 61.0, 3000.0, 10000.0, 23399.0, 23400.0}) {
    clock.set(open + seconds);
    const Chart daily = client.chart("HOLVK", open - 5 * day, close + day, "1d");
    const Chart::Bar running = daily.bars.back();
    EXPECT_EQ(running.time, clock.now()) << "the running bar is told with the last price's time";
    EXPECT_EQ(dateOf(daily.meta.at("regularMarketTime")), clock.now());
    EXPECT_EQ(decimalOf(daily.meta.at("regularMarketPrice")), running.close);
    const Chart minutes = client.chart("HOLVK", open, close, "1m");
    EXPECT_THAT(minutes.bars, SizeIs(std::min(390.0, 1 + std::floor(seconds / 60))));
    EXPECT_TRUE(agree(minutes.together(open, close), running)) << running;
    EXPECT_EQ(client.chart("HOLVK", open, close, "1mo").bars.back().close, running.close);
    if (before) {
      EXPECT_EQ(running.open, before->open);
      EXPECT_GE(running.high, before->high);
      EXPECT_LE(running.low, before->low);
      EXPECT_GE(running.volume, before->volume);
    }
    before = running;
  }
  clock.set(close + 5 * day);
  const Chart::Bar final = client.chart("HOLVK", open, close, "1d").bars.back();
  EXPECT_TRUE(agree(final, *before)) << "the bar at the close is the day's";
  EXPECT_EQ(final.time, open);
}

TEST_F(SampleChartTest, TellsTheTradingPeriodsAroundTheDay) {
  const auto regularStart = [](const JSONValue& period) { return dateOf(period.at("start")); };
  const Date open = at("America/New_York", 2026, 3, 10, 9, 30);
  const Date fridayOpen = at("America/New_York", 2026, 3, 6, 9, 30);
  clock.set(open - 3600);
  // Without dates: the last day on which trading has begun, be it before the opening.
  const auto early = client.get(
      "/v8/finance/chart/PELLR",
      {{"period1", "-1"}, {"period2", "-1"}, {"interval", "1m"}, {"includePrePost", "true"}});
  const Chart today = MarketClient::chartIn(early->body);
  EXPECT_THAT(today.bars, SizeIs(271)) << "from 4:00 to 8:30";
  EXPECT_EQ(today.bars.front().time, at("America/New_York", 2026, 3, 10, 4));
  EXPECT_EQ(regularStart(today.meta.at("currentTradingPeriod").at("regular")), open);
  EXPECT_EQ(dateOf(today.meta.at("regularMarketTime")), at("America/New_York", 2026, 3, 9, 16));

  const Chart week = client.chart("PELLR", fridayOpen, open, "1h", true);
  const auto& regular = week.meta.at("tradingPeriods").at("regular").array();
  ASSERT_THAT(regular, SizeIs(3));
  EXPECT_EQ(regularStart(regular[0].array().at(0)), fridayOpen);
  std::vector<Date> starts;
  for (const auto& bar : week.bars) {
    if (bar.time >= fridayOpen && bar.time < fridayOpen + day / 2) {
      starts.push_back(bar.time);
    }
  }
  // Seven of the session, the last half an hour long, and four after it.
  ASSERT_THAT(starts, SizeIs(11));
  EXPECT_EQ(starts[6], fridayOpen + 6 * 3600);
  EXPECT_EQ(starts[7], fridayOpen + 6.5 * 3600);

  clock.set(at("America/New_York", 2026, 3, 8, 12));
  const Chart sunday = client.chart("PELLR", now - 30 * day, now, "1d");
  EXPECT_EQ(regularStart(sunday.meta.at("currentTradingPeriod").at("regular")), fridayOpen);
  EXPECT_EQ(sunday.meta.find("tradingPeriods"), nullptr);
}

TEST_F(SampleChartTest, MarketsPauseWithNulls) {
  const Date open = at("Asia/Tokyo", 2026, 3, 9, 9);
  const Chart tokyo = client.chart("0736.T", open, open + day / 2, "1m");
  ASSERT_THAT(tokyo.bars, SizeIs(390));
  int quiet = 0;
  for (std::size_t minute = 0; minute < tokyo.bars.size(); ++minute) {
    const bool isRecess = minute >= 150 && minute < 210;
    EXPECT_TRUE(!isRecess || !tokyo.bars[minute].close) << minute;
    quiet += !isRecess && !tokyo.bars[minute].close ? 1 : 0;
  }
  EXPECT_GT(quiet, 0);
  EXPECT_LT(quiet, 30);
  const auto isHalted = [](const Chart::Bar& bar) {
    return !bar.close && !bar.open && !bar.volume;
  };
  const auto days = client.chart("VESTM", at("UTC", 1990, 1, 1), now, "1d").bars;
  const auto halted = std::ranges::count_if(days, isHalted);
  EXPECT_GT(halted, 0);
  EXPECT_LT(halted, 20);
}

TEST_F(SampleChartTest, RatesAgreeWithEachOther) {
  const auto rates = [&](const std::string& symbol) {
    return client.chart(symbol, now - 400 * day, now, "1d").bars;
  };
  const auto there = rates("EURJPY=X");
  const auto back = rates("JPYEUR=X");
  const auto first = rates("EURCAD=X");
  const auto second = rates("CADJPY=X");
  ASSERT_GT(there.size(), 250U);
  ASSERT_EQ(there.size(), back.size());
  const auto isOne = [](const Decimal& product) {
    return abs(product - 1) < Decimal::fromString("0.00001").value();
  };
  for (std::size_t i = 0; i < there.size(); ++i) {
    EXPECT_TRUE(isOne(*there[i].close * *back[i].close)) << there[i] << back[i];
    EXPECT_TRUE(isOne(*there[i].high * *back[i].low)) << there[i] << back[i];
    if (i + 1 < there.size()) {  // while a day runs, each pair goes its own way
      EXPECT_TRUE(isOne(*first[i].close * *second[i].close / *there[i].close)) << there[i];
    }
  }
  EXPECT_EQ(rates("CAD=X"), rates("USDCAD=X"));
  for (const auto* none : {"EUREUR=X", "XXXUSD=X", "ABCDEF=X", "NONE"}) {
    EXPECT_EQ(client.getChart(none, now - day, now, "1d")->statusCode, 404) << none;
  }
}

/// The events of a kind by date.
std::map<Date, JSONValue> eventsOf(const Chart& chart, std::string_view kind) {
  std::map<Date, JSONValue> events;
  if (const JSONValue* found = chart.events.find(kind)) {
    for (const auto& [key, event] : found->object()) {
      EXPECT_EQ(dateOf(event.at("date")), Date::since1970(std::stod(key)));
      events[dateOf(event.at("date"))] = event;
    }
  }
  return events;
}

TEST_F(SampleChartTest, EveryListedShareHasALifeThatMakesSense) {
  int splits = 0;
  for (const auto& instrument : samplemarket::listedInstruments()) {
    const Chart life = client.chart(instrument.symbol, Date::distantPast(), now, "3mo");
    const Chart chart = client.chart(instrument.symbol, at("UTC", 2014, 1, 1), now, "1d");
    EXPECT_EQ(life.meta.at("currency").string(), instrument.currency);
    const Date first = dateOf(life.meta.at("firstTradeDate"));
    EXPECT_EQ(
        client.chart(instrument.symbol, Date::distantPast(), first + 1, "1d").bars.front().time,
        first);
    EXPECT_GE(life.bars.size(), 80U) << instrument.symbol;
    std::optional<Decimal> before;
    for (const auto& bar : chart.bars) {
      if (!bar.close) {
        continue;
      }
      EXPECT_TRUE(*bar.low <= std::min(*bar.open, *bar.close) &&
                  *bar.high >= std::max(*bar.open, *bar.close) && *bar.low > 0 &&
                  *bar.adjustedClose <= *bar.close)
          << instrument.symbol << bar;
      if (before) {
        const Decimal change = *bar.close / *before;
        EXPECT_TRUE(change > Decimal::fromString("0.8") && change < Decimal::fromString("1.25"))
            << instrument.symbol << bar << " splits must not show";
      }
      before = bar.close;
    }
    splits += static_cast<int>(eventsOf(life, "splits").size());
    EXPECT_EQ(eventsOf(life, "dividends").empty(), instrument.character.dividendsPerYear == 0);
  }
  EXPECT_GT(splits, 20);
}

TEST_F(SampleChartTest, AdjustedClosesTakeDividendsOut) {
  const Chart chart = client.chart("OAKWN", at("UTC", 2015, 1, 1), now, "1d");
  const auto dividends = eventsOf(chart, "dividends");
  EXPECT_THAT(dividends, SizeIs(::testing::AllOf(::testing::Ge(44U), ::testing::Le(46U))));
  EXPECT_EQ(chart.bars.back().adjustedClose, chart.bars.back().close);
  for (std::size_t i = 1; i < chart.bars.size(); ++i) {
    const auto& before = chart.bars[i - 1];
    const auto& bar = chart.bars[i];
    if (!before.close || !bar.close) {
      continue;
    }
    const auto found = dividends.find(bar.time);
    const Decimal paid = found == dividends.end() ? 0 : decimalOf(found->second.at("amount"));
    const Decimal kept = 1 - paid / *before.close;
    const Decimal told =
        (*before.adjustedClose / *before.close) / (*bar.adjustedClose / *bar.close);
    EXPECT_LT(abs(told - kept), Decimal::fromString("0.000001")) << bar;
  }
}

TEST_F(SampleChartTest, ANewSplitRestatesWhatWasBefore) {
  const Date splitDay = at("America/Toronto", 2026, 3, 11, 9, 30);
  const Date from = at("UTC", 2025, 1, 1);
  const auto before = client.chart("BOREA.TO", from, now, "1d");
  const auto minutesBefore = client.chart("BOREA.TO", now - 5 * day, now - day, "5m");
  market.addSplit("BOREA.TO", splitDay - day / 2, 5, 2);
  EXPECT_EQ(client.chart("BOREA.TO", from, now, "1d").bars, before.bars) << "it is yet to come";

  clock.set(splitDay + 60);
  const auto after = client.chart("BOREA.TO", from, splitDay + day, "1d");
  const auto splits = eventsOf(after, "splits");
  ASSERT_TRUE(splits.contains(splitDay));
  EXPECT_EQ(splits.at(splitDay).at("splitRatio").string(), "5:2");
  ASSERT_EQ(after.bars.size(), before.bars.size() + 1);
  const Decimal ratio = Decimal(5) / Decimal(2);
  const Decimal unit = Decimal::fromString("0.000001").value();
  const auto isRestated = [&](const Chart::Bar& old, const Chart::Bar& bar) {
    return old.close.has_value() == bar.close.has_value() &&
           (!bar.close || (abs(*old.close / ratio - *bar.close) <= unit &&
                           abs(*old.low / ratio - *bar.low) <= unit &&
                           abs(*old.volume * ratio - *bar.volume) <= 1));
  };
  for (std::size_t i = 0; i + 1 < before.bars.size(); ++i) {
    EXPECT_TRUE(isRestated(before.bars[i], after.bars[i])) << before.bars[i] << after.bars[i];
  }
  const auto minutesAfter = client.chart("BOREA.TO", now - 5 * day, now - day, "5m");
  ASSERT_EQ(minutesAfter.bars.size(), minutesBefore.bars.size());
  EXPECT_EQ(minutesAfter.bars[7].open, *minutesBefore.bars[7].open / ratio);
  const Decimal gap = *after.bars.back().open / *(after.bars.end() - 2)->close;
  EXPECT_LT(abs(gap - 1), Decimal::fromString("0.1"));

  EXPECT_THROW(market.addSplit("NONE", now, 2, 1), SampleMarketError);
  EXPECT_THROW(market.addSplit("QUARO", at("UTC", 2000, 1, 1), 2, 1), SampleMarketError);
  EXPECT_THROW(market.addSplit("QUARO", now, 0, 1), SampleMarketError);
}

TEST_F(SampleChartTest, ShortBarsReachBackAsFarAsTheServiceHasThem) {
  const auto status = [&](double age, double length, const std::string& interval) {
    return client.getChart("HOLVK", now - age * day, now - (age - length) * day, interval)
        ->statusCode;
  };
  EXPECT_EQ(status(30, 7, "1m"), 200);
  EXPECT_EQ(status(31, 7, "1m"), 422);
  EXPECT_EQ(status(20, 9, "1m"), 422);
  EXPECT_EQ(status(60, 60, "90m"), 200);
  EXPECT_EQ(status(61, 1, "2m"), 422);
  EXPECT_EQ(status(730, 730, "1h"), 200);
  EXPECT_EQ(status(731, 1, "1h"), 422);
  EXPECT_EQ(status(731, 1, "7h"), 422);
  EXPECT_EQ(status(1, -1, "1d"), 400) << "a range that ends before it starts";
  const auto weekend = client.getChart("HOLVK", at("UTC", 2026, 3, 7), at("UTC", 2026, 3, 8), "1d");
  EXPECT_EQ(weekend->statusCode, 200);
  EXPECT_THAT(MarketClient::chartIn(weekend->body).bars, SizeIs(0));
  EXPECT_EQ(weekend->body.find("timestamp"), std::string::npos);
}

}  // namespace
}  // namespace corvane::testing
