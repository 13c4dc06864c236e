#include "reports/trail/equity_trails.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

#include "ledger/transaction/transaction_effect.h"
#include "reports/series/report_days.h"
#include "reports/trail/returns_trails.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

/// So many rows of an equity have a line each; those before are one leaf.
constexpr std::size_t mostEquityRowsListed = 1000;

/// Reads what a figure of one equity is made of.
class EquityTrail {
 public:
  EquityTrail(const EquityFigures& figures, const EquityTrailGround& ground)
      : figures_(figures),
        ground_(ground),
        portfolio_(*ground.portfolio),
        primary_(portfolio_.primaryCurrency()),
        unit_(primary_.code) {
    const Date end = daysAfter(ground.scope.to, 1).startIn(ground.calendar);
    const auto& rows = portfolio_.transactions();
    for (std::size_t i = 0; i < rows.size() && rows[i]->settlementDate() < end; ++i) {
      const EquityPointer* equity = rows[i]->basic.equity();
      if (equity != nullptr && **equity == *figures.equity) {
        rows_.push_back(i);
      }
    }
  }

  [[nodiscard]] TrailNode opening() const {
    return worth("Opening value", figures_.opening, daysAfter(ground_.scope.from, -1));
  }
  [[nodiscard]] TrailNode closing() const {
    return worth("Closing value", figures_.closing, ground_.scope.to);
  }
  [[nodiscard]] TrailNode bought() const {
    return ofRows("Bought", figures_.bought, [](const TransactionEffect& effect) {
      return isTrade(effect) && effect.sharesAdded >= 0 ? -equivalentOf(effect) : Decimal();
    });
  }
  [[nodiscard]] TrailNode sold() const {
    return ofRows("Sold", figures_.sold, [](const TransactionEffect& effect) {
      return isTrade(effect) && effect.sharesAdded < 0 ? equivalentOf(effect) : Decimal();
    });
  }
  [[nodiscard]] TrailNode dividends() const {
    return ofRows("Dividends", figures_.dividends, [](const TransactionEffect& effect) {
      return effect.type == TransactionType::dividend ? equivalentOf(effect) : Decimal();
    });
  }
  [[nodiscard]] TrailNode gain() const {
    std::vector<TrailNode> parts = {sumOf("Closing value and sales", unit_, {closing(), sold()}),
                                    opening(), bought()};
    if (!figures_.journaled.isZero()) {
      parts.push_back(journaled());
    }
    return differenceOf("Closing value and sales, less what was there and was bought", unit_,
                        std::move(parts));
  }

 private:
  static bool isTrade(const TransactionEffect& effect) {
    return effect.type == TransactionType::trade;
  }
  static Decimal equivalentOf(const TransactionEffect& effect) {
    return effect.equivalentAmount.value_or(0);
  }
  [[nodiscard]] TrailNode leaf(std::string label, const Decimal& value) const {
    return {.label = std::move(label), .value = value, .unit = unit_};
  }
  [[nodiscard]] YearMonthDay dayOf(const PortfolioTransaction& row) const {
    return YearMonthDay::of(row.settlementDate(), ground_.calendar);
  }

  /// What was moved in and out, at the prices of its days; a leaf where other prices than closes
  /// stood for some of it.
  [[nodiscard]] TrailNode journaled() const {
    const Date start = ground_.scope.from.startIn(ground_.calendar);
    std::vector<TrailNode> moved;
    for (const std::size_t i : rows_) {
      const PortfolioTransaction& row = *portfolio_.transactions()[i];
      const TransactionEffect effect = transactionEffect(row.basic.kind);
      if (effect.type == TransactionType::journaledShares && start <= row.settlementDate()) {
        TrailNode shares =
            fromRow({.label = "Shares journaled", .value = effect.sharesAdded, .day = dayOf(row)},
                    portfolio_, i);
        std::optional<TrailNode> worth =
            atClose(effect.sharesAdded < 0 ? "Journaled out" : "Journaled in", std::move(shares),
                    dayOf(row));
        moved.push_back(worth ? std::move(*worth) : leaf("Not known", Decimal::nan()));
      }
    }
    TrailNode sum = sumOf("Shares journaled", unit_, std::move(moved));
    if (sum.value != figures_.journaled) {
      sum = leaf("Shares journaled", figures_.journaled);
      sum.note = "at the prices of their days";
    }
    return sum;
  }

  /// The sum over the rows of the range of what `amountOf` has of each; a leaf where that is not
  /// `figure`, since the ledger has changed.
  template <typename AmountOf>
  [[nodiscard]] TrailNode ofRows(const char* label, const Decimal& figure,
                                 AmountOf amountOf) const {
    const Date start = ground_.scope.from.startIn(ground_.calendar);
    const auto& rows = portfolio_.transactions();
    std::vector<std::size_t> found;
    for (const std::size_t i : rows_) {
      if (start <= rows[i]->settlementDate() &&
          !amountOf(transactionEffect(rows[i]->basic.kind)).isZero()) {
        found.push_back(i);
      }
    }
    const std::size_t first =
        found.size() > mostEquityRowsListed ? found.size() - mostEquityRowsListed : 0;
    std::vector<TrailNode> leaves;
    Decimal older;
    for (std::size_t k = 0; k < found.size(); ++k) {
      const PortfolioTransaction& row = *rows[found[k]];
      const TransactionEffect effect = transactionEffect(row.basic.kind);
      const Decimal amount = amountOf(effect);
      if (k >= first) {
        leaves.push_back(rowLeaf(found[k], effect, amount));
        continue;
      }
      older += amount;
      if (k + 1 == first) {
        leaves.push_back(leaf(std::to_string(first) + " rows up to " + isoText(dayOf(row)), older));
        leaves.back().source = "the ledger of “" + portfolio_.name + "”";
      }
    }
    TrailNode sum = sumOf(label, unit_, std::move(leaves));
    return sum.value == figure ? std::move(sum) : ofOlderLedger(label, figure, unit_);
  }

  [[nodiscard]] TrailNode rowLeaf(std::size_t position, const TransactionEffect& effect,
                                  const Decimal& amount) const {
    const PortfolioTransaction& row = *portfolio_.transactions()[position];
    TrailNode made =
        leaf(effect.sharesAdded.isZero() ? "Dividend"
                                         : abs(effect.sharesAdded).description() + " shares " +
                                               (effect.sharesAdded < 0 ? "sold" : "bought"),
             amount);
    made.day = dayOf(row);
    if (*effect.currency != primary_) {
      made.note = abs(effect.amount).description() + " " + std::string(effect.currency->code) +
                  " at the equivalent that was entered";
    }
    return fromRow(std::move(made), portfolio_, position);
  }

  /// Shares × close × rate at the end of `day`; a leaf where that is not `figure`, as where
  /// another price than a close stood for the value.
  [[nodiscard]] TrailNode worth(const char* label, const Decimal& figure,
                                const YearMonthDay& day) const {
    TrailNode whole = leaf(label, figure);
    whole.day = day;
    const auto row = lastRowUpTo(day);
    if (figure.isZero() || !row) {
      return whole;
    }
    std::optional<TrailNode> made =
        atClose(label,
                fromRow({.label = "Shares held",
                         .value = portfolio_.transactions()[*row]->sharesNet.value_or(0)},
                        portfolio_, *row),
                day);
    return made && made->value == figure ? std::move(*made) : whole;
  }

  /// `shares` at close and rate of `day`; none where the market has not told both.
  [[nodiscard]] std::optional<TrailNode> atClose(const char* label, TrailNode shares,
                                                 const YearMonthDay& day) const {
    const auto line = ground_.history->prices.find(figures_.equity);
    const PriceLine::Close* close =
        line == ground_.history->prices.end() ? nullptr : line->second.lastUpTo(day);
    if (close == nullptr) {
      return std::nullopt;
    }
    const Currency& own = figures_.equity->currency;
    std::vector<TrailNode> factors = {std::move(shares),
                                      {.label = "Close",
                                       .value = close->price,
                                       .unit = std::string(own.code),
                                       .day = close->day,
                                       .source = "prices of " + figures_.equity->symbol}};
    if (own != primary_) {
      const auto rates = ground_.history->rates.find({own, primary_});
      const PriceLine::Close* rate =
          rates == ground_.history->rates.end() ? nullptr : rates->second.lastUpTo(day);
      if (rate == nullptr) {
        return std::nullopt;
      }
      factors.push_back({.label = "Rate of " + std::string(own.code),
                         .value = rate->price,
                         .day = rate->day,
                         .source = "rates of " + std::string(own.code) + " in " + unit_});
    }
    TrailNode made = productOf(label, unit_, std::move(factors));
    made.day = day;
    return made;
  }

  [[nodiscard]] std::optional<std::size_t> lastRowUpTo(const YearMonthDay& day) const {
    const Date end = daysAfter(day, 1).startIn(ground_.calendar);
    const auto after = std::ranges::lower_bound(rows_, end, {}, [&](std::size_t i) {
      return portfolio_.transactions()[i]->settlementDate();
    });
    return after == rows_.begin() ? std::nullopt : std::optional(*std::prev(after));
  }

  const EquityFigures& figures_;
  const EquityTrailGround& ground_;
  Portfolio& portfolio_;
  const Currency primary_;
  const std::string unit_;
  std::vector<std::size_t> rows_;  ///< of the equity, up to the end of the range
};

/// The days that the returns of the equity are measured on.
std::vector<ValuationDay> ownDaysOf(const EquityPointer& equity, const EquityTrailGround& ground) {
  ValuationScope scope = ground.scope;
  scope.equity = equity;
  std::vector<ValuationDay> own;
  (void)valuationSeries(*ground.portfolio, scope, *ground.history, ground.calendar,
                        [&](const EquityFigures&, std::span<const ValuationDay> days) {
                          own.assign(days.begin(), days.end());
                        });
  return own;
}

/// `trail`, unless it leads to another return than the one that is shown.
std::optional<TrailNode> ofShown(std::optional<TrailNode> trail, std::string label,
                                 const std::optional<double>& shown) {
  constexpr double digitsShown = 0.006;  // of a percentage with two digits
  if (!trail || !shown || std::abs(trail->value.doubleValue() - 100 * *shown) > digitsShown) {
    return std::nullopt;
  }
  trail->label = std::move(label);
  return trail;
}

}  // namespace

TrailNode equityFigureTrail(EquityFigure figure, const EquityFigures& figures,
                            const EquityTrailGround& ground) {
  const EquityTrail trail(figures, ground);
  const auto shown = [&](const char* label, TrailNode exact) {
    return roundedTo(ground.portfolio->primaryCurrency().minorUnits, label + figures.equity->symbol,
                     std::move(exact));
  };
  switch (figure) {
    case EquityFigure::opening:
      return shown("Opening value of ", trail.opening());
    case EquityFigure::bought:
      return shown("Bought of ", trail.bought());
    case EquityFigure::sold:
      return shown("Sold of ", trail.sold());
    case EquityFigure::dividends:
      return shown("Dividends of ", trail.dividends());
    case EquityFigure::closing:
      return shown("Closing value of ", trail.closing());
    case EquityFigure::gain:
      return shown("Gain of ", trail.gain());
  }
  __builtin_unreachable();
}

std::optional<TrailNode> equityTimeWeightedTrail(const EquityReturns& line,
                                                 const EquityTrailGround& ground) {
  const EquityPointer& equity = line.figures.equity;
  return ofShown(timeWeightedTrail(ownDaysOf(equity, ground), ground.portfolio->primaryCurrency()),
                 "Time-weighted return of " + equity->symbol, line.timeWeighted);
}

std::optional<TrailNode> equityMoneyWeightedTrail(const EquityReturns& line,
                                                  const EquityTrailGround& ground) {
  const EquityPointer& equity = line.figures.equity;
  return ofShown(moneyWeightedTrail(ownDaysOf(equity, ground), ground.portfolio->primaryCurrency()),
                 "Money-weighted return of " + equity->symbol, line.moneyWeighted);
}

}  // namespace corvane
