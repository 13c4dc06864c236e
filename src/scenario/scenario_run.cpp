#include "scenario/scenario_run.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace corvane {
namespace {

// A target that a spread puts beyond the range of decimals is NaN, which orders below every number.
// No price reaches it.
bool hasFallenTo(const Decimal& price, const Decimal& target) {
  return !target.isNaN() && price <= target;
}
bool hasRisenTo(const Decimal& price, const Decimal& target) {
  return !target.isNaN() && price >= target;
}

Decimal wholeShares(const Decimal& shares) {
  return rounded(shares, 0, RoundingMode::down);
}

}  // namespace

ScenarioRun::ScenarioRun(const EquityPointer& equity, const InvestmentStrategy& strategy,
                         const Decimal& initialInvestment, std::size_t quoteCount)
    : strategy_(strategy),
      initialInvestment_(initialInvestment),
      manager_(std::make_shared<ScenarioSinglePortfolioManager>(equity)) {
  // The portfolio holds its manager weakly, so whoever is given the portfolio is given both.
  analysis_.portfolio =
      std::shared_ptr<ScenarioPortfolio>(manager_, manager_->singlePortfolio().get());
  analysis_.portfolioValues.reserve(quoteCount);
}

void ScenarioRun::take(const Quote& quote, int tradingDayNumber, int sessionNumber) {
  if (!quote.low || !quote.high || !quote.close) {
    analysis_.portfolioValues.push_back(previousValue_);
    return;
  }
  analysis_.lastClosePrice = *quote.close;
  if (analysis_.totalTradingDays == 0) {
    open(quote);
  }
  // Some data tell the two the wrong way round.
  const auto [low, high] = std::minmax(*quote.low, *quote.high);
  const Currency& currency = analysis_.portfolio->primaryCurrency();
  const bool hasTraded = trade(roundedToMinorUnits(low, currency),
                               roundedToMinorUnits(high, currency), quote.fromDate);
  countDay(tradingDayNumber, hasTraded);
  if (lastSeenSession_ != sessionNumber) {
    analysis_.totalSessions += 1;
    lastSeenSession_ = sessionNumber;
  }
  lastDate_ = quote.fromDate;
  previousValue_ = *quote.close * shares_ + cash_;
  analysis_.portfolioValues.push_back(previousValue_);
}

ScenarioAnalyzer::Analysis ScenarioRun::finish() {
  const Currency& currency = analysis_.portfolio->primaryCurrency();
  pending_.push_back({BasicTransaction::Transfer{{currency, 0}}, lastDate_, EventType::close,
                      analysis_.lastClosePrice});
  settle();
  return std::move(analysis_);
}

void ScenarioRun::open(const Quote& quote) {
  const Currency& currency = analysis_.portfolio->primaryCurrency();
  pending_.push_back({BasicTransaction::Transfer{{currency, initialInvestment_}}, quote.fromDate,
                      EventType::open, quote.close});
  cash_ = initialInvestment_;
  if (cash_ < 0) {
    settle();
  }
  setReference(*quote.close);
}

bool ScenarioRun::trade(const Decimal& low, const Decimal& high, Date date) {
  // The trader buys in at the first price, whatever it is.
  const Decimal buyPrice =
      analysis_.totalTradingDays == 0 ? Decimal::greatestFiniteMagnitude() : targetBuyPrice_;
  if (hasFallenTo(high, buyPrice) &&
      buyForUpTo(strategy_.targetBuyMax, high, date, EventType::buy)) {
    return true;
  }
  if (hasRisenTo(low, targetSellPrice_) && shares_ > 0) {
    return sellSlice(strategy_.targetSellSlice, low, date, EventType::sell);
  }
  if (!strategy_.isStopLossActive) {
    return false;
  }
  if (hasFallenTo(low, stopLossSellPrice_) && shares_ > 0) {
    return sellSlice(strategy_.stopLossSellSlice, low, date, EventType::stopLossSell);
  }
  return hasRisenTo(high, stopLossBuyPrice_) &&
         buyForUpTo(strategy_.stopLossBuyMax, high, date, EventType::stopLossBuy);
}

bool ScenarioRun::buyForUpTo(const Decimal& most, const Decimal& price, Date date,
                             EventType eventType) {
  const Decimal bought = wholeShares(std::min(most, cash_) / price);
  return bought > 0 && place(bought, price, date, eventType);
}

bool ScenarioRun::sellSlice(const Decimal& slice, const Decimal& price, Date date,
                            EventType eventType) {
  const Decimal sold = wholeShares(shares_ * slice);
  return sold > 0 && place(-sold, price, date, eventType);
}

bool ScenarioRun::place(const Decimal& shares, const Decimal& price, Date date,
                        EventType eventType) {
  pending_.push_back(manager_->tradeEvent(shares, price, date, eventType));
  const auto& trade = std::get<BasicTransaction::Trade>(pending_.back().kind);
  const Decimal& amount = trade.cashDisposed.amount;
  shares_ = shares_ + shares;
  cash_ = cash_ - amount;
  if (shares_ < 0 || cash_ < 0) {
    settle();
  }
  setReference(amount / shares);
  return true;
}

void ScenarioRun::countDay(int tradingDayNumber, bool hasTraded) {
  if (hasTraded) {
    analysis_.totalTradesMade += 1;
    if (lastTradedDay_ != tradingDayNumber) {
      analysis_.totalDaysTradedOn += 1;
      lastTradedDay_ = tradingDayNumber;
    }
  }
  if (lastSeenDay_ != tradingDayNumber) {
    analysis_.totalTradingDays += 1;
    lastSeenDay_ = tradingDayNumber;
  }
}

void ScenarioRun::settle() {
  manager_->recordEvents(std::exchange(pending_, {}));
  assert(analysis_.portfolio->currentShares() == shares_ &&
         analysis_.portfolio->currentCash() == cash_ && "the ledger comes to other balances");
}

void ScenarioRun::setReference(const Decimal& reference) {
  targetBuyPrice_ = reference * (1 - strategy_.targetBuySpread);
  targetSellPrice_ = reference * (1 + strategy_.targetSellSpread);
  stopLossSellPrice_ = reference * (1 - strategy_.stopLossSellSpread);
  stopLossBuyPrice_ = reference * (1 + strategy_.stopLossBuySpread);
}

}  // namespace corvane
