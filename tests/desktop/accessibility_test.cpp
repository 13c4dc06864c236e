// What somebody hears who does not see: a name for everything, on every screen.

#include <gmock/gmock.h>

#include <QComboBox>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <map>

#include "desktop/accessibility_walk.h"
#include "desktop/app/desktop_application.h"
#include "desktop/app/main_window.h"
#include "desktop/app/screen_renderer.h"
#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "platform/system/resources.h"
#include "samplemarket/sample_market.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using desktop::MainWindow;
using desktop::ScreenRenderer;
namespace fs = std::filesystem;

/// The program with its sample workspace, whose screens all have something on them.
class Accessibility : public ::testing::Test {
 protected:
  std::shared_ptr<QuoteProvider> makeProvider() const {
    YahooService service;
    service.scheme = "http";
    service.apiHost = service.webHost = market.host();
    service.port = market.port();
    return std::make_shared<YahooQuoteProvider>(std::move(service));
  }

  std::shared_ptr<MainWindow> show(const std::shared_ptr<WorkspaceDocument>& document) {
    const auto window = application.windows().windowOf(*document);
    window->show();
    return window;
  }

  /// Goes through the windows that are open while `file` is being drawn.
  void look(const fs::path& file) {
    const std::string screen = file.stem().string();
    const int before = walk.controlCount;
    walk.walkAllWindows();
    controlsOf[screen] = walk.controlCount - before;
    for (const QWidget* top : QApplication::topLevelWidgets()) {
      const auto* alert = qobject_cast<const QMessageBox*>(top);
      EXPECT_TRUE(alert == nullptr || !alert->isVisible() || screen.contains("alert"))
          << screen << " has an alert that nobody asked for: " << alert->text().toStdString();
    }
  }

  TemporaryFolder folder;
  SampleMarket market;
  UserDefaults defaults{folder / "settings.json"};
  desktop::DesktopApplication application{{.makeSourceProvider = [this] { return makeProvider(); },
                                           .defaults = &defaults,
                                           .cacheURL = folder / "cache.sqlite3"}};
  AccessibilityWalk walk;
  std::map<std::string, int> controlsOf;  ///< by the name of the screen
};

TEST_F(Accessibility, HasANameForEverythingOnEveryScreen) {
  const auto written = [this](const fs::path& file) { look(file); };
  const auto full =
      application.documentController().openDocument(resourcePath("SampleMarket.corvane"));
  const auto window = show(full);
  EXPECT_TRUE(ScreenRenderer(*window, folder / "screens").renderAll(written));
  window->hide();
  const auto blank = show(application.documentController().newDocument());
  EXPECT_TRUE(ScreenRenderer(*blank, folder / "screens").renderBlank(written));
  EXPECT_THAT(walk.unnamed, ::testing::IsEmpty());

  // Sheets and menus are looked at while they are open, and screens have their controls.
  const int bare = controlsOf.at("start-light");
  for (const std::string screen : {"settings",
                                   "menu-edit",
                                   "search-matches",
                                   "form-transaction-buy-1000x640",
                                   "form-bulk-transactions-1000x640",
                                   "form-import-fields",
                                   "form-new-portfolio-random",
                                   "form-statement",
                                   "form-statement-imports",
                                   "panel-export",
                                   "panel-import",
                                   "sheet-export-fields",
                                   "alert-delete",
                                   "chart-data",
                                   "window-help",
                                   "keyboard-shortcuts",
                                   "portfolio-1-retirement-gains",
                                   "portfolio-1-retirement-explanation",
                                   "equity-1-cto60-history",
                                   "equity-1-cto60-scenario",
                                   "equity-1-cto60-scenario-heat-map",
                                   "equity-1-cto60-scenario-batch-each-day-in-period",
                                   "reports-roles"}) {
    ASSERT_TRUE(controlsOf.contains(screen + "-light")) << screen << " is not drawn";
    EXPECT_GT(controlsOf.at(screen + "-light"), bare) << screen;
  }
  EXPECT_TRUE(controlsOf.contains("empty-portfolio-dark"));
}

TEST(AccessibilityOfAWindow, LacksTheNameOfABoxThatOnlyTellsItsValue) {
  QDialog window;
  window.setWindowTitle(QStringLiteral("Form"));
  auto* column = new QVBoxLayout(&window);
  auto* unnamed = new QComboBox;
  auto* named = new QComboBox;
  named->setAccessibleName(QStringLiteral("Interval"));
  for (QComboBox* box : {unnamed, named}) {
    box->addItem(QStringLiteral("1 day"));
    column->addWidget(box);
  }
  window.show();
  AccessibilityWalk walk;
  walk.walk(window);
  EXPECT_EQ(walk.controlCount, 3) << "the window and its boxes";
  EXPECT_THAT(walk.unnamed, ::testing::SizeIs(1));
  EXPECT_EQ(nameOf(*QAccessible::queryAccessibleInterface(named)), QStringLiteral("Interval"));
  EXPECT_TRUE(nameOf(*QAccessible::queryAccessibleInterface(unnamed)).isEmpty());
}

TEST(AccessibilityOfAWindow, LacksWhatNobodyHasNamed) {
  QDialog window;
  window.setWindowTitle(QStringLiteral("Form"));
  auto* column = new QVBoxLayout(&window);
  auto* button = new QPushButton(QStringLiteral("…"));
  column->addWidget(button);
  column->addWidget(new QPushButton(QStringLiteral("Done")));
  window.show();
  AccessibilityWalk walk;
  walk.walk(window);
  EXPECT_EQ(walk.controlCount, 3) << "the window and its buttons";
  EXPECT_THAT(walk.unnamed, ::testing::SizeIs(1));
  button->setAccessibleName(QStringLiteral("Choose a file"));
  AccessibilityWalk again;
  again.walk(window);
  EXPECT_THAT(again.unnamed, ::testing::IsEmpty());
}

}  // namespace
}  // namespace corvane::testing
