#include "reports/series/valuation_series.h"

#include <algorithm>
#include <cassert>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>

#include "ledger/transaction/adjusted_cost_base.h"
#include "ledger/transaction/transaction_effect.h"
#include "reports/series/price_cursor.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// The units of the primary currency for one of a currency, on each day from the base day on.
struct DailyRates {
  std::vector<std::optional<Decimal>> rates;
  std::vector<char> isImplied;  ///< by a row, where the market knew nothing yet
  std::vector<char> isQuoted;   ///< the day has a rate of its own
};

/// A row, and its day counted from the base day; 0 also stands for all days before it.
struct RowInRange {
  const PortfolioTransaction* row;
  std::size_t day;
};

/// Has the processor fetch a row that the walk of a line comes to soon. The rows of one equity lie
/// far apart in memory, and waiting for each of them would take longer than all that is done with
/// it.
[[gnu::always_inline]] inline void prefetchRow(const std::vector<RowInRange>& rows,
                                               std::size_t next) {
  constexpr std::size_t ahead = 6;
  constexpr std::size_t cacheLine = 64;
  if (next + ahead < rows.size()) {
    const auto* bytes = reinterpret_cast<const char*>(rows[next + ahead].row);
    for (std::size_t offset = 0; offset < sizeof(PortfolioTransaction); offset += cacheLine) {
      __builtin_prefetch(bytes + offset);
    }
  }
}

struct EquityLine {
  EquityPointer equity;
  std::vector<RowInRange> rows;
};

struct CashLine {
  Currency currency;
  std::vector<RowInRange> rows;
};

/// What is known of a holding on the day that a walk has reached.
struct HoldingState {
  Decimal shares;
  const PortfolioTransaction* lastRow = nullptr;
  bool isBeforeLastRow = false;  ///< its cost is that before the row
  // The last trade: what was paid for how many of the shares of today.
  bool hasTraded = false;
  bool isInOwnCurrency = false;
  Decimal tradedCash;
  Decimal tradedShares;

  void take(const PortfolioTransaction& row, const TransactionEffect& effect) {
    shares = row.sharesNet.value_or(Decimal());
    lastRow = &row;
    if (effect.type == TransactionType::trade && !effect.sharesAdded.isZero() &&
        !effect.amount.isZero()) {
      hasTraded = true;
      isInOwnCurrency = *effect.currency == (*effect.equity)->currency;
      tradedCash =
          abs(isInOwnCurrency ? effect.amount : effect.equivalentAmount.value_or(Decimal()));
      tradedShares = abs(effect.sharesAdded);
    } else if (effect.splitInto && effect.declaredShares && !effect.declaredShares->isZero()) {
      tradedShares = tradedShares * *effect.splitInto / *effect.declaredShares;
    }
  }
};

struct Worth {
  Decimal amount;
  bool isAtTradePrice = false;
};

class SeriesBuilder {
 public:
  SeriesBuilder(Portfolio& portfolio, const ValuationScope& scope, const MarketHistory& history,
                const Calendar& calendar)
      : portfolio_(portfolio),
        scope_(scope),
        history_(history),
        primary_(portfolio.primaryCurrency()),
        base_(dayNumber(scope.from) - 1),
        count_(static_cast<std::size_t>(dayNumber(scope.to) - base_ + 1)),
        values_(count_),
        isAtTradePrice_(count_, 0),
        flows_(count_),
        hasEntry_(count_, 0) {
    assert(scope.from <= scope.to && "a range has at least a day");
    series_.currency = primary_;
    names_.reserve(count_);
    for (std::size_t day = 0; day < count_; ++day) {
      names_.push_back(dayNumbered(base_ + static_cast<std::int64_t>(day)));
    }
    collectRows(calendar);
  }

  ValuationSeries build(const EquityVisitor& visitor) {
    findMissing();
    if (!missing_.empty()) {
      series_.missing.assign(missing_.begin(), missing_.end());
      return std::move(series_);
    }
    for (const EquityLine& line : equities_) {
      if (scope_.cancellation.isCancelled()) {
        return {.currency = primary_};
      }
      if (isInScope(line.equity)) {
        walkEquity(line, visitor);
      } else if (scope_.equity == nullptr) {
        countOutsideTrades(line);
      }
    }
    if (scope_.equity == nullptr) {
      for (const CashLine& line : cash_) {
        walkCash(line);
      }
    }
    if (!missing_.empty()) {
      series_.missing.assign(missing_.begin(), missing_.end());
      return std::move(series_);
    }
    layOutDays();
    return std::move(series_);
  }

 private:
  struct DayFlows {
    Decimal inflow, outflow, journaled;
  };

  // Reading the ledger.

  void collectRows(const Calendar& calendar) {
    EquityMap<std::size_t> equityPlaces;
    // Rows of one ledger share their objects, which are found sooner than their identities.
    std::unordered_map<const EquityInfo*, std::size_t> places;
    const Date end = daysAfter(scope_.to, 1).startIn(calendar);
    Date nextDay = scope_.from.startIn(calendar);
    std::size_t day = 0;
    for (const TransactionPointer& row : portfolio_.transactions()) {
      const Date date = row->settlementDate();
      if (end <= date) {
        break;
      }
      if (nextDay <= date) {
        const YearMonthDay named = YearMonthDay::of(date, calendar);
        day = static_cast<std::size_t>(dayNumber(named) - base_);
        nextDay = daysAfter(named, 1).startIn(calendar);
      }
      if (const EquityPointer* equity = row->basic.equity()) {
        const auto [known, isUnknown] = places.try_emplace(equity->get());
        if (isUnknown) {
          known->second = equityPlaces.try_emplace(*equity, equities_.size()).first->second;
          if (known->second == equities_.size()) {
            equities_.push_back({*equity, {}});
          }
        }
        equities_[known->second].rows.push_back({row.get(), day});
      }
      if (const Currency* currency = row->basic.currency()) {
        auto cash = std::ranges::find(cash_, *currency, &CashLine::currency);
        if (cash == cash_.end()) {
          cash = cash_.insert(cash_.end(), {*currency, {}});
        }
        cash->rows.push_back({row.get(), day});
      }
    }
  }

  [[nodiscard]] bool isInScope(const EquityPointer& equity) const {
    if (scope_.equity != nullptr) {
      return *scope_.equity == *equity;
    }
    return !scope_.leftOut.contains(equity) && isInScope(equity->currency);
  }
  [[nodiscard]] bool isInScope(const Currency& currency) const {
    return scope_.leftOutCurrencies.empty() || !scope_.leftOutCurrencies.contains(currency);
  }
  /// Whether the cash of a row in `currency` is part of what is valued.
  [[nodiscard]] bool holdsCash(const Currency& currency) const {
    return scope_.equity == nullptr && portfolio_.usesCashAccounts && isInScope(currency);
  }

  /// Whether a line is held at the base day or has rows in the range.
  static bool plays(const std::vector<RowInRange>& rows, bool ofCash) {
    if (rows.back().day > 0) {
      return true;
    }
    const auto& balance = ofCash ? rows.back().row->cashNet : rows.back().row->sharesNet;
    return balance && !balance->isZero();
  }

  void findMissing() {
    const auto needRate = [&](const Currency& currency) {
      if (history_.errorsByPair.contains({currency, primary_})) {
        missing_.insert(std::string(currency.code));
      }
    };
    for (const EquityLine& line : equities_) {
      if (isInScope(line.equity) && plays(line.rows, false)) {
        if (history_.errorsByEquity.contains(line.equity)) {
          missing_.insert(line.equity->symbol);
        }
        needRate(line.equity->currency);
      }
    }
    if (scope_.equity == nullptr) {
      for (const CashLine& line : cash_) {
        if (isInScope(line.currency) && plays(line.rows, portfolio_.usesCashAccounts)) {
          needRate(line.currency);
        }
      }
    }
  }

  // Rates.

  const DailyRates& ratesOf(const Currency& currency) {
    const auto found = std::ranges::find(rates_, currency, &RatesOf::currency);
    return found != rates_.end() ? found->rates
                                 : rates_.emplace_back(currency, makeRates(currency)).rates;
  }

  DailyRates makeRates(const Currency& currency) {
    DailyRates made{std::vector<std::optional<Decimal>>(count_), std::vector<char>(count_, 0),
                    std::vector<char>(count_, 0)};
    const auto line = history_.rates.find({currency, primary_});
    PriceCursor cursor(line == history_.rates.end() ? nullptr : &line->second, base_, true);
    const auto cash = std::ranges::find(cash_, currency, &CashLine::currency);
    std::size_t nextRow = 0;
    std::optional<Decimal> implied;
    for (std::size_t day = 0; day < count_; ++day) {
      const bool mayNeedRow = cursor.price() == nullptr && cash != cash_.end();
      for (; mayNeedRow && nextRow < cash->rows.size() && cash->rows[nextRow].day <= day;
           ++nextRow) {
        const TransactionEffect effect = transactionEffect(cash->rows[nextRow].row->basic.kind);
        if (effect.equivalentAmount && !effect.amount.isZero() &&
            !effect.equivalentAmount->isZero()) {
          implied = *effect.equivalentAmount / effect.amount;
        }
      }
      made.isQuoted[day] = cursor.advanceTo(names_[day]) && day > 0 ? 1 : 0;
      if (cursor.price() != nullptr) {
        made.rates[day] = *cursor.price();
      } else if (implied) {
        made.rates[day] = implied;
        made.isImplied[day] = 1;
      }
    }
    return made;
  }

  /// `amount` of `currency` at the rate of `day`; at `equivalent` where there is one and no rate.
  Decimal inPrimary(const Decimal& amount, const Currency& currency, std::size_t day,
                    const std::optional<Decimal>& equivalent) {
    if (currency == primary_ || amount.isZero()) {
      return amount;
    }
    const DailyRates& rates = ratesOf(currency);
    if (rates.rates[day] && isInScope(currency)) {
      if (rates.isImplied[day] != 0) {
        isAtTradePrice_[day] = 1;
      }
      return amount * *rates.rates[day];
    }
    if (!equivalent) {
      missing_.insert(std::string(currency.code));
      return 0;
    }
    return *equivalent;
  }

  // Flows.

  /// The owner has moved `amount` in, or out where it is negative.
  void addFlow(std::size_t day, const Decimal& amount) {
    hasEntry_[day] = 1;
    if (amount.sign() == Sign::minus) {
      flows_[day].outflow -= amount;
      series_.bridge.withdrawals -= amount;
    } else {
      flows_[day].inflow += amount;
      series_.bridge.deposits += amount;
    }
  }

  void addJournaled(std::size_t day, const Decimal& amount) {
    (amount < 0 ? flows_[day].outflow : flows_[day].inflow) += abs(amount);
    flows_[day].journaled += amount;
    series_.bridge.journaled += amount;
  }

  /// Money of a trade or a dividend passes between an equity and cash, of which one alone is in the
  /// scope.
  void addMoneyFlow(std::size_t day, const TransactionEffect& effect, bool equityIsIn) {
    const bool cashIsIn = holdsCash(*effect.currency);
    if (equityIsIn == cashIsIn) {
      return;
    }
    const Decimal received = scope_.equity != nullptr ? effect.equivalentAmount.value_or(Decimal())
                                                      : inPrimary(effect.amount, *effect.currency,
                                                                  day, effect.equivalentAmount);
    addFlow(day, equityIsIn ? -received : received);
    if (effect.type == TransactionType::dividend && !portfolio_.usesCashAccounts) {
      series_.bridge.dividendsKeptAsCash += received;
    }
  }

  void countOutsideTrades(const EquityLine& line) {
    for (const auto& [row, day] : line.rows) {
      const TransactionEffect effect = transactionEffect(row->basic.kind);
      if (day > 0 &&
          (effect.type == TransactionType::trade || effect.type == TransactionType::dividend)) {
        addMoneyFlow(day, effect, false);
      }
    }
  }

  // Equities.

  /// `rates` are those of the equity's currency, null for the primary one.
  static Worth worthOf(const HoldingState& holding, const Decimal& shares, const Decimal* price,
                       const DailyRates* rates, std::size_t day) {
    if (shares.isZero()) {
      return {};
    }
    const bool isForeign = rates != nullptr;
    const bool hasRate = !isForeign || rates->rates[day].has_value();
    const auto atRate = [&](const Decimal& amount) {
      return isForeign ? amount * *rates->rates[day] : amount;
    };
    if (price != nullptr && hasRate) {
      return {atRate(shares * *price), isForeign && rates->isImplied[day] != 0};
    }
    if (holding.hasTraded && !holding.tradedShares.isZero()) {
      const Decimal worth = shares * holding.tradedCash / holding.tradedShares;
      if (!holding.isInOwnCurrency || hasRate) {
        return {holding.isInOwnCurrency ? atRate(worth) : worth, true};
      }
    }
    const Decimal cost =
        (holding.isBeforeLastRow ? std::optional<Decimal>(holding.lastRow->costBasePrior)
                                 : holding.lastRow->costBaseNet())
            .value_or(Decimal());
    return {holding.shares.isZero() ? 0 : cost * shares / holding.shares, true};
  }

  /// What a row of the range does to the figures of its equity and to the flows.
  void countRow(const HoldingState& holding, const Decimal* price, const DailyRates* rates,
                const RowInRange& at, const TransactionEffect& effect, EquityFigures& figures,
                ValuationDay& ownDay) {
    const Decimal equivalent = effect.equivalentAmount.value_or(Decimal());
    if (effect.type == TransactionType::trade) {
      if (effect.sharesAdded.sign() == Sign::minus) {
        figures.sold += equivalent;
      } else {
        figures.bought -= equivalent;
      }
      if (effect.isSale() && at.row->sharesNet && at.row->costBasePrior) {
        figures.realised +=
            capitalGain(effect, *at.row->sharesNet, *at.row->costBasePrior, primary_)
                .value_or(Decimal());
      }
      if (equivalent.sign() == Sign::minus) {
        ownDay.inflow -= equivalent;
      } else {
        ownDay.outflow += equivalent;
      }
      addMoneyFlow(at.day, effect, true);
    } else if (effect.type == TransactionType::dividend) {
      figures.dividends += equivalent;
      ownDay.outflow += equivalent;
      addMoneyFlow(at.day, effect, true);
    } else if (effect.type == TransactionType::journaledShares) {
      const Worth moved = worthOf(holding, effect.sharesAdded, price, rates, at.day);
      figures.journaled += moved.amount;
      (moved.amount < 0 ? ownDay.outflow : ownDay.inflow) += abs(moved.amount);
      ownDay.isAtTradePrice |= moved.isAtTradePrice;
      addJournaled(at.day, moved.amount);
    }
  }

  /// What a row takes away last is priced by what was held before it.
  void takeRow(const RowInRange& at, HoldingState& holding, const Decimal* price,
               const DailyRates* rates, EquityFigures& figures, ValuationDay& ownDay) {
    const TransactionEffect effect = transactionEffect(at.row->basic.kind);
    const Decimal heldBefore = holding.shares;
    holding.take(*at.row, effect);
    if (holding.shares.isZero()) {
      HoldingState priced = holding;
      priced.shares = heldBefore;
      priced.isBeforeLastRow = true;
      countRow(priced, price, rates, at, effect, figures, ownDay);
    } else {
      countRow(holding, price, rates, at, effect, figures, ownDay);
    }
  }

  void walkEquity(const EquityLine& line, const EquityVisitor& visitor) {
    if (!plays(line.rows, false)) {
      return;
    }
    EquityFigures figures{.equity = line.equity};
    HoldingState holding;
    std::size_t nextRow = 0;
    for (; nextRow < line.rows.size() && line.rows[nextRow].day == 0; ++nextRow) {
      const PortfolioTransaction& row = *line.rows[nextRow].row;
      holding.take(row, transactionEffect(row.basic.kind));
    }
    const auto found = history_.prices.find(line.equity);
    PriceCursor prices(found == history_.prices.end() ? nullptr : &found->second, base_,
                       !holding.shares.isZero());
    const DailyRates* rates =
        line.equity->currency == primary_ ? nullptr : &ratesOf(line.equity->currency);
    ownDays_.clear();
    Worth worth;
    Worth before;  // on days with rows
    ValuationDay own;
    for (std::size_t day = 0; day < count_; ++day) {
      const bool isPriced = prices.advanceTo(names_[day]);
      const bool hasNewRate = rates != nullptr && rates->isQuoted[day] != 0;
      bool hasChanged = day == 0 || isPriced || hasNewRate;
      bool hasRows = false;
      for (; nextRow < line.rows.size() && line.rows[nextRow].day == day; ++nextRow) {
        prefetchRow(line.rows, nextRow);
        takeRow(line.rows[nextRow], holding, prices.price(), rates, figures, own);
        hasRows = hasChanged = true;
      }
      const StateBefore state{isAboveZero(worth.amount), worth.amount.isZero()};
      if (hasRows) {
        before = worth;
      }
      if (hasChanged) {
        worth = worthOf(holding, holding.shares, prices.price(), rates, day);
        if (day > 0) {
          hasEntry_[day] = 1;
        }
      }
      if (!worth.amount.isZero()) {
        values_[day] += worth.amount;
      }
      if (worth.isAtTradePrice) {
        isAtTradePrice_[day] = 1;
        figures.isAtTradePrice = true;
      }
      if (day == 0) {
        figures.opening = worth.amount;
      }
      if (visitor != nullptr) {
        own.isAtTradePrice |= worth.isAtTradePrice;
        keepOwnDay(day, own, worth.amount, state, before);
      }
      if (hasRows || own.isAtTradePrice) {
        own = {};
      }
    }
    figures.closing = worth.amount;
    addToBridge(figures);
    if (visitor != nullptr) {
      visitor(figures, ownDays_);
    }
  }

  static bool isAboveZero(const Decimal& worth) {
    return worth.sign() == Sign::plus && !worth.isZero();
  }
  /// What keepOwnDay() asks of the worth of the day before on every day; copying that, only days
  /// with rows can afford.
  struct StateBefore {
    bool isAboveZero;
    bool isZero;
  };

  /// Keeps a day that a return needs: one with a flow and the one before it, the first and the
  /// last, and any without a worth to measure against. `before` counts where there is a flow.
  void keepOwnDay(std::size_t day, const ValuationDay& own, const Decimal& value,
                  const StateBefore& state, const Worth& before) {
    const bool hasFlow = !own.inflow.isZero() || !own.outflow.isZero();
    if (hasFlow && day > 0 && ownDays_.back().day < names_[day - 1]) {
      ownDays_.push_back({.day = names_[day - 1],
                          .value = before.amount,
                          .isAtTradePrice = before.isAtTradePrice});
    }
    const bool isMeasurable = isAboveZero(value) && state.isAboveZero;
    const bool isNothing = value.isZero() && state.isZero;
    if (hasFlow || day == 0 || day + 1 == count_ || !(isMeasurable || isNothing)) {
      ownDays_.push_back(own);
      ownDays_.back().day = names_[day];
      ownDays_.back().value = value;
    }
  }

  void addToBridge(const EquityFigures& figures) {
    series_.bridge.equityGain += figures.gain();
    series_.bridge.realised += figures.realised;
    series_.bridge.dividends += figures.dividends;
  }

  // Cash.

  void walkCash(const CashLine& line) {
    if (!isInScope(line.currency)) {
      return;
    }
    const bool isForeign = line.currency != primary_;
    std::size_t nextRow = 0;
    Decimal cash;
    for (std::size_t day = 0; day < count_; ++day) {
      for (; nextRow < line.rows.size() && line.rows[nextRow].day <= day; ++nextRow) {
        prefetchRow(line.rows, nextRow);
        const PortfolioTransaction& row = *line.rows[nextRow].row;
        cash = row.cashNet.value_or(cash);
        if (day > 0) {
          countCashRow(row.basic.kind, day);
        }
      }
      if (portfolio_.usesCashAccounts) {
        values_[day] += inPrimary(cash, line.currency, day, std::nullopt);
        if (isForeign && day > 0 && !cash.isZero() && ratesOf(line.currency).isQuoted[day] != 0) {
          hasEntry_[day] = 1;
        }
      }
    }
  }

  void countCashRow(const BasicTransaction::Kind& kind, std::size_t day) {
    hasEntry_[day] = 1;
    if (const auto* transfer = std::get_if<BasicTransaction::Transfer>(&kind)) {
      const auto& [currency, amount] = transfer->amount;
      addFlow(day, inPrimary(amount, currency, day, std::nullopt));
    } else if (const auto* adjustment = std::get_if<BasicTransaction::CashAdjustment>(&kind)) {
      const auto& [currency, amount] = adjustment->amount;
      const Decimal adjusted = inPrimary(amount, currency, day, std::nullopt);
      series_.bridge.adjustments += adjusted;
      if (!portfolio_.usesCashAccounts) {
        // A fee is paid from outside and still takes its part of the return.
        addFlow(day, -adjusted);
      }
    }
  }

  // The result.

  void layOutDays() {
    hasEntry_.front() = 1;
    hasEntry_.back() = 1;
    for (std::size_t day = 0; day < count_; ++day) {
      if (hasEntry_[day] == 0) {
        continue;
      }
      const DayFlows& flows = flows_[day];
      series_.days.push_back({names_[day], values_[day], flows.inflow, flows.outflow,
                              flows.journaled, isAtTradePrice_[day] != 0});
    }
    series_.bridge.opening = series_.days.front().value;
    series_.bridge.closing = series_.days.back().value;
  }

  Portfolio& portfolio_;
  const ValuationScope& scope_;
  const MarketHistory& history_;
  const Currency primary_;
  const std::int64_t base_;
  const std::size_t count_;
  std::vector<EquityLine> equities_;
  std::vector<CashLine> cash_;
  struct RatesOf {
    Currency currency;
    DailyRates rates;
  };
  std::deque<RatesOf> rates_;
  std::vector<YearMonthDay> names_;  ///< of the days
  // Of each day; apart from each other, since a walk of an equity adds to values on every day and
  // to the others on few.
  std::vector<Decimal> values_;
  std::vector<char> isAtTradePrice_;
  std::vector<DayFlows> flows_;
  std::vector<char> hasEntry_;
  std::vector<ValuationDay> ownDays_;
  std::set<std::string> missing_;
  ValuationSeries series_;
};

}  // namespace

ValuationSeries valuationSeries(Portfolio& portfolio, const ValuationScope& scope,
                                const MarketHistory& history, const Calendar& calendar,
                                const EquityVisitor& visitor) {
  return SeriesBuilder(portfolio, scope, history, calendar).build(visitor);
}

}  // namespace corvane
