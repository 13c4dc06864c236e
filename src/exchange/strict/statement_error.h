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
  /// `where` is 0 for the file as a whole; `columnTitle` and `option` may be empty.
  StatementError(std::uint32_t where, std::string columnTitle, std::string what,
                 std::string option = {})
      : line(where),
        column(std::move(columnTitle)),
        reason(std::move(what)),
        remedy(std::move(option)) {}

  std::uint32_t line;  ///< of the file, from 1
  std::string column;  ///< its title
  std::string reason;  ///< a sentence, with its point
  std::string remedy;  ///< another one, of what to say on the console

  /// "Line 14, column “Amount”: reason"
  [[nodiscard]] std::optional<std::string> description() const override {
    return place() + reason + (remedy.empty() ? "" : " " + remedy);
  }
  /// The same for a screen, which has no options.
  [[nodiscard]] std::string withoutRemedy() const { return place() + reason; }
  [[nodiscard]] bool hasSameValues(const StatementError& other) const {
    return line == other.line && column == other.column && reason == other.reason &&
           remedy == other.remedy;
  }

 private:
  [[nodiscard]] std::string place() const {
    if (line == 0) {
      return "";
    }
    return "Line " + std::to_string(line) + (column.empty() ? "" : ", column “" + column + "”") +
           ": ";
  }
};

}  // namespace corvane
