// One provider whose data comes from where a setting says.

#include "marketdata/chain/switchable_quote_provider.h"

#include <gmock/gmock.h>

#include "marketdata/cache/cache_quote_provider.h"
#include "marketdata/quote_provider_chain_world.h"
#include "support/temporary_folder.h"

namespace corvane::testing {
namespace {

using enum QuoteQuery::PriceAdjustment;
using DataSource = SwitchableQuoteProvider::DataSource;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class SwitchableQuoteProviderTest : public ::testing::Test {
 protected:
  std::vector<Quote> quotes(const EquityPointer& equity) {
    return *fetches.fetch(provider, dailyQuotes(equity, days(0, 10), marketNominal))->quotes;
  }

  TemporaryFolder folder;
  std::shared_ptr<MarketSource> source = std::make_shared<MarketSource>();
  std::shared_ptr<SwitchableQuoteProvider> provider =
      std::make_shared<SwitchableQuoteProvider>(source, folder / "Cache.sqlite3");
  Fetches fetches;
};

TEST_F(SwitchableQuoteProviderTest, ReadsFromWhereItIsToldTo) {
  const EquityPointer abc = source->authoritative(provider->equityWithId("ABC"));
  const auto truth = source->bars("ABC", days(0, 10), marketNominal);

  provider->dataSource = DataSource::cacheOnly;
  EXPECT_EQ(provider->providerName(), "");
  EXPECT_THAT(quotes(abc), IsEmpty());
  EXPECT_THAT(source->queries, IsEmpty());

  provider->dataSource = DataSource::sourceAndCache;
  EXPECT_EQ(provider->providerName(), "Market");
  EXPECT_EQ(quotes(abc), truth);
  EXPECT_THAT(source->queries, SizeIs(2)) << "the bars and the history for their conversion";
  EXPECT_EQ(provider->availableIntervals(abc, days(0, 10)), std::set{QuoteInterval::oneDay});

  provider->dataSource = DataSource::cacheOnly;
  EXPECT_EQ(quotes(abc), truth);
  EXPECT_THAT(source->queries, SizeIs(2));

  provider->dataSource = DataSource::sourceOnly;
  EXPECT_EQ(quotes(abc), truth);
  EXPECT_THAT(source->queries, SizeIs(4));
  EXPECT_THAT(provider->availableIntervals(abc, days(0, 10)), IsEmpty());
  source->daysPerQuery = 4;
  EXPECT_THAT(provider->sourceQueries(dailyQuotes(abc, days(0, 10), marketNominal)), SizeIs(3));
}

TEST_F(SwitchableQuoteProviderTest, SwitchingChangesNoIdentity) {
  const EquityPointer abc = provider->equityWithId("ABC");
  const EquityPointer rate = provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  for (const DataSource from :
       {DataSource::sourceOnly, DataSource::cacheOnly, DataSource::sourceAndCache}) {
    provider->dataSource = from;
    EXPECT_EQ(provider->equityWithId("ABC"), abc);
    EXPECT_EQ(provider->exchangeRateEquity(Currency::usd(), Currency::cad()), rate);

    std::optional<std::vector<EquityPointer>> found;
    provider->searchEquities("ABC", [&](auto equities) { found = std::move(equities.value()); });
    std::optional<ErrorPointer> refreshed;
    provider->refreshEquities({abc, rate}, [&](ErrorPointer error) {
      EXPECT_TRUE(DispatchQueue::main()->isCurrent());
      refreshed = std::move(error);
    });
    ASSERT_TRUE(MainLoop::runUntil([&] { return found && refreshed; }, std::chrono::seconds(20)));
    EXPECT_THAT(*found, ::testing::ElementsAre(abc));
    EXPECT_EQ(*refreshed, nullptr);
    EXPECT_EQ(abc->quoteProvider.lock(), provider);
    EXPECT_EQ(rate->quoteProvider.lock(), provider);
  }
}

TEST_F(SwitchableQuoteProviderTest, PassesErrorsOn) {
  class Failing : public QuoteProvider {
    void searchEquities(std::string, EquitiesCompletion completion) override {
      completion(failure(QuoteProviderError(QuoteProviderError::NotAvailable{})));
    }
    void refreshEquities(std::vector<EquityPointer>, RefreshCompletion completion) override {
      completion(QuoteProviderError(QuoteProviderError::NotAvailable{}).copy());
    }
  };
  provider = std::make_shared<SwitchableQuoteProvider>(std::make_shared<Failing>(),
                                                       folder / "Other.sqlite3");
  const auto unknown = std::make_shared<EquityInfo>("ABC", std::weak_ptr<QuoteProvider>());
  for (const DataSource from : {DataSource::sourceOnly, DataSource::sourceAndCache}) {
    provider->dataSource = from;
    ErrorPointer searched;
    ErrorPointer refreshed;
    provider->searchEquities("ABC", [&](auto found) { searched = found.error(); });
    provider->refreshEquities({unknown}, [&](ErrorPointer error) { refreshed = std::move(error); });
    ASSERT_TRUE(
        MainLoop::runUntil([&] { return searched && refreshed; }, std::chrono::seconds(20)));
    EXPECT_EQ(*searched, *refreshed);
    EXPECT_EQ(unknown->quoteProvider.lock(), nullptr);
  }
}

TEST_F(SwitchableQuoteProviderTest, AnEquityThatTheCacheDoesNotKnowStaysWithoutData) {
  provider->dataSource = DataSource::cacheOnly;
  const EquityPointer unknown = provider->equityWithId("NEW");
  EXPECT_FALSE(unknown->isAuthoritative);
  EXPECT_THAT(quotes(unknown), IsEmpty());
}

TEST_F(SwitchableQuoteProviderTest, IsNotMadeWithoutItsCache) {
  writeText(folder / "Text.sqlite3", std::string(5000, 'x'));
  EXPECT_THROW(SwitchableQuoteProvider(source, folder / "Text.sqlite3"), SQLiteError);
}

TEST(DataSourceTest, HasThreeValues) {
  EXPECT_EQ(SwitchableQuoteProvider::dataSourceWithRawValue(0), std::nullopt);
  EXPECT_EQ(SwitchableQuoteProvider::dataSourceWithRawValue(1), DataSource::sourceAndCache);
  EXPECT_EQ(SwitchableQuoteProvider::dataSourceWithRawValue(2), DataSource::sourceOnly);
  EXPECT_EQ(SwitchableQuoteProvider::dataSourceWithRawValue(3), DataSource::cacheOnly);
  EXPECT_EQ(SwitchableQuoteProvider::dataSourceWithRawValue(4), std::nullopt);
}

}  // namespace
}  // namespace corvane::testing
