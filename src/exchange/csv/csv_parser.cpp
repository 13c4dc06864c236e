#include "exchange/csv/csv_parser.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include "platform/text/unicode/characters.h"

namespace corvane {
namespace {

constexpr std::size_t noEnd = std::numeric_limits<std::size_t>::max();

/// The line breaks in `text`, a carriage return with a line feed being one.
std::uint32_t lineBreaksIn(std::string_view text) {
  std::uint32_t count = 0;
  for (std::size_t at = text.find_first_of("\r\n"); at != text.npos;
       at = text.find_first_of("\r\n", at + 1)) {
    at += text.substr(at).starts_with("\r\n") ? 1U : 0U;
    ++count;
  }
  return count;
}

/// The state machine, and the row that it is about to fill.
///
/// Only where it may matter to which character a byte belongs does it ask for the borders of
/// characters; the stretches between quotes, delimiters and line breaks are taken in one piece.
class Parser {
 public:
  Parser(std::string_view text, const CSVDelimiter& delimiter, std::size_t startAt,
         std::size_t endAt, const CSVRowCallback& rowCallback)
      : text_(text),
        delimiter_(delimiter.rawValue()),
        startAt_(startAt),
        endAt_(endAt),
        rowCallback_(rowCallback) {
    for (const char byte : {'"', '\r', '\n', delimiter_.front()}) {
      endsPlainText_[static_cast<unsigned char>(byte)] = true;
    }
  }

  /// Where a quote was opened that is never closed.
  std::optional<std::size_t> parse() {
    while (position_ < text_.size() && rowIndex_ < endAt_) {
      step();
    }
    if (rowIndex_ < endAt_) {
      if (!row_.isFieldEmpty()) {
        row_.finishField();
      }
      if (row_.hasUnfinishedRow()) {
        deliverRow();
      }
    }
    return state_ == State::inQuotes ? std::optional(openingQuote_) : std::nullopt;
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
      deliverRow();
      row_.clear();
    }
    line_ += linesInRow_ + 1;
    linesInRow_ = 0;
    ++rowIndex_;
  }

  void deliverRow() {
    row_.finishRow(line_);
    rowCallback_(row_.row(0));
  }

  /// What stands at the position, where a character starts. Of a character that is none of the
  /// others only the first byte is told: the rest of it is taken like any text of a field.
  [[nodiscard]] Character nextCharacter() const {
    const char first = text_[position_];
    if (first == '"' && isCharacterBoundary(text_, position_ + 1)) {
      return {Kind::quote, 1};
    }
    if (text_.substr(position_).starts_with(delimiter_) &&
        isCharacterBoundary(text_, position_ + delimiter_.size())) {
      return {Kind::delimiter, delimiter_.size()};
    }
    if (first == '\n' || first == '\r') {
      return {Kind::lineBreak, text_.substr(position_).starts_with("\r\n") ? 2U : 1U};
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
  std::size_t endAt_;
  const CSVRowCallback& rowCallback_;
  std::array<bool, 256> endsPlainText_{};

  State state_ = State::atStartOfField;
  std::size_t openingQuote_ = 0;
  std::uint32_t line_ = 1;  ///< of the text, where the row starts
  std::uint32_t linesInRow_ = 0;
  std::size_t position_ = 0;
  std::size_t rowIndex_ = 0;
  CSVTable row_;
};

}  // namespace

std::optional<std::size_t> parseRows(std::string_view text, const CSVDelimiter& delimiter,
                                     std::size_t startAt, std::optional<std::int64_t> rowLimit,
                                     const CSVRowCallback& rowCallback) {
  if (text.size() > CSVTable::maximumTextLength) {
    throw CSVParseError(CSVParseError::Generic{"The text is longer than 4 GiB."});
  }
  const bool isLimited = rowLimit && *rowLimit >= 0;
  const std::size_t limit = isLimited ? static_cast<std::size_t>(*rowLimit) : noEnd;
  return Parser(text, delimiter, startAt, limit < noEnd - startAt ? startAt + limit : noEnd,
                rowCallback)
      .parse();
}

}  // namespace corvane
