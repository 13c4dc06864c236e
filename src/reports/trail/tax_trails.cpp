#include "reports/trail/tax_trails.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "reports/series/report_days.h"
#include "reports/tax/sale_estimate.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

/// So many steps of a pool are told at most; what lies before is one leaf.
constexpr std::size_t mostStepsOfPool = 50;

class TaxTrail {
 public:
  TaxTrail(const TaxedEquity& line, std::span<const TaxHolder> holders, TaxWalk walk)
      : line_(line),
        holders_(holders),
        walk_(std::move(walk)),
        unit_(line.currency.code),
        digits_(line.currency.minorUnits) {}

  [[nodiscard]] std::optional<TrailNode> gainOfRow(std::size_t row) const {
    const auto found = std::ranges::find(walk_.disposals, row, &TaxDisposal::row);
    if (found == walk_.disposals.end()) {
      return std::nullopt;
    }
    const TaxDisposal& sale = *found;
    TrailNode gain =
        roundedTo(digits_, "Gain before anything is denied",
                  differenceOf("Proceeds less cost", unit_,
                               {leaf("Proceeds", line_.rows[row].amount, unit_, row), cost(sale)}));
    if (sale.superficial.denied.isZero()) {
      gain.label = "Tax gain of the sale of " + isoText(line_.rows[row].day);
      return gain;
    }
    return sumOf("Tax gain of the sale of " + isoText(line_.rows[row].day), unit_,
                 {std::move(gain), denied(sale)});
  }

  [[nodiscard]] std::optional<TrailNode> costOfRow(std::size_t row) const {
    const auto found = std::ranges::find(walk_.disposals, row, &TaxDisposal::row);
    return found == walk_.disposals.end()
               ? std::nullopt
               : std::optional(roundedTo(
                     digits_, "Cost base of what was sold on " + isoText(line_.rows[row].day),
                     cost(*found)));
  }

  /// The cost base of `holder` at the end of `day`, which is known to be `cost`.
  [[nodiscard]] std::optional<TrailNode> costAtEnd(std::size_t holder, const YearMonthDay& day,
                                                   const Decimal& cost) const {
    const auto end = static_cast<std::size_t>(
        std::ranges::upper_bound(line_.rows, day, {}, &TaxRow::day) - line_.rows.begin());
    const std::vector<Step> steps = stepsUpTo(end, holder);
    if (steps.empty()) {
      return std::nullopt;
    }
    TrailNode pool = leaf("Cost base before", steps.front().before, unit_, steps.front().row);
    for (const Step& step : steps) {
      pool = afterStep(step, std::move(pool));
    }
    const bool isMatched = std::ranges::any_of(
        walk_.disposals, [](const TaxDisposal& sale) { return !sale.matches.empty(); });
    if (isMatched || pool.value != cost) {
      pool = leaf("", cost, unit_, steps.back().row);
    }
    return roundedTo(digits_,
                     "Cost base of " + line_.equity->symbol + " at the end of " + isoText(day),
                     std::move(pool));
  }

 private:
  [[nodiscard]] std::string holderText(std::size_t row) const {
    const TaxHolder& holder = holders_[line_.rows[row].holder];
    if (!holder.isTaxable) {
      return ", registered";
    }
    return holder.name.empty() ? "" : ", of " + holder.name;
  }

  [[nodiscard]] TrailNode leaf(std::string label, const Decimal& value, std::string unit,
                               std::size_t row) const {
    const TaxRowPlace& place = line_.places[row];
    TrailNode made = fromRow({.label = std::move(label),
                              .value = value,
                              .unit = std::move(unit),
                              .day = line_.rows[row].day},
                             *place.portfolio, place.position);
    made.source += holderText(row);
    return made;
  }

  // The cost of what was sold.

  [[nodiscard]] TrailNode cost(const TaxDisposal& sale) const {
    const std::string label = "Cost base of the shares sold";
    if (sale.matches.empty()) {
      return sale.sharesBefore > 0 ? partOfPool(label, sale, line_.rows[sale.row].shares)
                                   : leaf(label, 0, unit_, sale.row);
    }
    std::vector<TrailNode> parts;
    for (const TaxDisposal::Match& match : sale.matches) {
      const std::string shares = match.shares.description() + " shares";
      if (match.rule == TaxDisposal::Match::Rule::pool && sale.sharesBefore > 0) {
        parts.push_back(partOfPool(shares + " of the pool", sale, match.shares));
      } else {
        parts.push_back({.label = shares + " bought on " + isoText(match.day),
                         .value = match.cost,
                         .unit = unit_,
                         .day = match.day,
                         .source = match.rule == TaxDisposal::Match::Rule::sameDay
                                       ? "purchases of the same day"
                                       : "purchases of the next 30 days"});
      }
    }
    return sumOf(label, unit_, std::move(parts));
  }

  [[nodiscard]] TrailNode partOfPool(std::string label, const TaxDisposal& sale,
                                     const Decimal& shares) const {
    return quotientOf(std::move(label), unit_,
                      productOf("Cost base × shares", unit_,
                                {poolBefore(sale), leaf("Shares sold", shares, "", sale.row)}),
                      leaf("Shares of the pool before", sale.sharesBefore, "", sale.row));
  }

  /// What has happened to a pool: a row, or a part of a loss that was denied at that row.
  struct Step {
    std::size_t row;
    std::optional<Decimal> added;
    Decimal before;  ///< cost base
  };

  /// The cost base before the sale. Where shares are matched with purchases the pool is told by one
  /// leaf, since what enters it depends on sales to come.
  [[nodiscard]] TrailNode poolBefore(const TaxDisposal& sale) const {
    if (!sale.matches.empty()) {
      return leaf("Cost base of the pool before", sale.costBefore, unit_, sale.row);
    }
    const std::vector<Step> steps = stepsUpTo(sale.row, line_.rows[sale.row].holder);
    if (steps.empty()) {
      return leaf("Cost base of the pool before", sale.costBefore, unit_, sale.row);
    }
    TrailNode pool = leaf("Cost base before", steps.front().before, unit_, steps.front().row);
    for (const Step& step : steps) {
      pool = afterStep(step, std::move(pool));
    }
    return pool;
  }

  /// What has happened to the pool of `holder` before the row at `end`, since it was empty.
  [[nodiscard]] std::vector<Step> stepsUpTo(std::size_t end, std::size_t holder) const {
    std::vector<Step> steps;
    Decimal cost;
    auto disposal = walk_.disposals.begin();
    for (std::size_t i = 0; i < end; ++i) {
      if (line_.rows[i].holder == holder) {
        steps.push_back({i, std::nullopt, cost});
        cost = walk_.poolsAfter[i].cost;
        if (walk_.poolsAfter[i].shares.isZero() && cost.isZero()) {
          steps.clear();
        }
      }
      for (; disposal != walk_.disposals.end() && disposal->row <= i; ++disposal) {
        for (const auto& [who, amount] : disposal->superficial.additions) {
          if (who == holder) {
            steps.push_back({i, amount, cost});
            cost += amount;
          }
        }
      }
    }
    if (steps.size() > mostStepsOfPool) {
      steps.erase(steps.begin(), steps.end() - mostStepsOfPool);
    }
    return steps;
  }

  [[nodiscard]] TrailNode afterStep(const Step& step, TrailNode before) const {
    const TaxRow& row = line_.rows[step.row];
    if (step.added) {
      return sumOf("Cost base with a denied loss", unit_,
                   {std::move(before), leaf("Denied loss", *step.added, unit_, step.row)});
    }
    const TaxWalk::Pool& after = walk_.poolsAfter[step.row];
    const std::string label = "Cost base after " + isoText(row.day);
    const bool givesUp =
        row.kind == TaxRow::Kind::sale || (row.kind == TaxRow::Kind::journaled && row.shares < 0);
    if (givesUp) {
      const Decimal held = after.shares + abs(row.shares);
      if (held <= 0) {
        return leaf(label, 0, unit_, step.row);
      }
      return roundedTo(digits_, label,
                       quotientOf("Cost base of the shares that stay", unit_,
                                  productOf("Cost base × shares", unit_,
                                            {std::move(before),
                                             leaf("Shares that stay", after.shares, "", step.row)}),
                                  leaf("Shares before", held, "", step.row)));
    }
    if (row.kind == TaxRow::Kind::split) {
      before.label = label;
      return before;
    }
    const bool isReturn = row.kind == TaxRow::Kind::returnOfCapital;
    TrailNode amount =
        leaf(isReturn ? "Capital returned" : "Added to the cost base", row.amount, unit_, step.row);
    TrailNode exact = isReturn ? differenceOf("Cost base less what was returned", unit_,
                                              {std::move(before), std::move(amount)})
                               : sumOf("Cost base with what was added", unit_,
                                       {std::move(before), std::move(amount)});
    if (exact.value < 0) {
      TrailNode nothing = leaf(label, 0, unit_, step.row);
      nothing.note = "what was returned beyond the cost base was a deemed gain";
      return nothing;
    }
    return roundedTo(digits_, label, std::move(exact));
  }

  // What is denied.

  [[nodiscard]] TrailNode denied(const TaxDisposal& sale) const {
    const SuperficialLoss& loss = sale.superficial;
    std::vector<TrailNode> purchases;
    for (const auto& [row, shares] : loss.purchases) {
      const bool isJournaled = line_.rows[row].kind == TaxRow::Kind::journaled;
      purchases.push_back(leaf(!isJournaled ? "Bought"
                               : shares < 0 ? "Journaled out"
                                            : "Journaled in",
                               shares, "", row));
    }
    std::vector<TrailNode> holdings;
    for (const auto& [holder, shares] : loss.holdings) {
      const TaxHolder& who = holders_[holder];
      holdings.push_back({.label = who.name.empty() ? "Held by you" : "Held by " + who.name,
                          .value = shares,
                          .day = loss.to,
                          .source = who.isTaxable ? "" : "registered"});
    }
    const TrailNode sold = leaf("Shares sold", loss.sold, "", sale.row);
    TrailNode counted =
        leastOf("Shares that count", "",
                {sold,
                 sumOf("Bought from " + isoText(loss.from) + " to " + isoText(loss.to), "",
                       std::move(purchases)),
                 sumOf("Held by all at the end of " + isoText(loss.to), "", std::move(holdings))});
    TrailNode made = roundedTo(
        digits_, "Denied",
        quotientOf("Part of the loss", unit_,
                   productOf("Loss × shares that count", unit_,
                             {leaf("Loss", -sale.gain, unit_, sale.row), std::move(counted)}),
                   sold));
    const std::string additions = additionsText(loss, holders_);
    made.note += (made.note.empty() ? "" : "; ") +
                 (additions.empty() ? "no buyer holds shares at the end: please check"
                                    : "added to " + additions);
    if (loss.isProvisional) {
      made.note += "; provisional until " + isoText(loss.to);
    }
    return made;
  }

  const TaxedEquity& line_;
  std::span<const TaxHolder> holders_;
  const TaxWalk walk_;
  const std::string unit_;
  const int digits_;
};

/// What `make` has to tell of the trail of `equity` in portfolios of `currency`.
template <typename Make>
std::optional<TrailNode> onLineOf(const EquityPointer& equity, const Currency& currency,
                                  std::span<const TaxedPortfolio> portfolios,
                                  const TaxYearQuestion& question, const Calendar& calendar,
                                  Make make) {
  const TaxLedger ledger = taxLedger(portfolios, question, calendar, equity);
  const TaxedEquity* line = ledger.find(equity, currency);
  if (line == nullptr) {
    return std::nullopt;
  }
  return make(ledger, *line,
              TaxTrail(*line, ledger.holders,
                       walkTaxes(line->rows, ledger.holders, taxRules(*line, question))));
}

template <typename Make>
std::optional<TrailNode> onRowOf(const TaxRowPlace& sale,
                                 std::span<const TaxedPortfolio> portfolios,
                                 const TaxYearQuestion& question, const Calendar& calendar,
                                 Make make) {
  return onLineOf(
      sale.equity, sale.portfolio->primaryCurrency(), portfolios, question, calendar,
      [&](const TaxLedger&, const TaxedEquity& line,
          const TaxTrail& trail) -> std::optional<TrailNode> {
        const auto found = std::ranges::find_if(line.places, [&](const TaxRowPlace& place) {
          return place.portfolio == sale.portfolio && place.position == sale.position;
        });
        return found == line.places.end()
                   ? std::nullopt
                   : make(trail, static_cast<std::size_t>(found - line.places.begin()));
      });
}

}  // namespace

std::optional<TrailNode> taxGainTrail(const TaxYear::Disposal& disposal,
                                      std::span<const TaxedPortfolio> portfolios,
                                      const TaxYearQuestion& question, const Calendar& calendar) {
  return onRowOf(disposal.place, portfolios, question, calendar,
                 [](const TaxTrail& trail, std::size_t row) { return trail.gainOfRow(row); });
}

std::optional<TrailNode> taxCostTrail(const TaxYear::Disposal& disposal,
                                      std::span<const TaxedPortfolio> portfolios,
                                      const TaxYearQuestion& question, const Calendar& calendar) {
  return onRowOf(disposal.place, portfolios, question, calendar,
                 [](const TaxTrail& trail, std::size_t row) { return trail.costOfRow(row); });
}

std::optional<TrailNode> taxCostAtEndTrail(const TaxYear::CostAtEnd& cost,
                                           std::span<const TaxedPortfolio> portfolios,
                                           const TaxYearQuestion& question,
                                           const Calendar& calendar) {
  return onLineOf(
      cost.equity, cost.currency, portfolios, question, calendar,
      [&](const TaxLedger& ledger, const TaxedEquity&,
          const TaxTrail& trail) -> std::optional<TrailNode> {
        const auto whose = std::ranges::find_if(
            ledger.holders, [&](const TaxHolder& holder) { return isSubject(holder, question); });
        return whose == ledger.holders.end()
                   ? std::nullopt
                   : trail.costAtEnd(static_cast<std::size_t>(whose - ledger.holders.begin()),
                                     question.last, cost.pool.cost);
      });
}

}  // namespace corvane
