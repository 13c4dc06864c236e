#include "exchange/profiles/text_pattern.h"

#include <algorithm>
#include <array>

#include "exchange/strict/cell_text.h"
#include "exchange/strict/number_form.h"
#include "platform/text/unicode/letter_case.h"
#include "platform/text/unicode/letters.h"

namespace corvane {

/// A text as code points, with where each starts in the bytes, and in small letters.
struct PatternLetters {
  std::string text;
  std::vector<std::size_t> starts;
  std::u32string folded;
};

namespace {

constexpr std::array<std::string_view, 11> captureNames = {"digits", "shares", "price",    "amount",
                                                           "symbol", "isin",   "currency", "name",
                                                           "date",   "settle", "note"};
constexpr std::size_t longestText = 2000;

char32_t smallLetter(char32_t character, std::string_view bytes) {
  if (character < 0x80) {
    return character >= U'A' && character <= U'Z' ? character + 32 : character;
  }
  const std::string lower = lowercased(bytes);
  std::string_view rest = lower;
  const char32_t result = rest.empty() ? character : takeCharacter(rest);
  return rest.empty() ? result : character;
}

PatternLetters lettersOf(std::string_view cell) {
  PatternLetters letters;
  std::string_view rest = trimmedCell(cell).substr(0, longestText);
  bool wasBlank = false;
  while (!rest.empty()) {
    const std::string_view before = rest;
    const char32_t character = takeCharacter(rest);
    const std::string_view bytes = before.substr(0, before.size() - rest.size());
    const bool isBlank = isWhitespace(character);
    if (isBlank && wasBlank) {
      continue;
    }
    letters.starts.push_back(letters.text.size());
    letters.text += isBlank ? std::string_view(" ") : bytes;
    letters.folded += isBlank ? U' ' : smallLetter(character, bytes);
    wasBlank = isBlank;
  }
  letters.starts.push_back(letters.text.size());
  return letters;
}

bool isNumberName(std::string_view name) {
  return name == "shares" || name == "price" || name == "amount";
}

/// Whether `name` may stand for `text`.
bool mayStandFor(std::string_view name, std::string_view text) {
  if (name == "*") {
    return true;
  }
  if (trimmedCell(text).size() != text.size() || text.empty()) {
    return false;
  }
  if (name == "digits") {
    return text.find_first_not_of("0123456789") == text.npos;
  }
  if (isNumberName(name)) {
    return NumberCell::read(text).has_value();
  }
  const bool hasNoBlanks = name == "symbol" || name == "isin" || name == "currency";
  return !hasNoBlanks || !text.contains(' ');
}

}  // namespace

/// One attempt: each place of the text is tried once for each piece.
class PatternMatch {
 public:
  PatternMatch(const std::vector<TextPattern::Piece>& pieces, const PatternLetters& letters)
      : pieces_(pieces),
        letters_(letters),
        failed_(pieces.size() * (letters.folded.size() + 1), false) {}

  bool matches(std::size_t piece, std::size_t at) {
    if (piece == pieces_.size()) {
      return at == letters_.folded.size();
    }
    const std::size_t state = piece * (letters_.folded.size() + 1) + at;
    if (failed_[state]) {
      return false;
    }
    if (pieces_[piece].name.empty() ? matchesLiteral(piece, at) : matchesName(piece, at)) {
      return true;
    }
    failed_[state] = true;
    return false;
  }

  TextPattern::Captures captures;

 private:
  bool matchesLiteral(std::size_t piece, std::size_t at) {
    const std::u32string& literal = pieces_[piece].literal;
    return letters_.folded.compare(at, literal.size(), literal) == 0 &&
           matches(piece + 1, at + literal.size());
  }

  bool matchesName(std::size_t piece, std::size_t at) {
    const std::string& name = pieces_[piece].name;
    if (name == "*" && piece + 1 == pieces_.size()) {
      return true;
    }
    for (std::size_t end = at; end <= letters_.folded.size(); ++end) {
      const std::string_view text =
          std::string_view(letters_.text)
              .substr(letters_.starts[at], letters_.starts[end] - letters_.starts[at]);
      if (mayStandFor(name, text) && matches(piece + 1, end)) {
        if (name != "*" && name != "digits") {
          captures[name] = text;
        }
        return true;
      }
    }
    return false;
  }

  const std::vector<TextPattern::Piece>& pieces_;
  const PatternLetters& letters_;
  std::vector<bool> failed_;
};

std::optional<TextPattern> TextPattern::read(std::string_view text) {
  TextPattern pattern;
  pattern.text_ = text;
  const auto addLiteral = [&](std::string_view literal) {
    std::u32string folded;
    std::string_view rest = literal;
    while (!rest.empty()) {
      const std::string_view before = rest;
      const char32_t character = takeCharacter(rest);
      const bool isBlank = isWhitespace(character);
      if (isBlank && folded.ends_with(U' ')) {
        continue;
      }
      folded +=
          isBlank ? U' ' : smallLetter(character, before.substr(0, before.size() - rest.size()));
    }
    if (!folded.empty()) {
      pattern.literalLength_ += folded.size();
      pattern.pieces_.push_back({std::move(folded), ""});
    }
  };
  std::string_view rest = trimmedCell(text);
  while (!rest.empty()) {
    const std::size_t special = std::min(rest.find_first_of("*{}"), rest.size());
    addLiteral(rest.substr(0, special));
    rest.remove_prefix(special);
    if (rest.empty()) {
      break;
    }
    pattern.hasWildcards_ = true;
    if (rest.front() == '*') {
      pattern.pieces_.push_back({U"", "*"});
      rest.remove_prefix(1);
      continue;
    }
    const std::size_t end = rest.find('}');
    if (rest.front() == '}' || end == rest.npos) {
      return std::nullopt;
    }
    const std::string_view name = rest.substr(1, end - 1);
    if (std::ranges::find(captureNames, name) == captureNames.end()) {
      return std::nullopt;
    }
    pattern.pieces_.push_back({U"", std::string(name)});
    rest.remove_prefix(end + 1);
  }
  return pattern;
}

bool TextPattern::mayBegin(std::string_view cell) const {
  const auto small = [](char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
  };
  if (pieces_.empty() || pieces_.front().literal.empty()) {
    return true;
  }
  const char32_t first = pieces_.front().literal.front();
  const char begin = cell.empty() ? '\0' : cell.front();
  // Letters beyond ASCII are looked at in full, as are blanks, which are left out in front.
  return first <= U' ' || first >= 0x80 || begin < '!' ||
         static_cast<char32_t>(small(begin)) == first;
}

std::optional<TextPattern::Captures> TextPattern::match(std::string_view cell) const {
  if (!mayBegin(cell)) {
    return std::nullopt;
  }
  const PatternLetters letters = lettersOf(cell);
  PatternMatch match(pieces_, letters);
  return match.matches(0, 0) ? std::optional(std::move(match.captures)) : std::nullopt;
}

bool TextPattern::captures(std::string_view name) const {
  return std::ranges::any_of(pieces_, [&](const Piece& piece) { return piece.name == name; });
}

}  // namespace corvane
