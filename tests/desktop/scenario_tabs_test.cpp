// The tabs that replay a strategy, as a user drives them.

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

#include "desktop/charts/chart_widget.h"
#include "desktop/desktop_world.h"
#include "desktop/equity/equity_view.h"
#include "desktop/scenario/heat_map_dialog.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

class ScenarioTabsTest : public ::testing::Test {
 protected:
  ScenarioTabsTest() {
    frame().masterSourceViewController->setCurrentDetailObject(world.market->equityWithId("LUM"));
    window->activateWindow();
  }
  MainSplitViewController& frame() { return DesktopWorld::frameOf(*window); }
  ScenarioDetailViewController& detail() { return *frame().scenarioDetailViewController; }
  ScenarioBatchViewController& batch() { return *frame().scenarioBatchViewController; }
  QTabWidget& tabs() { return window->workspaceView().equityView().tabs(); }
  static bool settles(const ScenarioViewController& screen) {
    return DesktopWorld::waitUntil([&] { return !screen.isBusy(); });
  }
  /// The control with this name on the tab in front.
  template <typename Widget>
  Widget* control(const QString& name) {
    return named<Widget>(*tabs().currentWidget(), name);
  }

  DesktopWorld world;
  std::shared_ptr<desktop::MainWindow> window = world.newWindow();
};

TEST_F(ScenarioTabsTest, TakeEffectWhenAFieldIsLeftAndCanBeUndone) {
  menuItem(*window, "Scenario")->trigger();
  ASSERT_EQ(tabs().currentIndex(), 2);
  ASSERT_TRUE(settles(detail()));
  EXPECT_GE(control<QTableView>("Scenario table")->model()->rowCount(), 3);

  auto* spread = control<QLineEdit>("Sell when up by");
  EXPECT_EQ(spread->text(), QStringLiteral("5.00%"));
  spread->setFocus();
  spread->selectAll();
  QTest::keyClicks(spread, "90%");
  EXPECT_EQ(detail().strategy().targetSellSpread.description(), "0.05");
  QTest::keyClick(spread, Qt::Key_Return);
  EXPECT_EQ(detail().strategy().targetSellSpread.description(), "0.9");
  EXPECT_EQ(spread->text(), QStringLiteral("90.00%"));
  spread->selectAll();
  QTest::keyClicks(spread, "many");
  QTest::keyClick(spread, Qt::Key_Return);
  EXPECT_EQ(detail().strategy().targetSellSpread.description(), "0.9");
  EXPECT_EQ(spread->accessibleDescription(), QStringLiteral("“many” is not a number."));
  ASSERT_TRUE(settles(detail()));
  menuItem(*window, "Undo Strategy Change")->trigger();
  EXPECT_EQ(spread->text(), QStringLiteral("5.00%"));
  EXPECT_EQ(spread->accessibleDescription(), QString());

  auto* most = control<QLineEdit>("Spend at most");
  control<QCheckBox>("No limit for purchases")->click();
  EXPECT_EQ(most->text(), QStringLiteral("No limit"));
  EXPECT_FALSE(most->isEnabled());
  control<QCheckBox>("No limit for purchases")->click();
  EXPECT_EQ(most->text(), QStringLiteral("CA$1,000.00"));
  EXPECT_FALSE(control<QLineEdit>("Stop loss: buy when up by")->isEnabled());
  toggleByAccessibility(*control<QCheckBox>("Stop loss"));
  EXPECT_TRUE(control<QLineEdit>("Stop loss: buy when up by")->isEnabled());
}

TEST_F(ScenarioTabsTest, LeadToEachOther) {
  tabs().setCurrentIndex(2);
  ASSERT_TRUE(settles(detail()));
  buttonWith(*tabs().currentWidget(), "Make Batch")->click();
  ASSERT_EQ(tabs().currentIndex(), 3);
  ASSERT_TRUE(settles(batch()));
  auto* table = control<QTableView>("Scenario batch table");
  ASSERT_GT(table->model()->rowCount(), 5);
  for (int column = 1; column < table->model()->columnCount(); ++column) {
    for (int row = 0; row < table->model()->rowCount(); ++row) {
      const QModelIndex cell = table->model()->index(row, column);
      const QFontMetrics metrics(cell.data(Qt::FontRole).value<QFont>());
      EXPECT_GT(table->columnWidth(column), metrics.horizontalAdvance(cell.data().toString()))
          << "rows that come later are shown whole, column " << column;
    }
  }
  auto* goTo = buttonWith(*tabs().currentWidget(), "Go to Detail");
  EXPECT_FALSE(goTo->isEnabled());
  table->selectRow(2);
  EXPECT_EQ(batch().scenarioChartView.highlightedDataIndex(), 2U);
  EXPECT_TRUE(goTo->isEnabled());
  auto* chart = control<desktop::ChartWidget>("Scenario batch chart");
  chart->setFocus();
  QTest::keyClick(chart, Qt::Key_Home);
  QTest::keyClick(chart, Qt::Key_Space);
  EXPECT_EQ(table->currentIndex().row(), 0) << "a click on a bar selects its row";
  control<QComboBox>("Periods")->setCurrentIndex(1);
  emit control<QComboBox>("Periods")->activated(1);
  EXPECT_FALSE(goTo->isEnabled()) << "while a batch is under way";
  ASSERT_TRUE(settles(batch()));
  table->selectRow(3);
  goTo->click();
  EXPECT_EQ(tabs().currentIndex(), 2);
  ASSERT_TRUE(settles(detail()));
  EXPECT_EQ(menuItem(*window, "Undo")->text().toStdString(), "&Undo Strategy Change");
}

TEST_F(ScenarioTabsTest, OpenTheHeatMap) {
  tabs().setCurrentIndex(2);
  auto* button = buttonWith(*tabs().currentWidget(), "Heat Map…");
  EXPECT_FALSE(button->isEnabled()) << "before there is a run";
  ASSERT_TRUE(settles(detail()));
  button->click();
  auto* dialog = openDialog<desktop::HeatMapDialog>(*window);
  ASSERT_NE(dialog, nullptr);
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return !dialog->map().progress().isAnimated; }));
  const QModelIndex cell = named<QTableView>(*dialog, "Returns")->model()->index(4, 4);
  EXPECT_TRUE(cell.data().toString().contains(QStringLiteral("%")));
  EXPECT_TRUE(cell.data(Qt::BackgroundRole).isValid());
  EXPECT_THAT(cell.data(Qt::AccessibleTextRole).toString().toStdString(),
              ::testing::HasSubstr("Buy when down by 5.00%, Sell when up by 5.00%: "));
  named<QTableView>(*dialog, "Returns")->setCurrentIndex(cell);
  EXPECT_EQ(dialog->map().chartedRow(), 4U);
  auto* chart = named<QWidget>(*dialog, "Returns of the row");
  QTest::keyClick(chart, Qt::Key_End);
  EXPECT_THAT(chart->accessibleDescription().toStdString(),
              ::testing::HasSubstr("Buy when down by 5.00%, Sell when up by 20.00%: "));
  named<QComboBox>(*dialog, "Across")->setCurrentIndex(3);
  emit named<QComboBox>(*dialog, "Across")->activated(3);
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return !dialog->map().progress().isAnimated; }));
  EXPECT_EQ(cell.model()->headerData(8, Qt::Horizontal).toString(), QStringLiteral("100.00%"));
  dialog->close();
}

TEST_F(ScenarioTabsTest, NameEveryControl) {
  for (const int tab : {2, 3}) {
    tabs().setCurrentIndex(tab);
    int controls = 0;
    for (const QWidget* widget : tabs().currentWidget()->findChildren<QWidget*>()) {
      const bool isControl = (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isVisible();
      const auto* button = qobject_cast<const QAbstractButton*>(widget);
      if (isControl && qobject_cast<const QDateEdit*>(widget->parentWidget()) == nullptr) {
        ++controls;
        EXPECT_FALSE(widget->accessibleName().isEmpty() &&
                     (button == nullptr || button->text().isEmpty()))
            << widget->metaObject()->className() << " on tab " << tab;
      }
    }
    EXPECT_GT(controls, 20);
  }
}

}  // namespace
}  // namespace corvane::testing
