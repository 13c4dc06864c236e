#include "exchange/csv/csv_parser.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <utility>

#include "platform/text/unicode/characters.h"

namespace corvane {
namespace {

constexpr std::size_t noEnd = std::numeric_limits<std::size_t>::max();

/// Whether a carriage return with a line feed stands there.
bool isPairOfBreak(std::string_view text, std::size_t at) {
  return text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n';
}

/// The line breaks in `text`, a carriage return with a line feed being one.
std::uint32_t lineBreaksIn(std::string_view text) {
  std::uint32_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    count += text[at] == '\n' || (text[at] == '\r' && !isPairOfBreak(text, at)) ? 1U : 0U;
  }
  return count;
}

/// The state machine, and the row that it is about to fill.
///
/// Only where it may matter to which character a byte belongs does it ask for the borders of
/// characters; the stretches between quotes, delimiters and line breaks are taken in one piece.
class Parser {
 public:
  /// What stands in rows before the one at `startAt` is not kept. `delimiter` outlives the parser.
  Parser(std::string_view text, const CSVDelimiter& delimiter, std::size_t startAt)
      : text_(text), delimiter_(delimiter.rawValue()), startAt_(startAt) {
    for (const char byte : {'"', '\r', '\n', delimiter_.front()}) {
      endsPlainText_[static_cast<unsigned char>(byte)] = true;
    }
  }

  /// Reads one more row, which row() then tells; false at the end of the text.
  bool next() {
    row_.clear();
    isRowWhole_ = false;
    while (position_ < text_.size()) {
      step();
      if (isRowWhole_) {
        return true;
      }
    }
    if (!row_.isFieldEmpty()) {
      row_.finishField();
    }
    if (!row_.hasUnfinishedRow()) {
      return false;
    }
    row_.finishRow(line_);
    ++rowIndex_;
    return true;
  }

  /// Good until the next one is read.
  [[nodiscard]] CSVRow row() const { return row_.row(0); }
  /// How many rows have been read.
  [[nodiscard]] std::size_t rowCount() const { return rowIndex_; }
  [[nodiscard]] std::size_t position() const { return position_; }
  /// Where a quote was opened that is never closed, once the text is read.
  [[nodiscard]] std::optional<std::size_t> unclosedQuote() const {
    return state_ == State::inQuotes ? std::optional(openingQuote_) : std::nullopt;
  }

  /// Goes to a place where a row starts.
  void moveTo(std::size_t position, std::uint32_t line) {
    position_ = position;
    line_ = line;
    linesInRow_ = 0;
    state_ = State::atStartOfField;
  }

 private:
  enum class State {
    atStartOfField,
    inPlainField,
    afterQuoteInPlainField,
    inQuotes,
    afterQuoteInQuotes
  };

  enum class Kind { quote, delimiter, lineBreak, whitespace, other };

  struct Character {
    Kind kind;
    std::size_t length;
  };

  void step() {
    switch (state_) {
      case State::atStartOfField:
        return stepAtStartOfField();
      case State::inPlainField:
        return stepInPlainField();
      case State::afterQuoteInPlainField:
        appendDoubledQuote(State::inPlainField);
        return;
      case State::inQuotes:
        return stepInQuotes();
      case State::afterQuoteInQuotes:
        return stepAfterQuoteInQuotes();
    }
    throw CSVParseError(CSVParseError::Generic{"me_irl"});
  }

  void stepAtStartOfField() {
    const Character next = nextCharacter();
    switch (next.kind) {
      case Kind::quote:
        openingQuote_ = position_;
        state_ = State::inQuotes;
        break;
      case Kind::delimiter:
        finishField();
        break;
      case Kind::lineBreak:
        finishRow();
        break;
      case Kind::whitespace:
        break;
      case Kind::other:
        append(text_.substr(position_, next.length));
        state_ = State::inPlainField;
        break;
    }
    position_ += next.length;
  }

  void stepInPlainField() {
    const std::size_t start = position_;
    while (position_ < text_.size() && !endsPlainText_[byteAt(position_)]) {
      ++position_;
    }
    append(text_.substr(start, position_ - start));
    if (position_ == text_.size()) {
      return;
    }
    const Character next =
        isCharacterBoundary(text_, position_) ? nextCharacter() : Character{Kind::other, 1};
    switch (next.kind) {
      case Kind::quote:
        state_ = State::afterQuoteInPlainField;
        break;
      case Kind::delimiter:
        finishField();
        state_ = State::atStartOfField;
        break;
      case Kind::lineBreak:
        finishRow();
        state_ = State::atStartOfField;
        break;
      case Kind::whitespace:
      case Kind::other:
        append(text_.substr(position_, next.length));
        break;
    }
    position_ += next.length;
  }

  void stepInQuotes() {
    std::size_t quote = text_.find('"', position_);
    while (quote != text_.npos && !isWholeCharacter(quote, 1)) {
      quote = text_.find('"', quote + 1);
    }
    const std::size_t end = std::min(quote, text_.size());
    const std::string_view quoted = text_.substr(position_, end - position_);
    append(quoted);
    linesInRow_ += lineBreaksIn(quoted);
    position_ = end;
    if (end < text_.size()) {
      ++position_;
      state_ = State::afterQuoteInQuotes;
    }
  }

  void stepAfterQuoteInQuotes() {
    const Character next = nextCharacter();
    switch (next.kind) {
      case Kind::quote:
      case Kind::other:
        appendDoubledQuote(State::inQuotes);
        return;
      case Kind::delimiter:
        finishField();
        state_ = State::atStartOfField;
        break;
      case Kind::lineBreak:
        finishRow();
        state_ = State::atStartOfField;
        break;
      case Kind::whitespace:
        break;
    }
    position_ += next.length;
  }

  /// After one quote: a second one stands for a quote in the field, and nothing else may follow.
  void appendDoubledQuote(State nextState) {
    if (text_[position_] != '"' || !isCharacterBoundary(text_, position_ + 1)) {
      const auto character = text_.substr(position_, characterLength(text_, position_));
      throw CSVParseError(
          CSVParseError::Quotation{"Can't have non-quote here: " + std::string(character)});
    }
    append("\"");
    ++position_;
    state_ = nextState;
  }

  void append(std::string_view characters) {
    if (rowIndex_ >= startAt_) {
      row_.appendToField(characters);
    }
  }

  void finishField() {
    if (rowIndex_ >= startAt_) {
      row_.finishField();
    }
  }

  void finishRow() {
    if (rowIndex_ >= startAt_) {
      row_.finishField();
      row_.finishRow(line_);
    }
    line_ += linesInRow_ + 1;
    linesInRow_ = 0;
    ++rowIndex_;
    isRowWhole_ = true;
  }

  /// What stands at the position, where a character starts. Of a character that is none of the
  /// others only the first byte is told: the rest of it is taken like any text of a field.
  [[nodiscard]] Character nextCharacter() const {
    const char first = text_[position_];
    if (first == '"' && isCharacterBoundary(text_, position_ + 1)) {
      return {Kind::quote, 1};
    }
    if (first == delimiter_.front() && text_.substr(position_).starts_with(delimiter_) &&
        isCharacterBoundary(text_, position_ + delimiter_.size())) {
      return {Kind::delimiter, delimiter_.size()};
    }
    if (first == '\n' || first == '\r') {
      return {Kind::lineBreak, isPairOfBreak(text_, position_) ? 2U : 1U};
    }
    if (first > ' ' && first <= '~') {
      return {Kind::other, 1};
    }
    const std::size_t blank = whitespaceLength(text_, position_);
    return blank > 0 ? Character{Kind::whitespace, blank} : Character{Kind::other, 1};
  }

  [[nodiscard]] bool isWholeCharacter(std::size_t position, std::size_t length) const {
    return isCharacterBoundary(text_, position) && isCharacterBoundary(text_, position + length);
  }

  [[nodiscard]] unsigned char byteAt(std::size_t position) const {
    return static_cast<unsigned char>(text_[position]);
  }

  std::string_view text_;
  std::string_view delimiter_;
  std::size_t startAt_;
  std::array<bool, 256> endsPlainText_{};

  State state_ = State::atStartOfField;
  std::size_t openingQuote_ = 0;
  std::uint32_t line_ = 1;  ///< of the text, where the row starts
  std::uint32_t linesInRow_ = 0;
  std::size_t position_ = 0;
  std::size_t rowIndex_ = 0;
  bool isRowWhole_ = false;
  CSVTable row_;
};

void requireReadableLength(std::string_view text) {
  if (text.size() > CSVTable::maximumTextLength) {
    throw CSVParseError(CSVParseError::Generic{"The text is longer than 4 GiB."});
  }
}

}  // namespace

std::optional<std::size_t> parseRows(std::string_view text, const CSVDelimiter& delimiter,
                                     std::size_t startAt, std::optional<std::int64_t> rowLimit,
                                     const CSVRowCallback& rowCallback) {
  requireReadableLength(text);
  const bool isLimited = rowLimit && *rowLimit >= 0;
  const std::size_t limit = isLimited ? static_cast<std::size_t>(*rowLimit) : noEnd;
  const std::size_t endAt = limit < noEnd - startAt ? startAt + limit : noEnd;
  Parser parser(text, delimiter, startAt);
  while (parser.rowCount() < endAt && parser.next()) {
    if (parser.rowCount() > startAt) {
      rowCallback(parser.row());
    }
  }
  return parser.unclosedQuote();
}

struct CSVRowReader::State {
  State(std::string_view text, CSVDelimiter ownDelimiter)
      : delimiter(std::move(ownDelimiter)), parser(text, delimiter, 0) {}

  CSVDelimiter delimiter;
  Parser parser;
};

CSVRowReader::CSVRowReader(std::string_view text, CSVDelimiter delimiter) {
  requireReadableLength(text);
  state_ = std::make_unique<State>(text, std::move(delimiter));
}

CSVRowReader::~CSVRowReader() = default;

std::optional<CSVRow> CSVRowReader::next() {
  return state_->parser.next() ? std::optional(state_->parser.row()) : std::nullopt;
}

std::size_t CSVRowReader::position() const {
  return state_->parser.position();
}

std::optional<std::size_t> CSVRowReader::unclosedQuote() const {
  return state_->parser.unclosedQuote();
}

void CSVRowReader::moveTo(std::size_t position, std::uint32_t line) {
  state_->parser.moveTo(position, line);
}

}  // namespace corvane
