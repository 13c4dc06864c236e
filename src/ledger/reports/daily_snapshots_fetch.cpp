#include "ledger/reports/daily_snapshots_fetch.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <utility>

#include "core/market/price_adjuster.h"
#include "ledger/accounting/ledger_states.h"
#include "ledger/reports/daily_snapshots.h"
#include "platform/async/dispatch_group.h"

namespace corvane {
namespace {

/// What one fetch gathers. Its queue is the only place that touches it until all series are in.
struct Fetch {
  explicit Fetch(DailySnapshots balances) : snapshots(std::move(balances)) {}

  std::shared_ptr<DispatchQueue> queue =
      DispatchQueue::serial("ca.orlend.corvane.PortfolioManager.fetchDailySnapshots");
  DispatchGroup group;
  DailySnapshots snapshots;
  FetchDailySnapshotsResult result;
};

/// The days of a fetch, both included.
struct Days {
  YearMonthDay from;
  YearMonthDay to;

  [[nodiscard]] DateRange datesIn(const Calendar& calendar) const {
    return {from.startIn(calendar), YearMonthDay{to.year, to.month, to.day + 1}.startIn(calendar)};
  }
};

/// Asks for the daily bars of `target` on the days of its own exchange and hands them, or the
/// error, to `keep(fetch, bars)`. By the user's days the close of a market east of the user would
/// count a day too early. Bars of a day are stamped by the exchange's clocks, those of a pair by
/// London's.
template <typename Keep>
void request(const std::shared_ptr<Fetch>& fetch, const std::shared_ptr<QuoteProvider>& provider,
             EquityPointer target, const DateRange& dates, Keep keep) {
  fetch->group.enter();
  provider->fetchQuotes(
      {std::move(target), dates,
       QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}},
      std::make_shared<PriceAdjuster>(provider),
      [fetch, keep](const Result<QuoteFetchResult>& answer) {
        fetch->queue->sync([&] {
          if (!answer) {
            keep(*fetch, std::unexpected(answer.error()));
          } else if (!answer->quotes) {
            keep(*fetch, failure(QuoteProviderError(QuoteProviderError::QueryNotSatisfied{})));
          } else {
            keep(*fetch, &*answer->quotes);
          }
        });
        fetch->group.leave();
      });
}

/// Where the days of exchange rates begin.
const Calendar& london() {
  static const Calendar calendar(TimeZone::withIdentifier("Europe/London").value());
  return calendar;
}

using Bars = Result<const std::vector<Quote>*>;

}  // namespace

void fetchDailySnapshots(Portfolio& portfolio, YearMonthDay from, YearMonthDay to,
                         const Calendar& calendar, const std::shared_ptr<QuoteProvider>& prices,
                         FetchDailySnapshotsCompletion completion) {
  assert(from <= to && "a range must not end before it starts");
  const Days days{from, to};
  const DateRange dates = days.datesIn(calendar);
  const auto& rows = portfolio.transactions();
  const auto first = std::ranges::lower_bound(rows, dates.lower(), std::less<>(),
                                              &PortfolioTransaction::settlementDate);
  const auto end = std::ranges::lower_bound(first, rows.end(), dates.upper(), std::less<>(),
                                            &PortfolioTransaction::settlementDate);
  PortfolioSnapshot seed;
  try {
    seed = stateBefore(static_cast<std::size_t>(first - rows.begin()), portfolio, calendar);
  } catch (const Error& error) {
    completion(failure(error));
    return;
  }

  const auto seedDay = YearMonthDay::normalised(from.year, from.month, from.day - 1, calendar);
  const auto fetch = std::make_shared<Fetch>(
      DailySnapshots(portfolio, calendar, seedDay, to, std::move(seed), std::span(first, end)));
  // Prices count for the days of their own exchange, rates for those of London, as their bars are
  // stamped. By the user's days the close of a market east of the user would stand a day too early,
  // on a day that may have other shares than it was paid for.
  for (const EquityPointer& equity : fetch->snapshots.equities()) {
    request(fetch, prices, equity, days.datesIn(equity->calendar),
            [equity, exchange = equity->calendar](Fetch& into, const Bars& bars) {
              if (bars) {
                into.snapshots.addPrices(equity, **bars, exchange);
              } else {
                into.result.fetchErrorsByEquity.emplace(equity, bars.error());
              }
            });
  }
  for (const Currency& currency : fetch->snapshots.foreignCurrencies()) {
    const EquityPointer pair = prices->exchangeRateEquity(currency, portfolio.primaryCurrency());
    request(fetch, prices, pair, days.datesIn(london()), [currency](Fetch& into, const Bars& bars) {
      if (bars) {
        into.snapshots.addRates(currency, **bars, london());
      } else {
        into.result.fetchErrorsByCurrency.emplace(currency, bars.error());
      }
    });
  }
  fetch->group.notify(DispatchQueue::main(), [fetch, completion = std::move(completion)]() mutable {
    fetch->result.snapshotGroup = fetch->snapshots.merge();
    completion(std::move(fetch->result));
  });
}

}  // namespace corvane
