// Every figure of the reports that can be explained: its trail comes to what stands on the screen.

#include "exchange/exports/portfolio_exporter.h"
#include "presentation/daily_closes.h"
#include "presentation/portfolio_screen_world.h"
#include "presentation/reports/income_view_controller.h"
#include "presentation/reports/returns_view_controller.h"
#include "presentation/taxes/tax_year_view_controller.h"
#include "reports/trail_checks.h"

namespace corvane::testing {
namespace {

/// ABC rises from 10 to 12 within two months, with rows of every kind.
class ReportFiguresTest : public PortfolioScreenWorld {
 protected:
  ReportFiguresTest() {
    prices->script = dailyCloses([](const YearMonthDay& each) {
      return each < YearMonthDay{2021, 2, 1} ? 10 : each < YearMonthDay{2021, 3, 4} ? 11 : 12;
    });
    abc->recentPrice = 12;
    const auto pays = [&](Date date, BasicTransaction::YieldType type, const char* amount) {
      return on(date).yield(type, amount, dec("100"));
    };
    using enum BasicTransaction::YieldType;
    record({on(day(2021, 1, 20)).deposit("3000"), on(day(2021, 1, 21)).buy("100", "1000"),
            pays(day(2021, 2, 3), dividend, "12.34"),
            pays(day(2021, 2, 25), capitalGainsDividend, "3"),
            pays(day(2021, 3, 1), dividend, "7.1"), on(day(2021, 3, 2)).sell("30", "250"),
            on(day(2021, 3, 5)).sell("20", "300"), on(day(2021, 3, 8)).withdrawal("10")});
    data = PortfolioDataSlice{.portfolio = portfolio};
    data.selectDays({{2021, 1, 1}, {2021, 3, 10}});
  }

  /// The digits of a figure, from the first that is not 0: signs, symbols and points are the
  /// screen's.
  static std::string digitsOf(const std::string& text) {
    std::string digits;
    for (const char c : text) {
      if ('0' <= c && c <= '9' && !(digits.empty() && c == '0')) {
        digits += c;
      }
    }
    return digits;
  }
  static void expectTrail(const TrailMaker& maker, const std::string& shown) {
    const auto trail = maker();
    ASSERT_TRUE(trail) << shown;
    expectRecomputes(*trail);
    DecimalNumberFormatter twoDigits;
    twoDigits.minimumFractionDigits = 2;
    twoDigits.maximumFractionDigits = 2;
    EXPECT_EQ(digitsOf(twoDigits.string(trail->value).value()), digitsOf(shown)) << trail->label;
  }
  /// How many cells of `table` can be explained.
  static int expectTrails(const TableModel& table) {
    int count = 0;
    for (std::size_t row = 0; row < table.numberOfRows(); ++row) {
      for (std::size_t column = 0; column < table.columns().size(); ++column) {
        if (const TrailMaker maker = table.trailOf(row, column)) {
          expectTrail(maker, table.cell(row, column).plainText());
          ++count;
        }
      }
    }
    return count;
  }
  static int expectTrails(const std::vector<ReportFigure>& figures) {
    int count = 0;
    for (const ReportFigure& figure : figures) {
      if (figure.explain != nullptr) {
        expectTrail(figure.explain, figure.value.plainText());
        ++count;
      }
    }
    return count;
  }

  /// A report of the portfolio, once it has its figures.
  template <typename Report>
  std::shared_ptr<Report> shown() {
    const auto report = Report::make(surroundings);
    report->setShown(true);
    report->setCurrentData(data, std::nullopt);
    waitUntil([&] { return !report->isBusy(); });
    return report;
  }
  std::shared_ptr<TaxYearViewController> shownTaxYear() {
    model->portfolioManagers = {manager};
    const auto tax = TaxYearViewController::make(surroundings);
    tax->setDocumentModel(model);
    tax->setShown(true);
    waitUntil([&] { return !tax->isBusy(); });
    return tax;
  }

  PortfolioDataSlice data;
  std::shared_ptr<WorkspaceModel> model = std::make_shared<WorkspaceModel>();
};

TEST_F(ReportFiguresTest, OfReturns) {
  const auto returns = shown<ReturnsViewController>();
  EXPECT_EQ(expectTrails(returns->figures()), 3);
  EXPECT_EQ(expectTrails(returns->monthTable), 4) << "three months and their year";
  EXPECT_EQ(expectTrails(returns->equityTable), 8) << "all but the opening value, which is 0";
  EXPECT_EQ(expectTrails(returns->reconciliationTable), 6);
}

TEST_F(ReportFiguresTest, OfIncome) {
  const auto income = shown<IncomeViewController>();
  EXPECT_EQ(expectTrails(income->figures()), 4);
  EXPECT_EQ(expectTrails(income->monthTable), 6) << "two months and the year, and all in the sum";
  EXPECT_EQ(expectTrails(income->expectedTable), 3);
  income->setCounts(TransactionType::capitalGainsDividend, false);
  expectTrails(income->monthTable);
  EXPECT_EQ(cells(income->monthTable, 0).at("total"), "CA$19.44");
}

TEST_F(ReportFiguresTest, OfATaxYear) {
  const auto tax = shownTaxYear();
  ASSERT_EQ(tax->disposals.numberOfRows(), 2U);
  EXPECT_EQ(expectTrails(tax->figures()), 3);
  EXPECT_EQ(expectTrails(tax->totals), 12) << "of the equity and of all";
  EXPECT_EQ(expectTrails(tax->income), 8) << "two lines and the sums by kind";
  EXPECT_EQ(expectTrails(tax->costs), 1);
  for (std::size_t row = 0; row < 2; ++row) {
    for (const char* column : {"costBase", "ledgerGain", "taxGain"}) {
      const auto& columns = tax->disposals.columns();
      const auto place = static_cast<std::size_t>(
          std::ranges::find(columns, column, &TableColumn::identifier) - columns.begin());
      expectTrail(tax->disposals.trailOf(row, place), tax->disposals.cell(row, place).plainText());
    }
  }
}

TEST_F(ReportFiguresTest, WriteEachListOfATaxYear) {
  const auto tax = shownTaxYear();
  const auto value = [&](TaxSection section, int row, const char* field) {
    return tax->makeExporter(section)->exportValue(row, field).value_or("none");
  };
  EXPECT_EQ(tax->makeExporter()->exportRowCount(), 2);
  EXPECT_EQ(value(TaxSection::totals, 0, "symbol"), "ABC");
  EXPECT_EQ(value(TaxSection::totals, 1, "symbol"), "none") << "the sum";
  EXPECT_EQ(value(TaxSection::totals, 1, "proceeds"), "CA$550.00");
  EXPECT_EQ(value(TaxSection::income, 0, "amount"), "CA$19.44");
  EXPECT_EQ(tax->makeExporter(TaxSection::toCheck)->exportRowCount(), 0);
  EXPECT_EQ(value(TaxSection::costs, 0, "shares"), "50");
}

}  // namespace
}  // namespace corvane::testing
