// Screens of equities as the real service has told of them, told again by a service on the loopback
// interface. The pictures are for the eye: kept where CORVANE_SCREENS names a folder.
//
// CORVANE_SHARED_DATA names the folder that holds recorded-answers/; without it these tests are
// skipped.

#include <gmock/gmock.h>

#include <QApplication>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "core/market/price_adjuster.h"
#include "desktop/app/main_queue_pump.h"
#include "desktop/desktop_world.h"
#include "desktop/equity/equity_view.h"
#include "desktop/look/qt_text.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "marketdata/yahoo/yahoo_quote_provider.h"
#include "marketdata/yahoo_loopback_service.h"
#include "support/shared_data.h"

namespace corvane::testing {
namespace {

using Service = YahooLoopbackService;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// What is shown of an equity. Files are names of recordings.
struct Recorded {
  std::string symbol;
  std::string quote;  ///< empty where none was recorded; then zone and currency are told here
  std::string chart;
  std::string zone = "America/New_York";
  std::string currency = "USD";
  YearMonthDay from;
  YearMonthDay to;
  std::size_t bars;        ///< of the history
  std::string firstClose;  ///< as its table writes it
};

void PrintTo(const Recorded& recorded, std::ostream* out) {
  *out << recorded.symbol;
}

/// The service tells the events of the days that it is asked for. A recording would tell all of its
/// own with every part of a period, and each of them would count as many times.
std::string withoutEvents(std::string body) {
  const auto name = body.find("\"events\"");
  if (name == std::string::npos) {
    return body;
  }
  const auto begin = body.find('{', name);
  std::size_t end = begin + 1;
  for (int depth = 1; depth > 0; ++end) {
    depth += body.at(end) == '{' ? 1 : body.at(end) == '}' ? -1 : 0;
  }
  return body.replace(begin, end - begin, "{}");
}

class RecordedScreens : public ::testing::TestWithParam<Recorded> {
 protected:
  void SetUp() override {
    const auto index = sharedData("recorded-answers/index.json");
    if (!index) {
      GTEST_SKIP() << "CORVANE_SHARED_DATA names no folder with recorded-answers/";
    }
    folder_ = index->parent_path();
    surroundings.defaults = &defaults;
    surroundings.presentError = [this](const Error& error) {
      errors.push_back(error.description().value_or("?"));
    };
  }
  void TearDown() override {
    screen.reset();
    provider.reset();
    QApplication::processEvents();
    desktop::theme::apply(Appearance::light);
  }

  void play(const std::string& path, const std::string& name) {
    std::ifstream file(folder_ / name, std::ios::binary);
    ASSERT_TRUE(file) << name;
    server.script(path, {{.body = withoutEvents({std::istreambuf_iterator<char>(file), {}})}});
  }
  EquityPointer equityOf(const Recorded& recorded) {
    EquityPointer equity = provider->equityWithId(recorded.symbol);
    if (recorded.quote.empty()) {
      equity->isAuthoritative = true;
      equity->calendar = Calendar(*TimeZone::withIdentifier(recorded.zone));
      equity->currency = Currency::byCode().find(recorded.currency)->second;
      return equity;
    }
    play(Service::quotePath, recorded.quote);
    bool isDone = false;
    provider->refreshEquities({equity}, [&](const ErrorPointer& error) {
      DispatchQueue::main()->async([&, error] {
        EXPECT_EQ(error, nullptr) << *error;
        isDone = true;
      });
    });
    EXPECT_TRUE(DesktopWorld::waitUntil([&] { return isDone; }));
    return equity;
  }
  void settle() {
    EXPECT_TRUE(DesktopWorld::waitUntil(
        [&] { return !screen->overview->isFetching() && !screen->history->isFetching(); }));
  }
  void look(desktop::EquityView& view, const std::string& name) {
    const char* kept = std::getenv("CORVANE_SCREENS");
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
      for (const QSize size : {QSize(690, 590), QSize(1120, 850), QSize(2200, 1390)}) {
        if (kept == nullptr && size.width() > 690) {
          continue;
        }
        desktop::theme::apply(appearance);
        view.setFixedSize(size);
        for (int i = 0; i < 3; ++i) {
          QApplication::processEvents();
        }
        const QImage picture = view.grab().toImage();
        if (kept != nullptr) {
          const std::string file = name + "-" + std::to_string(size.width()) +
                                   (appearance == Appearance::light ? "-light.png" : "-dark.png");
          picture.save(desktop::qtPath(std::filesystem::path(kept) / file));
        }
      }
    }
  }

  desktop::MainQueuePump pump;
  YahooLoopbackService server;
  TemporaryFolder folder;
  UserDefaults defaults{folder / "settings.json"};
  std::shared_ptr<SwitchableQuoteProvider> provider = std::make_shared<SwitchableQuoteProvider>(
      std::make_shared<YahooQuoteProvider>(server.service()), folder / "Cache.sqlite3");
  ScreenSurroundings surroundings;
  std::vector<std::string> errors;
  std::shared_ptr<EquityViewController> screen;

 private:
  std::filesystem::path folder_;
};

TEST_P(RecordedScreens, ShowWhatWasTold) {
  const Recorded& recorded = GetParam();
  screen = EquityViewController::make(surroundings);
  const EquityPointer equity = equityOf(recorded);
  play(Service::chartPath, recorded.chart);
  desktop::EquityView view(screen);
  view.show();
  screen->overview->selectPeriod(OverviewViewController::periodPresets.size() - 1);
  screen->setCurrentEquity(equity);
  screen->setShown(true);
  settle();
  EXPECT_THAT(errors, IsEmpty());
  const QuoteChartView& chart = screen->overview->chart;
  ASSERT_FALSE(chart.isEmpty());
  EXPECT_THAT(chart.tooltipProvider(0).plainText(), HasSubstr(recorded.firstClose));
  EXPECT_FALSE(screen->overview->dateRangeText().empty());
  look(view, recorded.symbol + "-overview");

  screen->selectTab(1);
  HistoryViewController& history = *screen->history;
  history.datesPicker.setDates(recorded.from, recorded.to);
  history.datesPicker.chooseInterval(QuoteInterval::oneDay);
  settle();
  EXPECT_THAT(errors, IsEmpty());
  ASSERT_EQ(history.table().numberOfRows(), recorded.bars);
  EXPECT_EQ(history.table().cell(0, 4).plainText(), recorded.firstClose);
  history.chart.pointerMovedTo(static_cast<double>(recorded.bars) - 1);
  look(view, recorded.symbol + "-history");
  for (std::size_t row = 0; row < history.table().numberOfRows(); ++row) {
    for (std::size_t column = 1; column < history.table().columns().size(); ++column) {
      EXPECT_THAT(history.table().cell(row, column).plainText(), Not(HasSubstr("nan")));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, RecordedScreens,
                         ::testing::Values(Recorded{.symbol = "AAPL",
                                                    .quote = "quote-AAPL.json",
                                                    .chart = "chart-AAPL-2025-half-year.json",
                                                    .from = {2025, 4, 30},
                                                    .to = {2025, 10, 29},
                                                    .bars = 127,
                                                    .firstClose = "$212.50"},
                                           Recorded{.symbol = "OCDO.L",
                                                    .quote = "quote-OCDO.L.json",
                                                    .chart = "chart-OCDO.L-2020-01-02.json",
                                                    .from = {2020, 1, 2},
                                                    .to = {2020, 1, 2},
                                                    .bars = 1,
                                                    .firstClose = "£12.595"},
                                           Recorded{.symbol = "1301.T",
                                                    .quote = "",
                                                    .chart = "chart-1301.T-tokyo-month.json",
                                                    .zone = "Asia/Tokyo",
                                                    .currency = "JPY",
                                                    .from = {2024, 11, 6},
                                                    .to = {2024, 12, 6},
                                                    .bars = 23,
                                                    .firstClose = "¥4,035"},
                                           Recorded{.symbol = "0P000071W8.TO",
                                                    .quote = "quote-0P000071W8.TO.json",
                                                    .chart = "chart-0P000071W8.TO-2020-01-02.json",
                                                    .from = {2020, 1, 2},
                                                    .to = {2020, 1, 2},
                                                    .bars = 1,
                                                    .firstClose = "CA$73.72"},
                                           Recorded{.symbol = "EURUSD=X",
                                                    .quote = "quote-EURUSD=X.json",
                                                    .chart = "chart-EURUSD=X-2020-01-02.json",
                                                    .from = {2020, 1, 1},
                                                    .to = {2020, 1, 3},
                                                    .bars = 3,
                                                    .firstClose = "$1.12208"},
                                           Recorded{.symbol = "INR=X",
                                                    .quote = "",
                                                    .chart = "chart-INR=X-nulls.json",
                                                    .zone = "Europe/London",
                                                    .currency = "INR",
                                                    .from = {2017, 7, 10},
                                                    .to = {2017, 7, 13},
                                                    .bars = 4,
                                                    .firstClose = "₹64.6117"},
                                           Recorded{.symbol = "WSKT.JK",
                                                    .quote = "quote-WSKT.JK.json",
                                                    .chart = "chart-WSKT.JK-halted.json",
                                                    .from = {2020, 1, 2},
                                                    .to = {2020, 1, 2},
                                                    .bars = 1,
                                                    .firstClose = "IDR\u00A01,505.00"},
                                           Recorded{.symbol = "MSFT",
                                                    .quote = "",
                                                    .chart = "chart-MSFT-year-dividends.json",
                                                    .from = {2021, 2, 1},
                                                    .to = {2022, 1, 28},
                                                    .bars = 252,
                                                    .firstClose = "$239.64999"}),
                         [](const auto& told) {
                           std::string name = told.param.symbol;
                           std::erase_if(name, [](char c) {
                             return std::isalnum(static_cast<unsigned char>(c)) == 0;
                           });
                           return name;
                         });

}  // namespace
}  // namespace corvane::testing
