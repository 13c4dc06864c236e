// Random ledgers and price series: the series of a range of days must equal what a naive bookkeeper
// and a look at the price list come to for each day by itself.
//
// CORVANE_TEST_CASES sets the number of ledgers, CORVANE_TEST_SEED the first seed.

#include <set>

#include "ledger/naive_ledger.h"
#include "random_cases.h"
#include "support/ledger_builder.h"
#include "support/scripted_quote_provider.h"

namespace corvane::testing {
namespace {

struct CashFigures {
  Decimal onHand, deposited;
  std::optional<Decimal> rate;
  bool operator==(const CashFigures&) const = default;
};
struct HoldingFigures {
  Decimal shares, cost, gains;
  std::optional<Decimal> price;
  bool operator==(const HoldingFigures&) const = default;
};
struct DayFigures {
  std::map<std::string, CashFigures> cash;
  std::map<std::string, HoldingFigures> holdings;
  bool operator==(const DayFigures&) const = default;
};

class RandomDays {
 public:
  explicit RandomDays(std::mt19937_64& random) : random_(random) {
    ledger_.portfolio->allowsNegativeBalances = true;
    ledger_.portfolio->usesCashAccounts = !chance(3);
    ledger_.manager->quoteProvider = provider_;
    const char* zones[] = {"America/Toronto", "Asia/Tokyo", "Europe/London"};
    for (std::size_t i = 0; i < 5; ++i) {
      equities_.push_back(provider_->equityWithId("E" + std::to_string(i)));
      equities_.back()->currency = currencies_[below(currencies_.size())];
      equities_.back()->calendar = Calendar(*TimeZone::withIdentifier(zones[below(3)]));
    }
    provider_->script = [this](const QuoteQuery& query) { return answer(query); };
    recordRows();
  }

  void check() {
    const YearMonthDay from = dayAfterStart(static_cast<int>(below(60)));
    const YearMonthDay to = YearMonthDay::normalised(
        from.year, from.month, from.day + static_cast<int>(below(30)), calendar());
    std::optional<PortfolioManager::FetchDailySnapshotsResult> fetched;
    ledger_.manager->fetchDailySnapshots(ledger_.portfolio, from, to,
                                         [&](auto result) { fetched = std::move(result.value()); });
    ASSERT_TRUE(MainLoop::runUntil([&] { return fetched.has_value(); }, std::chrono::seconds(20)));

    const auto expected = naiveDays(from, to);
    std::map<YearMonthDay, DayFigures> merged;
    for (const auto& [ymd, snapshot] : fetched->snapshotGroup.sortedSnapshots) {
      merged[ymd] = figures(snapshot);
    }
    ASSERT_EQ(fetched->snapshotGroup.sortedSnapshots.size(), expected.size());
    for (const auto& [ymd, figures] : expected) {
      EXPECT_TRUE(merged[ymd] == figures) << ymd.year << "-" << ymd.month << "-" << ymd.day
                                          << "\n  merged " << ::testing::PrintToString(merged[ymd])
                                          << "\n  naive  " << ::testing::PrintToString(figures);
    }
    std::size_t failed = 0;
    for (const auto& [id, bars] : bars_) {
      failed += bars ? 0 : 1;
    }
    EXPECT_EQ(fetched->fetchErrorsByEquity.size() + fetched->fetchErrorsByCurrency.size(), failed);
  }

 private:
  [[nodiscard]] const Calendar& calendar() const { return ledger_.manager->calendar; }
  std::uint64_t below(std::uint64_t n) { return random_() % n; }
  bool chance(std::uint64_t n) { return below(n) == 0; }
  Decimal number(std::uint64_t largest) { return static_cast<long>(below(largest)); }

  YearMonthDay dayAfterStart(int days) {
    return YearMonthDay::normalised(2020, 11, 25 + days, calendar());
  }

  void recordRows() {
    const std::uint64_t count = below(60);
    std::set<double> moments;
    for (std::uint64_t i = 0; i < count; ++i) {
      const Date start = dayAfterStart(static_cast<int>(below(80))).startIn(calendar());
      moments.insert((start + 3600.0 * static_cast<double>(below(24))).timeIntervalSince1970());
    }
    for (const double moment : moments) {
      ledger_.on(Date::since1970(moment));
      ledger_.record({ledger_.make(randomKind())});
    }
  }

  BasicTransaction::Kind randomKind() {
    const EquityPointer& equity = equities_[below(equities_.size())];
    const CurrencyAmount amount{currencies_[below(currencies_.size())], number(1000) - 300};
    const Decimal held = ledger_.finalSnapshot().equitySnapshots.get(equity).sharesHeld;
    switch (below(8)) {
      case 0:
        return BasicTransaction::Split{equity, held, held * 2};
      case 1:
        return BasicTransaction::JournaledShares{equity, number(20) - 8, number(100)};
      case 2:
        return BasicTransaction::Yield{static_cast<BasicTransaction::YieldType>(below(4)),
                                       equity,
                                       std::nullopt,
                                       {amount.currency, abs(amount.amount)},
                                       number(50)};
      case 3:
        return BasicTransaction::CashAdjustment{amount};
      case 4:
        if (ledger_.portfolio->usesCashAccounts) {
          return BasicTransaction::Transfer{amount};
        }
        [[fallthrough]];
      default:
        // Selling all is what makes an asset disappear.
        const Decimal shares = chance(3) ? -held : number(20) - 8;
        return BasicTransaction::Trade{equity, amount, shares < 0 ? -number(100) : number(100),
                                       shares};
    }
  }

  ScriptedQuoteProvider::Answer answer(const QuoteQuery& query) {
    auto& bars = bars_[query.equity->id()];
    if (chance(6)) {
      bars.reset();
      return ScriptedQuoteProvider::refusal();
    }
    const bool hasNone = chance(8);
    bars = ScriptedQuoteProvider::dailyBars(query, [&](YearMonthDay) -> std::optional<Quote> {
      if (hasNone || chance(3)) {
        return std::nullopt;
      }
      Quote bar;
      bar.open = chance(5) ? std::nullopt : std::optional(number(100));
      bar.close = chance(5) ? std::nullopt : std::optional(number(100));
      return bar;
    });
    return ScriptedQuoteProvider::quotes(*bars);
  }

  static DayFigures figures(const PortfolioSnapshot& snapshot) {
    DayFigures figures;
    for (const auto& [currency, cash] : snapshot.currencySnapshots) {
      figures.cash[std::string(currency.code)] = {cash.cashOnHand, cash.netCashDeposited,
                                                  cash.exchangeRate};
    }
    for (const auto& [equity, holding] : snapshot.equitySnapshots) {
      figures.holdings[equity->id()] = {holding.sharesHeld, holding.costBase,
                                        holding.cumulativeCapitalGain, holding.sharePrice};
    }
    return figures;
  }

  /// By whose clocks the bars of an equity or a pair count.
  Calendar calendarOf(const std::string& id) {
    return id.starts_with("E") && id.size() == 2
               ? provider_->equityWithId(id)->calendar
               : Calendar(*TimeZone::withIdentifier("Europe/London"));
  }

  /// The price on `day`: the close of the latest bar up to then, else where the first bar opened.
  std::optional<Decimal> priceOn(YearMonthDay day, const std::string& id) {
    std::optional<Decimal> price;
    const auto& bars = bars_.at(id);
    if (bars && !bars->empty()) {
      price = bars->front().open;
      for (const Quote& bar : *bars) {
        if (bar.close && YearMonthDay::of(bar.fromDate, calendarOf(id)) <= day) {
          price = bar.close;
        }
      }
    }
    return price;
  }

  /// What the first `count` rows come to, without any walk of the ledger.
  NaiveLedger::Year balancesAfter(std::size_t count) {
    std::vector<BasicTransaction> basics;
    for (std::size_t i = 0; i < count; ++i) {
      basics.push_back(ledger_.rows()[i]->basic);
    }
    const auto naive = NaiveLedger::of(basics, *ledger_.portfolio, calendar());
    return naive->years.empty() ? NaiveLedger::Year() : naive->years.rbegin()->second;
  }

  std::size_t rowsUpTo(YearMonthDay day) {
    return static_cast<std::size_t>(std::ranges::count_if(ledger_.rows(), [&](const auto& row) {
      return YearMonthDay::of(row->settlementDate(), calendar()) <= day;
    }));
  }

  std::map<YearMonthDay, DayFigures> naiveDays(YearMonthDay from, YearMonthDay to) {
    const auto seedDay = YearMonthDay::normalised(from.year, from.month, from.day - 1, calendar());
    const std::size_t firstRow = rowsUpTo(seedDay);
    const std::size_t endRow = rowsUpTo(to);
    const NaiveLedger::Year seed = balancesAfter(firstRow);
    std::set<std::string> currencies, equities;
    for (const auto& [code, cash] : seed.cash) {
      if (cash.onHand != 0) {
        currencies.insert(code);
      }
    }
    for (const auto& [id, holding] : seed.holdings) {
      if (holding.shares != 0) {
        equities.insert(id);
      }
    }
    std::set<YearMonthDay> days = {seedDay};
    std::map<std::string, std::size_t> firstRowOf;
    for (std::size_t i = firstRow; i < endRow; ++i) {
      const BasicTransaction& basic = ledger_.rows()[i]->basic;
      days.insert(YearMonthDay::of(basic.settlementDate, calendar()));
      if (basic.currency() != nullptr) {
        currencies.insert(std::string(basic.currency()->code));
      }
      if (basic.equity() != nullptr) {
        equities.insert((*basic.equity())->id());
        firstRowOf.try_emplace((*basic.equity())->id(), i);
      }
    }
    std::set<std::string> rated = currencies;
    for (const auto& id : equities) {
      rated.insert(std::string(provider_->equityWithId(id)->currency.code));
    }
    rated.erase("CAD");
    for (const auto& [id, bars] : bars_) {
      for (const Quote& bar : bars.value_or(std::vector<Quote>())) {
        if (bar.close) {
          days.insert(YearMonthDay::of(bar.fromDate, calendarOf(id)));
        }
      }
    }

    std::map<YearMonthDay, DayFigures> result;
    for (const YearMonthDay day : days) {
      NaiveLedger::Year balances = balancesAfter(rowsUpTo(day));
      DayFigures& figures = result[day];
      for (const auto& [code, cash] : balances.cash) {
        if (day == seedDay || currencies.contains(code)) {
          figures.cash[code] = {cash.onHand, cash.deposited, std::nullopt};
        }
      }
      for (const auto& [id, holding] : balances.holdings) {
        if (day == seedDay || equities.contains(id)) {
          figures.holdings[id] = {holding.shares, holding.cost, holding.gains, std::nullopt};
        }
      }
      for (const auto& id : equities) {
        auto& holding = figures.holdings[id];
        holding.price = priceOn(day, id);
        // What a sold-out holding has left of its cost base comes back with its first row.
        const auto first = firstRowOf.find(id);
        const bool isUntouched = first == firstRowOf.end() || rowsUpTo(day) <= first->second;
        if (isUntouched && seed.holdings.contains(id) && seed.holdings.at(id).shares == 0) {
          holding.cost = 0;
        }
      }
      for (const auto& code : rated) {
        figures.cash[code].rate = priceOn(day, "FX " + code + "/CAD");
      }
      if (currencies.contains("CAD")) {
        figures.cash["CAD"].rate = 1;
      }
      std::erase_if(figures.cash, [](const auto& entry) { return entry.second == CashFigures(); });
      std::erase_if(figures.holdings,
                    [](const auto& entry) { return entry.second == HoldingFigures(); });
    }
    return result;
  }

  std::mt19937_64& random_;
  Ledger ledger_;
  std::shared_ptr<ScriptedQuoteProvider> provider_ = std::make_shared<ScriptedQuoteProvider>();
  const std::vector<Currency> currencies_ = {Currency::cad(), Currency::usd(),
                                             Currency::byCode().find("JPY")->second};
  std::vector<EquityPointer> equities_;
  /// The bars that were given out, or none where the fetch was refused.
  std::map<std::string, std::optional<std::vector<Quote>>> bars_;
};

TEST(RandomDailySnapshots, EqualANaiveComputationForEachDay) {
  forRandomCases(200, [](std::mt19937_64& random) { RandomDays(random).check(); });
}

}  // namespace
}  // namespace corvane::testing
