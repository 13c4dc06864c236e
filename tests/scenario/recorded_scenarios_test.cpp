// Scenarios whose outcome is written down. The figures come from a simulator in another language,
// with decimals of its own, that knows nothing of ledgers: every rule is told there a second time.

#include <gmock/gmock.h>

#include "scenario/scenario_batch.h"
#include "scenario/scenario_builder.h"

namespace corvane::testing {
namespace {

/// Twelve sessions of eight quotes, in mills: some without a low, some with low and high the wrong
/// way round.
Market recordedMarket() {
  Market market;
  std::uint32_t state = 20230103;
  long price = 41250;
  const auto next = [&](long count) {
    state = (state * 1103515245U + 12345U) % 2147483648U;
    return static_cast<long>(state / 65536U) % count;
  };
  const auto mills = [](long amount) {
    return Decimal::fromParts(Sign::plus, -3, amount).description();
  };
  for (int day = 0; day < 12; ++day) {
    market.nextDay();
    for (int quote = 0; quote < 8; ++quote) {
      price = std::max(5000L, price + next(2401) - 1190);
      long low = price - next(400);
      long high = price + next(400);
      const bool isMissing = next(20) == 0;
      if (next(10) == 0) {
        std::swap(low, high);
      }
      market.quote(isMissing ? "" : mills(low), mills(high), mills(price));
    }
  }
  return market;
}

struct RecordedScenario {
  InvestmentStrategy strategy;
  std::string gain;
  int trades;
  int daysTradedOn;
  int tradingDays;
  /// b and s for the regular trades, B and S for those of the stop loss.
  std::string events;
  /// By method: the gain of each period, and that of buying and holding.
  std::vector<std::vector<std::string>> periods;
};

const Decimal investment = 10'000;

std::vector<RecordedScenario> recordedScenarios() {
  const Decimal unlimited = Decimal::greatestFiniteMagnitude();
  return {
      {{.targetBuySpread = dec("0.02"),
        .targetBuyMax = 3000,
        .targetSellSpread = dec("0.015"),
        .targetSellSlice = dec("0.5"),
        .isStopLossActive = false,
        .stopLossBuySpread = 0,
        .stopLossBuyMax = 0,
        .stopLossSellSpread = 0,
        .stopLossSellSlice = 0},
       "-659.12",
       29,
       12,
       12,
       "bbsssbsssssbbsbbsbbsssbbbbbsb",
       {{"-1.185/-192.028", "101.552/456.456", "262.592/328.008", "70.414/176.559", "71.546/201.96",
         "-56.597/-211.509", "-103.654/-283.101", "-77.786/-258.457", "205.61/639.16",
         "-142.122/-421.08", "-156.92/-476.064", "-443.555/-760.833"},
        {"-1.185/-192.028", "123.692/328.912", "270.614/637.816", "300.882/839.604",
         "325.704/1302.472", "331.636/1219.268", "211.085/724.436", "269.282/681.004",
         "503.09/1194.38", "375.536/623.664", "127.816/212.768", "-659.12/-705.404"},
        {"-659.12/-705.404", "-797.602/-590.577", "-755.043/-976.677", "-970.637/-1273.469",
         "-1049.145/-1610.341", "-1249.31/-1891.653", "-1078.905/-1578.161", "-1129.293/-1525.543",
         "-992.957/-1167.192", "-1330.888/-1619.42", "-999.017/-1334.028", "-443.555/-760.833"}}},
      {{.targetBuySpread = dec("0.05"),
        .targetBuyMax = unlimited,
        .targetSellSpread = dec("0.03"),
        .targetSellSlice = 1,
        .isStopLossActive = true,
        .stopLossBuySpread = dec("0.02"),
        .stopLossBuyMax = 4000,
        .stopLossSellSpread = dec("0.025"),
        .stopLossSellSlice = dec("0.6")},
       "-1936.268",
       35,
       12,
       12,
       "bSsBSsBBBSBSBSBSBSsBBSBSBSSBSSBSSBS",
       {{"-245.026/-192.028", "444.6/456.456", "-140.256/328.008", "366.4/176.559", "360.8/201.96",
         "-344.16/-211.509", "-285.609/-283.101", "-437.86/-258.457", "389.04/639.16",
         "-480.61/-421.08", "-527.196/-476.064", "-647.667/-760.833"},
        {"-245.026/-192.028", "-201.24/328.912", "-229.996/637.816", "-228.571/839.604",
         "106.234/1302.472", "-112.992/1219.268", "-545.743/724.436", "-812.32/681.004",
         "-747.1/1194.38", "-1317.284/623.664", "-1553.562/212.768", "-1936.268/-705.404"},
        {"-1936.268/-705.404", "-1314.438/-590.577", "-1849.388/-976.677", "-1479.418/-1273.469",
         "-1155.288/-1610.341", "-1062.692/-1891.653", "-1691.008/-1578.161", "-1561.808/-1525.543",
         "-727.862/-1167.192", "-1106.628/-1619.42", "-947.58/-1334.028", "-647.667/-760.833"}}}};
}

std::string eventsOf(const ScenarioAnalyzer::Analysis& analysis) {
  std::string events;
  for (const auto& row : analysis.portfolio->transactions()) {
    using enum ScenarioPortfolio::Transaction::EventType;
    switch (dynamic_cast<const ScenarioPortfolio::Transaction&>(*row).eventType.value()) {
      case buy:
        events += 'b';
        break;
      case sell:
        events += 's';
        break;
      case stopLossBuy:
        events += 'B';
        break;
      case stopLossSell:
        events += 'S';
        break;
      case open:
      case close:
        break;
    }
  }
  return events;
}

TEST(RecordedScenarios, AreReplayedToTheSameFigures) {
  const Market market = recordedMarket();
  for (const RecordedScenario& recorded : recordedScenarios()) {
    const auto analysis = market.analyze(recorded.strategy, investment);
    EXPECT_EQ(analysis.netGain().description(), recorded.gain);
    EXPECT_EQ(analysis.totalTradesMade, recorded.trades);
    EXPECT_EQ(analysis.totalDaysTradedOn, recorded.daysTradedOn);
    EXPECT_EQ(analysis.totalTradingDays, recorded.tradingDays);
    EXPECT_EQ(eventsOf(analysis), recorded.events);
    EXPECT_EQ(analysis.annualizedReturn(), dec(recorded.gain) / investment * 21)
        << "twelve sessions of the 252 of a year";
  }
}

TEST(RecordedScenarios, ComeToTheSameInEveryKindOfBatch) {
  const Market market = recordedMarket();
  for (const RecordedScenario& recorded : recordedScenarios()) {
    for (const BatchMethod method : allBatchMethods) {
      ScenarioBatch batch;
      bool hasEnded = false;
      batch.begin({market.equity, market.quotes, method, recorded.strategy, investment}, nullptr,
                  [&](const ErrorPointer& error) {
                    EXPECT_EQ(error, nullptr);
                    hasEnded = true;
                  });
      ASSERT_TRUE(MainLoop::runUntil([&] { return hasEnded; }, std::chrono::seconds(20)));
      std::vector<std::string> gains;
      for (const BatchResultPointer& result : batch.results()) {
        gains.push_back(result->analysis.netGain().description() + "/" +
                        (result->buyAndHoldReturn * investment).description());
      }
      EXPECT_EQ(gains, recorded.periods.at(static_cast<std::size_t>(method))) << title(method);
    }
  }
}

}  // namespace
}  // namespace corvane::testing
