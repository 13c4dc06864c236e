#include "platform/text/unicode/letter_case.h"

#include "platform/text/unicode/icu_text.h"

namespace corvane {

std::string uppercased(std::string_view text) {
  return toUtf8(toIcu(text).toUpper(icu::Locale::getRoot()));
}

std::string lowercased(std::string_view text) {
  return toUtf8(toIcu(text).toLower(icu::Locale::getRoot()));
}

}  // namespace corvane
