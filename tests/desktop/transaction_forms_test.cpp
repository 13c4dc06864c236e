// Entries made, changed and moved in a window, with keys alone.

#include <gmock/gmock.h>

#include <QAccessible>
#include <QAction>
#include <QCalendarWidget>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDateEdit>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QToolButton>

#include "desktop/controls/frozen_columns.h"
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

/// The controls of `sheet` that the keyboard can reach, as the eye reads them.
std::vector<QWidget*> inReadingOrder(const QWidget& sheet) {
  std::vector<QWidget*> controls;
  for (QWidget* control : sheet.findChildren<QWidget*>()) {
    if ((control->focusPolicy() & Qt::TabFocus) != 0 && control->isVisibleTo(&sheet) &&
        control->isEnabled() && control->focusProxy() == nullptr) {
      controls.push_back(control);
    }
  }
  std::ranges::sort(controls, {}, [&](const QWidget* control) {
    const QPoint middle = control->mapTo(&sheet, control->rect().center());
    return std::pair(middle.y() / 8, middle.x());
  });
  return controls;
}

TEST_F(TransactionFormsTest, FollowsTheEyeFromFieldToFieldInEveryMode) {
  auto* form = openNew();
  form->form().chooseEquity(world.market->equityWithId("NOR"));
  form->form().toggleNote();
  for (const TransactionModeEntry& entry :
       EditTransactionViewController::transactionModeEntries()) {
    if (entry.title.empty()) {
      continue;
    }
    form->form().chooseMode(entry.mode);
    form->form().chooseCurrency(Currency::usd());
    form->form().typeInto(form->form().priorNumberOfSharesField, "1");
    form->form().typeInto(form->form().numberOfSharesField, "1");
    form->form().typeInto(form->form().totalAmountField, "1");
    // The fields first, and then the sheet around them.
    QApplication::processEvents();
    QApplication::processEvents();
    const std::vector<QWidget*> expected = inReadingOrder(*form);
    ASSERT_GE(expected.size(), 8U);
    EXPECT_LE(form->width(), 1000) << entry.title;
    EXPECT_LE(form->height(), 640) << entry.title;
    expected.front()->setFocus();
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(focusName(), expected[i]->accessibleName().toStdString()) << entry.title << i;
      EXPECT_EQ(QApplication::focusWidget(), expected[i]);
      press(Qt::Key_Tab);
    }
    EXPECT_EQ(QApplication::focusWidget(), expected.front()) << entry.title;
  }
}

TEST_F(TransactionFormsTest, ChoosesADayInTheCalendar) {
  auto* form = openNew();
  tabTo("Transaction Date");
  DateEntry& date = form->form().transactionDatePicker;
  form->form().changeTransactionDate([](DateEntry& entry) { entry.setDay({2024, 2, 27}); });
  const auto openCalendar = [&] {
    press(Qt::Key_Down, Qt::AltModifier);
    auto* calendar = form->findChild<QCalendarWidget*>();
    EXPECT_TRUE(calendar != nullptr && calendar->isVisible());
    return calendar;
  };
  QCalendarWidget* calendar = openCalendar();
  ASSERT_NE(calendar, nullptr);
  EXPECT_EQ(calendar->selectedDate(), QDate(2024, 2, 27));
  EXPECT_EQ(calendar->accessibleName(), "Transaction Date calendar");
  auto* days = calendar->findChild<QAbstractItemView*>();
  QTest::keyClick(days, Qt::Key_Right);
  QTest::keyClick(days, Qt::Key_Right);
  QTest::keyClick(days, Qt::Key_Return);
  EXPECT_EQ(date.day(), (YearMonthDay{2024, 2, 29}));
  EXPECT_EQ(named<QLineEdit>(*form, "Transaction Date")->text().toStdString(), date.text());
  ASSERT_TRUE(
      DesktopWorld::waitUntil([&] { return form->findChild<QCalendarWidget*>() == nullptr; }));

  form->activateWindow();
  auto* settlement = named<QLineEdit>(*form, "Settlement Date");
  settlement->setFocus();
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return QApplication::focusWidget() == settlement; }));
  calendar = openCalendar();
  ASSERT_NE(calendar, nullptr);
  EXPECT_EQ(calendar->minimumDate(), QDate(2024, 2, 29)) << "the settlement follows the trade";
  QTest::keyClick(calendar->findChild<QAbstractItemView*>(), Qt::Key_Escape);
  EXPECT_TRUE(form->isVisible()) << "Escape is for the calendar";
  EXPECT_EQ(date.day(), (YearMonthDay{2024, 2, 29}));
}

TEST_F(TransactionFormsTest, EscapeClosesWhatLiesOnTopFirst) {
  const QPointer<EditTransactionDialog> form = openNew();
  press(Qt::Key_Down);
  EXPECT_TRUE(form->form().equityComboBox.isPopupOpen());
  press(Qt::Key_Escape);
  ASSERT_TRUE(form != nullptr && form->isVisible());
  EXPECT_FALSE(form->form().equityComboBox.isPopupOpen());
  tabTo("Total Cost");
  type("17");
  press(Qt::Key_Escape);
  EXPECT_TRUE(form == nullptr || !form->isVisible());
  EXPECT_EQ(portfolio->transactions().size(), 7U);
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

TEST_F(TransactionFormsTest, StaysForTheNextEntryAtAClickWithShift) {
  const QPointer<EditTransactionDialog> form = openNew();
  form->form().chooseMode(TransactionMode::deposit);
  form->form().typeInto(form->form().totalAmountField, "1");
  const auto click = [&](Qt::KeyboardModifiers modifiers) {
    const QPushButton& go = *buttonWith(*form, "Transfer");
    QTest::mouseClick(form->windowHandle(), Qt::LeftButton, modifiers,
                      go.mapTo(form, go.rect().center()));
  };
  click(Qt::ShiftModifier);
  ASSERT_TRUE(form != nullptr && form->isVisible());
  EXPECT_EQ(portfolio->transactions().size(), 8U);
  EXPECT_FALSE(buttonWith(*form, "Insert Another")->isEnabled()) << "the amount is empty again";
  form->form().typeInto(form->form().totalAmountField, "2");
  buttonWith(*form, "Insert Another")->click();
  EXPECT_TRUE(form->isVisible());
  form->form().typeInto(form->form().totalAmountField, "3");
  click(Qt::NoModifier);
  EXPECT_TRUE(form == nullptr || !form->isVisible());
  EXPECT_EQ(portfolio->transactions().size(), 10U);
}

TEST_F(TransactionFormsTest, RoundsAForeignEquivalentByItsButton) {
  auto* form = openNew();
  form->form().chooseEquity(world.market->equityWithId("NOR"));
  form->form().chooseCurrency(Currency::usd());
  form->form().typeInto(form->form().numberOfSharesField, "1");
  form->form().typeInto(form->form().totalAmountField, "10.01");
  form->form().typeInto(form->form().exchangeRateField, "1.333");
  tabTo("Equivalent Cost");
  press(Qt::Key_Tab);
  auto* button = qobject_cast<QPushButton*>(QApplication::focusWidget());
  ASSERT_NE(button, nullptr);
  EXPECT_EQ(button->text(), "Round to CA$13.34");
  press(Qt::Key_Space);
  EXPECT_FALSE(button->isVisible());
  EXPECT_EQ(form->form().equivalentValueField.value(), Decimal::fromMantissa(Sign::plus, 1334, -2));
  EXPECT_NE(QApplication::focusWidget(), nullptr);
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

TEST_F(TransactionFormsTest, WritesADayAlikeInPickerAndTable) {
  showTransactions();
  const QWidget& screen = window->workspaceView().portfolioView();
  EXPECT_EQ(named<QDateEdit>(screen, "First day")->text().toStdString(),
            table().model()->index(0, 0).data().toString().toStdString());
}

TEST_F(TransactionFormsTest, DropsARowWhereItsDateAllows) {
  auto& manager = *portfolio->manager.lock();
  const BasicTransaction first = portfolio->transactions().front()->basic;
  manager.recordTransactions({first, first}, portfolio, nullptr);
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return table().model()->rowCount() == 9; }));
  showTransactions();
  EXPECT_TRUE(table().dragEnabled());
  EXPECT_EQ(table().dragDropMode(), QAbstractItemView::InternalMove);
  QAbstractItemModel& model = *table().model();
  const TransactionPointer moved = portfolio->transactions().at(2);
  const std::unique_ptr<QMimeData> carried(model.mimeData({model.index(2, 0), model.index(2, 1)}));
  EXPECT_TRUE(
      carried->hasFormat("ca.orlend.Corvane.PortfolioTransactionsViewController.transactionIndex"));
  const auto canDrop = [&](int row) {
    return model.canDropMimeData(carried.get(), Qt::MoveAction, row, 0, {});
  };
  EXPECT_TRUE(canDrop(0));
  EXPECT_FALSE(canDrop(3)) << "it is there already";
  EXPECT_FALSE(canDrop(5)) << "among rows of another date";
  EXPECT_FALSE(model.canDropMimeData(carried.get(), Qt::MoveAction, -1, -1, model.index(0, 0)))
      << "on a row";
  model.dropMimeData(carried.get(), Qt::MoveAction, 0, 0, {});
  EXPECT_EQ(portfolio->transactions().front(), moved);
  ASSERT_TRUE(DesktopWorld::waitUntil(
      [&] { return table().selectionModel()->selectedRows().value(0).row() == 0; }));
  EXPECT_EQ(menuItem(*window, "Undo")->text().toStdString(), "&Undo Transaction Order");
}

TEST_F(TransactionFormsTest, OffersTheCommandsOfARowInItsMenu) {
  showTransactions();
  enterTable();
  selectRow(2);
  std::vector<std::string> offered;
  QTimer::singleShot(0, &table(), [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (const QAction* action : menu->actions()) {
      if (action->isEnabled() && !action->isSeparator()) {
        offered.push_back(action->text().remove(QLatin1Char('&')).toStdString());
      }
    }
    menu->close();
  });
  QContextMenuEvent asked(QContextMenuEvent::Keyboard, QPoint(5, 5),
                          table().viewport()->mapToGlobal(QPoint(5, 5)));
  QApplication::sendEvent(table().viewport(), &asked);
  EXPECT_THAT(offered, ::testing::IsSupersetOf({"Modify Transaction…", "Duplicate Transaction",
                                                "Delete Transaction", "Show Equity"}));
}

TEST_F(TransactionFormsTest, KeepsDateAndNameInViewWhileTheTableScrolls) {
  window->resize(900, 700);
  showTransactions();
  table().clearSelection();
  QApplication::processEvents();
  auto* frozen = table().findChild<desktop::FrozenColumns*>();
  ASSERT_NE(frozen, nullptr);
  QScrollBar& bar = *table().horizontalScrollBar();
  ASSERT_GT(bar.maximum(), 0);
  EXPECT_FALSE(frozen->isShown());
  // But for the line at their right end they look as before.
  const QRect kept(0, 0, table().columnWidth(0) + table().columnWidth(1) - 2, table().height() / 2);
  const auto look = [&] { return table().grab(kept).toImage(); };
  const QImage before = look();
  bar.setValue(bar.maximum());
  EXPECT_TRUE(frozen->isShown());
  EXPECT_EQ(look(), before);
  bar.setValue(0);
  EXPECT_FALSE(frozen->isShown());
}

TEST_F(TransactionFormsTest, OpensAtTheNewestRowsHoweverMuchRoomThereIs) {
  auto& manager = *portfolio->manager.lock();
  manager.recordTransactions(
      std::vector<BasicTransaction>(60, portfolio->transactions().front()->basic), portfolio,
      nullptr);
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Other")));
  ASSERT_TRUE(world.show(*window, portfolio));
  showTransactions();
  const auto showsLastRow = [&] {
    QApplication::processEvents();
    const QModelIndex last = table().model()->index(table().model()->rowCount() - 1, 0);
    return table().viewport()->rect().contains(table().visualRect(last).center());
  };
  EXPECT_TRUE(showsLastRow());
  window->resize(1000, 640);
  EXPECT_TRUE(showsLastRow());
  table().verticalScrollBar()->setValue(3);
  window->resize(1000, 700);
  QApplication::processEvents();
  EXPECT_EQ(table().verticalScrollBar()->value(), 3) << "who has scrolled stays where he is";
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
