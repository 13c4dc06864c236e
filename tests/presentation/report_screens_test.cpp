// The reports about returns and income, a tax year, and the panel that explains figures.

#include "presentation/portfolio/portfolio_view_controller.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/reports/explanation_view_controller.h"
#include "presentation/taxes/tax_year_view_controller.h"
#include "reports/trail/ledger_trails.h"

namespace corvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::StartsWith;

/// ABC costs 10 until the 4th of March 2021 and 11 from then on. The portfolio is shown on the ten
/// days up to today.
class ReportScreensTest : public PortfolioScreenWorld {
 protected:
  ReportScreensTest() {
    quoteDollars(2);
    closes["ABC"] = 10;
    prices->script = [this](const QuoteQuery& query) {
      const auto found = closes.find(query.equity->id());
      if (found != closes.end() && query.equity->id() == "IDX" &&
          std::holds_alternative<QuoteQuery::EventsOnly>(query.seeking)) {
        QuoteFetchResult events{.quotes = std::nullopt,
                                .prices = PriceAdjustment::adjustedForSplits,
                                .events = std::vector<EquityEvent>(),
                                .durableDateRange = {Date(), Date()}};
        events.events->push_back(
            {day(2021, 3, 8), EquityEvent::Dividend{2}, PriceAdjustment::adjustedForSplits});
        return ScriptedQuoteProvider::Answer(std::move(events));
      }
      if (found == closes.end() || std::holds_alternative<QuoteQuery::EventsOnly>(query.seeking)) {
        return ScriptedQuoteProvider::refusal();
      }
      return ScriptedQuoteProvider::quotes(
          ScriptedQuoteProvider::dailyBars(query, [&](YearMonthDay each) {
            Quote bar;
            const bool hasRisen = query.equity == abc && YearMonthDay{2021, 3, 4} < each;
            bar.open = bar.close = found->second + (hasRisen ? 1 : 0);
            return std::optional(bar);
          }));
    };
    abc->recentPrice = 12;
    record({on(day(2021, 3, 1)).deposit("1000"), buy("100", "1000")});
  }

  PortfolioDataSlice slice(YearMonthDay from = {2021, 3, 1}) {
    PortfolioDataSlice data{.portfolio = portfolio};
    data.selectDays({from, {2021, 3, 10}});
    return data;
  }
  void showReturns(YearMonthDay from = {2021, 3, 1}) {
    returns->setShown(true);
    returns->setCurrentData(slice(from), std::nullopt);
    waitUntil([&] { return !returns->isBusy(); });
  }
  static const ReportFigure& figure(const std::vector<ReportFigure>& figures,
                                    const std::string& title) {
    const auto found = std::ranges::find(figures, title, &ReportFigure::title);
    EXPECT_NE(found, figures.end()) << title;
    static const ReportFigure none;
    return found == figures.end() ? none : *found;
  }
  std::string returnFigure(const std::string& title) {
    return figure(returns->figures(), title).value.plainText();
  }
  BasicTransaction dividend(Date date, const std::string& amount, const std::string& shares) {
    return on(date).yield(BasicTransaction::YieldType::dividend, amount, dec(shares));
  }

  std::shared_ptr<ReturnsViewController> returns = ReturnsViewController::make(surroundings);
  std::shared_ptr<IncomeViewController> income = IncomeViewController::make(surroundings);
};

TEST_F(ReportScreensTest, ShowWhatWasReturnedAndReconcileItWithTheHeading) {
  returns->setCurrentData(slice(), std::nullopt);
  EXPECT_THAT(prices->queries, IsEmpty()) << "a tab that is not shown asks nothing";
  EXPECT_FALSE(returns->isBusy());
  showReturns();
  EXPECT_EQ(returnFigure("Time-weighted"), "+10.00%");
  EXPECT_EQ(returnFigure("Money-weighted"), "+10.00%");
  EXPECT_EQ(returnFigure("Gain"), "CA$100.00");
  EXPECT_EQ(figure(returns->figures(), "Time-weighted").detail, "a year: —")
      << "nine days are not made a year";
  EXPECT_EQ(returnFigure("Volatility"), "—");
  EXPECT_THAT(cells(returns->equityTable, 0),
              ElementsAre(Pair("bought", "CA$1,000.00"), Pair("closing", "CA$1,100.00"),
                          Pair("dividends", "CA$0.00"), Pair("gain", "CA$100.00"),
                          Pair("moneyWeighted", "+10.00%"), Pair("opening", "CA$0.00"),
                          Pair("shareOfGain", "100.00%"), Pair("sold", "CA$0.00"),
                          Pair("symbol", "ABC"), Pair("timeWeighted", "+10.00%")));
  EXPECT_EQ(cells(returns->monthTable, 0).at("month3"), "+10.00% *");

  using Kind = ReconciliationLine::Kind;
  Decimal running;
  for (const ReconciliationLine& line : returns->reconciliationTable.records()) {
    if (line.kind == Kind::sum && !running.isZero()) {
      EXPECT_EQ(running, line.amount) << line.title;
    }
    if (line.kind != Kind::part) {
      running = line.kind == Kind::sum ? line.amount : running + line.amount;
    }
  }
  EXPECT_EQ(running, 1200) << "which is what the heading says at the latest price";

  EXPECT_EQ(returns->returnsChart.interactiveDataSet->entries.back().y, 0.1 + 1 - 1);
  EXPECT_EQ(returns->drawdownChart.interactiveDataSet->entries.back().y, 0);
  showReturns({2021, 3, 6});
  EXPECT_EQ(returnFigure("Time-weighted"), "+0.00%");
}

TEST_F(ReportScreensTest, HaveNoFiguresWithoutPricesUntilTheyAreLeftOut) {
  record({on(day(2021, 3, 5)).deposit("50")});
  closes.erase("ABC");
  showReturns();
  EXPECT_THAT(returns->figures(), IsEmpty());
  EXPECT_THAT(returns->warning().text, AllOf(StartsWith("⚠️"), HasSubstr("ABC")));
  EXPECT_TRUE(returns->warning().canLeaveOut);
  EXPECT_EQ(returns->message(), "There are no figures without prices.");
  EXPECT_TRUE(returns->returnsChart.isEmpty());

  returns->leaveOutAction();
  waitUntil([&] { return !returns->isBusy(); });
  EXPECT_EQ(returnFigure("Gain"), "CA$0.00") << "the cash alone";
  EXPECT_EQ(returns->warning().text,
            "⚠️ Left out, since no prices or rates could be had: ABC.");
  for (const ReconciliationLine& line : returns->reconciliationTable.records()) {
    EXPECT_THAT(line.title, Not(HasSubstr("heading"))) << "which counts what is left out here";
  }

  closes["ABC"] = 10;
  returns->retryAction();
  waitUntil([&] { return !returns->isBusy(); });
  EXPECT_EQ(returnFigure("Gain"), "CA$100.00");
  EXPECT_EQ(returns->warning().text, "");
}

TEST_F(ReportScreensTest, DropAnswersThatAreOvertaken) {
  returns->setShown(true);
  returns->setCurrentData(slice(), std::nullopt);
  returns->setCurrentData(slice({2021, 3, 6}), std::nullopt);
  waitUntil([&] { return !returns->isBusy(); });
  EXPECT_EQ(returnFigure("Time-weighted"), "+0.00%");
  EXPECT_EQ(returns->report()->series.days.front().day, (YearMonthDay{2021, 3, 5}));

  returns->setCurrentData(slice(), std::nullopt);
  returns->setCurrentData({}, std::nullopt);
  income->setShown(true);
  income->setCurrentData(slice(), std::nullopt);
  waitUntil([&] { return !income->isBusy(); });
  EXPECT_THAT(returns->figures(), IsEmpty()) << "of a portfolio that is not shown any more";
  EXPECT_EQ(returns->message(), "No portfolio selected.");

  record({on(day(2021, 3, 3)).sell("100", "1000"), withdrawal("1000")});
  showReturns({2021, 3, 8});
  EXPECT_EQ(returns->message(), "Nothing was held in these days.");
}

TEST_F(ReportScreensTest, CompareWithABenchmark) {
  closes["IDX"] = 40;
  const EquityPointer index = prices->equityWithId("IDX");
  index->currency = Currency::cad();
  index->calendar = manager->calendar;
  showReturns();
  returns->benchmarkBox.setSelectedEquity(index);
  returns->benchmarkBox.action();
  waitUntil([&] { return returns->figures().back().title == "IDX"; });
  EXPECT_EQ(returns->figures().back().value.plainText(), "+5.00%") << "its dividend of 2 on 40";
  EXPECT_EQ(returns->figures().back().detail, "difference: +5.00%");
  EXPECT_EQ(returns->returnsChart.noninteractiveDataSets().front().label, "IDX");
  EXPECT_EQ(defaults.string(ReturnsViewController::benchmarkUserDefaultsKey), "IDX");
}

TEST_F(ReportScreensTest, TellWhatWasPaidBesideTheSameMonthsBefore) {
  now = day(2021, 9, 15);
  record(
      {on(day(2020, 1, 4)).deposit("500"), on(day(2020, 1, 5)).buy("50", "500"),
       dividend(day(2020, 3, 1), "20", "50"), dividend(day(2020, 11, 1), "7", "50"),
       dividend(day(2021, 8, 1), "30", "150"),
       on(day(2021, 8, 2)).yield(BasicTransaction::YieldType::returnOfCapital, "100", dec("150"))});
  income->setShown(true);
  income->setCurrentData(slice(), std::nullopt);
  waitUntil([&] { return !income->isBusy(); });
  const auto& year = figure(income->figures(), "2021 so far");
  EXPECT_EQ(year.value.plainText(), "CA$30.00") << "a return of capital is no income";
  EXPECT_EQ(year.detail, "same months of 2020: CA$20.00 (+50.00%)");
  EXPECT_EQ(figure(income->figures(), "Full 2020").value.plainText(), "CA$27.00");
  EXPECT_THAT(
      cells(income->monthTable, 0),
      ElementsAre(Pair("month8", "CA$30.00"), Pair("symbol", "ABC"), Pair("total", "CA$30.00")));
  EXPECT_THAT(income->years(), ElementsAre(2021, 2020));
  income->chooseYear(2020);
  EXPECT_EQ(cells(income->monthTable, 1).at("total"), "CA$27.00");

  income->setCounts(TransactionType::returnOfCapital, true);
  EXPECT_EQ(figure(income->figures(), "2021 so far").value.plainText(), "CA$130.00");

  // 7 on 50 shares and 30 on 150, on the 150 shares of today: 21 + 30 of a cost of 1,400.
  const auto line = cells(income->expectedTable, 0);
  EXPECT_EQ(line.at("lastYear"), "CA$51.00");
  EXPECT_THAT(income->warning().text, HasSubstr("ABC")) << "the market told no dividends";
  const auto trail = income->expectedTable.trailOf(0, 4)();
  ASSERT_TRUE(trail);
  EXPECT_EQ(trail->recomputed(), trail->value);
  EXPECT_EQ(line.at("yieldOnCost"), trail->value.description() + "%");
  EXPECT_EQ(income->expectedTable.trailOf(0, 0), nullptr);

  int drawn = 0;
  income->chart.changeHandler = [&] { ++drawn; };
  income->setShowsYearsBesideEachOther(true);
  EXPECT_GT(drawn, 0);
  EXPECT_EQ(income->chart.keyText(0), "Jan 2020");
  EXPECT_EQ(income->chart.keyText(1), "Jan 2021");
}

/// A workspace of the portfolio of the world and of one in a registered account.
class TaxScreenTest : public ReportScreensTest {
 protected:
  TaxScreenTest() {
    model->portfolioManagers = {manager};
    portfolio->name = "Savings";
    other->name = "My TFSA";
    manager->recordTransactions({on(day(2021, 3, 6)).deposit("100"), buy("10", "80")}, other, undo);
    record({on(day(2021, 3, 5)).sell("40", "320")});
    tax->setDocumentModel(model);
    tax->setShown(true);
    settle();
  }
  void settle() {
    MainLoop::drain();  // news of changes
    waitUntil([&] { return !tax->isBusy(); });
  }

  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
  PortfolioPointer other = manager->createPortfolio(Currency::cad());
  std::shared_ptr<TaxYearViewController> tax = TaxYearViewController::make(surroundings);
};

TEST_F(TaxScreenTest, AskWhosePortfoliosAreAndCountThemSo) {
  EXPECT_THAT(tax->banner(), AllOf(HasSubstr("“Savings”, “My TFSA” (by its name a registered")));
  ASSERT_EQ(tax->disposals.numberOfRows(), 1U);
  EXPECT_EQ(cells(tax->disposals, 0).at("ledgerGain"), "(CA$80.00)");
  EXPECT_EQ(cells(tax->disposals, 0).at("denied"), "CA$80.00")
      << "all forty were bought in the thirty days before";

  auto form = tax->makeRolesForm();
  ASSERT_EQ(form->lines.size(), 2U);
  EXPECT_EQ(form->lines[1].role.role, TaxRole::registered) << "proposed";
  EXPECT_EQ(model->taxRoleOf(other), std::nullopt) << "and not set";
  form->yearStart = "02-29";
  EXPECT_NE(form->problem(), "");
  form->yearStart = "04-06";
  form->lines[1].role = {TaxRole::affiliated, "", false};
  EXPECT_EQ(form->problem(), "Whose portfolio is “My TFSA”?");
  other->name = "חסכונות";
  EXPECT_EQ(form->problem(), "Whose portfolio is “\u2068חסכונות\u2069”?");
  other->name = "My TFSA";
  form->lines[1].role.person = "Kim";
  ASSERT_EQ(form->problem(), "");
  form->apply();
  settle();
  EXPECT_EQ(tax->banner(), "");
  EXPECT_THAT(tax->persons(), ElementsAre("You", "Kim"));
  EXPECT_EQ(tax->yearTitle(2020), "2020/21");
  EXPECT_EQ(tax->chosenYear(), 2020) << "the tenth of March is in the year that began last April";
  EXPECT_EQ(tax->disposals.numberOfRows(), 1U);
  tax->choosePerson(1);
  settle();
  EXPECT_EQ(tax->message(), "No disposals in 2020/21.");
  EXPECT_EQ(cells(tax->totals, 0).at("net"), "CA$0.00");

  undo->undo();
  settle();
  EXPECT_EQ(model->taxRoleOf(other), std::nullopt) << "all in one step";
  EXPECT_EQ(model->taxSettings, TaxSettings());
  EXPECT_NE(tax->banner(), "");
}

TEST_F(TaxScreenTest, ExplainTheTaxGainAndLeadToItsRow) {
  const auto trail = tax->disposals.trailOf(0, 12)();
  ASSERT_TRUE(trail);
  EXPECT_EQ(trail->value, tax->disposals.records()[0].tax.taxGain);
  EXPECT_EQ(trail->recomputed(), trail->value);
  std::vector<std::pair<PortfolioPointer, std::size_t>> opened;
  tax->openRowHandler = [&](const PortfolioPointer& whose, std::size_t row) {
    opened.emplace_back(whose, row);
  };
  tax->openDisposal(0);
  EXPECT_THAT(opened, ElementsAre(Pair(portfolio, 2U)));
  record({on(day(2021, 3, 2)).deposit("1")});
  settle();
  tax->openDisposal(0);
  EXPECT_EQ(opened.back().second, 3U) << "the row has moved";
}

TEST_F(TaxScreenTest, BookADeniedLossWhereAsked) {
  changeTaxRole(model, other, PortfolioTaxRole{.role = TaxRole::notMine}, nullptr);
  settle();
  ASSERT_TRUE(tax->canRecordAdjustment(0));
  const LedgerState before = state();
  pressedButton = 1;
  tax->recordAdjustmentAction(0);
  EXPECT_THAT(alerts.back().messageText, HasSubstr("“Savings”"));
  EXPECT_EQ(state(), before);
  pressedButton = 0;
  tax->recordAdjustmentAction(0);
  EXPECT_EQ(rows().size(), before.rows.size() + 1);
  settle();
  EXPECT_EQ(cells(tax->disposals, 0).at("denied"), "CA$80.00") << "the year stays as it is";
  tax->recordAdjustmentAction(0);
  EXPECT_THAT(messages, ElementsAre(HasSubstr("nothing to book")));
  undo->undo();
  EXPECT_EQ(state(), before);
}

TEST_F(ReportScreensTest, ExplainFiguresDownToTheirRows) {
  showReturns();
  ExplanationViewController panel;
  for (const char* title : {"Time-weighted", "Money-weighted", "Gain"}) {
    const ReportFigure& shown = figure(returns->figures(), title);
    panel.explain(shown.explain);
    ASSERT_TRUE(panel.trail()) << title;
    EXPECT_EQ(panel.trail()->recomputed(), panel.trail()->value) << title;
  }
  EXPECT_EQ(panel.trail()->value, 100);
  EXPECT_THAT(panel.text(), StartsWith("Gain: 100 CAD"));

  // Two portfolios may have one name; a line leads to its own.
  const PortfolioPointer twin = manager->createPortfolio(Currency::cad());
  twin->name = portfolio->name;
  manager->recordTransactions({on(day(2021, 3, 1)).deposit("100"), buy("10", "80")}, twin, undo);
  std::vector<std::pair<PortfolioPointer, std::size_t>> opened;
  panel.openRowHandler = [&](const PortfolioPointer& whose, std::size_t row) {
    opened.emplace_back(whose, row);
  };
  panel.explain([&] { return costBaseTrail(*twin, 1, manager->calendar); });
  ASSERT_TRUE(panel.trail());
  EXPECT_FALSE(panel.hasRow({.label = "", .source = "latest price of ABC"}));
  const TrailNode& added = panel.trail()->children.back();
  EXPECT_TRUE(panel.hasRow(added));
  panel.openRow(added);
  EXPECT_THAT(opened, ElementsAre(Pair(twin, 1U)));
  // What is copied has no marks for the screen.
  twin->name = "חסכונות";
  panel.explain([&] { return costBaseTrail(*twin, 1, manager->calendar); });
  EXPECT_THAT(panel.csv() + panel.text(), AllOf(HasSubstr("“חסכונות”"), Not(HasSubstr("\u2068"))));

  panel.explain([]() -> std::optional<TrailNode> {
    return TrailNode{.label = "Say \"so\"", .value = dec("1234.5"), .unit = "CAD", .note = "why"};
  });
  EXPECT_EQ(panel.csv(),
            "\"depth\",\"label\",\"operation\",\"value\",\"unit\",\"day\",\"source\",\"note\"\r\n"
            "\"0\",\"Say \"\"so\"\"\",\"\",\"1234.5\",\"CAD\",\"\",\"\",\"why\"\r\n");
  abc->recentPrice.reset();
  const auto screen = PortfolioViewController::make(surroundings);
  screen->setPortfolio(portfolio);
  panel.explain(screen->valueTrailMaker());
  ASSERT_TRUE(panel.trail());
  EXPECT_EQ(panel.trail()->note, "indeterminate: no price of ABC");
  EXPECT_EQ(panel.valueText(*panel.trail()), "⚠️");
  EXPECT_THAT(panel.csv(), HasSubstr("\"Value\",\"sum\",\"\",\"CAD\""));
  panel.explain([]() { return std::optional<TrailNode>(); });
  EXPECT_EQ(panel.message(), "There is nothing to tell about this number.");
  panel.close();
  EXPECT_FALSE(panel.isOpen());
}

}  // namespace
}  // namespace corvane::testing
