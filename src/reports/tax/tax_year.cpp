#include "reports/tax/tax_year.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "reports/series/report_days.h"
#include "reports/tax/sale_estimate.h"

namespace corvane {
namespace {

class TaxYearBuilder {
 public:
  TaxYearBuilder(std::span<const TaxedPortfolio> portfolios, const TaxYearQuestion& question,
                 const Calendar& calendar)
      : question_(question),
        calendar_(calendar),
        ledger_(taxLedger(portfolios, question, calendar)) {
    for (const TaxedPortfolio& taxed : portfolios) {
      if (isSubject(taxed)) {
        readIncomeOf(taxed.portfolio);
      }
    }
  }

  TaxYear build() {
    for (const TaxedEquity& line : ledger_.equities) {
      if (question_.cancellation.isCancelled()) {
        break;
      }
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

  [[nodiscard]] bool isSubject(std::size_t holder) const {
    return corvane::isSubject(ledger_.holders[holder], question_);
  }
  [[nodiscard]] bool isSubject(const TaxedPortfolio& taxed) const {
    const bool isTaxed = taxed.role == TaxRole::taxable ||
                         (taxed.role == TaxRole::affiliated && !taxed.isRegistered);
    return isTaxed && taxed.person == question_.person;
  }

  void readIncomeOf(const PortfolioPointer& portfolio) {
    // Whatever is of a day by its trade settles on that day or later.
    const auto& rows = portfolio->transactions();
    const auto first = std::ranges::lower_bound(rows, question_.first.startIn(calendar_), {},
                                                &PortfolioTransaction::settlementDate);
    const Date end = daysAfter(question_.last, 1).startIn(calendar_);
    for (auto row = first; row != rows.end(); ++row) {
      const Date date = question_.byTradeDate ? (*row)->tradeDate() : (*row)->settlementDate();
      if (isInYear(YearMonthDay::of(date, calendar_))) {
        readIncome(transactionEffect((*row)->basic.kind), portfolio,
                   static_cast<std::size_t>(row - rows.begin()));
      } else if (!question_.byTradeDate && end <= date) {
        break;
      }
    }
  }

  void readIncome(const TransactionEffect& effect, const PortfolioPointer& portfolio,
                  std::size_t position) {
    const Currency& primary = portfolio->primaryCurrency();
    const auto place = [&](const EquityPointer& equity) {
      const PortfolioTransaction& row = *portfolio->transactions()[position];
      return TaxRowPlace{portfolio, position, equity,
                         YearMonthDay::of(row.settlementDate(), calendar_),
                         YearMonthDay::of(row.tradeDate(), calendar_)};
    };
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
      income.rows.push_back(place(*effect.equity));
    } else if (effect.type == TransactionType::cashAdjustment) {
      auto& sum =
          adjustments_
              .try_emplace(std::string(effect.currency->code), CurrencyAmount{*effect.currency, 0})
              .first->second;
      sum.amount += effect.amount;
      year_.adjustmentRows.push_back(place(nullptr));
    }
  }

  void takeEquity(const TaxedEquity& line) {
    const TaxWalk walk = walkTaxes(line.rows, ledger_.holders, taxRules(line, question_));
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
    made.addedTo = additionsText(loss, ledger_.holders);
    made.note = noteOf(made, line);
    if (disposal.isShort) {
      year_.toCheck.push_back({place, "more was sold than was held"});
    }
    if (loss.isOverApplied) {
      year_.toCheck.push_back({place, "the buyers hold fewer shares than the loss was denied for"});
    }
    year_.disposals.push_back(std::move(made));
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
    if (!made.tax.matches.empty()) {
      note = matchText(made.tax.matches);
    }
    const bool mayChange = made.tax.gain < 0 || !made.tax.matches.empty();
    if (loss.isProvisional && mayChange) {
      note += (note.empty() ? "" : "; ") + ("provisional until " + isoText(loss.to)) +
              ", with holdings of today";
    }
    return note;
  }

  static std::string matchText(const std::vector<TaxDisposal::Match>& matches) {
    std::string text;
    for (const TaxDisposal::Match& match : matches) {
      text += (text.empty() ? "" : ", ") + match.shares.description() + " of " +
              (match.rule == TaxDisposal::Match::Rule::pool ? "the pool" : isoText(match.day));
    }
    return text;
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
  const TaxLedger ledger_;
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
