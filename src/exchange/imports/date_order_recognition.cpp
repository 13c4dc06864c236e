#include "exchange/imports/date_order_recognition.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <span>
#include <string>

#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

/// A character of a line: where it starts, and whether it is part of a word.
struct Character {
  std::size_t offset;
  bool isWord;
};

bool isLineTerminator(char32_t character) {
  return (character >= U'\n' && character <= U'\r') || character == 0x85 || character == 0x2028 ||
         character == 0x2029;
}

/// A part of a date holds no more than this: longer cells are no dates, and need not be looked at.
constexpr std::size_t longestDate = 256;

/// The match in one line. Each group is the longest that leaves enough behind it, each gap the
/// shortest but at least one character, whatever it is.
class LineMatch {
 public:
  LineMatch(std::string_view text, std::span<const Character> line) : text_(text), line_(line) {}

  [[nodiscard]] std::optional<std::array<std::string_view, 3>> find() const {
    const std::size_t first = nextWord(0);
    std::size_t last = line_.size();
    while (last > 0 && !line_[last - 1].isWord) {
      --last;
    }
    // At least one character a group and a gap: word, gap, word, gap, word.
    if (last < first + 5) {
      return std::nullopt;
    }
    const std::size_t lastWord = last - 1;
    std::size_t end = runEnd(first);
    std::size_t second = nextWord(end + 1);
    if (second + 2 > lastWord) {
      // The first run has to give some of its own characters to the other groups.
      end = std::min(end, last) - 2;
      end = std::min(end, lastWord - 3);
      if (end <= first || end > lastWord) {
        return std::nullopt;
      }
      second = nextWord(end + 1);
      if (second + 2 > lastWord) {
        return std::nullopt;
      }
    }
    const std::size_t secondEnd = std::min(runEnd(second), lastWord - 1);
    const std::size_t third = nextWord(secondEnd + 1);
    return std::array{part(first, end), part(second, secondEnd), part(third, runEnd(third))};
  }

 private:
  [[nodiscard]] std::size_t nextWord(std::size_t position) const {
    while (position < line_.size() && !line_[position].isWord) {
      ++position;
    }
    return position;
  }
  [[nodiscard]] std::size_t runEnd(std::size_t position) const {
    while (position < line_.size() && line_[position].isWord) {
      ++position;
    }
    return position;
  }
  [[nodiscard]] std::size_t offset(std::size_t position) const {
    return position < line_.size() ? line_[position].offset : text_.size();
  }
  [[nodiscard]] std::string_view part(std::size_t begin, std::size_t end) const {
    return text_.substr(offset(begin), offset(end) - offset(begin));
  }

  std::string_view text_;
  std::span<const Character> line_;
};

std::optional<std::int64_t> integerIn(std::string_view cell) {
  const std::string text = withPlainDigits(cell);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(value)
                                                                  : std::nullopt;
}

}  // namespace

std::optional<std::array<std::string_view, 3>> dateParts(std::string_view cell) {
  std::string_view rest = cell.substr(0, longestDate);
  std::array<Character, longestDate> line;
  std::size_t length = 0;
  while (true) {
    const auto offset = static_cast<std::size_t>(rest.data() - cell.data());
    const char32_t character = rest.empty() ? U'\n' : takeCharacter(rest);
    if (!isLineTerminator(character)) {
      line[length] = {offset, isWordCharacter(character)};
      ++length;
      continue;
    }
    if (auto parts = LineMatch(cell.substr(0, offset), std::span(line).first(length)).find()) {
      return parts;
    }
    if (rest.empty()) {
      return std::nullopt;
    }
    length = 0;
  }
}

std::optional<YearMonthDay> plainDay(std::string_view format, std::string_view cell) {
  if (format != "y M d" || cell.size() != 10 || cell[4] != '-' || cell[7] != '-') {
    return std::nullopt;
  }
  const auto number = [&](std::size_t start, std::size_t length) {
    int value = 0;
    for (const char digit : cell.substr(start, length)) {
      value = digit >= '0' && digit <= '9' && value >= 0 ? value * 10 + (digit - '0') : -1;
    }
    return value;
  };
  const YearMonthDay day{number(0, 4), number(5, 2), number(8, 2)};
  // Days that some month lacks, and years of the old calendar, are left to whoever forgives them.
  const bool isPlain =
      day.year >= 1900 && day.month >= 1 && day.month <= 12 && day.day >= 1 && day.day <= 28;
  return isPlain ? std::optional(day) : std::nullopt;
}

bool namesOneDay(std::string_view format) {
  std::array<int, 3> counts{};  // of years, months and days
  constexpr std::array<std::string_view, 3> letters = {"yYu", "ML", "d"};
  bool isQuoted = false;
  char last = '\0';
  for (const char letter : format) {
    isQuoted = isQuoted != (letter == '\'');
    for (std::size_t i = 0; i < letters.size(); ++i) {
      counts[i] += !isQuoted && letter != last && letters[i].contains(letter) ? 1 : 0;
    }
    last = isQuoted ? '\0' : letter;
  }
  return std::ranges::all_of(counts, [](int count) { return count == 1; });
}

void DateOrderRecognition::add(std::string_view cell) {
  // Many rows of one day follow one another.
  if (cell == lastCell_) {
    return;
  }
  lastCell_ = cell;
  const auto parts = dateParts(cell);
  if (!parts) {
    return;
  }
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    Slot& slot = slots_[i];
    if (slot.isWord) {
      continue;
    }
    if (const auto value = integerIn((*parts)[i])) {
      slot.greatest = std::max(slot.greatest, *value);
    } else {
      slot = {.isWord = true, .greatest = 0};
    }
  }
}

std::string DateOrderRecognition::format() const {
  std::string format;
  for (const Slot& slot : slots_) {
    if (!format.empty()) {
      format += ' ';
    }
    format += slot.isWord || slot.greatest < 13 ? 'M' : slot.greatest < 32 ? 'd' : 'y';
  }
  return format;
}

}  // namespace corvane
