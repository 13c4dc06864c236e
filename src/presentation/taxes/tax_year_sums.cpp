#include "presentation/taxes/tax_year_sums.h"

#include <utility>

#include "exchange/exports/report_lines_exporter.h"
#include "ledger/transaction/transaction_effect.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

/// A line of a sum that comes from a row of a ledger.
TrailNode placedLeaf(const TaxRowPlace& place, const char* what, const Decimal& amount) {
  return fromRow({.label = std::string(what) + " of " + place.equity->symbol,
                  .value = amount,
                  .unit = std::string(place.portfolio->primaryCurrency().code),
                  .day = place.settlement},
                 *place.portfolio, place.position);
}

TrailNode shownTaxSum(const std::string& label, const Currency& currency,
                      std::vector<TrailNode> parts) {
  return roundedTo(currency.minorUnits, label,
                   sumOf(label + ", exact", std::string(currency.code), std::move(parts)));
}

}  // namespace

TrailNode disposalsTrail(const std::string& label, const TaxYear& year, const EquityPointer& equity,
                         const Currency& currency, const TaxAmountOf& amountOf) {
  std::vector<TrailNode> parts;
  for (const TaxYear::Disposal& disposal : year.disposals) {
    const bool isMeant = disposal.place.portfolio->primaryCurrency() == currency &&
                         (equity == nullptr || *disposal.place.equity == *equity);
    const Decimal amount = isMeant ? amountOf(disposal) : Decimal(0);
    if (!amount.isZero()) {
      parts.push_back(placedLeaf(disposal.place, "Sale", amount));
    }
  }
  return shownTaxSum(label, currency, std::move(parts));
}

TrailNode taxIncomeLineTrail(const TaxYear::Income& line, bool atEquivalents) {
  const Currency& currency = (atEquivalents ? line.equivalent : line.amount).currency;
  const bool isConverted = atEquivalents && line.amount.currency != currency;
  std::vector<TrailNode> parts;
  for (const TaxRowPlace& place : line.rows) {
    const TransactionEffect effect = transactionEffect(place.row().basic.kind);
    TrailNode leaf{.label = "Paid",
                   .value = atEquivalents ? effect.equivalentAmount.value_or(0) : effect.amount,
                   .unit = std::string(currency.code),
                   .day = place.settlement};
    if (isConverted) {
      leaf.note = effect.amount.description() + " " + std::string(effect.currency->code) +
                  " at the equivalent that was entered";
    }
    parts.push_back(fromRow(std::move(leaf), *place.portfolio, place.position));
  }
  return shownTaxSum(line.equity->symbol + ", " + kindOfIncome(line.kind), currency,
                     std::move(parts));
}

TrailNode taxAdjustmentsTrail(const TaxYear& year, const Currency& currency) {
  std::vector<TrailNode> parts;
  for (const TaxRowPlace& place : year.adjustmentRows) {
    const TransactionEffect effect = transactionEffect(place.row().basic.kind);
    if (*effect.currency == currency) {
      parts.push_back(fromRow({.label = effect.amount < 0 ? "Paid" : "Received",
                               .value = effect.amount,
                               .unit = std::string(currency.code),
                               .day = place.settlement},
                              *place.portfolio, place.position));
    }
  }
  return shownTaxSum("Interest, fees and adjustments", currency, std::move(parts));
}

TrailNode taxIncomeTrail(const std::string& label, const TaxYear& year, const Currency& currency,
                         const std::function<bool(TransactionType)>& counts) {
  std::vector<TrailNode> parts;
  for (const TaxYear::Income& line : year.income) {
    if (line.equivalent.currency == currency && counts(line.kind)) {
      parts.push_back(taxIncomeLineTrail(line, true));
    }
  }
  return shownTaxSum(label, currency, std::move(parts));
}

TrailNode deemedGainsTrail(const TaxYear& year, const Currency& currency) {
  std::vector<TrailNode> parts;
  for (const TaxYear::DeemedGain& deemed : year.deemedGains) {
    if (deemed.place.portfolio->primaryCurrency() == currency) {
      parts.push_back(placedLeaf(deemed.place, "Return of capital", deemed.amount));
    }
  }
  return shownTaxSum("Deemed gains", currency, std::move(parts));
}

}  // namespace corvane
