// A second trader, who keeps his books on the back of an envelope.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "core/market/quote.h"
#include "core/strategy/investment_strategy.h"

namespace corvane::testing {

inline const Decimal beyond = Decimal::greatestFiniteMagnitude();

/// The rules of the simulator told once more, with every figure worked out anew for each quote.
struct NaiveTrader {
  std::vector<std::string> rows;
  std::vector<Decimal> values;
  int trades = 0, daysTradedOn = 0, tradingDays = 0;

  NaiveTrader(const std::vector<Quote>& quotes, const std::vector<int>& days,
              const InvestmentStrategy& strategy, const Decimal& investment) {
    Decimal reference, close;
    std::vector<int> seen, traded;
    for (std::size_t i = 0; i < quotes.size(); ++i) {
      const Quote& quote = quotes[i];
      if (!quote.low || !quote.high || !quote.close) {
        values.push_back(values.empty() ? Decimal(0) : values.back());
        continue;
      }
      close = *quote.close;
      if (seen.empty()) {
        cash_ = investment;
        reference = close;
        note("open", 0, reference);
      }
      Decimal bottom = rounded(*quote.low, 2, RoundingMode::bankers);
      Decimal top = rounded(*quote.high, 2, RoundingMode::bankers);
      if (top < bottom) {
        std::swap(top, bottom);
      }
      const auto affordable = [&](const Decimal& most) {
        return rounded((most < cash_ ? most : cash_) / top, 0, RoundingMode::down);
      };
      const auto slice = [&](const Decimal& part) {
        return 0 - rounded(shares_ * part, 0, RoundingMode::down);
      };
      const auto above = [&](const Decimal& price, const Decimal& spread) {
        return spread != beyond && price >= reference + reference * spread;
      };
      const auto below = [&](const Decimal& price, const Decimal& spread) {
        return spread != beyond && price <= reference - reference * spread;
      };
      Decimal order, price;
      const char* event = "";
      const bool isFirst = seen.empty();
      if ((isFirst || below(top, strategy.targetBuySpread)) &&
          affordable(strategy.targetBuyMax) > 0) {
        event = "buy", order = affordable(strategy.targetBuyMax), price = top;
      } else if (above(bottom, strategy.targetSellSpread) && shares_ > 0) {
        event = "sell", order = slice(strategy.targetSellSlice), price = bottom;
      } else if (strategy.isStopLossActive && below(bottom, strategy.stopLossSellSpread) &&
                 shares_ > 0) {
        event = "stopLossSell", order = slice(strategy.stopLossSellSlice), price = bottom;
      } else if (strategy.isStopLossActive && above(top, strategy.stopLossBuySpread) &&
                 affordable(strategy.stopLossBuyMax) > 0) {
        event = "stopLossBuy", order = affordable(strategy.stopLossBuyMax), price = top;
      }
      if (order != 0) {
        shares_ += order;
        cash_ -= order * price;
        reference = price;
        note(event, order, reference);
        ++trades;
        traded.push_back(days[i]);
      }
      seen.push_back(days[i]);
      values.push_back(close * shares_ + cash_);
    }
    note("close", 0, close);
    daysTradedOn = distinct(traded);
    tradingDays = distinct(seen);
  }

 private:
  static int distinct(std::vector<int> numbers) {
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return static_cast<int>(numbers.size());
  }

  void note(const std::string& event, const Decimal& order, const Decimal& reference) {
    rows.push_back(event + " " + order.description() + " " + reference.description() + " " +
                   shares_.description() + " " + cash_.description());
  }

  Decimal shares_, cash_;
};

}  // namespace corvane::testing
