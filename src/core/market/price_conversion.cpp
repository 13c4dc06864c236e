#include "core/market/price_conversion.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "platform/overloaded.h"

namespace corvane {
namespace {

/// The product of split ratios, in lowest terms: exact while its terms fit 128 bits, which takes
/// dozens of odd ratios to exceed, and of 38 digits beyond.
class SplitProduct {
 public:
  void multiplyBy(const Fraction& ratio) {
    if (isExact_ && multiplyExactly(ratio)) {
      newShares_ = Decimal::fromMantissa(Sign::plus, numerator_, 0);
      oldShares_ = Decimal::fromMantissa(Sign::plus, denominator_, 0);
    } else {
      isExact_ = false;
      newShares_ = newShares_ * Decimal(ratio.numerator);
      oldShares_ = oldShares_ * Decimal(ratio.denominator);
    }
    growth_ = quotientThatEnds(newShares_, oldShares_);
    shrinkage_ = quotientThatEnds(oldShares_, newShares_);
  }

  [[nodiscard]] bool isOne() const { return newShares_ == oldShares_; }

  /// `value` of one share after the splits as that of one share before them, or the other way.
  [[nodiscard]] Decimal beforeSplits(const Decimal& value) const {
    return growth_ ? value * *growth_ : value * newShares_ / oldShares_;
  }
  [[nodiscard]] Decimal afterSplits(const Decimal& value) const {
    return shrinkage_ ? value * *shrinkage_ : value * oldShares_ / newShares_;
  }

  /// The shares that `shares` before the splits have become, or the other way, cut to whole ones.
  [[nodiscard]] std::int64_t sharesAfterSplits(std::int64_t shares) const {
    const auto whole = wholeQuotient(shares, numerator_, denominator_);
    return whole ? *whole : beforeSplits(shares).integerValue();
  }
  [[nodiscard]] std::int64_t sharesBeforeSplits(std::int64_t shares) const {
    const auto whole = wholeQuotient(shares, denominator_, numerator_);
    return whole ? *whole : afterSplits(shares).integerValue();
  }

 private:
  /// False, with nothing changed, where the product does not fit.
  bool multiplyExactly(const Fraction& ratio) {
    auto numerator = static_cast<std::uint64_t>(ratio.numerator);
    auto denominator = static_cast<std::uint64_t>(ratio.denominator);
    const std::uint64_t own = std::gcd(numerator, denominator);
    numerator /= own;
    denominator /= own;
    const std::uint64_t above = std::gcd(numerator, remainder(denominator_, numerator));
    const std::uint64_t below = std::gcd(denominator, remainder(numerator_, denominator));
    Decimal::Mantissa newNumerator = 0;
    Decimal::Mantissa newDenominator = 0;
    if (__builtin_mul_overflow(numerator_ / below, numerator / above, &newNumerator) ||
        __builtin_mul_overflow(denominator_ / above, denominator / below, &newDenominator)) {
      return false;
    }
    numerator_ = newNumerator;
    denominator_ = newDenominator;
    return true;
  }

  /// `dividend` / `divisor` where that takes but a few digits; multiplying by it is several times
  /// faster than dividing.
  static std::optional<Decimal> quotientThatEnds(const Decimal& dividend, const Decimal& divisor) {
    const auto isShort = [](const Decimal& value) { return value.mantissa() >> 63 == 0; };
    const Decimal quotient = dividend / divisor;
    // Short factors have an exact product.
    const bool isExact = isShort(quotient) && isShort(divisor) && quotient * divisor == dividend;
    return isExact ? std::optional(quotient) : std::nullopt;
  }

  /// `shares` × `numerator` / `denominator` towards zero; none where that is beyond what words hold
  /// or where the product of the ratios is not exact.
  [[nodiscard]] std::optional<std::int64_t> wholeQuotient(std::int64_t shares,
                                                          Decimal::Mantissa numerator,
                                                          Decimal::Mantissa denominator) const {
    constexpr auto limit = std::numeric_limits<std::int64_t>::max();
    Decimal::Mantissa product = 0;
    if (!isExact_ || shares < 0 || __builtin_mul_overflow(numerator, shares, &product) ||
        product / denominator > static_cast<Decimal::Mantissa>(limit)) {
      return std::nullopt;
    }
    return static_cast<std::int64_t>(product / denominator);
  }

  static std::uint64_t remainder(Decimal::Mantissa value, std::uint64_t divisor) {
    return static_cast<std::uint64_t>(value % divisor);
  }

  Decimal::Mantissa numerator_ = 1;
  Decimal::Mantissa denominator_ = 1;
  bool isExact_ = true;
  Decimal newShares_ = 1;
  Decimal oldShares_ = 1;
  std::optional<Decimal> growth_ = 1;     // new for old, where that ends after a few digits
  std::optional<Decimal> shrinkage_ = 1;  // and old for new
};

/// The walk through the events from the newest to the oldest, with what those that have been passed
/// do to the prices before them.
class EventWalk {
 public:
  EventWalk(std::optional<PriceAdjustment> from, PriceAdjustment target,
            std::span<const EquityEvent> history)
      : from_(from),
        target_(target),
        events_(history.begin(), history.end()),
        remaining_(events_.size()) {
    const auto order = [](const EquityEvent& event) {
      return std::pair(event.date, std::holds_alternative<EquityEvent::Split>(event.kind));
    };
    std::ranges::stable_sort(events_, std::less<>(), order);
    if (from && isNominal(*from) != isNominal(target)) {
      direction_ = isNominal(target) ? Direction::toNominal : Direction::toAdjusted;
    }
  }

  /// Takes in the events after `date`.
  void advance(Date date) {
    while (remaining_ > 0 && date < events_[remaining_ - 1].date) {
      pass(events_[--remaining_]);
    }
  }

  /// Takes in all events and hands them out restated, in ascending order.
  std::vector<EquityEvent> finish() && {
    while (remaining_ > 0) {
      pass(events_[--remaining_]);
    }
    return std::move(events_);
  }

  void convert(Quote& quote) const {
    for (auto* price : {&quote.open, &quote.close, &quote.low, &quote.high}) {
      if (*price) {
        **price = converted(**price);
      }
    }
    if (quote.volume && direction_ != Direction::none && !splits_.isOne()) {
      quote.volume = direction_ == Direction::toNominal ? splits_.sharesBeforeSplits(*quote.volume)
                                                        : splits_.sharesAfterSplits(*quote.volume);
    }
  }

 private:
  enum class Direction { none, toNominal, toAdjusted };

  [[nodiscard]] Decimal converted(const Decimal& price) const {
    const Decimal shifted = price + shiftBefore_;
    if (direction_ == Direction::none || splits_.isOne()) {
      return shifted + shiftAfter_;
    }
    return (direction_ == Direction::toNominal ? splits_.beforeSplits(shifted)
                                               : splits_.afterSplits(shifted)) +
           shiftAfter_;
  }

  void pass(EquityEvent& event) {
    std::visit(Overloaded{[&](EquityEvent::Split& split) { pass(split); },
                          [&](EquityEvent::Dividend& dividend) {
                            pass(dividend, isNominal(event.priceAdjustment));
                          }},
               event.kind);
    event.priceAdjustment = target_;
  }

  void pass(const EquityEvent::Split& split) {
    if (split.ratio.numerator > 0 && split.ratio.denominator > 0) {
      splits_.multiplyBy(split.ratio);
    }
  }

  void pass(EquityEvent::Dividend& dividend, bool isAmountNominal) {
    if (dividend.amount.isNaN()) {
      return;
    }
    // Prices that are adjusted for dividends are told in shares of today, and so is what is taken
    // off them or put back, whatever the basis on the other side is. A dividend that was put back
    // in shares of its own day would be off by the splits that follow it.
    const Decimal perShareOfToday =
        isAmountNominal ? splits_.afterSplits(dividend.amount) : dividend.amount;
    if (isAmountNominal != isNominal(target_)) {
      dividend.amount = isAmountNominal ? perShareOfToday : splits_.beforeSplits(dividend.amount);
    }
    const auto afterDividends = PriceAdjustment::adjustedForSplitsAndDividends;
    if (!from_ || *from_ == target_) {
      return;
    }
    if (*from_ == afterDividends) {
      shiftBefore_ += perShareOfToday;
    } else if (target_ == afterDividends) {
      shiftAfter_ -= perShareOfToday;
    }
  }

  const std::optional<PriceAdjustment> from_;
  const PriceAdjustment target_;
  Direction direction_ = Direction::none;
  std::vector<EquityEvent> events_;
  std::size_t remaining_;
  SplitProduct splits_;
  Decimal shiftBefore_;  // added before the ratio is applied
  Decimal shiftAfter_;   // and after it
};

/// Leaves of `events` those from the first to the last date of `like`, which is not empty.
void keepDatesOf(const std::vector<EquityEvent>& like, std::vector<EquityEvent>& events) {
  const auto [first, last] = std::ranges::minmax_element(like, {}, &EquityEvent::date);
  std::erase_if(events, [start = first->date, end = last->date](const EquityEvent& event) {
    return event.date < start || end < event.date;
  });
}

}  // namespace

QuoteFetchResult converted(QuoteFetchResult result, PriceAdjustment target,
                           std::span<const EquityEvent> history) {
  const auto from = std::exchange(result.prices, target);
  if (history.empty()) {
    return result;
  }
  EventWalk walk(from, target, history);
  if (result.quotes) {
    for (auto quote = result.quotes->rbegin(); quote != result.quotes->rend(); ++quote) {
      walk.advance(quote->fromDate);
      walk.convert(*quote);
    }
  }
  if (result.events && !result.events->empty()) {
    std::vector<EquityEvent> events = std::move(walk).finish();
    keepDatesOf(*result.events, events);
    result.events = std::move(events);
  }
  return result;
}

}  // namespace corvane
