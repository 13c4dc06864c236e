// Prices restated for splits and dividends, by one adjuster for each equity.

#include "core/market/price_adjuster.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/async/dispatch_queue.h"
#include "support/decimals.h"

namespace corvane {
namespace {

using testing::dec;
using enum QuoteQuery::PriceAdjustment;
using ::testing::Each;
using ::testing::ElementsAre;

constexpr double day = 86400;

Date onDay(double number) {
  return Date::since1970(number * day);
}

EquityEvent split(double number, std::int64_t numerator, std::int64_t denominator) {
  return {onDay(number), EquityEvent::Split{{numerator, denominator}}, adjustedForSplits};
}

EquityEvent dividend(double number, const std::string& amount,
                     PriceAdjustment prices = adjustedForSplits) {
  return {onDay(number), EquityEvent::Dividend{dec(amount)}, prices};
}

Quote bar(double number, const std::string& price, std::int64_t volume = 1000) {
  const Decimal value = dec(price);
  return {onDay(number), onDay(number + 1), value, value, value, value, volume};
}

QuoteFetchResult bars(PriceAdjustment prices, std::vector<Quote> quotes) {
  return {std::move(quotes), prices, std::nullopt, {onDay(0), onDay(100)}};
}

/// Answers the question for the history, when it is told to, and counts the questions.
class HistorySource : public QuoteProvider {
 public:
  explicit HistorySource(Result<QuoteFetchResult> answer) : answer_(std::move(answer)) {}
  explicit HistorySource(std::vector<EquityEvent> events)
      : HistorySource(QuoteFetchResult{
            std::nullopt, std::nullopt, std::move(events), {onDay(0), onDay(100)}}) {}

  void fetchQuotes(QuoteQuery query, std::shared_ptr<PriceAdjuster> /*adjuster*/,
                   QuoteCompletion completion) override {
    EXPECT_TRUE(DispatchQueue::main()->isCurrent());
    queries.push_back(std::move(query));
    DispatchQueue::global()->async(
        [answer = answer_, completion = std::move(completion)]() mutable {
          completion(std::move(answer));
        });
  }

  std::vector<QuoteQuery> queries;

 private:
  Result<QuoteFetchResult> answer_;
};

struct PriceAdjusterTest : ::testing::Test {
  void history(std::vector<EquityEvent> events) {
    source = std::make_shared<HistorySource>(std::move(events));
    adjuster = std::make_shared<PriceAdjuster>(source);
    equity = source->equityWithId("ABC");
  }

  Result<QuoteFetchResult> adjust(QuoteFetchResult result, QuoteQuery::Subject subject) {
    std::optional<Result<QuoteFetchResult>> answer;
    adjuster->adjust(std::move(result), {equity, {onDay(0), onDay(100)}, subject},
                     [&](Result<QuoteFetchResult> adjusted) {
                       EXPECT_FALSE(DispatchQueue::main()->isCurrent());
                       DispatchQueue::main()->async([&, adjusted = std::move(adjusted)]() mutable {
                         answer = std::move(adjusted);
                       });
                     });
    EXPECT_TRUE(MainLoop::runUntil([&] { return answer.has_value(); }, std::chrono::seconds(20)));
    return *answer;
  }

  std::vector<Quote> quotes(QuoteFetchResult result, PriceAdjustment prices) {
    return *adjust(std::move(result), QuoteQuery::Quotes{QuoteInterval::oneDay, prices})->quotes;
  }

  std::shared_ptr<HistorySource> source;
  std::shared_ptr<PriceAdjuster> adjuster;
  EquityPointer equity;
};

TEST_F(PriceAdjusterTest, TouchesOnlyBarsBeforeAnEvent) {
  history({split(5, 2, 1)});
  EXPECT_THAT(quotes(bars(adjustedForSplits, {bar(4, "50"), bar(5, "51")}), marketNominal),
              ElementsAre(bar(4, "100", 500), bar(5, "51")));
  history({dividend(5, "1.00")});
  EXPECT_THAT(
      quotes(bars(adjustedForSplits, {bar(4, "50"), bar(5, "51")}), adjustedForSplitsAndDividends),
      ElementsAre(bar(4, "49"), bar(5, "51")));
  EXPECT_THAT(quotes(bars(adjustedForSplitsAndDividends, {bar(4, "49")}), adjustedForSplits),
              ElementsAre(bar(4, "50")));
}

}  // namespace
}  // namespace corvane
