// The grammar of JSON numbers.
#pragma once

#include <string_view>

namespace corvane {

/// Whether the whole of `text` is a number as JSON writes it.
[[nodiscard]] constexpr bool isJSONNumber(std::string_view text) {
  const auto skipDigits = [&] {
    const auto length = text.size();
    while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
      text.remove_prefix(1);
    }
    return text.size() < length;
  };
  if (text.starts_with('-')) {
    text.remove_prefix(1);
  }
  if (text.starts_with('0')) {
    text.remove_prefix(1);
  } else if (!skipDigits()) {
    return false;
  }
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    if (!skipDigits()) {
      return false;
    }
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-')) {
      text.remove_prefix(1);
    }
    if (!skipDigits()) {
      return false;
    }
  }
  return text.empty();
}

}  // namespace corvane
