#include "presentation/transactions/sale_tax_hint.h"

#include <utility>

#include "ledger/manager/portfolio_manager.h"
#include "platform/async/timer.h"
#include "platform/text/formats/date_formatter.h"
#include "reports/tax/sale_estimate.h"

namespace corvane {
namespace {

/// Nothing is begun between two keys.
constexpr DispatchQueue::Duration pauseBetweenKeys{0.2};

struct AskedSale {
  EquityPointer equity;
  Currency currency;  ///< the primary one of the portfolio
  Decimal shares;
  Decimal proceeds;
  TaxYearQuestion question;  ///< `today` is the day that counts for the sale
  YearMonthDay today;
  bool isNow;  ///< traded today
};

std::string daySentence(const YearMonthDay& day) {
  const Calendar calendar{TimeZone()};
  return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                       .timeZone = calendar.timeZone()}
      .string(day.startIn(calendar));
}

/// Empty for a sale at a gain, or one that the person cannot make.
std::string hintOf(const AskedSale& sale, const std::vector<TaxedPortfolio>& portfolios,
                   const Calendar& calendar) {
  const auto estimate = estimatedSale(portfolios, sale.question, sale.equity, sale.currency,
                                      sale.shares, sale.proceeds, calendar);
  if (!estimate || estimate->tax.isShort || estimate->tax.gain >= 0) {
    return "";
  }
  std::string text = estimate->text();
  constexpr std::string_view now = " now ";
  if (const std::size_t at = text.find(now); !sale.isNow && at != std::string::npos) {
    text.replace(at, now.size(), " on " + daySentence(sale.question.today) + " ");
  }
  const SuperficialLoss& loss = estimate->tax.superficial;
  text = "Superficial-loss hint: " + text + ".";
  if (!estimate->addedTo.empty()) {
    text += " Added to: " + estimate->addedTo + ".";
  }
  if (sale.today < loss.to) {
    text += " Purchases up to " + daySentence(loss.to) + " may change that.";
  }
  return text;
}

/// Whose sale it would be, where its gain is taxed; none where it is not.
std::optional<std::string> personOf(const WorkspaceModel& model,
                                    const PortfolioPointer& portfolio) {
  const PortfolioTaxRole role = model.taxRoleOf(portfolio).value_or(PortfolioTaxRole());
  if (role.role == TaxRole::taxable) {
    return "";
  }
  const bool isOfAPerson = role.role == TaxRole::affiliated && !role.isRegistered;
  return isOfAPerson ? std::optional(role.person) : std::nullopt;
}

}  // namespace

void SaleTaxHint::consider(const std::optional<BasicTransaction>& entry,
                           const PortfolioPointer& portfolio, Date today) {
  const auto* trade = entry ? std::get_if<BasicTransaction::Trade>(&entry->kind) : nullptr;
  const bool isSale = trade != nullptr && trade->sharesAdded < 0;
  if (isSale && entry_ == entry && portfolio_ == portfolio) {
    return;
  }
  text_.clear();
  inquiry_.cancel();
  timer_ = nullptr;
  entry_ = isSale ? entry : std::nullopt;
  portfolio_ = portfolio;
  today_ = today;
  const auto model = workspace_.lock();
  if (isSale && model != nullptr && model->taxSettings.country == TaxCountry::canada) {
    timer_ = Timer::scheduled(pauseBetweenKeys, false, [this](Timer&) {
      timer_ = nullptr;
      ask();
    });
  }
}

void SaleTaxHint::ask() {
  const auto model = workspace_.lock();
  const auto manager = portfolio_->manager.lock();
  const auto person = model == nullptr ? std::nullopt : personOf(*model, portfolio_);
  if (!person || manager == nullptr) {
    return;
  }
  const Calendar& calendar = manager->calendar;
  const auto& trade = std::get<BasicTransaction::Trade>(entry_->kind);
  const YearMonthDay today = YearMonthDay::of(today_, calendar);
  const YearMonthDay traded = YearMonthDay::of(entry_->tradeDate, calendar);
  const YearMonthDay counted =
      model->taxSettings.byTradeDate ? traded : YearMonthDay::of(entry_->settlementDate, calendar);
  AskedSale sale{.equity = trade.equity,
                 .currency = portfolio_->primaryCurrency(),
                 .shares = -trade.sharesAdded,
                 .proceeds = -trade.equivalentCashDisposed,
                 .question = taxYearQuestion(model->taxSettings, counted.year, counted),
                 .today = today,
                 .isNow = traded == today};
  sale.question.person = *person;
  const auto portfolios = model->portfolios();
  auto taxed = taxedPortfolios(
      portfolios, [&](const PortfolioPointer& portfolio) { return model->taxRoleOf(portfolio); });
  inquiry_.ask(
      portfolios,
      [sale, taxed = std::move(taxed), calendar](const ReportInquiry::Ledgers& ledgers,
                                                 const Cancellation& cancellation) mutable {
        for (std::size_t i = 0; i < taxed.size(); ++i) {
          taxed[i].portfolio = ledgers[i];
        }
        sale.question.cancellation = cancellation;
        return hintOf(sale, taxed, calendar);
      },
      [this](std::string text) {
        text_ = std::move(text);
        changeHandler();
      });
}

}  // namespace corvane
