#include "reports/trail/heading_trails.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ledger/manager/portfolio_manager.h"
#include "ledger/transaction/transaction_effect.h"
#include "reports/series/report_days.h"
#include "reports/trail/row_source.h"

namespace corvane {
namespace {

/// So many rows of deposits in one currency have a line each; those before are one leaf.
constexpr std::size_t mostDepositsListed = 1000;

std::shared_ptr<PortfolioManager> managerOfHeading(const Portfolio& portfolio) {
  auto manager = portfolio.manager.lock();
  if (manager == nullptr) {
    throw PortfolioManagerError(PortfolioManagerError::InvalidPortfolio{
        "Portfolio is unmanaged or has the wrong manager!"});
  }
  return manager;
}

std::string twoDigits(int number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

/// Who told the price of `equity`, and when: "Yahoo, 16:00 America/Toronto".
std::string quoteText(const EquityInfo& equity) {
  std::string text;
  if (const auto provider = equity.quoteProvider.lock()) {
    text = ", from " + provider->providerName();
  }
  if (equity.recentDate) {
    const DateComponents time = equity.calendar.dateComponents(
        {CalendarUnit::hour, CalendarUnit::minute}, *equity.recentDate);
    text += ", " + twoDigits(time.valueOr(CalendarUnit::hour, 0)) + ":" +
            twoDigits(time.valueOr(CalendarUnit::minute, 0)) + " " +
            std::string(equity.calendar.timeZone().identifier());
  }
  if (equity.refreshProblem) {
    text += ", kept from before: " + *equity.refreshProblem;
  }
  return text;
}

}  // namespace

TrailNode latestQuote(std::string label, std::string unit, const std::string& source,
                      const EquityInfo& equity) {
  TrailNode quote{.label = std::move(label),
                  .value = equity.recentPrice.value_or(Decimal::nan()),
                  .unit = std::move(unit),
                  .source = source + quoteText(equity)};
  if (equity.recentPrice && equity.recentDate) {
    quote.day = YearMonthDay::of(*equity.recentDate, equity.calendar);
  }
  if (!equity.recentPrice) {
    quote.note = "⚠️ no " + source;
  }
  return quote;
}

namespace {

/// What a heading is made of, and what it lacks.
class HeadingTrail {
 public:
  HeadingTrail(Portfolio& portfolio, const std::optional<Currency>& currency)
      : portfolio_(portfolio),
        manager_(managerOfHeading(portfolio)),
        shown_(currency.value_or(portfolio.primaryCurrency())),
        unit_(shown_.code) {}

  TrailNode value() {
    const PortfolioSnapshot state = portfolio_.snapshotsByYear.empty()
                                        ? PortfolioSnapshot()
                                        : portfolio_.snapshotsByYear.rbegin()->second;
    std::map<std::string, TrailNode> parts;
    for (const auto& [currency, cash] : state.currencySnapshots) {
      const std::string code(currency.code);
      parts.emplace(
          "1" + code,
          atRecentRate(
              "Cash in " + code,
              {{.label = "Cash", .value = cash.cashOnHand, .unit = code, .source = ledgerText()}},
              currency));
    }
    for (const auto& [equity, holding] : state.equitySnapshots) {
      if (!holding.sharesHeld.isZero()) {
        parts.emplace("2" + equity->symbol + equity->id(), worth(*equity, holding));
      }
    }
    if (!missing_.empty()) {
      for (const auto& [equity, holding] : state.equitySnapshots) {
        if (holding.sharesHeld.isZero() && !equity->recentPrice) {
          parts.emplace("3" + equity->symbol + equity->id(), soldOut(*equity, holding));
        }
      }
    }
    std::vector<TrailNode> ordered;
    for (auto& [key, part] : parts) {
      ordered.push_back(std::move(part));
    }
    return finished(sumOf("Value", unit_, std::move(ordered)));
  }

  TrailNode deposits(const MarketHistory* ratesOfDays) {
    std::map<std::string, Deposits> byCurrency;
    const auto& rows = portfolio_.transactions();
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const TransactionEffect effect = transactionEffect(rows[i]->basic.kind);
      const Decimal deposited = effect.deposited(portfolio_.usesCashAccounts);
      if (!deposited.isZero()) {
        byCurrency.try_emplace(std::string(effect.currency->code), Deposits{*effect.currency, {}})
            .first->second.rows.push_back(i);
      }
    }
    std::vector<TrailNode> parts;
    std::optional<Decimal> atRatesOfDays = 0;
    for (const auto& [code, deposits] : byCurrency) {
      TrailNode sum = depositsIn(deposits, ratesOfDays);
      const std::optional<Decimal> beside = sum.atRatesOfDays;
      atRatesOfDays = added(atRatesOfDays, beside);
      TrailNode part = atRecentRate("Net deposits in " + code, {std::move(sum)}, deposits.currency);
      part.atRatesOfDays = beside;
      parts.push_back(std::move(part));
    }
    TrailNode all = finished(sumOf("Net deposits", unit_, std::move(parts)));
    all.atRatesOfDays = atRatesOfDays;
    return all;
  }

 private:
  struct Deposits {
    Currency currency;
    std::vector<std::size_t> rows;
  };

  [[nodiscard]] std::string ledgerText() const { return "the ledger of “" + portfolio_.name + "”"; }

  static std::optional<Decimal> added(const std::optional<Decimal>& sum,
                                      const std::optional<Decimal>& amount) {
    return sum && amount ? std::optional(*sum + *amount) : std::nullopt;
  }

  /// The product of `factors`, which are of `currency`, in the primary currency.
  TrailNode atRecentRate(std::string label, std::vector<TrailNode> factors,
                         const Currency& currency) {
    if (currency != shown_) {
      const std::string code(currency.code);
      factors.push_back(
          latestQuote("Rate of " + code, "", "latest rate of " + code + " in " + unit_,
                      *manager_->quoteProvider->exchangeRateEquity(currency, shown_)));
      if (!factors.back().isKnown()) {
        missing_.push_back("rate of " + code);
      }
    }
    return productOf(std::move(label), unit_, std::move(factors));
  }

  TrailNode worth(const EquityInfo& equity, const PortfolioSnapshot::EquitySnapshot& holding) {
    TrailNode price = latestQuote("Price", std::string(equity.currency.code),
                                  "latest price of " + equity.symbol, equity);
    if (!price.isKnown()) {
      missing_.push_back("price of " + equity.symbol);
    }
    return atRecentRate(equity.symbol,
                        {{.label = "Shares", .value = holding.sharesHeld, .source = ledgerText()},
                         std::move(price)},
                        equity.currency);
  }

  [[nodiscard]] TrailNode soldOut(const EquityInfo& equity,
                                  const PortfolioSnapshot::EquitySnapshot& holding) const {
    return {.label = equity.symbol + ", 0 shares",
            .value = 0,
            .unit = unit_,
            .source = ledgerText(),
            .note = "no price is known, and none is needed: all is sold, with a realised gain of " +
                    holding.cumulativeCapitalGain.description() + " " +
                    std::string(portfolio_.primaryCurrency().code)};
  }

  /// Names what is missing on the root.
  TrailNode finished(TrailNode root) {
    std::ranges::sort(missing_);
    missing_.erase(std::ranges::unique(missing_).begin(), missing_.end());
    for (const std::string& what : missing_) {
      root.note += (root.note.empty() ? "indeterminate: no " : ", no ") + what;
    }
    return root;
  }

  /// What a deposit is in the primary currency, and how that came about.
  struct InPrimary {
    Decimal amount;
    std::string note;
  };

  /// `deposited` at the rate of its day, or at that of its row where the market knows none.
  std::optional<InPrimary> atRateOfDay(const Decimal& deposited, const Currency& currency,
                                       const YearMonthDay& day, const TransactionEffect& effect,
                                       const MarketHistory* history) const {
    if (shown_ != portfolio_.primaryCurrency()) {
      return std::nullopt;
    }
    if (currency == shown_) {
      return InPrimary{deposited, ""};
    }
    if (history != nullptr) {
      const auto line = history->rates.find({currency, shown_});
      const auto* close = line == history->rates.end() ? nullptr : line->second.lastUpTo(day);
      if (close != nullptr) {
        return InPrimary{deposited * close->price,
                         "at " + close->price.description() + " on its day"};
      }
    }
    if (effect.equivalentAmount && !effect.amount.isZero()) {
      // The product first: a quotient such as 80 / 60 has no end.
      return InPrimary{deposited * *effect.equivalentAmount / effect.amount,
                       "at the rate of its row"};
    }
    return std::nullopt;
  }

  TrailNode depositsIn(const Deposits& deposits, const MarketHistory* ratesOfDays) {
    const std::string code(deposits.currency.code);
    const auto& rows = portfolio_.transactions();
    const std::size_t count = deposits.rows.size();
    const std::size_t first = count > mostDepositsListed ? count - mostDepositsListed : 0;
    std::vector<TrailNode> leaves;
    std::optional<Decimal> sum = 0;
    Decimal older;
    for (std::size_t k = 0; k < count; ++k) {
      const std::size_t i = deposits.rows[k];
      const TransactionEffect effect = transactionEffect(rows[i]->basic.kind);
      const Decimal amount = effect.deposited(portfolio_.usesCashAccounts);
      const auto day = YearMonthDay::of(rows[i]->settlementDate(), manager_->calendar);
      const auto beside = atRateOfDay(amount, deposits.currency, day, effect, ratesOfDays);
      sum = added(sum, beside ? std::optional(beside->amount) : std::nullopt);
      if (k < first) {
        older += amount;
        if (k + 1 == first) {
          leaves.push_back({.label = std::to_string(first) + " rows up to " + isoText(day),
                            .value = older,
                            .unit = code,
                            .day = day,
                            .source = ledgerText(),
                            .atRatesOfDays = sum});
        }
        continue;
      }
      TrailNode leaf = fromRow({.label = amount < 0 ? "Taken out" : "Brought in",
                                .value = amount,
                                .unit = code,
                                .day = day},
                               portfolio_, i);
      if (beside) {
        leaf.atRatesOfDays = beside->amount;
        leaf.note = beside->note;
      }
      leaves.push_back(std::move(leaf));
    }
    TrailNode made = sumOf("In " + code, code, std::move(leaves));
    made.atRatesOfDays = sum;
    return made;
  }

  Portfolio& portfolio_;
  const std::shared_ptr<PortfolioManager> manager_;
  const Currency shown_;  ///< what the figures are in
  const std::string unit_;
  std::vector<std::string> missing_;
};

}  // namespace

TrailNode valueTrail(Portfolio& portfolio, const std::optional<Currency>& currency) {
  return HeadingTrail(portfolio, currency).value();
}

TrailNode depositsTrail(Portfolio& portfolio, const MarketHistory* ratesOfDays,
                        const std::optional<Currency>& currency) {
  return HeadingTrail(portfolio, currency).deposits(ratesOfDays);
}

MarketNeeds depositPairs(Portfolio& portfolio) {
  MarketNeeds needs;
  for (const TransactionPointer& row : portfolio.transactions()) {
    const TransactionEffect effect = transactionEffect(row->basic.kind);
    if (effect.currency != nullptr && *effect.currency != portfolio.primaryCurrency() &&
        !effect.deposited(portfolio.usesCashAccounts).isZero()) {
      needs.pairs.insert({*effect.currency, portfolio.primaryCurrency()});
    }
  }
  return needs;
}

}  // namespace corvane
