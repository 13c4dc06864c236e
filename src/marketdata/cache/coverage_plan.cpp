#include "marketdata/cache/coverage_plan.h"

#include <algorithm>
#include <cassert>
#include <optional>

#include "marketdata/cache/quote_cache_codes.h"
#include "platform/overloaded.h"

namespace corvane {
namespace {

using Subject = QuoteQuery::Subject;

/// What a range that is covered on the basis `prices` is to be read as.
Subject subjectOnBasis(const Subject& seeking, PriceAdjustment prices) {
  return std::visit(
      Overloaded{[&](const QuoteQuery::Quotes& quotes) -> Subject {
                   return QuoteQuery::Quotes{quotes.interval, prices};
                 },
                 [&](const QuoteQuery::CurrentPeriodQuotes&) -> Subject {
                   return QuoteQuery::Quotes{QuoteInterval::oneMinute, prices};
                 },
                 [&](const auto& /*events*/) -> Subject { return QuoteQuery::EventsOnly{prices}; }},
      seeking);
}

/// Whether a range of another basis answers the query as it is.
bool needsNoConversion(const Subject& seeking, PriceAdjustment prices) {
  if (const auto* current = std::get_if<QuoteQuery::CurrentPeriodQuotes>(&seeking)) {
    return current->usingSnapshots && prices == PriceAdjustment::marketNominalSnapshot;
  }
  return std::holds_alternative<QuoteQuery::EventsWithoutAdjustment>(seeking);
}

/// One pass over the covered ranges, from the start of the query to its end.
class PlanWalk {
 public:
  explicit PlanWalk(const QuoteQuery& query)
      : query_(query),
        target_(CoverageTarget::of(query.seeking)),
        cursor_(query.dateRange.lower()) {}

  void visit(const CoveredRange& covered) {
    if (!(covered.range.upper() > cursor_)) {
      return;
    }
    const bool isTarget = covered.prices == target_.prices;
    if (pending_) {
      if (!isTarget && !(covered.range.upper() > pending_->range.upper())) {
        return;
      }
      interruptPending(covered.range);
    }
    addMissingUntil(covered.range.lower());
    const DateRange rest(cursor_, covered.range.upper());
    if (isTarget) {
      plan_.exactQueries.push_back(
          {query_.equity, rest, subjectOnBasis(query_.seeking, target_.prices)});
      cursor_ = rest.upper();
    } else if (covered.prices != PriceAdjustment::marketNominalSnapshot || target_.usingSnapshots) {
      pending_ = {rest, covered.prices};
    }
  }

  CoveragePlan finish() {
    if (pending_) {
      addPendingUntil(pending_->range.upper());
    }
    addMissingUntil(query_.dateRange.upper());
    return std::move(plan_);
  }

 private:
  /// Uses the pending range up to where `next` starts, and keeps what reaches beyond its end.
  void interruptPending(const DateRange& next) {
    const CoveredRange old = *pending_;
    addPendingUntil(std::min(next.lower(), old.range.upper()));
    pending_.reset();
    if (next.upper() < old.range.upper()) {
      pending_ = {{next.upper(), old.range.upper()}, old.prices};
    }
  }

  /// A range that started before the cursor interrupts the pending one at the cursor: nothing of it
  /// is used then.
  void addPendingUntil(Date end) {
    if (!(cursor_ < end)) {
      return;
    }
    auto& list = needsNoConversion(query_.seeking, pending_->prices) ? plan_.exactQueries
                                                                     : plan_.convertibleQueries;
    list.push_back(
        {query_.equity, {cursor_, end}, subjectOnBasis(query_.seeking, pending_->prices)});
    cursor_ = end;
  }

  void addMissingUntil(Date end) {
    if (cursor_ < end) {
      plan_.missingQueries.push_back({query_.equity, {cursor_, end}, query_.seeking});
      cursor_ = end;
    }
  }

  const QuoteQuery& query_;
  const CoverageTarget target_;
  CoveragePlan plan_;
  Date cursor_;  ///< all before it is planned
  /// Covered on another basis only; held back in case a range of the basis sought lies within it.
  std::optional<CoveredRange> pending_;
};

}  // namespace

CoverageTarget CoverageTarget::of(const Subject& subject) {
  return std::visit(
      Overloaded{
          [](const QuoteQuery::Quotes& quotes) {
            return CoverageTarget{corvane::intervalCode(quotes.interval), quotes.prices, false};
          },
          [](const QuoteQuery::CurrentPeriodQuotes& current) {
            return CoverageTarget{corvane::intervalCode(QuoteInterval::oneMinute),
                                  PriceAdjustment::marketNominal, current.usingSnapshots};
          },
          [](const QuoteQuery::EventsOnly& events) {
            return CoverageTarget{eventsIntervalCode, events.prices, false};
          },
          [](QuoteQuery::EventsWithoutAdjustment) {
            return CoverageTarget{eventsIntervalCode, PriceAdjustment::marketNominal, false};
          }},
      subject);
}

CoveragePlan coveragePlan(const QuoteQuery& query, std::span<const CoveredRange> covered) {
  assert(!query.dateRange.isEmpty());
  PlanWalk walk(query);
  for (const CoveredRange& range : covered) {
    walk.visit(range);
  }
  return walk.finish();
}

}  // namespace corvane
