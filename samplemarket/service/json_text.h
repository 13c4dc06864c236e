// The numbers of an answer as text.
#pragma once

#include <cstdint>
#include <string>

#include "platform/data/json.h"

namespace corvane::samplemarket {

/// Appends `value` × 10^-`decimals` without trailing zeros: "12.5".
void appendDecimal(std::string& text, std::int64_t value, int decimals);

[[nodiscard]] JSONValue decimalValue(std::int64_t value, int decimals);

}  // namespace corvane::samplemarket
