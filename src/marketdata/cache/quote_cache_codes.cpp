#include "marketdata/cache/quote_cache_codes.h"

#include <utility>

namespace corvane {

std::int64_t intervalCode(QuoteInterval interval) {
  switch (interval) {
    case QuoteInterval::oneMinute:
      return 11;
    case QuoteInterval::twoMinutes:
      return 12;
    case QuoteInterval::fiveMinutes:
      return 13;
    case QuoteInterval::fifteenMinutes:
      return 15;
    case QuoteInterval::thirtyMinutes:
      return 17;
    case QuoteInterval::ninetyMinutes:
      return 18;
    case QuoteInterval::oneHour:
      return 21;
    case QuoteInterval::oneDay:
      return 31;
    case QuoteInterval::fiveDays:
      return 35;
    case QuoteInterval::oneWeek:
      return 41;
    case QuoteInterval::oneMonth:
      return 51;
    case QuoteInterval::threeMonths:
      return 53;
  }
  std::unreachable();
}

std::int64_t priceCode(PriceAdjustment prices) {
  switch (prices) {
    case PriceAdjustment::marketNominalSnapshot:
      return 0;
    case PriceAdjustment::marketNominal:
      return 1;
    case PriceAdjustment::adjustedForSplits:
      return 2;
    case PriceAdjustment::adjustedForSplitsAndDividends:
      return 3;
  }
  std::unreachable();
}

std::optional<PriceAdjustment> pricesWithCode(std::int64_t code) {
  for (const PriceAdjustment prices : QuoteQuery::allPriceAdjustments) {
    if (priceCode(prices) == code) {
      return prices;
    }
  }
  return std::nullopt;
}

}  // namespace corvane
