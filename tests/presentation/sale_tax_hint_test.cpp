// What the form for a sale says of a loss that would be denied.

#include "presentation/transactions/sale_tax_hint.h"

#include "presentation/portfolio/portfolio_view_controller.h"
#include "presentation/portfolio_screen_world.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/// A hundred shares of ABC were bought at 10 nine days ago.
class SaleTaxHintTest : public PortfolioScreenWorld {
 protected:
  SaleTaxHintTest() {
    model->portfolioManagers = {manager};
    record({on(day(2021, 3, 1)).deposit("1000"), buy("100", "1000")});
  }

  std::string hintOf(const BasicTransaction& entry) {
    SaleTaxHint hint{model};
    hint.consider(entry, portfolio, now);
    EXPECT_EQ(hint.text(), "");
    waitUntil([&] { return !hint.isBusy(); });
    return hint.text();
  }
  std::string hintOfSale() { return hintOf(on(now).sell("20", "125")); }
  void play(TaxRole role, const std::string& person = "", bool isRegistered = false) {
    model->taxRoles[portfolio] = {role, person, isRegistered};
  }

  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
};

TEST_F(SaleTaxHintTest, SaysWhatASaleWouldHaveDenied) {
  EXPECT_THAT(hintOfSale(),
              StartsWith("Superficial-loss hint: selling 20 now would deny 75.00. Added to: own "
                         "cost base 75. Purchases up to Apr 9, 2021 may change that."));
  EXPECT_EQ(hintOf(on(now).sell("20", "200")), "") << "nothing is lost";
  EXPECT_EQ(hintOf(on(now).buy("20", "125")), "");
  EXPECT_EQ(hintOf(on(now).sell("101", "125")), "") << "which nobody holds";
  EXPECT_THAT(hintOf(on(day(2021, 3, 5)).sell("20", "125")),
              HasSubstr("selling 20 on Mar 5, 2021 would deny 75.00"));
  now = day(2021, 5, 10);
  EXPECT_THAT(hintOfSale(), HasSubstr("selling 20 now would lose 75.00, nothing of it denied"));
}

TEST_F(SaleTaxHintTest, GoesByWhosePortfolioItIs) {
  model->taxSettings.country = TaxCountry::none;
  EXPECT_EQ(hintOfSale(), "");
  model->taxSettings.country = TaxCountry::canada;
  play(TaxRole::affiliated, "Kim");
  EXPECT_THAT(hintOfSale(), HasSubstr("would deny 75.00"));
  play(TaxRole::affiliated, "Kim", true);
  EXPECT_EQ(hintOfSale(), "") << "an account that is not taxed";
  play(TaxRole::registered);
  EXPECT_EQ(hintOfSale(), "");
  play(TaxRole::notMine);
  EXPECT_EQ(hintOfSale(), "");
}

TEST_F(SaleTaxHintTest, FollowsTheForm) {
  const auto screen = PortfolioViewController::make(surroundings);
  screen->setDocumentModel(model);
  const auto form = screen->makeCreateTransactionForm({.portfolio = portfolio});
  form->load();
  form->chooseMode(TransactionMode::sell);
  form->chooseEquity(abc);
  form->typeInto(form->numberOfSharesField, "20");
  form->typeInto(form->totalAmountField, "125");
  ASSERT_TRUE(form->goButton.isEnabled);
  EXPECT_EQ(form->taxHint(), "") << "no key waits for it";
  int drawn = 0;
  form->changeHandler = [&] { ++drawn; };
  waitUntil([&] { return !form->taxHint().empty(); });
  EXPECT_THAT(form->taxHint(), HasSubstr("selling 20 now would deny 75.00"));
  EXPECT_EQ(drawn, 1);
  form->typeInto(form->totalAmountField, "1250");
  EXPECT_EQ(form->taxHint(), "") << "it was about another entry";
  form->typeInto(form->totalAmountField, "125");
  form->typeInto(form->numberOfSharesField, "10");
  form->typeInto(form->totalAmountField, "50");
  waitUntil([&] { return !form->taxHint().empty(); });
  EXPECT_THAT(form->taxHint(), HasSubstr("selling 10 now would deny 50.00"));
}

}  // namespace
}  // namespace corvane::testing
