// Single characters of UTF-8 text, and what kind they are.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// Takes the first character off `text`, which is not empty; U+FFFD for a byte that is not UTF-8.
[[nodiscard]] char32_t takeCharacter(std::string_view& text);

/// Whether regular expressions count `character` among the characters of words: letters, marks,
/// decimal digits of any script, and connectors such as the underscore.
[[nodiscard]] bool isWordCharacter(char32_t character);

/// `text` with the decimal digits of all scripts as 0 to 9.
[[nodiscard]] std::string withPlainDigits(std::string_view text);

/// Whether `character` is a blank or a line break.
[[nodiscard]] bool isWhitespace(char32_t character);

}  // namespace corvane
