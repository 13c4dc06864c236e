// The rows of a ledger in which words are found.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/money/currency.h"
#include "ledger/portfolio/portfolio_transaction.h"
#include "platform/text/formats/number_formatter.h"
#include "platform/time/calendar.h"

namespace corvane {

/// Looks for words in what a table of transactions shows of its rows: dates (as shown, with the
/// whole name of the month, and as 2024-03-01), symbol, name and currency, the kind of transaction
/// (as shown, and as exports call it), all numbers, the note.
///
/// Nothing of a row is written out to be looked through. What many rows have in common, as a name
/// or a day, is folded and looked through once for all of them; numbers are kept as plain digits
/// from the first word on that has a digit. Main queue only.
class TransactionFinder {
 public:
  /// For `rows`, which must stay and not change as long as this is asked, of a portfolio that
  /// counts in `primary`, with dates in `calendar`. Balances of cash are passed over where they are
  /// not shown.
  TransactionFinder(std::span<const TransactionPointer> rows, const Currency& primary,
                    const Calendar& calendar, bool showsCash);

  /// Whether `text` has a word to look for.
  [[nodiscard]] static bool hasWords(std::string_view text);

  /// The places of the rows that have every word of `text` somewhere, ascending; all without a
  /// word. A part of a word is enough, capitals and accents do not count, and a number may be
  /// written as the screen has it or plainly: "1,234.50" and "1234.5" are found alike.
  [[nodiscard]] const std::vector<std::uint32_t>& places(std::string_view text);

 private:
  /// What is looked for.
  struct Word {
    std::string text;
    /// How its number, if it is one, would stand in plain digits.
    std::vector<std::string> numbers = {};

    /// Whether all that has this word has `other` too.
    [[nodiscard]] bool implies(const Word& other) const;
  };
  /// What may stand between the digits of a number, folded.
  struct Separators {
    std::string grouping;
    std::string decimal;
  };
  /// The texts of a row, by their places among all texts: name, currency, kind, both days, note.
  using TextsOfRow = std::array<std::uint32_t, 6>;
  class TextGatherer;

  [[nodiscard]] std::vector<Word> wordsOf(std::string_view text) const;
  [[nodiscard]] std::vector<std::string> plainNumbers(std::string_view word) const;
  [[nodiscard]] std::optional<std::string> unformatted(std::string_view word,
                                                       const Separators& separators) const;
  [[nodiscard]] static std::optional<std::string> withoutGrouping(std::string_view text,
                                                                  const Separators& separators);
  [[nodiscard]] static Separators separatorsOf(const NumberFormatter& formatter);
  void keepRowsWith(const Word& word);
  void gatherNumbers();
  [[nodiscard]] std::string_view numbersOf(std::uint32_t row) const;

  const std::span<const TransactionPointer> rows_;
  const Currency primary_;
  const bool showsCash_;
  const std::array<Separators, 2> separators_;  ///< of the user's locale, plain and for money
  std::vector<std::string> symbols_;  ///< of the currencies of the rows, as amounts have them
  std::vector<std::string> texts_;    ///< folded, each once
  std::vector<TextsOfRow> textsOfRows_;
  std::string numbers_;                     ///< those of a row behind each other, a line for each
  std::vector<std::uint32_t> numbersEnds_;  ///< by row; empty until they are gathered
  std::vector<Word> words_;                 ///< of the last answer
  std::vector<std::uint32_t> places_;       ///< the last answer
};

}  // namespace corvane
