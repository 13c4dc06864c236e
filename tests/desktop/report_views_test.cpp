// The reports in the windows, as a user drives them.

#include <gmock/gmock.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTreeWidget>

#include "desktop/charts/chart_widget.h"
#include "desktop/desktop_world.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/reports/explanation_panel.h"
#include "desktop/reports/report_parts.h"
#include "desktop/reports/tax_roles_dialog.h"
#include "desktop/reports/tax_year_view.h"
#include "desktop/window_driver.h"
#include "desktop/workspace/reports_view.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

class ReportViewsTest : public ::testing::Test {
 protected:
  ReportViewsTest() {
    portfolio = world.addPortfolio(*window, "Long Run");
    EXPECT_TRUE(DesktopWorld::show(*window, portfolio));
    window->resize(1200, 800);
    window->show();
  }
  MainSplitViewController& frame() { return DesktopWorld::frameOf(*window); }
  PortfolioViewController& screen() { return *frame().portfolioViewController; }
  QTabWidget& tabs() { return window->workspaceView().portfolioView().tabs(); }
  /// The figures of the page that is seen.
  std::vector<desktop::FigureButton*> figures() {
    std::vector<desktop::FigureButton*> seen;
    for (auto* button : window->findChildren<QAbstractButton*>()) {
      auto* figure = dynamic_cast<desktop::FigureButton*>(button);
      if (figure != nullptr && figure->isVisible()) {
        seen.push_back(figure);
      }
    }
    return seen;
  }
  void openTab(const char* title) {
    menuItem(*window, QString::fromLatin1(title))->trigger();
    EXPECT_EQ(tabs().tabText(tabs().currentIndex()).toStdString(), title);
    EXPECT_TRUE(DesktopWorld::waitUntil(
        [&] { return !screen().returns->isBusy() && !screen().income->isBusy(); }));
  }

  DesktopWorld world;
  std::shared_ptr<desktop::MainWindow> window = world.newWindow();
  PortfolioPointer portfolio;
};

TEST_F(ReportViewsTest, ExplainAFigureByKeyboardAndOpenItsRow) {
  openTab("Returns");
  auto* performance = named<desktop::ChartWidget>(*window, "Performance");
  EXPECT_FALSE(performance->isVisible()) << "the tab has charts of its own";
  ASSERT_GE(figures().size(), 6U);
  EXPECT_THAT(figures().front()->accessibleName().toStdString(), HasSubstr("Time-weighted: +"));
  auto* panel = window->findChild<desktop::ExplanationPanel*>();
  EXPECT_FALSE(panel->isVisible());
  QTest::keyClick(figures().front(), Qt::Key_Return);
  ASSERT_TRUE(panel->isVisible());
  auto* outline = panel->findChild<QTreeWidget*>();
  EXPECT_EQ(outline->topLevelItemCount(), 1);
  EXPECT_TRUE(outline->topLevelItem(0)->isExpanded());
  QTest::keyClick(outline, Qt::Key_Escape);
  EXPECT_FALSE(panel->isVisible());

  openTab("Holdings");
  EXPECT_TRUE(performance->isVisible());
  auto* holdings = named<QTableView>(*tabs().currentWidget(), "Holdings");
  for (int row = 0; row < holdings->model()->rowCount(); ++row) {
    if (holdings->model()->index(row, 0).data().toString().startsWith(QLatin1String("NOR"))) {
      holdings->setCurrentIndex(holdings->model()->index(row, 4));
    }
  }
  holdings->setFocus();
  menuItem(*window, "Explain This Number")->trigger();
  ASSERT_TRUE(panel->isVisible());
  EXPECT_THAT(outline->topLevelItem(0)->text(0).toStdString(), HasSubstr("Cost base after row 7"));
  emit outline->itemActivated(outline->topLevelItem(0), 0);
  // The root is a rounding of what a row has made, whose leaf leads to it.
  QTreeWidgetItem* leaf = outline->topLevelItem(0);
  while (leaf->childCount() > 0) {
    leaf = leaf->child(leaf->childCount() - 1);
  }
  EXPECT_THAT(leaf->text(2).toStdString(), HasSubstr("row 7 of “Long Run”"));
  emit outline->itemActivated(leaf, 0);
  EXPECT_EQ(tabs().tabText(tabs().currentIndex()), QStringLiteral("Transactions"));
  EXPECT_EQ(screen().transactions->selectedTransactions(),
            std::vector{portfolio->transactions()[6]});
}

/// Deposits stand at the rates of their days in a column that other figures do not have. It comes
/// later than the others, and leaves the outline and the keyboard where the reader has them.
TEST(ExplanationPanelTest, ShowsTheRatesOfTheDaysOfDepositsWhenTheyAreThere) {
  ExplanationViewController controller;
  desktop::ExplanationPanel panel(controller);
  panel.resize(700, 400);
  panel.show();
  auto* outline = panel.findChild<QTreeWidget*>();
  bool isThere = false;
  std::function<void()> whenThere;
  controller.explain(
      [&]() -> std::optional<TrailNode> {
        TrailNode leaf{.label = "Brought in", .value = 500, .unit = "USD"};
        TrailNode deposits = sumOf("In USD", "USD", {std::move(leaf)});
        if (isThere) {
          deposits.children.front().atRatesOfDays = deposits.atRatesOfDays = 650;
        }
        return sumOf("Net deposits", "CAD", {std::move(deposits)});
      },
      [&](std::function<void()> told) { whenThere = std::move(told); });
  constexpr int rates = 3;
  EXPECT_TRUE(outline->isColumnHidden(rates));
  outline->topLevelItem(0)->child(0)->setExpanded(true);
  auto* copy = buttonWith(panel, QStringLiteral("Copy as Text"));
  copy->setFocus();
  isThere = true;
  whenThere();
  EXPECT_FALSE(outline->isColumnHidden(rates));
  const QTreeWidgetItem* sum = outline->topLevelItem(0)->child(0);
  EXPECT_EQ(sum->text(rates), QStringLiteral("650 CAD"));
  EXPECT_EQ(sum->child(0)->text(rates), QStringLiteral("650 CAD"));
  EXPECT_EQ(outline->topLevelItem(0)->text(rates), QString());
  EXPECT_TRUE(sum->isExpanded());
  EXPECT_EQ(panel.focusWidget(), copy);

  controller.explain(
      [] { return std::optional(TrailNode{.label = "Cost in “\u05D1\u05D9\u05EA”", .value = 7}); });
  EXPECT_TRUE(outline->isColumnHidden(rates));
  EXPECT_EQ(outline->topLevelItem(0)->text(0), u"Cost in “\u2068\u05D1\u05D9\u05EA\u2069”")
      << "a name from right to left stands apart from what is around it";
}

TEST_F(ReportViewsTest, ShowTheReportsOfTheWorkspaceFromTheSourceList) {
  auto* list = named<QListWidget>(*window, "Reports");
  const auto choose = [&](const char* report) {
    list->setCurrentItem(list->findItems(QLatin1String(report), Qt::MatchExactly).front());
  };
  choose("Tax Year");
  EXPECT_EQ(frame().currentDetailTab(), MainSplitViewController::DetailTab::report);
  auto& tax = *frame().reports->taxYear;
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return !tax.isBusy(); }));
  auto* year = named<QComboBox>(*window, "Tax year");
  year->setCurrentIndex(1);
  emit year->activated(1);
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return !tax.isBusy(); }));
  auto* disposals = named<QTableView>(*window, "Disposals");
  EXPECT_EQ(disposals->model()->rowCount(), 1);
  EXPECT_GT(disposals->viewport()->height(), 0);

  window->workspaceView().reportsView().taxYear().openRoles();
  auto* sheet = openDialog<desktop::TaxRolesDialog>(*window);
  ASSERT_NE(sheet, nullptr);
  auto* role = named<QComboBox>(*sheet, "Role of Long Run");
  role->setCurrentIndex(2);
  EXPECT_FALSE(buttonWith(*sheet, "Apply")->isEnabled()) << "whose it is has to be said";
  auto* person = named<QLineEdit>(*sheet, "Person of Long Run");
  EXPECT_TRUE(person->isEnabled());
  QTest::keyClicks(person, "Kim");
  buttonWith(*sheet, "Apply")->click();
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return tax.persons().back() == "Kim"; }));
  EXPECT_TRUE(window->document()->isDocumentEdited());

  choose("Returns");
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return !frame().reports->returns->isBusy(); }));
  EXPECT_GE(figures().size(), 6U);
  EXPECT_TRUE(menuItem(*window, "Export…")->isEnabled());
  frame().masterSourceViewController->setCurrentDetailObject(portfolio);
  EXPECT_TRUE(list->selectedItems().isEmpty()) << "a portfolio is shown";
  choose("Income");
  EXPECT_EQ(frame().reports->shown(), WorkspaceReport::income);
  EXPECT_EQ(frame().masterSourceViewController->selectedPortfolioRow(), std::nullopt);
}

}  // namespace
}  // namespace corvane::testing
