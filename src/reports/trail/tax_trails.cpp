#include "reports/trail/tax_trails.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "reports/series/report_days.h"
#include "reports/tax/equity_splits.h"
#include "reports/tax/sale_estimate.h"
#include "reports/tax/share_matching.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

/// So many steps of a pool are told at most; what lies before is one leaf.
constexpr std::size_t mostStepsOfPool = 50;

class TaxTrail {
 public:
  TaxTrail(const TaxedEquity& line, std::span<const TaxHolder> holders, const TaxRules& rules)
      : line_(line),
        holders_(holders),
        walk_(walkTaxes(line.rows, holders, rules)),
        splits_(line.rows),
        isMatched_(rules.country == TaxCountry::unitedKingdom),
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
      gain.label = gainLabel(line_.rows[row].day);
      return gain;
    }
    return sumOf(gainLabel(line_.rows[row].day), unit_, {std::move(gain), denied(sale)});
  }

  [[nodiscard]] std::optional<TrailNode> costOfRow(std::size_t row) const {
    const auto found = std::ranges::find(walk_.disposals, row, &TaxDisposal::row);
    return found == walk_.disposals.end()
               ? std::nullopt
               : std::optional(roundedTo(digits_, costLabel(line_.rows[row].day), cost(*found)));
  }

  /// The cost base of `holder` at the end of `day`; none where he has had no row by then.
  [[nodiscard]] std::optional<TrailNode> costAtEnd(std::size_t holder,
                                                   const YearMonthDay& day) const {
    const auto end = static_cast<std::size_t>(
        std::ranges::upper_bound(line_.rows, day, {}, &TaxRow::day) - line_.rows.begin());
    std::optional<TrailNode> pool = poolAfter(stepsUpTo(end, holder));
    if (!pool) {
      return std::nullopt;
    }
    return roundedTo(digits_, costAtEndLabel(*line_.equity, day), std::move(*pool));
  }

  static std::string costAtEndLabel(const EquityInfo& equity, const YearMonthDay& day) {
    return "Cost base of " + equity.symbol + " at the end of " + isoText(day);
  }
  static std::string gainLabel(const YearMonthDay& day) {
    return "Tax gain of the sale of " + isoText(day);
  }
  static std::string costLabel(const YearMonthDay& day) {
    return "Cost base of what was sold on " + isoText(day);
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

  [[nodiscard]] TrailNode poolBefore(const TaxDisposal& sale) const {
    std::optional<TrailNode> pool = poolAfter(stepsUpTo(sale.row, line_.rows[sale.row].holder));
    return pool && pool->value == sale.costBefore
               ? std::move(*pool)
               : leaf("Cost base of the pool before", sale.costBefore, unit_, sale.row);
  }

  /// The cost base that `steps` have led to; none without any.
  [[nodiscard]] std::optional<TrailNode> poolAfter(const std::vector<Step>& steps) const {
    if (steps.empty()) {
      return std::nullopt;
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
      if (line_.rows[i].holder == holder && !(isMatched_ && isLaterPurchaseOfItsDay(i))) {
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
    if (isMatched_ && row.kind == TaxRow::Kind::purchase) {
      return afterMatchedPurchases(step.row, label, std::move(before));
    }
    if (isMatched_ && row.kind == TaxRow::Kind::sale) {
      return afterMatchedSale(step.row, label, std::move(before));
    }
    const bool givesUp =
        row.kind == TaxRow::Kind::sale || (row.kind == TaxRow::Kind::journaled && row.shares < 0);
    if (givesUp) {
      return costThatStays(step.row, label, std::move(before), after.shares + abs(row.shares),
                           after.shares);
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

  /// What stays of the cost base `before` with `left` of `held` shares.
  [[nodiscard]] TrailNode costThatStays(std::size_t row, const std::string& label, TrailNode before,
                                        const Decimal& held, const Decimal& left) const {
    if (held <= 0) {
      return leaf(label, 0, unit_, row);
    }
    return roundedTo(
        digits_, label,
        quotientOf("Cost base of the shares that stay", unit_,
                   productOf("Cost base × shares", unit_,
                             {std::move(before), leaf("Shares that stay", left, "", row)}),
                   leaf("Shares before", held, "", row)));
  }

  // Shares that are matched with purchases.

  [[nodiscard]] bool isPurchaseOf(std::size_t row, std::size_t holder,
                                  const YearMonthDay& day) const {
    return line_.rows[row].kind == TaxRow::Kind::purchase && line_.rows[row].holder == holder &&
           line_.rows[row].day == day;
  }

  /// All purchases of a day count as one, which enters the pool with its first row.
  [[nodiscard]] bool isLaterPurchaseOfItsDay(std::size_t row) const {
    const TaxRow& later = line_.rows[row];
    if (later.kind != TaxRow::Kind::purchase) {
      return false;
    }
    for (std::size_t i = row; i > 0 && line_.rows[i - 1].day == later.day; --i) {
      if (isPurchaseOf(i - 1, later.holder, later.day)) {
        return true;
      }
    }
    return false;
  }

  /// The purchases of a day whose first one is at `first`: what sales have not taken of them enters
  /// the pool, with its part of what they have cost.
  [[nodiscard]] TrailNode afterMatchedPurchases(std::size_t first, const std::string& label,
                                                TrailNode before) const {
    const TaxRow& row = line_.rows[first];
    std::vector<TrailNode> shares;
    std::vector<TrailNode> costs;
    for (std::size_t i = first; i < line_.rows.size() && line_.rows[i].day == row.day; ++i) {
      if (isPurchaseOf(i, row.holder, row.day)) {
        const Decimal bought =
            splits_.converted(line_.rows[i].shares, splits_.before(i), splits_.before(first));
        shares.push_back(leaf("Bought", bought, "", i));
        costs.push_back(leaf("Cost of the purchase", line_.rows[i].amount, unit_, i));
      }
    }
    TrailNode bought = sumOf("Bought on " + isoText(row.day), "", std::move(shares));
    TrailNode cost = sumOf("Cost of all bought on " + isoText(row.day), unit_, std::move(costs));
    std::vector<TrailNode> unmatched = {bought};
    for (TrailNode& taken : takenBySales(row.holder, row.day)) {
      unmatched.push_back(std::move(taken));
    }
    if (unmatched.size() > 1) {
      TrailNode entering = differenceOf("Shares that enter the pool", "", std::move(unmatched));
      if (entering.value <= 0) {
        before.label = label;
        before.note = "all that was bought is matched with sales";
        return before;
      }
      TrailNode product = productOf("Cost × shares", unit_, {std::move(cost), std::move(entering)});
      cost = quotientOf("Cost of the shares that enter the pool", unit_, std::move(product),
                        std::move(bought));
    }
    return roundedTo(
        digits_, label,
        sumOf("Cost base with what was bought", unit_, {std::move(before), std::move(cost)}));
  }

  /// What sales have taken of the purchases of `day`, in shares of the first of them.
  [[nodiscard]] std::vector<TrailNode> takenBySales(std::size_t holder,
                                                    const YearMonthDay& day) const {
    std::vector<TrailNode> taken;
    const auto dayOf = [&](const TaxDisposal& sale) { return line_.rows[sale.row].day; };
    auto sale =
        std::ranges::lower_bound(walk_.disposals, daysAfter(day, -daysOfMatching), {}, dayOf);
    for (; sale != walk_.disposals.end() && dayOf(*sale) <= day; ++sale) {
      for (const TaxDisposal::Match& match : sale->matches) {
        if (line_.rows[sale->row].holder == holder && match.day == day &&
            match.rule != TaxDisposal::Match::Rule::pool) {
          taken.push_back(leaf(match.rule == TaxDisposal::Match::Rule::sameDay
                                   ? "Matched with a sale of the same day"
                                   : "Matched with a sale of up to 30 days before",
                               match.sharesOfPurchase, "", sale->row));
        }
      }
    }
    return taken;
  }

  /// Only what is matched with no purchase leaves the pool.
  [[nodiscard]] TrailNode afterMatchedSale(std::size_t row, const std::string& label,
                                           TrailNode before) const {
    const auto sale = std::ranges::lower_bound(walk_.disposals, row, {}, &TaxDisposal::row);
    const bool isBooked = sale != walk_.disposals.end() && sale->row == row;
    if (isBooked && !sale->matches.empty() &&
        sale->matches.back().rule == TaxDisposal::Match::Rule::pool) {
      return costThatStays(row, label, std::move(before), sale->sharesBefore,
                           sale->sharesBefore - sale->matches.back().shares);
    }
    before.label = label;
    before.note = "all that was sold is matched with purchases";
    return before;
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
  const EquitySplits splits_;
  const bool isMatched_;  ///< shares that are sold, with purchases of the same day and after it
  const std::string unit_;
  const int digits_;
};

/// Whether the row at `row` is the sale that `shown` tells of, wherever it stands by now.
bool isSaleShown(const TaxYear::Disposal& shown, const TaxedEquity& line, std::size_t row) {
  const TaxRowPlace& place = line.places[row];
  return line.rows[row].kind == TaxRow::Kind::sale && place.portfolio == shown.place.portfolio &&
         place.settlement == shown.place.settlement && place.trade == shown.place.trade &&
         line.rows[row].shares == shown.shares && line.rows[row].amount == shown.equivalent;
}

/// The first trail that `make` has of a row which is the sale of `shown`, and that leads to
/// `figure`; that of the row's old place comes before others.
template <typename Make>
std::optional<TrailNode> onSaleShown(const TaxYear::Disposal& shown, const Decimal& figure,
                                     std::span<const TaxedPortfolio> portfolios,
                                     const TaxYearQuestion& question, const Calendar& calendar,
                                     Make make) {
  const TaxRowPlace& sale = shown.place;
  const TaxLedger ledger = taxLedger(portfolios, question, calendar, sale.equity);
  const TaxedEquity* line = ledger.find(sale.equity, sale.portfolio->primaryCurrency());
  if (line == nullptr) {
    return std::nullopt;
  }
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < line->rows.size(); ++i) {
    if (isSaleShown(shown, *line, i)) {
      rows.push_back(i);
    }
  }
  std::ranges::stable_partition(
      rows, [&](std::size_t row) { return line->places[row].position == sale.position; });
  const TaxTrail trail(*line, ledger.holders, taxRules(*line, question));
  for (const std::size_t row : rows) {
    std::optional<TrailNode> made = make(trail, row);
    if (made && made->value == figure) {
      return made;
    }
  }
  return std::nullopt;
}

/// The day by which a line of the year counts.
YearMonthDay dayOf(const TaxYear::Disposal& disposal, const TaxYearQuestion& question) {
  return question.byTradeDate ? disposal.place.trade : disposal.place.settlement;
}

}  // namespace

TrailNode taxGainTrail(const TaxYear::Disposal& disposal,
                       std::span<const TaxedPortfolio> portfolios, const TaxYearQuestion& question,
                       const Calendar& calendar) {
  std::optional<TrailNode> trail =
      onSaleShown(disposal, disposal.tax.taxGain, portfolios, question, calendar,
                  [](const TaxTrail& made, std::size_t row) { return made.gainOfRow(row); });
  return trail ? std::move(*trail)
               : ofOlderLedger(TaxTrail::gainLabel(dayOf(disposal, question)), disposal.tax.taxGain,
                               std::string(disposal.place.portfolio->primaryCurrency().code));
}

TrailNode taxCostTrail(const TaxYear::Disposal& disposal,
                       std::span<const TaxedPortfolio> portfolios, const TaxYearQuestion& question,
                       const Calendar& calendar) {
  const Currency& currency = disposal.place.portfolio->primaryCurrency();
  const Decimal cost = roundedToMinorUnits(disposal.tax.costDisposed, currency);
  std::optional<TrailNode> trail =
      onSaleShown(disposal, cost, portfolios, question, calendar,
                  [](const TaxTrail& made, std::size_t row) { return made.costOfRow(row); });
  return trail ? std::move(*trail)
               : ofOlderLedger(TaxTrail::costLabel(dayOf(disposal, question)), cost,
                               std::string(currency.code));
}

TrailNode taxCostAtEndTrail(const TaxYear::CostAtEnd& cost,
                            std::span<const TaxedPortfolio> portfolios,
                            const TaxYearQuestion& question, const Calendar& calendar) {
  const TaxLedger ledger = taxLedger(portfolios, question, calendar, cost.equity);
  const TaxedEquity* line = ledger.find(cost.equity, cost.currency);
  const auto whose = std::ranges::find_if(
      ledger.holders, [&](const TaxHolder& holder) { return isSubject(holder, question); });
  const Decimal shown = roundedToMinorUnits(cost.pool.cost, cost.currency);
  if (line != nullptr && whose != ledger.holders.end()) {
    const TaxTrail trail(*line, ledger.holders, taxRules(*line, question));
    auto made =
        trail.costAtEnd(static_cast<std::size_t>(whose - ledger.holders.begin()), question.last);
    if (made && made->value == shown) {
      return std::move(*made);
    }
  }
  return ofOlderLedger(TaxTrail::costAtEndLabel(*cost.equity, question.last), shown,
                       std::string(cost.currency.code));
}

}  // namespace corvane
