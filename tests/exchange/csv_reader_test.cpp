// What the reader makes of texts, against worked examples and against the rules told one character
// at a time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "exchange/csv/csv.h"
#include "platform/text/unicode/characters.h"
#include "random_cases.h"

namespace corvane {
namespace {

using namespace std::string_literals;

using Rows = std::vector<std::vector<std::string>>;

Rows rowsOf(std::string_view text, const CSVDelimiter& delimiter = CSVDelimiter::comma(),
            std::size_t startAt = 0, std::optional<std::int64_t> rowLimit = std::nullopt) {
  Rows rows;
  parseRows(text, delimiter, startAt, rowLimit,
            [&](const CSVRow& row) { rows.push_back(row.strings()); });
  return rows;
}

/// The message with which the text is refused; empty where it is not.
std::string refusal(std::string_view text) {
  try {
    (void)rowsOf(text);
  } catch (const CSVParseError& error) {
    EXPECT_TRUE(std::holds_alternative<CSVParseError::Quotation>(error.which()));
    return *error.description();
  }
  return "";
}

TEST(CSVReader, ReadsARowAgainFromWhereItStarts) {
  const std::string text = "a,b\n\"c\nd\",\"e\"\"\"\n\nf,g\r\nh,\"i";
  CSVRowReader reader(text, CSVDelimiter::comma());
  std::vector<std::pair<std::size_t, std::uint32_t>> places;
  Rows rows;
  for (std::size_t start = 0; const auto row = reader.next(); start = reader.position()) {
    places.emplace_back(start, row->line());
    rows.push_back(row->strings());
  }
  EXPECT_EQ(rows, rowsOf(text));
  EXPECT_EQ(reader.unclosedQuote(), text.rfind('"'));
  for (std::size_t i = rows.size(); i-- > 0;) {
    reader.moveTo(places[i].first, places[i].second);
    const auto row = reader.next();
    ASSERT_TRUE(row);
    EXPECT_EQ(row->strings(), rows[i]);
    EXPECT_EQ(row->line(), places[i].second);
  }
}

TEST(CSVReader, CutsRowsAndFields) {
  const struct {
    std::string text;
    Rows rows;
  } cases[] = {
      {"", {}},
      {"a,b\n1,2", {{"a", "b"}, {"1", "2"}}},
      {"a,b\r\n1,2\r\n", {{"a", "b"}, {"1", "2"}}},
      {"a\rb\nc\r\r\nd", {{"a"}, {"b"}, {"c"}, {""}, {"d"}}},
      {"a\n\nb", {{"a"}, {""}, {"b"}}},
      {"\n", {{""}}},
      {",\n", {{"", ""}}},
      {"a,b\"\"c,d", {{"a", "b\"c", "d"}}},
      {"a,\"b\"\"c\",d", {{"a", "b\"c", "d"}}},
      {"\"a\r\nb,\"\"\"  ,c", {{"a\r\nb,\"", "c"}}},
      {"  a , b", {{"a ", "b"}}},
      {"\u00A0\u3000a\u00A0", {{"a\u00A0"}}},
      {"a\0b,\0\n"s, {{"a\0b"s, "\0"s}}},
      // The last line needs no line break, and its last field must not be empty to be seen.
      {"a,", {{"a"}}},
      {"a,\"\"", {{"a"}}},
      {"\"\"", {}},
      {"a\"", {{"a"}}},
      // A quote that nobody closes.
      {"a,\"b\nc,d\n", {{"a", "b\nc,d\n"}}},
  };
  for (const auto& [text, rows] : cases) {
    EXPECT_EQ(rowsOf(text), rows) << ::testing::PrintToString(text);
  }
}

TEST(CSVReader, TakesATabForADelimiterBeforeItIsABlank) {
  EXPECT_EQ(rowsOf("\tb\t \t\n", CSVDelimiter::tab()), (Rows{{"", "b", "", ""}}));
  EXPECT_EQ(rowsOf("\tb,\t"), (Rows{{"b"}}));
}

TEST(CSVReader, RefusesWhatFollowsAQuoteWhereItCannotStand) {
  EXPECT_EQ(refusal("\"a\"x"), "Can't have non-quote here: x");
  EXPECT_EQ(refusal("a\"b"), "Can't have non-quote here: b");
  EXPECT_EQ(refusal("a\",b"), "Can't have non-quote here: ,");
  EXPECT_EQ(refusal("\"a\"e\u0301!"), "Can't have non-quote here: e\u0301");
  EXPECT_EQ(refusal("\"a\"\"\u0301"), "Can't have non-quote here: \"\u0301");
  EXPECT_EQ(refusal("a\"\r\n"), "Can't have non-quote here: \r\n");
  EXPECT_EQ(refusal("\"a\"\xFF"), "Can't have non-quote here: \xFF");
}

TEST(CSVReader, LeavesMarksAndCommasThatArePartOfACharacterAlone) {
  // A combining accent makes one character with what stands before it.
  EXPECT_EQ(rowsOf("a,\u0301b,c"), (Rows{{"a,\u0301b", "c"}}));
  EXPECT_EQ(rowsOf("\"\u0301a,b"), (Rows{{"\"\u0301a", "b"}}));
  EXPECT_EQ(rowsOf("\"a\"\u0301,\"\n"), (Rows{{"a\"\u0301,"}}));
  EXPECT_EQ(rowsOf(" \u0301a"), (Rows{{" \u0301a"}}));
  // An Arabic number sign makes one with what stands behind it.
  EXPECT_EQ(rowsOf("\u0600,a"), (Rows{{"\u0600,a"}}));
}

TEST(CSVReader, TakesAnyCharacterForADelimiter) {
  EXPECT_EQ(rowsOf("a|\"b|\"|c", CSVDelimiter("|")), (Rows{{"a", "b|", "c"}}));
  const std::string canada = "\U0001F1E8\U0001F1E6";
  EXPECT_EQ(rowsOf("a" + canada + "b\n", CSVDelimiter(canada)), (Rows{{"a", "b"}}));
  // The letters of two flags in a row, of which the middle ones look like the delimiter.
  EXPECT_EQ(rowsOf("\U0001F1E6" + canada + "\U0001F1E8", CSVDelimiter(canada)),
            (Rows{{"\U0001F1E6" + canada + "\U0001F1E8"}}));
  EXPECT_EQ(CSVDelimiter(";"), CSVDelimiter::semicolon());
  EXPECT_EQ(CSVDelimiter("|").which(), CSVDelimiter::Case::character);
}

TEST(CSVReader, DeliversTheRowsAskedForAndReadsNoFurther) {
  const std::string text = "a\nb\nc\nd\"x";
  EXPECT_EQ(rowsOf(text, CSVDelimiter::comma(), 0, 0), Rows{});
  EXPECT_EQ(rowsOf(text, CSVDelimiter::comma(), 1, 2), (Rows{{"b"}, {"c"}}));
  EXPECT_EQ(rowsOf("a\nb", CSVDelimiter::comma(), 1, -1), (Rows{{"b"}}));
  EXPECT_EQ(rowsOf("a\nb", CSVDelimiter::comma(), 5), Rows{});
  EXPECT_THROW((void)rowsOf(text, CSVDelimiter::comma(), 3), CSVParseError);
  EXPECT_THROW((void)rowsOf("\"a\"x\nb", CSVDelimiter::comma(), 1), CSVParseError);
}

TEST(CSVReader, HandsOnWhatTheCallbackThrows) {
  struct Enough {};
  int rows = 0;
  const auto stopAtSecond = [&](const CSVRow&) {
    if (++rows == 2) {
      throw Enough();
    }
  };
  EXPECT_THROW(parseRows("a\nb\nc", CSVDelimiter::comma(), 0, std::nullopt, stopAtSecond), Enough);
  EXPECT_EQ(rows, 2);
}

/// The rules of the reader, one character at a time, without regard to speed.
class PlainReader {
 public:
  /// The rows, or the character that may not stand where it stands.
  static std::variant<Rows, std::string> read(std::string_view text, std::string_view delimiter) {
    Rows rows;
    std::vector<std::string> row;
    std::string field;
    enum { start, plain, quoteInPlain, quotes, quoteInQuotes } state = start;
    for (std::size_t position = 0; position < text.size();) {
      const std::string character(text.substr(position, characterLength(text, position)));
      position += character.size();
      const bool isQuote = character == "\"";
      const bool endsRow =
          character != delimiter && (character == "\n" || character == "\r" || character == "\r\n");
      const bool isBlank = whitespaceLength(character, 0) > 0;
      if (state == quotes) {
        isQuote ? void(state = quoteInQuotes) : void(field += character);
      } else if (isQuote) {
        field += state == quoteInPlain || state == quoteInQuotes ? "\"" : "";
        state = state == plain ? quoteInPlain : state == quoteInPlain ? plain : quotes;
      } else if (state == quoteInPlain) {
        return character;
      } else if (character == delimiter || endsRow) {
        row.push_back(std::exchange(field, ""));
        if (endsRow) {
          rows.push_back(std::exchange(row, {}));
        }
        state = start;
      } else if (state == quoteInQuotes) {
        if (!isBlank) {
          return character;
        }
      } else if (state == plain || !isBlank) {
        field += character;
        state = plain;
      }
    }
    if (!field.empty()) {
      row.push_back(field);
    }
    if (!row.empty()) {
      rows.push_back(row);
    }
    return rows;
  }
};

TEST(CSVReader, AgreesWithTheRulesOneCharacterAtATime) {
  const std::vector<std::string> alphabet = {
      "\"", "\"", "\"",     ",",      ",",      ";", "\t",   "\n",     "\r", "\r\n",
      " ",  "a",  "\u0301", "\u0600", "\u200D", "é", "\xC3", "\u2028", "bc", "\U0001F1E8"};
  int refused = 0;
  const auto compare = [&](std::mt19937_64& random) {
    std::string text;
    for (auto length = random() % 16; length > 0; --length) {
      text += alphabet[random() % alphabet.size()];
    }
    const std::string delimiter = std::array{",", "\t", "é", "\r\n"}[random() % 4];
    const auto expected = PlainReader::read(text, delimiter);
    try {
      const Rows rows = rowsOf(text, CSVDelimiter(delimiter));
      ASSERT_TRUE(std::holds_alternative<Rows>(expected)) << ::testing::PrintToString(text);
      ASSERT_EQ(rows, std::get<Rows>(expected)) << ::testing::PrintToString(text);
    } catch (const CSVParseError& error) {
      ++refused;
      ASSERT_TRUE(std::holds_alternative<std::string>(expected)) << ::testing::PrintToString(text);
      ASSERT_EQ(error.description(),
                "Can't have non-quote here: " + std::get<std::string>(expected));
    }
  };
  corvane::testing::forRandomCases(20'000, compare);
  EXPECT_GT(refused, 0);
}

TEST(CSVDelimiter, IsGuessedFromTheFirstLine) {
  const struct {
    const char* text;
    CSVDelimiter delimiter;
  } cases[] = {
      {"", CSVDelimiter::comma()},
      {"plain", CSVDelimiter::comma()},
      {"a;b,c", CSVDelimiter::semicolon()},
      {"\"a,b\";c", CSVDelimiter::semicolon()},
      {"\"a,b;c", CSVDelimiter::comma()},
      {"\"a;b", CSVDelimiter::comma()},
      {" \r\n\u00A0\n\tb;c", CSVDelimiter::tab()},
      {"a\nb;c", CSVDelimiter::comma()},
      {"a\rb;c", CSVDelimiter::comma()},
      {"\uFEFF\"x,y\";z", CSVDelimiter::semicolon()},
      {"a,\u0301b;c", CSVDelimiter::semicolon()},
      {"a\"\u0301;b\"", CSVDelimiter::semicolon()},
  };
  for (const auto& [text, delimiter] : cases) {
    EXPECT_EQ(CSVDelimiter::guessed(text), delimiter) << ::testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace corvane
