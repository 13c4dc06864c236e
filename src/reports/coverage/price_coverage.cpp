#include "reports/coverage/price_coverage.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "core/market/price_adjuster.h"
#include "marketdata/chain/refusal_text.h"
#include "platform/async/dispatch_group.h"
#include "reports/series/report_days.h"

namespace corvane {
namespace {

using CoverageState = PriceCoverage::State;

/// How long markets close at the most, with nothing said about the days after the latest trade.
constexpr int daysOfALongWeekend = 4;

bool isWeekday(const YearMonthDay& day) {
  const std::int64_t sinceMonday = ((dayNumber(day) + 3) % 7 + 7) % 7;  // 1970-01-01: a Thursday
  return sinceMonday < 5;
}

QuoteQuery dailyPrices(const EquityPointer& equity, const DaySpan& span) {
  const Calendar& calendar = equity->calendar;
  return {equity,
          {span.first.startIn(calendar), daysAfter(span.last, 1).startIn(calendar)},
          QuoteQuery::Quotes{QuoteInterval::oneDay, PriceAdjustment::marketNominal}};
}

/// One span of days on which an equity was held, day by day.
class SpanReading {
 public:
  SpanReading(const EquityPointer& equity, const DaySpan& span)
      : equity_(equity),
        first_(dayNumber(span.first)),
        days_(static_cast<std::size_t>(daysBetween(span.first, span.last)) + 1) {}

  void read(const CacheQuoteProvider& cache, const DaySpan& span) {
    for (const QuoteQuery& covered : cache.coveragePlan(dailyPrices(equity_, span)).exactQueries) {
      const auto bars = cache.readQuery(covered).quotes.value_or(std::vector<Quote>());
      markCovered(covered.dateRange, bars);
      for (const Quote& bar : bars) {
        if (Day* day = dayAt(dayNumberOf(bar.fromDate))) {
          (bar.close ? day->hasClose : day->hasEmptyBar) = true;
        }
      }
    }
  }

  /// `hasEarlierClose` says whether a price is known from before the span, and then from its end.
  [[nodiscard]] std::vector<PriceCoverage::Stretch> stretches(bool& hasEarlierClose) {
    passOverWeekends();
    judgeGaps(hasEarlierClose);
    std::vector<PriceCoverage::Stretch> stretches;
    for (std::size_t i = 0; i < days_.size(); ++i) {
      const YearMonthDay day = dayNumbered(first_ + static_cast<std::int64_t>(i));
      if (stretches.empty() || stretches.back().state != days_[i].state) {
        stretches.push_back({{day, day}, days_[i].state});
      }
      stretches.back().days.last = day;
    }
    return stretches;
  }

  /// Of the days at the end that are missing, those from the latest session on are not final yet.
  void markRunning(bool isRefreshed) {
    if (!equity_->recentDate || !equity_->recentPrice) {
      return;
    }
    std::size_t start = days_.size();
    while (start > 0 && days_[start - 1].state == CoverageState::missing) {
      --start;
    }
    const auto recent = dayNumberOf(*equity_->recentDate) - first_;
    const auto count = static_cast<std::int64_t>(days_.size());
    const bool isKnown = isRefreshed || count - 1 - recent <= daysOfALongWeekend;
    if (!isKnown || recent >= count) {
      return;
    }
    for (std::size_t i =
             std::max(start, static_cast<std::size_t>(std::max<std::int64_t>(recent, 0)));
         i < days_.size(); ++i) {
      days_[i].state = CoverageState::running;
    }
  }

 private:
  struct Day {
    CoverageState state = CoverageState::missing;
    bool hasClose = false;
    bool hasEmptyBar = false;
  };

  [[nodiscard]] std::int64_t dayNumberOf(Date date) const {
    return dayNumber(YearMonthDay::of(date, equity_->calendar));
  }
  [[nodiscard]] Day* dayAt(std::int64_t number) {
    const std::int64_t index = number - first_;
    const bool isHere = 0 <= index && index < static_cast<std::int64_t>(days_.size());
    return isHere ? &days_[static_cast<std::size_t>(index)] : nullptr;
  }

  /// A day is covered when the moment is at which its session opens. Where no bar tells that, it is
  /// noon: what is covered ends with an opening at the latest.
  void markCovered(const DateRange& range, const std::vector<Quote>& bars) {
    constexpr double noon = 12 * 3600;
    const double opening = bars.empty() ? noon
                                        : bars.front().fromDate.timeIntervalSince(
                                              equity_->calendar.startOfDay(bars.front().fromDate));
    const auto opensAt = [&](std::int64_t number) {
      return dayNumbered(number).startIn(equity_->calendar) + opening;
    };
    std::int64_t from = dayNumberOf(range.lower());
    std::int64_t to = dayNumberOf(range.upper());
    from += opensAt(from) < range.lower() ? 1 : 0;
    to -= opensAt(to) < range.upper() ? 0 : 1;
    for (std::int64_t number = from; number <= to; ++number) {
      if (Day* day = dayAt(number)) {
        day->state = CoverageState::covered;
      }
    }
  }

  /// Calls `visit` with each run of days that are in `state` and have no close.
  template <typename Visit>
  void forEachRun(CoverageState state, Visit visit) {
    for (std::size_t from = 0; from < days_.size();) {
      std::size_t to = from;
      while (to < days_.size() && days_[to].state == state && !days_[to].hasClose) {
        ++to;
      }
      if (from < to) {
        visit(from, to);
      }
      from = std::max(to, from + 1);
    }
  }

  [[nodiscard]] std::ptrdiff_t weekdaysIn(std::size_t from, std::size_t to) const {
    std::ptrdiff_t count = 0;
    for (std::size_t i = from; i < to; ++i) {
      count += isWeekday(dayNumbered(first_ + static_cast<std::int64_t>(i))) ? 1 : 0;
    }
    return count;
  }

  void set(std::size_t from, std::size_t to, CoverageState state) {
    for (std::size_t i = from; i < to; ++i) {
      days_[i].state = state;
    }
  }

  /// A weekend that nobody has asked about lacks nothing, unless the equity is traded on weekends.
  void passOverWeekends() {
    for (std::size_t i = 0; i < days_.size(); ++i) {
      if (days_[i].hasClose && weekdaysIn(i, i + 1) == 0) {
        return;
      }
    }
    forEachRun(CoverageState::missing, [this](std::size_t from, std::size_t to) {
      if (weekdaysIn(from, to) == 0) {
        set(from, to, from > 0 ? days_[from - 1].state : CoverageState::covered);
      }
    });
  }

  void judgeGaps(bool& hasEarlierClose) {
    std::optional<std::size_t> firstClose;
    for (std::size_t i = 0; i < days_.size() && !firstClose; ++i) {
      firstClose = days_[i].hasClose ? std::optional(i) : std::nullopt;
    }
    forEachRun(CoverageState::covered, [&](std::size_t from, std::size_t to) {
      const bool isEmpty = std::any_of(days_.begin() + static_cast<std::ptrdiff_t>(from),
                                       days_.begin() + static_cast<std::ptrdiff_t>(to),
                                       [](const Day& day) { return day.hasEmptyBar; });
      if (isEmpty || weekdaysIn(from, to) >= weekdaysOfAGap) {
        const bool isAfterAClose = hasEarlierClose || (firstClose && *firstClose < from);
        set(from, to, isAfterAClose ? CoverageState::carriedForward : CoverageState::withoutPrice);
      }
    });
    hasEarlierClose = hasEarlierClose || firstClose.has_value();
  }

  const EquityPointer& equity_;
  const std::int64_t first_;
  std::vector<Day> days_;
};

void appendCoverages(std::vector<PriceCoverage>& list, const EquityMap<std::vector<DaySpan>>& held,
                     const CoverageSources& sources, bool isExchangeRate) {
  const auto count = static_cast<std::ptrdiff_t>(list.size());
  for (const auto& [equity, spans] : held) {
    list.push_back(coverageOf(equity, spans, sources));
    list.back().isExchangeRate = isExchangeRate;
  }
  std::sort(list.begin() + count, list.end(), [](const auto& left, const auto& right) {
    return std::tie(left.equity->symbol, left.equity->id()) <
           std::tie(right.equity->symbol, right.equity->id());
  });
}

/// What is under way, all of it on the main queue.
struct MissingFetch {
  std::function<void(double)> progress;
  std::size_t count = 0;
  std::size_t ended = 0;
  EquityMap<std::string> refused;
};

void requestStretch(const std::shared_ptr<MissingFetch>& fetch, const DispatchGroup& group,
                    const std::shared_ptr<QuoteProvider>& provider, const EquityPointer& equity,
                    const DaySpan& days) {
  ++fetch->count;
  group.enter();
  provider->fetchQuotes(
      dailyPrices(equity, days), std::make_shared<PriceAdjuster>(provider),
      [fetch, group, equity](const Result<QuoteFetchResult>& answer) {
        DispatchQueue::main()->async([fetch, group, equity,
                                      error = answer ? nullptr : answer.error()] {
          if (error != nullptr) {
            fetch->refused[equity] = refusalText(*error, equity->symbol);
          }
          ++fetch->ended;
          fetch->progress(static_cast<double>(fetch->ended) / static_cast<double>(fetch->count));
          group.leave();
        });
      });
}

}  // namespace

bool PriceCoverage::hasMissingDays() const {
  return std::ranges::find(stretches, CoverageState::missing, &Stretch::state) != stretches.end();
}

PriceCoverage coverageOf(const EquityPointer& equity, const std::vector<DaySpan>& held,
                         const CoverageSources& sources) {
  PriceCoverage coverage;
  coverage.equity = equity;
  coverage.problem = equity->refreshProblem;
  bool hasEarlierClose = false;
  for (const DaySpan& span : held) {
    SpanReading reading(equity, span);
    reading.read(sources.cache, span);
    if (span.last == sources.today) {
      reading.markRunning(sources.isRefreshed);
    }
    std::ranges::move(reading.stretches(hasEarlierClose), std::back_inserter(coverage.stretches));
  }
  return coverage;
}

std::string_view rawValue(PriceCoverage::State state) {
  switch (state) {
    case PriceCoverage::State::covered:
      return "covered";
    case PriceCoverage::State::carriedForward:
      return "carried";
    case PriceCoverage::State::withoutPrice:
      return "none";
    case PriceCoverage::State::running:
      return "running";
    case PriceCoverage::State::missing:
      return "missing";
  }
  return "";
}

std::vector<PriceCoverage> priceCoverage(const std::vector<PortfolioPointer>& portfolios,
                                         const CoverageSources& sources) {
  const HeldDays held = heldDays(portfolios, sources.calendar, sources.today, sources.quotes);
  std::vector<PriceCoverage> list;
  appendCoverages(list, held.equities, sources, false);
  appendCoverages(list, held.rates, sources, true);
  return list;
}

void fetchMissingPrices(const std::shared_ptr<QuoteProvider>& provider,
                        const std::vector<PriceCoverage>& coverages,
                        std::function<void(double fraction)> progress,
                        std::move_only_function<void(EquityMap<std::string>)> completion) {
  const auto fetch = std::make_shared<MissingFetch>();
  fetch->progress = std::move(progress);
  const DispatchGroup group;
  for (const PriceCoverage& coverage : coverages) {
    for (const auto& [days, state] : coverage.stretches) {
      if (state == CoverageState::missing) {
        requestStretch(fetch, group, provider, coverage.equity, days);
      }
    }
  }
  group.notify(DispatchQueue::main(), [fetch, completion = std::move(completion)]() mutable {
    completion(std::move(fetch->refused));
  });
}

}  // namespace corvane
