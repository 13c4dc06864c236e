// Whether two patterns fit one text, as two automata that walk over it together.
#include <set>
#include <utility>
#include <vector>

#include "exchange/profiles/text_pattern.h"

namespace corvane {
namespace {

/// What one character may be.
enum class LetterSet { one, any, noBlank, number, digit };

/// A step of a pattern: a character, or any number of them.
struct PatternStep {
  LetterSet set = LetterSet::one;
  char32_t letter = 0;  ///< of the set `one`
  bool mayRepeat = false;
};

bool isLetterOf(char32_t letter, LetterSet set) {
  const bool isDigit = letter >= U'0' && letter <= U'9';
  switch (set) {
    case LetterSet::digit:
      return isDigit;
    case LetterSet::number:
      return isDigit || std::u32string_view(U".,'-+()").contains(letter);
    case LetterSet::noBlank:
      return letter != U' ';
    case LetterSet::one:
    case LetterSet::any:
      break;
  }
  return true;
}

/// Whether a character is in both; of two sets every one has the digits.
bool haveCommonLetter(const PatternStep& left, const PatternStep& right) {
  if (left.set == LetterSet::one && right.set == LetterSet::one) {
    return left.letter == right.letter;
  }
  if (left.set == LetterSet::one) {
    return isLetterOf(left.letter, right.set);
  }
  return right.set != LetterSet::one || isLetterOf(right.letter, left.set);
}

LetterSet lettersFor(std::string_view name) {
  if (name == "digits") {
    return LetterSet::digit;
  }
  if (name == "shares" || name == "price" || name == "amount") {
    return LetterSet::number;
  }
  const bool hasNoBlanks = name == "symbol" || name == "isin" || name == "currency";
  return hasNoBlanks ? LetterSet::noBlank : LetterSet::any;
}

}  // namespace

bool TextPattern::overlaps(const TextPattern& other) const {
  const auto stepsOf = [](const TextPattern& pattern) {
    std::vector<PatternStep> steps;
    for (const Piece& piece : pattern.pieces_) {
      for (const char32_t letter : piece.literal) {
        steps.push_back({LetterSet::one, letter, false});
      }
      if (piece.name == "*") {
        steps.push_back({LetterSet::any, 0, true});
      } else if (!piece.name.empty()) {
        steps.push_back({lettersFor(piece.name), 0, false});
        steps.push_back({lettersFor(piece.name), 0, true});
      }
    }
    return steps;
  };
  const auto left = stepsOf(*this);
  const auto right = stepsOf(other);
  using Places = std::pair<std::size_t, std::size_t>;
  std::vector<Places> open = {{0, 0}};
  std::set<Places> seen;
  while (!open.empty()) {
    const auto [i, j] = open.back();
    open.pop_back();
    if (!seen.insert({i, j}).second) {
      continue;
    }
    if (i == left.size() && j == right.size()) {
      return true;
    }
    if (i < left.size() && left[i].mayRepeat) {
      open.emplace_back(i + 1, j);
    }
    if (j < right.size() && right[j].mayRepeat) {
      open.emplace_back(i, j + 1);
    }
    if (i < left.size() && j < right.size() && haveCommonLetter(left[i], right[j])) {
      open.emplace_back(left[i].mayRepeat ? i : i + 1, right[j].mayRepeat ? j : j + 1);
    }
  }
  return false;
}

}  // namespace corvane
