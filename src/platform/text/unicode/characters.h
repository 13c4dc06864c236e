// Characters as a reader sees them, in UTF-8 text: a letter with its accents is one, and so is a
// carriage return with the line feed after it.
#pragma once

#include <cstddef>
#include <string_view>

namespace corvane {

/// Whether a character ends before `position` and another starts there (an extended grapheme
/// cluster in the words of Unicode); true at both ends of the text. `position` is not in the
/// middle of a code point. A byte that is no UTF-8 is a character. Any thread.
[[nodiscard]] bool isCharacterBoundary(std::string_view text, std::size_t position);

/// The length in bytes of the character that starts at `position`, which is before the end.
[[nodiscard]] std::size_t characterLength(std::string_view text, std::size_t position);

/// The length in bytes of the space, line break or other white space at `position`, which is before
/// the end; 0 where another character is there. A space that carries an accent is another
/// character.
[[nodiscard]] std::size_t whitespaceLength(std::string_view text, std::size_t position);

}  // namespace corvane
