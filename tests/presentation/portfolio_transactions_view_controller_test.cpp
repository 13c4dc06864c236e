// The transactions table: its texts, its selection, and what the user does with rows.

#include "presentation/transactions/portfolio_transactions_view_controller.h"

#include "presentation/portfolio_screen_world.h"
#include "presentation/screen/segue.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;
using YieldType = BasicTransaction::YieldType;

class TransactionsTableTest : public PortfolioScreenWorld {
 protected:
  TransactionsTableTest() {
    table.changeHandler = [this](const auto& update) { updates.push_back(update); };
    table.performSegue = [this](const auto& segue) { segues.emplace_back(segueIdentifier(segue)); };
    slice.portfolio = portfolio;
  }

  /// Shows the rows from `first` to `last`, as after an edit where it tells of `changes`.
  void show(YearMonthDay first = {2021, 1, 1}, YearMonthDay last = {2021, 12, 31},
            const std::optional<TransactionChanges>& changes = {}) {
    slice.selectDays({first, last});
    table.setCurrentData(slice, changes);
  }
  void showAfterEdit() { show({2021, 1, 1}, {2021, 12, 31}, edits.changes); }

  std::map<std::string, std::string> last() const { return cells(table, table.numberOfRows() - 1); }

  PortfolioTransactionsViewController table{surroundings};
  std::vector<PortfolioTransactionsViewController::Update> updates;
  std::vector<std::string> segues;
  PortfolioDataSlice slice;
  LastChanges edits;
};

TEST_F(TransactionsTableTest, TellsOfTrades) {
  record({on(day(2021, 3, 1)).deposit("1000")});
  auto purchase = buy("40", "90");
  purchase.note = "a note";
  record({purchase, sell("30", "100.50")});
  show();
  EXPECT_THAT(cells(table, 0),
              ElementsAre(Pair("description", "Transfer In"), Pair("name", "CAD — Canadian Dollar"),
                          Pair("netCash", "CA$1,000.00"), Pair("settlementDate", "Mar 1, 2021"),
                          Pair("totalValue", "CA$1,000.00"), Pair("tradeDate", "Mar 1, 2021")));
  EXPECT_THAT(cells(table, 1),
              ElementsAre(Pair("costBaseAdded", "CA$90.00"), Pair("costBaseNet", "CA$90.00"),
                          Pair("description", "Buy"), Pair("name", "ABC"),
                          Pair("netCash", "CA$910.00"), Pair("note", "a note"),
                          Pair("settlementDate", "Mar 2, 2021"), Pair("sharePrice", "CA$2.25"),
                          Pair("sharesAdded", "40"), Pair("sharesHeld", "40"),
                          Pair("totalValue", "(CA$90.00)"), Pair("tradeDate", "Mar 2, 2021")));
  EXPECT_THAT(cells(table, 2),
              ElementsAre(Pair("capitalGain", "CA$33.00"), Pair("costBaseAdded", "(CA$67.50)"),
                          Pair("costBaseNet", "CA$22.50"), Pair("description", "Sell"),
                          Pair("name", "ABC"), Pair("netCash", "CA$1,010.50"),
                          Pair("settlementDate", "Mar 3, 2021"), Pair("sharePrice", "CA$3.35"),
                          Pair("sharesAdded", "-30"), Pair("sharesHeld", "10"),
                          Pair("totalValue", "CA$100.50"), Pair("tradeDate", "Mar 3, 2021")));
}

TEST_F(TransactionsTableTest, TellsOfEverythingElse) {
  record({on(day(2021, 3, 1)).deposit("1000"), buy("100", "90")});
  const auto descriptionOf = [&](BasicTransaction basic) {
    record({std::move(basic)});
    show();
    return last()["description"];
  };
  EXPECT_EQ(descriptionOf(split("100", "300")), "Split (3-for-1)");
  EXPECT_EQ(last()["sharesAdded"], "");
  EXPECT_EQ(last()["sharesHeld"], "300");
  EXPECT_EQ(descriptionOf(split("300", "200")), "Split (2-for-3)");
  EXPECT_EQ(descriptionOf(journal("-50")), "Journal");
  EXPECT_EQ(last()["sharesAdded"], "-50");
  EXPECT_EQ(last()["totalValue"], "");
  EXPECT_EQ(descriptionOf(yield(YieldType::dividend, "1", dec("150"))), "Dividend");
  EXPECT_EQ(last()["sharePrice"], "CA$0.00667");
  EXPECT_EQ(last()["totalValue"], "CA$1.00");
  EXPECT_EQ(descriptionOf(yield(YieldType::capitalGainsDividend, "1")), "Cap. Gains Dividend");
  EXPECT_EQ(descriptionOf(yield(YieldType::reinvestedDistribution, "1")),
            "Reinvested Cap. Gains Dist.");
  EXPECT_EQ(descriptionOf(yield(YieldType::returnOfCapital, "1")), "Return of Capital");
  EXPECT_EQ(descriptionOf(withdrawal("1")), "Transfer Out");
  EXPECT_EQ(last()["totalValue"], "(CA$1.00)");
  EXPECT_EQ(descriptionOf(adjustment("1")), "Cash Credit");
  EXPECT_EQ(descriptionOf(adjustment("-1")), "Cash Expense");
}

TEST_F(TransactionsTableTest, CountsItsRowsAndHidesCashWithoutAccounts) {
  EXPECT_EQ(table.title(), "");
  record({on(day(2021, 3, 1)).deposit("1"), deposit("1"), deposit("1")});
  show();
  EXPECT_EQ(table.title(), "All 3 transactions");
  show({2021, 3, 2}, {2021, 3, 3});
  EXPECT_EQ(table.title(), "Showing 2 of 3 transactions");
  const auto isCashHidden = [&] { return table.columns()[static_cast<std::size_t>(7)].isHidden; };
  EXPECT_EQ(table.columns()[7].identifier, "netCash");
  EXPECT_FALSE(isCashHidden());
  portfolio->usesCashAccounts = false;
  show();
  EXPECT_TRUE(isCashHidden());
  EXPECT_TRUE(updates.back().columnsChanged);
}

TEST_F(TransactionsTableTest, KeepsTheSelectedRowsAndSelectsWhatAnEditHasTouched) {
  record({on(day(2021, 3, 1)).deposit("1"), deposit("2"), deposit("3")});
  show();
  table.setSelectedRows({2, 1});
  show({2021, 3, 2}, {2021, 3, 31});
  EXPECT_THAT(table.selectedRows(), ElementsAre(0U, 1U));
  EXPECT_TRUE(updates.back().rowsChanged);
  show({2021, 3, 3}, {2021, 3, 31});
  EXPECT_THAT(table.selectedTransactions(), ElementsAre(rows()[2]));
  show({2021, 3, 3}, {2021, 3, 30});
  EXPECT_FALSE(updates.back().rowsChanged);

  record({on(day(2021, 3, 1)).deposit("4")});
  showAfterEdit();
  EXPECT_THAT(table.selectedRows(), ElementsAre(1U));
  // All rows behind it have another balance.
  EXPECT_THAT(updates.back().reloadedRows, ElementsAre(1U, 2U, 3U));
  undo->undo();
  showAfterEdit();
  EXPECT_THAT(table.selectedRows(), ElementsAre(1U, 2U)) << "the deletion has changed them";
}

TEST_F(TransactionsTableTest, DeletesTheSelectedRows) {
  record({on(day(2021, 3, 1)).deposit("1"), deposit("2"), deposit("3")});
  show();
  EXPECT_FALSE(table.canModifyAndDelete());
  EXPECT_EQ(table.deleteMenuTitle(), "Delete Transaction");
  table.deleteTransactionAction();
  EXPECT_THAT(rows(), SizeIs(3));
  table.setSelectedRows({2, 0});
  EXPECT_TRUE(table.canModifyAndDelete());
  EXPECT_EQ(table.deleteMenuTitle(), "Delete Transactions");
  table.deleteTransactionAction();
  EXPECT_THAT(rows(), SizeIs(1));
  EXPECT_THAT(messages, ElementsAre("Deleted 2 transactions."));
  EXPECT_EQ(undo->undoActionName(), "Delete 2 Transactions");
  showAfterEdit();
  table.setSelectedRows({0});
  table.deleteTransactionAction();
  EXPECT_EQ(messages.back(), "Deleted 1 transaction.");
  EXPECT_EQ(undo->undoActionName(), "Delete Transaction");
}

TEST_F(TransactionsTableTest, PresentsWhatTheLedgerRefuses) {
  record({on(day(2021, 3, 1)).deposit("1"), withdrawal("1")});
  show();
  table.setSelectedRows({0});
  table.deleteTransactionAction();
  EXPECT_THAT(errors, SizeIs(1));
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_FALSE(table.modify(rows()[1], {Order::Record{withdrawal("2")}}));
  EXPECT_FALSE(table.modify(rows()[1], {Order::Deposit{cad("2")}}));
  EXPECT_THAT(errors, SizeIs(3));
  EXPECT_THAT(rows(), SizeIs(2));
}

TEST_F(TransactionsTableTest, OpensTheFormForOneRowOrForMany) {
  record({on(day(2021, 3, 1)).deposit("1"), deposit("2")});
  show();
  table.modifyTransactionAction();
  EXPECT_THAT(segues, IsEmpty());
  table.setSelectedRows({1});
  EXPECT_EQ(table.modifyMenuTitle(), "Modify Transaction…");
  table.modifyTransactionAction();
  table.setSelectedRows({0, 1});
  EXPECT_EQ(table.modifyMenuTitle(), "Modify Transactions…");
  table.modifyTransactionAction();
  EXPECT_THAT(segues, ElementsAre("EditTransaction", "EditBulkTransactions"));

  EXPECT_TRUE(table.modify(rows()[1], {Order::Record{on(day(2021, 3, 2)).deposit("5")}}));
  EXPECT_EQ(undo->undoActionName(), "Modify Transaction");
  EXPECT_TRUE(table.modify(table.selectedTransactions(), BulkRevision{.note = "both"}));
  EXPECT_EQ(undo->undoActionName(), "Modify 2 Transactions");
  EXPECT_EQ(rows()[0]->basic.note, "both");
  EXPECT_EQ(rows()[1]->cashNet, 6);
}

TEST_F(TransactionsTableTest, MovesRowsOnlyAmongThoseOfTheirDate) {
  const Date first = day(2021, 3, 1);
  const Date second = day(2021, 3, 2);
  record({on(first).deposit("1"), on(first).deposit("2"), on(first).deposit("3"),
          on(second).deposit("4"), on(second).deposit("5")});
  show();
  EXPECT_TRUE(table.validateDrop({0}, 2));
  EXPECT_TRUE(table.validateDrop({0}, 3)) << "behind the last row of its date";
  EXPECT_FALSE(table.validateDrop({0}, 0)) << "where it is";
  EXPECT_FALSE(table.validateDrop({0}, 1)) << "where it is";
  EXPECT_FALSE(table.validateDrop({0}, 4)) << "among rows of another date";
  EXPECT_FALSE(table.validateDrop({0}, 5));
  EXPECT_FALSE(table.validateDrop({0, 4}, 2)) << "rows of two dates";
  EXPECT_FALSE(table.validateDrop({}, 2));
  EXPECT_FALSE(table.validateDrop({0}, 6));
  EXPECT_FALSE(table.acceptDrop({0}, 1));

  const auto before = rows();
  EXPECT_TRUE(table.acceptDrop({1, 0}, 3));
  EXPECT_EQ(undo->undoActionName(), "Transaction Order");
  EXPECT_THAT(rows(), ElementsAre(before[2], before[0], before[1], before[3], before[4]));
  undo->undo();
  EXPECT_EQ(rows(), before);
  EXPECT_TRUE(table.acceptDrop({3}, 5)) << "to the end of the ledger";
  EXPECT_EQ(rows().back(), before[3]);
}

TEST_F(TransactionsTableTest, MovesRowsToTheEndOfWhatIsShown) {
  const Date first = day(2021, 3, 1);
  record({on(first).deposit("1"), on(first).deposit("2"), on(day(2021, 3, 2)).deposit("3")});
  show({2021, 3, 1}, {2021, 3, 1});
  const auto before = rows();
  EXPECT_TRUE(table.acceptDrop({0}, 2));
  EXPECT_THAT(rows(), ElementsAre(before[1], before[0], before[2]));
}

TEST_F(TransactionsTableTest, MovesSelectedRowsUpAndDownAmongThoseOfTheirDate) {
  const Date first = day(2021, 3, 1);
  record({on(first).deposit("1"), on(first).deposit("2"), on(first).deposit("3"),
          on(day(2021, 3, 2)).deposit("4")});
  show();
  const auto before = rows();
  EXPECT_FALSE(table.canMoveUp() || table.canMoveDown());
  table.setSelectedRows({0});
  EXPECT_FALSE(table.canMoveUp());
  table.setSelectedRows({1, 2});
  EXPECT_FALSE(table.canMoveDown()) << "the next row has another date";
  table.moveUpAction();
  EXPECT_THAT(rows(), ElementsAre(before[1], before[2], before[0], before[3]));
  EXPECT_EQ(undo->undoActionName(), "Transaction Order");
  showAfterEdit();
  EXPECT_THAT(table.selectedRows(), ElementsAre(0U, 1U));
  table.moveDownAction();
  EXPECT_EQ(rows(), before);
  showAfterEdit();
  table.setSelectedRows({3});
  EXPECT_FALSE(table.canMoveUp() || table.canMoveDown());
}

TEST_F(TransactionsTableTest, LeavesRowsAloneThatNobodySees) {
  record({on(day(2021, 3, 1)).deposit("1"), on(day(2021, 3, 1)).deposit("2")});
  show();
  table.setSelectedRows({1});
  updates.clear();
  table.setReceivesCommands(false);
  EXPECT_THAT(updates, SizeIs(1));
  EXPECT_FALSE(table.canModifyAndDelete() || table.canMoveUp() || table.canDuplicate());
  table.deleteTransactionAction();
  table.modifyTransactionAction();
  table.moveUpAction();
  EXPECT_THAT(rows(), SizeIs(2));
  EXPECT_EQ(undo->undoActionName(), "");
  EXPECT_THAT(segues, IsEmpty());
  table.setReceivesCommands(true);
  EXPECT_TRUE(table.canMoveUp());
}

TEST_F(TransactionsTableTest, OpensFormsFilledFromItsRows) {
  record({on(day(2021, 3, 1)).deposit("1"), deposit("2")});
  show();
  std::vector<BasicTransaction> duplicated;
  table.duplicateHandler = [&](const BasicTransaction& original) {
    duplicated.push_back(original);
  };
  table.setSelectedRows({0, 1});
  EXPECT_FALSE(table.canDuplicate());
  table.setSelectedRows({1});
  table.duplicateTransactionAction();
  EXPECT_THAT(duplicated, ElementsAre(rows()[1]->basic));

  const auto form = table.makeEditTransactionForm(rows()[1]);
  form->load();
  EXPECT_EQ(form->totalAmountField.value(), 2);
  const auto bulk = table.makeEditBulkTransactionsForm(rows());
  bulk->load();
  EXPECT_EQ(bulk->summaryLabel.text, "Modifying 2 transactions.");
}

TEST_F(TransactionsTableTest, OpensAtTheNewestRows) {
  record({on(day(2021, 3, 1)).deposit("1")});
  show();
  EXPECT_TRUE(updates.back().showsNewestRows);
  record({on(day(2021, 3, 1)).deposit("1")});
  showAfterEdit();
  EXPECT_FALSE(updates.back().showsNewestRows) << "it was open already";
}

TEST_F(TransactionsTableTest, ExportsTheSelectionOrEverythingShown) {
  record({on(day(2021, 3, 1)).deposit("1"), deposit("2"), deposit("3")});
  show();
  EXPECT_EQ(table.exportTitle(), "Exporting all 3 transactions.");
  EXPECT_THAT(table.exportedTransactions(), SizeIs(3));
  table.setSelectedRows({1});
  EXPECT_EQ(table.exportTitle(), "Exporting 1 selected transaction.");
  EXPECT_THAT(table.exportedTransactions(), ElementsAre(rows()[1]));
  table.setSelectedRows({});
  show({2021, 3, 2}, {2021, 3, 3});
  EXPECT_EQ(table.exportTitle(), "Exporting 2 transactions.");
}

/// Three deposits, the first of them with a note.
class FindInTransactionsTest : public TransactionsTableTest {
 protected:
  FindInTransactionsTest() {
    auto noted = deposit("1");
    noted.note = "gift";
    record({noted, deposit("2"), deposit("3")});
    show();
  }

  std::vector<TransactionPointer> shown() const {
    std::vector<TransactionPointer> shown;
    for (std::size_t i = 0; i < table.numberOfRows(); ++i) {
      shown.push_back(table.transaction(i));
    }
    return shown;
  }
};

TEST_F(FindInTransactionsTest, ShowsTheRowsWithTheWords) {
  EXPECT_FALSE(table.isFinding());
  table.setFindText("  ");
  EXPECT_FALSE(table.isFinding());
  EXPECT_EQ(shown(), rows());
  table.setFindText("gift");
  EXPECT_THAT(shown(), ElementsAre(rows()[0]));
  EXPECT_EQ(table.title(), "Showing 1 of 3 transactions");
  EXPECT_TRUE(updates.back().rowsChanged && updates.back().isSearch);
  EXPECT_EQ(table.nothingFoundText(), "");

  table.setFindText("gifted");
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_EQ(table.nothingFoundText(), "No transaction has “gifted”.");
  table.setFindText("gifted horse");
  EXPECT_EQ(table.nothingFoundText(), "No transaction has “gifted horse”.");
  EXPECT_FALSE(updates.back().rowsChanged);
  show({2021, 3, 2}, {2021, 3, 3});
  EXPECT_EQ(table.nothingFoundText(), "No transaction in these days has “gifted horse”.");
  table.setFindText("");
  EXPECT_THAT(shown(), SizeIs(2));
}

TEST_F(FindInTransactionsTest, KeepsNoHiddenRowSelected) {
  table.setSelectedRows({0, 1, 2});
  table.setFindText("gift");
  EXPECT_THAT(table.selectedTransactions(), ElementsAre(rows()[0]));
  table.setFindText("");
  EXPECT_THAT(table.selectedTransactions(), ElementsAre(rows()[0]));
  table.setSelectedRows({1, 2});
  table.setFindText("gift");
  EXPECT_THAT(table.selectedRows(), IsEmpty());
  table.deleteTransactionAction();
  EXPECT_THAT(rows(), SizeIs(3));

  table.setSelectedRows({0});
  table.deleteTransactionAction();
  EXPECT_THAT(rows(), SizeIs(2));
  showAfterEdit();
  EXPECT_EQ(table.nothingFoundText(), "No transaction has “gift”.");
  undo->undo();
  showAfterEdit();
  EXPECT_THAT(shown(), ElementsAre(rows()[0]));
  EXPECT_THAT(table.selectedTransactions(), ElementsAre(rows()[0]));
}

TEST_F(FindInTransactionsTest, SaysThatWhatWasJustEnteredIsHidden) {
  table.setFindText("gift");
  record({deposit("4")});
  showAfterEdit();
  EXPECT_THAT(shown(), ElementsAre(rows()[0]));
  EXPECT_EQ(table.hiddenEditsText(), "The transaction just entered is hidden.");
  show();
  EXPECT_EQ(table.hiddenEditsText(), "The transaction just entered is hidden.") << "prices came";
  table.setFindText("");
  EXPECT_EQ(table.hiddenEditsText(), "");
  EXPECT_THAT(table.selectedTransactions(), ElementsAre(rows()[3]));

  table.setFindText("gift");
  record({deposit("5"), deposit("6")});
  showAfterEdit();
  EXPECT_EQ(table.hiddenEditsText(), "2 transactions just entered are hidden.");
  table.setFindText("5.00");
  EXPECT_EQ(table.hiddenEditsText(), "The transaction just entered is hidden.");
  undo->undo();
  showAfterEdit();
  EXPECT_EQ(table.hiddenEditsText(), "");

  auto gift = on(rows()[0]->tradeDate()).deposit("7");
  gift.note = "a gift too";
  record({gift});
  table.setFindText("gift");
  showAfterEdit();
  EXPECT_EQ(table.hiddenEditsText(), "");
  EXPECT_THAT(shown(), SizeIs(2));
  EXPECT_TRUE(table.modify(rows()[0], {Order::Record{on(day(2021, 3, 1)).deposit("1")}}));
  showAfterEdit();
  EXPECT_EQ(table.hiddenEditsText(), "The transaction just entered is hidden.");
}

TEST_F(FindInTransactionsTest, MovesNoRowPastOthersThatNobodySees) {
  const Date first = day(2021, 4, 1);
  record({on(first).adjustment("1"), on(first).deposit("2"), on(first).adjustment("3")});
  show();
  const auto before = rows();
  table.setFindText("credit");
  ASSERT_THAT(shown(), SizeIs(2));
  table.setSelectedRows({1});
  EXPECT_FALSE(table.canMoveUp());
  EXPECT_FALSE(table.acceptDrop({1}, 0));
  EXPECT_EQ(rows(), before);
  table.setFindText("");
  EXPECT_TRUE(table.canMoveUp());
}

TEST_F(FindInTransactionsTest, ShowsAnotherPortfolioWholeAndOtherDaysNarrowed) {
  table.setFindText("gift");
  show({2021, 3, 1}, {2021, 3, 2});
  EXPECT_THAT(shown(), SizeIs(1));
  show({2021, 3, 2}, {2021, 3, 3});
  EXPECT_THAT(shown(), IsEmpty());
  slice = {.portfolio = manager->createPortfolio(Currency::usd())};
  show();
  EXPECT_EQ(table.findText(), "");
  EXPECT_FALSE(table.isFinding());
}

TEST_F(FindInTransactionsTest, GoesToARowThatIsHidden) {
  table.setFindText("gift");
  table.showTransaction(rows()[2]);
  EXPECT_EQ(table.findText(), "");
  EXPECT_THAT(table.selectedTransactions(), ElementsAre(rows()[2]));
  table.setFindText("gift");
  table.showTransaction(rows()[0]);
  EXPECT_EQ(table.findText(), "gift");
}

TEST_F(FindInTransactionsTest, ExportsWhatIsShown) {
  table.setFindText("gift");
  EXPECT_THAT(table.exportedTransactions(), ElementsAre(rows()[0]));
  EXPECT_EQ(table.exportTitle(), "Exporting 1 transaction.");
}

}  // namespace
}  // namespace corvane::testing
