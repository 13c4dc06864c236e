// Answers that the real service has given, told again by a service on the loopback interface.
//
// CORVANE_SHARED_DATA names the folder that holds recorded-answers/; without it these tests are
// skipped.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "core/market/price_adjuster.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "marketdata/yahoo/yahoo_provider_error.h"
#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "marketdata/yahoo_loopback_service.h"
#include "platform/async/dispatch_queue.h"
#include "support/shared_data.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using Service = YahooLoopbackService;
using enum PriceAdjustment;
using enum QuoteInterval;

class RecordedAnswersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto index = sharedData("recorded-answers/index.json");
    if (!index) {
      GTEST_SKIP() << "CORVANE_SHARED_DATA names no folder with recorded-answers/";
    }
    folder_ = index->parent_path();
  }
  void TearDown() override {
    provider.reset();
    MainLoop::drain();
  }

  /// The service answers requests for `path` with this recording from now on.
  void play(const std::string& path, const std::string& name, int status = 200) {
    std::ifstream file(folder_ / name, std::ios::binary);
    ASSERT_TRUE(file) << name;
    server.script(path, {{.body = {std::istreambuf_iterator<char>(file), {}}, .status = status}});
  }

  ErrorPointer refresh(const std::vector<EquityPointer>& equities) {
    std::optional<ErrorPointer> outcome;
    provider->refreshEquities(equities, [&](ErrorPointer error) {
      DispatchQueue::main()->async([&, error] { outcome = error; });
    });
    EXPECT_TRUE(MainLoop::runUntil([&] { return outcome.has_value(); }, deadline));
    return *outcome;
  }
  Result<QuoteFetchResult> fetch(const EquityPointer& equity, const DateRange& range,
                                 QuoteQuery::Subject seeking) {
    std::optional<Result<QuoteFetchResult>> outcome;
    provider->fetchQuotes({equity, range, std::move(seeking)},
                          std::make_shared<PriceAdjuster>(provider), [&](auto answer) {
                            DispatchQueue::main()->async(
                                [&, answer = std::move(answer)]() mutable { outcome = answer; });
                          });
    EXPECT_TRUE(MainLoop::runUntil([&] { return outcome.has_value(); }, deadline));
    return outcome.value();
  }
  /// An equity as if its details had come.
  EquityPointer equity(const std::string& id, const std::string& zone, const Currency& currency) {
    EquityPointer made = provider->equityWithId(id);
    made->isAuthoritative = true;
    made->calendar = Calendar(*TimeZone::withIdentifier(zone));
    made->currency = currency;
    return made;
  }

  YahooLoopbackService server;
  TemporaryFolder cacheFolder;
  std::shared_ptr<SwitchableQuoteProvider> provider = std::make_shared<SwitchableQuoteProvider>(
      std::make_shared<YahooQuoteProvider>(server.service()), cacheFolder / "Cache.sqlite3");

 private:
  std::filesystem::path folder_;
};

const QuoteQuery::Quotes daily{oneDay, adjustedForSplits};

Date utc(int year, int month, int day, int hour = 0) {
  return Calendar(TimeZone())
      .date({{CalendarUnit::year, year},
             {CalendarUnit::month, month},
             {CalendarUnit::day, day},
             {CalendarUnit::hour, hour}})
      .value();
}

TEST_F(RecordedAnswersTest, DateTheLastBarByItsOwnSession) {
  play(Service::chartPath, "chart-GS2C.DE-before-open.json");
  const auto share = equity("GS2C.DE", "Europe/Berlin", Currency::byCode().find("EUR")->second);
  const auto answer = fetch(share, {utc(2025, 10, 23), utc(2025, 10, 31)}, daily);
  ASSERT_TRUE(answer) << *answer.error();
  EXPECT_EQ(answer->quotes->back().fromDate, utc(2025, 10, 29, 8)) << "yesterday at nine";
  EXPECT_TRUE(answer->quotes->back().isPartial);
  EXPECT_EQ(share->firstTradeDate, Date::since1970(1198742400));
}

TEST_F(RecordedAnswersTest, LeaveOutTheRunningBarOfAnotherYear) {
  play(Service::chartPath, "chart-AAPL-monthly-dividends.json");
  const auto share = equity("AAPL", "America/New_York", Currency::usd());
  const DateRange year(utc(2020, 1, 1), utc(2021, 1, 1));
  const auto answer = fetch(share, year, QuoteQuery::Quotes{oneMonth, adjustedForSplits});
  ASSERT_TRUE(answer) << *answer.error();
  ASSERT_EQ(answer->quotes->size(), 12U);
  EXPECT_TRUE(std::ranges::all_of(
      *answer->quotes, [&](const Quote& bar) { return year.contains(bar.fromDate) && bar.close; }));
}

TEST_F(RecordedAnswersTest, ReadARangeBeforeTheFirstTradeAsEmptyAndFinal) {
  play(Service::chartPath, "error-400-before-first-trade.json", 400);
  const auto share = equity("NEW", "America/New_York", Currency::usd());
  for (int time = 0; time < 2; ++time) {
    const auto answer = fetch(share, {Date::distantPast(), utc(2020, 7, 30)},
                              QuoteQuery::EventsWithoutAdjustment{});
    ASSERT_TRUE(answer) << *answer.error();
    EXPECT_TRUE(answer->events->empty());
  }
  const auto asked = server.requests(Service::chartPath);
  ASSERT_EQ(asked.size(), 1U) << "the second answer comes from the cache";
  EXPECT_NE(asked.front().target.find("period1=-2208988800"), std::string::npos)
      << "nothing before 1900: " << asked.front().target;
}

TEST_F(RecordedAnswersTest, RefreshTheOthersBesideAShareThatIsGone) {
  play(Service::quotePath, "quote-BRKS-gone.json");
  const auto gone = provider->equityWithId("BRKS");
  EXPECT_NE(refresh({gone}), nullptr);
  EXPECT_EQ(gone->refreshProblem, "BRKS is no longer traded.");

  play(Service::quotePath, "quote-AAPL.json");
  const auto apple = provider->equityWithId("AAPL");
  EXPECT_EQ(refresh({gone, apple}), nullptr);
  EXPECT_TRUE(apple->recentPrice);
  EXPECT_EQ(server.requests(Service::quotePath).back().target.find("BRKS"), std::string::npos);
}

TEST_F(RecordedAnswersTest, ReadPenceAsPounds) {
  play(Service::quotePath, "quote-OCDO.L.json");
  const auto share = provider->equityWithId("OCDO.L");
  ASSERT_EQ(refresh({share}), nullptr);
  EXPECT_EQ(share->currency.code, "GBP");
  EXPECT_LT(share->recentPrice, Decimal(10)) << "it stood at about three pounds";
  const Decimal told = share->recentPrice.value();
  play(Service::chartPath, "chart-OCDO.L-2020-01-02.json");
  const auto answer = fetch(share, {utc(2020, 1, 1), utc(2020, 1, 4)}, daily);
  ASSERT_TRUE(answer) << *answer.error();
  ASSERT_FALSE(answer->quotes->empty());
  EXPECT_GT(answer->quotes->front().close, told) << "it was dearer then";
  EXPECT_LT(answer->quotes->front().close, Decimal(20));
}

}  // namespace
}  // namespace corvane::testing
