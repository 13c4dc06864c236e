// Whose shares and which rows a tax year counts.

#include "reports/tax/tax_year.h"

#include "reports/report_world.h"
#include "reports/tax/denied_loss_booking.h"
#include "reports/tax/sale_estimate.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using YieldType = BasicTransaction::YieldType;

class TaxYearTest : public ::testing::Test, protected ReportWorld {
 protected:
  PortfolioPointer other = manager->createPortfolio(Currency::cad());
  std::vector<TaxedPortfolio> portfolios{{portfolio}, {other}};
  TaxYearQuestion question{{2021, 1, 1}, {2021, 12, 31}, {2030, 1, 1}};

  TaxYearTest() {
    for (const PortfolioPointer& each : {portfolio, other}) {
      each->usesCashAccounts = false;
    }
    portfolio->name = "Cash";
    other->name = "Plan";
  }

  void recordInOther(std::vector<BasicTransaction> basics) {
    manager->recordTransactions(std::move(basics), other, nullptr);
  }
  [[nodiscard]] TaxYear year() const { return taxYear(portfolios, question, calendar); }
  [[nodiscard]] TaxYear::Disposal disposal() const {
    const TaxYear found = year();
    EXPECT_EQ(found.disposals.size(), 1U);
    return found.disposals.front();
  }
};

TEST_F(TaxYearTest, AveragesOverAllPortfoliosOfAPerson) {
  record({on(day(2021, 1, 4)).buy("10", "100")});
  recordInOther({on(day(2021, 1, 5)).buy("10", "300")});
  record({on(day(2021, 6, 1)).sell("5", "150")});
  const TaxYear::Disposal sale = disposal();
  EXPECT_EQ(sale.ledgerGain, 100);
  EXPECT_EQ(sale.tax.taxGain, 50);
  EXPECT_EQ(sale.note, "average cost of all portfolios");
  const TaxYear found = year();
  ASSERT_EQ(found.costs.size(), 1U);
  EXPECT_EQ(found.costs.front().pool.shares, 15);
  EXPECT_EQ(found.costs.front().pool.cost, 300);
  ASSERT_EQ(found.totals.size(), 2U);
  EXPECT_EQ(found.totals.back().equity, nullptr);
  EXPECT_EQ(found.totals.back().net(), 50);
  EXPECT_EQ(found.totals.back().costBase, 100);

  portfolios[1].role = TaxRole::notMine;
  EXPECT_EQ(disposal().tax.taxGain, 100);
}

TEST_F(TaxYearTest, DeniesWhatOthersBuyAndSaysWhereItGoes) {
  record({on(day(2021, 1, 4)).buy("10", "100"), on(day(2021, 12, 20)).sell("10", "40")});
  recordInOther({on(day(2022, 1, 19)).buy("5", "20")});
  portfolios[1].role = TaxRole::registered;
  EXPECT_EQ(disposal().tax.superficial.denied, 30);
  EXPECT_EQ(disposal().addedTo, "Plan 30 (lost)");
  EXPECT_THAT(disposal().note,
              HasSubstr("10 sold, 5 bought and 5 held in 2021-11-20 to 2022-01-19"));
  EXPECT_THAT(year().costs, IsEmpty());

  portfolios[1] = {other, TaxRole::affiliated, "Kim"};
  EXPECT_EQ(disposal().addedTo, "Kim 30");
  question.today = {2022, 1, 18};
  EXPECT_THAT(disposal().note, HasSubstr("provisional until 2022-01-19"));
  question = {{2022, 1, 1}, {2022, 12, 31}, {2030, 1, 1}, "Kim"};
  EXPECT_THAT(year().disposals, IsEmpty());
  ASSERT_EQ(year().costs.size(), 1U);
  EXPECT_EQ(year().costs.front().pool.cost, 50);

  question = {{2021, 1, 1}, {2021, 12, 31}, {2030, 1, 1}};
  question.country = TaxCountry::none;
  EXPECT_EQ(disposal().tax.taxGain, -60);
}

TEST_F(TaxYearTest, CountsRowsByTheDayAskedFor) {
  BasicTransaction sale = on(day(2022, 1, 2)).sell("5", "80");
  sale.tradeDate = day(2021, 12, 30);
  record({on(day(2020, 12, 31)).yield(YieldType::capitalGainsDividend, "9"),
          on(day(2021, 1, 1)).buy("10", "100"), yield(YieldType::dividend, "7"),
          yield(YieldType::dividend, "8"), yield(YieldType::returnOfCapital, "130"),
          adjustment("-3"), sale});
  const TaxYear settled = year();
  EXPECT_THAT(settled.disposals, IsEmpty());
  ASSERT_EQ(settled.income.size(), 2U);
  EXPECT_EQ(settled.income[0].equivalent.amount, 15);
  EXPECT_EQ(settled.income[1].kind, TransactionType::returnOfCapital);
  EXPECT_THAT(settled.adjustments, ElementsAre(cad("-3")));
  ASSERT_EQ(settled.deemedGains.size(), 1U);
  EXPECT_EQ(settled.deemedGains.front().amount, 30);
  question.byTradeDate = true;
  EXPECT_EQ(disposal().tax.taxGain, 80) << "the cost base stands at 0, not at -30";
  EXPECT_EQ(disposal().ledgerGain, 95);
}

TEST_F(TaxYearTest, NamesWhatItDoesNotCompute) {
  portfolio->allowsNegativeBalances = true;
  portfolios[1].role = TaxRole::registered;
  record({on(day(2021, 1, 4)).buy("10", "100"), journal("-4"), sell("7", "10")});
  recordInOther({on(day(2021, 1, 5)).journal("4", dec("40"))});
  std::vector<std::string> reasons;
  for (const TaxYear::ToCheck& check : year().toCheck) {
    reasons.push_back(check.reason);
  }
  EXPECT_THAT(reasons,
              ElementsAre("more was sold than was held", HasSubstr("-4 shares journaled out")));
  EXPECT_EQ(disposal().tax.superficial.denied, 0);
  portfolios[1].role = TaxRole::taxable;
  EXPECT_THAT(year().toCheck, IsEmpty()) << "what stays with the same person is no disposal";
}

TEST_F(TaxYearTest, FollowsTheSettingsAndTheRolesOfTheWorkspace) {
  const TaxSettings settings{4, 6, TaxCountry::unitedKingdom, true};
  const TaxYearQuestion asked = taxYearQuestion(settings, 2023, {2030, 1, 1});
  EXPECT_EQ(asked.first, (YearMonthDay{2023, 4, 6}));
  EXPECT_EQ(asked.last, (YearMonthDay{2024, 4, 5}));
  EXPECT_EQ(asked.country, TaxCountry::unitedKingdom);
  EXPECT_TRUE(asked.byTradeDate);

  const std::vector<PortfolioPointer> all{portfolio, other};
  portfolios = taxedPortfolios(all, [&](const PortfolioPointer& each) {
    return each == other ? std::optional(PortfolioTaxRole{TaxRole::affiliated, "Kim", true})
                         : std::nullopt;
  });
  record({on(day(2021, 1, 4)).buy("10", "100"), on(day(2021, 2, 1)).sell("10", "40")});
  recordInOther({on(day(2021, 2, 9)).buy("10", "20")});
  EXPECT_EQ(disposal().addedTo, "Plan 60 (lost)") << "Kim is not taxed for a registered account";
  question.person = "Kim";
  EXPECT_THAT(year().disposals, IsEmpty());
}

/// The United Kingdom's year of this ledger, where 6 of 10 are bought back within the 30 days.
TEST_F(TaxYearTest, TellsWithWhichPurchasesSharesWereMatched) {
  record({on(day(2021, 1, 4)).buy("10", "100"), on(day(2021, 2, 1)).sell("10", "80"),
          on(day(2021, 3, 3)).buy("6", "30")});
  question.country = TaxCountry::unitedKingdom;
  EXPECT_EQ(disposal().tax.taxGain, 10) << "80 - 30 - 4 of the pool";
  EXPECT_EQ(disposal().note, "6 of 2021-03-03, 4 of the pool");
  question.today = {2021, 3, 2};
  EXPECT_THAT(disposal().note, HasSubstr("; provisional until 2021-03-03"));
  EXPECT_EQ(year().costs.front().pool.cost, 60);
}

TEST_F(TaxYearTest, SaysWhatASaleTodayWouldDeny) {
  record({on(day(2021, 1, 4)).buy("100", "1000")});
  recordInOther({on(day(2021, 6, 1)).buy("15", "75"), on(day(2021, 7, 10)).buy("5", "20")});
  portfolios[1].role = TaxRole::registered;
  question.today = {2021, 6, 20};
  const auto sold = [&](const Decimal& shares, const Decimal& proceeds) {
    return estimatedSale(portfolios, question, abc, Currency::cad(), shares, proceeds, calendar);
  };
  EXPECT_EQ(sold(20, 100)->text(), "selling 20 now would deny 100.00")
      << "the purchase of July is recorded already and counts";
  EXPECT_EQ(sold(20, 100)->addedTo, "Plan 100 (lost)");
  EXPECT_EQ(sold(20, 300)->text(), "selling 20 now would gain 100.00, nothing of it denied");
  EXPECT_EQ(sold(20, 100)->held, 100);
  EXPECT_TRUE(sold(200, 100)->tax.isShort);
  EXPECT_EQ(estimatedSale(portfolios, question, xyz, Currency::cad(), 1, 1, calendar),
            std::nullopt);
  question.person = "Kim";
  EXPECT_EQ(sold(20, 100), std::nullopt) << "Kim holds none of it";
}

/// Booked into the buyers' cost bases by one step, the ledgers' gains come to those of the taxes.
TEST_F(TaxYearTest, BooksDeniedLossesWhereTheUserAsksForIt) {
  record({on(day(2021, 1, 4)).buy("10", "100"), on(day(2021, 2, 1)).sell("10", "40"),
          on(day(2021, 2, 9)).buy("4", "20")});
  recordInOther({on(day(2021, 2, 5)).buy("2", "10")});
  portfolios[1] = {other, TaxRole::affiliated, "Kim"};
  const TaxYear before = year();
  EXPECT_EQ(disposal().addedTo, "own cost base 24, Kim 12");
  const auto bookings = deniedLossBookings(disposal(), portfolios, question, calendar);
  ASSERT_EQ(bookings.size(), 2U);
  const auto booked = state();
  recordBookings(bookings, undo);
  EXPECT_EQ(rows().back()->costBaseNet(), 44);
  EXPECT_EQ(other->transactions().back()->costBaseNet(), 22);
  EXPECT_THAT(deniedLossBookings(disposal(), portfolios, question, calendar), IsEmpty());
  ASSERT_EQ(year().costs.size(), 1U);
  EXPECT_EQ(year().costs.front().pool.cost, before.costs.front().pool.cost)
      << "taxes know these rows and count nothing twice";
  EXPECT_TRUE(undo->undo());
  EXPECT_EQ(state(), booked);
  EXPECT_EQ(other->transactions().size(), 1U);
  EXPECT_EQ(undo->redoActionName(), "Record Adjustment");

  // Where one ledger refuses, none keeps its row.
  auto refused = bookings;
  refused[1].transaction.settlementDate = day(2020, 1, 1);
  EXPECT_TRUE(errorOf([&] { recordBookings(refused, undo); }));
  EXPECT_EQ(state(), booked);
}

}  // namespace
}  // namespace corvane::testing
