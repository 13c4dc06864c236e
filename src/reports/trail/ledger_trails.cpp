#include "reports/trail/ledger_trails.h"

#include <algorithm>
#include <utility>

#include "ledger/transaction/transaction_effect.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

/// So deep is a trail at most; what lies before is one leaf.
constexpr std::size_t mostRowsOfTrail = 50;

/// What the trails of one equity's rows share.
struct RowTrail {
  Portfolio& portfolio;
  const Calendar& calendar;
  std::string unit = std::string(portfolio.primaryCurrency().code);
  int digits = portfolio.primaryCurrency().minorUnits;

  [[nodiscard]] TrailNode leaf(std::string label, const Decimal& value, std::string unitOfValue,
                               std::size_t row) const {
    return fromRow(
        {.label = std::move(label),
         .value = value,
         .unit = std::move(unitOfValue),
         .day = YearMonthDay::of(portfolio.transactions()[row]->settlementDate(), calendar)},
        portfolio, row);
  }
};

/// The part of the cost base that goes with, or stays with, `shares` of `held`.
TrailNode partOfCost(const RowTrail& trail, TrailNode cost, std::string label,
                     const TrailNode& shares, const TrailNode& held) {
  return quotientOf(std::move(label), trail.unit,
                    productOf("Cost base × shares", trail.unit, {std::move(cost), shares}), held);
}

/// "10 shares more, 30 held after", for rows that leave the cost of each share to be worked out.
std::string sharesText(const TransactionEffect& effect, const Decimal& net) {
  const std::string held = net.description() + " held after";
  if (effect.splitInto && effect.declaredShares) {
    return "a split of " + effect.declaredShares->description() + " into " +
           effect.splitInto->description() + ", " + held;
  }
  return effect.sharesAdded.isZero() ? held
                                     : effect.sharesAdded.description() + " shares more, " + held;
}

/// What `row` makes of the cost base `before`.
TrailNode costAfterRow(const RowTrail& trail, std::size_t index, TrailNode before) {
  const PortfolioTransaction& row = *trail.portfolio.transactions()[index];
  const TransactionEffect effect = transactionEffect(row.basic.kind);
  const Decimal net = row.sharesNet.value_or(0);
  const std::string label = "Cost base after " + rowText(trail.portfolio, index);
  if (effect.movesShares() && effect.sharesAdded < 0) {
    const Decimal held = net - effect.sharesAdded;
    if (held <= 0) {
      TrailNode nothing = trail.leaf(label, 0, trail.unit, index);
      nothing.note = "nothing was held before";
      return nothing;
    }
    return roundedTo(trail.digits, label,
                     partOfCost(trail, std::move(before), "Cost base of the shares that stay",
                                trail.leaf("Shares that stay", net, "", index),
                                trail.leaf("Shares held before", held, "", index)));
  }
  if (effect.costAdded.isZero()) {
    before.label = label;
    before.note += (before.note.empty() ? "" : "; ") + sharesText(effect, net);
    return before;
  }
  TrailNode added = trail.leaf("Added to the cost base", effect.costAdded, trail.unit, index);
  added.note = sharesText(effect, net);
  return roundedTo(
      trail.digits, label,
      sumOf("Cost base with what was added", trail.unit, {std::move(before), std::move(added)}));
}

/// The rows of the equity of `row` up to it, since the holding was last 0.
std::vector<std::size_t> rowsOfHolding(Portfolio& portfolio, std::size_t row) {
  const auto& rows = portfolio.transactions();
  const EquityPointer* equity = rows[row]->basic.equity();
  std::vector<std::size_t> found;
  for (std::size_t i = row + 1; i-- > 0;) {
    const EquityPointer* other = rows[i]->basic.equity();
    if (other == nullptr || !(**other == **equity)) {
      continue;
    }
    if (i != row && rows[i]->sharesNet.value_or(0).isZero() &&
        rows[i]->costBaseNet().value_or(0).isZero()) {
      break;
    }
    found.push_back(i);
    if (found.size() == mostRowsOfTrail) {
      break;
    }
  }
  std::ranges::reverse(found);
  return found;
}

std::optional<TrailNode> costBeforeTrail(const RowTrail& trail, std::size_t row, bool withRow) {
  const auto& rows = trail.portfolio.transactions();
  if (row >= rows.size() || rows[row]->basic.equity() == nullptr || !rows[row]->costBasePrior) {
    return std::nullopt;
  }
  std::vector<std::size_t> held = rowsOfHolding(trail.portfolio, row);
  TrailNode cost =
      trail.leaf("Cost base before", *rows[held.front()]->costBasePrior, trail.unit, held.front());
  if (!withRow) {
    held.pop_back();
  }
  for (const std::size_t index : held) {
    cost = costAfterRow(trail, index, std::move(cost));
  }
  return cost;
}

}  // namespace

std::optional<TrailNode> costBaseTrail(Portfolio& portfolio, std::size_t row,
                                       const Calendar& calendar) {
  return costBeforeTrail(RowTrail{portfolio, calendar}, row, true);
}

std::optional<TrailNode> capitalGainTrail(Portfolio& portfolio, std::size_t row,
                                          const Calendar& calendar) {
  const RowTrail trail{portfolio, calendar};
  auto cost = costBeforeTrail(trail, row, false);
  if (!cost || !portfolio.transactions()[row]->capitalGain()) {
    return std::nullopt;
  }
  const PortfolioTransaction& sale = *portfolio.transactions()[row];
  const TransactionEffect effect = transactionEffect(sale.basic.kind);
  const Decimal costBefore = cost->value;
  const Decimal held = *sale.sharesNet - effect.sharesAdded;
  TrailNode proceeds = trail.leaf("Proceeds", effect.equivalentAmount.value_or(0), trail.unit, row);
  if (*effect.currency != portfolio.primaryCurrency() && !effect.amount.isZero()) {
    proceeds.note = effect.amount.description() + " " + std::string(effect.currency->code) +
                    " at the implied rate of " + (proceeds.value / effect.amount).description();
  }
  TrailNode disposed = held > 0
                           ? partOfCost(trail, std::move(*cost), "Cost base of the shares sold",
                                        trail.leaf("Shares sold", -effect.sharesAdded, "", row),
                                        trail.leaf("Shares held before", held, "", row))
                           : trail.leaf("Cost base of the shares sold", 0, trail.unit, row);
  TrailNode gain =
      roundedTo(trail.digits, "Capital gain of " + rowText(portfolio, row),
                differenceOf("Proceeds less cost", trail.unit, {proceeds, std::move(disposed)}));
  const Decimal missing = costBefore - *sale.costBaseNet() - (proceeds.value - gain.value);
  if (!missing.isZero()) {
    gain.note +=
        (gain.note.empty() ? "" : "; ") +
        ("cost base and gain are rounded separately and differ by " + abs(missing).description());
  }
  return gain;
}

}  // namespace corvane
