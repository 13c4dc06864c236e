#include "presentation/frame/subsequence_match.h"

#include <string>

#include "platform/text/unicode/letter_case.h"
#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

constexpr std::size_t longestQuery = 64;
constexpr std::size_t longestText = 256;

constexpr int letterScore = 1;
constexpr int wordStartScore = 8;
constexpr int inARowScore = 10;
constexpr int textStartScore = 4;

/// The characters of `text` in small letters. One that has several in its place there, as the
/// dotted capital I, keeps the first, so that places stay those of the text.
std::u32string foldedCharacters(std::string_view text, std::size_t most) {
  std::u32string folded;
  while (!text.empty() && folded.size() < most) {
    std::string_view rest = text;
    (void)takeCharacter(rest);
    const std::string small = lowercased(text.substr(0, text.size() - rest.size()));
    std::string_view characters = small;
    folded.push_back(characters.empty() ? U'\uFFFD' : takeCharacter(characters));
    text = rest;
  }
  return folded;
}

/// What a letter at each place of `text` is worth by itself.
std::vector<int> placeScores(const std::u32string& text) {
  std::vector<int> scores;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool startsWord = isWordCharacter(text[i]) && (i == 0 || !isWordCharacter(text[i - 1]));
    scores.push_back(letterScore + (startsWord ? wordStartScore : 0) +
                     (i == 0 ? textStartScore : 0));
  }
  return scores;
}

/// The best score of the letters up to one of the query, of which the last stands at a place of the
/// text, and where the one before it stands.
struct MatchStep {
  int score = 0;
  std::size_t before = 0;
  bool isPossible = false;
};
using MatchRow = std::vector<MatchStep>;

MatchRow firstRow(char32_t letter, const std::u32string& text, const std::vector<int>& scores) {
  MatchRow row(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    row[i] = {scores[i], 0, text[i] == letter};
  }
  return row;
}

MatchRow nextRow(const MatchRow& above, char32_t letter, const std::u32string& text,
                 const std::vector<int>& scores) {
  MatchRow row(text.size());
  std::optional<std::size_t> best;  // of the places before the one next to i
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (i >= 2 && above[i - 2].isPossible && (!best || above[i - 2].score > above[*best].score)) {
      best = i - 2;
    }
    if (text[i] != letter) {
      continue;
    }
    if (best) {
      row[i] = {above[*best].score + scores[i], *best, true};
    }
    if (const MatchStep& neighbour = above[i - 1];
        neighbour.isPossible &&
        (!row[i].isPossible || neighbour.score + scores[i] + inARowScore >= row[i].score)) {
      row[i] = {neighbour.score + scores[i] + inARowScore, i - 1, true};
    }
  }
  return row;
}

}  // namespace

std::optional<SubsequenceMatch> matchSubsequence(std::string_view query, std::string_view text) {
  std::u32string letters = foldedCharacters(query, longestQuery);
  std::erase_if(letters, isWhitespace);
  if (letters.empty()) {
    return SubsequenceMatch{};
  }
  const std::u32string folded = foldedCharacters(text, longestText);
  const std::vector<int> scores = placeScores(folded);
  std::vector<MatchRow> rows = {firstRow(letters.front(), folded, scores)};
  for (std::size_t i = 1; i < letters.size(); ++i) {
    rows.push_back(nextRow(rows.back(), letters[i], folded, scores));
  }
  std::optional<std::size_t> last;
  for (std::size_t i = 0; i < folded.size(); ++i) {
    if (rows.back()[i].isPossible && (!last || rows.back()[i].score > rows.back()[*last].score)) {
      last = i;
    }
  }
  if (!last) {
    return std::nullopt;
  }
  SubsequenceMatch match{rows.back()[*last].score, std::vector<std::size_t>(letters.size())};
  for (std::size_t letter = letters.size(), place = *last; letter-- > 0;) {
    match.places[letter] = place;
    place = rows[letter][place].before;
  }
  return match;
}

}  // namespace corvane
