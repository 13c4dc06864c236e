#include "exchange/reading/row_money.h"

#include "exchange/strict/day_order.h"

namespace corvane {

void RowMoney::finish(StatementRows& rows, std::size_t row) {
  if (rows.verdict(row) != RowVerdict::isNew) {
    return;
  }
  RowFigures figures = rows.figures(row);
  if (figures.kind == StatementKind::splitAdded) {
    return;
  }
  rate_.clear();
  try {
    complete(figures);
  } catch (const RowStopped& stopped) {
    rows.stop(row, stopped.stop);
    const bool lacksRate =
        stopped.stop.question && stopped.stop.question->about == RowQuestion::About::rate;
    if (lacksRate) {
      // Enough to find it in the ledger, where it need not ask.
      if (figures.kind == StatementKind::journal) {
        figures.cost = Decimal(0);
      }
      rows.finish(row, figures, rate_);
    }
    return;
  }
  rows.finish(row, figures, rate_);
}

void RowMoney::complete(RowFigures& figures) {
  switch (figures.kind) {
    case StatementKind::split:
      figures.shares = abs(figures.shares);
      break;
    case StatementKind::journal: {
      const bool isIn = !(figures.shares < 0);
      if (!figures.cost && !figures.cash.amount.isZero()) {
        figures.cost = abs(equivalentOf(figures));
      }
      if (isIn && !figures.cost) {
        throw RowStopped{{RowVerdict::refused, "the cost base of the shares is not told"}};
      }
      figures.cost = isIn ? figures.cost : std::nullopt;
      break;
    }
    case StatementKind::deposit:
    case StatementKind::withdrawal:
    case StatementKind::transfer:
    case StatementKind::cash:
    case StatementKind::credit:
    case StatementKind::expense:
      figures.equivalent.reset();  // the ledger asks for none
      break;
    default:
      figures.equivalent = equivalentOf(figures);
      break;
  }
  figures.rate.reset();
  // What is in the portfolio's currency is its own equivalent, and need not be kept twice.
  if (figures.equivalent == figures.cash.amount) {
    figures.equivalent.reset();
  }
}

/// The cash in the portfolio's currency, with the sign of the cash.
Decimal RowMoney::equivalentOf(const RowFigures& figures) {
  const Currency& primary = surroundings_.primaryCurrency;
  const CurrencyAmount& cash = figures.cash;
  if (cash.currency == primary) {
    return cash.amount;
  }
  if (figures.equivalent) {
    rate_ = "as told";
    return cash.amount < 0 ? -abs(*figures.equivalent) : abs(*figures.equivalent);
  }
  std::optional<Decimal> rate = figures.rate;
  if (!rate && surroundings_.rateOf) {
    if (const auto found = surroundings_.rateOf(cash.currency, figures.trade)) {
      rate = found->rate;
      rate_ = found->rate.description() + ", " + found->source;
    }
  }
  if (!rate) {
    const std::string code(cash.currency.code);
    throw RowStopped{{RowVerdict::asks,
                      "no exchange rate for " + code + " on " + spelledDay(figures.trade) + ".",
                      "Say --rates market to look it up.",
                      RowQuestion{RowQuestion::About::rate, code, {}, code, {}}}};
  }
  if (rate_.empty()) {
    rate_ = rounded(*rate, 6, RoundingMode::bankers).description();
  }
  return roundedToMinorUnits(cash.amount * *rate, primary);
}

}  // namespace corvane
