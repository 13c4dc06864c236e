#include "exchange/strict/cell_text.h"

#include "platform/text/unicode/letter_case.h"
#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

bool isAroundCells(char32_t character) {
  return isWhitespace(character) || character == 0xFEFF || character == 0x200B;
}

}  // namespace

std::string_view trimmedCell(std::string_view cell) {
  const auto isLetterOfASCII = [](char byte) { return byte > ' ' && byte < '\x7F'; };
  if (!cell.empty() && isLetterOfASCII(cell.front()) && isLetterOfASCII(cell.back())) {
    return cell;
  }
  std::string_view rest = cell;
  const char* begin = nullptr;
  const char* end = cell.data();
  while (!rest.empty()) {
    const char* at = rest.data();
    if (!isAroundCells(takeCharacter(rest))) {
      begin = begin == nullptr ? at : begin;
      end = rest.data();
    }
  }
  return begin == nullptr ? std::string_view() : std::string_view(begin, end);
}

std::string foldedText(std::string_view text) {
  std::string folded;
  std::string_view rest = trimmedCell(text);
  bool wasBlank = false;
  while (!rest.empty()) {
    const std::string_view before = rest;
    const bool isBlank = isWhitespace(takeCharacter(rest));
    if (!isBlank) {
      folded.append(before.substr(0, before.size() - rest.size()));
    } else if (!wasBlank) {
      folded += ' ';
    }
    wasBlank = isBlank;
  }
  return lowercased(folded);
}

}  // namespace corvane
