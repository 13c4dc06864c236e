// Market data without a market.

#include "marketdata/chain/nominal_quote_provider.h"

#include <gmock/gmock.h>

#include "marketdata/quote_provider_chain_world.h"

namespace corvane::testing {
namespace {

using ::testing::IsEmpty;

TEST(NominalQuoteProviderTest, FindsOneEquityNamedAfterTheText) {
  const auto provider = std::make_shared<NominalQuoteProvider>();
  EXPECT_EQ(provider->providerName(), "Nominal");
  std::vector<EquityPointer> found;
  for (const char* text : {"abc", "ABC", "épi.to"}) {
    provider->searchEquities(text, [&](auto equities) {
      EXPECT_TRUE(DispatchQueue::main()->isCurrent());
      ASSERT_EQ(equities->size(), 1);
      found.push_back(equities->front());
    });
  }
  EXPECT_THAT(found, IsEmpty()) << "a completion ran within the call";
  ASSERT_TRUE(MainLoop::runUntil([&] { return found.size() == 3; }, std::chrono::seconds(20)));
  EXPECT_EQ(found[0]->id(), "ABC");
  EXPECT_EQ(found[0].get(), found[1].get());
  EXPECT_EQ(found[2]->id(), "ÉPI.TO");
  EXPECT_FALSE(found[0]->isAuthoritative);
  EXPECT_EQ(found[0]->currency.code, "XXX");
}

TEST(NominalQuoteProviderTest, AnswersEveryFetchWithNothing) {
  const auto provider = std::make_shared<NominalQuoteProvider>();
  const EquityPointer abc = provider->equityWithId("ABC");
  Fetches fetches;
  for (const QuoteQuery::Subject& subject :
       {QuoteQuery::Subject(
            QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::adjustedForSplits}),
        QuoteQuery::Subject(QuoteQuery::CurrentPeriodQuotes{true}),
        QuoteQuery::Subject(QuoteQuery::EventsOnly{PriceAdjustment::marketNominal}),
        QuoteQuery::Subject(QuoteQuery::EventsWithoutAdjustment{})}) {
    const auto answer = fetches.fetch(provider, {abc, days(0, 10), subject});
    EXPECT_EQ(*answer, (QuoteFetchResult{std::vector<Quote>(),
                                         PriceAdjustment::marketNominal,
                                         std::vector<EquityEvent>(),
                                         {Date::distantPast(), Date::distantPast()}}));
  }
  std::optional<ErrorPointer> refreshed;
  provider->refreshEquities({abc}, [&](ErrorPointer error) { refreshed = std::move(error); });
  ASSERT_TRUE(MainLoop::runUntil([&] { return refreshed.has_value(); }, std::chrono::seconds(20)));
  EXPECT_EQ(*refreshed, nullptr);
}

}  // namespace
}  // namespace corvane::testing
