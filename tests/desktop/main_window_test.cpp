#include "desktop/app/main_window.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QComboBox>
#include <QCompleter>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <set>

#include "desktop/desktop_world.h"
#include "desktop/look/qt_text.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/window_driver.h"
#include "desktop/workspace/dates_time_zone_dialog.h"

namespace corvane::testing {
namespace {

using desktop::DatesTimeZoneDialog;
using desktop::MainWindow;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class MainWindowTest : public ::testing::Test {
 protected:
  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
};

TEST_F(MainWindowTest, MakesAPortfolioThroughTheForm) {
  EXPECT_FALSE(menuItem(*window, "Import Transactions")->isEnabled());
  menuItem(*window, "New Portfolio")->trigger();
  auto* form = openDialog<QDialog>(*window);
  ASSERT_NE(form, nullptr);
  auto* name = named<QLineEdit>(*form, "Name");
  EXPECT_EQ(name->text(), "Untitled Portfolio");

  name->clear();
  EXPECT_FALSE(buttonWith(*form, "Create")->isEnabled());
  QTest::keyClicks(name, "Savings");
  buttonWith(*form, "Create")->click();

  ASSERT_EQ(window->document()->model()->portfolios().size(), 1U);
  EXPECT_EQ(window->document()->model()->portfolios().front()->name, "Savings");
  EXPECT_TRUE(window->isWindowModified());
  EXPECT_TRUE(menuItem(*window, "Import Transactions")->isEnabled());
  EXPECT_EQ(named<QListView>(*window, "Portfolios")->selectionModel()->selectedIndexes().size(), 1);
}

/// The headings of `table` from left to right.
QStringList headings(const QTableView& table) {
  QStringList shown;
  const QHeaderView& heading = *table.horizontalHeader();
  for (int place = 0; place < heading.count(); ++place) {
    const int column = heading.logicalIndex(place);
    if (!table.isColumnHidden(column)) {
      shown.append(table.model()->headerData(column, Qt::Horizontal).toString());
    }
  }
  return shown;
}

TEST_F(MainWindowTest, KeepsTheColumnsOfATableAsTheyWereChosen) {
  const auto portfolio = world.addPortfolio(*window, "Home");
  ASSERT_TRUE(DesktopWorld::show(*window, portfolio));
  auto* table = window->findChild<QTableView*>("holdings");
  const std::vector<std::string> none = {"name"};
  const QStringList before = headings(*table);
  ASSERT_GT(before.size(), 4);
  const int sized = table->horizontalHeader()->logicalIndex(2);

  QAction* column = menuItem(*window, before[1]);
  ASSERT_TRUE(column->isCheckable());
  column->trigger();
  table->horizontalHeader()->moveSection(3, 0);
  table->horizontalHeader()->resizeSection(sized, 211);
  ASSERT_TRUE(world.waitUntil([&] {
    return world.defaults.stringList("columns.holdings").value_or(none).front() != "name";
  }));
  QStringList chosen = before;
  chosen.move(3, 0);
  chosen.removeOne(before[1]);
  EXPECT_EQ(headings(*table), chosen);

  const auto other = world.newWindow();
  ASSERT_TRUE(DesktopWorld::show(*other, world.addPortfolio(*other, "Home")));
  auto* again = other->findChild<QTableView*>("holdings");
  EXPECT_EQ(headings(*again), chosen);
  EXPECT_EQ(again->columnWidth(sized), 211);
  menuItem(*other, "Reset Columns")->trigger();
  EXPECT_EQ(headings(*again), before);
}

TEST_F(MainWindowTest, RefreshesPricesOnCommandAndSaysHowOldTheyAre) {
  const auto* status = window->findChild<QLabel*>("priceStatus");
  ASSERT_NE(status, nullptr);
  EXPECT_TRUE(status->isHidden()) << "there is nothing to refresh";
  world.addPortfolio(*window, "Home");
  world.defaults.set("lastAppBundleVersion", "1");  // no first run
  world.application.delegate().applicationDidFinishLaunching();
  ASSERT_TRUE(world.waitUntil([&] {
    return status->text().startsWith("Prices refreshed at ") && status->text().contains("Next at ");
  })) << status->text().toStdString();
  EXPECT_FALSE(status->isHidden());
  EXPECT_EQ(status->accessibleName(), "Prices: " + status->text());

  QAction* refresh = menuItem(*window, "Refresh Prices");
  EXPECT_EQ(refresh->shortcut(), QKeySequence(Qt::Key_F5));
  const int before = world.market->refreshes;
  refresh->trigger();
  EXPECT_EQ(world.market->refreshes, before + 1);
}

TEST_F(MainWindowTest, CancelOfTheFormMakesNothing) {
  menuItem(*window, "New Portfolio")->trigger();
  QTest::keyClick(openDialog<QDialog>(*window), Qt::Key_Escape);
  EXPECT_THAT(window->document()->model()->portfolios(), IsEmpty());
  EXPECT_FALSE(window->isWindowModified());
}

TEST_F(MainWindowTest, NamesAndUndoesTheLastEdit) {
  const auto portfolio = world.addPortfolio(*window, "Home");
  ASSERT_TRUE(world.show(*window, portfolio));
  menuItem(*window, "Portfolio Details")->trigger();
  auto* form = openDialog<QDialog>(*window);
  ASSERT_NE(form, nullptr);
  EXPECT_FALSE(named<QComboBox>(*form, "Primary currency")->isEnabled());
  named<QLineEdit>(*form, "Name")->setText("House");
  buttonWith(*form, "Save")->click();
  EXPECT_EQ(portfolio->name, "House");

  QAction* undo = menuItem(*window, "Undo");
  EXPECT_EQ(undo->text().toStdString(), "&Undo Portfolio Settings");
  undo->trigger();
  EXPECT_EQ(portfolio->name, "Home");
  EXPECT_FALSE(undo->isEnabled());
  EXPECT_EQ(menuItem(*window, "Redo")->text().toStdString(), "&Redo Portfolio Settings");
}

TEST_F(MainWindowTest, DeletesAPortfolioOnlyWhenTheUserMeansIt) {
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Home")));
  menuItem(*window, "Delete Portfolio")->trigger();
  auto* alert = openDialog<QMessageBox>(*window);
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->text().toStdString(), "Are you sure you wish to delete “Home”?");
  EXPECT_EQ(alert->defaultButton()->text().remove('&'), "Cancel");
  QTest::keyClick(alert, Qt::Key_Escape);
  EXPECT_EQ(window->document()->model()->portfolios().size(), 1U);

  menuItem(*window, "Delete Portfolio")->trigger();
  buttonWith(*openDialog<QMessageBox>(*window), "Delete")->click();
  EXPECT_THAT(window->document()->model()->portfolios(), IsEmpty());
}

TEST_F(MainWindowTest, ShowsTheRowsOfTheTables) {
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Home")));
  auto* holdings = named<QTableView>(*window, "Holdings");
  ASSERT_EQ(holdings->model()->rowCount(), 4);
  EXPECT_THAT(holdings->model()->index(1, 0).data().toString().toStdString(), HasSubstr("LUM"));
  EXPECT_EQ(named<QTableView>(*window, "Transactions")->model()->rowCount(), 7);
}

TEST_F(MainWindowTest, DeletesTheSelectedTransactionByKey) {
  const auto portfolio = world.addPortfolio(*window, "Home");
  ASSERT_TRUE(world.show(*window, portfolio));
  window->workspaceView().portfolioView().tabs().setCurrentIndex(1);
  auto* table = named<QTableView>(*window, "Transactions");
  table->selectRow(6);
  QAction* remove = menuItem(*window, "Delete Transaction");
  ASSERT_TRUE(remove->isEnabled());
  remove->trigger();
  EXPECT_EQ(portfolio->transactions().size(), 6U);
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return table->model()->rowCount() == 6; }));
  menuItem(*window, "Undo")->trigger();
  EXPECT_EQ(portfolio->transactions().size(), 7U);
}

TEST_F(MainWindowTest, AsksAboutUnsavedChangesBeforeItCloses) {
  const auto document = window->document();
  document->updateChangeCount(Document::ChangeType::done);
  answerNextAlert("Cancel");
  EXPECT_FALSE(window->close());
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(world.application.documentController().documents().size(), 1U);

  answerNextAlert("Don’t Save");
  EXPECT_TRUE(window->close());
  EXPECT_THAT(world.application.documentController().documents(), IsEmpty());
}

TEST_F(MainWindowTest, OpensARecentWorkspaceFromTheMenu) {
  const auto path = world.folder / "Family.corvane";
  window->document()->save(path);
  const auto again = world.application.documentController().openDocument(path);
  EXPECT_EQ(world.application.windows().windowOf(*again), window);
  window->updateTitle();
  QAction* recent = menuItem(*window, "Open Recent");
  emit recent->menu()->aboutToShow();
  EXPECT_EQ(recent->menu()->actions().front()->text().toStdString(), "Family");
  EXPECT_EQ(window->windowTitle().toStdString(), "Family[*] — Corvane");
}

/// Its keys go on from what is shown; and a caret that blinks in the search box is work for nobody.
TEST_F(MainWindowTest, OpensWithTheKeyboardInTheListOfWhatIsShown) {
  world.addPortfolio(*window, "Home");
  world.addPortfolio(*window, "Away");
  const auto path = world.folder / "Family.corvane";
  window->document()->save(path);
  window->close();
  const auto document = world.application.documentController().openDocument(path);
  window = world.application.windows().windowOf(*document);
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  const auto* list = named<QListView>(*window, "Portfolios");
  EXPECT_TRUE(list->hasFocus());
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
  EXPECT_EQ(DesktopWorld::frameOf(*window).masterSourceViewController->selectedPortfolioRow(), 1U);
}

TEST_F(MainWindowTest, GivesEveryControlAName) {
  ASSERT_TRUE(world.show(*window, world.addPortfolio(*window, "Home")));
  for (QWidget* control : window->findChildren<QWidget*>()) {
    if (control->focusPolicy() == Qt::NoFocus || !control->isVisibleTo(window.get()) ||
        control->objectName().startsWith("qt_")) {
      continue;
    }
    auto* accessible = QAccessible::queryAccessibleInterface(control);
    ASSERT_NE(accessible, nullptr);
    EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty())
        << control->metaObject()->className() << " in "
        << control->parentWidget()->metaObject()->className();
  }
}

/// A workspace that has come from another part of the world.
class TravelledWindow : public MainWindowTest {
 protected:
  const std::filesystem::path path = world.folder / "Family.corvane";
  const std::filesystem::path general = path / WorkspaceDocument::generalPropertiesName;
  std::shared_ptr<WorkspaceDocument> document;

  /// Saves the workspace of the window, has `zone` in its note, and opens it again.
  void reopenAsOf(const std::optional<DatesTimeZone>& zone) {
    window->document()->save(path);
    ASSERT_TRUE(world.application.documentController().closeDocument(window->document()));
    auto properties = GeneralProperties::fromJSON(readText(general));
    properties.datesTimeZone = zone;
    writeText(general, properties.json());
    document = world.application.documentController().openDocument(path);
    window = world.application.windows().windowOf(*document);
  }
  [[nodiscard]] YearMonthDay firstDay() const {
    const auto& manager = document->model()->portfolioManagers.front();
    const auto& rows = manager->portfolios().front()->transactions();
    return YearMonthDay::of(rows.front()->settlementDate(), manager->calendar);
  }
};

TEST_F(TravelledWindow, AsksForTheTimeZoneOfDoubtfulDays) {
  (void)world.addPortfolio(*window, "Home");
  // As if all of it had been recorded three hours further west.
  ASSERT_NO_FATAL_FAILURE(reopenAsOf(DatesTimeZone{"America/Vancouver"}));
  auto* use = buttonWith(*window, "Use America/Vancouver");
  ASSERT_NE(use, nullptr);
  EXPECT_TRUE(use->isVisibleTo(window.get()));
  EXPECT_EQ(firstDay().day, 10);
  ASSERT_TRUE(world.waitUntil([&] { return menuItem(*window, "Import Statement")->isEnabled(); }));
  for (const char* import : {"Import Statement", "Import Transactions"}) {
    menuItem(*window, import)->trigger();
    auto* alert = openDialog<QMessageBox>(*window);
    ASSERT_NE(alert, nullptr) << import;
    EXPECT_THAT(alert->text().toStdString(), HasSubstr("time zone America/Vancouver")) << import;
    alert->buttons().front()->click();
  }
  use->click();
  EXPECT_FALSE(use->isVisibleTo(window.get()));
  EXPECT_TRUE(window->isWindowModified());
  EXPECT_EQ(firstDay().day, 9);
  document->save(path);
  EXPECT_TRUE(readText(general).contains(R"("America/Vancouver","isUsedEverywhere":true)"));
}

TEST_F(TravelledWindow, LetsTheUserNameTheTimeZoneWhereNobodyKnowsIt) {
  const auto& manager = window->document()->model()->portfolioManagers.front();
  const auto home = manager->createPortfolio(Currency::cad());
  const Date day =
      YearMonthDay{2025, 1, 1}.startIn(Calendar(*TimeZone::withIdentifier("Asia/Tokyo")));
  manager->recordTransactions(
      {{BasicTransaction::Transfer{{Currency::cad(), Decimal(100)}}, day, day, std::nullopt}}, home,
      nullptr);
  ASSERT_NO_FATAL_FAILURE(reopenAsOf(std::nullopt));
  EXPECT_EQ(firstDay(), (YearMonthDay{2024, 12, 31}));
  auto* use = buttonWith(*window, "Use Another Time Zone…");
  ASSERT_TRUE(use->isVisibleTo(window.get()));
  use->click();
  auto* sheet = openDialog<DatesTimeZoneDialog>(*window);
  ASSERT_NE(sheet, nullptr);
  auto* go = buttonWith(*sheet, "Use These Days");
  EXPECT_FALSE(go->isEnabled());
  auto* zone = named<QComboBox>(*sheet, "Time zone");
  EXPECT_GT(zone->count(), 400);
  QTest::keyClicks(zone->lineEdit(), "kolk");
  EXPECT_TRUE(zone->accessibleDescription().contains("“kolk” is no time zone"));
  EXPECT_EQ(zone->completer()->currentCompletion(), "Asia/Kolkata");
  zone->lineEdit()->clear();
  QTest::keyClicks(zone->lineEdit(), "Asia/Tokyo");
  ASSERT_TRUE(go->isEnabled());
  go->click();
  EXPECT_EQ(firstDay(), (YearMonthDay{2025, 1, 1}));
  EXPECT_FALSE(use->isVisibleTo(window.get()));
}

TEST_F(TravelledWindow, ChangesTheDecisionAndKeepsWhatWasDoneAndShown) {
  (void)world.addPortfolio(*window, "Home");
  ASSERT_NO_FATAL_FAILURE(reopenAsOf(DatesTimeZone{"America/Vancouver"}));
  const auto portfolio = document->model()->portfolios().front();
  ASSERT_TRUE(DesktopWorld::show(*window, portfolio));
  menuItem(*window, "Transactions")->trigger();
  document->model()->portfolioManagers.front()->deleteTransactions(
      {portfolio->transactions().back()}, portfolio, document->undoManager());
  const std::size_t left = portfolio->transactions().size();
  auto* table = window->findChild<QTableView*>("transactions");
  ASSERT_NE(table, nullptr);
  const auto shownDays = [&] {
    std::set<QString> days;
    for (int row = 0; row < table->model()->rowCount(); ++row) {
      days.insert(table->model()->index(row, 0).data().toString());
    }
    return days;
  };
  ASSERT_TRUE(world.waitUntil([&] { return shownDays().size() == left; }));
  const auto inToronto = shownDays();

  buttonWith(*window, "Use America/Vancouver")->click();
  ASSERT_TRUE(world.waitUntil([&] { return shownDays() != inToronto; }));
  EXPECT_EQ(shownDays().size(), left);
  menuItem(*window, "Time Zone of Days")->trigger();
  auto* sheet = openDialog<DatesTimeZoneDialog>(*window);
  ASSERT_NE(sheet, nullptr);
  EXPECT_EQ(named<QComboBox>(*sheet, "Time zone")->currentText(), "America/Vancouver");
  for (QRadioButton* choice : sheet->findChildren<QRadioButton*>()) {
    if (choice->text().contains("America/Toronto now")) {
      toggleByAccessibility(*choice);
    }
  }
  buttonWith(*sheet, "Use These Days")->click();
  EXPECT_EQ(firstDay().day, 10);
  ASSERT_TRUE(world.waitUntil([&] { return shownDays() == inToronto; }));
  menuItem(*window, "Undo")->trigger();
  EXPECT_EQ(portfolio->transactions().size(), left + 1) << "what was done before can be undone";
}

}  // namespace
}  // namespace corvane::testing
