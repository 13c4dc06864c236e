// A ledger of 20 years in 50 equities and 3 currencies for the benchmarks.
#pragma once

#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "core/market/quote_provider.h"
#include "ledger/manager/portfolio_manager.h"

namespace corvane {

/// A portfolio in Canadian dollars of `manager`, and transactions to be recorded in it.
struct World {
  static constexpr int years = 20;

  World() : World(std::make_shared<QuoteProvider>()) {}
  explicit World(std::shared_ptr<QuoteProvider> quotes)
      : World(quotes, std::make_shared<PortfolioManager>(quotes)) {}
  World(std::shared_ptr<QuoteProvider> quotes, std::shared_ptr<PortfolioManager> keeper)
      : provider(std::move(quotes)), manager(std::move(keeper)) {
    manager->calendar = Calendar(*TimeZone::withIdentifier("America/Toronto"));
    portfolio = manager->createPortfolio(Currency::cad());
    const Currency currencies[] = {Currency::cad(), Currency::usd(),
                                   Currency::byCode().find("EUR")->second};
    for (int i = 0; i < 50; ++i) {
      equities.push_back(provider->equityWithId("EQUITY" + std::to_string(i) + ".TO"));
      equities.back()->currency = currencies[i % 3];
    }
  }

  /// `count` transactions in date order that the ledger takes: mostly purchases and sales, some
  /// dividends and deposits.
  std::vector<BasicTransaction> transactions(int count) {
    std::mt19937_64 random(1);
    const Date start =
        *manager->calendar.date({{CalendarUnit::year, 2004}, {CalendarUnit::hour, 12}});
    const double step = years * 365.0 * 86400 / count;
    std::vector<Decimal> held(equities.size());
    std::vector<BasicTransaction> made;
    made.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
      const std::size_t index = random() % equities.size();
      const EquityPointer& equity = equities[index];
      const auto cents = [&](std::uint64_t most) {
        return Decimal::fromParts(Sign::plus, -2, static_cast<unsigned long>(random() % most + 1));
      };
      const Date date = start + step * i;
      BasicTransaction::Kind kind;
      if (i < 3 || random() % 20 == 0) {
        const Currency& currency = equities[static_cast<std::size_t>(i) % 3]->currency;
        kind = BasicTransaction::Transfer{
            {currency, i < 3 ? Decimal(1'000'000'000) : cents(1'000'000)}};
      } else if (random() % 10 == 0) {
        const Decimal amount = cents(10'000);
        kind = BasicTransaction::Yield{BasicTransaction::YieldType::dividend,
                                       equity,
                                       held[index],
                                       {equity->currency, amount},
                                       amount};
      } else {
        const bool isSale = held[index] >= 100 && random() % 2 == 0;
        const Decimal shares = isSale ? -Decimal(static_cast<long>(random() % 50 + 1))
                                      : Decimal(static_cast<long>(random() % 100 + 1));
        const Decimal cost = (isSale ? Decimal(-1) : Decimal(1)) * cents(1'000'000);
        held[index] += shares;
        kind = BasicTransaction::Trade{equity, {equity->currency, cost}, cost, shares};
      }
      made.push_back({std::move(kind), date, date, std::nullopt});
    }
    return made;
  }

  void record(int count) { manager->recordTransactions(transactions(count), portfolio, nullptr); }

  std::shared_ptr<QuoteProvider> provider;
  std::shared_ptr<PortfolioManager> manager;
  PortfolioPointer portfolio;
  std::vector<EquityPointer> equities;
};

/// A ledger of 100,000 rows, made once.
inline World& largeWorld() {
  static World world = [] {
    World made;
    made.record(100'000);
    return made;
  }();
  return world;
}

}  // namespace corvane
