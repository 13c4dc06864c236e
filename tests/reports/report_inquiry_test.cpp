// Reports that are computed beside the main queue.

#include "reports/inquiry/report_inquiry.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include "platform/async/dispatch_queue.h"
#include "reports/inquiry/frozen_ledger.h"
#include "reports/report_world.h"
#include "reports/returns/returns_report.h"
#include "reports/tax/tax_year.h"

namespace corvane::testing {
namespace {

using Ledgers = ReportInquiry::Ledgers;

/// A ledger of `count` purchases, and a question that counts the shares that it was shown.
class ReportInquiryTest : public ::testing::Test, protected ReportWorld {
 protected:
  ReportInquiry inquiry;
  std::vector<Decimal> answers;

  void buyTimes(std::size_t count) {
    portfolio->usesCashAccounts = false;
    std::vector<BasicTransaction> basics;
    for (std::size_t i = 0; i < count; ++i) {
      basics.push_back(on(day(2021, 3, 1)).buy("1", "10"));
    }
    record(basics);
  }
  /// What the purchases of the ledger have added up to.
  void askForShares() {
    inquiry.ask(
        {portfolio},
        [](const Ledgers& ledgers, const Cancellation&) {
          Decimal shares;
          for (const TransactionPointer& row : ledgers.front()->transactions()) {
            shares += std::get<BasicTransaction::Trade>(row->basic.kind).sharesAdded;
          }
          return shares;
        },
        [this](const Decimal& shares) { answers.push_back(shares); });
  }
  void waitForAnswer() {
    EXPECT_TRUE(MainLoop::runUntil([&] { return !inquiry.isAsking(); }, std::chrono::seconds(20)));
  }
};

TEST_F(ReportInquiryTest, AnswersFromTheLedgerAsItIsWhenAllIsCopied) {
  buyTimes(20'000);  // more than one slice
  askForShares();
  EXPECT_TRUE(answers.empty()) << "an answer comes later, on the main queue";
  record({on(day(2021, 2, 1)).buy("5", "10")});  // in front of what is copied already
  waitForAnswer();
  EXPECT_EQ(answers, std::vector<Decimal>{20'005});
}

TEST_F(ReportInquiryTest, AnswersOnlyTheLastQuestion) {
  buyTimes(10);
  std::atomic<bool> hasBegun = false;
  std::atomic<bool> mayGoOn = false;
  std::atomic<bool> wasCancelled = false;
  inquiry.ask(
      {portfolio},
      [&](const Ledgers&, const Cancellation& cancellation) {
        hasBegun = true;
        while (!mayGoOn) {
        }
        wasCancelled = cancellation.isCancelled();
        return 0;
      },
      [&](int) { answers.push_back(999); });
  while (!hasBegun) {
  }
  askForShares();
  mayGoOn = true;
  waitForAnswer();
  EXPECT_TRUE(wasCancelled);
  EXPECT_EQ(answers, std::vector<Decimal>{10});
  {
    ReportInquiry gone;
    gone.ask(
        {portfolio}, [](const Ledgers&, const Cancellation&) { return 0; },
        [&](int) { answers.push_back(998); });
  }
  bool isOver = false;
  reportQueue()->async([&] { DispatchQueue::main()->async([&] { isOver = true; }); });
  EXPECT_TRUE(MainLoop::runUntil([&] { return isOver; }, std::chrono::seconds(20)));
  EXPECT_EQ(answers.size(), 1U) << "nobody is left to be told";
}

TEST_F(ReportInquiryTest, WaitsForAnImportInTheBackground) {
  buyTimes(3);
  manager->beginBackgroundEdit();
  askForShares();
  EXPECT_FALSE(
      MainLoop::runUntil([&] { return !answers.empty(); }, std::chrono::milliseconds(200)));
  manager->endBackgroundEdit();
  waitForAnswer();
  EXPECT_EQ(answers, std::vector<Decimal>{3});
}

/// What is computed from copies on another thread is what the ledger gives; then a ledger that has
/// gone on meanwhile changes nothing.
TEST_F(ReportInquiryTest, GivesTheFiguresOfTheLedger) {
  rate({{1, "1.25"}, {9, "1.3"}});
  quote(abc, {{1, "10"}, {4, "12"}, {9, "11"}});
  quote(xyz, {{2, "20"}, {8, "18"}});
  portfolio->allowsNegativeBalances = true;
  record({on(day(2021, 3, 1)).deposit("1000"), buy("30", "300"), buyOf(xyz, "5", "100", "125"),
          sell("10", "130"), yield(BasicTransaction::YieldType::dividend, "7"), journal("4")});
  const ValuationScope scope{march(1), march(20)};
  const TaxYearQuestion question{{2021, 1, 1}, {2021, 12, 31}, {2030, 1, 1}};
  const ReturnsReport direct = returnsReport(*portfolio, scope, market, calendar);
  const std::vector<TaxedPortfolio> taxed{{portfolio}};
  const TaxYear directYear = taxYear(taxed, question, calendar);
  std::optional<std::pair<ReturnsReport, TaxYear>> answer;
  const std::thread::id here = std::this_thread::get_id();
  inquiry.ask(
      {portfolio},
      [&](const Ledgers& ledgers, const Cancellation&) {
        EXPECT_NE(std::this_thread::get_id(), here);
        return std::pair(
            returnsReport(*ledgers.front(), scope, market, calendar),
            taxYear(std::vector<TaxedPortfolio>{{ledgers.front()}}, question, calendar));
      },
      [&](std::pair<ReturnsReport, TaxYear> made) { answer = std::move(made); });
  record({on(day(2021, 4, 1)).buy("1", "99")});
  abc->currency = Currency::usd();
  ASSERT_TRUE(MainLoop::runUntil([&] { return answer.has_value(); }, std::chrono::seconds(20)));
  EXPECT_EQ(answer->first.series.days, direct.series.days);
  EXPECT_EQ(answer->first.timeWeighted.total, direct.timeWeighted.total);
  ASSERT_EQ(answer->first.equities.size(), direct.equities.size());
  ASSERT_EQ(answer->second.disposals.size(), 1U);
  const TaxYear::Disposal& sale = answer->second.disposals.front();
  EXPECT_EQ(sale.tax.taxGain, directYear.disposals.front().tax.taxGain);
  EXPECT_EQ(originalOf(sale.place.portfolio), portfolio);
  EXPECT_EQ(originalOf(portfolio), portfolio);
  EXPECT_TRUE(*sale.place.equity == *abc) << "an equity is known again from its copy";
}

TEST_F(ReportInquiryTest, EndsASeriesThatIsCancelled) {
  quote(abc, {{1, "10"}});
  record({on(day(2021, 3, 1)).deposit("1000"), buy("30", "300")});
  const ValuationScope scope{march(1), march(20)};
  scope.cancellation.cancel();
  EXPECT_TRUE(returnsReport(*portfolio, scope, market, calendar).series.days.empty());
}

}  // namespace
}  // namespace corvane::testing
