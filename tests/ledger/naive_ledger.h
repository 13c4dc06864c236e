// A second bookkeeper: the rules of the ledger written down once more, as simply as they can be
// told, without increments, checkpoints or undo. The tests compare the ledger with it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ledger/portfolio/portfolio.h"

namespace corvane::testing {

class NaiveLedger {
 public:
  struct Row {
    std::optional<Decimal> cashNet, sharesNet, costBasePrior, gain;
    bool operator==(const Row&) const = default;
  };
  struct Cash {
    Decimal onHand, deposited;
    bool operator==(const Cash&) const = default;
  };
  struct Holding {
    Decimal shares, cost, gains;
    bool operator==(const Holding&) const = default;
  };
  struct Year {
    std::map<std::string, Cash> cash;
    std::map<std::string, Holding> holdings;
    bool operator==(const Year&) const = default;
  };

  std::vector<Row> rows;
  std::map<int, Year> years;

  /// The figures of `basics`, or none where a rule is broken.
  static std::optional<NaiveLedger> of(const std::vector<BasicTransaction>& basics,
                                       const Portfolio& portfolio, const Calendar& calendar) {
    NaiveLedger ledger;
    Year now;
    for (std::size_t i = 0; i < basics.size(); ++i) {
      if (basics[i].settlementDate < basics[i].tradeDate ||
          (i > 0 && basics[i].settlementDate < basics[i - 1].settlementDate)) {
        return std::nullopt;
      }
      Row row;
      if (!book(basics[i], portfolio, now, row)) {
        return std::nullopt;
      }
      ledger.rows.push_back(row);
      ledger.years[calendar.component(CalendarUnit::year, basics[i].settlementDate)] =
          withoutZeros(now);
    }
    return ledger;
  }

  static Year withoutZeros(Year year) {
    std::erase_if(year.cash, [](const auto& entry) { return entry.second == Cash(); });
    std::erase_if(year.holdings, [](const auto& entry) { return entry.second == Holding(); });
    return year;
  }

 private:
  static bool book(const BasicTransaction& basic, const Portfolio& portfolio, Year& now, Row& row) {
    const bool mayGoBelow = portfolio.allowsNegativeBalances;
    const int cents = portfolio.primaryCurrency().minorUnits;
    Decimal cashIn, deposited, sharesIn, costIn, proceeds;
    bool isSale = false;
    std::optional<Decimal> declaredHolding, newHolding;

    if (const auto* trade = std::get_if<BasicTransaction::Trade>(&basic.kind)) {
      sharesIn = trade->sharesAdded;
      costIn = trade->equivalentCashDisposed;
      (portfolio.usesCashAccounts ? cashIn : deposited) = trade->cashDisposed.amount;
      if (portfolio.usesCashAccounts) {
        cashIn = 0 - cashIn;
      }
      isSale = sharesIn < 0;
      proceeds = 0 - costIn;
      if (costIn != rounded(costIn, cents, RoundingMode::down)) {
        return false;
      }
    } else if (const auto* split = std::get_if<BasicTransaction::Split>(&basic.kind)) {
      declaredHolding = split->priorShares;
      newHolding = split->netShares;
    } else if (const auto* journal = std::get_if<BasicTransaction::JournaledShares>(&basic.kind)) {
      sharesIn = journal->sharesAdded;
      costIn = journal->costBaseAdded.value_or(0);
      if (costIn != rounded(costIn, cents, RoundingMode::down)) {
        return false;
      }
    } else if (const auto* yield = std::get_if<BasicTransaction::Yield>(&basic.kind)) {
      declaredHolding = yield->netShares;
      switch (yield->type) {
        case BasicTransaction::YieldType::dividend:
          cashIn = yield->netAmount.amount;
          break;
        case BasicTransaction::YieldType::reinvestedDistribution:
          costIn = yield->equivalentNetAmount;
          break;
        case BasicTransaction::YieldType::returnOfCapital:
          costIn = 0 - yield->equivalentNetAmount;
          break;
        case BasicTransaction::YieldType::capitalGainsDividend:
          break;
      }
    } else if (const auto* transfer = std::get_if<BasicTransaction::Transfer>(&basic.kind)) {
      if (!portfolio.usesCashAccounts) {
        return false;
      }
      cashIn = deposited = transfer->amount.amount;
    } else {
      cashIn = std::get<BasicTransaction::CashAdjustment>(basic.kind).amount.amount;
    }

    if (basic.equity() != nullptr) {
      Holding& holding = now.holdings[(*basic.equity())->id()];
      const Decimal before = holding.shares;
      if (declaredHolding && *declaredHolding != before) {
        return false;
      }
      if (sharesIn < 0 && before + sharesIn < 0 && !mayGoBelow) {
        return false;
      }
      row.costBasePrior = holding.cost;
      if (isSale) {
        const Decimal sold = 0 - sharesIn;
        const Decimal given = before > 0 ? holding.cost * sold / before : Decimal(0);
        row.gain = rounded(proceeds - given, cents, RoundingMode::bankers);
        holding.gains += *row.gain;
      }
      holding.shares = newHolding.value_or(before + sharesIn);
      if (sharesIn >= 0) {
        holding.cost = rounded(holding.cost + costIn, cents, RoundingMode::bankers);
      } else if (before > 0) {
        holding.cost =
            rounded(holding.cost * holding.shares / before, cents, RoundingMode::bankers);
      } else {
        holding.cost = 0;
      }
      row.sharesNet = holding.shares;
    }
    if (basic.currency() != nullptr) {
      Cash& cash = now.cash[std::string(basic.currency()->code)];
      if (cashIn != rounded(cashIn, basic.currency()->minorUnits, RoundingMode::down)) {
        return false;
      }
      if (cash.onHand + cashIn < 0 && !mayGoBelow) {
        return false;
      }
      cash.onHand += cashIn;
      cash.deposited += deposited;
      row.cashNet = cash.onHand;
    }
    return true;
  }
};

}  // namespace corvane::testing
