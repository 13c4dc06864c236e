#include "presentation/reports/income_view_controller.h"

#include <algorithm>
#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "ledger/manager/portfolio_manager.h"
#include "platform/text/unicode/isolation.h"
#include "presentation/reports/income_tables.h"

namespace corvane {
namespace {

/// The equities that the rows of `portfolios` hold at their end.
EquitySet equitiesHeld(const std::vector<PortfolioPointer>& portfolios) {
  EquitySet held;
  for (const PortfolioPointer& portfolio : portfolios) {
    if (portfolio->snapshotsByYear.empty()) {
      continue;
    }
    for (const auto& [equity, holding] :
         portfolio->snapshotsByYear.rbegin()->second.equitySnapshots) {
      if (holding.sharesHeld > 0) {
        held.insert(equity);
      }
    }
  }
  return held;
}

}  // namespace

std::shared_ptr<IncomeViewController> IncomeViewController::make(ScreenSurroundings surroundings) {
  return std::make_shared<IncomeViewController>(Passkey{}, std::move(surroundings));
}

IncomeViewController::IncomeViewController(Passkey /*passkey*/, ScreenSurroundings surroundings)
    : ReportViewController(std::move(surroundings)),
      monthTable(incomeMonthColumns([this] { return currency_; }, [this] { return paid_; })),
      expectedTable(expectedIncomeColumns([this] {
        return IncomeMoment{today(), calendarOf(scope_)};
      })),
      counted_{TransactionType::dividend, TransactionType::capitalGainsDividend,
               TransactionType::reinvestedDistribution} {
  message_ = "No portfolio selected.";
}

void IncomeViewController::forget(const std::string& message) {
  answer_ = {};
  errors_.clear();
  chosenYear_ = today().year;
  show();
  message_ = message;
  chart.noDataText = message_;
}

void IncomeViewController::setCounts(TransactionType kind, bool counts) {
  if (counts) {
    counted_.insert(kind);
  } else {
    counted_.erase(kind);
  }
  show();
}

void IncomeViewController::chooseYear(int year) {
  chosenYear_ = year;
  show();
}

void IncomeViewController::setShowsYearsBesideEachOther(bool isByYear) {
  isByYear_ = isByYear;
  show();
}

YearMonthDay IncomeViewController::today() const {
  return YearMonthDay::of(surroundings_.now(), calendarOf(scope_));
}

/// Asks for the dividends of what is held, and then for the report.
void IncomeViewController::askMarket(const std::shared_ptr<QuoteProvider>& quotes) {
  // The provider is held until it has answered.
  fetchDividendCalendar(
      quotes, equitiesHeld(scope_.portfolios), today(),
      whileCurrent(*this, [quotes](IncomeViewController& living, DividendCalendar dividends) {
        living.compute(std::move(dividends));
      }));
}

void IncomeViewController::compute(DividendCalendar dividends) {
  errors_ = dividends.errors;
  inquiry_.ask(
      scope_.portfolios,
      [dividends = std::move(dividends), calendar = calendarOf(scope_), day = today(),
       rates = recentRates(scope_.portfolios, *reportQuotes(scope_))](
          const ReportInquiry::Ledgers& ledgers, const Cancellation& /*cancellation*/) {
        constexpr bool withReturnsOfCapital = true;
        Answer answer;
        answer.expected = expectedIncomes(ledgers, day, calendar, rates, dividends);
        answer.payments = incomePayments(ledgers, answer.expected, calendar, withReturnsOfCapital);
        return answer;
      },
      [self = weak_from_this()](Answer answer) {
        if (const auto living = self.lock()) {
          living->take(std::move(answer));
        }
      });
  changeHandler();
}

void IncomeViewController::take(Answer answer) {
  auto former = std::pair(std::exchange(answer_, std::move(answer)), paid_);
  show();
  // Its copies of ledgers are large, and given back where they were made.
  reportQueue()->async([former = std::move(former)] {});
}

/// Of the kinds and the currency that are chosen, made or expected.
std::vector<IncomePayment> IncomeViewController::countedPayments() const {
  std::vector<IncomePayment> counted;
  std::ranges::copy_if(answer_.payments, std::back_inserter(counted),
                       [&](const IncomePayment& each) { return isCounted(each); });
  return counted;
}

bool IncomeViewController::isCounted(const IncomePayment& payment) const {
  return counts(payment.kind) && (!payment.equivalent || payment.equivalent->currency == currency_);
}

/// Those of them that ledgers tell of.
std::vector<IncomePayment> IncomeViewController::paidPayments() const {
  std::vector<IncomePayment> paid;
  std::ranges::copy_if(answer_.payments, std::back_inserter(paid), [&](const IncomePayment& each) {
    return each.status == IncomePayment::Status::paid && each.equivalent && isCounted(each);
  });
  return paid;
}

std::vector<ExpectedIncome> IncomeViewController::shownExpectations() const {
  std::vector<ExpectedIncome> shown;
  std::ranges::copy_if(answer_.expected, std::back_inserter(shown), [&](const auto& each) {
    return each.portfolio->primaryCurrency() == currency_;
  });
  return shown;
}

void IncomeViewController::show() {
  paid_ = std::make_shared<const std::vector<IncomePayment>>(paidPayments());
  const std::vector<IncomePayment>& payments = *paid_;
  const std::vector<ExpectedIncome> expected = shownExpectations();
  const YearMonthDay now = today();
  std::set<int, std::greater<>> years = {now.year};
  for (const IncomePayment& payment : payments) {
    years.insert(payment.day.year);
  }
  years_.assign(years.begin(), years.end());
  if (!years.contains(chosenYear_)) {
    chosenYear_ = now.year;
  }
  const bool isEmpty = payments.empty() && std::ranges::all_of(expected, [](const auto& each) {
                         return each.projection.payments.empty();
                       });
  message_ = isEmpty ? "No income recorded." : "";
  chart.noDataText = message_;
  figures_ = isEmpty ? std::vector<ReportFigure>() : incomeFigures(paid_, expected, currency_, now);
  monthTable.setRecords(incomeOfYear(payments, chosenYear_));
  expectedTable.setRecords(expected);
  drawIncome(chart, payments, expected, currency_, now, isByYear_);
  showWarning();
  showNotes();
  changeHandler();
}

void IncomeViewController::showWarning() {
  std::vector<std::string> symbols;
  for (const auto& [equity, error] : errors_) {
    symbols.push_back(equity->symbol);
  }
  std::ranges::sort(symbols);
  warning_ = {};
  for (const std::string& symbol : symbols) {
    warning_.text += (warning_.text.empty() ? "⚠️ The dividends of " : ", ") + symbol;
  }
  if (!symbols.empty()) {
    warning_.text += " could not be had; those of the ledger count for what is expected.";
  }
}

void IncomeViewController::showNotes() {
  notes_.clear();
  for (const ExpectedIncome& each : expectedTable.records()) {
    for (const IncomeProjection::LeftOut& left : each.projection.leftOut) {
      notes_.push_back("Left out of what is expected: " + each.line.equity->symbol + ", " +
                       mediumDayText(left.day) + ", " + left.perShare.description() + " a share, " +
                       left.reason + ".");
    }
  }
  if (currencies_.size() > 1) {
    notes_.emplace_back(
        "Portfolios of one primary currency are reported together; choose another "
        "currency to see the others.");
  }
}

void IncomeViewController::openEquity(const EquityPointer& equity) {
  const auto quotes = reportQuotes(scope_);
  if (quotes != nullptr && equity != nullptr) {
    openEquityHandler(quotes->equityWithId(equity->id()));
  }
}

void IncomeViewController::openExpectedRow(std::size_t row) {
  if (row < expectedTable.numberOfRows()) {
    openEquity(expectedTable.records()[row].line.equity);
  }
}

void IncomeViewController::openMonthRow(std::size_t row) {
  if (row < monthTable.numberOfRows()) {
    openEquity(monthTable.records()[row].equity);
  }
}

std::string IncomeViewController::title() const {
  return scope_.portfolios.empty()
             ? ""
             : isolatedName(scope_.name) + ", in " + std::string(currency_.code);
}

std::shared_ptr<PortfolioExporter> IncomeViewController::makeExporter() const {
  return ReportLinesExporter::ofIncome(countedPayments(), scope_.name, calendarOf(scope_),
                                       surroundings_.defaults);
}

}  // namespace corvane
