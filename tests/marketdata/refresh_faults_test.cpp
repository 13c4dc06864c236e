// Refreshes that one equity would spoil, and what users are told of it.

#include "marketdata/chain/refresh_faults.h"

#include <gmock/gmock.h>

#include "marketdata/chain/refusal_text.h"
#include "marketdata/market_chain.h"

namespace corvane::testing {
namespace {

/// A source without a network that fails as long as it is asked for one of some equities.
class SpoiledSource : public QuoteProvider {
 public:
  std::map<std::string, ErrorPointer> spoiling;
  int requests = 0;

  void refreshEquities(std::vector<EquityPointer> equities, RefreshCompletion completion) override {
    ++requests;
    ErrorPointer error;
    for (const EquityPointer& equity : equities) {
      if (const auto found = spoiling.find(equity->id()); found != spoiling.end()) {
        error = found->second;
      }
    }
    for (const EquityPointer& equity : equities) {
      equity->isAuthoritative = equity->isAuthoritative || error == nullptr;
    }
    DispatchQueue::global()->async(
        [error, completion = std::move(completion)]() mutable { completion(error); });
  }
};

TEST(RefreshFaultsTest, LeaveOutTheEquityThatSpoilsTheOthers) {
  const auto source = std::make_shared<SpoiledSource>();
  const auto faults = std::make_shared<RefreshFaults>();
  std::vector<EquityPointer> equities;
  for (int i = 0; i < 20; ++i) {
    equities.push_back(source->equityWithId("E" + std::to_string(i)));
  }
  const auto refresh = [&](const std::vector<EquityPointer>& wanted) {
    std::optional<std::pair<ErrorPointer, std::size_t>> outcome;
    refreshAroundFaults(source, wanted, faults, [&](ErrorPointer error, const auto& refreshed) {
      outcome = {std::move(error), refreshed.size()};
    });
    EXPECT_TRUE(MainLoop::runUntil([&] { return outcome.has_value(); }, std::chrono::seconds(20)));
    return *outcome;
  };
  const JSONError stub("quoteResponse.result[3].currency", "the field is missing");
  const QuoteProviderError unknown(QuoteProviderError::UnsupportedCurrency{"QQQ"});
  source->spoiling = {{"E3", stub.copy()}, {"E17", unknown.copy()}};
  EXPECT_EQ(refresh(equities), std::pair(ErrorPointer(), std::size_t{18}));
  EXPECT_EQ(equities[3]->refreshProblem, "E3 is no longer traded.");
  EXPECT_EQ(equities[17]->refreshProblem, "E17 is traded in “QQQ”, which is no known currency.");
  EXPECT_EQ(equities[4]->refreshProblem, std::nullopt);
  EXPECT_LT(source->requests, 24);

  source->requests = 0;
  EXPECT_EQ(refresh(equities).second, 18U);
  EXPECT_EQ(source->requests, 1) << "what was found is remembered";
  EXPECT_EQ(*refresh({equities[3]}).first, stub);
  EXPECT_EQ(source->requests, 1);

  const URLError offline(URLError::Code::cannotConnect, "", "");
  source->spoiling = {{"E5", offline.copy()}};
  EXPECT_EQ(*refresh(equities).first, offline);
  EXPECT_EQ(source->requests, 2) << "parts are not asked for where the network fails";
}

TEST(RefreshFaultsTest, AreForgottenAfterAnHour) {
  const auto source = std::make_shared<SpoiledSource>();
  const auto equity = source->equityWithId("ABC");
  const auto now = RefreshFaults::Clock::now();
  RefreshFaults faults;
  faults.note(equity, JSONError("", "").copy(), now);
  EXPECT_NE(faults.find("ABC", now + std::chrono::minutes(59)), nullptr);
  EXPECT_EQ(faults.find("ABC", now + std::chrono::minutes(61)), nullptr);
}

}  // namespace
}  // namespace corvane::testing
