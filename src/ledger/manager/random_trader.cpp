#include "ledger/manager/random_trader.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <random>

#include "ledger/manager/portfolio_manager.h"

namespace corvane {
namespace {

constexpr std::size_t maximumEquities = 5;
constexpr int yearsCovered = 3;
constexpr int stepsTaken = 100;
constexpr int daysToSettle = 2;

// Whole numbers are drawn as 64-bit integers. Far beyond any real amount of cash they are cut off,
// so that no difference of two of them overflows.
constexpr std::int64_t largestWhole = 1'000'000'000'000'000;

std::int64_t wholePart(const Decimal& value) {
  return std::clamp(value.integerValue(), -largestWhole, largestWhole);
}

const Decimal& priceOf(const EquityInfo& equity) {
  static const Decimal unknownPrice = 1;
  return equity.recentPrice ? *equity.recentPrice : unknownPrice;
}

}  // namespace

/// One population of a portfolio.
class RandomTrader::Run {
 public:
  Run(const RandomNumber& randomNumber, const std::vector<EquityPointer>& equities,
      const PortfolioPointer& portfolio, std::shared_ptr<PortfolioManager> manager, Date start)
      : randomNumber_(randomNumber),
        equities_(equities),
        portfolio_(portfolio),
        manager_(std::move(manager)),
        current_(start) {}

  void depositForAll(int count) {
    std::map<std::string, std::vector<EquityPointer>> equitiesByCode;
    for (const auto& equity : equities_) {
      equitiesByCode[std::string(equity->currency.code)].push_back(equity);
    }
    std::vector<BasicTransaction> deposits;
    for (const auto& [code, equities] : equitiesByCode) {
      const auto known = Currency::byCode().find(code);
      if (known == Currency::byCode().end()) {
        continue;
      }
      const Currency& currency = known->second;
      Decimal sum;
      for (const auto& equity : equities) {
        sum += priceOf(*equity);
      }
      const Decimal average =
          roundedToMinorUnits(sum / static_cast<long>(equities.size()), currency);
      const CurrencyAmount amount{currency, average * (Decimal(count) * 100)};
      deposits.push_back({BasicTransaction::Transfer{amount}, current_, current_, std::nullopt});
    }
    manager_->recordTransactions(deposits, portfolio_, nullptr);
  }

  void takeStep(const Calendar& calendar, int days) {
    const EquityPointer& equity = equities_[randomNumber_(equities_.size())];
    const auto& snapshots = portfolio_->snapshotsByYear;
    const PortfolioSnapshot snapshot =
        snapshots.empty() ? PortfolioSnapshot() : snapshots.rbegin()->second;
    const Decimal cash = snapshot.currencySnapshots.get(equity->currency).cashOnHand;
    const Decimal held = snapshot.equitySnapshots.get(equity).sharesHeld;
    current_ = calendar.dateByAdding(CalendarUnit::day, days, current_).value_or(current_);

    auto transaction =
        randomNumber_(101) < 21 ? transfer(*equity, cash) : trade(equity, cash, held);
    if (transaction) {
      transaction->note = "This transaction was randomly generated.";
      manager_->recordTransactions({std::move(*transaction)}, portfolio_, nullptr);
    }
  }

 private:
  /// A uniform random integer from `low` to `high`; none where there is no such number.
  std::optional<std::int64_t> pick(std::int64_t low, std::int64_t high) const {
    if (low > high) {
      return std::nullopt;
    }
    const auto choices = static_cast<std::uint64_t>(high - low) + 1;
    return low + static_cast<std::int64_t>(randomNumber_(choices));
  }

  std::optional<BasicTransaction> transfer(const EquityInfo& equity, const Decimal& cash) const {
    const auto amount = pick(-wholePart(cash), wholePart(100 * priceOf(equity)));
    if (!amount) {
      return std::nullopt;
    }
    const CurrencyAmount hundreds{equity.currency, *amount / 100 * 100};
    return BasicTransaction{BasicTransaction::Transfer{hundreds}, current_, current_, {}};
  }

  std::optional<BasicTransaction> trade(const EquityPointer& equity, const Decimal& cash,
                                        const Decimal& held) const {
    const Currency& currency = equity->currency;
    const double unit = std::ldexp(static_cast<double>(randomNumber_((1ULL << 53) + 1)), -53);
    // The sum of the doubles 0.4 and 0.8 is a little more than 1.2.
    const double factor = std::min(unit * 0.4 + 0.8, 1.2);
    const Decimal fill =
        roundedToMinorUnits(priceOf(*equity) * Decimal::fromDouble(factor), currency);
    if (fill <= 0) {
      return std::nullopt;
    }
    const auto affordable = wholePart(Decimal::fromDouble((cash / fill).doubleValue()));
    const auto shares = pick(-(wholePart(held) / 2), affordable / 2);
    if (!shares) {
      return std::nullopt;
    }
    const Decimal cost = roundedToMinorUnits(fill * *shares, currency);
    const Decimal rate =
        currency == portfolio_->primaryCurrency() ? Decimal(1) : Decimal::fromDouble(1.25);
    const Decimal equivalent = roundedToMinorUnits(cost * rate, portfolio_->primaryCurrency());
    const Date settlementDate =
        equity->calendar.dateByAdding(CalendarUnit::day, daysToSettle, current_).value_or(current_);
    return BasicTransaction{BasicTransaction::Trade{equity, {currency, cost}, equivalent, *shares},
                            current_,
                            settlementDate,
                            {}};
  }

  const RandomNumber& randomNumber_;
  const std::vector<EquityPointer>& equities_;
  const PortfolioPointer& portfolio_;
  std::shared_ptr<PortfolioManager> manager_;
  Date current_;
};

RandomTrader::RandomTrader()
    : randomNumber_([device = std::make_shared<std::random_device>()](std::uint64_t n) {
        return std::uniform_int_distribution<std::uint64_t>(0, n - 1)(*device);
      }) {}

void RandomTrader::populateRandomly(const PortfolioPointer& portfolio,
                                    const std::vector<EquityPointer>& watchlist) const {
  const auto manager = portfolio->manager.lock();
  const auto provider = manager == nullptr ? nullptr : manager->quoteProvider;
  std::vector<EquityPointer> candidates;
  std::ranges::copy_if(watchlist, std::back_inserter(candidates), [&](const auto& equity) {
    return equity->quoteProvider.lock() == provider;
  });
  if (candidates.empty()) {
    return;
  }

  const Calendar& calendar = candidates.front()->calendar;
  DateComponents noon = calendar.dateComponents(
      {CalendarUnit::year, CalendarUnit::month, CalendarUnit::day}, Date::now());
  noon.set(CalendarUnit::hour, 12);
  const auto end = calendar.date(noon);
  noon.set(CalendarUnit::year, noon.valueOr(CalendarUnit::year, 0) - yearsCovered);
  const auto start = calendar.date(noon);
  if (!start || !end) {
    return;
  }

  while (candidates.size() > maximumEquities) {
    candidates.erase(candidates.begin() +
                     static_cast<std::ptrdiff_t>(randomNumber_(candidates.size())));
  }
  populate(candidates, portfolio, stepsTaken, {*start, *end});
}

void RandomTrader::populate(const std::vector<EquityPointer>& equities,
                            const PortfolioPointer& portfolio, int count,
                            const DateRange& dateRange) const {
  assert(!equities.empty() && count >= 1);
  const Calendar calendar = equities[randomNumber_(equities.size())]->calendar;
  const auto manager = portfolio->manager.lock();
  const auto days =
      calendar.dateComponents({CalendarUnit::day}, dateRange.lower(), dateRange.upper()).day();
  if (manager == nullptr || !days) {
    return;
  }
  Run run(randomNumber_, equities, portfolio, manager, dateRange.lower());
  run.depositForAll(count);
  for (int step = 0; step < count; ++step) {
    run.takeStep(calendar, *days / count);
  }
}

}  // namespace corvane
