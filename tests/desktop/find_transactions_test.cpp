// Finding transactions with the keys of a user.

#include <gmock/gmock.h>

#include <QLineEdit>
#include <QTableView>
#include <QTest>

#include "desktop/desktop_world.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

using desktop::MainWindow;
using ::testing::ElementsAre;
using ::testing::SizeIs;

class FindTransactions : public ::testing::Test {
 protected:
  FindTransactions() {
    window->show();
    window->activateWindow();
    QApplication::processEvents();
    EXPECT_TRUE(DesktopWorld::show(*window, portfolio));
    table = named<QTableView>(*window, "Transactions");
    field = named<QLineEdit>(*window, "Find transactions");
    QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  }

  void type(const char* text) const {
    QTest::keyClicks(field, QString::fromUtf8(text));
    QApplication::processEvents();
  }
  [[nodiscard]] std::vector<std::string> kinds() const {
    std::vector<std::string> made;
    for (int row = 0; row < table->model()->rowCount(); ++row) {
      made.push_back(table->model()->index(row, 2).data().toString().toStdString());
    }
    return made;
  }
  static void closeAlerts() {
    for (QWidget* top : QApplication::topLevelWidgets()) {
      if (auto* alert = qobject_cast<QMessageBox*>(top)) {
        alert->accept();
      }
    }
    QApplication::processEvents();
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
  PortfolioPointer portfolio = world.addPortfolio(*window, "Retirement");
  QTableView* table = nullptr;
  QLineEdit* field = nullptr;
};

TEST_F(FindTransactions, IsReachedByItsKeyAndLeftByEscape) {
  EXPECT_TRUE(table->isVisible()) << "the tab with the transactions";
  ASSERT_TRUE(field->hasFocus());
  type("lum sell");
  EXPECT_THAT(kinds(), ElementsAre("Sell"));
  QTest::keyClick(field, Qt::Key_Escape);
  EXPECT_EQ(field->text(), "");
  EXPECT_THAT(kinds(), SizeIs(7));
  EXPECT_TRUE(table->hasFocus());

  QTest::keyClick(table, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_TRUE(field->hasFocus());
  type("buy");
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_TRUE(table->hasFocus());
  EXPECT_EQ(field->text(), "buy");
  EXPECT_EQ(table->currentIndex().row(), 3) << "the newest of those that are shown";
}

TEST_F(FindTransactions, DeletesNothingThatIsNotSeen) {
  QTest::keyClick(field, Qt::Key_Escape);
  table->selectAll();
  QTest::keyClick(table, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  type("dividend");
  ASSERT_THAT(kinds(), ElementsAre("Dividend"));
  QTest::keyClick(field, Qt::Key_Delete);
  EXPECT_THAT(portfolio->transactions(), SizeIs(7)) << "the key is the field's";
  QTest::keyClick(field, Qt::Key_Down);
  QTest::keyClick(table, Qt::Key_Delete);
  EXPECT_THAT(portfolio->transactions(), SizeIs(6));
  closeAlerts();
  EXPECT_TRUE(table->isHidden());
  EXPECT_EQ(window->focusWidget(), field) << "the table that had the keyboard is gone";
  menuItem(*window, "Undo Delete")->trigger();
  QApplication::processEvents();
  EXPECT_THAT(kinds(), ElementsAre("Dividend"));
  EXPECT_FALSE(table->isHidden());
}

TEST_F(FindTransactions, SaysWhatWasNotFoundAndShowsAllAgain) {
  type("no such words");
  EXPECT_TRUE(table->isHidden());
  auto* showAll = buttonWith(*window, "Show All Transactions");
  EXPECT_TRUE(showAll->isVisible());
  showAll->click();
  EXPECT_FALSE(table->isHidden());
  EXPECT_EQ(field->text(), "");
  EXPECT_THAT(kinds(), SizeIs(7));
  EXPECT_FALSE(showAll->isVisible());
}

TEST_F(FindTransactions, LeadsToWhatWasJustEntered) {
  type("dividend");
  const Date today = Date::now();
  portfolio->manager.lock()->recordTransactions(
      {{BasicTransaction::Transfer{{Currency::cad(), Decimal(77)}}, today, today, std::nullopt}},
      portfolio, nullptr);
  QApplication::processEvents();
  EXPECT_THAT(kinds(), ElementsAre("Dividend"));
  auto* show = named<QPushButton>(*window, "Show what was just entered");
  ASSERT_TRUE(show->isVisible());
  show->click();
  EXPECT_FALSE(show->isVisible());
  EXPECT_THAT(kinds(), SizeIs(8));
  ASSERT_THAT(table->selectionModel()->selectedRows(), SizeIs(1));
  EXPECT_EQ(table->selectionModel()->selectedRows().front().row(), 7);
}

TEST_F(FindTransactions, IsOfferedWhereThereAreTransactions) {
  EXPECT_TRUE(menuItem(*window, "Find Transactions")->isEnabled());
  DesktopWorld::frameOf(*window).masterSourceViewController->setCurrentDetailObject({});
  EXPECT_FALSE(menuItem(*window, "Find Transactions")->isEnabled());
}

}  // namespace
}  // namespace corvane::testing
