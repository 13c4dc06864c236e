#include "reports/income/expected_income.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "core/market/frozen_equity.h"
#include "core/market/price_adjuster.h"
#include "platform/async/dispatch_group.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

constexpr int yearsOfDividends = 3;
constexpr std::int64_t daysOfYear = 366;

struct CalendarFetch {
  std::shared_ptr<DispatchQueue> queue =
      DispatchQueue::serial("ca.orlend.corvane.DividendCalendar-gathering");
  DispatchGroup group;
  DividendCalendar dividends;
};

std::vector<SharePayment> paymentsIn(const std::vector<EquityEvent>& events,
                                     const Calendar& exchange) {
  std::vector<SharePayment> payments;
  for (const EquityEvent& event : events) {
    if (const auto* paid = std::get_if<EquityEvent::Dividend>(&event.kind)) {
      payments.push_back({YearMonthDay::of(event.date, exchange), paid->amount});
    }
  }
  std::ranges::stable_sort(payments, {}, &SharePayment::day);
  return payments;
}

}  // namespace

void fetchDividendCalendar(const std::shared_ptr<QuoteProvider>& provider,
                           const EquitySet& equities, const YearMonthDay& today,
                           std::move_only_function<void(DividendCalendar)> completion) {
  const auto fetch = std::make_shared<CalendarFetch>();
  for (const EquityPointer& equity : equities) {
    const EquityPointer frozen = frozenEquity(*equity);
    const Calendar exchange = equity->calendar;
    const DateRange dates(daysAfter(today, -daysOfYear * yearsOfDividends).startIn(exchange),
                          daysAfter(today, daysOfYear).startIn(exchange));
    fetch->group.enter();
    provider->fetchQuotes(
        {equity, dates, QuoteQuery::EventsOnly{PriceAdjustment::adjustedForSplits}},
        std::make_shared<PriceAdjuster>(provider),
        [fetch, frozen, exchange](const Result<QuoteFetchResult>& answer) {
          fetch->queue->sync([&] {
            if (answer) {
              fetch->dividends.payments[frozen] =
                  paymentsIn(answer->events.value_or(std::vector<EquityEvent>()), exchange);
            } else {
              fetch->dividends.errors.emplace(frozen, answer.error());
            }
          });
          fetch->group.leave();
        });
  }
  fetch->group.notify(DispatchQueue::main(), [fetch, completion = std::move(completion)]() mutable {
    completion(std::move(fetch->dividends));
  });
}

RecentRates recentRates(std::span<const PortfolioPointer> portfolios, QuoteProvider& quotes) {
  RecentRates rates;
  for (const PortfolioPointer& portfolio : portfolios) {
    const Currency& primary = portfolio->primaryCurrency();
    const auto add = [&](const Currency& currency) {
      const CurrencyPair pair{currency, primary};
      if (currency == primary || rates.contains(pair)) {
        return;
      }
      if (const auto rate = quotes.exchangeRateEquity(currency, primary)->recentPrice) {
        rates.emplace(pair, *rate);
      }
    };
    if (portfolio->snapshotsByYear.empty()) {
      continue;
    }
    const PortfolioSnapshot& state = portfolio->snapshotsByYear.rbegin()->second;
    for (const auto& [currency, cash] : state.currencySnapshots) {
      add(currency);
    }
    for (const auto& [equity, holding] : state.equitySnapshots) {
      add(equity->currency);
    }
  }
  return rates;
}

std::optional<Decimal> rateIn(const RecentRates& rates, const Currency& from, const Currency& to) {
  if (from == to) {
    return Decimal(1);
  }
  const auto found = rates.find({from, to});
  return found == rates.end() ? std::nullopt : std::optional(found->second);
}

std::vector<ExpectedIncome> expectedIncomes(std::span<const PortfolioPointer> portfolios,
                                            const YearMonthDay& today, const Calendar& calendar,
                                            const RecentRates& rates,
                                            const DividendCalendar& dividends) {
  std::vector<ExpectedIncome> expected;
  for (const PortfolioPointer& portfolio : portfolios) {
    const Currency& primary = portfolio->primaryCurrency();
    const auto rateOf = [&](const Currency& currency) { return rateIn(rates, currency, primary); };
    for (EquityIncome& line : equityIncomes(*portfolio, today, calendar, rateOf)) {
      ExpectedIncome each{portfolio, std::move(line), std::nullopt, {}};
      each.rate = rateOf(each.line.equity->currency);
      const auto told = dividends.payments.find(each.line.equity);
      each.isFromOwnRows = told == dividends.payments.end() || told->second.empty();
      each.projection = projectedIncome(each.isFromOwnRows ? each.line.payments : told->second,
                                        today, {each.line.shares, each.rate.value_or(1), primary});
      expected.push_back(std::move(each));
    }
  }
  return expected;
}

}  // namespace corvane
