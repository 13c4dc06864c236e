// Quotes that are opened and never closed.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace corvane {

/// Throws StatementError with the line of the quote at `unclosedQuote` in `text` where rows behind
/// it have become part of its cell; with `wholeLastCell` also where the text merely ends within the
/// cell, as a file that was cut off does. None is what parseRows tells of a text whose quotes are
/// closed.
void requireClosedQuotes(std::string_view text, std::optional<std::size_t> unclosedQuote,
                         bool wholeLastCell = false);

}  // namespace corvane
