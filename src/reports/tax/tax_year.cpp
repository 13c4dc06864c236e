#include "reports/tax/tax_year.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// The rows of one equity in portfolios of one primary currency.
struct TaxedEquity {
  EquityPointer equity;
  Currency currency;
  std::vector<TaxRow> rows;
  std::vector<TaxRowPlace> places;  ///< of each row

  void sortByDay() {
    std::vector<std::size_t> order(rows.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
      order[i] = i;
    }
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return rows[i].day; });
    const std::vector<TaxRow> oldRows = rows;
    const std::vector<TaxRowPlace> oldPlaces = places;
    for (std::size_t i = 0; i < order.size(); ++i) {
      rows[i] = oldRows[order[i]];
      places[i] = oldPlaces[order[i]];
    }
  }
};

std::optional<TaxRow> taxRowOf(const TransactionEffect& effect) {
  TaxRow row;
  row.shares = effect.sharesAdded;
  row.amount = abs(effect.costAdded);
  switch (effect.type) {
    case TransactionType::trade:
      row.kind = effect.isSale() ? TaxRow::Kind::sale : TaxRow::Kind::purchase;
      row.shares = abs(effect.sharesAdded);
      row.amount = effect.isSale() ? effect.equivalentAmount.value_or(0)
                                   : -effect.equivalentAmount.value_or(0);
      return row;
    case TransactionType::split:
      row.kind = TaxRow::Kind::split;
      row.shares = 0;
      row.splitFrom = effect.declaredShares.value_or(0);
      row.splitInto = effect.splitInto.value_or(0);
      return row;
    case TransactionType::journaledShares:
      row.kind = TaxRow::Kind::journaled;
      return row;
    case TransactionType::reinvestedDistribution:
      row.kind = TaxRow::Kind::reinvestedDistribution;
      return row;
    case TransactionType::returnOfCapital:
      row.kind = TaxRow::Kind::returnOfCapital;
      return row;
    case TransactionType::dividend:
    case TransactionType::capitalGainsDividend:
    case TransactionType::transfer:
    case TransactionType::cashAdjustment:
      return std::nullopt;
  }
  __builtin_unreachable();
}

class TaxYearBuilder {
 public:
  TaxYearBuilder(std::span<const TaxedPortfolio> portfolios, const TaxYearQuestion& question,
                 const Calendar& calendar)
      : question_(question), calendar_(calendar) {
    for (std::size_t i = 0; i < portfolios.size(); ++i) {
      if (portfolios[i].role != TaxRole::notMine) {
        readPortfolio(portfolios[i], i);
      }
    }
  }

  TaxYear build() {
    for (TaxedEquity& line : equities_) {
      line.sortByDay();
      takeEquity(line);
    }
    std::ranges::stable_sort(year_.disposals, {}, [&](const TaxYear::Disposal& disposal) {
      return dayOf(disposal.place);
    });
    addTotals();
    takeIncome();
    return std::move(year_);
  }

 private:
  [[nodiscard]] YearMonthDay dayOf(const TaxRowPlace& place) const {
    return question_.byTradeDate ? place.trade : place.settlement;
  }
  [[nodiscard]] bool isInYear(const YearMonthDay& day) const {
    return question_.first <= day && day <= question_.last;
  }

  std::size_t holderOf(const TaxedPortfolio& taxed) {
    TaxHolder holder{taxed.person, taxed.role != TaxRole::registered};
    if (!holder.isTaxable) {
      holder.name = taxed.portfolio->name;
    }
    const auto known = std::ranges::find_if(holders_, [&](const TaxHolder& other) {
      return other.name == holder.name && other.isTaxable == holder.isTaxable && holder.isTaxable;
    });
    if (known != holders_.end()) {
      return static_cast<std::size_t>(known - holders_.begin());
    }
    holders_.push_back(std::move(holder));
    return holders_.size() - 1;
  }
  [[nodiscard]] bool isSubject(std::size_t holder) const {
    return holders_[holder].isTaxable && holders_[holder].name == question_.person;
  }

  void readPortfolio(const TaxedPortfolio& taxed, std::size_t number) {
    const std::size_t holder = holderOf(taxed);
    const YearMonthDay end = daysAfter(question_.last, 30);
    const auto& rows = taxed.portfolio->transactions();
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const TransactionEffect effect = transactionEffect(rows[i]->basic.kind);
      TaxRowPlace place{taxed.portfolio, i, effect.equity == nullptr ? nullptr : *effect.equity,
                        YearMonthDay::of(rows[i]->settlementDate(), calendar_),
                        YearMonthDay::of(rows[i]->tradeDate(), calendar_)};
      const YearMonthDay day = dayOf(place);
      if (end < day) {
        if (question_.byTradeDate) {
          continue;
        }
        break;
      }
      if (isSubject(holder) && isInYear(day)) {
        readIncome(effect, taxed.portfolio->primaryCurrency());
      }
      if (auto row = taxRowOf(effect)) {
        row->day = day;
        row->holder = holder;
        row->portfolio = number;
        TaxedEquity& line = lineOf(place.equity, taxed.portfolio->primaryCurrency());
        line.rows.push_back(*row);
        line.places.push_back(std::move(place));
      }
    }
  }

  TaxedEquity& lineOf(const EquityPointer& equity, const Currency& currency) {
    auto& place = places_[std::string(currency.code)];
    const auto [found, isNew] = place.try_emplace(equity, equities_.size());
    if (isNew) {
      equities_.push_back({equity, currency, {}, {}});
    }
    return equities_[found->second];
  }

  void readIncome(const TransactionEffect& effect, const Currency& primary) {
    if (effect.isYield()) {
      const auto key = std::tuple((*effect.equity)->symbol, (*effect.equity)->id(),
                                  std::string(effect.currency->code), static_cast<int>(effect.type),
                                  std::string(primary.code));
      auto& income =
          income_
              .try_emplace(
                  key,
                  TaxYear::Income{*effect.equity, effect.type, {*effect.currency, 0}, {primary, 0}})
              .first->second;
      income.amount.amount += effect.amount;
      income.equivalent.amount += effect.equivalentAmount.value_or(0);
    } else if (effect.type == TransactionType::cashAdjustment) {
      auto& sum =
          adjustments_
              .try_emplace(std::string(effect.currency->code), CurrencyAmount{*effect.currency, 0})
              .first->second;
      sum.amount += effect.amount;
    }
  }

  void takeEquity(const TaxedEquity& line) {
    const TaxRules rules{line.currency, question_.deniesSuperficialLosses, question_.today};
    const TaxWalk walk = walkTaxes(line.rows, holders_, rules);
    for (const TaxDisposal& disposal : walk.disposals) {
      if (isSubject(line.rows[disposal.row].holder) && isInYear(line.rows[disposal.row].day)) {
        takeDisposal(line, disposal);
      }
    }
    for (const TaxWalk::DeemedGain& deemed : walk.deemedGains) {
      if (isSubject(line.rows[deemed.row].holder) && isInYear(line.rows[deemed.row].day)) {
        year_.deemedGains.push_back({line.places[deemed.row], deemed.amount});
      }
    }
    checkJournaled(line);
    takeCost(line, walk);
  }

  void takeDisposal(const TaxedEquity& line, const TaxDisposal& disposal) {
    const TaxRowPlace& place = line.places[disposal.row];
    const TransactionEffect effect = transactionEffect(place.row().basic.kind);
    TaxYear::Disposal made{.place = place,
                           .shares = -effect.sharesAdded,
                           .proceeds = {*effect.currency, effect.amount},
                           .rate = 1,
                           .equivalent = effect.equivalentAmount.value_or(0),
                           .tax = disposal,
                           .ledgerGain = place.row().capitalGain(),
                           .addedTo = {},
                           .note = {}};
    if (!effect.amount.isZero()) {
      made.rate = made.equivalent / effect.amount;
    }
    const SuperficialLoss& loss = disposal.superficial;
    for (const auto& [holder, amount] : loss.additions) {
      made.addedTo += (made.addedTo.empty() ? "" : ", ") + nameOf(holder) + " " +
                      amount.description() + (holders_[holder].isTaxable ? "" : " (lost)");
    }
    made.note = noteOf(made, line);
    if (disposal.isShort) {
      year_.toCheck.push_back({place, "more was sold than was held"});
    }
    if (loss.isOverApplied) {
      year_.toCheck.push_back({place, "the buyers hold fewer shares than the loss was denied for"});
    }
    year_.disposals.push_back(std::move(made));
  }

  [[nodiscard]] std::string nameOf(std::size_t holder) const {
    return holders_[holder].name.empty() ? "own cost base" : holders_[holder].name;
  }

  [[nodiscard]] std::string noteOf(const TaxYear::Disposal& made, const TaxedEquity& line) const {
    const SuperficialLoss& loss = made.tax.superficial;
    std::string note;
    if (!loss.denied.isZero()) {
      note = "superficial: " + loss.sold.description() + " sold, " + loss.bought.description() +
             " bought and " + loss.heldAtEnd.description() + " held in " + isoText(loss.from) +
             " to " + isoText(loss.to);
    } else if (made.ledgerGain != std::optional(made.tax.taxGain)) {
      const bool isPooled = std::ranges::any_of(line.places, [&](const TaxRowPlace& place) {
        return place.portfolio != made.place.portfolio;
      });
      note = isPooled ? "average cost of all portfolios"
                      : "the cost base was changed by a denied loss or by a deemed gain";
    }
    if (loss.isProvisional && made.tax.gain < 0) {
      note += (note.empty() ? "" : "; ") + ("provisional until " + isoText(loss.to)) +
              ", with holdings of today";
    }
    return note;
  }

  /// Shares that leave the pools of the taxed are taken as sold by the law; that is not computed.
  void checkJournaled(const TaxedEquity& line) {
    for (std::size_t i = 0; i < line.rows.size(); ++i) {
      const TaxRow& row = line.rows[i];
      if (row.kind != TaxRow::Kind::journaled || row.shares >= 0 || !isSubject(row.holder) ||
          !isInYear(row.day)) {
        continue;
      }
      const bool staysWithHolder = std::ranges::any_of(line.rows, [&](const TaxRow& other) {
        return other.kind == TaxRow::Kind::journaled && other.day == row.day &&
               other.holder == row.holder && other.shares == -row.shares;
      });
      if (!staysWithHolder) {
        year_.toCheck.push_back(
            {line.places[i], row.shares.description() +
                                 " shares journaled out: a disposal at market value may be deemed, "
                                 "and a loss into a registered account is denied"});
      }
    }
  }

  void takeCost(const TaxedEquity& line, const TaxWalk& walk) {
    std::optional<std::size_t> last;
    for (std::size_t i = 0; i < line.rows.size() && line.rows[i].day <= question_.last; ++i) {
      if (isSubject(line.rows[i].holder)) {
        last = i;
      }
    }
    if (!last) {
      return;
    }
    TaxWalk::Pool pool = walk.poolsAfter[*last];
    for (const TaxDisposal& disposal : walk.disposals) {
      if (disposal.row < *last || question_.last < line.rows[disposal.row].day) {
        continue;
      }
      for (const auto& [holder, amount] : disposal.superficial.additions) {
        pool.cost += isSubject(holder) ? amount : 0;
      }
    }
    if (!pool.shares.isZero() || !pool.cost.isZero()) {
      year_.costs.push_back({line.equity, line.currency, pool});
    }
  }

  void addTotals() {
    std::map<std::tuple<std::string, int, std::string, std::string>, TaxYear::Totals> totals;
    for (const TaxYear::Disposal& disposal : year_.disposals) {
      const EquityPointer& equity = disposal.place.equity;
      const Currency& currency = disposal.place.portfolio->primaryCurrency();
      const std::string code(currency.code);
      for (const auto& [key, whose] :
           {std::pair(std::tuple(code, 0, equity->symbol, equity->id()), equity),
            std::pair(std::tuple(code, 1, std::string(), std::string()), EquityPointer())}) {
        auto& line = totals.try_emplace(key, TaxYear::Totals{whose, currency, {}, {}, {}, {}, {}})
                         .first->second;
        line.proceeds += disposal.equivalent;
        line.costBase += disposal.equivalent - disposal.tax.gain;
        (disposal.tax.gain < 0 ? line.losses : line.gains) += abs(disposal.tax.gain);
        line.denied += disposal.tax.superficial.denied;
      }
    }
    for (auto& [key, line] : totals) {
      year_.totals.push_back(std::move(line));
    }
    std::ranges::sort(year_.costs, {}, [](const TaxYear::CostAtEnd& cost) {
      return std::tuple<std::string_view, std::string_view>(cost.equity->symbol,
                                                            cost.currency.code);
    });
  }

  void takeIncome() {
    for (auto& [key, income] : income_) {
      year_.income.push_back(std::move(income));
    }
    for (auto& [code, sum] : adjustments_) {
      year_.adjustments.push_back(sum);
    }
  }

  const TaxYearQuestion& question_;
  const Calendar& calendar_;
  std::vector<TaxHolder> holders_;
  std::vector<TaxedEquity> equities_;
  std::map<std::string, EquityMap<std::size_t>> places_;
  std::map<std::tuple<std::string, std::string, std::string, int, std::string>, TaxYear::Income>
      income_;
  std::map<std::string, CurrencyAmount> adjustments_;
  TaxYear year_;
};

}  // namespace

TaxYear taxYear(std::span<const TaxedPortfolio> portfolios, const TaxYearQuestion& question,
                const Calendar& calendar) {
  return TaxYearBuilder(portfolios, question, calendar).build();
}

}  // namespace corvane
