#include "exchange/strict/closed_quotes.h"

#include <cstdint>

#include "exchange/strict/cell_text.h"
#include "exchange/strict/statement_error.h"

namespace corvane {

void requireClosedQuotes(std::string_view text, std::optional<std::size_t> unclosedQuote,
                         bool wholeLastCell) {
  if (!unclosedQuote) {
    return;
  }
  const std::string_view swallowed = text.substr(*unclosedQuote + 1);
  if (!wholeLastCell && trimmedCell(swallowed).find_first_of("\r\n") == std::string_view::npos) {
    return;
  }
  std::uint32_t line = 1;
  for (std::size_t i = 0; i < *unclosedQuote; ++i) {
    const bool isPair = text[i] == '\r' && text[i + 1] == '\n';
    line += (text[i] == '\n' || text[i] == '\r') && !isPair ? 1 : 0;
  }
  throw StatementError(line, "", "the quote that is opened here is never closed.");
}

}  // namespace corvane
