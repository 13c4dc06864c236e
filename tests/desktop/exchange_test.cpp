// Imports and exports through the panels and sheets of a window.

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QRadioButton>
#include <QScopeGuard>
#include <QSet>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <cstdlib>
#include <fstream>

#include "desktop/desktop_world.h"
#include "desktop/exchange/field_setup_dialog.h"
#include "desktop/exchange/progress_dialog.h"
#include "desktop/exchange/statement_dialog.h"
#include "desktop/exchange/statement_imports_dialog.h"
#include "desktop/exchange/work_progress.h"
#include "desktop/look/qt_text.h"
#include "desktop/portfolio/portfolio_view.h"
#include "desktop/window_driver.h"
#include "exchange/profiles/profile_shelf.h"
#include "platform/system/file_manager.h"

namespace corvane::testing {
namespace {

using desktop::FieldSetupDialog;
using desktop::MainWindow;
using desktop::qtPath;
using desktop::StatementDialog;
using desktop::StatementImportsDialog;
using desktop::WorkProgress;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class ExchangeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("XDG_CONFIG_HOME", (world.folder / "config").c_str(), 1);
    portfolio = world.addPortfolio(*window, "Home");
    ASSERT_TRUE(world.show(*window, portfolio));
  }

  /// Chooses `file` in the panel that is open.
  void choose(const std::filesystem::path& file) {
    auto* panel = openDialog<QFileDialog>(*window);
    ASSERT_NE(panel, nullptr);
    panel->findChild<QLineEdit*>("fileNameEdit")->setText(qtPath(file));
    static_cast<QDialog*>(panel)->accept();
  }

  void importFrom(const std::filesystem::path& file) {
    menuItem(*window, "Import Transactions")->trigger();
    choose(file);
  }

  template <typename Dialog>
  Dialog* waitFor() {
    EXPECT_TRUE(DesktopWorld::waitUntil([&] { return openDialog<Dialog>(*window) != nullptr; }));
    return openDialog<Dialog>(*window);
  }

  /// Presses the button with this text as soon as it can be pressed.
  static void pressWhenReady(QWidget& dialog, const QString& text) {
    QPushButton* ready = nullptr;
    EXPECT_TRUE(DesktopWorld::waitUntil([&] {
      for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
        if (button->isEnabled() && button->text().remove(QLatin1Char('&')) == text) {
          ready = button;
        }
      }
      return ready != nullptr;
    })) << text.toStdString();
    if (ready != nullptr) {
      ready->click();
    }
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
  PortfolioPointer portfolio;
};

TEST_F(ExchangeTest, ImportsAFileWhoseColumnsTheUserSetsUp) {
  const auto file = world.folder / "statement.csv";
  std::ofstream(file) << "What,When,Amount\nDeposit,2026-03-22,500.00\nDeposit,2026-03-25,250.00\n";
  importFrom(file);

  auto* setup = waitFor<FieldSetupDialog>();
  ASSERT_NE(setup, nullptr);
  auto* fields = named<QTableView>(*setup, "Fields");
  EXPECT_EQ(fields->model()->rowCount(), 3);
  EXPECT_EQ(fields->model()->index(1, 2).data().toString().toStdString(), "2026-03-22");
  EXPECT_THAT(setup->findChild<QCheckBox*>()->text().toStdString(), HasSubstr("2 data rows"));
  toggleByAccessibility(*setup->findChild<QCheckBox*>());
  EXPECT_THAT(setup->findChild<QCheckBox*>()->text().toStdString(), HasSubstr("3 data rows"));
  toggleByAccessibility(*setup->findChild<QCheckBox*>());
  const auto choose = [&](int row, const QString& title) {
    auto* menu = named<QComboBox>(*setup, QStringLiteral("Field of column %1").arg(row + 1));
    const int index = menu->findText(title, Qt::MatchStartsWith);
    ASSERT_GE(index, 0);
    menu->setCurrentIndex(index);
    emit menu->activated(index);
    QApplication::processEvents();
  };
  choose(1, "Settlement Date");
  choose(2, "Cash Amount");
  if (const char* kept = std::getenv("CORVANE_SCREENS")) {
    setup->grab().save(qtPath(std::filesystem::path(kept) / "form-import.png"));
  }
  buttonWith(*setup, "Import")->click();

  auto* alert = waitFor<QMessageBox>();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->text().toStdString(), "Imported 2 transactions.");
  EXPECT_EQ(portfolio->transactions().size(), 9U);
  EXPECT_TRUE(window->isWindowModified());
  EXPECT_FALSE(menuItem(*window, "Undo")->isEnabled());
  const auto& picker = DesktopWorld::frameOf(*window).portfolioViewController->datesPicker;
  EXPECT_EQ(picker.startDate(), (YearMonthDay{2026, 3, 22}));
  EXPECT_EQ(picker.endDate(), (YearMonthDay{2026, 3, 25}));
}

TEST_F(ExchangeTest, ShowsWhatIsWrongWithAFileAndImportsNothing) {
  const auto file = world.folder / "broken.csv";
  std::ofstream(file) << "a,b\n1,2,3\n";
  importFrom(file);
  auto* alert = waitFor<QMessageBox>();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->text().toStdString(), "Row 2 has 3 columns but 2 were expected.");
  EXPECT_EQ(portfolio->transactions().size(), 7U);
  alert->accept();
  QApplication::processEvents();
  EXPECT_TRUE(menuItem(*window, "Import Transactions")->isEnabled());
}

TEST_F(ExchangeTest, CancelledSetupImportsNothing) {
  const auto file = world.folder / "statement.csv";
  std::ofstream(file) << "What,When,Amount\nDeposit,2026-03-22,500.00\n";
  importFrom(file);
  auto* setup = waitFor<FieldSetupDialog>();
  QTest::keyClick(setup, Qt::Key_Escape);
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return openDialog<QDialog>(*window) == nullptr; }));
  EXPECT_EQ(portfolio->transactions().size(), 7U);
}

/// The button of `window` with this text; null and a failure where there is none.
template <typename Button>
Button* labelled(const QWidget& window, const QString& text) {
  for (Button* button : window.findChildren<Button*>()) {
    if (button->text().remove(QLatin1Char('&')).startsWith(text)) {
      return button;
    }
  }
  ADD_FAILURE() << "nothing is labelled " << text.toStdString();
  return nullptr;
}

TEST_F(ExchangeTest, HearsAnAssistiveTechnologyInEveryBoxOfAnExport) {
  window->workspaceView().portfolioView().tabs().setCurrentIndex(1);
  menuItem(*window, "Export")->trigger();
  auto* panel = openDialog<QFileDialog>(*window);
  ASSERT_NE(panel, nullptr);
  toggleByAccessibility(*labelled<QRadioButton>(*panel, "Tabs"));
  toggleByAccessibility(*labelled<QCheckBox>(*panel, "Include header row"));
  QApplication::processEvents();
  EXPECT_EQ(panel->defaultSuffix(), "tsv");
  buttonWith(*panel, "Configure Fields…")->click();
  auto* setup = waitFor<FieldSetupDialog>();
  ASSERT_NE(setup, nullptr);
  toggleByAccessibility(*labelled<QCheckBox>(*setup, "Currency symbol"));
  toggleByAccessibility(*labelled<QCheckBox>(*setup, "Accounting style"));
  toggleByAccessibility(*labelled<QCheckBox>(*setup, "Thousands separators"));
  toggleByAccessibility(*labelled<QRadioButton>(*setup, "Format:"));
  QApplication::processEvents();
  EXPECT_TRUE(named<QLineEdit>(*setup, "Date format")->isEnabled());
  buttonWith(*setup, "Done")->click();

  ASSERT_TRUE(
      DesktopWorld::waitUntil([&] { return openDialog<FieldSetupDialog>(*window) == nullptr; }));
  const auto file = world.folder / "rows.tsv";
  choose(file);
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return std::filesystem::exists(file); }));
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return openDialog<QDialog>(*window) == nullptr; }));
  const std::string text = files::read(file);
  EXPECT_EQ(std::ranges::count(text, '\n'), 7) << "no header row";
  EXPECT_THAT(text, HasSubstr("\t\"-18000.00\"\t"));
}

TEST_F(ExchangeTest, RemembersWhereTheColumnsAre) {
  const auto file = world.folder / "statement.csv";
  std::ofstream(file) << "What,When,Amount\nDeposit,2026-03-22,500.00\nDeposit,2026-03-25,250.00\n";
  importFrom(file);
  auto* setup = waitFor<FieldSetupDialog>();
  ASSERT_NE(setup, nullptr);
  buttonWith(*setup, "Remember Layout…")->click();
  auto* asked = setup->findChild<QInputDialog*>();
  ASSERT_NE(asked, nullptr);
  asked->setTextValue("My Bank");
  asked->accept();
  auto* alert = setup->findChild<QMessageBox*>();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->text().toStdString(), "The layout is kept.");
  EXPECT_TRUE(std::filesystem::exists(userProfilesFolder() / "my-bank.toml"));
  alert->accept();
  QTest::keyClick(setup, Qt::Key_Escape);
}

TEST_F(ExchangeTest, ShowsHowFarARecordingIsAndTakesItAllBackWhenCancelled) {
  const auto file = world.folder / "ws.csv";
  {
    std::ofstream text(file);
    text << "transaction_date,settlement_date,account_id,account_type,activity_type,"
            "activity_sub_type,direction,symbol,name,currency,quantity,unit_price,commission,net_"
            "cash_amount\n";
    for (int i = 1; i <= 4000; ++i) {
      text << "2026-03-22,2026-03-22,W1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,," << i << ".00\n";
    }
  }
  menuItem(*window, "Import Statement")->trigger();
  choose(file);
  auto* dialog = waitFor<StatementDialog>();
  ASSERT_NE(dialog, nullptr);
  const std::size_t before = portfolio->transactions().size();
  const auto patience = std::exchange(WorkProgress::patience, std::chrono::milliseconds(0));
  const auto atEnd = qScopeGuard([&] { WorkProgress::patience = patience; });

  // What a user sees and presses while the rows are recorded, for which events are handled then.
  QSet<int> seen;
  bool cancels = true;
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, &look, [&] {
    for (QWidget* shown : QApplication::topLevelWidgets()) {
      auto* bar = qobject_cast<QProgressDialog*>(shown);
      if (bar == nullptr || !bar->isVisible() ||
          bar->labelText() != QStringLiteral("Recording the statement…")) {
        continue;
      }
      seen.insert(bar->value());
      if (cancels && seen.size() > 1) {
        bar->cancel();
      }
    }
  });
  look.start(0);
  pressWhenReady(*dialog, "Import 4000 Rows");
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return seen.size() > 1; }));
  EXPECT_EQ(portfolio->transactions().size(), before);
  EXPECT_TRUE(dialog->isVisible());

  cancels = false;
  seen.clear();
  buttonWith(*dialog, "Import 4000 Rows")->click();
  auto* alert = waitFor<QMessageBox>();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->text().toStdString(), "Imported 4000 transactions.");
  EXPECT_GT(seen.size(), 2);
  EXPECT_EQ(portfolio->transactions().size(), before + 4000);
  alert->accept();
}

TEST_F(ExchangeTest, LooksAtAStatementBeforeItGoesIn) {
  const auto file = world.folder / "ws.csv";
  const auto write = [&](const std::string& day, const std::string& amount) {
    std::ofstream(file)
        << "transaction_date,settlement_date,account_id,account_type,activity_type,"
           "activity_sub_type,direction,symbol,name,currency,quantity,unit_price,commission,net_"
           "cash_amount\n2026-03-22,2026-03-22,W1,TFSA,MoneyMovement,CONTRIBUTION,,,,CAD,,,,500."
           "00\n"
        << day << "," << day << ",W1,TFSA,Corporate,SPINOFF,,,,CAD,,,," << amount << "\n";
  };
  write("2026-03-25", "3.50");
  menuItem(*window, "Import Statement")->trigger();
  choose(file);
  auto* dialog = waitFor<StatementDialog>();
  ASSERT_NE(dialog, nullptr);
  auto* table = named<QTableView>(*dialog, "Lines of the statement");
  ASSERT_EQ(table->model()->rowCount(), 2);
  EXPECT_EQ(table->model()->index(1, 1).data().toString().toStdString(), "refused");
  EXPECT_EQ(table->model()->index(1, 9).data().toString().toStdString(),
            "column “activity_type”: “Corporate / SPINOFF” is not in the layout.");
  EXPECT_FALSE(buttonWith(*dialog, "Import 1 Row")->isEnabled());
  if (const char* kept = std::getenv("CORVANE_SCREENS")) {
    dialog->grab().save(qtPath(std::filesystem::path(kept) / "form-statement-asks.png"));
  }

  auto* answer = named<QComboBox>(*dialog, "What does “Corporate / SPINOFF” mean?");
  answer->setCurrentIndex(answer->findData("cash"));
  buttonWith(*dialog, "Use Answers")->click();
  ASSERT_TRUE(DesktopWorld::waitUntil(
      [&] { return table->model()->index(1, 1).data().toString() == "new"; }));
  // A tick that is taken away leaves the line out.
  const QModelIndex first = table->model()->index(0, 0);
  table->model()->setData(first, Qt::Unchecked, Qt::CheckStateRole);
  ASSERT_TRUE(DesktopWorld::waitUntil(
      [&] { return table->model()->index(0, 1).data().toString() == "left out"; }));
  table->model()->setData(table->model()->index(0, 0), Qt::Checked, Qt::CheckStateRole);
  ASSERT_TRUE(DesktopWorld::waitUntil(
      [&] { return table->model()->index(0, 1).data().toString() == "new"; }));
  pressWhenReady(*dialog, "Import 2 Rows");
  auto* alert = waitFor<QMessageBox>();
  ASSERT_NE(alert, nullptr);
  EXPECT_EQ(alert->text().toStdString(), "Imported 2 transactions.");
  EXPECT_EQ(portfolio->transactions().size(), 9U);
  alert->accept();
  const auto learned = userProfilesFolder() / "wealthsimple-activities.toml";
  EXPECT_THAT(files::read(learned), HasSubstr("\"Corporate / SPINOFF\" = \"cash\""));

  // It is not taken back while nobody knows which rows are its own.
  auto& doubt = window->document()->model()->datesDoubt;
  doubt = DatesDoubt{std::nullopt, TimeZone(), {2026, 3, 23}, {2026, 3, 22}};
  menuItem(*window, "Imports of Statements")->trigger();
  auto* doubtful = waitFor<StatementImportsDialog>();
  ASSERT_NE(doubtful, nullptr);
  buttonWith(*doubtful, "Take Back Import…")->click();
  auto* refusal = waitFor<QMessageBox>();
  ASSERT_NE(refusal, nullptr);
  EXPECT_THAT(refusal->text().toStdString(), HasSubstr("Nothing has been taken back"));
  refusal->accept();
  EXPECT_EQ(portfolio->transactions().size(), 9U);
  doubtful->reject();
  doubt.reset();
  QApplication::processEvents();

  // It is taken back as one edit, which can be undone.
  menuItem(*window, "Imports of Statements")->trigger();
  auto* imports = waitFor<StatementImportsDialog>();
  ASSERT_NE(imports, nullptr);
  auto* list = named<QTableView>(*imports, "Imports");
  ASSERT_EQ(list->model()->rowCount(), 1);
  EXPECT_EQ(list->model()->index(0, 4).data().toString().toStdString(), "2");
  buttonWith(*imports, "Take Back Import…")->click();
  auto* question = imports->findChild<QMessageBox*>();
  ASSERT_NE(question, nullptr);
  buttonWith(*question, "Take Back")->click();
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return portfolio->transactions().size() == 7U; }));
  EXPECT_FALSE(buttonWith(*imports, "Take Back Import…")->isEnabled());
  imports->reject();
  QApplication::processEvents();
  menuItem(*window, "Undo Take Back Import")->trigger();
  EXPECT_EQ(portfolio->transactions().size(), 9U);
}

TEST_F(ExchangeTest, AsksForAllEquitiesInOneGo) {
  const auto file = world.folder / "sq.csv";
  const auto write = [&](const std::string& count) {
    std::ofstream text(file);
    text << "Date;Order #;Transaction;Symbol;Name;ISIN;Quantity;Unit price;Costs;Accrued Interest;"
            "Net Amount;Balance;Currency\n";
    for (int i = 9; i >= 0; --i) {
      const std::string number = std::to_string(i % 8 + 1);
      text << "2" << i % 8 << "-03-2026 12:16:00;" << i << ";Buy;;Fund " << number << ";IE000000000"
           << number << ";" << count << ".0;1.00;0.00;0.00;-" << count << ".00;0.00;CAD\n";
    }
  };
  write("1");
  window->workspaceView().openStatement(file);
  auto* dialog = waitFor<StatementDialog>();
  ASSERT_NE(dialog, nullptr);
  auto* table = named<QTableView>(*dialog, "Lines of the statement");
  const auto isSearching = [&] {
    return std::ranges::any_of(dialog->findChildren<QLabel*>(), [](const QLabel* label) {
      return label->text().contains("Searching for symbols");
    });
  };
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return !isSearching(); }));
  std::vector<QComboBox*> fields;
  for (const char* number : {"2", "1", "8", "7", "6", "5", "4", "3"}) {  // as the lines come
    fields.push_back(named<QComboBox>(*dialog, (std::string("Which symbol has “IE000000000") +
                                                number + "”? (Fund " + number + ")")
                                                   .c_str()));
    ASSERT_NE(fields.back(), nullptr) << number;
  }
  EXPECT_EQ(fields[1]->accessibleDescription().toStdString(), "lines 3 and 11");
  EXPECT_EQ(fields[2]->accessibleDescription().toStdString(), "line 4");
  EXPECT_GT(fields.front()->parentWidget()->parentWidget()->height(), 100)
      << "several are in sight";
  const QList<QLabel*> labels = dialog->findChildren<QLabel*>();
  EXPECT_TRUE(std::ranges::any_of(labels, [](const QLabel* label) {
    return label->isVisible() && label->text().startsWith("8 equities have no symbol yet.");
  }));
  EXPECT_GT(table->height(), 100) << "the questions leave room for the lines";
  // By keyboard alone: a symbol, Tab, the next one, and Enter behind the last.
  EXPECT_TRUE(fields.front()->isAncestorOf(dialog->focusWidget()) ||
              fields.front() == dialog->focusWidget());
  for (int i = 1; i <= 8; ++i) {
    QTest::keyClicks(dialog->focusWidget(), QString("FND%1").arg(i));
    if (i < 8) {
      QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
      EXPECT_TRUE(fields[static_cast<std::size_t>(i)]->isAncestorOf(dialog->focusWidget()) ||
                  fields[static_cast<std::size_t>(i)] == dialog->focusWidget())
          << i;
    }
  }
  if (const char* kept = std::getenv("CORVANE_SCREENS")) {
    dialog->grab().save(qtPath(std::filesystem::path(kept) / "form-statement-equities.png"));
  }
  QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
  pressWhenReady(*dialog, "Import 10 Rows");
  auto* alert = waitFor<QMessageBox>();
  ASSERT_NE(alert, nullptr);
  alert->accept();
  EXPECT_EQ(portfolio->transactions().size(), 17U);

  write("2");
  window->workspaceView().openStatement(file);
  dialog = waitFor<StatementDialog>();
  ASSERT_NE(dialog, nullptr);
  EXPECT_TRUE(buttonWith(*dialog, "Import 10 Rows")->isEnabled()) << "all answers are remembered";
  dialog->reject();
}

TEST_F(ExchangeTest, TakesRatesFromTheMarketWhenTheUserSaysSo) {
  const auto file = world.folder / "ws.csv";
  std::ofstream(file) << "transaction_date,settlement_date,account_id,account_type,activity_type,"
                         "activity_sub_type,direction,symbol,name,currency,quantity,unit_price,"
                         "commission,net_cash_amount\n"
                         "2026-03-20,2026-03-20,W1,TFSA,MoneyMovement,CONTRIBUTION,,,,USD,,,,500\n"
                         "2026-03-24,2026-03-25,W1,TFSA,Trade,BUY,,QRS,Quarries,USD,2,10,0,-20\n";
  window->workspaceView().openStatement(file);
  auto* dialog = waitFor<StatementDialog>();
  ASSERT_NE(dialog, nullptr);
  auto* table = named<QTableView>(*dialog, "Lines of the statement");
  EXPECT_EQ(table->model()->index(1, 9).data().toString().toStdString(),
            "no exchange rate for USD on 24 March 2026.");
  for (QCheckBox* box : dialog->findChildren<QCheckBox*>()) {
    box->click();
  }
  EXPECT_TRUE(DesktopWorld::waitUntil(
      [&] { return table->model()->index(1, 1).data().toString() == "new"; }));
  EXPECT_THAT(table->model()->index(1, 8).data().toString().toStdString(),
              HasSubstr("market close of 24 March 2026"));
  pressWhenReady(*dialog, "Import 2 Rows");
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return portfolio->transactions().size() == 9U; }));
}

TEST_F(ExchangeTest, ExportsTheSelectedTabAsThePanelSays) {
  window->workspaceView().portfolioView().tabs().setCurrentIndex(1);
  menuItem(*window, "Export")->trigger();
  auto* panel = openDialog<QFileDialog>(*window);
  ASSERT_NE(panel, nullptr);
  EXPECT_THAT(panel->selectedFiles().front().toStdString(), HasSubstr("Home.csv"));
  for (QRadioButton* button : panel->findChildren<QRadioButton*>()) {
    if (button->text() == "&Tabs") {
      button->click();
    }
  }
  QApplication::processEvents();
  EXPECT_EQ(panel->defaultSuffix(), "tsv");

  const auto file = world.folder / "rows.tsv";
  choose(file);
  EXPECT_FALSE(panel->isVisible());
  ASSERT_TRUE(DesktopWorld::waitUntil([&] { return std::filesystem::exists(file); }));
  EXPECT_TRUE(DesktopWorld::waitUntil([&] { return openDialog<QDialog>(*window) == nullptr; }));
  const std::string text = files::read(file);
  EXPECT_THAT(text, StartsWith("\"Trade Date\"\t"));
  EXPECT_EQ(std::ranges::count(text, '\n'), 8);
}

}  // namespace
}  // namespace corvane::testing
