// The two screens that replay a strategy: what they ask of the market, what they show of a run, and
// what becomes of it when the user changes his mind.

#include <random>
#include <set>

#include "platform/net/url_request.h"
#include "presentation/frame/main_split_view_controller.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/scenario/scenario_batch_view_controller.h"
#include "presentation/scenario/scenario_detail_view_controller.h"
#include "presentation/scenario/scenario_text.h"
#include "scenario/naive_trader.h"

namespace corvane::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Has what a test gives it, for whatever is asked; where it is told to, only when the test says
/// so.
class StockedMarket : public ScriptedQuoteProvider {
 public:
  std::vector<Quote> bars;
  std::set<QuoteInterval> intervals = {QuoteInterval::oneMinute, QuoteInterval::oneHour};
  bool isHeldBack = false;
  std::vector<QuoteCompletion> heldBack;

  StockedMarket()
      : ScriptedQuoteProvider([this](const QuoteQuery& query) { return barsOf(query.dateRange); }) {
  }
  [[nodiscard]] Answer barsOf(const DateRange& range) const {
    std::vector<Quote> found;
    std::ranges::copy_if(bars, std::back_inserter(found),
                         [&](const Quote& bar) { return range.contains(bar.fromDate); });
    return quotes(std::move(found));
  }
  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> adjuster,
                   QuoteCompletion completion) override {
    if (isHeldBack) {
      queries.push_back(query);
      heldBack.push_back(std::move(completion));
    } else {
      ScriptedQuoteProvider::fetchQuotes(std::move(query), std::move(adjuster),
                                         std::move(completion));
    }
  }
  [[nodiscard]] std::set<QuoteInterval> availableIntervals(
      const EquityPointer& /*equity*/, const DateRange& /*range*/) const override {
    return intervals;
  }
};

DateComponents dayOfMarch(int day) {
  return {{CalendarUnit::year, 2021}, {CalendarUnit::month, 3}, {CalendarUnit::day, day}};
}

/// It is noon on 2021-03-10, a Wednesday. The market has a bar or two on each of the last days.
class ScenarioScreensTest : public PortfolioScreenWorld {
 protected:
  ScenarioScreensTest() {
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
    equity->currency = Currency::usd();
    market->bars = {bar(8, 10, "9.80", "10.20", "10"), bar(8, 11, "9.50", "9.60", "9.6"),
                    bar(9, 10, "10.80", "11.00", "11"), bar(10, 10, "10.3", "10.6", "10.5")};
    model->tradingScenarioSettings.detailScenario = model->tradingScenarioSettings.batchScenario =
        InvestmentScenario{dayOfMarch(8), dayOfMarch(12), QuoteInterval::oneHour, 1000};
    for (ScenarioViewController* screen : screens()) {
      screen->setDocumentModel(model);
    }
  }

  static Quote bar(int dayOfMonth, int hour, const std::string& low, const std::string& high,
                   const std::string& close) {
    Quote made;
    made.fromDate = day(2021, 3, dayOfMonth) + 3600.0 * (hour - 12);
    made.toDate = made.fromDate + 3600;
    made.low = dec(low);
    made.high = dec(high);
    made.close = dec(close);
    return made;
  }
  std::vector<ScenarioViewController*> screens() { return {detail.get(), batch.get()}; }
  void show(ScenarioViewController& screen) {
    screen.setCurrentEquity(equity);
    screen.setShown(true);
  }
  void showAndWait(ScenarioViewController& screen) {
    show(screen);
    waitUntil([&] { return !screen.isBusy(); });
  }
  static std::string summaryOf(const ScenarioViewController& screen) {
    return screen.summaryTextLabel().plainText();
  }
  /// The texts of a column.
  static std::vector<std::string> column(const ScenarioViewController& screen,
                                         std::string_view ident) {
    std::vector<std::string> texts;
    for (std::size_t row = 0; row < screen.scenarioDataSource().numberOfRows(); ++row) {
      texts.push_back(
          screen.scenarioDataSource().cellValue(ident, row).value_or(AttributedText()).plainText());
    }
    return texts;
  }
  static void type(ScenarioViewController& screen,
                   NumberEntry ScenarioStrategyViewController::*field, const std::string& text) {
    auto& panel = screen.strategyViewController;
    panel.typeInto(panel.*field, text);
    panel.endEditing(panel.*field);
  }

  std::shared_ptr<StockedMarket> market = std::make_shared<StockedMarket>();
  EquityPointer equity = market->equityWithId("ABC");
  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
  std::shared_ptr<ScenarioDetailViewController> detail =
      ScenarioDetailViewController::make(surroundings);
  std::shared_ptr<ScenarioBatchViewController> batch =
      ScenarioBatchViewController::make(surroundings);
};

using Panel = ScenarioStrategyViewController;

TEST(ScenarioPanel, ReadsPercentAndMoneyAndIgnoresWhatIsNeither) {
  Panel panel;
  int changes = 0;
  panel.parametersChangedHandler = [&] { ++changes; };
  const auto type = [&](NumberEntry& field, const std::string& text) {
    panel.typeInto(field, text);
    panel.endEditing(field);
  };
  EXPECT_EQ(panel.strategyBuySpreadField.text(), "5.00%");
  type(panel.strategyBuySpreadField, "5.00%");
  EXPECT_EQ(changes, 0) << "nothing has changed";
  type(panel.strategyBuySpreadField, "7.125%");
  EXPECT_EQ(panel.strategy().targetBuySpread, dec("0.07125"));
  EXPECT_EQ(panel.strategyBuySpreadField.text(), "7.125%");
  type(panel.strategySellSpreadField, "12");
  EXPECT_EQ(panel.strategySellSpreadField.text(), "12.00%");
  EXPECT_EQ(changes, 2);
  type(panel.strategySellSpreadField, "much");
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(panel.strategy().targetSellSpread, dec("0.12"));
  EXPECT_TRUE(panel.strategySellSpreadField.hint().isProblem);

  EquityInfo equity("ABC", {});
  equity.currency = Currency::usd();
  panel.prepare(equity, nullptr);
  EXPECT_EQ(panel.strategyBuyMaxField.text(), "$1,000.00");
  type(panel.initialInvestmentField, "$2,500");
  EXPECT_EQ(panel.scenario().initialInvestment, 2500);
  EXPECT_EQ(panel.initialInvestmentField.text(), "$2,500.00");
  EXPECT_EQ(panel.strategy().targetBuyMax, 1000) << "a plain number is the user's own";
}

TEST(ScenarioPanel, HasCheckBoxesForNoLimitAndAllShares) {
  Panel panel;
  int changes = 0;
  panel.parametersChangedHandler = [&] { ++changes; };
  EXPECT_TRUE(panel.strategySellSliceCheckbox.isOn);
  EXPECT_FALSE(panel.strategySellSliceField.isEnabled);
  EXPECT_FALSE(panel.stopLossBuySpreadField.isEnabled);
  EXPECT_FALSE(panel.stopLossBuyMaxCheckbox.isEnabled);

  panel.toggle(panel.strategySellSliceCheckbox, false);
  EXPECT_EQ(panel.strategy().targetSellSlice, dec("0.5"));
  EXPECT_TRUE(panel.strategySellSliceField.isEnabled);
  panel.toggle(panel.strategyBuyMaxCheckbox, true);
  EXPECT_EQ(panel.strategy().targetBuyMax, Decimal::greatestFiniteMagnitude());
  EXPECT_EQ(panel.strategyBuyMaxField.value(), Decimal::greatestFiniteMagnitude());
  EXPECT_FALSE(panel.strategyBuyMaxField.isEnabled);
  panel.typeInto(panel.initialInvestmentField, "400");
  panel.endEditing(panel.initialInvestmentField);
  panel.toggle(panel.strategyBuyMaxCheckbox, false);
  EXPECT_EQ(panel.strategy().targetBuyMax, 400) << "what there is to spend";

  panel.toggle(panel.isStopLossActiveCheckbox, true);
  EXPECT_TRUE(panel.stopLossBuySpreadField.isEnabled);
  EXPECT_TRUE(panel.stopLossBuyMaxField.isEnabled);
  EXPECT_TRUE(panel.stopLossSellSliceCheckbox.isOn);
  EXPECT_FALSE(panel.stopLossSellSliceField.isEnabled) << "the whole holding has no number";
  EXPECT_EQ(changes, 5);
}

TEST(ScenarioPanel, TakesDaysFromItsPickerAndShowsThoseOfAScenario) {
  Panel panel([] { return day(2021, 3, 10); });
  EquityInfo equity("ABC", {});
  equity.calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
  panel.prepare(equity, nullptr);
  std::vector<std::string> shown;
  panel.parametersChangedHandler = [&] {
    const auto range = panel.scenario().dateRange(equity.calendar).value();
    const auto ago = [&](Date date) {
      return std::to_string(static_cast<int>(day(2021, 3, 10).timeIntervalSince(date) / 86400));
    };
    shown.push_back(panel.queryDatesPicker.presetTitle() + " " + ago(range.lower()) + " " +
                    ago(range.upper() - 1) + " " +
                    (panel.scenario().quoteInterval == QuoteInterval::twoMinutes ? "2m" : "1m"));
  };
  for (std::size_t i = 0; i < panel.queryDatesPicker.presets().size(); ++i) {
    panel.queryDatesPicker.choosePreset(i);
  }
  EXPECT_THAT(shown, ElementsAre("Today 0 0 1m", "Yesterday 1 0 1m", "Past 7 days 6 0 1m",
                                 "Past 30 days 29 0 1m", "Past 60 days 59 0 2m"));
  panel.setScenario({dayOfMarch(1), dayOfMarch(4), QuoteInterval::oneDay, 5},
                    InvestmentStrategy::defaultStrategy());
  EXPECT_EQ(panel.queryDatesPicker.startDate(), (YearMonthDay{2021, 3, 1}));
  EXPECT_EQ(panel.queryDatesPicker.endDate(), (YearMonthDay{2021, 3, 4}));
  EXPECT_EQ(panel.queryDatesPicker.selectedInterval(), QuoteInterval::oneDay);
}

TEST_F(ScenarioScreensTest, AskForBarsUpToNowAsTheyWereTraded) {
  now = now + 0.75;
  detail->setCurrentEquity(equity);
  EXPECT_THAT(market->queries, IsEmpty()) << "a tab that nobody sees asks nothing";
  detail->setShown(true);
  EXPECT_EQ(summaryOf(*detail), "Hold tight; loading data…");
  ASSERT_THAT(market->queries, SizeIs(1));
  EXPECT_EQ(
      market->queries.front(),
      (QuoteQuery{equity, DateRange(day(2021, 3, 8) - 43200, day(2021, 3, 10)),
                  QuoteQuery::Quotes{QuoteInterval::oneHour, PriceAdjustment::marketNominal}}));
}

TEST_F(ScenarioScreensTest, GreetWhereThereIsNothingToRun) {
  const std::string greeting = "Hello there. Let's get rich!";
  detail->setShown(true);
  EXPECT_EQ(summaryOf(*detail), greeting) << "no equity";
  model->tradingScenarioSettings.detailScenario->fromDateComponents = dayOfMarch(11);
  show(*detail);
  EXPECT_EQ(summaryOf(*detail), greeting) << "a period to come";
  model->tradingScenarioSettings.detailScenario->fromDateComponents = dayOfMarch(13);
  show(*detail);
  EXPECT_EQ(summaryOf(*detail), greeting) << "a period that ends before it starts";
  const auto orphan = std::make_shared<StockedMarket>()->equityWithId("XYZ");
  model->tradingScenarioSettings.detailScenario->fromDateComponents = dayOfMarch(8);
  detail->setCurrentEquity(orphan);
  EXPECT_EQ(summaryOf(*detail), greeting) << "nobody to ask";
  EXPECT_THAT(market->queries, IsEmpty());
}

TEST_F(ScenarioScreensTest, RunWithBarsThatCanBeHad) {
  market->intervals = {QuoteInterval::oneDay};
  show(*detail);
  EXPECT_EQ(detail->scenario().quoteInterval, QuoteInterval::oneDay);
  EXPECT_EQ(std::get<QuoteQuery::Quotes>(market->queries.back().seeking).interval,
            QuoteInterval::oneDay);
}

TEST_F(ScenarioScreensTest, ListEveryTransaction) {
  showAndWait(*detail);
  EXPECT_EQ(summaryOf(*detail), "Yielded +5.88%. Made 2 trades over 2 of the 3 trading days.");
  EXPECT_EQ(detail->summaryTextLabel().runs().at(1).style.weight, FontWeight::bold);
  EXPECT_THAT(column(*detail, "transaction"), ElementsAre("● Open", "● Buy", "● Sell", "● Close"));
  EXPECT_THAT(column(*detail, "quantity"), ElementsAre("0", "98", "-98", "0"));
  EXPECT_THAT(column(*detail, "price"), ElementsAre("$10.00", "$10.20", "$10.80", "$10.50"));
  EXPECT_THAT(column(*detail, "netShares"), ElementsAre("0", "98", "0", "0"));
  EXPECT_THAT(column(*detail, "netEquity"), ElementsAre("$0.00", "$999.60", "$0.00", "$0.00"));
  EXPECT_THAT(column(*detail, "netCash"),
              ElementsAre("$1,000.00", "$0.40", "$1,058.80", "$1,058.80"));
  EXPECT_THAT(column(*detail, "totalValue"),
              ElementsAre("$1,000.00", "$1,000.00", "$1,058.80", "$1,058.80"));
  EXPECT_THAT(column(*detail, "date").at(2), HasSubstr("March 9, 2021 at 10:00"));
  EXPECT_THAT(column(*detail, "other"), Contains("—").Times(4));
}

TEST_F(ScenarioScreensTest, BindChartAndTableOfTheDetailsBothWays) {
  std::vector<bool> takesKeyboard;
  detail->selectionChangeHandler = [&](bool takes) { takesKeyboard.push_back(takes); };
  showAndWait(*detail);
  FiscalChartView& chart = detail->scenarioChartView;
  ASSERT_THAT(chart.noninteractiveDataSets(), SizeIs(2));
  const ChartDataSet& strategy = chart.noninteractiveDataSets()[1];
  EXPECT_EQ(strategy.label, "Strategy Return");
  EXPECT_EQ(chart.noninteractiveDataSets()[0].label, "Buy & Hold Return");
  ASSERT_THAT(strategy.entries, SizeIs(4));
  EXPECT_NEAR(strategy.entries[0].y, -0.0196, 1e-12);
  EXPECT_NEAR(chart.noninteractiveDataSets()[0].entries[3].y, 98 * 10.5 / 1000 + 0.0004 - 1, 1e-12);
  ASSERT_TRUE(chart.interactiveDataSet);
  EXPECT_THAT(chart.interactiveDataSet->entrySigns, ElementsAre("O", "B", "S", "C"));
  EXPECT_EQ(chart.interactiveDataSet->entryColours.at(2), Colour(Colour::Name::systemGreen));

  detail->selectRow(2);
  EXPECT_EQ(chart.highlightedDataIndex(), 2U);
  detail->selectRow(3);
  EXPECT_EQ(chart.highlightedDataIndex(), 3U);
  chart.clicked(0.0);
  EXPECT_EQ(detail->selectedRow(), 0U) << "the first of two rows of one bar";
  chart.clicked(1.0);
  EXPECT_EQ(detail->selectedRow(), std::nullopt) << "a bar without a row";
  EXPECT_EQ(takesKeyboard, (std::vector{false, false, true, false}));
  const std::string tooltip = chart.tooltipProvider(2).plainText();
  EXPECT_THAT(tooltip, HasSubstr("Sell (-98 @ $10.80); net gain/loss: +5.88%\nMarch 9, 2021"));
  EXPECT_TRUE(chart.tooltipProvider(1).isEmpty());
  EXPECT_EQ(ScenarioDataSource::stringForValue(0.00009), "\u00A00.00%");
  EXPECT_EQ(ScenarioDataSource::stringForValue(-0.25), "-25.00%");
}

TEST_F(ScenarioScreensTest, TellOfDaysWithoutAnyPrice) {
  for (Quote& quote : market->bars) {
    quote.close.reset();
  }
  showAndWait(*detail);
  EXPECT_EQ(summaryOf(*detail), "Yielded ?. Made 0 trades over 0 of the 0 trading days.");
  EXPECT_THAT(column(*detail, "date"), ElementsAre("—"));
  market->bars.clear();
  showAndWait(*detail);
  EXPECT_TRUE(detail->scenarioChartView.isEmpty());
  showAndWait(*batch);
  EXPECT_EQ(summaryOf(*batch), "Yields range from ? to ?. Analyzed returns over 0 time periods.");
}

TEST_F(ScenarioScreensTest, ListEverySubPeriod) {
  showAndWait(*batch);
  EXPECT_EQ(summaryOf(*batch),
            "Yields range from -5.88% to +0.00%. Analyzed returns over 3 time periods.");
  EXPECT_THAT(column(*batch, "date"),
              ElementsAre(HasSubstr("March 8, 2021, 10:00"), HasSubstr("March 9, 2021, 10:00"),
                          HasSubstr("March 10, 2021, 10:00")));
  EXPECT_THAT(column(*batch, "tradingDays"), ElementsAre("1", "1", "1"));
  EXPECT_THAT(column(*batch, "totalValue"), ElementsAre("$941.20", "$1,000.00", "$990.60"));
  EXPECT_THAT(column(*batch, "netMoneyGain"), ElementsAre("($58.80)", "$0.00", "($9.40)"));
  EXPECT_THAT(column(*batch, "netPercentGain"), ElementsAre("-5.88%", "+0.00%", "-0.94%"));
  EXPECT_THAT(column(*batch, "approxARR"), ElementsAre("-1,481.76%", "+0.00%", "-236.88%"));

  FiscalChartView& chart = batch->scenarioChartView;
  ASSERT_TRUE(chart.interactiveDataSet);
  EXPECT_THAT(chart.interactiveDataSet->entries, SizeIs(3));
  EXPECT_EQ(chart.interactiveDataSet->entryColours.at(1), Colour(Colour::Name::systemRed))
      << "no gain is none";
  EXPECT_EQ(chart.noninteractiveDataSets().at(0).entries.at(1).x, 0.9);
  EXPECT_EQ(chart.fullXRange(), (BaseChartView::Span{-0.5, 2.5}));
  EXPECT_THAT(chart.legend(), SizeIs(3));
  EXPECT_THAT(chart.tooltipProvider(0).plainText(), HasSubstr("-5.88%\nMarch 8, 2021"));
  EXPECT_THAT(chart.tooltipProvider(0).plainText(), HasSubstr(" (1 day)"));

  batch->selectBatchType(1);
  waitUntil([&] { return !batch->isBusy(); });
  EXPECT_THAT(column(*batch, "tradingDays"), ElementsAre("1", "2", "3"));
  EXPECT_THAT(column(*batch, "netPercentGain"), ElementsAre("-5.88%", "+5.88%", "+5.88%"));
  EXPECT_EQ(ScenarioBatchViewController::make(surroundings)->selectedBatchType(), 1U);
  batch->selectBatchType(2);
  waitUntil([&] { return !batch->isBusy(); });
  EXPECT_THAT(column(*batch, "tradingDays"), ElementsAre("3", "2", "1"));
  defaults.set("lastRegressionBatchType", JSONValue(std::int64_t{7}));
  EXPECT_EQ(ScenarioBatchViewController::make(surroundings)->selectedBatchType(), 0U);
}

TEST_F(ScenarioScreensTest, GoFromASubPeriodToItsDetails) {
  std::optional<InvestmentScenario> handed;
  batch->goToDetailHandler = [&](const InvestmentScenario& scenario, const auto&) {
    handed = scenario;
  };
  showAndWait(*batch);
  EXPECT_FALSE(batch->isGoToDetailEnabled());
  batch->goToDetailAction();
  EXPECT_FALSE(handed);
  batch->selectRow(1);
  EXPECT_TRUE(batch->isGoToDetailEnabled());
  EXPECT_EQ(batch->scenarioChartView.highlightedDataIndex(), 1U);
  batch->scenarioChartView.doubleClicked(2.0);
  ASSERT_TRUE(handed);
  EXPECT_EQ(handed->fromDateComponents, dayOfMarch(10));
  EXPECT_EQ(handed->toDateComponents, dayOfMarch(10));
  EXPECT_EQ(handed->quoteInterval, QuoteInterval::oneHour);
  type(*batch, &Panel::strategyBuySpreadField, "1%");
  EXPECT_FALSE(batch->isGoToDetailEnabled());
}

TEST_F(ScenarioScreensTest, HandTheirInputToEachOther) {
  const auto frame = MainSplitViewController::make(surroundings);
  frame->setDocumentModel(model);
  frame->masterSourceViewController->setCurrentDetailObject(equity);
  EquityViewController& screen = *frame->equityViewController;
  ASSERT_EQ(screen.numberOfTabs(), 4U);
  screen.selectTab(2);
  auto& panel = frame->scenarioDetailViewController->strategyViewController;
  panel.typeInto(panel.initialInvestmentField, "777");
  panel.endEditing(panel.initialInvestmentField);
  frame->scenarioDetailViewController->makeBatchAction();
  EXPECT_EQ(screen.selectedTabIndex(), 3U);
  EXPECT_EQ(model->tradingScenarioSettings.batchScenario->initialInvestment, 777);
  waitUntil([&] { return !frame->scenarioBatchViewController->isBusy(); });
  frame->scenarioBatchViewController->selectRow(0);
  frame->scenarioBatchViewController->goToDetailAction();
  EXPECT_EQ(screen.selectedTabIndex(), 2U);
  EXPECT_EQ(model->tradingScenarioSettings.detailScenario->toDateComponents, dayOfMarch(8));
  waitUntil([&] { return !frame->scenarioDetailViewController->isBusy(); });
  EXPECT_THAT(summaryOf(*frame->scenarioDetailViewController), HasSubstr("of the 1 trading days"));
}

TEST_F(ScenarioScreensTest, UndoAndRedoAChange) {
  showAndWait(*detail);
  type(*detail, &Panel::strategySellSpreadField, "50%");
  EXPECT_EQ(undo->undoActionName(), "Strategy Change");
  EXPECT_EQ(detail->strategy().targetSellSpread, dec("0.5"));
  waitUntil([&] { return !detail->isBusy(); });
  EXPECT_THAT(column(*detail, "transaction"), SizeIs(3));
  undo->undo();
  EXPECT_EQ(detail->strategyViewController.strategySellSpreadField.text(), "5.00%");
  waitUntil([&] { return !detail->isBusy(); });
  EXPECT_THAT(column(*detail, "transaction"), SizeIs(4));
  detail->setShown(false);
  const std::size_t asked = market->queries.size();
  undo->redo();
  EXPECT_EQ(detail->strategy().targetSellSpread, dec("0.5")) << "also on another tab";
  EXPECT_THAT(market->queries, SizeIs(asked));
  showAndWait(*detail);
  EXPECT_THAT(column(*detail, "transaction"), SizeIs(3));
}

TEST_F(ScenarioScreensTest, SayWithoutAnAlertThatTheNetworkIsMissing) {
  market->script = [](const QuoteQuery&) {
    return failure(URLError(URLError::Code::cannotFindHost, "https://nowhere", ""));
  };
  for (ScenarioViewController* screen : screens()) {
    showAndWait(*screen);
    EXPECT_EQ(screen->statusText(),
              "The market cannot be reached, and the cache has no prices for this. Asking again by "
              "itself.");
  }
  EXPECT_THAT(errors, IsEmpty());
}

TEST_F(ScenarioScreensTest, TellOfFailures) {
  market->script = [](const QuoteQuery&) { return ScriptedQuoteProvider::refusal(); };
  showAndWait(*detail);
  EXPECT_THAT(errors, SizeIs(1));
  EXPECT_EQ(summaryOf(*detail), "Hold tight; loading data…");
  market->script = [](const QuoteQuery&) {
    auto answer = ScriptedQuoteProvider::quotes({});
    answer->quotes.reset();
    return answer;
  };
  detail->runAction();
  waitUntil([&] { return !detail->isBusy(); });
  ASSERT_THAT(errors, SizeIs(2));
  EXPECT_EQ(errors[1], QuoteProviderError(QuoteProviderError::QueryNotSatisfied{}).description());

  market->script = [this](const QuoteQuery& query) { return market->barsOf(query.dateRange); };
  type(*batch, &Panel::strategySellSliceField, "200%");
  batch->selectBatchType(1);
  for (ScenarioViewController* screen : screens()) {
    type(*screen, &Panel::strategySellSliceField, "200%");
    showAndWait(*screen);
    EXPECT_EQ(summaryOf(*screen), "Uh oh; an error occurred during the analysis.");
  }
  EXPECT_THAT(errors, SizeIs(4));
  EXPECT_THAT(column(*batch, "netPercentGain"), ElementsAre("-5.88%"))
      << "the period that went well";
}

TEST_F(ScenarioScreensTest, FailWithoutAWayToDivideThePeriod) {
  ScenarioBatchDataSource source(defaults);
  ErrorPointer error;
  source.beginAnalysis(equity, market->bars, 1000, InvestmentStrategy::defaultStrategy(),
                       [&](ErrorPointer told) { error = std::move(told); });
  EXPECT_EQ(error, nullptr) << "told before the call has returned";
  waitUntil([&] { return error != nullptr; });
  EXPECT_EQ(*error, ScenarioBatchDataSource::NoBatchMethodError());
}

TEST_F(ScenarioScreensTest, ShowNothingOfAnswersThatAreOvertaken) {
  market->isHeldBack = true;
  for (ScenarioViewController* screen : screens()) {
    market->heldBack.clear();
    show(*screen);
    type(*screen, &Panel::initialInvestmentField, "500");
    type(*screen, &Panel::initialInvestmentField, "300");
    ASSERT_THAT(market->heldBack, SizeIs(3));
    for (const std::size_t i : {2U, 0U, 1U}) {
      market->heldBack[i](ScriptedQuoteProvider::quotes(
          {bar(8, static_cast<int>(9 + i), "10", "10", "10"), bar(8, 15, "10", "10", "11")}));
    }
    waitUntil([&] { return !screen->isBusy(); });
    MainLoop::drain();
    EXPECT_THAT(column(*screen, "date").at(0), HasSubstr("11:00")) << "the answer to the last";
    EXPECT_THAT(column(*screen, screen == batch.get() ? "netMoneyGain" : "totalValue").back(),
                screen == batch.get() ? "$30.00" : "$330.00");
  }
}

/// The return of each sub-period of a batch that grows from the first day, worked out on paper.
std::vector<std::string> returnsOnPaper(const std::vector<Quote>& bars,
                                        const InvestmentStrategy& strategy,
                                        const EquityInfo& equity) {
  const auto days = tradingDayNumbers(bars, equity);
  std::vector<std::string> returns;
  for (const auto& range : batchRanges(BatchMethod::accumulatingFromStart, days)) {
    const auto end = static_cast<std::ptrdiff_t>(range.upper());
    const NaiveTrader trader({bars.begin(), bars.begin() + end}, {days.begin(), days.begin() + end},
                             strategy, 1000);
    returns.push_back(returnText(trader.values.back() / 1000 - 1).value());
  }
  return returns;
}

/// Two weeks of minutes that go up and down.
std::vector<Quote> twoWeeks() {
  std::mt19937_64 random(7);
  std::vector<Quote> bars;
  long price = 10'000;
  for (int dayOfMonth = 1; dayOfMonth <= 10; ++dayOfMonth) {
    for (int minute = 0; minute < 110; ++minute) {
      price = std::max(2'000L, price + static_cast<long>(random() % 201) - 100);
      Quote bar;
      bar.fromDate = day(2021, 3, dayOfMonth) - 7200 + 60.0 * minute;
      bar.toDate = bar.fromDate + 60;
      bar.close = Decimal::fromParts(Sign::plus, -2, price);
      bar.low = Decimal::fromParts(Sign::plus, -2, price - 20);
      bar.high = Decimal::fromParts(Sign::plus, -2, price + 20);
      bars.push_back(bar);
    }
  }
  return bars;
}

TEST_F(ScenarioScreensTest, KeepALateRunFromReplacingANewerOne) {
  std::vector<Quote> many;
  for (int i = 0; i < 60'000; ++i) {
    many.push_back(market->bars[static_cast<std::size_t>(i % 2)]);
    many.back().fromDate = day(2020, 1, 1) + 60.0 * i;
  }
  InvestmentStrategy lively = InvestmentStrategy::defaultStrategy();
  lively.targetBuySpread = lively.targetSellSpread = 0;
  lively.isStopLossActive = true;
  ScenarioDetailDataSource source(defaults);
  int completions = 0;
  source.beginAnalysis(equity, many, 100'000, lively,
                       [&](const ErrorPointer&) { completions += 9; });
  // The long run must have begun, and must not have ended.
  MainLoop::runUntil([] { return false; }, std::chrono::milliseconds(3));
  source.beginAnalysis(equity, market->bars, 1000, InvestmentStrategy::defaultStrategy(),
                       [&](const ErrorPointer&) { completions += 1; });
  waitUntil([&] { return completions > 0; });
  MainLoop::runUntil([] { return false; }, std::chrono::milliseconds(500));
  EXPECT_EQ(completions, 1);
  EXPECT_EQ(source.numberOfRows(), 4U);
}

TEST_F(ScenarioScreensTest, MapTheReturnsOfOtherSpreads) {
  market->bars = twoWeeks();
  ScenarioDetailDataSource source(defaults);
  EXPECT_EQ(source.makeHeatMap(), nullptr);
  bool hasEnded = false;
  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  source.beginAnalysis(equity, market->bars, 1000, strategy,
                       [&](const ErrorPointer&) { hasEnded = true; });
  waitUntil([&] { return hasEnded; });
  const auto map = source.makeHeatMap();
  ASSERT_NE(map, nullptr);
  EXPECT_THAT(map->parameters(), SizeIs(4)) << "nothing of a stop loss that is not active";
  map->chooseRowParameter(1);
  EXPECT_EQ(map->columnParameter(), 0U) << "the two change places";
  EXPECT_EQ(map->noteText(), "Replaying…");
  waitUntil([&] { return !map->progress().isAnimated; });

  const auto days = tradingDayNumbers(market->bars, *equity);
  const NaiveTrader holder(market->bars, days, InvestmentStrategy::buyAndHold(), 1000);
  int better = 0;
  std::set<std::string> distinct;
  for (std::size_t row = 0; row < ScenarioHeatMap::numberOfRows(); ++row) {
    for (std::size_t column = 0; column < ScenarioHeatMap::numberOfColumns(); ++column) {
      const auto spread = [](std::string title) {
        title.pop_back();
        return dec(title) / 100;
      };
      strategy.targetSellSpread = spread(map->rowTitle(row));
      strategy.targetBuySpread = spread(map->columnTitle(column));
      const NaiveTrader trader(market->bars, days, strategy, 1000);
      const bool isBetter = trader.values.back() > holder.values.back();
      better += isBetter ? 1 : 0;
      const auto expected = returnText(trader.values.back() / 1000 - 1).value();
      EXPECT_EQ(map->cellText(row, column), expected + (isBetter ? " ▲" : ""));
      distinct.insert(expected);
    }
  }
  EXPECT_GT(distinct.size(), 5U);
  EXPECT_GT(better, 0);
  EXPECT_THAT(map->noteText(), HasSubstr("yields " + *returnText(holder.values.back() / 1000 - 1)));
  EXPECT_THAT(map->noteText(),
              HasSubstr(std::to_string(better) + " of 81 combinations would have beaten it"));
  EXPECT_THAT(map->cellDescription(0, 8),
              HasSubstr("Sell when up by 0.50%, Buy when down by 20.00%: "));
}

TEST_F(ScenarioScreensTest, MapAnyTwoNumbersAndChartARowBesideHolding) {
  market->bars = twoWeeks();
  ScenarioDetailDataSource source(defaults);
  bool hasEnded = false;
  InvestmentStrategy strategy = InvestmentStrategy::defaultStrategy();
  strategy.targetBuySpread = strategy.targetSellSpread = dec("0.01");
  strategy.isStopLossActive = true;
  source.beginAnalysis(equity, market->bars, 1000, strategy,
                       [&](const ErrorPointer&) { hasEnded = true; });
  waitUntil([&] { return hasEnded; });
  const auto map = source.makeHeatMap();
  ASSERT_THAT(map->parameters(), SizeIs(8));
  map->chooseRowParameter(2);
  map->chooseColumnParameter(5);
  EXPECT_TRUE(map->rowChart.isEmpty());
  waitUntil([&] { return !map->progress().isAnimated; });
  EXPECT_EQ(map->rowTitle(1), "$100.00");
  EXPECT_EQ(map->rowTitle(8), "No limit");
  EXPECT_EQ(map->columnTitle(8), "100.00%");
  map->chartRow(8);
  EXPECT_EQ(map->chartTitle(), "Spend at most No limit");
  const auto& line = map->rowChart.interactiveDataSet;
  ASSERT_TRUE(line);
  ASSERT_THAT(line->entries, SizeIs(9));
  const auto days = tradingDayNumbers(market->bars, *equity);
  const auto returnOf = [&](const InvestmentStrategy& tried) {
    return (NaiveTrader(market->bars, days, tried, 1000).values.back() / 1000 - 1).doubleValue();
  };
  std::set<double> distinct;
  for (std::size_t column = 0; column < 9; ++column) {
    strategy.targetBuyMax = beyond;
    std::string part = map->columnTitle(column);
    part.pop_back();
    strategy.stopLossSellSlice = dec(part) / 100;
    EXPECT_DOUBLE_EQ(line->entries[column].y, returnOf(strategy));
    distinct.insert(line->entries[column].y);
  }
  EXPECT_GT(distinct.size(), 5U);
  const ChartDataSet& holding = map->rowChart.noninteractiveDataSets().at(0);
  EXPECT_EQ(holding.label, "Buy & Hold Return");
  EXPECT_THAT(holding.entries, SizeIs(9));
  EXPECT_DOUBLE_EQ(holding.entries[4].y, returnOf(InvestmentStrategy::buyAndHold()));
  map->rowChart.pointerMovedTo(3);
  EXPECT_THAT(map->rowChart.cursorText(),
              HasSubstr("Spend at most No limit, Stop loss: part to sell 40.00%: "));
}

TEST_F(ScenarioScreensTest, FollowAUserWhoChangesAFieldAllTheWhile) {
  market->bars = twoWeeks();
  model->tradingScenarioSettings.detailScenario->fromDateComponents =
      model->tradingScenarioSettings.batchScenario->fromDateComponents = dayOfMarch(1);
  batch->selectBatchType(1);
  int rowsBeforeTheEnd = 0;
  batch->rowsChangeHandler = [&](bool areAppended) { rowsBeforeTheEnd += areAppended ? 1 : 0; };
  for (ScenarioViewController* screen : screens()) {
    show(*screen);
    for (int change = 1; change <= 25; ++change) {
      type(*screen, &Panel::strategyBuySpreadField,
           std::to_string(change % 9 + 1) + "." + std::to_string(change) + "%");
      // Twenty times a second; now and then so soon that the run has not begun, and at times so
      // late that it is done.
      const int pause = change % 5 == 0 ? 20'000 : change % 4 == 0 ? change : 50;
      MainLoop::runUntil([&] { return change % 5 == 0 && !screen->isBusy(); },
                         std::chrono::milliseconds(pause));
      if (change % 7 == 0) {
        screen->cancelAction();
        EXPECT_FALSE(screen->isBusy());
      }
      if (change % 11 == 0) {
        equity->currency = Currency::usd();  // as a refresh does
        equity->recentPrice = change;
      }
    }
    waitUntil([&] { return !screen->isBusy(); });
  }
  EXPECT_THAT(errors, IsEmpty());
  const auto expected = returnsOnPaper(market->bars, batch->strategy(), *equity);
  EXPECT_EQ(column(*batch, "netPercentGain"), expected);
  ASSERT_THAT(expected, SizeIs(10));
  EXPECT_THAT(summaryOf(*detail), HasSubstr("Yielded " + expected.back() + "."))
      << "both have the same strategy";
}

TEST_F(ScenarioScreensTest, KeepWhatABatchHasBroughtWhenItIsCancelled) {
  market->bars = twoWeeks();
  model->tradingScenarioSettings.detailScenario->fromDateComponents =
      model->tradingScenarioSettings.batchScenario->fromDateComponents = dayOfMarch(1);
  show(*batch);
  waitUntil([&] { return batch->batchDataSource().completedCount() >= 2; });
  EXPECT_THAT(batch->statusText(), HasSubstr(" of 10 time periods."));
  EXPECT_EQ(batch->progress().maximum, 10);
  batch->cancelAction();
  EXPECT_FALSE(batch->isBusy());
  EXPECT_THAT(summaryOf(*batch), HasSubstr("Cancelled. Yields range from "));
  EXPECT_FALSE(batch->scenarioChartView.isEmpty());
  const std::size_t rows = batch->batchDataSource().numberOfRows();
  MainLoop::runUntil([] { return false; }, std::chrono::milliseconds(100));
  EXPECT_EQ(batch->batchDataSource().numberOfRows(), rows);
  EXPECT_LT(rows, 10U);
}

}  // namespace
}  // namespace corvane::testing
