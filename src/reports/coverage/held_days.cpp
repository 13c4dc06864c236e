#include "reports/coverage/held_days.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// The spans in which one balance is something other than nothing.
class BalanceSpans {
 public:
  /// The balance is `isSomething` from `day` on. Days ascend.
  void change(const YearMonthDay& day, bool isSomething) {
    if (isSomething && !since_) {
      since_ = day;
    } else if (!isSomething) {
      // Also what comes and goes on one day is worth something in between.
      spans_.push_back({since_.value_or(day), day});
      since_.reset();
    }
  }

  [[nodiscard]] std::vector<DaySpan> upTo(const YearMonthDay& today) && {
    if (since_) {
      spans_.push_back({*since_, today});
    }
    return std::move(spans_);
  }

 private:
  std::vector<DaySpan> spans_;
  std::optional<YearMonthDay> since_;
};

void addSpans(std::vector<DaySpan>& spans, const std::vector<DaySpan>& more) {
  spans.insert(spans.end(), more.begin(), more.end());
}

/// Puts together what overlaps or follows on.
void mergeSpans(std::vector<DaySpan>& spans) {
  std::ranges::sort(spans);
  std::vector<DaySpan> merged;
  for (const DaySpan& span : spans) {
    if (!merged.empty() && span.first <= daysAfter(merged.back().last, 1)) {
      merged.back().last = std::max(merged.back().last, span.last);
    } else {
      merged.push_back(span);
    }
  }
  spans = std::move(merged);
}

void mergeAllSpans(HeldDays& held) {
  for (auto* spansOf : {&held.equities, &held.rates}) {
    for (auto& [equity, spans] : *spansOf) {
      mergeSpans(spans);
    }
  }
}

void addPortfolio(HeldDays& held, Portfolio& portfolio, const Calendar& calendar,
                  const YearMonthDay& today, QuoteProvider& quotes) {
  EquityMap<BalanceSpans> shares;
  std::unordered_map<Currency, BalanceSpans> cash;
  for (const TransactionPointer& row : portfolio.transactions()) {
    const YearMonthDay day = YearMonthDay::of(row->settlementDate(), calendar);
    if (today < day) {
      break;
    }
    if (const EquityPointer* equity = row->basic.equity()) {
      shares[*equity].change(day, !row->sharesNet.value_or(0).isZero());
    }
    const Currency* currency = row->basic.currency();
    if (currency != nullptr && portfolio.usesCashAccounts) {
      cash[*currency].change(day, !row->cashNet.value_or(0).isZero());
    }
  }
  const Currency& primary = portfolio.primaryCurrency();
  const auto addRate = [&](const Currency& currency, const std::vector<DaySpan>& spans) {
    if (currency != primary && currency != Currency::noCurrency()) {
      addSpans(held.rates[quotes.exchangeRateEquity(currency, primary)], spans);
    }
  };
  for (auto& [equity, balance] : shares) {
    const auto spans = std::move(balance).upTo(today);
    addSpans(held.equities[equity], spans);
    addRate(equity->currency, spans);
  }
  for (auto& [currency, balance] : cash) {
    addRate(currency, std::move(balance).upTo(today));
  }
}

}  // namespace

HeldDays heldDays(const std::vector<PortfolioPointer>& portfolios, const Calendar& calendar,
                  const YearMonthDay& today, QuoteProvider& quotes) {
  HeldDays held;
  for (const PortfolioPointer& portfolio : portfolios) {
    addPortfolio(held, *portfolio, calendar, today, quotes);
  }
  mergeAllSpans(held);
  return held;
}

void addHeldDays(HeldDays& days, const HeldDays& more) {
  for (const auto& [equity, spans] : more.equities) {
    addSpans(days.equities[equity], spans);
  }
  for (const auto& [pair, spans] : more.rates) {
    addSpans(days.rates[pair], spans);
  }
  mergeAllSpans(days);
}

}  // namespace corvane
