// Entries made, changed and moved in a window, with keys alone.

#include <gmock/gmock.h>

#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QToolButton>

#include "desktop/desktop_world.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/transactions/edit_bulk_transactions_dialog.h"
#include "desktop/transactions/edit_transaction_dialog.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

using desktop::EditBulkTransactionsDialog;
using desktop::EditTransactionDialog;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TransactionFormsTest : public ::testing::Test {
 protected:
  TransactionFormsTest() {
    portfolio = world.addPortfolio(*window, "Home");
    EXPECT_TRUE(world.show(*window, portfolio));
    window->show();
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
  }

  void showTransactions() { window->workspaceView().portfolioView().tabs().setCurrentIndex(1); }
  QTableView& table() { return *named<QTableView>(*window, "Transactions"); }
  /// Waits for the form and hands it the keyboard.
  template <typename Sheet>
  Sheet* sheet() {
    auto* found = openDialog<Sheet>(*window);
    EXPECT_NE(found, nullptr);
    if (found != nullptr) {
      found->activateWindow();
      EXPECT_TRUE(DesktopWorld::waitUntil([found] {
        return QApplication::focusWidget() != nullptr &&
               found->isAncestorOf(QApplication::focusWidget());
      }));
    }
    return found;
  }
  EditTransactionDialog* openNew() {
    enterWindow();
    QTest::keyClick(window.get(), Qt::Key_T, Qt::ControlModifier);
    return sheet<EditTransactionDialog>();
  }
  /// The keyboard comes back to the window, as when a sheet has closed.
  void enterWindow() {
    window->activateWindow();
    EXPECT_TRUE(
        DesktopWorld::waitUntil([&] { return QApplication::activeWindow() == window.get(); }));
  }
  void enterTable() {
    enterWindow();
    table().setFocus();
    EXPECT_TRUE(DesktopWorld::waitUntil([&] { return QApplication::focusWidget() == &table(); }));
  }
  void selectRow(int row) {
    table().selectionModel()->select(
        table().model()->index(row, 0),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  }
  static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWidget* focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QTest::keyClick(focus, key, modifiers);
  }
  static void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }
  static std::string focusName() {
    return QApplication::focusWidget() == nullptr
               ? "nothing"
               : QApplication::focusWidget()->accessibleName().toStdString();
  }
  /// Goes on by Tab until the control of this name has the keyboard.
  static void tabTo(const std::string& name) {
    for (int i = 0; i < 30 && focusName() != name; ++i) {
      press(Qt::Key_Tab);
    }
    ASSERT_EQ(focusName(), name);
  }
  const BasicTransaction& newest() { return portfolio->transactions().back()->basic; }

  DesktopWorld world;
  std::shared_ptr<desktop::MainWindow> window = world.newWindow();
  PortfolioPointer portfolio;
};

TEST_F(TransactionFormsTest, RecordsAPurchaseWithKeysAlone) {
  auto* form = openNew();
  EXPECT_EQ(focusName(), "Equity");
  press(Qt::Key_Down);  // the equities that are held
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  ASSERT_NE(form->form().currentEquity(), nullptr);
  const EquityPointer equity = form->form().currentEquity();
  press(Qt::Key_Tab);
  EXPECT_EQ(focusName(), "Number of Shares");
  type("12");
  tabTo("Total Cost");
  type("600");
  EXPECT_EQ(named<QLineEdit>(*form, "Share Price")->text().toStdString(), "CA$50.00");
  EXPECT_EQ(QApplication::focusWidget()->accessibleDescription().toStdString(), "CA$600.00");
  press(Qt::Key_Return);
  EXPECT_FALSE(form->isVisible());
  const auto& trade = std::get<BasicTransaction::Trade>(newest().kind);
  EXPECT_EQ(trade.equity, equity);
  EXPECT_EQ(trade.sharesAdded, 12);
  EXPECT_EQ(trade.cashDisposed.amount, 600);
  EXPECT_EQ(menuItem(*window, "Undo")->text().toStdString(), "&Undo New Transaction");
}

TEST_F(TransactionFormsTest, ChoosesTheModeByItsKey) {
  auto* form = openNew();
  for (const TransactionModeEntry& entry :
       EditTransactionViewController::transactionModeEntries()) {
    if (entry.title.empty()) {
      continue;
    }
    press(static_cast<Qt::Key>(entry.shortcut), Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(form->form().transactionMode(), entry.mode) << entry.title;
    EXPECT_EQ(named<QPushButton>(*form, "Type")->text().toStdString(), entry.title);
  }
}

TEST_F(TransactionFormsTest, FollowsTheEyeFromFieldToField) {
  auto* form = openNew();
  form->form().chooseMode(TransactionMode::sell);
  named<QPushButton>(*form, "Type")->setFocus();
  std::vector<std::string> visited;
  for (int i = 0; i < 9; ++i) {
    visited.push_back(focusName());
    press(Qt::Key_Tab);
  }
  EXPECT_THAT(visited, ::testing::ElementsAre("Type", "Transaction Date", "Settlement Date",
                                              "Equity", "Number of Shares", "Currency",
                                              "Share Price", "Total Proceeds", "Note"));
}

TEST_F(TransactionFormsTest, KeepsWhatWasTypedWhereTheLedgerRefuses) {
  const std::size_t before = portfolio->transactions().size();
  auto* form = openNew();
  press(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
  tabTo("Total Withdrawal");
  type("99999999");
  EXPECT_THAT(form->form().preview().refusal, HasSubstr("Insufficient cash."));
  press(Qt::Key_Return);
  auto* alert = openDialog<QMessageBox>(*form);
  ASSERT_NE(alert, nullptr);
  EXPECT_THAT(alert->text().toStdString(), HasSubstr("Insufficient cash."));
  QTest::keyClick(alert, Qt::Key_Escape);
  EXPECT_TRUE(form->isVisible());
  EXPECT_THAT(named<QLineEdit>(*form, "Total Withdrawal")->text().toStdString(),
              HasSubstr("99,999,999.00"));
  EXPECT_EQ(portfolio->transactions().size(), before);
  form->activateWindow();
  QTest::keyClick(form, Qt::Key_Escape);
  EXPECT_FALSE(form->isVisible());
  EXPECT_EQ(portfolio->transactions().size(), before);
}

TEST_F(TransactionFormsTest, StaysForTheNextEntryWithShift) {
  const std::size_t before = portfolio->transactions().size();
  auto* form = openNew();
  press(Qt::Key_I, Qt::ControlModifier | Qt::ShiftModifier);
  tabTo("Transaction Date");
  press(Qt::Key_Down);  // yesterday
  const Date date = form->form().transactionDatePicker.date().value();
  tabTo("Total Deposit");
  type("1");
  press(Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_TRUE(form->isVisible());
  EXPECT_EQ(focusName(), "Total Deposit");
  type("2");
  press(Qt::Key_Return);
  EXPECT_FALSE(form->isVisible());
  ASSERT_EQ(portfolio->transactions().size(), before + 2);
  EXPECT_EQ(std::get<BasicTransaction::Transfer>(newest().kind).amount.amount, 2);
  EXPECT_EQ(newest().tradeDate, date);
}

TEST_F(TransactionFormsTest, ModifiesARowAndItsNote) {
  showTransactions();
  enterTable();
  selectRow(0);
  press(Qt::Key_Return);
  auto* form = sheet<EditTransactionDialog>();
  EXPECT_EQ(form->windowTitle(), "Modify Transaction");
  tabTo("Total Deposit");
  type("70000");
  tabTo("Note");
  press(Qt::Key_Space);
  ASSERT_NE(qobject_cast<QPlainTextEdit*>(QApplication::focusWidget()), nullptr);
  type("from the house");
  tabTo("Total Deposit");
  press(Qt::Key_Return);
  EXPECT_FALSE(form->isVisible());
  const BasicTransaction& first = portfolio->transactions().front()->basic;
  EXPECT_EQ(std::get<BasicTransaction::Transfer>(first.kind).amount.amount, 70000);
  EXPECT_EQ(first.note, "from the house");
}

TEST_F(TransactionFormsTest, RevisesSeveralRowsAtOnce) {
  showTransactions();
  enterTable();
  table().selectAll();
  press(Qt::Key_Return);
  auto* form = sheet<EditBulkTransactionsDialog>();
  EXPECT_FALSE(buttonWith(*form, "Modify")->isEnabled());
  tabTo("Change note");
  press(Qt::Key_Space);
  EXPECT_EQ(focusName(), "New note");
  type("all of them");
  press(Qt::Key_Return);
  EXPECT_FALSE(form->isVisible());
  for (const TransactionPointer& row : portfolio->transactions()) {
    EXPECT_EQ(row->basic.note, "all of them");
  }
}

TEST_F(TransactionFormsTest, DuplicatesAndMovesARow) {
  showTransactions();
  enterTable();
  selectRow(0);
  press(Qt::Key_D, Qt::ControlModifier);
  auto* form = sheet<EditTransactionDialog>();
  EXPECT_EQ(form->windowTitle(), "New Transaction");
  tabTo("Total Deposit");
  press(Qt::Key_Return);
  EXPECT_FALSE(form->isVisible());
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return table().model()->rowCount() == 8; }));
  enterTable();
  selectRow(0);
  press(Qt::Key_D, Qt::ControlModifier);
  sheet<EditTransactionDialog>()->form().performAction(
      EditTransactionViewController::Sender::goButton);
  ASSERT_EQ(portfolio->transactions().size(), 9U);
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return table().model()->rowCount() == 9; }));

  const TransactionPointer last = portfolio->transactions().back();
  enterTable();
  selectRow(8);
  EXPECT_TRUE(menuItem(*window, "Move Up")->isEnabled());
  EXPECT_EQ(focusName(), "Transactions");
  press(Qt::Key_Up, Qt::AltModifier);
  EXPECT_EQ(portfolio->transactions().at(7), last);
  ASSERT_TRUE(DesktopWorld::waitUntil(
      [&] { return table().selectionModel()->selectedRows().value(0).row() == 7; }));
  press(Qt::Key_Down, Qt::AltModifier);
  EXPECT_EQ(portfolio->transactions().at(8), last);
}

TEST_F(TransactionFormsTest, DeletesNothingOnAnotherTab) {
  showTransactions();
  selectRow(6);
  EXPECT_TRUE(menuItem(*window, "Delete Transaction")->isEnabled());
  window->workspaceView().portfolioView().tabs().setCurrentIndex(0);
  for (const char* command :
       {"Delete Transaction", "Modify Transaction", "Duplicate Transaction", "Move Up"}) {
    EXPECT_FALSE(menuItem(*window, command)->isEnabled()) << command;
  }
  auto* holdings = named<QTableView>(*window, "Holdings");
  holdings->setFocus();
  press(Qt::Key_Delete);
  EXPECT_EQ(portfolio->transactions().size(), 7U);
}

TEST_F(TransactionFormsTest, GivesEveryControlOfTheFormsAName) {
  showTransactions();
  const auto checkNames = [](QWidget& sheet) {
    for (QWidget* control : sheet.findChildren<QWidget*>()) {
      if (control->focusPolicy() != Qt::NoFocus && control->isVisibleTo(&sheet) &&
          !control->objectName().startsWith("qt_")) {
        auto* accessible = QAccessible::queryAccessibleInterface(control);
        ASSERT_NE(accessible, nullptr);
        EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty())
            << control->metaObject()->className();
      }
    }
  };
  auto* form = openNew();
  for (const TransactionModeEntry& entry :
       EditTransactionViewController::transactionModeEntries()) {
    form->form().chooseMode(entry.mode);
    checkNames(*form);
  }
  form->reject();
  table().selectAll();
  menuItem(*window, "Modify Transactions")->trigger();
  checkNames(*openDialog<EditBulkTransactionsDialog>(*window));
}

TEST_F(TransactionFormsTest, ClosesWithItsWindowWhileAFieldIsBeingEdited) {
  auto* form = openNew();
  tabTo("Number of Shares");
  type("1");
  form->close();
  EXPECT_FALSE(form->isVisible());
  openNew();
  tabTo("Number of Shares");
  type("1");
  window->document()->updateChangeCount(Document::ChangeType::cleared);
  window.reset();
}

}  // namespace
}  // namespace corvane::testing
