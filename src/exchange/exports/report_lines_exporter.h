// Writes reports to a delimited text file: returns, a tax year, income.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "exchange/exports/portfolio_exporter.h"
#include "reports/coverage/price_coverage.h"
#include "reports/income/income_payments.h"
#include "reports/overview/portfolios_overview.h"
#include "reports/returns/returns_report.h"
#include "reports/returns/total_return_index.h"
#include "reports/tax/tax_year.h"

namespace corvane {

/// "dividend", "capital gains dividend", "reinvested distribution", "return of capital"
[[nodiscard]] std::string kindOfIncome(TransactionType kind);

/// The lines of a report, with all their figures taken when the exporter is made. What has no
/// figure has an empty cell, and a note says why.
class ReportLinesExporter final : public PortfolioExporter {
 public:
  static constexpr std::string_view userDefaultsKey = "reportExportConfiguration";

  /// A line for each day: date, value, inflow, outflow, dailyReturn, index, benchmarkIndex,
  /// drawdown, note. Returns are fractions of 1. `title` names the scope; days are those of
  /// `calendar`. `defaults` may be null; otherwise it outlives the exporter.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofReturns(
      const ReturnsReport& report, const std::optional<BenchmarkReturn>& benchmark,
      const std::string& title, const Calendar& calendar, UserDefaults* defaults);

  /// A line for each disposal: settlement, tradeDate, portfolio, symbol, shares, proceeds,
  /// currency, rate, equivalent, costBase, ledgerGain, denied, addedTo, taxGain, primaryCurrency,
  /// note.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofDisposals(const TaxYear& year,
                                                                        const std::string& title,
                                                                        const Calendar& calendar,
                                                                        UserDefaults* defaults);

  /// A line for each equity, currency and kind of a tax year's income: symbol, kind, amount,
  /// currency, equivalent, primaryCurrency.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofTaxIncome(const TaxYear& year,
                                                                        const std::string& title,
                                                                        UserDefaults* defaults);

  /// A line for each equity with disposals, and for the sum of each currency: symbol,
  /// primaryCurrency, proceeds, costBase, gains, losses, denied, net. The sum has no symbol.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofTaxTotals(const TaxYear& year,
                                                                        const std::string& title,
                                                                        UserDefaults* defaults);

  /// A line for each deemed gain and for each row that wants a human eye: settlement, tradeDate,
  /// portfolio, symbol, deemedGain, primaryCurrency, note.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofTaxChecks(const TaxYear& year,
                                                                        const std::string& title,
                                                                        const Calendar& calendar,
                                                                        UserDefaults* defaults);

  /// A line for each equity that is held at the end of a tax year: symbol, shares, costBase,
  /// primaryCurrency.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofTaxCosts(const TaxYear& year,
                                                                       const std::string& title,
                                                                       UserDefaults* defaults);

  /// A line for each stretch of days of an equity or exchange rate: symbol, kind, state, from, to,
  /// days, note; one without days where the market has refused its prices.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofCoverage(
      std::span<const PriceCoverage> coverages, const std::string& title, const Calendar& calendar,
      UserDefaults* defaults);

  /// A line for each payment: date, portfolio, symbol, kind, shares, perShare, amount, currency,
  /// rate, equivalent, status, note.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofIncome(
      std::span<const IncomePayment> payments, const std::string& title, const Calendar& calendar,
      UserDefaults* defaults);

  /// A line for each portfolio of an overview: portfolio, value, share, dayChange, dayRate,
  /// netDeposits, gain, currency. Shares and rates are fractions of 1.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofPortfolios(
      const PortfoliosOverview& overview, const std::string& title, UserDefaults* defaults);

  /// A line for each equity and each currency of cash that it has: kind, symbol, name, held, price,
  /// priceCurrency, value, share, dayChange, dayRate, unrealizedGain, currency, portfolios.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofAllHoldings(
      const PortfoliosOverview& overview, const std::string& title, UserDefaults* defaults);

  /// A line for each currency that something is held in: held, amount, value, share, currency.
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> ofCurrencies(
      const PortfoliosOverview& overview, const std::string& title, UserDefaults* defaults);

 private:
  struct Shares {
    Decimal count;
  };
  struct Rate {
    Decimal value;
  };
  /// A return or an index, with digits for the smallest move of a day.
  struct Fraction {
    double value;
  };
  using Cell =
      std::variant<std::monostate, std::string, Date, Shares, Rate, Fraction, CurrencyAmount>;

  /// A column, and what stands in it on the line of a record.
  template <typename Record>
  struct Column {
    Field field;
    std::function<Cell(const Record&)> cell;
  };

  ReportLinesExporter(UserDefaults* defaults, std::span<const Field> fields,
                      std::vector<std::vector<Cell>> lines, const std::string& title);

  /// A line for each of `records`.
  template <typename Records>
  [[nodiscard]] static std::shared_ptr<ReportLinesExporter> of(
      const Records& records,
      const std::vector<Column<std::ranges::range_value_t<Records>>>& columns,
      const std::string& title, UserDefaults* defaults) {
    std::vector<Field> fields;
    for (const auto& column : columns) {
      fields.push_back(column.field);
    }
    std::vector<std::vector<Cell>> lines;
    for (const auto& record : records) {
      std::vector<Cell>& line = lines.emplace_back();
      for (const auto& column : columns) {
        line.push_back(column.cell(record));
      }
    }
    return std::shared_ptr<ReportLinesExporter>(
        new ReportLinesExporter(defaults, fields, std::move(lines), title));
  }

  [[nodiscard]] static Cell roundedAmount(const Decimal& amount, const Currency& currency);
  [[nodiscard]] static Cell codeOf(const Currency& currency);

  [[nodiscard]] std::optional<std::string> cellText(std::size_t row, std::size_t field) override;

  const std::vector<std::vector<Cell>> lines_;
  DecimalNumberFormatter fractionFormatter_;
};

}  // namespace corvane
