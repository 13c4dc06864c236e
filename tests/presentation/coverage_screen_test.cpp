// Which days of what was held have prices, as a screen shows it, and the fetch of what is missing.

#include "exchange/exports/report_lines_exporter.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "presentation/coverage/coverage_view_controller.h"
#include "presentation/frame/workspace_reports.h"
#include "presentation/portfolio_screen_world.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// The prices of the world behind a cache. All that the market tells is final.
class CoverageScreenTest : public PortfolioScreenWorld {
 protected:
  CoverageScreenTest() {
    manager->quoteProvider = chain;
    model->portfolioManagers = {manager};
    prices->script = [this](const QuoteQuery& query) -> ScriptedQuoteProvider::Answer {
      if (refused.contains(query.equity->id())) {
        return ScriptedQuoteProvider::refusal();
      }
      QuoteFetchResult answer{.quotes = std::nullopt,
                              .prices = PriceAdjustment::marketNominal,
                              .events = std::vector<EquityEvent>(),
                              .durableDateRange = query.dateRange};
      if (std::holds_alternative<QuoteQuery::Quotes>(query.seeking)) {
        answer.quotes = ScriptedQuoteProvider::dailyBars(query, [](YearMonthDay) {
          Quote bar;
          bar.open = bar.close = 10;
          return std::optional(bar);
        });
      }
      return answer;
    };
  }

  void show() {
    coverage->setDocumentModel(model);
    coverage->setShown(true);
    settle();
  }
  void settle() {
    MainLoop::drain();  // news of changes
    waitUntil([&] { return !coverage->isBusy(); });
  }
  void hold(int count) {
    record({on(day(2021, 3, 1)).deposit("100000")});
    for (int i = 0; i < count; ++i) {
      const EquityPointer equity = chain->equityWithId("EQ" + std::to_string(10 + i));
      equity->currency = Currency::cad();
      equity->calendar = manager->calendar;
      record({on(day(2021, 3, 1))
                  .make(BasicTransaction::Trade{
                      equity, {Currency::cad(), dec("100")}, dec("100"), dec("10")})});
    }
  }

  std::shared_ptr<SwitchableQuoteProvider> chain =
      std::make_shared<SwitchableQuoteProvider>(prices, folder / "Cache.sqlite3");
  std::set<std::string> refused;
  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
  std::shared_ptr<CoverageViewController> coverage = CoverageViewController::make(surroundings);
};

TEST_F(CoverageScreenTest, SaysWhatThereIsToShow) {
  coverage->setShown(true);
  settle();
  EXPECT_EQ(coverage->message(), "No portfolios.");
  show();
  EXPECT_EQ(coverage->message(), "Nothing has been held.");
  EXPECT_FALSE(coverage->canFetch());
  EXPECT_THAT(coverage->figures(), IsEmpty());
  EXPECT_EQ(coverage->makeExporter(), nullptr);
  manager->quoteProvider = prices;
  coverage->setDocumentModel(model);
  settle();
  EXPECT_THAT(coverage->message(), StartsWith("No prices are kept in this run"));
}

TEST_F(CoverageScreenTest, FetchesWhatIsMissing) {
  hold(1);
  show();
  EXPECT_EQ(cells(coverage->table, 0).at("missing"), "10");
  EXPECT_EQ(cells(coverage->table, 0).at("covered"), "0.00%");
  EXPECT_THAT(cells(coverage->table, 0).at("held"), HasSubstr("10 days missing"));
  EXPECT_EQ(cells(coverage->stretches, 0).at("days"), "10");
  EXPECT_THAT(prices->queries, IsEmpty()) << "looking asks nobody";
  EXPECT_EQ(coverage->days().lower(), (YearMonthDay{2021, 3, 1}));

  ASSERT_TRUE(coverage->canFetch());
  coverage->fetchAction();
  EXPECT_TRUE(coverage->isFetching());
  EXPECT_FALSE(coverage->canFetch());
  double furthest = 0;
  coverage->changeHandler = [&] { furthest = std::max(furthest, coverage->progress()); };
  settle();
  EXPECT_EQ(furthest, 1);
  EXPECT_EQ(cells(coverage->table, 0).count("missing"), 0U);
  EXPECT_EQ(cells(coverage->table, 0).at("covered"), "100.00%");
  EXPECT_EQ(coverage->notice(), "All that was missing has been asked for.");
  EXPECT_FALSE(coverage->canFetch());

  hold(2);
  settle();
  EXPECT_EQ(coverage->table.numberOfRows(), 2U) << "the screen follows the ledger";
  EXPECT_EQ(coverage->chosenRow(), 0U);
  coverage->chooseRow(1);
  EXPECT_EQ(cells(coverage->stretches, 0).at("state"), "Missing");
  const auto exporter = coverage->makeExporter();
  EXPECT_EQ(exporter->exportValue(exporter->exportRowCount() - 1, "state"), "missing");
  EXPECT_EQ(exporter->exportValue(exporter->exportRowCount() - 1, "days"), "10");
}

TEST_F(CoverageScreenTest, SaysWhatTheMarketRefuses) {
  hold(2);
  refused.insert("EQ11");
  show();
  coverage->fetchAction();
  settle();
  EXPECT_EQ(cells(coverage->table, 0).count("note"), 0U);
  EXPECT_THAT(cells(coverage->table, 1).at("note"), StartsWith("⚠️ "));
  EXPECT_EQ(cells(coverage->table, 1).at("missing"), "10");
  EXPECT_THAT(coverage->notice(), StartsWith("The market has refused the prices of 1 line,"));
  EXPECT_EQ(coverage->figures().back().value.plainText(), "1");
}

TEST_F(CoverageScreenTest, EndsAFetchAndKeepsWhatHasCome) {
  hold(20);
  show();
  coverage->fetchAction();
  coverage->cancelAction();
  EXPECT_FALSE(coverage->isFetching());
  EXPECT_THAT(coverage->notice(), StartsWith("Cancelled."));
  // Until eight of twenty have come.
  waitUntil([&] {
    if (coverage->isBusy()) {
      return false;
    }
    if (coverage->figures()[1].value.plainText() == "120") {
      return true;
    }
    coverage->setShown(false);
    coverage->setShown(true);
    return false;
  });
  EquitySet asked;
  for (const QuoteQuery& query : prices->queries) {
    asked.insert(query.equity);
  }
  EXPECT_EQ(asked.size(), 8U) << "those under way, and no others";
  EXPECT_TRUE(coverage->canFetch());
  coverage->fetchAction();
  settle();
  EXPECT_EQ(coverage->figures()[1].value.plainText(), "0") << "nothing is missing any more";

  chain->dataSource = SwitchableQuoteProvider::DataSource::cacheOnly;
  hold(21);
  settle();
  EXPECT_FALSE(coverage->canFetch());
  EXPECT_THAT(coverage->notice(), HasSubstr("from the cache alone"));
}

}  // namespace
}  // namespace corvane::testing
