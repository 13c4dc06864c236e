#include "core/market/frozen_equity.h"

namespace corvane {

EquityPointer frozenEquity(const EquityInfo& equity) {
  auto copy = std::make_shared<EquityInfo>(equity.id(), equity.quoteProvider);
  copy->isAuthoritative = equity.isAuthoritative;
  copy->symbol = equity.symbol;
  copy->exchange = equity.exchange;
  copy->name = equity.name;
  copy->calendar = equity.calendar;
  copy->currency = equity.currency;
  copy->firstTradeDate = equity.firstTradeDate;
  copy->recentTradingPeriod = equity.recentTradingPeriod;
  copy->recentPrice = equity.recentPrice;
  copy->previousClosePrice = equity.previousClosePrice;
  copy->recentDate = equity.recentDate;
  copy->refreshProblem = equity.refreshProblem;
  return copy;
}

}  // namespace corvane
