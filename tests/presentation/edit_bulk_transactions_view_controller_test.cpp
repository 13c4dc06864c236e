// The form that changes several transactions at once.

#include "presentation/transactions/edit_bulk_transactions_view_controller.h"

#include "presentation/portfolio_screen_world.h"

namespace corvane::testing {
namespace {

using BulkForm = EditBulkTransactionsViewController;
using BulkSender = BulkForm::Sender;

class BulkFormTest : public PortfolioScreenWorld {
 protected:
  BulkFormTest() {
    form.portfolio = portfolio;
    form.completionHandler = [this](auto revision) {
      ++completions;
      result = std::move(revision);
    };
  }
  void load(std::vector<BasicTransaction> transactions) {
    form.transactions = record(std::move(transactions));
    form.load();
  }
  static YearMonthDay dayOf(const DateEntry& date) { return date.day(); }

  BulkForm form;
  int completions = 0;
  std::optional<BulkRevision> result;
};

TEST_F(BulkFormTest, ShowsWhatTheTransactionsHaveInCommon) {
  auto first = on(day(2021, 3, 1)).deposit("1000");
  auto second = on(day(2021, 3, 1)).buy("10", "100");
  first.note = second.note = "together";
  load({first, second});
  EXPECT_EQ(form.summaryLabel.text, "Modifying 2 transactions.");
  EXPECT_FALSE(form.tradeDate().hasMultipleValues);
  EXPECT_TRUE(form.tradeDate().multipleValuesLabel.isHidden);
  EXPECT_FALSE(form.tradeDate().isDatePickerHidden);
  EXPECT_FALSE(form.tradeDate().datePicker.isEnabled);
  EXPECT_TRUE(form.equityCheckboxButton.isEnabled);
  EXPECT_EQ(form.equityComboBox.selectedEquity(), abc);
  EXPECT_EQ(form.noteField.text, "together");
  EXPECT_FALSE(form.noteField.isEnabled);
  EXPECT_FALSE(form.goButton.isEnabled);
}

TEST_F(BulkFormTest, SaysWhereTheTransactionsDiffer) {
  auto first = deposit("1000");
  first.note = "only here";
  load({first, depositDollars("1000"), buy("10", "100"), buyForeign("1", "1", "1")});
  EXPECT_TRUE(form.settlementDate().hasMultipleValues);
  EXPECT_TRUE(form.settlementDate().isDatePickerHidden);
  EXPECT_FALSE(form.settlementDate().multipleValuesLabel.isHidden);
  EXPECT_EQ(form.equityComboBox.selectedEquity(), nullptr);
  EXPECT_EQ(form.equityComboBox.placeholder(), BulkForm::multipleValuesText);
  EXPECT_EQ(form.noteField.text, "");
  EXPECT_EQ(form.noteField.placeholder, BulkForm::multipleValuesText);
  form.noteEditingDidBegin();
  EXPECT_EQ(form.noteField.placeholder, "");
  form.noteEditingDidEnd();
  EXPECT_EQ(form.noteField.placeholder, BulkForm::multipleValuesText);

  form.setOn(form.settlementDate().checkboxButton, true);
  EXPECT_FALSE(form.settlementDate().isDatePickerHidden);
  EXPECT_TRUE(form.settlementDate().datePicker.isEnabled);
  EXPECT_TRUE(form.settlementDate().multipleValuesLabel.isHidden);
  EXPECT_TRUE(form.goButton.isEnabled);
}

TEST_F(BulkFormTest, OffersNoEquityWhereNoneIsNamed) {
  load({deposit("1000"), adjustment("1")});
  EXPECT_FALSE(form.equityCheckboxButton.isEnabled);
  form.setOn(form.equityCheckboxButton, true);
  EXPECT_FALSE(form.equityCheckboxButton.isOn);
}

TEST_F(BulkFormTest, ForgetsADateWhoseBoxIsTurnedOff) {
  load({on(day(2021, 3, 1)).deposit("1000"), on(day(2021, 3, 1)).deposit("1")});
  form.setOn(form.tradeDate().checkboxButton, true);
  form.changeDate(form.tradeDate(), [](DateEntry& date) { date.setText("2020-05-05"); });
  EXPECT_EQ(dayOf(form.tradeDate().datePicker), (YearMonthDay{2020, 5, 5}));
  form.changeDate(form.tradeDate(), [](DateEntry& date) { date.setText("never"); });
  EXPECT_EQ(form.goButton.tooltip, "“never” is not a date.");
  form.setOn(form.tradeDate().checkboxButton, false);
  EXPECT_EQ(dayOf(form.tradeDate().datePicker), (YearMonthDay{2021, 3, 1}));
}

TEST_F(BulkFormTest, RevisesWhatIsTicked) {
  load({on(day(2021, 3, 1)).deposit("1000"), buy("10", "100")});
  form.setOn(form.noteCheckboxButton, true);
  form.setNote("both");
  form.performAction(BulkSender::goButton);
  ASSERT_TRUE(result);
  EXPECT_EQ(result->note, "both");
  EXPECT_FALSE(result->tradeDate || result->settlementDate || result->equity);

  form.setOn(form.equityCheckboxButton, true);
  form.equityComboBox.changeText("");
  EXPECT_FALSE(form.goButton.isEnabled);
  EXPECT_EQ(form.goButton.tooltip, "Choose an equity.");
  form.equityComboBox.setSelectedEquity(xyz);
  form.setOn(form.settlementDate().checkboxButton, true);
  form.changeDate(form.settlementDate(), [](DateEntry& date) { date.setDay({2021, 4, 1}); });
  form.performAction(BulkSender::goButton);
  EXPECT_EQ(result->equity, xyz);
  EXPECT_EQ(result->settlementDate, manager->calendar.startOfDay(day(2021, 4, 1)));
  EXPECT_EQ(result->applied(form.transactions.front()->basic).equity(), nullptr);
  EXPECT_EQ(*result->applied(form.transactions.back()->basic).equity(), xyz);
}

TEST_F(BulkFormTest, EndsWithoutARevision) {
  load({deposit("1")});
  form.performAction(BulkSender::cancelButton);
  EXPECT_EQ(completions, 1);
  EXPECT_FALSE(result);
  form.transactions.clear();
  form.load();
  EXPECT_EQ(completions, 2);
}

}  // namespace
}  // namespace corvane::testing
