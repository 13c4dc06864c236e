// The desktop program with its windows in a folder of the test, on an invented market.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <functional>
#include <memory>

#include "desktop/app/desktop_application.h"
#include "desktop/app/main_window.h"
#include "desktop/invented_market.h"
#include "desktop/look/theme.h"
#include "desktop/workspace/workspace_view.h"
#include "support/ledger_builder.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

class DesktopWorld {
 public:
  TemporaryFolder folder;
  std::shared_ptr<InventedMarket> market = std::make_shared<InventedMarket>();
  UserDefaults defaults{folder / "settings.json"};
  desktop::DesktopApplication application{{.makeSourceProvider = [this] { return market; },
                                           .defaults = &defaults,
                                           .cacheURL = folder / "cache.sqlite3"}};

  /// Runs the event loop until `isDone` holds; whether it did within ten seconds.
  static bool waitUntil(const std::function<bool()>& isDone) {
    QElapsedTimer clock;
    clock.start();
    QTimer poll;
    poll.start(5);
    while (!isDone() && !clock.hasExpired(10'000)) {
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return isDone();
  }

  /// The window of a new workspace.
  std::shared_ptr<desktop::MainWindow> newWindow() {
    const auto document = application.documentController().newDocument();
    return application.windows().windowOf(*document);
  }

  static MainSplitViewController& frameOf(desktop::MainWindow& window) {
    return window.workspaceView().controller();
  }

  /// A portfolio in Canadian dollars called `name` in the workspace of `window`, with a deposit,
  /// trades in two equities and one in US dollars over three years, up to today.
  PortfolioPointer addPortfolio(desktop::MainWindow& window, const std::string& name) {
    auto& document = *window.document();
    const auto& manager = document.model()->portfolioManagers.front();
    const auto portfolio = manager->createPortfolio(Currency::cad());
    portfolio->name = name;
    manager->portfolioPropertiesDidChange(portfolio);
    const YearMonthDay today = YearMonthDay::of(Date::now(), manager->calendar);
    const auto on = [&](int yearsAgo, int month) {
      return YearMonthDay{today.year - yearsAgo, month, 10}.startIn(manager->calendar);
    };
    const auto row = [](BasicTransaction::Kind kind, Date date) {
      return BasicTransaction{std::move(kind), date, date, std::nullopt};
    };
    const auto cad = [](int amount) { return CurrencyAmount{Currency::cad(), Decimal(amount)}; };
    const auto trade = [&](const char* symbol, int shares, int cost) {
      return BasicTransaction::Trade{market->equityWithId(symbol), cad(cost), Decimal(cost),
                                     Decimal(shares)};
    };
    manager->recordTransactions(
        {row(BasicTransaction::Transfer{cad(60000)}, on(3, 1)),
         row(trade("NOR", 300, 18000), on(3, 2)), row(trade("LUM", 150, 9000), on(3, 6)),
         row(trade("WHT", 500, 12500), on(2, 3)),
         row(BasicTransaction::Yield{BasicTransaction::YieldType::dividend,
                                     market->equityWithId("NOR"), Decimal(300), cad(240),
                                     Decimal(240)},
             on(2, 9)),
         row(trade("LUM", -50, -4200), on(1, 4)), row(trade("NOR", 100, 7000), on(1, 8))},
        portfolio, nullptr);
    frameOf(window).masterSourceViewController->portfoliosDidChange();
    return portfolio;
  }

  /// Shows `portfolio` and waits for its prices.
  static bool show(desktop::MainWindow& window, const PortfolioPointer& portfolio) {
    MainSplitViewController& frame = frameOf(window);
    frame.masterSourceViewController->setCurrentDetailObject(portfolio);
    return waitUntil([&] { return !frame.portfolioViewController->isFetching(); });
  }
};

}  // namespace corvane::testing
