// How well a few typed letters fit a text.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace corvane {

/// The letters of a query found in a text in their order, with others between them.
struct SubsequenceMatch {
  /// The greater, the better: letters at the start of words and letters in a row count more than
  /// letters strewn over the text. Comparable between texts of any length for one query.
  int score = 0;
  /// The characters of the text that were found, ascending, counted in code points.
  std::vector<std::size_t> places = {};

  friend bool operator==(const SubsequenceMatch&, const SubsequenceMatch&) = default;
};

/// The best way to find `query` in `text`, both UTF-8; none where a letter is missing. Capital and
/// small letters are the same, blanks of the query are passed over, and an empty query is found in
/// every text with a score of 0. Of a query, the first 64 characters count; of a text, the first
/// 256.
[[nodiscard]] std::optional<SubsequenceMatch> matchSubsequence(std::string_view query,
                                                               std::string_view text);

}  // namespace corvane
