// Rows that are drawn to another place with the mouse.

#include <gmock/gmock.h>

#include <QAbstractItemView>
#include <QMimeData>
#include <memory>

#include "desktop/desktop_world.h"
#include "desktop/window_driver.h"

namespace corvane::testing {
namespace {

using desktop::MainWindow;
using ::testing::ElementsAre;

class Drag : public ::testing::Test {
 protected:
  /// Lets what is selected in `view` go in front of `row`, as the view does when the mouse is let
  /// go there; whether it may be let go.
  static bool dropSelection(QAbstractItemView& view, int row) {
    QAbstractItemModel& model = *view.model();
    const std::unique_ptr<QMimeData> data(model.mimeData(view.selectionModel()->selectedIndexes()));
    EXPECT_TRUE(view.dragEnabled() && view.acceptDrops());
    if (data == nullptr || !model.canDropMimeData(data.get(), Qt::MoveAction, row, 0, {})) {
      return false;
    }
    EXPECT_FALSE(model.dropMimeData(data.get(), Qt::MoveAction, row, 0, {}))
        << "the view would take the rows away that have been moved already";
    QApplication::processEvents();
    return true;
  }

  static std::vector<std::string> firstColumn(const QAbstractItemView& view) {
    std::vector<std::string> texts;
    for (int row = 0; row < view.model()->rowCount(); ++row) {
      texts.push_back(view.model()->index(row, 0).data().toString().toStdString());
    }
    return texts;
  }

  static void selectRows(QAbstractItemView& view, const std::vector<int>& rows) {
    view.selectionModel()->clear();
    for (const int row : rows) {
      view.selectionModel()->select(view.model()->index(row, 0),
                                    QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
  }

  DesktopWorld world;
  std::shared_ptr<MainWindow> window = world.newWindow();
};

TEST_F(Drag, ReordersTheWatchlistAndCanBeTakenBack) {
  auto& source = *DesktopWorld::frameOf(*window).masterSourceViewController;
  for (const char* symbol : {"AAA", "BBB", "CCC", "DDD"}) {
    source.addToWatchlist(world.market->equityWithId(symbol));
  }
  window->show();
  QApplication::processEvents();
  auto& list = *named<QAbstractItemView>(*window, "Watchlist");
  selectRows(list, {0, 1});
  ASSERT_TRUE(dropSelection(list, 4));
  EXPECT_THAT(firstColumn(list), ElementsAre("CCC", "DDD", "AAA", "BBB"));
  selectRows(list, {3});
  ASSERT_TRUE(dropSelection(list, 0));
  EXPECT_THAT(firstColumn(list), ElementsAre("BBB", "CCC", "DDD", "AAA"));
  ASSERT_NE(menuItem(*window, "Undo Move “BBB”"), nullptr);
  menuItem(*window, "Undo")->trigger();
  menuItem(*window, "Undo Move 2 Symbols")->trigger();
  EXPECT_THAT(firstColumn(list), ElementsAre("AAA", "BBB", "CCC", "DDD"));
}

TEST_F(Drag, PutsTransactionsOfOneDayInAnotherOrderAndNoOthers) {
  const auto portfolio = world.addPortfolio(*window, "Retirement");
  const auto manager = portfolio->manager.lock();
  const Date day = portfolio->transactions().front()->settlementDate();
  const auto deposit = [&](int amount) {
    return BasicTransaction{
        BasicTransaction::Transfer{CurrencyAmount{Currency::cad(), Decimal(amount)}}, day, day,
        std::nullopt};
  };
  manager->recordTransactions({deposit(11), deposit(22)}, portfolio, nullptr);
  window->show();
  ASSERT_TRUE(DesktopWorld::show(*window, portfolio));
  menuItem(*window, "Transactions")->trigger();
  QApplication::processEvents();
  auto& table = *named<QAbstractItemView>(*window, "Transactions");
  const auto amounts = [&] {
    std::vector<std::string> made;
    for (const auto& row : portfolio->transactions()) {
      if (row->settlementDate() == day) {
        made.push_back(
            std::get<BasicTransaction::Transfer>(row->basic.kind).amount.amount.description());
      }
    }
    return made;
  };
  ASSERT_THAT(amounts(), ElementsAre("60000", "11", "22"));
  selectRows(table, {2});
  EXPECT_TRUE(dropSelection(table, 0));
  EXPECT_THAT(amounts(), ElementsAre("22", "60000", "11"));

  const auto before = firstColumn(table);
  selectRows(table, {1});
  EXPECT_FALSE(dropSelection(table, static_cast<int>(before.size())))
      << "a row cannot leave its day";
  EXPECT_EQ(firstColumn(table), before);
}

}  // namespace
}  // namespace corvane::testing
