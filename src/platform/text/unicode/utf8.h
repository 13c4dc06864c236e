// Looking at bytes that should be text.
#pragma once

#include <string_view>

namespace corvane {

/// Whether `bytes` are well-formed UTF-8.
[[nodiscard]] bool isUTF8(std::string_view bytes);

/// Whether `text`, which is UTF-8, has a character that Unicode counts as whitespace: a blank of
/// any kind, a tab, the end of a line.
[[nodiscard]] bool containsWhitespace(std::string_view text);

}  // namespace corvane
