// What is wrong with a place of a statement.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/error.h"

namespace corvane {

/// A reason with the line, and where one cell is to blame the column, that it speaks of.
class StatementError : public ErrorValue<StatementError> {
 public:
  /// `where` is 0 for the file as a whole; `columnTitle` may be empty.
  StatementError(std::uint32_t where, std::string columnTitle, std::string what)
      : line(where), column(std::move(columnTitle)), reason(std::move(what)) {}

  std::uint32_t line;  ///< of the file, from 1
  std::string column;  ///< its title
  std::string reason;  ///< a sentence, with its point

  /// "Line 14, column “Amount”: reason"
  [[nodiscard]] std::optional<std::string> description() const override {
    if (line == 0) {
      return reason;
    }
    return "Line " + std::to_string(line) + (column.empty() ? "" : ", column “" + column + "”") +
           ": " + reason;
  }
  [[nodiscard]] bool hasSameValues(const StatementError& other) const {
    return line == other.line && column == other.column && reason == other.reason;
  }
};

}  // namespace corvane
