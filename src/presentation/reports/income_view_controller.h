// The report of what investments have paid, and what they may pay.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "presentation/charts/fiscal_chart_view.h"
#include "presentation/reports/record_table.h"
#include "presentation/reports/report_view_controller.h"
#include "reports/income/income_payments.h"

namespace corvane {

/// What an equity has paid in each month of a year; the sum of all where it has no equity.
struct IncomeOfYear {
  EquityPointer equity;
  int year = 0;
  std::array<Decimal, 12> months;
  Decimal total;
};

/// A chart of bars in money, one for each month. Main queue only.
class IncomeChartView final : public FiscalChartView {
 public:
  IncomeChartView();
  [[nodiscard]] std::vector<LimitLine> leftAxisLimitLines(double viewWidth) const override;

 protected:
  [[nodiscard]] AttributedText changeText(double from, double to) const override;
};

/// The income of a portfolio, or of all portfolios of a workspace with one primary currency, on all
/// of their days up to today and a year further. What is recorded stands at the equivalents that
/// were entered, net of what was withheld. Held by shared pointer only. Main queue only.
class IncomeViewController : public ReportViewController,
                             public std::enable_shared_from_this<IncomeViewController> {
  struct Passkey {};

 public:
  struct Kind {
    TransactionType type;
    std::string_view title;
  };
  static constexpr std::array<Kind, 4> kinds = {
      {{TransactionType::dividend, "Dividends"},
       {TransactionType::capitalGainsDividend, "Capital gains dividends"},
       {TransactionType::reinvestedDistribution, "Reinvested distributions"},
       {TransactionType::returnOfCapital, "Returns of capital"}}};

  [[nodiscard]] static std::shared_ptr<IncomeViewController> make(ScreenSurroundings surroundings);
  IncomeViewController(Passkey passkey, ScreenSurroundings surroundings);

  [[nodiscard]] std::string_view tabTitle() const override { return "Income"; }
  [[nodiscard]] std::shared_ptr<PortfolioExporter> makeExporter() const override;

  // What is chosen.

  [[nodiscard]] bool counts(TransactionType kind) const { return counted_.contains(kind); }
  void setCounts(TransactionType kind, bool counts);
  /// The years with income and this one, the latest first.
  [[nodiscard]] const std::vector<int>& years() const { return years_; }
  [[nodiscard]] int chosenYear() const { return chosenYear_; }
  void chooseYear(int year);
  /// Whether the chart has the same months of different years beside each other.
  [[nodiscard]] bool showsYearsBesideEachOther() const { return isByYear_; }
  void setShowsYearsBesideEachOther(bool isByYear);

  // What is shown.

  [[nodiscard]] std::string title() const override;
  void retryAction() { reload(); }

  IncomeChartView chart;
  RecordTable<IncomeOfYear> monthTable;
  RecordTable<ExpectedIncome> expectedTable;

  /// What the user does to a row of expectedTable, and of monthTable.
  void openExpectedRow(std::size_t row);
  void openMonthRow(std::size_t row);

 private:
  struct Answer {
    std::vector<IncomePayment> payments;
    std::vector<ExpectedIncome> expected;
  };

  void forget(const std::string& message) override;
  void currencyDidChange() override { show(); }
  void askMarket(const std::shared_ptr<QuoteProvider>& quotes) override;
  void compute(DividendCalendar dividends);
  void take(Answer answer);
  void show();
  void showWarning();
  void showNotes();
  void openEquity(const EquityPointer& equity);
  [[nodiscard]] YearMonthDay today() const;
  [[nodiscard]] std::vector<IncomePayment> countedPayments() const;
  [[nodiscard]] bool isCounted(const IncomePayment& payment) const;
  [[nodiscard]] std::vector<IncomePayment> paidPayments() const;
  [[nodiscard]] std::vector<ExpectedIncome> shownExpectations() const;

  std::set<TransactionType> counted_;
  std::vector<int> years_;
  int chosenYear_ = 0;
  bool isByYear_ = false;
  Answer answer_;
  /// What is shown of the payments that ledgers tell of.
  std::shared_ptr<const std::vector<IncomePayment>> paid_ =
      std::make_shared<std::vector<IncomePayment>>();
  EquityMap<ErrorPointer> errors_;
};

}  // namespace corvane
