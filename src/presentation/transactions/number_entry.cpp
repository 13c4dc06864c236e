#include "presentation/transactions/number_entry.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

/// How many digits a number in `text` has from the first to the last that is not 0.
std::size_t significantDigits(std::string_view text) {
  std::string digits;
  std::ranges::copy_if(withPlainDigits(text), std::back_inserter(digits),
                       [](char byte) { return byte >= '0' && byte <= '9'; });
  const std::size_t first = digits.find_first_not_of('0');
  return first == std::string::npos ? 0 : digits.find_last_not_of('0') - first + 1;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n\u00a0") == std::string_view::npos;
}

}  // namespace

void NumberEntry::setText(std::string text) {
  text_ = std::move(text);
  isTyped_ = true;
  isComputed_ = false;
  read();
}

void NumberEntry::endEditing() {
  if (isTyped_ && value_) {
    text_ = formatted();
    isTyped_ = false;
  }
}

void NumberEntry::setFormatter(DecimalNumberFormatter formatter) {
  formatter_ = std::move(formatter);
  if (isTyped_) {
    read();
  } else if (value_) {
    text_ = formatted();
  }
}

FieldHint NumberEntry::hint() const {
  if (!problem_.empty()) {
    return {problem_, true};
  }
  const std::string understood = value_ ? formatted() : "";
  return understood == text_ ? FieldHint() : FieldHint{isTyped_ ? understood : ""};
}

void NumberEntry::assign(std::optional<Decimal> value, bool isComputed) {
  value_ = value && !value->isNaN() ? value : std::nullopt;
  isComputed_ = isComputed;
  isTyped_ = false;
  problem_.clear();
  text_ = value_ ? formatted() : "";
}

/// Makes the number, or the problem, of the text.
void NumberEntry::read() {
  value_.reset();
  problem_.clear();
  if (isBlank(text_)) {
    return;
  }
  const auto number = formatter_.decimalFromString(text_);
  if (!number) {
    problem_ = "“" + text_ + "” is not a number.";
  } else if (number->isNaN() || significantDigits(text_) > Decimal::maximumDigits) {
    problem_ = "No more than " + std::to_string(Decimal::maximumDigits) + " digits can be kept.";
  } else if (minimum && *number < *minimum) {
    problem_ = minimum->isZero() ? "Must not be negative."
                                 : "Must not be below " + minimum->description() + ".";
  } else if (!allowsFractions && number->exponent() < 0) {
    problem_ = "Must be a whole number.";
  } else {
    value_ = number;
  }
}

/// A number of the user's own keeps all of its digits: what is stored must be seen.
std::string NumberEntry::formatted() const {
  DecimalNumberFormatter formatter = formatter_;
  if (!isComputed_ && formatter.maximumFractionDigits != DecimalNumberFormatter::unlimited) {
    formatter.maximumFractionDigits =
        std::max(formatter.maximumFractionDigits, -value_->exponent());
  }
  return formatter.string(*value_).value_or(value_->description());
}

}  // namespace corvane
