#include "samplemarket/workspace/invented_investor.h"

#include <algorithm>
#include <cassert>

#include "core/money/currency_amount.h"
#include "platform/time/civil_day.h"

namespace corvane::samplemarket {
namespace {

constexpr std::int64_t secondsADay = 86400;
/// Before and after a split nothing is traded, so that no trade is on its way across it.
constexpr std::int64_t quietDays = 7;
constexpr int commission = 5;

/// Noon in Greenwich, which is the same day wherever the exchanges are.
Date noonOf(std::int64_t day) {
  constexpr std::int64_t secondsToNoon = secondsADay / 2;
  return Date::since1970(static_cast<double>(day * secondsADay + secondsToNoon));
}

/// The first session after the last day that anybody lives through.
std::size_t endSession(const Instrument& instrument) {
  return TradingCalendar::of(instrument.exchange)
      .firstOpeningFrom(dayCount(2027, 1, 1) * secondsADay);
}

Decimal ticks(std::int64_t count, int decimals) {
  return Decimal::fromParts(Sign::plus, -decimals, Decimal(count));
}

Decimal whole(const Decimal& value) {
  return rounded(value, 0, RoundingMode::down);
}

}  // namespace

InventedInvestor::InventedInvestor(std::shared_ptr<QuoteProvider> provider,
                                   Currency primaryCurrency, std::int64_t firstDay)
    : provider_(std::move(provider)), primaryCurrency_(primaryCurrency), today_(firstDay) {}

void InventedInvestor::goOnTo(std::int64_t day) {
  for (; today_ < day; ++today_) {
    passDay();
  }
}

void InventedInvestor::passDay() {
  for (auto& [symbol, holding] : holdings_) {
    std::erase_if(holding.unsettled, [&](const auto& trade) {
      if (trade.first > today_) {
        return false;
      }
      holding.shares += trade.second;
      return true;
    });
    passEvents(symbol, holding);
  }
}

void InventedInvestor::passEvents(const std::string& symbol, Holding& holding) {
  const DailyHistory& days = history(symbol);
  const auto isToday = [&](const auto& event) {
    return days.sessions()[event.session].day == today_;
  };
  for (const Split& split : days.splits()) {
    if (isToday(split) && holding.shares > Decimal(0)) {
      const Decimal before = holding.shares;
      // What is less than a share is not given out.
      holding.shares =
          whole(before * Decimal(split.ratio.numerator) / Decimal(split.ratio.denominator));
      record(BasicTransaction::Split{equity(symbol), before, holding.shares}, today_);
    }
  }
  for (const Dividend& dividend : days.dividends()) {
    const Instrument& instrument = days.instrument();
    const Currency currency = equity(symbol)->currency;
    const Decimal amount = roundedToMinorUnits(
        holding.shares * ticks(dividend.amount, instrument.decimals + 2), currency);
    if (isToday(dividend) && amount > Decimal(0)) {
      const auto income = incomes_.find(symbol);
      record(BasicTransaction::Yield{income == incomes_.end() ? Income::dividend : income->second,
                                     equity(symbol),
                                     holding.shares,
                                     {currency, amount},
                                     inPrimaryCurrency(amount, currency)},
             today_);
    }
  }
}

void InventedInvestor::deposit(const std::string& currency, int amount, const std::string& note) {
  record(BasicTransaction::Transfer{{Currency::byCode().at(currency), Decimal(amount)}}, today_,
         note);
}

void InventedInvestor::adjustCash(const std::string& currency, const std::string& amount,
                                  const std::string& note) {
  record(BasicTransaction::CashAdjustment{{Currency::byCode().at(currency),
                                           Decimal::fromWholeString(amount).value()}},
         today_, note);
}

void InventedInvestor::buy(const std::string& symbol, int budget) {
  if (!isSplitNear(symbol)) {
    trade(symbol, whole(Decimal(budget - commission) / price(symbol)));
  }
}

void InventedInvestor::sell(const std::string& symbol, int percent) {
  if (!isSplitNear(symbol)) {
    trade(symbol, -whole(holdings_[symbol].shares * Decimal(percent) / Decimal(100)));
  }
}

void InventedInvestor::trade(const std::string& symbol, const Decimal& shares) {
  if (shares == Decimal(0)) {
    return;
  }
  const EquityPointer what = equity(symbol);
  const Decimal cash =
      roundedToMinorUnits(shares * price(symbol) + Decimal(commission), what->currency);
  record(
      BasicTransaction::Trade{
          what, {what->currency, cash}, inPrimaryCurrency(cash, what->currency), shares},
      today_ + 2);
  holdings_[symbol].unsettled.emplace_back(today_ + 2, shares);
}

void InventedInvestor::journal(const std::string& symbol, int shares, const std::string& note) {
  const EquityPointer what = equity(symbol);
  const Decimal worth = roundedToMinorUnits(
      inPrimaryCurrency(Decimal(shares) * price(symbol), what->currency), primaryCurrency_);
  record(BasicTransaction::JournaledShares{what, Decimal(shares),
                                           shares > 0 ? std::optional(worth) : std::nullopt},
         today_, note);
  holdings_[symbol].shares += Decimal(shares);
}

std::vector<BasicTransaction> InventedInvestor::ledger() const {
  std::vector<BasicTransaction> sorted = ledger_;
  std::ranges::stable_sort(sorted, std::less<>(), &BasicTransaction::settlementDate);
  return sorted;
}

void InventedInvestor::record(BasicTransaction::Kind kind, std::int64_t settlementDay,
                              std::string note) {
  ledger_.push_back({std::move(kind), noonOf(today_), noonOf(settlementDay),
                     note.empty() ? std::nullopt : std::optional(std::move(note))});
}

EquityPointer InventedInvestor::equity(const std::string& symbol) {
  EquityPointer& known = equities_[symbol];
  if (known == nullptr) {
    known = provider_->equityWithId(symbol);
    known->currency = Currency::byCode().at(history(symbol).instrument().currency);
  }
  return known;
}

const DailyHistory& InventedInvestor::history(const std::string& symbol) {
  const auto found = histories_.find(symbol);
  if (found != histories_.end()) {
    return found->second;
  }
  const auto instrument = instrumentNamed(symbol);
  assert(instrument);
  return histories_
      .try_emplace(symbol, *instrument, std::span<const Split>(), endSession(*instrument))
      .first->second;
}

Decimal InventedInvestor::price(const std::string& symbol) {
  const DailyHistory& days = history(symbol);
  const auto& sessions = days.sessions();
  const auto after = std::ranges::upper_bound(sessions, today_, std::less<>(), &Session::day);
  assert(after != sessions.begin());
  const auto session = static_cast<std::size_t>(after - sessions.begin()) - 1;
  return ticks(days.day(session).close, days.instrument().decimals);
}

Decimal InventedInvestor::inPrimaryCurrency(const Decimal& amount, const Currency& currency) {
  if (currency == primaryCurrency_) {
    return amount;
  }
  const Decimal rate =
      price(std::string(currency.code) + std::string(primaryCurrency_.code) + "=X");
  return roundedToMinorUnits(amount * rate, primaryCurrency_);
}

bool InventedInvestor::isSplitNear(const std::string& symbol) {
  const DailyHistory& days = history(symbol);
  return std::ranges::any_of(days.splits(), [&](const Split& split) {
    return std::abs(days.sessions()[split.session].day - today_) <= quietDays;
  });
}

}  // namespace corvane::samplemarket
