#include "exchange/strict/number_form.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "core/money/currency.h"
#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"
#include "platform/text/unicode/letter_case.h"
#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

/// More characters than any number of a statement has.
constexpr std::size_t longestNumber = 128;
constexpr int greatestExponent = 60;

bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

/// Takes `affix` off the front or the end of `text`, and the blanks that it leaves there.
bool takeOff(std::string_view& text, std::string_view affix) {
  if (text.starts_with(affix)) {
    text.remove_prefix(affix.size());
  } else if (text.ends_with(affix)) {
    text.remove_suffix(affix.size());
  } else {
    return false;
  }
  text = trimmedCell(text);
  return true;
}

constexpr std::array<std::string_view, 5> minusSigns = {"-", "−", "–", "‐", "‑"};

/// What currencies are called that have no code of three letters beside their amounts. An empty
/// code means that several go by the name.
constexpr std::array<std::pair<std::string_view, std::string_view>, 40> currencyNames = {{
    {"$", ""},       {"€", "EUR"},   {"£", "GBP"},    {"¥", ""},       {"us$", "USD"},
    {"us $", "USD"}, {"$us", "USD"}, {"$ us", "USD"}, {"u$s", "USD"},  {"ca$", "CAD"},
    {"c$", "CAD"},   {"$ca", "CAD"}, {"$ ca", "CAD"}, {"a$", "AUD"},   {"au$", "AUD"},
    {"nz$", "NZD"},  {"hk$", "HKD"}, {"s$", "SGD"},   {"mx$", "MXN"},  {"r$", "BRL"},
    {"nt$", "TWD"},  {"cn¥", "CNY"}, {"jp¥", "JPY"},  {"₹", "INR"},    {"₩", "KRW"},
    {"₪", "ILS"},    {"₺", "TRY"},   {"₽", "RUB"},  {"₫", "VND"},    {"฿", "THB"},
    {"₱", "PHP"},    {"zł", "PLN"},  {"kč", "CZK"},   {"kr", ""},      {"kr.", ""},
    {"ft", "HUF"},   {"lei", "RON"}, {"fr.", "CHF"},  {"sfr.", "CHF"}, {"€us", ""},
}};

/// The length of what groups digits at the start of `text` without being a point or a comma: an
/// apostrophe or a blank, broken or not.
std::size_t groupMarkLength(std::string_view text) {
  for (const std::string_view mark : {"'", "’", " ", "\u00A0", "\u202F", "\u2009"}) {
    if (text.starts_with(mark)) {
      return mark.size();
    }
  }
  return 0;
}

bool areGroupsOfThree(std::string_view digits, std::string_view marks) {
  const std::size_t first = digits.find_first_of(marks);
  if (first == digits.npos) {
    return true;
  }
  if (first == 0 || first > 3) {
    return false;
  }
  const char mark = digits[first];
  std::string_view rest = digits.substr(first);
  while (!rest.empty()) {
    if (rest.front() != mark || rest.size() < 4 ||
        rest.substr(1, 3).find_first_of(marks) != rest.npos) {
      return false;
    }
    rest.remove_prefix(4);
  }
  return true;
}

}  // namespace

std::optional<NumberCell> NumberCell::read(std::string_view text) {
  std::string_view rest = trimmedCell(text);
  if (rest.empty() || rest.size() > longestNumber) {
    return std::nullopt;
  }
  NumberCell cell;
  bool hasSign = false;
  if (rest.starts_with('(') && rest.ends_with(')') && rest.size() > 2) {
    rest = trimmedCell(rest.substr(1, rest.size() - 2));
    cell.isNegative_ = hasSign = true;
  }
  const auto takeSign = [&] {
    if (rest.empty() || (isDigit(rest.front()) && isDigit(rest.back()))) {
      return false;
    }
    const bool isMinus =
        std::ranges::any_of(minusSigns, [&](std::string_view sign) { return takeOff(rest, sign); });
    if (isMinus || takeOff(rest, "+")) {
      cell.isNegative_ = cell.isNegative_ || isMinus;
      return std::exchange(hasSign, true);
    }
    return false;
  };
  if (takeSign()) {
    return std::nullopt;  // two signs
  }
  const std::size_t first = rest.find_first_of("0123456789.,");
  if (first == rest.npos) {
    return std::nullopt;
  }
  const std::size_t last = rest.find_last_of("0123456789");
  if (last == rest.npos || last < first) {
    return std::nullopt;
  }
  // The sign may stand between the digits and the currency: "$-5", "5- EUR".
  std::string_view before = trimmedCell(rest.substr(0, first));
  std::string_view behind = trimmedCell(rest.substr(last + 1));
  rest = rest.substr(first, last + 1 - first);
  for (std::string_view* affix : {&before, &behind}) {
    std::swap(rest, *affix);
    const bool hasTwo = takeSign();
    std::swap(rest, *affix);
    if (hasTwo) {
      return std::nullopt;
    }
  }
  if (!before.empty() && !behind.empty()) {
    return std::nullopt;
  }
  if (!cell.takeCurrency(before.empty() ? behind : before) || !cell.readCore(rest)) {
    return std::nullopt;
  }
  return cell;
}

bool NumberCell::takeCurrency(std::string_view text) {
  if (text.empty()) {
    return true;
  }
  if (Currency::byCode().contains(text)) {
    currencyCode_ = text;
    return true;
  }
  const std::string folded = foldedText(text);
  const auto* named = std::ranges::find(currencyNames, std::string_view(folded),
                                        [](const auto& entry) { return entry.first; });
  if (named == currencyNames.end()) {
    return false;
  }
  currencyCode_ = named->second;
  return true;
}

bool NumberCell::readCore(std::string_view core) {
  if (const std::size_t mark = core.find_first_of("eE"); mark != core.npos) {
    std::string_view power = core.substr(mark + 1);
    if (power.starts_with('+')) {
      power.remove_prefix(1);
    }
    const auto [end, error] = std::from_chars(power.data(), power.data() + power.size(), exponent_);
    if (error != std::errc() || end != power.data() + power.size() ||
        exponent_ > greatestExponent || exponent_ < -greatestExponent) {
      return false;
    }
    core = core.substr(0, mark);
  }
  while (!core.empty()) {
    if (isDigit(core.front()) || core.front() == '.' || core.front() == ',') {
      digits_ += core.front();
      core.remove_prefix(1);
    } else if (const std::size_t length = groupMarkLength(core)) {
      digits_ += ' ';
      core.remove_prefix(length);
    } else {
      return false;
    }
  }
  if (digits_.empty() || !isDigit(digits_.back())) {
    return false;
  }
  const std::size_t point = digits_.rfind('.');
  const std::size_t comma = digits_.rfind(',');
  if (point == digits_.npos && comma == digits_.npos) {
    evidence_ = Evidence::none;
  } else if (point != digits_.npos && comma != digits_.npos) {
    evidence_ = comma < point ? Evidence::point : Evidence::comma;
  } else {
    const bool isPoint = point != digits_.npos;
    const std::size_t last = isPoint ? point : comma;
    const bool isAlone = digits_.find(isPoint ? '.' : ',') == last;
    const bool mayGroup = digits_.size() - last == 4 && last >= 1 && last <= 3 &&
                          digits_.front() != '0' && exponent_ == 0 &&
                          digits_.find(' ') == digits_.npos;
    if (isAlone && mayGroup) {
      evidence_ = Evidence::undecided;
    } else {
      evidence_ = isPoint == isAlone ? Evidence::point : Evidence::comma;
    }
  }
  return value(DecimalMark::point) || value(DecimalMark::comma);
}

std::optional<Decimal> NumberCell::value(DecimalMark mark) const {
  const char decimal = mark == DecimalMark::point ? '.' : ',';
  const std::string_view groups = mark == DecimalMark::point ? ", " : ". ";
  const std::size_t position = std::min(digits_.find(decimal), digits_.size());
  const std::string_view whole = std::string_view(digits_).substr(0, position);
  const std::string_view decimals =
      position < digits_.size() ? std::string_view(digits_).substr(position + 1) : "";
  if (!std::ranges::all_of(decimals, isDigit) || !areGroupsOfThree(whole, groups)) {
    return std::nullopt;
  }
  std::string plain = isNegative_ ? "-" : "";
  std::ranges::copy_if(whole, std::back_inserter(plain), isDigit);
  plain += '.';
  plain += decimals;
  if (exponent_ != 0) {
    plain += 'e' + std::to_string(exponent_);
  }
  const auto number = Decimal::fromString(plain);
  return number && !number->isNaN() ? number : std::nullopt;
}

std::optional<Decimal> plainNumber(std::string_view text, DecimalMark mark) {
  constexpr std::size_t longestWord = 18;  // digits that 64 bits hold
  const char decimal = mark == DecimalMark::point ? '.' : ',';
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(isNegative ? 1 : 0);
  if (text.empty() || text.size() > longestWord || !isDigit(text.back())) {
    return std::nullopt;
  }
  std::uint64_t mantissa = 0;
  std::optional<std::size_t> decimals;
  for (const char byte : text) {
    if (isDigit(byte)) {
      mantissa = 10 * mantissa + static_cast<std::uint64_t>(byte - '0');
      decimals = decimals ? std::optional(*decimals + 1) : std::nullopt;
    } else if (byte == decimal && !decimals) {
      decimals = 0;
    } else {
      return std::nullopt;
    }
  }
  return Decimal::fromMantissa(isNegative && mantissa != 0 ? Sign::minus : Sign::plus, mantissa,
                               -static_cast<int>(decimals.value_or(0)));
}

void DecimalMarkRecognition::add(std::uint32_t line, std::string_view column,
                                 std::string_view cell) {
  const auto keep = [&](std::optional<Witness>& place) {
    if (!place) {
      place = Witness{line, std::string(column), std::string(trimmedCell(cell))};
    }
  };
  // Most cells are like those before them.
  const bool hasComma = cell.contains(',');
  const auto points = std::ranges::count(cell, '.');
  if (!hasComma && (points == 0 || (points == 1 && point_))) {
    return;
  }
  const auto number = NumberCell::read(cell);
  if (!number) {
    return;
  }
  switch (number->evidence()) {
    case NumberCell::Evidence::point:
      return keep(point_);
    case NumberCell::Evidence::comma:
      return keep(comma_);
    case NumberCell::Evidence::undecided:
      return keep(undecided_);
    case NumberCell::Evidence::none:
      return;
  }
}

void DecimalMarkRecognition::addTrade(std::string_view shares, std::string_view price,
                                      std::string_view amount) {
  if (byTrades_ || point_ || comma_) {
    return;
  }
  const std::array cells = {NumberCell::read(shares), NumberCell::read(price),
                            NumberCell::read(amount)};
  if (!cells[0] || !cells[1] || !cells[2]) {
    return;
  }
  std::optional<DecimalMark> fitting;
  for (const DecimalMark mark : {DecimalMark::point, DecimalMark::comma}) {
    const auto count = cells[0]->value(mark);
    const auto each = cells[1]->value(mark);
    const auto total = cells[2]->value(mark);
    if (!count || !each || !total || total->isZero()) {
      continue;
    }
    const Decimal difference = abs(abs(*count * *each) - abs(*total));
    if (difference * 100 <= abs(*total)) {
      if (fitting) {
        return;  // both fit, so this trade tells nothing
      }
      fitting = mark;
    }
  }
  byTrades_ = fitting;
}

DecimalMark DecimalMarkRecognition::mark() const {
  if (point_ && comma_) {
    const bool isCommaLater = point_->line <= comma_->line;
    const Witness& later = isCommaLater ? *comma_ : *point_;
    const Witness& earlier = isCommaLater ? *point_ : *comma_;
    const std::string_view laterMark = isCommaLater ? "comma" : "point";
    const std::string_view earlierMark = isCommaLater ? "point" : "comma";
    throw StatementError(later.line, later.column,
                         "“" + later.text + "” has a decimal " + std::string(laterMark) +
                             ", but “" + earlier.text + "” on line " +
                             std::to_string(earlier.line) + " a decimal " +
                             std::string(earlierMark) + ".");
  }
  if (point_ || comma_) {
    return point_ ? DecimalMark::point : DecimalMark::comma;
  }
  if (byTrades_ || !undecided_) {
    return byTrades_.value_or(DecimalMark::point);
  }
  const auto number = NumberCell::read(undecided_->text);
  const Decimal asPoint = number->value(DecimalMark::point).value_or(0);
  const Decimal asComma = number->value(DecimalMark::comma).value_or(0);
  const auto [smaller, larger] =
      std::minmax(asPoint, asComma, [](const auto& a, const auto& b) { return abs(a) < abs(b); });
  throw StatementError(undecided_->line, undecided_->column,
                       "“" + undecided_->text + "” may be " + larger.description() + " or " +
                           smaller.description() + ".",
                       "Say --decimal . or --decimal ,");
}

}  // namespace corvane
