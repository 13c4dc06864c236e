// The character that separates the fields of a delimited text.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// A field separator: a comma, a semicolon, a tab, or any other single character.
///
/// A plain value. Two are equal when their characters are.
class CSVDelimiter {
 public:
  enum class Case { character, comma, semicolon, tab };

  [[nodiscard]] static CSVDelimiter comma() { return CSVDelimiter(","); }
  [[nodiscard]] static CSVDelimiter semicolon() { return CSVDelimiter(";"); }
  [[nodiscard]] static CSVDelimiter tab() { return CSVDelimiter("\t"); }

  /// The delimiter whose text is `character`, one character as a reader sees it: it may be several
  /// code points, such as a letter with an accent.
  explicit CSVDelimiter(std::string_view character);

  /// What separates the fields of `text`: the first comma, tab or semicolon outside of quotes in
  /// its first line that is not blank; a comma where there is none. Looks at no more than that
  /// line.
  [[nodiscard]] static CSVDelimiter guessed(std::string_view text);

  [[nodiscard]] Case which() const;
  /// The character, in UTF-8.
  [[nodiscard]] const std::string& rawValue() const { return character_; }

  friend bool operator==(const CSVDelimiter&, const CSVDelimiter&) = default;

 private:
  std::string character_;
};

}  // namespace corvane
