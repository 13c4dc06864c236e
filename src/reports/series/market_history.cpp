#include "reports/series/market_history.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <variant>

#include "core/market/frozen_equity.h"
#include "core/market/price_adjuster.h"
#include "platform/async/dispatch_group.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

/// What the handlers of one fetch fill, all of them on its queue.
struct HistoryFetch {
  std::shared_ptr<DispatchQueue> queue =
      DispatchQueue::serial("ca.orlend.corvane.MarketHistory-gathering");
  DispatchGroup group;
  std::shared_ptr<MarketHistory> history = std::make_shared<MarketHistory>();
};

/// Where the days of exchange rates begin.
const Calendar& calendarOfRates() {
  static const Calendar calendar(TimeZone::withIdentifier("Europe/London").value());
  return calendar;
}

template <typename Keep, typename Fail>
void requestHistory(const std::shared_ptr<HistoryFetch>& fetch,
                    const std::shared_ptr<QuoteProvider>& provider, EquityPointer target,
                    const DateRange& dates, Keep keep, Fail fail) {
  fetch->group.enter();
  provider->fetchQuotes(
      {std::move(target), dates,
       QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}},
      std::make_shared<PriceAdjuster>(provider),
      [fetch, keep, fail](const Result<QuoteFetchResult>& answer) {
        fetch->queue->sync([&] {
          if (!answer) {
            fail(*fetch->history, answer.error());
          } else if (!answer->quotes) {
            fail(*fetch->history,
                 QuoteProviderError(QuoteProviderError::QueryNotSatisfied{}).copy());
          } else {
            keep(*fetch->history, *answer->quotes);
          }
        });
        fetch->group.leave();
      });
}

/// Adds the splits of `target` in `dates` to the history under `frozen`. Where they cannot be had
/// there are none: no figure needs them.
void requestSplits(const std::shared_ptr<HistoryFetch>& fetch,
                   const std::shared_ptr<QuoteProvider>& provider, const EquityPointer& target,
                   const EquityPointer& frozen, const DateRange& dates) {
  fetch->group.enter();
  provider->fetchQuotes(
      {target, dates, QuoteQuery::EventsOnly{PriceAdjustment::marketNominal}},
      std::make_shared<PriceAdjuster>(provider),
      [fetch, frozen, exchange = target->calendar](const Result<QuoteFetchResult>& answer) {
        fetch->queue->sync([&] {
          if (!answer || !answer->events) {
            return;
          }
          for (const EquityEvent& event : *answer->events) {
            if (const auto* split = std::get_if<EquityEvent::Split>(&event.kind)) {
              fetch->history->splits[frozen].push_back(
                  {YearMonthDay::of(event.date, exchange), split->ratio});
            }
          }
        });
        fetch->group.leave();
      });
}

/// Finds again what belongs to an equity by its object, which is quicker than by its identity; rows
/// of one ledger share their objects.
template <typename Value>
class ByObject {
 public:
  explicit ByObject(EquityMap<Value>& values) : values_(values) {}

  Value& operator[](const EquityPointer& equity) {
    Value*& known = known_[equity.get()];
    if (known == nullptr) {
      known = &values_[equity];
    }
    return *known;
  }

 private:
  EquityMap<Value>& values_;
  std::unordered_map<const EquityInfo*, Value*> known_;
};

}  // namespace

std::strong_ordering operator<=>(const CurrencyPair& left, const CurrencyPair& right) {
  const auto codes = [](const CurrencyPair& pair) {
    return std::tuple<std::string_view, std::string_view>(pair.from.code, pair.to.code);
  };
  return codes(left) <=> codes(right);
}

const PriceLine::Close* PriceLine::lastUpTo(const YearMonthDay& day) const {
  const auto after = std::ranges::upper_bound(closes, day, {}, &Close::day);
  return after == closes.begin() ? nullptr : &*std::prev(after);
}

PriceLine priceLine(const std::vector<Quote>& quotes, const Calendar& exchange,
                    const YearMonthDay& first, const YearMonthDay& last) {
  PriceLine line;
  line.closes.reserve(quotes.size());
  for (const Quote& quote : quotes) {
    const YearMonthDay day = YearMonthDay::of(quote.fromDate, exchange);
    if (day < first || last < day || !quote.close) {
      continue;
    }
    if (line.closes.empty()) {
      line.firstOpen = quote.open;
    }
    if (!line.closes.empty() && day <= line.closes.back().day) {
      line.closes.back().price = *quote.close;  // the running bar of a day beside its daily bar
    } else {
      line.closes.push_back({day, *quote.close});
    }
  }
  return line;
}

void addMarketNeeds(MarketNeeds& needs, Portfolio& portfolio, const YearMonthDay& from,
                    const YearMonthDay& to, const Calendar& calendar,
                    const std::optional<Currency>& reportingCurrency) {
  const Date start = from.startIn(calendar);
  const Date end = YearMonthDay{to.year, to.month, to.day + 1}.startIn(calendar);
  const Currency& primary = portfolio.primaryCurrency();
  struct Line {
    bool heldSharesBefore = false;
    bool hasRows = false;
    bool hasSplit = false;
  };
  EquityMap<Line> lines;
  ByObject<Line> lineOf(lines);
  std::unordered_map<Currency, Decimal> cashBefore;
  std::unordered_set<Currency> currencies;
  for (const TransactionPointer& row : portfolio.transactions()) {
    if (end <= row->settlementDate()) {
      break;
    }
    const bool isInRange = start <= row->settlementDate();
    if (const EquityPointer* equity = row->basic.equity()) {
      Line& line = lineOf[*equity];
      line.hasRows |= isInRange;
      line.hasSplit |=
          isInRange && std::holds_alternative<BasicTransaction::Split>(row->basic.kind);
      if (!isInRange) {
        line.heldSharesBefore = !row->sharesNet.value_or(0).isZero();
      }
    }
    if (const Currency* currency = row->basic.currency()) {
      if (isInRange) {
        currencies.insert(*currency);
      } else {
        cashBefore[*currency] = row->cashNet.value_or(0);
      }
    }
  }
  for (const auto& [equity, line] : lines) {
    if (line.hasRows || line.heldSharesBefore) {
      needs.equities.insert(equity);
      currencies.insert(equity->currency);
    }
    if (line.hasSplit) {
      needs.splitEquities.insert(equity);
    }
  }
  for (const auto& [currency, cash] : cashBefore) {
    if (!cash.isZero() && portfolio.usesCashAccounts) {
      currencies.insert(currency);
    }
  }
  for (const Currency& currency : currencies) {
    if (currency != primary) {
      needs.pairs.insert({currency, primary});
    }
  }
  if (reportingCurrency && *reportingCurrency != primary) {
    needs.pairs.insert({primary, *reportingCurrency});
  }
}

void fetchMarketHistory(const std::shared_ptr<QuoteProvider>& provider, const MarketNeeds& needs,
                        const YearMonthDay& from, const YearMonthDay& to,
                        std::move_only_function<void(std::shared_ptr<MarketHistory>)> completion) {
  const auto fetch = std::make_shared<HistoryFetch>();
  const YearMonthDay first = daysAfter(from, -leadInDays);
  const auto datesIn = [&](const Calendar& calendar) {
    return DateRange(first.startIn(calendar), daysAfter(to, 1).startIn(calendar));
  };
  for (const EquityPointer& equity : needs.equities) {
    const EquityPointer frozen = frozenEquity(*equity);
    const Calendar exchange = equity->calendar;
    requestHistory(
        fetch, provider, equity, datesIn(exchange),
        [=](MarketHistory& into, const std::vector<Quote>& quotes) {
          into.prices[frozen] = priceLine(quotes, exchange, first, to);
        },
        [frozen](MarketHistory& into, const ErrorPointer& error) {
          into.errorsByEquity.emplace(frozen, error);
        });
    if (needs.splitEquities.contains(equity)) {
      requestSplits(fetch, provider, equity, frozen,
                    {daysAfter(from, -mostDaysBetweenSplits).startIn(exchange),
                     daysAfter(to, mostDaysBetweenSplits + 1).startIn(exchange)});
    }
  }
  for (const CurrencyPair& pair : needs.pairs) {
    requestHistory(
        fetch, provider, provider->exchangeRateEquity(pair.from, pair.to),
        datesIn(calendarOfRates()),
        [=](MarketHistory& into, const std::vector<Quote>& quotes) {
          into.rates[pair] = priceLine(quotes, calendarOfRates(), first, to);
        },
        [pair](MarketHistory& into, const ErrorPointer& error) {
          into.errorsByPair.emplace(pair, error);
        });
  }
  fetch->group.notify(DispatchQueue::main(), [fetch, completion = std::move(completion)]() mutable {
    completion(std::move(fetch->history));
  });
}

}  // namespace corvane
