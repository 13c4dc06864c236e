// Cells as a person reads them: without the blanks around them.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// `cell` without white space and byte order marks at its ends.
[[nodiscard]] std::string_view trimmedCell(std::string_view cell);

/// `text` in small letters, without blanks at its ends, and each run of blanks within as one space:
/// what two headings or words have in common that mean the same.
[[nodiscard]] std::string foldedText(std::string_view text);

}  // namespace corvane
