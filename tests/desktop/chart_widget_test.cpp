// Charts in a window: what pointer and keys do, and pictures of every kind.

#include "desktop/charts/chart_widget.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTableView>
#include <QTest>
#include <QXmlStreamReader>
#include <cmath>
#include <cstdlib>
#include <set>

#include "core/market/quote_provider.h"
#include "core/money/year_month_day.h"
#include "desktop/charts/chart_data_dialog.h"
#include "desktop/charts/chart_plot.h"
#include "desktop/charts/pie_chart_widget.h"
#include "desktop/charts/quote_thumbnail.h"
#include "desktop/look/qt_text.h"
#include "desktop/look/theme.h"
#include "presentation/charts/quote_chart_view.h"
#include "presentation/text/formatting.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using desktop::ChartWidget;
using ::testing::ElementsAre;
using Index = std::optional<std::size_t>;

class ChartWidgetTest : public ::testing::Test {
 protected:
  ChartWidgetTest() {
    chart.currency = Currency::usd();
    chart.reset();
    chart.interactiveDataSet = ChartDataSet{.label = "Close"};
    for (int i = 0; i < 100; ++i) {
      chart.interactiveDataSet->entries.push_back({double(i), 100.0 + i});
    }
    chart.changeHandler();
    chart.keyText = [](std::size_t index) { return "day " + std::to_string(index); };
    chart.tooltipProvider = [](std::size_t index) {
      return AttributedText("tip " + std::to_string(index));
    };
    chart.valueSelectedHandler = [this](Index index) { clicks.push_back(index); };
    chart.valueDoubleClickedHandler = [this](std::size_t index) { doubleClicks.push_back(index); };
    widget.resize(700, 400);
    widget.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&widget));
    widget.setFocus();
  }
  ~ChartWidgetTest() override { widget.hide(); }

  void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&widget, static_cast<Qt::Key>(key), modifiers);
  }
  /// What receives the mouse.
  QWidget* plot() { return widget.childAt(widget.width() / 2, widget.height() / 2); }
  /// About where the entry with this x stands; the axes leave the plot a little less than this.
  QPoint near(double share) const { return {static_cast<int>(80 + share * (700 - 80 - 60)), 200}; }

  FiscalChartView chart;
  std::vector<Index> clicks;
  std::vector<std::size_t> doubleClicks;
  TemporaryFolder folder;
  ChartWidget widget{chart, QStringLiteral("Performance")};
};

TEST_F(ChartWidgetTest, IsReadByKeys) {
  press(Qt::Key_Right);
  EXPECT_EQ(chart.currentMouseoverDataIndex(), 0U);
  press(Qt::Key_Right, Qt::ControlModifier);
  EXPECT_EQ(chart.currentMouseoverDataIndex(), 10U);
  EXPECT_TRUE(widget.tooltip().isVisible());
  EXPECT_EQ(widget.accessibleDescription(), QStringLiteral("tip 10"));
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&widget);
  EXPECT_EQ(accessible->role(), QAccessible::Chart);
  EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("tip 10"));
  EXPECT_EQ(accessible->valueInterface()->currentValue().toDouble(), 110);
  press(Qt::Key_End);
  press(Qt::Key_Left);
  press(Qt::Key_Space);
  press(Qt::Key_Return);
  press(Qt::Key_Escape);
  EXPECT_THAT(clicks, ElementsAre(Index(98), std::nullopt));
  EXPECT_THAT(doubleClicks, ElementsAre(98U));
  EXPECT_FALSE(widget.tooltip().isVisible());
}

TEST_F(ChartWidgetTest, ZoomsAboutTheCursor) {
  press(Qt::Key_Home);
  press(Qt::Key_Plus);
  press(Qt::Key_Plus);
  EXPECT_EQ(chart.shownXRange().from, 0);
  EXPECT_NEAR(chart.shownXRange().to, 99.0 / 4, 0.01);
  press(Qt::Key_End);
  EXPECT_EQ(chart.shownXRange().to, 99) << "the cursor never leaves the picture";
  press(Qt::Key_Minus);
  EXPECT_NEAR(chart.shownXRange().from, 99.0 / 2, 0.01);
  press(Qt::Key_0);
  EXPECT_FALSE(chart.isZoomed());
}

TEST_F(ChartWidgetTest, FollowsThePointerAndHidesItsPanel) {
  QTest::mouseMove(plot(), near(0.5));
  ASSERT_TRUE(chart.currentMouseoverDataIndex());
  EXPECT_NEAR(double(*chart.currentMouseoverDataIndex()), 50, 8);
  EXPECT_TRUE(widget.tooltip().isVisible());
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(plot(), &leave);
  EXPECT_FALSE(chart.currentMouseoverDataIndex());
  EXPECT_FALSE(widget.tooltip().isVisible());

  QTest::mouseClick(plot(), Qt::LeftButton, {}, near(0.5));
  QTest::mouseClick(plot(), Qt::LeftButton, {}, QPoint(350, 396));
  ASSERT_EQ(clicks.size(), 2U);
  EXPECT_TRUE(clicks[0]);
  EXPECT_FALSE(clicks[1]) << "below the plot";
}

TEST_F(ChartWidgetTest, KeepsNoPicturesThatNobodySees) {
  auto* plot = static_cast<desktop::ChartPlot*>(widget.findChild<QCustomPlot*>());
  const auto buffers = [&] { return plot->bufferCount(); };
  FiscalChartView unseenChart;
  const desktop::ChartWidget unseen(unseenChart, QStringLiteral("Unseen"));
  ASSERT_TRUE(QTest::qWaitFor([&] { return buffers() == 1; }));
  QCoreApplication::processEvents();
  EXPECT_EQ(static_cast<desktop::ChartPlot*>(unseen.findChild<QCustomPlot*>())->bufferCount(), 0)
      << "what was never shown";
  const QImage before = widget.grab().toImage();

  press(Qt::Key_Right);
  ASSERT_TRUE(QTest::qWaitFor([&] { return buffers() == 2; })) << "the cursor has one of its own";
  EXPECT_NE(widget.grab().toImage(), before);
  press(Qt::Key_Escape);
  ASSERT_TRUE(QTest::qWaitFor([&] { return buffers() == 1; }));
  EXPECT_EQ(widget.grab().toImage(), before);

  widget.hide();
  EXPECT_EQ(buffers(), 0);
  chart.interactiveDataSet->entries.back().y = 500;
  chart.changeHandler();
  QCoreApplication::processEvents();
  EXPECT_EQ(buffers(), 0) << "what changes meanwhile is drawn when it is seen";
  widget.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget));
  ASSERT_TRUE(QTest::qWaitFor([&] { return buffers() == 1; }));
  EXPECT_NE(widget.grab().toImage(), before);
}

TEST_F(ChartWidgetTest, SelectsASpanByDraggingAndByKeys) {
  QTest::mousePress(plot(), Qt::LeftButton, {}, near(0.2));
  for (const double share : {0.3, 0.5, 0.8}) {
    QMouseEvent move(QEvent::MouseMove, near(share), plot()->mapToGlobal(near(share)), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(plot(), &move);
  }
  QTest::mouseRelease(plot(), Qt::LeftButton, {}, near(0.8));
  ASSERT_TRUE(chart.selection());
  EXPECT_NEAR(chart.selection()->to - chart.selection()->from, 60, 8);
  EXPECT_THAT(clicks, ::testing::IsEmpty()) << "a drag is no click";
  press(Qt::Key_Escape);
  EXPECT_FALSE(chart.selection());
  press(Qt::Key_Home);
  press(Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
  press(Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_EQ(chart.selection(), (BaseChartView::Span{0, 11}));
  EXPECT_EQ(chart.selectionText()->plainText(), "+11.00% ▲ +$11.00\nfrom day 0\nto day 11");
}

TEST_F(ChartWidgetTest, GivesItsDataAndItsPictureAway) {
  press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
  auto* dialog = dynamic_cast<desktop::ChartDataDialog*>(QApplication::activeModalWidget());
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->findChild<QTableView*>()->model()->rowCount(), 100);
  dialog->close();

  const QString csv = desktop::qtPath(folder.path() / "chart.csv");
  ASSERT_TRUE(widget.writeData(csv));
  QFile data(csv);
  ASSERT_TRUE(data.open(QIODevice::ReadOnly));
  EXPECT_TRUE(data.readAll().startsWith("\"Date\",\"Close\"\r\n\"day 0\",\"100\"\r\n"));
  const QString png = desktop::qtPath(folder.path() / "chart.png");
  ASSERT_TRUE(widget.writePicture(png));
  EXPECT_GE(QImage(png).width(), 1400);
  const QString svg = desktop::qtPath(folder.path() / "chart.svg");
  ASSERT_TRUE(widget.writePicture(svg));
  QFile drawing(svg);
  ASSERT_TRUE(drawing.open(QIODevice::ReadOnly));
  QXmlStreamReader xml(&drawing);
  int paths = 0;
  while (!xml.atEnd()) {
    xml.readNext();
    paths += xml.isStartElement() && xml.name() != QLatin1String("g") ? 1 : 0;
  }
  EXPECT_FALSE(xml.hasError());
  EXPECT_GT(paths, 10);
  EXPECT_FALSE(widget.writePicture(QStringLiteral("/no/such/folder/chart.png")));
  EXPECT_FALSE(widget.writeData(QStringLiteral("/no/such/folder/chart.csv")));
}

TEST_F(ChartWidgetTest, SaysWhyItIsEmpty) {
  chart.noDataText = "Nothing was held on these days.";
  chart.clear();
  EXPECT_EQ(widget.accessibleDescription(), QStringLiteral("Nothing was held on these days."));
  for (const int key : {Qt::Key_Right, Qt::Key_Plus, Qt::Key_0, Qt::Key_Escape}) {
    press(key);
  }
  EXPECT_FALSE(chart.currentMouseoverDataIndex());
}

// Pictures of every kind of chart, for the eye: kept where CORVANE_SCREENS names a folder.

class ChartPictures : public ::testing::Test {
 protected:
  ChartPictures() {
    equity->symbol = "ABC";
    equity->calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
    equity->recentTradingPeriod = session;
    equity->previousClosePrice = 101;
    equity->recentPrice = 104;
  }
  ~ChartPictures() override { desktop::theme::apply(Appearance::light); }

  /// Draws `chart` in both appearances and in three sizes; the picture must show something.
  void look(BaseChartView& chart, const std::string& name) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
      desktop::theme::apply(appearance);
      for (const QSize size : {QSize(700, 260), QSize(1100, 420), QSize(2200, 700)}) {
        ChartWidget widget(chart, QStringLiteral("Chart"));
        widget.resize(size);
        widget.show();
        QApplication::processEvents();
        keep(widget.grab().toImage(), name + "-" + std::to_string(size.width()), appearance);
      }
    }
  }
  static void keep(const QImage& picture, const std::string& name, Appearance appearance) {
    EXPECT_FALSE(picture.isNull());
    std::set<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 3) {
      for (int x = 0; x < picture.width(); x += 3) {
        colours.insert(picture.pixel(x, y));
      }
    }
    EXPECT_GT(colours.size(), 3U) << name << " has nothing on it";
    if (const char* kept = std::getenv("CORVANE_SCREENS")) {
      const std::string look = appearance == Appearance::light ? "-light.png" : "-dark.png";
      picture.save(desktop::qtPath(std::filesystem::path(kept) / ("chart-" + name + look)));
    }
  }

  std::vector<Quote> bars(std::size_t count, double seconds, Date first) const {
    std::vector<Quote> quotes;
    for (std::size_t i = 0; i < count; ++i) {
      Quote quote;
      const double place = static_cast<double>(i);
      const double close = 103 + 5 * std::sin(place / 40) + 1.5 * std::sin(place / 7);
      quote.fromDate = first + place * seconds;
      quote.toDate = quote.fromDate + seconds;
      quote.open = Decimal::fromDouble(close - 0.5);
      quote.close = Decimal::fromDouble(close);
      quote.high = Decimal::fromDouble(close + 1 + std::abs(std::sin(place)));
      quote.low = Decimal::fromDouble(close - 1 - std::abs(std::cos(place)));
      quotes.push_back(quote);
    }
    return quotes;
  }

  std::shared_ptr<QuoteProvider> provider = std::make_shared<QuoteProvider>();
  EquityPointer equity = provider->equityWithId("ABC");
  DateRange session{
      YearMonthDay{2021, 3, 1}.startIn(Calendar(*TimeZone::withIdentifier("America/Toronto"))) +
          34200,
      YearMonthDay{2021, 3, 1}.startIn(Calendar(*TimeZone::withIdentifier("America/Toronto"))) +
          57600};
};

TEST_F(ChartPictures, OfQuotes) {
  QuoteChartView chart(QuoteChartView::Mode::presentation);
  chart.currency = Currency::usd();
  chart.reset();
  const Date tenYearsAgo = session.lower() - 3650.0 * 86400;
  chart.setQuotes(bars(2520, 86400 * 1.45, tenYearsAgo),
                  {equity,
                   {tenYearsAgo, session.lower()},
                   QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}});
  chart.highlight(1800);
  look(chart, "ten-years");
  // From an hour before the session to its middle.
  chart.setQuotes(bars(240, 60, session.lower() - 3600), QuoteQuery::currentPeriod(equity, false));
  chart.select(BaseChartView::Span{20, 100});
  look(chart, "session");
  chart.setQuotes(bars(30, 86400, session.lower() - 30.0 * 86400),
                  {equity,
                   {session.lower() - 30.0 * 86400, session.lower()},
                   QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}});
  look(chart, "thirty-days");

  QuoteChartView thumbnail(QuoteChartView::Mode::thumbnail);
  thumbnail.setQuotes(bars(240, 60, session.lower()), QuoteQuery::currentPeriod(equity, true));
  for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
    desktop::theme::apply(appearance);
    QImage picture(160, 60, QImage::Format_ARGB32);
    picture.fill(desktop::theme::sidebarBackground());
    QPainter painter(&picture);
    desktop::paintThumbnail(painter, QRectF(10, 10, 60, 32), thumbnail);
    desktop::paintThumbnail(painter, QRectF(90, 10, 60, 32), thumbnail, QColor(Qt::white));
    painter.end();
    keep(picture.scaled(640, 240), "thumbnail", appearance);
  }
}

TEST_F(ChartPictures, OfTheFirstMinuteOfASession) {
  desktop::theme::apply(Appearance::light);
  QuoteChartView thumbnail(QuoteChartView::Mode::thumbnail);
  thumbnail.setQuotes(bars(1, 60, session.lower()), QuoteQuery::currentPeriod(equity, true));
  QImage picture(60, 32, QImage::Format_ARGB32);
  picture.fill(Qt::white);
  QPainter painter(&picture);
  desktop::paintThumbnail(painter, QRectF(0, 0, 60, 32), thumbnail, QColor(Qt::black));
  painter.end();
  int black = 0;
  for (int y = 4; y < 28; ++y) {
    for (int x = 4; x < 56; ++x) {
      black += qGray(picture.pixel(x, y)) < 60 ? 1 : 0;
    }
  }
  EXPECT_GE(black, 4) << "a box with nothing in it says nothing";
  keep(picture.scaled(480, 256), "thumbnail-of-a-minute", Appearance::light);
}

TEST_F(ChartPictures, OfReturns) {
  BaseChartView chart;
  const auto percent = [](double value) {
    return Decimal::fromDouble(std::round(value * 10000) / 100).description() + "%";
  };
  chart.leftAxisRenderer = std::make_shared<TextAxisRenderer>(percent, 0.0001);
  chart.rightAxisRenderer = chart.leftAxisRenderer;
  ChartDataSet strategy{
      .label = "Strategy Return", .colour = Colour::Name::systemBlue, .lineWidth = 2};
  ChartDataSet hold{.label = "Buy & Hold Return", .colour = Colour::Name::black, .isDashed = true};
  ChartDataSet trades{.label = "Buy/Sell", .shape = ChartDataSet::Shape::circles};
  for (int i = 0; i < 390; ++i) {
    strategy.entries.push_back({double(i), 0.02 * std::sin(i / 50.0)});
    hold.entries.push_back({double(i), 0.03 * std::sin(i / 30.0)});
    if (i % 40 == 0) {
      trades.entries.push_back({double(i), 0.02 * std::sin(i / 50.0)});
      trades.entryColours.push_back(i % 80 == 0 ? Colour::Name::systemBlue
                                                : Colour::Name::systemGreen);
      trades.entrySigns.push_back(i % 80 == 0 ? "B" : "S");
    }
  }
  chart.setNoninteractiveDataSets({hold, strategy});
  chart.interactiveDataSet = trades;
  look(chart, "trades");

  BaseChartView batch;
  batch.leftAxisRenderer = chart.leftAxisRenderer;
  batch.rightAxisRenderer = chart.leftAxisRenderer;
  ChartDataSet holdBars{.label = "Buy & Hold Return",
                        .colour = Colour(Colour::Name::black).withAlpha(0.25),
                        .shape = ChartDataSet::Shape::bars};
  ChartDataSet strategyBars{.label = "Strategy Return", .shape = ChartDataSet::Shape::bars};
  for (int i = 0; i < 22; ++i) {
    holdBars.entries.push_back({i - 0.1, 0.02 * std::cos(i / 3.0)});
    const double value = 0.02 * std::sin(i / 2.0);
    strategyBars.entries.push_back({double(i), value});
    strategyBars.entryColours.push_back(value > 0 ? Colour::Name::systemGreen
                                                  : Colour::Name::systemRed);
  }
  batch.setNoninteractiveDataSets({holdBars});
  batch.interactiveDataSet = strategyBars;
  batch.xAxisMinimum = -0.5;
  batch.xAxisMaximum = 21.5;
  using Mark = ChartLegendEntry::Mark;
  batch.legendEntries = {{"Buy & Hold Return", holdBars.colour, Mark::area},
                         {"Strategy Return", Colour::Name::systemGreen, Mark::area},
                         {"Strategy Return", Colour::Name::systemRed, Mark::area}};
  batch.highlight(4);
  look(batch, "batch");
}

TEST_F(ChartPictures, OfAPieWithManySlices) {
  PieChartView pie;
  const auto colours = Formatting::hueRangeColours(24, 1.0 / 9, 5.0 / 12, 0.6);
  for (std::size_t i = 0; i < 24; ++i) {
    pie.slices.push_back(
        {"SYM" + std::to_string(i), double(i * i), std::to_string(i * i / 43) + "%", colours[i]});
  }
  for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
    desktop::theme::apply(appearance);
    for (const QSize size : {QSize(190, 220), QSize(360, 300)}) {
      desktop::PieChartWidget widget(QStringLiteral("Holdings"));
      widget.setPie(pie);
      widget.resize(size);
      widget.show();
      QApplication::processEvents();
      const auto* list = widget.findChild<QTableView*>();
      EXPECT_EQ(list->model()->rowCount(), 24) << "every slice can be read";
      EXPECT_GE(list->height(), 3 * list->rowHeight(0));
      keep(widget.grab().toImage(), "pie-" + std::to_string(size.width()), appearance);
    }
  }
}

}  // namespace
}  // namespace corvane::testing
