// Charts laid out without a window: ranges, labels, what the pointer and the keys find.

#include "presentation/charts/chart_layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "presentation/charts/chart_table.h"
#include "presentation/charts/fiscal_chart_view.h"
#include "presentation/charts/pie_chart_view.h"

namespace corvane {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::Le;
using ::testing::SizeIs;
using Step = ChartLayout::Step;

/// A surface whose letters are all 7 wide.
ChartLayout::Surface surface(double width = 800, double height = 400) {
  return {width, height, 14,
          [](std::string_view text) { return 7 * static_cast<double>(text.size()); }};
}

ChartDataSet series(const std::vector<double>& values, const std::string& label = "Close") {
  ChartDataSet made{.label = label};
  for (const double value : values) {
    made.entries.push_back({static_cast<double>(made.entries.size()), value});
  }
  return made;
}

ChartDataSet wave(std::size_t count) {
  ChartDataSet made{.label = "Close"};
  for (std::size_t i = 0; i < count; ++i) {
    made.entries.push_back({static_cast<double>(i), 100 + 20 * std::sin(0.7 * double(i))});
  }
  return made;
}

std::vector<std::string> labelsOf(const std::vector<ChartLayout::Tick>& ticks) {
  std::vector<std::string> labels;
  for (const ChartLayout::Tick& tick : ticks) {
    labels.push_back(tick.label);
  }
  return labels;
}

TEST(ChartLayout, KeepsEveryValueInside) {
  FiscalChartView chart;
  chart.axisMinimum = 0;
  chart.interactiveDataSet = series({50, 80});
  EXPECT_EQ(ChartLayout(chart, surface()).yRange().lower, 0) << "on the ground";
  chart.setNoninteractiveDataSets({series({-30, 20}, "Net Deposits")});
  EXPECT_LT(ChartLayout(chart, surface()).yRange().lower, -30);
  chart.prescribedOpeningValue = 500;
  EXPECT_GT(ChartLayout(chart, surface()).yRange().upper, 500) << "with the opening line";
  // What is before the session counts for nothing.
  chart.prescribedOpeningValue = 50;
  chart.xAxisMinimum = 0.5;
  EXPECT_EQ(ChartLayout(chart, surface()).yRange().lower, 0);
}

TEST(ChartLayout, KeepsTheValuesOfALowChartApart) {
  FiscalChartView chart;
  chart.interactiveDataSet = series({-3, 1, 8});
  for (double height = 40; height < 300; height += 5) {
    const ChartLayout layout(chart, surface(800, height));
    const auto& ticks = layout.leftTicks();
    for (std::size_t i = 1; i < ticks.size(); ++i) {
      EXPECT_GE(layout.yPixel(ticks[i - 1].value) - layout.yPixel(ticks[i].value), 14)
          << "at a height of " << height;
    }
  }
}

TEST(ChartLayout, GivesAFlatOrASingleValueRoom) {
  FiscalChartView chart;
  for (const double value : {0.0, 5.0, -5.0}) {
    chart.interactiveDataSet = series({value});
    const ChartLayout layout(chart, surface());
    EXPECT_LT(layout.yRange().lower, value);
    EXPECT_GT(layout.yRange().upper, value);
    EXPECT_NEAR(layout.xPixel(0), (layout.plotArea().left + layout.plotArea().right) / 2, 1);
  }
  BaseChartView empty;
  EXPECT_THAT(ChartLayout(empty, surface()).leftTicks(), IsEmpty());
}

TEST(ChartLayout, PutsPercentagesAtRoundValuesOfTheirOwn) {
  FiscalChartView chart;
  chart.currency = Currency::usd();
  chart.reset();
  chart.interactiveDataSet = series({93, 70, 121});
  const ChartLayout layout(chart, surface(800, 320));
  EXPECT_THAT(labelsOf(layout.rightTicks()),
              ElementsAre("-20%", "-10%", "+0%", "+10%", "+20%", "+30%"));
  EXPECT_NEAR(layout.rightTicks()[2].value, 93, 1e-9);
  EXPECT_THAT(labelsOf(layout.leftTicks()), Contains("$80.00"));
  EXPECT_GE(layout.plotArea().left, 7 * 7) << "labels have their room";
  chart.interactiveDataSet = series({0, 70});
  EXPECT_THAT(ChartLayout(chart, surface()).rightTicks(), IsEmpty()) << "of nothing";
}

TEST(ChartLayout, LabelsRatesThatMoveInTheirLastDigits) {
  FiscalChartView chart;
  chart.currency = Currency::usd();
  chart.reset();
  chart.interactiveDataSet = series({0.0067, 0.0068});
  const auto labels = labelsOf(ChartLayout(chart, surface()).leftTicks());
  EXPECT_THAT(labels, SizeIs(Ge(2U)));
  EXPECT_EQ(std::set<std::string>(labels.begin(), labels.end()).size(), labels.size());
}

TEST(ChartLayout, LeavesOutDatesThatWouldOverlap) {
  FiscalChartView chart;
  chart.interactiveDataSet = wave(400);
  for (int i = 0; i < 400; i += 10) {
    chart.xAxisLimitLines.push_back({.value = double(i), .label = "2021-0" + std::to_string(i)});
  }
  const ChartLayout layout(chart, surface());
  const auto& labels = layout.dateLabels();
  EXPECT_THAT(labels, SizeIs(::testing::AllOf(Ge(5U), Le(12U))));
  for (std::size_t i = 1; i < labels.size(); ++i) {
    EXPECT_GE(labels[i].x, labels[i - 1].x + labels[i - 1].width);
  }
  EXPECT_LE(labels.back().x + labels.back().width, 800);
  EXPECT_EQ(labels.front().text, "2021-00");
  const auto dayOf = [&](std::size_t i) { return std::stoi(labels.at(i).text.substr(6)); };
  for (std::size_t i = 2; i < labels.size(); ++i) {
    EXPECT_EQ(dayOf(i) - dayOf(i - 1), dayOf(1) - dayOf(0)) << "what is left out is regular";
  }

  chart.xAxisLimitLines = {{.value = 0, .label = "Jan"}, {.value = 4, .label = "Feb"}};
  const ChartLayout months(chart, surface());
  ASSERT_THAT(months.dateLabels(), SizeIs(1));
  EXPECT_EQ(months.dateLabels()[0].text, "Feb") << "not what names four values of 400";
}

TEST(ChartLayout, KeepsCirclesOffTheLabelsOfTheAxes) {
  FiscalChartView chart;
  chart.interactiveDataSet = wave(10);
  chart.interactiveDataSet->shape = ChartDataSet::Shape::circles;
  const ChartLayout layout(chart, surface());
  const double room = chart.interactiveDataSet->circleRadius - 0.01;
  EXPECT_GE(layout.xPixel(0) - layout.plotArea().left, room);
  EXPECT_GE(layout.plotArea().right - layout.xPixel(9), room);
}

TEST(ChartLayout, NamesBandsWhereTheyAreHighEnough) {
  FiscalChartView chart;
  const auto band = [](const std::string& label, double base, double top) {
    ChartDataSet made{.label = label, .fill = Colour::Name::systemBlue};
    made.entries = {{0, top, base}, {1, top, base}};
    return made;
  };
  chart.setNoninteractiveDataSets({band("CAD", 0, 40), band("ABC", 40, 40.5)});
  chart.interactiveDataSet = band("XYZ", 40.5, 100);
  chart.axisMinimum = 0;
  const ChartLayout layout(chart, surface());
  ASSERT_THAT(layout.bandLabels(), SizeIs(2));
  EXPECT_EQ(layout.bandLabels()[0].text, "CAD");
  EXPECT_EQ(layout.bandLabels()[1].text, "XYZ");
  EXPECT_NEAR(layout.bandLabels()[0].y + 7, layout.yPixel(20), 0.1);
}

TEST(ChartLayout, WrapsTheLegendAndSaysWhatItLeavesOut) {
  FiscalChartView chart;
  std::vector<ChartDataSet> bands;
  for (int i = 0; i < 200; ++i) {
    bands.push_back(series({1, 2}, "SYM" + std::to_string(i)));
  }
  chart.setNoninteractiveDataSets(bands);
  const ChartLayout layout(chart, surface());
  const auto& legend = layout.legend();
  ASSERT_THAT(legend, SizeIs(Ge(20U)));
  EXPECT_EQ(legend.back().entry.label, std::to_string(200 - (legend.size() - 1)) + " more");
  for (std::size_t i = 0; i < legend.size(); ++i) {
    EXPECT_LE(legend[i].x + legend[i].width, 800);
    EXPECT_GE(legend[i].y, layout.plotArea().bottom);
    EXPECT_LE(legend[i].y + 14, 400);
    if (i > 0 && legend[i].y == legend[i - 1].y) {
      EXPECT_GE(legend[i].x, legend[i - 1].x + legend[i - 1].width);
    }
  }
  chart.legendEntries = {{"Strategy Return", Colour::Name::systemGreen}};
  EXPECT_THAT(ChartLayout(chart, surface()).legend(), SizeIs(1)) << "as the screen states";
}

TEST(ChartLayout, ShowsTheExtremesOfManyValues) {
  FiscalChartView chart;
  chart.interactiveDataSet = wave(11700);
  chart.interactiveDataSet->entries[5000].y = 400;
  chart.interactiveDataSet->entries[7001].y = -400;
  const ChartLayout layout(chart, surface());
  const auto shown = layout.shownEntries(*chart.interactiveDataSet);
  EXPECT_LE(shown.size(), 4 * 800U);
  EXPECT_THAT(shown, Contains(ChartEntry{5000, 400}));
  EXPECT_THAT(shown, Contains(ChartEntry{7001, -400}));
  EXPECT_EQ(shown.back().x, 11699);

  ChartDataSet candles{.label = "High/Low", .shape = ChartDataSet::Shape::candles};
  for (int i = 0; i < 11700; ++i) {
    candles.entries.push_back({double(i), i == 5000 ? 90.0 : 2.0, i == 5001 ? -90.0 : 1.0});
  }
  const auto merged = layout.shownEntries(candles);
  EXPECT_LE(merged.size(), 801U);
  EXPECT_EQ(std::ranges::max(merged, {}, &ChartEntry::y).y, 90);
  EXPECT_EQ(std::ranges::min(merged, {}, &ChartEntry::base).base, -90);
}

TEST(ChartLayout, FindsTheEntryNearestToThePointer) {
  FiscalChartView chart;
  chart.interactiveDataSet = series({10, 20, 30, 40, 50});
  const ChartLayout layout(chart, surface());
  const double middle = (layout.plotArea().top + layout.plotArea().bottom) / 2;
  EXPECT_EQ(layout.nearestEntry(layout.xPixel(1.4), middle), 1U);
  EXPECT_EQ(layout.nearestEntry(layout.xPixel(1.6), middle), 2U);
  EXPECT_EQ(layout.nearestEntry(layout.plotArea().right, middle), 4U);
  EXPECT_EQ(layout.nearestEntry(2, middle), std::nullopt) << "on the labels";
  EXPECT_EQ(layout.nearestEntry(layout.xPixel(1), 399), std::nullopt) << "below";

  chart.interactiveDataSet->shape = ChartDataSet::Shape::circles;
  chart.interactiveDataSet->entries = {{1, 10}, {1.1, 50}, {4, 30}};
  const ChartLayout plane(chart, surface());
  EXPECT_EQ(plane.nearestEntry(plane.xPixel(1.2), plane.yPixel(12)), 0U) << "by height as well";
  EXPECT_EQ(plane.nearestEntry(plane.xPixel(1.0), plane.yPixel(48)), 1U);
}

TEST(ChartLayout, StepsAlongTheDataByKeys) {
  FiscalChartView chart;
  chart.interactiveDataSet = wave(50);
  const ChartLayout layout(chart, surface());
  EXPECT_EQ(layout.nextEntry(std::nullopt, Step::forward), 0U);
  EXPECT_EQ(layout.nextEntry(std::nullopt, Step::back), 49U);
  EXPECT_EQ(layout.nextEntry(7, Step::forward), 8U);
  EXPECT_EQ(layout.nextEntry(0, Step::back), 0U);
  EXPECT_EQ(layout.nextEntry(7, Step::tenthForward), 12U);
  EXPECT_EQ(layout.nextEntry(7, Step::tenthBack), 2U);
  EXPECT_EQ(layout.nextEntry(3, Step::tenthBack), 0U);
  EXPECT_EQ(layout.nextEntry(48, Step::tenthForward), 49U);
  EXPECT_EQ(layout.nextEntry(7, Step::last), 49U);
  EXPECT_EQ(layout.nextEntry(7, Step::first), 0U);
}

TEST(ChartLayout, ShowsAPartWhenZoomed) {
  FiscalChartView chart;
  chart.interactiveDataSet = wave(101);
  chart.interactiveDataSet->entries[90].y = 900;
  chart.zoomBy(0.5, 20);
  EXPECT_EQ(chart.shownXRange(), (BaseChartView::Span{10, 60}));
  const ChartLayout layout(chart, surface());
  EXPECT_LT(layout.yRange().upper, 200) << "fitted to what is shown";
  EXPECT_EQ(layout.nearestEntry(layout.plotArea().right, 100), 60U);
  const auto shown = layout.shownEntries(*chart.interactiveDataSet);
  EXPECT_EQ(shown.front().x, 9) << "the line goes on beyond the edge";
  EXPECT_EQ(shown.back().x, 61);
  EXPECT_EQ(layout.firstShownEntry(*chart.interactiveDataSet), 9U);
  chart.scrollTo(70);
  EXPECT_EQ(chart.shownXRange(), (BaseChartView::Span{20, 70}));
  chart.highlight(5);
  EXPECT_EQ(chart.shownXRange(), (BaseChartView::Span{5, 55})) << "to the row of a table";
  for (int i = 0; i < 40; ++i) {
    chart.zoomBy(0.5, 20);
  }
  EXPECT_GE(chart.shownXRange().to - chart.shownXRange().from, 4);
  chart.zoomBy(1000, 20);
  EXPECT_FALSE(chart.isZoomed());
  EXPECT_EQ(chart.shownXRange(), chart.fullXRange());
}

TEST(BaseChart, TellsTheChangeBetweenTheEndsOfASelection) {
  FiscalChartView chart;
  chart.currency = Currency::usd();
  chart.reset();
  chart.interactiveDataSet = series({100, 90, 120});
  chart.keyText = [](std::size_t index) { return "day " + std::to_string(index); };
  int changes = 0;
  chart.highlightChangeHandler = [&] { ++changes; };
  chart.select(BaseChartView::Span{2, 1});
  EXPECT_EQ(chart.selectionText()->plainText(), "+33.33% ▲ +$30.00\nfrom day 1\nto day 2");
  chart.select(BaseChartView::Span{1, 1});
  EXPECT_FALSE(chart.selectionText()) << "from a value to itself";
  chart.pointerMovedTo(1);
  chart.pointerMovedTo(1);
  EXPECT_EQ(changes, 3) << "only where something has changed";
  EXPECT_EQ(chart.cursorText(), "day 1: $90.00");
  chart.tooltipProvider = [](std::size_t) { return AttributedText("$90\nMay 3"); };
  EXPECT_EQ(chart.cursorText(), "$90, May 3");
  chart.clear();
  EXPECT_EQ(chart.cursorText(), "");
}

TEST(FiscalChart, ShowsPricesExactlyAndSumsInCents) {
  FiscalChartView chart;
  chart.currency = Currency::usd();
  chart.reset();
  chart.interactiveDataSet = series({9'000.00012, 9'000.50024, 18'000.12345});
  chart.select(BaseChartView::Span{0, 1});
  EXPECT_EQ(chart.selectionText()->plainText(), "+0.01% ▲ +$0.50012");
  chart.select(BaseChartView::Span{0, 2});
  EXPECT_EQ(chart.selectionText()->plainText(), "+100.00% ▲ +$9,000.12");
  chart.pointerMovedTo(2);
  EXPECT_THAT(chart.cursorText(), testing::EndsWith("$18,000.12"));
}

TEST(ChartTable, HasARowForEachPlaceAndAColumnForEachSeries) {
  FiscalChartView chart;
  chart.currency = Currency::usd();
  chart.reset();
  ChartDataSet candles{.label = "High/Low", .shape = ChartDataSet::Shape::candles};
  candles.entries = {{0, 12, 8}, {2, 13.5, 9}};
  ChartDataSet bars{.label = "Buy \"&\" Hold", .shape = ChartDataSet::Shape::bars};
  bars.entries = {{-0.1, 0.25}, {0.9, 0.5}};
  chart.setNoninteractiveDataSets({candles, bars});
  chart.interactiveDataSet = series({10, 11});
  chart.keyText = [](std::size_t index) { return "day " + std::to_string(index); };
  const ChartTable table(chart);
  ASSERT_EQ(table.numberOfRows(), 3U);
  EXPECT_THAT(table.columns(), SizeIs(5));
  EXPECT_EQ(table.cell(0, 0).plainText(), "day 0");
  EXPECT_EQ(table.cell(2, 1).plainText(), "$13.50");
  EXPECT_EQ(table.cell(1, 1).plainText(), "");
  EXPECT_EQ(table.csv(),
            "\"Date\",\"High\",\"Low\",\"Buy \"\"&\"\" Hold\",\"Close\"\r\n"
            "\"day 0\",\"12\",\"8\",\"0.25\",\"10\"\r\n"
            "\"day 1\",\"\",\"\",\"0.5\",\"11\"\r\n"
            "\"day 2\",\"13.5\",\"9\",\"\",\"\"\r\n");
}

TEST(ChartTooltip, StaysOnTheScreen) {
  const ChartLayout::Box screen{0, 0, 1000, 600};
  const auto place = [&](double x, double y) { return tooltipPlace(x, y, 200, 50, screen); };
  EXPECT_EQ(place(100, 100).left, 115);
  EXPECT_EQ(place(100, 100).top, 115);
  EXPECT_EQ(place(900, 100).left, 685) << "on the other side of the pointer";
  EXPECT_EQ(place(100, 590).top, 525);
  EXPECT_EQ(tooltipPlace(50, 50, 1200, 50, screen).left, 0) << "too wide, it shows its start";
}

TEST(PieChart, FindsTheSliceUnderThePointer) {
  PieChartView pie;
  pie.slices = {{"A", 1, "10%"}, {"B", 4, "40%"}, {"C", 5, "50%"}};
  EXPECT_EQ(pie.sliceAt(0.1, -0.9)->label, "A") << "clockwise from the top";
  EXPECT_EQ(pie.sliceAt(0.5, 0.5)->label, "B");
  EXPECT_EQ(pie.sliceAt(-0.9, 0)->label, "C");
  EXPECT_EQ(pie.sliceAt(0.9, 0.9), nullptr);
  EXPECT_EQ(pie.cell(0, 0).plainText(), "● C") << "the list begins with the largest";
  EXPECT_EQ(pie.cell(2, 1).plainText(), "10%");
}

}  // namespace
}  // namespace corvane
