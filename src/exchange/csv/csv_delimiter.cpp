#include "exchange/csv/csv_delimiter.h"

#include <cassert>

#include "platform/text/unicode/characters.h"

namespace corvane {
namespace {

/// The place of the first of `characters`, all of them ASCII, that is one by itself in `text` from
/// `start` on: not one with an accent.
std::size_t findCharacter(std::string_view text, std::string_view characters, std::size_t start) {
  std::size_t found = text.find_first_of(characters, start);
  while (found != text.npos &&
         !(isCharacterBoundary(text, found) && isCharacterBoundary(text, found + 1))) {
    found = text.find_first_of(characters, found + 1);
  }
  return found;
}

/// `text` from its first character that is no white space or is a tab.
std::string_view withoutLeadingBlanks(std::string_view text) {
  while (!text.empty() && text.front() != '\t') {
    const std::size_t length = whitespaceLength(text, 0);
    if (length == 0) {
      break;
    }
    text.remove_prefix(length);
  }
  return text;
}

}  // namespace

CSVDelimiter::CSVDelimiter(std::string_view character) : character_(character) {
  assert(!character.empty() && characterLength(character, 0) == character.size());
}

CSVDelimiter::Case CSVDelimiter::which() const {
  if (character_ == ",") {
    return Case::comma;
  }
  if (character_ == ";") {
    return Case::semicolon;
  }
  return character_ == "\t" ? Case::tab : Case::character;
}

CSVDelimiter CSVDelimiter::guessed(std::string_view text) {
  std::string_view line = withoutLeadingBlanks(text);
  line = line.substr(0, line.find_first_of("\r\n"));
  std::size_t position = findCharacter(line, "\",\t;", 0);
  while (position != line.npos && line[position] == '"') {
    const std::size_t closingQuote = findCharacter(line, "\"", position + 1);
    position =
        closingQuote == line.npos ? line.npos : findCharacter(line, "\",\t;", closingQuote + 1);
  }
  return position == line.npos ? comma() : CSVDelimiter(line.substr(position, 1));
}

}  // namespace corvane
