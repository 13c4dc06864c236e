// Patterns of texts in statements, in place of regular expressions.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// Literal text in which case does not count and runs of blanks are equal; "*" for anything, and
/// names in braces for what is picked out: {shares}, {price}, {amount} are numbers, {digits} is
/// digits, {symbol}, {isin} and {currency} have no blanks, {name}, {date}, {settle} and {note} are
/// any text. A pattern matches a whole cell. A plain value; any thread.
class TextPattern {
 public:
  using Captures = std::map<std::string, std::string, std::less<>>;

  /// None where `text` has braces that hold none of these names.
  [[nodiscard]] static std::optional<TextPattern> read(std::string_view text);

  /// What the names stand for in `cell`; none where it does not match.
  [[nodiscard]] std::optional<Captures> match(std::string_view cell) const;

  /// Whether there is a cell that both match, as far as their letters tell.
  [[nodiscard]] bool overlaps(const TextPattern& other) const;

  [[nodiscard]] bool hasWildcards() const { return hasWildcards_; }
  /// How much of the text is literal: of two patterns that match the one with more is meant.
  [[nodiscard]] std::size_t literalLength() const { return literalLength_; }
  [[nodiscard]] bool captures(std::string_view name) const;
  /// The pattern as it was written.
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  /// Whether the first letter of `cell` leaves it open that the pattern matches.
  [[nodiscard]] bool mayBegin(std::string_view cell) const;

  struct Piece {
    std::u32string literal;  ///< in small letters; empty for a wildcard
    std::string name;        ///< of the wildcard, "*" for anything
  };

  std::string text_;
  std::vector<Piece> pieces_;
  bool hasWildcards_ = false;
  std::size_t literalLength_ = 0;

  friend class PatternMatch;
};

}  // namespace corvane
