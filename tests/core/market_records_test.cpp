// The values in which all of market data speaks, and the equities that they speak of.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>

#include "core/market/equity_event.h"
#include "core/market/portfolio_asset.h"
#include "core/market/quote.h"
#include "core/market/quote_fetch_result.h"
#include "core/market/quote_provider.h"
#include "core/money/currency_amount.h"
#include "core/money/year_month_day.h"
#include "support/decimals.h"

namespace corvane {
namespace {

using testing::dec;

Calendar toronto() {
  return Calendar(*TimeZone::withIdentifier("America/Toronto"));
}

TEST(YearMonthDay, RollsOverAsTheCalendarDoes) {
  const auto normalised = [](int year, int month, int day) {
    return YearMonthDay::normalised(year, month, day, toronto());
  };
  EXPECT_EQ(normalised(2023, 0, 15), (YearMonthDay{2022, 12, 15}));
  EXPECT_EQ(normalised(2023, 1, 32), (YearMonthDay{2023, 2, 1}));
  EXPECT_EQ(normalised(2024, 2, 30), (YearMonthDay{2024, 3, 1}));
  EXPECT_LT((YearMonthDay{2023, 9, 30}), (YearMonthDay{2023, 10, 1}));
  // The same moment is another day further east.
  const Date evening = YearMonthDay{2024, 7, 1}.startIn(toronto()) + 23 * 3600;
  EXPECT_EQ(YearMonthDay::of(evening, toronto()), (YearMonthDay{2024, 7, 1}));
  EXPECT_EQ(YearMonthDay::of(evening, Calendar()), (YearMonthDay{2024, 7, 2}));
  EXPECT_EQ(YearMonthDay::of(Date::sinceReferenceDate(1e300), Calendar()), YearMonthDay());
  EXPECT_EQ((YearMonthDay{2024, 7, 1}).description(), "7/1/24");
}

TEST(Fraction, IsEqualByValue) {
  EXPECT_EQ((Fraction{2, 1}), (Fraction{4, 2}));
  EXPECT_FALSE((Fraction{2, 1}) == (Fraction{3, 2}));
  EXPECT_EQ((Fraction{1, 0}), (Fraction{5, 0}));
  EXPECT_EQ((Fraction{3, 2}).description(), "3/2");
}

TEST(CurrencyAmount, FitsItsCurrencyByTheDigitsThatItReallyHas) {
  const Currency yen = Currency::byCode().find("JPY")->second;
  EXPECT_TRUE(fitsMinorUnits(dec("10.500"), Currency::cad()));
  EXPECT_FALSE(fitsMinorUnits(dec("10.505"), Currency::cad()));
  EXPECT_TRUE(fitsMinorUnits(dec("1200"), yen));
  EXPECT_FALSE(fitsMinorUnits(dec("12.5"), yen));
  EXPECT_EQ(roundedToMinorUnits(dec("-2.345"), Currency::cad()), dec("-2.34"));
}

TEST(EquityInfo, IsOneObjectForEachIdOfAProvider) {
  const auto provider = std::make_shared<QuoteProvider>();
  auto equity = provider->equityWithId("ABC");
  EXPECT_EQ(provider->equityWithId("ABC"), equity);
  EXPECT_EQ(equity->symbol, "ABC");
  EXPECT_EQ(equity->currency, Currency::noCurrency());
  EXPECT_EQ(equity->description(), "ABC (ABC) (?/XXX)");
  equity->isAuthoritative = true;
  equity.reset();
  EXPECT_FALSE(provider->equityWithId("ABC")->isAuthoritative) << "the table kept it alive";

  const auto rate = provider->exchangeRateEquity(Currency::usd(), Currency::cad());
  EXPECT_EQ(rate->id(), "FX USD/CAD");
  EXPECT_EQ(rate->symbol, "FX USD/CAD");
  EXPECT_EQ(rate->currency, Currency::cad());
}

TEST(EquityInfo, IsComparedByItsLivingProviderAndItsId) {
  auto first = std::make_shared<QuoteProvider>();
  auto second = std::make_shared<QuoteProvider>();
  const auto ofFirst = first->equityWithId("ABC");
  const auto ofSecond = second->equityWithId("ABC");
  EXPECT_FALSE(*ofFirst == *ofSecond);
  EXPECT_EQ(EquityIdentity()(ofFirst), EquityIdentity()(ofSecond));
  ofSecond->quoteProvider = first;
  EXPECT_EQ(*ofFirst, *ofSecond);
  first.reset();
  EXPECT_FALSE(*ofFirst == *ofSecond);
  EXPECT_EQ(*ofFirst, *ofFirst);
}

TEST(EquityInfo, HasARangeWhateverTheServiceTells) {
  const auto provider = std::make_shared<QuoteProvider>();
  const auto equity = provider->equityWithId("ABC");
  EXPECT_EQ(equity->fullDateRange(), DateRange(Date::distantPast(), Date::distantFuture()));
  equity->firstTradeDate = Date::since1970(100);
  equity->recentDate = Date::since1970(200);
  EXPECT_EQ(equity->fullDateRange(), DateRange(Date::since1970(100), Date::since1970(200)));
  equity->recentDate = Date::since1970(50);
  EXPECT_TRUE(equity->fullDateRange().isEmpty()) << "a first trade after the last one";
  equity->firstTradeDate.reset();
  equity->recentDate = Date::distantPast() - 1;
  EXPECT_TRUE(equity->fullDateRange().isEmpty());
}

TEST(EquityTable, DropsEquitiesThatNobodyHolds) {
  const auto provider = std::make_shared<QuoteProvider>();
  std::deque<EquityPointer> held;
  for (int i = 0; i < 1000; ++i) {
    held.push_back(provider->equityWithId(std::to_string(i)));
    if (held.size() > 10) {
      held.pop_front();
    }
  }
  EXPECT_EQ(provider->equitiesById()->find("999"), held.back());
  EXPECT_EQ(provider->equitiesById()->find("500"), nullptr);
}

TEST(Quote, IsEqualWhereverItCameFrom) {
  Quote quote;
  quote.toDate = Date() + 60;
  quote.open = dec("1.5");
  quote.volume = 100;
  Quote cached = quote;
  cached.isCached = cached.isPartial = true;
  EXPECT_EQ(quote, cached);
  cached.close = 1;
  EXPECT_FALSE(quote == cached);
  EXPECT_EQ(quote.description(),
            "2001-01-01 00:00:00 +0000 - 2001-01-01 00:01:00 +0000: open 1.5; close ?; low ?; high "
            "?; volume 100");
}

TEST(QuoteInterval, IsFoundByItsSpanAndByNoOther) {
  for (const auto interval : allQuoteIntervals) {
    EXPECT_EQ(quoteInterval(dateComponents(interval)), interval);
  }
  EXPECT_EQ(dateComponents(QuoteInterval::oneWeek),
            (DateComponents{{CalendarUnit::weekOfYear, 1}}));
  const DateComponents sevenDays = {{CalendarUnit::day, 7}};
  try {
    (void)quoteInterval(sevenDays);
    FAIL() << "seven days are no bar length";
  } catch (const QuoteIntervalDecodingError& error) {
    EXPECT_EQ(error.invalidDateComponents().components, sevenDays);
  }
}

TEST(QuoteInterval, IsWrittenAsItsSpan) {
  EXPECT_EQ(json(QuoteInterval::oneWeek).text(), R"({"weekOfYear":1})");
  for (const auto interval : allQuoteIntervals) {
    EXPECT_EQ(quoteInterval(JSONValue::parse(json(interval).text())), interval);
  }
  for (const auto* text : {R"({})", R"({"day":7})", R"({"day":1,"hour":1})", R"({"weekday":1})"}) {
    EXPECT_THROW((void)quoteInterval(JSONValue::parse(text)), QuoteIntervalDecodingError) << text;
  }
  for (const auto* text : {R"(7)", R"({"day":"1"})", R"({"day":1.5})", R"({"day":99999999999})"}) {
    EXPECT_THROW((void)quoteInterval(JSONValue::parse(text)), JSONError) << text;
  }
}

TEST(EquityEvent, IsEqualByWhatItDoes) {
  const auto basis = PriceAdjustment::marketNominal;
  const EquityEvent split{Date(), EquityEvent::Split{{3, 2}}, basis};
  const EquityEvent dividend{Date(), EquityEvent::Dividend{dec("1.50")}, basis};
  EXPECT_EQ(split, (EquityEvent{Date(), EquityEvent::Split{{6, 4}}, basis}));
  EXPECT_EQ(dividend, (EquityEvent{Date(), EquityEvent::Dividend{dec("1.5")}, basis}));
  EXPECT_FALSE(split == dividend);
  EXPECT_EQ(split.description(), "2001-01-01 00:00:00 +0000: split 3:2");
  EXPECT_EQ(dividend.description(), "2001-01-01 00:00:00 +0000: dividend of 1.5 marketNominal)");
}

TEST(QuoteQuery, AsksForTheSessionThatTheLatestPriceBelongsTo) {
  const auto provider = std::make_shared<QuoteProvider>();
  const auto equity = provider->equityWithId("ABC");
  const auto range = [&] { return QuoteQuery::currentPeriod(equity, true).dateRange; };
  const DateRange none(Date::distantPast(), Date::distantPast());
  const Date opening, closing = opening + 6.5 * 3600;
  EXPECT_EQ(range(), none);
  equity->recentTradingPeriod = DateRange(opening, closing);
  EXPECT_EQ(range(), none);
  equity->recentDate = opening - 1;
  EXPECT_EQ(range(), none);
  equity->recentDate = opening + 60;
  EXPECT_EQ(range(), DateRange(opening, opening + 60));
  equity->recentDate = closing + 60;
  EXPECT_EQ(range(), DateRange(opening, closing));
}

TEST(QuoteQuery, KnowsWhenItSeeksAllEvents) {
  const auto provider = std::make_shared<QuoteProvider>();
  const auto equity = provider->equityWithId("ABC");
  equity->firstTradeDate = Date();
  QuoteQuery query{equity, {Date(), Date::distantFuture()}, QuoteQuery::EventsWithoutAdjustment()};
  EXPECT_TRUE(query.seeksWholeEventHistory());
  query.seeking = QuoteQuery::EventsOnly{PriceAdjustment::adjustedForSplits};
  EXPECT_TRUE(query.seeksWholeEventHistory());
  query.seeking = QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal};
  EXPECT_FALSE(query.seeksWholeEventHistory());
  query.seeking = QuoteQuery::EventsWithoutAdjustment();
  equity->recentDate = Date() + 86400;
  EXPECT_FALSE(query.seeksWholeEventHistory());
}

TEST(PortfolioAsset, IsTitledByCodeOrSymbolAndName) {
  const auto provider = std::make_shared<QuoteProvider>();
  const auto equity = provider->equityWithId("ABC");
  EXPECT_EQ(PortfolioAsset(equity).title().plainText(), "ABC");
  equity->name = "Alphabetical";
  const auto title = PortfolioAsset(equity).title();
  EXPECT_EQ(title.plainText(), "ABC — Alphabetical");
  EXPECT_EQ(title.runs().front().style.weight, FontWeight::medium);
  EXPECT_EQ(PortfolioAsset(Currency::cad()).title().plainText(), "CAD — Canadian Dollar");
  EXPECT_EQ(PortfolioAsset(Currency::cad()), PortfolioAsset(Currency::cad()));
  EXPECT_FALSE(PortfolioAsset(Currency::cad()) == PortfolioAsset(equity));
}

TEST(QuoteProviderError, SpeaksToTheUser) {
  using Error = QuoteProviderError;
  const auto text = [](Error::Case what) { return Error(std::move(what)).description(); };
  EXPECT_EQ(text(Error::DataInconsistency{}), std::nullopt);
  EXPECT_EQ(text(Error::CurrencyMismatch{"CAD", "USD"}),
            "Currency mismatch; expected CAD but received USD.");
  EXPECT_EQ(text(Error::UnsupportedCurrency{"ZZZ"}), "Currency code \"ZZZ\" is not recognized.");
  EXPECT_EQ(text(Error::UnrecognizedTimeZone{"Mars"}), "“Mars” is an unrecognized time zone name.");
  EXPECT_EQ(text(Error::UnsupportedPriceAdjustment{PriceAdjustment::adjustedForSplits,
                                                   PriceAdjustment::marketNominalSnapshot}),
            "Can’t transform from adjustedForSplits to marketNominalSnapshot.");
}

}  // namespace
}  // namespace corvane
