// Names that are written from right to left, in sentences that are not.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// `name` for a place beside numbers, days or other text on the screen. A name with Hebrew, Arabic
/// or other letters that run from right to left, or with controls of direction, stands between
/// U+2068 and U+2069, so that what is beside it keeps its place; any other one is as it was. Never
/// for files, data, or text that is compared or read again. Any thread.
[[nodiscard]] std::string isolatedName(std::string_view name);

/// `text` with what stands between “ and ” treated as isolatedName() does. For sentences that were
/// made elsewhere, such as "row 3 of “Savings”".
[[nodiscard]] std::string isolatingQuotedNames(std::string_view text);

}  // namespace corvane
