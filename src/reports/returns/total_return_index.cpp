#include "reports/returns/total_return_index.h"

#include <algorithm>
#include <utility>

#include "core/market/price_adjuster.h"
#include "platform/async/dispatch_group.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

struct DividendFetch {
  std::shared_ptr<DispatchQueue> queue =
      DispatchQueue::serial("ca.orlend.corvane.DividendHistory-gathering");
  DispatchGroup group;
  DividendHistory history;
  ErrorPointer error;
};

template <typename Take>
void requestPart(const std::shared_ptr<DividendFetch>& fetch,
                 const std::shared_ptr<QuoteProvider>& provider, QuoteQuery query, Take take) {
  fetch->group.enter();
  provider->fetchQuotes(std::move(query), std::make_shared<PriceAdjuster>(provider),
                        [fetch, take](const Result<QuoteFetchResult>& answer) {
                          fetch->queue->sync([&] {
                            if (answer) {
                              take(*fetch, *answer);
                            } else {
                              fetch->error = answer.error();
                            }
                          });
                          fetch->group.leave();
                        });
}

}  // namespace

std::vector<double> totalReturnIndex(const std::vector<PriceLine::Close>& closes,
                                     const std::vector<ShareDividend>& dividends) {
  std::vector<double> index;
  auto dividend = dividends.begin();
  for (std::size_t i = 0; i < closes.size(); ++i) {
    Decimal paid;
    for (; dividend != dividends.end() && dividend->exDay <= closes[i].day; ++dividend) {
      paid += dividend->amount;
    }
    if (i == 0) {
      index.push_back(1);
      continue;
    }
    const Decimal& before = closes[i - 1].price;
    index.push_back(before > 0 ? index.back() * (closes[i].price + paid).doubleValue() /
                                     before.doubleValue()
                               : index.back());
  }
  return index;
}

void fetchDividendHistory(const std::shared_ptr<QuoteProvider>& provider,
                          const EquityPointer& equity, const YearMonthDay& from,
                          const YearMonthDay& to,
                          std::move_only_function<void(Result<DividendHistory>)> completion) {
  const auto fetch = std::make_shared<DividendFetch>();
  const YearMonthDay first = daysAfter(from, -leadInDays);
  const Calendar exchange = equity->calendar;
  const DateRange dates(first.startIn(exchange), daysAfter(to, 1).startIn(exchange));
  requestPart(fetch, provider,
              {equity, dates,
               QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::adjustedForSplits}},
              [=](DividendFetch& into, const QuoteFetchResult& answer) {
                into.history.prices =
                    priceLine(answer.quotes.value_or(std::vector<Quote>()), exchange, first, to);
              });
  requestPart(
      fetch, provider, {equity, dates, QuoteQuery::EventsOnly{PriceAdjustment::adjustedForSplits}},
      [exchange](DividendFetch& into, const QuoteFetchResult& answer) {
        for (const EquityEvent& event : answer.events.value_or(std::vector<EquityEvent>())) {
          if (const auto* paid = std::get_if<EquityEvent::Dividend>(&event.kind)) {
            into.history.dividends.push_back(
                {YearMonthDay::of(event.date, exchange), paid->amount});
          }
        }
        std::ranges::sort(into.history.dividends, {}, &ShareDividend::exDay);
      });
  fetch->group.notify(DispatchQueue::main(), [fetch, completion = std::move(completion)]() mutable {
    if (fetch->error != nullptr) {
      completion(std::unexpected(fetch->error));
    } else {
      completion(std::move(fetch->history));
    }
  });
}

double BenchmarkReturn::indexOn(const YearMonthDay& day) const {
  const auto after = std::ranges::upper_bound(points, day, {}, &Point::day);
  return after == points.begin() ? 1 : std::prev(after)->index;
}

TimeWeightedReturn BenchmarkReturn::asReturns() const {
  TimeWeightedReturn returns;
  double before = 1;
  for (const auto& [day, value] : points) {
    returns.days.push_back({.day = day,
                            .dailyReturn = value / before - 1,
                            .index = value,
                            .isHeldThrough = !returns.days.empty()});
    before = value;
  }
  returns.total = total();
  return returns;
}

std::optional<BenchmarkReturn> benchmarkReturn(const DividendHistory& history,
                                               const PriceLine* rates, const YearMonthDay& from) {
  const std::vector<double> index = totalReturnIndex(history.prices.closes, history.dividends);
  const PriceLine::Close* base = history.prices.lastUpTo(daysAfter(from, -1));
  if (base == nullptr) {
    return std::nullopt;
  }
  const auto start = static_cast<std::size_t>(base - history.prices.closes.data());
  const auto worth = [&](std::size_t i) -> std::optional<double> {
    if (rates == nullptr) {
      return index[i];
    }
    const PriceLine::Close* rate = rates->lastUpTo(history.prices.closes[i].day);
    return rate == nullptr ? std::nullopt : std::optional(index[i] * rate->price.doubleValue());
  };
  const auto opening = worth(start);
  if (!opening) {
    return std::nullopt;
  }
  BenchmarkReturn result{{{daysAfter(from, -1), 1}}};
  for (std::size_t i = start + 1; i < index.size(); ++i) {
    result.points.push_back({history.prices.closes[i].day, *worth(i) / *opening});
  }
  return result;
}

}  // namespace corvane
