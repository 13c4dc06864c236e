#include "presentation/portfolio/edit_portfolio_view_controller.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/market/quote_provider.h"

namespace corvane {
namespace {

using Sender = EditPortfolioViewController::Sender;

class EditPortfolioViewControllerTest : public ::testing::Test {
 protected:
  EditPortfolioViewControllerTest() {
    form.completionHandler = [this](PortfolioPointer portfolio) {
      ++completions;
      result = std::move(portfolio);
    };
    form.presentError = [this](const Error& error) { presented = error.description(); };
  }

  void create() {
    form.behaviour = EditPortfolioViewController::Create{manager, {}, true};
    form.load();
  }
  void modify(const PortfolioPointer& portfolio) {
    form.behaviour = EditPortfolioViewController::Modify{portfolio, undo};
    form.load();
  }
  void select(std::string_view code) {
    ASSERT_TRUE(form.currencyPopUpButton.select(Currency::byCode().find(code)->second));
  }
  void record(const PortfolioPointer& portfolio, BasicTransaction::Kind kind) {
    manager->recordTransactions({{std::move(kind), Date(), Date(), std::nullopt}}, portfolio,
                                nullptr);
  }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  std::shared_ptr<PortfolioManager> manager = std::make_shared<PortfolioManager>(provider);
  std::shared_ptr<UndoManager> undo = std::make_shared<UndoManager>();
  EditPortfolioViewController form;
  int completions = 0;
  PortfolioPointer result;
  std::optional<std::string> presented;
};

TEST_F(EditPortfolioViewControllerTest, OffersANewPortfolio) {
  create();
  EXPECT_EQ(form.title, "New Portfolio");
  EXPECT_EQ(form.nameField.text, "Untitled Portfolio");
  EXPECT_EQ(form.goButton.title, "Create");
  EXPECT_FALSE(form.allowNegativeBalancesButton.isOn);
  EXPECT_TRUE(form.trackCashAccountsButton.isOn);
  EXPECT_FALSE(form.populateRandomlyButton.isHidden);
  EXPECT_TRUE(std::ranges::is_sorted(form.currencyPopUpButton.titles()));
  select("CAD");
  EXPECT_EQ(form.currencyPopUpButton.titles()[form.currencyPopUpButton.selectedIndex.value()],
            "CAD — Canadian Dollar");
}

TEST_F(EditPortfolioViewControllerTest, CreatesWhatWasEnteredWithoutAnUndoStep) {
  create();
  form.nameField.text = "Savings";
  form.allowNegativeBalancesButton.isOn = true;
  form.trackCashAccountsButton.isOn = false;
  select("JPY");
  form.performAction(Sender::goButton);
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(manager->portfolios(), std::vector{result});
  EXPECT_EQ(result->name, "Savings");
  EXPECT_EQ(result->primaryCurrency().code, "JPY");
  EXPECT_TRUE(result->allowsNegativeBalances);
  EXPECT_FALSE(result->usesCashAccounts);
}

TEST_F(EditPortfolioViewControllerTest, StaysOpenWhenTheRandomLedgerIsRefused) {
  const auto equity = provider->equityWithId("ABC");
  equity->currency = Currency::cad();
  form.behaviour = EditPortfolioViewController::Create{manager, {equity}, true};
  form.load();
  form.trackCashAccountsButton.isOn = false;
  form.populateRandomlyButton.isOn = true;
  form.performAction(Sender::goButton);
  EXPECT_EQ(completions, 0);
  EXPECT_TRUE(presented->starts_with("Found a transfer but cash accounting is disabled: "));
  EXPECT_EQ(manager->portfolios().size(), 1U);
}

TEST_F(EditPortfolioViewControllerTest, SavesUndoably) {
  const auto portfolio = manager->createPortfolio(Currency::usd());
  modify(portfolio);
  EXPECT_EQ(form.title, "Portfolio Details");
  EXPECT_EQ(form.goButton.title, "Save");
  EXPECT_FALSE(form.currencyPopUpButton.isEnabled);
  EXPECT_TRUE(form.populateRandomlyButton.isHidden);
  EXPECT_EQ(form.currencies()[form.currencyPopUpButton.selectedIndex.value()], Currency::usd());
  form.nameField.text = " ";
  form.updateGoButton();
  EXPECT_TRUE(form.goButton.isEnabled);
  form.performAction(Sender::goButton);
  EXPECT_EQ(result, portfolio);
  EXPECT_EQ(portfolio->name, " ");
  EXPECT_EQ(undo->undoActionName(), "Portfolio Settings");
  undo->undo();
  EXPECT_EQ(portfolio->name, "Untitled Portfolio");
}

TEST_F(EditPortfolioViewControllerTest, PutsTheCheckBoxBackThatTheLedgerForbids) {
  const auto portfolio = manager->createPortfolio(Currency::usd());
  portfolio->allowsNegativeBalances = true;
  record(portfolio, BasicTransaction::Transfer{{Currency::usd(), -5}});
  modify(portfolio);
  form.allowNegativeBalancesButton.isOn = false;
  form.performAction(Sender::goButton);
  EXPECT_TRUE(form.allowNegativeBalancesButton.isOn);
  form.trackCashAccountsButton.isOn = false;
  form.performAction(Sender::goButton);
  EXPECT_TRUE(form.trackCashAccountsButton.isOn);
  EXPECT_TRUE(presented->starts_with("A withdrawal of $5.00 exists on "));
  EXPECT_EQ(completions, 0);
  EXPECT_FALSE(undo->canUndo());
}

TEST_F(EditPortfolioViewControllerTest, NeedsANameAndCanBeCancelled) {
  create();
  form.nameField.text = "";
  form.updateGoButton();
  EXPECT_FALSE(form.goButton.isEnabled);
  form.performAction(Sender::cancelButton);
  EXPECT_EQ(completions, 1);
  EXPECT_EQ(result, nullptr);
  EXPECT_TRUE(manager->portfolios().empty());
}

TEST(EditPortfolioViewControllerDeathTest, MustKnowWhatItIsFor) {
  EXPECT_DEATH(EditPortfolioViewController().load(),
               "The behaviour mode must be set prior to loading the view.");
}

}  // namespace
}  // namespace corvane
