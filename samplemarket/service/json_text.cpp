#include "samplemarket/service/json_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace corvane::samplemarket {

void appendDecimal(std::string& text, std::int64_t value, int decimals) {
  if (value < 0) {
    text += '-';
    value = -value;
  }
  while (decimals > 0 && value % 10 == 0) {
    value /= 10;
    --decimals;
  }
  std::array<char, 20> buffer;
  const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  const std::string_view digits(buffer.data(), end);
  const auto fraction = static_cast<std::size_t>(decimals);
  if (digits.size() > fraction) {
    text += digits.substr(0, digits.size() - fraction);
  } else {
    text += '0';
  }
  if (fraction > 0) {
    text += '.';
    if (digits.size() < fraction) {
      text.append(fraction - digits.size(), '0');
    }
    text += digits.substr(digits.size() - std::min(digits.size(), fraction));
  }
}

JSONValue decimalValue(std::int64_t value, int decimals) {
  std::string text;
  appendDecimal(text, value, decimals);
  return *JSONNumber::fromText(text);
}

}  // namespace corvane::samplemarket
