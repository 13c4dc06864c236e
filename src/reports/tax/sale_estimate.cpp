#include "reports/tax/sale_estimate.h"

#include <algorithm>
#include <map>

#include "reports/series/report_days.h"

namespace corvane {

namespace {

/// 75 as "75.00".
std::string withMinorUnits(const Decimal& amount, const Currency& currency) {
  std::string text = roundedToMinorUnits(amount, currency).description();
  const std::size_t point = text.find('.');
  const auto wanted = static_cast<std::size_t>(std::max(currency.minorUnits, 0));
  const std::size_t digits = point == std::string::npos ? 0 : text.size() - point - 1;
  if (wanted > digits) {
    text += (point == std::string::npos ? "." : "") + std::string(wanted - digits, '0');
  }
  return text;
}

}  // namespace

std::string SaleEstimate::text() const {
  const Currency& currency = place.portfolio->primaryCurrency();
  const auto money = [&](const Decimal& amount) { return withMinorUnits(amount, currency); };
  const std::string sale = "selling " + tax.superficial.sold.description() + " now would ";
  if (tax.superficial.denied > 0) {
    return sale + "deny " + money(tax.superficial.denied);
  }
  return sale + (tax.gain < 0 ? "lose " : "gain ") + money(abs(tax.gain)) +
         ", nothing of it denied";
}

std::optional<SaleEstimate> estimatedSale(std::span<const TaxedPortfolio> portfolios,
                                          TaxYearQuestion question, const EquityPointer& equity,
                                          const Currency& currency, const Decimal& shares,
                                          const Decimal& proceeds, const Calendar& calendar) {
  question.last = question.today;
  const TaxLedger ledger = taxLedger(portfolios, question, calendar, equity);
  const TaxedEquity* line = ledger.find(equity, currency);
  if (line == nullptr) {
    return std::nullopt;
  }
  std::map<std::size_t, Decimal> held;  // by portfolio
  std::optional<TaxRow> sale;
  SaleEstimate estimate;
  const auto later = std::ranges::upper_bound(line->rows, question.today, {}, &TaxRow::day);
  for (auto row = line->rows.begin(); row != later; ++row) {
    const auto& place = line->places[static_cast<std::size_t>(row - line->rows.begin())];
    if (isSubject(ledger.holders[row->holder], question)) {
      held[row->portfolio] = place.row().sharesNet.value_or(0);
      if (!sale || held[row->portfolio] >= held[sale->portfolio]) {
        sale = TaxRow{.kind = TaxRow::Kind::sale,
                      .day = question.today,
                      .holder = row->holder,
                      .portfolio = row->portfolio,
                      .shares = shares,
                      .amount = proceeds};
        estimate.place = {place.portfolio, 0, equity, question.today, question.today};
      }
    }
  }
  for (const auto& [portfolio, count] : held) {
    estimate.held += count;
  }
  if (!sale || estimate.held <= 0) {
    return std::nullopt;
  }
  std::vector<TaxRow> rows(line->rows.begin(), later);
  rows.push_back(*sale);
  rows.insert(rows.end(), later, line->rows.end());
  const auto position = static_cast<std::size_t>(later - line->rows.begin());
  const TaxWalk walk = walkTaxes(rows, ledger.holders, taxRules(*line, question));
  estimate.tax = *std::ranges::find(walk.disposals, position, &TaxDisposal::row);
  estimate.addedTo = additionsText(estimate.tax.superficial, ledger.holders);
  return estimate;
}

std::string additionsText(const SuperficialLoss& loss, std::span<const TaxHolder> holders) {
  std::string text;
  for (const auto& [holder, amount] : loss.additions) {
    const TaxHolder& who = holders[holder];
    text += (text.empty() ? "" : ", ") + (who.name.empty() ? "own cost base" : who.name) + " " +
            amount.description() + (who.isTaxable ? "" : " (lost)");
  }
  return text;
}

}  // namespace corvane
