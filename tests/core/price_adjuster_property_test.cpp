// Random histories and bars, converted between all pairs of price bases and compared with a model
// that looks at every event for every bar and computes with exact fractions.
//
// CORVANE_TEST_CASES sets how many histories are tried, CORVANE_TEST_SEED repeats a run.
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <random>
#include <set>

#include "core/market/price_conversion.h"
#include "random_cases.h"

namespace corvane {
namespace {

using enum QuoteQuery::PriceAdjustment;
using Exact = boost::multiprecision::cpp_rational;
using Ratio = std::pair<std::int64_t, std::int64_t>;

/// With these, every quotient ends after a few digits.
const std::vector<Ratio> ratiosThatEnd = {{2, 1}, {4, 1}, {5, 1}, {5, 2}, {1, 10}, {1, 2}, {5, 4}};
const std::vector<Ratio> ratiosOfAllKinds = {{2, 1}, {3, 1}, {3, 2}, {7, 3}, {1, 8}, {20, 21}};

Exact exact(const Decimal& value) {
  using Integer = boost::multiprecision::cpp_int;
  const Integer mantissa = Integer(static_cast<std::uint64_t>(value.mantissa() >> 64)) << 64 |
                           Integer(static_cast<std::uint64_t>(value.mantissa()));
  const auto digits = static_cast<unsigned>(std::abs(value.exponent()));
  const Exact scale = boost::multiprecision::pow(Integer(10), digits);
  const Exact magnitude = value.exponent() < 0 ? Exact(mantissa / scale) : Exact(mantissa * scale);
  return value.sign() == Sign::minus ? Exact(-magnitude) : magnitude;
}

Date onDay(std::int64_t number) {
  return Date::since1970(static_cast<double>(number) * 86400);
}

Quote barOfDay(std::int64_t number) {
  Quote bar;
  bar.fromDate = onDay(number);
  bar.toDate = onDay(number + 1);
  return bar;
}

/// The shares of today that one share before the splits for which `counts` has become.
template <typename Counts>
Exact growth(const std::vector<EquityEvent>& history, Counts counts) {
  Exact shares = 1;
  for (const EquityEvent& event : history) {
    if (const auto* split = std::get_if<EquityEvent::Split>(&event.kind); split && counts(event)) {
      shares *= Exact(split->ratio.numerator) / split->ratio.denominator;
    }
  }
  return shares;
}

/// `dividend` per share of today. A split at the same time comes after it.
Exact amountToday(const EquityEvent& dividend, const std::vector<EquityEvent>& history) {
  const Exact amount = exact(std::get<EquityEvent::Dividend>(dividend.kind).amount);
  return isNominal(dividend.priceAdjustment)
             ? amount / growth(history, [&](auto& split) { return dividend.date <= split.date; })
             : amount;
}

struct Model {
  Model(std::vector<EquityEvent> events, const Quote& bar) {
    growthAfter = growth(events, [&](auto& split) { return bar.fromDate < split.date; });
    for (const EquityEvent& event : events) {
      if (bar.fromDate < event.date && std::holds_alternative<EquityEvent::Dividend>(event.kind)) {
        paidAfter += amountToday(event, events);
      }
    }
  }

  /// By way of the price per share of today with nothing taken off.
  [[nodiscard]] Exact price(Exact value, PriceAdjustment from, PriceAdjustment to) const {
    if (from == to || (isNominal(from) && isNominal(to))) {
      return value;
    }
    if (isNominal(from)) {
      value /= growthAfter;
    } else if (from == adjustedForSplitsAndDividends) {
      value += paidAfter;
    }
    if (isNominal(to)) {
      return value * growthAfter;
    }
    return to == adjustedForSplitsAndDividends ? Exact(value - paidAfter) : value;
  }

  [[nodiscard]] std::int64_t volume(std::int64_t shares, PriceAdjustment from,
                                    PriceAdjustment to) const {
    if (isNominal(from) == isNominal(to)) {
      return shares;
    }
    const Exact changed = isNominal(from) ? Exact(shares * growthAfter) : shares / growthAfter;
    return static_cast<std::int64_t>(numerator(changed) / denominator(changed));
  }

  Exact growthAfter;
  Exact paidAfter = 0;
};

class PriceConversionProperty : public ::testing::Test {
 protected:
  struct Case {
    std::vector<EquityEvent> history;
    std::vector<Quote> bars;
  };

  static Decimal cents(std::mt19937_64& random, std::uint64_t most) {
    return Decimal::fromParts(Sign::plus, -2, random() % most + 1);
  }

  /// A month with up to a dozen events, several of them on one day, in any order.
  static Case draw(std::mt19937_64& random, const std::vector<Ratio>& ratios) {
    Case drawn;
    for (auto left = random() % 13; left > 0; --left) {
      EquityEvent event{onDay(static_cast<std::int64_t>(random() % 30)), {}, {}};
      event.priceAdjustment = QuoteQuery::allPriceAdjustments.at(random() % 4);
      if (random() % 2 == 0) {
        const Ratio& ratio = ratios[random() % ratios.size()];
        event.kind = EquityEvent::Split{{ratio.first, ratio.second}};
      } else {
        event.kind = EquityEvent::Dividend{cents(random, 300)};
      }
      drawn.history.push_back(event);
    }
    for (std::int64_t day = 0; day < 31; ++day) {
      Quote bar = barOfDay(day);
      for (auto* price : {&bar.open, &bar.close, &bar.low, &bar.high}) {
        if (random() % 8 != 0) {
          *price = cents(random, 100'000);
        }
      }
      if (random() % 8 != 0) {
        bar.volume = static_cast<std::int64_t>(random() % 1'000'000);
      }
      drawn.bars.push_back(bar);
    }
    return drawn;
  }

  static std::vector<Quote> convert(const Case& drawn, std::vector<Quote> bars,
                                    PriceAdjustment from, PriceAdjustment to) {
    const auto result =
        converted({std::move(bars), from, std::nullopt, {onDay(0), onDay(31)}}, to, drawn.history);
    EXPECT_EQ(result.prices, to);
    return *result.quotes;
  }

  template <typename Agree>
  static void expectBars(const Case& drawn, PriceAdjustment from, PriceAdjustment to, Agree agree) {
    SCOPED_TRACE(std::string(caseName(from)) + " to " + std::string(caseName(to)));
    const std::vector<Quote> results = convert(drawn, drawn.bars, from, to);
    ASSERT_EQ(results.size(), drawn.bars.size());
    for (std::size_t i = 0; i < results.size(); ++i) {
      const Quote& before = drawn.bars[i];
      const Quote& after = results[i];
      const Model model(drawn.history, before);
      for (const auto price : {&Quote::open, &Quote::close, &Quote::low, &Quote::high}) {
        ASSERT_EQ((before.*price).has_value(), (after.*price).has_value());
        if (before.*price) {
          ASSERT_TRUE(agree(exact(*(after.*price)), model.price(exact(*(before.*price)), from, to)))
              << before << " became " << after;
        }
      }
      ASSERT_EQ(before.volume.has_value(), after.volume.has_value());
      if (before.volume) {
        ASSERT_EQ(*after.volume, model.volume(*before.volume, from, to)) << before;
      }
      ASSERT_EQ(after.fromDate, before.fromDate);
    }
  }

  template <typename Test>
  static void forAllPairs(Test test) {
    for (const PriceAdjustment from : QuoteQuery::allPriceAdjustments) {
      for (const PriceAdjustment to : QuoteQuery::allPriceAdjustments) {
        test(from, to);
      }
    }
  }
};

TEST_F(PriceConversionProperty, IsExactWhereTheDigitsSuffice) {
  testing::forRandomCases(30, [](std::mt19937_64& random) {
    const Case drawn = draw(random, ratiosThatEnd);
    forAllPairs([&](PriceAdjustment from, PriceAdjustment to) {
      expectBars(drawn, from, to, std::equal_to<>());
    });
  });
}

TEST_F(PriceConversionProperty, IsOffByTheLastDigitsElsewhere) {
  testing::forRandomCases(30, [](std::mt19937_64& random) {
    const Case drawn = draw(random, ratiosOfAllKinds);
    forAllPairs([&](PriceAdjustment from, PriceAdjustment to) {
      expectBars(drawn, from, to, [](const Exact& is, const Exact& shouldBe) {
        return abs(is - shouldBe) <
               Exact(1, boost::multiprecision::pow(boost::multiprecision::cpp_int(10), 28));
      });
    });
  });
}

TEST_F(PriceConversionProperty, IsUndoneByTheConversionBack) {
  testing::forRandomCases(30, [](std::mt19937_64& random) {
    const Case drawn = draw(random, ratiosThatEnd);
    forAllPairs([&](PriceAdjustment from, PriceAdjustment to) {
      std::vector<Quote> back = convert(drawn, convert(drawn, drawn.bars, from, to), to, from);
      for (std::size_t i = 0; i < back.size(); ++i) {
        // Shares that a reverse split has cut off stay away.
        if (back[i].volume) {
          const Model model(drawn.history, drawn.bars[i]);
          ASSERT_EQ(*back[i].volume,
                    model.volume(model.volume(*drawn.bars[i].volume, from, to), to, from));
          back[i].volume = drawn.bars[i].volume;
        }
        ASSERT_EQ(back[i], drawn.bars[i]) << caseName(from) << " to " << caseName(to);
      }
    });
  });
}

TEST_F(PriceConversionProperty, RestatesTheEventsBetweenTheFirstAndTheLastThatWereGiven) {
  testing::forRandomCases(30, [](std::mt19937_64& random) {
    const Case drawn = draw(random, ratiosThatEnd);
    if (drawn.history.size() < 2) {
      return;
    }
    const std::vector<EquityEvent> given = {drawn.history[0], drawn.history[1]};
    const auto [first, last] = std::ranges::minmax(given, {}, &EquityEvent::date);
    forAllPairs([&](PriceAdjustment from, PriceAdjustment to) {
      const auto events =
          *converted({std::nullopt, from, given, {onDay(0), onDay(31)}}, to, drawn.history).events;
      EXPECT_TRUE(std::ranges::is_sorted(events, {}, &EquityEvent::date));
      // What is there once in the history is found once among the results.
      std::multiset<Exact> amounts;
      std::multiset<Exact> expected;
      for (const EquityEvent& event : events) {
        EXPECT_EQ(event.priceAdjustment, to);
        if (const auto* dividend = std::get_if<EquityEvent::Dividend>(&event.kind)) {
          amounts.insert(exact(dividend->amount));
        }
      }
      std::size_t count = 0;
      for (const EquityEvent& event : drawn.history) {
        if (event.date < first.date || last.date < event.date) {
          continue;
        }
        ++count;
        if (std::holds_alternative<EquityEvent::Dividend>(event.kind)) {
          const Exact today = amountToday(event, drawn.history);
          expected.insert(isNominal(to) ? Exact(today * growth(drawn.history,
                                                               [&](auto& split) {
                                                                 return event.date <= split.date;
                                                               }))
                                        : today);
        }
      }
      EXPECT_EQ(events.size(), count);
      EXPECT_EQ(amounts, expected);
    });
  });
}

/// Splits whose product needs far more than 64 bits, and more than 128: the prices keep the
/// precision of a Decimal.
TEST(PriceConversionTest, KeepsItsPrecisionThroughAnyNumberOfSplits) {
  for (const int count : {45, 70, 80, 90, 150}) {
    std::vector<EquityEvent> history;
    for (int i = 0; i < count; ++i) {
      history.push_back({onDay(i + 1), EquityEvent::Split{{3, 1}}, adjustedForSplits});
    }
    Quote bar = barOfDay(0);
    bar.close = 81;
    const QuoteFetchResult nominal{
        std::vector{bar}, marketNominal, std::nullopt, {onDay(0), onDay(1)}};
    const auto adjusted = converted(nominal, adjustedForSplits, history);
    const Exact is = exact(*adjusted.quotes->front().close);
    const Exact shouldBe = Exact(81, boost::multiprecision::pow(boost::multiprecision::cpp_int(3),
                                                                static_cast<unsigned>(count)));
    EXPECT_LT(abs(is / shouldBe - 1), Exact(1, 1'000'000'000'000'000'000)) << count;
    const auto back = converted(adjusted, marketNominal, history);
    EXPECT_EQ(rounded(*back.quotes->front().close, 18, RoundingMode::plain), Decimal(81)) << count;
  }
}

/// As a holding of today the bar was worth 49 + 1: one dividend of 1 per share of today, which was
/// paid as 2 on each of half as many shares.
TEST(PriceConversionTest, PutsBackADividendFromBeforeASplitInSharesOfToday) {
  const std::vector<EquityEvent> history = {
      {onDay(1), EquityEvent::Dividend{1}, adjustedForSplits},
      {onDay(2), EquityEvent::Split{{2, 1}}, adjustedForSplits}};
  Quote bar = barOfDay(0);
  bar.close = 49;
  const auto result = converted(
      {std::vector{bar}, adjustedForSplitsAndDividends, std::nullopt, {onDay(0), onDay(1)}},
      marketNominal, history);
  EXPECT_EQ(result.quotes->front().close, Decimal(100));
}

TEST(PriceConversionTest, IgnoresEventsWithoutAMeaning) {
  const std::vector<EquityEvent> history = {
      {onDay(1), EquityEvent::Split{{0, 1}}, adjustedForSplits},
      {onDay(1), EquityEvent::Split{{2, 0}}, adjustedForSplits},
      {onDay(1), EquityEvent::Split{{-2, 1}}, adjustedForSplits},
      {onDay(1), EquityEvent::Dividend{Decimal::nan()}, adjustedForSplits}};
  Quote bar = barOfDay(0);
  bar.close = 50;
  bar.volume = 7;
  for (const PriceAdjustment target : QuoteQuery::allPriceAdjustments) {
    EXPECT_EQ(
        converted({std::vector{bar}, adjustedForSplits, {}, {onDay(0), onDay(1)}}, target, history)
            .quotes->front(),
        bar);
  }
}

}  // namespace
}  // namespace corvane
