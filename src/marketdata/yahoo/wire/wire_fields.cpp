#include "marketdata/yahoo/wire/wire_fields.h"

#include <charconv>

namespace corvane::wire {
namespace {

/// Whether the whole of `text` is a number that `number` can hold; it is written there.
template <typename Number>
bool parse(std::string_view text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && next == end;
}

[[noreturn]] void failAsTooLarge(const JSONCursor& cursor, std::string_view text) {
  cursor.fail("the number " + std::string(text) + " is too large");
}

}  // namespace

void read(JSONCursor& cursor, bool& value) {
  value = cursor.boolean();
}

void read(JSONCursor& cursor, std::string& value) {
  value = cursor.string();
}

void read(JSONCursor& cursor, std::int64_t& value) {
  const std::string_view text = cursor.numberText();
  if (parse(text, value)) {
    return;
  }
  // 12.0 and 12e3 are whole numbers, too.
  const Decimal number = Decimal::fromWholeString(text).value_or(Decimal::nan());
  if (number.isNaN()) {
    failAsTooLarge(cursor, text);
  }
  if (rounded(number, 0, RoundingMode::down) != number) {
    cursor.fail("expected a whole number, found " + std::string(text));
  }
  value = number.integerValue();
  if (Decimal(value) != number) {
    failAsTooLarge(cursor, text);
  }
}

void read(JSONCursor& cursor, double& value) {
  const std::string_view text = cursor.numberText();
  if (!parse(text, value)) {
    failAsTooLarge(cursor, text);
  }
}

void read(JSONCursor& cursor, Decimal& value) {
  const std::string_view text = cursor.numberText();
  value = Decimal::fromWholeString(text).value_or(Decimal::nan());
  if (value.isNaN()) {
    failAsTooLarge(cursor, text);
  }
}

void read(JSONCursor& cursor, Date& value) {
  double seconds = 0;
  read(cursor, seconds);
  value = Date::since1970(seconds);
}

std::int64_t wholeNumberKey(const JSONCursor& cursor, std::string_view key) {
  std::int64_t number = 0;
  if (!parse(key, number)) {
    cursor.fail("the key is no whole number");
  }
  return number;
}

}  // namespace corvane::wire
