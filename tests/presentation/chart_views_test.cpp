// Charts without their drawing: axes, date labels, opening line, quotes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/market/quote_provider.h"
#include "core/money/year_month_day.h"
#include "presentation/charts/quote_chart_view.h"

namespace corvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Calendar toronto(*TimeZone::withIdentifier("America/Toronto"));

Date midnight(int month, int dayOfMonth) {
  return YearMonthDay{2021, month, dayOfMonth}.startIn(toronto);
}

ChartDataSet line(std::vector<double> values) {
  ChartDataSet set;
  for (const double value : values) {
    set.entries.push_back({static_cast<double>(set.entries.size()), value});
  }
  return set;
}

TEST(MoneyAxis, WritesLargeValuesInUnits) {
  FiscalChartView chart;
  chart.currency = Currency::usd();
  chart.reset();
  struct Case {
    double minimum, maximum, value;
    const char* label;
    double granularity;
  };
  for (const Case& axis :
       {Case{0, 1234567, 1234567, "$1.2M", 1e5}, Case{0, 2e12, 1.25e12, "$1.2T", 1e11},
        Case{0, 3e9, -3e9, "($3.0B)", 1e8}, Case{0, 1000, 500, "$0.5K", 100},
        Case{0, 0.5, 0.25, "$0.25", 0.01},
        // The unit is that of the maximum, also where it is the smaller number.
        Case{-50000, -20, -50000, "($50,000.00)", 0.01}, Case{-50000, -2000, 0, "0", 100}}) {
    chart.moneyAxis().computeAxis(axis.minimum, axis.maximum);
    EXPECT_EQ(chart.moneyAxis().label(axis.value), axis.label);
    EXPECT_DOUBLE_EQ(chart.moneyAxis().granularity(), axis.granularity);
  }
}

TEST(PercentageAxis, IsFineForSmallChanges) {
  FiscalChartView chart;
  EXPECT_EQ(chart.rightAxisRenderer->label(5), "+0%") << "without an opening value";
  chart.prescribedOpeningValue = 100;
  chart.rightAxisRenderer->computeAxis(95, 105);
  EXPECT_EQ(chart.rightAxisRenderer->label(102.5), "+2.5%");
  EXPECT_EQ(chart.rightAxisRenderer->label(95), "-5.0%");
  chart.rightAxisRenderer->computeAxis(80, 120);
  EXPECT_EQ(chart.rightAxisRenderer->label(120), "+20%");
  chart.prescribedOpeningValue = 0;
  EXPECT_EQ(chart.rightAxisRenderer->label(5), "+0%") << "of nothing there is no percentage";
}

TEST(FiscalChart, MarksTheOpeningValueInTheColourOfTheMovement) {
  FiscalChartView chart;
  EXPECT_EQ(chart.movementColour(), Colour(Colour::Name::label));
  EXPECT_FALSE(chart.openingLine(500));
  chart.interactiveDataSet = line({100, 90, 100});
  const Colour green = chart.movementColour();
  EXPECT_EQ(chart.openingLine(301), (LimitLine{100, "", 1, 7, 5, green}));
  EXPECT_EQ(chart.openingLine(300), (LimitLine{100, "", 0.5, 2, 1, green}));
  chart.interactiveDataSet = line({100, 99});
  EXPECT_EQ(chart.movementColour(), Colour(Colour::Name::systemRed));
  chart.prescribedClosingValue = 101;
  EXPECT_EQ(chart.movementColour(), green);
  chart.clear();
  EXPECT_FALSE(chart.openingValue());
  EXPECT_FALSE(chart.closingValue());
}

/// The labels below a chart of one point an hour from `from` to `to`.
std::vector<std::string> labels(Date from, Date to) {
  FiscalChartView chart;
  std::vector<std::pair<double, Date>> points;
  for (Date date = from; date < to; date = date + 3600) {
    points.emplace_back(static_cast<double>(points.size()), date);
  }
  chart.addDateLabels(points, {from, to}, toronto);
  std::vector<std::string> texts;
  for (const LimitLine& limit : chart.xAxisLimitLines) {
    const bool isFirst = &limit == &chart.xAxisLimitLines.front();
    EXPECT_EQ(limit.colour, Colour(isFirst ? Colour::Name::clear : Colour::Name::lightGray));
    texts.push_back(limit.label);
  }
  return texts;
}

TEST(FiscalChart, LabelsDatesAsTheLengthOfTheRangeAsks) {
  EXPECT_THAT(labels(midnight(3, 1), midnight(3, 1) + 1800), IsEmpty());
  EXPECT_THAT(labels(midnight(3, 1), midnight(3, 1) + 2 * 3600), SizeIs(2)) << "hours";
  EXPECT_THAT(labels(midnight(3, 1), midnight(3, 3)), ElementsAre("Mar 01", "Mar 02"));
  EXPECT_EQ(labels(midnight(3, 1), midnight(3, 11)).back(), "Mar 10");
  EXPECT_EQ(labels(midnight(3, 1), midnight(3, 12)).back(), "11");
  EXPECT_THAT(labels(midnight(1, 1), midnight(3, 12)), ElementsAre("Jan", "Feb", "Mar"));
  EXPECT_THAT(labels(midnight(1, 1), midnight(14, 1)), ElementsAre("2021", "2022"));
}

TEST(BaseChart, FollowsThePointer) {
  BaseChartView chart;
  chart.interactiveDataSet = line({5, 6, 7});
  std::vector<std::optional<std::size_t>> selected;
  chart.valueSelectedHandler = [&](auto index) { selected.push_back(index); };
  chart.pointerMovedTo(1.9);
  EXPECT_FALSE(chart.tooltip()) << "nobody has a text";
  chart.tooltipProvider = [](std::size_t index) { return AttributedText(std::to_string(index)); };
  EXPECT_EQ(chart.tooltip()->plainText(), "1");
  chart.pointerLeft();
  EXPECT_FALSE(chart.tooltip());
  chart.clicked(2);
  chart.clicked(std::nullopt);
  EXPECT_THAT(selected, ElementsAre(std::optional<std::size_t>(2), std::nullopt));
}

class QuoteChartTest : public ::testing::Test {
 protected:
  QuoteChartTest() {
    equity->calendar = toronto;
    equity->recentTradingPeriod = session;
    equity->previousClosePrice = 12;
    equity->recentPrice = 11;
    equity->recentDate = session.lower() + 600;
  }
  static Quote bar(Date to, std::optional<Decimal> open, std::optional<Decimal> close) {
    Quote quote;
    quote.fromDate = to - 60;
    quote.toDate = to;
    quote.open = open;
    quote.close = close;
    quote.low = 9;
    if (close) {
      quote.high = 13;
    }
    return quote;
  }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  EquityPointer equity = provider->equityWithId("ABC");
  DateRange session{midnight(3, 1) + 34200, midnight(3, 1) + 57600};
  std::vector<Quote> quotes = {bar(session.lower() + 60, 10, 11),
                               bar(session.lower() + 180, {}, {}),
                               bar(session.lower() + 240, 11, 12)};
};

TEST_F(QuoteChartTest, PlacesTheQuotesOfASessionAtTheirMinutes) {
  QuoteChartView chart(QuoteChartView::Mode::thumbnail);
  chart.setQuotes(quotes, QuoteQuery::currentPeriod(equity, true));
  EXPECT_THAT(chart.lineChartDataSet.entries, ElementsAre(ChartEntry{1, 11}, ChartEntry{4, 12}));
  EXPECT_THAT(chart.candleChartDataSet.entries,
              ElementsAre(ChartEntry{1, 13, 9}, ChartEntry{4, 13, 9}));
  EXPECT_EQ(chart.xAxisMaximum, 390);
  EXPECT_EQ(chart.convertXFromGraphToDataIndex(4), 2U);
  EXPECT_EQ(chart.convertXFromGraphToDataIndex(2), std::nullopt);
  EXPECT_EQ(chart.openingValue(), 12);
  EXPECT_EQ(chart.closingValue(), 11);
  EXPECT_EQ(chart.lineChartDataSet.colour, Colour(Colour::Name::systemRed));
  EXPECT_FALSE(chart.interactiveDataSet) << "a thumbnail follows no pointer";
  EXPECT_THAT(chart.xAxisLimitLines, IsEmpty());
  chart.setQuotes({}, QuoteQuery::currentPeriod(equity, true));
  EXPECT_TRUE(chart.isEmpty());
}

TEST_F(QuoteChartTest, LeavesOutWhatWasTradedBesideTheSession) {
  quotes.insert(quotes.begin(), bar(session.lower() - 5400, 8, 9));
  quotes.push_back(bar(session.upper() + 300, 20, 21));
  QuoteChartView chart(QuoteChartView::Mode::presentation);
  chart.setQuotes(quotes, QuoteQuery::currentPeriod(equity, false));
  EXPECT_THAT(chart.lineChartDataSet.entries, ElementsAre(ChartEntry{1, 11}, ChartEntry{4, 12}));
  EXPECT_THAT(chart.candleChartDataSet.entries, SizeIs(2));
  ASSERT_FALSE(chart.xAxisLimitLines.empty());
  EXPECT_EQ(chart.xAxisLimitLines.front().value, 1);
  chart.pointerMovedTo(4);
  EXPECT_EQ(chart.currentMouseoverDataIndex(), 3U) << "indexes are those of all quotes";
  chart.setQuotes({quotes.front()}, QuoteQuery::currentPeriod(equity, false));
  EXPECT_TRUE(chart.isEmpty()) << "the session has no price yet";
}

TEST_F(QuoteChartTest, PlacesOtherQuotesSideBySide) {
  const QuoteQuery query{
      equity, session,
      QuoteQuery::Quotes{QuoteInterval::oneMinute, PriceAdjustment::marketNominal}};
  QuoteChartView chart;
  chart.setQuotes(quotes, query);
  EXPECT_TRUE(chart.isEmpty()) << "without a mode";
  chart.mode = QuoteChartView::Mode::presentation;
  chart.setQuotes(quotes, query);
  EXPECT_THAT(chart.lineChartDataSet.entries, ElementsAre(ChartEntry{0, 11}, ChartEntry{2, 12}));
  EXPECT_EQ(chart.xAxisMinimum, -0.5);
  EXPECT_EQ(chart.xAxisMaximum, 2.5);
  EXPECT_EQ(chart.openingValue(), 10);
  EXPECT_EQ(chart.closingValue(), 12);
  EXPECT_EQ(chart.interactiveDataSet->entries, chart.lineChartDataSet.entries);
  EXPECT_EQ(chart.lineChartDataSet.lineWidth, 2);
  EXPECT_EQ(chart.candleChartDataSet.colour, chart.lineChartDataSet.colour.withAlpha(0.4));
  EXPECT_THAT(chart.xAxisLimitLines, SizeIs(1));
}

}  // namespace
}  // namespace corvane
