#include "reports/trail/ledger_trails.h"

#include <algorithm>
#include <map>
#include <utility>

#include "ledger/manager/portfolio_manager.h"
#include "ledger/transaction/transaction_effect.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// So deep is a trail at most; what lies before is one leaf.
constexpr std::size_t mostRowsOfTrail = 50;

std::string rowSource(const Portfolio& portfolio, std::size_t row) {
  return "row " + std::to_string(row + 1) + " of “" + portfolio.name + "”";
}

/// What the trails of one equity's rows share.
struct RowTrail {
  Portfolio& portfolio;
  const Calendar& calendar;
  std::string unit = std::string(portfolio.primaryCurrency().code);
  int digits = portfolio.primaryCurrency().minorUnits;

  [[nodiscard]] TrailNode leaf(std::string label, const Decimal& value, std::string unitOfValue,
                               std::size_t row) const {
    return {.label = std::move(label),
            .value = value,
            .unit = std::move(unitOfValue),
            .day = YearMonthDay::of(portfolio.transactions()[row]->settlementDate(), calendar),
            .source = rowSource(portfolio, row)};
  }
};

/// The part of the cost base that goes with, or stays with, `shares` of `held`.
TrailNode partOfCost(const RowTrail& trail, TrailNode cost, std::string label,
                     const TrailNode& shares, const TrailNode& held) {
  return quotientOf(std::move(label), trail.unit,
                    productOf("Cost base × shares", trail.unit, {std::move(cost), shares}), held);
}

/// What `row` makes of the cost base `before`.
TrailNode costAfterRow(const RowTrail& trail, std::size_t index, TrailNode before) {
  const PortfolioTransaction& row = *trail.portfolio.transactions()[index];
  const TransactionEffect effect = transactionEffect(row.basic.kind);
  const Decimal net = row.sharesNet.value_or(0);
  const std::string label = "Cost base after " + rowSource(trail.portfolio, index);
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
    return before;
  }
  return roundedTo(trail.digits, label,
                   sumOf("Cost base with what was added", trail.unit,
                         {std::move(before), trail.leaf("Added to the cost base", effect.costAdded,
                                                        trail.unit, index)}));
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

Decimal recentRateOf(const Currency& currency, const Currency& primary, QuoteProvider& quotes) {
  if (currency == primary) {
    return 1;
  }
  const auto rate = quotes.exchangeRateEquity(currency, primary)->recentPrice;
  if (!rate) {
    throw PortfolioManagerError(PortfolioManagerError::ForeignExchangeRateMissing{currency});
  }
  return *rate;
}

std::shared_ptr<PortfolioManager> managerOf(const Portfolio& portfolio) {
  auto manager = portfolio.manager.lock();
  if (manager == nullptr) {
    throw PortfolioManagerError(PortfolioManagerError::InvalidPortfolio{
        "Portfolio is unmanaged or has the wrong manager!"});
  }
  return manager;
}

PortfolioSnapshot lastStateOf(const Portfolio& portfolio) {
  return portfolio.snapshotsByYear.empty() ? PortfolioSnapshot()
                                           : portfolio.snapshotsByYear.rbegin()->second;
}

/// `amount` of `currency` in the primary currency.
TrailNode atRecentRate(const Portfolio& portfolio, std::string label,
                       std::vector<TrailNode> factors, const Currency& currency,
                       QuoteProvider& quotes) {
  const Currency& primary = portfolio.primaryCurrency();
  if (currency != primary) {
    const std::string pair = std::string(currency.code) + " in " + std::string(primary.code);
    factors.push_back({.label = "Rate of " + std::string(currency.code),
                       .value = recentRateOf(currency, primary, quotes),
                       .source = "latest rate of " + pair});
  }
  return productOf(std::move(label), std::string(primary.code), std::move(factors));
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
      roundedTo(trail.digits, "Capital gain of " + rowSource(portfolio, row),
                differenceOf("Proceeds less cost", trail.unit, {proceeds, std::move(disposed)}));
  const Decimal missing = costBefore - *sale.costBaseNet() - (proceeds.value - gain.value);
  if (!missing.isZero()) {
    gain.note +=
        (gain.note.empty() ? "" : "; ") +
        ("cost base and gain are rounded separately and differ by " + abs(missing).description());
  }
  return gain;
}

TrailNode valueTrail(Portfolio& portfolio) {
  const auto manager = managerOf(portfolio);
  QuoteProvider& quotes = *manager->quoteProvider;
  const PortfolioSnapshot state = lastStateOf(portfolio);
  std::map<std::string, TrailNode> parts;
  for (const auto& [currency, cash] : state.currencySnapshots) {
    const std::string code(currency.code);
    parts.emplace("1" + code, atRecentRate(portfolio, "Cash in " + code,
                                           {{.label = "Cash",
                                             .value = cash.cashOnHand,
                                             .unit = code,
                                             .source = "the ledger of “" + portfolio.name + "”"}},
                                           currency, quotes));
  }
  for (const auto& [equity, holding] : state.equitySnapshots) {
    if (holding.sharesHeld.isZero()) {
      continue;
    }
    if (!equity->recentPrice) {
      throw PortfolioManagerError(PortfolioManagerError::LedgerInconsistency{
          "No recent share price for " + equity->symbol + "."});
    }
    TrailNode price{.label = "Price",
                    .value = *equity->recentPrice,
                    .unit = std::string(equity->currency.code),
                    .source = "latest price of " + equity->symbol};
    if (equity->recentDate) {
      price.day = YearMonthDay::of(*equity->recentDate, equity->calendar);
    }
    parts.emplace("2" + equity->symbol + equity->id(),
                  atRecentRate(portfolio, equity->symbol,
                               {{.label = "Shares",
                                 .value = holding.sharesHeld,
                                 .source = "the ledger of “" + portfolio.name + "”"},
                                std::move(price)},
                               equity->currency, quotes));
  }
  std::vector<TrailNode> ordered;
  for (auto& [key, part] : parts) {
    ordered.push_back(std::move(part));
  }
  return sumOf("Value", std::string(portfolio.primaryCurrency().code), std::move(ordered));
}

TrailNode depositsTrail(Portfolio& portfolio) {
  const auto manager = managerOf(portfolio);
  const RowTrail trail{portfolio, manager->calendar};
  std::map<std::string, std::pair<Currency, std::vector<TrailNode>>> byCurrency;
  for (std::size_t i = 0; i < portfolio.transactions().size(); ++i) {
    const TransactionEffect effect = transactionEffect(portfolio.transactions()[i]->basic.kind);
    const Decimal deposited = effect.deposited(portfolio.usesCashAccounts);
    if (!deposited.isZero()) {
      const std::string code(effect.currency->code);
      auto& [currency, rows] =
          byCurrency.try_emplace(code, *effect.currency, std::vector<TrailNode>()).first->second;
      rows.push_back(trail.leaf(deposited < 0 ? "Taken out" : "Brought in", deposited, code, i));
    }
  }
  std::vector<TrailNode> parts;
  for (auto& [code, deposits] : byCurrency) {
    TrailNode sum = sumOf("In " + code, code, std::move(deposits.second));
    parts.push_back(atRecentRate(portfolio, "Net deposits in " + code, {std::move(sum)},
                                 deposits.first, *manager->quoteProvider));
  }
  return sumOf("Net deposits", trail.unit, std::move(parts));
}

}  // namespace corvane
