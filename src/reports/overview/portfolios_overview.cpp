#include "reports/overview/portfolios_overview.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace corvane {
namespace {

using Overview = PortfoliosOverview;

const PortfolioSnapshot& newestBalances(const Portfolio& portfolio) {
  static const PortfolioSnapshot none;
  const auto& years = portfolio.snapshotsByYear;
  return years.empty() ? none : years.rbegin()->second;
}

std::optional<double> ratioOf(const std::optional<Decimal>& part,
                              const std::optional<Decimal>& whole) {
  return part && whole && *whole > 0 ? std::optional(part->doubleValue() / whole->doubleValue())
                                     : std::nullopt;
}

std::optional<Decimal> sumOfKnown(const std::optional<Decimal>& sum,
                                  const std::optional<Decimal>& amount) {
  return sum && amount ? std::optional(*sum + *amount) : std::nullopt;
}

/// Of all equities held the one with the newest price.
EquityPointer newestPriced(std::span<const PortfolioPointer> portfolios) {
  EquityPointer newest;
  for (const PortfolioPointer& portfolio : portfolios) {
    for (const auto& [equity, holding] : newestBalances(*portfolio).equitySnapshots) {
      const bool isPriced =
          !holding.sharesHeld.isZero() && equity->recentPrice && equity->recentDate;
      if (isPriced && (newest == nullptr || *newest->recentDate < *equity->recentDate)) {
        newest = equity;
      }
    }
  }
  return newest;
}

/// Adds up the portfolios, one after the other.
class OverviewSum {
 public:
  OverviewSum(std::span<const PortfolioPointer> portfolios, const Currency& currency,
              QuoteProvider& quotes, const UnpricedAssets& leftOut)
      : quotes_(quotes), leftOut_(leftOut), made_{.currency = currency} {
    made_.newest = newestPriced(portfolios);
    for (const PortfolioPointer& portfolio : portfolios) {
      add(portfolio);
    }
  }

  Overview take() {
    addTotals();
    takeHoldings();
    takeCurrencies();
    const auto bySymbol = [](const EquityPointer& equity) {
      return std::tuple<std::string_view, std::string_view>(equity->symbol, equity->id());
    };
    for (auto* equities : {&made_.ofEarlierSession, &made_.withoutCloseBefore}) {
      std::ranges::sort(*equities, {}, bySymbol);
    }
    return std::move(made_);
  }

 private:
  struct OfCurrency {
    Currency currency;
    std::optional<Decimal> amount = 0;
  };

  void add(const PortfolioPointer& portfolio) {
    Overview::Figures figures{.value = 0, .netDeposits = 0, .dayChange = 0};
    const PortfolioSnapshot& balances = newestBalances(*portfolio);
    for (const auto& [currency, cash] : balances.currencySnapshots) {
      if (!cash.netCashDeposited.isZero()) {
        figures.netDeposits =
            sumOfKnown(figures.netDeposits, converted(cash.netCashDeposited, currency));
      }
      if (!cash.cashOnHand.isZero()) {
        addCash(portfolio, currency, cash.cashOnHand, figures);
      }
    }
    int held = 0;
    int counted = 0;
    for (const auto& [equity, holding] : balances.equitySnapshots) {
      if (!holding.sharesHeld.isZero()) {
        ++held;
        counted += addEquity(portfolio, equity, holding, figures) ? 1 : 0;
      }
    }
    if (held > 0 && counted == 0) {
      figures.dayChange.reset();
    }
    hasHoldings_ |= held > 0;
    hasCounted_ |= counted > 0;
    made_.portfolios.push_back({portfolio, std::move(figures), std::nullopt});
  }

  void addCash(const PortfolioPointer& portfolio, const Currency& currency, const Decimal& cash,
               Overview::Figures& figures) {
    Overview::HoldingLine& line =
        cash_
            .try_emplace(std::string(currency.code),
                         Overview::HoldingLine{.equity = nullptr, .currency = currency})
            .first->second;
    line.held += cash;
    line.parts.push_back({portfolio, cash});
    addToCurrency(currency, cash);
    if (leftOut_.currencies.contains(currency)) {
      figures.isPartial = true;
      return;
    }
    figures.value = sumOfKnown(figures.value, converted(cash, currency));
  }

  /// Whether it counts for the change of the day.
  bool addEquity(const PortfolioPointer& portfolio, const EquityPointer& equity,
                 const PortfolioSnapshot::EquitySnapshot& holding, Overview::Figures& figures) {
    auto [place, isNew] = equities_.try_emplace(
        equity, Overview::HoldingLine{.equity = equity, .currency = equity->currency});
    Overview::HoldingLine& line = place->second;
    if (isNew) {
      line.price = equity->recentPrice;
      line.value = line.gain = 0;
      if (countsForTheDay(*equity)) {
        line.closeBefore = equity->previousClosePrice;
        line.change = 0;
      }
      noteWhyUnchanged(equity);
    }
    line.held += holding.sharesHeld;
    line.parts.push_back({portfolio, holding.sharesHeld});
    const bool isLeftOut =
        leftOut_.equities.contains(equity) || leftOut_.currencies.contains(equity->currency);
    std::optional<Decimal> value;
    if (equity->recentPrice) {
      const Decimal amount = holding.sharesHeld * *equity->recentPrice;
      addToCurrency(equity->currency, amount);
      value = isLeftOut ? rated(amount, equity->currency) : converted(amount, equity->currency);
    } else {
      addToCurrency(equity->currency, std::nullopt);
      if (!isLeftOut) {
        made_.missing.equities.insert(equity);
      }
    }
    const auto cost = rated(holding.costBase, portfolio->primaryCurrency());
    line.value = sumOfKnown(line.value, value);
    line.gain = sumOfKnown(line.gain, value && cost ? std::optional(*value - *cost) : std::nullopt);
    if (isLeftOut) {
      figures.isPartial = true;
      return false;
    }
    figures.value = sumOfKnown(figures.value, value);
    return addChange(holding.sharesHeld, line, figures);
  }

  bool addChange(const Decimal& shares, Overview::HoldingLine& line, Overview::Figures& figures) {
    const auto change = line.closeBefore
                            ? rated(shares * (*line.price - *line.closeBefore), line.currency)
                            : std::nullopt;
    line.change = sumOfKnown(line.change, change);
    if (change) {
      figures.dayChange = figures.dayChange.value_or(0) + *change;
    }
    return change.has_value();
  }

  [[nodiscard]] bool isOfSession(const EquityInfo& equity) const {
    return made_.newest != nullptr && equity.recentDate &&
           made_.newest->recentDate->timeIntervalSince(*equity.recentDate) <
               Overview::sessionSeconds;
  }

  [[nodiscard]] bool countsForTheDay(const EquityInfo& equity) const {
    return equity.recentPrice && equity.previousClosePrice && isOfSession(equity);
  }

  void noteWhyUnchanged(const EquityPointer& equity) {
    if (!equity->recentPrice) {
      return;
    }
    if (!isOfSession(*equity)) {
      made_.ofEarlierSession.push_back(equity);
    } else if (!equity->previousClosePrice) {
      made_.withoutCloseBefore.push_back(equity);
    }
  }

  /// `amount` in the currency of the overview; notes a rate that it lacks.
  std::optional<Decimal> converted(const Decimal& amount, const Currency& currency) {
    auto value = rated(amount, currency);
    if (!value && !leftOut_.currencies.contains(currency)) {
      made_.missing.currencies.insert(currency);
    }
    return value;
  }

  std::optional<Decimal> rated(const Decimal& amount, const Currency& currency) {
    auto [place, isNew] = rates_.try_emplace(currency, std::nullopt);
    if (isNew) {
      place->second = currency == made_.currency
                          ? std::optional<Decimal>(1)
                          : quotes_.exchangeRateEquity(currency, made_.currency)->recentPrice;
    }
    return place->second ? std::optional(amount * *place->second) : std::nullopt;
  }

  void addToCurrency(const Currency& currency, const std::optional<Decimal>& amount) {
    // Of an equity that has never been refreshed the currency is not known yet.
    if (currency != Currency::noCurrency()) {
      OfCurrency& sum =
          amounts_.try_emplace(std::string(currency.code), OfCurrency{currency}).first->second;
      sum.amount = sumOfKnown(sum.amount, amount);
    }
  }

  void addTotals() {
    Overview::Figures& total = made_.total;
    total.value = total.netDeposits = 0;
    if (!hasHoldings_ || hasCounted_) {
      total.dayChange = 0;
    }
    for (const auto& [portfolio, figures, share] : made_.portfolios) {
      total.value = sumOfKnown(total.value, figures.value);
      total.netDeposits = sumOfKnown(total.netDeposits, figures.netDeposits);
      total.isPartial |= figures.isPartial;
      if (figures.dayChange && total.dayChange) {
        *total.dayChange += *figures.dayChange;
      }
    }
    for (Overview::PortfolioLine& line : made_.portfolios) {
      line.share = ratioOf(line.figures.value, total.value);
    }
  }

  [[nodiscard]] bool isLeftOut(const Overview::HoldingLine& line) const {
    return leftOut_.currencies.contains(line.currency) ||
           (line.equity != nullptr && leftOut_.equities.contains(line.equity));
  }

  void takeHoldings() {
    for (auto& [equity, line] : equities_) {
      made_.holdings.push_back(std::move(line));
    }
    for (auto& [code, line] : cash_) {
      line.value = rated(line.held, line.currency);
      made_.holdings.push_back(std::move(line));
    }
    for (Overview::HoldingLine& line : made_.holdings) {
      line.share = isLeftOut(line) ? std::nullopt : ratioOf(line.value, made_.total.value);
    }
    std::ranges::sort(made_.holdings, [](const auto& left, const auto& right) {
      const auto key = [](const Overview::HoldingLine& line) {
        return std::tuple<bool, bool, Decimal, std::string_view, std::string_view>(
            line.equity == nullptr, !line.value, -line.value.value_or(0),
            line.equity == nullptr ? std::string_view(line.currency.code) : line.equity->symbol,
            line.equity == nullptr ? std::string_view() : line.equity->id());
      };
      return key(left) < key(right);
    });
  }

  void takeCurrencies() {
    for (auto& [code, sum] : amounts_) {
      Overview::CurrencyLine line{
          .currency = sum.currency,
          .amount = sum.amount,
          .value = sum.amount ? rated(*sum.amount, sum.currency) : std::nullopt,
          .share = std::nullopt};
      if (!leftOut_.currencies.contains(sum.currency)) {
        line.share = ratioOf(line.value, made_.total.value);
      }
      made_.currencies.push_back(std::move(line));
    }
    std::ranges::stable_sort(made_.currencies, [](const auto& left, const auto& right) {
      return std::pair(!left.value, -left.value.value_or(0)) <
             std::pair(!right.value, -right.value.value_or(0));
    });
  }

  QuoteProvider& quotes_;
  const UnpricedAssets& leftOut_;
  Overview made_;
  EquityMap<Overview::HoldingLine> equities_;
  std::map<std::string, Overview::HoldingLine> cash_;
  std::map<std::string, OfCurrency> amounts_;
  std::unordered_map<Currency, std::optional<Decimal>> rates_;
  bool hasHoldings_ = false;
  bool hasCounted_ = false;
};

}  // namespace

void UnpricedAssets::add(const UnpricedAssets& others) {
  equities.insert(others.equities.begin(), others.equities.end());
  currencies.insert(others.currencies.begin(), others.currencies.end());
}

std::vector<std::string> UnpricedAssets::names() const {
  std::vector<std::string> names;
  for (const EquityPointer& equity : equities) {
    names.push_back(equity->symbol);
  }
  for (const Currency& currency : currencies) {
    names.emplace_back(currency.code);
  }
  std::ranges::sort(names);
  return names;
}

std::optional<Decimal> PortfoliosOverview::Figures::gain() const {
  return !isPartial && value && netDeposits ? std::optional(*value - *netDeposits) : std::nullopt;
}

std::optional<double> PortfoliosOverview::Figures::dayRate() const {
  return value && dayChange ? ratioOf(dayChange, *value - *dayChange) : std::nullopt;
}

std::optional<double> PortfoliosOverview::HoldingLine::dayRate() const {
  return change ? ratioOf(*price - *closeBefore, closeBefore) : std::nullopt;
}

PortfoliosOverview portfoliosOverview(std::span<const PortfolioPointer> portfolios,
                                      const Currency& currency, QuoteProvider& quotes,
                                      const UnpricedAssets& leftOut) {
  return OverviewSum(portfolios, currency, quotes, leftOut).take();
}

EquitySet ratesOfOverview(std::span<const PortfolioPointer> portfolios, const Currency& currency,
                          QuoteProvider& quotes) {
  EquitySet rates;
  const auto add = [&](const Currency& from) {
    if (from != currency && from != Currency::noCurrency()) {
      rates.insert(quotes.exchangeRateEquity(from, currency));
    }
  };
  for (const PortfolioPointer& portfolio : portfolios) {
    add(portfolio->primaryCurrency());
    const PortfolioSnapshot& balances = newestBalances(*portfolio);
    for (const auto& [from, cash] : balances.currencySnapshots) {
      add(from);
    }
    for (const auto& [equity, holding] : balances.equitySnapshots) {
      if (!holding.sharesHeld.isZero()) {
        add(equity->currency);
      }
    }
  }
  return rates;
}

}  // namespace corvane
