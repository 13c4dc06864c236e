#include "core/strategy/investment_strategy.h"

#include <array>

#include "core/decimal/json_coding.h"

namespace corvane {
namespace {

struct AmountField {
  std::string_view key;
  Decimal InvestmentStrategy::*member;
};

constexpr std::string_view stopLossKey = "isStopLossActive";

/// The amounts before and after isStopLossActive, in the order in which they are written.
constexpr std::array<AmountField, 4> targetFields = {{
    {"targetBuySpread", &InvestmentStrategy::targetBuySpread},
    {"targetBuyMax", &InvestmentStrategy::targetBuyMax},
    {"targetSellSpread", &InvestmentStrategy::targetSellSpread},
    {"targetSellSlice", &InvestmentStrategy::targetSellSlice},
}};
constexpr std::array<AmountField, 4> stopLossFields = {{
    {"stopLossBuySpread", &InvestmentStrategy::stopLossBuySpread},
    {"stopLossBuyMax", &InvestmentStrategy::stopLossBuyMax},
    {"stopLossSellSpread", &InvestmentStrategy::stopLossSellSpread},
    {"stopLossSellSlice", &InvestmentStrategy::stopLossSellSlice},
}};

}  // namespace

const Decimal& InvestmentStrategy::defaultMaximum() {
  static const Decimal maximum = 1000;
  return maximum;
}

const InvestmentStrategy& InvestmentStrategy::defaultStrategy() {
  static const Decimal fivePercent = Decimal::fromMantissa(Sign::plus, 5, -2);
  static const InvestmentStrategy strategy = {
      .targetBuySpread = fivePercent,
      .targetBuyMax = defaultMaximum(),
      .targetSellSpread = fivePercent,
      .targetSellSlice = 1,
      .isStopLossActive = false,
      .stopLossBuySpread = fivePercent,
      .stopLossBuyMax = defaultMaximum(),
      .stopLossSellSpread = fivePercent,
      .stopLossSellSlice = 1,
  };
  return strategy;
}

const InvestmentStrategy& InvestmentStrategy::buyAndHold() {
  static const InvestmentStrategy strategy = {
      .targetBuySpread = 0,
      .targetBuyMax = Decimal::greatestFiniteMagnitude(),
      .targetSellSpread = Decimal::greatestFiniteMagnitude(),
      .targetSellSlice = 0,
      .isStopLossActive = false,
      .stopLossBuySpread = 0,
      .stopLossBuyMax = 0,
      .stopLossSellSpread = 0,
      .stopLossSellSlice = 0,
  };
  return strategy;
}

JSONValue json(const InvestmentStrategy& strategy, std::string_view path) {
  JSONValue::Object object;
  const auto append = [&](const auto& fields) {
    for (const auto& [key, member] : fields) {
      object.emplace_back(key, json(strategy.*member, pathOf(key, path)));
    }
  };
  append(targetFields);
  object.emplace_back(stopLossKey, strategy.isStopLossActive);
  append(stopLossFields);
  return object;
}

InvestmentStrategy investmentStrategy(const JSONValue& value, std::string_view path) {
  InvestmentStrategy strategy;
  const auto read = [&](const auto& fields) {
    for (const auto& [key, member] : fields) {
      strategy.*member = decimal(requiredField(value, key, path), pathOf(key, path));
    }
  };
  read(targetFields);
  strategy.isStopLossActive =
      requiredField(value, stopLossKey, path).boolean(pathOf(stopLossKey, path));
  read(stopLossFields);
  return strategy;
}

}  // namespace corvane
