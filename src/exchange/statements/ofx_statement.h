// Statements in OFX and QFX, which tell by tags what others tell by columns.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "core/money/currency.h"
#include "platform/text/unicode/text_encoding.h"

namespace corvane {

/// The transactions of an OFX file as a table with a column for each tag, in the form of the layout
/// “ofx”. From there on it is read as any other statement, so the words for its transactions, what
/// is left out and what is asked stand in that layout.
struct OFXStatement {
  /// Delimited text. A transaction stands on the line on which the file has it, so that messages
  /// and answers name the lines of the file. Where several stand on one line they are counted.
  std::string table;
  TextEncoding encoding = TextEncoding::utf8;
  std::vector<std::string> remarks;  ///< sentences for the preview
  /// Lines that repeat a transaction of the same account: its number, day and amount stand there
  /// for a second time. To each belongs the line where they stood first.
  std::map<std::uint32_t, std::uint32_t> repetitions;
};

/// Reads `bytes`. `primaryCurrency` is that of the portfolio: rates into another one are of no use.
/// Throws StatementError with the line at fault, also where the file tells an error of the bank in
/// place of transactions, and TextEncodingError. Any thread.
[[nodiscard]] OFXStatement readOFX(std::string_view bytes, const Currency& primaryCurrency);

}  // namespace corvane
