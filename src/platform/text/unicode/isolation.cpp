#include "platform/text/unicode/isolation.h"

#include <unicode/uchar.h>

#include "platform/text/unicode/letters.h"

namespace corvane {
namespace {

bool turnsDirection(char32_t character) {
  switch (u_charDirection(static_cast<UChar32>(character))) {
    case U_RIGHT_TO_LEFT:
    case U_RIGHT_TO_LEFT_ARABIC:
    case U_RIGHT_TO_LEFT_EMBEDDING:
    case U_RIGHT_TO_LEFT_OVERRIDE:
    case U_RIGHT_TO_LEFT_ISOLATE:
    case U_ARABIC_NUMBER:
      return true;
    default:
      return false;
  }
}

bool hasRightToLeft(std::string_view text) {
  while (!text.empty()) {
    if (turnsDirection(takeCharacter(text))) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::string isolatedName(std::string_view name) {
  constexpr std::string_view firstStrongIsolate = "\u2068";
  constexpr std::string_view popIsolate = "\u2069";
  if (!hasRightToLeft(name)) {
    return std::string(name);
  }
  return std::string(firstStrongIsolate).append(name).append(popIsolate);
}

std::string isolatingQuotedNames(std::string_view text) {
  constexpr std::string_view opening = "“";
  constexpr std::string_view closing = "”";
  std::string isolated;
  while (true) {
    const std::size_t quote = text.find(opening);
    const std::size_t end = quote == text.npos ? text.npos : text.find(closing, quote);
    if (end == text.npos) {
      return isolated.append(text);
    }
    const std::size_t start = quote + opening.size();
    isolated.append(text.substr(0, start)).append(isolatedName(text.substr(start, end - start)));
    isolated += closing;
    text.remove_prefix(end + closing.size());
  }
}

}  // namespace corvane
